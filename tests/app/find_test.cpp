// quennet find.

#include <chrono>

#include <signal.h>
#include <sys/stat.h>

#include "app/program_test.h"
#include "support/wait.h"

namespace {

namespace fs = std::filesystem;
using loopback::FaultAction;
using testing::HasSubstr;
using testing::StartsWith;

class FindTest : public ProgramTest {
  protected:
    FindTest() {
        for (const char* name : {"t/x.txt", "t/a/x.txt", "t/a/b/x.txt", "t/c/x.txt"}) {
            Make(name, "four");
        }
        served.Write("t/a/b/semi;colon \"q\" <&>.htm", "");
        served.Write("t/c/bell\x9B\\.htm", std::string(1234, '.'));
        Serve();
    }

    void Find(std::vector<std::string> words, int status = exitDone,
              const std::string& path = "t") {
        words.insert(words.begin(), "find");
        words.push_back(Url(path));
        Run(words, status);
    }
};

TEST_F(FindTest, PrintsThePathsOfWhatTheMaskAndTheBoxesTake) {
    struct Case {
        std::vector<std::string> words;
        const char* path;
        const char* output;
    };
    const Case cases[] = {
        {{"--no-recurse"}, "t", "/t/a\n/t/c\n/t/x.txt\n"},
        {{"-m", "*.TXT"}, "t/", "/t/x.txt\n/t/a/x.txt\n/t/a/b/x.txt\n/t/c/x.txt\n"},
        {{"--mask", "b; *.htm"},
         "t",
         "/t/a/b\n/t/a/b/semi;colon \"q\" <&>.htm\n/t/c/bell\\x9B\\.htm\n"},
        {{"-m", "bell*", "--porcelain"}, "t", "/t/c/bell\\x9B\\\\.htm\n"},
        {{"-m", "b"}, "", "/t/a/b\n"},
        {{"-m", "none"}, "t", ""},
    };
    for (const Case& each : cases) {
        Find(each.words, exitDone, each.path);
        EXPECT_EQ(result.output, each.output);
        EXPECT_EQ(result.errors, "");
    }
    ExpectAtHome({});
}

TEST_F(FindTest, WhatCannotBeIsToldInOneLine) {
    Fails({"find", Url("t/none")}, "quennet: t/none: 550");
    Fails({"find", Url("t/x.txt")});
    fs::create_directory(home / "folder");
    struct Case {
        std::vector<std::string> words;
        const char* errors;
        int status;
    };
    const Case cases[] = {
        {{"--text", "folder"}, "quennet: folder: this is no regular file\n", exitFailed},
        {{"--csv", "none/file"}, "quennet: none/file: No such file or directory\n", exitFailed},
        {{"--html", "h", "-m", "none"}, "quennet: h: nothing was found", exitFailed},
        {{"-m", std::string(260, 'x')}, "quennet: --mask wants", exitUsage},
        {{"--window"}, "quennet: --window wants a terminal\n", exitUsage},
        {{"--window", "--csv", "f"}, "quennet: the window of --window", exitUsage},
        {{"-r"}, "quennet: find does not take", exitUsage},
    };
    for (const Case& each : cases) {
        Find(each.words, each.status);
        EXPECT_THAT(result.errors, StartsWith(each.errors));
        EXPECT_EQ(result.output, "");
    }
    ExpectAtHome({"folder"});
}

TEST_F(FindTest, ListsGoIntoFilesInOneStep) {
    home.Write("old.csv", "old");
    fs::permissions(home / "old.csv", static_cast<fs::perms>(0640));
    fs::create_symlink("old.csv", home / "link");
    Find({"-m", "*.htm;b", "--text", "list", "--csv", "link", "--html", "list.html"});
    EXPECT_THAT(home.Read("list"), HasSubstr("          1,234"));
    EXPECT_THAT(home.Read("list"), HasSubstr("   /t/a/b/semi;colon \"q\" <&>.htm\r\n"));
    const std::string table = home.Read("old.csv");
    EXPECT_THAT(table, StartsWith("Attributes;Size;Date;Name\r\n"));
    EXPECT_THAT(table, HasSubstr(";<DIR>;"));
    EXPECT_THAT(table, HasSubstr(";\"/t/a/b/semi;colon \"q\" <&>.htm\"\r\n"));
    EXPECT_EQ(fs::status(home / "old.csv").permissions(), static_cast<fs::perms>(0640));
    EXPECT_TRUE(fs::is_symlink(home / "link"));
    EXPECT_THAT(home.Read("list.html"), HasSubstr("<TD>bell\x9B\\.htm</TD>"));
    EXPECT_THAT(home.Read("list.html"),
                HasSubstr("<TD>semi;colon &quot;q&quot; &lt;&amp;&gt;.htm</TD>"));
    EXPECT_THAT(home.Read("list.html"), HasSubstr("</HTML>\r\n"));
    ExpectAtHome({"link", "list", "list.html", "old.csv"});
}

TEST_F(FindTest, WhatWasFoundBeforeTheEndIsPrinted) {
    server->Add({"LIST", 3, FaultAction::stallData, "", 1, {}});
    ProgramRun run(home, {"find", "-m", "*.txt", "--csv", "list.csv", Url("t")});
    EXPECT_TRUE(WaitUntil([&] { return Heard("CWD b"); }));
    const auto start = std::chrono::steady_clock::now();
    run.Signal(SIGINT);
    result = run.Finish();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_EQ(result.errors, "quennet: interrupted\n");
    EXPECT_EQ(result.output, "/t/x.txt\n/t/a/x.txt\n");
    EXPECT_FALSE(fs::exists(home / "list.csv"));

    server->ClearFaults();
    server->Add({"CWD", 5, FaultAction::dropBefore, "", 0, {}});
    RefuseReconnects();
    Find({"-m", "*.txt"}, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("the connection was lost, so this is not all\n"));
    EXPECT_EQ(result.output, "/t/x.txt\n");

    // What a server refuses to list is told; a connection that comes back leaves nothing out.
    server->ClearFaults();
    server->Add({"LIST", 2, FaultAction::reply, "550 not this one", 0, {}});
    Find({"-m", "*.txt", "--text", "list"}, exitFailed);
    EXPECT_EQ(result.errors, "quennet: 1 directory could not be listed: 550 not this one\n");
    EXPECT_EQ(result.output, "/t/x.txt\n/t/c/x.txt\n");
    EXPECT_TRUE(fs::exists(home / "list"));
    server->ClearFaults();
    server->Add({"PASV", 2, FaultAction::reply, "425 no data", 0, {}});
    Find({"-m", "*.txt"}, exitFailed);
    EXPECT_EQ(result.errors, "quennet: 1 directory could not be listed: 425 no data\n");
    for (const auto& [command, occurrence] : {std::pair{"LIST", 2}, {"PASV", 2}, {"CWD", 4}}) {
        server->ClearFaults();
        server->Add({command, occurrence, FaultAction::dropBefore, "", 0, {}});
        Find({"-m", "*.txt"});
        EXPECT_EQ(result.output, "/t/x.txt\n/t/a/x.txt\n/t/a/b/x.txt\n/t/c/x.txt\n");
    }

    server->ClearFaults();
    const std::string step(200, 'd');
    fs::create_directories(served / "t" / step / step / step / "deeper");
    Find({"-m", "*.txt"}, exitFailed);
    EXPECT_EQ(result.errors, "quennet: 1 directory left out: a path of more than 519 bytes\n");
}

}  // namespace
