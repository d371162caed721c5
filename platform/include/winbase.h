#pragma once
// Time, threads, locks, libraries and text: the part of the platform's base interface that the
// module and its hosts call. A result is a BOOL unless it says otherwise; after a failure
// GetLastError tells the reason.

#include "windef.h"

#include <pthread.h>
#include <stddef.h>
#ifdef __cplusplus
#include <ctime>
#else
#include <time.h>
#endif

#define ERROR_SUCCESS             0
#define ERROR_PATH_NOT_FOUND      3
#define ERROR_ACCESS_DENIED       5
#define ERROR_INVALID_HANDLE      6
#define ERROR_NOT_ENOUGH_MEMORY   8
#define ERROR_INVALID_PARAMETER   87
#define ERROR_INSUFFICIENT_BUFFER 122
#define ERROR_MOD_NOT_FOUND       126
#define ERROR_PROC_NOT_FOUND      127
#define ERROR_INVALID_FLAGS       1004

#define INVALID_HANDLE_VALUE ((HANDLE)(LONG_PTR)-1)

#define INFINITE 0xFFFFFFFFu

#define LOCALE_USER_DEFAULT 0x0400u
#define DATE_SHORTDATE      0x00000001u
#define TIME_NOSECONDS      0x00000002u

typedef DWORD LCID;
typedef size_t SIZE_T;

typedef struct _SYSTEMTIME {
    WORD wYear;
    WORD wMonth;      // 1 to 12
    WORD wDayOfWeek;  // 0 is Sunday
    WORD wDay;        // 1 to 31
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
} SYSTEMTIME;

// Units of 100 nanoseconds since the first day of 1601.
typedef struct _FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
} FILETIME;

typedef struct _RTL_CRITICAL_SECTION {
    pthread_mutex_t mutex;
} CRITICAL_SECTION;
typedef CRITICAL_SECTION* LPCRITICAL_SECTION;

// Nobody here has one: the argument is always null.
typedef struct _SECURITY_ATTRIBUTES* LPSECURITY_ATTRIBUTES;

typedef DWORD(WINAPI* LPTHREAD_START_ROUTINE)(LPVOID parameter);
typedef INT_PTR(WINAPI* FARPROC)(void);

QUENNET_PLATFORM_BEGIN

// --- Errors -------------------------------------------------------------------------------

/// The calling thread's last error. Sockets use the same word (WSAGetLastError).
QUENNET_PLATFORM_API DWORD WINAPI GetLastError(void);
QUENNET_PLATFORM_API void WINAPI SetLastError(DWORD error);

// --- Time ---------------------------------------------------------------------------------

/// Now, in the user's time zone.
QUENNET_PLATFORM_API void WINAPI GetLocalTime(SYSTEMTIME* time);

/// Converts without any shift of zone. Takes the years 1601 to 30827 and no date or time that
/// the calendar does not have; wDayOfWeek is not looked at.
QUENNET_PLATFORM_API BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* fileTime);
/// The way back; fails for a count above 0x7FFFFFFFFFFFFFFF.
QUENNET_PLATFORM_API BOOL WINAPI FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* time);

/// DOS date: bits 15..9 year minus 1980, 8..5 month, 4..0 day. DOS time: bits 15..11 hour,
/// 10..5 minute, 4..0 seconds divided by 2. Fails outside the years 1980 to 2107.
QUENNET_PLATFORM_API BOOL WINAPI FileTimeToDosDateTime(const FILETIME* fileTime, WORD* date,
                                                       WORD* time);

/// Writes the date in the user's short format, or the time in the user's format. `locale` is
/// LOCALE_USER_DEFAULT, `flags` 0 or DATE_SHORTDATE, 0 or TIME_NOSECONDS; a null time is now;
/// `format` is null. Returns the bytes written with the terminator, or the bytes needed if `size`
/// is 0; 0 after a failure.
QUENNET_PLATFORM_API int WINAPI GetDateFormatA(LCID locale, DWORD flags, const SYSTEMTIME* date,
                                               LPCSTR format, LPSTR buffer, int size);
QUENNET_PLATFORM_API int WINAPI GetTimeFormatA(LCID locale, DWORD flags, const SYSTEMTIME* time,
                                               LPCSTR format, LPSTR buffer, int size);

/// Milliseconds since the machine started; wraps after 49.7 days.
QUENNET_PLATFORM_API DWORD WINAPI GetTickCount(void);

/// Behind the macro `clock`: milliseconds of wall time since the process started.
QUENNET_PLATFORM_API clock_t quennet_clock(void);

// --- Threads and locks --------------------------------------------------------------------

/// Suspends the calling thread; 0 only yields, INFINITE never returns.
QUENNET_PLATFORM_API void WINAPI Sleep(DWORD milliseconds);

/// Starts a thread. `flags` is 0; a `stackSize` of 0 is the default; `id` may be null. Returns a
/// handle for CloseHandle (closing it leaves the thread running), or null.
QUENNET_PLATFORM_API HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize,
                                                LPTHREAD_START_ROUTINE start, LPVOID parameter,
                                                DWORD flags, LPDWORD id);
QUENNET_PLATFORM_API BOOL WINAPI CloseHandle(HANDLE object);
QUENNET_PLATFORM_API DWORD WINAPI GetCurrentThreadId(void);
QUENNET_PLATFORM_API DWORD WINAPI GetCurrentProcessId(void);

/// A lock that its owner may enter again; it must leave as often.
QUENNET_PLATFORM_API void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION section);
QUENNET_PLATFORM_API void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION section);
QUENNET_PLATFORM_API void WINAPI EnterCriticalSection(LPCRITICAL_SECTION section);
QUENNET_PLATFORM_API void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION section);

// --- Libraries ----------------------------------------------------------------------------

/// Loads a shared library, or counts one more use. The result is the library's load address, the
/// same that dladdr gives as dli_fbase for code inside it. Null after a failure. ICMP.DLL is the
/// layer's own library.
QUENNET_PLATFORM_API HMODULE WINAPI LoadLibraryA(LPCSTR name);
QUENNET_PLATFORM_API BOOL WINAPI FreeLibrary(HMODULE library);
/// The address of a name that this very library exports; null if it has none.
QUENNET_PLATFORM_API FARPROC WINAPI GetProcAddress(HMODULE library, LPCSTR name);
/// The program itself for a null name. Other names are not looked for.
QUENNET_PLATFORM_API HMODULE WINAPI GetModuleHandleA(LPCSTR name);

// --- Text and volumes ---------------------------------------------------------------------

/// Upper case in Latin-1, in place. An argument below 0x10000 is a single character, and so is
/// the result.
QUENNET_PLATFORM_API LPSTR WINAPI CharUpperA(LPSTR text);
/// Compares without regard to case (Latin-1): below 0, 0 or above 0.
QUENNET_PLATFORM_API int WINAPI lstrcmpiA(LPCSTR left, LPCSTR right);

/// `serial` receives a number that stays with the volume. A root that is no absolute POSIX path
/// (null, a drive) means the root file system. The label and the name of the file system are
/// empty; every result pointer may be null.
QUENNET_PLATFORM_API BOOL WINAPI GetVolumeInformationA(LPCSTR root, LPSTR label, DWORD labelSize,
                                                       LPDWORD serial, LPDWORD componentLength,
                                                       LPDWORD flags, LPSTR fileSystem,
                                                       DWORD fileSystemSize);

QUENNET_PLATFORM_END

// The platform's C library counts wall time in milliseconds, not CPU time.
#undef CLOCKS_PER_SEC
#define CLOCKS_PER_SEC ((clock_t)1000)
#undef clock
#define clock() quennet_clock()
