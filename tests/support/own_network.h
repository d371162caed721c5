#pragma once
// A network of the process's own, for tests that make many thousands of connections: the system
// keeps the port of each for a minute, and would run out of them for all programs.

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

/// Moves the calling thread, with the threads and processes that it starts from here on, into a
/// network that has 127.0.0.1 alone and keeps no port of a closed connection. Once in a process.
/// False where the system does not allow it.
inline bool EnterOwnNetwork() {
    static const bool entered = [] {
        if (unshare(CLONE_NEWNET) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
            return false;
        }
        ifreq loopback{};
        std::strcpy(loopback.ifr_name, "lo");
        loopback.ifr_flags = IFF_UP;
        const int control = socket(AF_INET, SOCK_DGRAM, 0);
        const bool isUp = ioctl(control, SIOCSIFFLAGS, &loopback) == 0;
        close(control);
        std::ofstream("/proc/sys/net/ipv4/tcp_max_tw_buckets") << 0 << std::flush;
        return isUp;
    }();
    return entered;
}
