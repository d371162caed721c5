#pragma once
// A console: the window that stands for a connection's log, and where its lines go.

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>

#include "hostkit/host.h"

namespace hostkit {

class Console {
  public:
    /// Takes one line as the module printed it, control characters and all: whoever shows it on a
    /// terminal makes them harmless. Called on any thread; must not throw and must not send window
    /// messages.
    using Sink = std::function<void(const std::string& line)>;

    /// The window is made on the loop's thread, and goes there; both wait for it.
    Console(Host& host, Sink sink);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    HWND Window() const { return window_; }
    WindowNumber Number() const { return quennet::NumberFromWindow(window_); }

  private:
    Host& host_;
    HWND window_ = nullptr;
};

/// The line without the characters that a terminal would act on: each control character (C0, DEL,
/// and C1 in UTF-8) becomes '?', a tab a blank.
std::string HarmlessLine(const std::string& line);

/// Whether a line is a server's reply: it begins with a code. The module's own remark on a
/// download, «597 bytes received in 0.01 seconds, (58.30 KB/s)», is none.
bool IsReply(std::string_view line);

}  // namespace hostkit
