// What registration writes into the registry file and removes again, and how it treats a
// registry it cannot use.
#include "host/DynamicEffect.h"
#include "host/Module.h"
#include "host/ObjectTables.h"
#include "platform/com/ClassLoader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <unistd.h>

namespace qx {
namespace {

namespace fs = std::filesystem;

IUnknown* NoObject(IUnknown*, HRESULT* phr)
{
    *phr = E_NOTIMPL;
    return nullptr;
}

const CFactoryTemplate kSource[] = {
    {u"Quorvel 3D Anim Video Source", &CLSID_Anim3DVideoSource, NoObject, nullptr, &sudAnim3DVideoSource}};

std::string readText(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class Registration : public ::testing::Test {
protected:
    Registration() : folder_(fs::temp_directory_path() / ("qx-registration-" + std::to_string(::getpid())))
    {
        fs::remove_all(folder_);
    }
    ~Registration() override { fs::remove_all(folder_); }

    com::RegistryFile load()
    {
        com::RegistryFile registry;
        EXPECT_EQ(com::RegistryFile::load(path_, registry), S_OK);
        return registry;
    }

    fs::path folder_;
    fs::path path_ = folder_ / "qxcom" / "classes.reg";
    ModuleEntries entries{kSource, ObjectMap()};
    const std::string server = "/usr/lib/libqxdynamiceffects.so.5";
};

TEST_F(Registration, WritesEachClassWithItsProgIdsAndServer)
{
    ASSERT_EQ(entries.RegisterServer(path_, server), S_OK);
    const auto registry = load();
    const std::string key = "CLSID\\{0E09660B-CA83-487F-A9DC-024B3BB6B271}";
    EXPECT_EQ(registry.text(key), "QXDynamicEffect Class");
    EXPECT_EQ(registry.text(key, "AppID"), "{B0A32428-4974-44F5-87C8-D90893F4B0BF}");
    EXPECT_EQ(registry.text(key + "\\ProgID"), "QXDynamicEffects.QXDynamicEffect.5");
    EXPECT_EQ(registry.text(key + "\\VersionIndependentProgID"), "QXDynamicEffects.QXDynamicEffect");
    EXPECT_TRUE(registry.hasKey(key + "\\Programmable"));
    EXPECT_EQ(registry.text(key + "\\InprocServer32"), server);
    EXPECT_EQ(registry.text(key + "\\InprocServer32", "ThreadingModel"), "Both");
    EXPECT_EQ(registry.text(key + "\\TypeLib"), "{BD001E57-AC0F-4FF2-988D-4FD79178B9CC}");
    EXPECT_EQ(registry.text("QXDynamicEffects.QXCropTransform.4\\CLSID"), "{47B46FED-2816-4215-8C15-3B7BA3EBE927}");
    EXPECT_EQ(registry.text("QXDynamicEffects.QXCropTransform\\CurVer"), "QXDynamicEffects.QXCropTransform.4");
    EXPECT_EQ(registry.text("AppID\\{B0A32428-4974-44F5-87C8-D90893F4B0BF}"), "QXDynamicEffects");
    EXPECT_EQ(registry.text("AppID\\QXDynamicEffects.DLL", "AppID"), "{B0A32428-4974-44F5-87C8-D90893F4B0BF}");
    EXPECT_EQ(registry.text("TypeLib\\{BD001E57-AC0F-4FF2-988D-4FD79178B9CC}\\2.0"),
              "Bibliothèque de types QXDynamicEffects 2.0");
    for (const auto& row : ObjectMap()) {
        CLSID clsid{};
        EXPECT_EQ(com::CLSIDFromProgID(registry, row.script.versionIndependentProgId(), clsid), S_OK);
        EXPECT_EQ(clsid, *row.pclsid);
    }
}

TEST_F(Registration, WritesTheSourceFilterSetUp)
{
    ASSERT_EQ(entries.RegisterServer(path_, server), S_OK);
    const auto registry = load();
    const std::string source = "CLSID\\{0062AFE3-170C-4BD6-8E9D-C68234E377E1}";
    EXPECT_EQ(registry.text(source), "Quorvel 3D Anim Video Source");
    EXPECT_EQ(registry.text(source + "\\InprocServer32"), server);
    const std::string filter =
        "CLSID\\{083863F1-70DE-11D0-BD40-00A0C911CE86}\\Instance\\{0062AFE3-170C-4BD6-8E9D-C68234E377E1}";
    EXPECT_EQ(registry.text(filter, "FriendlyName"), "Quorvel 3D Anim Video Source");
    ASSERT_NE(registry.value(filter, "Merit"), nullptr);
    EXPECT_EQ(std::get<uint32_t>(*registry.value(filter, "Merit")), 0x200000u);
    const std::string pin = filter + "\\Pins\\Output";
    EXPECT_EQ(std::get<uint32_t>(*registry.value(pin, "Direction")), 1u);
    EXPECT_EQ(std::get<uint32_t>(*registry.value(pin, "IsRendered")), 0u);
    EXPECT_TRUE(registry.hasKey(pin + "\\Types\\{73646976-0000-0010-8000-00AA00389B71}\\"
                                      "{00000000-0000-0000-0000-000000000000}"));
}

TEST_F(Registration, UnregisteringRemovesOnlyTheModulesEntries)
{
    com::RegistryFile other;
    other.setValue("CLSID\\{11111111-2222-3333-4444-555555555555}\\InprocServer32", "", std::string("/other.so"));
    other.setValue("Other.Thing\\CLSID", "", std::string("{11111111-2222-3333-4444-555555555555}"));
    ASSERT_EQ(other.save(path_), S_OK);
    ASSERT_EQ(entries.RegisterServer(path_, server), S_OK);
    ASSERT_EQ(entries.RegisterServer(path_, server), S_OK);  // again: the same entries, once
    ASSERT_EQ(entries.UnregisterServer(path_), S_OK);
    EXPECT_EQ(readText(path_), other.text());
}

TEST_F(Registration, ARegistryThatCannotBeUsedIsRefusedAndLeftAsItWas)
{
    EXPECT_EQ(entries.UnregisterServer(path_), HRESULT_FILE_NOT_FOUND);
    EXPECT_FALSE(fs::exists(path_));

    fs::create_directories(path_.parent_path());
    const std::string corrupt = "QXCOM Registry 1\n[CLSID\\{0E09660B\n";
    std::ofstream(path_) << corrupt;
    EXPECT_EQ(entries.RegisterServer(path_, server), REGDB_E_INVALIDVALUE);
    EXPECT_EQ(entries.UnregisterServer(path_), REGDB_E_INVALIDVALUE);
    EXPECT_EQ(readText(path_), corrupt);

    const fs::path blocked = folder_ / "file" / "classes.reg";
    std::ofstream(folder_ / "file") << "";
    EXPECT_EQ(entries.RegisterServer(blocked, server), REGDB_E_WRITEREGDB);
}

}  // namespace
}  // namespace qx
