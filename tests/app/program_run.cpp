#include "app/program_run.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto patience = std::chrono::seconds(10);

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> Environment(const TempFolder& home) {
    const std::string path = home / "";
    std::vector<std::string> variables = {"HOME=" + path, "TMPDIR=" + path, "TERM=xterm", "TZ=UTC"};
    for (const char* name : {"PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name)) {
            variables.push_back(std::string(name) + "=" + value);
        }
    }
    return variables;
}

std::vector<std::string> Command(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {QUENNET_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

pid_t Spawn(const TempFolder& home, const TempFolder& streams, std::vector<std::string> words) {
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
    posix_spawn_file_actions_addchdir_np(&actions, (home / "").c_str());
    const std::string program = words.front();
    if (posix_spawn(&process, program.c_str(), &actions, nullptr, Pointers(words).data(),
                    Pointers(variables).data()) != 0) {
        process = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    return process;
}

int WaitFor(pid_t process) {
    int status = 0;
    if (process == -1 || waitpid(process, &status, 0) != process) {
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

RunResult ResultOf(pid_t process, const TempFolder& streams) {
    const int status = WaitFor(process);
    return {status, streams.Read("output"), streams.Read("errors")};
}

}  // namespace

ProgramRun::ProgramRun(const TempFolder& home, const std::vector<std::string>& arguments)
    : process_(Spawn(home, streams_, Command(arguments))) {}

ProgramRun::~ProgramRun() {
    if (process_ != -1) {
        kill(process_, SIGKILL);
        WaitFor(process_);
    }
}

void ProgramRun::Signal(int signal) const {
    if (process_ != -1) {
        kill(process_, signal);
    }
}

RunResult ProgramRun::Finish() {
    const RunResult result = ResultOf(process_, streams_);
    process_ = -1;
    return result;
}

RunResult Quennet(const TempFolder& home, const std::vector<std::string>& arguments) {
    return ProgramRun(home, arguments).Finish();
}

RunResult Shell(const TempFolder& home, const std::string& command) {
    const TempFolder streams;
    return ResultOf(Spawn(home, streams, {"/bin/bash", "-c", command, QUENNET_PROGRAM}), streams);
}

TerminalRun::TerminalRun(const TempFolder& home, const std::vector<std::string>& arguments) {
    std::vector<std::string> words = Command(arguments);
    std::vector<std::string> variables = Environment(home);
    const std::vector<char*> wordPointers = Pointers(words);
    const std::vector<char*> variablePointers = Pointers(variables);
    const std::string folder = home / "";
    const winsize size = {24, 80, 0, 0};
    process_ = forkpty(&terminal_, nullptr, nullptr, &size);
    if (process_ == 0) {
        if (chdir(folder.c_str()) == 0) {
            execve(wordPointers[0], wordPointers.data(), variablePointers.data());
        }
        _exit(127);
    }
}

TerminalRun::~TerminalRun() {
    if (process_ > 0) {
        kill(process_, SIGKILL);
        WaitFor(process_);
    }
    close(terminal_);
}

bool TerminalRun::ReadSome(std::chrono::milliseconds wait) {
    pollfd end = {terminal_, POLLIN, 0};
    if (poll(&end, 1, static_cast<int>(wait.count())) <= 0) {
        return false;
    }
    char block[4096];
    const ssize_t count = read(terminal_, block, sizeof(block));
    if (count <= 0) {
        return false;
    }
    shown_.append(block, static_cast<std::size_t>(count));
    return true;
}

bool TerminalRun::Await(const std::string& text) {
    const auto end = Clock::now() + patience;
    while (shown_.find(text) == shown_.npos) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left.count() <= 0 || !ReadSome(left)) {
            return false;
        }
    }
    return true;
}

void TerminalRun::Type(const std::string& text) const {
    [[maybe_unused]] const ssize_t count = write(terminal_, text.data(), text.size());
}

int TerminalRun::Finish() {
    while (ReadSome(patience)) {
    }
    const int status = WaitFor(process_);
    process_ = -1;
    return status;
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
