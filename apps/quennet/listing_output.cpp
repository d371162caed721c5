#include "listing_output.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "hostkit/display_text.h"
#include "standard_output.h"
#include "terminal_text.h"

namespace cli {

namespace {

using hostkit::ListingEntry;

constexpr char folderColour[] = "\x1B[1;34m";
constexpr char linkColour[] = "\x1B[36m";
constexpr char noColour[] = "\x1B[0m";

/// Some formats leave the month, the day or the hour out.
bool IsWholeDate(const ListingEntry& entry) {
    const int month = (entry.date >> 5) & 15;
    const int day = entry.date & 31;
    const int hour = entry.time >> 11;
    const int minute = (entry.time >> 5) & 63;
    return month >= 1 && month <= 12 && day >= 1 && hour <= 23 && minute <= 59;
}

std::string DateOf(const ListingEntry& entry) {
    return IsWholeDate(entry) ? hostkit::DateText(entry.date, entry.time) : "-";
}

std::string Padded(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, text.size()), ' ');
}

std::string PaddedInFront(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

}  // namespace

bool IsShown(const ListingEntry& entry) {
    return entry.name != "." && entry.name != "..";
}

void ListingFormat::Measure(const ListingEntry& entry) {
    if (longForm_ && !porcelain_) {
        attributesWidth_ =
            std::max(attributesWidth_, hostkit::AttributeText(entry.attributes).size());
        sizeWidth_ = std::max(sizeWidth_, std::to_string(entry.size).size());
    }
}

std::string ListingFormat::Line(const ListingEntry& entry) const {
    if (porcelain_) {
        return Porcelain(entry);
    }
    if (!longForm_) {
        return Name(entry) + "\n";
    }
    constexpr std::size_t dateWidth = 16;
    std::string line;
    if (attributesWidth_ > 0) {
        line = Padded(hostkit::AttributeText(entry.attributes), attributesWidth_) + "  ";
    }
    return line + PaddedInFront(std::to_string(entry.size), sizeWidth_) + "  " +
           Padded(DateOf(entry), dateWidth) + "  " + Name(entry) + "\n";
}

std::string ListingFormat::Porcelain(const ListingEntry& entry) const {
    char attributes[8];
    std::snprintf(attributes, sizeof(attributes), "%04x", entry.attributes);
    return std::string(attributes) + "\t" + std::to_string(entry.size) + "\t" + DateOf(entry) +
           "\t" + PorcelainText(NameOf(entry)) + "\n";
}

std::string ListingFormat::Name(const ListingEntry& entry) const {
    const std::string name = HarmlessText(NameOf(entry));
    if (!coloured_ || !(entry.IsDirectory() || entry.IsLink())) {
        return name;
    }
    return (entry.IsLink() ? linkColour : folderColour) + name + noColour;
}

bool MayColour() {
    const char* refusal = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && (refusal == nullptr || *refusal == '\0') &&
           terminal != nullptr && std::string_view(terminal) != "dumb";
}

bool PrintEntries(const hostkit::Listing& entries, const Options& options,
                  const std::function<bool(const ListingEntry&)>& isWanted) {
    ListingFormat format(options, MayColour());
    for (const ListingEntry& entry : entries) {
        if (isWanted(entry)) {
            format.Measure(entry);
        }
    }
    StandardOutput output;
    bool any = false;
    for (const ListingEntry& entry : entries) {
        if (isWanted(entry)) {
            output.Write(format.Line(entry));
            any = true;
        }
    }
    output.Flush();
    return any;
}

}  // namespace cli
