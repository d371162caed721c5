// What a list view shows.

#include "shellapi.h"
#include "user/list_view.h"

#include <algorithm>

namespace quennet::user {

namespace {

class ListDrawing {
  public:
    ListDrawing(HWND window, ListViewState& list, Canvas& canvas)
        : window_(window),
          list_(list),
          canvas_(canvas),
          layout_(LayoutOf(window, list, canvas.Width(), canvas.Height())),
          first_(layout_.FirstInSight()),
          enabled_(IsWindowEnabled(window)) {
        // In part shown lines count too.
        const int lines = layout_.view == LVS_LIST
                              ? (layout_.width + layout_.itemWidth - 1) / layout_.itemWidth
                              : (layout_.height + layout_.itemHeight - 1) / layout_.itemHeight;
        end_ = std::min(list_.count, first_ + lines * layout_.perLine);
    }

    void Run() {
        canvas_.Fill({0, 0, canvas_.Width(), canvas_.Height()}, U' ', Plain());
        if (first_ < end_ && list_.rowAt.empty()) {
            NMLVCACHEHINT hint = {};
            hint.iFrom = first_;
            hint.iTo = end_ - 1;
            NotifyWith(window_, LVN_ODCACHEHINT, &hint.hdr);
        }
        if (layout_.view == LVS_REPORT) {
            AskForRows();
            FitColumnsTo(list_, layout_.width);
            list_.left = std::clamp(list_.left, 0, std::max(0, WidthOfColumns() - layout_.width));
        }
        if (layout_.titles > 0) {
            DrawTitles();
        }
        canvas_.Caret(0, layout_.titles);
        DrawRows();
        if (layout_.hasBar) {
            const int rows = layout_.height;
            canvas_.ScrollBar(canvas_.Width() - 1, layout_.titles, rows,
                              layout_.linesOfList - layout_.lines + rows, layout_.topLine);
        }
    }

  private:
    Ink Plain() const { return enabled_ ? Ink::list : Ink::disabled; }

    Ink InkOf(int row) const {
        if (!enabled_ || !list_.selected.Contains(row)) {
            return Plain();
        }
        if (canvas_.Focused()) {
            return Ink::selection;
        }
        return (StyleOf(window_) & LVS_SHOWSELALWAYS) != 0 ? Ink::selectionIdle : Plain();
    }

    /// The first column is never anything but left.
    INT AlignmentOf(const ListColumn& column) const {
        return &column == list_.columns.data() ? LVCFMT_LEFT : column.format & LVCFMT_JUSTIFYMASK;
    }

    int WidthOfColumns() const {
        int width = 0;
        for (const ListColumn& column : list_.columns) {
            width += CellsOfColumn(column);
        }
        return width;
    }

    /// Calls draw(column, place) for each column in sight, from left to right.
    template <typename Draw>
    void ForEachColumn(int y, Draw draw) const {
        // The owner may change the columns while it is asked.
        const std::vector<INT> order = list_.order;
        int x = -list_.left;
        for (std::size_t place = 0; place < order.size(); ++place) {
            const auto column = static_cast<std::size_t>(order[place]);
            if (column >= list_.columns.size()) {
                return;
            }
            const ListColumn& record = list_.columns[column];
            int width = CellsOfColumn(record);
            if (width > 0 && place + 1 == order.size() && AlignmentOf(record) == LVCFMT_LEFT) {
                width = std::max(width, layout_.width - x);
            }
            if (width > 0 && x + width > 0 && x < layout_.width) {
                draw(static_cast<INT>(column), Area{x, y, width, 1});
            }
            x += width;
        }
    }

    /// One column stays free between the texts of two columns, and a text that is cut says so.
    void DrawCell(const Area& area, std::string_view text, INT column, Ink ink) const {
        if (static_cast<std::size_t>(column) >= list_.columns.size()) {
            return;
        }
        const INT format = AlignmentOf(list_.columns[static_cast<std::size_t>(column)]);
        const int room = std::max(1, area.width - (area.Right() < layout_.width ? 1 : 0));
        const int columns = ColumnsOf(text);
        int start = 0;
        if (columns < room && format != LVCFMT_LEFT) {
            start = format == LVCFMT_RIGHT ? room - columns : (room - columns) / 2;
        }
        Canvas lines = canvas_.Part({0, 0, layout_.width, canvas_.Height()}, false);
        Canvas part = lines.Part(area, false);
        part.Text(start, 0, text, ink, room);
        if (columns > room) {
            part.Put(room - 1, 0, U'…', ink);
        }
    }

    void DrawTitles() const {
        canvas_.Fill({0, 0, canvas_.Width(), 1}, U' ', Ink::header);
        ForEachColumn(0, [&](INT column, const Area& area) {
            DrawCell(area, TitleOf(list_, column), column, Ink::header);
        });
    }

    void DrawRows() const {
        for (int row = first_; row < end_ && list_.Has(row); ++row) {
            Area area = layout_.AreaOf(row);
            area.top += layout_.titles;
            if (row == list_.focused) {
                canvas_.Caret(area.left, area.top);
            }
            if (layout_.view == LVS_REPORT) {
                DrawReportRow(row, area);
            } else {
                DrawItem(row, area);
            }
        }
    }

    UINT FirstMask() const { return LVIF_TEXT | (Images() ? LVIF_IMAGE | LVIF_INDENT : 0U); }

    HIMAGELIST Images() const {
        return list_.images[layout_.view == LVS_ICON ? LVSIL_NORMAL : LVSIL_SMALL];
    }

    /// The text of a row's first column, behind the mark of its kind.
    std::string Label(int row) const {
        const CellText cell(window_, list_.RowAt(row), 0, FirstMask());
        if (!Images()) {
            return cell.Text();
        }
        const auto indent = static_cast<std::size_t>(std::clamp(cell.Item().iIndent, 0, 20));
        return std::string(indent, ' ') + (cell.Item().iImage == QUENNET_ICON_FOLDER ? "/" : " ") +
               cell.Text();
    }

    /// What a report shows, before the widths are known that it is drawn in.
    void AskForRows() {
        for (int row = first_; row < end_ && list_.Has(row); ++row) {
            std::vector<std::string>& texts = rows_.emplace_back(list_.columns.size());
            for (std::size_t column = 0; column < texts.size(); ++column) {
                if (column >= list_.columns.size() || list_.columns[column].width == 0) {
                    continue;
                }
                const auto number = static_cast<INT>(column);
                texts[column] = column == 0
                                    ? Label(row)
                                    : CellText(window_, list_.RowAt(row), number, LVIF_TEXT).Text();
                if (column < list_.columns.size()) {  // the owner may have changed them
                    NoteNeed(list_.columns[column], ColumnsOf(texts[column]));
                }
            }
        }
    }

    void DrawReportRow(int row, const Area& area) const {
        const Ink ink = InkOf(row);
        canvas_.Fill(area, U' ', ink);
        const auto place = static_cast<std::size_t>(row - first_);
        if (place >= rows_.size()) {
            return;
        }
        const std::vector<std::string>& texts = rows_[place];
        ForEachColumn(area.top, [&](INT column, const Area& cell) {
            if (static_cast<std::size_t>(column) < texts.size()) {
                DrawCell(cell, texts[static_cast<std::size_t>(column)], column, ink);
            }
        });
    }

    void DrawItem(int row, const Area& area) const {
        const Ink ink = InkOf(row);
        const std::string label = Label(row);
        const int room = std::max(1, area.width - 1);
        const int lines = area.height > 1 ? area.height - 1 : 1;
        const std::vector<std::string> wrapped =
            lines > 1 ? WrapText(label, room) : std::vector<std::string>{label};
        Canvas part =
            canvas_.Part({0, 0, layout_.width, canvas_.Height()}, false).Part(area, false);
        for (int line = 0; line < lines && line < static_cast<int>(wrapped.size()); ++line) {
            const std::string& text = wrapped[static_cast<std::size_t>(line)];
            const int end = part.Text(0, line, text, ink, room);
            const bool more = line + 1 == lines && static_cast<int>(wrapped.size()) > lines;
            if (ColumnsOf(text) > room || more) {
                part.Put(std::min(end, room - 1), line, U'…', ink);
            }
        }
    }

    HWND window_;
    ListViewState& list_;
    Canvas& canvas_;
    ListLayout layout_;
    int first_;  // row in sight
    int end_ = 0;
    bool enabled_;
    std::vector<std::vector<std::string>> rows_;  // texts of a report's
};

}  // namespace

CellText::CellText(HWND window, INT row, INT subItem, UINT mask) {
    info_.item.mask = mask;
    info_.item.iItem = row;
    info_.item.iSubItem = subItem;
    info_.item.pszText = buffer_;
    info_.item.cchTextMax = sizeof(buffer_);
    NotifyWith(window, LVN_GETDISPINFOA, &info_.hdr);
}

void DrawList(HWND window, ListViewState& list, Canvas& canvas) {
    ListDrawing(window, list, canvas).Run();
}

}  // namespace quennet::user
