#pragma once
// A zip archive as a content source. The archive is indexed once, by a sequential scan of
// its local headers from the first byte, and stays open for reading as long as the
// source lives.
#include "qx4d/core/FileSystem.h"
#include "qx4d/core/HostFile.h"
#include "qx4d/core/VFSDir.h"

#include <memory>

namespace qx4d {

class ZipFileSystem : public FileSystem {
public:
    ZipFileSystem() = default;

    /// Opens and indexes the archive of `path`, which may go on into a folder inside the
    /// archive (`data.zip\scenes\`); a relative path counts from the folder of the host
    /// program. False when there is no archive to open.
    bool Open(std::u16string_view path);

    std::unique_ptr<uint8_t[]> Load(std::u16string_view path, size_t& size) override;
    uint32_t CountFiles() override;
    bool HasDirectory(std::u16string_view path) override;

private:
    FilePtr file;
    VFSDir rootDir;
    uint32_t fileCount = 0;
};

}  // namespace qx4d
