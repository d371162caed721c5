#include "control/exchange.h"

#include "host/services.h"

namespace quennet {

Exchange::Exchange(Session* session) : session_(session), outermost_(false), granted_(false) {
    if (session_ == nullptr) {
        return;
    }
    constexpr u32 nobody = 0;
    const u32 thread = GetCurrentThreadId();
    const u32 owner = session_->exchangeThread.ExchangeIf(nobody, thread);
    outermost_ = owner == nobody;
    granted_ = outermost_ || owner == thread;
}

bool Exchange::IsRefused() const {
    if (!granted_ && session_ != nullptr) {
        CoreConsolePrintText(session_->console, commandInProgress);
    }
    return !granted_;
}

Exchange::~Exchange() {
    if (outermost_) {
        session_->exchangeThread.Store(0);
    }
}

}  // namespace quennet
