#include "hostkit/server_copy.h"

#include <cstring>

#include "hostkit/connection_use.h"

namespace hostkit {

namespace {

using quennet::FtpHandle;

/// Puts the path of one side into its field. Gives what speaks against it, empty for nothing.
std::string TakePath(const FtpHandle* handle, const std::string& path, char (&field)[pathSize]) {
    if (handle == nullptr) {
        return notConnected;
    }
    const std::string whole = WithWholeName(path);
    if (NameOffset(whole) == whole.size()) {
        return "the path names no file";
    }
    return CopyPath(field, whole) ? "" : pathTooLong;
}

/// Goes to the directory of a path, if it has one. Gives why that failed, empty when it did not.
std::string EnterDirectoryOf(Connection& connection, const std::string& path) {
    const std::size_t slash = path.find('/') == path.npos ? 0 : NameOffset(path);
    if (slash == 0) {
        return {};
    }
    const bool isRoot = slash == 1;
    const DirectoryResult result =
        connection.ChangeDirectory(path.substr(0, isRoot ? slash : slash - 1));
    return result.Done() || !result.text.empty() ? result.text : "the directory was not entered";
}

/// Empty for a side that has done its part. What the module left there may be a reply of success.
std::string FailureOf(const FtpHandle* handle, const std::string& cause) {
    const std::string text = {handle->errorText,
                              strnlen(handle->errorText, sizeof handle->errorText)};
    return IsReply(text) && !cause.empty() ? cause : text;
}

}  // namespace

ServerCopyResult CopyBetween(Connection& source, Connection& destination,
                             const ServerCopyRequest& request, TransferOperation& operation) {
    const Connection::Use useOfSource(source);
    const Connection::Use useOfDestination(destination);
    FtpHandle* from = useOfSource.Handle();
    FtpHandle* to = useOfDestination.Handle();
    quennet::TransferItem item = {};
    ServerCopyResult result;
    result.sourceText = TakePath(from, request.source, item.source);
    result.destinationText = TakePath(to, request.destination, item.destination);
    if (result.HasText()) {
        return result;
    }
    result.sourceText = EnterDirectoryOf(source, request.source);
    result.destinationText =
        result.HasText() ? "" : EnterDirectoryOf(destination, request.destination);
    if (result.HasText()) {
        return result;
    }
    const auto nameWhole = [](const Connection& connection, char(&field)[pathSize]) {
        const std::string name = connection.Named(field + NameOffset(field));
        return !name.starts_with('/') || CopyPath(field, AsWholeName(name));
    };
    if (!nameWhole(source, item.source) || !nameWhole(destination, item.destination)) {
        result.sourceText = pathTooLong;
        return result;
    }
    item.record = quennet::WordFromPointer(&operation.record);
    operation.record.sourceHandle = quennet::WordFromPointer(from);
    operation.record.destinationHandle = quennet::WordFromPointer(to);
    const auto isRefused = [&] {
        result.sourceText = source.binaryType_.Refusal();
        result.destinationText = destination.binaryType_.Refusal();
        return result.HasText();
    };
    if (isRefused()) {
        return result;
    }
    source.BeginOperation();
    destination.BeginOperation();
    // The module leaves the text of a side alone that has done its part.
    from->errorText[0] = 0;
    to->errorText[0] = 0;
    result.done =
        source.host_.Send(quennet::MessageNumber::copyBetweenServers, &item, from, to) == 0;
    if (isRefused()) {
        result.done = false;
    } else if (!result.done) {
        result.sourceText = FailureOf(from, source.Cause());
        result.destinationText = FailureOf(to, destination.Cause());
    }
    if (!result.done && !result.HasText()) {
        // It did not begin, and the log tells why.
        result.sourceText = source.Cause();
    }
    return result;
}

}  // namespace hostkit
