#pragma once
// The engine's only road to content files. Files are asked for whole, by logical path:
// `ALIAS:rest` through the sources mounted under an alias, a real path `X:\...`, or a
// bare path through every source in mounting order.
#include "qx4d/core/FileSystem.h"
#include "qx4d/core/Singleton.h"
#include "qx4d/core/String.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace qx4d {

/// An alias and the sources behind it, searched in order.
struct MountPoint {
    /// The alias without its colon, exact case: `IMAGES`.
    String name;
    /// Put before the path inside the alias: empty, or ending in a backslash.
    String prefix;
    /// Not owned: the `FileManager` owns every source, and one may stand in several
    /// mount points.
    std::vector<FileSystem*> sources;
};

class FileManager : public Singleton<FileManager> {
public:
    FileManager() = default;
    ~FileManager() = default;

    /// `source` is either a real path (a directory, else a zip archive, optionally with a
    /// folder inside it) or `OTHER:inner`, a folder inside an existing alias. Mounting
    /// the same alias again adds a source behind the earlier ones. True if a source was
    /// mounted.
    bool Mount(std::u16string_view alias, std::u16string_view source);
    /// The whole file as a new buffer owned by the caller; null when nothing is found.
    /// `size` is written only on success.
    std::unique_ptr<uint8_t[]> Load(std::u16string_view path, size_t& size);

private:
    bool MountRealPath(std::u16string_view alias, std::u16string_view source);
    bool MountInnerFolder(std::u16string_view alias, std::u16string_view source);
    MountPoint& FindOrCreateMountPoint(std::u16string_view alias);
    MountPoint* FindMountPoint(std::u16string_view alias);

    // Declared first so that it is destroyed last: mount points only borrow sources.
    std::vector<std::unique_ptr<FileSystem>> fileSystems;
    std::vector<std::unique_ptr<MountPoint>> mountPoints;
};

}  // namespace qx4d
