#include "tests/host/EffectHarness.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using test::EffectHarness;
using test::gradientFrame;

constexpr uint32_t kMarker = 0x12345678;

TEST(FrameExecution, ExecuteBeforeSetupIsRefusedByTheBase)
{
    EffectHarness harness(16, 8);
    harness.select(0);
    EXPECT_EQ(harness.execute(0.5f), DXTERR_UNINITIALIZED);
}

TEST(FrameExecution, AFrameTravelsFromInputToOutput)
{
    EffectHarness harness(40, 30);
    const auto frame = gradientFrame(40, 30);
    harness.setInput(frame);
    harness.markOutput(kMarker);
    ASSERT_EQ(harness.select(0, u"0;0;1000;1000;"), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    for (const float progress : {0.0f, 0.5f, 1.0f}) {
        ASSERT_EQ(harness.execute(progress), S_OK);
        EXPECT_EQ(harness.output(), frame) << "progress " << progress;
    }
}

TEST(FrameExecution, SceneEffectWithoutClientPassesTheFrameThrough)
{
    EffectHarness harness(32, 24);
    const auto frame = gradientFrame(32, 24);
    harness.setInput(frame);
    harness.markOutput(kMarker);
    ASSERT_EQ(harness.select(5000), S_OK);
    EXPECT_EQ(harness.setup(), S_OK);
    EXPECT_EQ(harness.execute(0.3f), S_OK);
    EXPECT_EQ(harness.output(), frame);
}

TEST(FrameExecution, VideoEffectIdWithoutItsObjectLeavesTheOutputUnwritten)
{
    EffectHarness harness(8, 8);
    harness.setInput(gradientFrame(8, 8));
    harness.markOutput(kMarker);
    ASSERT_EQ(harness.select(0), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    ASSERT_EQ(harness.effect().put_Index(2000), S_OK);  // no new Setup: no object was made
    EXPECT_EQ(harness.execute(0.5f), S_OK);
    EXPECT_EQ(harness.output(), std::vector<uint32_t>(64, kMarker));
}

TEST(FrameExecution, RowWithoutRoutineLeavesTheOutputUnwritten)
{
    EffectHarness harness(8, 8);
    harness.setInput(gradientFrame(8, 8));
    harness.markOutput(kMarker);
    ASSERT_EQ(harness.select(15), S_OK);  // the colour key reads parameters it was not given
    ASSERT_EQ(harness.setup(), S_OK);
    harness.effect().put_Index(-3);  // an unknown id leaves no row selected
    EXPECT_EQ(harness.execute(0.5f), S_OK);
    EXPECT_EQ(harness.output(), std::vector<uint32_t>(64, kMarker));
}

TEST(FrameExecution, ExternalFilterThatNobodyProvidesFailsSetup)
{
    EffectHarness harness(8, 8);
    ASSERT_EQ(harness.select(10000), S_OK);
    EXPECT_EQ(harness.setup(), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(harness.execute(0.0f), DXTERR_UNINITIALIZED);
}

TEST(FrameExecution, SetupWithUnknownEffectFails)
{
    EffectHarness harness(8, 8);
    EXPECT_EQ(harness.select(77), E_FAIL);
    EXPECT_EQ(harness.setup(), E_FAIL);
}

TEST(FrameExecution, SetupAgainForAnotherSizeAndEffect)
{
    EffectHarness small(16, 16);
    small.setInput(gradientFrame(16, 16));
    ASSERT_EQ(small.select(5, u"250;250;750;750;"), S_OK);
    ASSERT_EQ(small.setup(), S_OK);
    ASSERT_EQ(small.execute(0.5f), S_OK);
    ASSERT_EQ(small.select(1, u"0;0;1000;1000;"), S_OK);
    ASSERT_EQ(small.setup(), S_OK);
    ASSERT_EQ(small.execute(0.5f), S_OK);
    EXPECT_EQ(small.output(), gradientFrame(16, 16));
}

}  // namespace
}  // namespace qx
