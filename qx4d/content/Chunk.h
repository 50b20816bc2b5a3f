#pragma once
// Cursor over the body of one chunk of the engine's binary containers (object files and
// their envelopes): a 4-byte id, a 4-byte little-endian body size, the body, no padding.
// Every read is bounded by the body: what lies beyond it reads as zero bytes, and a
// sub-chunk whose stated size runs past its parent is cut at the parent's end.
#include "qx4d/core/String.h"

#include <cstddef>
#include <cstdint>

namespace qx4d {

/// The id of a chunk: its four characters in file order as one little-endian word.
constexpr uint32_t ChunkId(const char (&text)[5])
{
    return uint32_t(uint8_t(text[0])) | uint32_t(uint8_t(text[1])) << 8 | uint32_t(uint8_t(text[2])) << 16 |
           uint32_t(uint8_t(text[3])) << 24;
}

class Chunk {
public:
    /// The size of a chunk header: id and body size.
    static constexpr size_t kHeaderSize = 8;

    Chunk() = default;
    /// A body over `bytes`, which the caller keeps alive; id and size as given.
    Chunk(uint32_t chunkId, const uint8_t* bytes, size_t byteCount);
    virtual ~Chunk() = default;

    /// Copies up to `bytes` bytes and moves past them; the part of `destination` that the
    /// body cannot fill is zeroed. Returns the number of bytes taken from the body.
    virtual size_t Read(void* destination, size_t bytes);
    virtual uint32_t ReadU32();

    uint16_t ReadU16();
    float ReadF32();
    /// A zero-terminated string in the system's 8-bit code page; the cursor ends behind the
    /// zero (or at the end of the body when there is none). Names are converted through a
    /// buffer of 256 wide characters, so only their first 255 characters are kept.
    String ReadString();

    /// Fills `out` with the next sub-chunk and moves past it; false when fewer than 8 bytes
    /// are left.
    bool NextChunk(Chunk& out);

    size_t Remaining() const { return size_t(end - cursor); }

    uint32_t id = 0;
    /// The body size as the header states it; `end` may lie before `begin + size` when the
    /// parent was shorter.
    uint32_t size = 0;
    const uint8_t* begin = nullptr;
    const uint8_t* cursor = nullptr;
    const uint8_t* end = nullptr;
};

}  // namespace qx4d
