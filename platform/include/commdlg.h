#pragma once
// The platform's dialog for the name of a file to be written, for POSIX systems.

#include "windows.h"

#include <stddef.h>

#define OFN_READONLY        0x00000001
#define OFN_OVERWRITEPROMPT 0x00000002
#define OFN_HIDEREADONLY    0x00000004
#define OFN_NOCHANGEDIR     0x00000008
#define OFN_PATHMUSTEXIST   0x00000800
#define OFN_EXPLORER        0x00080000

#define CDERR_STRUCTSIZE      0x0001
#define CDERR_INITIALIZATION  0x0002
#define FNERR_INVALIDFILENAME 0x3002
#define FNERR_BUFFERTOOSMALL  0x3003

typedef UINT_PTR(CALLBACK* LPOFNHOOKPROC)(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

typedef struct tagOFNA {
    DWORD lStructSize;  // sizeof(OPENFILENAMEA), or OPENFILENAME_SIZE_VERSION_400A
    HWND hwndOwner;
    HINSTANCE hInstance;
    LPCSTR lpstrFilter;  // pairs of description and patterns ("*.txt;*.log"); an empty text ends it
    LPSTR lpstrCustomFilter;
    DWORD nMaxCustFilter;
    DWORD nFilterIndex;  // pair that is chosen, from 1
    LPSTR lpstrFile;     // the name to begin with; receives the full path
    DWORD nMaxFile;      // size of lpstrFile
    LPSTR lpstrFileTitle;
    DWORD nMaxFileTitle;
    LPCSTR lpstrInitialDir;
    LPCSTR lpstrTitle;
    DWORD Flags;
    WORD nFileOffset;     // of the name in lpstrFile
    WORD nFileExtension;  // of what stands behind the name's last dot, 0 without a dot
    LPCSTR lpstrDefExt;
    LPARAM lCustData;
    LPOFNHOOKPROC lpfnHook;
    LPCSTR lpTemplateName;
    void* pvReserved;
    DWORD dwReserved;
    DWORD FlagsEx;
} OPENFILENAMEA;

/// Size up to and with lpTemplateName: 76 bytes where a pointer has 32 bits.
#define OPENFILENAME_SIZE_VERSION_400A \
    ((DWORD)(offsetof(OPENFILENAMEA, lpTemplateName) + sizeof(LPCSTR)))

#ifdef __cplusplus
static_assert(sizeof(void*) != 4 ||
              (sizeof(OPENFILENAMEA) == 88 && OPENFILENAME_SIZE_VERSION_400A == 76));
static_assert(sizeof(void*) != 8 ||
              (sizeof(OPENFILENAMEA) == 152 && OPENFILENAME_SIZE_VERSION_400A == 136));
#endif

QUENNET_PLATFORM_BEGIN

/// Asks a person for a file to write, on the calling thread, and returns TRUE with its full path in
/// lpstrFile. A name without an extension gets lpstrDefExt, if there is one; OFN_OVERWRITEPROMPT
/// asks before a file that exists is taken. nFilterIndex, nFileOffset, nFileExtension and
/// lpstrFileTitle are set too. Hooks, templates and custom filters are not looked at, and there is
/// never a box for reading only.
///
/// FALSE, with lpstrFile as it was, after Cancel (CommDlgExtendedError is 0 then), for a wrong
/// lStructSize, for a missing buffer, and when the owner is no window. The person is told of a path
/// that does not fit the buffer, in the dialog, which then stays.
///
/// The dialog has class "#32770". Its controls have the numbers of dlgs.h: the name is edit control
/// edt1, the entries of the folder are list box lst1 (folders first and with a '/' at their end),
/// the filter is drop-down list cmb1, the folder itself is the text of stc1; IDOK saves, IDCANCEL
/// cancels. A name that is a folder leads into it, and one with '*' or '?' is a filter. The
/// question before a file is written over is a dialog too, with IDYES and IDNO.
QUENNET_PLATFORM_API BOOL WINAPI GetSaveFileNameA(OPENFILENAMEA* request);
/// Why the calling thread's last dialog of this header failed; 0 when it did not.
QUENNET_PLATFORM_API DWORD WINAPI CommDlgExtendedError(void);

QUENNET_PLATFORM_END
