#include "apps/qxfx/ClipFrames.h"

#include "apps/qxfx/FrameTurn.h"

namespace qx::qxfx {

namespace {

// Half a microsecond: a frame whose time rounds to the edge of the trim belongs to it.
constexpr double kTimeSlack = 5e-7;

}  // namespace

ClipFrames::ClipFrames(VideoReader& reader, const Trim& trim)
    : reader_(reader), trim_(trim), turn_(reader.uprightTurn()), stored_(makeFrame(reader.width(), reader.height()))
{}

bool ClipFrames::next(TimedFrame& out)
{
    // Frames before the start are decoded and dropped: every frame after it then decodes
    // from its own references, whatever the group of pictures.
    while (reader_.read(stored_)) {
        ++decoded_;
        const double time = reader_.lastFrameSeconds() - trim_.start;
        if (time < -kTimeSlack) continue;
        if (time >= trim_.length - kTimeSlack) return false;
        if (turn_ == 0)
            std::swap(out.frame, stored_);
        else
            turnClockwise(stored_, turn_, out.frame);
        if (stored_.samples.size() != size_t(reader_.width()) * size_t(reader_.height()))
            stored_ = makeFrame(reader_.width(), reader_.height());
        out.seconds = std::max(0.0, time);
        return true;
    }
    return false;
}

}  // namespace qx::qxfx
