#pragma once
// A small FTP server on 127.0.0.1, for demonstrations and tests. It serves one folder, which it
// never leaves, to several clients at once, lists it the way the server families do, and
// misbehaves on request.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "breaker.h"
#include "fault.h"
#include "listing.h"

namespace loopback {

/// How a server is set up. What may change while it runs has a function of its own below.
struct Options {
    std::string root;                             // the folder that is served; must exist
    std::uint16_t port = 0;                       // 0 takes a free one
    std::map<std::string, std::string> accounts;  // user name to password; none: anyone may log in
    bool anonymous = true;       // "anonymous" and "ftp" may log in with any password
    bool accountWanted = false;  // PASS is answered 332, and the login ends with ACCT
    bool writable = true;        // else all commands that change the folder are refused
    bool foreignPorts = false;   // PORT may name another address of 127.0.0.0/8 than the client's
    ListFormat format = ListFormat::posix;
    std::map<std::string, ListFormat> formats;  // by directory, such as "/pub": instead of `format`
    std::string system;  // reply text to SYST; empty: one that suits `format`
    std::string welcome = "220 Loopback server ready";
    int clientLimit = 32;   // further ones are answered 421
    int idleSeconds = 300;  // then the control connection is closed with 421
    int dataSeconds = 60;   // for a data connection to come about, or to move a byte
};

/// One line of the control connections, without its line end.
struct LogLine {
    int client;       // 1 for the first connection, and so on
    bool fromClient;  // else a reply
    std::string text;
};

/// A running server. Every operation may be called from any thread.
class Server {
  public:
    /// Listens and serves from here on. Throws std::system_error when the folder or the port cannot
    /// be had.
    explicit Server(Options options);
    /// Stops.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::uint16_t Port() const;

    /// Ends all connections, whatever they are doing, and returns when their threads have ended.
    void Stop();

    /// Adds a rule; its occurrences count from here on.
    void Add(Fault fault);
    void ClearFaults();

    /// Counts bytes from here on, and breaks the connection behind the chosen one.
    void SetBreak(const Break& next);
    bool HasBroken() const;

    void SetSystem(std::string text);
    /// Sets the format of one directory, such as "/pub".
    void SetFormat(std::string directory, ListFormat format);

    /// All lines since the start or the last ClearLog, in the order in which they came. The server
    /// keeps the last 20,000.
    std::vector<LogLine> Log() const;
    void ClearLog();
    /// The command lines alone, of all clients.
    std::vector<std::string> Commands() const;

    /// Connections that are open now, and since the start.
    int ClientCount() const;
    int ConnectionCount() const;

    /// Drops all control connections at once, as a crash of the server would; it goes on listening.
    void DropClients();

  private:
    class House;
    std::unique_ptr<House> house_;
};

}  // namespace loopback
