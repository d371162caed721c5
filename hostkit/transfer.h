#pragma once
// What the module asks and tells while it moves a file.

#include <atomic>
#include <exception>
#include <functional>
#include <string>

#include "host/records.h"
#include "hostkit/binary_type.h"
#include "hostkit/files.h"
#include "hostkit/types.h"

namespace hostkit {

/// Answer to the question whether an existing file is written to.
enum class ConfirmAnswer : u32 {
    goOn = quennet::transferGoesOn,
    leaveOut = 1,
};

/// Whether a download can complete a local file of that size, with a source of 0 for one that is
/// not known.
bool CanResume(u64 localSize, u64 sourceSize);

/// Why a part of a file is begun anew all the same; empty for one that is not too large.
std::string ObjectionToResume(u64 localSize, u64 sourceSize);

/// One operation over one or more files: its progress and its questions. The functions are called
/// on the thread that runs the transfer; none may throw.
struct TransferOperation {
    /// After each block, before it is added to `bytesDone`.
    std::function<void(const quennet::TransferRecord& record, u32 bytes)> progress;
    /// `item` carries what is known of both sides; a download would be resumed at `resumeOffset`.
    /// Without the function existing files are left alone.
    std::function<ConfirmAnswer(const quennet::TransferItem& item, HostWord resumeOffset)> confirm;

    quennet::TransferRecord record = {};
};

/// Says that the calling thread runs a message for `operation`, as long as the object lives.
class TransferScope {
  public:
    TransferScope(TransferOperation& operation, const std::atomic<bool>& abortPending,
                  const BinaryType& binaryType);
    ~TransferScope();
    TransferScope(const TransferScope&) = delete;
    TransferScope& operator=(const TransferScope&) = delete;

    /// The existing target was to be left alone.
    bool LeftOut() const { return leftOut_; }

    /// Throws what the question has thrown: it left the target alone, and could not say more then.
    void Rethrow() const;

    /// No local file is opened for the transfer of this thread: the server would change its bytes.
    static bool RefusesFiles();

    /// What ShellAddProgress does.
    static void AddProgress(quennet::TransferRecord* record, u32 bytes);

    /// The confirm callback of messages 39 and 40.
    static quennet::ConfirmCallback Confirm();

    /// What that callback does.
    static void Ask(quennet::TransferItem* item, HostWord resumeOffset);

  private:
    TransferOperation& operation_;
    AbortScope abortScope_;
    const BinaryType& binaryType_;
    TransferScope* outer_;
    bool leftOut_ = false;
    std::exception_ptr failure_;
};

}  // namespace hostkit
