#pragma once
// What the platform knows about a kind of file, for POSIX systems.

#include "windows.h"

#define SHGFI_TYPENAME          0x00000400
#define SHGFI_SYSICONINDEX      0x00004000
#define SHGFI_SMALLICON         0x00000001
#define SHGFI_USEFILEATTRIBUTES 0x00000010

#ifndef FILE_ATTRIBUTE_DIRECTORY
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010
#define FILE_ATTRIBUTE_NORMAL    0x00000080
#endif

typedef struct _SHFILEINFOA {
    HICON hIcon;
    int iIcon;
    DWORD dwAttributes;
    CHAR szDisplayName[MAX_PATH];
    CHAR szTypeName[80];
} SHFILEINFOA;

#ifdef __cplusplus
static_assert(sizeof(void*) != 4 || sizeof(SHFILEINFOA) == 352);
#endif

QUENNET_PLATFORM_BEGIN

/// Fills szTypeName (SHGFI_TYPENAME) and iIcon (SHGFI_SYSICONINDEX) of the record. With
/// SHGFI_USEFILEATTRIBUTES the name and `attributes` decide and nothing is touched; without it the
/// file must exist, and it is looked at to tell a folder from a file.
///
/// The type name is the English comment of the system's MIME database (shared-mime-info) for the
/// type that the name has there; empty where the name or the database says nothing, but a folder is
/// then a "Folder". The icon is a small number that stands for a kind of file: QUENNET_ICON_...
/// below.
///
/// Not 0 when it worked; with SHGFI_SYSICONINDEX that is the image list of these icons
/// (commctrl.h). From any thread.
QUENNET_PLATFORM_API DWORD_PTR WINAPI SHGetFileInfoA(LPCSTR path, DWORD attributes,
                                                     SHFILEINFOA* info, UINT size, UINT flags);

QUENNET_PLATFORM_END

enum {
    QUENNET_ICON_FILE = 0,
    QUENNET_ICON_FOLDER = 1,
    QUENNET_ICON_TEXT = 2,
    QUENNET_ICON_IMAGE = 3,
    QUENNET_ICON_AUDIO = 4,
    QUENNET_ICON_VIDEO = 5,
    QUENNET_ICON_ARCHIVE = 6,
    QUENNET_ICON_PROGRAM = 7,
    QUENNET_ICON_DOCUMENT = 8
};
