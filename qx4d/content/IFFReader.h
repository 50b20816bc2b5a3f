#pragma once
// A whole chunk file in memory: the reader owns the bytes and is itself the chunk of the
// file's first header, whose body the object loader then walks.
#include "qx4d/content/Chunk.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace qx4d {

class IFFReader : public Chunk {
public:
    IFFReader() = default;
    IFFReader(const IFFReader&) = delete;
    IFFReader& operator=(const IFFReader&) = delete;

    /// Reads the whole file through the `FileManager`; false when it is missing or too
    /// short for a chunk header.
    bool Open(std::u16string_view path);
    /// Takes the bytes of a file. The first 8 are the reader's own id and size; the body
    /// ends with the stated size or with the bytes, whichever comes first.
    bool SetBuffer(std::unique_ptr<uint8_t[]> bytes, size_t byteCount);

private:
    std::unique_ptr<uint8_t[]> data;
};

}  // namespace qx4d
