// The image filter chain of a scene, on the device: each filter changes the frame as its
// name says, judged by properties of pixels, the chain passes the frame from filter to
// filter, and a filter that can't be made for the frame's size is dropped.
#include "tests/qx4d/core/scene/FrameFixture.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace qx4d::test {
namespace {

constexpr const char* kCamera = "Camera\n{\n  Position 0 0 -2\n}\n";

class ImageFilterTest : public FrameTest {
protected:
    void SetUp() override
    {
        FrameTest::SetUp();
        if (IsSkipped()) return;
        // Quadrants: red top left, green top right, blue bottom left, grey bottom right.
        std::vector<uint32_t> quadrants(size_t(kSize * kSize));
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x)
                quadrants[size_t(y * kSize + x)] = y < kSize / 2 ? (x < kSize / 2 ? 0xFFFF0000u : 0xFF00FF00u)
                                                                 : (x < kSize / 2 ? 0xFF0000FFu : 0xFF808080u);
        Picture("quadrants.dds", kSize, kSize, quadrants);
        // A white square of 16 pixels in the middle of black.
        std::vector<uint32_t> spot(size_t(kSize * kSize), 0xFF000000u);
        for (int y = 24; y < 40; ++y)
            for (int x = 24; x < 40; ++x) spot[size_t(y * kSize + x)] = 0xFFFFFFFFu;
        Picture("spot.dds", kSize, kSize, spot);
    }
    /// The picture `image` as the backdrop, with the filter lines given.
    std::vector<uint32_t> Filtered(const std::string& image, const std::string& filters)
    {
        return Frame("BackgroundImage \"" + image + "\"\n" + kCamera + filters);
    }
};

int Distance(uint32_t a, uint32_t b) { return qx::gpu::testing::colourDistance(a, b); }

TEST_F(ImageFilterTest, NegativeTurnsEveryColourToItsOppositeOverTheWholeScene)
{
    tools::ObjectModel model;
    model.items.push_back(MeshItemModel("square", test::Square(0.2f, {1, 1, 1})));
    Save("square.qxo", model);
    const auto frame = Frame("BackgroundImage \"quadrants.dds\"\n" + std::string(kCamera) +
                             "Object\n{\n  FileName square.qxo\n}\nImageFilter Negative\n");
    EXPECT_LE(Distance(At(frame, 8, 8), 0xFF00FFFFu), 2) << "red becomes cyan";
    EXPECT_LE(Distance(At(frame, 56, 8), 0xFFFF00FFu), 2) << "green becomes magenta";
    EXPECT_LE(Distance(At(frame, 56, 56), 0xFF7F7F7Fu), 2);
    EXPECT_LE(Distance(At(frame, 32, 32), 0xFF000000u), 2) << "the white square, drawn with depth into the chain";
}

TEST_F(ImageFilterTest, TwoFiltersInARowPassTheFrameOn)
{
    const auto twice = Filtered("quadrants.dds", "ImageFilter Negative\nImageFilter Negative\n");
    EXPECT_EQ(scene->filters.size(), 2u);
    EXPECT_LE(Distance(At(twice, 8, 8), 0xFFFF0000u), 2);
    EXPECT_LE(Distance(At(twice, 8, 56), 0xFF0000FFu), 2);
    // The colour transform writes the identity: the frame stays as it was.
    const auto plain = Filtered("quadrants.dds", "");
    const auto transformed = Filtered("quadrants.dds", "ImageFilter ColorTransform\n");
    for (const auto& [x, y] : {std::pair{8, 8}, {56, 8}, {8, 56}, {56, 56}})
        EXPECT_LE(Distance(At(transformed, x, y), At(plain, x, y)), 2);
}

TEST_F(ImageFilterTest, SepiaTonesByLuminanceFromBrownToCream)
{
    // The pack's ramp: dark brown, a warm middle, cream.
    std::vector<uint32_t> ramp(256);
    for (int i = 0; i < 256; ++i) {
        const int r = std::min(255, 25 + i * 230 / 255), g = 12 + i * 230 / 255, b = 5 + i * 205 / 255;
        ramp[size_t(i)] = 0xFF000000u | uint32_t(r) << 16 | uint32_t(g) << 8 | uint32_t(b);
    }
    std::vector<uint32_t> ramp4 = ramp;
    for (int row = 1; row < 4; ++row) ramp4.insert(ramp4.end(), ramp.begin(), ramp.end());
    Picture("sepia.tga", 256, 4, ramp4);  // a DDS under the name the filter asks for
    const auto frame = Filtered("quadrants.dds", "ImageFilter Sepia\n");
    int previous = -1;
    // By luminance: blue, red, grey, green.
    for (const auto& [x, y] : {std::pair{8, 56}, {8, 8}, {56, 56}, {56, 8}}) {
        const uint32_t pixel = At(frame, x, y);
        EXPECT_GE(Red(pixel), Green(pixel));
        EXPECT_GT(Green(pixel), Blue(pixel)) << "warm tones";
        EXPECT_GT(Red(pixel), previous) << "brighter with the luminance";
        previous = Red(pixel);
    }
}

TEST_F(ImageFilterTest, BrightAreasBloomIntoTheirDarkSurroundings)
{
    const auto plain = Filtered("spot.dds", "");
    const auto bloomed = Filtered("spot.dds", "ImageFilter LDRBloom\n");
    EXPECT_EQ(Red(At(plain, 21, 32)), 0);
    EXPECT_GT(Red(At(bloomed, 21, 32)), 30) << "light spills beside the square";
    EXPECT_GT(Red(At(bloomed, 42, 32)), 30) << "on both sides alike";
    EXPECT_EQ(At(bloomed, 32, 32), 0xFFFFFFFFu);
    EXPECT_LT(Red(At(bloomed, 2, 2)), 10) << "far corners stay dark";
}

TEST_F(ImageFilterTest, DistortionsMoveThePictureInsideTheirRadiusOnly)
{
    const auto plain = Filtered("spot.dds", "");
    // Explode reads farther out near the centre: the square draws together.
    const auto exploded = Filtered("spot.dds", "ImageFilter Explode\n{\n  Center 0.5 0.5\n  Radius 0.5\n}\n");
    EXPECT_EQ(At(exploded, 32, 32), 0xFFFFFFFFu);
    EXPECT_EQ(Red(At(exploded, 37, 32)), 0) << "an edge of the square now reads the dark beyond it";
    EXPECT_EQ(At(exploded, 2, 2), At(plain, 2, 2));
    // Twirl turns the quadrants around the centre, more near it.
    const auto twirled = Filtered("quadrants.dds", "ImageFilter Twirl\n{\n  Radius 0.5\n  Angle 3.1415927\n}\n");
    const auto straight = Filtered("quadrants.dds", "");
    EXPECT_GT(Distance(At(twirled, 40, 29), At(straight, 40, 29)), 100) << "the green quadrant turned away";
    EXPECT_EQ(At(twirled, 2, 2), At(straight, 2, 2)) << "nothing moves at the corners";
    // Wave ripples the square's edges and leaves the corners.
    const auto waved = Filtered("spot.dds", "ImageFilter Wave\n{\n  Radius 0.6\n}\n");
    int moved = 0;
    for (size_t i = 0; i < plain.size(); ++i) moved += Distance(waved[i], plain[i]) > 100;
    EXPECT_GT(moved, 20);
    EXPECT_EQ(At(waved, 1, 1), At(plain, 1, 1));
}

TEST_F(ImageFilterTest, ABloomTooSmallForItsLevelsIsDropped)
{
    Load("BackdropColor 0 0 0\n" + std::string(kCamera) + "ImageFilter Negative\nImageFilter LDRBloom\n");
    ASSERT_EQ(scene->filters.size(), 2u);
    scene->SetFrameSize(8, 8);
    ASSERT_EQ(scene->filters.size(), 1u) << "eight pixels halve to nothing by the fourth level";
    EXPECT_EQ(std::u16string_view(scene->filters[0]->EffectFile()), u"Filters\\Negative.fx");
    scene->SetFrameSize(kSize, kSize);
    const auto frame = Draw();
    EXPECT_EQ(At(frame, 32, 32), 0xFFFFFFFFu) << "the chain goes on with what is left";
}

}  // namespace
}  // namespace qx4d::test
