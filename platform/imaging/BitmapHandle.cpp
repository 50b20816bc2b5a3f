#include "platform/imaging/BitmapHandle.h"

#include <algorithm>
#include <cstring>

namespace qx::imaging {
namespace {

/// The memory row of a DIB that holds image row `y`.
int32_t storageRowOf(int32_t y, int32_t height, bool bottomUp) { return bottomUp ? height - 1 - y : y; }

bool isReadableHeader(const DibHeader& header)
{
    if (header.size < kDibHeaderSize || header.bitCount != 32 || header.compression != kBiRgb) return false;
    if (header.width <= 0 || header.height == 0 || header.height == INT32_MIN) return false;
    const int64_t samples = int64_t(header.width) * std::abs(int64_t(header.height));
    return samples <= BitmapHandle::kMaxSamples;
}

}  // namespace

int32_t BitmapHandle::loadDib(const DibHeader& header, std::span<const uint8_t> bits)
{
    free();
    if (!isReadableHeader(header)) return 0;
    const int32_t width = header.width;
    const int32_t height = header.height > 0 ? header.height : -header.height;
    const size_t rowBytes = size_t(width) * 4;
    if (bits.size() < rowBytes * size_t(height)) return 0;

    // Frame-sized blocks come from the reusable frame memory: a handle is made per frame.
    const size_t samples = size_t(width) * size_t(height);
    pixel::FrameMemory block = pixel::allocateFrameMemory(samples);
    if (!block) return 0;
    const bool bottomUp = header.height > 0;
    for (int32_t y = 0; y < height; ++y) {
        const size_t from = size_t(storageRowOf(y, height, bottomUp)) * rowBytes;
        std::memcpy(block.get() + size_t(y) * size_t(width), bits.data() + from, rowBytes);
    }
    storage = std::shared_ptr<uint32_t[]>(block.release(), pixel::FrameMemoryRelease{samples});
    columns = width;
    rows = height;
    storedBottomUp = bottomUp;
    return 1;
}

std::vector<uint8_t> BitmapHandle::toDib() const
{
    if (isNull()) return {};
    DibHeader header = frameDibHeader(columns, storedBottomUp ? rows : -rows);
    header.sizeImage = uint32_t(stride() * size_t(rows));
    const auto headerBytes = writeDibHeader(header);

    std::vector<uint8_t> block(kDibHeaderSize + stride() * size_t(rows));
    std::copy(headerBytes.begin(), headerBytes.end(), block.begin());
    for (int32_t y = 0; y < rows; ++y) {
        const size_t to = kDibHeaderSize + size_t(storageRowOf(y, rows, storedBottomUp)) * stride();
        std::memcpy(block.data() + to, row(y).data(), stride());
    }
    return block;
}

void BitmapHandle::free()
{
    storage.reset();
    columns = 0;
    rows = 0;
    storedBottomUp = true;
}

std::span<uint32_t> BitmapHandle::pixels()
{
    return storage ? std::span<uint32_t>(storage.get(), size_t(columns) * size_t(rows)) : std::span<uint32_t>();
}

std::span<const uint32_t> BitmapHandle::pixels() const
{
    return storage ? std::span<const uint32_t>(storage.get(), size_t(columns) * size_t(rows))
                   : std::span<const uint32_t>();
}

std::span<const uint32_t> BitmapHandle::dibRow(int32_t storageRow) const
{
    if (isNull() || storageRow < 0 || storageRow >= rows) return {};
    return row(storageRowOf(storageRow, rows, storedBottomUp));
}

std::span<uint32_t> BitmapHandle::row(int32_t y)
{
    return pixels().subspan(size_t(y) * size_t(columns), size_t(columns));
}

std::span<const uint32_t> BitmapHandle::row(int32_t y) const
{
    return pixels().subspan(size_t(y) * size_t(columns), size_t(columns));
}

size_t BitmapHandle::readRow(int32_t storageRow, std::span<uint8_t> out) const
{
    if (isNull() || storageRow < 0 || storageRow >= rows) return 0;
    const auto source = dibRow(storageRow);
    const size_t count = std::min(out.size(), stride());
    std::memcpy(out.data(), source.data(), count);
    return count;
}

}  // namespace qx::imaging
