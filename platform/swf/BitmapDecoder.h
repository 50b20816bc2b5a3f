#pragma once
// The bitmap characters: DefineBits (JPEG data that shares the movie's JPEGTables),
// DefineBitsJPEG2 (a whole JPEG, PNG or GIF), DefineBitsJPEG3 and 4 (the same with a
// zlib-compressed alpha plane), and DefineBitsLossless 1 and 2 (zlib-compressed
// colour-mapped, 15-bit or 24/32-bit pixels). Decoded pictures are premultiplied 32-bit
// samples, alpha in the top byte, as Cairo draws them.
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace qx::swf {

/// The largest bitmap decoded: 8192 samples a side and 2^24 in all, as players allowed.
inline constexpr int kMaxBitmapSide = 8192;
inline constexpr int64_t kMaxBitmapSamples = int64_t(1) << 24;

struct DecodedBitmap {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> samples;  // premultiplied, rows without padding
};

/// What a bitmap tag holds, kept undecoded until a frame draws it.
struct BitmapSource {
    uint16_t code = 0;                    // the tag code
    std::span<const uint8_t> body;        // the tag's body, id included (the movie owns the bytes)
    std::span<const uint8_t> jpegTables;  // DefineBits only: the movie's JPEGTables
};

/// The character id of a bitmap tag body.
uint16_t bitmapId(std::span<const uint8_t> body);

/// Decodes a bitmap tag; nothing when its data is damaged, its sizes lie or exceed the
/// limits.
std::optional<DecodedBitmap> decodeBitmap(const BitmapSource& source);

}  // namespace qx::swf
