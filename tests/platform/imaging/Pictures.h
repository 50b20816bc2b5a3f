#pragma once
// Small pictures for the image operation tests.
#include "platform/imaging/BitmapHandle.h"

#include <cstdint>
#include <span>
#include <vector>

namespace qx::imaging::testing {

inline uint32_t bgra(int red, int green, int blue, int alpha = 255)
{
    return (uint32_t(alpha) << 24) | (uint32_t(red) << 16) | (uint32_t(green) << 8) | uint32_t(blue);
}

/// A handle whose rows, top-down, are `samples` (a top-down DIB, so no flip involved).
inline BitmapHandle makeBitmap(int32_t width, int32_t height, const std::vector<uint32_t>& samples)
{
    const auto bytes = std::as_bytes(std::span(samples));
    BitmapHandle bitmap;
    bitmap.loadDib(frameDibHeader(width, -height),
                   std::span(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
    return bitmap;
}

inline BitmapHandle makeFlat(int32_t width, int32_t height, uint32_t sample)
{
    return makeBitmap(width, height, std::vector<uint32_t>(size_t(width) * size_t(height), sample));
}

/// Black, with one sample of `sample` at (x, y).
inline BitmapHandle makeImpulse(int32_t width, int32_t height, int32_t x, int32_t y, uint32_t sample)
{
    std::vector<uint32_t> samples(size_t(width) * size_t(height), bgra(0, 0, 0));
    samples[size_t(y) * size_t(width) + size_t(x)] = sample;
    return makeBitmap(width, height, samples);
}

inline std::vector<uint32_t> samplesOf(const BitmapHandle& bitmap)
{
    return {bitmap.pixels().begin(), bitmap.pixels().end()};
}

inline uint32_t at(const BitmapHandle& bitmap, int32_t x, int32_t y) { return bitmap.row(y)[size_t(x)]; }

}  // namespace qx::imaging::testing
