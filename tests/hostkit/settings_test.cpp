// Settings and the password key in files: faults, crashes, and other processes.

#include "hostkit/settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "hostkit/child_process.h"
#include "hostkit/host.h"
#include "hostkit/services.h"
#include "support/temp_folder.h"

using hostkit::FileSettings;
using hostkit::SettingsBatch;
using ::testing::Eq;
using ::testing::Optional;

namespace {

const std::string foreign = "; of another program\n[Other]\nkey = value\n";

int CounterIn(hostkit::SettingsStore& settings) {
    return std::stoi(settings.Read("FTP", "counter").value_or("0"));
}

}  // namespace

class SettingsTest : public ::testing::Test {
  protected:
    TempFolder folder;
    std::filesystem::path file = folder / "settings.ini";
};

TEST_F(SettingsTest, ALinkStaysALink) {
    const auto target = folder / "elsewhere.ini";
    WriteWhole(target, foreign);
    std::filesystem::create_symlink(target, file);
    FileSettings settings(file);
    ASSERT_TRUE(settings.Write("FTP", "M1", "x"));
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    EXPECT_EQ(ReadWhole(target), foreign + "[FTP]\nM1=x\n");
}

TEST_F(SettingsTest, AWriterKilledAtAnyMomentLeavesTheOldOrTheNewText) {
    FileSettings settings(file);
    ASSERT_TRUE(settings.WriteSection("Other", "key = value\n"));
    for (int round = 0; round < 40; ++round) {
        ChildProcess child([&] {
            FileSettings writer(file);
            for (int i = 0;; ++i) {
                SettingsBatch batch(writer);
                writer.Write("FTP", "M1", std::string(static_cast<std::size_t>(i % 5000), 'a'));
                writer.Write("FTP", "counter", std::to_string(i));
                writer.Write("FTP", "copy", std::to_string(i));
            }
            return 0;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(500 * round));
        child.Kill();
        const auto counter = settings.Read("FTP", "counter");
        EXPECT_EQ(counter, settings.Read("FTP", "copy"));
        if (counter) {
            EXPECT_EQ(settings.Read("FTP", "M1")->size(),
                      static_cast<std::size_t>(std::stoi(*counter) % 5000));
        }
        EXPECT_THAT(settings.Read("Other", "key"), Optional(Eq("value")));
    }
    EXPECT_TRUE(settings.Write("FTP", "M1", "after all")) << settings.ErrorText();
}

TEST_F(SettingsTest, ProcessesThatWriteAtOnceLoseNothingOfEachOther) {
    constexpr int rounds = 60;
    const auto count = [&] {
        FileSettings settings(file);
        for (int i = 0; i < rounds; ++i) {
            SettingsBatch batch(settings);
            settings.Write("FTP", "counter", std::to_string(CounterIn(settings) + 1));
            if (!batch.Commit()) {
                return 1;
            }
        }
        return 0;
    };
    ChildProcess first(count);
    ChildProcess second(count);
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_EQ(second.Wait(), 0);
    FileSettings settings(file);
    EXPECT_EQ(CounterIn(settings), 2 * rounds);
}

TEST_F(SettingsTest, ThePasswordKeyIsMadeOnceForItsOwnerAlone) {
    using std::filesystem::perms;
    hostkit::HostOptions options;
    options.passwordKeyFile = folder / "private/password.key";
    const auto key = [&] { return *hostkit::Services(options).PasswordKey(); };
    const quennet::u32 first = key();
    EXPECT_NE(first, 0u);
    EXPECT_EQ(std::filesystem::status(options.passwordKeyFile).permissions(),
              perms::owner_read | perms::owner_write);
    EXPECT_EQ(key(), first);
    WriteWhole(options.passwordKeyFile, "no key\n");
    EXPECT_EQ(key(), 0u);
    EXPECT_EQ(ReadWhole(options.passwordKeyFile), "no key\n");
}
