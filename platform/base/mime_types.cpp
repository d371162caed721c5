#include "base/mime_types.h"

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace quennet::base {

namespace {

constexpr std::size_t tableAtMost = 8 * 1024 * 1024;  // bytes
constexpr std::size_t typeFileAtMost = 256 * 1024;
constexpr std::size_t lineAtMost = 512;
constexpr std::size_t nameAtMost = 1024;
constexpr std::string_view wildcards = "*?[\\";

/// A file's bytes; none for one that is larger or no plain file.
std::string ReadFile(const std::string& path, std::size_t atMost) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status = {};
    std::string bytes;
    if (file != -1 && fstat(file, &status) == 0 && S_ISREG(status.st_mode) &&
        static_cast<std::size_t>(status.st_size) <= atMost) {
        bytes.resize(static_cast<std::size_t>(status.st_size));
        std::size_t used = 0;
        ssize_t count = 0;
        while (used < bytes.size() &&
               (count = read(file, bytes.data() + used, bytes.size() - used)) > 0) {
            used += static_cast<std::size_t>(count);
        }
        bytes.resize(used);
    }
    if (file != -1) {
        close(file);
    }
    return bytes;
}

template <typename Take>
void ForEachLine(std::string_view text, Take take) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        if (!line.empty() && line[0] != '#' && line.size() <= lineAtMost) {
            take(line);
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

/// Takes the text up to the next ':' off a line.
std::string_view TakeField(std::string_view& line) {
    const std::size_t end = std::min(line.find(':'), line.size());
    const std::string_view field = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return field;
}

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
    });
    return lower;
}

/// A type becomes part of a path.
bool IsType(std::string_view type) {
    const auto isPlain = [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= '0' && letter <= '9') || letter == '/' || letter == '-' ||
               letter == '+' || letter == '.' || letter == '_';
    };
    return std::ranges::count(type, '/') == 1 && std::ranges::all_of(type, isPlain) &&
           type.front() != '/' && type.back() != '/' && type.find("..") == type.npos;
}

std::string WithoutEntities(std::string_view text) {
    struct Entity {
        std::string_view name;
        char letter;
    };
    constexpr Entity entities[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&amp;", '&'}};
    std::string plain;
    while (!text.empty()) {
        const auto* found = std::ranges::find_if(
            entities, [&](const Entity& entity) { return text.starts_with(entity.name); });
        const bool known = found != std::end(entities);
        plain += known ? found->letter : text[0];
        text.remove_prefix(known ? found->name.size() : 1);
    }
    return plain;
}

/// The one that is in no particular language.
std::string CommentIn(const std::string& typeFile) {
    constexpr std::string_view begin = "<comment>";
    const std::size_t start = typeFile.find(begin);
    const std::size_t end = start == typeFile.npos ? start : typeFile.find('<', start + 1);
    return end == typeFile.npos ? ""
                                : WithoutEntities(std::string_view(typeFile).substr(
                                      start + begin.size(), end - start - begin.size()));
}

std::vector<std::string> FoldersOfSystem() {
    const auto valueOf = [](const char* name) {
        const char* value = getenv(name);
        return std::string(value ? value : "");
    };
    std::string own = valueOf("XDG_DATA_HOME");
    const std::string home = valueOf("HOME");
    std::string shared = valueOf("XDG_DATA_DIRS");
    if (own.empty() && !home.empty()) {
        own = home + "/.local/share";
    }
    shared = own + ':' + (shared.empty() ? "/usr/local/share:/usr/share" : shared);
    std::vector<std::string> folders;
    for (std::string_view rest = shared; !rest.empty();) {
        const std::string_view folder = TakeField(rest);
        if (folder.starts_with('/')) {
            folders.push_back(std::string(folder) + "/mime");
        }
    }
    return folders;
}

}  // namespace

bool MimeTypes::Glob::IsBetterThan(const Glob* other) const {
    return !other || weight > other->weight ||
           (weight == other->weight && pattern.size() > other->pattern.size());
}

MimeTypes::MimeTypes(std::vector<std::string> folders) : folders_(std::move(folders)) {
    for (const std::string& folder : folders_) {
        ReadGlobs(folder);
        ReadIcons(folder);
    }
}

const MimeTypes& MimeTypes::OfSystem() {
    static const MimeTypes& types = *new MimeTypes(FoldersOfSystem());
    return types;
}

/// Lines of weight, type, pattern and flags.
void MimeTypes::ReadGlobs(const std::string& folder) {
    ForEachLine(ReadFile(folder + "/globs2", tableAtMost), [&](std::string_view line) {
        const std::string_view weight = TakeField(line);
        const std::string_view type = TakeField(line);
        const std::string_view pattern = TakeField(line);
        int number = 0;
        const auto [end, error] =
            std::from_chars(weight.data(), weight.data() + weight.size(), number);
        if (error == std::errc() && end == weight.data() + weight.size() && IsType(type) &&
            !pattern.empty()) {
            AddGlob({number, std::string(pattern), std::string(type)},
                    ("," + std::string(line) + ",").find(",cs,") != std::string::npos);
        }
    });
}

void MimeTypes::AddGlob(Glob glob, bool caseCounts) {
    if (!caseCounts) {
        glob.pattern = LowerCase(glob.pattern);
    }
    const std::string_view pattern = glob.pattern;
    const bool hasSuffix =
        pattern.starts_with("*.") && pattern.find_first_of(wildcards, 1) == pattern.npos;
    const bool isName = pattern.find_first_of(wildcards) == pattern.npos;
    if (!hasSuffix && !isName) {
        others_[caseCounts].push_back(std::move(glob));
        return;
    }
    GlobsByText& globs = hasSuffix ? suffixes_[caseCounts] : names_[caseCounts];
    const std::string key(pattern.substr(hasSuffix ? 1 : 0));
    const auto known = globs.find(key);
    if (known == globs.end() || glob.IsBetterThan(&known->second)) {
        globs[key] = std::move(glob);
    }
}

/// Lines of type and icon.
void MimeTypes::ReadIcons(const std::string& folder) {
    ForEachLine(ReadFile(folder + "/generic-icons", tableAtMost), [&](std::string_view line) {
        const std::string_view type = TakeField(line);
        icons_.emplace(type, TakeField(line));
    });
}

std::string MimeTypes::TypeOf(std::string_view name) const {
    if (name.empty() || name.size() > nameAtMost) {
        return "";
    }
    const Glob* best = nullptr;
    const auto take = [&](const Glob& glob) {
        if (glob.IsBetterThan(best)) {
            best = &glob;
        }
    };
    for (const bool caseCounts : {true, false}) {
        const std::string text = caseCounts ? std::string(name) : LowerCase(name);
        const auto takeFrom = [&](const GlobsByText& globs, std::size_t start) {
            if (const auto found = globs.find(text.substr(start)); found != globs.end()) {
                take(found->second);
            }
        };
        takeFrom(names_[caseCounts], 0);
        for (std::size_t dot = text.find('.'); dot != text.npos; dot = text.find('.', dot + 1)) {
            takeFrom(suffixes_[caseCounts], dot);
        }
        for (const Glob& glob : others_[caseCounts]) {
            if (glob.IsBetterThan(best) && fnmatch(glob.pattern.c_str(), text.c_str(), 0) == 0) {
                best = &glob;
            }
        }
    }
    return best ? best->type : "";
}

std::string MimeTypes::CommentOf(const std::string& type) const {
    if (!IsType(type)) {
        return "";
    }
    const std::lock_guard lock(mutex_);
    const auto [known, isNew] = comments_.try_emplace(type);
    if (isNew) {
        for (auto folder = folders_.begin(); folder != folders_.end() && known->second.empty();
             ++folder) {
            known->second = CommentIn(ReadFile(*folder + '/' + type + ".xml", typeFileAtMost));
        }
    }
    return known->second;
}

std::string MimeTypes::IconOf(const std::string& type) const {
    const auto known = icons_.find(type);
    return known != icons_.end() ? known->second : type.substr(0, type.find('/')) + "-x-generic";
}

}  // namespace quennet::base
