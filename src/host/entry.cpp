// The module's one exported function, and the table that says which handler runs for a message.

#include "control/lifecycle.h"
#include "control/working_directory.h"
#include "find/find_window.h"
#include "host/message.h"
#include "host/services.h"
#include "listing/cache.h"
#include "ping/ping_dialog.h"
#include "sites/text_dialogs.h"
#include "transfer/change_directory.h"
#include "transfer/get_file.h"
#include "transfer/goto_directory.h"
#include "transfer/permission_dialog.h"
#include "transfer/permissions.h"
#include "transfer/put_file.h"
#include "transfer/raw_command.h"
#include "transfer/remote_commands.h"
#include "transfer/server_to_server.h"

namespace quennet {

HostTables hostTables;

namespace {

constexpr i32 noResult = -1;

FtpHandle* HandleFrom(HostWord word) {
    return PointerFromWord<FtpHandle>(word);
}

template <typename Function>
Function FunctionFrom(HostWord word) {
    return reinterpret_cast<Function>(word);
}

i32 SetTables(const HostMessage& message) {
    hostTables.core = PointerFromWord<const CoreServices>(message.arg1);
    hostTables.passwordKey = PointerFromWord<u32>(message.arg2);
    hostTables.shell = PointerFromWord<const ShellServices>(message.arg3);
    hostTables.mainWindow = WindowFromNumber(static_cast<WindowNumber>(message.arg6));
    hostTables.captionWord = message.arg7;
    return tablesStored;
}

i32 Ping(const HostMessage& message) {
    OpenPingDialog(WindowFromNumber(static_cast<WindowNumber>(message.arg1)),
                   PointerFromWord<HINSTANCE__>(message.arg2),
                   PointerFromWord<HostWord>(message.arg3));
    return noResult;
}

i32 GetHostText(const HostMessage& message) {
    auto* session = PointerFromWord<Session>(message.arg1);
    const SessionUse use(session);
    if (session != nullptr) {
        StoreText(PointerFromWord<char>(message.arg2), pathSize, session->hostText);
    }
    return noResult;
}

i32 SetHostText(const HostMessage& message) {
    auto* session = PointerFromWord<Session>(message.arg1);
    const SessionUse use(session);
    if (session != nullptr) {
        session->hostText[0] = 0;
        CoreCopyText(session->hostText, PointerFromWord<const char>(message.arg2), pathSize);
    }
    return noResult;
}

i32 GetDirectory(const HostMessage& message) {
    Session* session = SessionFromHandle(HandleFrom(message.arg1));
    const SessionUse use(session);
    if (session != nullptr) {
        char directory[pathSize];
        CopySessionDir(session, directory);
        ShellAppendText(PointerFromWord<char>(message.arg2), directory,
                        static_cast<u32>(message.arg3));
    }
    return noResult;
}

i32 Connect(const HostMessage& message) {
    ConnectRequest(WindowFromNumber(static_cast<WindowNumber>(message.arg1)),
                   PointerFromWord<HostWord>(message.arg2), static_cast<WindowNumber>(message.arg3),
                   static_cast<u8>(message.arg4), PointerFromWord<u32>(message.arg5),
                   static_cast<u16>(message.arg6), PointerFromWord<ConnectParams>(message.arg7));
    return noResult;
}

i32 Disconnect(const HostMessage& message) {
    DisconnectRequest(PointerFromWord<HostWord>(message.arg1));
    return noResult;
}

i32 List(const HostMessage& message) {
    return ListDirectory(PointerFromWord<const char>(message.arg1), HandleFrom(message.arg2),
                         FunctionFrom<ListEntryCallback>(message.arg3), message.arg4,
                         static_cast<u32>(message.arg5));
}

i32 InvalidateEntry(const HostMessage& message) {
    InvalidateCacheEntry(HandleFrom(message.arg1), PointerFromWord<const char>(message.arg2));
    return noResult;
}

i32 InvalidateAll(const HostMessage& message) {
    InvalidateDirCache(HandleFrom(message.arg1));
    return noResult;
}

i32 ChangeDirectory(const HostMessage& message) {
    ChangeDirAsync(PointerFromWord<const char>(message.arg1), static_cast<u16>(message.arg2),
                   HandleFrom(message.arg3), FunctionFrom<DirectoryChangedCallback>(message.arg4));
    return noResult;
}

i32 ChangeDirectoryAtOnce(const HostMessage& message) {
    return ChangeDirSync(PointerFromWord<const char>(message.arg1), HandleFrom(message.arg2),
                         PointerFromWord<char>(message.arg3));
}

i32 Delete(const HostMessage& message) {
    return RemoteDelete(PointerFromWord<const char>(message.arg1), HandleFrom(message.arg2));
}

i32 RemoveDir(const HostMessage& message) {
    return RemoteRemoveDir(PointerFromWord<const char>(message.arg1), HandleFrom(message.arg2));
}

i32 MakeDir(const HostMessage& message) {
    return RemoteMakeDir(PointerFromWord<char>(message.arg1), HandleFrom(message.arg2));
}

i32 ChangePermissions(const HostMessage& message) {
    return ApplyPermissions(PointerFromWord<TransferRecord>(message.arg1),
                            static_cast<u16>(message.arg2));
}

i32 Rename(const HostMessage& message) {
    return RemoteRename(PointerFromWord<const char>(message.arg1),
                        PointerFromWord<const char>(message.arg2), HandleFrom(message.arg3));
}

i32 CopyAcross(const HostMessage& message) {
    return CopyBetweenServers(PointerFromWord<TransferItem>(message.arg1), HandleFrom(message.arg2),
                              HandleFrom(message.arg3));
}

i32 Get(const HostMessage& message) {
    return GetFile(PointerFromWord<TransferItem>(message.arg1), HandleFrom(message.arg2),
                   FunctionFrom<ConfirmCallback>(message.arg3));
}

i32 Put(const HostMessage& message) {
    return PutFile(PointerFromWord<TransferItem>(message.arg1), HandleFrom(message.arg2),
                   FunctionFrom<ConfirmCallback>(message.arg3),
                   PointerFromWord<const DirEntry>(message.arg4));
}

i32 Abort(const HostMessage& message) {
    AbortCommand(HandleFrom(message.arg1));
    return noResult;
}

i32 ShowPermissions(const HostMessage& message) {
    FormatPermissions(PointerFromWord<char>(message.arg1), static_cast<u16>(message.arg2));
    return noResult;
}

i32 AskForPermissions(const HostMessage& message) {
    return ShowPermissionDialog(WindowFromNumber(static_cast<WindowNumber>(message.arg1)),
                                PointerFromWord<HINSTANCE__>(message.arg2),
                                PointerFromWord<TransferRecord>(message.arg3));
}

i32 AskForText(const HostMessage& message) {
    return ShowAutoDialog(WindowFromNumber(static_cast<WindowNumber>(message.arg1)),
                          PointerFromWord<HINSTANCE__>(message.arg2),
                          PointerFromWord<char>(message.arg3));
}

i32 Find(const HostMessage& message) {
    OpenFindWindow(PointerFromWord<HINSTANCE__>(message.arg1), HandleFrom(message.arg3),
                   PointerFromWord<const char>(message.arg4), PointerFromWord<void>(message.arg5),
                   FunctionFrom<FindGoToCallback>(message.arg6),
                   FunctionFrom<FindNotifyCallback>(message.arg7));
    return noResult;
}

i32 GoTo(const HostMessage& message) {
    GotoDirectory(PointerFromWord<Session>(message.arg1), PointerFromWord<const char>(message.arg2),
                  PointerFromWord<const char>(message.arg3), static_cast<u16>(message.arg4),
                  FunctionFrom<GotoBeginsCallback>(message.arg5),
                  FunctionFrom<GotoDoneCallback>(message.arg6));
    return noResult;
}

i32 SendTypedLine(const HostMessage& message) {
    RawCommand(message.arg1, HandleFrom(message.arg2), PointerFromWord<const char>(message.arg3),
               static_cast<u16>(message.arg4));
    return noResult;
}

i32 SaveListing(const HostMessage& message) {
    SaveRawListing(WindowFromNumber(static_cast<WindowNumber>(message.arg1)), message.arg2,
                   HandleFrom(message.arg3));
    return noResult;
}

struct MessageHandler {
    MessageNumber number;
    i32 (*handle)(const HostMessage& message);
};

constexpr MessageHandler messageHandlers[] = {
    {MessageNumber::setTables, SetTables},
    {MessageNumber::ping, Ping},
    {MessageNumber::getHostText, GetHostText},
    {MessageNumber::setHostText, SetHostText},
    {MessageNumber::getDirectory, GetDirectory},
    {MessageNumber::connect, Connect},
    {MessageNumber::disconnect, Disconnect},
    {MessageNumber::listDirectory, List},
    {MessageNumber::invalidateCacheEntry, InvalidateEntry},
    {MessageNumber::invalidateCache, InvalidateAll},
    {MessageNumber::changeDirAsync, ChangeDirectory},
    {MessageNumber::changeDirSync, ChangeDirectoryAtOnce},
    {MessageNumber::remoteDelete, Delete},
    {MessageNumber::remoteRemoveDir, RemoveDir},
    {MessageNumber::remoteMakeDir, MakeDir},
    {MessageNumber::applyPermissions, ChangePermissions},
    {MessageNumber::remoteRename, Rename},
    {MessageNumber::copyBetweenServers, CopyAcross},
    {MessageNumber::getFile, Get},
    {MessageNumber::putFile, Put},
    {MessageNumber::abortCommand, Abort},
    {MessageNumber::formatPermissions, ShowPermissions},
    {MessageNumber::permissionDialog, AskForPermissions},
    {MessageNumber::autoDialog, AskForText},
    {MessageNumber::findWindow, Find},
    {MessageNumber::gotoDirectory, GoTo},
    {MessageNumber::rawCommand, SendTypedLine},
    {MessageNumber::saveRawListing, SaveListing},
};

}  // namespace

}  // namespace quennet

quennet::i32 f(const quennet::HostMessage* message) {
    using namespace quennet;
    const auto number = static_cast<MessageNumber>(static_cast<i32>(message->message));
    for (const MessageHandler& handler : messageHandlers) {
        if (handler.number == number) {
            return handler.handle(*message);
        }
    }
    return noResult;
}
