#include "effects/VideoRipple.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace qx {
namespace {

/// Opens the water to the tests.
class RippleProbe : public CVideoRipple {
public:
    using CVideoRipple::CVideoRipple;
    using CVideoRipple::Drop;
    using CVideoRipple::dropHeight;
    using CVideoRipple::map1;
    using CVideoRipple::map2;
    using CVideoRipple::mapHeight;
    using CVideoRipple::mapWidth;
    using CVideoRipple::squareTable;
};

/// A frame whose samples tell where they come from: x in the low 16 bits, y above.
std::vector<uint32_t> positionFrame(LONG width, LONG height)
{
    std::vector<uint32_t> frame(size_t(width) * size_t(height));
    for (LONG y = 0; y < height; ++y)
        for (LONG x = 0; x < width; ++x) frame[size_t(y * width + x)] = uint32_t(y) << 16 | uint32_t(x);
    return frame;
}

class Water {
public:
    Water(LONG width, LONG height, LONG drops) : effect(width, height), input(positionFrame(width, height))
    {
        const LONG params[] = {drops};
        effect.SetParams(params);
        started = effect.Start();
    }

    std::vector<uint32_t> frame()
    {
        std::vector<uint32_t> output(input.size(), 0xFFFFFFFFu);
        EXPECT_EQ(effect.ProcessFrame(input.data(), output.data(), 0.3f), 0);
        return output;
    }

    CVideoRipple effect;
    std::vector<uint32_t> input;
    LONG started;
};

TEST(VideoRippleStill, WithoutDropsTheFrameComesBackAsItIs)
{
    for (auto [width, height] : {std::pair{320, 240}, {64, 48}, {63, 47}, {8, 8}, {9, 11}}) {
        Water water(width, height, 0);
        ASSERT_EQ(water.started, 0);
        for (int frame = 0; frame < 3; ++frame) EXPECT_EQ(water.frame(), water.input) << width << "x" << height;
    }
}

TEST(VideoRippleState, TheWaterMovesOnFromFrameToFrameAndAFreshOneIsFlat)
{
    Water water(320, 240, 1);
    const auto first = water.frame();
    const auto second = water.frame();
    EXPECT_NE(first, water.input);
    EXPECT_NE(second, first);

    Water fresh(320, 240, 0);
    EXPECT_EQ(fresh.frame(), fresh.input);
}

TEST(VideoRippleState, EverySampleComesFromNearbyInTheFrame)
{
    // Vectors are signed bytes, so a sample moves at most 128 + 1 along each axis.
    for (auto [width, height] : {std::pair{320, 240}, {321, 241}, {33, 9}}) {
        Water water(width, height, 10);
        for (int frame = 0; frame < 40; ++frame) {
            const auto output = water.frame();
            for (LONG y = 0; y < height; ++y) {
                for (LONG x = 0; x < width; ++x) {
                    const uint32_t from = output[size_t(y * width + x)];
                    const LONG fromX = LONG(from & 0xFFFF);
                    const LONG fromY = LONG(from >> 16);
                    ASSERT_LT(fromX, width);
                    ASSERT_LT(fromY, height);
                    ASSERT_LE(std::abs(fromX - x), 129);
                    ASSERT_LE(std::abs(fromY - y), 129);
                }
            }
        }
    }
}

TEST(VideoRippleDrop, TheCornerDownRightOfTheSecondMapKeepsItsValue)
{
    RippleProbe effect(64, 48);
    ASSERT_EQ(effect.Start(), 0);
    const LONG w = effect.mapWidth;
    std::fill_n(effect.map2, w * effect.mapHeight, 7);
    effect.Drop(-1000);
    const int32_t* centre = std::find(effect.map1, effect.map1 + w * effect.mapHeight, -1000);
    ASSERT_NE(centre, effect.map1 + w * effect.mapHeight);
    const int32_t* other = effect.map2 + (centre - effect.map1);
    for (const int32_t* p : {centre, other}) {
        EXPECT_EQ(p[0], -1000);
        EXPECT_EQ(p[-w], -500);
        EXPECT_EQ(p[w], -500);
        EXPECT_EQ(p[-1], -500);
        EXPECT_EQ(p[1], -500);
        EXPECT_EQ(p[-w - 1], -250);
        EXPECT_EQ(p[-w + 1], -250);
        EXPECT_EQ(p[w - 1], -250);
        EXPECT_EQ(p[-2 * w], p == centre ? 0 : 7);  // outside the drop
    }
    EXPECT_EQ(centre[w + 1], -250);
    EXPECT_EQ(other[w + 1], 7);
    // Two cells of margin: the centre is never on the border rows or columns.
    const LONG index = LONG(centre - effect.map1);
    EXPECT_GE(index % w, 2);
    EXPECT_LE(index % w, w - 3);
    EXPECT_GE(index / w, 2);
    EXPECT_LE(index / w, effect.mapHeight - 3);
}

TEST(VideoRippleDrop, HalvesAndQuartersRoundTowardZero)
{
    RippleProbe effect(16, 16);
    ASSERT_EQ(effect.Start(), 0);
    effect.Drop(-7);
    const LONG cells = effect.mapWidth * effect.mapHeight;
    EXPECT_EQ(std::count(effect.map1, effect.map1 + cells, -3), 4);
    EXPECT_EQ(std::count(effect.map1, effect.map1 + cells, -1), 4);
}

TEST(VideoRippleDrop, HeightsScaleWithTheFrameArea)
{
    auto heightOf = [](LONG width, LONG height, uint32_t draw) { return RippleProbe(width, height).dropHeight(draw); };
    // The top four bits of the draw pick -2 to -17, shifted up 16 bits.
    EXPECT_EQ(heightOf(320, 240, 0x0FFFFFFFu), -2 * 65536);
    EXPECT_EQ(heightOf(320, 240, 0xF0000000u), -17 * 65536);
    EXPECT_EQ(heightOf(640, 480, 0x0u), -4 * 2 * 65536);
    EXPECT_EQ(heightOf(160, 120, 0x30000000u), -5 * 65536 / 4);
    EXPECT_EQ(heightOf(100, 100, 0x0u), -17066);  // -131072 * 10000 / 76800 = -17066.67
}

TEST(VideoRippleStart, SquaresAreReadAsSignedBytes)
{
    RippleProbe effect(8, 8);
    ASSERT_EQ(effect.Start(), 0);
    EXPECT_EQ(effect.squareTable[0], 0);
    EXPECT_EQ(effect.squareTable[1], 1);
    EXPECT_EQ(effect.squareTable[127], 16129);
    EXPECT_EQ(effect.squareTable[128], -16384);
    EXPECT_EQ(effect.squareTable[255], -1);
    EXPECT_EQ(effect.squareTable[200], -3136);
}

TEST(VideoRippleStart, TinyFramesAreRefusedAndPassThrough)
{
    for (auto [width, height] : {std::pair{7, 64}, {64, 7}, {1, 1}, {0, 0}, {-8, 8}}) {
        CVideoRipple effect(width, height);
        const LONG params[] = {5};
        effect.SetParams(params);
        EXPECT_EQ(effect.Start(), -1) << width << "x" << height;
        const size_t samples = size_t(std::max(width, 1)) * size_t(std::max(height, 1));
        std::vector<uint32_t> input(samples, 0xFF204060u);
        std::vector<uint32_t> output(samples, 0u);
        EXPECT_EQ(effect.ProcessFrame(input.data(), output.data(), 0.0f), 0);
        if (width > 0 && height > 0) {
            EXPECT_EQ(output, input);
        }
    }
}

TEST(VideoRippleStart, AnyNumberOfDropsEndsQuickly)
{
    for (LONG drops : {INT32_MAX, -5}) {
        Water water(8, 8, drops);
        ASSERT_EQ(water.started, 0);
        for (int frame = 0; frame < 5; ++frame) water.frame();
    }
}

}  // namespace
}  // namespace qx
