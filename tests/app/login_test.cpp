// Who logs in, with which password, and what becomes of a login that fails.

#include <sys/stat.h>

#include "app/program_test.h"
#include "support/wire.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class LoginTest : public ProgramTest {
  protected:
    LoginTest() {
        options.accounts = {{"anna", "p@ss/:"}, {"bert", "from-netrc"}};
        served.Write("file", "1");
    }

    void WriteNetrc(const std::string& text, mode_t mode) const {
        home.Write(".netrc", text);
        chmod((home / ".netrc").c_str(), mode);
    }
};

TEST_F(LoginTest, ThePasswordComesFromTheUrlOrNetrcAndNeverShows) {
    WriteNetrc("machine 127.0.0.1 login bert password from-netrc\n", 0600);
    Serve();
    for (const char* user : {"", "anonymous", "anna:p%40ss%2F%3A", "bert"}) {
        Run({"-v", "ls", Url("", user)});
        EXPECT_EQ(result.output, "file\n");
        EXPECT_THAT(result.errors, HasSubstr("230 "));
        EXPECT_THAT(result.errors, Not(HasSubstr("p@ss")));
        EXPECT_THAT(result.errors, Not(HasSubstr("from-netrc")));
    }
    for (const char* typed : {"pass p@ss/:", " Pass\tp@ss/:", "PASS p@ss/:"}) {
        result = Quennet(home, {"-v", "raw", Url("", "anna:p%40ss%2F%3A"), typed});
        EXPECT_THAT(result.errors, Not(HasSubstr("p@ss"))) << typed;
    }
    WriteNetrc("machine 127.0.0.1 login bert password from-netrc\n", 0644);
    Run({"ls", Url("", "bert")});
    EXPECT_THAT(result.errors, HasSubstr("chmod 600"));

    std::filesystem::remove(home / ".netrc");
    std::filesystem::create_symlink("/dev/zero", home / ".netrc");
    Fails({"ls", Url("", "bert")}, ".netrc is not read: it is no regular file", exitNoConnection);
}

TEST_F(LoginTest, WithoutAPasswordAndATerminalThereIsNoLogin) {
    Serve();
    Fails({"ls", Url("", "anna")}, "wants a password", exitNoConnection);
    EXPECT_THAT(result.errors, HasSubstr("quennet: anna@127.0.0.1:"));
    EXPECT_THAT(server->Commands(), Not(testing::Contains(HasSubstr("PASS"))));
    Fails({"ls", Url("", "anna:")}, ": 530 ", exitNoConnection);
    EXPECT_TRUE(Heard("PASS ")) << "an empty one in the URL";
}

TEST_F(LoginTest, AFailureHasItsStatusAndTheServersWordsInOneLine) {
    Serve();
    for (const auto& [url, words] :
         {std::pair<std::string, std::string>{Url("", "anna:wrong"), ": 530 "},
          {"ftp://no-such-host.invalid/", "no-such-host.invalid: "},
          {"ftp://127.0.0.1:1/", "127.0.0.1"}}) {
        for (const char* command : {"ls", "get"}) {
            Fails({command, url + "file"}, words, exitNoConnection);
            EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1)
                << result.errors;
        }
    }
    ExpectAtHome({});
}

TEST_F(LoginTest, AServerThatIsNoneOrGoesAwayIsNoConnection) {
    const char* scripts[] = {
        "<- 421 closed for \\x1B[31mlunch\nclose",
        "close",
        "<- no code at all\nclose",
        "<- 220 ready\n-> USER anonymous\nclose",
        "<- 220 ready\n-> USER anonymous\n<- 331 go on\n-> PASS *\nreset",
        "<- 999 ready\nclose",
    };
    for (const char* script : scripts) {
        Wire wire;
        wire.Start(std::string_view(script));
        SCOPED_TRACE(script);
        Fails({"get", "ftp://127.0.0.1:" + std::to_string(wire.port()) + "/file"},
              "quennet: 127.0.0.1:", exitNoConnection);
        EXPECT_THAT(result.errors, Not(HasSubstr("\x1B")));
        wire.Outcome();
    }
    ExpectAtHome({});
}

}  // namespace
