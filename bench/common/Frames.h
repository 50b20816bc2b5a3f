#pragma once
// Frames for benchmarks: the size every figure is quoted at, and an opaque test picture
// with detail in every channel, so that no effect meets a trivially uniform input.
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qx::bench {

inline constexpr int kFrameWidth = 1920;
inline constexpr int kFrameHeight = 1080;

inline std::vector<uint32_t> makeTestFrame(int width, int height)
{
    std::vector<uint32_t> frame(std::size_t(width) * std::size_t(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const uint32_t b = uint32_t(x * 255 / (width - 1));
            const uint32_t g = uint32_t(y * 255 / (height - 1));
            const uint32_t r = uint32_t(((x / 64) ^ (y / 64)) & 1 ? 220 : 40);
            frame[std::size_t(y) * std::size_t(width) + std::size_t(x)] = 0xFF000000u | (r << 16) | (g << 8) | b;
        }
    }
    return frame;
}

}  // namespace qx::bench
