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

const char* TargetName(const TransferItem* item) {
    return item->destination + ShellNameOffset(item->destination);
}

/// Looks for the file that the upload would replace and fills in the target's side of the item.
bool FindTargetEntry(TransferItem* item, const DirEntry* list) {
    const char* name = TargetName(item);
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

bool Upload(Session* session, const TransferItem* item) {
    constexpr int done = 2;  // of a server that confirms at once
    char command[sizeof item->destination + 8];
    std::snprintf(command, sizeof command, "%s %s", "STOR", TargetName(item));
    const char type = static_cast<char>(ShellGetTransferType(item->destination));
    const int result = SendFile(session, command, item->source, type);
    return result == 0 || result == done;
}

}  // namespace

i32 PutFile(TransferItem* item, FtpHandle* handle, ConfirmCallback confirm, const DirEntry* list) {
    const auto goesOn = [&] {
        return list == nullptr || !FindTargetEntry(item, list) || GoesOn(item, confirm, 0);
    };
    const auto moves = [&](Session* session) { return Upload(session, item); };
    return RunTransfer(item, handle, goesOn, moves);
}

}  // namespace quennet
