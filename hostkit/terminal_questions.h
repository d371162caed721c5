#pragma once
// Messages and questions of the host as dialogs, for a host whose windows can be seen.

#include <optional>
#include <string>

#include "hostkit/host.h"

namespace hostkit {

/// Shows a text, one that may have several lines, until its button is pressed. On any thread: the
/// dialog runs on the calling one, above the window that this thread has in front.
void ShowMessageDialog(const std::string& text);

/// Asks for the password of a server, at most 79 characters. Nothing when it is cancelled.
std::optional<std::string> AskPasswordDialog(const std::string& server);

/// Has a host show messages and errors, and ask for passwords, in dialogs. To be called when a
/// display is in use (quennet_terminal.h): without one nobody sees them, and they wait for ever.
void AskInDialogs(HostOptions& options);

}  // namespace hostkit
