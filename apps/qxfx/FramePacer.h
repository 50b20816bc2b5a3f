#pragma once
// Sets the timing of the frames that come in: a constant output rate when asked for one
// (frames dropped or shown again, each output frame the input frame shown at its time),
// and a fixed number of frames when asked for one (the last
// frame held when the input ends first). Otherwise frames keep their own times, so a
// clip of variable frame rate keeps its timing.
#include "apps/qxfx/FrameSource.h"

#include <optional>

namespace qx::qxfx {

struct Pacing {
    std::optional<double> rate;  ///< frames per second of the output; none: the input's times
    std::optional<long> count;   ///< frames of the output; none: until the input ends
    double inputRate = 25.0;     ///< the input's declared rate: how long its last frame lasts
};

class FramePacer : public FrameSource {
public:
    FramePacer(FrameSource& source, const Pacing& pacing);

    int width() const override { return source_.width(); }
    int height() const override { return source_.height(); }
    bool next(TimedFrame& out) override;

private:
    bool nextAtRate(TimedFrame& out);
    bool holdLast(TimedFrame& out);
    bool readAhead();

    FrameSource& source_;
    Pacing pacing_;
    long produced_ = 0;
    TimedFrame shown_;  // the last frame given out
    bool hasShown_ = false;
    TimedFrame ahead_;  // the next frame of the source, read before its time
    bool hasAhead_ = false;
    bool sourceEnded_ = false;
};

}  // namespace qx::qxfx
