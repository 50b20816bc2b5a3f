#include "platform/draw2d/Blend.h"

namespace qx::draw2d {

namespace {

// x * a / 255 for the four channels of a sample at once, two per 32-bit lane pair.
inline uint32_t scaleSample(uint32_t s, uint32_t a)
{
    uint32_t rb = (s & 0x00FF00FFu) * a + 0x00800080u;
    rb = ((rb + ((rb >> 8) & 0x00FF00FFu)) >> 8) & 0x00FF00FFu;
    uint32_t ag = ((s >> 8) & 0x00FF00FFu) * a + 0x00800080u;
    ag = (ag + ((ag >> 8) & 0x00FF00FFu)) & 0xFF00FF00u;
    return rb | ag;
}

}  // namespace

// 32-bit lane multiplies vectorise from AVX2 on (the baseline has none); the loader
// picks the clone the processor runs.
__attribute__((target_clones("avx2", "default"))) void blendColor(std::span<uint32_t> row, uint32_t color)
{
    const uint32_t keep = 255 - (color >> 24);
    for (uint32_t& d : row) d = color + scaleSample(d, keep);
}

__attribute__((target_clones("avx2", "default"))) void
blendSamples(std::span<uint32_t> row, std::span<const uint32_t> samples, std::span<const uint8_t> cover, bool copy)
{
    // Branch-free, so that it vectorises: scaling by a full cover of 255 is exact.
    const uint32_t copyMask = copy ? ~0u : 0u;
    for (size_t i = 0; i < row.size(); ++i) {
        const uint32_t c = cover[i];
        const uint32_t s = scaleSample(samples[i], c);
        const uint32_t keep = ((255 - c) & copyMask) | ((255 - (s >> 24)) & ~copyMask);
        row[i] = s + scaleSample(row[i], keep);
    }
}

namespace {

/// All ones when `s` is not keyed, zero when it is.
inline uint32_t unkeyedMask(uint32_t s, uint32_t low, uint32_t high)
{
    const auto inside = [](uint32_t sample, uint32_t lo, uint32_t hi, int shift) {
        const uint32_t c = (sample >> shift) & 0xFF;
        return uint32_t(c >= ((lo >> shift) & 0xFF)) & uint32_t(c <= ((hi >> shift) & 0xFF));
    };
    return (inside(s, low, high, 0) & inside(s, low, high, 8) & inside(s, low, high, 16)) - 1;
}

}  // namespace

__attribute__((target_clones("avx2", "default"))) void
clearKeyed(std::span<const uint32_t> source, std::span<uint32_t> samples, uint32_t low, uint32_t high)
{
    for (size_t i = 0; i < samples.size(); ++i) samples[i] &= unkeyedMask(source[i], low, high);
}

__attribute__((target_clones("avx2", "default"))) void
copyUnkeyed(std::span<const uint32_t> source, std::span<uint32_t> samples, uint32_t low, uint32_t high)
{
    for (size_t i = 0; i < samples.size(); ++i) samples[i] = source[i] & unkeyedMask(source[i], low, high);
}

}  // namespace qx::draw2d
