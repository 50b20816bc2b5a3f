#pragma once
// Runs the three stages of a render at once: reading (decoding, turning, pacing) on a
// thread of its own, the middle stage on the calling thread, and writing (encoding) on a
// thread of its own. The middle stays on the caller because the effect host is driven as
// an editor drives it: one instance, from the thread that set it up (where a 3D effect's
// drawing context is current), one Execute after another in order of progress.
// Work goes round a fixed set of items (frames and their buffers) through first-in-
// first-out queues, so it comes out in the order it came in, no more than a handful of
// frames are in memory at once, and none is allocated per frame. Without threads the
// stages take turns on the caller.
#include "apps/qxfx/StageQueue.h"

#include <atomic>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace qx::qxfx {

template <typename Item>
struct Stages {
    /// Fills the item handed in (its buffers reused) with the next piece of work; false at the end.
    std::function<bool(Item&)> read;
    std::function<void(Item&)> middle;
    std::function<void(const Item&)> write;
    /// Asked before each item is taken for the middle stage: true ends the run there,
    /// and what is already through the middle is still written.
    std::function<bool()> stopRequested = [] { return false; };
};

namespace detail {

// One item for each stage to work on and one waiting before each of the two later
// stages, so that a stage that is briefly slower does not hold up the others; one more
// lets the reader work ahead while an item is written. Six 1080p frames are 50 MB.
inline constexpr int kItemsInFlight = 6;

template <typename Item>
class ThreadedStages {
public:
    explicit ThreadedStages(const Stages<Item>& stages) : stages_(stages)
    {
        for (int i = 0; i < kItemsInFlight; ++i) {
            Item empty{};
            spare_.give(empty);
        }
    }

    long run()
    {
        {
            const std::jthread reading([this] { readAll(); });
            const std::jthread writing([this] { writeAll(); });
            processAll();
            // The reader stops after the item it is on; the writer writes what the
            // middle stage finished, then ends.
            closeAll();
        }
        if (error_) std::rethrow_exception(error_);
        return written_;
    }

private:
    void readAll()
    {
        guarded([this] {
            Item item{};
            while (spare_.take(item) && stages_.read(item) && read_.give(item)) {}
        });
        read_.close();
    }

    void processAll()
    {
        guarded([this] {
            Item item{};
            while (!stages_.stopRequested() && read_.take(item)) {
                stages_.middle(item);
                if (!processed_.give(item)) return;
            }
        });
    }

    void writeAll()
    {
        guarded([this] {
            Item item{};
            while (processed_.take(item)) {
                stages_.write(item);
                ++written_;
                spare_.give(item);
            }
        });
    }

    void closeAll()
    {
        spare_.close();
        read_.close();
        processed_.close();
    }

    // Runs a stage's loop; its error is kept (the first one of the run) and ends every
    // stage, so that no thread waits for work that will not come.
    template <typename Loop>
    void guarded(const Loop& loop)
    {
        try {
            loop();
        } catch (...) {
            {
                const std::lock_guard hold(errorLock_);
                if (!error_) error_ = std::current_exception();
            }
            closeAll();
        }
    }

    const Stages<Item>& stages_;
    StageQueue<Item> spare_;
    StageQueue<Item> read_;
    StageQueue<Item> processed_;
    std::mutex errorLock_;
    std::exception_ptr error_;
    std::atomic<long> written_ = 0;
};

}  // namespace detail

/// Passes every item read through the middle stage to the writer and returns how many
/// were written. The first error of any stage ends the run and is thrown once every
/// thread has stopped.
template <typename Item>
long runStages(const Stages<Item>& stages, bool threaded)
{
    if (threaded) return detail::ThreadedStages<Item>(stages).run();
    Item item{};
    long written = 0;
    while (!stages.stopRequested() && stages.read(item)) {
        stages.middle(item);
        stages.write(item);
        ++written;
    }
    return written;
}

}  // namespace qx::qxfx
