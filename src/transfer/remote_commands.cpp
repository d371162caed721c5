#include "transfer/remote_commands.h"

#include <cstring>

#include "control/command.h"
#include "control/working_directory.h"
#include "host/services.h"
#include "transfer/transfer.h"

namespace quennet {

namespace {

constexpr int done = 2;
constexpr i32 makeDirFailed = 2;

/// What the host hears: 0 is success, so a reply that never came must not be 0.
i32 ResultOf(int replyClass) {
    return replyClass == done ? 0 : (replyClass == 0 ? -1 : replyClass);
}

int DeleteRemoteFile(Session* session, const char* name) {
    return SendCommandAltArg(session, "DELE", nullptr, name);
}

int MakeOneDir(Session* session, const char* path) {
    return SendCommandAltArg(session, "MKD", "XMKD", path);
}

/// Only these say that the parent may be missing.
bool MayLackParent(int code) {
    constexpr int codeNotThere = 550;
    constexpr int codeNameNotAllowed = 553;
    return code == codeNotThere || code == codeNameNotAllowed;
}

/// Length of what is left without the last component. The root of a drive keeps its separator.
std::size_t ParentLength(const char* path) {
    constexpr std::size_t driveRoot = 2;
    std::size_t end = 0;
    for (std::size_t index = 0; path[index] != 0; ++index) {
        if (std::strchr("\\/:", path[index]) != nullptr) {
            end = index;
        }
    }
    return end == driveRoot && path[1] == ':' ? driveRoot + 1 : end;
}

/// Makes a directory and, where the server wants it, those above. `path` is changed on the way and
/// whole again at the end. It ends with the last component: each step upwards shortens the path.
i32 MakeDirPath(Session* session, char* path) {
    if (MakeOneDir(session, path) == done) {
        return 0;
    }
    if (!MayLackParent(session->firstCode)) {
        return makeDirFailed;
    }
    const std::size_t parent = ParentLength(path);
    if (parent == 0 || path[parent] == 0) {
        return makeDirFailed;
    }
    const char behindParent = path[parent];
    path[parent] = 0;
    const i32 result = MakeDirPath(session, path);
    path[parent] = behindParent;
    if (result != 0) {
        return result;
    }
    return MakeOneDir(session, path) == done ? 0 : makeDirFailed;
}

i32 MakePreparedDir(Session* session, const char* path) {
    char copy[pathSize];
    if (!StoreText(copy, pathSize, path)) {
        RefuseDirectory(session);
        return makeDirFailed;
    }
    return MakeDirPath(session, copy);
}

}  // namespace

i32 RemoteDelete(const char* name, FtpHandle* handle) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    const Exchange exchange(session);
    if (session == nullptr || IsBusy(session, exchange) || !ReturnToDirectory(session)) {
        return -1;
    }
    const int result = DeleteRemoteFile(session, name);
    session->abortFlag.Store(0);
    return ResultOf(result);
}

i32 RemoteRemoveDir(const char* name, FtpHandle* handle) {
    constexpr int refusedForGood = 5;
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    const Exchange exchange(session);
    if (session == nullptr || IsBusy(session, exchange) || !ReturnToDirectory(session)) {
        return -1;
    }
    int result = SendCommandAltArg(session, "RMD", "XRMD", name);
    if (result == refusedForGood) {
        result = DeleteRemoteFile(session, name);
    }
    session->abortFlag.Store(0);
    return ResultOf(result);
}

i32 RemoteMakeDir(char* path, FtpHandle* handle) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    const Exchange exchange(session);
    if (session == nullptr) {
        return -1;
    }
    if (IsBusy(session, exchange) || !ReturnToDirectory(session)) {
        return makeDirFailed;
    }
    session->backgroundJobs.Add(1);
    ShellPreparePath(path);
    const i32 result = MakePreparedDir(session, path);
    session->backgroundJobs.Store(0);
    session->abortFlag.Store(0);
    return result;
}

i32 RemoteRename(const char* oldName, const char* newName, FtpHandle* handle) {
    constexpr int wantsNewName = 3;
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    const Exchange exchange(session);
    if (session == nullptr || IsBusy(session, exchange) || !ReturnToDirectory(session)) {
        return -1;
    }
    if (RefusesToSend(session, newName)) {
        return -1;  // before the server waits for it
    }
    int result = SendCommand(session, "%s %s", "RNFR", oldName);
    if (result == wantsNewName) {
        result = SendCommand(session, "%s %s", "RNTO", newName);
        return ResultOf(result);
    }
    // Done without the new name is not done.
    return result == 0 ? -1 : result;
}

}  // namespace quennet
