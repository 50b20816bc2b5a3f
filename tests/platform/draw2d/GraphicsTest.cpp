#include "platform/draw2d/Graphics.h"

#include <gtest/gtest.h>

namespace qx::draw2d {
namespace {

std::vector<uint32_t> pixels(const Bitmap& bitmap)
{
    std::vector<uint32_t> out;
    for (int y = 0; y < bitmap.height(); ++y) out.insert(out.end(), bitmap.row(y).begin(), bitmap.row(y).end());
    return out;
}

TEST(Graphics, ClearReplacesEverySampleAlphaIncluded)
{
    Bitmap bitmap(3, 2);
    std::ranges::fill(bitmap.row(0), 0xFFFFFFFFu);
    {
        Graphics graphics(bitmap);
        graphics.clear(Color{0x80102030u});
    }
    EXPECT_EQ(pixels(bitmap), std::vector<uint32_t>(6, 0x80102030u));
}

TEST(Graphics, IdentityDrawOfAnOpaqueImageIsExact)
{
    Bitmap image(5, 4);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 5; ++x) image.row(y)[size_t(x)] = 0xFF000000u | uint32_t(x * 50 + y);
    }
    Bitmap target(5, 4);
    {
        Graphics graphics(target);
        graphics.clear(Color{0});
        EXPECT_EQ(graphics.drawImage(image, {0, 0, 5, 4}), Status::Ok);
    }
    EXPECT_EQ(pixels(target), pixels(image));
}

TEST(Graphics, TranslucentImageBlendsOverTheOldContents)
{
    Bitmap image(2, 2);
    for (int y = 0; y < 2; ++y) std::ranges::fill(image.row(y), 0x80FF0000u);  // half red
    Bitmap target(2, 2);
    for (int y = 0; y < 2; ++y) std::ranges::fill(target.row(y), 0xFF0000FFu);  // opaque blue
    {
        Graphics graphics(target);
        graphics.drawImage(image, {0, 0, 2, 2});
    }
    for (const uint32_t sample : pixels(target)) {
        EXPECT_EQ(sample >> 24, 255u);
        EXPECT_NEAR(int((sample >> 16) & 0xFF), 128, 1);
        EXPECT_NEAR(int(sample & 0xFF), 127, 1);
    }
}

TEST(Graphics, PartlyCoveredPixelsBlendByCoverage)
{
    Bitmap image(1, 1);
    image.row(0)[0] = 0xFFFFFFFFu;
    Bitmap target(4, 1);
    {
        Graphics graphics(target);
        graphics.clear(Color{0});
        graphics.drawImage(image, {0.5f, 0.0f, 2.0f, 1.0f});
    }
    const auto result = pixels(target);
    EXPECT_NEAR(int(result[0] >> 24), 128, 1);
    EXPECT_EQ(result[1], 0xFFFFFFFFu);
    EXPECT_NEAR(int(result[2] >> 24), 128, 1);
    EXPECT_EQ(result[2] & 0x00FFFFFFu, 0x00FFFFFFu);  // straight colour stays white
    EXPECT_EQ(result[3], 0u);
}

TEST(Graphics, UpscaledEdgesRepeatTheEdgeSamples)
{
    Bitmap image(2, 1);
    image.row(0)[0] = 0xFF000000u;
    image.row(0)[1] = 0xFF0000FFu;
    Bitmap target(8, 1);
    {
        Graphics graphics(target);
        graphics.drawImage(image, {0, 0, 8, 1});
    }
    const auto result = pixels(target);
    EXPECT_EQ(result[0], 0xFF000000u);
    EXPECT_EQ(result[7], 0xFF0000FFu);
    for (size_t i = 1; i < result.size(); ++i) EXPECT_GE(result[i] & 0xFF, result[i - 1] & 0xFF);
}

TEST(Graphics, NonFiniteOrEmptyRectanglesDrawNothing)
{
    Bitmap image(2, 2);
    Bitmap target(2, 2);
    std::ranges::fill(target.row(0), 0xFF00FF00u);
    Graphics graphics(target);
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(graphics.drawImage(image, {0, 0, inf, 2}), Status::InvalidParameter);
    EXPECT_EQ(graphics.drawImage(image, {0, 0, 2, 2}, {0, 0, 0, 2}), Status::Ok);
    EXPECT_EQ(graphics.drawImage(image, {5, 5, 2, 2}), Status::Ok);  // wholly outside
}

}  // namespace
}  // namespace qx::draw2d

namespace qx::draw2d {
namespace {

void paint(Bitmap& bitmap, uint32_t sample)
{
    for (int y = 0; y < bitmap.height(); ++y) std::ranges::fill(bitmap.row(y), sample);
}

TEST(GraphicsFill, BlendsByAlphaAndClipsToTheBitmap)
{
    Bitmap target(4, 2);
    paint(target, 0xFF000000u);
    {
        Graphics graphics(target);
        EXPECT_EQ(graphics.fillRectangle(Color{0x80FFFFFFu}, -3, 1, 5, 100), Status::Ok);
    }
    EXPECT_EQ(target.row(0)[0], 0xFF000000u);
    EXPECT_EQ(target.row(1)[1] >> 24, 255u);
    EXPECT_NEAR(int(target.row(1)[1] & 0xFF), 128, 1);
    EXPECT_EQ(target.row(1)[2], 0xFF000000u);  // past the rectangle's right edge
}

TEST(GraphicsFill, SourceCopyReplacesAlphaToo)
{
    Bitmap target(2, 1);
    paint(target, 0xFFFFFFFFu);
    {
        Graphics graphics(target);
        graphics.setCompositingMode(CompositingMode::SourceCopy);
        graphics.fillRectangle(Color{0x40102030u}, 0, 0, 1, 1);
    }
    EXPECT_EQ(target.row(0)[0] >> 24, 0x40u);
    EXPECT_NEAR(int((target.row(0)[0] >> 16) & 0xFF), 0x10, 2);
    EXPECT_EQ(target.row(0)[1], 0xFFFFFFFFu);
}

TEST(GraphicsColorKey, KeyedSamplesBecomeTransparentWithInclusiveBounds)
{
    Bitmap image(4, 1);
    const uint32_t samples[] = {0xFF0A1420u, 0xFF0B1420u, 0xFF0C1420u, 0xFF808080u};
    std::ranges::copy(samples, image.row(0).begin());
    Bitmap target(4, 1);
    ImageAttributes attributes;
    attributes.SetColorKey(Color{0xFF0A1420u}, Color{0xFF0B1420u});
    {
        Graphics graphics(target);
        graphics.clear(Color{0});
        graphics.drawImage(image, {0, 0, 4, 1}, {0, 0, 4, 1}, &attributes);
    }
    EXPECT_EQ(target.row(0)[0], 0u);
    EXPECT_EQ(target.row(0)[1], 0u);
    EXPECT_EQ(target.row(0)[2], 0xFF0C1420u);
    EXPECT_EQ(target.row(0)[3], 0xFF808080u);
}

TEST(GraphicsColorKey, LaterDrawingOverKeyedSamplesStaysStraightAlpha)
{
    Bitmap image(2, 1);
    image.row(0)[0] = 0xFF000000u;  // keyed
    image.row(0)[1] = 0xFF808080u;
    Bitmap target(2, 1);
    ImageAttributes attributes;
    attributes.SetColorKey(Color{0xFF000000u}, Color{0xFF000000u});
    {
        Graphics graphics(target);
        graphics.clear(Color{0});
        graphics.drawImage(image, {0, 0, 2, 1}, {0, 0, 2, 1}, &attributes);
        graphics.fillRectangle(Color{0x80FF0000u}, 0, 0, 2, 1);
    }
    EXPECT_EQ(target.row(0)[0], 0x80FF0000u);  // half red over nothing, in straight alpha
    EXPECT_EQ(target.row(0)[1] >> 24, 255u);
    EXPECT_NEAR(int((target.row(0)[1] >> 16) & 0xFF), 0xC0, 1);
}

int paintedColumns(const Bitmap& bitmap, int y)
{
    int count = 0;
    for (const uint32_t sample : bitmap.row(y)) count += sample != 0xFF000000u;
    return count;
}

TEST(GraphicsStroke, AOneWideLineAtAnIntegerColumnCoversThatColumn)
{
    Bitmap target(8, 6);
    paint(target, 0xFF000000u);
    {
        Graphics graphics(target);
        graphics.drawLine(Pen{Color{0xFFFFFFFFu}, 1.0f, nullptr}, {3.0f, 0.0f}, {3.0f, 6.0f});
    }
    for (int y = 0; y < 6; ++y) {
        EXPECT_EQ(target.row(y)[3], 0xFFFFFFFFu) << y;
        EXPECT_EQ(paintedColumns(target, y), 1) << y;
    }
}

TEST(GraphicsStroke, HatchPenPaintsBothColoursOfItsPattern)
{
    const HatchBrush brush{HatchStyle::DashedUpwardDiagonal, Color{0xFFFFFFFFu}, Color{0xFF0000FFu}};
    Bitmap target(4, 16);
    paint(target, 0xFF000000u);
    {
        Graphics graphics(target);
        graphics.drawLine(Pen{Color{}, 1.0f, &brush}, {1.0f, 0.0f}, {1.0f, 16.0f});
    }
    int white = 0;
    int blue = 0;
    for (int y = 0; y < 16; ++y) {
        white += target.row(y)[1] == 0xFFFFFFFFu;
        blue += target.row(y)[1] == 0xFF0000FFu;
    }
    EXPECT_GT(white, 0);
    EXPECT_GT(blue, 0);
    EXPECT_EQ(white + blue, 16);
}

TEST(GraphicsStroke, CardinalCurvePassesThroughItsPoints)
{
    Bitmap target(40, 40);
    paint(target, 0xFF000000u);
    const PointF points[] = {{5, 5}, {20, 30}, {35, 8}};
    {
        Graphics graphics(target);
        EXPECT_EQ(graphics.drawCurve(Pen{Color{0xFFFFFFFFu}, 1.0f, nullptr}, points, 0.5f), Status::Ok);
        EXPECT_EQ(graphics.drawCurve(Pen{Color{0xFFFFFFFFu}, 1.0f, nullptr}, std::span(points, 1), 0.5f),
                  Status::InvalidParameter);
    }
    // Through each point: the middle one exactly, the ends up to their caps.
    EXPECT_NE(target.row(30)[20], 0xFF000000u);
    for (const auto& p : {points[0], points[2]}) {
        int painted = 0;
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx)
                painted += target.row(int(p.Y) + dy)[size_t(p.X) + size_t(dx)] != 0xFF000000u;
        }
        EXPECT_GT(painted, 0) << p.X << "," << p.Y;
    }
    EXPECT_EQ(target.row(38)[2], 0xFF000000u);
}

}  // namespace
}  // namespace qx::draw2d
