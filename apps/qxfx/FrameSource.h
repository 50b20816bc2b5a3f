#pragma once
// The first stage of a render: frames that come in, each with the time it is shown. The
// stages of a render (frames in, the effect, frames out) meet only through TimedFrame,
// so that each can run on its own thread with a queue between.
#include "apps/session/Frame.h"

namespace qx::qxfx {

struct TimedFrame {
    Frame frame;
    double seconds = 0.0;  ///< when the frame is shown, from the start of the output
};

class FrameSource {
public:
    virtual ~FrameSource() = default;
    virtual int width() const = 0;
    virtual int height() const = 0;
    /// The next frame into `out` (its samples reused when the size fits); false at the end.
    virtual bool next(TimedFrame& out) = 0;
};

}  // namespace qx::qxfx
