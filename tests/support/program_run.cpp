#include "support/program_run.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <utility>

#include "support/wait.h"

namespace {

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

/// Runs a program in a child; `prepare` sets up its streams there, without taking memory.
pid_t Spawn(const std::string& home, const std::string& program, std::vector<std::string> words,
            const std::function<void()>& prepare) {
    words.insert(words.begin(), program);
    std::vector<std::string> variables = Environment(home);
    const std::vector<char*> wordPointers = Pointers(words);
    const std::vector<char*> variablePointers = Pointers(variables);
    const pid_t process = fork();
    if (process == 0) {
        prepare();
        if (chdir(home.c_str()) == 0) {
            execve(wordPointers[0], wordPointers.data(), variablePointers.data());
        }
        _exit(127);
    }
    return process;
}

int StatusOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
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
                       const std::string& program) {
    constexpr int createFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    const int streams[] = {open("/dev/null", O_RDONLY | O_CLOEXEC),
                           open((streams_ / "output").c_str(), createFlags, 0600),
                           open((streams_ / "errors").c_str(), createFlags, 0600)};
    process_ = Spawn(home, program, arguments, [&] {
        for (int number = 0; number < 3; ++number) {
            dup2(streams[number], number);
        }
    });
    for (const int stream : streams) {
        close(stream);
    }
}

ProgramRun::~ProgramRun() {
    Kill(process_);
}

void ProgramRun::Signal(int signal) const {
    if (process_ != -1) {
        kill(process_, signal);
    }
}

RunResult ProgramRun::Finish() {
    int status = 0;
    if (waitpid(std::exchange(process_, -1), &status, 0) < 0) {
        return {};
    }
    return {StatusOf(status), streams_.Read("output"), streams_.Read("errors")};
}

RunResult Quennet(const std::filesystem::path& home, const std::vector<std::string>& arguments) {
    return ProgramRun(home, arguments).Finish();
}

RunResult Shell(const std::filesystem::path& home, const std::string& command) {
    return ProgramRun(home, {"-c", command, quennetProgram}, "/bin/bash").Finish();
}

TerminalRun::TerminalRun(const std::filesystem::path& home,
                         const std::vector<std::string>& arguments, const std::string& program) {
    const winsize size = {24, 80, 0, 0};
    if (openpty(&terminal_, &otherEnd_, nullptr, nullptr, &size) != 0) {
        return;
    }
    fcntl(terminal_, F_SETFD, FD_CLOEXEC);
    fcntl(otherEnd_, F_SETFD, FD_CLOEXEC);
    process_ = Spawn(home, program, arguments, [this] {
        signal(SIGHUP, SIG_DFL);
        login_tty(otherEnd_);
    });
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
    return WaitUntil([&] {
        ReadSome(std::chrono::milliseconds(10));
        return shown_.find(text) != shown_.npos;
    });
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
    int status = 0;
    const bool ended = WaitUntil([&] {
        ReadSome(std::chrono::milliseconds(10));
        return waitpid(process_, &status, WNOHANG) != 0;
    });
    if (!ended) {
        return -1;
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
    return WaitUntil(
        [&] { return std::filesystem::exists(path) && std::filesystem::file_size(path) >= size; });
}

std::vector<std::string> NamesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}
