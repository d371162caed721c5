#pragma once
// A test against a real server: the server, its folder, and the module loaded by a host of ours.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "hostkit/connection.h"
#include "hostkit/host.h"
#include "hostkit/message_loop.h"
#include "interop/folders.h"
#include "interop/servers.h"

namespace quennet::interop {

struct InteropCase {
    ServerKind kind;
    bool passive;
};

/// "vsftpd_passive" and so on, as a test's name.
std::string CaseName(const testing::TestParamInfo<InteropCase>& info);
std::ostream& operator<<(std::ostream& stream, const InteropCase& interopCase);

/// Whether CI wants every server to be there.
bool SkipsAreFailures();

/// Every server, passive and active; and every server, passive alone, for what has nothing to do
/// with the way data connections are made.
std::vector<InteropCase> AllCases();
std::vector<InteropCase> PassiveCases();

/// What a connection printed.
class Transcript {
  public:
    /// For a connection that is to print here.
    hostkit::ConnectionOptions Options();
    /// How many lines hold that text.
    int Count(const std::string& text) const;
    /// All lines, each with its time in seconds.
    std::string Text() const;

  private:
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

/// A file that the server lists.
struct Listed {
    std::uint64_t size;
    bool directory;
};

class InteropTest : public testing::TestWithParam<InteropCase> {
  protected:
    InteropTest();

    /// Starts the server over `served`; skips the test, or fails it where CI wants so, when it
    /// can't be had.
    void SetUp() override;
    void TearDown() override;

    hostkit::ConnectRequest Request() const;

    /// Connects and runs the conversation while the test's thread serves messages; disconnects.
    void Converse(const std::function<void(hostkit::Connection& connection)>& conversation);

    /// Downloads a served file into `local` under the same name. The size is what `served` holds.
    hostkit::TransferResult Download(hostkit::Connection& connection, const std::string& name,
                                     hostkit::TransferOperation& operation);
    hostkit::TransferResult Download(hostkit::Connection& connection, const std::string& name);

    /// Session and server mean the same exchange: each of the next commands gets its own reply.
    void ExpectInStep(hostkit::Connection& connection);

    TestFolder served;
    TestFolder local;
    std::optional<Server> server;
    Transcript transcript;
    hostkit::MessageLoop loop;
    hostkit::Host host;
};

/// The entries by name, without "..".
std::map<std::string, Listed> ByName(const hostkit::ListResult& result);

/// An operation that answers every question with "go on".
hostkit::TransferOperation GoOn();

/// Calls Abort four times a second from a thread of its own, from `delay` on until it goes, as a
/// host does whose user has pressed the key.
class RepeatedAbort {
  public:
    explicit RepeatedAbort(hostkit::Connection& connection, std::chrono::microseconds delay = {});
    ~RepeatedAbort();
    RepeatedAbort(const RepeatedAbort&) = delete;
    RepeatedAbort& operator=(const RepeatedAbort&) = delete;

  private:
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

}  // namespace quennet::interop
