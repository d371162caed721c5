// quennet get -r, put -r, rm -r, chmod and fxp.

#include <sys/stat.h>

#include <fstream>

#include "app/program_test.h"
#include "support/wire.h"

namespace {

namespace fs = std::filesystem;
using loopback::FaultAction;
using testing::HasSubstr;
using testing::Not;

class TreeTest : public ProgramTest {
  protected:
    int Run(const std::vector<std::string>& arguments) {
        result = Quennet(home, arguments);
        return result.status;
    }

    /// Every file, folder and link of a tree, with what it holds.
    static std::vector<std::string> Contents(const fs::path& root) {
        std::vector<std::string> contents;
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            std::string line = entry.path().lexically_relative(root).string();
            if (entry.is_symlink()) {
                line += " -> " + fs::read_symlink(entry).string();
            } else if (entry.is_regular_file()) {
                std::ifstream file(entry.path());
                line += ": " + std::string(std::istreambuf_iterator<char>(file), {});
            }
            contents.push_back(line);
        }
        std::sort(contents.begin(), contents.end());
        return contents;
    }

    static std::string ModeOf(const fs::path& path) {
        struct stat status = {};
        stat(path.c_str(), &status);
        char text[8];
        std::snprintf(text, sizeof text, "%03o", status.st_mode & 0777U);
        return text;
    }

    /// A session that stands in «/» after the login, behind which `script` goes on.
    void RunOnWire(const std::vector<std::string>& words, const std::string& script) {
        Wire wire;
        wire.Start(R"(
            <- 220 ready
            -> USER anonymous
            <- 230 in
            -> SYST
            <- 215 UNIX
            -> PWD
            <- 257 "/"
        )" + script +
                   "-> QUIT\n<- 221 bye\n");
        std::vector<std::string> arguments = words;
        arguments.back() = "ftp://127.0.0.1:" + std::to_string(wire.port()) + "/" + words.back();
        Run(arguments);
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

    /// Nobody but the next client is let in.
    void RefuseReconnects() {
        for (int occurrence = 2; occurrence < 20; ++occurrence) {
            server->Add({"", occurrence, FaultAction::reply, "421 gone", 0, {}});
        }
    }

    RunResult result;
};

TEST_F(TreeTest, ATreeGoesUpAndComesDownEqual) {
    Serve();
    for (const char* folder : {"tree/.hid den", "tree/-r/\xC3\xA4", "tree/empty", "tree/..x"}) {
        fs::create_directories(home / folder);
        home.Write(std::string(folder) + "/-f", folder);
        home.Write(std::string(folder) + "/.dot", "");
        home.Write(std::string(folder) + "/a \"b\"", "quoted");
        home.Write(std::string(folder) + "/~", "tilde");
    }
    fs::remove_all(home / "tree/empty/");
    fs::create_directory(home / "tree/empty");
    fs::create_symlink("..", home / "tree/up");
    EXPECT_EQ(Run({"put", "-r", "tree", Url("")}), exitDone) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr("tree/up is left out"));
    fs::remove(home / "tree/up");
    EXPECT_EQ(Contents(served / "tree"), Contents(home / "tree"));

    fs::last_write_time(served / "tree/-r/\xC3\xA4/-f",
                        fs::file_time_type::clock::now() - std::chrono::hours(100));
    EXPECT_EQ(Run({"--active", "get", "-r", "-o", "copy", Url("tree/")}), exitDone)
        << result.errors;
    EXPECT_EQ(Contents(home / "copy"), Contents(home / "tree"));
    const auto age = fs::last_write_time(served / "tree/-r/\xC3\xA4/-f") -
                     fs::last_write_time(home / "copy/-r/\xC3\xA4/-f");
    EXPECT_LT(std::chrono::abs(age), std::chrono::minutes(1));
    EXPECT_EQ(result.errors, "");

    EXPECT_EQ(Run({"put", "-r", "tree", Url("tree/none/")}), exitFailed);
    EXPECT_FALSE(Heard("MKD tree/none"));
    EXPECT_EQ(Run({"get", "-r", Url("tree/-r/none")}), exitFailed);
    EXPECT_EQ(Run({"get", "-r", "-o", "-", Url("tree")}), exitUsage);
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
            EXPECT_EQ(Run(words), each.status) << result.errors;
        } else {
            TerminalRun run(home, words);
            EXPECT_TRUE(run.Await("t/a is there with "));
            run.Type(each.typed);
            EXPECT_EQ(run.Finish(), each.status) << run.Shown();
        }
        EXPECT_EQ(letters(home), each.here);
        EXPECT_EQ(letters(served), each.there);
    }
    EXPECT_EQ(Run({"get", "-r", Url("t")}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("--overwrite, --skip"));
}

TEST_F(TreeTest, ADownloadThatBrokeOffGoesOnWhereItStopped) {
    Serve();
    fs::create_directory(served / "t");
    const std::string first = Bytes(50'000);
    const std::string second = Bytes(90'000);
    served.Write("t/1", first);
    served.Write("t/2", second);
    served.Write("t/3", "third");
    server->Add({"RETR", 2, FaultAction::dropBefore, "", 0, {}});
    RefuseReconnects();
    EXPECT_EQ(Run({"get", "-r", Url("t")}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("quennet: t: the connection was lost\n"));
    EXPECT_EQ(NamesIn(home / "t"), std::vector<std::string>{"1"});
    server->ClearFaults();
    home.Write("t/2", second.substr(0, 40'000));
    EXPECT_EQ(Run({"-v", "get", "-r", "--resume", Url("t")}), exitDone) << result.errors;
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
    EXPECT_EQ(Run({"put", "-r", "t", Url("")}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("t/2: 553 not this one\n"));
    EXPECT_THAT(result.errors, HasSubstr("quennet: t: 1 entry failed\n"));
    EXPECT_EQ(Contents(served / "t").size(), 4u);

    server->Add({"DELE", 2, FaultAction::dropBefore, "", 0, {}});
    RefuseReconnects();
    EXPECT_EQ(Run({"rm", "-r", Url("t")}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("quennet: t: the connection was lost\n"));
    server->ClearFaults();
    server->Add({"DELE", 2, FaultAction::dropBefore, "", 0, {}});
    EXPECT_EQ(Run({"rm", "-r", Url("t")}), exitDone) << result.errors;
    EXPECT_FALSE(fs::exists(served / "t"));
    EXPECT_TRUE(fs::exists(home / "t/sub/4"));
}

TEST_F(TreeTest, LinksAreRemovedThemselvesAndLeadNowhere) {
    Serve();
    fs::create_directories(served / "t/sub");
    fs::create_directories(served / "kept/deep");
    served.Write("kept/deep/file", "kept");
    fs::create_symlink("..", served / "t/sub/parent");
    fs::create_symlink("/", served / "t/root");
    fs::create_symlink("../kept", served / "t/kept");
    fs::create_symlink("../kept/deep/file", served / "t/file");
    EXPECT_EQ(Run({"get", "-r", Url("t")}), exitDone) << result.errors;
    EXPECT_EQ(Contents(home / "t"), (std::vector<std::string>{"file: kept", "sub"}));
    EXPECT_EQ(Run({"chmod", "-R", "go=", Url("t")}), exitDone) << result.errors;
    EXPECT_EQ(ModeOf(served / "t/sub"), "700");
    EXPECT_NE(ModeOf(served / "kept/deep/file"), "600");
    EXPECT_EQ(Run({"rm", "-r", Url("t")}), exitDone) << result.errors;
    EXPECT_FALSE(fs::exists(served / "t"));
    EXPECT_EQ(served.Read("kept/deep/file"), "kept");
}

// A listing that calls links directories: only the names under which the server knows them tell.
TEST_F(TreeTest, DirectoriesThatLieElsewhereAreNotEnteredFurther) {
    RunOnWire({"rm", "-r", "t"}, List(Line("drwxr-xr-x", "t")) + Enter("t", "/t") +
                                     List(Line("drwxr-xr-x", "loop") + Line("drwxr-xr-x", "out") +
                                          Line("-rw-r--r--", "../x") + Line("-rw-r--r--", "f")) +
                                     Enter("loop", "/t") + Enter("/t", "/t") +
                                     Enter("out", "/etc") + Enter("/t", "/t") +
                                     "-> RMD loop\n<- 550 no\n-> DELE loop\n<- 250 ok\n"
                                     "-> RMD out\n<- 550 no\n-> DELE out\n<- 250 ok\n"
                                     "-> DELE f\n<- 250 ok\n" +
                                     Enter("/", "/") + "-> RMD t\n<- 250 ok\n");
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("t/../x: no entry can have this name"));
    EXPECT_THAT(result.errors, HasSubstr("t/out is left out: it leads out of the tree, to /etc"));

    RunOnWire({"get", "-r", "t"},
              Enter("t", "/t") + Enter("/t", "/t") +
                  List(Line("drwxr-xr-x", "..\\xFFx") + Line("-rw-r--r--", "/etc/passwd")) +
                  Enter("..\xFFx", "/t/..\xFFx") + List(Line("", "")));
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("t//etc/passwd: no entry can have this name"));
    EXPECT_TRUE(fs::is_directory(home / "t/..\xFFx"));
}

TEST_F(TreeTest, PermissionsAreChangedAsChmodTakesThem) {
    Serve();
    fs::create_directories(served / "t/sub");
    served.Write("t/f", "");
    struct Case {
        const char* mode;
        const char* before;
        const char* after;
    };
    for (const Case& each : std::initializer_list<Case>{{"640", "777", "640"},
                                                        {"0751", "000", "751"},
                                                        {"u+x,go-w", "662", "740"},
                                                        {"a=r", "777", "444"},
                                                        {"+x", "640", "751"},
                                                        {"g=rw,g-r", "700", "720"}}) {
        const auto before = static_cast<fs::perms>(std::stoi(each.before, nullptr, 8));
        fs::permissions(served / "t/f", before);
        EXPECT_EQ(Run({"chmod", each.mode, Url("t/f")}), exitDone) << result.errors;
        EXPECT_EQ(ModeOf(served / "t/f"), each.after) << each.mode;
    }
    fs::permissions(served / "t/f", static_cast<fs::perms>(0644));
    EXPECT_EQ(Run({"chmod", "o-r", Url("t")}), exitDone) << result.errors;
    EXPECT_EQ(ModeOf(served / "t/f") + ModeOf(served / "t"), "644" + std::string("751"));
    EXPECT_EQ(Run({"chmod", "-R", "u=rwx,go=", Url("t")}), exitDone) << result.errors;
    EXPECT_EQ(ModeOf(served / "t/f") + ModeOf(served / "t/sub"), "700" + std::string("700"));
    for (const char* mode : {"8", "1777", "u+z", "u", "x+r", "", "644,", "u+x,"}) {
        EXPECT_EQ(Run({"chmod", mode, Url("t/f")}), exitUsage) << mode;
    }
    EXPECT_EQ(Run({"chmod", "644", Url("t/none")}), exitFailed);
    EXPECT_EQ(Run({"chmod", Url("t/f")}), exitUsage) << "no terminal for the dialog";
    server->Add({"SITE", 0, FaultAction::reply, "502 not here", 0, {}});
    EXPECT_EQ(Run({"chmod", "600", Url("t/f")}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("f: 502 not here"));
}

TEST_F(TreeTest, AFileGoesFromServerToServer) {
    Serve();
    TempFolder other;
    loopback::Options otherOptions;
    otherOptions.root = other / "";
    loopback::Server otherServer(otherOptions);
    const std::string to = "ftp://127.0.0.1:" + std::to_string(otherServer.Port()) + "/";
    const std::string bytes = Bytes(3'000'000);
    fs::create_directory(served / "d");
    served.Write("d/f", bytes);
    EXPECT_EQ(Run({"fxp", Url("d/f"), to}), exitDone) << result.errors;
    EXPECT_TRUE(other.Read("f") == bytes);
    EXPECT_EQ(Run({"fxp", Url("d/f"), to}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("f is on the server with 3000000 bytes; --overwrite"));
    EXPECT_EQ(Run({"fxp", "--skip", Url("d/f"), to}), exitDone);
    other.Write("f", "shorter");
    EXPECT_EQ(Run({"fxp", "--overwrite", to + "f", Url("d/back")}), exitDone) << result.errors;
    EXPECT_EQ(served.Read("d/back"), "shorter");
    EXPECT_EQ(Run({"fxp", Url("d/none"), to}), exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("the source says 550"));
    EXPECT_EQ(Run({"fxp", Url("d/f"), to + "none/"}), exitFailed);
    EXPECT_EQ(Run({"fxp", Url("d"), to}), exitFailed);
    EXPECT_EQ(Run({"fxp", Url("d/f")}), exitUsage);
    EXPECT_EQ(Run({"fxp", Url("d/"), to}), exitUsage);
}

}  // namespace
