#include "qx4d/content/Chunk.h"

#include "platform/os/CodePage.h"

#include <algorithm>
#include <cstring>

namespace qx4d {

namespace {

// The wide buffer of the name conversion holds 256 characters with the terminating zero.
constexpr size_t kStringBufferChars = 256;

}  // namespace

Chunk::Chunk(uint32_t chunkId, const uint8_t* bytes, size_t byteCount)
    : id(chunkId), size(uint32_t(std::min<size_t>(byteCount, UINT32_MAX))), begin(bytes), cursor(bytes),
      end(bytes + byteCount)
{}

size_t Chunk::Read(void* destination, size_t bytes)
{
    const size_t taken = std::min(bytes, Remaining());
    if (taken > 0) {
        std::memcpy(destination, cursor, taken);
        cursor += taken;
    }
    if (taken < bytes) {
        std::memset(static_cast<uint8_t*>(destination) + taken, 0, bytes - taken);
    }
    return taken;
}

uint32_t Chunk::ReadU32()
{
    uint8_t bytes[4];
    Read(bytes, sizeof bytes);
    return uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 | uint32_t(bytes[3]) << 24;
}

uint16_t Chunk::ReadU16()
{
    uint8_t bytes[2];
    Read(bytes, sizeof bytes);
    return uint16_t(bytes[0] | bytes[1] << 8);
}

float Chunk::ReadF32()
{
    const uint32_t bits = ReadU32();
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

String Chunk::ReadString()
{
    const uint8_t* terminator = std::find(cursor, end, uint8_t(0));
    const size_t length = size_t(terminator - cursor);
    const std::string_view bytes(reinterpret_cast<const char*>(cursor), std::min(length, kStringBufferChars - 1));
    cursor = terminator == end ? end : terminator + 1;
    return String(qx::os::toWide(qx::os::CodePage::Ansi, bytes));
}

bool Chunk::NextChunk(Chunk& out)
{
    if (Remaining() < kHeaderSize) {
        return false;
    }
    out.id = ReadU32();
    out.size = ReadU32();
    const size_t body = std::min<size_t>(out.size, Remaining());
    out.begin = cursor;
    out.cursor = cursor;
    out.end = cursor + body;
    cursor += body;
    return true;
}

}  // namespace qx4d
