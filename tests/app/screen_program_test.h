#pragma once
// The program as a person at a terminal sees it. The screens stand in docs/screens;
// QUENNET_WRITE_SCREENS=1 writes them anew.

#include "app/program_test.h"
#include "display/tmux.h"

/// A program with dialogs, on a terminal of tmux.
class ScreenProgramTest : public ProgramTest {
  protected:
    void SetUp() override {
        if (!TmuxTerminal::IsThere()) {
            GTEST_SKIP() << "tmux is missing";
        }
    }

    /// The program with those words, for the shell of the terminal.
    std::string Program(const std::string& words) const {
        return "cd " + (home / "").string() +
               "; env -u XDG_CONFIG_HOME HOME=. NO_COLOR=1 LC_ALL=C.UTF-8 " QUENNET_PROGRAM " " +
               words;
    }
};
