// What a volume is known by.

#include <sys/statvfs.h>

#include "winbase.h"

namespace {

void ClearText(char* text, DWORD size) {
    if (text != nullptr && size > 0) {
        *text = '\0';
    }
}

void Store(DWORD* place, DWORD value) {
    if (place != nullptr) {
        *place = value;
    }
}

/// 0 if the file system has no id of its own.
DWORD SerialOf(const struct statvfs& volume) {
    const uint64_t id = volume.f_fsid;
    return static_cast<DWORD>(id ^ id >> 32);
}

}  // namespace

BOOL WINAPI GetVolumeInformationA(LPCSTR root, LPSTR label, DWORD labelSize, LPDWORD serial,
                                  LPDWORD componentLength, LPDWORD flags, LPSTR fileSystem,
                                  DWORD fileSystemSize) {
    const char* const path = root != nullptr && *root == '/' ? root : "/";
    struct statvfs volume {};
    if (statvfs(path, &volume) != 0 || (serial != nullptr && SerialOf(volume) == 0)) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return FALSE;
    }
    Store(serial, SerialOf(volume));
    Store(componentLength, static_cast<DWORD>(volume.f_namemax));
    Store(flags, 0);
    ClearText(label, labelSize);
    ClearText(fileSystem, fileSystemSize);
    return TRUE;
}
