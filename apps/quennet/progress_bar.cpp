#include "progress_bar.h"

#include <algorithm>
#include <cstdio>

#include "terminal_text.h"

namespace cli {

namespace {

using hostkit::u64;

constexpr unsigned longestName = 30;
constexpr unsigned smallestBar = 10;
constexpr unsigned largestBar = 40;

template <typename... Values>
std::string Format(const char* format, Values... values) {
    char text[64];
    std::snprintf(text, sizeof(text), format, values...);
    return text;
}

/// Columns of a text, at most: characters of three bytes and more may take two.
std::size_t Columns(const std::string& text) {
    std::size_t columns = 0;
    for (const char each : text) {
        const auto byte = static_cast<unsigned char>(each);
        columns += byte >= 0xE0 ? 2 : (byte & 0xC0) != 0x80 ? 1 : 0;
    }
    return columns;
}

std::string CutToColumns(const std::string& text, std::size_t columns) {
    std::size_t end = text.size();
    while (Columns(text.substr(0, end)) > columns) {
        --end;
    }
    return text.substr(0, end);
}

std::string TimeText(double seconds) {
    constexpr double longest = 359999;  // 99:59:59
    const auto whole = static_cast<unsigned>(std::min(seconds, longest));
    if (whole >= 3600) {
        return Format("%u:%02u:%02u", whole / 3600, whole / 60 % 60, whole % 60);
    }
    return Format("%u:%02u", whole / 60, whole % 60);
}

std::string Bar(double share, unsigned width) {
    const auto full = static_cast<unsigned>(share * width);
    std::string bar(full, '=');
    if (full < width) {
        bar += '>';
        bar.append(width - full - 1, ' ');
    }
    return "[" + bar + "]";
}

}  // namespace

std::string ByteCountText(double bytes) {
    constexpr double step = 1024;
    constexpr const char* units[] = {"KiB", "MiB", "GiB", "TiB"};
    if (bytes < step) {
        return Format("%.0f B", bytes);
    }
    std::size_t unit = 0;
    for (bytes /= step; bytes >= step && unit + 1 < std::size(units); bytes /= step) {
        ++unit;
    }
    return Format("%.1f %s", bytes, units[unit]);
}

std::string ProgressText(const ProgressState& state, unsigned width) {
    const double rate = state.seconds > 0 ? static_cast<double>(state.moved) / state.seconds : 0;
    const bool bounded = state.total > 0 && state.position <= state.total;
    std::string numbers = "  " + ByteCountText(static_cast<double>(state.position)) + "  " +
                          ByteCountText(rate) + "/s";
    std::string percent;
    double share = 0;
    if (bounded) {
        share = static_cast<double>(state.position) / static_cast<double>(state.total);
        percent = Format("  %3.0f%%", share * 100);
    }
    if (bounded && rate > 0) {
        const auto left = static_cast<double>(state.total - state.position);
        numbers += "  " + TimeText(left / rate) + " left";
    }
    const std::string name = CutToColumns(HarmlessText(state.name), longestName);
    const std::size_t used = Columns(name) + percent.size() + numbers.size();
    constexpr std::size_t frame = 3;  // of the bar: its brackets and a blank
    std::string bar;
    if (bounded && used + frame + smallestBar <= width) {
        const auto room = static_cast<unsigned>(width - used - frame);
        bar = " " + Bar(share, std::min(room, largestBar));
    }
    return CutToColumns(name + percent + bar + numbers, width);
}

}  // namespace cli
