// quennet ls.

#include "app/program_test.h"
#include "support/wire.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

class ListTest : public ProgramTest {
  protected:
    ListTest() {
        fs::create_directories(served / "pub/with blank");
        served.Write("pub/file.txt", "12345");
        served.Write("pub/-rf", "");
        served.Write("top", "1");
        for (const char* name : {"pub/file.txt", "pub/-rf", "pub/with blank"}) {
            fs::last_write_time(served / name,
                                std::chrono::file_clock::from_sys(
                                    std::chrono::sys_seconds(std::chrono::seconds(995544000))));
        }
        Serve();
    }
};

TEST_F(ListTest, PrintsNamesOrAttributesOrColumnsForScripts) {
    Run({"ls", Url("pub")});
    EXPECT_EQ(result.output, "-rf\nfile.txt\nwith blank\n");
    EXPECT_EQ(result.errors, "");
    Run({"--active", "ls", "-l", Url("pub/")});
    EXPECT_THAT(result.output, HasSubstr("-rw-r--r--     5  2001-07-19 00:00  file.txt\n"));
    Run({"ls", "--porcelain", Url("pub")});
    EXPECT_THAT(result.output, HasSubstr("8123\t5\t2001-07-19 00:00\tfile.txt\n"));
    ExpectAtHome({});
}

TEST_F(ListTest, PathsStartInTheLoginDirectoryOrAtTheRootAndMayNameAFile) {
    fs::create_directories(served / "pub/a\"b");
    Make("pub/.x");
    for (const auto& [path, output] : {std::pair("", "pub\ntop\n"),
                                       {"%2F", "pub\ntop\n"},
                                       {"pub/..", "pub\ntop\n"},
                                       {"/", "pub\ntop\n"},
                                       {"pub/with%20blank", ""},
                                       {"%2Fpub/with%20blank/", ""},
                                       {"pub/a%22b", ""},
                                       {"pub/file.txt", "file.txt\n"},
                                       {"%2Fpub/file.txt", "file.txt\n"},
                                       {"pub/.x", ".x\n"},
                                       {"top", "top\n"}}) {
        Run({"ls", Url(path)});
        EXPECT_EQ(result.output, output) << path;
    }
    // A connection that is lost on the way does not turn a directory into a file.
    server->Add({"CWD", 1, loopback::FaultAction::dropBefore, "", 0, {}});
    Run({"ls", Url("pub/with%20blank")});
    EXPECT_EQ(result.output, "");
    for (const char* path : {"pub/missing", "missing/", "top/", "missing/file"}) {
        Fails({"ls", Url(path)}, ": 550 ");
        EXPECT_EQ(result.output, "");
    }
}

TEST_F(ListTest, AnActiveConnectionWithoutDataSaysThatItIsOne) {
    server->Add({"LIST", 0, loopback::FaultAction::reply, "425 Can't connect", 0, {}});
    Fails({"--active", "ls", Url("pub")}, "no --active, changes that");
    Fails({"ls", Url("pub")}, "425 Can't connect\n");
}

TEST_F(ListTest, HostileListingsAreHarmless) {
    const std::string line = "-rw-r--r-- 1 u g 5 Jan 1 2001 ";
    const std::string text =
        line + "../../x\r\n" + line + "\x1B[2Jwiped\tx\r\n" + line + "\xC2\x9B" + "31m\r\n" + line +
        std::string(10000, 'y') + "\r\n" + std::string(100000, ' ') + "\r\n" + line + "\r\n" +
        line + "..\r\n\r\n" + line + std::string("nul\0", 4) + "\r\n" + line + "last-without-end";
    for (const char* form : {"-q", "-l", "--porcelain"}) {
        Wire wire;
        wire.Data("listing", text);
        wire.Start(std::string(loginScript) + R"(
            -> PASV
            <- 227 ok ({pasv})
            -> LIST
            data accept
            <- 150 comes
            data send listing
            data close
            <- 226 done
            -> QUIT
            <- 221 bye
        )");
        Run({"ls", form, "ftp://127.0.0.1:" + std::to_string(wire.port())});
        wire.Finish();
        for (const char* shown :
             {"../../x\n", "\\x1B[2Jwiped", "\\xC2\\x9B31m", "last-without-end"}) {
            EXPECT_THAT(result.output, HasSubstr(shown));
        }
        // The long line is one entry.
        EXPECT_EQ(std::ranges::count(result.output, '\n'), 7);
        EXPECT_THAT(result.output, Not(HasSubstr("\x1B")));
        EXPECT_THAT(result.output, Not(HasSubstr("\xC2\x9B")));
    }
}

TEST_F(ListTest, OutputThatNobodyReadsIsAFailureWithoutACrash) {
    for (int i = 0; i < 3000; ++i) {
        served.Write("pub/" + std::string(100, 'n') + std::to_string(i), "");
    }
    const std::string list = "\"$0\" ls '" + Url("pub") + "'";
    for (const char* redirection : {" | true; exit ${PIPESTATUS[0]}", " >&-", " > /dev/full"}) {
        result = Shell(home, list + redirection);
        EXPECT_EQ(result.status, exitFailed) << redirection;
        // A reader that has had enough is told nothing.
        const bool isQuiet = redirection[1] == '|';
        EXPECT_THAT(result.errors, HasSubstr(isQuiet ? "" : "quennet: standard output: "));
        EXPECT_EQ(result.errors.empty(), isQuiet) << result.errors;
    }
    EXPECT_EQ(Shell(home, list + " > /dev/null <&- 2>&-").status, exitDone);
    // Nothing of the listing has gone to the server.
    for (const std::string& command : server->Commands()) {
        EXPECT_LE(command.size(), 100u) << command;
    }
}

}  // namespace
