#include "platform/com/ClassLoader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <dlfcn.h>
#include <unistd.h>

namespace qx::com {
namespace {

namespace fs = std::filesystem;

constexpr CLSID kClass = guid("{0E09660B-CA83-487F-A9DC-024B3BB6B271}");

TEST(ClassLoader, ProgIdsLeadToTheirClassThroughCurVer)
{
    RegistryFile registry;
    registry.setValue("Vendor.Thing.2\\CLSID", "", formatGuid(kClass));
    registry.setValue("Vendor.Thing", "", std::string("Thing Class"));
    registry.setValue("Vendor.Thing\\CurVer", "", std::string("Vendor.Thing.2"));
    registry.setValue("Loop.A\\CurVer", "", std::string("Loop.B"));
    registry.setValue("Loop.B\\CurVer", "", std::string("Loop.A"));
    registry.setValue("Broken.1\\CLSID", "", std::string("{not a guid}"));

    CLSID clsid{};
    EXPECT_EQ(CLSIDFromProgID(registry, "Vendor.Thing.2", clsid), S_OK);
    EXPECT_EQ(clsid, kClass);
    clsid = {};
    EXPECT_EQ(CLSIDFromProgID(registry, "vendor.thing", clsid), S_OK);
    EXPECT_EQ(clsid, kClass);
    EXPECT_EQ(CLSIDFromProgID(registry, "Vendor.Other", clsid), CO_E_CLASSSTRING);
    EXPECT_EQ(CLSIDFromProgID(registry, "Loop.A", clsid), CO_E_CLASSSTRING);
    EXPECT_EQ(CLSIDFromProgID(registry, "Broken.1", clsid), CO_E_CLASSSTRING);
    EXPECT_EQ(CLSIDFromProgID(registry, "", clsid), CO_E_CLASSSTRING);
}

class Loader : public ::testing::Test {
protected:
    Loader() : path_(fs::temp_directory_path() / ("qx-loader-" + std::to_string(::getpid()) + ".reg")) {}
    ~Loader() override { fs::remove(path_); }

    void registerServer(const std::string& server)
    {
        RegistryFile registry;
        registry.setValue("CLSID\\" + formatGuid(kClass) + "\\InprocServer32", "", server);
        ASSERT_EQ(registry.save(path_), S_OK);
    }
    HRESULT get(void** out) { return GetClassObject(path_, kClass, IClassFactory::iid, out); }

    fs::path path_;
};

TEST_F(Loader, EachWayOfFailingHasItsCode)
{
    void* out = &out;
    EXPECT_EQ(get(&out), REGDB_E_CLASSNOTREG);  // no registry at all
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(get(nullptr), E_POINTER);

    RegistryFile empty;
    ASSERT_EQ(empty.save(path_), S_OK);
    EXPECT_EQ(get(&out), REGDB_E_CLASSNOTREG);

    registerServer("/nonexistent/libserver.so");
    EXPECT_EQ(get(&out), CO_E_DLLNOTFOUND);

    // A library that loads but serves no class.
    Dl_info libc{};
    ASSERT_NE(::dladdr(reinterpret_cast<void*>(&std::fputs), &libc), 0);
    registerServer(libc.dli_fname);
    EXPECT_EQ(get(&out), CO_E_ERRORINDLL);
    EXPECT_EQ(CreateInstance(path_, kClass, nullptr, IUnknown::iid, &out), CO_E_ERRORINDLL);
    EXPECT_EQ(out, nullptr);

    {
        std::FILE* file = std::fopen(path_.c_str(), "w");
        std::fputs("QXCOM Registry 1\n[CLSID\n", file);
        std::fclose(file);
    }
    EXPECT_EQ(get(&out), REGDB_E_INVALIDVALUE);
}

}  // namespace
}  // namespace qx::com
