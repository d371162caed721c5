// quennet put, rm, rmdir, mkdir, mv and raw.

#include <signal.h>

#include "app/program_test.h"
#include "support/wire.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

class FileCommandsTest : public ProgramTest {
  protected:
    FileCommandsTest() { fs::create_directory(served / "pub"); }

    /// Runs a command and gives its exit status; the errors go into the trace of a failure.
    int Run(const std::vector<std::string>& arguments) {
        result = Quennet(home, arguments);
        return result.status;
    }

    RunResult result;
};

TEST_F(FileCommandsTest, FilesGoUpWholeUnderTheNameThatTheUrlSays) {
    Serve();
    const std::string bytes = Bytes(300'000);
    home.Write("-a b\xC3\xA4.bin", bytes);
    home.Write("empty", "");
    EXPECT_EQ(Run({"put", "--", "-a b\xC3\xA4.bin", Url("pub/")}), exitDone) << result.errors;
    EXPECT_TRUE(served.Read("pub/-a b\xC3\xA4.bin") == bytes);
    EXPECT_EQ(Run({"--active", "put", "./empty", Url("pub/other%20name")}), exitDone)
        << result.errors;
    EXPECT_EQ(served.Read("pub/other name"), "");
    EXPECT_EQ(result.errors, "");
}

TEST_F(FileCommandsTest, AFileThatTheServerHasIsTreatedAsTheUserSays) {
    Serve();
    served.Write("pub/f", "theirs");
    home.Write("f", "mine");
    EXPECT_EQ(Run({"put", "f", Url("pub/")}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("--overwrite or --skip"));
    EXPECT_EQ(Run({"put", "--skip", "f", Url("pub/")}), exitDone);
    EXPECT_EQ(served.Read("pub/f"), "theirs");
    TerminalRun run(home, {"put", "f", Url("pub/")});
    EXPECT_TRUE(run.Await("Overwrite or skip (o/s)? "));
    run.Type("s\n");
    EXPECT_EQ(run.Finish(), exitDone);
    EXPECT_EQ(served.Read("pub/f"), "theirs");
    EXPECT_EQ(Run({"put", "--overwrite", "f", Url("pub/")}), exitDone) << result.errors;
    EXPECT_EQ(served.Read("pub/f"), "mine");
}

TEST_F(FileCommandsTest, WhatCannotGoUpChangesNothingAndSaysWhy) {
    Serve();
    served.Write("f", "theirs");
    home.Write("f", "mine");
    fs::create_directory(home / "folder");
    EXPECT_EQ(Run({"put", "missing", Url("pub/")}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("missing: no such file"));
    EXPECT_EQ(Run({"put", "folder", Url("pub/")}), exitFailed);
    EXPECT_EQ(Run({"put", "--overwrite", "f", Url("none/f")}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("none: 550"));
    EXPECT_FALSE(Heard("STOR f"));
    EXPECT_EQ(served.Read("f"), "theirs");
    EXPECT_EQ(Run({"put", "f"}), exitUsage);
    EXPECT_EQ(Run({"put", "--resume", "f", Url("")}), exitUsage);
}

TEST_F(FileCommandsTest, ThingsAreMadeRenamedAndRemoved) {
    Serve();
    EXPECT_EQ(Run({"mkdir", Url("pub/a/b/c/")}), exitDone) << result.errors;
    EXPECT_TRUE(fs::is_directory(served / "pub/a/b/c"));
    served.Write("pub/a/f", "1");
    EXPECT_EQ(Run({"mv", Url("pub/a/f"), "b/new name"}), exitDone) << result.errors;
    EXPECT_EQ(served.Read("pub/a/b/new name"), "1");
    EXPECT_EQ(Run({"rm", Url("pub/a/b/new%20name")}), exitDone) << result.errors;
    EXPECT_EQ(Run({"rmdir", Url("%2Fpub/a/b/c")}), exitDone) << result.errors;
    EXPECT_EQ(NamesIn(served / "pub/a/b"), std::vector<std::string>{});

    EXPECT_EQ(Run({"rm", Url("pub/none")}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("none: 550"));
    for (const char* path : {"", "/", "pub/..", "."}) {
        EXPECT_EQ(Run({"rmdir", Url(path)}), exitUsage) << path;
    }
    EXPECT_EQ(Run({"mv", Url("pub/a"), "x\r\nDELE y"}), exitUsage);
}

TEST_F(FileCommandsTest, ATypedLineGoesOutAsItIsAndItsRepliesArePrinted) {
    Wire wire;
    wire.Start(R"(
        <- 220 ready
        -> USER anonymous
        <- 230 in
        -> SYST
        <- 215 UNIX
        -> PWD
        <- 257 "/"
        -> SITE %s 100%
        <- 214-first
        <- \x1B[2J
        <- 214 last
        -> QUIT
        <- 221 bye
    )");
    EXPECT_EQ(Run({"raw", "ftp://127.0.0.1:" + std::to_string(wire.port()), "SITE %s 100%"}),
              exitDone)
        << result.errors;
    EXPECT_EQ(result.output, "214-first\n\\x1B[2J\n214 last\n");
    wire.Finish();

    Serve();
    EXPECT_EQ(Run({"raw", Url("pub"), "FROB"}), exitFailed);
    EXPECT_EQ(result.output, "500 Unknown command\n");
    EXPECT_EQ(Run({"raw", Url("pub"), std::string(1024, 'x')}), exitFailed);
    EXPECT_EQ(Run({"raw", Url("pub"), "NOOP\r\nDELE x"}), exitFailed);
    EXPECT_FALSE(Heard("DELE x"));
}

}  // namespace
