#pragma once
// A session whose server is this process: the module's calls of the socket interface end here, so
// nothing waits and no thread is needed. Link it and no socket of the platform is used.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "control/server_family.h"
#include "control/session.h"

/// What happens behind the server's text.
enum class TextEnd : unsigned { closed, reset, silence };

/// The text of an input, and how it comes.
struct ServerText {
    std::string_view text;
    std::size_t piece;  // bytes that arrive in one second
    TextEnd end;        // in a silence the watchdog ends each wait

    /// The first byte of an input says how long the pieces are and what comes last; the rest is the
    /// text.
    static ServerText FromInput(std::string_view input);
};

class FedSession {
  public:
    /// A connected session, with a host around it. One at a time.
    FedSession(const ServerText& server, quennet::ServerFamily family);

    quennet::Session* operator->() const { return session_; }
    operator quennet::Session*() const { return session_; }

    /// What the console shows.
    const std::vector<std::string>& Lines() const;
    /// What the module has said, line ends included.
    const std::string& Heard() const;
    /// How much of the text it has taken.
    std::size_t Taken() const;

    /// Holds what the module has said against the commands that it may give.
    void ExpectCommands(const std::vector<std::string>& commands) const;
    /// Nothing is left under way, and no field but those of replies has changed.
    void ExpectInOrder() const;

  private:
    quennet::Session* session_;
};

/// What the module does with a data connection here: it connects.
quennet::u16 PortOfDataConnection();
constexpr quennet::u32 serverAddress = 0x7F000001;
