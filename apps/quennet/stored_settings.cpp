#include "stored_settings.h"

#include <cstdlib>
#include <memory>

#include "failure.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr char folderName[] = "quennet";
constexpr char settingsName[] = "settings.ini";
constexpr char keyName[] = "password-key";

fs::path PathFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? fs::path(value) : fs::path();
}

}  // namespace

fs::path SettingsFolder() {
    const fs::path configuration = PathFromEnvironment("XDG_CONFIG_HOME");
    if (configuration.is_absolute()) {
        return configuration / folderName;
    }
    const fs::path home = PathFromEnvironment("HOME");
    if (home.empty()) {
        throw Failure(ExitStatus::failed, "neither XDG_CONFIG_HOME nor HOME is set");
    }
    return home / ".config" / folderName;
}

void UseStoredSettings(hostkit::HostOptions& options) {
    const fs::path folder = SettingsFolder();
    options.settings = std::make_shared<hostkit::FileSettings>(folder / settingsName);
    options.passwordKeyFile = folder / keyName;
}

}  // namespace cli
