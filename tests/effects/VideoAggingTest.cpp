#include "effects/VideoAgging.h"
#include "effects/FastRand.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace qx {
namespace {

/// Opens the effect's state to the tests.
class AggingProbe : public CVideoAgging {
public:
    using CVideoAgging::areaScale;
    using CVideoAgging::CVideoAgging;
    using CVideoAgging::Scratch;
    using CVideoAgging::scratches;
};

struct Frames {
    std::vector<uint32_t> input;
    std::vector<uint32_t> output;

    Frames(LONG width, LONG height, uint32_t sample)
        : input(size_t(width) * size_t(height), sample), output(input.size(), 0xDEADBEEFu)
    {}
};

/// What the colour ageing makes of a sample without its grain bits.
uint32_t agedWithoutGrain(uint32_t sample) { return sample - ((sample & 0xFCFCFCu) >> 2) + 0x181818u; }

TEST(VideoAggingStart, AreaScaleFollowsTheFrameAreaAndIsAtLeastOne)
{
    auto scaleOf = [](LONG width, LONG height) {
        AggingProbe effect(width, height);
        EXPECT_EQ(effect.Start(), 0);
        return effect.areaScale;
    };
    EXPECT_EQ(scaleOf(320, 240), 2);  // 76800 / 64 / 480 = 2.5
    EXPECT_EQ(scaleOf(160, 120), 1);  // 0.6, raised to 1
    EXPECT_EQ(scaleOf(1920, 1080), 67);
    EXPECT_EQ(scaleOf(2, 2), 1);
}

TEST(VideoAggingStart, RefusesFramesWithoutRoomAndPassesThemThrough)
{
    for (auto [width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {0, 0}, {-4, 5}, {5, -4}}) {
        CVideoAgging effect(width, height);
        EXPECT_EQ(effect.Start(), -1) << width << "x" << height;
        const size_t samples = size_t(std::max(width, 1)) * size_t(std::max(height, 1));
        std::vector<uint32_t> input(samples, 0xFF336699u);
        std::vector<uint32_t> output(samples, 0u);
        EXPECT_EQ(effect.ProcessFrame(input.data(), output.data(), 0.5f), 0);
        if (width > 0 && height > 0) {
            EXPECT_EQ(output, input);
        }
    }
}

TEST(VideoAggingFrame, GrainFollowsTheSharedSequence)
{
    Frames frames(640, 480, 0xFF8040C0u);
    CVideoAgging effect(640, 480);
    ASSERT_EQ(effect.Start(), 0);
    uint32_t seed = fastrandSeed();
    ASSERT_EQ(effect.ProcessFrame(frames.input.data(), frames.output.data(), 0.0f), 0);
    for (size_t i = 0; i < 32; ++i) {
        seed = seed * 1103515245u + 12345u;
        const uint32_t grain = (seed >> 8) & 0x101010u;
        EXPECT_EQ(frames.output[i], agedWithoutGrain(0xFF8040C0u) + grain) << "sample " << i;
    }
}

TEST(VideoAggingFrame, AgeingKeepsAlphaAndOnlyAddsGrainBits)
{
    std::vector<uint32_t> input(128 * 96);
    for (size_t i = 0; i < input.size(); ++i) input[i] = uint32_t(i * 2654435761u);
    std::vector<uint32_t> output(input.size());
    CVideoAgging effect(128, 96);
    ASSERT_EQ(effect.Start(), 0);
    ASSERT_EQ(effect.ProcessFrame(input.data(), output.data(), 0.0f), 0);
    size_t aged = 0;
    for (size_t i = 0; i < input.size(); ++i) {
        const uint32_t grain = output[i] - agedWithoutGrain(input[i]);
        aged += (grain & ~0x101010u) == 0;
    }
    // Scratches, pits and dust touch a few samples; the rest is ageing plus grain.
    EXPECT_GT(aged, input.size() * 95 / 100);
}

/// Counts, over `frameCount` frames of grey, the samples written as dust (0x101010,
/// alpha 0) and as pits (0xC0C0C0, alpha 0).
std::pair<size_t, size_t> dustAndPits(LONG width, LONG height, int frameCount)
{
    Frames frames(width, height, 0xFF808080u);
    CVideoAgging effect(width, height);
    EXPECT_EQ(effect.Start(), 0);
    size_t dust = 0;
    size_t pits = 0;
    for (int frame = 0; frame < frameCount; ++frame) {
        effect.ProcessFrame(frames.input.data(), frames.output.data(), 0.0f);
        dust += size_t(std::count(frames.output.begin(), frames.output.end(), 0x101010u));
        pits += size_t(std::count(frames.output.begin(), frames.output.end(), 0xC0C0C0u));
    }
    return {dust, pits};
}

TEST(VideoAggingFrame, DustFallsFromAreaScaleTwoOnly)
{
    const auto [dustLarge, pitsLarge] = dustAndPits(320, 240, 400);
    EXPECT_GT(dustLarge, 0u);
    EXPECT_GT(pitsLarge, 0u);
    const auto [dustSmall, pitsSmall] = dustAndPits(160, 120, 400);
    EXPECT_EQ(dustSmall, 0u);
    EXPECT_GT(pitsSmall, 0u);
}

TEST(VideoAggingScratches, AScratchLeavingTheFrameEndsTheStep)
{
    constexpr LONG kWidth = 64;
    constexpr LONG kHeight = 48;
    Frames frames(kWidth, kHeight, 0xFF000000u);
    AggingProbe effect(kWidth, kHeight);
    ASSERT_EQ(effect.Start(), 0);
    effect.scratches[0] = {3, kWidth * 256 - 10, 100, 0};  // leaves at the right
    effect.scratches[1] = {5, 10 * 256, 0, 0};
    effect.ProcessFrame(frames.input.data(), frames.output.data(), 0.0f);
    EXPECT_EQ(effect.scratches[0].life, 0);
    EXPECT_EQ(effect.scratches[1].life, 5);  // waited for the next frame
    for (size_t i = 2; i < effect.scratches.size(); ++i)
        EXPECT_EQ(effect.scratches[i].life, 0);  // no start was drawn either

    effect.ProcessFrame(frames.input.data(), frames.output.data(), 0.0f);
    EXPECT_EQ(effect.scratches[1].life, 4);
}

TEST(VideoAggingScratches, ALiveScratchLightensItsColumnWithSaturation)
{
    constexpr LONG kWidth = 64;
    constexpr LONG kHeight = 48;
    Frames frames(kWidth, kHeight, 0xFFFFFFFFu);
    AggingProbe effect(kWidth, kHeight);
    ASSERT_EQ(effect.Start(), 0);
    effect.scratches[0] = {5, 20 * 256 + 128, 0, 0};
    effect.ProcessFrame(frames.input.data(), frames.output.data(), 0.0f);
    // White ages to 0xD8 or 0xE8 per channel; the scratch adds 0x20, held at 0xFF. The
    // add masks the alpha byte out, and a carry out of red leaves 1 there.
    size_t lightened = 0;
    for (LONG y = 0; y < kHeight; ++y) {
        const uint32_t sample = frames.output[size_t(y * kWidth + 20)];
        lightened += (sample & 0xFF) >= 0xF8 && ((sample >> 8) & 0xFF) >= 0xF8 && ((sample >> 16) & 0xFF) >= 0xF8 &&
                     (sample >> 24) <= 1;
        EXPECT_LE(frames.output[size_t(y * kWidth + 21)] & 0xFF, 0xE8u);
    }
    EXPECT_GE(lightened, size_t(kHeight - 16));  // a pit may cover a few rows
    EXPECT_EQ(effect.scratches[0].life, 4);
}

TEST(VideoAggingScratches, AScratchOnTheRightEdgeStaysInTheFrame)
{
    // x == width * 256 is still in the frame: its column is one past the last sample.
    for (LONG rows : {2, 3, 48}) {
        Frames frames(4, rows, 0xFF000000u);
        AggingProbe effect(4, rows);
        ASSERT_EQ(effect.Start(), 0);
        effect.scratches[0] = {9, 4 * 256, 0, 0};
        effect.ProcessFrame(frames.input.data(), frames.output.data(), 0.0f);
        EXPECT_EQ(effect.scratches[0].life, 8);
    }
}

TEST(VideoAggingFrame, SmallFramesRunManyFramesSafely)
{
    for (auto [width, height] : {std::pair{2, 2}, {2, 9}, {9, 2}, {3, 3}, {321, 241}}) {
        Frames frames(width, height, 0xFF7F7F7Fu);
        CVideoAgging effect(width, height);
        ASSERT_EQ(effect.Start(), 0);
        for (int frame = 0; frame < 300; ++frame)
            ASSERT_EQ(effect.ProcessFrame(frames.input.data(), frames.output.data(), 1.0f), 0);
    }
}

}  // namespace
}  // namespace qx
