// Windows file names on the POSIX file system: separators, case-insensitive lookup of
// names made on Windows, extensions.
#include "platform/os/FilePath.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace qx::os {
namespace {

namespace fs = std::filesystem;

TEST(FilePath, BackslashesBecomeSlashes)
{
    EXPECT_EQ(toPosixPath(u"/data\\Images\\logo.png"), "/data/Images/logo.png");
    EXPECT_EQ(toPosixPath(u"caf\u00e9\\a"), "caf\xc3\xa9/a");
}

TEST(FilePath, NamesMissingAsWrittenAreFoundWithoutRegardToCase)
{
    const fs::path root = fs::temp_directory_path() / ("qx-filepath-" + std::to_string(::getpid()));
    fs::create_directories(root / "Anims");
    std::ofstream(root / "Anims" / "Logo.SWF") << "x";
    const std::u16string base(root.u16string());
    EXPECT_EQ(findPath(base + u"\\anims\\logo.swf"), (root / "Anims" / "Logo.SWF").string());
    EXPECT_TRUE(pathExists(base + u"/ANIMS/LOGO.swf"));
    EXPECT_FALSE(pathExists(base + u"/Anims/absent.swf"));
    EXPECT_EQ(findPath(base + u"/none/x"), (root / "none" / "x").string());
    fs::remove_all(root);
}

TEST(FilePath, ExtensionIsTheLastDotOfTheLastPart)
{
    EXPECT_EQ(extensionOf(u"c:\\a.b\\logo.DAT"), u".DAT");
    EXPECT_EQ(extensionOf(u"/x.y/noext"), u"");
    EXPECT_EQ(extensionOf(u"movie.tar.mov"), u".mov");
    EXPECT_EQ(asciiLower(u"LOGO.Dat"), u"logo.dat");
}

}  // namespace
}  // namespace qx::os
