// Dialogs on a real terminal: screens compared with those in docs/screens, worked with keyboard and
// mouse. QUENNET_WRITE_SCREENS=1 writes the screens anew.

#include <gtest/gtest.h>

#include <string>

#include "display/tmux.h"

namespace {

class ScreenTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!TmuxTerminal::IsThere()) {
            GTEST_SKIP() << "tmux is missing";
        }
    }

    /// What the program says at its end, behind what it showed last.
    static void ExpectEnd(const TmuxTerminal& terminal, const std::vector<std::string>& lines) {
        const std::string screen = terminal.WaitFor("status 0");
        for (const std::string& line : lines) {
            EXPECT_NE(screen.find(line), std::string::npos) << line << '\n' << screen;
        }
    }
};

std::string Scene(const std::string& scene,
                  const std::string& environment = "NO_COLOR=1 LC_ALL=C.UTF-8") {
    return "env " + environment + " " + DIALOG_SCREEN + " " + scene;
}

}  // namespace

TEST_F(ScreenTest, WorksListsAndNestedDialogsByKeyboard) {
    const TmuxTerminal terminal(60, 16, Scene("types"));
    EXPECT_SHOWS(terminal, "More");
    terminal.Press({"M-Down", "End", "Up"});
    terminal.ExpectScreen("open-list");
    terminal.Press({"Escape"});
    EXPECT_SHOWS(terminal, "Name:");
    // Typed ahead: what opens takes what comes behind, and gives the focus back to its button.
    terminal.Press({"S", "M-m", "i", "n", "Enter", "BTab", "BTab", "BTab", "z", "BTab", "Tab"});
    terminal.Press({"\xC3\xA4", "\xE6\x97\xA5", "x", "BSpace", "Left", "q"});
    EXPECT_SHOWS(terminal, "Name:     \xC3\xA4q\xE6\x97\xA5__");
    // A paste has no Enter.
    terminal.Send("\x1B[200~A\nB\x1B[201~");
    EXPECT_SHOWS(terminal, "\xC3\xA4qAB\xE6\x97\xA5__");
    terminal.Press({"Enter"});
    ExpectEnd(terminal, {"12: \"in\"", "dialog 201: 1", "10: \"SITE Host\"",
                         "12: \"\xC3\xA4qAB\xE6\x97\xA5\"", "dialog 200: 99"});
}

TEST_F(ScreenTest, WorksWithTheMouse) {
    const TmuxTerminal terminal(60, 16, Scene("types"));
    EXPECT_SHOWS(terminal, "More");
    terminal.Click(30, 3);  // the drop-down list
    EXPECT_SHOWS(terminal, "five");
    terminal.Click(10, 6);  // its third entry
    EXPECT_SHOWS(terminal, "OPEN Host                                  \xE2\x96\xBC");
    terminal.Click(20, 5);  // in front of the field's last character
    terminal.Press({"X"});
    EXPECT_SHOWS(terminal, "a\xC3\xA4Xb");
    terminal.Click(43, 11);  // More
    terminal.ExpectScreen("nested");
    terminal.Click(10, 11);  // OK of the dialog below, which is disabled
    terminal.Press({"y"});
    EXPECT_SHOWS(terminal, " y______________  ");
    terminal.Press({"Enter"});
    terminal.Click(10, 11);
    ExpectEnd(terminal, {"12: \"y\"", "10: \"OPEN Host\"", "dialog 200: 99"});
}

TEST_F(ScreenTest, ShowsMessagesAndAsksForPasswords) {
    const TmuxTerminal message(70, 14, Scene("message"));
    message.ExpectScreen("message");
    message.Press({"Escape"});
    EXPECT_SHOWS(message, "message: closed");

    const TmuxTerminal password(50, 12, Scene("password"));
    EXPECT_SHOWS(password, "Password for");
    password.Press({"s", "e", "c", "r", "e", "t"});
    password.ExpectScreen("password");
    password.Press({"Enter"});
    EXPECT_SHOWS(password, "password: \"secret\"");

    const TmuxTerminal cancelled(50, 12, Scene("password"));
    EXPECT_SHOWS(cancelled, "Password for");
    cancelled.Press({"C-c"});
    EXPECT_SHOWS(cancelled, "password: none");
}

TEST_F(ScreenTest, ServesDialogsOfSeveralThreads) {
    const TmuxTerminal terminal(60, 16, Scene("threads"));
    EXPECT_SHOWS(terminal, "Inner:");
    terminal.Press({"v"});
    EXPECT_SHOWS(terminal, "v___");
    terminal.Click(19, 5);  // the field of the dialog below, which comes to the front
    terminal.Press({"X"});
    EXPECT_SHOWS(terminal, "aX\xC3\xA4");
    terminal.Click(10, 11);  // its OK
    EXPECT_SHOWS(terminal, "Inner:");
    terminal.Press({"w", "Enter"});
    ExpectEnd(terminal, {"dialog 200: 99", "12: \"vw\""});
}

TEST_F(ScreenTest, TakesItsColoursAndCharactersFromTheEnvironment) {
    const TmuxTerminal plain(60, 16, Scene("types"));
    EXPECT_SHOWS(plain, "More");
    EXPECT_EQ(plain.Screen("-e").find("\x1B[44m"), std::string::npos) << "no colours";
    const TmuxTerminal coloured(60, 16, Scene("types", "LC_ALL=C.UTF-8"));
    EXPECT_SHOWS(coloured, "More");
    EXPECT_NE(coloured.Screen("-e").find("\x1B[44m"), std::string::npos);
    EXPECT_EQ(coloured.Screen().find("__"), std::string::npos) << "colours show the field";
    const TmuxTerminal ascii(60, 16, Scene("types", "NO_COLOR=1 LC_ALL=C"));
    ascii.ExpectScreen("ascii");
}
