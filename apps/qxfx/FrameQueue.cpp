#include "apps/qxfx/FrameQueue.h"

#include <utility>

namespace qx::qxfx {

bool FrameQueue::give(TimedFrame& frame)
{
    {
        const std::lock_guard hold(lock_);
        if (closed_) return false;
        frames_.push_back(std::move(frame));
    }
    changed_.notify_one();
    return true;
}

bool FrameQueue::take(TimedFrame& out)
{
    std::unique_lock hold(lock_);
    changed_.wait(hold, [this] { return closed_ || !frames_.empty(); });
    if (frames_.empty()) return false;
    out = std::move(frames_.front());
    frames_.pop_front();
    return true;
}

void FrameQueue::close()
{
    {
        const std::lock_guard hold(lock_);
        closed_ = true;
    }
    changed_.notify_all();
}

}  // namespace qx::qxfx
