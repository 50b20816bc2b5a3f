#pragma once
// A bitmap handle: a picture of 32-bit BGRA samples that the image operations work on.
// Built from a DIB header and bits (it takes its own copy), turned back into a DIB block,
// freed. Copies of a handle are shallow: they share the same pixels, like the handle
// structure that the dialogs receive by value; the pixels live while any copy holds them.
//
// Rows are held in the image's own top-to-bottom order. A DIB with a positive height is
// bottom-up, so its last memory row becomes row 0 here, and the DIB block given back is
// bottom-up again. The effect host declares its top-down frame that way, which is why an
// image routine sees the frame upside down.
#include "platform/imaging/DibHeader.h"
#include "platform/pixel/FrameMemory.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace qx::imaging {

class BitmapHandle {
public:
    /// The largest picture a handle accepts, in samples (1 GiB of pixels).
    static constexpr int64_t kMaxSamples = int64_t(1) << 28;

    BitmapHandle() = default;

    /// Copies a 32-bit uncompressed DIB. Returns 1 on success; 0 when the header is not
    /// one the handle can hold or `bits` is shorter than the picture, and the handle is
    /// then null.
    int32_t loadDib(const DibHeader& header, std::span<const uint8_t> bits);

    /// A DIB block: the 40-byte header, then the pixels in the orientation of the DIB the
    /// handle came from. Empty for a null handle.
    std::vector<uint8_t> toDib() const;

    /// Drops this handle's hold on the pixels; the handle becomes null.
    void free();

    bool isNull() const { return !storage; }
    int32_t width() const { return columns; }
    int32_t height() const { return rows; }
    size_t stride() const { return size_t(columns) * 4; }
    /// Whether the DIB this handle came from stored its rows bottom-up.
    bool bottomUp() const { return storedBottomUp; }

    /// All samples, `width * height`, rows top-down, bytes blue, green, red, alpha.
    std::span<uint32_t> pixels();
    std::span<const uint32_t> pixels() const;
    std::span<uint32_t> row(int32_t y);
    std::span<const uint32_t> row(int32_t y) const;

    /// The row at `storageRow` in the memory order of the DIB the handle came from, as the
    /// handle holds it; empty for a row outside the picture or a null handle.
    std::span<const uint32_t> dibRow(int32_t storageRow) const;

    /// Copies the row at `storageRow` in the memory order of the DIB the handle came
    /// from, as many bytes as fit in `out`. Returns the bytes copied, 0 for a row outside
    /// the picture or a null handle.
    size_t readRow(int32_t storageRow, std::span<uint8_t> out) const;

private:
    std::shared_ptr<uint32_t[]> storage;
    int32_t columns = 0;
    int32_t rows = 0;
    bool storedBottomUp = true;
};

}  // namespace qx::imaging
