// The quennet program against real servers: what it prints, what it leaves, and its exit status.

#include <gmock/gmock.h>
#include <signal.h>

#include <chrono>

#include "interop/interop_test.h"
#include "interop/program.h"

namespace quennet::interop {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using Clock = std::chrono::steady_clock;

constexpr int exitDone = 0;
constexpr int exitFailed = 1;
constexpr int exitNoLogin = 3;

// Nobody has written all of it before the test has seen a part.
constexpr std::uint64_t tooBigToBeThrough = 4'000'000'000;

class InteropProgram : public InteropTest {
  protected:
    ProgramResult Run(std::vector<std::string> arguments) {
        if (!GetParam().passive) {
            arguments.insert(arguments.begin(), "--active");
        }
        ProgramResult result = RunProgram(local.Path(), arguments);
        if (HasFailure()) {
            std::cerr << result.errors;
        }
        return result;
    }

    std::string Url(const std::string& path) const { return UrlOf(*server, path); }
};
INSTANTIATE_TEST_SUITE_P(Servers, InteropProgram, testing::ValuesIn(AllCases()), CaseName);

TEST_P(InteropProgram, LsPrintsTheEntries) {
    WriteBytes(served / "sub" / "with blank.txt", "12345");
    SetFileTime(served / "sub" / "with blank.txt", 995544000);
    fs::create_directory(served / "sub" / "inner");

    ProgramResult result = Run({"ls", Url("sub")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("with blank.txt\n"));
    EXPECT_THAT(result.output, HasSubstr("inner"));

    result = Run({"ls", "--porcelain", Url("sub")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("\t5\t2001-07-19 00:00\twith blank.txt\n"));
}

TEST_P(InteropProgram, GetBringsTheFile) {
    const std::string bytes = MixedBytes(3'000'000);
    WriteBytes(served / "sub" / "100% file", bytes);
    ProgramResult result = Run({"get", "-o", local / "copy", Url("sub/100% file")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_TRUE(ReadBytes(local / "copy") == bytes);

    result = Run({"get", "-o", "-", Url("sub/100% file")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_TRUE(result.output == bytes);

    // Without a name it is the file's own, in the working directory.
    result = Run({"get", Url("sub/100% file")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_TRUE(ReadBytes(local / "100% file") == bytes);
}

TEST_P(InteropProgram, FilesGoUpAndThingsAreMadeRenamedAndRemoved) {
    fs::permissions(served.Path(), fs::perms::all);
    const std::string bytes = MixedBytes(3'000'000);
    WriteBytes(local / "a b.bin", bytes);
    const auto expectDone = [&](const std::vector<std::string>& arguments) {
        const ProgramResult result = Run(arguments);
        EXPECT_EQ(result.status, exitDone) << arguments.front() << ": " << result.errors;
    };
    expectDone({"mkdir", Url("new/inner")});
    expectDone({"put", "a b.bin", Url("new/inner/")});
    EXPECT_TRUE(ReadBytes(served / "new" / "inner" / "a b.bin") == bytes);
    EXPECT_EQ(Run({"put", "a b.bin", Url("new/inner/")}).status, exitFailed);
    WriteBytes(local / "a b.bin", "shorter");
    expectDone({"put", "--overwrite", "a b.bin", Url("new/inner/")});
    expectDone({"mv", Url("new/inner/a b.bin"), "../moved"});
    EXPECT_EQ(ReadBytes(served / "new" / "moved"), "shorter");
    expectDone({"raw", Url("new"), "SITE CHMOD 600 moved"});
    expectDone({"rm", Url("new/moved")});
    expectDone({"rmdir", Url("new/inner")});
    EXPECT_TRUE(fs::is_empty(served / "new"));
    EXPECT_EQ(Run({"rm", Url("new/moved")}).status, exitFailed);
}

// A thousand files in a hundred folders go up, come down, change their permissions, and go.
TEST_P(InteropProgram, WholeTreesAreCopiedChangedAndRemoved) {
    fs::permissions(served.Path(), fs::perms::all);
    const char* const names[] = {"plain",    "a blank", "-dash", ".dot",   "..dots",
                                 "\xC3\xA4", "~tilde",  "100%",  "a\"b\"", "#?&"};
    for (int folder = 0; folder < 100; ++folder) {
        const fs::path path = local / "tree" / (names[folder % 10] + std::to_string(folder / 10)) /
                              (folder % 3 == 0 ? "-deep er" : "");
        fs::create_directories(path);
        for (const char* name : names) {
            WriteBytes(path / name, MixedBytes(static_cast<std::size_t>(folder) * 17));
        }
    }
    ProgramResult result = Run({"put", "-r", "tree", Url("")});
    // No walk can tell where a directory is whose name holds a quotation mark.
    EXPECT_EQ(result.status, exitFailed);
    for (int folder = 0; folder < 10; ++folder) {
        fs::remove_all(local / "tree" / ("a\"b\"" + std::to_string(folder)));
    }
    EXPECT_TRUE(TreeOf(local / "tree") == TreeOf(served / "tree")) << result.errors;

    SetFileTime(served / "tree" / "plain0" / "-deep er" / "plain", 995544000);
    result = Run({"get", "-r", "-o", "back", Url("tree")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_TRUE(TreeOf(local / "back") == TreeOf(local / "tree"));
    // A listing tells minutes, and of an old file days.
    for (const auto& [path, minutes] :
         {std::pair("plain0/-deep er/plain", 24 * 60), {"-dash2/.dot", 1}}) {
        const auto lost = fs::last_write_time(served / "tree" / path) -
                          fs::last_write_time(local / "back" / path);
        EXPECT_TRUE(lost >= lost.zero() && lost < std::chrono::minutes(minutes)) << path;
    }

    fs::create_directory(served / "kept");
    WriteBytes(served / "kept" / "file", "kept");
    fs::create_symlink("../kept", served / "tree" / "link");
    result = Run({"chmod", "-R", "go-rwx", Url("tree")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_EQ(fs::status(served / "tree" / "plain1" / ".dot").permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_NE(fs::status(served / "kept" / "file").permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    result = Run({"rm", "-r", Url("tree")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_FALSE(fs::exists(served / "tree"));
    EXPECT_EQ(ReadBytes(served / "kept" / "file"), "kept");
}

TEST_P(InteropProgram, AnInterruptedGetEndsSoonAndKeepsThePart) {
    WriteSparse(served / "big", tooBigToBeThrough);
    std::vector<std::string> arguments = {"get", "-o", local / "big", Url("big")};
    if (!GetParam().passive) {
        arguments.insert(arguments.begin(), "--active");
    }
    Program program(local.Path(), arguments);
    ASSERT_TRUE(AwaitSize(local / "big", 1'000'000));
    server->Halt();
    const Clock::time_point start = Clock::now();
    program.Signal(SIGINT);
    const ProgramResult result = program.Finish();
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(15));
    EXPECT_NE(result.status, exitDone);
    server->Resume();
    EXPECT_GE(fs::file_size(local / "big"), 1'000'000u);
}

class InteropProgramFailures : public InteropProgram {};
INSTANTIATE_TEST_SUITE_P(Servers, InteropProgramFailures, testing::ValuesIn(PassiveCases()),
                         CaseName);

TEST_P(InteropProgramFailures, EachHasItsExitStatusAndTheServersWords) {
    WriteBytes(local / "precious", "mine");
    ProgramResult result =
        Run({"get", "--overwrite", "-o", local / "precious", Url("missing file")});
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("550"));
    EXPECT_EQ(ReadBytes(local / "precious"), "mine");

    result = Run({"ls", Url("missing folder")});
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("550"));
    EXPECT_EQ(result.output, "");

    result = Run(
        {"ls", "ftp://nobody-of-that-name:x@127.0.0.1:" + std::to_string(server->Port()) + "/"});
    EXPECT_EQ(result.status, exitNoLogin);
    EXPECT_THAT(result.errors, HasSubstr("530"));

    server->Stop();
    result = Run({"ls", Url("")});
    EXPECT_EQ(result.status, exitNoLogin);
    EXPECT_NE(result.errors, "");
}

TEST_P(InteropProgramFailures, AServerThatDiesInTheMiddleIsAFailureAndThePartIsKept) {
    WriteSparse(served / "big", tooBigToBeThrough);
    Program program(local.Path(), {"get", "-o", local / "big", Url("big")});
    ASSERT_TRUE(AwaitSize(local / "big", 1'000'000));
    server->Stop();
    const ProgramResult result = program.Finish();
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_NE(result.errors, "");
    EXPECT_GE(fs::file_size(local / "big"), 1'000'000u);
}

}  // namespace
}  // namespace quennet::interop
