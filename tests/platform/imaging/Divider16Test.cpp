#include "platform/imaging/Divider16.h"

#include <gtest/gtest.h>

namespace qx::imaging {
namespace {

TEST(Divider16, EveryDividerFoundIsExactUpToItsBound)
{
    int found = 0;
    for (uint32_t divisor = 1; divisor <= 300; ++divisor) {
        for (uint32_t largest : {255u * 255u + 127u, 255u * divisor + divisor / 2, 65535u}) {
            if (largest > 65535) continue;
            const auto divider = findDivider16(divisor, largest);
            if (!divider) continue;
            ++found;
            for (uint32_t n = 0; n <= largest; ++n)
                ASSERT_EQ(divider->quotient(n), n / divisor) << n << " / " << divisor;
        }
    }
    EXPECT_GT(found, 600);
}

TEST(Divider16, FindsTheDividersTheBlurAndPosterizeNeed)
{
    // The windows of radius 1, 2 and 20 and the level range 255, for their largest sums.
    for (uint32_t divisor : {3u, 5u, 41u}) EXPECT_TRUE(findDivider16(divisor, 255 * divisor + divisor / 2)) << divisor;
    EXPECT_TRUE(findDivider16(255, 255 * 19 + 127));
}

TEST(Divider16, RefusesWhatItCannotDo)
{
    EXPECT_FALSE(findDivider16(0, 100));
    EXPECT_FALSE(findDivider16(7, 65536));
    EXPECT_FALSE(findDivider16(1, 65535));  // the multiplier would be 2^16
}

}  // namespace
}  // namespace qx::imaging
