#pragma once
// Runs the three stages of a render at once: frames in (decoding, turning, pacing) on a
// thread of their own, the middle stage on the calling thread, and frames out (encoding)
// on a thread of their own. The middle stays on the caller because the effect host is
// driven as an editor drives it: one instance, from the thread that set it up (where a 3D
// effect's drawing context is current), one Execute after another in order of progress.
// Frames go round a fixed set of buffers through first-in-first-out queues, so they come
// out in the order they came in, no more than a handful are in memory at once, and none
// is allocated per frame. Without threads the stages take turns on the caller.
#include "apps/qxfx/FrameSource.h"

#include <functional>

namespace qx::qxfx {

struct FrameStages {
    FrameSource& source;
    std::function<void(TimedFrame&)> middle;
    std::function<void(const TimedFrame&)> sink;
    /// Asked before each frame is taken for the middle stage: true ends the run there,
    /// and the frames already through the middle still reach the sink.
    std::function<bool()> stopRequested;
};

/// Passes every frame of the source through the middle stage to the sink and returns how
/// many reached the sink. The first error of any stage ends the run and is thrown once
/// every thread has stopped.
long runFrameStages(const FrameStages& stages, bool threaded);

}  // namespace qx::qxfx
