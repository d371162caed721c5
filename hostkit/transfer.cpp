#include "hostkit/transfer.h"

#include <utility>

namespace hostkit {

namespace {

thread_local TransferScope* currentScope = nullptr;

}  // namespace

TransferScope::TransferScope(TransferOperation& operation, const std::atomic<bool>& abortPending,
                             const BinaryType& binaryType)
    : operation_(operation),
      abortScope_(abortPending),
      binaryType_(binaryType),
      outer_(std::exchange(currentScope, this)) {}

TransferScope::~TransferScope() {
    currentScope = outer_;
}

bool TransferScope::RefusesFiles() {
    return currentScope != nullptr && currentScope->binaryType_.IsRefused();
}

void TransferScope::AddProgress(quennet::TransferRecord* record, u32 bytes) {
    if (currentScope != nullptr && currentScope->operation_.progress) {
        currentScope->operation_.progress(*record, bytes);
    }
}

void TransferScope::Ask(quennet::TransferItem* item, u32 resumeOffset) {
    const TransferOperation& operation = currentScope->operation_;
    ConfirmAnswer answer = ConfirmAnswer::leaveOut;
    try {
        if (operation.confirm) {
            answer = operation.confirm(*item, resumeOffset);
        }
    } catch (...) {
        currentScope->failure_ = std::current_exception();
    }
    currentScope->leftOut_ = answer != ConfirmAnswer::goOn;
    auto* record = quennet::PointerFromWord<quennet::TransferRecord>(item->record);
    record->status = static_cast<u32>(answer);
}

void TransferScope::Rethrow() const {
    if (failure_ != nullptr) {
        std::rethrow_exception(failure_);
    }
}

extern "C" {

static void AskThread(quennet::TransferItem* item, u32 resumeOffset) {
    TransferScope::Ask(item, resumeOffset);
}
}

quennet::ConfirmCallback TransferScope::Confirm() {
    return AskThread;
}

}  // namespace hostkit
