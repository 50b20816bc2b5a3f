#pragma once
// Value types of the 2D drawing layer, in the shape the system's drawing code uses:
// status codes with their numbers, float rectangles and points, ARGB colours.
#include <cstdint>

namespace qx::draw2d {

/// Drawing results; 0 is success, as callers test.
enum class Status : int {
    Ok = 0,
    GenericError = 1,
    InvalidParameter = 2,
    OutOfMemory = 3,
    ObjectBusy = 4,
    WrongState = 8,
    NotImplemented = 6,
};

struct PointF {
    float X = 0.0f;
    float Y = 0.0f;
};

struct RectF {
    float X = 0.0f;
    float Y = 0.0f;
    float Width = 0.0f;
    float Height = 0.0f;
};

/// A straight-alpha colour as one word: alpha in the top byte, then red, green, blue.
struct Color {
    uint32_t argb = 0;

    static constexpr Color fromArgb(uint32_t a, uint32_t r, uint32_t g, uint32_t b)
    {
        return {(a & 0xFF) << 24 | (r & 0xFF) << 16 | (g & 0xFF) << 8 | (b & 0xFF)};
    }
    constexpr uint32_t alpha() const { return argb >> 24; }
    constexpr uint32_t red() const { return (argb >> 16) & 0xFF; }
    constexpr uint32_t green() const { return (argb >> 8) & 0xFF; }
    constexpr uint32_t blue() const { return argb & 0xFF; }
};

}  // namespace qx::draw2d
