#include "platform/imaging/ColorOps.h"
#include "platform/imaging/Filters.h"
#include "platform/imaging/Vectorised.h"
#include "tests/platform/imaging/Pictures.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace qx::imaging {
namespace {

using Operation = std::function<bool(BitmapHandle&)>;

/// A picture of 61 by 67 samples (odd sizes, so that every loop has a remainder after its
/// vectors) whose samples step through the colour cube and the alpha values.
std::vector<uint32_t> colourSweep()
{
    std::vector<uint32_t> samples(61 * 67);
    for (size_t i = 0; i < samples.size(); ++i) samples[i] = uint32_t(i * 2654435761u) ^ uint32_t(i << 7);
    return samples;
}

std::vector<uint32_t> applied(const Operation& operation, int32_t width, int32_t height,
                              const std::vector<uint32_t>& samples)
{
    auto bitmap = testing::makeBitmap(width, height, samples);
    EXPECT_TRUE(operation(bitmap));
    return testing::samplesOf(bitmap);
}

const std::vector<std::pair<std::string, Operation>>& operations()
{
    static const std::vector<std::pair<std::string, Operation>> all = {
        {"hue 137", [](BitmapHandle& b) { return changeHue(b, 137); }},
        {"hue -45", [](BitmapHandle& b) { return changeHue(b, -45); }},
        {"saturation -300", [](BitmapHandle& b) { return changeSaturation(b, -300); }},
        {"saturation 700", [](BitmapHandle& b) { return changeSaturation(b, 700); }},
        {"tint", [](BitmapHandle& b) { return tint(b, -120, 700, 500, 1000, 400, 30); }},
        {"posterize 20", [](BitmapHandle& b) { return posterize(b, 20); }},
        {"posterize 187", [](BitmapHandle& b) { return posterize(b, 187); }},
        {"noise",
         [](BitmapHandle& b) {
             seedNoise(11);
             return addNoise(b, 300, 0);
         }},
        {"blur 2", [](BitmapHandle& b) { return blur(b, 2); }},
        {"blur 130", [](BitmapHandle& b) { return blur(b, 130); }},
        {"motion blur up 5", [](BitmapHandle& b) { return motionBlur(b, 5, 9000, true); }},
        {"motion blur down 48", [](BitmapHandle& b) { return motionBlur(b, 48, 27000, true); }},
    };
    return all;
}

/// Restores the widest level when a test ends, whatever it capped.
struct LevelCap {
    explicit LevelCap(VectorLevel level) { limitVectorLevel(level); }
    ~LevelCap() { limitVectorLevel(VectorLevel::avx512); }
};

TEST(VectorLevels, EveryLevelTheProcessorHasGivesTheBaselineResults)
{
    const auto samples = colourSweep();
    for (const auto& [name, operation] : operations()) {
        std::vector<uint32_t> baseline;
        {
            LevelCap cap(VectorLevel::baseline);
            baseline = applied(operation, 61, 67, samples);
        }
        for (int level = 1; level <= int(supportedVectorLevel()); ++level) {
            LevelCap cap{VectorLevel(level)};
            EXPECT_EQ(applied(operation, 61, 67, samples), baseline) << name << " at level " << level;
        }
        EXPECT_NE(baseline, samples) << name << " changed nothing";
    }
}

TEST(VectorLevels, EachSampleOfAWidePictureComesOutAsWhenAlone)
{
    // One sample runs only the remainder loop; a wide picture mostly the vector loop.
    const auto samples = colourSweep();
    for (const auto& [name, operation] : operations()) {
        if (name.starts_with("noise") || name.starts_with("blur") || name.starts_with("motion"))
            continue;  // none treats a sample on its own
        const auto together = applied(operation, 61, 67, samples);
        for (size_t i = 0; i < samples.size(); i += 7)
            ASSERT_EQ(applied(operation, 1, 1, {samples[i]})[0], together[i]) << name << " sample " << i;
    }
}

}  // namespace
}  // namespace qx::imaging
