#pragma once
// The two tables of services, and the host's words that they share with the module.
//
// Each group of services fills its words in a file of its own (services_*.cpp). A service is a
// plain function with C linkage; what it needs of the host it takes from `Host::Current()`. It may
// throw: `Put` sets it into a frame that no exception leaves.

#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

#include "host/core_services.h"
#include "host/shell_services.h"
#include "hostkit/framed.h"
#include "hostkit/masks.h"
#include "hostkit/settings.h"
#include "hostkit/types.h"

namespace hostkit {

struct HostOptions;

class Services {
  public:
    explicit Services(const HostOptions& options);
    ~Services();
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;

    const quennet::CoreServices* Core() const { return &core_; }
    const quennet::ShellServices* Shell() const { return &shell_; }
    u32* PasswordKey() { return &passwordKey_; }

    void AddConsole(WindowNumber number, std::function<void(const std::string&)> sink);
    /// Waits for a line that is being taken.
    void RemoveConsole(WindowNumber number);
    /// False when no console has that number.
    bool PrintOn(WindowNumber number, const std::string& line);

    /// The host's own filter, which is edited where the module names none; `FilterMutex` guards it,
    /// and any filter record while it is edited.
    FilterRecord& DefaultFilter() { return defaultFilter_; }
    std::shared_mutex& FilterMutex() { return filterMutex_; }

    /// Windows that the module has registered.
    void AddWindow(HWND window);
    void RemoveWindow(HWND window);
    /// Handles a message of one of them: see TakeWindowKey. False when it is none's.
    bool TakeMessage(MSG& message);

    /// The store behind the name that CoreGetProfilePath gave.
    std::shared_ptr<SettingsStore> StoreOf(const char* file) const;
    /// That name, for the calling thread; less than 260 bytes.
    std::string StoreName() const;

  private:
    quennet::CoreServices core_ = {};
    quennet::ShellServices shell_ = {};
    std::shared_ptr<SettingsStore> settings_;
    CRITICAL_SECTION listLock_;
    i32 currentSiteId_ = 0;
    u32 optionWord_ = 0;
    u32 pingWord_ = 0;  // else the ping tool leaves the system's echo library alone
    u32 passwordKey_ = 0;
    FilterRecord defaultFilter_ = openFilter;
    std::shared_mutex filterMutex_;
    std::mutex windowMutex_;
    std::vector<HWND> windows_;
    std::shared_mutex consoleMutex_;
    std::map<WindowNumber, std::function<void(const std::string&)>> consoles_;
};

/// Gives the settings services on the calling thread another store while the object lives: the
/// dialogs of one message then work on a private copy.
class PrivateSettings {
  public:
    explicit PrivateSettings(std::shared_ptr<SettingsStore> store);
    ~PrivateSettings();
    PrivateSettings(const PrivateSettings&) = delete;
    PrivateSettings& operator=(const PrivateSettings&) = delete;

  private:
    const std::shared_ptr<SettingsStore> store_;
    const std::shared_ptr<SettingsStore>* const outer_;
};

/// What one message with a dialog does to the settings, or the end of a window: it is stored in one
/// step when the object goes, and other programs stay out meanwhile. A failure is reported to the
/// user, with its cause, and the settings are as they were. When the settings can't be had within a
/// second, the user is told at once, and the dialog works on a private copy. Does nothing where
/// private settings are in force already.
class SettingsEdit {
  public:
    enum class What { siteBook, window };

    explicit SettingsEdit(const HostOptions& options, What what = What::siteBook);
    ~SettingsEdit();
    SettingsEdit(const SettingsEdit&) = delete;
    SettingsEdit& operator=(const SettingsEdit&) = delete;

  private:
    const HostOptions& options_;
    const What what_;
    bool open_ = false;
    std::optional<PrivateSettings> private_;
};

/// Changes the settings on behalf of a window, as a `SettingsEdit` does.
void KeepForWindow(const std::function<void(SettingsStore& store)>& keep);

/// Reports an error to the user: the text of an id, and its cause if there is one.
void TellError(const HostOptions& options, u32 textId, const std::string& cause = {});

/// Hands each dialog that opens on the calling thread to `hook` while the object lives, instead of
/// to the host's options.
class DialogHook {
  public:
    explicit DialogHook(std::function<void(HWND dialog)> hook);
    ~DialogHook();
    DialogHook(const DialogHook&) = delete;
    DialogHook& operator=(const DialogHook&) = delete;

    /// False when none is set on this thread.
    static bool Run(HWND dialog);

  private:
    std::function<void(HWND dialog)> hook_;
    DialogHook* outer_;
};

// Fill in the words of one group.
void FillMemoryServices(quennet::CoreServices& core, quennet::ShellServices& shell);
void FillDialogServices(quennet::CoreServices& core, quennet::ShellServices& shell);
void FillPanelServices(quennet::CoreServices& core, quennet::ShellServices& shell);
void FillFileServices(quennet::ShellServices& shell);
void FillSettingServices(quennet::CoreServices& core, quennet::ShellServices& shell);
void FillTextServices(quennet::ShellServices& shell);
void FillListServices(quennet::CoreServices& core, quennet::ShellServices& shell);
void FillColumnServices(quennet::ShellServices& shell);
void FillWindowServices(quennet::ShellServices& shell);

/// Puts the address of data, or of a function that does not throw, into its word.
template <typename Address>
void Put(quennet::CoreServices& core, quennet::CoreService word, Address address) {
    core.words[static_cast<u32>(word)] = reinterpret_cast<HostWord>(address);
}
template <typename Address>
void Put(quennet::ShellServices& shell, quennet::ShellService word, Address address) {
    shell.words[static_cast<u32>(word)] = reinterpret_cast<HostWord>(address);
}

/// Puts a service into its word. When it throws, its result is `failure`, or zero.
template <typename Function, Function function, auto... failure>
void Put(quennet::CoreServices& core, quennet::CoreService word) {
    Put(core, word, framed<Function, function, failure...>);
}
template <typename Function, Function function, auto... failure>
void Put(quennet::ShellServices& shell, quennet::ShellService word) {
    Put(shell, word, framed<Function, function, failure...>);
}

}  // namespace hostkit
