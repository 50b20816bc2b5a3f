#pragma once
// Channel access on one 32-bit sample (bytes blue, green, red, alpha), shared by the
// image operations so that their loops stay plain integer and float arithmetic.
#include "platform/imaging/Vectorised.h"

#include <algorithm>
#include <cstdint>

namespace qx::imaging {

QX_IMAGING_INLINE int32_t blueOf(uint32_t sample) { return int32_t(sample & 0xFF); }
QX_IMAGING_INLINE int32_t greenOf(uint32_t sample) { return int32_t((sample >> 8) & 0xFF); }
QX_IMAGING_INLINE int32_t redOf(uint32_t sample) { return int32_t((sample >> 16) & 0xFF); }
QX_IMAGING_INLINE uint32_t alphaBitsOf(uint32_t sample) { return sample & 0xFF000000u; }

QX_IMAGING_INLINE int32_t clampChannel(int32_t value) { return std::clamp(value, 0, 255); }

/// Rounds a float channel to the nearest integer and clamps it to 0..255. Written with
/// plain comparisons, which compile to min and max instructions inside vector loops.
QX_IMAGING_INLINE int32_t roundChannel(float value)
{
    const float low = value < 0.0f ? 0.0f : value;
    const float clamped = low > 255.0f ? 255.0f : low;
    return int32_t(clamped + 0.5f);
}

/// Packs clamped channels with the alpha byte of `original`.
QX_IMAGING_INLINE uint32_t withChannels(uint32_t original, int32_t red, int32_t green, int32_t blue)
{
    return alphaBitsOf(original) | (uint32_t(red) << 16) | (uint32_t(green) << 8) | uint32_t(blue);
}

/// Luma in the Rec. 601 weights (0.299, 0.587, 0.114), in 16-bit fixed point: the
/// weights 19595, 38470 and 7471 add up to 65536, so grey stays exactly grey.
QX_IMAGING_INLINE int32_t lumaOf(int32_t red, int32_t green, int32_t blue)
{
    return (19595 * red + 38470 * green + 7471 * blue + 32768) >> 16;
}

}  // namespace qx::imaging
