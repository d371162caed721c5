#pragma once
// Questions to the person at the terminal.

#include <optional>
#include <string>

#include "status.h"
#include "watch.h"

namespace cli {

/// Whether somebody can be asked: standard input and standard error are a terminal.
bool CanAsk();

/// Asks for a line; nothing at the end of the input, and when the watch's verdict falls.
std::optional<std::string> AskLine(Status& status, const Watch& watch, const std::string& question);

/// The same, and nothing that is typed shows on the terminal.
std::optional<std::string> AskSecret(Status& status, const Watch& watch,
                                     const std::string& question);

}  // namespace cli
