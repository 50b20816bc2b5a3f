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
