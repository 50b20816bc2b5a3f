#include "qx4d/content/IFFReader.h"

#include "qx4d/core/FileManager.h"

#include <utility>

namespace qx4d {

bool IFFReader::Open(std::u16string_view path)
{
    FileManager* files = FileManager::Instance();
    if (files == nullptr) {
        return false;
    }
    size_t byteCount = 0;
    auto bytes = files->Load(path, byteCount);
    return bytes != nullptr && SetBuffer(std::move(bytes), byteCount);
}

bool IFFReader::SetBuffer(std::unique_ptr<uint8_t[]> bytes, size_t byteCount)
{
    data = std::move(bytes);
    Chunk file(0, data.get(), data != nullptr ? byteCount : 0);
    if (!file.NextChunk(*this)) {
        data.reset();
        *static_cast<Chunk*>(this) = Chunk();
        return false;
    }
    return true;
}

}  // namespace qx4d
