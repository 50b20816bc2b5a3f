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

void blendColor(std::span<uint32_t> row, uint32_t color)
{
    const uint32_t keep = 255 - (color >> 24);
    for (uint32_t& d : row) d = color + scaleSample(d, keep);
}

void blendSamples(std::span<uint32_t> row, std::span<const uint32_t> samples, std::span<const uint8_t> cover,
                  bool copy)
{
    for (size_t i = 0; i < row.size(); ++i) {
        const uint32_t c = cover[i];
        const uint32_t s = c == 255 ? samples[i] : scaleSample(samples[i], c);
        const uint32_t keep = copy ? 255 - c : 255 - (s >> 24);
        row[i] = s + scaleSample(row[i], keep);
    }
}

}  // namespace qx::draw2d
