#include "qx4d/core/VFSDir.h"

#include <zlib.h>

#include <algorithm>
#include <new>

namespace qx4d {

namespace {

// Deflate gives at most 1032 bytes for one compressed byte; an entry that claims more is
// damaged, and its size must not decide an allocation.
constexpr uint64_t kMaxInflateRatio = 1032;
constexpr uint64_t kInflateSlack = 1024;

std::unique_ptr<uint8_t[]> allocate(size_t size)
{
    return std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[size]());
}

uint64_t archiveLength(std::FILE* archive)
{
    if (std::fseek(archive, 0, SEEK_END) != 0) return 0;
    const long length = std::ftell(archive);
    return length < 0 ? 0 : uint64_t(length);
}

bool readAt(std::FILE* archive, uint32_t offset, uint8_t* out, size_t count)
{
    if (std::fseek(archive, long(offset), SEEK_SET) != 0) return false;
    return std::fread(out, 1, count, archive) == count;
}

// Raw deflate in one call, as the archives are written: only a stream that ends counts.
bool inflateRaw(const uint8_t* compressed, uint32_t compressedSize, uint8_t* out, uint32_t outSize)
{
    z_stream stream{};
    // The zlib the archives were made for; any zlib 1.x accepts this version text.
    if (inflateInit2_(&stream, -15, "1.2.3", int(sizeof(z_stream))) != Z_OK) return false;
    stream.next_in = const_cast<Bytef*>(compressed);
    stream.avail_in = compressedSize;
    stream.next_out = out;
    stream.avail_out = outSize;
    const int result = inflate(&stream, Z_FINISH);
    inflateEnd(&stream);
    return result == Z_STREAM_END;
}

template <typename Item>
const Item* findNoCase(const std::vector<Item>& items, std::u16string_view name)
{
    for (const Item& item : items) {
        if (item.name.EqualsNoCase(name) == 0) return &item;
    }
    return nullptr;
}

// Walks down the folders that all but the last part of the backslash-separated `path`
// name, each found without regard to case, the first match deciding. Leaves the last
// part in `path`; null when a folder is missing.
const VFSDir* walkToLastPart(const VFSDir* folder, std::u16string_view& path)
{
    for (size_t separator = path.find(u'\\'); separator != std::u16string_view::npos; separator = path.find(u'\\')) {
        folder = findNoCase(folder->dirs, path.substr(0, separator));
        if (!folder) return nullptr;
        path.remove_prefix(separator + 1);
    }
    return folder;
}

}  // namespace

std::unique_ptr<uint8_t[]> VFSFile::Load(std::FILE* archive, size_t& size) const
{
    if (!archive) return nullptr;
    const bool stored = compressedSize == uncompressedSize;
    // Sizes come from the archive: the data must lie inside it before anything is
    // allocated for it.
    if (uint64_t(offset) + compressedSize > archiveLength(archive)) return nullptr;
    if (!stored && uncompressedSize > uint64_t(compressedSize) * kMaxInflateRatio + kInflateSlack) return nullptr;
    std::unique_ptr<uint8_t[]> data = allocate(uncompressedSize);
    if (!data) return nullptr;
    if (stored) {
        if (!readAt(archive, offset, data.get(), uncompressedSize)) return nullptr;
    } else {
        std::unique_ptr<uint8_t[]> compressed = allocate(compressedSize);
        if (!compressed || !readAt(archive, offset, compressed.get(), compressedSize)) return nullptr;
        if (!inflateRaw(compressed.get(), compressedSize, data.get(), uncompressedSize)) return nullptr;
    }
    size = uncompressedSize;
    return data;
}

void VFSDir::AddFile(VFSFile file)
{
    VFSDir* folder = this;
    for (size_t slash = file.name.find(u'/'); slash != String::npos; slash = file.name.find(u'/')) {
        const std::u16string_view folderName = std::u16string_view(file.name).substr(0, slash);
        // Folders are searched from the last made, and with case: "A" and "a" are two.
        auto match = std::find_if(folder->dirs.rbegin(), folder->dirs.rend(),
                                  [&](const VFSDir& dir) { return dir.name == folderName; });
        if (match == folder->dirs.rend()) {
            folder->dirs.emplace_back();
            folder->dirs.back().name = String(folderName);
            folder = &folder->dirs.back();
        } else {
            folder = &*match;
        }
        file.name.erase(0, slash + 1);
    }
    folder->files.push_back(std::move(file));
}

const VFSFile* VFSDir::FindFile(std::u16string_view path) const
{
    const VFSDir* folder = walkToLastPart(this, path);
    return folder ? findNoCase(folder->files, path) : nullptr;
}

const VFSDir* VFSDir::FindDir(std::u16string_view path) const
{
    const VFSDir* folder = walkToLastPart(this, path);
    if (!folder || path.empty()) return folder;
    return findNoCase(folder->dirs, path);
}

}  // namespace qx4d
