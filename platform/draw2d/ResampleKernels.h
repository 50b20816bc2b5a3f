#pragma once
// The two inner loops of the resampler, with vector variants chosen at run time.
#include <cstddef>
#include <cstdint>

namespace qx::draw2d {

/// Samples that the vector kernels may read past the end of a row they blend columns of;
/// row buffers keep this much room.
inline constexpr size_t kRowSlack = 32;

/// out[i] = top[i] and bottom[i] blended with `weight` (0..256) of the bottom.
void blendRows(const uint32_t* top, const uint32_t* bottom, uint32_t weight, uint32_t* out, int count);
/// out[i] = row[left[i]] and row[left[i] + 1] blended with weight[i] (0..256) of the right;
/// `row` is readable kRowSlack samples past its last tap.
void blendColumns(const uint32_t* row, const int32_t* left, const uint32_t* weight, uint32_t* out, int count);

}  // namespace qx::draw2d
