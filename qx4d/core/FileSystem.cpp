#include "qx4d/core/FileSystem.h"

#include "qx4d/core/HostFile.h"

#include <filesystem>
#include <system_error>

namespace qx4d {

namespace fs = std::filesystem;

namespace {

bool isDirectory(std::u16string_view logicalPath)
{
    std::error_code error;
    return fs::is_directory(HostPath(logicalPath), error);
}

}  // namespace

bool FileSystem::Init(std::u16string_view rootPath, std::u16string_view innerPath)
{
    if (!isDirectory(rootPath)) return false;
    root = String(rootPath);
    if (root.empty() || root.back() != u'\\') root.push_back(u'\\');
    inner = String(innerPath);
    return true;
}

std::unique_ptr<uint8_t[]> FileSystem::Load(std::u16string_view path, size_t& size)
{
    return ReadWholeFile(root + String(path), size);
}

uint32_t FileSystem::CountFiles()
{
    std::error_code error;
    fs::directory_iterator entries(HostPath(root), error);
    if (error) return 0;
    uint32_t count = 0;
    for (const auto& entry : entries) {
        if (!entry.is_directory(error)) ++count;
    }
    return count;
}

bool FileSystem::HasDirectory(std::u16string_view path) { return isDirectory(root + String(path)); }

}  // namespace qx4d
