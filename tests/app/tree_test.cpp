// quennet get -r, put -r, rm -r, chmod and fxp.

#include <map>

#include "app/program_test.h"
#include "support/wire.h"

namespace {

namespace fs = std::filesystem;
using loopback::FaultAction;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

class TreeTest : public ProgramTest {
  protected:
    /// Every file, folder and link of a tree, with what it holds.
    static std::map<fs::path, std::string> Contents(const fs::path& root) {
        std::map<fs::path, std::string> contents;
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            contents[entry.path().lexically_relative(root)] =
                entry.is_symlink()        ? "-> " + fs::read_symlink(entry).string()
                : entry.is_regular_file() ? ReadWhole(entry)
                                          : "folder";
        }
        return contents;
    }

    /// A session that stands in «/» after the login, behind which `script` goes on.
    void RunOnWire(const std::string& command, const std::string& script) {
        Wire wire;
        wire.Start(loginScript + script + "-> QUIT\n<- 221 bye\n");
        Fails({command, "-r", "ftp://127.0.0.1:" + std::to_string(wire.port()) + "/t"});
        wire.Finish();
    }

    /// A change of directory as hostkit makes it: looked at first, then the session's own.
    static std::string Enter(const std::string& name, const std::string& path) {
        const std::string answer = "<- 250 ok\n-> PWD\n<- 257 \"" + path + "\"\n";
        return "-> CWD " + name + "\n" + answer + "-> CWD " + path + "\n" + answer;
    }

    static std::string List(const std::string& lines) {
        return "-> PASV\n<- 227 ok ({pasv})\n-> LIST -la\n<- 150 here\ndata accept\n" + lines +
               "data close\n<- 226 done\n";
    }
    static std::string Line(const std::string& mark, const std::string& name) {
        return "data <- " + mark + "   1 u g 5 Jan  1  2001 " + name + "\\r\\n\n";
    }
};

TEST_F(TreeTest, ATreeGoesUpAndComesDownEqual) {
    Serve();
    for (const std::string folder :
         {"tree/.hid den", "tree/-r/\xC3\xA4", "tree/..x", "tree/q\"uote/\"", "tree/a\"\"b\""}) {
        fs::create_directories(home / folder);
        for (const char* name : {"/-f", "/.dot", "/a \"b\"", "/~"}) {
            home.Write(folder + name, folder.substr(name[1] == '.' ? folder.size() : 0));
        }
    }
    for (const std::string& name : {std::string(255, 'n'), " " + std::string(254, 'b')}) {
        fs::create_directories(home / "tree" / name.substr(0, 220));
        home.Write("tree/" + name.substr(0, 220) + "/" + name, "long");
    }
    fs::create_directory(home / "tree/empty");
    fs::create_symlink("..", home / "tree/up");
    Run({"put", "-r", "tree", Url("")});
    EXPECT_THAT(result.errors, HasSubstr("tree/up is left out"));
    fs::remove(home / "tree/up");
    EXPECT_EQ(Contents(served / "tree"), Contents(home / "tree"));

    fs::last_write_time(served / "tree/..x/-f",
                        fs::file_time_type::clock::now() - std::chrono::hours(100));
    Run({"--active", "get", "-r", "-o", "copy", Url("tree/")});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(Contents(home / "copy"), Contents(home / "tree"));
    const auto age =
        fs::last_write_time(served / "tree/..x/-f") - fs::last_write_time(home / "copy/..x/-f");
    EXPECT_LT(std::chrono::abs(age), std::chrono::minutes(1));

    Fails({"put", "-r", "tree", Url("tree/none/")});
    EXPECT_FALSE(Heard("MKD tree/none"));
    Fails({"get", "-r", Url("tree/-r/none")});
    IsUsage({"get", "-r", "-o", "-", Url("tree")});
}

TEST_F(TreeTest, DirectoriesThatDifferInCaseAloneKeepTheirOwnEntries) {
    Serve();
    for (const TempFolder* folder : {&served, &home}) {
        for (const char* name : {"t/Photos/a", "t/photos/a", "t/photos/b"}) {
            fs::create_directories((*folder / name).parent_path());
            folder->Write(name, folder == &home ? "mine" : std::string("of ") + name);
        }
    }
    Run({"get", "-r", "-o", "copy", Url("t")});
    EXPECT_EQ(Contents(home / "copy"), Contents(served / "t"));
    Fails({"put", "-r", "t", Url("")}, "--overwrite, --skip");
    home.Write("t/photos/new", "");
    Run({"put", "-r", "--skip", "t", Url("")});
    EXPECT_EQ(served.Read("t/photos/b"), "of t/photos/b");
    EXPECT_EQ(served.Read("t/photos/new"), "");
    Run({"chmod", "-R", "700", Url("t")});
    EXPECT_EQ(ModeOf("t/photos/b"), "700");
    Run({"rm", "-r", Url("t")});
    EXPECT_FALSE(fs::exists(served / "t"));
}

TEST_F(TreeTest, FilesThatExistAreAskedAboutOneByOneOrOnceForAll) {
    struct Case {
        std::vector<std::string> words;
        const char* typed;
        int status;
        const char* here;  // a, b, c and new, as they are then
        const char* there;
    };
    const Case cases[] = {
        {{"get"}, "n\nb\nn\nnew\nx\nS\n", exitDone, "mmmt", "ttt-"},
        {{"get"}, "s\no\nc\n", exitFailed, "mtm-", "ttt-"},
        {{"get"}, "O\n", exitDone, "ttt-", "ttt-"},
        {{"put"}, "n\nnew\nO\n", exitDone, "mmm-", "tmmm"},
        {{"put"}, "s\nc\n", exitFailed, "mmm-", "ttt-"},
        {{"put", "--skip"}, "", exitDone, "mmm-", "ttt-"},
        {{"get", "--overwrite"}, "", exitDone, "ttt-", "ttt-"},
    };
    Serve();
    const auto letters = [](const TempFolder& folder) {
        std::string all;
        for (const char* name : {"t/a", "t/b", "t/c", "t/new"}) {
            all += folder.Read(name) == "(none)" ? '-' : folder.Read(name)[0];
        }
        return all;
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.words.front() + " " + each.typed);
        for (const TempFolder* folder : {&served, &home}) {
            fs::remove_all(*folder / "t");
            fs::create_directory(*folder / "t");
            for (const char* name : {"t/a", "t/b", "t/c"}) {
                folder->Write(name, folder == &home ? "mine" : "theirs");
            }
        }
        std::vector<std::string> words = each.words;
        words.push_back("-r");
        if (words.front() == "put") {
            words.push_back("t");
        }
        words.push_back(Url(words.front() == "put" ? "" : "t"));
        if (each.typed[0] == 0) {
            Run(words, each.status);
        } else {
            TerminalRun run(home, words);
            EXPECT_TRUE(run.Await("t/a is there with "));
            run.Type(each.typed);
            EXPECT_EQ(run.Finish(), each.status) << run.Shown();
        }
        EXPECT_EQ(letters(home), each.here);
        EXPECT_EQ(letters(served), each.there);
    }
    Fails({"get", "-r", Url("t")}, "--overwrite, --skip");
}

TEST_F(TreeTest, ADownloadThatBrokeOffGoesOnWhereItStopped) {
    Serve();
    const std::string second = Bytes(90'000);
    Make("t/1", "first");
    Make("t/2", second);
    Make("t/3", "third");
    server->Add({"RETR", 2, FaultAction::dropBefore, "", 0, {}});
    RefuseReconnects();
    Fails({"get", "-r", Url("t")}, "quennet: t: the connection was lost\n");
    EXPECT_EQ(NamesIn(home / "t"), std::vector<std::string>{"1"});
    server->ClearFaults();
    home.Write("t/2", second.substr(0, 40'000));
    Run({"-v", "get", "-r", "--resume", Url("t")});
    EXPECT_THAT(result.errors, HasSubstr("t/1 is left out: it is complete"));
    EXPECT_THAT(result.errors, HasSubstr("REST 39488"));
    EXPECT_EQ(Contents(home / "t"), Contents(served / "t"));
}

TEST_F(TreeTest, WhatFailsIsToldAndTheRestGoesOnUntilTheConnectionIsLost) {
    Serve();
    fs::create_directories(home / "t/sub");
    for (const char* name : {"t/1", "t/2", "t/3", "t/sub/4"}) {
        home.Write(name, "x");
    }
    server->Add({"STOR", 2, FaultAction::reply, "553 not this one", 0, {}});
    Fails({"put", "-r", "t", Url("")}, "t/2: 553 not this one\n");
    EXPECT_THAT(result.errors, HasSubstr("quennet: t: 1 entry failed\n"));
    EXPECT_EQ(Contents(served / "t").size(), 4u);

    server->Add({"DELE", 2, FaultAction::dropBefore, "", 0, {}});
    RefuseReconnects();
    Fails({"rm", "-r", Url("t")}, "quennet: t: the connection was lost\n");
    server->ClearFaults();
    server->Add({"DELE", 2, FaultAction::dropBefore, "", 0, {}});
    Run({"rm", "-r", Url("t")});
    EXPECT_FALSE(fs::exists(served / "t"));
    EXPECT_TRUE(fs::exists(home / "t/sub/4"));
}

TEST_F(TreeTest, LinksAreRemovedThemselvesAndLeadNowhere) {
    Serve();
    fs::create_directories(served / "t/sub");
    Make("kept/file", "kept");
    fs::create_symlink("..", served / "t/sub/parent");
    fs::create_symlink("/", served / "t/root");
    fs::create_symlink("../kept", served / "t/kept");
    fs::create_symlink("../kept/file", served / "t/file");
    Run({"get", "-r", Url("t")});
    EXPECT_THAT(Contents(home / "t"), ElementsAre(Pair("file", "kept"), Pair("sub", "folder")));
    Run({"chmod", "-R", "go=", Url("t")});
    EXPECT_EQ(ModeOf("t/sub"), "700");
    EXPECT_NE(ModeOf("kept/file"), "600");
    Run({"rm", "-r", Url("t")});
    EXPECT_FALSE(fs::exists(served / "t"));
    EXPECT_EQ(served.Read("kept/file"), "kept");
}

TEST_F(TreeTest, ADownloadFollowsNoLinkBelowItsTarget) {
    Serve();
    for (const char* name : {"t/sub/deep/a", "t/sub/b", "t/file", "t/last"}) {
        Make(name, "theirs");
    }
    for (const char* folder : {"elsewhere/deep", "outside"}) {
        fs::create_directories(home / folder);
    }
    home.Write("outside/file", "mine");
    fs::create_symlink("elsewhere", home / "t");  // the user names this one
    fs::create_symlink("../outside", home / "elsewhere/sub");
    fs::create_symlink("../outside/file", home / "elsewhere/file");
    for (const char* way : {"--overwrite", "--resume"}) {
        Fails({"-q", "get", "-r", way, Url("t")});
        EXPECT_EQ(result.errors,
                  "t/file: t/file is a link, which is not followed\n"
                  "t/sub: t/sub is a link, which is not followed\n"
                  "quennet: t: 2 entries failed\n");
        EXPECT_THAT(Contents(home / "outside"), ElementsAre(Pair("file", "mine")));
        EXPECT_EQ(home.Read("elsewhere/last"), "theirs");
    }
}

// A listing that calls links directories: only the names under which the server knows them tell.
TEST_F(TreeTest, DirectoriesThatLieElsewhereAreNotEnteredFurther) {
    RunOnWire("rm", List(Line("drwxr-xr-x", "t")) + Enter("t", "/t") +
                        List(Line("drwxr-xr-x", "loop") + Line("drwxr-xr-x", "out") +
                             Line("-rw-r--r--", "../x") + Line("-rw-r--r--", "f")) +
                        Enter("loop", "/t") + Enter("/t", "/t") + Enter("out", "/etc") +
                        Enter("/t", "/t") +
                        "-> RMD loop\n<- 550 no\n-> DELE loop\n<- 250 ok\n"
                        "-> RMD out\n<- 550 no\n-> DELE out\n<- 250 ok\n"
                        "-> DELE f\n<- 250 ok\n" +
                        Enter("/", "/") + "-> RMD t\n<- 250 ok\n");
    EXPECT_THAT(result.errors, HasSubstr("t/../x: no entry can have this name"));
    EXPECT_THAT(result.errors, HasSubstr("t/out is left out: it leads out of the tree, to /etc"));

    RunOnWire("get", Enter("t", "/t") + Enter("/t", "/t") +
                         List(Line("drwxr-xr-x", "..\\xFFx") + Line("-rw-r--r--", "/etc/passwd")) +
                         Enter("..\xFFx", "/t/..\xFFx") + List(Line("", "")));
    EXPECT_THAT(result.errors, HasSubstr("t//etc/passwd: no entry can have this name"));
    EXPECT_TRUE(fs::is_directory(home / "t/..\xFFx"));
}

TEST_F(TreeTest, PermissionsAreChangedAsChmodTakesThem) {
    Serve();
    fs::create_directories(served / "t/sub");
    Make("t/f");
    for (const auto& [mode, before, after] : {std::tuple("640", "777", "640"),
                                              {"0751", "000", "751"},
                                              {"u+x,go-w", "662", "740"},
                                              {"a=r", "777", "444"},
                                              {"+x", "640", "751"},
                                              {"g=rw,g-r", "700", "720"}}) {
        SetMode("t/f", before);
        Run({"chmod", mode, Url("t/f")});
        EXPECT_EQ(ModeOf("t/f"), after) << mode;
    }
    SetMode("t/f", "644");
    Run({"chmod", "o-r", Url("t")});
    EXPECT_EQ(ModeOf("t/f") + ModeOf("t"), "644751");
    Run({"chmod", "-R", "u=rwx,go=", Url("t")});
    EXPECT_EQ(ModeOf("t/f") + ModeOf("t/sub"), "700700");
    for (const char* mode : {"8", "1777", "u+z", "u", "x+r", "", "644,", "u+x,"}) {
        IsUsage({"chmod", mode, Url("t/f")});
    }
    Fails({"chmod", "644", Url("t/none")});
    IsUsage({"chmod", Url("t/f")});  // no terminal for the dialog
    server->Add({"SITE", 0, FaultAction::reply, "502 not here", 0, {}});
    Fails({"chmod", "600", Url("t/f")}, "f: 502 not here");
}

TEST_F(TreeTest, AFileGoesFromServerToServer) {
    Serve();
    TempFolder other;
    loopback::Options otherOptions;
    otherOptions.root = other / "";
    loopback::Server otherServer(otherOptions);
    const std::string to = "ftp://127.0.0.1:" + std::to_string(otherServer.Port()) + "/";
    const std::string bytes = Bytes(3'000'000);
    Make("d/f", bytes);
    Run({"fxp", Url("d/f"), to});
    EXPECT_TRUE(other.Read("f") == bytes);
    Fails({"fxp", Url("d/f"), to}, "f is on the server with 3000000 bytes; --overwrite");
    Run({"fxp", "--skip", Url("d/f"), to});
    other.Write("f", "shorter");
    Run({"fxp", "--overwrite", to + "f", Url("d/back")});
    EXPECT_EQ(served.Read("d/back"), "shorter");
    Fails({"fxp", Url("d/none"), to}, "the source says 550");
    Fails({"fxp", Url("d/f"), to + "none/"});
    Fails({"fxp", Url("d"), to});
    IsUsage({"fxp", Url("d/f")});
    IsUsage({"fxp", Url("d/"), to});
}

}  // namespace
