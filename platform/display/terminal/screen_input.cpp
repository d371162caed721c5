// Reading keys, texts and clicks off the terminal.

#include "curses.h"
#include "screen.h"

#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <iterator>
#include <utility>

namespace quennet::terminal {

namespace {

constexpr int pasteBegins = KEY_MAX + 1;
constexpr int pasteEnds = KEY_MAX + 2;
constexpr wchar_t escape = 27;

enum : unsigned { shift = 1, control = 2, alternate = 4 };

struct NamedKey {
    int code;
    WPARAM key;
    unsigned with;
};
constexpr NamedKey namedKeys[] = {
    {KEY_UP, VK_UP, 0},          {KEY_DOWN, VK_DOWN, 0},      {KEY_LEFT, VK_LEFT, 0},
    {KEY_RIGHT, VK_RIGHT, 0},    {KEY_HOME, VK_HOME, 0},      {KEY_END, VK_END, 0},
    {KEY_PPAGE, VK_PRIOR, 0},    {KEY_NPAGE, VK_NEXT, 0},     {KEY_DC, VK_DELETE, 0},
    {KEY_IC, VK_INSERT, 0},      {KEY_BACKSPACE, VK_BACK, 0}, {KEY_ENTER, VK_RETURN, 0},
    {KEY_BTAB, VK_TAB, shift},   {KEY_SLEFT, VK_LEFT, shift}, {KEY_SRIGHT, VK_RIGHT, shift},
    {KEY_SHOME, VK_HOME, shift}, {KEY_SEND, VK_END, shift},   {KEY_SR, VK_UP, shift},
    {KEY_SF, VK_DOWN, shift},    {KEY_SDC, VK_DELETE, shift}, {KEY_FIND, VK_HOME, 0},
    {KEY_SELECT, VK_END, 0},
};

/// Keys that have no number of their own, by the name in the terminal's description.
struct DescribedKey {
    const char* name;
    WPARAM key;
};
constexpr DescribedKey describedKeys[] = {
    {"kUP", VK_UP},   {"kDN", VK_DOWN},   {"kLFT", VK_LEFT}, {"kRIT", VK_RIGHT}, {"kHOM", VK_HOME},
    {"kEND", VK_END}, {"kPRV", VK_PRIOR}, {"kNXT", VK_NEXT}, {"kDC", VK_DELETE}, {"kIC", VK_INSERT},
};
struct KeySuffix {
    const char* suffix;
    unsigned with;
};
constexpr KeySuffix keySuffixes[] = {{"3", alternate}, {"5", control}, {"6", control | shift}};

struct CharacterKey {
    wchar_t character;
    WPARAM key;
};
constexpr CharacterKey characterKeys[] = {
    {L'\t', VK_TAB}, {L'\r', VK_RETURN}, {L'\n', VK_RETURN},  {8, VK_BACK},
    {127, VK_BACK},  {L' ', VK_SPACE},   {escape, VK_ESCAPE},
};

InputEvent KeyEvent(WPARAM key, unsigned with = 0) {
    InputEvent event;
    event.key = key;
    event.shift = (with & shift) != 0;
    event.control = (with & control) != 0;
    event.alternate = (with & alternate) != 0;
    return event;
}

std::string Utf8Of(char32_t code) {
    const auto tail = [&](int bits) { return static_cast<char>(0x80 | ((code >> bits) & 0x3F)); };
    if (code < 0x80) {
        return {static_cast<char>(code)};
    }
    if (code < 0x800) {
        return {static_cast<char>(0xC0 | code >> 6), tail(0)};
    }
    if (code < 0x10000) {
        return {static_cast<char>(0xE0 | code >> 12), tail(6), tail(0)};
    }
    return {static_cast<char>(0xF0 | code >> 18), tail(12), tail(6), tail(0)};
}

const CharacterKey* FindCharacterKey(wchar_t character) {
    for (const CharacterKey& key : characterKeys) {
        if (key.character == character) {
            return &key;
        }
    }
    return nullptr;
}

long long Now() {
    using std::chrono::duration_cast, std::chrono::milliseconds, std::chrono::steady_clock;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

/// Readable, and nothing is there to be read: the end.
bool HasEnded() {
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, 0) <= 0) {
        return false;
    }
    if ((input.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) {
        return true;
    }
    int bytes = 0;
    return (input.revents & POLLIN) != 0 &&
           (ioctl(STDIN_FILENO, FIONREAD, &bytes) != 0 || bytes == 0);
}

}  // namespace

void Screen::NameKeys() {
    for (const NamedKey& named : namedKeys) {
        keys_[named.code] = KeyEvent(named.key, named.with);
    }
    // Terminals number the function keys on with Shift, with Ctrl, with both, with Alt.
    int number = 1;
    for (const unsigned with :
         {0U, 0U + shift, 0U + control, 0U + shift + control, 0U + alternate}) {
        for (WPARAM key = VK_F1; key <= VK_F12; ++key) {
            keys_[KEY_F(number++)] = KeyEvent(key, with);
        }
    }
    for (const DescribedKey& described : describedKeys) {
        for (const KeySuffix& suffix : keySuffixes) {
            const char* sequence = tigetstr((std::string(described.name) + suffix.suffix).c_str());
            if (!sequence || sequence == reinterpret_cast<const char*>(-1)) {
                continue;
            }
            if (const int code = key_defined(sequence); code > 0) {
                keys_[code] = KeyEvent(described.key, suffix.with);
            }
        }
    }
    define_key("\x1B[200~", pasteBegins);
    define_key("\x1B[201~", pasteEnds);
}

InputResult Screen::Read(std::deque<InputEvent>& events) {
    InputResult result;
    if (HasEnded()) {
        result.ended = true;
        return result;
    }
    wint_t character = 0;
    for (int kind = get_wch(&character); kind != ERR; kind = get_wch(&character)) {
        if (kind == KEY_CODE_YES) {
            ReadKey(static_cast<int>(character), events);
        } else {
            ReadCharacter(static_cast<wchar_t>(character), events, result);
        }
    }
    return result;
}

void Screen::ReadKey(int key, std::deque<InputEvent>& events) {
    if (key == pasteBegins || key == pasteEnds) {
        pasting_ = key == pasteBegins;
    } else if (key == KEY_MOUSE) {
        ReadMouse(events);
    } else if (const auto known = keys_.find(key); known != keys_.end()) {
        events.push_back(known->second);
    }
}

void Screen::AddText(std::string text, std::deque<InputEvent>& events) const {
    InputEvent event;
    event.kind = InputEvent::Kind::text;
    event.text = std::move(text);
    events.push_back(std::move(event));
}

/// A line end in a paste would press the button of a dialog.
void Screen::ReadCharacter(wchar_t character, std::deque<InputEvent>& events, InputResult& result) {
    enum : wchar_t { controlC = 3, controlL = 12, controlZ = 26, controlBackslash = 28 };
    if (pasting_) {
        if (character >= L' ' && character != 127) {
            AddText(Utf8Of(static_cast<char32_t>(character)), events);
        } else if (character == L'\t') {
            AddText(" ", events);
        }
        return;
    }
    InputEvent close;
    close.kind = InputEvent::Kind::close;
    switch (character) {
        case escape:
            return ReadEscape(events);
        case controlC:
            return events.push_back(close);
        case controlL:
            result.redraw = true;
            return;
        case controlZ:
            result.stop = true;
            return;
        case controlBackslash:
            kill(getpid(), SIGQUIT);
            return;
        default:
            break;
    }
    if (const CharacterKey* key = FindCharacterKey(character)) {
        events.push_back(KeyEvent(key->key));
    } else if (character < L' ') {
        events.push_back(KeyEvent(static_cast<WPARAM>('A' + character - 1), control));
    } else {
        AddText(Utf8Of(static_cast<char32_t>(character)), events);
    }
}

/// Alone it is the key, in front of another one the Alt key.
void Screen::ReadEscape(std::deque<InputEvent>& events) {
    wint_t next = 0;
    const int kind = get_wch(&next);
    if (kind == ERR || (kind == OK && next == escape)) {
        events.push_back(KeyEvent(VK_ESCAPE));
        return;
    }
    if (kind == KEY_CODE_YES) {
        const std::size_t before = events.size();
        ReadKey(static_cast<int>(next), events);
        if (events.size() > before && events.back().kind == InputEvent::Kind::key) {
            events.back().alternate = true;
        }
    } else if (const CharacterKey* key = FindCharacterKey(static_cast<wchar_t>(next))) {
        events.push_back(KeyEvent(key->key, alternate));
    } else if (next >= L' ') {
        AddText(Utf8Of(static_cast<char32_t>(next)), events);
        events.back().kind = InputEvent::Kind::alternateText;
    }
}

void Screen::ReadMouse(std::deque<InputEvent>& events) {
    MEVENT mouse = {};
    if (getmouse(&mouse) != OK) {
        return;
    }
    InputEvent event;
    event.x = mouse.x;
    event.y = mouse.y;
    event.shift = (mouse.bstate & BUTTON_SHIFT) != 0;
    event.control = (mouse.bstate & BUTTON_CTRL) != 0;
    if ((mouse.bstate & (BUTTON4_PRESSED | BUTTON5_PRESSED)) != 0) {
        event.kind = InputEvent::Kind::wheel;
        event.turn = (mouse.bstate & BUTTON4_PRESSED) != 0 ? 1 : -1;
    } else {
        return ReadClick(event, (mouse.bstate & BUTTON1_DOUBLE_CLICKED) != 0, events);
    }
    events.push_back(event);
}

void Screen::ReadClick(InputEvent click, bool twice, std::deque<InputEvent>& events) {
    constexpr Time doubleClickTime = 400;
    const Time now = Now();
    const bool again =
        now - lastClick_ < doubleClickTime && click.x == lastClickX_ && click.y == lastClickY_;
    lastClick_ = again || twice ? 0 : now;
    lastClickX_ = click.x;
    lastClickY_ = click.y;
    click.kind = InputEvent::Kind::click;
    if (twice || !again) {
        events.push_back(click);
    }
    click.kind = InputEvent::Kind::doubleClick;
    if (twice || again) {
        events.push_back(click);
    }
}

}  // namespace quennet::terminal
