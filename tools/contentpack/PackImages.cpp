#include "tools/contentpack/PackImages.h"

#include "platform/gpu/DdsFile.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace qx4d::tools {

namespace {

uint32_t Channel(uint32_t colour, int shift) { return (colour >> shift) & 0xFF; }

uint32_t Mix(uint32_t a, uint32_t b, double t)
{
    uint32_t out = 0xFF000000u;
    for (const int shift : {16, 8, 0}) {
        const double value = Channel(a, shift) + (double(Channel(b, shift)) - Channel(a, shift)) * t;
        out |= uint32_t(std::clamp(std::lround(value), 0L, 255L)) << shift;
    }
    return out;
}

}  // namespace

Picture PlaceholderCard(uint32_t size, uint32_t tint)
{
    Picture card{size, size, std::vector<uint32_t>(size_t(size) * size)};
    const uint32_t cell = std::max<uint32_t>(size / 8, 1), border = std::max<uint32_t>(size / 32, 1);
    for (uint32_t y = 0; y < size; ++y) {
        for (uint32_t x = 0; x < size; ++x) {
            const bool edge = x < border || y < border || x >= size - border || y >= size - border;
            const bool grid = x % cell == 0 || y % cell == 0;
            const double shade = 0.55 + 0.45 * (1.0 - double(y) / size);
            card.pixels[size_t(y) * size + x] = edge   ? 0xFFF0F0F0u
                                                : grid ? Mix(tint, 0xFFFFFFFFu, 0.35)
                                                       : Mix(0xFF000000u, tint, shade);
        }
    }
    return card;
}

Picture Gradient(uint32_t width, uint32_t height, uint32_t top, uint32_t bottom)
{
    Picture picture{width, height, std::vector<uint32_t>(size_t(width) * height)};
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            const double dx = (double(x) / width - 0.5) * 1.6, dy = double(y) / height - 0.75;
            const double glow = std::exp(-(dx * dx + dy * dy) * 6.0) * 0.35;
            picture.pixels[size_t(y) * width + x] = Mix(Mix(top, bottom, double(y) / height), 0xFFFFFFFFu, glow);
        }
    }
    return picture;
}

std::vector<uint8_t> DdsOf(const Picture& picture)
{
    std::vector<uint8_t> level(picture.pixels.size() * 4);
    std::memcpy(level.data(), picture.pixels.data(), level.size());
    return qx::gpu::writeDds(qx::gpu::D3DFMT_A8R8G8B8, picture.width, picture.height, 1, false, {level});
}

}  // namespace qx4d::tools
