#include "support/program_run.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <algorithm>
#include <cstdlib>
#include <thread>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto patience = std::chrono::seconds(30);

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> Environment(const std::string& home) {
    std::vector<std::string> variables = {"HOME=" + home, "TMPDIR=" + home, "TERM=xterm", "TZ=UTC"};
    for (const char* name : {"PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name)) {
            variables.push_back(std::string(name) + "=" + value);
        }
    }
    return variables;
}

pid_t Spawn(const std::string& home, const TempFolder& streams, std::vector<std::string> words) {
    std::vector<std::string> variables = Environment(home);
    constexpr int createFlags = O_WRONLY | O_CREAT | O_TRUNC;
    pid_t process = -1;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (streams / "output").c_str(),
                                     createFlags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (streams / "errors").c_str(),
                                     createFlags, 0600);
    posix_spawn_file_actions_addchdir_np(&actions, home.c_str());
    const std::string program = words.front();
    if (posix_spawn(&process, program.c_str(), &actions, nullptr, Pointers(words).data(),
                    Pointers(variables).data()) != 0) {
        process = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    return process;
}

std::vector<std::string> WithProgram(const std::string& program,
                                     std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), program);
    return arguments;
}

int StatusOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

RunResult ResultOf(pid_t process, const TempFolder& streams) {
    int status = 0;
    if (process == -1 || waitpid(process, &status, 0) != process) {
        return {};
    }
    return {StatusOf(status), streams.Read("output"), streams.Read("errors")};
}

void Kill(pid_t process) {
    if (process > 0) {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
}

}  // namespace

const char* const quennetProgram = QUENNET_PROGRAM;

ProgramRun::ProgramRun(const std::filesystem::path& home, const std::vector<std::string>& arguments,
                       const std::string& program)
    : process_(Spawn(home, streams_, WithProgram(program, arguments))) {}

ProgramRun::~ProgramRun() {
    Kill(process_);
}

void ProgramRun::Signal(int signal) const {
    if (process_ != -1) {
        kill(process_, signal);
    }
}

RunResult ProgramRun::Finish() {
    return ResultOf(std::exchange(process_, -1), streams_);
}

RunResult Quennet(const std::filesystem::path& home, const std::vector<std::string>& arguments) {
    return ProgramRun(home, arguments).Finish();
}

RunResult Shell(const std::filesystem::path& home, const std::string& command) {
    return ProgramRun(home, {"-c", command, quennetProgram}, "/bin/bash").Finish();
}

TerminalRun::TerminalRun(const std::filesystem::path& home,
                         const std::vector<std::string>& arguments, const std::string& program) {
    std::vector<std::string> words = WithProgram(program, arguments);
    std::vector<std::string> variables = Environment(home);
    const std::vector<char*> wordPointers = Pointers(words);
    const std::vector<char*> variablePointers = Pointers(variables);
    const winsize size = {24, 80, 0, 0};
    if (openpty(&terminal_, &otherEnd_, nullptr, nullptr, &size) != 0) {
        return;
    }
    fcntl(terminal_, F_SETFD, FD_CLOEXEC);
    fcntl(otherEnd_, F_SETFD, FD_CLOEXEC);
    process_ = fork();
    if (process_ == 0) {
        signal(SIGHUP, SIG_DFL);
        if (login_tty(otherEnd_) == 0 && chdir(home.c_str()) == 0) {
            execve(wordPointers[0], wordPointers.data(), variablePointers.data());
        }
        _exit(127);
    }
}

TerminalRun::~TerminalRun() {
    HangUp();
    Kill(process_);
}

void TerminalRun::HangUp() {
    for (int* end : {&otherEnd_, &terminal_}) {
        if (*end >= 0) {
            close(std::exchange(*end, -1));
        }
    }
}

// One block: a program that never stops writing must not keep its reader.
bool TerminalRun::ReadSome(std::chrono::milliseconds wait) {
    pollfd end = {terminal_, POLLIN, 0};
    if (poll(&end, 1, static_cast<int>(wait.count())) <= 0) {
        return false;
    }
    char block[4096];
    const ssize_t count = read(terminal_, block, sizeof(block));
    shown_.append(block, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count > 0;
}

bool TerminalRun::Await(const std::string& text) {
    const auto end = Clock::now() + patience;
    while (shown_.find(text) == shown_.npos && Clock::now() < end) {
        ReadSome(std::chrono::milliseconds(10));
    }
    return shown_.find(text) != shown_.npos;
}

void TerminalRun::Type(const std::string& text) const {
    [[maybe_unused]] const ssize_t count = write(terminal_, text.data(), text.size());
}

void TerminalRun::Signal(int signal) const {
    kill(process_, signal);
}

bool TerminalRun::WaitForStop() const {
    int status = 0;
    return waitpid(process_, &status, WUNTRACED) == process_ && WIFSTOPPED(status);
}

int TerminalRun::Finish() {
    const auto end = Clock::now() + patience;
    int status = 0;
    while (waitpid(process_, &status, WNOHANG) == 0) {
        if (Clock::now() > end) {
            return -1;
        }
        ReadSome(std::chrono::milliseconds(10));
    }
    process_ = -1;
    while (ReadSome(std::chrono::milliseconds(0))) {
    }
    return StatusOf(status);
}

termios TerminalRun::Settings() const {
    termios settings = {};
    tcgetattr(otherEnd_, &settings);
    return settings;
}

bool AwaitSize(const std::filesystem::path& path, std::uintmax_t size) {
    const auto end = Clock::now() + patience;
    while (Clock::now() < end) {
        std::error_code missing;
        const std::uintmax_t now = std::filesystem::file_size(path, missing);
        if (!missing && now >= size) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return false;
}

std::vector<std::string> NamesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}
