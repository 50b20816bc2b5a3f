#pragma once
// Per-row blending of premultiplied samples, the inner loops of fills and image draws.
#include <cstdint>
#include <span>

namespace qx::draw2d {

/// Source-over of one premultiplied colour on every sample of `row`.
void blendColor(std::span<uint32_t> row, uint32_t color);

/// Each sample of `samples` onto `row` with its coverage (0..255): source-over, or with
/// `copy` a replacement weighted by coverage.
void blendSamples(std::span<uint32_t> row, std::span<const uint32_t> samples, std::span<const uint8_t> cover,
                  bool copy);

/// Zeroes each sample of `samples` whose counterpart in `source` has red, green and blue
/// within the inclusive ranges of `low` to `high` (alpha is not compared).
void clearKeyed(std::span<const uint32_t> source, std::span<uint32_t> samples, uint32_t low, uint32_t high);

/// Copies `source` into `samples` with the keyed samples zeroed, in one pass: for opaque
/// samples, which are their own premultiplied form.
void copyUnkeyed(std::span<const uint32_t> source, std::span<uint32_t> samples, uint32_t low, uint32_t high);

}  // namespace qx::draw2d
