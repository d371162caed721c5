// One line of a listing, read by the module's parser and by a plain one: all that they say of it is
// the same.
//
// The first byte of the input picks the server's family, the second the day ('0' the first of the
// list below); what follows is the line.

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/expect.h"
#include "fuzz/families.h"
#include "fuzz/plain_line_parser.h"
#include "listing/line_parser.h"

using namespace quennet;

namespace {

constexpr SYSTEMTIME days[] = {
    {2002, 7, 1, 15, 0, 0, 0, 0},  {2000, 2, 2, 29, 0, 0, 0, 0}, {1999, 12, 5, 31, 23, 59, 0, 0},
    {2100, 1, 5, 1, 0, 0, 0, 0},   {1980, 1, 2, 1, 12, 0, 0, 0}, {2107, 12, 6, 31, 0, 0, 0, 0},
    {2026, 11, 1, 30, 8, 0, 0, 0}, {2024, 3, 5, 1, 0, 0, 0, 0},
};
constexpr u16 attributesBefore = 0x0811;  // bits that a line can and can't set
constexpr u16 knownAttributes = 0x8000 | 0x2000 | 0x07E7;

void HoldAgainstPlain(const std::string& text, const SYSTEMTIME& today, ServerFamily family) {
    // The line stands in a block of its very length.
    std::vector<char> line(text.c_str(), text.c_str() + text.size() + 1);
    line.shrink_to_fit();
    u32 size = 99;
    u16 date = 99;
    u16 time = 99;
    u16 attributes = attributesBefore;
    const char* name =
        ParseListLineOn(today, line.data(), &size, &date, &time, &attributes, family);
    const PlainEntry plain = ReadLinePlainly(today, text, attributesBefore, family);
    Expect(name == line.data() + plain.name);
    Expect(std::strcmp(name, plain.line.c_str() + plain.name) == 0);
    Expect(std::strcmp(line.data(), plain.line.c_str()) == 0);
    Expect(size == plain.size);
    Expect(date == plain.date);
    Expect(time == plain.time);
    Expect(attributes == plain.attributes);
    Expect((attributes & ~(knownAttributes | attributesBefore)) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) {
        return -1;
    }
    const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
    HoldAgainstPlain(text.c_str(), days[data[1] % std::size(days)], PickFamily(data[0]));
    return 0;
}
