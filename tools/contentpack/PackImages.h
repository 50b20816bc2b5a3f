#pragma once
// The pictures of the default content pack, drawn in code and written as DDS files: the
// placeholder cards that live frames replace, and the backdrops.
#include <cstdint>
#include <string>
#include <vector>

namespace qx4d::tools {

/// A 32-bit picture, 0xAARRGGBB words, row 0 on top.
struct Picture {
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint32_t> pixels;
};

/// A placeholder card: a tinted field with a grid and a bright frame, so that a scene
/// shows where its live pictures go even before any frame arrives.
Picture PlaceholderCard(uint32_t size, uint32_t tint);
/// A vertical gradient from `top` to `bottom` with a soft glow low in the middle.
Picture Gradient(uint32_t width, uint32_t height, uint32_t top, uint32_t bottom);

/// The picture as an uncompressed A8R8G8B8 DDS file of one level.
std::vector<uint8_t> DdsOf(const Picture& picture);

}  // namespace qx4d::tools
