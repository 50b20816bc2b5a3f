#pragma once
// What the composition tests write: pictures of plain colours (or of vertical bands) as
// PNG files, and composition files, in a folder of the test's own that goes with it.
#include <stb_image_write.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace qx::test {

class CompoFolder {
public:
    CompoFolder()
    {
        const std::string name = "qx-compo-" + std::to_string(::getpid()) + "-" + std::to_string(counter()++);
        folder_ = std::filesystem::temp_directory_path() / name;
        std::filesystem::create_directories(folder_);
    }
    ~CompoFolder() { std::filesystem::remove_all(folder_); }
    CompoFolder(const CompoFolder&) = delete;
    CompoFolder& operator=(const CompoFolder&) = delete;

    std::string path(const std::string& name) const { return (folder_ / name).string(); }
    std::u16string widePath(const std::string& name) const
    {
        const std::string text = path(name);
        return std::u16string(text.begin(), text.end());
    }

    /// A PNG of `width` by `height` of vertical bands, left to right, each an RGB colour.
    std::u16string picture(const std::string& name, int width, int height, const std::vector<uint32_t>& bands) const
    {
        std::vector<uint8_t> rgb(size_t(width * height * 3));
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const uint32_t colour = bands[size_t(x) * bands.size() / size_t(width)];
                uint8_t* p = &rgb[size_t((y * width + x) * 3)];
                p[0] = uint8_t(colour >> 16);
                p[1] = uint8_t(colour >> 8);
                p[2] = uint8_t(colour);
            }
        }
        EXPECT_NE(stbi_write_png(path(name).c_str(), width, height, 3, rgb.data(), width * 3), 0);
        return widePath(name);
    }

    std::u16string text(const std::string& name, const std::string& content) const
    {
        std::ofstream(path(name), std::ios::binary) << content;
        return widePath(name);
    }

private:
    static int& counter()
    {
        static int value = 0;
        return value;
    }
    std::filesystem::path folder_;
};

/// The red, green and blue of a BGRA sample, as 0xRRGGBB.
inline uint32_t Rgb(uint32_t sample) { return sample & 0xFFFFFFu; }

}  // namespace qx::test
