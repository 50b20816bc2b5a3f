#include "qx4d/core/ZipFileSystem.h"

#include "platform/os/CodePage.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace qx4d {

namespace {

constexpr uint32_t kLocalFileHeader = 0x04034B50;
constexpr uint32_t kCentralDirectoryHeader = 0x02014B50;
constexpr uint32_t kDigitalSignature = 0x05054B50;
constexpr uint32_t kEndOfCentralDirectory = 0x06054B50;
// The flag bit that announces a trailing data descriptor of 12 bytes. Zip itself uses
// bit 0x0008; the archives this reads are known by 0x0100, so that is the test.
constexpr uint16_t kTrailingDescriptorFlag = 0x0100;
constexpr uint32_t kTrailingDescriptorSize = 12;
// Entry names beyond this many bytes are cut.
constexpr size_t kMaxNameBytes = 255;

// Reads an archive front to back through a buffer, so that skipping over entry data
// costs no system call. Every read is checked; a read past the end fails.
class SequentialReader {
public:
    explicit SequentialReader(std::FILE* source) : file(source), buffer(kBufferSize) {}

    bool Read(uint8_t* out, size_t count)
    {
        if (position < bufferStart || position + count > bufferStart + bufferLength) {
            if (!Fill() || count > bufferLength) return false;
        }
        std::memcpy(out, buffer.data() + (position - bufferStart), count);
        position += count;
        return true;
    }
    bool ReadU16(uint16_t& value)
    {
        uint8_t bytes[2];
        if (!Read(bytes, 2)) return false;
        value = uint16_t(bytes[0] | bytes[1] << 8);
        return true;
    }
    bool ReadU32(uint32_t& value)
    {
        uint8_t bytes[4];
        if (!Read(bytes, 4)) return false;
        value = uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 | uint32_t(bytes[3]) << 24;
        return true;
    }
    // Skipping never fails by itself: past the end, the next read does.
    void Skip(uint64_t count) { position += count; }
    uint64_t Position() const { return position; }

private:
    static constexpr size_t kBufferSize = 64 * 1024;

    bool Fill()
    {
        bufferStart = position;
        bufferLength = 0;
        if (position > uint64_t(std::numeric_limits<long>::max())) return false;
        if (std::fseek(file, long(position), SEEK_SET) != 0) return false;
        bufferLength = std::fread(buffer.data(), 1, buffer.size(), file);
        return bufferLength > 0;
    }

    std::FILE* file;
    std::vector<uint8_t> buffer;
    uint64_t bufferStart = 0;
    size_t bufferLength = 0;
    uint64_t position = 0;
};

// Where the entries of one archive go, and which of them: those under `innerFolder`.
struct IndexTarget {
    const String& innerFolder;
    VFSDir& rootDir;
    uint32_t& fileCount;
};

// Files an entry with data under the inner folder; directories and empty files have no
// data and are left out.
void indexEntry(const IndexTarget& target, std::string_view oemName, uint32_t dataOffset, uint32_t compressedSize,
                uint32_t uncompressedSize)
{
    if (compressedSize == 0) return;
    String name = qx::os::toWide(qx::os::CodePage::Oem, oemName);
    if (!name.StartsWith(target.innerFolder)) return;
    name.erase(0, target.innerFolder.size());
    VFSFile entry;
    entry.name = std::move(name);
    entry.offset = dataOffset;
    entry.compressedSize = compressedSize;
    entry.uncompressedSize = uncompressedSize;
    target.rootDir.AddFile(std::move(entry));
    ++target.fileCount;
}

// A local file header: its entry is indexed and its data skipped. False when the header
// runs past the end of the archive.
bool readLocalFileHeader(SequentialReader& in, const IndexTarget& target)
{
    uint16_t flags = 0, nameLength = 0, extraLength = 0;
    uint32_t compressedSize = 0, uncompressedSize = 0;
    in.Skip(2);  // version
    if (!in.ReadU16(flags)) return false;
    in.Skip(10);  // method, time, date, CRC
    if (!in.ReadU32(compressedSize) || !in.ReadU32(uncompressedSize) || !in.ReadU16(nameLength) ||
        !in.ReadU16(extraLength)) {
        return false;
    }
    uint8_t name[kMaxNameBytes];
    const size_t keptName = std::min<size_t>(nameLength, kMaxNameBytes);
    if (!in.Read(name, keptName)) return false;
    in.Skip(nameLength - keptName + extraLength);
    // Offsets are 32-bit: an archive beyond 4 GiB ends its index here.
    if (in.Position() > std::numeric_limits<uint32_t>::max()) return false;
    indexEntry(target, std::string_view(reinterpret_cast<const char*>(name), keptName), uint32_t(in.Position()),
               compressedSize, uncompressedSize);
    in.Skip(compressedSize);
    if (flags & kTrailingDescriptorFlag) in.Skip(kTrailingDescriptorSize);
    return true;
}

bool skipCentralDirectoryHeader(SequentialReader& in)
{
    uint16_t nameLength = 0, extraLength = 0, commentLength = 0;
    in.Skip(24);
    if (!in.ReadU16(nameLength) || !in.ReadU16(extraLength) || !in.ReadU16(commentLength)) return false;
    in.Skip(uint64_t(nameLength) + extraLength + commentLength + 12);
    return true;
}

// A record that ends in a block of `skipBefore` bytes and a 16-bit length of what follows.
bool skipSizedRecord(SequentialReader& in, uint64_t skipBefore)
{
    uint16_t length = 0;
    in.Skip(skipBefore);
    if (!in.ReadU16(length)) return false;
    in.Skip(length);
    return true;
}

// Reads the archive from its first byte, record by record, never from its end. Unknown
// signatures are passed over four bytes at a time; the index ends where the reads run out.
void indexArchive(std::FILE* file, const IndexTarget& target)
{
    SequentialReader in(file);
    uint32_t signature = 0;
    bool more = true;
    while (more && in.ReadU32(signature)) {
        switch (signature) {
        case kLocalFileHeader: more = readLocalFileHeader(in, target); break;
        case kCentralDirectoryHeader: more = skipCentralDirectoryHeader(in); break;
        case kDigitalSignature: more = skipSizedRecord(in, 0); break;
        case kEndOfCentralDirectory: more = skipSizedRecord(in, 16); break;
        default: break;
        }
    }
}

bool isAbsolute(std::u16string_view path)
{
    return (!path.empty() && path[0] == u'/') || (path.size() > 3 && path[1] == u':' && path[2] == u'\\');
}

}  // namespace

bool ZipFileSystem::Open(std::u16string_view path)
{
    const String absolute = isAbsolute(path) ? String(path) : String(ExecutableDirectory() + std::u16string(path));
    // The archive ends at the first backslash behind the last dot; what follows is a
    // folder inside it. No extension is compared.
    const size_t dot = absolute.rfind(u'.');
    if (dot == String::npos) return false;
    const size_t separator = absolute.find(u'\\', dot);
    const String archive = absolute.Left(separator);
    String innerFolder = separator == String::npos ? String() : absolute.Mid(separator + 1);
    file = OpenForReading(archive);
    if (!file) return false;
    innerFolder.ReplaceChar(u'\\', u'/');
    rootDir = VFSDir();
    fileCount = 0;
    indexArchive(file.get(), IndexTarget{innerFolder, rootDir, fileCount});
    return true;
}

std::unique_ptr<uint8_t[]> ZipFileSystem::Load(std::u16string_view path, size_t& size)
{
    const VFSFile* entry = rootDir.FindFile(path);
    return entry ? entry->Load(file.get(), size) : nullptr;
}

uint32_t ZipFileSystem::CountFiles() { return fileCount; }

bool ZipFileSystem::HasDirectory(std::u16string_view path) { return rootDir.FindDir(path) != nullptr; }

}  // namespace qx4d
