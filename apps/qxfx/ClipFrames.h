#pragma once
// The frames of a clip, upright and trimmed: frames stored on their side are turned as the
// stream's display matrix says (as ffmpeg's autorotation does, so the output carries no
// turn of its own), and only the part from `start` for `length` seconds comes out, with
// times counted from `start`.
#include "apps/qxfx/FrameSource.h"
#include "apps/qxfx/VideoReader.h"

#include <limits>

namespace qx::qxfx {

struct Trim {
    double start = 0.0;
    double length = std::numeric_limits<double>::infinity();
};

class ClipFrames : public FrameSource {
public:
    ClipFrames(VideoReader& reader, const Trim& trim);

    int width() const override { return sideways() ? reader_.height() : reader_.width(); }
    int height() const override { return sideways() ? reader_.width() : reader_.height(); }
    bool next(TimedFrame& out) override;
    /// Frames read so far, those before the trim included.
    long decoded() const { return decoded_; }

private:
    bool sideways() const { return turn_ == 90 || turn_ == 270; }

    VideoReader& reader_;
    Trim trim_;
    int turn_;
    Frame stored_;
    long decoded_ = 0;
};

}  // namespace qx::qxfx
