// The terminal is as it was, however the program ends; and the program ends when the terminal does.

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>

#include "support/program_run.h"

namespace {

/// dialog_screen on a pseudo terminal.
struct Screen {
    explicit Screen(const std::string& scene) : run(home, {scene}, DIALOG_SCREEN) {}

    bool HasSettings(const termios& wanted) const {
        const termios now = run.Settings();
        return now.c_lflag == wanted.c_lflag && now.c_iflag == wanted.c_iflag &&
               now.c_oflag == wanted.c_oflag;
    }

    TempFolder home;
    TerminalRun run;
};

class TerminalEnd : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        // The signal of a crash is the program's, not a sanitizer's.
        setenv("ASAN_OPTIONS", "handle_segv=0:handle_abort=0", 1);
        setenv("TSAN_OPTIONS", "handle_segv=0:handle_abort=0", 1);
        usual = TerminalRun("/", {}, "/bin/true").Settings();
    }

    static inline termios usual;
};

constexpr char alternateScreen[] = "\x1B[?1049h";
constexpr char usualScreen[] = "\x1B[?1049l";
constexpr char pressMore[] = "\x1Bm";

TEST_F(TerminalEnd, GivesTheTerminalBackHoweverTheProgramEnds) {
    struct {
        const char* scene;
        const char* keys;
        int signalFromOutside;  // 0 for none
        int status;             // 128 and the signal's number when a signal ended it
    } const cases[] = {
        {"types", "\x1B", 0, 0},
        {"exit", pressMore, 0, 7},
        {"terminate", pressMore, 0, 128 + SIGABRT},
        {"crash", pressMore, 0, 128 + SIGSEGV},
        {"types", "", SIGTERM, 128 + SIGTERM},
        {"types", "", SIGINT, 128 + SIGINT},
        {"types", "\x1C", 0, 128 + SIGQUIT},
    };
    for (const auto& step : cases) {
        SCOPED_TRACE(step.scene + std::to_string(step.status));
        Screen screen(step.scene);
        ASSERT_TRUE(screen.run.Await("ore"));
        EXPECT_NE(screen.run.Shown().find(alternateScreen), std::string::npos);
        EXPECT_FALSE(screen.HasSettings(usual));
        screen.run.Type(step.keys);
        screen.run.Signal(step.signalFromOutside);
        EXPECT_EQ(screen.run.Finish(), step.status);
        EXPECT_TRUE(screen.HasSettings(usual));
        const std::string& shown = screen.run.Shown();
        for (const char* text : {usualScreen, "\x1B[?2004l", "1000l"}) {
            EXPECT_NE(shown.rfind(text), std::string::npos) << text;
        }
        EXPECT_EQ(shown.find(alternateScreen, shown.rfind(usualScreen)), std::string::npos);
    }
}

TEST_F(TerminalEnd, CancelsAllDialogsWhenTheTerminalIsGone) {
    for (const std::string scene : {"types", "threads", "password"}) {
        Screen screen(scene);
        ASSERT_TRUE(screen.run.Await(scene == "password" ? "Cancel" : "ore"));
        if (scene == "types") {
            screen.run.Type(pressMore);
            ASSERT_TRUE(screen.run.Await("Small"));
        }
        screen.run.HangUp();
        EXPECT_EQ(screen.run.Finish(), 0) << scene;
    }
}

TEST_F(TerminalEnd, StopsAndGoesOnWithCtrlZ) {
    Screen screen("types");
    ASSERT_TRUE(screen.run.Await("ore"));
    screen.run.Type("\x1A");
    ASSERT_TRUE(screen.run.Await(usualScreen));
    ASSERT_TRUE(screen.run.WaitForStop());
    screen.run.Signal(SIGCONT);
    screen.run.Type("\x1B");
    EXPECT_EQ(screen.run.Finish(), 0);
    const std::string& shown = screen.run.Shown();
    EXPECT_NE(shown.find(alternateScreen, shown.find(usualScreen)), std::string::npos);
    EXPECT_TRUE(screen.HasSettings(usual));
}

}  // namespace
