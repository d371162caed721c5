// Runs one real FTP server in the foreground over one folder.
//
//   interop_server [--port PORT] [--foreign] [--rate BYTES] KIND ROOT
//
// The rate is that of each data connection, in bytes a second.
//
// Prints what a client needs, a line each: "port NUMBER", "user NAME", "password TEXT",
// "anonymous yes" or "no", "log PATH", and "ready" at the end. Whatever the server has started ends
// with this program, and this program ends with the one that started it.
//
// Signals: SIGTERM, SIGINT and SIGHUP stop the server as a crash would; SIGUSR1 halts it and all
// its sessions, so that it falls silent; SIGUSR2 lets them go on. A line, "halted" or "resumed",
// says that it is done.
//
// Exit status: 0 stopped by a signal, 1 the server failed, 2 usage, 77 it can't be had here.

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <random>
#include <system_error>
#include <unordered_map>

#include "interop/server_setup.h"
#include "loopback/socket.h"
#include "support/temp_folder.h"

namespace quennet::interop {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int exitUsage = 2;
constexpr int exitUnavailable = 77;
constexpr auto greetingTime = std::chrono::seconds(10);

// The signals that this program waits for; all of them stay blocked outside the wait.
sigset_t AwaitedSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (int signal : {SIGTERM, SIGINT, SIGHUP, SIGUSR1, SIGUSR2, SIGCHLD}) {
        sigaddset(&set, signal);
    }
    return set;
}

// Below the ports of outgoing connections and of passive data connections, so that nothing takes
// the port between this look at it and the server's start; two tests may, hence the caller's tries.
int FreePort() {
    std::random_device random;
    while (true) {
        const auto port = static_cast<std::uint16_t>(10000 + random() % 10000);
        try {
            return loopback::Listen(port).port;
        } catch (const std::system_error&) {
            continue;
        }
    }
}

// Processes that descend from this one. All of them do that the server started, however it detached
// them: this program is their reaper.
std::vector<pid_t> Descendants() {
    std::unordered_map<pid_t, pid_t> parents;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
        const pid_t process = std::atoi(entry.path().filename().c_str());
        std::ifstream file(entry.path() / "stat");
        std::string text;
        std::getline(file, text);
        const std::size_t nameEnd = text.rfind(')');
        if (process > 0 && nameEnd != std::string::npos && nameEnd + 4 < text.size()) {
            parents[process] = std::atoi(text.c_str() + nameEnd + 4);
        }
    }
    std::vector<pid_t> found;
    for (const auto& [process, parent] : parents) {
        pid_t ancestor = parent;
        while (ancestor > 1 && ancestor != getpid()) {
            auto next = parents.find(ancestor);
            ancestor = next == parents.end() ? 0 : next->second;
        }
        if (ancestor == getpid()) {
            found.push_back(process);
        }
    }
    return found;
}

void SignalDescendants(int signal) {
    for (pid_t process : Descendants()) {
        kill(process, signal);
    }
}

// Ends every descendant and waits until none is left.
void EndDescendants() {
    while (true) {
        SignalDescendants(SIGKILL);
        pid_t ended = 0;
        while ((ended = waitpid(-1, nullptr, WNOHANG)) > 0) {
        }
        if (ended == -1 && errno == ECHILD) {
            return;
        }
        usleep(2000);
    }
}

pid_t StartProcess(const std::vector<std::string>& arguments) {
    std::vector<char*> words;
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    // Dates in listings are to be the same on every machine, and names UTF-8.
    char path[] = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
    char locale[] = "LC_ALL=C.UTF-8";
    char zone[] = "TZ=UTC";
    char* environment[] = {path, locale, zone, nullptr};

    const pid_t process = fork();
    if (process != 0) {
        return process;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    execve(words[0], words.data(), environment);
    std::perror(words[0]);
    _exit(127);
}

bool Greets(int port) {
    const loopback::StopSignal never;
    const auto soon = Clock::now() + std::chrono::seconds(2);
    const loopback::Descriptor client =
        loopback::Connect(INADDR_LOOPBACK, static_cast<std::uint16_t>(port), soon, never);
    char code[3] = "";
    return client.Valid() &&
           loopback::WaitReady(client.Number(), false, soon, never) == loopback::Ready::yes &&
           loopback::ReadSome(client.Number(), code, 3) == 3 && std::memcmp(code, "220", 3) == 0;
}

bool AwaitGreeting(pid_t server, int port) {
    const auto end = Clock::now() + greetingTime;
    while (Clock::now() < end) {
        if (waitpid(server, nullptr, WNOHANG) == server) {
            return false;
        }
        if (Greets(port)) {
            return true;
        }
        usleep(5000);
    }
    return false;
}

// Starts the server; with a port of 0 on a free one, which then stands in the request.
pid_t StartServer(ServeRequest& request) {
    const bool anyPort = request.port == 0;
    for (int attempt = 0; attempt < (anyPort ? 5 : 1); ++attempt) {
        request.port = anyPort ? FreePort() : request.port;
        const pid_t server = StartProcess(PrepareServer(request));
        if (server > 0 && AwaitGreeting(server, request.port)) {
            return server;
        }
        EndDescendants();
    }
    return -1;
}

void PrintReady(const ServeRequest& request) {
    const Account account = AccountOf(request.kind);
    std::cout << "port " << request.port << "\nuser " << account.user << "\npassword "
              << account.password << "\nanonymous "
              << (ServesAnonymous(request.kind) ? "yes" : "no") << "\nlog "
              << LogOf(request).string() << "\nready" << std::endl;
}

// Waits for the signals until one of them, or the server's own end, is the end.
int Supervise(pid_t server) {
    const sigset_t awaited = AwaitedSignals();
    while (true) {
        switch (sigwaitinfo(&awaited, nullptr)) {
            case SIGUSR1:
                SignalDescendants(SIGSTOP);
                std::cout << "halted" << std::endl;
                break;
            case SIGUSR2:
                SignalDescendants(SIGCONT);
                std::cout << "resumed" << std::endl;
                break;
            case SIGCHLD: {
                pid_t ended = 0;
                while ((ended = waitpid(-1, nullptr, WNOHANG)) > 0) {
                    if (ended == server) {
                        std::cerr << "the server ended by itself\n";
                        return EXIT_FAILURE;
                    }
                }
                break;
            }
            case SIGTERM:
            case SIGINT:
            case SIGHUP:
                return EXIT_SUCCESS;
            default:
                break;
        }
    }
}

int Serve(ServeRequest request) {
    const std::string reason = WhyUnavailable(request);
    if (!reason.empty()) {
        std::cerr << reason << "\n";
        return exitUnavailable;
    }
    const TempFolder state;
    request.state = state.Path();

    const sigset_t awaited = AwaitedSignals();
    sigprocmask(SIG_BLOCK, &awaited, nullptr);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    prctl(PR_SET_PDEATHSIG, SIGTERM);

    const pid_t server = StartServer(request);
    if (server == -1) {
        std::cerr << ServerName(request.kind) << " does not start\n"
                  << std::ifstream(LogOf(request)).rdbuf() << "\n";
        return EXIT_FAILURE;
    }
    PrintReady(request);
    const int status = Supervise(server);
    EndDescendants();
    return status;
}

int Usage() {
    std::cerr << "usage: interop_server [--port PORT] [--foreign] [--rate BYTES] KIND ROOT\n"
                 "KIND is vsftpd, pure-ftpd, proftpd or pyftpdlib\n";
    return exitUsage;
}

int Main(const std::vector<std::string>& arguments) {
    ServeRequest request{};
    request.servers = QUENNET_INTEROP_SERVERS;
    request.scripts = QUENNET_INTEROP_SCRIPTS;
    std::vector<std::string> words;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        if (arguments[index] == "--foreign") {
            request.foreignAddresses = true;
        } else if (arguments[index] == "--port" && index + 1 < arguments.size()) {
            request.port = std::atoi(arguments[++index].c_str());
        } else if (arguments[index] == "--rate" && index + 1 < arguments.size()) {
            request.bytesPerSecond = std::strtoull(arguments[++index].c_str(), nullptr, 10);
        } else {
            words.push_back(arguments[index]);
        }
    }
    if (words.size() != 2 || !ServerKindFromName(words[0]) || !fs::is_directory(words[1])) {
        return Usage();
    }
    request.kind = *ServerKindFromName(words[0]);
    request.root = fs::canonical(words[1]);
    return Serve(request);
}

}  // namespace
}  // namespace quennet::interop

int main(int count, char** arguments) {
    return quennet::interop::Main({arguments + 1, arguments + count});
}
