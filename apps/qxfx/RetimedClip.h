#pragma once
// A clip read at another clip's frame rate and size: frame j is the picture the clip
// shows half a frame after j / rate seconds (so that clips of the same rate map frame for
// frame), stretched to the size. Past its end the clip holds its last picture.
#include "apps/session/Frame.h"
#include "platform/video/MovieReader.h"

#include <memory>
#include <string>

namespace qx::qxfx {

class RetimedClip {
public:
    /// Opens `path`; CommandError naming the problem when it holds no video that can be
    /// decoded. `threads` 0 lets FFmpeg choose.
    RetimedClip(const std::string& path, double rate, int threads);

    /// The frames at the rate that cover the clip; at least 1.
    long frameCount() const { return frames_; }
    /// Frame `index` into `out`, stretched to its size; CommandError when no picture at all
    /// can be decoded.
    void read(long index, Frame& out);

private:
    std::string path_;
    std::unique_ptr<video::MovieReader> reader_;
    double rate_;
    long frames_;
};

}  // namespace qx::qxfx
