// quennet get.

#include "app/program_test.h"

namespace {

namespace fs = std::filesystem;
using loopback::Fault;
using loopback::FaultAction;
using testing::HasSubstr;
using testing::Not;

class GetTest : public ProgramTest {
  protected:
    GetTest() { fs::create_directories(served / "pub"); }
};

TEST_F(GetTest, BringsFilesOfAllNamesFromAllPaths) {
    struct Row {
        std::string path;  // on the server
        std::string url;
    };
    const Row table[] = {
        {"plain", "plain"},
        {"pub/plain", "pub/plain"},
        {"pub/rooted", "%2Fpub/rooted"},
        {"rooted", "%2Frooted"},
        {"pub/a b  c", "pub/a%20b%20%20c"},
        {"pub/\xC3\xA4\xE2\x82\xAC", "pub/%C3%A4%E2%82%AC"},
        {"pub/-rf", "pub/-rf"},
        {"-", "-"},
        {"100%s%n", "100%25s%25n"},
        {"pub/~tilde", "pub/~tilde"},
        {"pub/ blank in front", "pub/%20blank%20in%20front"},
        {"a\"b/quoted\"", "a%22b/quoted%22"},
        {"pub/back\\slash", "pub/back%5Cslash"},
        {"empty", "empty"},
    };
    fs::create_directories(served / "a\"b");
    for (const Row& row : table) {
        served.Write(row.path, row.path == "empty" ? "" : "bytes of " + row.path);
    }
    Serve();
    for (const char* mode : {"-q", "--active"}) {
        for (const Row& row : table) {
            const std::string name = fs::path(row.path).filename();
            const RunResult result = Quennet(home, {mode, "get", Url(row.url)});
            EXPECT_EQ(result.status, exitDone) << row.url << " " << result.errors;
            EXPECT_EQ(home.Read(name), served.Read(row.path));
            fs::remove(home / name);
        }
    }
    EXPECT_EQ(NamesIn(home / ""), std::vector<std::string>{".netrc"});
}

TEST_F(GetTest, TheUserChoosesWhereItGoesAndTheDateIsTheServers) {
    served.Write("pub/file", "12345");
    const auto date = std::chrono::file_clock::from_sys(
        std::chrono::sys_seconds(std::chrono::seconds(995500800)));
    fs::last_write_time(served / "pub/file", date);
    fs::create_directory(home / "sub");
    Serve();
    const std::string url = Url("pub/file");
    EXPECT_EQ(Quennet(home, {"get", "-o", "sub/", url}).status, exitDone);
    EXPECT_EQ(home.Read("sub/file"), "12345");
    EXPECT_EQ(fs::last_write_time(home / "sub/file"), date);
    fs::remove(home / "sub/file");
    EXPECT_EQ(Quennet(home, {"get", "-o", "sub", url}).status, exitDone);
    EXPECT_EQ(home.Read("sub/file"), "12345");
    EXPECT_EQ(Quennet(home, {"get", "-o", "other", url}).status, exitDone);
    EXPECT_EQ(home.Read("other"), "12345");

    const RunResult piped = Quennet(home, {"get", "-o", "-", url});
    EXPECT_EQ(piped.status, exitDone) << piped.errors;
    EXPECT_EQ(piped.output, "12345");
    EXPECT_EQ(Quennet(home, {"get", "-o", "/dev/null", url}).status, exitDone);
    EXPECT_EQ(Quennet(home, {"get", "-o", "missing/x", url}).status, exitFailed);
    EXPECT_EQ(NamesIn(home / ""), (std::vector<std::string>{".netrc", "other", "sub"}));
}

TEST_F(GetTest, AnExistingFileIsTreatedAsTheUserSays) {
    const std::string bytes = Bytes(100'000);
    const std::string part = bytes.substr(0, 40'000);
    served.Write("file", bytes);
    Serve();
    const auto get = [&](const std::string& there, const std::vector<std::string>& policy) {
        home.Write("file", there);
        server->ClearLog();
        std::vector<std::string> arguments = {"-v", "get", Url("file")};
        arguments.insert(arguments.end(), policy.begin(), policy.end());
        return Quennet(home, arguments);
    };

    RunResult result = get(part, {});
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("--resume, --overwrite or --skip"));
    EXPECT_EQ(home.Read("file"), part);
    EXPECT_EQ(server->ConnectionCount(), 0);

    EXPECT_EQ(get(part, {"--skip"}).status, exitDone);
    EXPECT_EQ(home.Read("file"), part);

    EXPECT_EQ(get(part, {"--resume"}).status, exitDone);
    EXPECT_TRUE(home.Read("file") == bytes);
    EXPECT_TRUE(Heard("REST 39488"));

    result = get(std::string(40'000, 'x'), {"--resume"});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_TRUE(home.Read("file") == bytes);
    EXPECT_THAT(result.errors, HasSubstr("Not the same file!"));

    EXPECT_EQ(get(part, {"--overwrite"}).status, exitDone);
    EXPECT_TRUE(home.Read("file") == bytes);
    EXPECT_FALSE(Heard("REST 39488"));
}

TEST_F(GetTest, NoNameLeadsOutOfTheFolder) {
    Serve();
    for (const char* path : {"", "pub/", "..", "pub/..", ".", "%2F", "%2e%2e", "a%0d%0ab"}) {
        const RunResult result = Quennet(home, {"get", Url(path)});
        EXPECT_EQ(result.status, exitUsage) << path;
    }
    EXPECT_EQ(server->ConnectionCount(), 0);
    served.Write("inner", "1");
    const RunResult result = Quennet(home, {"get", Url("pub/..%2F..%2F..%2Finner")});

    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_EQ(NamesIn(home / ""), (std::vector<std::string>{".netrc", "inner"}));
}

TEST_F(GetTest, AFailureLeavesTheLocalFileAndSaysTheServersWords) {
    served.Write("file", Bytes(50'000));
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
        const RunResult result =
            Quennet(home, {"get", "--overwrite", "-o", "precious", Url(row.path)});
        EXPECT_EQ(result.status, exitFailed) << row.path << row.fault.text;
        EXPECT_THAT(result.errors, HasSubstr(row.words));
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        EXPECT_EQ(home.Read("precious"), "mine");
    }
}

TEST_F(GetTest, WithoutAListingTheFileStillComes) {
    const std::string bytes = Bytes(50'000);
    served.Write("pub/file", bytes);
    Serve();
    const Fault faults[] = {
        {"LIST", 0, FaultAction::reply, "550 not here"},
        {"CWD", 0, FaultAction::reply, "550 not there"},
    };
    for (const Fault& fault : faults) {
        server->ClearFaults();
        server->Add(fault);
        server->ClearLog();
        const RunResult result = Quennet(home, {"get", "--overwrite", Url("pub/file")});
        EXPECT_EQ(result.status, exitDone) << result.errors;
        EXPECT_TRUE(home.Read("file") == bytes);
        EXPECT_TRUE(Heard(fault.command == "CWD" ? "RETR pub/file" : "RETR file"));
    }
}

TEST_F(GetTest, LinksAndMvsSizesAreNotTakenForTheFilesSize) {
    served.Write("target", Bytes(5000));
    fs::create_symlink("target", served / "link");
    served.Write("DATA.SET", "short");
    Serve();
    EXPECT_EQ(Quennet(home, {"get", Url("link")}).status, exitDone);
    EXPECT_EQ(fs::file_size(home / "link"), 5000u);

    server->SetSystem("MVS is the operating system");
    server->SetFormat("/", loopback::ListFormat::mvs);
    // Two bytes more are listed than come, in a unit that is not bytes.
    server->Add({"RETR", 1, FaultAction::closeData, "", 3});
    const RunResult result = Quennet(home, {"get", Url("DATA.SET")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
}

TEST_F(GetTest, AFileThatEndsTooEarlyIsAFailureAndThePartIsKept) {
    const std::string bytes = Bytes(400'000);
    served.Write("file", bytes);
    Serve();
    struct Row {
        FaultAction action;
        std::string words;
    };
    const Row table[] = {
        {FaultAction::closeData, "incomplete: 200000 bytes have come, 400000 were listed"},
        {FaultAction::failData, "426 "},
        {FaultAction::resetData, "426 "},
    };
    for (const Row& row : table) {
        for (const char* output : {"file", "-"}) {
            server->ClearFaults();
            server->Add({"RETR", 1, row.action, "", 200'000});
            const RunResult result = Quennet(home, {"get", "-o", output, Url("file")});
            EXPECT_EQ(result.status, exitFailed);
            EXPECT_THAT(result.errors, HasSubstr(row.words));
        }
        if (row.action != FaultAction::resetData) {
            EXPECT_TRUE(home.Read("file") == bytes.substr(0, 200'000));
        }
        EXPECT_EQ(Quennet(home, {"get", "--resume", Url("file")}).status, exitDone);
        EXPECT_TRUE(home.Read("file") == bytes);
        fs::remove(home / "file");
    }
}

TEST_F(GetTest, ALocalFileThatCannotBeWrittenIsAFailure) {
    served.Write("file", Bytes(300'000));
    Serve();
    RunResult result = Quennet(home, {"get", "-o", "/dev/full", Url("file")});
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("/dev/full: No space left"));
    result = Shell(home, "\"$0\" get -o - '" + Url("file") + "' | true; exit ${PIPESTATUS[0]}");
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("standard output: "));
}

}  // namespace
