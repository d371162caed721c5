// The loop that serves windows while a job runs.

#include "hostkit/message_loop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

using hostkit::MessageLoop;

TEST(MessageLoopTest, AJobRunsBesideTheLoopAndHandsOnItsResult) {
    MessageLoop loop;
    EXPECT_TRUE(loop.OnLoopThread());
    const int result = RunJob(loop, [&] {
        EXPECT_FALSE(loop.OnLoopThread());
        return loop.Invoke([&] { return loop.OnLoopThread() ? 42 : 0; });
    });
    EXPECT_EQ(result, 42);
    EXPECT_THROW(RunJob(loop, [] { throw std::out_of_range("of the job"); }), std::out_of_range);
    EXPECT_THROW(RunJob(loop, [&] { loop.Invoke([] { throw std::logic_error("of the loop"); }); }),
                 std::logic_error);
}

TEST(MessageLoopTest, ManyThreadsPostInTheirOrder) {
    MessageLoop loop;
    std::vector<int> seen[4];
    RunJob(loop, [&] {
        std::vector<std::jthread> posters;
        for (std::vector<int>& numbers : seen) {
            posters.emplace_back([&] {
                for (int i = 0; i < 2000; ++i) {
                    loop.Post([&, i] { numbers.push_back(i); });
                }
                loop.Invoke([] {});
            });
        }
    });
    for (const std::vector<int>& numbers : seen) {
        EXPECT_EQ(numbers.size(), 2000U);
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    }
}
