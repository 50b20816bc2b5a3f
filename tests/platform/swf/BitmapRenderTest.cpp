// Bitmap characters through fills: lossless 24-bit, 32-bit with alpha and colour-mapped
// pictures, JPEGs whole, with an alpha plane and with shared tables; repeated and
// clipped fills; colour transforms on pictures; bitmaps placed by themselves.
#include "tests/platform/swf/MovieFixture.h"

namespace qx::swf::test {
namespace {

constexpr Rgba kWhite{255, 255, 255, 255};

// A rectangle in pixels filled with bitmap `id`, a bitmap pixel every `scale` pixels.
ShapeBuilder bitmapRectangle(uint16_t id, int width, int height, double scale, bool repeat, bool smooth = false)
{
    ShapeBuilder shape;
    FillStyle fill;
    fill.kind = FillKind::Bitmap;
    fill.bitmapId = id;
    fill.matrix = {scale * 20, 0, 0, scale * 20, 0, 0};
    fill.repeat = repeat;
    fill.smooth = smooth;
    shape.fills = {fill};
    shape.rectangle(0, 0, width * 20, height * 20, 1);
    return shape;
}

std::unique_ptr<draw2d::Bitmap> drawFill(SwfWriter& writer, uint16_t bitmapId, int width, int height, double scale,
                                         bool repeat = true)
{
    writer.defineShape(100, bitmapRectangle(bitmapId, width, height, scale, repeat));
    writer.place(1, 100);
    writer.showFrame();
    return draw(*loadMovie(writer.finish()), 0, width, height);
}

TEST(BitmapRender, LosslessPixelsScaleToTheirPlaces)
{
    SwfWriter writer = stageOf(20, 20);
    writer.defineLossless(1, 2, 2, std::vector<uint32_t>{0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFF102030}, false);
    const auto frame = drawFill(writer, 1, 20, 20, 10);
    EXPECT_TRUE(near(colorAt(*frame, 2, 2), {255, 0, 0, 255}));
    EXPECT_TRUE(near(colorAt(*frame, 17, 2), {0, 255, 0, 255}));
    EXPECT_TRUE(near(colorAt(*frame, 2, 17), {0, 0, 255, 255}));
    EXPECT_TRUE(near(colorAt(*frame, 17, 17), {16, 32, 48, 255}));
}

TEST(BitmapRender, LosslessAlphaBlendsOverTheBackground)
{
    SwfWriter writer = stageOf(10, 10);
    writer.defineLossless(1, 1, 1, std::vector<uint32_t>{0x80FF0000}, true);
    const auto frame = drawFill(writer, 1, 10, 10, 10);
    EXPECT_TRUE(near(colorAt(*frame, 5, 5), {255, 127, 127, 255}, 1));
}

TEST(BitmapRender, ColourMappedPixelsUseTheirPalette)
{
    SwfWriter writer = stageOf(30, 10);
    // The third index is past the two-entry palette: transparent.
    writer.defineLosslessPalette(1, 3, 1, std::vector<uint32_t>{0xFF00FF00, 0xFF0000FF}, std::vector<uint8_t>{1, 0, 7},
                                 false);
    const auto frame = drawFill(writer, 1, 30, 10, 10, false);
    EXPECT_TRUE(near(colorAt(*frame, 5, 5), {0, 0, 255, 255}));
    EXPECT_TRUE(near(colorAt(*frame, 15, 5), {0, 255, 0, 255}));
    EXPECT_TRUE(near(colorAt(*frame, 25, 5), kWhite));
}

TEST(BitmapRender, JpegPicturesWithAndWithoutTheirOwnTables)
{
    const std::vector<uint32_t> orange(64, 0xFFE08020);
    for (const bool tables : {false, true}) {
        SwfWriter writer = stageOf(16, 16);
        if (tables)
            writer.defineJpegWithTables(1, 8, 8, orange);
        else
            writer.defineJpeg(1, 8, 8, orange);
        const auto frame = drawFill(writer, 1, 16, 16, 2);
        EXPECT_TRUE(near(colorAt(*frame, 8, 8), {0xE0, 0x80, 0x20, 255}, 4)) << (tables ? "DefineBits" : "JPEG2");
    }
}

TEST(BitmapRender, JpegAlphaPlaneMakesThePictureTranslucent)
{
    SwfWriter writer = stageOf(16, 16);
    writer.background({0, 0, 0, 255});
    writer.defineJpeg(1, 8, 8, std::vector<uint32_t>(64, 0x80FFFFFF), true);
    const auto frame = drawFill(writer, 1, 16, 16, 2);
    EXPECT_TRUE(near(colorAt(*frame, 8, 8), {128, 128, 128, 255}, 3));
}

TEST(BitmapRender, RepeatedFillsTileAndClippedFillsExtendTheirEdge)
{
    const std::vector<uint32_t> redBlue{0xFFFF0000, 0xFF0000FF};
    for (const bool repeat : {true, false}) {
        SwfWriter writer = stageOf(60, 10);
        writer.defineLossless(1, 2, 1, redBlue, false);
        const auto frame = drawFill(writer, 1, 60, 10, 10, repeat);
        EXPECT_TRUE(near(colorAt(*frame, 5, 5), {255, 0, 0, 255}));
        EXPECT_TRUE(near(colorAt(*frame, 15, 5), {0, 0, 255, 255}));
        const Rgba beyond = colorAt(*frame, 25, 5);
        EXPECT_TRUE(near(beyond, repeat ? Rgba{255, 0, 0, 255} : Rgba{0, 0, 255, 255})) << (repeat ? "repeat" : "clip");
    }
}

TEST(BitmapRender, ColourTransformAppliesToPictures)
{
    SwfWriter writer = stageOf(10, 10);
    writer.defineLossless(1, 1, 1, std::vector<uint32_t>{0xFF804020}, false);
    writer.defineShape(2, bitmapRectangle(1, 10, 10, 10, true));
    writer.place(1, 2, {}, ColorTransform{{512, 256, 0, 256}, {0, 0, 100, 0}});
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 10, 10);
    EXPECT_TRUE(near(colorAt(*frame, 5, 5), {255, 0x40, 100, 255}, 1));
}

TEST(BitmapRender, BitmapPlacedByItselfShowsItsPixels)
{
    SwfWriter writer = stageOf(10, 10);
    writer.defineLossless(1, 2, 1, std::vector<uint32_t>{0xFF00FF00, 0xFFFF00FF}, false);
    writer.place(1, 1, {4, 0, 0, 4, 0, 0});
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 10, 10);
    EXPECT_TRUE(near(colorAt(*frame, 1, 1), {0, 255, 0, 255}));
    EXPECT_TRUE(near(colorAt(*frame, 6, 2), {255, 0, 255, 255}));
    EXPECT_TRUE(near(colorAt(*frame, 9, 5), kWhite));
}

}  // namespace
}  // namespace qx::swf::test
