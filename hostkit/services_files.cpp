// Local files. The handle of an open file is the address of its LocalFile.

#include <errno.h>

#include <memory>
#include <string>

#include "hostkit/directory_read.h"
#include "hostkit/files.h"
#include "hostkit/host.h"
#include "hostkit/long_path.h"
#include "hostkit/services.h"
#include "hostkit/transfer.h"

namespace hostkit {

namespace {

using namespace quennet;

constexpr char wholeBytes = 'I';

LocalFile* FileOf(ShellFile file) {
    return PointerFromWord<LocalFile>(file);
}

i32 Keep(ShellFile* handle, std::unique_ptr<LocalFile> file) {
    *handle = WordFromPointer(file.release());
    return *handle != 0 ? 0 : LastFileFailure()->code;
}

/// Runs an operation on the open file.
template <typename Operation>
i32 On(ShellFile handle, Operation operation) {
    LocalFile* file = FileOf(handle);
    return file != nullptr ? operation(*file) : EBADF;
}

extern "C" {

static i32 GetTransferType(const char*) {
    return wholeBytes;
}

static i32 FileCheck(const char* path) {
    return CheckFile(LongPath::Of(path));
}

static i32 CreateLocalFile(HWND, const char* path, ShellFile* file) {
    if (TransferScope::RefusesFiles()) {
        return EACCES;
    }
    return Keep(file, LocalFile::Create(LongPath::Of(path)));
}

static i32 OpenLocalFile(const char* path, ShellFile* file, u32 access) {
    return Keep(file, LocalFile::Open(LongPath::Of(path), access));
}

static i32 OpenLocalFileAt(HWND, const char* path, ShellFile* file, u32 access) {
    if (TransferScope::RefusesFiles()) {
        return EACCES;
    }
    return OpenLocalFile(path, file, access);
}

static i32 CloseLocalFile(ShellFile file) {
    const std::unique_ptr<LocalFile> open(FileOf(file));
    return open != nullptr ? open->Close() : EBADF;
}

static i32 ReadLocalFile(ShellFile file, void* buffer, u32 size) {
    return On(file, [&](LocalFile& open) { return open.Read(buffer, size); });
}

static i32 WriteLocalFile(HWND, ShellFile file, const void* data, u32 length) {
    if (TakeRawListing(data, length)) {
        return 0;
    }
    return On(file, [&](LocalFile& open) { return open.Write(data, length); });
}

static i32 WriteTextLine(HWND, ShellFile file, const char* text) {
    return On(file, [&](LocalFile& open) {
        const int code = open.Write(text, std::char_traits<char>::length(text));
        return code != 0 ? code : open.Write("\r\n", 2);
    });
}

static i32 SeekLocalFile(ShellFile file, HostWord position) {
    return On(file, [&](LocalFile& open) { return open.Seek(position); });
}

static i32 QueryLocalFileSize(u32, ShellFile file, u64* size) {
    return On(file, [&](LocalFile& open) { return open.Size(*size); });
}

static i32 SetLocalFileTime(ShellFile file, u32 date, u32 time) {
    return On(file, [&](LocalFile& open) {
        return open.SetTime(static_cast<u16>(date), static_cast<u16>(time));
    });
}

static void AddProgress(HostWord progress, u32 bytes) {
    TransferScope::AddProgress(PointerFromWord<TransferRecord>(progress), bytes);
}

/// A list of entries that goes back through CoreFree, null without a listing.
static DirEntry* ReadDirectory(const char* path, FtpHandle* handle, u32 option) {
    Listing entries;
    const bool done = ReadDirectoryThrough(*Host::Current(), path, handle, option, entries);
    return done ? static_cast<DirEntry*>(entries.Release()) : nullptr;
}
}

}  // namespace

void FillFileServices(ShellServices& shell) {
    Put<ShellGetTransferTypeFunction, GetTransferType>(shell, ShellService::getTransferType);
    Put<ShellFileCheckFunction, FileCheck, ENOMEM>(shell, ShellService::fileCheck);
    Put<ShellCreateFileFunction, CreateLocalFile, ENOMEM>(shell, ShellService::createFile);
    Put<ShellOpenFileFunction, OpenLocalFile, ENOMEM>(shell, ShellService::openFile);
    Put<ShellOpenFileAtFunction, OpenLocalFileAt, ENOMEM>(shell, ShellService::openFileAt);
    Put<ShellCloseFileFunction, CloseLocalFile, ENOMEM>(shell, ShellService::closeFile);
    Put<ShellReadFileFunction, ReadLocalFile, ENOMEM>(shell, ShellService::readFile);
    Put<ShellWriteFileFunction, WriteLocalFile, ENOMEM>(shell, ShellService::writeFile);
    Put<ShellWriteTextLineFunction, WriteTextLine, ENOMEM>(shell, ShellService::writeTextLine);
    Put<ShellSeekFileFunction, SeekLocalFile, ENOMEM>(shell, ShellService::seekFile);
    Put<ShellQueryFileSizeFunction, QueryLocalFileSize, ENOMEM>(shell, ShellService::queryFileSize);
    Put<ShellSetFileTimeFunction, SetLocalFileTime, ENOMEM>(shell, ShellService::setFileTime);
    Put<ShellAddProgressFunction, AddProgress>(shell, ShellService::addProgress);
    Put<ShellReadDirectoryFunction, ReadDirectory>(shell, ShellService::readDirectory);
}

}  // namespace hostkit
