// How wide the columns of a report are on a display of characters.
//
// Pixels are a wish. As long as there is room every column shows its rows whole, and what is left
// goes to the columns that were wished wider. Where there is too little, the widest ones give way,
// numbers last. A column that a person has given a width keeps it.

#include "user/list_view.h"

#include <algorithm>

namespace quennet::user {

namespace {

constexpr int narrowest = 8;  // that a column gets by giving way
constexpr int gap = 1;        // between what two columns show

/// Gives one cell after another to, or takes it from, the column that `next` finds.
template <typename Next>
void Spend(int& cells, int step, Next next) {
    while (cells > 0) {
        ListColumn* column = next();
        if (!column) {
            return;
        }
        column->cells += step;
        --cells;
    }
}

/// The column with the least of `amount`, which counts when it is above 0.
template <typename Amount>
ListColumn* Least(std::vector<ListColumn>& columns, Amount amount) {
    ListColumn* found = nullptr;
    for (ListColumn& column : columns) {
        if (amount(column) > 0 && (!found || amount(column) < amount(*found))) {
            found = &column;
        }
    }
    return found;
}

}  // namespace

void NoteNeed(ListColumn& column, int cells) {
    column.need = std::max(column.need, cells + gap);
}

void ForgetNeeds(ListViewState& list) {
    for (ListColumn& column : list.columns) {
        column.need = 0;
    }
}

void FitColumnsTo(ListViewState& list, int room) {
    const auto numberOf = [&](const ListColumn& column) {
        return static_cast<INT>(&column - list.columns.data());
    };
    const auto isNumber = [&](const ListColumn& column) {
        return IsNumberColumn(list, numberOf(column));
    };
    int total = 0;
    for (ListColumn& column : list.columns) {
        const int wish = CellsOfWidth(column.width);
        const bool keeps = column.chosen || wish == 0;
        column.need = std::max(column.need, ColumnsOf(TitleOf(list, numberOf(column))) + gap);
        column.cells = keeps ? wish : isNumber(column) ? column.need : std::min(column.need, wish);
        total += column.cells;
    }
    int surplus = total - room;
    Spend(surplus, -1, [&] {
        return Least(list.columns, [&](const ListColumn& column) {
            const bool gives = !column.chosen && !isNumber(column) && column.cells > narrowest;
            return gives ? 1'000'000 - column.cells : 0;
        });
    });
    int spare = room - total;
    const auto lacks = [](const ListColumn& column, int wanted) {
        return column.chosen || column.width == 0 ? 0 : wanted - column.cells;
    };
    Spend(spare, 1, [&] {
        return Least(list.columns,
                     [&](const ListColumn& column) { return lacks(column, column.need); });
    });
    Spend(spare, 1, [&] {
        return Least(list.columns, [&](const ListColumn& column) {
            return lacks(column, CellsOfWidth(column.width));
        });
    });
}

}  // namespace quennet::user
