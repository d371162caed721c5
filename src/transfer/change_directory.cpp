#include "transfer/change_directory.h"

#include <cstring>

#include "control/exchange.h"
#include "control/worker.h"
#include "control/working_directory.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr int done = 2;

struct ChangeDirRequest {
    u16 cookie;
    FtpHandle* handle;
    DirectoryChangedCallback callback;
    char path[2];  // as long as it is; room for "/" at the least
};

bool IsSeparator(char character) {
    return character == '/' || character == '\\';
}

/// The last component of a directory, without a separator at its end, which is cut off for good.
void LastComponent(char* directory, char* name) {
    const std::size_t length = std::strlen(directory);
    if (length > 0 && IsSeparator(directory[length - 1])) {
        directory[length - 1] = 0;
    }
    StoreText(name, pathSize, directory + ShellNameOffset(directory));
}

void RunChangeDir(Session* session, ChangeDirRequest* request) {
    session->hostCookie = request->cookie;
    char directory[pathSize];
    char left[pathSize] = "";
    CopySessionDir(session, directory);
    if (std::strcmp(request->path, "\\") == 0 && std::strchr(directory, '/') != nullptr) {
        request->path[0] = '/';
    }
    LastComponent(directory, left);
    if (ChangeSessionDir(session, request->path)) {
        const bool wentUp = std::strcmp(request->path, "..") == 0;
        request->callback(request->cookie, wentUp ? left : "");
    }
    session->backgroundJobs.Store(0);
}

DWORD WINAPI ChangeDirWorker(void* argument) {
    auto* request = static_cast<ChangeDirRequest*>(argument);
    // The handle lives: the message that started this thread has counted it among the users.
    Session* session = SessionFromHandle(request->handle);
    RunChangeDir(session, request);
    CoreFreeRecord(request);
    session->users.Subtract(1);
    return 0;
}

}  // namespace

void ChangeDirAsync(const char* path, u16 cookie, FtpHandle* handle,
                    DirectoryChangedCallback callback) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr) {
        return;
    }
    const std::size_t length = std::strlen(path);
    auto* request = static_cast<ChangeDirRequest*>(CoreAlloc(sizeof(ChangeDirRequest) + length));
    if (request == nullptr) {
        return;
    }
    request->cookie = cookie;
    request->handle = handle;
    request->callback = callback;
    std::memcpy(request->path, path, length + 1);
    if (!StartWorkerOn(session, ChangeDirWorker, request)) {
        CoreFreeRecord(request);
    }
}

i32 ChangeDirSync(const char* path, FtpHandle* handle, char* out) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr) {
        return -1;
    }
    if (path[0] == 0) {
        return 0;
    }
    const Exchange exchange(session);
    const int result = VisitDirectory(session, path, out);
    session->backgroundJobs.Store(0);
    // A server that closed instead of answering has class 0, which would say that all went well.
    return result == done ? 0 : (result == 0 ? -1 : result);
}

}  // namespace quennet
