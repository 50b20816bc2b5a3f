#pragma once
// Conversions between straight and premultiplied alpha for 32-bit BGRA samples. Frames of
// the system are straight; drawing back ends work premultiplied. Opaque samples are the
// common case and are equal in both forms, so the loops skip them cheaply.
#include <cstdint>
#include <span>

namespace qx::pixel {

inline constexpr uint32_t kAlphaMask = 0xFF000000u;

constexpr uint32_t alphaOf(uint32_t sample) { return sample >> 24; }

/// True when every sample has alpha 255.
bool allOpaque(std::span<const uint32_t> samples);
/// Copies `source` into `target` (at least as long) and tells, from the same pass,
/// whether every sample has alpha 255.
bool copyAndCheckOpaque(std::span<const uint32_t> source, std::span<uint32_t> target);

/// Copies `source` into `target` (at least as long) with every alpha set to 255, for
/// pictures that have no alpha of their own.
void copyOpaque(std::span<const uint32_t> source, std::span<uint32_t> target);

/// Premultiplies each colour channel by alpha (rounded), in place or from `source`.
void premultiply(std::span<uint32_t> samples);
void premultiply(std::span<const uint32_t> source, std::span<uint32_t> target);

/// Divides each colour channel by alpha (rounded, clamped to 255); alpha 0 gives 0.
void unpremultiply(std::span<uint32_t> samples);
void unpremultiply(std::span<const uint32_t> source, std::span<uint32_t> target);

}  // namespace qx::pixel
