#include "control/exchange.h"

#include "host/services.h"

namespace quennet {

namespace {

constexpr u32 nobody = 0;
constexpr u32 workerToCome = 0xFFFFFFFF;  // no thread has that id

}  // namespace

void KeepExchange(Session* session) {
    session->exchangeThread.Store(workerToCome);
}

Exchange::Exchange(Session* session) : session_(session), outermost_(false), granted_(false) {
    if (session_ == nullptr) {
        return;
    }
    const u32 thread = GetCurrentThreadId();
    const u32 owner = session_->exchangeThread.ExchangeIf(nobody, thread);
    outermost_ = owner == nobody;
    granted_ = outermost_ || owner == thread;
}

Exchange::Exchange(Session* session, Kept) : session_(session), outermost_(true), granted_(true) {
    session_->exchangeThread.Store(GetCurrentThreadId());
}

bool Exchange::IsRefused() const {
    if (!granted_ && session_ != nullptr) {
        CoreConsolePrintText(session_->console, commandInProgress);
    }
    return !granted_;
}

Exchange::~Exchange() {
    if (outermost_) {
        session_->exchangeThread.Store(nobody);
    }
}

}  // namespace quennet
