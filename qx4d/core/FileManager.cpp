#include "qx4d/core/FileManager.h"

#include "qx4d/core/HostFile.h"
#include "qx4d/core/ZipFileSystem.h"

namespace qx4d {

namespace {

// A real path has no colon, or a colon directly followed by a backslash (`C:\data`).
bool isRealPath(std::u16string_view path, size_t colon)
{
    return colon == std::u16string_view::npos || (colon + 1 < path.size() && path[colon + 1] == u'\\');
}

// The first source that has the file wins.
template <typename Sources>
std::unique_ptr<uint8_t[]> loadFromFirst(const Sources& sources, std::u16string_view path, size_t& size)
{
    for (const auto& source : sources) {
        if (std::unique_ptr<uint8_t[]> bytes = source->Load(path, size)) return bytes;
    }
    return nullptr;
}

}  // namespace

bool FileManager::Mount(std::u16string_view alias, std::u16string_view source)
{
    if (isRealPath(source, source.find(u':'))) return MountRealPath(alias, source);
    return MountInnerFolder(alias, source);
}

bool FileManager::MountRealPath(std::u16string_view alias, std::u16string_view source)
{
    std::unique_ptr<FileSystem> fileSystem = std::make_unique<FileSystem>();
    if (!fileSystem->Init(source, u"")) {
        auto archive = std::make_unique<ZipFileSystem>();
        if (!archive->Open(source)) return false;
        fileSystem = std::move(archive);
    }
    FileSystem* mounted = fileSystem.get();
    fileSystems.push_back(std::move(fileSystem));
    FindOrCreateMountPoint(alias).sources.push_back(mounted);
    return true;
}

// `OTHER:inner`: every source of the alias `OTHER` that has the folder `inner` joins
// `alias`, with `inner` as the prefix of its paths.
bool FileManager::MountInnerFolder(std::u16string_view alias, std::u16string_view source)
{
    const size_t colon = source.find(u':');
    const MountPoint* other = FindMountPoint(source.substr(0, colon));
    if (!other) return false;
    const std::u16string_view innerFolder = source.substr(colon + 1);
    // A copy: `alias` may be `OTHER` itself, whose list grows below.
    const std::vector<FileSystem*> candidates = other->sources;
    MountPoint& mountPoint = FindOrCreateMountPoint(alias);
    bool appended = false;
    for (FileSystem* candidate : candidates) {
        if (!candidate->HasDirectory(innerFolder)) continue;
        mountPoint.sources.push_back(candidate);
        appended = true;
    }
    if (!appended) {
        // The last mount point goes, which is the one just made; an alias that existed
        // before is dropped only when it is the last one made.
        mountPoints.pop_back();
        return false;
    }
    mountPoint.prefix = String(innerFolder);
    if (mountPoint.prefix.empty() || mountPoint.prefix.back() != u'\\') mountPoint.prefix.push_back(u'\\');
    return true;
}

MountPoint* FileManager::FindMountPoint(std::u16string_view alias)
{
    for (const auto& mountPoint : mountPoints) {
        if (mountPoint->name == alias) return mountPoint.get();
    }
    return nullptr;
}

MountPoint& FileManager::FindOrCreateMountPoint(std::u16string_view alias)
{
    if (MountPoint* existing = FindMountPoint(alias)) return *existing;
    mountPoints.push_back(std::make_unique<MountPoint>());
    mountPoints.back()->name = String(alias);
    return *mountPoints.back();
}

std::unique_ptr<uint8_t[]> FileManager::Load(std::u16string_view path, size_t& size)
{
    const size_t colon = path.find(u':');
    if (colon == std::u16string_view::npos) return loadFromFirst(fileSystems, path, size);
    if (isRealPath(path, colon)) return ReadWholeFile(path, size);
    // Alias names compare with case: `scenes:` is not `SCENES:`.
    const MountPoint* mountPoint = FindMountPoint(path.substr(0, colon));
    if (!mountPoint) return nullptr;
    const String innerPath = mountPoint->prefix + String(path.substr(colon + 1));
    return loadFromFirst(mountPoint->sources, innerPath, size);
}

}  // namespace qx4d
