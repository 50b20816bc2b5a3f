#include "platform/com/RegistryFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <unistd.h>

namespace qx::com {
namespace {

namespace fs = std::filesystem;

std::string readText(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class TemporaryFolder : public ::testing::Test {
protected:
    TemporaryFolder() : folder_(fs::temp_directory_path() / ("qx-registry-" + std::to_string(::getpid())))
    {
        fs::remove_all(folder_);
    }
    ~TemporaryFolder() override { fs::remove_all(folder_); }
    fs::path folder_;
};

TEST(RegistryFile, TextRoundTripsWithEscapesAndNumbers)
{
    RegistryFile registry;
    ASSERT_TRUE(registry.setValue("CLSID\\{X}\\InprocServer32", "", std::string("/usr/lib/a \"b\"\\c\n.so")));
    ASSERT_TRUE(registry.setValue("CLSID\\{X}\\InprocServer32", "ThreadingModel", std::string("Both")));
    ASSERT_TRUE(registry.setValue("Filter", "Merit", uint32_t(0x200000)));
    ASSERT_TRUE(registry.createKey("CLSID\\{X}\\Programmable"));
    ASSERT_TRUE(registry.setValue("TypeLib\\2.0", "", std::string("Bibliothèque de types")));

    RegistryFile read;
    ASSERT_TRUE(RegistryFile::parse(registry.text(), read));
    EXPECT_EQ(read.text(), registry.text());
    EXPECT_EQ(read.text("CLSID\\{X}\\InprocServer32"), "/usr/lib/a \"b\"\\c\n.so");
    EXPECT_EQ(read.text("TypeLib\\2.0"), "Bibliothèque de types");
    ASSERT_NE(read.value("Filter", "Merit"), nullptr);
    EXPECT_EQ(std::get<uint32_t>(*read.value("Filter", "Merit")), 0x200000u);
    EXPECT_EQ(read.text("Filter", "Merit"), std::nullopt);  // a number is no text
    EXPECT_TRUE(read.hasKey("CLSID\\{X}\\Programmable"));
    EXPECT_NE(registry.text().find("\"Merit\"=dword:00200000"), std::string::npos);
}

TEST(RegistryFile, KeysAndNamesIgnoreAsciiCase)
{
    RegistryFile registry;
    registry.setValue("QXDynamicEffects.QXCompositor\\CLSID", "", std::string("{A}"));
    EXPECT_EQ(registry.text("qxdynamiceffects.qxcompositor\\clsid"), "{A}");
    registry.setValue("QXDYNAMICEFFECTS.QXCOMPOSITOR\\CLSID", "", std::string("{B}"));
    EXPECT_EQ(registry.keyCount(), 1u);
    EXPECT_EQ(registry.text("QXDynamicEffects.QXCompositor\\CLSID"), "{B}");
}

TEST(RegistryFile, RemovingAKeyTakesItsSubkeysAndNothingBeside)
{
    RegistryFile registry;
    registry.createKey("CLSID\\{A}\\InprocServer32");
    registry.createKey("CLSID\\{A}");
    registry.createKey("CLSID\\{A}B");
    registry.createKey("CLSID\\{C}");
    EXPECT_TRUE(registry.hasKey("CLSID"));  // implied by the keys under it
    EXPECT_TRUE(registry.removeTree("clsid\\{a}"));
    EXPECT_FALSE(registry.hasKey("CLSID\\{A}"));
    EXPECT_FALSE(registry.hasKey("CLSID\\{A}\\InprocServer32"));
    EXPECT_TRUE(registry.hasKey("CLSID\\{A}B"));
    EXPECT_TRUE(registry.hasKey("CLSID\\{C}"));
    EXPECT_FALSE(registry.removeTree("CLSID\\{A}"));
}

TEST(RegistryFile, MalformedTextIsRefusedWhole)
{
    const char* const bad[] = {
        "",
        "[Key]\n@=\"no header\"\n",
        "QXCOM Registry 2\n",
        "QXCOM Registry 1\n@=\"value before any key\"\n",
        "QXCOM Registry 1\n[Key\n",
        "QXCOM Registry 1\n[\\Key]\n",
        "QXCOM Registry 1\n[A\\\\B]\n",
        "QXCOM Registry 1\n[Key]\n@=\"unterminated\n",
        "QXCOM Registry 1\n[Key]\n@=\"bad \\q escape\"\n",
        "QXCOM Registry 1\n[Key]\n@=\"short \\x4\"\n",
        "QXCOM Registry 1\n[Key]\n\"Merit\"=dword:\n",
        "QXCOM Registry 1\n[Key]\n\"Merit\"=dword:123456789\n",
        "QXCOM Registry 1\n[Key]\n\"Merit\"=dword:12G4\n",
        "QXCOM Registry 1\n[Key]\n\"\"=\"empty name\"\n",
        "QXCOM Registry 1\n[Key]\n@=\"text\" trailing\n",
        "QXCOM Registry 1\n[Key]\n@=\"tab\tinside\"\n",
    };
    for (const char* text : bad) {
        RegistryFile registry;
        registry.createKey("Kept");
        EXPECT_FALSE(RegistryFile::parse(text, registry)) << text;
        EXPECT_TRUE(registry.hasKey("Kept")) << text;
    }
    RegistryFile fine;
    EXPECT_TRUE(RegistryFile::parse("; written by hand\r\nQXCOM Registry 1\r\n\r\n[Key]\r\n@=\"x\"\r\n", fine));
    EXPECT_EQ(fine.text("Key"), "x");
}

TEST_F(TemporaryFolder, SavedFileLoadsBackAndReplacesTheOldOneWhole)
{
    const fs::path path = folder_ / "qxcom" / "classes.reg";
    RegistryFile registry;
    EXPECT_EQ(RegistryFile::load(path, registry), HRESULT_FILE_NOT_FOUND);
    registry.setValue("A", "", std::string("first"));
    ASSERT_EQ(registry.save(path), S_OK);
    registry.setValue("A", "", std::string("second"));
    ASSERT_EQ(registry.save(path), S_OK);
    RegistryFile read;
    ASSERT_EQ(RegistryFile::load(path, read), S_OK);
    EXPECT_EQ(read.text("A"), "second");
    // No temporary file is left beside it.
    EXPECT_EQ(std::distance(fs::directory_iterator(path.parent_path()), fs::directory_iterator()), 1);
}

TEST_F(TemporaryFolder, CorruptOrUnwritableFilesGiveTheirCodes)
{
    fs::create_directories(folder_);
    const fs::path corrupt = folder_ / "corrupt.reg";
    std::ofstream(corrupt) << "QXCOM Registry 1\n[Key]\nnot a value\n";
    RegistryFile registry;
    EXPECT_EQ(RegistryFile::load(corrupt, registry), REGDB_E_INVALIDVALUE);

    // The folder of the file is a file: nothing can be written there.
    const fs::path blocker = folder_ / "blocker";
    std::ofstream(blocker) << "";
    registry.setValue("A", "", std::string("x"));
    EXPECT_EQ(registry.save(blocker / "classes.reg"), REGDB_E_WRITEREGDB);
    EXPECT_EQ(readText(blocker), "");
}

TEST(RegistryFile, DefaultPathFollowsTheDataHome)
{
    const char* saved = std::getenv("XDG_DATA_HOME");
    const std::string restore = saved ? saved : "";
    ::setenv("XDG_DATA_HOME", "/data/home", 1);
    EXPECT_EQ(RegistryFile::defaultPath(), fs::path("/data/home/qxcom/classes.reg"));
    ::setenv("XDG_DATA_HOME", "relative", 1);  // not absolute: ignored, as the base directory rules say
    EXPECT_EQ(RegistryFile::defaultPath().filename(), "classes.reg");
    EXPECT_NE(RegistryFile::defaultPath().string().find(".local/share/qxcom"), std::string::npos);
    if (saved) {
        ::setenv("XDG_DATA_HOME", restore.c_str(), 1);
    } else {
        ::unsetenv("XDG_DATA_HOME");
    }
}

}  // namespace
}  // namespace qx::com
