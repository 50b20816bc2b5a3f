// Image draws under the world transform: rotations land each sample where the geometry
// puts it, scales and moves take the row resampler's way, colour keys clear samples
// before they are mixed, colour matrices fade or recolour, and bad transforms are refused.
#include "platform/draw2d/Graphics.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qx::draw2d {
namespace {

constexpr uint32_t kOpaqueBlue = 0xFF0000FFu;

uint32_t texel(int x, int y) { return 0xFF000000u | uint32_t(x * 60) << 16 | uint32_t(y * 100 + 20) << 8; }

void fill(Bitmap& bitmap, uint32_t sample)
{
    for (int y = 0; y < bitmap.height(); ++y) std::ranges::fill(bitmap.row(y), sample);
}

TEST(TransformedDraw, QuarterTurnAroundACentrePutsEachSampleInItsPlace)
{
    Bitmap image(4, 2);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 4; ++x) image.row(y)[size_t(x)] = texel(x, y);
    }
    Bitmap target(4, 4);
    fill(target, kOpaqueBlue);
    {
        Graphics graphics(target);
        // Around (2, 2): the rectangle (0, 1)-(4, 3) turns into (1, 0)-(3, 4).
        graphics.TranslateTransform(2, 2);
        graphics.RotateTransform(90);
        graphics.TranslateTransform(-2, -2);
        EXPECT_EQ(graphics.drawImage(image, {0, 1, 4, 2}), Status::Ok);
    }
    for (int y = 0; y < 4; ++y) {
        EXPECT_EQ(target.row(y)[0], kOpaqueBlue) << y;
        EXPECT_EQ(target.row(y)[1], texel(y, 1)) << y;
        EXPECT_EQ(target.row(y)[2], texel(y, 0)) << y;
        EXPECT_EQ(target.row(y)[3], kOpaqueBlue) << y;
    }
}

TEST(TransformedDraw, RotatedEdgesBlendByTheirCoverage)
{
    Bitmap image(1, 1);
    image.row(0)[0] = 0xFFFFFFFFu;
    Bitmap target(20, 20);
    {
        Graphics graphics(target);
        graphics.clear(Color{0});
        graphics.TranslateTransform(10, 10);
        graphics.RotateTransform(45);
        graphics.TranslateTransform(-10, -10);
        graphics.drawImage(image, {5, 5, 10, 10});
    }
    EXPECT_EQ(target.row(10)[10], 0xFFFFFFFFu);  // the centre
    EXPECT_EQ(target.row(10)[2], 0u);            // outside the turned square (it reaches x = 2.93)
    EXPECT_EQ(target.row(2)[2], 0u);
    int partial = 0;
    for (int x = 0; x < 20; ++x) {
        const uint32_t alpha = target.row(6)[size_t(x)] >> 24;
        partial += alpha > 0 && alpha < 255;
    }
    EXPECT_GE(partial, 2);  // the two slanted edges of the row
}

TEST(TransformedDraw, ScalesAndMovesUseTheRowResampler)
{
    Bitmap image(2, 2);
    image.row(0)[0] = image.row(1)[1] = 0xFFFF0000u;
    image.row(0)[1] = image.row(1)[0] = 0xFF00FF00u;
    Bitmap target(4, 4);
    fill(target, kOpaqueBlue);
    {
        Graphics graphics(target);
        graphics.ScaleTransform(1, 0.5);
        graphics.TranslateTransform(0, 4);  // prepended: moves before the scale
        EXPECT_EQ(graphics.drawImage(image, {0, -4, 4, 8}, {0, 0, 2, 2}), Status::Ok);
    }
    EXPECT_EQ(target.row(0)[0], 0xFFFF0000u);
    EXPECT_EQ(target.row(0)[3], 0xFF00FF00u);
    EXPECT_EQ(target.row(3)[0], 0xFF00FF00u);
    EXPECT_EQ(target.row(3)[3], 0xFFFF0000u);
}

TEST(TransformedDraw, KeyedSamplesLeaveTheTargetUnderARotation)
{
    Bitmap image(2, 1);
    image.row(0)[0] = 0xFFFF00FFu;  // magenta: keyed
    image.row(0)[1] = 0xFF00FF00u;
    Bitmap target(2, 2);
    fill(target, kOpaqueBlue);
    {
        Graphics graphics(target);
        graphics.TranslateTransform(1, 1);
        graphics.RotateTransform(180);
        graphics.TranslateTransform(-1, -1);
        ImageAttributes attributes;
        attributes.SetColorKey(Color{0xFFFF00FFu}, Color{0xFFFF00FFu});
        graphics.drawImage(image, {0, 0, 2, 2}, {0, 0, 2, 1}, &attributes);
    }
    // Turned half a turn: the green sample on the left, the keyed one on the right.
    EXPECT_EQ(target.row(0)[0], 0xFF00FF00u);
    EXPECT_EQ(target.row(0)[1], kOpaqueBlue);
}

TEST(TransformedDraw, ColourMatrixFadesOrRecolours)
{
    Bitmap image(1, 1);
    image.row(0)[0] = 0xFFFF0000u;
    const auto drawWith = [&](const ColorMatrix& matrix) {
        Bitmap target(2, 2);
        fill(target, kOpaqueBlue);
        Graphics graphics(target);
        ImageAttributes attributes;
        attributes.SetColorMatrix(matrix);
        graphics.drawImage(image, {0, 0, 2, 2}, {0, 0, 1, 1}, &attributes);
        return target.row(1)[1];
    };
    ColorMatrix half;
    half.m[3][3] = 0.5f;
    const uint32_t faded = drawWith(half);
    EXPECT_EQ(faded >> 24, 255u);
    EXPECT_NEAR(int((faded >> 16) & 0xFF), 128, 1);
    EXPECT_NEAR(int(faded & 0xFF), 127, 1);
    EXPECT_EQ(drawWith(ColorMatrix{}), 0xFFFF0000u);
    ColorMatrix swap;
    swap.m[0][0] = swap.m[2][2] = 0.0f;
    swap.m[0][2] = swap.m[2][0] = 1.0f;
    swap.m[4][1] = 0.5f;  // and half green added
    const uint32_t swapped = drawWith(swap);
    EXPECT_EQ(swapped & 0xFFFF00FFu, 0xFF0000FFu);
    EXPECT_NEAR(int((swapped >> 8) & 0xFF), 128, 1);
}

TEST(TransformedDraw, TransformsThatAreNotFiniteAreRefused)
{
    Bitmap target(2, 2);
    Graphics graphics(target);
    graphics.TranslateTransform(3, 4);
    EXPECT_EQ(graphics.ScaleTransform(INFINITY, 1), Status::InvalidParameter);
    EXPECT_EQ(graphics.RotateTransform(NAN), Status::InvalidParameter);
    EXPECT_EQ(graphics.transform().dx, 3.0);
    EXPECT_EQ(graphics.ResetTransform(), Status::Ok);
    EXPECT_TRUE(graphics.transform().axisAligned());
    EXPECT_EQ(graphics.transform().dx, 0.0);
    // A transform that flattens the picture draws nothing.
    Bitmap image(1, 1);
    image.row(0)[0] = 0xFFFFFFFFu;
    graphics.ScaleTransform(1, 0);
    graphics.RotateTransform(30);
    EXPECT_EQ(graphics.drawImage(image, {0, 0, 2, 2}), Status::Ok);
}

}  // namespace
}  // namespace qx::draw2d
