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
