#pragma once
// The 40-byte BITMAPINFOHEADER of a device-independent bitmap, which is how frames enter
// and leave a bitmap handle. Stored little-endian, as on Windows.
#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace qx::imaging {

inline constexpr size_t kDibHeaderSize = 40;
inline constexpr uint32_t kBiRgb = 0;

struct DibHeader {
    uint32_t size = kDibHeaderSize;
    int32_t width = 0;
    int32_t height = 0;  ///< Positive: rows stored bottom-up. Negative: top-down.
    uint16_t planes = 1;
    uint16_t bitCount = 32;
    uint32_t compression = kBiRgb;
    uint32_t sizeImage = 0;
    int32_t xPelsPerMeter = 0;
    int32_t yPelsPerMeter = 0;
    uint32_t clrUsed = 0;
    uint32_t clrImportant = 0;
};

/// The header the effect host fills for a top-down frame buffer: height positive, so the
/// frame is declared bottom-up and an image routine sees it upside down.
DibHeader frameDibHeader(int32_t width, int32_t height);

std::array<uint8_t, kDibHeaderSize> writeDibHeader(const DibHeader& header);

/// Reads the fixed 40 bytes of a header; nothing when fewer bytes are given.
std::optional<DibHeader> readDibHeader(std::span<const uint8_t> bytes);

}  // namespace qx::imaging
