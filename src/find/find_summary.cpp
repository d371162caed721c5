#include "find/find_summary.h"

#include <commctrl.h>

#include <cstring>

#include "host/services.h"

namespace quennet {

namespace {

constexpr u32 stoppedText = 0x13C3;

struct SummaryItem {
    u64 FindCounters::*count;
    u32 one;   // text id of the word for one
    u32 many;  // and for several
};

constexpr SummaryItem summaryItems[] = {
    {&FindCounters::files, 0x157F, 0x1580},
    {&FindCounters::folders, 0x1581, 0x1582},
    {&FindCounters::bytes, 0x1583, 0x13C2},
};

void Add(char* text, const char* added) {
    ShellAppendText(text, added, findSummarySize);
}

void AddWord(char* text, u32 textId) {
    char word[findSummarySize] = "";
    CoreLoadText(textId, word, sizeof word);
    Add(text, word);
}

void AddNumber(char* text, u64 number) {
    char digits[64] = "";
    ShellFormatNumber(&number, digits);
    Add(text, digits);
}

}  // namespace

void BuildFindSummary(char* text, const FindCounters& counters, u16 head, bool stopped) {
    text[0] = 0;
    const char* joint = " ";
    for (const SummaryItem& item : summaryItems) {
        const u64 count = counters.*item.count;
        if (count == 0) {
            continue;
        }
        if (text[0] == 0) {
            CoreLoadText(head, text, findSummarySize);
        }
        Add(text, joint);
        AddNumber(text, count);
        Add(text, " ");
        AddWord(text, count == 1 ? item.one : item.many);
        joint = ", ";
    }
    if (stopped && head != selectionSummary && std::strlen(text) + 1 < findSummarySize) {
        Add(text, " - ");
        AddWord(text, stoppedText);
    }
}

void ShowFindSummary(FindWindow* find, const FindCounters& counters, u16 head) {
    char text[findSummarySize];
    BuildFindSummary(text, counters, head, find->stop.IsSet());
    ShowFindPane(find, head == selectionSummary ? 0 : 1, text);
}

void ShowFindPane(const FindWindow* find, u32 pane, const char* text) {
    SendMessageA(find->statusBar, SB_SETTEXTA, pane, reinterpret_cast<LPARAM>(text));
}

}  // namespace quennet
