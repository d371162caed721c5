#pragma once
// A Find window's record without a window: list and status bar are controls of the test's own, and
// the host's directory read gives what the test wrote down. Commands go over a wire.

#include <commctrl.h>

#include <map>

#include "find/find_record.h"
#include "find/find_walk.h"
#include "support/replaced_services.h"
#include "support/session_test.h"

struct Entry {
    std::string name;
    quennet::u16 attributes = 0;
    quennet::u64 size = 0;
    quennet::u16 date = 0;
    quennet::u16 time = 0;
};

constexpr quennet::u16 folderBit = quennet::attributeDirectory;

/// A directory's entry.
inline Entry Folder(const std::string& name) {
    return {name, folderBit};
}

class FindTest : public SessionTest {
  protected:
    FindTest();
    ~FindTest() override;

    /// Walks from a directory.
    void Walk(const std::string& path = "/", quennet::u32 options = quennet::FindOptRecurse,
              const std::string& mask = ".");

    /// The rows, as "DIRECTORY: NAME".
    std::vector<std::string> Hits() const;

    /// Puts hits into the store as a run does: each of its entries lies in the directory.
    void Store(const std::string& directory, const std::vector<Entry>& entries);

    /// What list and status bar were sent: "rows N", "pane N: TEXT".
    std::vector<std::string> Shown() const;

    ReplacedServices services;
    quennet::FindWindow find = {};
    std::map<std::string, std::vector<Entry>> listings;  // by path; the host has no others
    std::vector<std::string> reads;                      // "PATH OPTION"
    std::function<void(const std::string& path)> onRead;

  private:
    static quennet::DirEntry* ReadDirectory(const char* path, quennet::FtpHandle* handle,
                                            quennet::u32 option);
    static LRESULT CALLBACK ControlProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Answer(UINT message, WPARAM wParam, LPARAM lParam);

    mutable std::mutex shownMutex_;
    std::vector<std::string> shown_;
};
