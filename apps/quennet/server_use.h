#pragma once
// How commands that change what a server holds begin: connected, in the right directory.

#include <functional>
#include <string>

#include "client.h"
#include "options.h"
#include "status.h"
#include "url.h"
#include "watch.h"

namespace cli {

constexpr char connectionLost[] = "the connection was lost";

/// Runs a command with a connection to the URL's server.
void RunConnected(const Options& options, Watch& watch, Status& status, const Url& url,
                  const std::function<void(Client& client)>& command);

/// Enters a directory. Throws a Failure with the server's words.
void EnterOrFail(Client& client, const std::string& directory);

/// The URL without slashes at its end: of a directory too, the last component is its name.
Url WithoutEndSlashes(Url url);

/// What the URL names. Throws a usage Failure when that can't be changed.
std::string NameOrFail(const Url& url);

/// Whether a name that no listing shows, or a path from the directory entered last, may be written
/// to: the server is asked whether it is there. Throws a Failure when that can't be known, or when
/// it is there and nobody says what to do.
bool MayWriteUnlisted(Client& client, const Options& options, Status& status, const Watch& watch,
                      const std::string& name);

/// Enters the directory of what the options' URL names, and runs a command on that name.
void RunOnName(const Options& options, Watch& watch, Status& status,
               const std::function<void(Client& client, const std::string& name)>& command);

}  // namespace cli
