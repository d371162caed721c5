#include "transfer/put_file.h"

#include <cstdio>
#include <cstring>

#include "host/services.h"
#include "transfer/send.h"
#include "transfer/transfer.h"

namespace quennet {

namespace {

const DirEntry* NextEntry(const DirEntry* entry) {
    return reinterpret_cast<const DirEntry*>(reinterpret_cast<const u8*>(entry) + entry->length);
}

/// Looks for the file that the upload would replace and fills in the target's side of the item.
bool FindTargetEntry(TransferItem* item, const char* name, const DirEntry* list) {
    for (const DirEntry* entry = list; entry->length != 0; entry = NextEntry(entry)) {
        if ((entry->attributes & attributeDirectory) == 0 && std::strcmp(entry->name, name) == 0) {
            item->destinationDate = entry->date;
            item->destinationTime = entry->time;
            item->destinationSize = u64{entry->sizeHigh} << 32 | entry->sizeLow;
            item->destinationAttributes = entry->attributes;
            return true;
        }
    }
    return false;
}

bool Upload(Session* session, const TransferItem* item, const char* name) {
    constexpr int done = 2;  // of a server that confirms at once
    char command[sizeof item->destination + 8];
    std::snprintf(command, sizeof command, "%s %s", "STOR", name);
    const char type = static_cast<char>(ShellGetTransferType(item->destination));
    const int result = SendFile(session, command, item->source, type);
    return result == 0 || result == done;
}

}  // namespace

i32 PutFile(TransferItem* item, FtpHandle* handle, ConfirmCallback confirm, const DirEntry* list) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr) {
        return -1;
    }
    if (IsBusy(session, Exchange(session))) {
        return RefuseBusyTransfer(session);
    }
    // While the host asks, the connection is free.
    const char* name = item->destination + ShellNameOffset(item->destination);
    const bool leftOut =
        list != nullptr && FindTargetEntry(item, name, list) && !GoesOn(item, confirm, 0);
    // A transfer that is under way keeps its record, its reply buffer and its abort flag.
    const Exchange exchange(session);
    if (IsBusy(session, exchange)) {
        return RefuseBusyTransfer(session);
    }
    session->progress = PointerFromWord<TransferRecord>(item->record);
    i32 result = 0;
    if (!leftOut && !Upload(session, item, name)) {
        SetErrorText(session, session->replyBuffer);
        result = 1;
    }
    session->progress = nullptr;
    session->abortFlag.Store(0);
    return result;
}

}  // namespace quennet
