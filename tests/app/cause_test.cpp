// What a command that failed says: why, whatever came last.

#include "app/program_test.h"
#include "support/wire.h"

namespace {

struct Case {
    std::vector<std::string> words;  // the URL comes last
    std::string script;              // of all connections
    std::string cause;
};

const std::string login = loginScript;
const std::string relogin = "accept\n<- 220 ready\n-> USER anonymous\n<- 230 in\n";
const std::string pasv = "-> PASV\n<- 227 ok ({pasv})\n";
const std::string list = "-> LIST\n";
const std::string inPub = "-> CWD /pub\n<- 250 ok\n-> PWD\n<- 257 \"/pub\"\n";
const std::string enter = "-> CWD pub\n<- 250 ok\n-> PWD\n<- 257 \"/pub\"\n" + inPub;

class CauseTest : public ProgramTest {
  protected:
    void Expect(const Case& each, const std::string& path) {
        SCOPED_TRACE(each.script);
        Wire wire;
        wire.Limit(std::chrono::seconds(5));
        wire.Start(each.script);
        std::vector<std::string> words = each.words;
        words.push_back("ftp://127.0.0.1:" + std::to_string(wire.port()) + "/" + path);
        result = Quennet(home, words);
        EXPECT_NE(result.status, exitDone);
        EXPECT_THAT(result.errors, testing::StartsWith("quennet: "));
        EXPECT_THAT(result.errors, testing::EndsWith(": " + each.cause + "\n"));
        wire.Outcome();
    }
};

TEST_F(CauseTest, AListingThatFailsSaysWhy) {
    const std::string refused = "Can't connect to 127.0.0.1 ftp service port 1: Connection refused";
    const Case cases[] = {
        {{"ls"}, login + "-> PASV\n<- 227 (127,0,0,1,0,1)\n", refused},
        {{"ls"},
         login + "-> PASV\n<- 227-text\n<- no 550 cause\n<- 227 (127,0,0,1,0,1)\n",
         refused},
        {{"ls"}, login + "-> PASV\n<- 227 ok\n", "unexpected answer to PASV: 227 ok"},
        {{"ls"}, login + "-> PASV\n<- 227 (1,2,3)\n", "unexpected answer to PASV: 227 (1,2,3)"},
        {{"ls"}, login + "-> PASV\n<- 502 not here\n", "502 not here"},
        {{"ls"}, login + "-> PASV\nrefuse\nreset\n", "Connection refused"},
        {{"ls"}, login + pasv + list + "close\n", "no answer to LIST"},
        {{"ls"}, login + "-> PASV\n<- 227-on\n<- text\nclose\n", "the answer to PASV did not end"},
        {{"ls"},
         login + pasv + list + "reset\n" + relogin + "-> CWD /\n<- 250 ok\n" + list + "reset\n",
         "Connection reset"},
        {{"ls"}, login + pasv + list + "<- 226 done\n", "unexpected answer to LIST: 226 done"},
        {{"ls"},
         login + pasv + list + "<- 150 on\ndata accept\ndata close\nclose\n",
         "no final answer to LIST"},
        {{"ls"},
         login + pasv + list + "<- 150 on\ndata accept\ndata reset\n<- 226 done\n",
         "Connection reset"},
        {{"ls"},
         login + pasv + list + "<- 150 on\ndata accept\ndata close\n<- 451 full\n",
         "451 full"},
    };
    for (const Case& each : cases) {
        Expect(each, "");
    }
}

TEST_F(CauseTest, ALoginThatFailsSaysWhy) {
    const std::string user = "<- 220 ready\n-> USER anonymous\n";
    const Case cases[] = {
        {{"ls"}, "close\n", "no answer"},
        {{"ls"}, "<- 421 full\n", "421 full"},
        {{"ls"}, "<- 220 ready\nclose\n", "no answer to USER"},
        {{"ls"}, user + "close\n", "no answer to USER"},
        {{"ls"},
         user + "<- 331 a\n<- 331 b\n-> PASS *\n-> ACCT *\n<- 332 c\n",
         "unexpected answer to ACCT: 332 c"},
        {{"ls"}, user + "<- 331 go on\n-> PASS *\n<- 530-no\n<- 530 never\n", "530 never"},
    };
    for (const Case& each : cases) {
        Expect(each, "");
    }
    Fails({"ls", "ftp://no-such-host.invalid/"}, "invalid: the host name is not known\n",
          exitNoConnection);
    Fails({"ls", "ftp://127.0.0.1:1/"}, "ftp service port 1: Connection refused\n",
          exitNoConnection);
}

TEST_F(CauseTest, ACommandThatFailsSaysWhy) {
    home.Write("file", "x");
    const std::string refused = "Can't connect to 127.0.0.1 ftp service port 1: Connection refused";
    const std::string type = "-> TYPE I\n<- 200 ok\n";
    const Case cases[] = {
        {{"get", "-o", "got"},
         login + enter + pasv + list + "<- 550 no\n" + type + "-> PASV\n<- 227 (127,0,0,1,0,1)\n",
         refused},
        {{"get", "-o", "got"},
         login + enter + pasv + list + "<- 550 no\n" + type + pasv +
             "-> RETR d\n<- 150 on\ndata accept\ndata <- x\ndata reset\n<- 226 done\n",
         "Connection reset"},
        {{"rmdir"},
         login + enter + "-> RMD d\n<- 550 no directory\n",  // and no file is deleted for it
         "550 no directory"},
        {{"rmdir"}, login + enter + "-> RMD d\n<- 500 what\n-> XRMD d\n<- 450 busy\n", "450 busy"},
        {{"rm"}, login + enter + "-> DELE d\nclose\n", "no answer to DELE"},
    };
    for (const Case& each : cases) {
        Expect(each, "pub/d");
    }
    Wire wire;
    wire.Start(login + "-> QUIT\n<- 221 bye\n");
    Fails({"raw", "ftp://127.0.0.1:" + std::to_string(wire.port()) + "/", "NOOP\nDELE x"},
          "quennet: Line holds a line end, not sent.\n");
    wire.Finish();
}

}  // namespace
