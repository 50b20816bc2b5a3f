#include "platform/swf/FileBytes.h"

#include <filesystem>
#include <fstream>

namespace qx::swf {

std::optional<std::vector<uint8_t>> readWholeFile(const std::string& path, uintmax_t limit)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
    const uintmax_t size = std::filesystem::file_size(path, error);
    if (error || size > limit) return std::nullopt;
    std::ifstream in(path, std::ios::binary);
    std::vector<uint8_t> bytes(size);
    if (!in.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(size))) return std::nullopt;
    return bytes;
}

}  // namespace qx::swf
