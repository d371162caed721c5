// What the platform says about a kind of file.

#include "base/mime_types.h"
#include "shellapi.h"
#include "user/characters.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

namespace quennet::base {

namespace {

struct IconKind {
    std::string_view name;
    int number;
};
constexpr IconKind iconKinds[] = {
    {"text-x-generic", QUENNET_ICON_TEXT},
    {"text-x-generic-template", QUENNET_ICON_TEXT},
    {"text-html", QUENNET_ICON_TEXT},
    {"text-x-script", QUENNET_ICON_TEXT},
    {"image-x-generic", QUENNET_ICON_IMAGE},
    {"audio-x-generic", QUENNET_ICON_AUDIO},
    {"video-x-generic", QUENNET_ICON_VIDEO},
    {"package-x-generic", QUENNET_ICON_ARCHIVE},
    {"application-x-executable", QUENNET_ICON_PROGRAM},
    {"x-office-document", QUENNET_ICON_DOCUMENT},
    {"x-office-spreadsheet", QUENNET_ICON_DOCUMENT},
    {"x-office-presentation", QUENNET_ICON_DOCUMENT},
    {"folder", QUENNET_ICON_FOLDER},
};

struct Kind {
    std::string type;
    bool isFolder = false;
};

/// False when the file should be there and is not.
bool KindOf(std::string_view path, DWORD attributes, bool byName, Kind* kind) {
    kind->isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!byName) {
        struct stat status = {};
        if (stat(std::string(path).c_str(), &status) != 0) {
            return false;
        }
        kind->isFolder = S_ISDIR(status.st_mode);
    }
    kind->type = kind->isFolder ? "inode/directory"
                                : MimeTypes::OfSystem().TypeOf(path.substr(path.rfind('/') + 1));
    return true;
}

std::string NameOf(const Kind& kind) {
    const std::string comment = MimeTypes::OfSystem().CommentOf(kind.type);
    return comment.empty() && kind.isFolder ? "Folder" : comment;
}

int IconOf(const Kind& kind) {
    if (kind.isFolder) {
        return QUENNET_ICON_FOLDER;
    }
    const std::string icon = MimeTypes::OfSystem().IconOf(kind.type);
    const auto* known = std::ranges::find(iconKinds, icon, &IconKind::name);
    return known == std::end(iconKinds) ? int{QUENNET_ICON_FILE} : known->number;
}

/// Cut between characters.
void CopyCut(std::string_view text, char* field, std::size_t size) {
    std::size_t length = 0;
    while (length < text.size() && user::BehindCharacter(text, length) < size) {
        length = user::BehindCharacter(text, length);
    }
    std::memcpy(field, text.data(), length);
    field[length] = '\0';
}

}  // namespace

}  // namespace quennet::base

using namespace quennet::base;

extern "C" DWORD_PTR WINAPI SHGetFileInfoA(LPCSTR path, DWORD attributes, SHFILEINFOA* info,
                                           UINT size, UINT flags) {
    Kind kind;
    if (!path || !info || size < sizeof(SHFILEINFOA) ||
        !KindOf(path, attributes, (flags & SHGFI_USEFILEATTRIBUTES) != 0, &kind)) {
        return 0;
    }
    if ((flags & SHGFI_TYPENAME) != 0) {
        CopyCut(NameOf(kind), info->szTypeName, sizeof(info->szTypeName));
    }
    if ((flags & SHGFI_SYSICONINDEX) != 0) {
        info->iIcon = IconOf(kind);
    }
    return 1;
}
