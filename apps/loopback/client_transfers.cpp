// The commands of a client that move data.

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include "client.h"

namespace loopback {

namespace {

struct EndReply {
    TransferEnd end;
    std::string_view reply;  // empty: nobody is left to hear one
};

constexpr EndReply endReplies[] = {
    {TransferEnd::done, "226 Transfer complete"},
    {TransferEnd::noConnection, "425 No data connection"},
    {TransferEnd::broken, "426 Data connection broken"},
    {TransferEnd::aborted, "426 Transfer aborted"},
    {TransferEnd::fileFailed, "451 The file could not be read or written"},
    {TransferEnd::lost, ""},
};

struct ListArgument {
    bool hidden = false;
    std::string_view path;
};

// Options come first, as "ls" takes them; only "a" means something here.
ListArgument ParseListArgument(std::string_view text) {
    ListArgument argument;
    while (text.starts_with('-')) {
        std::size_t end = std::min(text.find(' '), text.size());
        argument.hidden |= text.substr(0, end).find('a') != std::string_view::npos;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    argument.path = text;
    return argument;
}

bool WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

}  // namespace

bool Client::PreparedForData() {
    if (!data_.Prepared()) {
        control_.Reply("425 Say PASV or PORT first");
    }
    return data_.Prepared();
}

void Client::ReplyToTransfer(TransferEnd end) {
    if (end == TransferEnd::done && FindFault(faults_, FaultAction::failData) != nullptr) {
        end = TransferEnd::broken;
    }
    bool mute = FindFault(faults_, FaultAction::noFinalReply) != nullptr;
    for (const EndReply& row : endReplies) {
        if (row.end == end && !row.reply.empty() && !mute) {
            control_.Reply(row.reply);
        }
    }
    if (end == TransferEnd::aborted) {
        control_.Reply("226 Abort done");
    }
}

void Client::SendText(const std::string& text) {
    std::string_view rest = text;
    auto source = [&rest](char* buffer, std::size_t size) {
        std::size_t count = rest.copy(buffer, size);
        rest.remove_prefix(count);
        return static_cast<std::ptrdiff_t>(count);
    };
    control_.Reply("150 Here it comes");
    ReplyToTransfer(data_.SendFrom(source, faults_));
}

void Client::ListWith(const std::string& argument, bool namesAlone) {
    ListArgument wish = ParseListArgument(argument);
    std::string path = Path(wish.path);
    std::vector<ListedFile> files;
    restartOffset_ = 0;
    if (!PreparedForData()) {
        return;
    }
    if (int error = shared_->folder.List(path, wish.hidden, &files); error != 0) {
        ReplyTo(error, "", path);
        return;
    }
    SendText(namesAlone ? FormatNames(files)
                        : FormatListing(shared_->manner.FormatOf(path), files, std::time(nullptr)));
}

void Client::List(const std::string& argument) {
    ListWith(argument, false);
}

void Client::Nlst(const std::string& argument) {
    ListWith(argument, true);
}

void Client::Retr(const std::string& argument) {
    auto offset = static_cast<off_t>(std::exchange(restartOffset_, 0));
    Descriptor file;
    if (!PreparedForData()) {
        return;
    }
    if (int error = shared_->folder.OpenForReading(Path(argument), &file); error != 0) {
        ReplyTo(error, "", argument);
        return;
    }
    auto source = [&](char* buffer, std::size_t size) {
        ssize_t count = pread(file.Number(), buffer, size, offset);
        offset += count > 0 ? count : 0;
        return static_cast<std::ptrdiff_t>(count);
    };
    control_.Reply("150 Here it comes");
    ReplyToTransfer(data_.SendFrom(source, faults_));
}

void Client::Stor(const std::string& argument) {
    Store(argument, restartOffset_ > 0 ? WriteMode::keep : WriteMode::create);
}

void Client::Appe(const std::string& argument) {
    Store(argument, WriteMode::append);
}

void Client::Store(const std::string& argument, WriteMode mode) {
    auto offset = static_cast<off_t>(std::exchange(restartOffset_, 0));
    Descriptor file;
    if (!PreparedForData()) {
        return;
    }
    int error = shared_->folder.OpenForWriting(Path(argument), mode, &file);
    if (error == 0 && mode == WriteMode::keep && lseek(file.Number(), offset, SEEK_SET) < 0) {
        error = errno;
    }
    if (error != 0) {
        ReplyTo(error, "", argument);
        return;
    }
    auto sink = [&file](std::string_view bytes) { return WriteAll(file.Number(), bytes); };
    control_.Reply("150 Send it");
    ReplyToTransfer(data_.ReceiveInto(sink, faults_));
}

}  // namespace loopback
