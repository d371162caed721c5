// A search that found a million files in 100,000 folders: what the store takes, and how long it
// takes to fill it, to paint a page of the list, to write the hits, and to end the run.

#include <benchmark/benchmark.h>

#include <commctrl.h>

#include <cstring>
#include <string>

#include "find/find_export.h"
#include "find/find_list.h"
#include "find/find_lookup.h"
#include "find/find_store.h"
#include "host/message.h"
#include "host/services.h"
#include "hostkit/host.h"
#include "hostkit/memory.h"

namespace {

using namespace quennet;

constexpr u32 folderCount = 100'000;
constexpr u32 hitsPerFolder = 10;
constexpr u32 hitCount = folderCount * hitsPerFolder;
constexpr u32 pageRows = 50;
constexpr u32 columnCount = 6;

/// The list: none of its rows is selected.
LRESULT CALLBACK ListProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == LVM_GETNEXTITEM) {
        return -1;
    }
    return message == LVM_GETITEMCOUNT ? LRESULT{hitCount}
                                       : DefWindowProcA(window, message, wParam, lParam);
}

HWND MakeList() {
    WNDCLASSEXA description = {};
    description.cbSize = sizeof description;
    description.lpfnWndProc = ListProc;
    description.lpszClassName = "FindBenchList";
    RegisterClassExA(&description);
    return CreateWindowExA(0, "FindBenchList", "", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr,
                           nullptr);
}

std::string FolderPath(u32 number) {
    return "/pub/archive/" + std::to_string(number / 1000) + "/folder" + std::to_string(number);
}

void FillStore(FindWindow* find) {
    char scratch[findScratchSize] = {};
    auto* record = reinterpret_cast<FindRecord*>(scratch);
    char* name = scratch + offsetof(FindRecord, name);
    for (u32 folder = 0; folder < folderCount; ++folder) {
        record->directoryNumber = AppendDirectory(find, FolderPath(folder).c_str());
        for (u32 hit = 0; hit < hitsPerFolder; ++hit) {
            const int length = std::snprintf(name, 64, "file%02u_%06u.txt", hit, folder);
            record->length = static_cast<u16>(sizeof(FindRecord) + static_cast<u32>(length));
            record->extension = static_cast<u16>(length - 3);
            record->icon = -1;
            record->size = folder;
            record->date = 0x2A6F;
            AppendHit(find, record);
        }
        IndexHits(find);
    }
}

/// The store, filled once.
FindWindow* Filled() {
    static FindWindow* const find = [] {
        auto* made = new FindWindow();
        made->list = MakeList();
        made->window = made->list;
        made->separator = '/';
        InitFindColumns(made);
        FillStore(made);
        return made;
    }();
    return find;
}

void BM_Append(benchmark::State& state) {
    FindWindow find = {};
    for (auto _ : state) {
        ResetStore(&find);
        FillStore(&find);
    }
    constexpr double nameBytes = 17;
    constexpr double perHit = 71 + nameBytes + 1 + 4;
    const double used = static_cast<double>(find.records.used + find.index.used);
    const double held = static_cast<double>(find.records.host + find.index.host);
    state.counters["hits"] =
        benchmark::Counter(hitCount, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bytes/hit"] = used / hitCount;
    state.counters["with slack"] = held / hitCount;
    if (used > perHit * hitCount) {
        state.SkipWithError("a hit takes more than its record and its row");
    }
    FreeStore(&find);
}
BENCHMARK(BM_Append)->Unit(benchmark::kMillisecond)->Iterations(3);

// One page at a time, all over the list: less than a millisecond each.
void BM_Page(benchmark::State& state) {
    FindWindow* find = Filled();
    u32 first = 0;
    for (auto _ : state) {
        first = (first + 377'777) % (hitCount - pageRows);
        for (u32 row = first; row < first + pageRows; ++row) {
            for (u32 column = 0; column < columnCount; ++column) {
                char text[260] = "";
                LVITEMA item = {};
                item.mask = LVIF_TEXT | LVIF_IMAGE;
                item.iItem = static_cast<int>(row);
                item.iSubItem = static_cast<int>(column);
                item.pszText = text;
                item.cchTextMax = sizeof text;
                FillFindCell(find, &item);
                benchmark::DoNotOptimize(text);
            }
        }
    }
}
BENCHMARK(BM_Page)->Unit(benchmark::kMillisecond);

// The record table, and the states of all rows: less than a second.
void BM_EndOfRun(benchmark::State& state) {
    FindWindow* find = Filled();
    for (auto _ : state) {
        void* table = find->recordTable;
        CoreFree(&table);
        find->recordTable = nullptr;
        UpdateRecordTable(find);
    }
}
BENCHMARK(BM_EndOfRun)->Unit(benchmark::kMillisecond);

// Every hit asks for its folder, as the exports do.
void BM_Folders(benchmark::State& state) {
    const FindWindow* find = Filled();
    for (auto _ : state) {
        for (u32 row = 0; row < hitCount; ++row) {
            benchmark::DoNotOptimize(DirectoryByNumber(find, HitAtRow(find, row)->directoryNumber));
        }
    }
    state.counters["hits"] =
        benchmark::Counter(hitCount, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_Folders)->Unit(benchmark::kMillisecond);

/// An export into nothing, of `hits` rows. Time per hit stays the same where it is linear.
void BM_Export(benchmark::State& state, void (*write)(FindWindow*, const char*)) {
    FindWindow* find = Filled();
    UpdateRecordTable(find);
    const HostWord all = find->index.count;
    find->index.count = static_cast<HostWord>(state.range(0));
    for (auto _ : state) {
        write(find, "/dev/null");
    }
    find->index.count = all;
    state.counters["hits"] = benchmark::Counter(static_cast<double>(state.range(0)),
                                                benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK_CAPTURE(BM_Export, Text, WriteFoundText)
    ->Unit(benchmark::kMillisecond)
    ->Arg(hitCount / 10)
    ->Arg(hitCount);
BENCHMARK_CAPTURE(BM_Export, Csv, WriteFoundCsv)->Unit(benchmark::kMillisecond)->Arg(hitCount);
BENCHMARK_CAPTURE(BM_Export, Html, WriteFoundHtml)
    ->Unit(benchmark::kMillisecond)
    ->Arg(hitCount / 10)
    ->Arg(hitCount);

}  // namespace

int main(int count, char** arguments) {
    hostkit::MessageLoop loop;
    hostkit::Host host(loop, hostkit::HostOptions());
    host.Attach(f, GetModuleHandleA(nullptr));
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
}
