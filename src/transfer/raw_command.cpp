#include "transfer/raw_command.h"

#include <cstring>

#include "control/command.h"
#include "control/reply.h"
#include "control/worker.h"
#include "host/services.h"
#include "listing/cache.h"
#include "listing/list_text.h"
#include "transfer/transfer.h"

namespace quennet {

namespace {

constexpr u32 typedSize = 1024;

struct RawCommandRequest {
    HostWord word;
    u16 cookie;
    FtpHandle* handle;
    Session* session;
    char text[typedSize];
};

bool HasVerb(const char* text, const char* verb) {
    return BeginsWithInAnyCase(text, verb, std::strlen(verb));
}

/// A typed TYPE or REST changes what the server has without the session's knowing: the next
/// transfer tells its own again.
void ForgetTypedSettings(Session* session, const char* text, int result) {
    constexpr int refused = 5;
    if (HasVerb(text, "type ")) {
        session->transferType = 0;
    }
    if (HasVerb(text, "rest ") && result != refused) {
        session->restartTyped = 1;
    }
}

int SendTypedText(Session* session, const char* text) {
    constexpr int moreFollows = 1;
    const Exchange exchange(session);
    if (exchange.IsRefused()) {
        return -1;
    }
    const int result = SendTransferCommand(session, text);
    ForgetTypedSettings(session, text, result);
    if (result == moreFollows) {
        // Nobody waits for the rest of it: it is taken before the next command.
        const FinalReply owed(session);
    }
    return result;
}

void RunRawCommand(Session* session, const RawCommandRequest* request) {
    constexpr int done = 2;
    if (SendTypedText(session, request->text) == done) {
        session->hostCookie = request->cookie;
        InvalidateDirCache(request->handle);
        ShellRefreshPanel(request->cookie);
    }
    session->backgroundJobs.Store(0);
}

DWORD WINAPI RawCommandWorker(void* argument) {
    auto* request = static_cast<RawCommandRequest*>(argument);
    Session* session = request->session;
    RunRawCommand(session, request);
    CoreFreeRecord(request);
    session->users.Subtract(1);
    return 0;
}

/// The request, null without memory or when the text does not fit.
RawCommandRequest* NewRequest(Session* session, const char* text) {
    auto* request = static_cast<RawCommandRequest*>(CoreAlloc(sizeof(RawCommandRequest)));
    if (request == nullptr) {
        return nullptr;
    }
    if (!StoreText(request->text, typedSize, text)) {
        CoreConsolePrintText(session->console, "Line too long, not sent.");
        CoreFreeRecord(request);
        return nullptr;
    }
    return request;
}

}  // namespace

void RawCommand(HostWord word, FtpHandle* handle, const char* text, u16 cookie) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr || IsBusy(session, Exchange(session))) {
        return;
    }
    RawCommandRequest* request = NewRequest(session, text);
    if (request == nullptr) {
        return;
    }
    request->word = word;
    request->cookie = cookie;
    request->handle = handle;
    request->session = session;
    session->backgroundJobs.Add(1);
    if (!StartWorkerOn(session, RawCommandWorker, request)) {
        session->backgroundJobs.Store(0);
        CoreFreeRecord(request);
    }
}

}  // namespace quennet
