#pragma once
// The find window of a connection, worked through the platform's own calls as a person would.
//
//     Search search(host, connection, filter, "/pub");
//     search.SetMask("*.iso");
//     search.SetBox(SearchBox::subfolders, true);
//     if (search.Run()) {
//         search.ForEachPath([](const std::string& path) { ... });
//         search.Export(ExportFormat::csv, "/home/anna/found.csv");
//     }
//
// The window lives on the loop's thread; a search is used from a job's thread (message_loop.h).

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>

#include "hostkit/connection.h"
#include "hostkit/masks.h"

namespace hostkit {

enum class SearchBox : int {
    subfolders = 0x2777,  // directories are searched through
    allEntries = 0x2E19,  // the server is asked for hidden entries too
    filter = 0x38A9,      // the filter decides as well
};

enum class ExportFormat : WORD { text = 0x20F, csv = 0x210, html = 0x211 };

class Search {
  public:
    /// Opens the window. Each run begins in `directory`, a path that the server knows from any of
    /// its directories. `filter` must live as long as the window. Throws std::runtime_error when
    /// none opens, as for a connection that has one already.
    Search(Host& host, Connection& connection, FilterRecord& filter, const std::string& directory);
    /// Closes the window and waits until it is gone.
    ~Search();
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    HWND Window() const { return window_; }

    void SetMask(const std::string& mask);  // at most 259 bytes
    void SetBox(SearchBox box, bool checked);

    /// Begins a run and does not wait for it.
    void Start();
    /// Searches, and returns when the run has ended, whatever ended it. False when the window went
    /// before.
    bool Run();
    /// Ends the run at the next entry or directory; an exchange with the server that is on its way
    /// ends by itself or by `Connection::Abort`. Any thread.
    void Stop();

    std::size_t Count();
    /// Calls `take` with each hit, in the order in which they were found.
    using TakeHit = std::function<void(const std::string& folder, const std::string& name)>;
    void ForEachHit(const TakeHit& take);
    /// The same with its full path.
    void ForEachPath(const std::function<void(const std::string& path)>& take);

    /// Writes what was found to a local file through the window's save dialog; a file that is there
    /// is replaced. `path` is absolute, at most 250 bytes, has the format's extension and holds
    /// neither '*' nor '?'. False when it could not be created; whether all of it was written only
    /// the file tells.
    bool Export(ExportFormat format, const std::string& path);

    /// Puts the person in front of the mask, and waits until the window is closed. The full path of
    /// the hit that the person went to, which closes it too; empty without one.
    std::string AwaitClose();

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    static void GoTo(quennet::Session* session, const char* name, const char* directory);
    void Open(Connection& connection, FilterRecord& filter, const std::string& directory);
    bool IsOpen() const { return open_; }

    Host& host_;
    HWND window_ = nullptr;
    WNDPROC procedure_ = nullptr;  // the window's own
    quennet::Session* session_ = nullptr;
    std::atomic<bool> open_ = false;
    std::atomic<u32> runsEnded_ = 0;
    std::string wentTo_;  // the loop thread's until the window is gone
};

}  // namespace hostkit
