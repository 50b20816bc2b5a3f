#pragma once
// A timeline (the movie's own or a sprite's): for each frame, the display list changes
// that come before its ShowFrame. Any frame's display list is found by replaying the
// changes from the start; lists are kept every few frames, so that seeking replays at
// most that many frames, and stepping forward replays one.
//
// Not safe for use from two threads at once: the replay state is shared.
#include "platform/swf/DisplayList.h"
#include "platform/swf/Tags.h"

#include <vector>

namespace qx::swf {

struct TimelineFrame {
    std::vector<ControlOp> ops;
    size_t position = 0;  // root timeline: index of the frame's ShowFrame among the movie's tags
};

class Timeline {
public:
    Timeline() = default;
    explicit Timeline(std::vector<TimelineFrame> frames) : frames_(std::move(frames)) {}

    /// Frames of the timeline, counted by their ShowFrame tags.
    size_t frameCount() const { return frames_.size(); }
    size_t position(size_t frame) const { return frames_[frame].position; }
    /// The display list shown on `frame` (below frameCount()).
    const DisplayList& at(size_t frame) const;
    /// True when `object`, found at `depth`, is on the timeline from its first frame to
    /// its last: it then lives on when the timeline loops instead of starting over.
    bool persists(uint16_t depth, const DisplayObject& object) const;

private:
    void stepTo(size_t frame) const;
    const DisplayList& snapshot(size_t index) const;

    std::vector<TimelineFrame> frames_;
    mutable std::vector<DisplayList> snapshots_;  // the list at every kSnapshotEvery-th frame
    mutable DisplayList current_;
    mutable size_t currentFrame_ = SIZE_MAX;
    mutable std::optional<DisplayList> last_;
};

/// Collects the control tags of `tags` into frames, each with the index of its ShowFrame
/// as its position. Tags after the last ShowFrame are never shown and are dropped.
std::vector<TimelineFrame> collectFrames(std::span<const Tag> tags);

}  // namespace qx::swf
