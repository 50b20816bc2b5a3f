#include "platform/imaging/BitmapHandle.h"
#include "platform/imaging/ColorOps.h"
#include "platform/imaging/Filters.h"
#include "tests/platform/imaging/Pictures.h"

#include <gtest/gtest.h>

#include <cstring>

namespace qx::imaging {
namespace {

using testing::bgra;

/// A 3 by 2 frame whose samples are all different.
std::vector<uint32_t> distinctFrame()
{
    return {bgra(1, 2, 3, 4),     bgra(5, 6, 7, 8),     bgra(9, 10, 11, 12),
            bgra(13, 14, 15, 16), bgra(17, 18, 19, 20), bgra(21, 22, 23, 24)};
}

std::span<const uint8_t> bytesOf(const std::vector<uint32_t>& samples)
{
    return {reinterpret_cast<const uint8_t*>(samples.data()), samples.size() * 4};
}

TEST(BitmapHandleDib, FrameHeaderHasTheBitmapInfoLayout)
{
    const auto bytes = writeDibHeader(frameDibHeader(720, 576));
    const std::array<uint8_t, 40> expected{40, 0,    0,    0, 0xD0, 2, 0, 0, 0x40, 2, 0, 0, 1, 0, 32, 0, 0, 0, 0, 0,
                                           0,  0x50, 0x19, 0, 0,    0, 0, 0, 0,    0, 0, 0, 0, 0, 0,  0, 0, 0, 0, 0};
    EXPECT_EQ(bytes, expected);  // 720 * 576 * 4 = 1658880 = 0x195000
    const auto back = readDibHeader(bytes);
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->width, 720);
    EXPECT_EQ(back->height, 576);
    EXPECT_EQ(back->sizeImage, 1658880u);
    EXPECT_FALSE(readDibHeader(std::span(bytes).first(39)).has_value());
}

TEST(BitmapHandleDib, PositiveHeightMirrorsTheFrameAndTheBlockMirrorsItBack)
{
    const auto frame = distinctFrame();
    BitmapHandle bitmap;
    ASSERT_EQ(bitmap.loadDib(frameDibHeader(3, 2), bytesOf(frame)), 1);
    EXPECT_TRUE(bitmap.bottomUp());
    // The last memory row of the frame is the image's row 0.
    EXPECT_EQ(testing::at(bitmap, 0, 0), frame[3]);
    EXPECT_EQ(testing::at(bitmap, 2, 1), frame[2]);

    const auto block = bitmap.toDib();
    ASSERT_EQ(block.size(), 40u + frame.size() * 4);
    EXPECT_EQ(readDibHeader(block)->height, 2);
    EXPECT_EQ(std::memcmp(block.data() + 40, frame.data(), frame.size() * 4), 0);
}

TEST(BitmapHandleDib, NegativeHeightIsTopDownBothWays)
{
    const auto frame = distinctFrame();
    BitmapHandle bitmap;
    ASSERT_EQ(bitmap.loadDib(frameDibHeader(3, -2), bytesOf(frame)), 1);
    EXPECT_FALSE(bitmap.bottomUp());
    EXPECT_EQ(testing::at(bitmap, 0, 0), frame[0]);
    const auto block = bitmap.toDib();
    EXPECT_EQ(readDibHeader(block)->height, -2);
    EXPECT_EQ(std::memcmp(block.data() + 40, frame.data(), frame.size() * 4), 0);
}

TEST(BitmapHandleDib, RowsAreReadInStorageOrder)
{
    const auto frame = distinctFrame();
    BitmapHandle bitmap;
    ASSERT_EQ(bitmap.loadDib(frameDibHeader(3, 2), bytesOf(frame)), 1);
    std::array<uint32_t, 3> row{};
    auto rowBytes = std::as_writable_bytes(std::span(row));
    std::span<uint8_t> out(reinterpret_cast<uint8_t*>(rowBytes.data()), rowBytes.size());
    ASSERT_EQ(bitmap.readRow(0, out), 12u);
    EXPECT_EQ(row[0], frame[0]);
    ASSERT_EQ(bitmap.readRow(1, out.first(8)), 8u);
    EXPECT_EQ(row[1], frame[4]);
    EXPECT_EQ(row[2], frame[2]);  // untouched: only 8 bytes fitted
    EXPECT_EQ(bitmap.readRow(2, out), 0u);
    EXPECT_EQ(bitmap.readRow(-1, out), 0u);
}

TEST(BitmapHandleLife, CopiesShareThePixelsAndOutliveAFree)
{
    BitmapHandle original = testing::makeFlat(2, 2, bgra(10, 20, 30));
    BitmapHandle copy = original;
    original.pixels()[0] = bgra(1, 1, 1);
    EXPECT_EQ(copy.pixels()[0], bgra(1, 1, 1));

    original.free();
    EXPECT_TRUE(original.isNull());
    EXPECT_TRUE(original.pixels().empty());
    EXPECT_TRUE(original.toDib().empty());
    ASSERT_FALSE(copy.isNull());
    EXPECT_EQ(copy.pixels()[3], bgra(10, 20, 30));
}

TEST(BitmapHandleLife, RefusesWhatItCannotHold)
{
    const std::vector<uint32_t> bits(64, 0);
    auto refused = [&](DibHeader header, size_t byteCount) {
        BitmapHandle bitmap = testing::makeFlat(1, 1, 0);
        const bool result = bitmap.loadDib(header, bytesOf(bits).first(byteCount)) == 0;
        return result && bitmap.isNull();
    };
    EXPECT_TRUE(refused(frameDibHeader(0, 4), 256));
    EXPECT_TRUE(refused(frameDibHeader(-4, 4), 256));
    EXPECT_TRUE(refused(frameDibHeader(4, 0), 256));
    EXPECT_TRUE(refused(frameDibHeader(4, INT32_MIN), 256));
    EXPECT_TRUE(refused(frameDibHeader(1 << 20, 1 << 20), 256));
    EXPECT_TRUE(refused(frameDibHeader(4, 4), 63));  // bits one byte short
    EXPECT_FALSE(refused(frameDibHeader(4, 4), 64));
    DibHeader header = frameDibHeader(4, 4);
    header.bitCount = 24;
    EXPECT_TRUE(refused(header, 256));
    header = frameDibHeader(4, 4);
    header.compression = 3;
    EXPECT_TRUE(refused(header, 256));
    header = frameDibHeader(4, 4);
    header.size = 12;
    EXPECT_TRUE(refused(header, 256));
}

TEST(BitmapHandleLife, OperationsOnANullHandleChangeNothing)
{
    BitmapHandle bitmap;
    EXPECT_FALSE(changeHue(bitmap, 90));
    EXPECT_FALSE(changeSaturation(bitmap, -1000));
    EXPECT_FALSE(tint(bitmap, 0, 500, 500, 1000, 0, 0));
    EXPECT_FALSE(posterize(bitmap, 4));
    EXPECT_FALSE(addNoise(bitmap, 50, 0));
    EXPECT_FALSE(blur(bitmap, 2));
    EXPECT_FALSE(motionBlur(bitmap, 5, 9000, true));
    EXPECT_TRUE(bitmap.isNull());
}

}  // namespace
}  // namespace qx::imaging
