#pragma once
// A terminal of tmux with a program in it.
//
// The server of each terminal is a child of the test and ends with it, even when the test is
// killed; what ran on the terminal is then hung up, as by a terminal that is closed.

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/temp_folder.h"

class TmuxTerminal {
  public:
    static bool IsThere();

    /// The shell runs the command, and says "status N" at its end.
    TmuxTerminal(int columns, int rows, const std::string& command);
    /// A program that does not end with its terminal is a failure of the test, and killed.
    ~TmuxTerminal();
    TmuxTerminal(const TmuxTerminal&) = delete;
    TmuxTerminal& operator=(const TmuxTerminal&) = delete;

    /// Keys by tmux's names ("M-x" is Alt and x); each is one.
    void Press(const std::vector<std::string>& keys) const;
    /// Bytes as a terminal would send them.
    void Send(const std::string& bytes) const;
    void Click(int x, int y) const;
    void Resize(int columns, int rows) const;
    /// Takes the terminal away and waits for the end of what ran there; false if it does not end.
    bool HangUp();

    /// What is on the screen, without spaces at the ends of lines; `options` are capture-pane's.
    std::string Screen(const std::string& options = "") const;
    /// Waits until the screen shows that; the last screen if it never does.
    std::string WaitFor(const std::string& text) const;
    /// Waits until the screen is the one of that file in docs/screens. A failure of the test else.
    void ExpectScreen(const std::string& name) const;
    /// "column,row"
    std::string Cursor() const;

  private:
    std::string Run(const std::string& command) const;

    TempFolder folder_;
    pid_t server_ = -1;
    pid_t group_ = -1;  // of the processes on the terminal
};

#define EXPECT_SHOWS(terminal, text) \
    EXPECT_NE((terminal).WaitFor(text).find(text), std::string::npos) << (terminal).Screen()
