// A whole session whose connection breaks behind the n-th byte that the server sends or receives.
//
// One round is one session: login, listing, download, download with resume, download over a partial
// file of other bytes (which is aborted and made anew), upload, change of directory, search, end.
// The connection breaks once in it, and an operation that fails is repeated, so that a round ends
// with all of them done. What must hold in each:
//
// - Every operation ends, and long before a time-out would end it.
// - One that has failed because of the break is followed by one that works; after an orderly close,
//   which the module notices one command late, one more may fail.
// - A local file is a beginning of the server's file, or as it was; a stored one is a beginning of
//   the local one; both are whole when the operation says that it is done. A partial file keeps
//   what it had of the server's.
// - A listing that is done has all entries, and no search finds what is not there.

#include <gtest/gtest.h>

#include <iostream>
#include <set>

#include "apps/loopback/server.h"
#include "hostkit/connection.h"
#include "hostkit/search.h"
#include "support/own_network.h"
#include "support/temp_folder.h"
#include "support/wait.h"

using namespace hostkit;
using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

struct Way {
    const char* name;
    bool passive;
    bool dataAlone;
    bool withReset;
};

void PrintTo(const Way& way, std::ostream* stream) {
    *stream << way.name;
}

constexpr Way ways[] = {
    {"PassiveReset", true, false, true},    {"PassiveClose", true, false, false},
    {"PassiveDataReset", true, true, true}, {"PassiveDataClose", true, true, false},
    {"ActiveReset", false, false, true},    {"ActiveClose", false, false, false},
    {"ActiveDataReset", false, true, true}, {"ActiveDataClose", false, true, false}};

class Faults : public ::testing::TestWithParam<Way> {
  protected:
    const bool ownNetwork = EnterOwnNetwork();

    Faults() {
        std::filesystem::create_directories(folder / "served/w/d");
        WriteWhole(folder / "served/w/f", whole);
        WriteWhole(folder / "served/w/g", brief);
        WriteWhole(folder / "served/w/d/h", "");
        WriteWhole(folder / "up", stored);
        loopback::Options options;
        options.root = folder / "served";
        options.welcome = "220 hi";
        server.emplace(options);
        host.LoadModule(MODULE_PATH);
        request.host = "127.0.0.1:" + std::to_string(server->Port());
        request.user = "anna";
        request.password = "x";
        request.directory = "/w";
        request.passive = GetParam().passive;
    }

    /// Breaks behind each `stride`-th byte of the session.
    void BreakEvery(std::size_t stride) {
        RunJob(loop, [&] {
            const std::size_t open = DescriptorsBehindWholeRound();
            std::size_t byte = 1;
            while (RunRound(byte) && wrongs_ < mostWrongs) {
                byte += stride;
            }
            EXPECT_EQ(DescriptorsBehindWholeRound(), open);
            std::cout << rounds_ << " rounds up to byte " << byte << ", " << operations_
                      << " operations; the slowest: " << slowest_.count() << " ms, "
                      << slowestWhere_ << '\n';
        });
        EXPECT_EQ(*host.SocketUseCounter(), 0u);
    }

  private:
    static constexpr int mostWrongs = 5;
    // Far below the time-out of 30 seconds, far above what a busy machine takes.
    static constexpr auto longestOperation = 10s;

    /// False when the session was over before that byte.
    bool RunRound(std::size_t byte) {
        byte_ = byte;
        failuresBehind_ = 0;
        good_ = true;
        ++rounds_;
        for (const char* name : {"served/w/u", "g"}) {
            std::filesystem::remove(folder / name);
        }
        WriteWhole(folder / "f", whole.substr(0, partial));
        WriteWhole(folder / "other", foreign);
        server->ClearLog();
        Connection connection(host);
        connection_ = &connection;
        server->SetBreak({byte, GetParam().dataAlone, GetParam().withReset});
        Run("connect", [&] { return connection.Connect(request).Connected(); });
        Run("list", [&] { return List(); });
        Run("download", [&] { return Download("g", brief, "g"); });
        Run("resume", [&] { return Download("f", whole, "f"); });
        Run("other file", [&] { return Download("f", whole, "other"); });
        Run("upload", [&] { return Upload(); });
        Run("change", [&] { return connection.ChangeDirectory("d").Done(); });
        Run("find", [&] { return Find(); });
        Run("disconnect", [&] {
            connection.Disconnect();
            return true;
        });
        const bool hasBroken = server->HasBroken();
        server->SetBreak({});
        return hasBroken;
    }

    /// Runs an operation until it works.
    void Run(const char* name, const std::function<bool()>& operation) {
        name_ = name;
        for (bool works = false; !works && good_;) {
            const bool brokenBefore = server->HasBroken();
            const auto start = std::chrono::steady_clock::now();
            works = operation();
            NoteTime(
                std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start));
            if (!works && !server->HasBroken()) {
                Wrong("it failed, though nothing had broken");
            } else if (!works && brokenBefore) {
                const bool noticedLate = !GetParam().dataAlone && !GetParam().withReset;
                const int allowed = noticedLate ? 1 : 0;
                if (++failuresBehind_ > allowed) {
                    Wrong("it failed, though the break was over");
                }
            }
        }
    }

    void NoteTime(milliseconds time) {
        ++operations_;
        if (time > slowest_) {
            slowest_ = time;
            slowestWhere_ = std::string(name_) + " of byte " + std::to_string(byte_);
        }
        if (time > longestOperation) {
            Wrong("it took " + std::to_string(time.count()) + " ms");
        }
    }

    static std::string Joined(const std::set<std::string>& names) {
        std::string text;
        for (const std::string& name : names) {
            text += ' ' + name;
        }
        return text;
    }

    bool List() {
        const ListResult list = connection_->List();
        if (!list.done) {
            return false;
        }
        std::set<std::string> names;
        for (const ListingEntry& entry : list.entries) {
            names.emplace(entry.name);
        }
        if (names != std::set<std::string>{"..", "d", "f", "g"}) {
            Wrong("a listing that is done has other entries:" + Joined(names));
        }
        return true;
    }

    bool Download(const char* name, const std::string& source, const char* local) {
        const std::string before = ReadWhole(folder / local);
        DownloadRequest download;
        download.source = name;
        download.destination = folder / local;
        download.size = source.size();
        TransferOperation operation;
        operation.confirm = [](const quennet::TransferItem&, u32) { return ConfirmAnswer::goOn; };
        const bool done = connection_->Download(download, operation).Done();
        const std::string after = ReadWhole(folder / local);
        const bool isPart =
            before.size() >= partial && before.size() < source.size() && source.starts_with(before);
        if (after != before && !source.starts_with(after)) {
            Wrong("the local file holds what the server did not send");
        }
        if (done && after != source) {
            Wrong("the local file is not whole, though the download is done");
        }
        if (isPart && after.size() < before.size()) {
            Wrong("the partial file has lost bytes");
        }
        return done;
    }

    bool Upload() {
        TransferOperation operation;
        const bool done = connection_->Upload({folder / "up", "u"}, Listing(), operation).Done();
        // The server's last write is over when the client's thread is, or when it has confirmed.
        const std::string there = ReadWhole(folder / "served/w/u");
        if (!stored.starts_with(there) || (done && there != stored)) {
            Wrong("the server's file is not what was uploaded");
        }
        return done;
    }

    bool Find() {
        const std::set<std::string> tree = {"/w/d", "/w/d/h", "/w/f", "/w/g", "/w/u"};
        connection_->InvalidateAllListings();
        Search search(host, *connection_, filter_, "/w");
        search.SetMask("*");
        search.SetBox(SearchBox::subfolders, true);
        search.Run();
        std::set<std::string> found;
        search.ForEachPath([&](const std::string& path) { found.insert(path); });
        for (const std::string& path : found) {
            if (!tree.contains(path)) {
                Wrong("the search has found " + path);
            }
        }
        return found == tree;
    }

    /// Says where the connection broke, and what was wrong then. The round ends with it.
    void Wrong(const std::string& what) {
        constexpr std::size_t mostLines = 24;
        good_ = false;
        ++wrongs_;
        std::string wire;
        const std::vector<loopback::LogLine> log = server->Log();
        for (std::size_t place = log.size() - std::min(log.size(), mostLines); place < log.size();
             ++place) {
            wire += (log[place].fromClient ? "  -> " : "  <- ") + log[place].text + '\n';
        }
        ADD_FAILURE() << GetParam().name << ", byte " << byte_ << ", " << name_ << ": " << what
                      << "\nthe wire's last lines:\n"
                      << wire;
    }

    /// The server's part of it is the same when no client is left before the round and behind it.
    std::size_t DescriptorsBehindWholeRound() {
        EXPECT_TRUE(WaitUntil([&] { return server->ClientCount() == 0; }));
        RunRound(0);
        EXPECT_TRUE(WaitUntil([&] { return server->ClientCount() == 0; }));
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    static constexpr std::size_t partial = 1030;  // more than 1024 are resumed

    TempFolder folder;
    const std::string whole = MixedBytes(1100);
    const std::string foreign = MixedBytes(partial, 4);
    const std::string brief = MixedBytes(50, 2);
    const std::string stored = MixedBytes(70, 3);
    std::optional<loopback::Server> server;
    ConnectRequest request;
    MessageLoop loop;
    Host host{loop, Silent()};

    static HostOptions Silent() {
        HostOptions options;
        options.reportError = [](u32, const std::string&) {};
        return options;
    }

    FilterRecord filter_ = openFilter;
    Connection* connection_ = nullptr;
    const char* name_ = "";
    std::size_t byte_ = 0;
    int failuresBehind_ = 0;
    bool good_ = true;

    int rounds_ = 0;
    int operations_ = 0;
    int wrongs_ = 0;
    milliseconds slowest_{0};
    std::string slowestWhere_;
};

INSTANTIATE_TEST_SUITE_P(, Faults, testing::ValuesIn(ways),
                         [](const auto& way) { return std::string(way.param.name); });

TEST_P(Faults, EachOfASample) {
    BreakEvery(29);
}

TEST_P(Faults, EachOfAll) {
    if (!ownNetwork) {
        GTEST_SKIP() << "no network of the test's own can be had here";
    }
    BreakEvery(1);
}

}  // namespace
