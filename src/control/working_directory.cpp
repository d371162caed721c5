#include "control/working_directory.h"

#include <cstring>

#include "control/command.h"
#include "control/exchange.h"
#include "host/services.h"

namespace quennet {

namespace {

void CutSeparator(char* path) {
    const std::size_t length = std::strlen(path);
    if (length >= 2 && (path[length - 1] == '/' || path[length - 1] == '\\')) {
        path[length - 1] = 0;
    }
}

}  // namespace

int ChangeDir(Session* session, const char* path) {
    const Exchange exchange(session);
    if (exchange.IsRefused()) {
        return 0;
    }
    if (std::strcmp(path, "..") == 0 && SendCommandText(session, "CDUP") != 5) {
        return session->firstCode / 100;
    }
    return SendCommandAltArg(session, "CWD", "XCWD", path);
}

int GetWorkingDir(Session* session, char** result) {
    if (result == nullptr) {
        return -1;
    }
    *result = nullptr;
    const Exchange exchange(session);
    if (exchange.IsRefused()) {
        return 0;
    }
    const int replyClass = SendCommandAlt(session, "PWD", "XPWD");
    if (replyClass != 2) {
        return replyClass;
    }
    char* opening = std::strchr(session->replyBuffer, '"');
    char* closing = opening != nullptr ? std::strchr(opening + 1, '"') : nullptr;
    if (closing != nullptr) {
        *closing = 0;
        *result = opening + 1;
        CutSeparator(*result);
    }
    return replyClass;
}

int RefuseDirectory(Session* session) {
    CoreConsolePrintText(session->console, "Directory name too long, refused.");
    return workingDirRefused;
}

void SetSessionDir(Session* session, const char* directory) {
    const ListLock lock;
    StoreText(session->site.directory, pathSize, directory);
    session->currentCacheIndex = 0;
}

void CopySessionDir(const Session* session, char* field) {
    const ListLock lock;
    StoreText(field, pathSize, session->site.directory);
}

int StoreWorkingDir(Session* session, char* field) {
    const Exchange exchange(session);  // up to the look at its reply
    char* directory = nullptr;
    const int replyClass = GetWorkingDir(session, &directory);
    if (replyClass != 2) {
        return replyClass;
    }
    if (directory == nullptr) {
        CoreConsolePrintText(session->console, "The reply names no directory.");
        return workingDirRefused;
    }
    return StoreText(field, pathSize, directory) ? replyClass : RefuseDirectory(session);
}

bool ChangeSessionDir(Session* session, const char* path) {
    constexpr int done = 2;
    char directory[pathSize];
    const Exchange exchange(session);
    if (ChangeDir(session, path) != done) {
        return false;
    }
    const int result = StoreWorkingDir(session, directory);
    if (result == done) {
        SetSessionDir(session, directory);
    } else if (session->firstCode / 100 == done && session->site.directory[0] != 0) {
        // The server has a directory that this side refuses.
        ChangeDir(session, session->site.directory);
    }
    return result == done;
}

}  // namespace quennet
