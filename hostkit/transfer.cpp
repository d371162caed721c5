#include "hostkit/transfer.h"

#include <limits>
#include <utility>

namespace hostkit {

namespace {

thread_local TransferScope* currentScope = nullptr;

constexpr u64 largestOffset = std::numeric_limits<HostWord>::max();

/// A file of 1,024 bytes or less is fetched anew.
bool IsPart(u64 localSize, u64 sourceSize) {
    return localSize > 1024 && localSize < sourceSize;
}

}  // namespace

bool CanResume(u64 localSize, u64 sourceSize) {
    return IsPart(localSize, sourceSize) && localSize < largestOffset;
}

std::string ObjectionToResume(u64 localSize, u64 sourceSize) {
    const bool isTooLarge = IsPart(localSize, sourceSize) && localSize >= largestOffset;
    return isTooLarge ? "a part of more than 4 GiB is begun anew in this 32-bit build" : "";
}

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

void TransferScope::Ask(quennet::TransferItem* item, HostWord resumeOffset) {
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

static void AskThread(quennet::TransferItem* item, HostWord resumeOffset) {
    TransferScope::Ask(item, resumeOffset);
}
}

quennet::ConfirmCallback TransferScope::Confirm() {
    return AskThread;
}

}  // namespace hostkit
