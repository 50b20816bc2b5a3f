#pragma once
// A source of content files behind an alias: here a directory, in `ZipFileSystem` an
// archive. Paths inside a source are logical: backslashes separate their parts.
#include "qx4d/core/String.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace qx4d {

class FileSystem {
public:
    FileSystem() = default;
    virtual ~FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;

    /// False unless `root` is an existing directory. Stores it with a trailing
    /// backslash, and stores `inner`, which the directory source doesn't use.
    virtual bool Init(std::u16string_view rootPath, std::u16string_view innerPath);
    /// The whole file `root` + `path` as a new buffer; null if it can't be read.
    /// `size` is written only on success.
    virtual std::unique_ptr<uint8_t[]> Load(std::u16string_view path, size_t& size);
    /// The files (not folders) directly in `root`; 0 if it can't be listed.
    virtual uint32_t CountFiles();
    /// Whether `root` + `path` is a directory.
    virtual bool HasDirectory(std::u16string_view path);

protected:
    String root;
    String inner;
};

}  // namespace qx4d
