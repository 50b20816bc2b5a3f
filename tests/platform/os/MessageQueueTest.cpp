// The worker-thread services: messages arrive in the order they were posted, across
// threads; an auto-reset event releases one wait per set, a manual one stays set.
#include "platform/os/MessageQueue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace qx::os {
namespace {

using namespace std::chrono_literals;

TEST(MessageQueue, WorkerTakesMessagesInPostedOrder)
{
    MessageQueue queue;
    std::vector<uint32_t> seen;
    Event done;
    std::thread worker([&] {
        for (;;) {
            const ThreadMessage message = queue.get();
            if (message.message == 0) break;
            seen.push_back(message.message + uint32_t(message.wParam));
        }
        done.set();
    });
    for (uint32_t i = 1; i <= 100; ++i) queue.post({i, 1000, 0});
    queue.post({0});
    EXPECT_TRUE(done.waitFor(10s));
    worker.join();
    ASSERT_EQ(seen.size(), 100u);
    for (uint32_t i = 0; i < 100; ++i) EXPECT_EQ(seen[i], 1001 + i);
    EXPECT_FALSE(queue.peek().has_value());
}

TEST(Event, AutoResetReleasesOneWaitPerSet)
{
    Event event;
    EXPECT_FALSE(event.waitFor(1ms));
    event.set();
    event.set();  // setting a set event does not count twice
    EXPECT_TRUE(event.waitFor(1ms));
    EXPECT_FALSE(event.waitFor(1ms));
}

TEST(Event, ManualResetStaysSetUntilReset)
{
    Event event(true);
    event.set();
    EXPECT_TRUE(event.waitFor(1ms));
    EXPECT_TRUE(event.waitFor(1ms));
    event.reset();
    EXPECT_FALSE(event.waitFor(1ms));
}

TEST(Event, WaitReturnsWhenAnotherThreadSets)
{
    Event event;
    std::thread setter([&] {
        std::this_thread::sleep_for(20ms);
        event.set();
    });
    event.wait();
    setter.join();
    SUCCEED();
}

}  // namespace
}  // namespace qx::os
