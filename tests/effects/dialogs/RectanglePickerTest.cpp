// The rectangle of the pan dialogs, in pixels of a control 320 wide: sides to corners,
// drags in any direction, the frame's shape kept while dragging, and the thousandths a
// saved rectangle gets.
#include "effects/dialogs/RectanglePicker.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace qx::dialogs {
namespace {

using Sides = std::array<LONG, 4>;

TEST(RectanglePicker, ControlHeightFollowsTheAspectTruncated)
{
    // 320 / 1.3333334 is just under 240.
    EXPECT_EQ(RectanglePicker(320, 1.3333334f).height(), 239);
    EXPECT_EQ(RectanglePicker(320, 2.0f).height(), 160);
    // No aspect yet: the pickers' own 4:3 rather than a control with no height.
    EXPECT_EQ(RectanglePicker(320, 0.0f).height(), 239);
}

TEST(RectanglePicker, SidesRoundTripAsMultiplesOfTen)
{
    RectanglePicker picker(320, 1.3333334f);
    picker.setSides({100, 100, 900, 900});
    EXPECT_EQ(picker.x0(), 32);
    EXPECT_EQ(picker.y0(), 23);  // 23.9 truncated
    EXPECT_EQ(picker.sides(), (Sides{100, 100, 900, 900}));
    // Through the pixels: 255 is column 81 of 320, 253 thousandths, saved as 250.
    picker.setSides({255, 0, 1000, 1000});
    EXPECT_EQ(picker.sides(), (Sides{250, 0, 1000, 1000}));
}

TEST(RectanglePicker, OutOfRangeSidesAreCutToThePicture)
{
    RectanglePicker picker(320, 1.3333334f);
    picker.setSides({-300, -1, 5000, 1001});
    EXPECT_EQ(picker.sides(), (Sides{0, 0, 1000, 1000}));
}

TEST(RectanglePicker, DragDirectionDoesNotMatter)
{
    RectanglePicker forward(320, 1.3333334f), backward(320, 1.3333334f), diagonal(320, 1.3333334f);
    forward.press(37, 51);
    forward.move(201, 133);
    backward.press(201, 133);
    backward.move(37, 51);
    diagonal.press(37, 133);
    diagonal.move(201, 51);
    // 37/320 is 115.6 thousandths, rounded to 120; 51/239 is 213.4, to 210; and so on.
    EXPECT_EQ(forward.sides(), (Sides{120, 210, 630, 560}));
    EXPECT_EQ(backward.sides(), forward.sides());
    EXPECT_EQ(diagonal.sides(), forward.sides());
}

TEST(RectanglePicker, DragsStayInsideTheControlAndNeedAPress)
{
    RectanglePicker picker(320, 1.3333334f);
    EXPECT_FALSE(picker.move(10, 10));
    picker.press(100, 100);
    EXPECT_TRUE(picker.move(-40, 900));
    EXPECT_EQ(picker.x1(), 0);
    EXPECT_EQ(picker.y1(), picker.height());
    picker.release();
    EXPECT_FALSE(picker.move(50, 50));
    EXPECT_EQ(picker.sides(), (Sides{0, 420, 310, 1000}));
}

TEST(RectanglePicker, KeptProportionsFollowTheFrameShapeUpAndDown)
{
    RectanglePicker picker(320, 2.0f);  // 160 high
    picker.setKeepProportions(true);
    picker.press(100, 80);
    picker.move(260, 150);  // 160 wide: 80 high, going down
    EXPECT_EQ(picker.y1(), 160);
    EXPECT_EQ(picker.x1(), 260);
    picker.move(20, 10);  // 80 wide to the left, going up: 40 high
    EXPECT_EQ(picker.y1(), 40);
    EXPECT_EQ(picker.x1(), 20);
    // 219 wide would need 109 rows below; cut at the control's edge, the width shrinks to
    // what the 80 rows left give.
    picker.move(319, 150);
    EXPECT_EQ(picker.y1(), 160);
    EXPECT_EQ(picker.x1(), 260);
}

TEST(RectanglePicker, TurningProportionsOnFitsTheCurrentRectangle)
{
    RectanglePicker picker(320, 1.3333334f);
    picker.setSides({0, 500, 500, 0});  // drawn upwards: y1 above y0
    picker.setKeepProportions(true);
    const int width = std::abs(picker.x1() - picker.x0()), height = std::abs(picker.y1() - picker.y0());
    EXPECT_LT(picker.y1(), picker.y0());
    EXPECT_NEAR(double(width) / double(height), 1.3333334, 0.02);
}

TEST(RectanglePicker, ThousandthsOfAnEmptyControlAreZero) { EXPECT_EQ(toThousandths(10, 0), 0); }

}  // namespace
}  // namespace qx::dialogs
