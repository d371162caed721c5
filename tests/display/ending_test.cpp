// The terminal is as it was, however the program ends; and the program ends when the terminal does.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds patience{30};

/// dialog_screen on a pseudo terminal.
class PseudoTerminal {
  public:
    explicit PseudoTerminal(const std::string& scene) {
        const winsize size = {24, 80, 0, 0};
        EXPECT_EQ(openpty(&master_, &slave_, nullptr, nullptr, &size), 0);
        fcntl(master_, F_SETFD, FD_CLOEXEC);
        before_ = Settings();
        child_ = fork();
        if (child_ == 0) {
            login_tty(slave_);
            setenv("TERM", "xterm", 1);
            // The signal of a crash is the program's, not a sanitizer's.
            setenv("ASAN_OPTIONS", "handle_segv=0:handle_abort=0", 1);
            setenv("TSAN_OPTIONS", "handle_segv=0:handle_abort=0", 1);
            signal(SIGHUP, SIG_DFL);
            execl(DIALOG_SCREEN, DIALOG_SCREEN, scene.c_str(), nullptr);
            _exit(127);
        }
    }
    ~PseudoTerminal() {
        HangUp();
        if (child_ > 0) {
            kill(child_, SIGKILL);
            waitpid(child_, nullptr, 0);
        }
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    bool ReadUntil(const std::string& text) {
        const auto end = Clock::now() + patience;
        while (output_.find(text) == output_.npos && Clock::now() < end) {
            ReadSome();
        }
        return output_.find(text) != output_.npos;
    }
    void Send(const std::string& bytes) const {
        EXPECT_EQ(write(master_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    void Signal(int signal) const { kill(child_, signal); }
    void HangUp() {
        for (int* end : {&slave_, &master_}) {
            if (*end >= 0) {
                close(std::exchange(*end, -1));
            }
        }
    }
    bool WaitForStop() const {
        int status = 0;
        return waitpid(child_, &status, WUNTRACED) == child_ && WIFSTOPPED(status);
    }
    /// The status that wait gives, -1 when the program does not end.
    int WaitForEnd() {
        const auto end = Clock::now() + patience;
        int status = 0;
        while (waitpid(child_, &status, WNOHANG) == 0) {
            if (Clock::now() > end) {
                return -1;
            }
            ReadSome();
        }
        child_ = -1;
        for (std::size_t before = output_.size() + 1; before != output_.size();) {
            before = output_.size();
            ReadSome();
        }
        return status;
    }
    bool HasSettingsBack() const {
        const termios now = Settings();
        return now.c_lflag == before_.c_lflag && now.c_iflag == before_.c_iflag &&
               now.c_oflag == before_.c_oflag;
    }
    const std::string& Output() const { return output_; }

  private:
    termios Settings() const {
        termios settings = {};
        tcgetattr(slave_, &settings);
        return settings;
    }
    /// One block: a program that never stops writing must not keep its reader.
    void ReadSome() {
        pollfd source = {master_, POLLIN, 0};
        if (poll(&source, 1, 10) > 0) {
            char block[4096];
            const ssize_t count = read(master_, block, sizeof(block));
            output_.append(block, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
    }

    int master_ = -1;
    int slave_ = -1;
    termios before_ = {};
    pid_t child_ = -1;
    std::string output_;
};

constexpr char alternateScreen[] = "\x1B[?1049h";
constexpr char usualScreen[] = "\x1B[?1049l";
constexpr char pressMore[] = "\x1Bm";

}  // namespace

TEST(TerminalEnd, GivesTheTerminalBackHoweverTheProgramEnds) {
    struct {
        const char* scene;
        const char* keys;
        int signalFromOutside;
        int exitStatus;  // -1 for a signal
        int signal;
    } const cases[] = {
        {"types", "\x1B", 0, 0, 0},
        {"exit", pressMore, 0, 7, 0},
        {"terminate", pressMore, 0, -1, SIGABRT},
        {"crash", pressMore, 0, -1, SIGSEGV},
        {"types", "", SIGTERM, -1, SIGTERM},
        {"types", "", SIGINT, -1, SIGINT},
        {"types", "\x1C", 0, -1, SIGQUIT},
    };
    for (const auto& step : cases) {
        SCOPED_TRACE(std::string(step.scene) + " " + std::to_string(step.signal));
        PseudoTerminal terminal(step.scene);
        ASSERT_TRUE(terminal.ReadUntil("ore"));
        EXPECT_NE(terminal.Output().find(alternateScreen), std::string::npos);
        EXPECT_FALSE(terminal.HasSettingsBack());
        terminal.Send(step.keys);
        if (step.signalFromOutside != 0) {
            terminal.Signal(step.signalFromOutside);
        }
        const int status = terminal.WaitForEnd();
        ASSERT_NE(status, -1);
        EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, step.exitStatus);
        EXPECT_EQ(WIFSIGNALED(status) ? WTERMSIG(status) : 0, step.signal);
        EXPECT_TRUE(terminal.HasSettingsBack());
        for (const char* text : {usualScreen, "\x1B[?2004l", "1000l"}) {
            EXPECT_NE(terminal.Output().rfind(text), std::string::npos) << text;
        }
        EXPECT_EQ(terminal.Output().find(alternateScreen, terminal.Output().rfind(usualScreen)),
                  std::string::npos);
    }
}

TEST(TerminalEnd, CancelsAllDialogsWhenTheTerminalIsGone) {
    for (const char* scene : {"types", "threads", "password"}) {
        PseudoTerminal terminal(scene);
        ASSERT_TRUE(terminal.ReadUntil(scene == std::string("password") ? "Cancel" : "ore"));
        if (scene == std::string("types")) {
            terminal.Send(pressMore);
            ASSERT_TRUE(terminal.ReadUntil("Small"));
        }
        terminal.HangUp();
        const int status = terminal.WaitForEnd();
        ASSERT_NE(status, -1) << scene;
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << scene << ' ' << status;
    }
}

TEST(TerminalEnd, StopsAndGoesOnWithCtrlZ) {
    PseudoTerminal terminal("types");
    ASSERT_TRUE(terminal.ReadUntil("ore"));
    terminal.Send("\x1A");
    ASSERT_TRUE(terminal.ReadUntil(usualScreen));
    ASSERT_TRUE(terminal.WaitForStop());
    terminal.Signal(SIGCONT);
    ASSERT_TRUE(terminal.ReadUntil("ore"));
    terminal.Send("\x1B");
    EXPECT_EQ(terminal.WaitForEnd(), 0);
    EXPECT_TRUE(terminal.HasSettingsBack());
}
