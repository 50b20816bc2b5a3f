#pragma once
// Picture files for benchmarks whose objects read pictures from files.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace qx::bench {

/// A 24-bit BMP file of `samples` in the temporary folder, the simplest picture file to
/// write by hand; its path.
inline std::string writeBmp(const std::vector<uint32_t>& samples, int width, int height, const std::string& name)
{
    const std::string path =
        std::filesystem::temp_directory_path() / (name + "-" + std::to_string(::getpid()) + ".bmp");
    const uint32_t rowBytes = uint32_t(width * 3 + 3) & ~3u;
    const uint32_t dataBytes = rowBytes * uint32_t(height);
    std::vector<uint8_t> file(54 + dataBytes, 0);
    const auto put = [&](size_t at, uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) file[at + size_t(i)] = uint8_t(value >> (8 * i));
    };
    file[0] = 'B';
    file[1] = 'M';
    put(2, uint32_t(file.size()), 4);
    put(10, 54, 4);
    put(14, 40, 4);
    put(18, uint32_t(width), 4);
    put(22, uint32_t(height), 4);  // bottom-up rows
    put(26, 1, 2);
    put(28, 24, 2);
    put(34, dataBytes, 4);
    for (int y = 0; y < height; ++y) {
        uint8_t* row = file.data() + 54 + size_t(height - 1 - y) * rowBytes;
        for (int x = 0; x < width; ++x)
            put(size_t(row - file.data()) + size_t(x) * 3, samples[size_t(y * width + x)], 3);
    }
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), std::streamsize(file.size()));
    return path;
}

}  // namespace qx::bench
