// The words of a window that the program reads and writes by number.

#include "user/desktop.h"
#include "user/display_calls.h"

#include <cstring>

namespace quennet::user {

namespace {

template <typename Word>
bool FitsExtra(const Window& window, INT index) {
    return index >= 0 && static_cast<std::size_t>(index) + sizeof(Word) <= window.extra.size();
}

template <typename Word>
Word ExtraWord(const Window& window, INT index) {
    Word word = 0;
    if (FitsExtra<Word>(window, index)) {
        std::memcpy(&word, window.extra.data() + index, sizeof(word));
    }
    return word;
}

template <typename Word>
Word SetExtraWord(Window& window, INT index, Word word) {
    const Word before = ExtraWord<Word>(window, index);
    if (FitsExtra<Word>(window, index)) {
        std::memcpy(window.extra.data() + index, &word, sizeof(word));
    }
    return before;
}

LONG_PTR FixedWord(const Window& window, INT index) {
    switch (index) {
        case GWL_STYLE:
            return static_cast<LONG_PTR>(static_cast<LONG>(window.style));
        case GWL_EXSTYLE:
            return static_cast<LONG_PTR>(static_cast<LONG>(window.extendedStyle));
        case GWLP_USERDATA:
            return window.userData;
        case GWLP_WNDPROC:
            return reinterpret_cast<LONG_PTR>(window.procedure);
        case GWLP_HINSTANCE:
            return reinterpret_cast<LONG_PTR>(window.instance);
        case GWLP_HWNDPARENT:
            return reinterpret_cast<LONG_PTR>(window.parent);
        case GWLP_ID:
            return window.id;
        default:
            return 0;
    }
}

/// The parent stays what it was at creation.
void SetFixedWord(Window& window, INT index, LONG_PTR value) {
    switch (index) {
        case GWL_STYLE:
            window.style = static_cast<DWORD>(value);
            break;
        case GWL_EXSTYLE:
            window.extendedStyle = static_cast<DWORD>(value);
            break;
        case GWLP_USERDATA:
            window.userData = value;
            break;
        case GWLP_WNDPROC:
            window.procedure = reinterpret_cast<WNDPROC>(value);
            break;
        case GWLP_HINSTANCE:
            window.instance = reinterpret_cast<HINSTANCE>(value);
            break;
        case GWLP_ID:
            window.id = value;
            break;
        default:
            break;
    }
}

template <typename Word>
Word GetWord(HWND handle, INT index) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    if (!window) {
        return 0;
    }
    return index >= 0 ? ExtraWord<Word>(*window, index)
                      : static_cast<Word>(FixedWord(*window, index));
}

template <typename Word>
Word SetWord(HWND handle, INT index, Word value) {
    Word before = 0;
    {
        DesktopLock desktop;
        Window* window = desktop->Find(handle);
        if (!window) {
            return 0;
        }
        if (index >= 0) {
            return SetExtraWord<Word>(*window, index, value);
        }
        before = static_cast<Word>(FixedWord(*window, index));
        SetFixedWord(*window, index, value);
    }
    if (index == GWL_STYLE || index == GWL_EXSTYLE) {
        TellChanged(handle);
    }
    return before;
}

}  // namespace

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

LONG WINAPI GetWindowLongA(HWND window, INT index) {
    return GetWord<LONG>(window, index);
}

LONG WINAPI SetWindowLongA(HWND window, INT index, LONG value) {
    return SetWord<LONG>(window, index, value);
}

LONG_PTR WINAPI GetWindowLongPtrA(HWND window, INT index) {
    return GetWord<LONG_PTR>(window, index);
}

LONG_PTR WINAPI SetWindowLongPtrA(HWND window, INT index, LONG_PTR value) {
    return SetWord<LONG_PTR>(window, index, value);
}
}
