#include "transfer/permissions.h"

#include <cstdio>

#include "control/command.h"
#include "control/working_directory.h"
#include "transfer/transfer.h"

namespace quennet {

namespace {

constexpr u32 applyFailed = 2;
constexpr UINT entryMessage = WM_USER + 1;

u16 OctalOf(u16 attributes) {
    u16 number = 0;
    for (const PermissionRow& row : PermissionTable) {
        if (row.control != 0 && (attributes & row.attribute) != 0) {
            number = static_cast<u16>(number | row.octal);
        }
    }
    return number;
}

/// The class of the reply; -1 without one, and while another exchange is under way.
i32 SendChange(Session* session, const char* name, u16 attributes) {
    const Exchange exchange(session);
    if (IsBusy(session, exchange) || !ReturnToDirectory(session)) {
        return -1;
    }
    char text[permissionTextSize];
    FormatPermissions(text, attributes & permissionBits);
    const int result = SendCommand(session, "%s %s %s %s", "SITE", "chmod", text + 1, name);
    return result == 0 ? -1 : result;
}

}  // namespace

void FormatPermissions(char* buffer, u16 attributes) {
    std::snprintf(buffer, permissionTextSize, "%c%03o",
                  (attributes & attributeLink) != 0 ? 'L' : ' ', OctalOf(attributes) & 0777U);
}

i32 ApplyPermissions(TransferRecord* record, u16 attributes) {
    constexpr i32 done = 2;
    Session* session = SessionFromHandle(PointerFromWord<FtpHandle>(record->sourceHandle));
    const SessionUse use(session);
    const auto wanted =
        static_cast<u16>((attributes | record->setMask) & ~static_cast<u32>(record->clearMask));
    if (session == nullptr || wanted == attributes) {
        return -1;
    }
    SendMessageA(WindowFromNumber(record->progressWindow), entryMessage, 0,
                 reinterpret_cast<LPARAM>(record->currentName));
    const i32 result = SendChange(session, record->currentName, wanted);
    if (result == done) {
        ++record->doneCount;
        return 0;
    }
    record->status = applyFailed;
    return result;
}

}  // namespace quennet
