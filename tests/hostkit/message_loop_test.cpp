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
    constexpr int threads = 4;
    constexpr int each = 2000;
    std::vector<int> seen[threads];
    RunJob(loop, [&] {
        std::vector<std::thread> posters;
        for (int number = 0; number < threads; ++number) {
            posters.emplace_back([&, number] {
                for (int i = 0; i < each; ++i) {
                    loop.Post([&, number, i] { seen[number].push_back(i); });
                }
                loop.Invoke([] {});
            });
        }
        for (std::thread& poster : posters) {
            poster.join();
        }
    });
    for (const std::vector<int>& order : seen) {
        ASSERT_EQ(order.size(), static_cast<std::size_t>(each));
        EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    }
}
