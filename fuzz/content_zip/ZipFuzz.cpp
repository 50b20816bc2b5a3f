// Feeds arbitrary bytes to the zip source as an archive: the sequential index, then loads
// of the names the seeds use, so that no header can make a read leave the archive or ask
// for an allocation it can't back.
#include "fuzz/FuzzCheck.h"
#include "qx4d/core/ZipFileSystem.h"

#include "platform/os/WideText.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

// The source reads archives from files: each input is written to one of this process.
const std::string& archivePath()
{
    static const std::string path = "/tmp/qx4d-zip-fuzz-" + std::to_string(getpid()) + ".zip";
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::FILE* file = std::fopen(archivePath().c_str(), "wb");
    if (!file) return 0;
    const bool written = std::fwrite(data, 1, size, file) == size;
    std::fclose(file);
    if (!written) return 0;

    qx4d::ZipFileSystem zip;
    // The inner folder of the first seed byte's choosing exercises the prefix cut.
    const char16_t* inner = (size > 0 && data[0] & 1) ? u"\\data\\" : u"";
    const bool opened = zip.Open(qx::os::fromUtf8(archivePath()) + inner);
    // The source keeps the archive open, so its name can go now and no run leaves it behind.
    std::remove(archivePath().c_str());
    if (!opened) return 0;
    for (const char16_t* name : {u"a.txt", u"x\\y.txt", u"A\\B.TXT", u"deflated.txt", u"stored.bin", u"-"}) {
        size_t loaded = 0;
        zip.Load(name, loaded);
    }
    zip.HasDirectory(u"x\\");
    // Each entry of an index takes bytes of the archive: no header can make up more.
    QX_FUZZ_CHECK(zip.CountFiles() <= size);
    return 0;
}
