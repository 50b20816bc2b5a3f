#include "effects/Puzzle.h"
#include "platform/os/CRuntime.h"
#include "tests/host/EffectHarness.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace qx {
namespace {

using test::EffectHarness;
using test::gradientFrame;

int holeOf(const std::vector<uint8_t>& grid) { return int(std::ranges::find(grid, 0) - grid.begin()); }

TEST(PuzzleShuffle, EachStepSlidesOneNeighbourIntoTheHoleWithoutUndoing)
{
    os::srand(2024);
    const PuzzleFrames frames = BuildPuzzleFrames(4, 3, 12);
    ASSERT_EQ(frames.size(), 12u);
    EXPECT_EQ(frames[0], (std::vector<uint8_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    for (size_t i = 1; i < frames.size(); ++i) {
        const int before = holeOf(frames[i - 1]);
        const int after = holeOf(frames[i]);
        const int delta = std::abs(after - before);
        EXPECT_TRUE(delta == 4 || (delta == 1 && after / 4 == before / 4)) << "step " << i;
        int changed = 0;
        for (size_t p = 0; p < 12; ++p) changed += frames[i][p] != frames[i - 1][p];
        EXPECT_EQ(changed, 2) << "step " << i;
        if (i >= 2) {
            EXPECT_NE(frames[i], frames[i - 2]) << "step " << i << " undoes the one before";
        }
    }
}

TEST(PuzzleShuffle, FollowsTheRandomSequence)
{
    os::srand(7);
    const PuzzleFrames first = BuildPuzzleFrames(4, 3, 12);
    os::srand(7);
    EXPECT_EQ(BuildPuzzleFrames(4, 3, 12), first);
    os::srand(8);
    EXPECT_NE(BuildPuzzleFrames(4, 3, 40), BuildPuzzleFrames(4, 3, 40));
}

TEST(PuzzleShuffle, RefusesGridsItCannotHold)
{
    EXPECT_TRUE(BuildPuzzleFrames(0, 3, 12).empty());
    EXPECT_TRUE(BuildPuzzleFrames(4, 0, 12).empty());
    EXPECT_TRUE(BuildPuzzleFrames(4, 3, 0).empty());
    EXPECT_TRUE(BuildPuzzleFrames(-4, -3, 12).empty());
    EXPECT_TRUE(BuildPuzzleFrames(17, 16, 5).empty());  // 272 cells
    EXPECT_EQ(BuildPuzzleFrames(16, 16, 5).size(), 5u);
    // One row or one column: moves that would leave the grid are not made.
    for (const auto& grid : BuildPuzzleFrames(1, 5, 30)) EXPECT_EQ(grid.size(), 5u);
    for (const auto& grid : BuildPuzzleFrames(6, 1, 30)) EXPECT_EQ(grid.size(), 6u);
}

constexpr LONG W = 40;
constexpr LONG H = 30;  // 4 x 3 tiles of 10 x 10

std::vector<uint32_t> tileOf(const std::vector<uint32_t>& frame, int tile)
{
    std::vector<uint32_t> out;
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 10; ++x) out.push_back(frame[size_t((tile / 4 * 10 + y) * W + tile % 4 * 10 + x)]);
    }
    return out;
}

TEST(PuzzleFrame, EndsSolvedWithTheTopLeftTileAsBackground)
{
    EffectHarness harness(W, H);
    const auto input = gradientFrame(W, H);
    harness.setInput(input);
    ASSERT_EQ(harness.select(12, u"4;3;12;255;"), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    ASSERT_EQ(harness.execute(1.0f), S_OK);
    const auto solved = harness.output();
    EXPECT_EQ(tileOf(solved, 0), std::vector<uint32_t>(100, 0xFFFF0000u));  // background red
    for (int tile = 1; tile < 12; ++tile) EXPECT_EQ(tileOf(solved, tile), tileOf(input, tile)) << tile;

    ASSERT_EQ(harness.execute(0.0f), S_OK);
    const auto shuffled = harness.output();
    EXPECT_NE(shuffled, solved);
    int home = 0;
    for (int tile = 0; tile < 12; ++tile) home += tileOf(shuffled, tile) == tileOf(input, tile);
    EXPECT_LT(home, 12);
    ASSERT_EQ(harness.execute(0.0f), S_OK);
    EXPECT_EQ(harness.output(), shuffled);  // one Setup, one shuffle
}

TEST(PuzzleFrame, SetupsInDifferentSecondsShuffleDifferently)
{
    EffectHarness harness(W, H);
    harness.setInput(gradientFrame(W, H));
    ASSERT_EQ(harness.select(12, u"4;3;30;0;"), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    ASSERT_EQ(harness.execute(0.0f), S_OK);
    const auto first = harness.output();
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    ASSERT_EQ(harness.setup(), S_OK);
    ASSERT_EQ(harness.execute(0.0f), S_OK);
    EXPECT_NE(harness.output(), first);
}

TEST(PuzzleFrame, BadListsPassTheFrameThrough)
{
    const auto input = gradientFrame(W, H);
    for (const auto* params : {u"0;3;12;0;", u"4;0;12;0;", u"4;3;0;0;", u"-4;3;12;0;", u"17;16;5;0;", u""}) {
        EffectHarness harness(W, H);
        harness.setInput(input);
        ASSERT_EQ(harness.select(12, params), S_OK);
        ASSERT_EQ(harness.setup(), S_OK);
        ASSERT_EQ(harness.execute(0.5f), S_OK);
        EXPECT_EQ(harness.output(), input);
    }
}

TEST(PuzzleFrame, ParametersChangedAfterSetupAreNotTrusted)
{
    EffectHarness harness(W, H);
    const auto input = gradientFrame(W, H);
    harness.setInput(input);
    ASSERT_EQ(harness.select(12, u"4;3;12;0;"), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    Bstr wider(u"16;16;12;0;");
    harness.effect().put_Params(wider.get());
    ASSERT_EQ(harness.execute(0.5f), S_OK);
    EXPECT_EQ(harness.output(), input);
}

}  // namespace
}  // namespace qx
