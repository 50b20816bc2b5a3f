#pragma once
// Frames handed from one stage of a render to the next, first in first out, between one
// thread that gives and one that takes. Closing the queue is how either side says it is
// done: the giver when it has no more frames, the taker when it wants no more (a stop, an
// error). After it, gifts are refused and takes return what is left, then nothing.
#include "apps/qxfx/FrameSource.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace qx::qxfx {

class FrameQueue {
public:
    /// Adds `frame` (moved from); false when the queue is closed, `frame` then left as it was.
    bool give(TimedFrame& frame);
    /// Waits for the next frame and moves it into `out`; false once the queue is closed
    /// and empty.
    bool take(TimedFrame& out);
    void close();

private:
    std::mutex lock_;
    std::condition_variable changed_;
    std::deque<TimedFrame> frames_;
    bool closed_ = false;
};

}  // namespace qx::qxfx
