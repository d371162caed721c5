// Many connections one after the other: what the process has taken by the hundredth is what it has
// at the end.

#include <gtest/gtest.h>
#include <malloc.h>

#include <array>
#include <iostream>

#include "apps/loopback/server.h"
#include "hostkit/child_process.h"
#include "hostkit/connection.h"
#include "quennet_platform.h"
#include "support/own_network.h"
#include "support/temp_folder.h"
#include "support/wait.h"

using namespace hostkit;

namespace {

/// One thing that is counted, and by how much it may be more at the end.
struct Figure {
    const char* name;
    long count;
    long tolerance;
};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizers keep freed memory, and find leaks by themselves.
constexpr long residentTolerance = 1024 * 1024;
constexpr long mappingTolerance = 10'000;
#else
// The stacks of the most threads that ever ran at once are kept, and pages that are partly free.
constexpr long residentTolerance = 1024;
constexpr long mappingTolerance = 16;
#endif
constexpr long allocatedTolerance = 16 * 1024;

constexpr char threadFolder[] = "/proc/self/task";

using Figures = std::array<Figure, 10>;

long ResidentKilobytes() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line) && !line.starts_with("VmRSS:")) {
    }
    return std::atol(line.c_str() + line.find_first_of("0123456789"));
}

long AllocatedBytes() {
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<long>(heap.uordblks + heap.hblkhd);
}

long EntriesOf(const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
}

long Mappings() {
    std::ifstream maps("/proc/self/maps");
    return static_cast<long>(std::count(std::istreambuf_iterator<char>(maps), {}, '\n'));
}

Figures Measure(Host& host) {
    QuennetOpenObjects open = {};
    QuennetCountOpenObjects(&open);
    return {{{"allocated bytes", AllocatedBytes(), allocatedTolerance},
             {"resident kB", ResidentKilobytes(), residentTolerance},
             {"mappings", Mappings(), mappingTolerance},
             {"threads", EntriesOf(threadFolder), 0},
             {"descriptors", EntriesOf("/proc/self/fd"), 0},
             {"thread handles", static_cast<long>(open.handles), 0},
             {"windows", static_cast<long>(open.windows), 0},
             {"timers", static_cast<long>(open.timers), 0},
             {"message queues", static_cast<long>(open.queues), 0},
             {"uses of the socket library", static_cast<long>(*host.SocketUseCounter()), 0}}};
}

/// A server in a process of its own, so that what it takes is not counted.
class ServerProcess {
  public:
    explicit ServerProcess(const std::string& root) : child_([&] { return Serve(root); }) {
        close(port_[1]);
        EXPECT_EQ(read(port_[0], &number_, sizeof number_), ssize_t{sizeof number_});
        close(port_[0]);
    }

    std::uint16_t Port() const { return number_; }

  private:
    int Serve(const std::string& root) {
        loopback::Options options;
        options.root = root;
        loopback::Server server(options);
        const std::uint16_t number = server.Port();
        if (write(port_[1], &number, sizeof number) == ssize_t{sizeof number}) {
            pause();
        }
        return 0;
    }

    std::array<int, 2> port_ = Pipe();
    std::uint16_t number_ = 0;
    ChildProcess child_;

    static std::array<int, 2> Pipe() {
        std::array<int, 2> ends = {-1, -1};
        EXPECT_EQ(pipe(ends.data()), 0);
        return ends;
    }
};

class Soak : public ::testing::Test {
  protected:
    const bool ownNetwork = EnterOwnNetwork();

    void Run(int rounds) {
        constexpr int firstRounds = 100;
        mallopt(M_ARENA_MAX, 1);  // else threads that meet in the allocator each add a heap
        std::filesystem::create_directory(folder / "served");
        WriteWhole(folder / "served/file", content);
        ServerProcess server(folder / "served");
        MessageLoop loop;
        Host host(loop, {});
        host.LoadModule(MODULE_PATH);
        request.host = "127.0.0.1:" + std::to_string(server.Port());
        const auto start = std::chrono::steady_clock::now();
        RunJob(loop, [&] {
            const long threads = EntriesOf(threadFolder);
            RunRounds(host, firstRounds);
            const Figures first = Settled(host, threads);
            RunRounds(host, rounds - firstRounds);
            Compare(firstRounds, first, rounds, Settled(host, threads));
        });
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        std::cout << rounds << " rounds in " << took.count() << " s\n";
    }

  private:
    void RunRounds(Host& host, int count) {
        for (int round = 0; round < count && !HasFailure(); ++round) {
            Connection connection(host);
            ASSERT_TRUE(connection.Connect(request).Connected());
            EXPECT_TRUE(connection.List().done);
            TransferOperation operation;
            operation.confirm = [](const quennet::TransferItem&, u32) {
                return ConfirmAnswer::goOn;
            };
            EXPECT_TRUE(
                connection.Download({"file", folder / "file", content.size()}, operation).Done());
            connection.Disconnect();
        }
        EXPECT_EQ(ReadWhole(folder / "file"), content);
    }

    /// The figures once the last worker's thread has gone.
    static Figures Settled(Host& host, long threads) {
        EXPECT_TRUE(WaitUntil([&] { return EntriesOf(threadFolder) <= threads; }));
        return Measure(host);
    }

    static void Compare(int firstRounds, const Figures& first, int rounds, const Figures& last) {
        for (std::size_t place = 0; place < first.size(); ++place) {
            const Figure& before = first[place];
            const Figure& after = last[place];
            std::cout << before.name << ": " << before.count << " after " << firstRounds
                      << " rounds, " << after.count << " after " << rounds << '\n';
            EXPECT_LE(after.count, before.count + before.tolerance) << before.name;
        }
    }

    TempFolder folder;
    const std::string content = MixedBytes(20000);
    ConnectRequest request;
};

TEST_F(Soak, NothingStaysBehindOverHundreds) {
    Run(400);
}

TEST_F(Soak, NothingStaysBehindOverTenThousand) {
    if (!ownNetwork) {
        GTEST_SKIP() << "no network of the test's own can be had here";
    }
    Run(10'000);
}

}  // namespace
