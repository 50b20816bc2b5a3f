// Archives made at build time by Python's zipfile, Info-ZIP's zip and, for header cases no
// tool writes, byte by byte (tests/qx4d/core/make_archives.py).
#include "qx4d/core/ZipFileSystem.h"

#include "qx4d/core/FileManager.h"
#include "tests/qx4d/core/TestFiles.h"

#include <gtest/gtest.h>

#include <string>

namespace qx4d {
namespace {

using test::loadText;

std::u16string archive(const std::string& name)
{
    return qx::os::fromUtf8(std::string(QX_CONTENT_ARCHIVES "/") + name);
}

std::string repeat(std::string_view text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

// The generator of the script's incompressible bytes.
std::string noiseBytes(size_t count)
{
    uint32_t state = 1;
    std::string bytes;
    for (size_t i = 0; i < count; ++i) {
        state = (state * 1103515245u + 12345u) & 0x7FFFFFFFu;
        bytes.push_back(char((state >> 16) & 0xFF));
    }
    return bytes;
}

class ZipArchive : public ::testing::Test {
protected:
    std::string load(std::u16string_view path) { return loadText(zip, path); }

    ZipFileSystem zip;
};

TEST_F(ZipArchive, PythonStoredAndDeflatedEntries)
{
    ASSERT_TRUE(zip.Open(archive("python.zip")));
    std::string everyByte;
    for (int i = 0; i < 256; ++i) everyByte.push_back(char(i));
    EXPECT_EQ(load(u"stored.bin"), everyByte);
    EXPECT_EQ(load(u"deflated.txt"), repeat("repeat ", 1000));
    EXPECT_EQ(load(u"Scenes\\Misc\\Cube.afx"), "Camera\n{\n}\n");
    EXPECT_EQ(load(u"x\\y.txt"), "inside x");
}

TEST_F(ZipArchive, LookupsSplitAtBackslashesAndIgnoreCase)
{
    ASSERT_TRUE(zip.Open(archive("python.zip")));
    EXPECT_EQ(load(u"a\\b.txt"), "upper case entry");
    EXPECT_EQ(load(u"A\\B.TXT"), "upper case entry");
    EXPECT_EQ(load(u"a/b.txt"), "<null>");  // the slash is part of the name searched for
    EXPECT_EQ(load(u"\\a\\b.txt"), "<null>");
    // "Dir" and "dir" are two folders; a lookup takes the first that matches.
    EXPECT_EQ(load(u"DIR\\ONE.TXT"), "one");
    EXPECT_EQ(load(u"dir\\two.txt"), "<null>");
    // Of two entries of one name, the first wins.
    EXPECT_EQ(load(u"dup.txt"), "first");
}

TEST_F(ZipArchive, DirectoriesAndEmptyEntries)
{
    ASSERT_TRUE(zip.Open(archive("python.zip")));
    // Not indexed: the entry "x/" and the stored empty file. Indexed: everything else,
    // the deflated empty file too, whose two bytes of deflate are data.
    EXPECT_EQ(zip.CountFiles(), 13u);
    EXPECT_EQ(load(u"empty_stored.txt"), "<null>");
    size_t size = 7;
    EXPECT_NE(zip.Load(u"empty_deflated.txt", size), nullptr);
    EXPECT_EQ(size, 0u);
    EXPECT_TRUE(zip.HasDirectory(u"x"));
    EXPECT_TRUE(zip.HasDirectory(u"X\\"));
    EXPECT_TRUE(zip.HasDirectory(u""));
    EXPECT_TRUE(zip.HasDirectory(u"scenes\\misc"));
    EXPECT_FALSE(zip.HasDirectory(u"x\\y.txt"));
    EXPECT_FALSE(zip.HasDirectory(u"Scenes/Misc"));
}

TEST_F(ZipArchive, InnerFolderOfTheMount)
{
    ASSERT_TRUE(zip.Open(archive("python.zip") + u"\\data\\"));
    EXPECT_EQ(zip.CountFiles(), 2u);
    EXPECT_EQ(load(u"a.txt"), "data a");
    EXPECT_EQ(load(u"Sub\\C.txt"), "data sub c");
    EXPECT_EQ(load(u"data\\a.txt"), "<null>");
    EXPECT_EQ(load(u"other\\b.txt"), "<null>");
}

TEST_F(ZipArchive, InnerFolderWithoutSeparatorLeavesAnEmptyFolderName)
{
    ASSERT_TRUE(zip.Open(archive("python.zip") + u"\\data"));
    EXPECT_EQ(load(u"a.txt"), "<null>");
    EXPECT_EQ(load(u"\\a.txt"), "data a");
    EXPECT_TRUE(zip.HasDirectory(u"\\sub"));
}

TEST_F(ZipArchive, RelativePathsCountFromTheProgramFolder)
{
    // The archives are made in "archives" beside the test program.
    ASSERT_TRUE(zip.Open(u"archives\\python.zip\\x\\"));
    EXPECT_EQ(load(u"y.txt"), "inside x");
}

TEST_F(ZipArchive, InfoZipTree)
{
    ASSERT_TRUE(zip.Open(archive("infozip.zip")));
    EXPECT_EQ(zip.CountFiles(), 4u);
    EXPECT_TRUE(load(u"images\\cartes\\SAMPLE 1.DDS") == noiseBytes(5000));
    EXPECT_EQ(load(u"Effects\\common.fxh"), repeat("float4x4 World;\r\n", 200));
    EXPECT_EQ(load(u"Scenes\\Misc\\Cube.afx"), "Camera\r\n{\r\n}\r\n");
    EXPECT_EQ(load(u"mixed\\case.txt"), "mixed case");
    EXPECT_EQ(load(u"Scenes\\Empty.txt"), "<null>");
    EXPECT_TRUE(zip.HasDirectory(u"Images\\Cartes\\"));
}

TEST_F(ZipArchive, StreamedOutputIsNotReadable)
{
    // zip writing to a pipe puts 0xFFFFFFFF for both sizes in the local header: the entry
    // is indexed with those sizes, its data can't be had and the scan ends there.
    ASSERT_TRUE(zip.Open(archive("streamed.zip")));
    EXPECT_EQ(zip.CountFiles(), 1u);
    EXPECT_EQ(load(u"-"), "<null>");
}

TEST_F(ZipArchive, EntryNamesAreInTheOemCodePage)
{
    ASSERT_TRUE(zip.Open(archive("oem.zip")));
    EXPECT_EQ(load(u"café.txt"), "cafe");
    EXPECT_EQ(load(u"CAFé.TXT"), "cafe");
    EXPECT_EQ(load(u"CAFÉ.TXT"), "<null>");  // only ASCII letters fold
}

TEST_F(ZipArchive, TrailingDescriptorsByTheirFlag)
{
    ASSERT_TRUE(zip.Open(archive("descriptors.zip")));
    EXPECT_EQ(zip.CountFiles(), 4u);
    EXPECT_EQ(load(u"flagged.txt"), "flagged");
    EXPECT_EQ(load(u"after_flagged.txt"), "after");
    EXPECT_EQ(load(u"bit3.txt"), "bit three");
    EXPECT_EQ(load(u"after_bit3.txt"), "after bit 3");
}

TEST_F(ZipArchive, LongNamesAreCut)
{
    ASSERT_TRUE(zip.Open(archive("longname.zip")));
    EXPECT_EQ(load(std::u16string(255, u'n')), "long");
    EXPECT_EQ(load(std::u16string(300, u'n')), "<null>");
    EXPECT_EQ(load(u"next.txt"), "next");
}

TEST_F(ZipArchive, SignaturesAreReadFourBytesAtATime)
{
    ASSERT_TRUE(zip.Open(archive("junk4.zip")));
    EXPECT_EQ(load(u"a.txt"), "aligned");
    ZipFileSystem misaligned;
    ASSERT_TRUE(misaligned.Open(archive("junk3.zip")));
    EXPECT_EQ(misaligned.CountFiles(), 0u);
}

TEST_F(ZipArchive, DamagedArchivesKeepWhatWasIndexed)
{
    ASSERT_TRUE(zip.Open(archive("cut.zip")));
    EXPECT_EQ(zip.CountFiles(), 2u);
    EXPECT_EQ(load(u"x\\y.txt"), "inside x");
    EXPECT_EQ(load(u"A\\B.TXT"), "upper case entry");

    ZipFileSystem boastful;
    ASSERT_TRUE(boastful.Open(archive("claims_too_much.zip")));
    size_t size = 0;
    EXPECT_EQ(boastful.Load(u"big.txt", size), nullptr);
}

TEST_F(ZipArchive, OpenFailures)
{
    EXPECT_FALSE(zip.Open(archive("missing.zip")));
    EXPECT_FALSE(zip.Open(u"/no/dot/here"));
    // A folder is no archive, even with a dot in its path.
    EXPECT_FALSE(zip.Open(qx::os::fromUtf8(QX_CONTENT_ARCHIVES) + u"/.."));
}

TEST(ZipMounts, ArchivesBehindAliases)
{
    FileManager files;
    ASSERT_TRUE(files.Mount(u"SCENES", archive("first.zip") + u"\\Scenes\\"));
    ASSERT_TRUE(files.Mount(u"SCENES", archive("second.zip") + u"\\Scenes\\"));
    ASSERT_TRUE(files.Mount(u"IMAGES", archive("infozip.zip") + u"\\Images\\"));
    ASSERT_TRUE(files.Mount(u"CARTES", u"IMAGES:cartes"));
    EXPECT_EQ(loadText(files, u"SCENES:title.txt"), "from first");
    EXPECT_EQ(loadText(files, u"SCENES:Only_Second.txt"), "second only");
    EXPECT_EQ(loadText(files, u"SCENES:only_first.txt"), "first only");
    EXPECT_TRUE(loadText(files, u"CARTES:sample 1.dds") == noiseBytes(5000));
    EXPECT_FALSE(files.Mount(u"NONE", u"IMAGES:Nothing"));
}

}  // namespace
}  // namespace qx4d
