#pragma once
// The in-memory index of an archive: folders of entries, built from entry names with
// slashes and searched with logical paths with backslashes.
#include "qx4d/core/String.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

namespace qx4d {

/// One indexed archive entry.
struct VFSFile {
    /// Reads the entry from the open archive: stored when its two sizes are equal,
    /// else raw deflate. Null when the data can't be read or inflated.
    std::unique_ptr<uint8_t[]> Load(std::FILE* archive, size_t& size) const;

    /// Only the last part of the entry's path once stored.
    String name;
    /// Where the entry's data starts in the archive.
    uint32_t offset = 0;
    uint32_t compressedSize = 0;
    uint32_t uncompressedSize = 0;
};

struct VFSDir {
    /// Files `file` under its slash-separated name, making the folders on the way; names
    /// of folders compare with case here.
    void AddFile(VFSFile file);
    /// The first entry at the backslash-separated `path`, without regard to case; null
    /// when there is none.
    const VFSFile* FindFile(std::u16string_view path) const;
    /// The folder at `path`; this folder for an empty path.
    const VFSDir* FindDir(std::u16string_view path) const;

    String name;
    std::vector<VFSFile> files;
    std::vector<VFSDir> dirs;
};

}  // namespace qx4d
