#include "listing/walker.h"

#include <cstring>

#include "control/server_family.h"
#include "listing/line_parser.h"
#include "listing/list_text.h"
#include "transfer/receive.h"

namespace quennet {
namespace {

constexpr u32 lineLimit = 256;
constexpr u16 parentAttributes = 0x18;

// What the host gets of one line.
struct ListedEntry {
    const char* name;
    u32 size;
    u16 date;
    u16 time;
    u16 attributes;
};

ServerFamily FamilyOf(const Session& session) {
    return static_cast<ServerFamily>(session.serverType.Load());
}

void StoreFamily(Session* session, ServerFamily family) {
    session->serverType.Store(static_cast<u32>(family));
}

bool IsMvs(ServerFamily serverType) {
    return serverType == ServerFamily::mvsDatasets || serverType == ServerFamily::mvsMembers;
}

bool IsPathSeparator(char letter) {
    return letter == '/' || letter == '\\';
}

bool HasParent(const char* path) {
    const std::size_t length = std::strlen(path);
    return length > 1 && !IsPathSeparator(path[length - 1]);
}

// The family that the first line of an MVS listing tells.
ServerFamily FamilyOfHeader(const char* line) {
    if (std::strstr(line, "Lrecl") != nullptr) {
        return ServerFamily::mvsDatasets;
    }
    return std::strstr(line, "Name") != nullptr ? ServerFamily::mvsMembers : ServerFamily::unknown;
}

// An MVS server also has a Unix side, whose listings look like any other's.
bool IsUnixLine(const char* line) {
    constexpr char permissions[] = "rwxrwxrwx";
    constexpr u32 count = sizeof(permissions) - 1;
    if (*line != 'd' && *line != 'l' && *line != '-') {
        return false;
    }
    for (u32 i = 0; i < count; ++i) {
        if (line[1 + i] != permissions[i] && line[1 + i] != '-') {
            return false;
        }
    }
    return line[1 + count] == ' ';
}

// --- Lines of all families but MVS ----------------------------------------------------------

void CutLastSeparator(char* name) {
    const std::size_t length = std::strlen(name);
    if (length > 0 && IsPathSeparator(name[length - 1])) {
        name[length - 1] = '\0';
    }
}

// A link with an arrow shows as a directory, whatever it points to.
bool ReadGenericLine(char* line, ServerFamily serverType, ListedEntry* entry) {
    char* name = ParseListLine(line, &entry->size, &entry->date, &entry->time, &entry->attributes,
                               serverType);
    entry->name = name;
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) {
        return false;
    }
    const char kind = *line;
    if (kind == 'd') {
        CutLastSeparator(name);
        entry->attributes |= attributeDirectory;
    } else if (kind == 'l') {
        CutLastSeparator(name);
        char* arrow = std::strstr(name, "->");
        if (arrow != nullptr) {
            *arrow = '\0';
            entry->attributes |= attributeDirectory;
        }
    }
    return kind == 'd' || kind == 'l' || kind == '-' || kind == 'f';
}

// --- MVS: fixed columns ---------------------------------------------------------------------

u32 NumberWithin(const char* text, i32 first, i32 last) {
    const i32 number = ReadNumber(text);
    return number >= first && number <= last ? static_cast<u32>(number) : 0;
}

// «2001/07/19», but month and day stand in columns of their own.
u16 ReadDate(const char* year, const char* month, const char* day) {
    const i32 number = ReadNumber(year);
    const i32 yearField = number >= 1980 && number <= 2107 ? number - 1980 : number;
    return static_cast<u16>(static_cast<u32>(yearField) << 9 | NumberWithin(month, 1, 12) << 5 |
                            NumberWithin(day, 1, 31));
}

u32 DayOf(u16 date) {
    return date & 0x1F;
}

// The first column at or behind `first` that is not blank, `last` at the latest.
const char* SkipBlanks(const char* first, const char* last) {
    while (first < last && *first == ' ') {
        ++first;
    }
    return first;
}

// «SMS001 3390   2001/07/19  1   15  FB      80  6160  PO  USER.DATA»
bool ReadDatasetLine(const char* line, ListedEntry* entry) {
    constexpr std::size_t shortestLine = 57;
    if (std::strlen(line) < shortestLine) {
        return false;
    }
    entry->name = line + 56;
    entry->date = ReadDate(line + 14, line + 19, line + 22);
    if (BeginsWithInAnyCase(SkipBlanks(line + 51, line + 55), "PO", 2)) {
        entry->attributes = attributeDirectory;
    } else {
        entry->size = static_cast<u32>(ReadNumber(SkipBlanks(line + 45, line + 51)));
    }
    return DayOf(entry->date) != 0 || !BeginsWithInAnyCase(line, "Migrated", 8);
}

// «MEMBER1   01.03 2001/07/19 2001/07/19 14:22    20    20     0 USER»; the name keeps one blank.
bool ReadMemberLine(char* line, ListedEntry* entry) {
    constexpr std::size_t shortestLine = 51;
    constexpr std::ptrdiff_t longestName = 9;
    if (std::strlen(line) < shortestLine) {
        return false;
    }
    char* blank = std::strchr(line, ' ');
    if (blank == nullptr || blank - line > longestName) {
        return false;
    }
    blank[1] = '\0';
    entry->name = line;
    entry->date = ReadDate(line + 16, line + 21, line + 24);
    entry->time = static_cast<u16>(NumberWithin(line + 38, 0, 23) << 11 |
                                   NumberWithin(line + 41, 0, 59) << 5);
    entry->size = static_cast<u32>(ReadNumber(SkipBlanks(line + 44, line + 49)));
    return true;
}

// Whether the line tells of an entry.
bool ReadLine(char* line, ServerFamily serverType, ListedEntry* entry) {
    switch (serverType) {
        case ServerFamily::mvsDatasets:
            return ReadDatasetLine(line, entry);
        case ServerFamily::mvsMembers:
            return ReadMemberLine(line, entry);
        default:
            return ReadGenericLine(line, serverType, entry);
    }
}

}  // namespace

int FetchListing(Session* session, GrowBuffer* buffer, u32 longOption) {
    constexpr char textType = 'A';
    const char* command = longOption != 0 ? "LIST -la" : "LIST";
    return ReceiveFile(session, command, nullptr, buffer, 0, textType);
}

void ParseListing(const char* path, Session* session, const char* text, ListEntryCallback callback,
                  HostWord context) {
    if (path == nullptr) {
        path = session->site.directory;
    }
    if (text == nullptr || HasParent(path)) {
        callback("..", 0, 0, parentAttributes, 0, context);
    }
    if (text == nullptr) {
        return;
    }

    char line[lineLimit + 1];
    NextListLine(&text, line, lineLimit);
    if (IsMvs(FamilyOf(*session))) {
        const ServerFamily family = FamilyOfHeader(line);
        StoreFamily(session, family);
        if (family != ServerFamily::unknown) {
            NextListLine(&text, line, lineLimit);
        }
    }
    for (;;) {
        if (IsMvs(FamilyOf(*session)) && IsUnixLine(line)) {
            StoreFamily(session, ServerFamily::unixLike);
        }
        ListedEntry entry = {};
        if (ReadLine(line, FamilyOf(*session), &entry)) {
            callback(entry.name, entry.date, entry.time, entry.attributes, entry.size, context);
        }
        if (*text == '\0') {
            return;
        }
        NextListLine(&text, line, lineLimit);
    }
}

}  // namespace quennet
