// Drawing pictures smaller: the bilinear run kernel against the formula, the smaller
// copies (means of four, keyed samples mixed as transparent, remade after a write), and
// a fine pattern shrunk and turned that comes out as its mean instead of aliasing.
#include "platform/draw2d/Graphics.h"
#include "platform/draw2d/Pyramid.h"
#include "platform/draw2d/SampleRun.h"

#include <gtest/gtest.h>

#include <random>

namespace qx::draw2d {
namespace {

uint32_t channelMix(uint32_t a, uint32_t b, uint32_t w, int shift)
{
    return ((((a >> shift) & 0xFF) * (256 - w) + ((b >> shift) & 0xFF) * w) >> 8) << shift;
}

// The bilinear sample as its definition gives it, one channel at a time.
uint32_t reference(const std::vector<uint32_t>& samples, int width, int height, int32_t u, int32_t v)
{
    const auto at = [&](int x, int y) {
        return samples[size_t(std::clamp(y, 0, height - 1) * width + std::clamp(x, 0, width - 1))];
    };
    const int x = u >> 16;
    const int y = v >> 16;
    const uint32_t fx = (uint32_t(u) >> 8) & 0xFF;
    const uint32_t fy = (uint32_t(v) >> 8) & 0xFF;
    uint32_t out = 0;
    for (const int shift : {0, 8, 16, 24}) {
        const uint32_t top = channelMix(at(x, y), at(x + 1, y), fx, shift);
        const uint32_t bottom = channelMix(at(x, y + 1), at(x + 1, y + 1), fx, shift);
        out |= channelMix(top, bottom, fy, shift);
    }
    return out;
}

TEST(Shrink, SampleRunsMatchTheFormulaInsideAndBeyondTheEdges)
{
    std::mt19937 random(7);
    const int width = 13;
    const int height = 9;
    std::vector<uint32_t> samples(size_t(width * height));
    for (uint32_t& s : samples) s = random();
    const SampleGrid grid{samples.data(), width, height, width};
    std::vector<uint32_t> out(37);
    for (int run = 0; run < 50; ++run) {
        const int32_t u = int32_t(random() % (20 << 16)) - (3 << 16);
        const int32_t v = int32_t(random() % (16 << 16)) - (3 << 16);
        const int32_t du = int32_t(random() % (1 << 17)) - (1 << 16);
        const int32_t dv = int32_t(random() % (1 << 17)) - (1 << 16);
        sampleRun(grid, u, v, du, dv, out.data(), out.size());
        for (size_t i = 0; i < out.size(); ++i) {
            ASSERT_EQ(out[i], reference(samples, width, height, u + du * int32_t(i), v + dv * int32_t(i)))
                << "run " << run << " sample " << i;
        }
    }
}

TEST(Shrink, SmallerCopiesAreMeansWithKeyedSamplesTransparent)
{
    Bitmap image(3, 2);
    image.row(0)[0] = 0xFF0000FFu;
    image.row(0)[1] = 0xFF0000FFu;
    image.row(1)[0] = 0xFFFF00FFu;  // keyed below
    image.row(1)[1] = 0x800000FFu;  // half-transparent blue: premultiplied 0x80000080
    image.row(0)[2] = image.row(1)[2] = 0xFFFF0000u;
    const SampleGrid* half = image.reduced().level(image, 1, {true, 0xFFFF00FFu, 0xFFFF00FFu});
    ASSERT_TRUE(half);
    EXPECT_EQ(half->width, 2);
    EXPECT_EQ(half->height, 1);
    // (255 + 255 + 0 + 128) / 4 alpha, (255 + 255 + 0 + 128) / 4 blue: premultiplied.
    EXPECT_EQ(half->samples[0], 0xA00000A0u);
    EXPECT_EQ(half->samples[1], 0xFFFF0000u);  // the odd column stands for itself
    // A write to the picture drops its copies; a new key makes new ones.
    image.row(0)[2] = 0xFF00FF00u;
    EXPECT_EQ(image.reduced().level(image, 1, {})->samples[1], 0xFF808000u);
}

TEST(Shrink, FinePatternShrunkAndTurnedComesOutAsItsMean)
{
    Bitmap stripes(64, 64);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) stripes.row(y)[size_t(x)] = x % 2 ? 0xFFFFFFFFu : 0xFF000000u;
    }
    Bitmap target(16, 16);
    {
        Graphics graphics(target);
        graphics.clear(Color{0xFF000000u});
        graphics.TranslateTransform(8, 8);
        graphics.RotateTransform(5);
        graphics.TranslateTransform(-8, -8);
        graphics.drawImage(stripes, {0, 0, 16, 16});
    }
    for (int y = 5; y < 11; ++y) {
        for (int x = 5; x < 11; ++x) EXPECT_NEAR(int(target.row(y)[size_t(x)] & 0xFF), 128, 3) << x << "," << y;
    }
}

}  // namespace
}  // namespace qx::draw2d
