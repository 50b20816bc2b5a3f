// The first frame of "Film ancien 2" in a new process has the same grain in every run,
// since the shared generator starts at 0. This binary holds this one test only, so the
// generator is fresh whichever way it is run.
#include "effects/FastRand.h"
#include "effects/VideoAgging.h"

#include <gtest/gtest.h>

#include <vector>

namespace qx {
namespace {

TEST(FreshProcess, FirstAgedFrameHasTheSameGrainInEveryRun)
{
    ASSERT_EQ(fastrandSeed(), 0u);
    constexpr LONG kSide = 64;
    std::vector<uint32_t> input(kSide * kSide);
    for (size_t i = 0; i < input.size(); ++i) input[i] = 0xFF000000u | ((uint32_t(i) * 0x030507u) & 0xFFFFFFu);
    std::vector<uint32_t> output(input.size());
    CVideoAgging effect(kSide, kSide);
    ASSERT_EQ(effect.Start(), 0);
    ASSERT_EQ(effect.ProcessFrame(input.data(), output.data(), 0.0f), 0);

    // Worked out apart from the effect (Python): draw i is the i-th step of
    // seed * 1103515245 + 12345 from 0; grain = (draw >> 8) & 0x101010; each sample
    // becomes a - ((a & 0xFCFCFC) >> 2) + grain + 0x181818.
    const std::vector<uint32_t> expected{0xFF181828, 0xFF2B2C2E, 0xFF1D2023, 0xFF2F2438,
                                         0xFF21273D, 0xFF243B43, 0xFF362F38, 0xFF28433D};
    EXPECT_EQ(std::vector<uint32_t>(output.begin(), output.begin() + 8), expected);
}

}  // namespace
}  // namespace qx
