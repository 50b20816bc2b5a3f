#include "platform/swf/Timeline.h"

#include <cstdint>

namespace qx::swf {

namespace {

constexpr size_t kSnapshotEvery = 16;

std::optional<ControlOp> controlOp(const Tag& tag)
{
    switch (tag.code) {
    case kPlaceObject:
    case kPlaceObject2:
    case kPlaceObject3:
        if (auto op = parsePlaceObject(tag.body, tag.code == kPlaceObject ? 1 : tag.code == kPlaceObject2 ? 2 : 3)) {
            return ControlOp(*op);
        }
        return std::nullopt;
    case kRemoveObject:
    case kRemoveObject2:
        if (auto op = parseRemoveObject(tag.body, tag.code == kRemoveObject ? 1 : 2)) return ControlOp(*op);
        return std::nullopt;
    default: return std::nullopt;
    }
}

}  // namespace

std::vector<TimelineFrame> collectFrames(std::span<const Tag> tags)
{
    std::vector<TimelineFrame> frames;
    TimelineFrame pending;
    for (size_t i = 0; i < tags.size(); ++i) {
        if (tags[i].code == kShowFrame) {
            pending.position = i;
            frames.push_back(std::move(pending));
            pending = {};
        } else if (auto op = controlOp(tags[i])) {
            pending.ops.push_back(std::move(*op));
        }
    }
    return frames;
}

const DisplayList& Timeline::snapshot(size_t index) const
{
    while (snapshots_.size() <= index) {
        const size_t next = snapshots_.size();
        if (next == 0) {
            current_.clear();
            currentFrame_ = SIZE_MAX;
        } else {
            current_ = snapshots_.back();
            currentFrame_ = (next - 1) * kSnapshotEvery;
        }
        stepTo(next * kSnapshotEvery);
        snapshots_.push_back(current_);
    }
    return snapshots_[index];
}

void Timeline::stepTo(size_t frame) const
{
    for (size_t f = currentFrame_ == SIZE_MAX ? 0 : currentFrame_ + 1; f <= frame; ++f) {
        for (const ControlOp& op : frames_[f].ops) current_.apply(op, uint32_t(f));
    }
    currentFrame_ = frame;
}

const DisplayList& Timeline::at(size_t frame) const
{
    if (frame == currentFrame_) return current_;
    if (currentFrame_ == SIZE_MAX || frame < currentFrame_ || frame - currentFrame_ > kSnapshotEvery) {
        const size_t index = frame / kSnapshotEvery;
        current_ = snapshot(index);
        currentFrame_ = index * kSnapshotEvery;
    }
    stepTo(frame);
    return current_;
}

bool Timeline::persists(uint16_t depth, const DisplayObject& object) const
{
    if (object.birth != 0 || frames_.empty()) return false;
    if (!last_) {
        const DisplayList saved = current_;
        const size_t savedFrame = currentFrame_;
        last_ = at(frames_.size() - 1);
        current_ = saved;
        currentFrame_ = savedFrame;
    }
    const auto found = last_->objects().find(depth);
    return found != last_->objects().end() && found->second.birth == 0 &&
           found->second.characterId == object.characterId;
}

}  // namespace qx::swf
