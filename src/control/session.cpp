#include "control/session.h"

#include <cstring>

namespace quennet {

Session* SessionFromHandle(FtpHandle* handle) {
    if (handle == nullptr || handle->tag != liveHandleTag) {
        return nullptr;
    }
    return PointerFromWord<Session>(handle->session);
}

bool StoreText(char* field, u32 size, const char* text) {
    const std::size_t length = std::strlen(text);
    if (length >= size) {
        return false;
    }
    std::memmove(field, text, length + 1);
    return true;
}

}  // namespace quennet
