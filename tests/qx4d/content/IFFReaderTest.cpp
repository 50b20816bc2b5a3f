#include "qx4d/content/IFFReader.h"

#include "qx4d/core/FileManager.h"
#include "tests/qx4d/content/ChunkBytes.h"
#include "tests/qx4d/core/TestFiles.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace qx4d {
namespace {

using test::ChunkBytes;

std::unique_ptr<uint8_t[]> Copy(const std::vector<uint8_t>& bytes)
{
    auto copy = std::make_unique<uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.get());
    return copy;
}

TEST(IFFReader, TheFirstHeaderIsTheReadersOwnChunk)
{
    ChunkBytes file;
    file.Open("FORM").U32(2).Open("NULL").Text("root").Close().Close().Raw("trailing", 8);
    IFFReader reader;
    ASSERT_TRUE(reader.SetBuffer(Copy(file.bytes), file.bytes.size()));
    EXPECT_EQ(reader.id, ChunkId("FORM"));
    EXPECT_EQ(reader.ReadU32(), 2u);
    Chunk item;
    ASSERT_TRUE(reader.NextChunk(item));
    EXPECT_EQ(item.id, ChunkId("NULL"));
    EXPECT_EQ(item.ReadString(), u"root");
    EXPECT_FALSE(reader.NextChunk(item));  // the bytes behind the body are not the chunk's
}

TEST(IFFReader, ShortOrMissingFilesAreRefused)
{
    IFFReader reader;
    EXPECT_FALSE(reader.SetBuffer(nullptr, 100));
    const std::vector<uint8_t> seven = {'F', 'O', 'R', 'M', 0, 0, 0};
    EXPECT_FALSE(reader.SetBuffer(Copy(seven), seven.size()));
    EXPECT_EQ(reader.Remaining(), 0u);

    // A stated size beyond the file ends with the file.
    const std::vector<uint8_t> claims = {'F', 'O', 'R', 'M', 0xFF, 0xFF, 0xFF, 0x7F, 1, 2};
    ASSERT_TRUE(reader.SetBuffer(Copy(claims), claims.size()));
    EXPECT_EQ(reader.Remaining(), 2u);
}

TEST(IFFReader, OpensThroughTheFileManager)
{
    test::TempFolder folder;
    ChunkBytes file;
    file.Open("LWO3").U32(0).Close();
    folder.Write("Objects/Box.qxo", std::string(file.bytes.begin(), file.bytes.end()));
    FileManager files;
    ASSERT_TRUE(files.Mount(u"OBJECTS", folder.Wide("Objects")));

    IFFReader reader;
    ASSERT_TRUE(reader.Open(u"OBJECTS:Box.qxo"));
    EXPECT_EQ(reader.id, ChunkId("LWO3"));
    EXPECT_EQ(reader.size, 4u);
    EXPECT_FALSE(reader.Open(u"OBJECTS:Missing.qxo"));
}

}  // namespace
}  // namespace qx4d
