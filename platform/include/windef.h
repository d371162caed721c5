#pragma once
// Types of the platform. Numbers keep the width that they have there; handles of windows are
// 32-bit numbers in a pointer type.

#include <stdint.h>

#ifdef __cplusplus
#define QUENNET_PLATFORM_BEGIN extern "C" {
#define QUENNET_PLATFORM_END   }
#else
#define QUENNET_PLATFORM_BEGIN
#define QUENNET_PLATFORM_END
#endif
/// Marks what the platform library exports.
#define QUENNET_PLATFORM_API __attribute__((visibility("default")))

#define CALLBACK
#define WINAPI
#define APIENTRY

typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef int32_t BOOL;
typedef int32_t INT;
typedef uint32_t UINT;
typedef int16_t SHORT;
typedef uint16_t USHORT;
typedef uint16_t ATOM;
typedef char CHAR;
typedef uintptr_t UINT_PTR;
typedef intptr_t INT_PTR;
typedef intptr_t LONG_PTR;
typedef uintptr_t ULONG_PTR;
typedef uintptr_t DWORD_PTR;
typedef UINT_PTR WPARAM;
typedef LONG_PTR LPARAM;
typedef LONG_PTR LRESULT;
typedef void* LPVOID;
typedef void* HANDLE;
typedef CHAR* LPSTR;
typedef const CHAR* LPCSTR;
typedef DWORD* LPDWORD;

#define QUENNET_PLATFORM_HANDLE(name) \
    struct name##__;                  \
    typedef struct name##__* name
QUENNET_PLATFORM_HANDLE(HWND);
QUENNET_PLATFORM_HANDLE(HINSTANCE);
QUENNET_PLATFORM_HANDLE(HMENU);
QUENNET_PLATFORM_HANDLE(HICON);
QUENNET_PLATFORM_HANDLE(HBRUSH);
QUENNET_PLATFORM_HANDLE(HFONT);
typedef HICON HCURSOR;
typedef void* HGDIOBJ;
typedef HINSTANCE HMODULE;

#ifndef TRUE
#define TRUE  1
#define FALSE 0
#endif

#define LOWORD(value)         ((WORD)((DWORD_PTR)(value)&0xffff))
#define HIWORD(value)         ((WORD)(((DWORD_PTR)(value) >> 16) & 0xffff))
#define MAKELONG(low, high)   ((LONG)(((DWORD)(WORD)(low)) | ((DWORD)(WORD)(high)) << 16))
#define MAKEWORD(low, high)   ((WORD)(((BYTE)(low)) | ((WORD)((BYTE)(high))) << 8))
#define MAKEWPARAM(low, high) ((WPARAM)(DWORD)MAKELONG(low, high))
#define MAKELPARAM(low, high) ((LPARAM)(DWORD)MAKELONG(low, high))
#define MAX_PATH              260

typedef struct tagPOINT {
    LONG x;
    LONG y;
} POINT;

typedef struct tagRECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
} RECT;
