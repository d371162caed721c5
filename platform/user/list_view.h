#pragma once
// The list view, and how it is put together.
//
// Rows are the owner's: the control knows how many there are, which one has the focus and, a bit
// each, which ones are selected, and in which order a person has them shown. Everything that it
// shows it asks for while it paints. All of it is touched on the control's own thread alone.
//
//   list_view.cpp            messages
//   list_view_rows.cpp       states of rows, and who is told of their changes
//   list_view_sorting.cpp    the order in which rows are shown
//   list_view_columns.cpp    columns of the report
//   list_view_widths.cpp     how wide these are on the display
//   list_view_layout.cpp     where rows stand in the four views, and what is in sight
//   list_view_drawing.cpp    asking and painting
//   list_view_input.cpp      keys and clicks

#include "commctrl.h"
#include "quennet_canvas.h"
#include "user/controls.h"
#include "user/desktop.h"
#include "user/row_set.h"

#include <string>
#include <vector>

namespace quennet::user {

struct ListColumn {
    std::string title;
    INT width = 0;  // pixels
    INT format = 0;
    INT subItem = 0;
    INT image = 0;
    bool chosen = false;  // the width, by a person
    int need = 0;         // cells that what it has shown takes, with a gap
    int cells = 0;        // as it was drawn last, 0 before
};

struct ListViewState : ControlState {
    INT count = 0;
    RowSet selected;
    INT focused = -1;
    INT mark = -1;  // where a range selected with Shift begins
    INT top = 0;    // a row of the first line in sight
    INT left = 0;   // characters of the report that are out of sight
    DWORD extendedStyle = 0;
    HIMAGELIST images[3] = {};
    std::vector<ListColumn> columns;
    std::vector<INT> order;  // columns from left to right
    INT itemWidth = 0;       // in LVS_LIST, in pixels; 0 is the usual one
    INT column = 0;          // that keys make wider or narrower
    INT sortedBy = -1;       // a column, -1 in the owner's order
    bool sortFalls = false;
    std::vector<INT> rowAt;    // the owner's row at each place; empty in the owner's order
    std::vector<INT> placeOf;  // and the other way round

    bool Has(INT row) const { return row >= 0 && row < count; }
    INT RowAt(INT place) const {
        return rowAt.empty() || !Has(place) ? place : rowAt[static_cast<std::size_t>(place)];
    }
    INT PlaceOf(INT row) const {
        return placeOf.empty() || !Has(row) ? row : placeOf[static_cast<std::size_t>(row)];
    }
};

// ---- Rows -------------------------------------------------------------------------------------

/// LVIS_... of a row, as far as the mask has them.
UINT RowState(const ListViewState& list, INT row, UINT mask);
/// Sets the bits of the mask, of all rows for -1. False for no such row.
bool SetRowState(HWND window, ListViewState& list, INT row, UINT state, UINT mask);
/// A person's choice: this row alone; all from the mark up to it; or its selection switched.
void SelectOnly(HWND window, ListViewState& list, INT row);
void SelectUpTo(HWND window, ListViewState& list, INT row);
void SwitchSelection(HWND window, ListViewState& list, INT row);
void DeselectAll(HWND window, ListViewState& list);
void FocusRow(HWND window, ListViewState& list, INT row);
/// LVM_GETNEXTITEM; -1 for none.
INT NextRow(const ListViewState& list, INT after, UINT flags);
void SetRowCount(HWND window, ListViewState& list, INT count);
void DeleteAllRows(HWND window, ListViewState& list);

/// Shows the rows in the order of a column's texts, the other way round when they stand in it
/// already; and in the owner's order.
void SortRows(HWND window, ListViewState& list, INT column);
void ShowUnsorted(ListViewState& list);

/// Sends WM_NOTIFY with a record that begins with a NMHDR, which this fills in.
LRESULT NotifyWith(HWND window, UINT code, NMHDR* header);

// ---- Columns ----------------------------------------------------------------------------------

/// False for messages that are none of the columns'.
bool HandleColumnMessage(HWND window, ListViewState& list, UINT message, WPARAM wParam,
                         LPARAM lParam, LRESULT* result);
/// Right in its column, as numbers stand.
bool IsNumberColumn(const ListViewState& list, INT column);
/// With the mark of the order that the rows are shown in.
std::string TitleOf(const ListViewState& list, INT column);
int CellsOfWidth(INT pixels);
/// As it is on the display.
int CellsOfColumn(const ListColumn& column);
/// A text of so many cells is to be shown in the column; and what was noted is forgotten.
void NoteNeed(ListColumn& column, int cells);
void ForgetNeeds(ListViewState& list);
/// Shares a report's cells out among its columns.
void FitColumnsTo(ListViewState& list, int room);
/// A person's choice, which the display keeps to.
void ChooseWidth(HWND window, ListViewState& list, INT column, int cells);
/// Makes the column as wide as what it shows.
void FitColumn(HWND window, ListViewState& list, INT column, bool withTitle);

// ---- Layout -----------------------------------------------------------------------------------

/// In cells. Rows stand in lines; whole lines scroll. In LVS_LIST a line goes down, else across.
struct ListLayout {
    DWORD view = LVS_REPORT;
    int width = 0;   // without the scroll bar
    int height = 0;  // without the titles
    int titles = 0;  // rows of them
    int itemWidth = 1;
    int itemHeight = 1;
    int perLine = 1;      // rows in a line
    int lines = 1;        // whole ones in sight
    int linesOfList = 0;  // all of them
    int topLine = 0;
    bool hasBar = false;

    int LineOf(int row) const { return row / perLine; }
    /// Where the row is painted, below the titles.
    Area AreaOf(int row) const;
    int FirstInSight() const { return topLine * perLine; }
};

ListLayout LayoutOf(HWND window, const ListViewState& list);
ListLayout LayoutOf(HWND window, const ListViewState& list, int width, int height);
void ScrollToLine(ListViewState& list, const ListLayout& layout, int line);
void BringIntoSight(HWND window, ListViewState& list, INT row);

// ---- Asking and painting ----------------------------------------------------------------------

/// What the owner says of a cell of the list.
class CellText {
  public:
    CellText(HWND window, INT row, INT subItem, UINT mask);
    const char* Text() const { return info_.item.pszText ? info_.item.pszText : ""; }
    const LVITEMA& Item() const { return info_.item; }

  private:
    char buffer_[520] = {};
    NMLVDISPINFOA info_ = {};
};

void DrawList(HWND window, ListViewState& list, Canvas& canvas);

// ---- Keys and clicks --------------------------------------------------------------------------

/// False for messages that are neither.
bool HandleListInput(HWND window, ListViewState& list, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace quennet::user
