#include "platform/os/WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace qx::os {
namespace {

/// How often each item of [0, count) was handed to a slice.
std::vector<int> coverage(WorkerPool& pool, int count, int minSlice)
{
    std::vector<std::atomic<int>> seen(size_t(std::max(count, 0)));
    pool.forSlices(count, minSlice, [&](int begin, int end) {
        ASSERT_LE(0, begin);
        ASSERT_LT(begin, end);
        ASSERT_LE(end, count);
        for (int i = begin; i < end; ++i) seen[size_t(i)].fetch_add(1);
    });
    std::vector<int> times;
    for (const auto& s : seen) times.push_back(s.load());
    return times;
}

TEST(WorkerPool, SlicesCoverEveryItemOnceWhateverTheCount)
{
    WorkerPool pool(4);
    EXPECT_EQ(pool.threadCount(), 4u);
    // Counts that divide evenly, leave a short last slice, fit one slice, and none at all.
    for (const int count : {0, 1, 15, 16, 17, 64, 1080, 1081, 4099}) {
        const auto times = coverage(pool, count, 16);
        EXPECT_EQ(times, std::vector<int>(size_t(count), 1)) << count << " items";
    }
}

TEST(WorkerPool, OneThreadRunsEverythingOnTheCaller)
{
    WorkerPool pool(1);
    const auto caller = std::this_thread::get_id();
    int calls = 0;
    pool.forSlices(1000, 1, [&](int begin, int end) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        EXPECT_EQ(begin, 0);
        EXPECT_EQ(end, 1000);
        ++calls;
    });
    EXPECT_EQ(calls, 1);
}

TEST(WorkerPool, ASplitInsideASliceOrFromTwoCallersAtOnceCompletes)
{
    WorkerPool pool(3);
    // Each slice asks for a split of its own: it runs in place instead of waiting for
    // the pool, which is busy with the outer one.
    std::atomic<int> inner{0};
    pool.forSlices(256, 16, [&](int begin, int end) {
        pool.forSlices(end - begin, 1, [&](int b, int e) { inner.fetch_add(e - b); });
    });
    EXPECT_EQ(inner.load(), 256);

    // Two threads share the pool: one of them runs in place while the other has it.
    std::atomic<int> total{0};
    auto run = [&] {
        for (int round = 0; round < 50; ++round)
            pool.forSlices(512, 8, [&](int begin, int end) { total.fetch_add(end - begin); });
    };
    std::thread other(run);
    run();
    other.join();
    EXPECT_EQ(total.load(), 2 * 50 * 512);
}

TEST(WorkerPool, SharedPoolIsSizedOnceAndCanBeKeptToTheCaller)
{
    ASSERT_TRUE(WorkerPool::setThreadCount(3));
    EXPECT_EQ(WorkerPool::shared().threadCount(), 3u);
    EXPECT_FALSE(WorkerPool::setThreadCount(8));
    EXPECT_EQ(WorkerPool::shared().threadCount(), 3u);

    const auto caller = std::this_thread::get_id();
    std::set<std::thread::id> threads;
    std::mutex lock;
    {
        SingleThreadedRows single;
        parallelRows(1080, [&](int begin, int end) {
            std::lock_guard guard(lock);
            threads.insert(std::this_thread::get_id());
            EXPECT_EQ(begin, 0);
            EXPECT_EQ(end, 1080);
        });
    }
    EXPECT_EQ(threads, std::set<std::thread::id>{caller});
}

}  // namespace
}  // namespace qx::os
