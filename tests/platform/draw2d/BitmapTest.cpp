#include "platform/draw2d/Bitmap.h"

#include <gtest/gtest.h>

namespace qx::draw2d {
namespace {

TEST(Bitmap, ConstructionStatusTellsUsableArguments)
{
    std::vector<uint32_t> memory(12);
    EXPECT_EQ(Bitmap(3, 4, 12, memory.data()).status(), Status::Ok);
    EXPECT_EQ(Bitmap(0, 4, 12, memory.data()).status(), Status::InvalidParameter);
    EXPECT_EQ(Bitmap(3, 4, 8, memory.data()).status(), Status::InvalidParameter);  // stride shorter than a row
    EXPECT_EQ(Bitmap(3, 4, 13, memory.data()).status(), Status::InvalidParameter);
    EXPECT_EQ(Bitmap(3, 4, 12, nullptr).status(), Status::InvalidParameter);
    EXPECT_EQ(Bitmap(-2, 5).status(), Status::InvalidParameter);
}

TEST(Bitmap, CloneCopiesRowsOfAPaddedBitmap)
{
    std::vector<uint32_t> memory = {1, 2, 0xEE, 3, 4, 0xEE};
    Bitmap padded(2, 2, 12, memory.data());
    const auto copy = padded.clone();
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->pitch(), 2);
    EXPECT_EQ(std::vector<uint32_t>(copy->data(), copy->data() + 4), (std::vector<uint32_t>{1, 2, 3, 4}));
}

TEST(Bitmap, LockBitsGivesTheRowsOnceAtATime)
{
    std::vector<uint32_t> memory(6, 0xFF000000u);
    Bitmap bitmap(3, 2, 12, memory.data());
    BitmapData data;
    ASSERT_EQ(bitmap.lockBits(data), Status::Ok);
    EXPECT_EQ(data.scan0, memory.data());
    EXPECT_EQ(data.stride, 12);
    EXPECT_EQ(bitmap.lockBits(data), Status::WrongState);
    EXPECT_EQ(bitmap.unlockBits(), Status::Ok);
    EXPECT_EQ(bitmap.unlockBits(), Status::WrongState);
}

TEST(Bitmap, OpacityIsForgottenWhenPixelsAreReachedForWriting)
{
    Bitmap bitmap(2, 1);
    EXPECT_FALSE(bitmap.opaque());
    std::ranges::fill(bitmap.row(0), 0xFF102030u);
    EXPECT_TRUE(bitmap.opaque());
    bitmap.row(0)[1] = 0x7F000000u;
    EXPECT_FALSE(bitmap.opaque());
}

}  // namespace
}  // namespace qx::draw2d
