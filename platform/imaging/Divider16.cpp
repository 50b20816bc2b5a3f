#include "platform/imaging/Divider16.h"

namespace qx::imaging {

std::optional<Divider16> findDivider16(uint32_t divisor, uint32_t largest)
{
    if (divisor == 0 || largest > 0xFFFF) return std::nullopt;
    // With m = ceil(2^k / d) and e = m * d - 2^k, n * m / 2^k exceeds n / d by
    // n * e / (d * 2^k), which stays below 1 / d, and so leaves the floor alone, for
    // every n up to `largest` when largest * e < 2^k.
    for (uint16_t shift = 0; shift <= 15; ++shift) {
        const uint64_t scale = uint64_t(1) << (16 + shift);
        const uint64_t multiplier = (scale + divisor - 1) / divisor;
        if (multiplier > 0xFFFF) break;
        if (uint64_t(largest) * (multiplier * divisor - scale) < scale) return Divider16{uint16_t(multiplier), shift};
    }
    return std::nullopt;
}

}  // namespace qx::imaging
