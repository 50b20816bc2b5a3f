// Pictures opened from files: every sample and its alpha as the file holds them, and
// files that are missing or hold no picture give nothing.
#include "platform/draw2d/ImageFile.h"

#include <gtest/gtest.h>
#include <stb_image_write.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace qx::draw2d {
namespace {

namespace fs = std::filesystem;

fs::path scratch(const std::string& name) { return fs::temp_directory_path() / (std::to_string(::getpid()) + "-" + name); }

TEST(ImageFile, PngSamplesAndAlphaArriveAsWritten)
{
    const unsigned char rgba[] = {255, 0, 0, 255, 0, 255, 0, 128, 0, 0, 255, 0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120};
    const fs::path path = scratch("picture.png");
    ASSERT_TRUE(stbi_write_png(path.c_str(), 3, 2, 4, rgba, 12));
    const auto bitmap = loadImageFile(path.string());
    fs::remove(path);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(bitmap->width(), 3);
    EXPECT_EQ(bitmap->height(), 2);
    EXPECT_EQ(bitmap->row(0)[0], 0xFFFF0000u);
    EXPECT_EQ(bitmap->row(0)[1], 0x8000FF00u);
    EXPECT_EQ(bitmap->row(0)[2], 0x000000FFu);
    EXPECT_EQ(bitmap->row(1)[2], 0x785A646Eu);
}

TEST(ImageFile, MissingOrMeaninglessFilesGiveNothing)
{
    EXPECT_FALSE(loadImageFile("/nonexistent/picture.png"));
    const fs::path path = scratch("notes.png");
    std::ofstream(path) << "not a picture";
    EXPECT_FALSE(loadImageFile(path.string()));
    // A PNG header that claims a picture beyond the limits is refused before decoding.
    const unsigned char huge[] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A, 0, 0, 0, 13, 'I', 'H', 'D', 'R',
                                  0, 0x01, 0, 0, 0, 0x01, 0, 0, 8, 6, 0, 0, 0, 0, 0, 0, 0};
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(huge), sizeof huge);
    EXPECT_FALSE(loadImageFile(path.string()));
    fs::remove(path);
}

}  // namespace
}  // namespace qx::draw2d
