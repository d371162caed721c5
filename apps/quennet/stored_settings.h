#pragma once
// The program's own settings: the site book and the key of its passwords.

#include <filesystem>

#include "hostkit/host.h"

namespace cli {

/// $XDG_CONFIG_HOME/quennet, or ~/.config/quennet where that is not set to an absolute path. Throws
/// a Failure when there is no home directory either.
std::filesystem::path SettingsFolder();

/// Gives a host the settings file and the password key in that folder. Nothing is made before it is
/// written.
void UseStoredSettings(hostkit::HostOptions& options);

}  // namespace cli
