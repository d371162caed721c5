#include "hostkit/received_listing.h"

#include <algorithm>
#include <cerrno>
#include <string>

#include "hostkit/files.h"

namespace hostkit {

namespace {

constexpr char substitute = 0x1A;

thread_local ReceivedListing* current = nullptr;

}  // namespace

ReceivedListing::ReceivedListing(u64 limit) : limit_(limit) {
    current = this;
}

ReceivedListing::~ReceivedListing() {
    current = nullptr;
}

bool ReceivedListing::MayAppend(const quennet::GrowBuffer& buffer, u32 size) {
    if (current == nullptr || !current->IsFull(buffer, size)) {
        return true;
    }
    NoteFileFailure("it is longer than " + std::to_string(current->limit_) + " bytes", EFBIG);
    return false;
}

/// The NUL that ends the text is not counted.
bool ReceivedListing::IsFull(const quennet::GrowBuffer& buffer, u32 size) const {
    const bool isListing = buffer_ == nullptr || buffer_ == &buffer;
    return isListing && size > 1 && buffer.used + size > limit_;
}

void ReceivedListing::Appended(quennet::GrowBuffer& buffer, u32 size) {
    if (current != nullptr) {
        current->Take(buffer, size);
    }
}

/// The listing's own buffer is the first that grows; the cache's comes behind it.
void ReceivedListing::Take(quennet::GrowBuffer& buffer, u32 size) {
    buffer_ = buffer_ == nullptr ? &buffer : buffer_;
    if (buffer_ != &buffer || size == 0) {
        return;
    }
    char* end = quennet::PointerFromWord<char>(buffer.base) + buffer.used;
    char* begin = end - size;
    if (buffer.used > size && begin[-1] == '\0') {
        begin[-1] = substitute;  // it was not the end
    }
    std::replace(begin, end - 1, '\0', substitute);
    if (size > 1 && end[-1] == '\0') {
        end[-1] = substitute;
    }
    Look({begin, size});
}

void ReceivedListing::Look(std::string_view block) {
    constexpr std::size_t longestLine = 256;
    constexpr std::size_t mostDigits = 9;
    constexpr std::size_t nameColumn = 9;
    for (const char letter : block) {
        if (letter == '\r' || letter == '\n') {
            mayTellMore_ = mayTellMore_ || length_ > longestLine || blanks_ != 0;
            length_ = digits_ = blanks_ = columns_ = 0;
            continue;
        }
        ++length_;
        const bool isBlank = letter == ' ' || letter == '\t';
        if (!isBlank && (blanks_ != 0 || length_ == 1)) {
            ++columns_;
            mayTellMore_ = mayTellMore_ || (columns_ == nameColumn && blanks_ > 1);
        }
        blanks_ = isBlank ? blanks_ + 1 : 0;
        mayTellMore_ = mayTellMore_ || letter == '>';
        digits_ = letter >= '0' && letter <= '9' ? digits_ + 1 : 0;
        mayTellMore_ = mayTellMore_ || digits_ > mostDigits;
    }
    mayTellMore_ = mayTellMore_ || length_ > longestLine;
}

}  // namespace hostkit
