#include "platform/imaging/Filters.h"
#include "tests/platform/imaging/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace qx::imaging {
namespace {

using testing::at;
using testing::bgra;

const uint32_t kWhite = bgra(255, 255, 255);

/// The positions of the samples that are not black.
std::vector<std::pair<int32_t, int32_t>> litPositions(const BitmapHandle& bitmap)
{
    std::vector<std::pair<int32_t, int32_t>> lit;
    for (int32_t y = 0; y < bitmap.height(); ++y)
        for (int32_t x = 0; x < bitmap.width(); ++x)
            if ((at(bitmap, x, y) & 0xFFFFFF) != 0) lit.emplace_back(x, y);
    return lit;
}

TEST(Blur, KeepsAFlatPictureFlat)
{
    for (int32_t size : {1, 2, 5, 20, 1000000000}) {
        auto bitmap = testing::makeFlat(17, 9, bgra(201, 7, 99, 33));
        ASSERT_TRUE(blur(bitmap, size));
        for (uint32_t sample : bitmap.pixels()) ASSERT_EQ(sample, bgra(201, 7, 99, 33)) << "size " << size;
    }
}

TEST(Blur, SpreadsAnImpulseEvenlyOverItsSquare)
{
    auto bitmap = testing::makeImpulse(11, 11, 5, 5, kWhite);
    ASSERT_TRUE(blur(bitmap, 1));
    // 255 / 3 across, then / 3 down: 28.3, over the 3 by 3 square and nowhere else.
    const auto lit = litPositions(bitmap);
    ASSERT_EQ(lit.size(), 9u);
    for (auto [x, y] : lit) {
        EXPECT_LE(std::abs(x - 5), 1);
        EXPECT_LE(std::abs(y - 5), 1);
        EXPECT_EQ(at(bitmap, x, y), bgra(28, 28, 28));
    }
}

TEST(Blur, SpreadsSymmetricallyAtLargerSizes)
{
    auto bitmap = testing::makeImpulse(15, 15, 7, 7, bgra(255, 120, 9));
    ASSERT_TRUE(blur(bitmap, 3));
    for (int32_t y = 0; y < 15; ++y) {
        for (int32_t x = 0; x < 15; ++x) {
            EXPECT_EQ(at(bitmap, x, y), at(bitmap, 14 - x, y));
            EXPECT_EQ(at(bitmap, x, y), at(bitmap, y, x));
        }
    }
    EXPECT_EQ(litPositions(bitmap).size(), 49u);
}

TEST(Blur, RepeatsTheEdgeBeyondTheBorderAndKeepsAlpha)
{
    auto bitmap = testing::makeImpulse(4, 4, 0, 0, kWhite);
    bitmap.pixels()[5] = bgra(0, 0, 0, 77);
    ASSERT_TRUE(blur(bitmap, 1));
    // The corner counts twice in each direction: 255 * 2 / 3 = 170, then 170 * 2 / 3 = 113.
    EXPECT_EQ(at(bitmap, 0, 0), bgra(113, 113, 113));
    EXPECT_EQ(at(bitmap, 1, 0), bgra(57, 57, 57));  // 85 * 2 / 3 = 56.7
    EXPECT_EQ(at(bitmap, 1, 1), bgra(28, 28, 28, 77));
    EXPECT_EQ(at(bitmap, 2, 2), bgra(0, 0, 0));
}

TEST(Blur, SizeZeroChangesNothingAndNegativeSizesAreRefused)
{
    auto bitmap = testing::makeImpulse(5, 5, 2, 2, kWhite);
    const auto before = testing::samplesOf(bitmap);
    EXPECT_TRUE(blur(bitmap, 0));
    EXPECT_FALSE(blur(bitmap, -1));
    EXPECT_FALSE(blur(bitmap, INT32_MIN));
    EXPECT_EQ(testing::samplesOf(bitmap), before);
}

TEST(Blur, WorksOnASingleSampleAndASingleRow)
{
    auto single = testing::makeFlat(1, 1, bgra(9, 8, 7));
    ASSERT_TRUE(blur(single, 4));
    EXPECT_EQ(single.pixels()[0], bgra(9, 8, 7));
    auto row = testing::makeImpulse(5, 1, 2, 0, kWhite);
    ASSERT_TRUE(blur(row, 1));
    EXPECT_EQ(testing::samplesOf(row), (std::vector<uint32_t>{bgra(0, 0, 0), bgra(85, 85, 85), bgra(85, 85, 85),
                                                              bgra(85, 85, 85), bgra(0, 0, 0)}));
}

/// The box blur by its definition: means along the rows, rounded half up, then means of
/// those down the columns; samples beyond the border are the edge's.
std::vector<uint32_t> referenceBlur(const std::vector<uint32_t>& in, int32_t width, int32_t height, int32_t radius)
{
    auto channel = [](uint32_t sample, int c) { return int32_t((sample >> (8 * c)) & 0xFF); };
    auto mean = [&](int32_t sum) { return uint32_t((sum + radius) / (2 * radius + 1)); };
    auto index = [&](int32_t x, int32_t y) {
        return size_t(std::clamp(y, 0, height - 1)) * size_t(width) + size_t(std::clamp(x, 0, width - 1));
    };
    std::vector<uint32_t> rows(in.size(), 0);
    std::vector<uint32_t> out(in.size(), 0);
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            out[index(x, y)] = in[index(x, y)] & 0xFF000000u;
            for (int c = 0; c < 3; ++c) {
                int32_t sum = 0;
                for (int32_t k = -radius; k <= radius; ++k) sum += channel(in[index(x + k, y)], c);
                rows[index(x, y)] |= mean(sum) << (8 * c);
            }
        }
    }
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            for (int c = 0; c < 3; ++c) {
                int32_t sum = 0;
                for (int32_t k = -radius; k <= radius; ++k) sum += channel(rows[index(x, y + k)], c);
                out[index(x, y)] |= mean(sum) << (8 * c);
            }
        }
    }
    return out;
}

TEST(Blur, MatchesItsDefinitionOnDetailedPicturesOfAwkwardSizes)
{
    // Widths that leave remainders after groups of 4, 8 and 16 samples, radii on both
    // sides of 127 (the largest window whose sums fit 16 bits).
    const std::vector<std::pair<int32_t, int32_t>> sizes = {{1, 9}, {9, 1}, {13, 7}, {37, 20}, {64, 3}};
    for (auto [width, height] : sizes) {
        std::vector<uint32_t> samples(size_t(width) * size_t(height));
        for (size_t i = 0; i < samples.size(); ++i)
            samples[i] = uint32_t(i * 2246822519u) ^ uint32_t(i * i * 3266489917u);
        for (int32_t radius : {1, 2, 3, 6, 20, 127, 128, 131}) {
            auto bitmap = testing::makeBitmap(width, height, samples);
            ASSERT_TRUE(blur(bitmap, radius));
            const int32_t clamped = std::min(radius, std::max(width, height));
            ASSERT_EQ(testing::samplesOf(bitmap), referenceBlur(samples, width, height, clamped))
                << width << "x" << height << " radius " << radius;
        }
    }
}

using Positions = std::vector<std::pair<int32_t, int32_t>>;

Positions smearOfImpulse(int32_t length, int32_t angle, bool oneDirection)
{
    auto bitmap = testing::makeImpulse(11, 11, 5, 5, kWhite);
    EXPECT_TRUE(motionBlur(bitmap, length, angle, oneDirection));
    for (auto [x, y] : litPositions(bitmap))
        EXPECT_EQ(at(bitmap, x, y), bgra(85, 85, 85));  // a third of the impulse each
    return litPositions(bitmap);
}

TEST(MotionBlur, SmearsAlongTheAngleOnly)
{
    // Each sample averages the run that starts at it, so the impulse reaches the samples
    // behind it, against the angle.
    EXPECT_EQ(smearOfImpulse(3, 0, true), (Positions{{3, 5}, {4, 5}, {5, 5}}));
    EXPECT_EQ(smearOfImpulse(3, 18000, true), (Positions{{5, 5}, {6, 5}, {7, 5}}));
    // 90 degrees points to row 0: the run goes up, the smear down.
    EXPECT_EQ(smearOfImpulse(3, 9000, true), (Positions{{5, 5}, {5, 6}, {5, 7}}));
}

TEST(MotionBlur, MeasuresTheRunAlongTheAngleItself)
{
    // At 45 degrees the run of 3 reaches 1.41 samples each way, which rounds to (1, -1):
    // the impulse lands on itself once and on the sample down-left twice.
    auto bitmap = testing::makeImpulse(11, 11, 5, 5, kWhite);
    ASSERT_TRUE(motionBlur(bitmap, 3, 4500, true));
    EXPECT_EQ(litPositions(bitmap), (Positions{{5, 5}, {4, 6}}));
    EXPECT_EQ(at(bitmap, 5, 5), bgra(85, 85, 85));
    EXPECT_EQ(at(bitmap, 4, 6), bgra(170, 170, 170));
}

TEST(MotionBlur, RunsAlongTheColumnHoldTheEdgeRowAndKeepAlpha)
{
    // Rows of 10 * y in every channel, alpha 7 + y. A run of 3 towards row 0 averages a
    // row with the two above it, row 0 repeated above the picture: 10 * (y - 1) from row 2
    // on. Towards the last row it is the two below, the last row repeated: 10 * (y + 1).
    const int32_t rows = 9;
    std::vector<uint32_t> samples;
    for (int32_t y = 0; y < rows; ++y) samples.insert(samples.end(), 4, bgra(10 * y, 10 * y, 10 * y, 7 + y));
    for (const int32_t angle : {9000, 27000}) {
        auto bitmap = testing::makeBitmap(4, rows, samples);
        ASSERT_TRUE(motionBlur(bitmap, 3, angle, true));
        for (int32_t y = 0; y < rows; ++y) {
            int32_t expected = angle == 9000 ? 10 * (y - 1) : 10 * (y + 1);
            if (angle == 9000 && y == 0) expected = 0;
            if (angle == 9000 && y == 1) expected = 3;  // (10 + 0 + 0) / 3
            if (angle == 27000 && y == rows - 1) expected = 10 * y;
            if (angle == 27000 && y == rows - 2) expected = 77;  // (70 + 80 + 80) / 3
            for (int32_t x = 0; x < 4; ++x)
                ASSERT_EQ(at(bitmap, x, y), bgra(expected, expected, expected, 7 + y)) << angle << " row " << y;
        }
    }
}

TEST(MotionBlur, ARunLongerThanThePictureAveragesTheEdgeRowIn)
{
    // Rows of 0, 90, 180 (top-down), 9 samples wide so that a run of 9 is not cut to the
    // picture's larger side. Towards row 0, the last row averages itself, the row above
    // and row 0 seven times.
    std::vector<uint32_t> samples;
    for (const int value : {0, 90, 180}) samples.insert(samples.end(), 9, bgra(value, value, value));
    auto bitmap = testing::makeBitmap(9, 3, samples);
    ASSERT_TRUE(motionBlur(bitmap, 9, 9000, true));
    EXPECT_EQ(at(bitmap, 4, 2), bgra(30, 30, 30));
    EXPECT_EQ(at(bitmap, 4, 1), bgra(10, 10, 10));
    EXPECT_EQ(at(bitmap, 4, 0), bgra(0, 0, 0));
}

TEST(MotionBlur, TwoDirectionsCentreTheRun)
{
    EXPECT_EQ(smearOfImpulse(3, 0, false), (Positions{{4, 5}, {5, 5}, {6, 5}}));
    EXPECT_EQ(smearOfImpulse(3, 9000, false), (Positions{{5, 4}, {5, 5}, {5, 6}}));
}

TEST(MotionBlur, KeepsFlatPicturesFlatAndRefusesEmptyRuns)
{
    auto bitmap = testing::makeFlat(9, 6, bgra(3, 200, 150, 40));
    ASSERT_TRUE(motionBlur(bitmap, 48, 9000, true));
    ASSERT_TRUE(motionBlur(bitmap, INT32_MAX, 12345, false));
    ASSERT_TRUE(motionBlur(bitmap, 1, 0, true));
    EXPECT_FALSE(motionBlur(bitmap, 0, 0, true));
    EXPECT_FALSE(motionBlur(bitmap, -7, 0, true));
    for (uint32_t sample : bitmap.pixels()) ASSERT_EQ(sample, bgra(3, 200, 150, 40));
}

TEST(Noise, StaysWithinItsLevelAndOnTheChosenChannels)
{
    seedNoise(1);
    auto bitmap = testing::makeFlat(64, 64, bgra(128, 128, 128, 5));
    ASSERT_TRUE(addNoise(bitmap, 100, 0));  // 100 tenths of a percent: up to 25
    int changed = 0;
    long total = 0;
    for (uint32_t sample : bitmap.pixels()) {
        ASSERT_EQ(sample >> 24, 5u);
        for (int shift : {0, 8, 16}) {
            const int offset = int((sample >> shift) & 0xFF) - 128;
            ASSERT_LE(std::abs(offset), 25);
            changed += offset != 0;
            total += offset;
        }
    }
    EXPECT_GT(changed, 64 * 64 * 3 * 9 / 10);
    EXPECT_LT(std::abs(double(total) / (64 * 64 * 3)), 1.0);  // the mean stays put

    auto redOnly = testing::makeFlat(32, 32, bgra(128, 128, 128));
    ASSERT_TRUE(addNoise(redOnly, 1000, 1));
    int redChanged = 0;
    for (uint32_t sample : redOnly.pixels()) {
        ASSERT_EQ(sample & 0xFFFF, 0x8080u);
        redChanged += ((sample >> 16) & 0xFF) != 128;
    }
    EXPECT_GT(redChanged, 900);
}

TEST(Noise, IsReproducibleFromItsSeedAndMovesOnBetweenCalls)
{
    auto noisy = [](uint32_t seed, int calls) {
        seedNoise(seed);
        auto bitmap = testing::makeFlat(16, 16, bgra(100, 100, 100));
        for (int i = 0; i < calls; ++i) {
            bitmap = testing::makeFlat(16, 16, bgra(100, 100, 100));
            EXPECT_TRUE(addNoise(bitmap, 500, 0));
        }
        return testing::samplesOf(bitmap);
    };
    EXPECT_EQ(noisy(7, 1), noisy(7, 1));
    EXPECT_NE(noisy(7, 1), noisy(7, 2));
    EXPECT_NE(noisy(7, 1), noisy(8, 1));
}

TEST(Noise, EachSampleTakesTheNextThreeDrawsOfTheSequence)
{
    // Sample i of a call takes draws 3i, 3i + 1 and 3i + 2 after where the call began, so
    // a sample alone, started that many draws later, gets the same noise.
    seedNoise(500);
    auto wide = testing::makeFlat(37, 3, bgra(128, 128, 128));
    ASSERT_TRUE(addNoise(wide, 400, 0));
    for (int32_t i : {0, 1, 7, 8, 15, 16, 36, 100, 110}) {
        seedNoise(500 + 3 * uint32_t(i));
        auto alone = testing::makeFlat(1, 1, bgra(128, 128, 128));
        ASSERT_TRUE(addNoise(alone, 400, 0));
        EXPECT_EQ(alone.pixels()[0], wide.pixels()[size_t(i)]) << "sample " << i;
    }
}

TEST(Noise, LevelZeroChangesNothingAndBadArgumentsAreRefused)
{
    auto bitmap = testing::makeFlat(8, 8, bgra(10, 250, 128));
    const auto before = testing::samplesOf(bitmap);
    EXPECT_TRUE(addNoise(bitmap, 0, 0));
    EXPECT_TRUE(addNoise(bitmap, 3, 0));  // 3 * 255 / 1000 rounds down to no noise at all
    EXPECT_FALSE(addNoise(bitmap, -1, 0));
    EXPECT_FALSE(addNoise(bitmap, 50, 4));
    EXPECT_FALSE(addNoise(bitmap, 50, -1));
    EXPECT_EQ(testing::samplesOf(bitmap), before);
    EXPECT_TRUE(addNoise(bitmap, INT32_MAX, 0));  // taken as 1000: clamped, no overflow
}

}  // namespace
}  // namespace qx::imaging
