#include "control/exchange.h"

#include "host/services.h"

namespace quennet {

namespace {

constexpr u32 nobody = 0;
// No thread has these ids.
constexpr u32 workerToCome = 0xFFFFFFFF;
constexpr u32 lentOut = 0xFFFFFFFE;

}  // namespace

void KeepExchange(Session* session) {
    session->exchangeThread.Store(workerToCome);
}

/// Takes the connection over from `from`, or goes on with what the thread has.
bool Exchange::Claim(u32 from) {
    const u32 thread = GetCurrentThreadId();
    const u32 owner = session_->exchangeThread.ExchangeIf(from, thread);
    outermost_ = owner == from;
    before_ = from;
    return outermost_ || owner == thread;
}

Exchange::Exchange(Session* session) : session_(session) {
    if (session_ != nullptr) {
        const bool isLender = session_->exchangeLender.Load() == GetCurrentThreadId();
        granted_ = (isLender && Claim(lentOut)) || Claim(nobody);
    }
}

Exchange::Exchange(Session* session, Kept)
    : session_(session), outermost_(true), granted_(true), before_(nobody) {
    session_->exchangeThread.Store(GetCurrentThreadId());
}

Exchange::Exchange(Session* session, Lent) : session_(session) {
    if (session_ != nullptr) {
        granted_ = Claim(lentOut);
    }
}

bool Exchange::IsRefused() const {
    if (!granted_ && session_ != nullptr) {
        CoreConsolePrintText(session_->console, commandInProgress);
    }
    return !granted_;
}

Exchange::~Exchange() {
    if (outermost_) {
        session_->exchangeThread.Store(before_);
    }
}

LentExchange::LentExchange(Session* session)
    : session_(session), lent_(session->exchangeThread.Load() == GetCurrentThreadId()) {
    if (lent_) {
        session_->exchangeLender.Store(GetCurrentThreadId());
        session_->exchangeThread.Store(lentOut);
    }
}

LentExchange::~LentExchange() {
    constexpr u32 pauseMilliseconds = 10;
    const u32 thread = GetCurrentThreadId();
    while (lent_ && session_->exchangeThread.ExchangeIf(lentOut, thread) != lentOut) {
        Sleep(pauseMilliseconds);
    }
    if (lent_) {
        session_->exchangeLender.Store(nobody);
    }
}

bool HoldsExchange(const Session* session, u32 thread) {
    return session->exchangeThread.Load() == thread || session->exchangeLender.Load() == thread;
}

}  // namespace quennet
