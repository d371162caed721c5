// quennet get.

#include <sys/stat.h>

#include "app/program_test.h"

namespace {

namespace fs = std::filesystem;
using loopback::Fault;
using loopback::FaultAction;
using testing::HasSubstr;

using GetTest = ProgramTest;

TEST_F(GetTest, BringsFilesOfAllNamesFromAllPaths) {
    const std::pair<std::string, std::string> table[] = {
        // on the server, in the URL
        {"plain", "plain"},
        {"pub/rooted", "%2Fpub/rooted"},
        {"pub/a b  c", "pub/a%20b%20%20c"},
        {"pub/\xC3\xA4\xE2\x82\xAC", "pub/%C3%A4%E2%82%AC"},
        {"pub/-rf", "pub/-rf"},
        {"-", "-"},
        {"100%s%n", "100%25s%25n"},
        {"pub/~tilde", "pub/~tilde"},
        {"pub/ blank in front", "pub/%20blank%20in%20front"},
        {"a\"b/quoted\"", "a%22b/quoted%22"},
        {"pub/back\\slash", "pub/back%5Cslash"},
    };
    Serve();
    for (const char* mode : {"-q", "--active"}) {
        for (const auto& [path, url] : table) {
            Make(path, path == "-" ? "" : "bytes of " + path);
            const std::string name = fs::path(path).filename();
            Run({mode, "get", Url(url)});
            EXPECT_EQ(home.Read(name), served.Read(path));
            fs::remove(home / name);
        }
    }
    ExpectAtHome({});
}

TEST_F(GetTest, TheUserChoosesWhereItGoesAndTheDateIsTheServers) {
    Make("pub/file", "12345");
    const auto date = std::chrono::file_clock::from_sys(
        std::chrono::sys_seconds(std::chrono::seconds(995500800)));
    fs::last_write_time(served / "pub/file", date);
    fs::create_directory(home / "sub");
    Serve();
    const std::string url = Url("pub/file");
    for (const std::string output : {"sub/", "sub", "other"}) {
        const std::string path = output == "other" ? output : "sub/file";
        Run({"get", "-o", output, url});
        EXPECT_EQ(home.Read(path), "12345");
        EXPECT_EQ(fs::last_write_time(home / path), date);
        fs::remove(home / path);
    }
    Run({"get", "-o", "-", url});
    EXPECT_EQ(result.output, "12345");
    Run({"get", "-o", "/dev/null", url});
    Fails({"get", "-o", "missing/x", url});
    ASSERT_EQ(mkfifo((home / "file").c_str(), 0600), 0);
    Fails({"get", "--overwrite", url}, "file is no regular file");
    Fails({"get", "-o", "file", url}, "file: nobody reads");
    ExpectAtHome({"file", "sub"});
}

TEST_F(GetTest, AnExistingFileIsTreatedAsTheUserSays) {
    const std::string bytes = Bytes(100'000);
    const std::string part = bytes.substr(0, 40'000);
    const std::string other(40'000, 'x');
    served.Write("file", bytes);
    home.Write("file", part);
    Serve();
    Fails({"get", Url("file")}, "--resume, --overwrite or --skip");
    EXPECT_EQ(server->ConnectionCount(), 0);
    struct Row {
        std::string there;
        const char* policy;
        std::string then;
        bool resumed;
    };
    for (const Row& row : {Row{part, "--skip", part, false},
                           {part, "--resume", bytes, true},
                           {other, "--resume", bytes, true},
                           {part, "--overwrite", bytes, false}}) {
        home.Write("file", row.there);
        server->ClearLog();
        Run({"-v", "get", Url("file"), row.policy});
        EXPECT_TRUE(home.Read("file") == row.then) << row.policy;
        EXPECT_EQ(Heard("REST 39488"), row.resumed);
        EXPECT_EQ(result.errors.find("Not the same file!") != std::string::npos,
                  row.there == other);
    }
}

TEST_F(GetTest, NoNameLeadsOutOfTheFolder) {
    Serve();
    for (const char* path : {"", "pub/", "..", "pub/..", ".", "%2F", "%2e%2e", "a%0d%0ab"}) {
        IsUsage({"get", Url(path)});
    }
    EXPECT_EQ(server->ConnectionCount(), 0);
    Make("pub/file");
    Make("inner", "1");
    Run({"get", Url("pub/..%2F..%2F..%2Finner")});
    ExpectAtHome({"inner"});
}

TEST_F(GetTest, AFailureLeavesTheLocalFileAndSaysTheServersWords) {
    served.Write("file", Bytes(50'000));
    fs::create_directory(served / "pub");
    home.Write("precious", "mine");
    Serve();
    struct Row {
        Fault fault;
        std::string path;
        std::string words;
    };
    const Row table[] = {
        {{"NOOP"}, "missing", "missing: 550 "},
        {{"NOOP"}, "missing/file", "550 "},
        {{"NOOP"}, "pub", "pub is a directory"},
        {{"RETR", 0, FaultAction::reply, "450 busy \x1B[2J now"}, "file", "450 busy \\x1B[2J now"},
        {{"PASV", 0, FaultAction::reply, "227 (1,2,3)"}, "file", "file: "},
        {{"PASV", 0, FaultAction::reply, "502 no"}, "file", "502 no"},
        {{"RETR", 0, FaultAction::dropBefore}, "file", "file: "},
    };
    for (const Row& row : table) {
        server->ClearFaults();
        server->Add(row.fault);
        Fails({"get", "--overwrite", "-o", "precious", Url(row.path)}, row.words);
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        EXPECT_EQ(home.Read("precious"), "mine");
    }
    // A listing, or a directory, that is refused is none of them.
    for (const char* command : {"LIST", "CWD"}) {
        server->ClearFaults();
        server->Add({command, 0, FaultAction::reply, "550 not here"});
        Make("pub/file", "1");
        Run({"get", "--overwrite", Url("pub/file")});
        EXPECT_EQ(home.Read("file"), "1");
        EXPECT_TRUE(Heard(command == std::string("CWD") ? "RETR pub/file" : "RETR file"));
    }
}

TEST_F(GetTest, LinksAndMvsSizesAreNotTakenForTheFilesSize) {
    served.Write("target", Bytes(5000));
    fs::create_symlink("target", served / "link");
    served.Write("DATA.SET", "short");
    Serve();
    Run({"get", Url("link")});
    EXPECT_EQ(fs::file_size(home / "link"), 5000u);

    server->SetSystem("MVS is the operating system");
    server->SetFormat("/", loopback::ListFormat::mvs);
    // Two bytes more are listed than come, in a unit that is not bytes.
    server->Add({"RETR", 1, FaultAction::closeData, "", 3});
    Run({"get", Url("DATA.SET")});
}

TEST_F(GetTest, AFileThatEndsTooEarlyIsAFailureAndThePartIsKept) {
    const std::string bytes = Bytes(400'000);
    served.Write("file", bytes);
    Serve();
    for (const auto& [action, words] :
         {std::pair(FaultAction::closeData,
                    "incomplete: 200000 bytes have come, 400000 were listed"),
          {FaultAction::failData, "426 "},
          {FaultAction::resetData, "426 "}}) {
        for (const char* output : {"file", "-"}) {
            server->ClearFaults();
            server->Add({"RETR", 1, action, "", 200'000});
            Fails({"get", "-o", output, Url("file")}, words);
        }
        if (action != FaultAction::resetData) {
            EXPECT_TRUE(home.Read("file") == bytes.substr(0, 200'000));
        }
        Run({"get", "--resume", Url("file")});
        EXPECT_TRUE(home.Read("file") == bytes);
        fs::remove(home / "file");
    }
}

TEST_F(GetTest, ALocalFileThatCannotBeWrittenIsAFailure) {
    served.Write("file", Bytes(300'000));
    Serve();
    Fails({"get", "-o", "/dev/full", Url("file")}, "/dev/full: No space left");
    result = Shell(home, "\"$0\" get -o - '" + Url("file") + "' | true; exit ${PIPESTATUS[0]}");
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("standard output: "));
}

}  // namespace
