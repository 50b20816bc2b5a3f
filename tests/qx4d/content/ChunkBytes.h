#pragma once
// Builds chunk bytes for tests: little-endian numbers, ids, zero-terminated strings and
// nested chunks whose sizes are filled in when they close.
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace qx4d::test {

class ChunkBytes {
public:
    ChunkBytes& U16(uint16_t value) { return Raw(&value, sizeof value); }
    ChunkBytes& U32(uint32_t value) { return Raw(&value, sizeof value); }
    ChunkBytes& F32(float value) { return Raw(&value, sizeof value); }
    ChunkBytes& Text(std::string_view text)
    {
        Raw(text.data(), text.size());
        bytes.push_back(0);
        return *this;
    }
    /// Opens a chunk: its id now, its size when `Close` is called.
    ChunkBytes& Open(std::string_view id)
    {
        Raw(id.data(), 4);
        open.push_back(bytes.size());
        return U32(0);
    }
    ChunkBytes& Close()
    {
        const size_t sizeAt = open.back();
        open.pop_back();
        const uint32_t size = uint32_t(bytes.size() - sizeAt - 4);
        std::memcpy(bytes.data() + sizeAt, &size, 4);
        return *this;
    }
    ChunkBytes& Raw(const void* data, size_t count)
    {
        const auto* begin = static_cast<const uint8_t*>(data);
        bytes.insert(bytes.end(), begin, begin + count);
        return *this;
    }

    std::vector<uint8_t> bytes;

private:
    std::vector<size_t> open;
};

}  // namespace qx4d::test
