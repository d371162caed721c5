#include "hostkit/services.h"

#include <chrono>
#include <mutex>
#include <utility>

#include "hostkit/host.h"
#include "hostkit/password_key.h"
#include "hostkit/window_keys.h"

namespace hostkit {

namespace {

using quennet::CoreService;
using quennet::ShellService;

constexpr char privateName[] = "private settings";
constexpr char memoryName[] = "settings in memory";
constexpr std::size_t nameSize = 260;

// The thread that waits shows nothing meanwhile.
constexpr std::chrono::seconds dialogPatience{1};
constexpr u32 bookNotSavedText = 6007;
constexpr u32 bookBusyText = 6008;
constexpr u32 windowNotKeptText = 6009;

constexpr char folderSample[] = "/";
constexpr char fileWord[] = "File";

thread_local const std::shared_ptr<SettingsStore>* privateStore = nullptr;
thread_local DialogHook* dialogHook = nullptr;

}  // namespace

Services::Services(const HostOptions& options) : settings_(options.settings) {
    InitializeCriticalSection(&listLock_);
    passwordKey_ = KeptPasswordKey(options.passwordKeyFile);
    Put(core_, CoreService::pingWord, &pingWord_);
    Put(shell_, ShellService::currentSiteId, &currentSiteId_);
    Put(shell_, ShellService::optionWord, &optionWord_);
    Put(shell_, ShellService::listLock, &listLock_);
    Put(shell_, ShellService::folderSample, folderSample);
    Put(shell_, ShellService::fileWord, fileWord);
    FillMemoryServices(core_, shell_);
    FillDialogServices(core_, shell_);
    FillPanelServices(core_, shell_);
    FillFileServices(shell_);
    FillSettingServices(core_, shell_);
    FillTextServices(shell_);
    FillListServices(core_, shell_);
    FillColumnServices(shell_);
    FillWindowServices(shell_);
}

Services::~Services() {
    DeleteCriticalSection(&listLock_);
}

void Services::AddConsole(WindowNumber number, std::function<void(const std::string&)> sink) {
    const std::unique_lock lock(consoleMutex_);
    consoles_[number] = std::move(sink);
}

void Services::RemoveConsole(WindowNumber number) {
    const std::unique_lock lock(consoleMutex_);
    consoles_.erase(number);
}

bool Services::PrintOn(WindowNumber number, const std::string& line) {
    const std::shared_lock lock(consoleMutex_);
    const auto found = consoles_.find(number);
    if (found == consoles_.end()) {
        return false;
    }
    if (found->second) {
        found->second(line);
    }
    return true;
}

void Services::AddWindow(HWND window) {
    const std::lock_guard lock(windowMutex_);
    windows_.push_back(window);
}

void Services::RemoveWindow(HWND window) {
    const std::lock_guard lock(windowMutex_);
    std::erase(windows_, window);
}

bool Services::TakeMessage(MSG& message) {
    for (std::size_t i = 0;; ++i) {
        HWND window = nullptr;
        {
            const std::lock_guard lock(windowMutex_);
            if (i >= windows_.size()) {
                return false;
            }
            window = windows_[i];
        }
        if (TakeWindowKey(window, message)) {
            return true;
        }
    }
}

std::string Services::StoreName() const {
    if (privateStore != nullptr) {
        return privateName;
    }
    const auto* file = dynamic_cast<const FileSettings*>(settings_.get());
    if (file == nullptr || file->Path().string().size() >= nameSize) {
        return memoryName;
    }
    return file->Path().string();
}

std::shared_ptr<SettingsStore> Services::StoreOf(const char* file) const {
    const bool isPrivate =
        privateStore != nullptr && file != nullptr && std::string_view(file) == privateName;
    return isPrivate ? *privateStore : settings_;
}

PrivateSettings::PrivateSettings(std::shared_ptr<SettingsStore> store)
    : store_(std::move(store)), outer_(std::exchange(privateStore, &store_)) {}

PrivateSettings::~PrivateSettings() {
    privateStore = outer_;
}

SettingsEdit::SettingsEdit(const HostOptions& options, What what) : options_(options), what_(what) {
    if (privateStore != nullptr) {
        return;
    }
    open_ = options.settings->Begin(dialogPatience);
    if (!open_) {
        TellError(options, what == What::siteBook ? bookBusyText : windowNotKeptText,
                  options.settings->ErrorText());
        private_.emplace(options.settings->PrivateCopy());
    }
}

SettingsEdit::~SettingsEdit() {
    const u32 text = what_ == What::siteBook ? bookNotSavedText : windowNotKeptText;
    try {
        if (open_ && !options_.settings->Commit()) {
            TellError(options_, text, options_.settings->ErrorText());
        }
    } catch (...) {
        TellError(options_, text);
    }
}

void KeepForWindow(const std::function<void(SettingsStore& store)>& keep) {
    const HostOptions& options = Host::Current()->Options();
    const SettingsEdit edit(options, SettingsEdit::What::window);
    keep(privateStore != nullptr ? **privateStore : *options.settings);
}

DialogHook::DialogHook(std::function<void(HWND dialog)> hook)
    : hook_(std::move(hook)), outer_(std::exchange(dialogHook, this)) {}

DialogHook::~DialogHook() {
    dialogHook = outer_;
}

bool DialogHook::Run(HWND dialog) {
    if (dialogHook == nullptr) {
        return false;
    }
    dialogHook->hook_(dialog);
    return true;
}

}  // namespace hostkit
