#pragma once
// The built-in test picture, for runs without an input file: colour bars, a grey ramp, a
// grid and a disc that travels across the frame, so that moves, zooms, colour changes
// and the passing of time all show.
#include "apps/session/Frame.h"

namespace qx::qxfx {

/// Draws frame `index` of `count` of the pattern into `frame` (opaque samples).
void drawTestPattern(Frame& frame, int index, int count);

}  // namespace qx::qxfx

#include "apps/qxfx/FrameSource.h"

namespace qx::qxfx {

/// `count` frames of the pattern at `rate` frames per second, as a render's input.
class PatternFrames : public FrameSource {
public:
    PatternFrames(int width, int height, long count, double rate);
    int width() const override { return width_; }
    int height() const override { return height_; }
    bool next(TimedFrame& out) override;

private:
    int width_;
    int height_;
    long count_;
    double rate_;
    long index_ = 0;
};

}  // namespace qx::qxfx
