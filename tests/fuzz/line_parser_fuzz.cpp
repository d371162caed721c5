#include "listing/line_parser.h"

#include <cstring>
#include <vector>

#include "fuzz/listing_input.h"

using namespace quennet;

namespace {

constexpr SYSTEMTIME today = {2002, 7, 1, 15, 0, 0, 0, 0};
constexpr u16 knownAttributes = 0x8000 | 0x2000 | 0x07E7;

// The line stands in a block of its very length.
void ReadLine(const char* text, ServerFamily family) {
    const std::size_t length = std::strlen(text);
    std::vector<char> line(text, text + length + 1);
    u32 size = 0;
    u16 date = 0;
    u16 time = 0;
    u16 attributes = 0;
    const char* name =
        ParseListLineOn(today, line.data(), &size, &date, &time, &attributes, family);
    Expect(name >= line.data() && name <= line.data() + length);
    Expect((attributes & ~knownAttributes) == 0);
    Expect(date != 0 || time == 0);
    Expect(date == 0 || ((date >> 5 & 15) >= 1 && (date >> 5 & 15) <= 12 && (date & 31) >= 1));
    Expect((time >> 11) < 24 && (time >> 5 & 63) < 60 && (time & 31) == 0);
}

// The lines hold all that is no line end, in order.
void ReadLines(const std::string& text, u32 limit, ServerFamily family) {
    std::string expected(text.c_str());
    std::erase_if(expected, [](char letter) { return letter == '\r' || letter == '\n'; });
    std::string got;
    const char* cursor = text.c_str();
    while (*cursor != '\0') {
        const char* before = cursor;
        std::vector<char> line(limit + 1);
        NextListLine(&cursor, line.data(), limit);
        Expect(cursor > before);
        got += line.data();
        ReadLine(line.data(), family);
    }
    Expect(got == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const ListingInput input(data, size);
    ReadLine(input.text.c_str(), input.family);
    ReadLines(input.text, 256, input.family);
    return 0;
}
