#pragma once
// The host side of content paths. Logical paths are Windows paths with backslashes; here
// they become POSIX paths, and a name that doesn't exist in the exact case is looked up
// without regard to case, since content made on Windows is not consistent in case.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace qx4d {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

/// The host path of a logical path: backslashes become slashes and a drive `X:` in front
/// is dropped, so `C:\data\x.png` is `/data/x.png`. Where the exact path doesn't exist,
/// each missing part is replaced by a name of its folder that equals it without regard to
/// case; a path that still doesn't resolve is given back as it was mapped.
std::string HostPath(std::u16string_view logicalPath);

/// Opens the file at a logical path for binary reading; null on failure or for a folder.
FilePtr OpenForReading(std::u16string_view logicalPath);

/// The whole file at a logical path as a new buffer; null if it can't be read.
/// `size` is written only on success.
std::unique_ptr<uint8_t[]> ReadWholeFile(std::u16string_view logicalPath, size_t& size);

/// The folder of the running program, with a trailing slash.
std::u16string ExecutableDirectory();

}  // namespace qx4d
