#pragma once
// Work handed from one stage of a run to the next, first in first out, between one thread
// that gives and one that takes. Closing the queue is how either side says it is done:
// the giver when it has no more, the taker when it wants no more (a stop, an error).
// After it, gifts are refused and takes return what is left, then nothing.
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace qx::qxfx {

template <typename Item>
class StageQueue {
public:
    /// Adds `item` (moved from); false when the queue is closed, `item` then left as it was.
    bool give(Item& item)
    {
        {
            const std::lock_guard hold(lock_);
            if (closed_) return false;
            items_.push_back(std::move(item));
        }
        changed_.notify_one();
        return true;
    }

    /// Waits for the next item and moves it into `out`; false once the queue is closed
    /// and empty.
    bool take(Item& out)
    {
        std::unique_lock hold(lock_);
        changed_.wait(hold, [this] { return closed_ || !items_.empty(); });
        return popFront(out);
    }

    /// As take(), waiting at most `timeout`: false also when nothing came by then.
    template <typename Rep, typename Period>
    bool takeWithin(Item& out, std::chrono::duration<Rep, Period> timeout)
    {
        std::unique_lock hold(lock_);
        changed_.wait_for(hold, timeout, [this] { return closed_ || !items_.empty(); });
        return popFront(out);
    }

    void close()
    {
        {
            const std::lock_guard hold(lock_);
            closed_ = true;
        }
        changed_.notify_all();
    }

private:
    // Under the lock: the first item into `out`; false when there is none.
    bool popFront(Item& out)
    {
        if (items_.empty()) return false;
        out = std::move(items_.front());
        items_.pop_front();
        return true;
    }

    std::mutex lock_;
    std::condition_variable changed_;
    std::deque<Item> items_;
    bool closed_ = false;
};

}  // namespace qx::qxfx
