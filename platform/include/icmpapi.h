#pragma once
// Echo requests through the system. Programs load these by name from ICMP.DLL, which on POSIX
// systems is the layer itself (LoadLibraryA).

#include "ipexport.h"

QUENNET_PLATFORM_BEGIN

/// A handle for echo requests. INVALID_HANDLE_VALUE where the user may not send any: on Linux
/// net.ipv4.ping_group_range admits groups.
QUENNET_PLATFORM_API HANDLE WINAPI IcmpCreateFile(void);
QUENNET_PLATFORM_API BOOL WINAPI IcmpCloseHandle(HANDLE file);

/// Sends an echo request without data (`dataSize` is 0) and waits for its answer, at most
/// `milliseconds`. `options` may be null; its time to live and type of service count. `reply` is an
/// ICMP_ECHO_REPLY; who answers may be a router that tells why there is no echo, in `Status`.
///
/// Returns the number of answers, 0 or 1. After a failure `reply` is as it was, and GetLastError
/// gives IP_REQ_TIMED_OUT or another number of ipexport.h.
QUENNET_PLATFORM_API DWORD WINAPI IcmpSendEcho(HANDLE file, IPAddr destination, LPVOID data,
                                               WORD dataSize, PIP_OPTION_INFORMATION options,
                                               LPVOID reply, DWORD replySize, DWORD milliseconds);

QUENNET_PLATFORM_END
