// The edit control, one line. Every change of its text is told to the parent before the message
// that made it returns; the control's own state is settled before that, so the parent may set the
// text again from inside.

#include "quennet_canvas.h"
#include "user/characters.h"
#include "user/controls.h"
#include "user/desktop.h"
#include "user/display_calls.h"

#include <algorithm>

namespace quennet::user {

namespace {

constexpr std::size_t limitAtFirst = 0x7FFF;
constexpr std::size_t limitAtMost = 0x7FFFFFFE;

struct EditState : ControlState {
    std::string text;
    std::size_t limit = limitAtFirst;  // for typing alone
    std::size_t anchor = 0;            // the selection lies between anchor and caret
    std::size_t caret = 0;
    char passwordCharacter = '\0';
    int firstColumn = 0;  // in sight, while it has the focus

    std::size_t First() const { return std::min(anchor, caret); }
    std::size_t Last() const { return std::max(anchor, caret); }
};

void TellChange(HWND window) {
    TellChanged(window);
    NotifyParent(window, EN_UPDATE);
    NotifyParent(window, EN_CHANGE);
}

LRESULT SetText(HWND window, EditState& edit, const char* text) {
    edit.text = text ? text : "";
    edit.anchor = edit.caret = 0;
    TellChange(window);
    return TRUE;
}

/// Puts the text in the selection's place, as much of it as the limit leaves room for.
void Replace(HWND window, EditState& edit, const std::string& text) {
    const std::size_t kept = edit.text.size() - (edit.Last() - edit.First());
    const std::size_t room = edit.limit > kept ? edit.limit - kept : 0;
    const std::size_t taken = std::min(text.size(), room);
    if (edit.First() != edit.Last() || taken > 0) {
        edit.text.replace(edit.First(), edit.Last() - edit.First(), text, 0, taken);
        edit.anchor = edit.caret = edit.First() + taken;
        TellChange(window);
    }
    if (taken < text.size()) {
        NotifyParent(window, EN_MAXTEXT);
    }
}

/// Takes back the bytes of a typed character whose next byte finds no room; false when there are
/// none.
bool DropUnfinished(HWND window, EditState& edit, unsigned char next) {
    const std::size_t unfinished =
        UnfinishedBytes(std::string_view(edit.text).substr(0, edit.caret));
    if (edit.anchor != edit.caret || edit.text.size() < edit.limit || (next & 0xC0) != 0x80 ||
        unfinished == 0) {
        return false;
    }
    edit.caret -= unfinished;
    edit.anchor = edit.caret;
    edit.text.erase(edit.caret, unfinished);
    TellChange(window);
    NotifyParent(window, EN_MAXTEXT);
    return true;
}

bool IsReadOnly(HWND window) {
    return (StyleOf(window) & ES_READONLY) != 0;
}

/// Deletes the selection, else the character on one side of the caret.
void Erase(HWND window, EditState& edit, bool behind) {
    if (edit.anchor == edit.caret) {
        edit.anchor = behind ? BehindCharacter(edit.text, edit.caret)
                             : BeforeCharacter(edit.text, edit.caret);
    }
    Replace(window, edit, "");
}

void Type(HWND window, EditState& edit, WPARAM character) {
    constexpr WPARAM deleteCharacter = 0x7F;
    if (IsReadOnly(window)) {
        return;
    }
    if (character == VK_BACK) {
        Erase(window, edit, false);
    } else if (character >= ' ' && character != deleteCharacter && character <= 0xFF) {
        if (!DropUnfinished(window, edit, static_cast<unsigned char>(character))) {
            Replace(window, edit, std::string(1, static_cast<char>(character)));
        }
    }
}

void MoveCaret(HWND window, EditState& edit, std::size_t position) {
    edit.caret = position;
    if (GetKeyState(VK_SHIFT) >= 0) {
        edit.anchor = position;
    }
    TellChanged(window);
}

void HandleKey(HWND window, EditState& edit, WPARAM key) {
    switch (key) {
        case VK_LEFT:
            return MoveCaret(window, edit, BeforeCharacter(edit.text, edit.caret));
        case VK_RIGHT:
            return MoveCaret(window, edit, BehindCharacter(edit.text, edit.caret));
        case VK_HOME:
            return MoveCaret(window, edit, 0);
        case VK_END:
            return MoveCaret(window, edit, edit.text.size());
        case VK_DELETE:
            if (!IsReadOnly(window)) {
                Erase(window, edit, true);
            }
            return;
        default:
            return;
    }
}

/// An end of -1 is the end of the text; a start of -1 leaves only the caret.
void SelectText(HWND window, EditState& edit, INT start, INT end) {
    const auto within = [&](INT position) {
        return position < 0 ? edit.text.size()
                            : std::min(static_cast<std::size_t>(position), edit.text.size());
    };
    edit.caret = start < 0 ? edit.caret : within(end);
    edit.anchor = start < 0 ? edit.caret : within(start);
    TellChanged(window);
}

LRESULT Selection(const EditState& edit, WPARAM first, LPARAM last) {
    if (first != 0) {
        *reinterpret_cast<DWORD*>(first) = static_cast<DWORD>(edit.First());
    }
    if (last != 0) {
        *reinterpret_cast<DWORD*>(last) = static_cast<DWORD>(edit.Last());
    }
    constexpr std::size_t highestWord = 0xFFFF;
    return edit.Last() > highestWord ? -1 : MAKELONG(edit.First(), edit.Last());
}

void SetPasswordCharacter(HWND window, EditState& edit, WPARAM character) {
    edit.passwordCharacter = static_cast<char>(character);
    ChangeStyle(window, ES_PASSWORD, character != 0);
    TellChanged(window);
}

LRESULT HandleSetting(HWND window, EditState& edit, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case EM_LIMITTEXT:
            edit.limit = wParam == 0 ? limitAtMost : std::min<std::size_t>(wParam, limitAtMost);
            return TRUE;
        case EM_GETLIMITTEXT:
            return static_cast<LRESULT>(edit.limit);
        case EM_SETPASSWORDCHAR:
            SetPasswordCharacter(window, edit, wParam);
            return TRUE;
        case EM_GETPASSWORDCHAR:
            return static_cast<unsigned char>(edit.passwordCharacter);
        case EM_SETREADONLY:
            ChangeStyle(window, ES_READONLY, wParam != 0);
            TellChanged(window);
            return TRUE;
        case EM_SETSEL:
            SelectText(window, edit, static_cast<INT>(wParam), static_cast<INT>(lParam));
            return TRUE;
        case EM_GETSEL:
            return Selection(edit, wParam, lParam);
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

/// What stands on the screen for the first `end` bytes of the text.
std::string Shown(const EditState& edit, std::size_t end) {
    if (edit.passwordCharacter == '\0') {
        return edit.text.substr(0, end);
    }
    std::string echo;
    for (std::size_t place = 0; place < end; place = BehindCharacter(edit.text, place)) {
        echo += edit.passwordCharacter;
    }
    return echo;
}

int ColumnOf(const EditState& edit, std::size_t place) {
    return ColumnsOf(Shown(edit, place));
}

/// A click puts the caret in front of the character that it hits.
void PlaceCaret(HWND window, EditState& edit, LPARAM point) {
    const int column = edit.firstColumn + static_cast<SHORT>(LOWORD(point)) / cellWidth;
    std::size_t place = 0;
    while (place < edit.text.size() &&
           ColumnOf(edit, BehindCharacter(edit.text, place)) <= column) {
        place = BehindCharacter(edit.text, place);
    }
    edit.caret = edit.anchor = place;
    TellChanged(window);
}

Ink InkOf(HWND window) {
    if (!IsWindowEnabled(window)) {
        return Ink::disabled;
    }
    return IsReadOnly(window) ? Ink::fieldReadOnly : Ink::field;
}

/// The caret stays in sight; without the focus the text's start does.
void Scroll(EditState& edit, const Canvas& canvas) {
    const int caret = ColumnOf(edit, edit.caret);
    const int lowest = std::max(0, caret - canvas.Width() + 1);
    edit.firstColumn = canvas.Focused() ? std::clamp(edit.firstColumn, lowest, caret) : 0;
}

void Draw(HWND window, EditState& edit, Canvas& canvas) {
    Scroll(edit, canvas);
    const Ink ink = InkOf(window);
    const std::string text = Shown(edit, edit.text.size());
    const int textEnd = canvas.Text(-edit.firstColumn, 0, text, ink, canvas.Width());
    const int rest = std::max(0, textEnd);
    canvas.Fill({rest, 0, canvas.Width() - rest, 1}, U' ',
                ink == Ink::field ? Ink::fieldRest : ink);
    if (canvas.Focused() && edit.First() != edit.Last()) {
        const std::size_t first = Shown(edit, edit.First()).size();
        const std::size_t last = Shown(edit, edit.Last()).size();
        canvas.Text(ColumnOf(edit, edit.First()) - edit.firstColumn, 0,
                    std::string_view(text).substr(first, last - first), Ink::selection,
                    canvas.Width());
    }
    canvas.Caret(ColumnOf(edit, edit.caret) - edit.firstColumn, 0);
}

LRESULT Handle(HWND window, EditState& edit, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto text = reinterpret_cast<const char*>(lParam);
    switch (message) {
        case WM_SETTEXT:
            return SetText(window, edit, text);
        case WM_GETTEXT:
            return CopyText(edit.text.data(), edit.text.size(), reinterpret_cast<char*>(lParam),
                            wParam);
        case WM_GETTEXTLENGTH:
            return static_cast<LRESULT>(edit.text.size());
        case EM_REPLACESEL:
            Replace(window, edit, text ? text : "");
            return 0;
        case WM_GETDLGCODE:
            return DLGC_WANTCHARS | DLGC_HASSETSEL | DLGC_WANTARROWS;
        case WM_CHAR:
            Type(window, edit, wParam);
            return 0;
        case WM_KEYDOWN:
            HandleKey(window, edit, wParam);
            return 0;
        case QUENNET_DRAW:
            if (wParam == 0) {
                Draw(window, edit, *reinterpret_cast<Canvas*>(lParam));
            }
            return 0;
        case WM_LBUTTONDOWN:
            SetFocus(window);
            PlaceCaret(window, edit, lParam);
            return 0;
        case WM_SETFOCUS:
            NotifyParent(window, EN_SETFOCUS);
            return 0;
        case WM_KILLFOCUS:
            NotifyParent(window, EN_KILLFOCUS);
            return 0;
        default:
            return HandleSetting(window, edit, message, wParam, lParam);
    }
}

/// Text and password style come with the window; nobody is told.
void Create(HWND window, const CREATESTRUCTA& create) {
    auto edit = std::make_shared<EditState>();
    edit->text = create.lpszName ? create.lpszName : "";
    edit->passwordCharacter = (create.style & ES_PASSWORD) != 0 ? '*' : '\0';
    SetState(window, std::move(edit));
}

}  // namespace

extern "C" LRESULT CALLBACK EditProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        Create(window, *reinterpret_cast<const CREATESTRUCTA*>(lParam));
    }
    const auto edit = StateOf<EditState>(window);
    return edit ? Handle(window, *edit, message, wParam, lParam)
                : DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace quennet::user
