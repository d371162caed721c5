#pragma once
// Find windows as they are, on connections to a server of the test's own. The thread of the test is
// the person at them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <commctrl.h>

#include "apps/loopback/server.h"
#include "find/find_commands.h"
#include "find/find_controls.h"
#include "find/find_record.h"
#include "hostkit/connection.h"
#include "hostkit/masks.h"
#include "support/session_test.h"
#include "support/temp_folder.h"
#include "support/wait.h"

class FindWindowTest : public ::testing::Test {
  protected:
    FindWindowTest();

    /// A file or, with a '/' at its end, a folder below the server's root.
    void Make(const std::string& path, const std::string& bytes = "");

    /// Connects, once.
    hostkit::Connection& Connect(hostkit::Connection& connection);
    /// Sends message 45 and gives the window, null when there is none.
    HWND Open(hostkit::Connection& connection, const std::string& path = "/");
    HWND Open() { return Open(Connect(connection), "/"); }

    static quennet::FindWindow* Record(hostkit::Connection& connection);
    quennet::FindWindow* Record() { return Record(connection); }

    /// Sends a command and waits until it is handled.
    static void Command(HWND window, quennet::u32 command);
    /// Starts a run and waits for its end.
    void Run(hostkit::Connection& connection, const std::string& mask = "", bool recurse = true);
    void Run(const std::string& mask = "", bool recurse = true) { Run(connection, mask, recurse); }

    static std::string Cell(HWND window, int row, int column);
    static int Rows(HWND window);
    static std::string Pane(HWND window, int pane);
    /// The commands that menu and tool bar both allow, of those with a state: letters of "SXGTCH"
    /// for Start, Stop, Go to and the exports.
    static std::string Allowed(HWND window);
    void Select(HWND window, int row);

    hostkit::Host& Host() { return thread->Host(); }

    TempFolder folder;
    std::optional<loopback::Server> server;
    Notices notices;  // "foreground", "go to NAME in DIRECTORY"
    hostkit::FilterRecord filter = {};
    std::unique_ptr<HostThread> thread;
    hostkit::Connection connection;
};
