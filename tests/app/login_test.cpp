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
        const RunResult result = Quennet(home, {"-v", "ls", Url("", user)});
        EXPECT_EQ(result.status, exitDone) << user << result.errors;
        EXPECT_EQ(result.output, "file\n");
        EXPECT_THAT(result.errors, HasSubstr("230 "));
        EXPECT_THAT(result.errors, Not(HasSubstr("p@ss")));
        EXPECT_THAT(result.errors, Not(HasSubstr("from-netrc")));
    }
    WriteNetrc("machine 127.0.0.1 login bert password from-netrc\n", 0644);
    const RunResult result = Quennet(home, {"ls", Url("", "bert")});
    EXPECT_EQ(result.status, exitDone);
    EXPECT_THAT(result.errors, HasSubstr("chmod 600"));
}

TEST_F(LoginTest, WithoutAPasswordAndATerminalThereIsNoLogin) {
    Serve();
    const RunResult result = Quennet(home, {"ls", Url("", "anna")});
    EXPECT_EQ(result.status, exitNoConnection);
    EXPECT_THAT(result.errors, HasSubstr("quennet: anna@127.0.0.1:"));
    EXPECT_THAT(result.errors, HasSubstr("wants a password"));
    for (const std::string& command : server->Commands()) {
        EXPECT_THAT(command, Not(HasSubstr("PASS")));
    }
}

TEST_F(LoginTest, AnEmptyPasswordInTheUrlIsSent) {
    Serve();
    const RunResult result = Quennet(home, {"ls", Url("", "anna:")});
    EXPECT_EQ(result.status, exitNoConnection);
    EXPECT_THAT(result.errors, HasSubstr(": 530 "));
    EXPECT_TRUE(Heard("PASS "));
}

TEST_F(LoginTest, AFailureHasItsStatusAndTheServersWordsInOneLine) {
    Serve();
    const std::string closedPort = Url("");
    struct Row {
        std::string url;
        std::string words;
    };
    const Row rows[] = {
        {Url("", "anna:wrong"), ": 530 "},
        {"ftp://no-such-host.invalid/", "no-such-host.invalid: "},
    };
    const auto expectFailure = [&](const std::string& url, const std::string& words) {
        for (const char* command : {"ls", "get"}) {
            const RunResult result = Quennet(home, {command, url + "file"});
            EXPECT_EQ(result.status, exitNoConnection) << url;
            EXPECT_THAT(result.errors, HasSubstr(words));
            EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1)
                << result.errors;
        }
    };
    for (const Row& row : rows) {
        expectFailure(row.url, row.words);
    }
    server.reset();
    expectFailure(closedPort, "127.0.0.1");
    EXPECT_EQ(NamesIn(home / ""), std::vector<std::string>{".netrc"});
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
        const RunResult result =
            Quennet(home, {"get", "ftp://127.0.0.1:" + std::to_string(wire.port()) + "/file"});
        EXPECT_EQ(result.status, exitNoConnection) << script;
        EXPECT_THAT(result.errors, HasSubstr("quennet: 127.0.0.1:")) << script;
        EXPECT_THAT(result.errors, Not(HasSubstr("\x1B")));
        wire.Outcome();
    }
    EXPECT_EQ(NamesIn(home / ""), std::vector<std::string>{".netrc"});
}

}  // namespace
