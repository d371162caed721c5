// Local files.

#include "hostkit/files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <iomanip>
#include <thread>

#include "host/shell_services.h"
#include "hostkit/child_process.h"
#include "support/temp_folder.h"

using hostkit::LocalFile;
using quennet::accessRead;
using quennet::accessReadWrite;
using quennet::accessWrite;

class FilesTest : public ::testing::Test {
  protected:
    ~FilesTest() override { hostkit::SetAbortPending(false); }

    TempFolder folder;
    std::string path = folder / "file";
};

TEST_F(FilesTest, BlocksOfAnySizeArriveInOrder) {
    const std::string text = MixedBytes(3 * LocalFile::bufferSize + 1234);
    for (const std::size_t block :
         {std::size_t{1000}, std::size_t{4096}, LocalFile::bufferSize, LocalFile::bufferSize + 7}) {
        auto file = LocalFile::Create(path);
        ASSERT_NE(file, nullptr);
        for (std::size_t at = 0; at < text.size(); at += block) {
            ASSERT_EQ(file->Write(text.data() + at, std::min(block, text.size() - at)), 0);
        }
        hostkit::u64 length = 0;
        EXPECT_EQ(file->Size(length), 0);
        EXPECT_EQ(length, text.size());
        EXPECT_EQ(file->Close(), 0);
        EXPECT_EQ(ReadWhole(path), text) << block;
        file = LocalFile::Open(path, accessRead);
        std::string read(text.size(), '\0');
        for (std::size_t at = 0; at < text.size(); at += block) {
            ASSERT_EQ(file->Read(read.data() + at, std::min(block, text.size() - at)), 0);
        }
        EXPECT_EQ(read, text) << block;
        EXPECT_EQ(file->Read(read.data(), 1), EIO);
    }
}

TEST_F(FilesTest, ReadingAndWritingShareOnePosition) {
    std::string expected = MixedBytes(10000);
    WriteWhole(path, expected);
    auto file = LocalFile::Open(path, accessReadWrite);
    const auto expectNext = [&](std::size_t offset) {
        std::string bytes(512, '\0');
        ASSERT_EQ(file->Read(bytes.data(), bytes.size()), 0);
        EXPECT_EQ(bytes, expected.substr(offset, bytes.size()));
    };
    ASSERT_EQ(file->Seek(1000), 0);
    expectNext(1000);
    ASSERT_EQ(file->Write("overwritten", 11), 0);
    expected.replace(1512, 11, "overwritten");
    expectNext(1523);
    ASSERT_EQ(file->Seek(1510), 0);
    expectNext(1510);
    ASSERT_EQ(file->Seek(12000), 0);
    ASSERT_EQ(file->Write("end", 3), 0);
    ASSERT_EQ(file->Close(), 0);
    EXPECT_EQ(ReadWhole(path), expected + std::string(2000, '\0') + "end");
}

TEST_F(FilesTest, AShortReadIsAFailureAndSaysWhere) {
    WriteWhole(path, MixedBytes(100));
    auto file = LocalFile::Open(path, accessRead);
    char bytes[512];
    hostkit::ClearFileFailure();
    EXPECT_EQ(file->Read(bytes, 101), EIO);
    ASSERT_TRUE(hostkit::LastFileFailure());
    EXPECT_EQ(hostkit::LastFileFailure()->code, EIO);
    EXPECT_THAT(hostkit::LastFileFailure()->Text(), ::testing::StartsWith(path));
    EXPECT_NE(file->Write("x", 1) == 0 ? file->Close() : 1, 0);  // was opened for reading
}

TEST_F(FilesTest, SizesAndPositionsGoBeyond32Bits) {
    constexpr hostkit::u64 large = 5'000'000'000;
    auto file = LocalFile::Create(path);
    char byte = 'x';
    ASSERT_EQ(file->Seek(large), 0);
    ASSERT_EQ(file->Write(&byte, 1), 0);
    hostkit::u64 size = 0;
    ASSERT_EQ(file->Size(size), 0);
    EXPECT_EQ(size, large + 1);
    ASSERT_EQ(file->Close(), 0);
    EXPECT_EQ(std::filesystem::file_size(path), large + 1);
    file = LocalFile::Open(path, accessRead);
    ASSERT_EQ(file->Seek(large), 0);
    ASSERT_EQ(file->Read(&(byte = 0), 1), 0);
    EXPECT_EQ(byte, 'x');
}

TEST_F(FilesTest, AFullDiskIsReportedAtTheLatestByClose) {
    auto file = LocalFile::Open("/dev/full", accessWrite);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->Write("x", 1), 0);
    hostkit::ClearFileFailure();
    EXPECT_EQ(file->Close(), ENOSPC);
    EXPECT_EQ(hostkit::LastFileFailure()->code, ENOSPC);

    file = LocalFile::Open("/dev/full", accessWrite);
    const std::string text = MixedBytes(2 * LocalFile::bufferSize);
    EXPECT_EQ(file->Write(text.data(), text.size()), ENOSPC);
    EXPECT_EQ(file->Write("x", 1), ENOSPC);
    EXPECT_EQ(file->Close(), ENOSPC);
}

TEST_F(FilesTest, WhatFitsBeforeALimitIsWritten) {
    ChildProcess child([&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {100000, 100000};
        setrlimit(RLIMIT_FSIZE, &limit);
        auto file = LocalFile::Create(path);
        const std::string text = MixedBytes(150000);
        const int written = file->Write(text.data(), text.size());
        const int closed = file->Close();
        return written == EFBIG && closed == EFBIG ? 0 : 1;
    });
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_EQ(ReadWhole(path), MixedBytes(150000).substr(0, 100000));
}

TEST_F(FilesTest, OpensOnlyWhatIsThereAndNoFolders) {
    EXPECT_EQ(LocalFile::Open(path, accessRead), nullptr);
    EXPECT_EQ(hostkit::LastFileFailure()->code, ENOENT);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(LocalFile::Open(folder / "", accessRead), nullptr);
    EXPECT_EQ(hostkit::LastFileFailure()->code, EISDIR);
    EXPECT_EQ(LocalFile::Create(folder / ""), nullptr);
    EXPECT_NE(hostkit::CheckFile(path), 0);
    WriteWhole(path, "");
    EXPECT_EQ(hostkit::CheckFile(path), 0);
}

TEST_F(FilesTest, TheDateIsThatOfTheDosWordsInLocalTime) {
    constexpr hostkit::u16 date = (2024 - 1980) << 9 | 7 << 5 | 19;
    constexpr hostkit::u16 time = 13 << 11 | 45 << 5 | 58 / 2;
    WriteWhole(path, "x");
    auto file = LocalFile::Open(path, accessWrite);
    EXPECT_EQ(file->SetTime(date, time), 0);
    EXPECT_EQ(file->SetTime(0, 0), EINVAL);
    EXPECT_EQ(file->SetTime(date | 15 << 5, time), EINVAL);
    EXPECT_EQ(file->Close(), 0);
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    const std::tm* local = localtime(&status.st_mtime);
    EXPECT_EQ((std::ostringstream() << std::put_time(local, "%F %T")).str(), "2024-07-19 13:45:58");
}

TEST_F(FilesTest, NothingIsCreatedWhileAnAbortIsPending) {
    WriteWhole(path, "partial");
    hostkit::SetAbortPending(true);
    EXPECT_EQ(LocalFile::Create(path), nullptr);
    EXPECT_EQ(hostkit::LastFileFailure()->code, ECANCELED);
    hostkit::SetAbortPending(false);
    {
        const std::atomic<bool> pending = true;
        const hostkit::AbortScope scope(pending);
        EXPECT_EQ(LocalFile::Create(path), nullptr);
        EXPECT_NE(LocalFile::Open(path, accessWrite), nullptr);
    }
    EXPECT_EQ(ReadWhole(path), "partial");
    EXPECT_NE(LocalFile::Create(path), nullptr);
}

TEST_F(FilesTest, APipeMakesNobodyWaitForItsReader) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(LocalFile::Create(path), nullptr);
    EXPECT_EQ(hostkit::LastFileFailure()->code, ENXIO);
    const auto reader = LocalFile::Open(path, accessRead);
    auto writer = LocalFile::Create(path);
    ASSERT_NE(writer, nullptr);
    const std::string text = MixedBytes(16 * LocalFile::bufferSize);
    std::thread abort([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        hostkit::SetAbortPending(true);
    });
    EXPECT_EQ(writer->Write(text.data(), text.size()), ECANCELED);
    abort.join();
}

TEST_F(FilesTest, ARegisteredOutputTakesOneFile) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    hostkit::RegisterOutput("-", ends[1]);
    EXPECT_NE(hostkit::CheckFile("-"), 0);
    EXPECT_EQ(LocalFile::Open("-", accessRead), nullptr);
    // As long as nothing was written another try may come.
    EXPECT_EQ(LocalFile::Create("-")->Close(), 0);
    auto file = LocalFile::Create("-");
    ASSERT_EQ(file->Write("to the pipe", 11), 0);
    EXPECT_EQ(file->Seek(0), ESPIPE);
    ASSERT_EQ(file->Close(), 0);
    EXPECT_EQ(LocalFile::Create("-"), nullptr);
    hostkit::UnregisterOutput("-");
    close(ends[1]);
    char bytes[32] = "";
    EXPECT_EQ(read(ends[0], bytes, sizeof(bytes)), 11);
    EXPECT_STREQ(bytes, "to the pipe");
    close(ends[0]);
    EXPECT_FALSE(std::filesystem::exists("-"));
}
