#include "hostkit/ini_document.h"

#include <algorithm>
#include <utility>

namespace hostkit {

namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view lineEnds = "\r\n";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";  // some editors put one in front

std::string Folded(std::string_view name) {
    std::string folded(name);
    for (char& character : folded) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return folded;
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view WithoutLineEnd(std::string_view line) {
    if (line.ends_with('\n')) {
        line.remove_suffix(1);
    }
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

/// Takes the first line off `text`, with its line end.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end == text.npos ? end : end + 1);
    text.remove_prefix(line.size());
    return line;
}

/// Name of the section that a line begins.
std::optional<std::string_view> HeaderName(std::string_view line) {
    std::string_view text = Trimmed(WithoutLineEnd(line));
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    if (!text.starts_with('[')) {
        return std::nullopt;
    }
    const std::size_t end = text.find(']');
    if (end == text.npos) {
        return std::nullopt;
    }
    return Trimmed(text.substr(1, end - 1));
}

struct Entry {
    std::string_view key;
    std::string_view value;  // as it is written
};

std::optional<Entry> EntryOf(std::string_view line) {
    const std::string_view text = Trimmed(WithoutLineEnd(line));
    const std::size_t equals = text.find('=');
    if (equals == text.npos || text.front() == ';' || text.front() == '#') {
        return std::nullopt;
    }
    const std::string_view key = Trimmed(text.substr(0, equals));
    if (key.empty()) {
        return std::nullopt;
    }
    return Entry{key, Trimmed(text.substr(equals + 1))};
}

struct Escape {
    char character;
    char letter;
};
constexpr Escape escapes[] = {{'\\', '\\'}, {'"', '"'}, {'\r', 'r'}, {'\n', 'n'}};

std::string Quoted(std::string_view value) {
    const bool plain = value.find_first_of(lineEnds) == value.npos && Trimmed(value) == value &&
                       !value.starts_with('"');
    if (plain) {
        return std::string(value);
    }
    std::string quoted = "\"";
    for (const char character : value) {
        const auto* escape = std::ranges::find(escapes, character, &Escape::character);
        if (escape != std::end(escapes)) {
            quoted += '\\';
            quoted += escape->letter;
        } else {
            quoted += character;
        }
    }
    return quoted + '"';
}

std::string Unquoted(std::string_view value) {
    if (value.size() < 2 || !value.starts_with('"') || !value.ends_with('"')) {
        return std::string(value);
    }
    std::string text;
    const std::string_view inner = value.substr(1, value.size() - 2);
    for (std::size_t i = 0; i < inner.size(); ++i) {
        const auto* escape = inner[i] == '\\' && i + 1 < inner.size()
                                 ? std::ranges::find(escapes, inner[i + 1], &Escape::letter)
                                 : std::end(escapes);
        if (escape != std::end(escapes)) {
            text += escape->character;
            ++i;
        } else {
            text += inner[i];
        }
    }
    return text;
}

bool HoldsLineEndOrNul(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) != text.npos;
}

bool IsSectionName(std::string_view name) {
    return !name.empty() && Trimmed(name) == name && !HoldsLineEndOrNul(name) &&
           name.find(']') == name.npos;
}

bool IsKey(std::string_view key) {
    return !key.empty() && Trimmed(key) == key && !HoldsLineEndOrNul(key) &&
           key.find('=') == key.npos && key.find_first_of("[;#") != 0 &&
           !key.starts_with(byteOrderMark);
}

bool IsBlank(std::string_view line) {
    return Trimmed(WithoutLineEnd(line)).empty();
}

}  // namespace

IniDocument::IniDocument(std::string_view text) {
    const std::string_view all = text;
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        if (const auto name = HeaderName(line)) {
            sections_.try_emplace(Folded(*name), bodies_.size());
            bodies_.emplace_back().header = line;
        } else {
            Append(bodies_.back(), std::string(line));
        }
    }
    const std::size_t end = all.find('\n');
    if (end != all.npos && end > 0 && all[end - 1] == '\r') {
        lineEnd_ = "\r\n";
    }
}

/// Ends a last line that has no line end, so that another can follow it. A CR that stands there is
/// the first half of one.
void IniDocument::EndLastLine(std::string& text) const {
    if (!text.empty() && !text.ends_with('\n')) {
        text += text.ends_with('\r') ? "\n" : lineEnd_;
    }
}

void IniDocument::AddLine(std::string& text, std::string_view line) const {
    EndLastLine(text);
    text += line;
}

std::string IniDocument::Text() const {
    std::string text;
    for (const Body& body : bodies_) {
        if (body.IsLeftOut()) {
            continue;
        }
        if (!body.header.empty()) {
            AddLine(text, body.header);
        }
        for (const std::string& line : body.lines) {
            AddLine(text, line);
        }
    }
    return text;
}

std::optional<std::string> IniDocument::Value(std::string_view section,
                                              std::string_view key) const {
    const Body* body = Find(section);
    if (body == nullptr) {
        return std::nullopt;
    }
    const auto found = body->keys.find(Folded(Trimmed(key)));
    if (found == body->keys.end()) {
        return std::nullopt;
    }
    return Unquoted(EntryOf(body->lines[found->second])->value);
}

bool IniDocument::SetValue(std::string_view section, std::string_view key, std::string_view value) {
    if (!IsSectionName(section) || !IsKey(key) || value.find('\0') != value.npos) {
        return false;
    }
    const std::string entry = std::string(key) + "=" + Quoted(value);
    Body& body = FindOrAdd(section);
    if (const auto found = body.keys.find(Folded(key)); found != body.keys.end()) {
        std::string& line = body.lines[found->second];
        line = entry + line.substr(WithoutLineEnd(line).size());
        return true;
    }
    // Blank lines at the end set off the next section: the entry goes before them.
    std::size_t position = body.lines.size();
    while (position > 0 && IsBlank(body.lines[position - 1])) {
        --position;
    }
    std::string line = entry + lineEnd_;
    if (body.lines.size() == body.lines.capacity()) {
        body.lines.reserve(2 * body.lines.size() + 8);
    }
    body.keys.emplace(Folded(key), position);
    body.lines.insert(body.lines.begin() + static_cast<std::ptrdiff_t>(position), std::move(line));
    return true;
}

bool IniDocument::RemoveValue(std::string_view section, std::string_view key) {
    Body* body = Find(section);
    if (body == nullptr) {
        return true;
    }
    const auto found = body->keys.find(Folded(Trimmed(key)));
    if (found != body->keys.end()) {
        std::vector<std::string> lines = body->lines;
        lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(found->second));
        body->keys = IndexOf(lines);
        body->lines = std::move(lines);
    }
    return true;
}

std::string IniDocument::Section(std::string_view section) const {
    const Body* body = Find(section);
    if (body == nullptr) {
        return {};
    }
    std::string text;
    for (const std::string& line : body->lines) {
        if (line.find('\0') == line.npos) {
            AddLine(text, line);
        }
    }
    const auto next = bodies_.begin() + (body - bodies_.data()) + 1;
    if (!std::all_of(next, bodies_.end(), [](const Body& other) { return other.IsLeftOut(); })) {
        EndLastLine(text);
    }
    return text;
}

bool IniDocument::ReplaceSection(std::string_view section, std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        if (HeaderName(line)) {
            return false;
        }
        lines.emplace_back(line);
    }
    if (!IsSectionName(section)) {
        return false;
    }
    if (lines.empty() && Find(section) == nullptr) {
        return true;
    }
    Index keys = IndexOf(lines);
    Body& body = FindOrAdd(section);
    body.lines = std::move(lines);
    body.keys = std::move(keys);
    return true;
}

std::vector<std::string> IniDocument::Keys(std::string_view section) const {
    std::vector<std::string> keys;
    if (const Body* body = Find(section)) {
        for (const std::string& line : body->lines) {
            if (const auto entry = EntryOf(line)) {
                keys.emplace_back(entry->key);
            }
        }
    }
    return keys;
}

void IniDocument::Append(Body& body, std::string line) {
    if (const auto entry = EntryOf(line)) {
        body.keys.try_emplace(Folded(entry->key), body.lines.size());
    }
    body.lines.push_back(std::move(line));
}

IniDocument::Index IniDocument::IndexOf(const std::vector<std::string>& lines) {
    Index keys;
    for (std::size_t number = 0; number < lines.size(); ++number) {
        if (const auto entry = EntryOf(lines[number])) {
            keys.try_emplace(Folded(entry->key), number);
        }
    }
    return keys;
}

const IniDocument::Body* IniDocument::Find(std::string_view section) const {
    const auto found = sections_.find(Folded(Trimmed(section)));
    return found == sections_.end() ? nullptr : &bodies_[found->second];
}

IniDocument::Body* IniDocument::Find(std::string_view section) {
    return const_cast<Body*>(std::as_const(*this).Find(section));
}

IniDocument::Body& IniDocument::FindOrAdd(std::string_view section) {
    if (Body* body = Find(section)) {
        return *body;
    }
    Body body;
    body.header = "[" + std::string(section) + "]" + lineEnd_;
    body.added = true;
    std::string name = Folded(section);
    bodies_.reserve(bodies_.size() + 1);
    sections_.emplace(std::move(name), bodies_.size());
    return bodies_.emplace_back(std::move(body));
}

}  // namespace hostkit
