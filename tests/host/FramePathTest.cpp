// Setup chooses the path of a frame once, for the effect selected then. An Index put after
// Setup selects an effect that has not been set up: it runs as it does before its first
// Setup, until the next Setup, and the effect that was set up resumes when it is selected
// again.
#include "effects/Fades.h"
#include "effects/PanZoom.h"
#include "effects/Puzzle.h"
#include "effects/VideoAgging.h"
#include "effects/VideoRipple.h"
#include "tests/host/EffectHarness.h"
#include "wrap3d/SceneEffects.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using test::EffectHarness;
using test::gradientFrame;

constexpr uint32_t kMarker = 0x12345678;
constexpr LONG W = 32;
constexpr LONG H = 24;

class FramePath : public ::testing::Test {
protected:
    EffectHarness harness{W, H};
    const std::vector<uint32_t> input = gradientFrame(W, H);
    const std::vector<uint32_t> unwritten = std::vector<uint32_t>(size_t(W * H), kMarker);

    void SetUp() override { harness.setInput(input); }

    std::vector<uint32_t> frameAt(float progress)
    {
        harness.markOutput(kMarker);
        EXPECT_EQ(harness.execute(progress), S_OK);
        return harness.output();
    }
};

TEST_F(FramePath, ARoutineSelectedAfterSetupRunsWithTheListOfThatMoment)
{
    ASSERT_EQ(harness.select(effect_id::kZoomOut, u"0;0;1000;1000;"), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    EXPECT_EQ(frameAt(0.0f), input);

    ASSERT_EQ(harness.effect().put_Index(effect_id::kFadeIn), S_OK);
    // The fade reads its colour from slot 0, which holds 0: black covers the frame.
    EXPECT_EQ(frameAt(0.0f), std::vector<uint32_t>(size_t(W * H), 0xFF000000u));

    ASSERT_EQ(harness.effect().put_Index(effect_id::kZoomOut), S_OK);
    EXPECT_EQ(frameAt(0.0f), input);
}

TEST_F(FramePath, TheEffectThatWasSetUpResumesWithItsState)
{
    ASSERT_EQ(harness.select(effect_id::kWaterDrops, u"3;"), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    frameAt(0.0f);
    frameAt(0.0f);

    // Another video effect has no object before its Setup: nothing is written.
    ASSERT_EQ(harness.effect().put_Index(effect_id::kOldFilm2), S_OK);
    EXPECT_EQ(frameAt(0.0f), unwritten);

    // The water made by Setup is still moving.
    ASSERT_EQ(harness.effect().put_Index(effect_id::kWaterDrops), S_OK);
    const auto water = frameAt(0.0f);
    EXPECT_NE(water, unwritten);
    EXPECT_NE(water, input);
}

TEST_F(FramePath, ObjectsThatSetupMakesAreMissingBeforeIt)
{
    ASSERT_EQ(harness.select(effect_id::kFadeIn, u"4;3;12;0;"), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);

    // No shuffle was built: the puzzle passes the frame through.
    ASSERT_EQ(harness.effect().put_Index(effect_id::kPuzzle), S_OK);
    EXPECT_EQ(frameAt(0.5f), input);

    // No client was made: the scene effect passes the frame through.
    ASSERT_EQ(harness.effect().put_Index(effect_id::kCube), S_OK);
    EXPECT_EQ(frameAt(0.5f), input);
}

TEST_F(FramePath, ObjectsOfTheSizeOfSetupRefuseAPartOfTheFrame)
{
    for (const LONG id : {effect_id::kWaterDrops, effect_id::kOldFilm2}) {
        ASSERT_EQ(harness.select(id, u"3;"), S_OK);
        ASSERT_EQ(harness.setup(), S_OK);
        harness.markOutput(kMarker);
        const transform::Bounds half{0, 0, W / 2, H / 2};
        EXPECT_EQ(harness.effect().Execute(nullptr, &half, nullptr), E_INVALIDARG) << "id " << id;
        EXPECT_EQ(harness.output(), unwritten) << "id " << id;
        EXPECT_EQ(harness.execute(0.5f), S_OK) << "id " << id;  // the whole frame still renders
    }
}

TEST_F(FramePath, RoutinesRenderAPartOfTheFrame)
{
    ASSERT_EQ(harness.select(effect_id::kFadeIn, u"255;"), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    ASSERT_EQ(harness.effect().put_Progress(0.0f), S_OK);
    harness.markOutput(kMarker);
    const transform::Bounds half{0, 0, W / 2, H};
    ASSERT_EQ(harness.effect().Execute(nullptr, &half, nullptr), S_OK);
    const auto output = harness.output();
    EXPECT_EQ(output[0], 0xFFFF0000u);          // red covers the left half
    EXPECT_EQ(output[size_t(W - 1)], kMarker);  // the right half is not touched
}

}  // namespace
}  // namespace qx
