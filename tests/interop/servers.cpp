#include "interop/servers.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <utility>
#include <vector>

#include "support/temp_folder.h"

namespace quennet::interop {

namespace {

constexpr const char* python = "/usr/bin/python3";
constexpr int exitUnavailable = 77;  // of interop_server.py
constexpr int answerMilliseconds = 60000;

}  // namespace

std::string_view ServerName(ServerKind kind) {
    constexpr std::string_view names[] = {"vsftpd", "pure-ftpd", "proftpd", "pyftpdlib"};
    return names[static_cast<int>(kind)];
}

Server::Server(ServerKind kind, const std::filesystem::path& root, Options options)
    : kind_(kind), root_(root), options_(options) {
    Start(options.port);
}

Server::~Server() {
    Stop();
}

void Server::Start(int port) {
    std::vector<std::string> words = {python, QUENNET_INTEROP_SERVER};
    if (port != 0) {
        words.insert(words.end(), {"--port", std::to_string(port)});
    }
    if (options_.foreignAddresses) {
        words.push_back("--foreign");
    }
    if (options_.bytesPerSecond != 0) {
        words.insert(words.end(), {"--rate", std::to_string(options_.bytesPerSecond)});
    }
    words.insert(words.end(),
                 {QUENNET_INTEROP_SERVERS, std::string(ServerName(kind_)), root_.string()});
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        failure_ = "no pipe";
        return;
    }
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        dup2(ends[1], STDOUT_FILENO);
        execv(python, arguments.data());
        _exit(exitUnavailable);
    }
    close(ends[1]);
    output_ = ends[0];
    AwaitReady();
}

void Server::AwaitReady() {
    std::map<std::string, std::string> said;
    std::optional<std::string> line;
    while ((line = ReadLine()) && *line != "ready") {
        const std::size_t blank = std::min(line->find(' '), line->size() - 1);
        said[line->substr(0, blank)] = line->substr(blank + 1);
    }
    if (line) {
        port_ = std::stoi(said["port"]);
        account_ = {said["user"], said["password"]};
        anonymous_ = said["anonymous"] == "yes";
        log_ = said["log"];
        return;
    }
    int status = 0;
    kill(process_, SIGTERM);
    waitpid(std::exchange(process_, -1), &status, 0);
    unavailable_ = WIFEXITED(status) && WEXITSTATUS(status) == exitUnavailable;
    if (!unavailable_) {
        failure_ = std::string(ServerName(kind_)) + " did not start";
    } else if (said.contains("why")) {
        failure_ = said["why"];
    } else {
        failure_ = "no FTP servers here: as root, apt-get install python3";
    }
}

std::optional<std::string> Server::ReadLine() {
    std::size_t end = 0;
    while ((end = unread_.find('\n')) == std::string::npos) {
        char block[512];
        pollfd readable{output_, POLLIN, 0};
        if (poll(&readable, 1, answerMilliseconds) != 1) {
            return std::nullopt;
        }
        const ssize_t count = read(output_, block, sizeof(block));
        if (count <= 0) {
            return std::nullopt;
        }
        unread_.append(block, static_cast<std::size_t>(count));
    }
    const std::string line = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    return line;
}

void Server::AwaitLine(const std::string& expected) {
    std::optional<std::string> line;
    while ((line = ReadLine()) && *line != expected) {
    }
}

std::string Server::Log() const {
    return ReadWhole(log_);
}

void Server::Halt() {
    kill(process_, SIGUSR1);
    AwaitLine("halted");
}

void Server::Resume() {
    kill(process_, SIGUSR2);
    AwaitLine("resumed");
}

void Server::Stop() {
    if (process_ != -1) {
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
        process_ = -1;
    }
    if (output_ != -1) {
        close(output_);
        output_ = -1;
    }
    unread_.clear();
}

void Server::Restart() {
    Stop();
    Start(port_);
}

}  // namespace quennet::interop
