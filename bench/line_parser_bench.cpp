// How much of the time that a listing takes is spent on reading its lines: a million of them
// through the parser, against the least that any reader must do, splitting the same text into lines
// and words. "ratio" is the best time of the parser divided by the best of the splitting, both
// taken in turns; it is meant to stay below 4.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <string>
#include <string_view>

#include "listing/line_parser.h"

namespace {

using namespace quennet;

constexpr int lineCount = 1'000'000;

const std::string& Listing() {
    static const std::string listing = [] {
        constexpr const char* lines[] = {
            "-rw-r--r--   1 ftp      ftp         1024 Mar  5 12:34 readme.txt\r\n",
            "drwxr-xr-x   2 ftp      ftp          512 Dec 10  2001 pub\r\n",
            "-rw-r--r--   1 anna     staff   73400320 Oct 31 23:59 holiday pictures 2001.tar\r\n",
            "lrwxrwxrwx   1 root     root           7 Jan  1  2000 bin -> usr/bin\r\n",
        };
        std::string text;
        for (int i = 0; i < lineCount; ++i) {
            text += lines[i % std::size(lines)];
        }
        return text;
    }();
    return listing;
}

void ReadLines(const char* text) {
    char line[257];
    while (*text != '\0') {
        NextListLine(&text, line, sizeof(line) - 1);
        u32 size = 0;
        u16 date = 0;
        u16 time = 0;
        u16 attributes = 0;
        benchmark::DoNotOptimize(
            ParseListLine(line, &size, &date, &time, &attributes, ServerFamily::unixLike));
        benchmark::DoNotOptimize(size + date + time + attributes);
    }
}

void SplitLines(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        while (!line.empty()) {
            const std::string_view token = line.substr(0, line.find(' '));
            benchmark::DoNotOptimize(token);
            line.remove_prefix(token.size());
            line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

// CPU time of the calling thread, which other work on the machine disturbs least.
double CpuSeconds() {
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void BM_ReadLines(benchmark::State& state) {
    const std::string& listing = Listing();
    double reading = std::numeric_limits<double>::max();
    double splitting = reading;
    for (auto _ : state) {
        const double start = CpuSeconds();
        SplitLines(listing);
        const double middle = CpuSeconds();
        ReadLines(listing.c_str());
        const double end = CpuSeconds();
        splitting = std::min(splitting, middle - start);
        reading = std::min(reading, end - middle);
        state.SetIterationTime(end - middle);
    }
    constexpr double nanosecondsPerLine = 1e9 / lineCount;
    state.counters["ns/line"] = reading * nanosecondsPerLine;
    state.counters["split ns/line"] = splitting * nanosecondsPerLine;
    state.counters["ratio"] = reading / splitting;
}
BENCHMARK(BM_ReadLines)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(10);

}  // namespace

BENCHMARK_MAIN();
