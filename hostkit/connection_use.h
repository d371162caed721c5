#pragma once
// What the files that carry out a connection's operations share.

#include <algorithm>
#include <string>

#include "hostkit/connection.h"
#include "hostkit/display_text.h"

namespace hostkit {

constexpr char notConnected[] = "not connected";

/// Bytes of a path's field in the records of the module.
constexpr std::size_t pathSize = 260;
constexpr char pathTooLong[] = "the path is longer than 259 characters";

/// False, with the field as it was, when the path does not fit.
inline bool CopyPath(char (&target)[pathSize], const std::string& path) {
    if (path.size() >= pathSize) {
        return false;
    }
    std::copy_n(path.c_str(), path.size() + 1, target);
    return true;
}

/// A path whose last component is sent. In one without '/' that is all of it, whatever other
/// separators it holds.
inline std::string WithWholeName(const std::string& path) {
    const bool isCut = path.find('/') == std::string::npos && NameOffset(path) != 0;
    return isCut ? "./" + path : path;
}

/// The same for what was told by Connection::Named: a whole path goes out as it is.
inline std::string AsWholeName(const std::string& path) {
    return path.starts_with('/') ? "/." + path : WithWholeName(path);
}

/// An operation that looks at the handle, as long as it lives: the handle is not given back before.
class Connection::Use {
  public:
    /// `whileClosing`: the handle is given out as long as there is one, its end included.
    explicit Use(Connection& connection, bool whileClosing = false) : connection_(connection) {
        const std::lock_guard lock(connection_.mutex_);
        ++connection_.uses_;
        if (connection_.state_ != State::closing || whileClosing) {
            handle_ = connection_.Handle();
        }
    }
    ~Use() {
        const std::lock_guard lock(connection_.mutex_);
        --connection_.uses_;
        connection_.unused_.notify_all();
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    quennet::FtpHandle* Handle() const { return handle_; }

  private:
    Connection& connection_;
    quennet::FtpHandle* handle_ = nullptr;
};

template <typename Result>
void Connection::ExplainFailure(Result& result) const {
    const std::lock_guard lock(mutex_);
    result.text = cause_.Text();
    result.answered = cause_.Answered();
}

}  // namespace hostkit
