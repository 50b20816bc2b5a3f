#pragma once
// Helpers of the SWF tests: movies written by the project's writer, drawn into bitmaps,
// and colours read back from them.
#include "platform/swf/Movie.h"
#include "tools/swf/SwfWriter.h"

#include <gtest/gtest.h>

#include <memory>

namespace qx::swf::test {

using swftool::ShapeBuilder;
using swftool::SwfWriter;
using swftool::TagList;

/// A movie whose stage is `width` by `height` pixels, drawn at that size.
inline SwfWriter stageOf(int width, int height, double fps = 25.0)
{
    return SwfWriter(10, {0, width * 20, 0, height * 20}, fps);
}

inline FillStyle solidFill(Rgba color)
{
    FillStyle fill;
    fill.color = color;
    return fill;
}

/// A shape of one solid rectangle, in pixels.
inline ShapeBuilder rectangleShape(int left, int top, int right, int bottom, Rgba color)
{
    ShapeBuilder shape;
    shape.fills = {solidFill(color)};
    shape.rectangle(left * 20, top * 20, right * 20, bottom * 20, 1);
    return shape;
}

inline Matrix moveBy(double x, double y) { return {1, 0, 0, 1, x * 20, y * 20}; }

inline std::unique_ptr<Movie> loadMovie(const std::vector<uint8_t>& bytes)
{
    auto movie = Movie::load(bytes);
    EXPECT_TRUE(movie) << "the movie does not load";
    return movie;
}

/// Draws frame `tick` at `width` by `height`, without smoothing unless asked.
inline std::unique_ptr<draw2d::Bitmap> draw(const Movie& movie, size_t tick, int width, int height,
                                            RenderOptions options = {ScaleMode::ShowAll, false, {}})
{
    auto bitmap = std::make_unique<draw2d::Bitmap>(width, height);
    EXPECT_TRUE(movie.render(tick, *bitmap, options));
    return bitmap;
}

inline Rgba colorAt(const draw2d::Bitmap& bitmap, int x, int y)
{
    const uint32_t s = bitmap.row(y)[size_t(x)];
    return {uint8_t(s >> 16), uint8_t(s >> 8), uint8_t(s), uint8_t(s >> 24)};
}

inline ::testing::AssertionResult near(Rgba actual, Rgba expected, int tolerance = 0)
{
    const auto off = [&](uint8_t a, uint8_t b) { return std::abs(int(a) - int(b)) > tolerance; };
    if (off(actual.r, expected.r) || off(actual.g, expected.g) || off(actual.b, expected.b) ||
        off(actual.a, expected.a)) {
        return ::testing::AssertionFailure()
               << "colour " << int(actual.r) << "," << int(actual.g) << "," << int(actual.b) << "," << int(actual.a)
               << " is not " << int(expected.r) << "," << int(expected.g) << "," << int(expected.b) << ","
               << int(expected.a) << " within " << tolerance;
    }
    return ::testing::AssertionSuccess();
}

}  // namespace qx::swf::test
