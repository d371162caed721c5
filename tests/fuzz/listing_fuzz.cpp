// Listings of any server: each line by itself, the listing cut into lines, and the walk through it.
//
// The first byte of the input picks the server's family, '0' the first of the list below; what
// follows is the server's text.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "control/server_family.h"
#include "fuzz/expect.h"
#include "listing/line_parser.h"
#include "listing/walker.h"

using namespace quennet;

namespace {

constexpr ServerFamily fuzzedFamilies[] = {
    ServerFamily::unixLike,    ServerFamily::os2,        ServerFamily::windowsNt,
    ServerFamily::mvsDatasets, ServerFamily::mvsMembers, ServerFamily::unknown,
};

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

struct Seen {
    std::size_t entries = 0;
};

extern "C" void CountEntry(const char* name, u32 date, u32 time, u32 attributes, u32 size,
                           HostWord context) {
    Seen* seen = PointerFromWord<Seen>(context);
    Expect(std::strlen(name) <= 256);
    Expect(date <= 0xFFFF && time <= 0xFFFF && attributes <= 0xFFFF);
    Expect(attributes != 0x18 || (seen->entries == 0 && std::strcmp(name, "..") == 0 && size == 0));
    ++seen->entries;
}

bool MayFollow(ServerFamily before, ServerFamily after) {
    const bool wasMvs = before == ServerFamily::mvsDatasets || before == ServerFamily::mvsMembers;
    const bool mayBe = after == ServerFamily::unknown || after == ServerFamily::mvsDatasets ||
                       after == ServerFamily::mvsMembers || after == ServerFamily::unixLike;
    return before == after || (wasMvs && mayBe);
}

void Walk(const std::string& text, ServerFamily family) {
    alignas(8) static char memory[sessionOffset + sizeof(Session)];
    std::memset(memory, 0, sizeof(memory));
    Session* session = reinterpret_cast<Session*>(memory + sessionOffset);
    session->serverType.Store(static_cast<u32>(family));
    Seen seen;
    ParseListing("/pub", session, text.c_str(), CountEntry, WordFromPointer(&seen));
    // A line has at least one byte and its end; the parent's entry comes first.
    Expect(seen.entries >= 1 && seen.entries <= text.size() / 2 + 2);
    Expect(MayFollow(family, static_cast<ServerFamily>(session->serverType.Load())));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const ServerFamily family = fuzzedFamilies[data[0] % std::size(fuzzedFamilies)];
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    ReadLine(text.c_str(), family);
    ReadLines(text, 256, family);
    Walk(text, family);
    return 0;
}
