// What runs on a thread of its own: going to a directory for a panel, and typed command lines.

#include "control/exchange.h"
#include "host/message.h"
#include "listing/cache.h"
#include "support/session_test.h"
#include "support/temp_folder.h"
#include "transfer/receive.h"

using namespace quennet;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Notices* heard = nullptr;

extern "C" void HearBegin(u16 cookie, u8 panelId) {
    heard->Add("begin " + std::to_string(cookie) + " panel " + std::to_string(panelId));
}

extern "C" void HearDone(u16 cookie, const char* name) {
    heard->Add("done " + std::to_string(cookie) + " " + name);
}

extern "C" void PassEntry(const char*, u32, u32, u32, u32, HostWord) {}

class WorkerTest : public SessionTest {
  protected:
    WorkerTest() { heard = &notices; }
    ~WorkerTest() override { FreeDirCache(session); }

    void GoTo(const std::string& name, const std::string& directory) {
        Host().Send(MessageNumber::gotoDirectory, session, name.c_str(), directory.c_str(),
                    0xABC0009u, reinterpret_cast<HostWord>(HearBegin),
                    reinterpret_cast<HostWord>(HearDone));
    }

    void TypeLine(const std::string& text) {
        Host().Send(MessageNumber::rawCommand, 4711, session->handle, text.c_str(), 0xABC0008u);
    }

    /// What the host heard until the last worker was done.
    std::vector<std::string> Heard() {
        while (session->users.IsSet()) {
            Sleep(5);
        }
        std::vector<std::string> all = notices.All();
        notices.Clear();
        return all;
    }

    i32 List() {
        return Host().Send(MessageNumber::listDirectory, nullptr, session->handle,
                           reinterpret_cast<HostWord>(PassEntry), 0, 0);
    }
};

TEST_F(WorkerTest, ThePanelHearsOfTheBeginAndOfSuccess) {
    StoreText(session->site.directory, pathSize, "/old");
    session->currentCacheIndex = 3;
    LogIn(
        "-> CWD /gone\n<- 550 no\n"
        "-> CWD /new\nmark sent\nawait looked\n<- 250 ok\n-> PWD\n<- 257 \"/new\"\n");
    GoTo("x", "/gone");
    EXPECT_THAT(Heard(), ElementsAre("begin 9 panel 1", "foreground"));
    EXPECT_STREQ(session->site.directory, "/old");
    EXPECT_EQ(session->currentCacheIndex, 3u);

    GoTo(std::string(pathSize - 1, 'n'), "/new");
    ASSERT_TRUE(wire.AwaitMark("sent"));
    EXPECT_TRUE(session->users.IsSet()) << "the end of the connection waits";
    wire.Signal("looked");
    EXPECT_THAT(Heard(), ElementsAre("begin 9 panel 1", "done 9 " + std::string(pathSize - 1, 'n'),
                                     "foreground"));
    EXPECT_STREQ(session->site.directory, "/new");
    EXPECT_EQ(session->currentCacheIndex, 0u);

    {
        const Exchange another(session);
        GoTo("x", "/old");
        EXPECT_THAT(Heard(), ElementsAre("begin 9 panel 1", "foreground"));
        EXPECT_EQ(Lines().back(), "Command in progress, ignored.");
    }
    GoTo(std::string(pathSize, 'n'), "/new");
    GoTo("x", std::string(pathSize, 'd'));
    EXPECT_THAT(Heard(), IsEmpty()) << "nothing is cut";
    wire.Finish();
}

struct ChangeRow {
    std::string before;  // the session's directory
    std::string path;
    std::string script;
    std::string after;
    std::vector<std::string> heard;
};

/// The connection is lost instead of a reply, and its repair asks for the way back to `directory`.
std::string Loss(const std::string& directory) {
    return steps::lost + "-> CWD " + directory + "\n";
}

TEST_F(WorkerTest, AChangeOfDirectoryNamesWhatWasLeftByGoingUp) {
    const std::string up = "-> CDUP\n<- 250 ok\n-> PWD\n<- 257 \"/a\"\n";
    const std::string tooLong(pathSize, 'd');
    const ChangeRow rows[] = {
        {"/a/X", "..", up, "/a", {"done 5 X"}},
        {"/a/X/", "..", up, "/a", {"done 5 X"}},
        {"/a",
         "..",
         "-> CDUP\n<- 502 no\n-> CWD ..\n<- 250 ok\n-> PWD\n<- 257 \"/\"\n",
         "/",
         {"done 5 a"}},
        {"/a", "s", "-> CWD s\n<- 250 ok\n-> PWD\n<- 257 \"/a/s/\"\n", "/a/s", {"done 5 "}},
        {"/a", "\\", "-> CWD /\n<- 250 ok\n-> PWD\n<- 257 \"/\"\n", "/", {"done 5 "}},
        {"D:", "\\", "-> CWD \\\\\n<- 250 ok\n-> PWD\n<- 257 \"D:\"\n", "D:", {"done 5 "}},
        {"/a", "s", "-> CWD s\n<- 550 no\n", "/a", {}},
        {"/a", "s", "-> CWD s\n<- 250 ok\n-> PWD\n<- 550 no\n", "/a", {}},
        {"/a",
         "s",
         "-> CWD s\n<- 250 ok\n-> PWD\n<- 257 \"" + tooLong + "\"\n-> CWD /a\n<- 250 ok\n",
         "/a",
         {}},
        {"/a", "s\nDELE x", "", "/a", {}},
        {"/a",
         "s",
         "-> CWD s\n<- 250 ok\n-> PWD\n" + Loss("/a") +
             "<- 250 ok\n-> PWD\n<- 257 \"/a\"\n-> CWD s\n<- 250 ok\n-> PWD\n<- 257 \"/a/s\"\n",
         "/a/s",
         {"done 5 "}},
        {"/a", "s", "-> CWD s\n<- 250 ok\n-> PWD\n" + Loss("/a") + "<- 550 gone\n", "/a", {}},
    };
    std::string script;
    for (const ChangeRow& row : rows) {
        script += row.script;
    }
    LogIn(script);
    for (const ChangeRow& row : rows) {
        StoreText(session->site.directory, pathSize, row.before.c_str());
        session->currentCacheIndex = 3;
        Host().Send(MessageNumber::changeDirAsync, row.path.c_str(), 0xABC0005u, session->handle,
                    reinterpret_cast<HostWord>(HearDone));
        while (session->users.IsSet()) {
            char seen[pathSize] = "";
            Host().Send(MessageNumber::getDirectory, session->handle, seen, sizeof seen);
            EXPECT_TRUE(seen == row.before || seen == row.after) << seen;
        }
        EXPECT_EQ(Heard(), row.heard) << row.script;
        EXPECT_EQ(session->site.directory, row.after);
        EXPECT_EQ(session->currentCacheIndex, row.heard.empty() ? 3u : 0u);
    }
    wire.Finish();
}

TEST_F(WorkerTest, AChangeAtOnceLeavesTheSessionWhereItStands) {
    StoreText(session->site.directory, pathSize, "/old");
    const std::string tooLong(pathSize, 'd');
    LogIn(
        "-> CWD a\n<- 250 ok\n-> PWD\n<- 257 \"/a\"\n-> CWD b\n<- 550 no\n"
        "-> CWD c\n<- 250 ok\n-> PWD\n<- 450 no\n"
        "-> CWD d\n<- 250 ok\n-> PWD\n<- 257 \"" +
        tooLong + "\"\n-> CWD /a\n<- 250 ok\n-> CWD f\n<- 250 ok\n-> PWD\n" + Loss("/old") +
        "<- 250 ok\n-> CWD /a\n<- 250 ok\n-> PWD\n<- 257 \"/a\"\n-> CWD f\n<- 550 no\n"
        "-> CWD g\n<- 250 ok\n-> PWD\n<- 257 unnamed\n-> CWD /a\n<- 250 ok\n"
        "-> CWD e\n<- 250 ok\n-> PWD\n<- 257 unnamed\n");
    char out[pathSize] = "?";
    const struct {
        const char* path;
        i32 result;
        const char* out;
    } rows[] = {{"", 0, "?"},   {"a", 0, "/a"}, {"b", 5, "/a"}, {"c", 4, "/a"},
                {"d", 5, "/a"}, {"f", 5, "/a"}, {"g", 5, "/a"}};
    for (const auto& row : rows) {
        EXPECT_EQ(Host().Send(MessageNumber::changeDirSync, row.path, session->handle, out),
                  row.result);
        EXPECT_STREQ(out, row.out);
    }
    EXPECT_EQ(Host().Send(MessageNumber::changeDirSync, "e", session->handle, nullptr), 0);
    EXPECT_STREQ(session->site.directory, "/old");
    wire.Finish();
}

TEST_F(WorkerTest, ATypedLineGoesOutWholeOrNotAtAll) {
    const std::string longest = "SITE %s%n" + std::string(1014, 'x');
    ASSERT_EQ(longest.size(), 1023u);
    LogIn("-> " + longest + "\nmark sent\nawait looked\n<- 200 ok\n-> SITE b\n<- 550 no\n");
    TypeLine(longest);
    ASSERT_TRUE(wire.AwaitMark("sent"));
    EXPECT_TRUE(session->users.IsSet() && session->backgroundJobs.IsSet());
    wire.Signal("looked");
    EXPECT_THAT(Heard(), ElementsAre("refresh 8"));
    EXPECT_FALSE(session->backgroundJobs.IsSet());
    TypeLine(longest + "x");
    TypeLine("SITE a\nDELE b");
    EXPECT_THAT(Heard(), IsEmpty());
    TypeLine("SITE b");
    EXPECT_THAT(Heard(), IsEmpty());
    EXPECT_THAT(Lines(), Contains("Line too long, not sent."));
    wire.Finish();
}

TEST_F(WorkerTest, ATypedLineThatWorksMakesTheListingsStale) {
    const std::string lists =
        steps::passive + "-> LIST\n<- 150 x\ndata accept\ndata close\n<- 226 x\n";
    StoreText(session->site.directory, pathSize, "/");
    LogIn(lists + "-> SITE a\n<- 500 no\n-> SITE b\n<- 250 ok\n" + lists +
          "-> type i\n<- 200 ok\n-> SITE c\n<- 150 more\n<- 226 that was it\n-> TYPE A\n"
          "<- 200 ok\n" +
          lists);
    EXPECT_EQ(List(), 0);
    TypeLine("SITE a");
    Heard();
    EXPECT_EQ(List(), 0) << "from the cache";
    TypeLine("SITE b");
    Heard();
    EXPECT_EQ(List(), 0);
    TypeLine("type i");
    Heard();
    TypeLine("SITE c");
    EXPECT_THAT(Heard(), IsEmpty());
    EXPECT_EQ(List(), 0) << "in step with the server, and with its type";
    wire.Finish();
}

TEST_F(WorkerTest, ATypedRestartIsNotWhereTheNextFileBegins) {
    const std::string typed = "-> rest 5\n<- 350 ok\n";
    const std::string gets =
        steps::passive + "-> RETR f\n<- 150 x\ndata accept\ndata <- whole\ndata close\n<- 226 x\n";
    LogIn(typed + steps::binary + "-> REST 0\n<- 350 ok\n" + gets + typed +
          "-> REST 0\n<- 501 no\nexpect close\n" + steps::relogin + steps::binary + gets + gets);
    const TempFolder folder;
    const std::string path = (folder / "f").string();
    const auto receive = [&] {
        EXPECT_EQ(ReceiveFile(session, "RETR f", path.c_str(), nullptr, 0, 'I'), 2);
    };
    for (int server = 0; server < 2; ++server) {
        TypeLine("rest 5");
        Heard();
        receive();
    }
    receive();
    wire.Finish();
}

}  // namespace
