#pragma once
// The entries of a list box or of a drop-down list: texts, each with a word of the program's.

#include "quennet_canvas.h"
#include "windows.h"

#include <cstddef>
#include <string>
#include <vector>

namespace quennet::user {

struct Entry {
    std::string text;
    LPARAM data = 0;
};

/// Results are those of the controls' messages: LB_ERR, which is CB_ERR too, for a wrong index.
struct Entries {
    std::vector<Entry> list;
    LRESULT selected = LB_ERR;
    LRESULT top = 0;  // first entry in sight

    LRESULT Count() const { return static_cast<LRESULT>(list.size()); }
    /// Null when there is no such entry.
    Entry* At(WPARAM index) { return index < list.size() ? &list[index] : nullptr; }

    /// Index -1 is the end. The index that the entry has got.
    LRESULT Insert(LRESULT index, const char* text);
    /// How many are left. Nothing is selected when the selected one goes.
    LRESULT Delete(WPARAM index);
    void Clear();
    /// Index -1 takes the selection away, and is LB_ERR all the same.
    LRESULT Select(WPARAM index);

    /// The search begins behind `after` and goes round, so that it reaches `after` last. The case
    /// of letters is ignored.
    LRESULT FindExact(INT after, const char* text) const;
    /// The same for a text that begins with a character.
    LRESULT FindFirst(LRESULT after, unsigned char character) const;

    LRESULT TextLength(WPARAM index);
    LRESULT CopyTextOf(WPARAM index, char* buffer);
    LRESULT Data(WPARAM index);
    LRESULT SetData(WPARAM index, LPARAM data);

    /// Moves `top` so that as many entries as possible are in sight of `rows`.
    void SetTop(LRESULT wanted, LRESULT rows);
    void BringIntoSight(LRESULT index, LRESULT rows);
    /// Where a key moves the selection to; -1 for a key that doesn't, or when there is no entry.
    LRESULT TargetOfKey(WPARAM key, LRESULT rows) const;
};

/// Draws the entries in sight, and a bar where there are more.
void DrawEntries(const Entries& entries, Canvas& canvas, const Area& area, Ink ink);

/// How many entries a turn of the mouse wheel moves a list by.
LRESULT WheelEntries(WPARAM wParam);

}  // namespace quennet::user
