#pragma once
// The box blur of small windows in 16-bit sums, sixteen channels to an AVX2 instruction.
// A window of w samples (w = 2 * radius + 1, at most 255) sums to at most 255 * w, which
// fits 16 bits, and its rounded mean comes from one high multiply and a shift. The
// results are those of the general blur, sample for sample.
#include "platform/imaging/BitmapHandle.h"
#include "platform/imaging/Divider16.h"

#include <cstdint>
#include <optional>
#include <span>

namespace qx::imaging {

/// Division with rounding (half up) by a window of w samples, for sums up to 255 * w.
struct WindowDivisor {
    Divider16 divider;
    uint16_t bias = 0;

    uint32_t meanOf(uint32_t sum) const { return divider.quotient(sum + bias); }
};

/// The divisor for a window of 2 * radius + 1 samples, where one exists that is exact
/// for every sum the window can have; none for windows above 255 samples.
std::optional<WindowDivisor> windowDivisor(int32_t radius);

/// Adds the bytes of `row` to the 16-bit column sums, one per byte. Needs AVX2.
void addRowNarrow(std::span<uint16_t> columns, const uint8_t* row);

/// One row of a vertical window pass in 16-bit sums: the means of the column sums into
/// the blue, green and red bytes of `out` (its alpha bytes stay), then the sums moved
/// on: the bytes of `entering` join them and those of `leaving` leave. Both are read
/// before `out` is written, so either may be `out` itself. Needs AVX2.
void blurColumnsNarrow(std::span<uint16_t> columns, uint8_t* out, const uint8_t* entering, const uint8_t* leaving,
                       const WindowDivisor& divisor);

/// Blurs `bitmap` (not null) with a box of `radius` in 16-bit sums. Returns false,
/// having changed nothing, where that does not apply: the processor has no AVX2, the
/// window has no divisor, or memory runs out. The caller then takes the general way.
bool blurNarrow(BitmapHandle& bitmap, int32_t radius);

}  // namespace qx::imaging
