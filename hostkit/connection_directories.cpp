// The directories of a connection: going to them, and their listings.

#include <strings.h>

#include <cerrno>
#include <utility>

#include "hostkit/connection_use.h"
#include "hostkit/directory_change.h"
#include "hostkit/directory_name.h"
#include "hostkit/directory_read.h"
#include "hostkit/remote_tree.h"

namespace hostkit {

namespace {

using quennet::FtpHandle;
using quennet::MessageNumber;

// A change of directory that does not begin has found no memory or no thread.
constexpr auto beginPatience = std::chrono::seconds(5);
// Longer than any single wait of the module for a server.
constexpr auto longestSilence = std::chrono::seconds(100);

/// Where a change of directory leads when it meets no link.
std::string StepTo(const std::string& path, const std::string& from) {
    return path.starts_with('/') ? path
                                 : JoinPath(from, path.starts_with("./") ? path.substr(2) : path);
}

}  // namespace

bool Connection::InAnyCase::operator()(const std::string& left, const std::string& right) const {
    return strcasecmp(left.c_str(), right.c_str()) < 0;
}

std::string Connection::Directory() {
    {
        const std::lock_guard lock(mutex_);
        if (!unnamed_.empty()) {
            return unnamed_;
        }
    }
    char directory[pathSize] = "";
    const Use use(*this);
    if (use.Handle() != nullptr) {
        host_.Send(MessageNumber::getDirectory, use.Handle(), directory, sizeof(directory));
    }
    return directory;
}

DirectoryResult Connection::CheckDirectory(const std::string& path) {
    DirectoryResult result;
    const std::string step = StepTo(path, Directory());
    const Use use(*this);
    if (use.Handle() == nullptr) {
        result.text = notConnected;
        return result;
    }
    BeginOperation();
    // The reply in the log has the whole name, which the message's own buffer has no room for.
    result.result = host_.Send(MessageNumber::changeDirSync,
                               (unnamed_.empty() ? path : step).c_str(), use.Handle(), 0);
    if (result.Done() && !path.empty()) {
        if (const auto directory = DirectoryIn(LastReply(), step)) {
            result.directory = *directory;
            return result;
        }
        result.result = -1;  // the server has not said where it stands
        ExplainFailure(result);
        ReturnFromCheck(use.Handle());
    } else if (!result.Done()) {
        ExplainFailure(result);
    }
    return result;
}

DirectoryResult Connection::ChangeDirectory(const std::string& path) {
    DirectoryResult result = CheckDirectory(path);
    if (!result.Done() || result.directory.empty()) {
        return result;
    }
    if (result.directory.size() >= pathSize || result.directory.find('"') != std::string::npos) {
        SetUnnamed(result.directory);
        return result;
    }
    SetUnnamed({});
    const Use use(*this);
    const u16 cookie = host_.GetPanels().NextCookie();
    BeginOperation();
    {
        const std::lock_guard lock(mutex_);
        wantedCookie_ = cookie;
        changeBegun_ = false;
        changeDone_.reset();
    }
    if (use.Handle() != nullptr) {
        StartDirectoryChange(host_, use.Handle(), result.directory, cookie);
    }
    if (use.Handle() == nullptr || !WaitForChange()) {
        result.result = -1;
        ExplainFailure(result);
        ReturnFromCheck(use.Handle());
    }
    return result;
}

void Connection::SetUnnamed(const std::string& directory) {
    const std::lock_guard lock(mutex_);
    unnamed_ = directory;
}

/// Takes the server back from a directory that was checked and did not become the session's own.
void Connection::ReturnFromCheck(FtpHandle* handle) {
    const std::string own = Directory();
    if (handle != nullptr && !own.empty() && !abortPending_) {
        host_.Send(MessageNumber::changeDirSync, own.c_str(), handle, 0);
    }
}

/// The path of what is in the session's directory, where only whole paths will do.
std::string Connection::Named(const std::string& name) const {
    return unnamed_.empty() ? name : StepTo(name, unnamed_);
}

bool Connection::EnterUnnamed() {
    const DirectoryResult entered = CheckDirectory(unnamed_);
    return entered.Done() && entered.directory == unnamed_;
}

/// A listing that met a repair is another directory's.
bool Connection::ListUnnamed(u32 option, Listing& entries, FtpHandle* handle) {
    constexpr int attempts = 2;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const u32 logins = logins_;
        Listing read;
        const bool done =
            EnterUnnamed() && ReadDirectoryThrough(host_, unnamed_.c_str(), handle, option, read);
        if (logins_ == logins) {
            entries = std::move(read);
            return done;
        }
    }
    return false;
}

bool Connection::WaitForChange() {
    const auto begun = [&] {
        const std::lock_guard lock(mutex_);
        return changeBegun_ || state_ == State::closing;
    };
    const auto ended = [&] {
        const std::lock_guard lock(mutex_);
        return changeDone_ || state_ == State::closing;
    };
    const auto isSilent = [&] {
        const std::lock_guard lock(mutex_);
        return std::chrono::steady_clock::now() - lastLineTime_ > longestSilence;
    };
    if (host_.Loop().WaitUntil(begun, beginPatience)) {
        while (!host_.Loop().WaitUntil(ended, longestSilence) && !isSilent()) {
        }
    }
    const std::lock_guard lock(mutex_);
    wantedCookie_ = 0;
    return changeDone_.value_or(false);
}

ListResult Connection::List(bool longForm) {
    ListResult result;
    const Use use(*this);
    if (use.Handle() == nullptr) {
        result.text = notConnected;
        return result;
    }
    BeginOperation();
    ClearFileFailure();
    const u32 option = longForm ? 1 : 0;
    if (!unnamed_.empty()) {
        result.done = ListUnnamed(option, result.entries, use.Handle());
    } else {
        KeptListing& kept = TakeKeptListing(use.Handle());
        result.done = ReadDirectoryThrough(host_, nullptr, use.Handle(), option, result.entries,
                                           kept.mayTellMore);
    }
    if (!result.done) {
        const auto failure = LastFileFailure();
        result.text = failure ? failure->Text() : Cause();
    }
    return result;
}

/// By its name: without one the message means what was listed last, which after a change of
/// directory is nothing.
void Connection::InvalidateListing() {
    const std::string directory = Directory();
    const Use use(*this);
    if (use.Handle() != nullptr) {
        host_.Send(MessageNumber::invalidateCacheEntry, use.Handle(), directory.c_str());
    }
}

/// What is known of the listing that is kept of the session's directory. The module finds it
/// without regard to case: that of another directory must not be taken for it.
Connection::KeptListing& Connection::TakeKeptListing(FtpHandle* handle) {
    const std::string directory = Directory();
    KeptListing& kept = keptListings_[directory];
    if (!kept.directory.empty() && kept.directory != directory) {
        host_.Send(MessageNumber::invalidateCacheEntry, handle, directory.c_str());
    }
    kept.directory = directory;
    return kept;
}

void Connection::InvalidateAllListings() {
    const Use use(*this);
    if (use.Handle() != nullptr) {
        host_.Send(MessageNumber::invalidateCache, use.Handle());
    }
}

int Connection::SaveRawListing(LocalFile& file) {
    const Use use(*this);
    if (use.Handle() == nullptr) {
        return ENOTCONN;
    }
    ClearFileFailure();
    host_.Send(MessageNumber::saveRawListing, console_.Window(), &file, use.Handle());
    const auto failure = LastFileFailure();
    return failure ? failure->code : 0;
}

void Connection::DirectoryChangeBegan(u16 cookie) {
    {
        const std::lock_guard lock(mutex_);
        changeBegun_ = changeBegun_ || cookie == wantedCookie_;
    }
    host_.Loop().Wake();
}

void Connection::DirectoryChangeEnded(u16 cookie, bool done) {
    {
        const std::lock_guard lock(mutex_);
        if (cookie != wantedCookie_) {
            return;
        }
        changeDone_ = done;
    }
    host_.Loop().Wake();
}

}  // namespace hostkit
