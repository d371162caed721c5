#include "hostkit/raw_listing.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "hostkit/masks.h"

namespace hostkit {

namespace {

constexpr std::size_t longestPiece = 256;
constexpr std::string_view blanks = " \t";
constexpr std::string_view lineEnds = "\r\n";

/// Where the module lets a name hold blanks on lines that are not Unix ones.
enum class NameRule { windowsNt, os2, none };
constexpr NameRule nameRules[] = {NameRule::windowsNt, NameRule::os2, NameRule::none};

/// What a line, or a piece of one, tells of an entry. The texts are good until the next is read.
struct LineEntry {
    std::string_view name;
    std::string_view behindName;  // blanks that are no part of `name`
    u64 size = 0;                 // modulo 2^64
    std::size_t leading = 0;      // blanks before the name beyond the one that sets it apart
    bool isEntry = false;         // and not dropped
    bool isUnix = false;          // of nine columns
    bool hasArrow = false;        // a link's
};

/// White space, a sign, digits up to the first other byte.
u64 NumberIn(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative || text.starts_with('+') ? 1 : 0);
    u64 number = 0;
    for (; !text.empty() && text[0] >= '0' && text[0] <= '9'; text.remove_prefix(1)) {
        number = number * 10 + static_cast<u64>(text[0] - '0');
    }
    return negative ? 0 - number : number;
}

bool IsInAnyCase(std::string_view text, std::string_view lowerCase) {
    return std::ranges::equal(text, lowerCase, {}, Folded);
}

bool Holds(std::string_view text, char letter) {
    return text.find(letter) != text.npos;
}

/// Reads lines in the layout that each has itself, as the module does.
class LineReader {
  public:
    /// As the module reads it: an arrow in a file's name loses its blanks like that of a link.
    LineEntry Read(std::string_view line, NameRule rule) {
        line_.assign(line);
        JoinArrow();
        return Take(rule);
    }

    /// As the server means it.
    LineEntry ReadWhole(std::string_view line, NameRule rule) {
        line_.assign(line);
        if (line.starts_with('l')) {
            JoinArrow();
        }
        return Take(rule);
    }

  private:
    static constexpr std::size_t shortestEntry = 4;
    static constexpr std::size_t shortestUnixLine = 7;
    static constexpr std::size_t mostColumns = 9;

    LineEntry Take(NameRule rule) {
        entry_ = {};
        count_ = 0;
        gap_ = {};
        CutBlanks();
        Split(rule);
        const bool isShort = count_ < shortestEntry;
        entry_.name = isShort ? FirstWord() : FromEnd(1);
        TakeKind(isShort ? FirstLetter() : ReadLayout());
        return entry_;
    }

    std::string_view Rest(std::size_t from) const { return std::string_view(line_).substr(from); }
    std::string_view FirstWord() const { return Rest(0).substr(0, line_.find_first_of(blanks)); }
    std::string_view FromEnd(std::size_t place) const { return columns_[count_ - place]; }

    /// NUL for a line that begins with a blank.
    char FirstLetter() const { return FirstWord().empty() ? '\0' : line_[0]; }

    /// «name -> target» becomes «name->target»: blanks go from the word before the arrow on.
    void JoinArrow() {
        std::size_t start = line_.find(" ->");
        if (start == line_.npos) {
            return;
        }
        const auto isPlain = [](char letter) { return letter > 0x20 && (letter & 0x80) == 0; };
        while (start > 0 && isPlain(line_[start - 1])) {
            --start;
        }
        const auto from = line_.begin() + static_cast<std::ptrdiff_t>(start);
        line_.erase(std::remove(from, line_.end(), ' '), line_.end());
    }

    void CutBlanks() {
        constexpr std::size_t leftAlone = 3;
        const std::size_t length = line_.find_last_not_of(blanks) + 1;
        behindLine_ = line_.substr(std::min(std::max(length, leftAlone), line_.size()));
        line_.resize(line_.size() - behindLine_.size());
    }

    /// Cuts the line into columns; the last one may be a name with blanks.
    void Split(NameRule rule) {
        std::size_t end = std::min(line_.find_first_of(blanks), line_.size());
        if (end != 0 || line_.empty()) {
            columns_[count_++] = Rest(0).substr(0, end);
        }
        while (end != line_.size()) {
            const std::size_t begin = std::min(line_.find_first_not_of(blanks, end), line_.size());
            gap_ = Rest(end).substr(0, begin - end);
            end = std::min(line_.find_first_of(blanks, begin), line_.size());
            columns_[count_++] = Rest(begin).substr(0, end - begin);
            if (RestIsName(rule, begin)) {
                columns_[count_ - 1] = Rest(begin);
                return;
            }
        }
    }

    bool RestIsName(NameRule rule, std::size_t begin) const {
        constexpr std::size_t firstNtNameOffset = 39;
        if (rule == NameRule::os2 && count_ == 5) {
            return Holds(columns_[3], ':') && Holds(columns_[2], '-');
        }
        if (rule == NameRule::windowsNt && count_ == 4) {
            return begin >= firstNtNameOffset && Holds(columns_[1], ':') && Holds(columns_[0], '-');
        }
        return count_ == mostColumns;
    }

    /// Takes the size. Gives the letter that tells a directory, a link and a file.
    char ReadLayout() {
        if (count_ >= shortestUnixLine) {
            entry_.size = NumberIn(FromEnd(5));
            entry_.isUnix = count_ == mostColumns && !Holds(gap_, '\t');
            entry_.leading = entry_.isUnix ? gap_.size() - 1 : 0;
            entry_.behindName = behindLine_;
            return FirstLetter();
        }
        const bool isDos = Holds(columns_[0], '-');
        const bool isFolder =
            isDos ? IsInAnyCase(FromEnd(2), "<dir>")
                  : FromEnd(1).starts_with("..") || IsInAnyCase(columns_[1].substr(0, 3), "dir");
        entry_.size = !isDos ? NumberIn(columns_[0]) : isFolder ? 0 : NumberIn(FromEnd(2));
        return isFolder ? 'd' : '-';
    }

    void TakeKind(char kind) {
        std::string_view& name = entry_.name;
        entry_.isEntry = kind != '\0' && Holds("dl-f", kind) && name != "." && name != "..";
        if ((kind == 'd' || kind == 'l') && (name.ends_with('/') || name.ends_with('\\'))) {
            name.remove_suffix(1);
        }
        const std::size_t end = kind == 'l' ? name.find("->") : name.npos;
        entry_.hasArrow = end != name.npos;
        name = name.substr(0, end);
    }

    std::string line_;
    std::string behindLine_;
    std::array<std::string_view, mostColumns> columns_;
    std::size_t count_ = 0;
    std::string_view gap_;  // before the last column
    LineEntry entry_;
};

/// What becomes of one entry.
struct Change {
    std::size_t index = 0;
    bool isDropped = false;
    bool isLink = false;
    u64 size = 0;
    std::string name = {};
    std::size_t leading = 0;  // blanks that may belong to the name
    std::string trailing = {};
};

/// How many blanks stand at one place of the Unix lines of a listing.
struct BlankColumn {
    std::size_t least = SIZE_MAX;
    std::size_t most = 0;
    std::size_t lines = 0;

    void Count(std::size_t blankCount) {
        least = std::min(least, blankCount);
        most = std::max(most, blankCount);
        ++lines;
    }
};

/// The text without its blanks.
std::string Dense(std::string_view text) {
    std::string dense(text);
    std::erase(dense, ' ');
    return dense;
}

/// Whether the module may have read another name than the server means.
bool IsMisread(std::string_view line) {
    return line.size() > longestPiece || (line[0] != 'l' && line.find(" ->") != line.npos);
}

bool IsLong(std::string_view line) {
    return line.size() > longestPiece;
}

/// Walks the text beside the entries by one rule.
class Pairing {
  public:
    Pairing(const Listing& entries, NameRule rule)
        : rule_(rule), next_(entries.begin()), end_(entries.end()) {
        constexpr u16 parentAttributes = 0x18;
        if (next_ != end_ && (*next_).name == ".." && (*next_).attributes == parentAttributes) {
            Advance();
        }
    }

    /// False when a line must have given something else than it did.
    bool Walk(std::string_view text) {
        while (!text.empty()) {
            const std::string_view line = text.substr(0, text.find_first_of(lineEnds));
            text.remove_prefix(line.size());
            text.remove_prefix(std::min(text.find_first_not_of(lineEnds), text.size()));
            if (!TakeLine(line)) {
                return false;
            }
        }
        return next_ == end_;
    }

    /// The entries that are not as the lines have them, in order.
    std::vector<Change> Take() {
        // A column of blanks that is the same in all lines is the server's, and in no name.
        const bool mayLead = before_.lines < 3 || before_.least != before_.most;
        const bool mayTrail = behind_.least == 0;
        for (Change& change : changes_) {
            change.name.insert(0, mayLead ? change.leading : 0, ' ');
            change.name += mayTrail ? change.trailing : "";
        }
        return std::move(changes_);
    }

  private:
    bool TakeLine(std::string_view line) {
        const LineEntry head = reader_.Read(line.substr(0, longestPiece), rule_);
        if (head.isUnix) {
            before_.Count(head.leading);
        }
        if (head.isUnix && !IsLong(line)) {
            behind_.Count(head.behindName.size());
        }
        if (head.isEntry && !TakeHead(head, line)) {
            return false;
        }
        for (std::size_t at = longestPiece; at < line.size(); at += longestPiece) {
            const LineEntry rest = reader_.Read(line.substr(at, longestPiece), rule_);
            if (rest.isEntry) {
                if (!Agrees(rest)) {
                    return false;
                }
                changes_.push_back({.index = index_, .isDropped = true});
                Advance();
            }
        }
        return true;
    }

    bool TakeHead(const LineEntry& head, std::string_view line) {
        if (!Agrees(head)) {
            return false;
        }
        const ListingEntry entry = *next_;
        Change change = {.index = index_,
                         .isLink = head.hasArrow,
                         .size = head.size,
                         .name = std::string(head.name)};
        if (head.isUnix && (entry.attributes & quennet::attributePermissions) != 0) {
            change.leading = head.leading;
            change.trailing = head.hasArrow ? "" : head.behindName;
        }
        if (IsMisread(line)) {
            TakeWhole(line, change);
        }
        change.size = std::in_range<i64>(change.size) ? change.size : entry.size;
        if (IsMisread(line) || change.leading != 0 || !change.trailing.empty() ||
            change.size != entry.size) {
            changes_.push_back(std::move(change));
        }
        Advance();
        return true;
    }

    void TakeWhole(std::string_view line, Change& change) {
        const LineEntry whole = reader_.ReadWhole(line, rule_);
        const std::string name = Dense(whole.name);
        const std::string read = Dense(change.name);
        if (whole.isEntry && (name.starts_with(read) || read.starts_with(name))) {
            change.name = whole.name;
            change.trailing = whole.hasArrow ? "" : whole.behindName;
            change.isLink = whole.hasArrow;
            change.size = whole.size;
        }
    }

    bool Agrees(const LineEntry& line) const {
        return next_ != end_ && (*next_).name == line.name &&
               (*next_).size == static_cast<u32>(line.size);
    }

    void Advance() {
        ++next_;
        ++index_;
    }

    const NameRule rule_;
    Listing::Iterator next_;
    const Listing::Iterator end_;
    std::size_t index_ = 0;
    LineReader reader_;
    BlankColumn before_;
    BlankColumn behind_;
    std::vector<Change> changes_;
};

/// False without memory.
bool Apply(const std::vector<Change>& changes, Listing& entries) {
    Listing mended;
    auto change = changes.begin();
    std::size_t index = 0;
    for (ListingEntry entry : entries) {
        const bool isChanged = change != changes.end() && change->index == index;
        ++index;
        if (isChanged && !change->isDropped) {
            entry.name = change->name;
            entry.size = change->size;
            if (change->isLink) {
                entry.attributes |= quennet::attributeDirectory;
            }
        }
        if (!(isChanged && change->isDropped) && !mended.Append(entry)) {
            return false;
        }
        change += isChanged ? 1 : 0;
    }
    entries = std::move(mended);
    return true;
}

}  // namespace

bool MendEntries(std::string_view text, Listing& entries) {
    for (const NameRule rule : nameRules) {
        Pairing pairing(entries, rule);
        if (pairing.Walk(text)) {
            const std::vector<Change> changes = pairing.Take();
            return changes.empty() || Apply(changes, entries);
        }
    }
    return false;
}

}  // namespace hostkit
