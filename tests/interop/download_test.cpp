// Downloads from real servers: bytes, resume, and what may not be touched.

#include "interop/interop_test.h"
#include "support/wait.h"

namespace quennet::interop {
namespace {

using hostkit::Connection;

class InteropDownload : public InteropTest {};
INSTANTIATE_TEST_SUITE_P(Servers, InteropDownload, testing::ValuesIn(AllCases()), CaseName);

TEST_P(InteropDownload, EveryByteArrives) {
    // Around the module's block, with bytes that a text transfer would change.
    const std::map<std::string, std::string> files = {
        {"empty", ""},
        {"one", "\n"},
        {"lines", "a\r\nb\nc\rd\xff\xff\xf4\0e\x1a"},
        {"small with a blank", MixedBytes(1000)},
        {"block", MixedBytes(4096, 2)},
        {"block and one", MixedBytes(4097, 3)},
        {"mebibyte", MixedBytes(1 << 20, 4)},
        {"odd", MixedBytes(3333333, 5)},
    };
    for (const auto& [name, bytes] : files) {
        WriteBytes(served / name, bytes);
    }
    Converse([&](Connection& connection) {
        for (const auto& [name, bytes] : files) {
            const hostkit::TransferResult result = Download(connection, name);
            EXPECT_TRUE(result.Done()) << name << ": " << result.text;
            EXPECT_TRUE(ReadBytes(local / name) == bytes) << name;
        }
    });
}

TEST_P(InteropDownload, ATypedRestartIsNotWhereTheNextFileBegins) {
    Converse([&](Connection& connection) {
        ExpectInStep(connection);
        connection.StartTypedLine("REST 5");
        EXPECT_TRUE(WaitUntil([&] {
            return transcript.Count("  350 ") == 1 && connection.CheckDirectory("sub").Done();
        }));
        EXPECT_TRUE(connection.CheckDirectory(connection.Directory()).Done());
        EXPECT_TRUE(Download(connection, "step.txt").Done());
        EXPECT_EQ(ReadBytes(local / "step.txt"), ReadBytes(served / "step.txt"));
    });
}

TEST_P(InteropDownload, APartialFileThatIsAnotherOneIsReplacedWhole) {
    // Small enough to lie in the sockets' buffers whole, and too big for that.
    for (const std::size_t size : {std::size_t{3000}, std::size_t{100'000'000}}) {
        const std::string bytes = MixedBytes(size, 7);
        std::string other = bytes.substr(0, size / 2);
        other[other.size() - 200] ^= 1;
        WriteBytes(served / "file", bytes);
        WriteBytes(local / "file", other);
        Converse([&](Connection& connection) {
            const auto start = std::chrono::steady_clock::now();
            const hostkit::TransferResult result = Download(connection, "file");
            EXPECT_TRUE(result.Done()) << result.text;
            // A server whose data connection does not break answers ABOR only when it times out.
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
            EXPECT_TRUE(ReadBytes(local / "file") == bytes);
            ExpectInStep(connection);
        });
    }
    EXPECT_EQ(transcript.Count("Not the same file!"), 2);
}

}  // namespace
}  // namespace quennet::interop
