#pragma once
// What each real FTP server needs to serve one folder on 127.0.0.1: settings, command line,
// account.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quennet::interop {

enum class ServerKind { vsftpd, pureFtpd, proFtpd, pyftpdlib };

constexpr ServerKind allServerKinds[] = {ServerKind::vsftpd, ServerKind::pureFtpd,
                                         ServerKind::proFtpd, ServerKind::pyftpdlib};

/// The name that people type: "vsftpd", "pure-ftpd", "proftpd", "pyftpdlib".
std::string_view ServerName(ServerKind kind);

std::optional<ServerKind> ServerKindFromName(std::string_view name);

struct Account {
    std::string user;
    std::string password;
};

/// The account with a password, which may read and write the served folder.
///
/// vsftpd knows accounts of the system only. Run as root it takes one of them, with any password;
/// run by someone else it has none, and the user is empty.
Account AccountOf(ServerKind kind);

/// Whether anonymous clients are served too.
bool ServesAnonymous(ServerKind kind);

/// Where things lie, and what is served.
struct ServeRequest {
    ServerKind kind;
    std::filesystem::path root;     // the served folder
    std::filesystem::path servers;  // where fetch_servers.sh has put the programs
    std::filesystem::path scripts;  // where pyftpd_server.py lies
    std::filesystem::path state;    // an empty folder for settings and log
    int port;                       // of the control connection
    bool foreignAddresses;          // a client may name another host for a data connection
    std::uint64_t bytesPerSecond;   // of each data connection, at least 1024; 0: no limit
};

/// Why this server can't run here; empty when it can.
std::string WhyUnavailable(const ServeRequest& request);

/// Where the server's log will stand; pure-ftpd writes none but of its transfers.
std::filesystem::path LogOf(const ServeRequest& request);

/// Writes the settings into the state folder and returns the command line that runs the server in
/// the foreground.
std::vector<std::string> PrepareServer(const ServeRequest& request);

}  // namespace quennet::interop
