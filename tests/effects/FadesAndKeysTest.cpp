#include "tests/host/EffectHarness.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using test::EffectHarness;
using test::gradientFrame;

constexpr LONG W = 24;
constexpr LONG H = 16;

class FrameEffect : public ::testing::Test {
protected:
    EffectHarness harness{W, H};

    std::vector<uint32_t> run(LONG id, std::u16string_view params, float progress,
                              const std::vector<uint32_t>& input = gradientFrame(W, H))
    {
        harness.setInput(input);
        EXPECT_EQ(harness.select(id, params), S_OK);
        EXPECT_EQ(harness.setup(), S_OK);
        EXPECT_EQ(harness.execute(progress), S_OK);
        return harness.output();
    }
};

std::vector<uint32_t> uniform(uint32_t sample) { return std::vector<uint32_t>(size_t(W * H), sample); }

TEST_F(FrameEffect, FadeInComesFromTheColourAndFadeOutGoesToIt)
{
    EXPECT_EQ(run(7, u"0;", 0.0f), uniform(0xFF000000u));
    EXPECT_EQ(run(7, u"0;", 1.0f), gradientFrame(W, H));
    EXPECT_EQ(run(8, u"0;", 0.0f), gradientFrame(W, H));
    EXPECT_EQ(run(8, u"0;", 1.0f), uniform(0xFF000000u));
    EXPECT_EQ(run(7, u"255;", 0.0f), uniform(0xFFFF0000u));       // COLORREF 255 is red
    EXPECT_EQ(run(8, u"16711680;", 1.0f), uniform(0xFF0000FFu));  // and 0xFF0000 blue
}

TEST_F(FrameEffect, FadeHalfWayMixesTheColourIn)
{
    const auto half = run(7, u"16777215;", 0.5f, uniform(0xFF000000u));  // white over black
    // alpha = trunc(0.5 * 255) = 127
    EXPECT_NEAR(int(half[0] & 0xFF), 127, 1);
    EXPECT_EQ(half[0] >> 24, 255u);
}

TEST_F(FrameEffect, ColourKeyWithToleranceZeroKeysExactlyTheColour)
{
    auto input = uniform(0xFF102030u);
    input[5] = 0xFF112030u;                                  // one step of red away
    const auto keyed = run(15, u"3153936;0;", 0.5f, input);  // COLORREF of 0x102030: 0x302010
    EXPECT_EQ(keyed[0], 0u);
    EXPECT_EQ(keyed[5], 0xFF112030u);
    const auto wider = run(15, u"3153936;1;", 0.5f, input);
    EXPECT_EQ(wider[5], 0u);
}

TEST_F(FrameEffect, ColourKeyOffWithEitherParameterAtMinusOne)
{
    const auto input = uniform(0xFF102030u);
    EXPECT_EQ(run(15, u"-1;0;", 0.5f, input), input);
    EXPECT_EQ(run(15, u"3153936;-1;", 0.5f, input), input);
    EXPECT_EQ(run(15, u"0;1000000000;", 0.5f, input), uniform(0u));  // a huge tolerance keys everything
}

TEST_F(FrameEffect, SpectrumKeepsTheColoursAtBothEnds)
{
    const auto input = gradientFrame(W, H);
    EXPECT_EQ(run(10, u"", 0.0f, input), input);
    EXPECT_EQ(run(10, u"", 1.0f, input), input);
    EXPECT_NE(run(10, u"", 0.5f, input), input);
}

bool isGrey(uint32_t s) { return ((s >> 16) & 0xFF) == ((s >> 8) & 0xFF) && ((s >> 8) & 0xFF) == (s & 0xFF); }

TEST_F(FrameEffect, SaturationGoesBetweenGreyAndThePicture)
{
    const auto input = gradientFrame(W, H);
    const auto upStart = run(13, u"", 0.0f, input);
    EXPECT_TRUE(std::ranges::all_of(upStart, isGrey));
    EXPECT_EQ(run(13, u"", 1.0f, input), input);
    EXPECT_EQ(run(14, u"", 0.0f, input), input);
    const auto downEnd = run(14, u"", 1.0f, input);
    EXPECT_TRUE(std::ranges::all_of(downEnd, isGrey));
    EXPECT_EQ(downEnd, upStart);
}

TEST_F(FrameEffect, ColorizeTintsTheWholePicture)
{
    const auto input = uniform(0xFF808080u);
    const auto red = run(11, u"", 0.0f, input);  // the tint starts at full red
    EXPECT_GT((red[0] >> 16) & 0xFF, red[0] & 0xFF);
    const auto blue = run(11, u"", 4.0f / 6.0f, input);  // hue 240
    EXPECT_GT(blue[0] & 0xFF, (blue[0] >> 16) & 0xFF);
}

TEST_F(FrameEffect, OldFilmWithFullDesaturationIsGrey)
{
    // No shake, curves, scratch or flash can change that the picture ends grey.
    const auto film = run(9, u"20;5;10;30;30;50;20;100;2;", 0.5f);
    EXPECT_TRUE(std::ranges::all_of(film, isGrey));
}

TEST_F(FrameEffect, OldFilmWithBadParametersDoesNotCrash)
{
    for (const auto* params : {u"-1;-1;-5;-1;-1;-1;-1;-1;-1;", u"100;2000000000;50;100;100;1000;64;100;20;",
                               u"100;-2147483648;1;100;100;0;0;-2147483648;-5;", u""}) {
        run(9, params, 0.5f);
        run(9, params, 0.6f);
    }
}

}  // namespace
}  // namespace qx
