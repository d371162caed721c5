#include "transfer/goto_directory.h"

#include "control/worker.h"
#include "control/working_directory.h"
#include "host/services.h"
#include "transfer/transfer.h"

namespace quennet {

namespace {

struct GotoRequest {
    Session* session;
    u16 cookie;
    char name[pathSize];
    char directory[pathSize];
    GotoBeginsCallback begins;
    GotoDoneCallback done;
};

/// Makes the directory the session's own. A connection that is busy is left as it is.
bool GoesThere(Session* session, const GotoRequest* request) {
    const Exchange exchange(session);
    if (IsBusy(session, exchange)) {
        return false;
    }
    session->hostCookie = request->cookie;
    return ChangeSessionDir(session, request->directory);
}

DWORD WINAPI GotoWorker(void* argument) {
    auto* request = static_cast<GotoRequest*>(argument);
    Session* session = request->session;
    request->begins(request->cookie, session->handle->panelId);
    if (GoesThere(session, request)) {
        request->done(request->cookie, request->name);
    }
    CoreFreeRecord(request);
    ShellSetForeground(hostTables.mainWindow);
    session->users.Subtract(1);
    return 0;
}

/// The request, null without memory or when a text does not fit.
GotoRequest* NewRequest(Session* session, const char* name, const char* directory) {
    auto* request = static_cast<GotoRequest*>(CoreAlloc(sizeof(GotoRequest)));
    if (request == nullptr) {
        return nullptr;
    }
    if (!StoreText(request->name, pathSize, name) ||
        !StoreText(request->directory, pathSize, directory)) {
        RefuseDirectory(session);
        CoreFreeRecord(request);
        return nullptr;
    }
    request->session = session;
    return request;
}

}  // namespace

void GotoDirectory(Session* session, const char* name, const char* directory, u16 cookie,
                   GotoBeginsCallback begins, GotoDoneCallback done) {
    const SessionUse use(session);
    if (session == nullptr) {
        return;
    }
    GotoRequest* request = NewRequest(session, name, directory);
    if (request == nullptr) {
        return;
    }
    request->cookie = cookie;
    request->begins = begins;
    request->done = done;
    if (!StartWorkerOn(session, GotoWorker, request)) {
        CoreFreeRecord(request);
    }
}

}  // namespace quennet
