#include "platform/imaging/DibHeader.h"

namespace qx::imaging {
namespace {

class LittleEndianWriter {
public:
    explicit LittleEndianWriter(std::span<uint8_t> bytes) : out(bytes) {}
    void put(uint32_t value, size_t byteCount)
    {
        for (size_t i = 0; i < byteCount; ++i) out[offset++] = uint8_t(value >> (8 * i));
    }

private:
    std::span<uint8_t> out;
    size_t offset = 0;
};

class LittleEndianReader {
public:
    explicit LittleEndianReader(std::span<const uint8_t> bytes) : in(bytes) {}
    uint32_t take(size_t byteCount)
    {
        uint32_t value = 0;
        for (size_t i = 0; i < byteCount; ++i) value |= uint32_t(in[offset++]) << (8 * i);
        return value;
    }

private:
    std::span<const uint8_t> in;
    size_t offset = 0;
};

}  // namespace

DibHeader frameDibHeader(int32_t width, int32_t height)
{
    DibHeader header;
    header.width = width;
    header.height = height;
    header.sizeImage = uint32_t(int64_t(width) * int64_t(height) * 32 / 8);
    return header;
}

std::array<uint8_t, kDibHeaderSize> writeDibHeader(const DibHeader& header)
{
    std::array<uint8_t, kDibHeaderSize> bytes{};
    LittleEndianWriter out(bytes);
    out.put(header.size, 4);
    out.put(uint32_t(header.width), 4);
    out.put(uint32_t(header.height), 4);
    out.put(header.planes, 2);
    out.put(header.bitCount, 2);
    out.put(header.compression, 4);
    out.put(header.sizeImage, 4);
    out.put(uint32_t(header.xPelsPerMeter), 4);
    out.put(uint32_t(header.yPelsPerMeter), 4);
    out.put(header.clrUsed, 4);
    out.put(header.clrImportant, 4);
    return bytes;
}

std::optional<DibHeader> readDibHeader(std::span<const uint8_t> bytes)
{
    if (bytes.size() < kDibHeaderSize) return std::nullopt;
    LittleEndianReader in(bytes);
    DibHeader header;
    header.size = in.take(4);
    header.width = int32_t(in.take(4));
    header.height = int32_t(in.take(4));
    header.planes = uint16_t(in.take(2));
    header.bitCount = uint16_t(in.take(2));
    header.compression = in.take(4);
    header.sizeImage = in.take(4);
    header.xPelsPerMeter = int32_t(in.take(4));
    header.yPelsPerMeter = int32_t(in.take(4));
    header.clrUsed = in.take(4);
    header.clrImportant = in.take(4);
    return header;
}

}  // namespace qx::imaging
