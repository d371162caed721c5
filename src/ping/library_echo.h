#pragma once
// Echo requests through the system's library, for users who may not open a raw socket.

#include <winsock.h>

#include <ipexport.h>

#include <icmpapi.h>

#include "ping/ping_state.h"

namespace quennet {

class LibraryEcho {
  public:
    explicit LibraryEcho(WindowNumber console) : console_(console) {}
    /// Closes and unloads what is open.
    ~LibraryEcho();
    LibraryEcho(const LibraryEcho&) = delete;
    LibraryEcho& operator=(const LibraryEcho&) = delete;

    /// Loads the library, unless the host forbids it, and looks the target up. False after a
    /// failure, which is printed.
    bool Open(const char* target);

    /// Sends one request, numbered from 1, prints what became of it, and pauses for a second unless
    /// a stop is asked for. Always true.
    bool RunCycle(PingState* state);

  private:
    bool Load();
    bool Resolve(const char* target);

    const WindowNumber console_;
    HMODULE library_ = nullptr;
    decltype(&IcmpCreateFile) createFile_ = nullptr;
    decltype(&IcmpCloseHandle) closeHandle_ = nullptr;
    decltype(&IcmpSendEcho) sendEcho_ = nullptr;
    HANDLE file_ = INVALID_HANDLE_VALUE;
    IPAddr destination_ = 0;
    u32 sequence_ = 1;
};

}  // namespace quennet
