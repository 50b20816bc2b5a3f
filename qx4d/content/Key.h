#pragma once
// One key of an envelope. Its shape governs the segment that ends at it; the meaning of
// `params` follows the shape (tension, continuity, bias for TCB; tangents for Hermite;
// handles for Bezier).
#include <cstdint>

namespace qx4d {

struct Key {
    /// The shapes of a segment; 2 and any number above 5 draw no curve.
    enum Shape : uint32_t {
        ShapeTCB = 0,
        ShapeHermite = 1,
        ShapeNone = 2,
        ShapeLinear = 3,
        ShapeStepped = 4,
        ShapeBezier = 5,
    };

    float time = 0.0f;
    float value = 0.0f;
    uint32_t shape = ShapeTCB;
    float params[6] = {};
};

}  // namespace qx4d
