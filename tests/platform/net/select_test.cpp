#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/net/peer.h"

namespace {

using SelectTest = ConnectedTest;

void Ignore(int) {}

TEST_F(SelectTest, ASignalDoesNotShortenTheTime) {
    struct sigaction action {};
    action.sa_handler = Ignore;
    sigaction(SIGUSR1, &action, nullptr);
    std::atomic<bool> over{false};
    const pthread_t waiter = pthread_self();
    std::thread disturber([&] {
        while (!over) {
            pthread_kill(waiter, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    });
    const DWORD start = GetTickCount();
    EXPECT_FALSE(Readable(socket_, 250));
    const DWORD taken = GetTickCount() - start;
    over = true;
    disturber.join();
    EXPECT_GE(taken, 245u);
    EXPECT_LT(taken, 10'000u);
}

TEST_F(SelectTest, OnlyReadySocketsStayInTheSets) {
    Peer secondPeer;
    const SOCKET second = ConnectTo(secondPeer);
    secondPeer.Accept();
    secondPeer.Write("x");
    ASSERT_TRUE(Readable(second, 2000));
    fd_set readers;
    fd_set writers;
    FD_ZERO(&readers);
    FD_ZERO(&writers);
    FD_SET(socket_, &readers);
    FD_SET(second, &readers);
    FD_SET(socket_, &writers);
    EXPECT_EQ(select(0, &readers, &writers, nullptr, nullptr), 2);
    EXPECT_FALSE(FD_ISSET(socket_, &readers));
    EXPECT_TRUE(FD_ISSET(second, &readers));
    EXPECT_TRUE(FD_ISSET(socket_, &writers));
    FD_CLR(second, &readers);
    EXPECT_EQ(readers.fd_count, 0u);
    EXPECT_EQ(select(0, &readers, nullptr, nullptr, nullptr), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAEINVAL) << "nothing to wait for";
}

TEST_F(SelectTest, NumbersAboveTheOldLimitOfSetsWork) {
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlim_t before = limit.rlim_cur;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    std::vector<int> occupied;
    while (occupied.empty() || occupied.back() < 1100) {
        occupied.push_back(dup(STDERR_FILENO));
        ASSERT_GE(occupied.back(), 0);
    }
    Peer highPeer;
    const SOCKET high = ConnectTo(highPeer);
    EXPECT_GT(high, 1024u);
    highPeer.Accept();
    EXPECT_FALSE(Readable(high, 20));
    highPeer.Write("x");
    EXPECT_TRUE(Readable(high, 2000));
    closesocket(high);
    for (const int descriptor : occupied) {
        close(descriptor);
    }
    limit.rlim_cur = before;
    setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace
