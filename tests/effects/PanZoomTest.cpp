#include "tests/host/EffectHarness.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qx {
namespace {

using test::EffectHarness;

constexpr LONG W = 64;
constexpr LONG H = 48;

// Red rises by 4 a column and green by 5 a row: bilinear resampling of such a ramp gives
// the ramp's value at the sampled point, so expected samples follow from geometry alone.
std::vector<uint32_t> rampFrame()
{
    std::vector<uint32_t> frame(size_t(W * H));
    for (LONG y = 0; y < H; ++y) {
        for (LONG x = 0; x < W; ++x)
            frame[size_t(y * W + x)] = 0xFF000000u | uint32_t(4 * x) << 16 | uint32_t(5 * y) << 8;
    }
    return frame;
}

int red(uint32_t s) { return int((s >> 16) & 0xFF); }
int green(uint32_t s) { return int((s >> 8) & 0xFF); }
int alpha(uint32_t s) { return int(s >> 24); }

// The ramp at the source point that output pixel (x, y) shows when the output maps the
// source rectangle (sx, sy, sw, sh) onto the whole frame; edge samples extend outward.
void expectShows(uint32_t sample, LONG x, LONG y, double sx, double sy, double sw, double sh)
{
    const double u = std::clamp(sx + (x + 0.5) * sw / W - 0.5, 0.0, double(W - 1));
    const double v = std::clamp(sy + (y + 0.5) * sh / H - 0.5, 0.0, double(H - 1));
    EXPECT_NEAR(red(sample), 4 * u, 2.0) << "at " << x << "," << y;
    EXPECT_NEAR(green(sample), 5 * v, 2.0) << "at " << x << "," << y;
    EXPECT_EQ(alpha(sample), 255) << "at " << x << "," << y;
}

class PanZoom : public ::testing::Test {
protected:
    EffectHarness harness{W, H};

    std::vector<uint32_t> run(LONG id, std::u16string_view params, float progress)
    {
        harness.setInput(rampFrame());
        EXPECT_EQ(harness.select(id, params), S_OK);
        EXPECT_EQ(harness.setup(), S_OK);
        EXPECT_EQ(harness.execute(progress), S_OK);
        return harness.output();
    }
    uint32_t at(const std::vector<uint32_t>& frame, LONG x, LONG y) { return frame[size_t(y * W + x)]; }
};

TEST_F(PanZoom, ZoomOutStartsOnTheRectangleAndEndsOnTheFrame)
{
    const auto start = run(0, u"100;100;900;900;", 0.0f);
    for (const auto& [x, y] : {std::pair{0, 0}, {31, 20}, {63, 47}, {10, 40}}) {
        expectShows(at(start, x, y), x, y, 0.1 * W, 0.1 * H, 0.8 * W, 0.8 * H);
    }
    EXPECT_EQ(run(0, u"100;100;900;900;", 1.0f), rampFrame());
}

TEST_F(PanZoom, ZoomInDoesTheReverse)
{
    EXPECT_EQ(run(1, u"100;100;900;900;", 0.0f), rampFrame());
    const auto end = run(1, u"100;100;900;900;", 1.0f);
    expectShows(at(end, 5, 7), 5, 7, 0.1 * W, 0.1 * H, 0.8 * W, 0.8 * H);
    const auto middle = run(1, u"100;100;900;900;", 0.5f);
    expectShows(at(middle, 40, 30), 40, 30, 0.05 * W, 0.05 * H, 0.9 * W, 0.9 * H);
}

TEST_F(PanZoom, HorizontalPansRunBetweenTheirEnds)
{
    // Scale 2: the picture is twice the frame, held at -H/2 vertically.
    const auto leftToRightStart = run(2, u"250;250;750;750;", 0.0f);
    expectShows(at(leftToRightStart, 10, 10), 10, 10, W / 2.0, H / 4.0, W / 2.0, H / 2.0);
    const auto leftToRightEnd = run(2, u"250;250;750;750;", 1.0f);
    expectShows(at(leftToRightEnd, 10, 10), 10, 10, 0.0, H / 4.0, W / 2.0, H / 2.0);
    const auto rightToLeftStart = run(3, u"250;250;750;750;", 0.0f);
    expectShows(at(rightToLeftStart, 50, 30), 50, 30, 0.0, H / 4.0, W / 2.0, H / 2.0);
}

TEST_F(PanZoom, VerticalPansRunBetweenTheirEnds)
{
    const auto topToBottomStart = run(4, u"250;250;750;750;", 0.0f);
    expectShows(at(topToBottomStart, 20, 5), 20, 5, W / 4.0, H / 2.0, W / 2.0, H / 2.0);
    const auto bottomToTopEnd = run(5, u"250;250;750;750;", 1.0f);
    expectShows(at(bottomToTopEnd, 20, 40), 20, 40, W / 4.0, H / 2.0, W / 2.0, H / 2.0);
}

TEST_F(PanZoom, PanPositionIsSetByTheRectangleSizeOnly)
{
    EXPECT_EQ(run(2, u"0;250;500;750;", 0.4f), run(2, u"500;250;1000;750;", 0.4f));
}

TEST_F(PanZoom, FreeMoveWithEqualRectanglesIsAStillCrop)
{
    const auto first = run(6, u"250;0;750;500;250;0;750;500;", 0.0f);
    EXPECT_EQ(run(6, u"250;0;750;500;250;0;750;500;", 0.7f), first);
    expectShows(at(first, 30, 30), 30, 30, W / 4.0, 0.0, W / 2.0, H / 2.0);
}

TEST_F(PanZoom, FreeMoveGoesLinearlyAndCrossedEdgesDoNotMirror)
{
    const auto middle = run(6, u"0;0;500;500;500;500;1000;1000;", 0.5f);
    expectShows(at(middle, 12, 12), 12, 12, W / 4.0, H / 4.0, W / 2.0, H / 2.0);
    const auto crossed = run(6, u"750;0;250;1000;750;0;250;1000;", 0.5f);
    EXPECT_LT(red(at(crossed, 5, 5)), red(at(crossed, 50, 5)));
    expectShows(at(crossed, 5, 5), 5, 5, W / 4.0, 0.0, W / 2.0, H);
}

TEST_F(PanZoom, UncoveredPixelsAreTransparentBlack)
{
    // A rectangle wider than the frame makes the picture narrower than the output.
    const auto narrow = run(3, u"-250;0;1250;1000;", 0.0f);
    EXPECT_EQ(at(narrow, W - 1, H / 2), 0u);
    EXPECT_EQ(alpha(at(narrow, 0, H / 2)), 255);
}

TEST_F(PanZoom, EmptyRectangleDrawsNothingAndDoesNotCrash)
{
    for (const LONG id : {2, 4}) {
        const auto frame = run(id, u"500;500;500;500;", 0.5f);
        EXPECT_EQ(frame, std::vector<uint32_t>(size_t(W * H), 0u)) << "id " << id;
    }
    EXPECT_EQ(run(0, u"", 0.0f), std::vector<uint32_t>(size_t(W * H), 0u));  // zero rectangle, zero source
}

}  // namespace
}  // namespace qx
