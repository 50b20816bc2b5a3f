#pragma once
// Helpers of the content-access tests: byte buffers as the file manager hands them out,
// and a temporary folder tree that goes away with the test.
#include "platform/os/WideText.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <string_view>

namespace qx4d::test {

inline std::unique_ptr<uint8_t[]> bytesOf(std::string_view text)
{
    auto bytes = std::make_unique<uint8_t[]>(text.size());
    std::memcpy(bytes.get(), text.data(), text.size());
    return bytes;
}

inline std::string textOf(const std::unique_ptr<uint8_t[]>& bytes, size_t size)
{
    return bytes ? std::string(reinterpret_cast<const char*>(bytes.get()), size) : std::string("<null>");
}

/// The whole file that `source` (a file manager or a file system) gives for `path`, as
/// text, or "<null>" when it gives none.
template <typename Source>
std::string loadText(Source& source, std::u16string_view path)
{
    size_t size = 0;
    std::unique_ptr<uint8_t[]> bytes = source.Load(path, size);
    return textOf(bytes, size);
}

class TempFolder {
public:
    TempFolder()
    {
        std::random_device seed;
        path =
            std::filesystem::temp_directory_path() / ("qx4d-test-" + std::to_string(seed()) + std::to_string(seed()));
        std::filesystem::create_directories(path);
    }
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// Writes `contents` to the file `relative` (slash-separated), making its folders.
    void Write(const std::string& relative, std::string_view contents) const
    {
        const std::filesystem::path file = path / relative;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary).write(contents.data(), std::streamsize(contents.size()));
    }
    void MakeFolder(const std::string& relative) const { std::filesystem::create_directories(path / relative); }

    /// The folder, or a path under it, as wide text for the file manager.
    std::u16string Wide(const std::string& relative = "") const
    {
        return qx::os::fromUtf8((relative.empty() ? path : path / relative).string());
    }

    std::filesystem::path path;
};

}  // namespace qx4d::test
