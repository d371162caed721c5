#include "hostkit/settings.h"

namespace hostkit {

/// Brings the document up to date, and locks the medium; the caller holds the mutex.
bool SettingsStore::Open(std::chrono::milliseconds patience) {
    if (depth_ > 0) {
        ++depth_;
        return true;
    }
    if (!Lock(patience, error_)) {
        return false;
    }
    Forget();  // another process may have written in the same tick of the file system's clock
    if (!Load(document_, error_)) {
        Unlock();
        return false;
    }
    changed_ = false;
    depth_ = 1;
    return true;
}

bool SettingsStore::Close() {
    if (--depth_ > 0) {
        return true;
    }
    const bool stored = !changed_ || Save(document_, error_);
    if (!stored) {
        Forget();
    }
    Unlock();
    return stored;
}

template <typename Change>
bool SettingsStore::Apply(Change change) {
    const std::lock_guard lock(mutex_);
    if (!Open(lockPatience)) {
        return false;
    }
    const bool changed = change(document_);
    if (changed) {
        changed_ = true;
    } else {
        error_ = "not a name or value that can be stored";
    }
    return Close() && changed;
}

/// Runs a look at the document, brought up to date unless a batch is open.
template <typename Look>
auto SettingsStore::Inspect(Look look) {
    const std::lock_guard lock(mutex_);
    if (depth_ == 0 && !Load(document_, error_)) {
        return look(IniDocument());
    }
    return look(document_);
}

std::optional<std::string> SettingsStore::Read(std::string_view section, std::string_view key) {
    return Inspect([&](const IniDocument& document) { return document.Value(section, key); });
}

std::string SettingsStore::ReadSection(std::string_view section) {
    return Inspect([&](const IniDocument& document) { return document.Section(section); });
}

std::vector<std::string> SettingsStore::Keys(std::string_view section) {
    return Inspect([&](const IniDocument& document) { return document.Keys(section); });
}

bool SettingsStore::Write(std::string_view section, std::string_view key, std::string_view value) {
    return Apply([&](IniDocument& document) { return document.SetValue(section, key, value); });
}

bool SettingsStore::Remove(std::string_view section, std::string_view key) {
    return Apply([&](IniDocument& document) { return document.RemoveValue(section, key); });
}

bool SettingsStore::WriteSection(std::string_view section, std::string_view text) {
    return Apply([&](IniDocument& document) { return document.ReplaceSection(section, text); });
}

bool SettingsStore::Begin(std::chrono::milliseconds patience) {
    const std::lock_guard lock(mutex_);
    return Open(patience);
}

bool SettingsStore::Commit() {
    const std::lock_guard lock(mutex_);
    return Close();
}

std::string SettingsStore::Text() {
    return Inspect([](const IniDocument& document) { return document.Text(); });
}

std::shared_ptr<SettingsStore> SettingsStore::PrivateCopy() {
    return std::make_shared<MemorySettings>(Text());
}

std::string SettingsStore::ErrorText() {
    const std::lock_guard lock(mutex_);
    return error_;
}

SettingsBatch::~SettingsBatch() {
    try {
        Commit();
    } catch (...) {
        // As any other failure: what was written is not kept.
    }
}

}  // namespace hostkit
