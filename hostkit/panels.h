#pragma once
// Who hears what the module tells about one connection: the panel that owns it.
//
// The module names a panel by the 8-bit number of message 24, and a request by a 16-bit cookie.

#include <array>
#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "host/records.h"
#include "hostkit/types.h"

namespace hostkit {

/// Asks for the password of a server; nothing is a cancel.
using PasswordFunction = std::function<std::optional<std::string>(const std::string& server)>;

/// Called on threads of the module or on the loop's; an implementation hands on and returns.
class Panel {
  public:
    virtual ~Panel() = default;

    /// The connection stands; the site as it is now, good during the call.
    virtual void PanelConnected(quennet::SiteRecord* site) = 0;
    /// The connection is about to be given back.
    virtual void PanelClosed() = 0;
    virtual void Connected(u16 cookie) = 0;
    virtual void ConnectFailed(const std::string& text) = 0;
    virtual void ReconnectFailed() = 0;
    /// The change of directory with that cookie has begun on its thread, and has ended
    /// (directory_change.h).
    virtual void DirectoryChangeBegan(u16 cookie) = 0;
    virtual void DirectoryChangeEnded(u16 cookie, bool done) = 0;
    /// Whether that handle is this panel's, and the moment before it is given back.
    virtual bool OwnsHandle(const void* handle) const = 0;
    virtual void BeforeFree() = 0;
    /// Whether that is the host text of this panel's site; how its password is asked for (empty: as
    /// the host does it); and that the answer was a cancel.
    virtual bool OwnsServerName(const char* name) const = 0;
    virtual PasswordFunction PasswordSource() const = 0;
    virtual void PasswordCancelled() = 0;
};

class Panels {
  public:
    /// The number that the module is to use for the panel, 1 to 127. Throws std::runtime_error when
    /// none is free.
    u8 Add(Panel& panel);
    /// Waits for calls of the panel that are running.
    void Remove(u8 number);

    /// A cookie that no request of the last 65,000 had; never 0.
    u16 NextCookie();

    /// Calls `function(Panel&)` for the panel of a number, if there is one.
    template <typename Function>
    void With(u32 number, Function function) {
        const std::lock_guard lock(mutex_);
        if (Panel* panel = number < panels_.size() ? panels_[number] : nullptr) {
            function(*panel);
        }
    }

    /// Calls it for every panel.
    template <typename Function>
    void ForEach(Function function) {
        const std::lock_guard lock(mutex_);
        for (Panel* panel : panels_) {
            if (panel != nullptr) {
                function(*panel);
            }
        }
    }

  private:
    std::mutex mutex_;
    std::array<Panel*, 128> panels_ = {};
    std::atomic<u16> cookie_ = 0;
};

}  // namespace hostkit
