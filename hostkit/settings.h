#pragma once
// Settings stores: a file that is replaced in one step, and a private copy in memory.
//
// All operations may be called on any thread. Each write is committed by itself, unless a batch is
// open: then all writes, of whatever thread, are committed together when the last batch closes.

#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hostkit/ini_document.h"

namespace hostkit {

class SettingsStore {
  public:
    /// How long a writer waits for another process.
    static constexpr std::chrono::seconds lockPatience{10};

    virtual ~SettingsStore() = default;
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    /// Value of a key, nothing when it is missing or the store cannot be read.
    std::optional<std::string> Read(std::string_view section, std::string_view key);
    /// The body of a section, as text for `WriteSection`.
    std::string ReadSection(std::string_view section);
    std::vector<std::string> Keys(std::string_view section);

    // False when the store could not be changed; it is then as it was.
    bool Write(std::string_view section, std::string_view key, std::string_view value);
    bool Remove(std::string_view section, std::string_view key);
    bool WriteSection(std::string_view section, std::string_view text);

    /// Opens a batch; batches nest. Of a file, the lock against other processes is held until the
    /// batch closes. False when it could not be had within `patience`: no batch is open then.
    bool Begin(std::chrono::milliseconds patience = lockPatience);
    /// Closes a batch. The outermost one stores what was written, in one step, if it changed
    /// anything; false when that failed, and all of the batch is undone.
    bool Commit();

    /// All of it, as the text of a settings file.
    std::string Text();

    /// A copy of what the store holds now, in memory, never written back.
    std::shared_ptr<SettingsStore> PrivateCopy();

    /// Text of the error of the last operation that failed, empty if none did.
    std::string ErrorText();

  protected:
    SettingsStore() = default;
    explicit SettingsStore(IniDocument document) : document_(std::move(document)) {}

    /// Brings `document` to the state of the medium, unless it is already.
    virtual bool Load(IniDocument& document, std::string& error) = 0;
    virtual bool Save(const IniDocument& document, std::string& error) = 0;
    /// Makes the next `Load` read anew.
    virtual void Forget() = 0;
    /// Keeps other processes from writing between `Load` and `Save`.
    virtual bool Lock(std::chrono::milliseconds patience, std::string& error) = 0;
    virtual void Unlock() = 0;

  private:
    template <typename Change>
    bool Apply(Change change);
    template <typename Look>
    auto Inspect(Look look);
    bool Open(std::chrono::milliseconds patience);
    bool Close();

    std::mutex mutex_;
    IniDocument document_;
    std::string error_;
    int depth_ = 0;
    bool changed_ = false;
};

/// Settings in a file. Whoever reads the file finds the old or the new text, whole, at any time.
///
/// The file is written beside the old one («NAME.new»), synced and renamed over it, readable by its
/// owner alone; missing folders are made. «NAME.lock» is held during a change. A file that cannot
/// be read, is no regular file, is write-protected or larger than 64 MiB is never replaced.
class FileSettings final : public SettingsStore {
  public:
    explicit FileSettings(std::filesystem::path path);
    ~FileSettings() override;

    const std::filesystem::path& Path() const { return path_; }

  private:
    struct Stamp;

    bool Load(IniDocument& document, std::string& error) override;
    bool Save(const IniDocument& document, std::string& error) override;
    void Forget() override;
    bool Lock(std::chrono::milliseconds patience, std::string& error) override;
    void Unlock() override;

    std::filesystem::path path_;
    std::unique_ptr<Stamp> stamp_;  // of the file that was loaded last
    std::string loaded_;            // its text
    int lock_ = -1;
};

/// Settings in memory alone.
class MemorySettings final : public SettingsStore {
  public:
    MemorySettings() = default;
    explicit MemorySettings(std::string_view text) : SettingsStore(IniDocument(text)) {}

  private:
    bool Load(IniDocument&, std::string&) override { return true; }
    bool Save(const IniDocument&, std::string&) override { return true; }
    void Forget() override {}
    bool Lock(std::chrono::milliseconds, std::string&) override { return true; }
    void Unlock() override {}
};

/// Keeps a batch open as long as it lives; `Commit` closes it before and tells how it went.
class SettingsBatch {
  public:
    explicit SettingsBatch(SettingsStore& store) : store_(store), open_(store.Begin()) {}
    ~SettingsBatch();
    SettingsBatch(const SettingsBatch&) = delete;
    SettingsBatch& operator=(const SettingsBatch&) = delete;

    bool IsOpen() const { return open_; }
    bool Commit() {
        if (!open_) {
            return false;
        }
        open_ = false;
        return store_.Commit();
    }

  private:
    SettingsStore& store_;
    bool open_;
};

}  // namespace hostkit
