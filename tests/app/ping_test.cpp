// quennet ping against the system's own answers, in network namespaces of the test's own: nothing
// leaves the machine.

#include "app/program_test.h"

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

class PingProgramTest : public ProgramTest {
  protected:
    void SetUp() override {
        if (Shell(home, "unshare -rn sh -c 'ip link add v0 type veth peer name v1'").status != 0) {
            GTEST_SKIP() << "no network namespaces, or no ip (iproute2)";
        }
    }

    /// Runs commands in a namespace in which 10.9.0.1 is the own address and 10.9.0.2 another
    /// machine's, where $peer runs a command. $plain runs one without the right to raw sockets.
    RunResult InNamespace(const std::string& commands) const {
        home.Write("run", R"(
            rm -f ready
            ip link set lo up
            ip link add v0 type veth peer name v1
            ip addr add 10.9.0.1/24 dev v0 && ip link set v0 up
            unshare -n sh -c 'echo; exec sleep 60' >ready & machine=$!
            trap 'kill $machine' EXIT
            until [ -s ready ]; do sleep 0.02; done
            ip link set v1 netns $machine
            peer="nsenter -t $machine -n"
            plain="setpriv --bounding-set -net_raw --inh-caps -net_raw"
            $peer ip addr add 10.9.0.2/24 dev v1 && $peer ip link set v1 up
            until ip link show v0 | grep -q "state UP"; do sleep 0.02; done
            until $peer ip link show v1 | grep -q "state UP"; do sleep 0.02; done
            )" + commands);
        return Shell(home, "export quennet=\"$0\"; unshare -rn sh run");
    }
};

TEST_F(PingProgramTest, ARawSocketPingsTheOwnMachineAndAnother) {
    const RunResult run = InNamespace(R"(
        $quennet ping -c 2 127.0.0.1
        $quennet ping 10.9.0.2 & run=$!
        sleep 1.5; kill -INT $run; wait $run
    )");
    EXPECT_EQ(run.status, exitDone) << run.errors;
    const std::string line = ", 32 bytes from: ";
    const std::string summary = " lost; shortest [0-9]+ ms, mean [0-9.]+ ms, longest [0-9]+ ms\n";
    EXPECT_THAT(run.output,
                MatchesRegex("#0" + line + "127.0.0.1, time: [0-9]+ ms\n#1" + line +
                             "127.0.0.1, time: [0-9]+ ms\n2 sent, 2 received, 0" + summary + "#0" +
                             line + "10.9.0.2, time: [0-9]+ ms\n(#1.*\n)?(#2.*\n)?" +
                             "[1-3] sent, [1-3] received, 0" + summary));
    EXPECT_EQ(run.errors, "");
}

TEST_F(PingProgramTest, TimeOutsFollowEachOtherWithoutAPause) {
    const auto start = std::chrono::steady_clock::now();
    const RunResult run = InNamespace(R"(
        $peer sysctl -qw net.ipv4.icmp_echo_ignore_all=1
        $quennet ping -c 3 10.9.0.2
    )");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4900));
    EXPECT_EQ(run.status, exitFailed);
    EXPECT_EQ(run.output,
              "No answer in time.\nNo answer in time.\nNo answer in time.\n"
              "3 sent, 0 received, 3 lost\n");
    EXPECT_EQ(run.errors, "quennet: 10.9.0.2: no answer\n");
}

TEST_F(PingProgramTest, AnOrdinaryUserPingsWhereTheSystemAllowsIt) {
    EXPECT_EQ(InNamespace("$plain $quennet ping -c 1 127.0.0.1").errors,
              "quennet: No echo request can be sent: this user may not, or the host is unknown.\n");
    const RunResult run = InNamespace(R"(
        echo 0 0 >/proc/sys/net/ipv4/ping_group_range
        $plain $quennet ping -c 2 10.9.0.2
        $peer ip link set lo up; $peer ip route add unreachable 10.9.1.1
        $peer sysctl -qw net.ipv4.ip_forward=1; ip route add 10.9.1.0/24 via 10.9.0.2
        $plain $quennet ping -c 1 10.9.1.1
        $peer sysctl -qw net.ipv4.icmp_echo_ignore_all=1
        $plain $quennet ping -c 1 10.9.0.2
    )");
    EXPECT_THAT(run.output,
                MatchesRegex("#1 from: 10.9.0.2, time: [0-9]+ ms\n#2 from: 10.9.0.2, time: [0-9]+ "
                             "ms\n2 sent, 2 received, 0 lost; .*\nSomeone else's packet!\n1 sent, "
                             "0 received, 1 lost\nNo answer in time.\n1 sent, 0 received, 1 "
                             "lost\n"));
}

TEST_F(PingProgramTest, WhatCantBePingedIsAFailure) {
    const RunResult run = InNamespace("$quennet ping -c 1 nowhere.invalid");
    EXPECT_EQ(run.status, exitFailed);
    EXPECT_EQ(run.errors, "quennet: There is no host nowhere.invalid.\n");
    EXPECT_EQ(InNamespace("$quennet ping -c 1 203.0.113.1").errors,
              "quennet: Error 10051; Sendto failed: 10051\n");
    EXPECT_EQ(InNamespace("$quennet ping -c 1 127.0.0.1 >/dev/full").status, exitFailed);
    for (const char* words : {"ping", "ping -c 0 host", "ping --window", "ping a b"}) {
        EXPECT_EQ(Shell(home, "\"$0\" " + std::string(words)).status, exitUsage) << words;
    }
}

}  // namespace
