#include "qx4d/content/Chunk.h"

#include "tests/qx4d/content/ChunkBytes.h"

#include <gtest/gtest.h>

#include <string>

namespace qx4d {
namespace {

using test::ChunkBytes;

TEST(Chunk, IdsAreTheCharactersInFileOrderAsALittleEndianWord)
{
    EXPECT_EQ(ChunkId("KEY "), 0x2059454Bu);
    const uint8_t bytes[] = {'N', 'A', 'M', 'E', 0, 0, 0, 0};
    Chunk outer(0, bytes, sizeof bytes);
    Chunk inner;
    ASSERT_TRUE(outer.NextChunk(inner));
    EXPECT_EQ(inner.id, ChunkId("NAME"));
}

TEST(Chunk, NumbersAreLittleEndian)
{
    ChunkBytes data;
    data.Raw("\x01\x02\x03\x04\x05\x06", 6).F32(-2.5f);
    Chunk chunk(0, data.bytes.data(), data.bytes.size());
    EXPECT_EQ(chunk.ReadU32(), 0x04030201u);
    EXPECT_EQ(chunk.ReadU16(), 0x0605u);
    EXPECT_EQ(chunk.ReadF32(), -2.5f);
    EXPECT_EQ(chunk.Remaining(), 0u);
}

TEST(Chunk, SubChunksFollowEachOtherWithoutPadding)
{
    ChunkBytes data;
    data.Open("AAAA").U16(7).Close().Open("BB  ").Text("x").Close().Raw("\x01\x02\x03", 3);
    Chunk outer(0, data.bytes.data(), data.bytes.size());
    Chunk sub;
    ASSERT_TRUE(outer.NextChunk(sub));
    EXPECT_EQ(sub.id, ChunkId("AAAA"));
    EXPECT_EQ(sub.size, 2u);
    EXPECT_EQ(sub.ReadU16(), 7u);
    ASSERT_TRUE(outer.NextChunk(sub));
    EXPECT_EQ(sub.id, ChunkId("BB  "));
    EXPECT_EQ(sub.ReadString(), u"x");
    // Three bytes are left: not enough for a header.
    EXPECT_FALSE(outer.NextChunk(sub));
    EXPECT_EQ(outer.Remaining(), 3u);
}

TEST(Chunk, ReadsNeverPassTheBody)
{
    ChunkBytes data;
    data.Open("OUTR").Open("SHRT").U16(0x1234).Close().Close();
    // Claim a body far longer than the buffer.
    data.bytes[12] = 0xFF;
    data.bytes[13] = 0xFF;
    Chunk file(0, data.bytes.data(), data.bytes.size());
    Chunk outer;
    ASSERT_TRUE(file.NextChunk(outer));
    Chunk inner;
    ASSERT_TRUE(outer.NextChunk(inner));
    EXPECT_EQ(inner.size, 0xFFFFu + 0u);
    EXPECT_EQ(inner.Remaining(), 2u);
    EXPECT_EQ(inner.ReadU32(), 0x1234u);  // the missing bytes read as zero
    EXPECT_EQ(inner.ReadF32(), 0.0f);
    EXPECT_EQ(inner.Remaining(), 0u);
    EXPECT_FALSE(outer.NextChunk(inner));
}

TEST(Chunk, StringsAreAnsiAndEndAtTheirZero)
{
    ChunkBytes data;
    data.Text("Caf\xE9").Text("").Raw("no end", 6);
    Chunk chunk(0, data.bytes.data(), data.bytes.size());
    EXPECT_EQ(chunk.ReadString(), u"Caf\u00E9");
    EXPECT_EQ(chunk.ReadString(), u"");
    EXPECT_EQ(chunk.ReadString(), u"no end");
    EXPECT_EQ(chunk.Remaining(), 0u);
    EXPECT_EQ(chunk.ReadString(), u"");
}

TEST(Chunk, LongStringsKeepTheirFirst255Characters)
{
    const std::string name(300, 'n');
    ChunkBytes data;
    data.Text(name).U16(42);
    Chunk chunk(0, data.bytes.data(), data.bytes.size());
    EXPECT_EQ(chunk.ReadString(), std::u16string(255, u'n'));
    EXPECT_EQ(chunk.ReadU16(), 42u);  // the cursor still ends behind the zero
}

}  // namespace
}  // namespace qx4d
