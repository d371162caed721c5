// Commands on a server's files and directories.

#include "hostkit/connection_use.h"

namespace hostkit {

using quennet::MessageNumber;

/// Sends one message that ends with a reply class and takes its result.
template <typename... Arguments>
CommandResult Connection::Command(MessageNumber message, Arguments... arguments) {
    CommandResult result;
    const Use use(*this);
    if (use.Handle() == nullptr) {
        result.text = notConnected;
        return result;
    }
    BeginOperation();
    result.result = host_.Send(message, arguments..., use.Handle());
    if (!result.Done()) {
        ExplainFailure(result);
    }
    return result;
}

CommandResult Connection::DeleteFile(const std::string& name) {
    return Command(MessageNumber::remoteDelete, Named(name).c_str());
}

CommandResult Connection::RemoveDirectory(const std::string& name) {
    return Command(MessageNumber::remoteRemoveDir, Named(name).c_str());
}

CommandResult Connection::MakeDirectory(const std::string& path) {
    std::string prepared = Named(path);  // the module may change it
    return Command(MessageNumber::remoteMakeDir, prepared.data());
}

CommandResult Connection::Rename(const std::string& oldName, const std::string& newName) {
    return Command(MessageNumber::remoteRename, Named(oldName).c_str(), Named(newName).c_str());
}

CommandResult Connection::ChangePermissions(quennet::TransferRecord& record, u16 attributes) {
    constexpr i32 nothingToChange = -1;
    CommandResult result;
    const Use use(*this);
    if (use.Handle() == nullptr) {
        result.text = notConnected;
        return result;
    }
    const std::string name = record.currentName;
    if (!CopyPath(record.currentName, Named(name))) {
        result.text = pathTooLong;
        return result;
    }
    BeginOperation();
    record.sourceHandle = quennet::WordFromPointer(use.Handle());
    record.status = quennet::transferGoesOn;
    result.result = host_.Send(MessageNumber::applyPermissions, &record, attributes);
    if (result.result == nothingToChange && record.status == quennet::transferGoesOn) {
        result.result = 0;
    }
    if (!result.Done()) {
        ExplainFailure(result);
    }
    return result;
}

bool Connection::AskPermissions(HWND owner, quennet::TransferRecord& record) {
    i32 accepted = 0;
    const std::lock_guard lock(host_.DialogMutex());
    host_.Loop().Invoke([&] {
        accepted =
            host_.Send(MessageNumber::permissionDialog,
                       owner != nullptr ? owner : host_.MainWindow(), host_.Instance(), &record);
    });
    return accepted > 0;
}

bool Connection::StartTypedLine(const std::string& line) {
    const Use use(*this);
    if (use.Handle() == nullptr || line.size() > longestTypedLine) {
        return false;
    }
    BeginOperation();
    host_.Send(MessageNumber::rawCommand, 0, use.Handle(), line.c_str(),
               host_.GetPanels().NextCookie());
    return true;
}

}  // namespace hostkit
