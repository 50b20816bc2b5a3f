#pragma once
// Value types of SWF movies: twips rectangles, affine matrices, colours and colour
// transforms, as the file stores them and as drawing composes them.
#include <algorithm>
#include <cstdint>

namespace qx::swf {

/// Twentieths of a pixel, the unit of every SWF coordinate.
inline constexpr double kTwipsPerPixel = 20.0;

struct Rect {
    int32_t xMin = 0;
    int32_t xMax = 0;
    int32_t yMin = 0;
    int32_t yMax = 0;

    int64_t width() const { return int64_t(xMax) - xMin; }
    int64_t height() const { return int64_t(yMax) - yMin; }
};

struct Point {
    double x = 0.0;
    double y = 0.0;

    friend bool operator==(const Point&, const Point&) = default;
};

/// x' = a x + c y + tx, y' = b x + d y + ty (SWF's ScaleX, RotateSkew0, RotateSkew1,
/// ScaleY, TranslateX, TranslateY).
struct Matrix {
    double a = 1.0;
    double b = 0.0;
    double c = 0.0;
    double d = 1.0;
    double tx = 0.0;
    double ty = 0.0;

    Point apply(Point p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }
    /// This matrix applied after `inner`.
    Matrix operator*(const Matrix& inner) const
    {
        return {a * inner.a + c * inner.b, b * inner.a + d * inner.b,        a * inner.c + c * inner.d,
                b * inner.c + d * inner.d, a * inner.tx + c * inner.ty + tx, b * inner.tx + d * inner.ty + ty};
    }
    double determinant() const { return a * d - b * c; }
    static Matrix interpolate(const Matrix& from, const Matrix& to, double t)
    {
        const auto mix = [t](double p, double q) { return p + (q - p) * t; };
        return {mix(from.a, to.a), mix(from.b, to.b),   mix(from.c, to.c),
                mix(from.d, to.d), mix(from.tx, to.tx), mix(from.ty, to.ty)};
    }
};

struct Rgba {
    uint8_t r = 0;
    uint8_t g = 0;
    uint8_t b = 0;
    uint8_t a = 255;

    friend bool operator==(const Rgba&, const Rgba&) = default;
    static Rgba interpolate(Rgba from, Rgba to, double t)
    {
        const auto mix = [t](uint8_t p, uint8_t q) { return uint8_t(p + (q - p) * t + 0.5); };
        return {mix(from.r, to.r), mix(from.g, to.g), mix(from.b, to.b), mix(from.a, to.a)};
    }
};

/// A colour transform: each channel times its multiplier (256 is 1.0), plus its addend,
/// clamped to 0..255.
struct ColorTransform {
    int32_t multiply[4] = {256, 256, 256, 256};  // red, green, blue, alpha
    int32_t add[4] = {0, 0, 0, 0};

    bool identity() const
    {
        return std::all_of(multiply, multiply + 4, [](int32_t m) { return m == 256; }) &&
               std::all_of(add, add + 4, [](int32_t v) { return v == 0; });
    }
    Rgba apply(Rgba color) const
    {
        const auto channel = [&](uint8_t value, int i) {
            return uint8_t(std::clamp<int64_t>(int64_t(value) * multiply[i] / 256 + add[i], 0, 255));
        };
        return {channel(color.r, 0), channel(color.g, 1), channel(color.b, 2), channel(color.a, 3)};
    }
    /// This transform applied after `inner`.
    ColorTransform operator*(const ColorTransform& inner) const
    {
        ColorTransform result;
        for (int i = 0; i < 4; ++i) {
            result.multiply[i] =
                int32_t(std::clamp<int64_t>(int64_t(multiply[i]) * inner.multiply[i] / 256, -65536, 65536));
            result.add[i] =
                int32_t(std::clamp<int64_t>(int64_t(inner.add[i]) * multiply[i] / 256 + add[i], -65536, 65536));
        }
        return result;
    }
};

}  // namespace qx::swf
