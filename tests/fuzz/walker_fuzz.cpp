// A listing of any server: the text cut into lines, and the walk over it.
//
// The first byte of the input picks the server's family, the second the directory ('0' the first of
// the list below); what follows is the server's text.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "control/session.h"
#include "fuzz/expect.h"
#include "fuzz/families.h"
#include "hostkit/raw_listing.h"
#include "listing/line_parser.h"
#include "listing/walker.h"

using namespace quennet;

namespace {

constexpr u32 lineLimit = 256;
constexpr u16 attributesOfParent = 0x18;
constexpr u32 attributesOfEntries = 0x8000 | 0x2000 | 0x07E7 | attributeDirectory;

struct Directory {
    const char* path;
    bool hasParent;
};
constexpr Directory directories[] = {
    {"/pub", true}, {"/", false}, {nullptr, true}, {"", false}, {"C:\\x\\", false}, {"a", false},
};

bool IsLineEnd(char letter) {
    return letter == '\r' || letter == '\n';
}

/// The lines hold all that is no line end, in order.
std::vector<std::string> CutLines(const char* text, u32 limit) {
    std::string expected(text);
    std::erase_if(expected, IsLineEnd);
    std::string got;
    std::vector<std::string> lines;
    std::vector<char> line(limit + 1);
    while (*text != '\0') {
        const char* before = text;
        NextListLine(&text, line.data(), limit);
        Expect(text > before && !IsLineEnd(*text));
        got += lines.emplace_back(line.data());
    }
    Expect(got == expected);
    return lines;
}

bool IsMvs(ServerFamily family) {
    return family == ServerFamily::mvsDatasets || family == ServerFamily::mvsMembers;
}

bool IsUnixLine(const std::string& line) {
    const std::string letters = "rwxrwxrwx";
    bool isUnix = line.size() > 10 && line.find_first_of("dl-") == 0 && line[10] == ' ';
    for (std::size_t at = 0; isUnix && at < letters.size(); ++at) {
        isUnix = line[at + 1] == letters[at] || line[at + 1] == '-';
    }
    return isUnix;
}

/// The family behind a walk: what an MVS listing's header says, and its first Unix line.
ServerFamily PlainFamily(const std::vector<std::string>& lines, ServerFamily family) {
    if (!IsMvs(family)) {
        return family;
    }
    const std::string first = lines.empty() ? "" : lines[0];
    const auto has = [&](const char* word) { return first.find(word) != std::string::npos; };
    if (!has("Lrecl") && !has("Name")) {
        return ServerFamily::unknown;
    }
    return std::any_of(lines.begin() + 1, lines.end(), IsUnixLine) ? ServerFamily::unixLike
           : has("Lrecl")                                          ? ServerFamily::mvsDatasets
                                                                   : ServerFamily::mvsMembers;
}

struct Walk {
    const Session* session;
    bool hasParent;
    std::size_t entries = 0;
    hostkit::Listing listing = {};

    ServerFamily Family() const { return static_cast<ServerFamily>(session->serverType.Load()); }
};

void CheckName(const char* name, ServerFamily family) {
    constexpr std::size_t longestMember = 10;  // with its blank
    const std::size_t length = std::strlen(name);
    Expect(length <= lineLimit && std::none_of(name, name + length, IsLineEnd));
    Expect(family != ServerFamily::mvsMembers ||
           (length <= longestMember && name[length - 1] == ' '));
    Expect(family != ServerFamily::mvsDatasets || length > 0);
}

extern "C" void TakeEntry(const char* name, u32 date, u32 time, u32 attributes, u32 size,
                          HostWord context) {
    Walk& walk = *PointerFromWord<Walk>(context);
    walk.listing.Append(
        {name, static_cast<u16>(date), static_cast<u16>(time), static_cast<u16>(attributes), size});
    if (++walk.entries == 1 && walk.hasParent) {
        Expect(std::strcmp(name, "..") == 0 && attributes == attributesOfParent);
        Expect(size == 0 && date == 0 && time == 0);
        return;
    }
    const ServerFamily family = walk.Family();
    CheckName(name, family);
    Expect(date <= 0xFFFF && (attributes | attributesOfEntries) == attributesOfEntries);
    Expect((time >> 11) < 24 && (time >> 5 & 63) < 60 && (time & 31) == 0);
    if (IsMvs(family)) {
        Expect((date >> 5 & 15) <= 12);
        Expect(attributes == 0 || (attributes == attributeDirectory && size == 0 &&
                                   family == ServerFamily::mvsDatasets));
    } else {
        Expect(date != 0 || time == 0);
        Expect(date == 0 || ((date >> 5 & 15) >= 1 && (date >> 5 & 15) <= 12 && (date & 31) >= 1));
    }
}

/// The host's reading of the lines is the module's, so entries of short ones keep all but the
/// blanks around a name and the size modulo 2^32.
void CheckMended(const char* text, const std::vector<std::string>& lines, Walk& walk) {
    hostkit::Listing mended;
    for (const hostkit::ListingEntry& entry : walk.listing) {
        mended.Append(entry);
    }
    Expect(hostkit::MendEntries(text, mended));
    const auto isMisread = [](const std::string& line) {
        return line.size() == lineLimit || line.find(" ->") != line.npos;
    };
    if (std::ranges::any_of(lines, isMisread)) {
        return;
    }
    Expect(mended.Count() == walk.listing.Count());
    auto entry = walk.listing.begin();
    for (const hostkit::ListingEntry& whole : mended) {
        const std::string name((*entry).name);
        const std::size_t at = whole.name.find(name);
        Expect(at != whole.name.npos && (at == 0 || whole.name.find_first_not_of(' ') >= at));
        Expect(whole.name.find_first_not_of(" \t", at + name.size()) == whole.name.npos);
        Expect(static_cast<u32>(whole.size) == (*entry).size && whole.date == (*entry).date);
        Expect(whole.attributes == (*entry).attributes);
        ++entry;
    }
}

void WalkOver(const char* text, ServerFamily family, const Directory& directory) {
    alignas(8) static char memory[sessionOffset + sizeof(Session)];
    Session* session = reinterpret_cast<Session*>(memory + sessionOffset);
    std::strcpy(session->site.directory, "/home/anna");
    session->serverType.Store(static_cast<u32>(family));
    const std::vector<std::string> lines = CutLines(text, lineLimit);
    Walk walk{session, directory.hasParent};
    ParseListing(directory.path, session, text, TakeEntry, WordFromPointer(&walk));
    Expect(walk.entries >= (directory.hasParent ? 1 : 0));
    Expect(walk.entries <= lines.size() + (directory.hasParent ? 1 : 0));
    Expect(walk.Family() == PlainFamily(lines, family));
    if (!IsMvs(family)) {
        CheckMended(text, lines, walk);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) {
        return -1;
    }
    // The listing stands in a block of its very length.
    std::vector<char> text(size - 1);
    std::copy(data + 2, data + size, text.begin());
    // In another width too, now and then.
    if (data[1] >= 'a') {
        CutLines(text.data(), 1 + data[1] % 8);
    }
    WalkOver(text.data(), PickFamily(data[0]), directories[data[1] % std::size(directories)]);
    return 0;
}
