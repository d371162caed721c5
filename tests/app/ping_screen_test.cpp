// quennet ping --window, as a person at a terminal sees it.

#include "app/program_test.h"
#include "display/tmux.h"

namespace {

using testing::HasSubstr;

class PingScreenTest : public ProgramTest {
  protected:
    void SetUp() override {
        if (!TmuxTerminal::IsThere() ||
            Shell(home, "unshare -rn ip link set lo up").status != exitDone) {
            GTEST_SKIP() << "no tmux, no network namespaces, or no ip (iproute2)";
        }
    }

    /// In a namespace that has 127.0.0.1 alone.
    std::string Program(const std::string& words) const {
        return "cd " + (home / "").string() +
               "; HOME=. NO_COLOR=1 LC_ALL=C.UTF-8 unshare -rn sh -c 'ip link set lo up; "
               "exec " QUENNET_PROGRAM " ping --window " +
               words + "'";
    }
};

TEST_F(PingScreenTest, APersonPingsAndStops) {
    {
        const TmuxTerminal terminal(80, 24, Program("nowhere.invalid"));
        EXPECT_SHOWS(terminal, "There is no host");
        terminal.ExpectScreen("ping");
        terminal.Press({"M-h", "127.0.0.1", "Enter"});
        EXPECT_SHOWS(terminal, "#1, 32 bytes from: 127.0.0.1");
        terminal.Press({"M-s", "Escape"});
        EXPECT_SHOWS(terminal, "status 0");
    }
    EXPECT_THAT(home.Read(".config/quennet/settings.ini"),
                HasSubstr("[Ping]\nHistory1=127.0.0.1\nHistory2=nowhere.invalid\n"));
    TmuxTerminal terminal(80, 24, Program("127.0.0.1"));
    EXPECT_SHOWS(terminal, "#0, 32 bytes");
    EXPECT_TRUE(terminal.HangUp());
}

}  // namespace
