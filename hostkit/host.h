#pragma once
// The host of a module: both tables of services, the main window, and what the module tells it.
//
// A process has one `Host`, because the services carry no context. It must outlive everything that
// the module runs: all connections are disconnected before it goes.

#include <windows.h>

#include <concepts>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>

#include "host/core_services.h"
#include "host/message.h"
#include "host/records.h"
#include "host/shell_services.h"
#include "hostkit/message_loop.h"
#include "hostkit/panels.h"
#include "hostkit/settings.h"
#include "hostkit/types.h"

namespace hostkit {

/// What the host is told, and asked. Every function may be empty, and may be called on any thread,
/// on several at once; none may throw.
struct HostOptions {
    std::shared_ptr<SettingsStore> settings;  // null: an empty store in memory
    std::string section = "Quennet";          // the host's main section in it

    /// Bytes of a listing at most, up to the module's own 1 GiB; a longer one is a failed one.
    u64 listingLimit = u64{1} << 30;

    /// The file that keeps the key of stored passwords, made when it is missing; empty: no file,
    /// the module builds a key of its own.
    std::filesystem::path passwordKeyFile;

    /// A line printed on a console that belongs to no `Console`.
    std::function<void(WindowNumber console, const std::string& line)> consoleLine;
    /// A message to the user. Without it, it goes to standard error.
    std::function<void(u32 textId, const std::string& text)> showMessage;
    /// An error reported to the user. Without it, it goes to standard error.
    std::function<void(u32 textId, const std::string& text)> reportError;
    /// Asks for the password of a server; nothing is a cancel, and so is an empty function.
    PasswordFunction askPassword;
    /// A panel's directory has changed; the cookie of the message that did it.
    std::function<void(u16 cookie)> refreshPanel;
    /// A dialog is about to open, on the thread that runs it.
    std::function<void(HWND dialog)> initDialog;
    /// A notification of the module was taken, on the loop's thread. A block that it carried is
    /// gone.
    std::function<void(quennet::Notification notification, LPARAM lParam)> notified;
    /// The host is to come to the front.
    std::function<void(HWND window)> setForeground;
};

/// A word of a message from whatever a caller has at hand.
template <typename T>
HostWord ToWord(T value) {
    if constexpr (std::is_null_pointer_v<T>) {
        return 0;
    } else if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<HostWord>(value);
    } else {
        static_assert(std::integral<T> || std::is_enum_v<T>);
        return static_cast<HostWord>(value);
    }
}

class Services;

class Host {
  public:
    /// Makes the main window on the calling thread, the loop's.
    Host(MessageLoop& loop, HostOptions options);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// The host of this process, null when there is none.
    static Host* Current();

    /// Loads the module's library and attaches it. Throws std::runtime_error with the cause. The
    /// library stays loaded: its last threads may still be on their way out.
    void LoadModule(const std::string& path);

    /// Hands the tables over with message 1. `instance` is where the module's dialogs and window
    /// classes are found. Throws std::runtime_error when the module does not take them.
    void Attach(quennet::ModuleFunction function, HINSTANCE instance);

    /// Runs one message of the module on the calling thread, up to seven arguments. What the dialog
    /// of a connect message writes to the settings is stored in one step, when the message returns.
    template <typename... Arguments>
    i32 Send(quennet::MessageNumber number, Arguments... arguments) const {
        static_assert(sizeof...(arguments) <= 7);
        const HostWord words[8] = {static_cast<HostWord>(number), ToWord(arguments)...};
        const quennet::HostMessage message = {words[0], words[1], words[2], words[3],
                                              words[4], words[5], words[6], words[7]};
        return Run(message);
    }

    MessageLoop& Loop() { return loop_; }
    const HostOptions& Options() const { return options_; }
    HWND MainWindow() const { return mainWindow_; }
    HINSTANCE Instance() const { return instance_; }
    SettingsStore& Settings() { return *options_.settings; }

    /// Use counter of the socket library, shared by all connections.
    u32* SocketUseCounter() { return &socketUses_; }

    /// Held by who opens a dialog of the module and works it unseen: one at a time.
    std::mutex& DialogMutex() { return dialogMutex_; }

    // What the services and the connections of hostkit itself work on.
    Services& GetServices() { return *services_; }
    Panels& GetPanels() { return panels_; }

  private:
    i32 Run(const quennet::HostMessage& message) const;
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void TakeNotification(quennet::Notification notification, LPARAM lParam);

    MessageLoop& loop_;
    HostOptions options_;
    HWND mainWindow_ = nullptr;
    HINSTANCE instance_ = nullptr;
    quennet::ModuleFunction module_ = nullptr;
    u32 socketUses_ = 0;
    std::mutex dialogMutex_;
    std::unique_ptr<Services> services_;
    Panels panels_;
};

}  // namespace hostkit
