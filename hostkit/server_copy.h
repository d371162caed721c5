#pragma once
// Copies of a file from one server to another, whose bytes do not pass through this machine.

#include <string>

#include "hostkit/connection.h"

namespace hostkit {

/// What is to be copied. The servers are told last components alone: for a bare name, one without
/// '/', a session must stand in its directory; of a path, the directory becomes the session's own
/// first.
struct ServerCopyRequest {
    std::string source;       // on the source's server, at most 259 bytes
    std::string destination;  // on the destination's, at most 259 bytes
};

struct ServerCopyResult {
    bool done = false;
    // Why it failed: the last words of each side that did not say that all went well.
    std::string sourceText;
    std::string destinationText;
    bool Done() const { return done; }
    bool HasText() const { return !sourceText.empty() || !destinationText.empty(); }
};

/// Copies a file from the server of one connection to that of another. An existing file is replaced
/// without a question, `operation` hears of no progress, and no time limit but those of the two
/// servers counts. `Abort` ends the wait for its own connection alone: a host calls it on both.
ServerCopyResult CopyBetween(Connection& source, Connection& destination,
                             const ServerCopyRequest& request, TransferOperation& operation);

}  // namespace hostkit
