#include "interop/program.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <string_view>

#include "interop/folders.h"

extern char** environ;

namespace quennet::interop {

namespace fs = std::filesystem;

namespace {

// This process's environment with another home.
std::vector<std::string> Environment(const fs::path& home) {
    std::vector<std::string> variables = {"HOME=" + home.string(),
                                          "XDG_CONFIG_HOME=" + (home / "settings").string()};
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        if (!text.starts_with("HOME=") && !text.starts_with("XDG_CONFIG_HOME=")) {
            variables.emplace_back(text);
        }
    }
    return variables;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::string Encoded(const std::string& text) {
    std::string encoded;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isalnum(byte) != 0 ||
            std::string_view("/.-_").find(character) != std::string::npos) {
            encoded += character;
            continue;
        }
        char digits[4];
        std::snprintf(digits, sizeof(digits), "%%%02X", byte);
        encoded += digits;
    }
    return encoded;
}

}  // namespace

Program::Program(const fs::path& home, const std::vector<std::string>& arguments)
    : outputFile_(home / ".program-output"), errorFile_(home / ".program-errors") {
    std::vector<std::string> words = {QUENNET_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = Environment(home);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int createFlags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile_.c_str(), createFlags,
                                     0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errorFile_.c_str(), createFlags,
                                     0600);
    posix_spawn_file_actions_addchdir_np(&actions, home.c_str());
    if (posix_spawn(&process_, QUENNET_PROGRAM, &actions, nullptr, Pointers(words).data(),
                    Pointers(variables).data()) != 0) {
        process_ = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
}

Program::~Program() {
    if (process_ != -1) {
        kill(process_, SIGKILL);
        Finish();
    }
}

void Program::Signal(int signal) {
    if (process_ != -1) {
        kill(process_, signal);
    }
}

ProgramResult Program::Finish() {
    ProgramResult result;
    int status = 0;
    if (process_ != -1 && waitpid(process_, &status, 0) == process_) {
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    process_ = -1;
    result.output = ReadBytes(outputFile_);
    result.errors = ReadBytes(errorFile_);
    return result;
}

ProgramResult RunProgram(const fs::path& home, const std::vector<std::string>& arguments) {
    return Program(home, arguments).Finish();
}

std::string UrlOf(const Server& server, const std::string& path) {
    const Account& account = server.GetAccount();
    return "ftp://" + Encoded(account.user) + ":" + Encoded(account.password) +
           "@127.0.0.1:" + std::to_string(server.Port()) + "/" + Encoded(path);
}

}  // namespace quennet::interop
