// The order in which a person has a report's rows shown.
//
// The owner does not hear of it: rows keep their numbers in all messages. Inside the control a row
// is known by the place that it is shown at (`focused`, `selected`, `top` ...); what comes from the
// owner or goes there passes RowAt and PlaceOf. A new count of rows gives the owner's order back.

#include "user/display_calls.h"
#include "user/list_view.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace quennet::user {

namespace {

struct Key {
    std::string text;
    INT row;
};

char LowerOf(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
}

/// Numbers by their digits, so that longer ones are larger, all else without regard to case.
std::string KeyOf(std::string_view text, bool isNumber) {
    std::string key;
    for (const char letter : text) {
        if (!isNumber || (letter >= '0' && letter <= '9')) {
            key += LowerOf(letter);
        }
    }
    return key;
}

/// Gives the states of rows their places, or takes them back.
void MoveStates(ListViewState& list, const std::vector<INT>& target) {
    const auto moved = [&](INT row) {
        return list.Has(row) ? target[static_cast<std::size_t>(row)] : row;
    };
    RowSet selected;
    for (INT row = list.selected.Next(0); row >= 0; row = list.selected.Next(row + 1)) {
        selected.Set(moved(row), moved(row), true);
    }
    list.selected = selected;
    list.focused = moved(list.focused);
    list.mark = moved(list.mark);
}

}  // namespace

void ShowUnsorted(ListViewState& list) {
    if (!list.rowAt.empty()) {
        MoveStates(list, list.rowAt);
        list.rowAt.clear();
        list.placeOf.clear();
    }
    list.sortedBy = -1;
}

void SortRows(HWND window, ListViewState& list, INT column) {
    const bool falls = list.sortedBy == column && !list.sortFalls;
    ShowUnsorted(list);
    const bool isNumber = IsNumberColumn(list, column);
    std::vector<Key> keys;
    for (INT row = 0; list.Has(row); ++row) {
        keys.push_back({KeyOf(CellText(window, row, column, LVIF_TEXT).Text(), isNumber), row});
    }
    std::ranges::stable_sort(keys, [&](const Key& one, const Key& other) {
        const Key& first = falls ? other : one;
        const Key& second = falls ? one : other;
        return isNumber && first.text.size() != second.text.size()
                   ? first.text.size() < second.text.size()
                   : first.text < second.text;
    });
    if (keys.size() != static_cast<std::size_t>(list.count)) {
        return;  // the owner has changed the list while it was asked
    }
    list.placeOf.resize(keys.size());
    for (std::size_t place = 0; place < keys.size(); ++place) {
        list.rowAt.push_back(keys[place].row);
        list.placeOf[static_cast<std::size_t>(keys[place].row)] = static_cast<INT>(place);
    }
    MoveStates(list, list.placeOf);
    list.sortedBy = column;
    list.sortFalls = falls;
    BringIntoSight(window, list, std::max(0, list.focused));
    TellChanged(window);
}

}  // namespace quennet::user
