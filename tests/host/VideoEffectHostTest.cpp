#include "tests/host/EffectHarness.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using test::EffectHarness;
using test::gradientFrame;

TEST(VideoEffectHost, RippleWithoutDropsGivesTheInputBack)
{
    EffectHarness harness(32, 24);
    const auto input = gradientFrame(32, 24);
    harness.setInput(input);
    ASSERT_EQ(harness.select(2001, u"0;"), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    for (int frame = 0; frame < 3; ++frame) {
        ASSERT_EQ(harness.execute(0.5f), S_OK);
        EXPECT_EQ(harness.output(), input);
    }
}

TEST(VideoEffectHost, RippleCarriesItsWaterAndANewSetupStartsFlat)
{
    EffectHarness harness(64, 48);
    const auto input = gradientFrame(64, 48);
    harness.setInput(input);
    ASSERT_EQ(harness.select(2001, u"3;"), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    std::vector<std::vector<uint32_t>> frames;
    for (int frame = 0; frame < 4; ++frame) {
        ASSERT_EQ(harness.execute(0.0f), S_OK);  // the ripple does not read the progress
        frames.push_back(harness.output());
    }
    EXPECT_NE(frames[2], frames[3]);
    EXPECT_NE(frames[3], input);
    // Parameters put after Setup reach the effect only at the next Setup.
    Bstr none(u"0;");
    harness.effect().put_Params(none.get());
    ASSERT_EQ(harness.execute(0.0f), S_OK);
    EXPECT_NE(harness.output(), input);
    ASSERT_EQ(harness.setup(), S_OK);
    ASSERT_EQ(harness.execute(0.0f), S_OK);
    EXPECT_EQ(harness.output(), input);  // flat water, no drops
}

TEST(VideoEffectHost, RippleOnOddAndTinyFramesDoesNotCrash)
{
    for (const auto& [w, h] : {std::pair<LONG, LONG>{33, 25}, {1, 1}, {2, 2}, {3, 7}, {5, 4}}) {
        EffectHarness harness(w, h);
        harness.setInput(gradientFrame(w, h));
        ASSERT_EQ(harness.select(2001, u"5;"), S_OK);
        ASSERT_EQ(harness.setup(), S_OK);
        EXPECT_EQ(harness.execute(0.5f), S_OK);
        EXPECT_EQ(harness.execute(0.6f), S_OK);
    }
}

TEST(VideoEffectHost, OldFilm2AgesTheFrame)
{
    EffectHarness harness(320, 240);
    const auto input = gradientFrame(320, 240);
    harness.setInput(input);
    ASSERT_EQ(harness.select(2000), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    ASSERT_EQ(harness.execute(0.1f), S_OK);
    const auto aged = harness.output();
    EXPECT_NE(aged, input);
    // A quarter of the contrast goes: the darkest channel is lifted above zero.
    EXPECT_GE(aged[0] & 0xFF, 0x18u);
}

}  // namespace
}  // namespace qx
