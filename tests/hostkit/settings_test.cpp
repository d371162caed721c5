// Settings in a file: faults, crashes, and other processes.

#include "hostkit/settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "hostkit/child_process.h"
#include "support/temp_folder.h"

using hostkit::FileSettings;
using hostkit::MemorySettings;
using hostkit::SettingsBatch;
using ::testing::Eq;
using ::testing::Optional;

namespace {

const std::string foreign = "; of another program\n[Other]\nkey = value\n";

mode_t ModeOf(const std::filesystem::path& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

int CounterIn(hostkit::SettingsStore& settings) {
    return std::stoi(settings.Read("FTP", "counter").value_or("0"));
}

}  // namespace

class SettingsTest : public ::testing::Test {
  protected:
    TempFolder folder;
    std::filesystem::path file = folder / "settings.ini";
};

TEST_F(SettingsTest, TheFirstWriteMakesFileAndFoldersForTheOwnerAlone) {
    const auto nested = folder / "a/b/settings.ini";
    FileSettings settings(nested);
    EXPECT_EQ(settings.Read("FTP", "M1"), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(nested.parent_path()));
    ASSERT_TRUE(settings.Write("FTP", "M1", "site")) << settings.ErrorText();
    EXPECT_EQ(ReadWhole(nested), "[FTP]\nM1=site\n");
    EXPECT_EQ(ModeOf(nested), 0600u);
    EXPECT_EQ(ModeOf(nested.parent_path()), 0700u);
    EXPECT_EQ(ModeOf(nested.parent_path().parent_path()), 0700u);
}

TEST_F(SettingsTest, AWriteSeesWhatOthersWroteAndKeepsIt) {
    FileSettings mine(file);
    ASSERT_TRUE(mine.Write("FTP", "M1", "mine"));
    WriteWhole(file, foreign);
    EXPECT_EQ(mine.Read("FTP", "M1"), std::nullopt);
    ASSERT_TRUE(mine.Write("FTP", "M2", "second"));
    EXPECT_EQ(ReadWhole(file), foreign + "[FTP]\nM2=second\n");
}

TEST_F(SettingsTest, ALinkStaysALink) {
    const auto target = folder / "elsewhere.ini";
    WriteWhole(target, foreign);
    std::filesystem::create_symlink(target, file);
    FileSettings settings(file);
    ASSERT_TRUE(settings.Write("FTP", "M1", "x"));
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    EXPECT_EQ(ReadWhole(target), foreign + "[FTP]\nM1=x\n");
}

TEST_F(SettingsTest, WhatCannotBeReplacedIsLeftAloneAndReported) {
    WriteWhole(file, foreign);
    chmod(file.c_str(), 0400);
    FileSettings readOnly(file);
    EXPECT_FALSE(readOnly.Write("FTP", "M1", "x"));
    EXPECT_NE(readOnly.ErrorText(), "");
    EXPECT_FALSE(readOnly.WriteSection("Other", ""));
    EXPECT_EQ(readOnly.Read("FTP", "M1"), std::nullopt);
    EXPECT_EQ(ReadWhole(file), foreign);

    FileSettings isFolder(folder / "");
    EXPECT_FALSE(isFolder.Write("FTP", "M1", "x"));

    FileSettings belowAFile(file / "settings.ini");
    EXPECT_EQ(belowAFile.Read("FTP", "M1"), std::nullopt);
    EXPECT_FALSE(belowAFile.Write("FTP", "M1", "x"));

    std::filesystem::create_symlink("/dev/full", folder / "device.ini");
    FileSettings device(folder / "device.ini");
    EXPECT_FALSE(device.Write("FTP", "M1", "x"));
}

TEST_F(SettingsTest, AFullDiskLosesNothing) {
    WriteWhole(file, foreign + std::string(3000, ';') + "\n");
    const std::string before = ReadWhole(file);
    ChildProcess child([&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {2000, 2000};
        setrlimit(RLIMIT_FSIZE, &limit);
        FileSettings settings(file);
        const bool refused = !settings.Write("FTP", "M1", "x");
        const bool asBefore = !settings.Read("FTP", "M1").has_value();
        return refused && asBefore ? 0 : 1;
    });
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_EQ(ReadWhole(file), before);
    EXPECT_FALSE(std::filesystem::exists(folder / "settings.ini.new"));
}

TEST_F(SettingsTest, ABatchIsOneReplacementOrNone) {
    FileSettings settings(file);
    ASSERT_TRUE(settings.Write("FTP", "M1", "old"));
    ino_t number = 0;
    {
        SettingsBatch batch(settings);
        struct stat status;
        ASSERT_EQ(stat(file.c_str(), &status), 0);
        number = status.st_ino;
        EXPECT_TRUE(settings.Write("FTP", "M1", "new"));
        {
            SettingsBatch inner(settings);
            EXPECT_TRUE(settings.Write("FTP", "M2", "second"));
            EXPECT_TRUE(inner.Commit());
        }
        EXPECT_THAT(settings.Read("FTP", "M2"), Optional(Eq("second")));
        EXPECT_EQ(ReadWhole(file), "[FTP]\nM1=old\n");
        ASSERT_EQ(stat(file.c_str(), &status), 0);
        EXPECT_EQ(status.st_ino, number);
        EXPECT_TRUE(batch.Commit());
    }
    EXPECT_EQ(ReadWhole(file), "[FTP]\nM1=new\nM2=second\n");

    SettingsBatch failing(settings);
    EXPECT_TRUE(settings.Write("FTP", "M1", "lost"));
    chmod(file.c_str(), 0400);
    EXPECT_FALSE(failing.Commit());
    EXPECT_THAT(settings.Read("FTP", "M1"), Optional(Eq("new")));
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

TEST_F(SettingsTest, ThreadsShareAStore) {
    FileSettings settings(file);
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&settings, number] {
            for (int i = 0; i < 20; ++i) {
                settings.Write("FTP", "M" + std::to_string(number), std::to_string(i));
                settings.ReadSection("FTP");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int number = 0; number < 4; ++number) {
        EXPECT_THAT(settings.Read("FTP", "M" + std::to_string(number)), Optional(Eq("19")));
    }
}

TEST_F(SettingsTest, APrivateCopyIsNeverWrittenBack) {
    WriteWhole(file, foreign);
    FileSettings settings(file);
    const auto copy = settings.PrivateCopy();
    EXPECT_THAT(copy->Read("Other", "key"), Optional(Eq("value")));
    EXPECT_TRUE(copy->Write("Other", "key", "changed"));
    EXPECT_THAT(copy->Read("Other", "key"), Optional(Eq("changed")));
    EXPECT_EQ(ReadWhole(file), foreign);
}
