#include "platform/imaging/ColorOps.h"
#include "tests/platform/imaging/Pictures.h"

#include <gtest/gtest.h>

#include <set>

namespace qx::imaging {
namespace {

using testing::bgra;

/// Every combination of a few levels per channel, with varied alpha.
BitmapHandle colourGrid()
{
    const int levels[] = {0, 1, 37, 128, 200, 254, 255};
    std::vector<uint32_t> samples;
    for (int r : levels)
        for (int g : levels)
            for (int b : levels) samples.push_back(bgra(r, g, b, (r + g + b) & 0xFF));
    return testing::makeBitmap(7, 49, samples);
}

BitmapHandle onePixel(uint32_t sample) { return testing::makeFlat(1, 1, sample); }

uint32_t afterHue(uint32_t sample, int32_t degrees)
{
    auto bitmap = onePixel(sample);
    EXPECT_TRUE(changeHue(bitmap, degrees));
    return bitmap.pixels()[0];
}

TEST(ChangeHue, WholeTurnsLeaveEveryColourAsItIs)
{
    for (int32_t degrees : {0, 360, -360, 720}) {
        auto bitmap = colourGrid();
        const auto before = testing::samplesOf(bitmap);
        ASSERT_TRUE(changeHue(bitmap, degrees));
        EXPECT_EQ(testing::samplesOf(bitmap), before) << degrees << " degrees";
    }
}

TEST(ChangeHue, ThirdsOfATurnCycleThePrimaries)
{
    EXPECT_EQ(afterHue(bgra(255, 0, 0), 120), bgra(0, 255, 0));
    EXPECT_EQ(afterHue(bgra(0, 255, 0), 120), bgra(0, 0, 255));
    EXPECT_EQ(afterHue(bgra(0, 0, 255), 120), bgra(255, 0, 0));
    EXPECT_EQ(afterHue(bgra(255, 0, 0), 240), bgra(0, 0, 255));
    EXPECT_EQ(afterHue(bgra(255, 0, 0), -120), bgra(0, 0, 255));
    EXPECT_EQ(afterHue(bgra(255, 0, 0), 60), bgra(255, 255, 0));
    // Value 200, chroma 150: a third of a turn moves the channels round, alpha stays.
    EXPECT_EQ(afterHue(bgra(200, 100, 50, 7), 120), bgra(50, 200, 100, 7));
}

TEST(ChangeHue, GreysHaveNoHueToTurn)
{
    EXPECT_EQ(afterHue(bgra(90, 90, 90), 77), bgra(90, 90, 90));
    EXPECT_EQ(afterHue(bgra(255, 255, 255, 0), 200), bgra(255, 255, 255, 0));
}

uint32_t afterSaturation(uint32_t sample, int32_t change)
{
    auto bitmap = onePixel(sample);
    EXPECT_TRUE(changeSaturation(bitmap, change));
    return bitmap.pixels()[0];
}

TEST(ChangeSaturation, MinusAThousandGivesTheRec601Grey)
{
    // 0.299 * 255 = 76.2, 0.587 * 255 = 149.7, 0.114 * 255 = 29.1,
    // 0.299 * 200 + 0.587 * 100 + 0.114 * 50 = 124.2.
    EXPECT_EQ(afterSaturation(bgra(255, 0, 0), -1000), bgra(76, 76, 76));
    EXPECT_EQ(afterSaturation(bgra(0, 255, 0), -1000), bgra(150, 150, 150));
    EXPECT_EQ(afterSaturation(bgra(0, 0, 255), -1000), bgra(29, 29, 29));
    EXPECT_EQ(afterSaturation(bgra(200, 100, 50, 3), -1000), bgra(124, 124, 124, 3));
    EXPECT_EQ(afterSaturation(bgra(200, 100, 50), -5000), bgra(124, 124, 124));
}

TEST(ChangeSaturation, ZeroKeepsAndPlusAThousandDoublesTheDistanceFromGrey)
{
    auto bitmap = colourGrid();
    const auto before = testing::samplesOf(bitmap);
    ASSERT_TRUE(changeSaturation(bitmap, 0));
    EXPECT_EQ(testing::samplesOf(bitmap), before);
    // Grey 124: red 124 + 2 * 76 clamps at 255, green 124 - 2 * 24 = 76, blue clamps at 0.
    EXPECT_EQ(afterSaturation(bgra(200, 100, 50), 1000), bgra(255, 76, 0));
    // Half way to grey: 124 + 76 / 2 = 162, 124 - 12 = 112, 124 - 37 = 87.
    EXPECT_EQ(afterSaturation(bgra(200, 100, 50), -500), bgra(162, 112, 87));
}

uint32_t afterTint(uint32_t sample, std::array<int32_t, 6> arguments)
{
    auto bitmap = onePixel(sample);
    const auto [brightness, keep, filter, red, green, blue] = arguments;
    EXPECT_TRUE(tint(bitmap, brightness, keep, filter, red, green, blue));
    return bitmap.pixels()[0];
}

TEST(Tint, MixesThePictureWithItsGreySeenThroughTheTint)
{
    // The colour effects' call: half the picture plus half its grey in the tint colour.
    EXPECT_EQ(afterTint(bgra(255, 255, 255), {0, 500, 500, 1000, 0, 0}), bgra(255, 128, 128));
    // Grey 124: red 100 + 62, green 50, blue 25.
    EXPECT_EQ(afterTint(bgra(200, 100, 50, 9), {0, 500, 500, 1000, 0, 0}), bgra(162, 50, 25, 9));
    EXPECT_EQ(afterTint(bgra(200, 100, 50), {0, 500, 500, 0, 1000, 500}), bgra(100, 112, 56));
    EXPECT_EQ(afterTint(bgra(200, 100, 50), {0, 1000, 0, 0, 1000, 500}), bgra(200, 100, 50));
    EXPECT_EQ(afterTint(bgra(200, 100, 50), {0, 0, 1000, 1000, 1000, 1000}), bgra(124, 124, 124));
    EXPECT_EQ(afterTint(bgra(200, 100, 50), {200, 1000, 0, 0, 0, 0}), bgra(251, 151, 101));
}

TEST(Tint, ArgumentsOutOfRangeAreHeldAtTheirEnds)
{
    EXPECT_EQ(afterTint(bgra(200, 100, 50), {0, 5000, -3, 9999, 9999, 9999}), bgra(200, 100, 50));
    EXPECT_EQ(afterTint(bgra(200, 100, 50), {-4000, 1000, 0, 0, 0, 0}), bgra(0, 0, 0));
}

std::set<uint32_t> levelsOfARamp(int32_t levels)
{
    std::vector<uint32_t> ramp;
    for (int value = 0; value < 256; ++value) ramp.push_back(bgra(value, value, value));
    auto bitmap = testing::makeBitmap(256, 1, ramp);
    EXPECT_TRUE(posterize(bitmap, levels));
    std::set<uint32_t> seen;
    for (uint32_t sample : bitmap.pixels()) seen.insert(sample & 0xFF);
    return seen;
}

TEST(Posterize, ARampKeepsExactlyTheRequestedLevels)
{
    EXPECT_EQ(levelsOfARamp(2), (std::set<uint32_t>{0, 255}));
    EXPECT_EQ(levelsOfARamp(4), (std::set<uint32_t>{0, 85, 170, 255}));
    EXPECT_EQ(levelsOfARamp(20).size(), 20u);
    EXPECT_EQ(levelsOfARamp(64).size(), 64u);
    EXPECT_EQ(levelsOfARamp(256).size(), 256u);
}

TEST(Posterize, EveryLevelCountGivesARampItsLevelsInOrderEachNearItsValue)
{
    std::vector<uint32_t> ramp;
    for (int value = 0; value < 256; ++value) ramp.push_back(bgra(value, 255 - value, value, value));
    for (int32_t levels = 2; levels <= 256; ++levels) {
        auto bitmap = testing::makeBitmap(256, 1, ramp);
        ASSERT_TRUE(posterize(bitmap, levels));
        // Levels are 255 / (levels - 1) apart; the nearest is at most half that away,
        // plus the rounding of the level itself to a whole value.
        const double reach = 255.0 / (levels - 1) / 2 + 1;
        std::set<uint32_t> seen;
        for (int value = 0; value < 256; ++value) {
            const uint32_t sample = bitmap.pixels()[size_t(value)];
            ASSERT_EQ(sample >> 24, uint32_t(value));
            ASSERT_EQ((sample >> 16) & 0xFF, sample & 0xFF);
            ASSERT_LE(std::abs(int((sample >> 8) & 0xFF) - (255 - value)), reach) << "levels " << levels;
            ASSERT_LE(std::abs(int(sample & 0xFF) - value), reach) << "levels " << levels;
            if (value > 0) {
                ASSERT_GE(sample & 0xFF, bitmap.pixels()[size_t(value) - 1] & 0xFF) << "levels " << levels;
            }
            seen.insert(sample & 0xFF);
        }
        EXPECT_EQ(seen.size(), size_t(levels));
    }
}

TEST(Posterize, TakesTheNearestLevelAndKeepsAlpha)
{
    auto bitmap = testing::makeBitmap(3, 1, {bgra(42, 43, 128, 17), bgra(127, 128, 212, 0), bgra(213, 0, 255, 99)});
    ASSERT_TRUE(posterize(bitmap, 4));
    EXPECT_EQ(testing::samplesOf(bitmap),
              (std::vector<uint32_t>{bgra(0, 85, 170, 17), bgra(85, 170, 170, 0), bgra(255, 0, 255, 99)}));
}

TEST(Posterize, RefusesLevelsItCannotMake)
{
    for (int32_t levels : {1, 0, -5, 257, INT32_MIN}) {
        auto bitmap = colourGrid();
        const auto before = testing::samplesOf(bitmap);
        EXPECT_FALSE(posterize(bitmap, levels));
        EXPECT_EQ(testing::samplesOf(bitmap), before);
    }
}

}  // namespace
}  // namespace qx::imaging
