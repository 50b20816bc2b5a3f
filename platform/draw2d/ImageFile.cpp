#include "platform/draw2d/ImageFile.h"

#include <stb_image.h>

#include <cstdio>

namespace qx::draw2d {

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
struct StbFree {
    void operator()(unsigned char* pixels) const { stbi_image_free(pixels); }
};

}  // namespace

std::unique_ptr<Bitmap> loadImageFile(const std::string& path)
{
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file) return nullptr;
    int width = 0;
    int height = 0;
    int channels = 0;
    // The size first, so that a header claiming a huge picture costs nothing.
    if (!stbi_info_from_file(file.get(), &width, &height, &channels) || width <= 0 || height <= 0 ||
        width > kMaxImageSide || height > kMaxImageSide || int64_t(width) * height > kMaxImageSamples) {
        return nullptr;
    }
    const std::unique_ptr<unsigned char, StbFree> rgba(stbi_load_from_file(file.get(), &width, &height, &channels, 4));
    if (!rgba) return nullptr;
    auto bitmap = std::make_unique<Bitmap>(width, height);
    if (bitmap->status() != Status::Ok) return nullptr;
    for (int y = 0; y < height; ++y) {
        const unsigned char* in = rgba.get() + size_t(y) * size_t(width) * 4;
        auto row = bitmap->row(y);
        for (int x = 0; x < width; ++x, in += 4) {
            row[size_t(x)] = uint32_t(in[3]) << 24 | uint32_t(in[0]) << 16 | uint32_t(in[1]) << 8 | in[2];
        }
    }
    return bitmap;
}

}  // namespace qx::draw2d
