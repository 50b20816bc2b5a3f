#pragma once
// Exact division by a constant in 16-bit vector lanes, which have a high multiply but
// no divide: n / d as ((n * multiplier) >> 16) >> shift, for every n up to a bound.
#include "platform/imaging/Vectorised.h"

#include <cstdint>
#include <optional>

namespace qx::imaging {

struct Divider16 {
    uint16_t multiplier = 0;
    uint16_t shift = 0;

    QX_IMAGING_INLINE uint32_t quotient(uint32_t n) const { return ((n * multiplier) >> 16) >> shift; }
};

/// The divider by `divisor` (at least 1) exact for every numerator up to `largest`
/// (below 2^16); none where no multiplier of 16 bits is.
std::optional<Divider16> findDivider16(uint32_t divisor, uint32_t largest);

}  // namespace qx::imaging
