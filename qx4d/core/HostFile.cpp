#include "qx4d/core/HostFile.h"

#include "qx4d/core/String.h"

#include "platform/os/WideText.h"

#include <algorithm>
#include <filesystem>
#include <new>
#include <optional>
#include <system_error>
#include <vector>

namespace qx4d {

namespace fs = std::filesystem;

namespace {

// Windows paths to POSIX: backslashes become slashes and a drive "X:" in front goes.
std::string mapSeparators(std::u16string_view logicalPath)
{
    if (logicalPath.size() >= 2 && logicalPath[1] == u':') logicalPath.remove_prefix(2);
    std::u16string path(logicalPath);
    std::replace(path.begin(), path.end(), u'\\', u'/');
    return qx::os::toUtf8(path);
}

// The entry of `folder` whose name equals `name` without regard to case; of several, the
// first in name order, so that the choice doesn't depend on the order of the listing.
std::optional<fs::path> findNoCase(const fs::path& folder, const std::string& name)
{
    std::error_code error;
    fs::directory_iterator entries(folder.empty() ? fs::path(".") : folder, error);
    if (error) return std::nullopt;
    const String wanted(qx::os::fromUtf8(name));
    std::optional<std::string> best;
    for (const auto& entry : entries) {
        const std::string candidate = entry.path().filename().string();
        if (wanted.EqualsNoCase(qx::os::fromUtf8(candidate)) != 0) continue;
        if (!best || candidate < *best) best = candidate;
    }
    if (!best) return std::nullopt;
    return folder / *best;
}

// Rebuilds `path` part by part, keeping each part that exists and replacing one that
// doesn't by its case-free match; empty when a part has no match at all.
std::optional<fs::path> resolveNoCase(const fs::path& path)
{
    fs::path resolved = path.root_path();
    for (const fs::path& part : path.relative_path()) {
        const std::string name = part.string();
        std::error_code error;
        if (name.empty() || name == "." || name == ".." || fs::exists(resolved / part, error)) {
            resolved /= part;
            continue;
        }
        std::optional<fs::path> match = findNoCase(resolved, name);
        if (!match) return std::nullopt;
        resolved = *match;
    }
    return resolved;
}

}  // namespace

std::string HostPath(std::u16string_view logicalPath)
{
    const std::string mapped = mapSeparators(logicalPath);
    std::error_code error;
    if (mapped.empty() || fs::exists(mapped, error)) return mapped;
    const std::optional<fs::path> resolved = resolveNoCase(fs::path(mapped));
    // Keeps a trailing separator, which names a folder.
    if (!resolved) return mapped;
    std::string result = resolved->string();
    if (mapped.back() == '/' && (result.empty() || result.back() != '/')) result += '/';
    return result;
}

FilePtr OpenForReading(std::u16string_view logicalPath)
{
    const std::string path = HostPath(logicalPath);
    std::error_code error;
    // Only files: a folder opens for reading on POSIX, unlike on Windows, but has no bytes.
    if (fs::is_directory(path, error)) return nullptr;
    return FilePtr(std::fopen(path.c_str(), "rb"));
}

std::unique_ptr<uint8_t[]> ReadWholeFile(std::u16string_view logicalPath, size_t& size)
{
    FilePtr file = OpenForReading(logicalPath);
    if (!file || std::fseek(file.get(), 0, SEEK_END) != 0) return nullptr;
    const long length = std::ftell(file.get());
    if (length < 0 || std::fseek(file.get(), 0, SEEK_SET) != 0) return nullptr;
    auto bytes = std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[size_t(length)]);
    if (!bytes) return nullptr;
    if (std::fread(bytes.get(), 1, size_t(length), file.get()) != size_t(length)) return nullptr;
    size = size_t(length);
    return bytes;
}

std::u16string ExecutableDirectory()
{
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error) return u"";
    std::u16string folder = qx::os::fromUtf8(program.parent_path().string());
    if (folder.empty() || folder.back() != u'/') folder += u'/';
    return folder;
}

}  // namespace qx4d
