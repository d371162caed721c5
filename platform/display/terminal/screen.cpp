// Drawing on the terminal. What is typed is read in screen_input.cpp.

#include "screen.h"

#include "curses.h"
#include "restore.h"

#include <langinfo.h>
#include <locale.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <wchar.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace quennet::terminal {

namespace {

struct InkLook {
    Ink ink;
    short foreground;
    short background;
    attr_t attributes;       // with colours
    attr_t plainAttributes;  // without
    char32_t plainFill;      // stands for a space where no colour shows a field
};

constexpr InkLook looks[] = {
    {Ink::screen, COLOR_WHITE, COLOR_BLUE, 0, 0, U' '},
    {Ink::window, COLOR_BLACK, COLOR_WHITE, 0, 0, U' '},
    {Ink::frame, COLOR_BLACK, COLOR_WHITE, 0, 0, U' '},
    {Ink::title, COLOR_BLUE, COLOR_WHITE, 0, A_BOLD, U' '},
    {Ink::mark, COLOR_RED, COLOR_WHITE, 0, A_UNDERLINE, U' '},
    {Ink::disabled, COLOR_BLUE, COLOR_WHITE, A_DIM, A_DIM, U' '},
    {Ink::field, COLOR_WHITE, COLOR_BLUE, A_BOLD, 0, U' '},
    {Ink::fieldRest, COLOR_WHITE, COLOR_BLUE, 0, 0, U'_'},
    {Ink::fieldReadOnly, COLOR_CYAN, COLOR_BLUE, 0, 0, U' '},
    {Ink::list, COLOR_WHITE, COLOR_BLUE, 0, 0, U' '},
    {Ink::selection, COLOR_BLACK, COLOR_CYAN, 0, A_REVERSE, U' '},
    {Ink::selectionIdle, COLOR_CYAN, COLOR_BLUE, A_BOLD, A_BOLD, U' '},
    {Ink::button, COLOR_BLACK, COLOR_WHITE, 0, 0, U' '},
    {Ink::buttonFocus, COLOR_BLACK, COLOR_CYAN, 0, A_REVERSE, U' '},
    {Ink::scrollBar, COLOR_CYAN, COLOR_BLUE, 0, 0, U' '},
    {Ink::menu, COLOR_BLACK, COLOR_CYAN, 0, A_REVERSE, U' '},
    {Ink::menuMark, COLOR_RED, COLOR_CYAN, 0, A_REVERSE | A_UNDERLINE, U' '},
    {Ink::menuSelection, COLOR_WHITE, COLOR_BLACK, A_BOLD, A_BOLD, U' '},
    {Ink::status, COLOR_BLACK, COLOR_CYAN, 0, A_REVERSE, U' '},
    {Ink::header, COLOR_YELLOW, COLOR_BLUE, A_BOLD, A_BOLD, U' '},
    {Ink::marked, COLOR_YELLOW, COLOR_BLUE, A_BOLD, A_BOLD, U' '},
};
static_assert(std::size(looks) == static_cast<std::size_t>(Ink::count));

constexpr bool IsInOrder() {
    for (std::size_t place = 0; place < std::size(looks); ++place) {
        if (looks[place].ink != static_cast<Ink>(place)) {
            return false;
        }
    }
    return true;
}
static_assert(IsInOrder());

const InkLook& LookOf(Ink ink) {
    return looks[static_cast<std::size_t>(ink)];
}

short PairOf(Ink ink) {
    return static_cast<short>(static_cast<int>(ink) + 1);
}

struct PlainLine {
    char32_t line;
    char32_t plain;
};
constexpr PlainLine plainLines[] = {
    {U'─', U'-'}, {U'│', U'|'}, {U'┌', U'+'}, {U'┐', U'+'}, {U'└', U'+'}, {U'┘', U'+'},
    {U'█', U'#'}, {U'░', U':'}, {U'▼', U'v'}, {U'├', U'+'}, {U'┤', U'+'}, {U'…', U'~'},
    {U'√', U'x'}, {U'•', U'*'}, {U'►', U'>'}, {U'◄', U'<'}, {U'▲', U'^'},
};

char32_t PlainOf(char32_t code) {
    const auto* found = std::ranges::find(plainLines, code, &PlainLine::line);
    return found == std::end(plainLines) ? code : found->plain;
}

bool IsUtf8() {
    return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
}

bool IsSet(const char* name) {
    const char* value = getenv(name);
    return value && *value != '\0';
}

/// A character that the character set lacks would be dropped, and the row with it.
char32_t Representable(char32_t code) {
    char bytes[MB_LEN_MAX];
    mbstate_t state = {};
    return wcrtomb(bytes, static_cast<wchar_t>(code), &state) == static_cast<std::size_t>(-1)
               ? U'?'
               : code;
}

const char* Capability(const char* name) {
    const char* text = tigetstr(name);
    return text && text != reinterpret_cast<const char*>(-1) ? text : "";
}

void WriteOut(const std::string& text) {
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
}

constexpr char markPastes[] = "\x1B[?2004h";
constexpr char dontMarkPastes[] = "\x1B[?2004l";

}  // namespace

bool CanUseTerminal() {
    if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) {
        return false;
    }
    int error = 0;
    return setupterm(nullptr, STDOUT_FILENO, &error) == OK && *Capability("cup") != '\0';
}

TerminalSize SizeOfTerminal() {
    winsize size = {};
    const bool known =
        ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0;
    return known ? TerminalSize{size.ws_col, size.ws_row} : TerminalSize{};
}

void ChooseCharacterSet() {
    setlocale(LC_CTYPE, "");
    if (!IsSet("LC_ALL") && !IsSet("LC_CTYPE") && !IsSet("LANG")) {
        setlocale(LC_CTYPE, "C.UTF-8");
    }
}

bool Screen::Start() {
    use_tioctl(TRUE);
    SCREEN* made = newterm(nullptr, stdout, stdin);
    if (!made) {
        return false;
    }
    started_ = true;
    raw();
    noecho();
    nonl();
    set_escdelay(50);
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    meta(stdscr, TRUE);
    mouseinterval(0);
    // Presses count. Press and release that arrive together are one click to ncurses.
    mousemask(BUTTON1_PRESSED | BUTTON1_CLICKED | BUTTON1_DOUBLE_CLICKED | BUTTON4_PRESSED |
                  BUTTON5_PRESSED | BUTTON_SHIFT | BUTTON_CTRL,
              nullptr);
    lines_ = IsUtf8();
    marksPastes_ = *Capability("kmous") != '\0';
    PrepareColours();
    NameKeys();
    return true;
}

bool Screen::Enter() {
    if (shown_) {
        return true;
    }
    std::fflush(stdout);
    tcgetattr(STDIN_FILENO, &settings_);
    PrepareRestoring();
    if (!started_ && !Start()) {
        DisarmRestoring();
        return false;
    }
    shown_ = true;
    Resize();
    clearok(curscr, TRUE);
    refresh();
    if (marksPastes_) {
        WriteOut(markPastes);
    }
    return true;
}

void Screen::Leave() {
    if (!shown_) {
        return;
    }
    shown_ = false;
    pasting_ = false;
    if (marksPastes_) {
        WriteOut(dontMarkPastes);
    }
    move(Rows() - 1, 0);
    curs_set(1);
    endwin();
    tcsetattr(STDIN_FILENO, TCSADRAIN, &settings_);
    DisarmRestoring();
}

void Screen::Abandon() {
    if (shown_) {
        Leave();
    }
}

/// The terminal's description is known already (CanUseTerminal).
void Screen::PrepareRestoring() {
    std::string text = *Capability("kmous") != '\0' ? "\x1B[?1006l\x1B[?1002l\x1B[?1000l" : "";
    text += marksPastes_ || !started_ ? dontMarkPastes : "";
    for (const char* name : {"sgr0", "cnorm", "rmkx", "rmcup"}) {
        // Without what it holds for padding.
        const std::string capability = Capability(name);
        text += capability.substr(0, capability.find("$<"));
    }
    ArmRestoring(STDIN_FILENO, settings_, text);
}

void Screen::PrepareColours() {
    colours_ = has_colors() && !IsSet("NO_COLOR") && start_color() == OK &&
               COLOR_PAIRS > static_cast<int>(Ink::count);
    if (!colours_) {
        return;
    }
    for (const InkLook& look : looks) {
        init_pair(PairOf(look.ink), look.foreground, look.background);
    }
}

int Screen::Columns() const {
    return std::max(1, COLS);
}

int Screen::Rows() const {
    return std::max(1, LINES);
}

void Screen::Resize() {
    const TerminalSize size = SizeOfTerminal();
    if (shown_ && (size.rows != LINES || size.columns != COLS)) {
        resizeterm(size.rows, size.columns);
    }
}

void Screen::Redraw() {
    if (shown_) {
        clearok(curscr, TRUE);
    }
}

void Screen::ShowCell(const Cell& cell, int x, int y) const {
    const InkLook& look = LookOf(cell.ink);
    const bool filled = !colours_ && cell.code == U' ' && look.plainFill != U' ';
    const char32_t code = filled ? look.plainFill : cell.code;
    std::array<wchar_t, 4> text = {
        static_cast<wchar_t>(Representable(lines_ ? code : PlainOf(code)))};
    for (std::size_t mark = 0; mark < 2 && lines_; ++mark) {
        text[mark + 1] = static_cast<wchar_t>(cell.marks[mark]);
    }
    cchar_t character = {};
    setcchar(&character, text.data(), colours_ ? look.attributes : look.plainAttributes,
             colours_ ? PairOf(cell.ink) : short{0}, nullptr);
    mvadd_wch(y, x, &character);
}

void Screen::Show(const Surface& surface) {
    const int columns = std::min(surface.width, Columns());
    const int rows = std::min(surface.height, Rows());
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            if (surface.At(x, y).columns > 0) {
                ShowCell(surface.At(x, y), x, y);
            }
        }
    }
    curs_set(surface.hasCaret ? 1 : 0);
    move(std::clamp(surface.caretY, 0, Rows() - 1), std::clamp(surface.caretX, 0, Columns() - 1));
    refresh();
}

}  // namespace quennet::terminal
