#include "find/find_line.h"

#include <cstring>

#include "host/services.h"

namespace quennet {

FindLine::~FindLine() {
    CoreFreeWord(&buffer_.base);
}

void FindLine::Clear() {
    buffer_.used = 0;
    whole_ = true;
}

const char* FindLine::Text() const {
    return buffer_.used != 0 ? PointerFromWord<const char>(buffer_.base) : "";
}

void FindLine::AddBytes(const char* bytes, u32 count) {
    constexpr u32 terminator = 1;
    if (count == 0) {
        return;
    }
    if (buffer_.used != 0) {
        buffer_.used -= terminator;
    }
    // The terminator comes with the last byte, so a failure leaves a text that ends.
    if (!ShellBufferAppend(&buffer_, bytes, count)) {
        whole_ = false;
        buffer_.used += buffer_.used != 0 ? terminator : 0;
        return;
    }
    if (!ShellBufferAppend(&buffer_, "", terminator)) {
        whole_ = false;
        buffer_.used = 0;
    }
}

void FindLine::Add(const char* text) {
    AddBytes(text, static_cast<u32>(std::strlen(text)));
}

void FindLine::AddRight(const char* text, u32 width) {
    constexpr char blanks[] = "                    ";
    const std::size_t length = std::strlen(text);
    if (length < width) {
        AddBytes(blanks, width - static_cast<u32>(length));
    }
    Add(text);
}

void FindLine::AddSeparator(char separator) {
    if (buffer_.used < 2) {
        return;
    }
    const char last = Text()[buffer_.used - 2];
    if (last != '\\' && last != '/') {
        AddBytes(&separator, 1);
    }
}

void FindLine::AddField(const char* text) {
    const char* quote = std::strchr(text, ';') != nullptr ? "\"" : "";
    Add(quote);
    Add(text);
    Add(quote);
}

}  // namespace quennet
