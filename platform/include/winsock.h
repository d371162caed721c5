#pragma once
// Winsock 1.1, as far as the module and its hosts call it.
//
// The C library has most of these names too, and C++ headers pull some of them in. So this header
// brings in the system's socket headers first, shares the records that mean the same on both sides
// (sockaddr_in, hostent, timeval ...), and then maps functions, option values and fd_set to the
// layer's own. The functions are function-like macros: a member called `send` that is not called,
// or is declared and called behind this header, is left in peace. Nothing of the C library is
// replaced in the process.
//
// Every function that fails returns SOCKET_ERROR, INVALID_SOCKET or null, and WSAGetLastError
// tells the reason. Addresses and ports are in network byte order.
//
// A connected stream socket reads ahead and combines small sends in user memory. What was combined
// goes out before the same thread waits for anything, at shutdown and at close; an error met on
// the way is the result of the next call on that socket.

#include "windef.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <stdint.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/types.h>

#ifdef __cplusplus
static_assert(sizeof(((struct timeval*)0)->tv_sec) == 8, "build with _TIME_BITS=64");
#endif

typedef uint32_t SOCKET;
#define INVALID_SOCKET ((SOCKET)~0u)
#define SOCKET_ERROR   (-1)

typedef struct sockaddr SOCKADDR;
typedef struct sockaddr* LPSOCKADDR;
typedef struct sockaddr_in SOCKADDR_IN;
typedef struct in_addr IN_ADDR;
typedef struct hostent HOSTENT;
typedef struct protoent PROTOENT;
typedef struct linger LINGER;
typedef struct timeval TIMEVAL;

#define WSADESCRIPTION_LEN 256
#define WSASYS_STATUS_LEN  128

typedef struct WSAData {
    WORD wVersion;
    WORD wHighVersion;
    char szDescription[WSADESCRIPTION_LEN + 1];
    char szSystemStatus[WSASYS_STATUS_LEN + 1];
    unsigned short iMaxSockets;
    unsigned short iMaxUdpDg;
    char* lpVendorInfo;
} WSADATA;
typedef WSADATA* LPWSADATA;

// --- Sets of sockets ----------------------------------------------------------------------

#undef FD_SETSIZE
#define FD_SETSIZE 64

/// A count and the sockets; socket numbers have no upper limit, a set has.
typedef struct quennet_fd_set {
    unsigned int fd_count;
    SOCKET fd_array[FD_SETSIZE];
} quennet_fd_set;
#define fd_set quennet_fd_set

// --- Values -------------------------------------------------------------------------------

#undef SOL_SOCKET
#undef SO_ACCEPTCONN
#undef SO_BROADCAST
#undef SO_DONTLINGER
#undef SO_DONTROUTE
#undef SO_ERROR
#undef SO_KEEPALIVE
#undef SO_LINGER
#undef SO_OOBINLINE
#undef SO_RCVBUF
#undef SO_RCVTIMEO
#undef SO_REUSEADDR
#undef SO_SNDBUF
#undef SO_SNDTIMEO
#undef SO_TYPE
#undef SOMAXCONN
#undef FIONBIO
#undef FIONREAD

#define SOL_SOCKET 0xffff

#define SO_REUSEADDR 0x0004
#define SO_KEEPALIVE 0x0008
#define SO_LINGER    0x0080  // struct linger
#define SO_OOBINLINE 0x0100
#define SO_SNDTIMEO  0x1005  // milliseconds that a blocking send may last, 0 for ever
#define SO_RCVTIMEO  0x1006  // the same for a blocking receive; both then fail with WSAETIMEDOUT
#define SO_ERROR     0x1007  // a number as WSAGetLastError gives it; asking clears it

#define SOMAXCONN 5

#define FIONREAD ((long)0x4004667f)
#define FIONBIO  ((long)0x8004667eu)

#define WSABASEERR         10000
#define WSAEINTR           10004
#define WSAEBADF           10009
#define WSAEACCES          10013
#define WSAEFAULT          10014
#define WSAEINVAL          10022
#define WSAEMFILE          10024
#define WSAEWOULDBLOCK     10035
#define WSAEINPROGRESS     10036
#define WSAEALREADY        10037
#define WSAENOTSOCK        10038
#define WSAEDESTADDRREQ    10039
#define WSAEMSGSIZE        10040
#define WSAEPROTOTYPE      10041
#define WSAENOPROTOOPT     10042
#define WSAEPROTONOSUPPORT 10043
#define WSAESOCKTNOSUPPORT 10044
#define WSAEOPNOTSUPP      10045
#define WSAEPFNOSUPPORT    10046
#define WSAEAFNOSUPPORT    10047
#define WSAEADDRINUSE      10048
#define WSAEADDRNOTAVAIL   10049
#define WSAENETDOWN        10050
#define WSAENETUNREACH     10051
#define WSAENETRESET       10052
#define WSAECONNABORTED    10053
#define WSAECONNRESET      10054
#define WSAENOBUFS         10055
#define WSAEISCONN         10056
#define WSAENOTCONN        10057
#define WSAESHUTDOWN       10058
#define WSAETOOMANYREFS    10059
#define WSAETIMEDOUT       10060
#define WSAECONNREFUSED    10061
#define WSAELOOP           10062
#define WSAENAMETOOLONG    10063
#define WSAEHOSTDOWN       10064
#define WSAEHOSTUNREACH    10065
#define WSASYSNOTREADY     10091
#define WSAVERNOTSUPPORTED 10092
#define WSANOTINITIALISED  10093
#define WSAHOST_NOT_FOUND  11001
#define WSATRY_AGAIN       11002
#define WSANO_RECOVERY     11003
#define WSANO_DATA         11004

QUENNET_PLATFORM_BEGIN

// --- Start, stop, errors ------------------------------------------------------------------

/// Counts one more user of the sockets; the version is at least 1.1. Returns 0, or the error
/// itself. Until the first success every other call fails with WSANOTINITIALISED.
QUENNET_PLATFORM_API int WINAPI WSAStartup(WORD version, LPWSADATA data);
QUENNET_PLATFORM_API int WINAPI WSACleanup(void);
QUENNET_PLATFORM_API int WINAPI WSAGetLastError(void);
QUENNET_PLATFORM_API void WINAPI WSASetLastError(int error);
/// Whether the calling thread itself is inside a blocking call, so always FALSE when it can ask.
QUENNET_PLATFORM_API BOOL WINAPI WSAIsBlocking(void);
/// Cancels the blocking call of the calling thread; without one it fails with WSAEINVAL.
QUENNET_PLATFORM_API int WINAPI WSACancelBlockingCall(void);

// --- Sockets ------------------------------------------------------------------------------

/// A raw ICMP socket (SOCK_RAW, IPPROTO_ICMP) sees all ICMP that arrives but the requests that the
/// system answers itself, each with its IP header. WSAEACCES where the user may not have one.
QUENNET_PLATFORM_API SOCKET quennet_socket(int family, int type, int protocol);
QUENNET_PLATFORM_API int quennet_bind(SOCKET socket, const struct sockaddr* address, int size);
QUENNET_PLATFORM_API int quennet_listen(SOCKET socket, int backlog);
/// `address` and `size` may be null.
QUENNET_PLATFORM_API SOCKET quennet_accept(SOCKET socket, struct sockaddr* address, int* size);
/// On a non-blocking socket: fails with WSAEWOULDBLOCK, and the socket becomes writable once
/// connected; a failure shows in the except set of `select` alone, its number in SO_ERROR.
QUENNET_PLATFORM_API int quennet_connect(SOCKET socket, const struct sockaddr* address, int size);
/// Bytes taken. A blocking socket takes all.
QUENNET_PLATFORM_API int quennet_send(SOCKET socket, const char* data, int length, int flags);
/// Bytes received, 0 at the end of the stream. Flags: MSG_PEEK.
QUENNET_PLATFORM_API int quennet_recv(SOCKET socket, char* buffer, int length, int flags);
QUENNET_PLATFORM_API int quennet_sendto(SOCKET socket, const char* data, int length, int flags,
                                        const struct sockaddr* address, int size);
QUENNET_PLATFORM_API int quennet_recvfrom(SOCKET socket, char* buffer, int length, int flags,
                                          struct sockaddr* address, int* size);
/// How many sockets are ready, 0 when the time is over; the sets hold the ready ones afterwards.
/// `count` is not looked at, each set may be null (not all of them), a null `timeout` waits for
/// ever. A set of writers is told once, by a 0 before the time, that a connect has failed, so that
/// whoever asks for SO_ERROR between two calls learns it at once.
QUENNET_PLATFORM_API int quennet_select(int count, quennet_fd_set* readers, quennet_fd_set* writers,
                                        quennet_fd_set* excepts, const struct timeval* timeout);
/// `how`: 0 no more receiving, 1 no more sending, 2 neither.
QUENNET_PLATFORM_API int quennet_shutdown(SOCKET socket, int how);
/// With SO_LINGER on and 0 seconds the connection is reset, and what was not sent yet is gone.
/// Else combined bytes are sent first: a close waits for a peer that takes them, 60 seconds at
/// most, 10 seconds for one that takes none.
QUENNET_PLATFORM_API int WINAPI closesocket(SOCKET socket);
/// FIONBIO: not 0 makes the socket non-blocking. FIONREAD: bytes that one `recv` can take.
QUENNET_PLATFORM_API int WINAPI ioctlsocket(SOCKET socket, long command, u_long* argument);
QUENNET_PLATFORM_API int quennet_setsockopt(SOCKET socket, int level, int option, const char* value,
                                            int size);
QUENNET_PLATFORM_API int quennet_getsockopt(SOCKET socket, int level, int option, char* value,
                                            int* size);
QUENNET_PLATFORM_API int quennet_getsockname(SOCKET socket, struct sockaddr* address, int* size);

// --- Names --------------------------------------------------------------------------------

/// The result stays valid until the same thread asks again.
QUENNET_PLATFORM_API struct hostent* quennet_gethostbyname(const char* name);
/// `address` has `size` bytes, `family` is AF_INET. An address that has no name goes by its text,
/// so every host that can be reached has a record.
QUENNET_PLATFORM_API struct hostent* quennet_gethostbyaddr(const char* address, int size,
                                                           int family);
QUENNET_PLATFORM_API struct protoent* quennet_getprotobyname(const char* name);
QUENNET_PLATFORM_API char* quennet_inet_ntoa(struct in_addr address);

/// Behind the macro FD_ISSET.
QUENNET_PLATFORM_API int quennet_fd_isset(SOCKET socket, const quennet_fd_set* set);
/// Behind the macros FD_SET and FD_CLR. A full set stays as it is.
QUENNET_PLATFORM_API void quennet_fd_add(SOCKET socket, quennet_fd_set* set);
QUENNET_PLATFORM_API void quennet_fd_remove(SOCKET socket, quennet_fd_set* set);

QUENNET_PLATFORM_END

#ifdef __cplusplus
// Not a macro: std::bind goes by this name too. A template, so that it suits a SOCKET better than
// the C library's function does, whatever the type of the size.
template <typename Size>
inline int bind(SOCKET socket, const struct sockaddr* address, Size size) {
    return quennet_bind(socket, address, static_cast<int>(size));
}
#else
#define bind(...) quennet_bind(__VA_ARGS__)
#endif

#undef FD_ZERO
#undef FD_SET
#undef FD_CLR
#undef FD_ISSET
#define FD_ZERO(set)          ((set)->fd_count = 0)
#define FD_SET(socket, set)   quennet_fd_add((socket), (set))
#define FD_CLR(socket, set)   quennet_fd_remove((socket), (set))
#define FD_ISSET(socket, set) quennet_fd_isset((socket), (set))

#define accept(...)         quennet_accept(__VA_ARGS__)
#define connect(...)        quennet_connect(__VA_ARGS__)
#define gethostbyaddr(...)  quennet_gethostbyaddr(__VA_ARGS__)
#define gethostbyname(...)  quennet_gethostbyname(__VA_ARGS__)
#define getprotobyname(...) quennet_getprotobyname(__VA_ARGS__)
#define getsockname(...)    quennet_getsockname(__VA_ARGS__)
#define getsockopt(...)     quennet_getsockopt(__VA_ARGS__)
#define inet_ntoa(...)      quennet_inet_ntoa(__VA_ARGS__)
#define listen(...)         quennet_listen(__VA_ARGS__)
#define recv(...)           quennet_recv(__VA_ARGS__)
#define recvfrom(...)       quennet_recvfrom(__VA_ARGS__)
#define select(...)         quennet_select(__VA_ARGS__)
#define send(...)           quennet_send(__VA_ARGS__)
#define sendto(...)         quennet_sendto(__VA_ARGS__)
#define setsockopt(...)     quennet_setsockopt(__VA_ARGS__)
#define shutdown(...)       quennet_shutdown(__VA_ARGS__)
#define socket(...)         quennet_socket(__VA_ARGS__)
