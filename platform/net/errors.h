#pragma once
// Error numbers of the system and of the platform.

#include "net/system.h"

namespace quennet::net {

/// The platform's number for an errno value.
int PlatformError(int systemError);

/// Keeps the number for WSAGetLastError. Returns SOCKET_ERROR.
int Fail(int platformError);

/// Fail with the number for the present errno.
int FailFromSystem();

/// Whether WSAStartup has been called and not been taken back. Sets the last error if not.
bool Started();

}  // namespace quennet::net
