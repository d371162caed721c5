#pragma once
// The terminal itself, by ncurses. One thread makes a Screen and calls it; nobody else in the
// process calls ncurses.

#include "input.h"
#include "quennet_canvas.h"

#include <termios.h>

#include <deque>
#include <map>
#include <string>

namespace quennet::terminal {

/// The terminal of standard input and output can show windows.
bool CanUseTerminal();
struct TerminalSize {
    int columns = 80;
    int rows = 24;
};
/// The usual size when the terminal does not tell.
TerminalSize SizeOfTerminal();
/// Chooses the locale's character set, UTF-8 when the environment names none.
void ChooseCharacterSet();

/// Keys of one's own beside those that the windows get.
struct InputResult {
    bool ended = false;   // the terminal has hung up
    bool stop = false;    // Ctrl-Z
    bool redraw = false;  // Ctrl-L
};

class Screen {
  public:
    ~Screen() { Leave(); }

    bool IsShown() const { return shown_; }
    /// Takes the terminal; false when it can't be had.
    bool Enter();
    /// Gives the terminal back.
    void Leave();
    /// The terminal does not answer any more: forgets it.
    void Abandon();

    int Columns() const;
    int Rows() const;
    /// Looks at the terminal's size again.
    void Resize();
    void Show(const Surface& surface);
    /// Draws everything anew.
    void Redraw();

    /// Takes what was typed and clicked. A click has the cell of the screen.
    InputResult Read(std::deque<InputEvent>& events);

  private:
    using Time = long long;  // milliseconds

    bool Start();
    void NameKeys();
    void PrepareColours();
    void PrepareRestoring();
    void ShowCell(const Cell& cell, int x, int y) const;

    void ReadKey(int key, std::deque<InputEvent>& events);
    void ReadCharacter(wchar_t character, std::deque<InputEvent>& events, InputResult& result);
    void ReadEscape(std::deque<InputEvent>& events);
    void ReadMouse(std::deque<InputEvent>& events);
    void ReadClick(InputEvent click, bool twice, std::deque<InputEvent>& events);
    void AddText(std::string text, std::deque<InputEvent>& events) const;

    bool started_ = false;
    bool shown_ = false;
    bool colours_ = false;
    bool lines_ = false;  // the character set has line drawing
    bool pasting_ = false;
    bool marksPastes_ = false;
    termios settings_ = {};
    std::map<int, InputEvent> keys_;
    Time lastClick_ = 0;
    int lastClickX_ = -1;
    int lastClickY_ = -1;
};

}  // namespace quennet::terminal
