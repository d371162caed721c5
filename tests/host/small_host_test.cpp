// The small host of the guide, as a newcomer runs it.

#include <tuple>

#include "app/program_test.h"

namespace {

using testing::HasSubstr;

class SmallHostTest : public ProgramTest {
  protected:
    SmallHostTest() {
        options.accounts = {{"anna", "secret"}};
        options.anonymous = false;
        std::filesystem::create_directory(served / "pub");
        served.Write("pub/data.bin", bytes);
        Serve();
    }

    RunResult SmallHost(const std::string& password, const std::string& directory,
                        const std::string& file) const {
        const std::string place = "127.0.0.1:" + std::to_string(server->Port());
        return ProgramRun(home,
                          {"FTP_PASSWORD=" + password, QUENNET_SMALL_HOST, QUENNET_MODULE, place,
                           "anna", directory, file, "target"},
                          "/usr/bin/env")
            .Finish();
    }

    const std::string bytes = Bytes(300'000);
};

TEST_F(SmallHostTest, ListsADirectoryAndDownloadsItsFile) {
    RunResult result = SmallHost("secret", "pub", "data.bin");
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_EQ(result.output, "d          0 ..\n-     300000 data.bin\n");
    EXPECT_TRUE(home.Read("target") == bytes);

    home.Write("target", bytes.substr(0, 100'000));
    result = SmallHost("secret", "pub", "data.bin");
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_TRUE(Heard("REST 99488"));
    EXPECT_TRUE(home.Read("target") == bytes);

    EXPECT_THAT(SmallHost("secret", "pub", "data.bin").errors,
                HasSubstr("small_host: exists already: target\n"));
}

TEST_F(SmallHostTest, SaysWhatFailed) {
    for (const auto& [password, directory, file, words] :
         {std::tuple("wrong", "pub", "data.bin", "cannot connect: 530 "),
          {"secret", "none", "data.bin", "no such directory: none\n"},
          {"secret", "pub", "none", "550 "}}) {
        const RunResult result = SmallHost(password, directory, file);
        EXPECT_EQ(result.status, exitFailed);
        EXPECT_THAT(result.errors, HasSubstr(std::string("small_host: ") + words));
        EXPECT_FALSE(std::filesystem::exists(home / "target"));
    }
    server->Stop();
    const RunResult result = SmallHost("secret", "pub", "data.bin");
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_THAT(result.errors, HasSubstr("small_host: cannot connect: Can't connect to 127.0.0.1"));
}

}  // namespace
