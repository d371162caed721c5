#pragma once
// A real FTP server for the length of a test.

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace quennet::interop {

enum class ServerKind { vsftpd, pureFtpd, proFtpd, pyftpdlib };

constexpr ServerKind allServerKinds[] = {ServerKind::vsftpd, ServerKind::pureFtpd,
                                         ServerKind::proFtpd, ServerKind::pyftpdlib};

/// The name that people type: "vsftpd", "pure-ftpd", "proftpd", "pyftpdlib".
std::string_view ServerName(ServerKind kind);

/// With a password; it may read and write the served folder. Empty where the server has none.
struct Account {
    std::string user;
    std::string password;
};

/// One server on 127.0.0.1, started by the constructor, over one folder.
///
/// It runs below a process of its own, `interop_server.py`, which takes the server and all of its
/// sessions down with it, also when the test is killed. Make it on a thread that outlives it, the
/// test's main thread: the end of that thread is the server's end too. Its operations are for one
/// thread at a time.
class Server {
  public:
    struct Options {
        bool foreignAddresses = false;     // a client may name another host for a data connection
        int port = 0;                      // 0: any free one
        std::uint64_t bytesPerSecond = 0;  // of each data connection, at least 1024; 0: no limit
    };

    Server(ServerKind kind, const std::filesystem::path& root) : Server(kind, root, Options()) {}
    Server(ServerKind kind, const std::filesystem::path& root, Options options);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    bool Running() const { return process_ != -1; }
    /// It can't be had on this machine, as opposed to one that failed.
    bool Unavailable() const { return unavailable_; }
    /// Why it does not run.
    const std::string& Failure() const { return failure_; }

    int Port() const { return port_; }
    const Account& GetAccount() const { return account_; }
    bool Anonymous() const { return anonymous_; }
    /// What the server has logged so far.
    std::string Log() const;

    /// Halts the server with all its sessions, and lets them go on: in between it is as silent as a
    /// server whose machine has hung.
    void Halt();
    void Resume();

    /// Ends the server and its sessions at once, as a crash does.
    void Stop();
    /// Starts it again on the port that it had.
    void Restart();

  private:
    void Start(int port);
    void AwaitReady();
    std::optional<std::string> ReadLine();
    void AwaitLine(const std::string& expected);

    const ServerKind kind_;
    const std::filesystem::path root_;
    const Options options_;
    pid_t process_ = -1;
    int output_ = -1;  // what interop_server.py prints
    std::string unread_;
    bool unavailable_ = false;
    std::string failure_;
    int port_ = 0;
    Account account_;
    bool anonymous_ = false;
    std::filesystem::path log_;
};

}  // namespace quennet::interop
