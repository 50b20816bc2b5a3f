#pragma once
// Writes the engine's chunk containers: little-endian numbers, ids, zero-terminated
// strings and nested chunks whose sizes are filled in when they close. The object-file
// tools and the tests build their files with it.
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace qx4d {

class ChunkWriter {
public:
    ChunkWriter& U16(uint16_t value) { return Raw(&value, sizeof value); }
    ChunkWriter& U32(uint32_t value) { return Raw(&value, sizeof value); }
    ChunkWriter& F32(float value) { return Raw(&value, sizeof value); }
    /// The bytes of `text` (8-bit code page) and a terminating zero.
    ChunkWriter& Text(std::string_view text)
    {
        Raw(text.data(), text.size());
        bytes.push_back(0);
        return *this;
    }
    /// Opens a chunk: its id now, its size when `Close` is called.
    ChunkWriter& Open(std::string_view id)
    {
        Raw(id.data(), 4);
        open.push_back(bytes.size());
        return U32(0);
    }
    ChunkWriter& Close()
    {
        const size_t sizeAt = open.back();
        open.pop_back();
        const auto size = uint32_t(bytes.size() - sizeAt - 4);
        std::memcpy(bytes.data() + sizeAt, &size, 4);
        return *this;
    }
    ChunkWriter& Raw(const void* data, size_t count)
    {
        const auto* begin = static_cast<const uint8_t*>(data);
        bytes.insert(bytes.end(), begin, begin + count);
        return *this;
    }

    std::vector<uint8_t> bytes;

private:
    std::vector<size_t> open;
};

}  // namespace qx4d
