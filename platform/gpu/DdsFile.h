#pragma once
// DDS files: the header, the pixel formats the engine's textures use (A8R8G8B8,
// X8R8G8B8, A8, L8, DXT1, DXT3, DXT5), cube maps and mip levels. Reading is bounded by
// the buffer; the writer makes files for the content tools and tests.
#include "platform/gpu/Types.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qx::gpu {

struct DdsImage {
    UINT width = 0;
    UINT height = 0;
    UINT levels = 1;
    bool cube = false;
    D3DFORMAT format = D3DFMT_UNKNOWN;
    /// The images, face by face, each face from level 0 down; row 0 on top.
    std::vector<std::span<const uint8_t>> images;
};

/// Nothing when the data is not a whole DDS file of a format this layer reads.
std::optional<DdsImage> readDds(std::span<const uint8_t> file);

/// A DDS file of `levels` levels (of 6 faces when `cube`), images given in the order
/// readDds gives them, each of the exact size of its level.
std::vector<uint8_t> writeDds(D3DFORMAT format, UINT width, UINT height, UINT levels, bool cube,
                              const std::vector<std::vector<uint8_t>>& images);

}  // namespace qx::gpu
