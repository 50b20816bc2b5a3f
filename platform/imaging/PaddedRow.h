#pragma once
// A row with its edge samples repeated beyond both ends, for the box blurs' windows.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qx::imaging {

/// Fills `padded` with `row` (not empty) starting at `radius`: the first sample repeated
/// before it, the last sample in every place after it. `padded` holds at least
/// `row.size()` + `radius` samples.
inline void padRow(std::span<const uint32_t> row, std::span<uint32_t> padded, int32_t radius)
{
    const auto before = padded.begin() + radius;
    std::fill(padded.begin(), before, row.front());
    std::copy(row.begin(), row.end(), before);
    std::fill(before + std::ptrdiff_t(row.size()), padded.end(), row.back());
}

}  // namespace qx::imaging
