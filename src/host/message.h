#pragma once
// The module's one exported function and the record that it takes.

#include "host/types.h"

namespace quennet {

/// What a host asks of the module. Words that a message does not use need not be set; an argument
/// narrower than its word lies in the word's low part. The module never writes to the record.
struct HostMessage {
    HostWord message;  // a MessageNumber
    HostWord arg1;
    HostWord arg2;
    HostWord arg3;
    HostWord arg4;
    HostWord arg5;
    HostWord arg6;
    HostWord arg7;
};
static_assert(sizeof(HostMessage) == 8 * sizeof(HostWord));

enum class MessageNumber : i32 {
    setTables = 1,
    ping = 3,
    getHostText = 21,
    setHostText = 22,
    getDirectory = 23,
    connect = 24,
    disconnect = 25,
    listDirectory = 26,
    invalidateCacheEntry = 27,
    invalidateCache = 28,
    changeDirAsync = 29,
    changeDirSync = 30,
    remoteDelete = 31,
    remoteRemoveDir = 32,
    remoteMakeDir = 33,
    applyPermissions = 34,
    remoteRename = 37,
    copyBetweenServers = 38,
    getFile = 39,
    putFile = 40,
    abortCommand = 41,
    formatPermissions = 42,
    permissionDialog = 43,
    autoDialog = 44,
    findWindow = 45,
    gotoDirectory = 46,
    rawCommand = 47,
    saveRawListing = 48,
};

/// The result of message 1, which no other message has.
constexpr i32 tablesStored = 0x10000;

/// Window message that the module posts to the host's main window, and its wParam values.
constexpr UINT notifyMessage = 1074;
enum class Notification : u32 {
    connectFailed = 2,     // lParam: block of CoreAlloc, byte 0 panelId, then the failure text
    reconnectFailed = 3,   // lParam: panelId, as a signed byte
    connected = 5,         // lParam: hostCookie in bits 8 to 23, panelId in the low byte
    connectionStands = 6,  // lParam: 0; sent before `connected`
};

/// The type of `f`.
using ModuleFunction = i32 (*)(const HostMessage* message);

}  // namespace quennet

#if defined(_WIN32)
#define QUENNET_EXPORT extern "C" __declspec(dllexport)
#else
#define QUENNET_EXPORT extern "C" __attribute__((visibility("default")))
#endif

/// Runs one message of the host. Message 1 stores the host's tables and comes before all others.
///
/// Returns the message's result; -1 for a number that has no handler, and for a handle or session
/// that is not live.
QUENNET_EXPORT quennet::i32 f(const quennet::HostMessage* message);
