#pragma once
// A host of the test's own, and its services as the module calls them.

#include <gtest/gtest.h>

#include "hostkit/host.h"
#include "hostkit/services.h"
#include "support/temp_folder.h"

inline quennet::HostMessage tables;

inline quennet::i32 KeepTables(const quennet::HostMessage* message) {
    tables = *message;
    return quennet::tablesStored;
}

template <typename Function>
Function Core(quennet::CoreService word) {
    const auto* core = quennet::PointerFromWord<const quennet::CoreServices>(tables.arg1);
    return reinterpret_cast<Function>(core->words[static_cast<quennet::u32>(word)]);
}

template <typename Function>
Function Shell(quennet::ShellService word) {
    const auto* shell = quennet::PointerFromWord<const quennet::ShellServices>(tables.arg3);
    return reinterpret_cast<Function>(shell->words[static_cast<quennet::u32>(word)]);
}

class ServicesTest : public ::testing::Test {
  protected:
    hostkit::HostOptions Options() {
        hostkit::HostOptions options;
        options.settings = settings;
        options.passwordKeyFile = folder / "private/password.key";
        options.consoleLine = [this](quennet::WindowNumber, const std::string& line) {
            lines.push_back(line);
        };
        options.showMessage = [this](quennet::u32 id, const std::string&) {
            messages.push_back(id);
        };
        options.reportError = [this](quennet::u32 id, const std::string&) {
            messages.push_back(id);
        };
        return options;
    }

    ServicesTest() { host.Attach(KeepTables, nullptr); }

    std::string ProfilePath() {
        char path[260] = "";
        Core<quennet::CoreGetProfilePathFunction>(quennet::CoreService::getProfilePath)(
            Core<quennet::HostWord>(quennet::CoreService::profile), path);
        return path;
    }

    TempFolder folder;
    std::shared_ptr<hostkit::SettingsStore> settings =
        std::make_shared<hostkit::FileSettings>(folder / "settings.ini");
    std::vector<std::string> lines;
    std::vector<quennet::u32> messages;
    hostkit::MessageLoop loop;
    hostkit::Host host{loop, Options()};
};
