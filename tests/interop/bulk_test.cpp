// Files of 1 GiB, and of more than 4 GiB, whose sizes do not fit the 32 bits of a listed one.

#include "interop/interop_test.h"
#include "interop/program.h"

namespace quennet::interop {
namespace {

namespace fs = std::filesystem;
using hostkit::Connection;

constexpr std::uint64_t gibibyte = std::uint64_t{1} << 30;
constexpr std::uint64_t moreThan32Bits = 4 * gibibyte + 123'456'789;

class InteropBulk : public InteropTest {
  protected:
    void ExpectArrives(std::uint64_t size) {
        WriteSparse(served / "file", size);
        Converse([&](Connection& connection) {
            const hostkit::ListResult listing = connection.List();
            ASSERT_TRUE(listing.done) << listing.text;
            EXPECT_EQ(ByName(listing).at("file").size, size);
            const hostkit::TransferResult result = Download(connection, "file");
            EXPECT_TRUE(result.Done()) << result.text;
        });
        EXPECT_TRUE(SameContent(local / "file", served / "file"));
        fs::remove(local / "file");

        std::vector<std::string> arguments = {"get", "-o", local / "file", UrlOf(*server, "file")};
        if (!GetParam().passive) {
            arguments.insert(arguments.begin(), "--active");
        }
        const ProgramResult result = RunProgram(local.Path(), arguments);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_TRUE(SameContent(local / "file", served / "file"));
    }
};
INSTANTIATE_TEST_SUITE_P(Servers, InteropBulk, testing::ValuesIn(AllCases()), CaseName);

TEST_P(InteropBulk, OneGibibyteArrives) {
    ExpectArrives(gibibyte);
}

TEST_P(InteropBulk, MoreThan32BitsOfBytesArrive) {
    ExpectArrives(moreThan32Bits);
}

}  // namespace
}  // namespace quennet::interop
