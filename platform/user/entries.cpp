#include "user/entries.h"

#include "user/controls.h"

#include <algorithm>

namespace quennet::user {

namespace {

/// The first index that fits, from behind `after` round to it.
template <typename Test>
LRESULT FindBehind(LRESULT count, LRESULT after, Test fits) {
    const LRESULT first = after >= 0 && after < count ? after + 1 : 0;
    for (LRESULT step = 0; step < count; ++step) {
        const LRESULT index = (first + step) % count;
        if (fits(static_cast<std::size_t>(index))) {
            return index;
        }
    }
    return LB_ERR;
}

}  // namespace

LRESULT Entries::Insert(LRESULT index, const char* text) {
    const LRESULT place = index == -1 ? Count() : index;
    if (place < 0 || place > Count() || !text) {
        return LB_ERR;
    }
    list.insert(list.begin() + place, Entry{text, 0});
    if (selected >= place) {
        ++selected;
    }
    return place;
}

LRESULT Entries::Delete(WPARAM index) {
    if (!At(index)) {
        return LB_ERR;
    }
    const auto place = static_cast<LRESULT>(index);
    list.erase(list.begin() + place);
    if (selected == place) {
        selected = LB_ERR;
    } else if (selected > place) {
        --selected;
    }
    return Count();
}

void Entries::Clear() {
    list.clear();
    selected = LB_ERR;
    top = 0;
}

LRESULT Entries::Select(WPARAM index) {
    const bool valid = At(index) != nullptr;
    if (valid || static_cast<INT>(index) == -1) {
        selected = valid ? static_cast<LRESULT>(index) : LB_ERR;
    }
    return valid ? selected : LB_ERR;
}

LRESULT Entries::FindExact(INT after, const char* text) const {
    return FindBehind(Count(), after, [&](std::size_t index) {
        return text && lstrcmpiA(list[index].text.c_str(), text) == 0;
    });
}

LRESULT Entries::FindFirst(LRESULT after, unsigned char character) const {
    const char wanted[] = {static_cast<char>(character), '\0'};
    return FindBehind(Count(), after, [&](std::size_t index) {
        return lstrcmpiA(list[index].text.substr(0, 1).c_str(), wanted) == 0;
    });
}

LRESULT Entries::TextLength(WPARAM index) {
    const Entry* entry = At(index);
    return entry ? static_cast<LRESULT>(entry->text.size()) : LB_ERR;
}

LRESULT Entries::CopyTextOf(WPARAM index, char* buffer) {
    const Entry* entry = At(index);
    return entry ? CopyText(entry->text.data(), entry->text.size(), buffer, entry->text.size() + 1)
                 : LB_ERR;
}

LRESULT Entries::Data(WPARAM index) {
    const Entry* entry = At(index);
    return entry ? entry->data : LB_ERR;
}

LRESULT Entries::SetData(WPARAM index, LPARAM data) {
    Entry* entry = At(index);
    if (!entry) {
        return LB_ERR;
    }
    entry->data = data;
    return LB_OKAY;
}

void Entries::SetTop(LRESULT wanted, LRESULT rows) {
    top = std::clamp<LRESULT>(wanted, 0, std::max<LRESULT>(0, Count() - rows));
}

void Entries::BringIntoSight(LRESULT index, LRESULT rows) {
    SetTop(std::max(index - rows + 1, std::min(top, index)), rows);
}

LRESULT Entries::TargetOfKey(WPARAM key, LRESULT rows) const {
    const LRESULT last = Count() - 1;
    const auto to = [&](LRESULT index) {
        return last < 0 ? -1 : std::clamp<LRESULT>(index, 0, last);
    };
    switch (key) {
        case VK_UP:
            return to(selected - 1);
        case VK_DOWN:
            return to(selected + 1);
        case VK_PRIOR:
            return to(selected - rows);
        case VK_NEXT:
            return to(selected + rows);
        case VK_HOME:
            return to(0);
        case VK_END:
            return to(last);
        default:
            return -1;
    }
}

void DrawEntries(const Entries& entries, Canvas& canvas, const Area& area, Ink ink) {
    const int end = area.Right() - (entries.Count() > area.height ? 1 : 0);
    canvas.Fill(area, U' ', ink);
    for (int row = 0; row < area.height; ++row) {
        const LRESULT index = entries.top + row;
        if (index >= entries.Count()) {
            break;
        }
        const bool selected = index == entries.selected;
        const Ink selection = canvas.Focused() ? Ink::selection : Ink::selectionIdle;
        const Ink own = selected && ink != Ink::disabled ? selection : ink;
        canvas.Fill({area.left, area.top + row, end - area.left, 1}, U' ', own);
        canvas.Text(area.left, area.top + row, entries.list[static_cast<std::size_t>(index)].text,
                    own, end);
    }
    canvas.ScrollBar(area.Right() - 1, area.top, area.height, static_cast<long>(entries.Count()),
                     static_cast<long>(entries.top));
}

LRESULT WheelEntries(WPARAM wParam) {
    constexpr int entriesATurn = 3;
    return static_cast<SHORT>(HIWORD(wParam)) / WHEEL_DELTA * entriesATurn;
}

}  // namespace quennet::user
