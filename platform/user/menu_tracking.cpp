// A person works a menu: a loop of its own on the window's thread, from the key or click that leads
// into the menu until an entry is chosen or the menu is left. Keys and clicks are the menu's,
// everything else goes where it belongs. The bar is the first level, each open popup one more; the
// deepest one has the keyboard.
//
// A level that is open was announced by WM_INITMENUPOPUP. Whatever is sent may change the menu or
// end the window, so entries are looked up again each time.

#include "user/characters.h"
#include "user/controls.h"
#include "user/desktop.h"
#include "user/display_calls.h"
#include "user/menu.h"

#include <algorithm>

namespace quennet::user {

namespace {

unsigned char UpperCase(WPARAM character) {
    return static_cast<unsigned char>(
        reinterpret_cast<ULONG_PTR>(CharUpperA(reinterpret_cast<LPSTR>(character & 0xFF))));
}

/// A marked letter; an entry without one goes by its first letter.
bool HasLetter(const MenuEntry& entry, unsigned char letter) {
    const std::string_view label = entry.Label();
    const unsigned char marked = MnemonicOf(label);
    if (entry.IsSeparator() || label.empty()) {
        return false;
    }
    return letter == (marked != 0 ? marked : UpperCase(static_cast<unsigned char>(label[0])));
}

/// The place of the entry with that letter, from behind `after` and round to it; -1 for none.
int FindLetter(const MenuEntries& entries, int after, unsigned char letter) {
    const int count = static_cast<int>(entries.size());
    for (int step = 1; step <= count; ++step) {
        const int place = (after + step) % count;
        if (HasLetter(entries[static_cast<std::size_t>(place)], letter)) {
            return place;
        }
    }
    return -1;
}

class Tracker {
  public:
    Tracker(HWND window, HMENU bar) : window_(window) { Open(bar); }

    /// By key: selects the first entry, or opens the one with the letter.
    void BeginWithKey(unsigned char letter) {
        const MenuEntries bar = EntriesOf(tracking_->levels.front().menu);
        const int place = letter == 0 ? Next(bar, -1, 1) : FindLetter(bar, -1, letter);
        if (place < 0) {
            return;
        }
        Begin();
        Select(place);
        if (letter != 0) {
            Enter();
        }
        Run();
    }

    void BeginWithClick(int x, int y) {
        Begin();
        Click(x, y);
        Run();
    }

  private:
    MenuLevel& Deepest() { return tracking_->levels.back(); }
    bool OnBar() const { return tracking_->levels.size() == 1; }
    bool Lasts() const { return !tracking_->ended && IsWindow(window_); }
    void End() { tracking_->ended = true; }
    void Open(HMENU menu) {
        MenuLevel level;
        level.menu = menu;
        tracking_->levels.push_back(level);
    }

    void SetTracking(std::shared_ptr<MenuTracking> tracking) const {
        DesktopLock desktop;
        if (Window* window = desktop->Find(window_)) {
            window->menuTracking = std::move(tracking);
        }
    }

    void Begin() {
        SetTracking(tracking_);
        SetCapture(window_);
        SendMessageA(window_, WM_ENTERMENULOOP, FALSE, 0);
        SendMessageA(window_, WM_INITMENU, reinterpret_cast<WPARAM>(tracking_->levels.front().menu),
                     0);
    }

    void Run() {
        MSG message = {};
        while (Lasts()) {
            if (GetMessageA(&message, nullptr, 0, 0) == 0) {
                PostQuitMessage(static_cast<INT>(message.wParam));
                End();
            } else if (!Take(message)) {
                TranslateMessage(&message);
                DispatchMessageA(&message);
                // A dialog or a control has taken over.
                tracking_->ended = tracking_->ended || GetCapture() != window_;
            }
        }
        if (GetCapture() == window_) {
            ReleaseCapture();
        }
        SetTracking(nullptr);
        TellChanged(window_);
        SendMessageA(window_, WM_EXITMENULOOP, FALSE, 0);
        if (tracking_->chosen != 0) {
            PostMessageA(window_, WM_COMMAND, MAKEWPARAM(tracking_->chosen, 0), 0);
        }
    }

    /// False for a message that is not the menu's.
    bool Take(const MSG& message) {
        switch (message.message) {
            case WM_KEYDOWN:
            case WM_SYSKEYDOWN:
                if (message.message == WM_SYSKEYDOWN && message.wParam == VK_F4) {
                    return Leave();  // the window is to close
                }
                if (!Key(message.wParam)) {
                    TranslateMessage(&message);
                }
                return true;
            case WM_CHAR:
            case WM_SYSCHAR:
                Letter(UpperCase(message.wParam));
                return true;
            case WM_KEYUP:
            case WM_SYSKEYUP:
            case WM_MOUSEWHEEL:
                return true;
            case WM_LBUTTONDOWN:
            case WM_LBUTTONDBLCLK:
                return message.hwnd == window_ ? ClickAt(message.lParam) : Leave();
            case WM_LBUTTONUP:
                return message.hwnd == window_;
            default:
                return false;
        }
    }

    bool Leave() {
        End();
        return false;
    }

    /// Does the key do something?
    bool Key(WPARAM key) {
        switch (key) {
            case VK_ESCAPE:
                Close();
                return true;
            case VK_F10:
                End();
                return true;
            case VK_LEFT:
                Sideways(-1);
                return true;
            case VK_RIGHT:
                Sideways(1);
                return true;
            case VK_UP:
            case VK_DOWN:
                UpOrDown(key == VK_UP ? -1 : 1);
                return true;
            case VK_HOME:
                Select(Next(Entries(), -1, 1));
                return true;
            case VK_END:
                Select(Next(Entries(), static_cast<int>(Entries().size()), -1));
                return true;
            case VK_RETURN:
                Enter();
                return true;
            default:
                return false;
        }
    }

    MenuEntries Entries() { return EntriesOf(Deepest().menu); }

    /// The next entry that is no separator, round and round; -1 when there is none.
    static int Next(const MenuEntries& entries, int from, int step) {
        const int count = static_cast<int>(entries.size());
        for (int tried = 0, place = from; tried < count; ++tried) {
            place = (place + step + 2 * count) % count;
            if (!entries[static_cast<std::size_t>(place)].IsSeparator()) {
                return place;
            }
        }
        return -1;
    }

    void Select(int place) {
        Deepest().selected = place;
        TellChanged(window_);
    }

    void UpOrDown(int step) {
        if (OnBar()) {
            Enter();
        } else {
            Select(
                Next(Entries(), Deepest().selected < 0 && step < 0 ? 0 : Deepest().selected, step));
        }
    }

    /// Into a popup or out of it, where one hangs there, else along the bar.
    void Sideways(int step) {
        std::vector<MenuLevel>& levels = tracking_->levels;
        if (levels.size() > 2 && step < 0) {
            Close();
            return;
        }
        if (!OnBar() && step > 0 && PopupOf(Selected())) {
            Enter();
            return;
        }
        const bool wasOpen = !OnBar();
        levels.resize(1);
        Select(Next(Entries(), Deepest().selected, step));
        if (wasOpen) {
            Enter();
        }
    }

    void Close() {
        if (OnBar()) {
            End();
        } else {
            tracking_->levels.pop_back();
        }
        TellChanged(window_);
    }

    MenuEntry Selected() {
        const MenuEntries entries = Entries();
        const auto place = static_cast<std::size_t>(Deepest().selected);
        return place < entries.size() ? entries[place] : MenuEntry{MF_SEPARATOR, 0, nullptr, ""};
    }

    static HMENU PopupOf(const MenuEntry& entry) {
        return entry.IsEnabled() && IsMenu(entry.popup) ? entry.popup : nullptr;
    }

    /// Opens what the selected entry opens, or chooses it.
    void Enter() {
        const MenuEntry entry = Selected();
        if (const HMENU popup = PopupOf(entry)) {
            SendMessageA(window_, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(popup),
                         MAKELPARAM(Deepest().selected, 0));
            Open(popup);
            Select(Next(Entries(), -1, 1));
        } else if (entry.IsEnabled() && !entry.IsSeparator() && !entry.popup) {
            tracking_->chosen = entry.id;
            End();
        }
    }

    /// One entry with that letter is entered; of several the next one is selected.
    void Letter(unsigned char letter) {
        const MenuEntries entries = Entries();
        const int place = FindLetter(entries, Deepest().selected, letter);
        if (place < 0) {
            return;
        }
        Select(place);
        if (FindLetter(entries, place, letter) == place) {
            Enter();
        }
    }

    bool ClickAt(LPARAM point) {
        const int x = static_cast<SHORT>(LOWORD(point));
        const int y = static_cast<SHORT>(HIWORD(point)) + cellHeight;  // the bar's row is above
        Click(x < 0 ? -1 : x / cellWidth, y < 0 ? -1 : y / cellHeight);
        return true;
    }

    /// On a cell, counted from the left end of the bar. Outside of everything it ends the menu.
    void Click(int x, int y) {
        std::vector<MenuLevel>& levels = tracking_->levels;
        const int opened = OnBar() ? -1 : levels.front().selected;
        while (!OnBar() && !Deepest().area.Contains(x, y)) {
            levels.pop_back();
        }
        if (OnBar()) {
            ClickBar(x, y, opened);
        } else {
            ClickPopup(y - Deepest().area.top - 1);
        }
        TellChanged(window_);
    }

    void ClickPopup(int row) {
        const int place = Deepest().first + row;
        const MenuEntries entries = Entries();
        if (row >= 0 && row < Deepest().area.height - 2 &&
            static_cast<std::size_t>(place) < entries.size() &&
            !entries[static_cast<std::size_t>(place)].IsSeparator()) {
            Select(place);
            Enter();
        }
    }

    /// A click on the entry that is open closes it.
    void ClickBar(int x, int y, int opened) {
        const std::vector<Area> areas = BarAreas(Entries());
        const auto hit =
            std::ranges::find_if(areas, [&](const Area& area) { return area.Contains(x, y); });
        const int place = static_cast<int>(hit - areas.begin());
        if (hit == areas.end() || place == opened) {
            End();
            return;
        }
        Select(place);
        Enter();
    }

    HWND window_;
    std::shared_ptr<MenuTracking> tracking_ = std::make_shared<MenuTracking>();
};

/// Alone: one menu of a window at a time.
bool CanTrack(HWND top, HMENU bar) {
    return bar && !TrackingOf(top) && IsWindowEnabled(top) &&
           GetWindowThreadProcessId(top, nullptr) == GetCurrentThreadId();
}

void HandleCommand(HWND top, WPARAM command, LPARAM lParam) {
    const HMENU bar = GetMenu(top);
    if (!CanTrack(top, bar)) {
        return;
    }
    if ((command & 0xFFF0) == SC_KEYMENU) {
        Tracker(top, bar).BeginWithKey(UpperCase(static_cast<WPARAM>(lParam)));
    } else if ((command & 0xFFF0) == SC_MOUSEMENU) {
        RECT place = {};
        GetWindowRect(top, &place);
        const int x = static_cast<SHORT>(LOWORD(lParam)) - place.left;
        Tracker(top, bar).BeginWithClick(x / cellWidth, 0);
    }
}

bool AsksForMenu(UINT message, WPARAM wParam) {
    return (message == WM_SYSKEYDOWN && wParam == VK_F10) ||
           (message == WM_SYSCHAR && wParam > VK_SPACE);
}

}  // namespace

std::shared_ptr<MenuTracking> TrackingOf(HWND handle) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    return window ? window->menuTracking : nullptr;
}

bool HandleMenuMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND top = TopWindow(window);
    if (AsksForMenu(message, wParam)) {
        const auto letter = static_cast<LPARAM>(message == WM_SYSCHAR ? wParam : 0);
        SendMessageA(top, WM_SYSCOMMAND, SC_KEYMENU, letter);
        return true;
    }
    if (message == WM_NCLBUTTONDOWN && wParam == HTMENU) {
        SendMessageA(top, WM_SYSCOMMAND, SC_MOUSEMENU | HTMENU, lParam);
        return true;
    }
    if (message == WM_SYSCOMMAND) {
        HandleCommand(top, wParam, lParam);
        return true;
    }
    return false;
}

}  // namespace quennet::user
