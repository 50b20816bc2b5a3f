#include "tools/swf/SampleMovies.h"

#include <cmath>

namespace qx::swftool {

namespace {

using swf::FillKind;
using swf::GradientStop;

constexpr int32_t kWidth = 640 * 20;
constexpr int32_t kHeight = 360 * 20;

FillStyle solid(Rgba color)
{
    FillStyle fill;
    fill.color = color;
    return fill;
}

FillStyle gradient(FillKind kind, const Matrix& matrix, std::vector<GradientStop> stops)
{
    FillStyle fill;
    fill.kind = kind;
    fill.matrix = matrix;
    fill.gradient.stops = std::move(stops);
    return fill;
}

// The gradient square scaled to `size` twips and centred on a point.
Matrix gradientBox(double size, double centreX, double centreY)
{
    const double scale = size / 32768.0;
    return {scale, 0, 0, scale, centreX, centreY};
}

Matrix rotation(double degrees, double x, double y)
{
    const double r = degrees * 3.14159265358979323846 / 180.0;
    return {std::cos(r), std::sin(r), -std::sin(r), std::cos(r), x, y};
}

void defineSampleCharacters(SwfWriter& movie)
{
    ShapeBuilder bar;
    bar.fills = {
        gradient(FillKind::Linear, gradientBox(3200, 1600, 0), {{0, {255, 64, 0, 255}}, {255, {255, 220, 0, 255}}})};
    bar.rectangle(0, -600, 3200, 600, 1);
    movie.defineShape(1, bar);

    ShapeBuilder ball;
    ball.fills = {
        gradient(FillKind::Radial, gradientBox(4000, 0, 0), {{0, {255, 255, 255, 255}}, {255, {0, 80, 200, 255}}})};
    ball.lines = {swf::LineStyle{40, {0, 0, 60, 255}}};
    ball.line(1).circle(0, 0, 2000, 1);
    movie.defineShape(2, ball);

    ShapeBuilder morphStart;
    morphStart.fills = {solid({40, 160, 40, 255})};
    morphStart.moveTo(-1500, -1500)
        .fill1(1)
        .lineTo(1500, -1500)
        .lineTo(1500, 1500)
        .lineTo(-1500, 1500)
        .lineTo(-1500, -1500);
    ShapeBuilder morphEnd;
    morphEnd.fills = {solid({200, 40, 160, 255})};
    morphEnd.moveTo(0, -2000)
        .curveTo(2000, -2000, 2000, 0)
        .curveTo(2000, 2000, 0, 2000)
        .curveTo(-2000, 2000, -2000, 0)
        .curveTo(-2000, -2000, 0, -2000);
    movie.defineMorph(3, morphStart, morphEnd);

    ShapeBuilder square;
    square.fills = {solid({250, 250, 250, 255})};
    square.lines = {swf::LineStyle{60, {20, 20, 20, 255}}};
    square.line(1).rectangle(-800, -800, 800, 800, 1);
    movie.defineShape(4, square);
    TagList spin;
    spin.place(1, 4);
    for (int f = 0; f < 10; ++f) {
        spin.place(1, std::nullopt, rotation(f * 9.0, 0, 0), std::nullopt, std::nullopt, std::nullopt, true);
        spin.showFrame();
    }
    movie.defineSprite(5, spin);

    const auto board = checkerboard(16, 16, 4, 0xFF303030, 0xFFE0E0E0);
    movie.defineLossless(6, 16, 16, board, false);
    ShapeBuilder tile;
    FillStyle tiles;
    tiles.kind = FillKind::Bitmap;
    tiles.bitmapId = 6;
    tiles.matrix = {40, 0, 0, 40, 0, 0};  // two pixels of the movie per pixel of the bitmap
    tile.fills = {tiles};
    tile.rectangle(0, 0, 2560, 2560, 1);
    movie.defineShape(7, tile);

    ShapeBuilder window;
    window.fills = {solid({0, 0, 0, 255})};
    window.rectangle(0, 0, 2000, 1200, 1);
    movie.defineShape(8, window);
    ShapeBuilder stripe;
    stripe.fills = {solid({120, 0, 200, 255})};
    stripe.rectangle(-400, -2000, 400, 2000, 1);
    movie.defineShape(9, stripe);
}

}  // namespace

std::vector<uint32_t> checkerboard(int width, int height, int cell, uint32_t first, uint32_t second)
{
    std::vector<uint32_t> pixels(size_t(width) * size_t(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) pixels[size_t(y * width + x)] = ((x / cell + y / cell) % 2) ? second : first;
    }
    return pixels;
}

std::vector<uint8_t> sampleAnimation(int frames, Compression compression)
{
    SwfWriter movie(8, {0, kWidth, 0, kHeight}, 25.0);
    movie.background({230, 236, 245, 255});
    defineSampleCharacters(movie);
    for (int f = 0; f < frames; ++f) {
        const double t = frames > 1 ? double(f) / (frames - 1) : 0.0;
        const bool first = f == 0;
        movie.place(1, first ? std::optional<uint16_t>(1) : std::nullopt, {1, 0, 0, 1, 400 + t * 8000, 1200},
                    std::nullopt, std::nullopt, std::nullopt, !first);
        movie.place(2, first ? std::optional<uint16_t>(2) : std::nullopt,
                    {1, 0, 0, 1, 10000, 2800 + 1500 * std::sin(t * 6.283)}, std::nullopt, std::nullopt, std::nullopt,
                    !first);
        movie.place(3, first ? std::optional<uint16_t>(3) : std::nullopt, {1, 0, 0, 1, 3000, 4600}, std::nullopt,
                    uint16_t(std::lround(t * 65535)), std::nullopt, !first);
        if (first) {
            movie.place(4, 5, {1, 0, 0, 1, 6800, 4600});
            movie.place(5, 7, {1, 0, 0, 1, 8600, 3800});
            movie.place(6, 8, {1, 0, 0, 1, 8600, 600}, std::nullopt, std::nullopt, uint16_t(7));
        }
        movie.place(7, first ? std::optional<uint16_t>(9) : std::nullopt, {1, 0, 0, 1, 8600 + t * 2000, 1200},
                    std::nullopt, std::nullopt, std::nullopt, !first);
        movie.showFrame();
    }
    return movie.finish(compression);
}

std::vector<NamedMovie> corpusMovies()
{
    std::vector<NamedMovie> movies{{"sample.swf", sampleAnimation(4)},
                                   {"sample-zlib.swf", sampleAnimation(2, Compression::Zlib)},
                                   {"sample-lzma.swf", sampleAnimation(2, Compression::Lzma)}};

    SwfWriter bitmaps(10, {0, 1600, 0, 1600}, 12.0);
    const auto pixels = checkerboard(8, 8, 2, 0x80FF0000, 0xFF0000FF);
    bitmaps.defineLossless(1, 8, 8, pixels, true);
    bitmaps.defineJpeg(2, 8, 8, pixels, true);
    bitmaps.defineJpegWithTables(3, 8, 8, pixels);
    bitmaps.defineLosslessPalette(4, 3, 2, std::vector<uint32_t>{0xFF00FF00, 0x40FFFFFF},
                                  std::vector<uint8_t>{0, 1, 0, 1, 0, 1}, true);
    for (uint16_t id = 1; id <= 4; ++id) {
        ShapeBuilder shape;
        FillStyle fill;
        fill.kind = FillKind::Bitmap;
        fill.bitmapId = id;
        fill.matrix = {20, 0, 0, 20, 0, 0};
        fill.repeat = id % 2 == 0;
        shape.fills = {fill};
        shape.rectangle(0, 0, 400, 400, 1);
        bitmaps.defineShape(uint16_t(10 + id), shape);
        bitmaps.place(id, uint16_t(10 + id), {1, 0, 0, 1, double(id - 1) * 400, 0});
    }
    bitmaps.showFrame();
    movies.push_back({"bitmaps.swf", bitmaps.finish()});

    SwfWriter styles(10, {0, 2000, 0, 2000}, 10.0);
    ShapeBuilder shape;
    FillStyle focal = solid({0, 0, 0, 255});
    focal.kind = FillKind::Focal;
    focal.matrix = {0.05, 0, 0, 0.05, 1000, 1000};
    focal.gradient.spread = swf::Spread::Reflect;
    focal.gradient.focalPoint = 0.5;
    focal.gradient.stops = {{0, {255, 0, 0, 255}}, {128, {0, 255, 0, 128}}, {255, {0, 0, 255, 255}}};
    shape.fills = {focal, solid({10, 20, 30, 255})};
    swf::LineStyle thick{100, {0, 0, 0, 255}};
    thick.cap = swf::CapStyle::Square;
    thick.join = swf::JoinStyle::Miter;
    thick.miterLimit = 2.5;
    shape.lines = {thick};
    shape.line(1)
        .circle(1000, 1000, 800, 1)
        .newStyles({solid({200, 200, 0, 255})}, {})
        .rectangle(100, 100, 500, 500, 1);
    styles.defineShape(1, shape, 4);
    styles.place(1, 1, {}, ColorTransform{{128, 256, 256, 200}, {10, -10, 0, 0}});
    styles.showFrame();
    styles.place(1, std::nullopt, rotation(30, 100, 100), std::nullopt, std::nullopt, std::nullopt, true);
    styles.showFrame();
    movies.push_back({"styles.swf", styles.finish(Compression::None, 0)});
    return movies;
}

}  // namespace qx::swftool
