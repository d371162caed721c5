// quennet put, rm, rmdir, mkdir, mv and raw.

#include "app/program_test.h"

namespace {

namespace fs = std::filesystem;

class FileCommandsTest : public ProgramTest {
  protected:
    FileCommandsTest() {
        fs::create_directory(served / "pub");
        Serve();
    }
};

TEST_F(FileCommandsTest, AFileThatTheServerHasIsTreatedAsTheUserSays) {
    served.Write("pub/f", "theirs");
    home.Write("f", "mine");
    Fails({"put", "f", Url("pub/")}, "--overwrite or --skip");
    Run({"put", "--skip", "f", Url("pub/")});
    TerminalRun run(home, {"put", "f", Url("pub/")});
    EXPECT_TRUE(run.Await("Overwrite or skip (o/s)? "));
    run.Type("s\n");
    EXPECT_EQ(run.Finish(), exitDone);
    EXPECT_EQ(served.Read("pub/f"), "theirs");
    Run({"put", "--overwrite", "f", Url("pub/")});
    EXPECT_EQ(served.Read("pub/f"), "mine");
    Run({"put", "./f", Url("pub/other%20n\xC3\xA4me")});
    EXPECT_EQ(served.Read("pub/other n\xC3\xA4me"), "mine");
}

// The listing shows no hidden file.
TEST_F(FileCommandsTest, WhatIsNotListedIsNotOverwrittenUnasked) {
    served.Write("pub/.hidden", "theirs");
    served.Write("pub/f", "f");
    home.Write(".hidden", "mine");
    const std::vector<std::string> put = {"put", ".hidden", Url("pub/")};
    Fails(put, ".hidden is on the server; --overwrite or --skip");
    Run({"put", "--skip", ".hidden", Url("pub/")});
    Fails({"mv", Url("pub/f"), ".hidden"}, ".hidden is on the server");
    Fails({"fxp", Url("pub/f"), Url("pub/.hidden")}, ".hidden is on the server");
    for (const char* verb : {"MDTM", "SIZE", "LIST"}) {
        for (int occurrence = 1; occurrence < 9; ++occurrence) {
            server->Add({verb, occurrence, loopback::FaultAction::reply, "502 no", 0, {}});
        }
    }
    Fails(put, "does not tell whether it has .hidden; --overwrite");
    server->ClearFaults();
    for (const auto& [verb, occurrence] : {std::pair{"MDTM", 1}, {"SIZE", 1}, {"LIST", 2}}) {
        server->Add({verb, occurrence, loopback::FaultAction::reply, "502 no", 0, {}});
    }
    Fails(put, "does not tell whether it has .hidden; --overwrite");  // a plain LIST hides it
    EXPECT_EQ(served.Read("pub/.hidden"), "theirs");
    Run({"mv", "--overwrite", Url("pub/f"), ".hidden"});
    EXPECT_EQ(served.Read("pub/.hidden"), "f");
}

TEST_F(FileCommandsTest, WhatCannotGoUpChangesNothingAndSaysWhy) {
    served.Write("f", "theirs");
    home.Write("f", "mine");
    fs::create_directory(home / "folder");
    Fails({"put", "missing", Url("pub/")}, "missing: no such file");
    Fails({"put", "folder", Url("pub/")});
    Fails({"put", "--overwrite", "f", Url("none/f")}, "none: 550");
    EXPECT_FALSE(Heard("STOR f"));
    EXPECT_EQ(served.Read("f"), "theirs");
    IsUsage({"put", "f"});
    IsUsage({"put", "--resume", "f", Url("")});
}

TEST_F(FileCommandsTest, ThingsAreMadeRenamedAndRemoved) {
    Run({"mkdir", Url("pub/a/b/c/")});
    served.Write("pub/a/f", "1");
    Run({"mv", Url("pub/a/f"), "b/new name"});
    EXPECT_EQ(served.Read("pub/a/b/new name"), "1");
    Run({"rm", Url("pub/a/b/new%20name")});
    Run({"rmdir", Url("%2Fpub/a/b/c")});
    served.Write("pub/f", "");
    Fails({"rmdir", Url("pub/f")}, "550");
    EXPECT_TRUE(fs::exists(served / "pub/f"));
    EXPECT_TRUE(fs::is_empty(served / "pub/a/b"));

    Fails({"rm", Url("pub/none")}, "none: 550");
    for (const char* path : {"", "/", "pub/..", "."}) {
        IsUsage({"rmdir", Url(path)});
    }
    IsUsage({"mv", Url("pub/a"), "x\r\nDELE y"});
}

TEST_F(FileCommandsTest, ATypedLineGoesOutAsItIsAndItsRepliesArePrinted) {
    server->Add({"SITE", 1, loopback::FaultAction::reply, "214-first\r\n\x1B[2J\r\n214 last"});
    Run({"raw", Url(""), "SITE %s 100%"});
    EXPECT_EQ(result.output, "214-first\n\\x1B[2J\n214 last\n");
    EXPECT_TRUE(Heard("SITE %s 100%"));
    Fails({"raw", Url("pub"), "FROB"});
    EXPECT_EQ(result.output, "500 Unknown command\n");
    Fails({"raw", Url("pub"), std::string(1024, 'x')});
    Fails({"raw", Url("pub"), "NOOP\r\nDELE x"});
    EXPECT_FALSE(Heard("DELE x"));
}

}  // namespace
