#pragma once
// The ping dialog, unseen or with a person at it.
//
//     Ping ping(host);
//     ping.Run("ftp.example.net", [&](const std::string& line) { ...; return goOn; });
//
// The dialog lives on the loop's thread; a ping is used from a job's thread (message_loop.h).

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>

#include "hostkit/host.h"
#include "ping/ping_state.h"

namespace hostkit {

class Ping {
  public:
    /// A line as the module prints it, on the loop's thread; false ends the run. Must not throw.
    using TakeLine = std::function<bool(const std::string& line)>;

    static constexpr std::size_t longestTarget = quennet::pingTargetSize - 1;

    explicit Ping(Host& host) : host_(host) {}
    /// Gives the module's record back.
    ~Ping();
    Ping(const Ping&) = delete;
    Ping& operator=(const Ping&) = delete;

    /// Pings a host, by name or address, until `take` or `Stop` ends it, or a failure, whose lines
    /// `take` gets too. At most two seconds pass behind the end, or a look-up of the name.
    void Run(const std::string& target, const TakeLine& take);

    /// Leaves the dialog to a person, and returns when it is closed. A target that is not empty is
    /// pinged at once.
    void RunAsked(HWND owner, const std::string& target);

    /// Ends this run and all others to come. Any thread.
    void Stop();

  private:
    static LRESULT CALLBACK Procedure(HWND control, UINT message, WPARAM wParam, LPARAM lParam);
    void Show(HWND owner, const std::function<void(HWND dialog)>& begin);
    void Start(HWND dialog, const std::string& target) const;
    void Overhear(HWND dialog);
    bool IsRunning() const;

    Host& host_;
    HostWord state_ = 0;  // address of the module's record
    std::atomic<HWND> dialog_ = nullptr;
    std::atomic<bool> stopped_ = false;
    std::atomic<WPARAM> endCommand_ = 0;  // of the dialog, when it is stopped
    const TakeLine* take_ = nullptr;      // of an unseen run
    // Of its controls, the loop thread's.
    WNDPROC listProcedure_ = nullptr;
    WNDPROC startProcedure_ = nullptr;
};

}  // namespace hostkit
