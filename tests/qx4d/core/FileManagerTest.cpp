// The file manager over folders: aliases, stacking, real paths and the host mapping of
// logical paths. Archives have their own tests.
#include "qx4d/core/FileManager.h"

#include "tests/qx4d/core/TestFiles.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace qx4d {
namespace {

using test::loadText;

class FileManagerFolders : public ::testing::Test {
protected:
    void SetUp() override
    {
        first.Write("title.txt", "first title");
        first.Write("Misc/Cube.afx", "cube");
        first.Write("empty.txt", "");
        second.Write("title.txt", "second title");
        second.Write("only_second.txt", "second only");
        second.Write("Misc/Plane.afx", "plane");
    }

    std::string load(std::u16string_view path) { return loadText(files, path); }

    test::TempFolder first;
    test::TempFolder second;
    FileManager files;
};

TEST_F(FileManagerFolders, StackedSourcesAreAskedInMountingOrder)
{
    ASSERT_TRUE(files.Mount(u"SCENES", first.Wide()));
    ASSERT_TRUE(files.Mount(u"SCENES", second.Wide()));
    EXPECT_EQ(load(u"SCENES:title.txt"), "first title");
    EXPECT_EQ(load(u"SCENES:only_second.txt"), "second only");
    EXPECT_EQ(load(u"SCENES:Misc\\Plane.afx"), "plane");
    EXPECT_EQ(load(u"SCENES:nothing.txt"), "<null>");
}

TEST_F(FileManagerFolders, AliasNamesCompareWithCase)
{
    ASSERT_TRUE(files.Mount(u"SCENES", first.Wide()));
    EXPECT_EQ(load(u"scenes:title.txt"), "<null>");
    EXPECT_EQ(load(u"OTHER:title.txt"), "<null>");
    // A drive-relative form is an alias called "C".
    EXPECT_EQ(load(u"C:title.txt"), "<null>");
}

TEST_F(FileManagerFolders, FileNamesFallBackToACaseFreeMatch)
{
    ASSERT_TRUE(files.Mount(u"SCENES", first.Wide()));
    EXPECT_EQ(load(u"SCENES:misc\\CUBE.AFX"), "cube");
    EXPECT_EQ(load(u"SCENES:MISC\\cube.afx"), "cube");
    EXPECT_EQ(load(u"SCENES:Misc\\Cub.afx"), "<null>");
}

TEST_F(FileManagerFolders, EmptyFilesReadAsZeroLengthBuffersAndFailuresLeaveTheSize)
{
    ASSERT_TRUE(files.Mount(u"SCENES", first.Wide()));
    size_t size = 99;
    std::unique_ptr<uint8_t[]> bytes = files.Load(u"SCENES:empty.txt", size);
    EXPECT_NE(bytes, nullptr);
    EXPECT_EQ(size, 0u);
    size = 99;
    EXPECT_EQ(files.Load(u"SCENES:missing.txt", size), nullptr);
    EXPECT_EQ(size, 99u);
    // A folder is no file.
    EXPECT_EQ(files.Load(u"SCENES:Misc", size), nullptr);
}

TEST_F(FileManagerFolders, PathsWithoutAliasAskEverySource)
{
    ASSERT_TRUE(files.Mount(u"A", second.Wide()));
    ASSERT_TRUE(files.Mount(u"B", first.Wide()));
    EXPECT_EQ(load(u"title.txt"), "second title");
    EXPECT_EQ(load(u"Misc\\Cube.afx"), "cube");
}

TEST_F(FileManagerFolders, RealPathsAreReadDirectly)
{
    // "X:\" paths are host paths with the drive dropped.
    std::u16string real = u"C:" + first.Wide("title.txt");
    std::replace(real.begin(), real.end(), u'/', u'\\');
    EXPECT_EQ(load(real), "first title");
    EXPECT_EQ(load(u"C:\\no\\such\\file.txt"), "<null>");
}

TEST_F(FileManagerFolders, AFolderInsideAnAlias)
{
    ASSERT_TRUE(files.Mount(u"SCENES", first.Wide()));
    ASSERT_TRUE(files.Mount(u"SCENES", second.Wide()));
    // Both sources have Misc; the prefix gets its backslash.
    ASSERT_TRUE(files.Mount(u"MISC", u"SCENES:Misc"));
    EXPECT_EQ(load(u"MISC:Cube.afx"), "cube");
    EXPECT_EQ(load(u"MISC:Plane.afx"), "plane");
    EXPECT_EQ(load(u"MISC:title.txt"), "<null>");

    EXPECT_FALSE(files.Mount(u"NONE", u"SCENES:NoSuchFolder"));
    EXPECT_EQ(load(u"NONE:Cube.afx"), "<null>");
    EXPECT_FALSE(files.Mount(u"LOST", u"MISSING:Misc"));
    EXPECT_EQ(load(u"MISC:Cube.afx"), "cube");
}

TEST_F(FileManagerFolders, AFailedInnerMountDropsTheLastAliasMade)
{
    ASSERT_TRUE(files.Mount(u"A", first.Wide()));
    ASSERT_TRUE(files.Mount(u"B", second.Wide()));
    // "A" exists already, nothing is added to it, and the last alias made goes: "B".
    EXPECT_FALSE(files.Mount(u"A", u"A:NoSuchFolder"));
    EXPECT_EQ(load(u"A:title.txt"), "first title");
    EXPECT_EQ(load(u"B:title.txt"), "<null>");
}

TEST_F(FileManagerFolders, MountFailsWithoutFolderOrArchive)
{
    EXPECT_FALSE(files.Mount(u"X", first.Wide("no_such_folder")));
    EXPECT_FALSE(files.Mount(u"X", first.Wide("no_such.zip")));
    EXPECT_EQ(load(u"X:title.txt"), "<null>");
    // Archives are known by nothing but the split at the dot: a text file mounts as an
    // archive with no entries.
    EXPECT_TRUE(files.Mount(u"Z", first.Wide("title.txt")));
    EXPECT_EQ(load(u"Z:title.txt"), "<null>");
}

TEST_F(FileManagerFolders, IsTheEngineWideInstanceWhileItLives) { EXPECT_EQ(FileManager::Instance(), &files); }

TEST(FileManagerSingleton, ClearedWhenDestroyed)
{
    EXPECT_EQ(FileManager::Instance(), nullptr);
    {
        FileManager files;
        EXPECT_EQ(FileManager::Instance(), &files);
    }
    EXPECT_EQ(FileManager::Instance(), nullptr);
}

TEST(FolderFileSystem, InitCountAndDirectories)
{
    test::TempFolder folder;
    folder.Write("a.txt", "a");
    folder.Write("b.txt", "b");
    folder.Write("Sub/c.txt", "c");
    folder.MakeFolder("Empty");

    FileSystem files;
    EXPECT_FALSE(files.Init(folder.Wide("a.txt"), u""));
    EXPECT_FALSE(files.Init(folder.Wide("missing"), u""));
    ASSERT_TRUE(files.Init(folder.Wide(), u"ignored"));
    EXPECT_EQ(files.CountFiles(), 2u);  // one level, folders not counted
    EXPECT_TRUE(files.HasDirectory(u"Sub"));
    EXPECT_TRUE(files.HasDirectory(u"sub"));
    EXPECT_TRUE(files.HasDirectory(u"Empty\\"));
    EXPECT_TRUE(files.HasDirectory(u""));
    EXPECT_FALSE(files.HasDirectory(u"a.txt"));
    EXPECT_FALSE(files.HasDirectory(u"Nope"));
    EXPECT_EQ(loadText(files, u"sub\\C.TXT"), "c");

    FileSystem missing;
    EXPECT_EQ(missing.CountFiles(), 0u);
}

}  // namespace
}  // namespace qx4d
