#pragma once
// The display list of a timeline: the objects placed at each depth with their matrix,
// colour transform, morph ratio and clip depth, changed by PlaceObject 1 to 3 and
// RemoveObject 1 and 2. An object remembers the frame it was placed on, so that a sprite
// knows its age.
#include "platform/swf/Types.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <variant>

namespace qx::swf {

struct DisplayObject {
    uint16_t characterId = 0;
    Matrix matrix;
    ColorTransform colorTransform;
    uint16_t ratio = 0;
    uint16_t clipDepth = 0;  // non-zero: a mask for the depths above it, up to this one
    bool visible = true;
    uint32_t birth = 0;  // frame of the timeline on which this character was placed
};

/// A PlaceObject tag: a new character at a depth, or changes to the one there ("move").
struct PlaceOp {
    uint16_t depth = 0;
    bool move = false;
    std::optional<uint16_t> characterId;
    std::optional<Matrix> matrix;
    std::optional<ColorTransform> colorTransform;
    std::optional<uint16_t> ratio;
    std::optional<uint16_t> clipDepth;
    std::optional<bool> visible;
};

struct RemoveOp {
    uint16_t depth = 0;
};

using ControlOp = std::variant<PlaceOp, RemoveOp>;

/// Parses a PlaceObject (`version` 1), PlaceObject2 (2) or PlaceObject3 (3) body.
std::optional<PlaceOp> parsePlaceObject(std::span<const uint8_t> body, int version);
/// Parses a RemoveObject (`version` 1) or RemoveObject2 (2) body.
std::optional<RemoveOp> parseRemoveObject(std::span<const uint8_t> body, int version);

class DisplayList {
public:
    using Objects = std::map<uint16_t, DisplayObject>;

    const Objects& objects() const { return objects_; }
    void apply(const ControlOp& op, uint32_t frame);
    void clear() { objects_.clear(); }

private:
    void place(const PlaceOp& op, uint32_t frame);

    Objects objects_;  // by depth, drawn from the lowest
};

}  // namespace qx::swf
