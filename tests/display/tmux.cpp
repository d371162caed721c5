#include "display/tmux.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>
#include <utility>

#include "support/wait.h"

namespace {

std::string OutputOf(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    for (int byte = 0; pipe != nullptr && (byte = fgetc(pipe)) != EOF;) {
        output += static_cast<char>(byte);
    }
    return pipe == nullptr || pclose(pipe) < 0 ? "" : output;
}

std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char character : text) {
        quoted += character == '\'' ? "'\\''" : std::string(1, character);
    }
    return quoted + "'";
}

}  // namespace

bool TmuxTerminal::IsThere() {
    return !OutputOf("command -v tmux").empty();
}

TmuxTerminal::TmuxTerminal(int columns, int rows, const std::string& command) {
    // What the end of the server orphans is the test's then, so that its end can be seen.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    const std::string socket = folder_ / "socket";
    server_ = fork();
    if (server_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        signal(SIGHUP, SIG_DFL);
        execlp("tmux", "tmux", "-u", "-D", "-S", socket.c_str(), "-f", "/dev/null", nullptr);
        _exit(127);
    }
    WaitUntil([&] { return std::filesystem::exists(socket); });
    const std::string group =
        Run("new-session -d -P -F '#{pane_pid}' -x " + std::to_string(columns) + " -y " +
            std::to_string(rows) + " " + Quoted(command + "; echo status $?; cat"));
    group_ = static_cast<pid_t>(std::strtol(group.c_str(), nullptr, 10));
    EXPECT_GT(group_, 1) << group;
}

TmuxTerminal::~TmuxTerminal() {
    EXPECT_TRUE(HangUp()) << "the program did not end with its terminal";
}

bool TmuxTerminal::HangUp() {
    if (server_ > 0) {
        kill(server_, SIGTERM);
        waitpid(std::exchange(server_, -1), nullptr, 0);
    }
    if (group_ <= 1) {
        return true;
    }
    const pid_t group = std::exchange(group_, -1);
    const auto ended = [&] {
        while (waitpid(-group, nullptr, WNOHANG) > 0) {
        }
        return kill(-group, 0) != 0;
    };
    if (WaitUntil(ended)) {
        return true;
    }
    kill(-group, SIGKILL);
    WaitUntil(ended);
    return false;
}

std::string TmuxTerminal::Run(const std::string& command) const {
    return OutputOf("tmux -u -S " + Quoted(folder_ / "socket") + " " + command + " 2>&1");
}

void TmuxTerminal::Press(const std::vector<std::string>& keys) const {
    std::string command = "send-keys";
    for (const std::string& key : keys) {
        command += " " + Quoted(key);
    }
    Run(command);
}

void TmuxTerminal::Send(const std::string& bytes) const {
    Run("send-keys -l " + Quoted(bytes));
}

void TmuxTerminal::Click(int x, int y) const {
    // A byte for the button, one for the column and one for the row.
    const auto byte = [](int value) { return static_cast<char>(' ' + value); };
    const std::string place = {byte(x + 1), byte(y + 1)};
    Send("\x1B[M " + place + "\x1B[M#" + place);
}

void TmuxTerminal::Resize(int columns, int rows) const {
    Run("resize-window -x " + std::to_string(columns) + " -y " + std::to_string(rows));
}

std::string TmuxTerminal::Screen(const std::string& options) const {
    std::string trimmed;
    std::stringstream lines(Run("capture-pane -p " + options));
    for (std::string line; std::getline(lines, line);) {
        line.erase(line.find_last_not_of(' ') + 1);
        trimmed += line + '\n';
    }
    return trimmed;
}

std::string TmuxTerminal::WaitFor(const std::string& text) const {
    std::string screen;
    WaitUntil([&] { return (screen = Screen()).find(text) != screen.npos; });
    return screen;
}

std::string TmuxTerminal::Cursor() const {
    std::string cursor = Run("display -p '#{cursor_x},#{cursor_y}'");
    cursor.erase(cursor.find_last_not_of('\n') + 1);
    return cursor;
}

void TmuxTerminal::ExpectScreen(const std::string& name) const {
    const std::string path = std::string(SCREENS_FOLDER) + "/" + name + ".txt";
    if (std::getenv("QUENNET_WRITE_SCREENS") != nullptr) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        std::ofstream(path) << Screen();
        return;
    }
    const std::string expected = ReadWhole(path);
    ASSERT_FALSE(expected.empty()) << path;
    std::string screen;
    WaitUntil([&] { return (screen = Screen()) == expected; });
    EXPECT_EQ(screen, expected) << name;
}
