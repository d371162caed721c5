// The list box control with single selection. Only what a person does with mouse and keys is told
// to the parent.

#include "quennet_canvas.h"
#include "user/controls.h"
#include "user/desktop.h"
#include "user/display_calls.h"
#include "user/entries.h"

#include <algorithm>

namespace quennet::user {

namespace {

struct ListBoxState : ControlState {
    Entries entries;
    bool clickChanged = false;  // between press and release of the mouse
};

LRESULT EntriesInSight(HWND window) {
    RECT place = {};
    GetWindowRect(window, &place);
    return std::max<LRESULT>(1, (place.bottom - place.top) / characterHeight);
}

void Notify(HWND window, WORD code) {
    if ((StyleOf(window) & LBS_NOTIFY) != 0) {
        NotifyParent(window, code);
    }
}

/// After a change of the entries; `result` is the message's.
LRESULT Changed(HWND window, ListBoxState& list, LRESULT result) {
    if (result != LB_ERR) {
        list.entries.SetTop(list.entries.top, EntriesInSight(window));
        TellChanged(window);
    }
    return result;
}

LRESULT Select(HWND window, ListBoxState& list, WPARAM index) {
    const LRESULT selected = list.entries.Select(index);
    if (selected != LB_ERR) {
        list.entries.BringIntoSight(selected, EntriesInSight(window));
    }
    TellChanged(window);
    return selected;
}

LRESULT EntryRect(HWND window, ListBoxState& list, WPARAM index, RECT* area) {
    if (!list.entries.At(index)) {
        return LB_ERR;
    }
    RECT place = {};
    GetWindowRect(window, &place);
    const auto row = static_cast<LONG>(static_cast<LRESULT>(index) - list.entries.top);
    *area = RECT{0, row * characterHeight, place.right - place.left, (row + 1) * characterHeight};
    return LB_OKAY;
}

/// What a person chose; true when it was not selected before.
bool Choose(HWND window, ListBoxState& list, LRESULT index) {
    if (!list.entries.At(static_cast<WPARAM>(index)) || index == list.entries.selected) {
        return false;
    }
    Select(window, list, static_cast<WPARAM>(index));
    return true;
}

void ChooseAndTell(HWND window, ListBoxState& list, LRESULT index) {
    if (Choose(window, list, index)) {
        Notify(window, LBN_SELCHANGE);
    }
}

LRESULT EntryAt(const ListBoxState& list, LPARAM point) {
    return list.entries.top + static_cast<SHORT>(HIWORD(point)) / characterHeight;
}

void Draw(HWND window, const ListBoxState& list, Canvas& canvas) {
    const auto rows = static_cast<int>(EntriesInSight(window));
    DrawEntries(list.entries, canvas, {0, 0, canvas.Width(), rows},
                IsWindowEnabled(window) ? Ink::list : Ink::disabled);
    const LRESULT shown = std::max<LRESULT>(0, list.entries.selected - list.entries.top);
    canvas.Caret(0, static_cast<int>(std::min<LRESULT>(shown, rows - 1)));
}

LRESULT HandleContent(HWND window, ListBoxState& list, UINT message, WPARAM wParam, LPARAM lParam) {
    Entries& entries = list.entries;
    const auto text = reinterpret_cast<const char*>(lParam);
    switch (message) {
        case LB_ADDSTRING:
            return Changed(window, list, entries.Insert(-1, text));
        case LB_INSERTSTRING:
            return Changed(window, list, entries.Insert(static_cast<INT>(wParam), text));
        case LB_DELETESTRING:
            return Changed(window, list, entries.Delete(wParam));
        case LB_RESETCONTENT:
            entries.Clear();
            return Changed(window, list, LB_OKAY);
        case LB_GETTEXT:
            return entries.CopyTextOf(wParam, reinterpret_cast<char*>(lParam));
        case LB_GETTEXTLEN:
            return entries.TextLength(wParam);
        case LB_GETITEMDATA:
            return entries.Data(wParam);
        case LB_SETITEMDATA:
            return entries.SetData(wParam, lParam);
        case LB_FINDSTRINGEXACT:
            return entries.FindExact(static_cast<INT>(wParam), text);
        case LB_GETITEMRECT:
            return EntryRect(window, list, wParam, reinterpret_cast<RECT*>(lParam));
        case LB_GETCOUNT:
            return entries.Count();
        case LB_GETCURSEL:
            return entries.selected;
        case LB_SETCURSEL:
            return Select(window, list, wParam);
        case LB_GETTOPINDEX:
            return entries.top;
        case LB_SETTOPINDEX:
            if (!entries.At(wParam)) {
                return LB_ERR;
            }
            entries.top = static_cast<LRESULT>(wParam);
            return Changed(window, list, LB_OKAY);
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

LRESULT Handle(HWND window, ListBoxState& list, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_GETDLGCODE:
            return DLGC_WANTARROWS | DLGC_WANTCHARS;
        case QUENNET_DRAW:
            if (wParam == 0) {
                Draw(window, list, *reinterpret_cast<Canvas*>(lParam));
            }
            return 0;
        case WM_SIZE:
            list.entries.BringIntoSight(std::max(list.entries.selected, list.entries.top),
                                        EntriesInSight(window));
            return 0;
        case WM_MOUSEWHEEL:
            list.entries.SetTop(list.entries.top - WheelEntries(wParam), EntriesInSight(window));
            TellChanged(window);
            return 0;
        case WM_LBUTTONDOWN:
            SetFocus(window);
            list.clickChanged = Choose(window, list, EntryAt(list, lParam));
            return 0;
        case WM_LBUTTONUP:
            if (std::exchange(list.clickChanged, false)) {
                Notify(window, LBN_SELCHANGE);
            }
            return 0;
        case WM_LBUTTONDBLCLK:
            if (list.entries.At(static_cast<WPARAM>(EntryAt(list, lParam)))) {
                Notify(window, LBN_DBLCLK);
            }
            return 0;
        case WM_KEYDOWN:
            ChooseAndTell(window, list, list.entries.TargetOfKey(wParam, EntriesInSight(window)));
            return 0;
        case WM_CHAR:
            ChooseAndTell(
                window, list,
                list.entries.FindFirst(list.entries.selected, static_cast<unsigned char>(wParam)));
            return 0;
        case WM_SETFOCUS:
            Notify(window, LBN_SETFOCUS);
            return 0;
        case WM_KILLFOCUS:
            Notify(window, LBN_KILLFOCUS);
            return 0;
        default:
            return HandleContent(window, list, message, wParam, lParam);
    }
}

}  // namespace

extern "C" LRESULT CALLBACK ListBoxProcedure(HWND window, UINT message, WPARAM wParam,
                                             LPARAM lParam) {
    if (message == WM_NCCREATE) {
        SetState(window, std::make_shared<ListBoxState>());
    }
    const auto list = StateOf<ListBoxState>(window);
    return list ? Handle(window, *list, message, wParam, lParam)
                : DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace quennet::user
