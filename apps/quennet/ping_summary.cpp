#include "ping_summary.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "hostkit/texts.h"

namespace cli {

namespace {

constexpr hostkit::u32 timedOutText = 6003;
constexpr std::string_view timeLabel = ", time: ";

struct Beginning {
    std::string_view text;
    PingLine kind;
};
constexpr Beginning beginnings[] = {
    {"#", PingLine::reply},
    {"Someone else's packet!", PingLine::lost},
    {"Non-echo type ", PingLine::lost},
    {"Too few bytes from ", PingLine::remark},
    {"Wrote ", PingLine::remark},
};

PingLine KindOf(std::string_view line) {
    for (const Beginning& beginning : beginnings) {
        if (line.starts_with(beginning.text)) {
            return beginning.kind;
        }
    }
    return line == hostkit::TextOfId(timedOutText) ? PingLine::lost : PingLine::trouble;
}

long MillisecondsOf(const std::string& line) {
    const std::size_t label = line.rfind(timeLabel);
    return label == line.npos ? 0 : std::atol(line.c_str() + label + timeLabel.size());
}

}  // namespace

PingLine PingSummary::Take(const std::string& line) {
    const PingLine kind = KindOf(line);
    if (kind == PingLine::reply || kind == PingLine::lost) {
        ++sent_;
    }
    if (kind == PingLine::reply) {
        const long milliseconds = MillisecondsOf(line);
        shortest_ = received_ == 0 ? milliseconds : std::min(shortest_, milliseconds);
        longest_ = std::max(longest_, milliseconds);
        total_ += static_cast<double>(milliseconds);
        ++received_;
    }
    return kind;
}

std::string PingSummary::Text() const {
    char counts[64];
    std::snprintf(counts, sizeof counts, "%u sent, %u received, %u lost", sent_, received_,
                  sent_ - received_);
    if (received_ == 0) {
        return counts;
    }
    char times[96];
    std::snprintf(times, sizeof times, "; shortest %ld ms, mean %.1f ms, longest %ld ms", shortest_,
                  total_ / received_, longest_);
    return std::string(counts) + times;
}

}  // namespace cli
