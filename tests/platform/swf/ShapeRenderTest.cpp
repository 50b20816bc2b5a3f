// Frames of written movies against the pixels their geometry gives: solid shapes where
// their matrices put them, gradient ends, morphs half-way, lines, winding rules, colour
// transforms, masks and the stage's scale modes. Drawn without smoothing, so that every
// pixel is inside a shape or not.
#include "tests/platform/swf/MovieFixture.h"

#include <cmath>

namespace qx::swf::test {
namespace {

constexpr Rgba kWhite{255, 255, 255, 255};
constexpr Rgba kRed{255, 0, 0, 255};
constexpr Rgba kBlue{0, 0, 255, 255};

TEST(ShapeRender, SolidSquareLandsWhereItsMatrixPutsIt)
{
    SwfWriter writer = stageOf(100, 60);
    writer.defineShape(1, rectangleShape(0, 0, 10, 10, kRed));
    // Scaled by 2 then moved to (30, 20): the square covers 30..50 by 20..40.
    writer.place(1, 1, {2, 0, 0, 2, 30 * 20, 20 * 20});
    writer.showFrame();
    const auto movie = loadMovie(writer.finish());
    const auto frame = draw(*movie, 0, 100, 60);
    EXPECT_TRUE(near(colorAt(*frame, 30, 20), kRed));
    EXPECT_TRUE(near(colorAt(*frame, 49, 39), kRed));
    EXPECT_TRUE(near(colorAt(*frame, 29, 20), kWhite));  // no background tag: white
    EXPECT_TRUE(near(colorAt(*frame, 50, 39), kWhite));
    EXPECT_TRUE(near(colorAt(*frame, 49, 40), kWhite));
}

TEST(ShapeRender, FramesCountShowFramesNotTheHeader)
{
    SwfWriter writer = stageOf(10, 10);
    for (int i = 0; i < 7; ++i) writer.showFrame();
    EXPECT_EQ(loadMovie(writer.finish(swftool::Compression::None, 0))->frameCount(), 7u);
    EXPECT_EQ(loadMovie(writer.finish(swftool::Compression::None, 500))->frameCount(), 7u);
}

TEST(ShapeRender, LinearGradientRunsFromItsFirstColourToItsLast)
{
    SwfWriter writer = stageOf(200, 20);
    ShapeBuilder bar;
    FillStyle fill;
    fill.kind = FillKind::Linear;
    // The gradient square (32768 twips) over the 200 pixels of the stage, centred.
    fill.matrix = {4000.0 / 32768.0, 0, 0, 1, 2000, 0};
    fill.gradient.stops = {{0, kRed}, {255, kBlue}};
    bar.fills = {fill};
    bar.rectangle(0, 0, 4000, 400, 1);
    writer.defineShape(1, bar);
    writer.place(1, 1);
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 200, 20);
    EXPECT_TRUE(near(colorAt(*frame, 0, 10), kRed, 3));
    EXPECT_TRUE(near(colorAt(*frame, 199, 10), kBlue, 3));
    EXPECT_TRUE(near(colorAt(*frame, 100, 10), {128, 0, 127, 255}, 3));
}

TEST(ShapeRender, RadialGradientsPadReflectAndFocus)
{
    SwfWriter writer = stageOf(200, 100);
    ShapeBuilder shape;
    FillStyle pad;
    pad.kind = FillKind::Radial;
    pad.matrix = {2000.0 / 32768.0, 0, 0, 2000.0 / 32768.0, 1000, 1000};  // radius 50 px at (50, 50)
    pad.gradient.stops = {{0, kWhite}, {255, kBlue}};
    FillStyle reflect = pad;
    reflect.matrix.tx = 3000;
    reflect.matrix.a = reflect.matrix.d = 1000.0 / 32768.0;  // radius 25 px at (150, 50)
    reflect.gradient.spread = Spread::Reflect;
    shape.fills = {pad, reflect};
    shape.rectangle(0, 0, 2000, 2000, 1).rectangle(2000, 0, 4000, 2000, 2);
    writer.defineShape(1, shape);
    writer.place(1, 1);
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 200, 100);
    EXPECT_TRUE(near(colorAt(*frame, 50, 50), kWhite, 8));
    EXPECT_TRUE(near(colorAt(*frame, 0, 0), kBlue, 1));  // beyond the radius: padded
    // Reflected: one radius out is the last colour, two radii out the first again.
    EXPECT_TRUE(near(colorAt(*frame, 150, 50), kWhite, 12));
    EXPECT_TRUE(near(colorAt(*frame, 175, 50), kBlue, 12));
    EXPECT_TRUE(near(colorAt(*frame, 199, 50), kWhite, 25));
}

TEST(ShapeRender, MorphHalfWayIsBetweenItsEnds)
{
    SwfWriter writer = stageOf(100, 40);
    ShapeBuilder start = rectangleShape(0, 0, 20, 20, {0, 0, 0, 255});
    ShapeBuilder end = rectangleShape(40, 20, 80, 40, {200, 100, 50, 255});
    writer.defineMorph(1, start, end);
    writer.place(1, 1, {}, std::nullopt, uint16_t(0));
    writer.showFrame();
    writer.place(1, std::nullopt, {}, std::nullopt, uint16_t(32768), std::nullopt, true);
    writer.showFrame();
    writer.place(1, std::nullopt, {}, std::nullopt, uint16_t(65535), std::nullopt, true);
    writer.showFrame();
    const auto movie = loadMovie(writer.finish());
    // Half-way: corners at (20, 10) and (50, 30), colour half-way.
    const auto half = draw(*movie, 1, 100, 40);
    EXPECT_TRUE(near(colorAt(*half, 20, 10), {100, 50, 25, 255}, 1));
    EXPECT_TRUE(near(colorAt(*half, 49, 29), {100, 50, 25, 255}, 1));
    EXPECT_TRUE(near(colorAt(*half, 19, 10), kWhite));
    EXPECT_TRUE(near(colorAt(*half, 50, 29), kWhite));
    const auto last = draw(*movie, 2, 100, 40);
    EXPECT_TRUE(near(colorAt(*last, 79, 39), {200, 100, 50, 255}));
    EXPECT_TRUE(near(colorAt(*last, 10, 10), kWhite));
    // Seeking back replays the display list from the start.
    EXPECT_TRUE(near(colorAt(*draw(*movie, 0, 100, 40), 10, 10), {0, 0, 0, 255}));
}

TEST(ShapeRender, FillsFollowTheSideOfTheEdgeTheyAreOn)
{
    // One square drawn with the fill on its left (fill 0) and one with it on its right:
    // both are filled, and a hole cut by a contour of the other direction stays empty.
    SwfWriter writer = stageOf(100, 40);
    ShapeBuilder shape;
    shape.fills = {solidFill(kRed)};
    shape.moveTo(0, 0).fill0(1).fill1(0).lineTo(0, 600).lineTo(600, 600).lineTo(600, 0).lineTo(0, 0);
    shape.moveTo(1000, 0).fill0(0).fill1(1).lineTo(1800, 0).lineTo(1800, 800).lineTo(1000, 800).lineTo(1000, 0);
    shape.moveTo(1200, 200).fill0(1).fill1(0).lineTo(1600, 200).lineTo(1600, 600).lineTo(1200, 600).lineTo(1200, 200);
    writer.defineShape(1, shape);
    writer.place(1, 1);
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 100, 40);
    EXPECT_TRUE(near(colorAt(*frame, 15, 15), kRed));
    EXPECT_TRUE(near(colorAt(*frame, 52, 2), kRed));
    EXPECT_TRUE(near(colorAt(*frame, 70, 20), kWhite));  // the hole
    EXPECT_TRUE(near(colorAt(*frame, 88, 38), kRed));
}

TEST(ShapeRender, EdgesBetweenTwoFillsAreSharedByBoth)
{
    // Two halves of a square that share their middle edge, which has one fill on each side.
    SwfWriter writer = stageOf(40, 20);
    ShapeBuilder shape;
    shape.fills = {solidFill(kRed), solidFill(kBlue)};
    shape.moveTo(400, 0).fill0(2).fill1(1).lineTo(400, 400);             // shared edge, red on its right
    shape.fill0(0).fill1(1).lineTo(0, 400).lineTo(0, 0).lineTo(400, 0);  // red half, left
    shape.moveTo(400, 400).fill0(0).fill1(2).lineTo(800, 400).lineTo(800, 0).lineTo(400, 0);
    writer.defineShape(1, shape);
    writer.place(1, 1);
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 40, 20);
    EXPECT_TRUE(near(colorAt(*frame, 5, 10), kRed));
    EXPECT_TRUE(near(colorAt(*frame, 19, 10), kRed));
    EXPECT_TRUE(near(colorAt(*frame, 20, 10), kBlue));
    EXPECT_TRUE(near(colorAt(*frame, 39, 19), kBlue));
}

TEST(ShapeRender, NonZeroWindingFillsOverlapsThatEvenOddLeavesOpen)
{
    const auto frameFor = [](int version, bool nonZero) {
        SwfWriter writer = stageOf(40, 20);
        ShapeBuilder shape;
        shape.nonZeroWinding = nonZero;
        shape.fills = {solidFill(kRed)};
        // Two squares of the same direction, the second inside the first.
        shape.rectangle(0, 0, 800, 400, 1).rectangle(200, 100, 600, 300, 1);
        writer.defineShape(1, shape, version);
        writer.place(1, 1);
        writer.showFrame();
        return draw(*loadMovie(writer.finish()), 0, 40, 20);
    };
    EXPECT_TRUE(near(colorAt(*frameFor(3, true), 20, 10), kWhite));  // the flag exists only in version 4
    EXPECT_TRUE(near(colorAt(*frameFor(4, false), 20, 10), kWhite));
    EXPECT_TRUE(near(colorAt(*frameFor(4, true), 20, 10), kRed));
    EXPECT_TRUE(near(colorAt(*frameFor(4, true), 2, 2), kRed));
}

TEST(ShapeRender, HairlinesAreOnePixelWide)
{
    SwfWriter writer = stageOf(40, 20);
    ShapeBuilder shape;
    shape.lines = {LineStyle{0, {0, 0, 0, 255}}};
    shape.moveTo(0, 210).line(1).lineTo(800, 210);  // along the middle of row 10
    writer.defineShape(1, shape);
    writer.place(1, 1);
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 40, 20);
    EXPECT_TRUE(near(colorAt(*frame, 20, 10), {0, 0, 0, 255}));
    EXPECT_TRUE(near(colorAt(*frame, 20, 9), kWhite));
    EXPECT_TRUE(near(colorAt(*frame, 20, 11), kWhite));
}

TEST(ShapeRender, ColourTransformsMultiplyAddAndFadeNestedObjects)
{
    SwfWriter writer = stageOf(40, 20);
    writer.background({0, 0, 0, 255});
    writer.defineShape(1, rectangleShape(0, 0, 10, 10, {200, 100, 40, 255}));
    TagList inner;
    inner.place(1, 1, {}, ColorTransform{{128, 256, 256, 256}, {0, 20, 0, 0}});
    inner.showFrame();
    writer.defineSprite(2, inner);
    writer.place(1, 1, moveBy(20, 0), ColorTransform{{256, 256, 256, 128}, {0, 0, 0, 0}});
    writer.place(2, 2, {}, ColorTransform{{256, 256, 0, 256}, {0, 0, 10, 0}});
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 40, 20);
    // Half alpha over black.
    EXPECT_TRUE(near(colorAt(*frame, 25, 5), {100, 50, 20, 255}, 1));
    // The sprite's transform after its child's: red halved, green plus 20, blue to 0 then plus 10.
    EXPECT_TRUE(near(colorAt(*frame, 5, 5), {100, 120, 10, 255}, 1));
}

TEST(ShapeRender, MaskShowsOnlyTheDepthsItClipsWhereItCovers)
{
    SwfWriter writer = stageOf(60, 20);
    writer.defineShape(1, rectangleShape(0, 0, 20, 20, {0, 0, 0, 255}));  // the mask
    writer.defineShape(2, rectangleShape(0, 0, 60, 20, kRed));
    writer.defineShape(3, rectangleShape(0, 5, 60, 10, kBlue));
    writer.place(1, 1, moveBy(20, 0), std::nullopt, std::nullopt, uint16_t(2));
    writer.place(2, 2);
    writer.place(3, 3);  // above the clip depth: not masked
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 60, 20);
    EXPECT_TRUE(near(colorAt(*frame, 10, 15), kWhite));
    EXPECT_TRUE(near(colorAt(*frame, 30, 15), kRed));
    EXPECT_TRUE(near(colorAt(*frame, 50, 15), kWhite));
    EXPECT_TRUE(near(colorAt(*frame, 10, 7), kBlue));
    EXPECT_TRUE(near(colorAt(*frame, 30, 7), kBlue));
}

TEST(ShapeRender, ShowAllCentresTheStageAndExactFitStretchesIt)
{
    SwfWriter writer = stageOf(20, 10);
    writer.background({0, 0, 255, 255});
    writer.defineShape(1, rectangleShape(0, 0, 10, 10, kRed));
    writer.place(1, 1);
    writer.showFrame();
    const auto movie = loadMovie(writer.finish());
    // 40 by 40: show all scales by 2 and centres vertically (rows 10 to 30).
    const auto showAll = draw(*movie, 0, 40, 40, {ScaleMode::ShowAll, false, Rgba{0, 255, 0, 255}});
    EXPECT_TRUE(near(colorAt(*showAll, 5, 12), kRed));
    EXPECT_TRUE(near(colorAt(*showAll, 5, 5), {0, 255, 0, 255}));  // the given background
    EXPECT_TRUE(near(colorAt(*showAll, 30, 12), {0, 255, 0, 255}));
    const auto exact = draw(*movie, 0, 40, 40, {ScaleMode::ExactFit, false, {}});
    EXPECT_TRUE(near(colorAt(*exact, 19, 39), kRed));
    EXPECT_TRUE(near(colorAt(*exact, 20, 0), {0, 0, 255, 255}));
}

TEST(ShapeRender, TranslucentBackgroundLeavesStraightAlpha)
{
    SwfWriter writer = stageOf(10, 10);
    writer.defineShape(1, rectangleShape(0, 0, 5, 10, {200, 100, 0, 128}));
    writer.place(1, 1);
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 10, 10, {ScaleMode::ShowAll, false, Rgba{0, 0, 0, 0}});
    EXPECT_TRUE(near(colorAt(*frame, 2, 2), {200, 100, 0, 128}, 1));
    EXPECT_EQ(frame->row(2)[7], 0u);
}

}  // namespace
}  // namespace qx::swf::test
