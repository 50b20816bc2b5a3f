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

/// How drawn samples meet the old ones: blended over them, or replacing them.
enum class CompositingMode { SourceOver, SourceCopy };

/// Hatch patterns by their numbers.
enum class HatchStyle : int {
    DashedUpwardDiagonal = 32,
};

/// A two-colour 8 by 8 pattern.
struct HatchBrush {
    HatchStyle style = HatchStyle::DashedUpwardDiagonal;
    Color foreground;
    Color background;
};

/// A pen draws with a solid colour or with a hatch brush.
struct Pen {
    Color color;
    float width = 1.0f;
    const HatchBrush* brush = nullptr;  // when set, the pen paints with it instead of `color`
};

/// Where a new transform goes relative to the current one: applied before it (prepended,
/// the default) or after it.
enum class MatrixOrder { Prepend = 0, Append = 1 };

/// An affine map of row vectors: x' = x m11 + y m21 + dx, y' = x m12 + y m22 + dy.
struct Matrix {
    double m11 = 1.0;
    double m12 = 0.0;
    double m21 = 0.0;
    double m22 = 1.0;
    double dx = 0.0;
    double dy = 0.0;

    PointF apply(PointF p) const { return {float(p.X * m11 + p.Y * m21 + dx), float(p.X * m12 + p.Y * m22 + dy)}; }
    /// `first`, then `then`.
    static Matrix product(const Matrix& first, const Matrix& then)
    {
        return {
            first.m11 * then.m11 + first.m12 * then.m21,         first.m11 * then.m12 + first.m12 * then.m22,
            first.m21 * then.m11 + first.m22 * then.m21,         first.m21 * then.m12 + first.m22 * then.m22,
            first.dx * then.m11 + first.dy * then.m21 + then.dx, first.dx * then.m12 + first.dy * then.m22 + then.dy};
    }
    /// True when the map only scales and moves: axes stay axes.
    bool axisAligned() const { return m12 == 0.0 && m21 == 0.0; }
};

/// A 5 by 5 colour matrix over row vectors (red, green, blue, alpha, 1) of values 0 to 1.
struct ColorMatrix {
    float m[5][5] = {{1, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1}};
};

/// Image attributes of a draw: an optional colour key and an optional colour matrix.
/// Source samples whose red, green and blue all lie within the inclusive ranges of
/// `keyLow` to `keyHigh` become transparent; the colour matrix then maps the colours.
struct ImageAttributes {
    bool colorKeyEnabled = false;
    Color keyLow;
    Color keyHigh;
    bool colorMatrixEnabled = false;
    ColorMatrix colorMatrix;

    void SetColorKey(Color low, Color high)
    {
        colorKeyEnabled = true;
        keyLow = low;
        keyHigh = high;
    }
    void SetColorMatrix(const ColorMatrix& matrix)
    {
        colorMatrixEnabled = true;
        colorMatrix = matrix;
    }
};

}  // namespace qx::draw2d
