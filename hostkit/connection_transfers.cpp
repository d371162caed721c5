// Files that a connection moves.

#include <utility>

#include "hostkit/connection_use.h"
#include "hostkit/local_path.h"
#include "hostkit/long_path.h"

namespace hostkit {

namespace {

using quennet::FtpHandle;
using quennet::MessageNumber;
using quennet::TransferItem;

/// What is known of an existing local file; fields of a missing one stay as they are.
void DescribeLocalFile(const std::string& path, u64& size, u16& date, u16& time) {
    struct stat status;
    if (LookAtPath(path, status) == 0) {
        size = static_cast<u64>(status.st_size);
        ToDosTime(status.st_mtime, date, time);
    }
}

constexpr char directoryLost[] = "the directory was left when the connection was lost";

TransferResult Failed(std::string text) {
    TransferResult result;
    result.text = std::move(text);
    return result;
}

}  // namespace

TransferResult Connection::Download(const DownloadRequest& request, TransferOperation& operation) {
    TransferItem item = {};
    const LongPath destination(request.destination);
    // Where the whole path has no room, the name is looked for where the server stands.
    const std::string source = Named(request.source);
    if (!CopyPath(item.source, source.size() < pathSize ? source : request.source) ||
        !CopyPath(item.destination, destination.Name())) {
        return Failed(pathTooLong);
    }
    item.sourceSize = request.size;
    item.sourceDate = request.date;
    item.sourceTime = request.time;
    DescribeLocalFile(request.destination, item.destinationSize, item.destinationDate,
                      item.destinationTime);
    const u32 logins = logins_;
    if (source.size() >= pathSize && !EnterUnnamed()) {
        return Failed(directoryLost);
    }
    const TransferResult result = Transfer(item, operation, [&](FtpHandle* handle) {
        operation.record.sourceHandle = quennet::WordFromPointer(handle);
        return host_.Send(MessageNumber::getFile, &item, handle, TransferScope::Confirm());
    });
    // After a repair it was a file of that name elsewhere.
    return source.size() >= pathSize && logins_ != logins ? Failed(directoryLost) : result;
}

TransferResult Connection::Upload(const UploadRequest& request, const Listing& there,
                                  TransferOperation& operation) {
    TransferItem item = {};
    const LongPath source(request.source);
    if (!CopyPath(item.source, source.Name()) ||
        !CopyPath(item.destination, AsWholeName(Named(request.name)))) {
        return Failed(pathTooLong);
    }
    // Before the server is asked to store anything.
    ClearFileFailure();
    if (LocalFile::Open(request.source, quennet::accessRead) == nullptr) {
        TransferResult result;
        result.localFailure = LastFileFailure();
        return result;
    }
    DescribeLocalFile(request.source, item.sourceSize, item.sourceDate, item.sourceTime);
    return Transfer(item, operation, [&](FtpHandle* handle) {
        operation.record.destinationHandle = quennet::WordFromPointer(handle);
        return host_.Send(MessageNumber::putFile, &item, handle, TransferScope::Confirm(),
                          there.Records());
    });
}

/// Sends the message of one transfer and takes its result.
TransferResult Connection::Transfer(TransferItem& item, TransferOperation& operation,
                                    const std::function<i32(FtpHandle* handle)>& send) {
    const Use use(*this);
    if (use.Handle() == nullptr) {
        return Failed(notConnected);
    }
    if (const std::string refusal = binaryType_.Refusal(); !refusal.empty()) {
        return Failed(refusal);
    }
    item.record = quennet::WordFromPointer(&operation.record);
    operation.record.status = quennet::transferGoesOn;
    BeginOperation();
    ClearFileFailure();
    TransferResult result;
    const TransferScope scope(operation, abortPending_, binaryType_);
    const bool isOver = send(use.Handle()) == 0;
    scope.Rethrow();
    if (const std::string refusal = binaryType_.Refusal(); !refusal.empty()) {
        return Failed(refusal);
    }
    if (isOver) {
        result.outcome = scope.LeftOut() ? TransferOutcome::leftOut : TransferOutcome::done;
        return result;
    }
    ExplainFailure(result);
    result.localFailure = LastFileFailure();
    return result;
}

}  // namespace hostkit
