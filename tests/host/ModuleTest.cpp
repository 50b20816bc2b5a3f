// The module's entry points over its tables: which factory answers which class, the
// template factory's creation rules, aggregation of every class of the object map.
#include "host/Module.h"
#include "host/DynamicEffect.h"
#include "host/MyClassFactory.h"
#include "host/ObjectTables.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

struct IProbe : IUnknown {
    static constexpr IID iid = guid("{5A0B5A0B-0000-4000-8000-000000000001}");
    virtual int answer() = 0;
};

class Probe final : public com::ComObject<IProbe>, public media::CBaseObject {
public:
    int answer() override { return 42; }
};

/// What the next creator call of the test template gives.
struct CreatorScript {
    HRESULT code = S_OK;
    bool giveObject = true;
};
CreatorScript script;

IUnknown* NewProbe(IUnknown*, HRESULT* phr)
{
    *phr = script.code;
    if (!script.giveObject) return nullptr;
    auto* probe = new Probe();
    probe->InternalAddRef();  // the creator's reference
    return static_cast<IProbe*>(probe);
}

constexpr CLSID kProbeClass = guid("{5A0B5A0B-0000-4000-8000-0000000000C1}");
constexpr CLSID kHostByTemplate = guid("{5A0B5A0B-0000-4000-8000-0000000000C2}");
const CFactoryTemplate kTemplates[] = {
    {u"Probe", &kProbeClass, NewProbe, nullptr, &sudAnim3DVideoSource},
    {u"Host", &kHostByTemplate, NewObject<CQXDynamicEffect>, nullptr, nullptr},
};

class Entries : public ::testing::Test {
protected:
    void SetUp() override { script = {}; }
    com::ComPtr<IClassFactory> factoryOf(const CLSID& clsid)
    {
        com::ComPtr<IClassFactory> factory;
        EXPECT_EQ(entries.GetClassObject(clsid, IClassFactory::iid, reinterpret_cast<void**>(factory.out())), S_OK);
        return factory;
    }

    ModuleEntries entries{kTemplates, ObjectMap()};
};

TEST_F(Entries, TemplateClassesGetANewTemplateFactoryAndMapClassesTheirKeptOne)
{
    const LONG before = media::CBaseObject::ObjectsActive();
    auto first = factoryOf(kProbeClass);
    auto second = factoryOf(kProbeClass);
    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(media::CBaseObject::ObjectsActive(), before + 2);  // the factories count as live objects
    first.reset();
    second.reset();
    EXPECT_EQ(media::CBaseObject::ObjectsActive(), before);

    auto effect = factoryOf(CQXDynamicEffect::clsid);
    EXPECT_EQ(factoryOf(CQXDynamicEffect::clsid).get(), effect.get());
    IUnknown* asUnknown = nullptr;
    ASSERT_EQ(entries.GetClassObject(CQXDynamicEffect::clsid, IUnknown::iid, reinterpret_cast<void**>(&asUnknown)),
              S_OK);
    EXPECT_EQ(asUnknown, effect.get());
    asUnknown->Release();
}

TEST_F(Entries, OnlyIUnknownAndIClassFactoryAreGivenForAnyClass)
{
    std::vector<CLSID> classes{kProbeClass, guid("{00000000-0000-0000-0000-0000000000FF}")};
    for (const auto& row : ObjectMap()) classes.push_back(*row.pclsid);
    for (const auto& clsid : classes) {
        void* out = &out;
        EXPECT_EQ(entries.GetClassObject(clsid, IProbe::iid, &out), E_NOINTERFACE);
        EXPECT_EQ(out, nullptr);
    }
    void* out = &out;
    EXPECT_EQ(entries.GetClassObject(guid("{00000000-0000-0000-0000-0000000000FF}"), IClassFactory::iid, &out),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(entries.GetClassObject(kProbeClass, IClassFactory::iid, nullptr), E_POINTER);
}

TEST_F(Entries, TemplateFactoryCreatesQueriesAndCleansUp)
{
    auto factory = factoryOf(kProbeClass);
    const LONG before = media::CBaseObject::ObjectsActive();
    com::ComPtr<IProbe> probe;
    ASSERT_EQ(factory->CreateInstance(nullptr, IProbe::iid, reinterpret_cast<void**>(probe.out())), S_OK);
    EXPECT_EQ(probe->answer(), 42);
    probe.reset();
    EXPECT_EQ(media::CBaseObject::ObjectsActive(), before);

    void* out = &out;
    EXPECT_EQ(factory->CreateInstance(nullptr, IClassFactory::iid, &out), E_NOINTERFACE);  // not the probe's
    EXPECT_EQ(out, nullptr);
    script.code = E_INVALIDARG;  // a failing creator's object is destroyed, its code returned
    EXPECT_EQ(factory->CreateInstance(nullptr, IProbe::iid, &out), E_INVALIDARG);
    script = {S_OK, false};
    EXPECT_EQ(factory->CreateInstance(nullptr, IProbe::iid, &out), E_OUTOFMEMORY);
    script = {E_FAIL, false};
    EXPECT_EQ(factory->CreateInstance(nullptr, IProbe::iid, &out), E_FAIL);
    EXPECT_EQ(media::CBaseObject::ObjectsActive(), before);
    EXPECT_EQ(factory->CreateInstance(nullptr, IProbe::iid, nullptr), E_POINTER);
    EXPECT_EQ(factory->LockServer(true), S_OK);
    EXPECT_EQ(factory->LockServer(false), S_OK);
}

TEST_F(Entries, TheGenericCreatorServesTheTemplateFactory)
{
    auto factory = factoryOf(kHostByTemplate);
    com::ComPtr<IQXDynamicEffect> host;
    ASSERT_EQ(factory->CreateInstance(nullptr, IQXDynamicEffect::iid, reinterpret_cast<void**>(host.out())), S_OK);
    LONG count = 0;
    EXPECT_EQ(host->GetEffectsCount(&count), S_OK);
    EXPECT_GT(count, 0);
    // Its only reference is the caller's.
    host->AddRef();
    EXPECT_EQ(host->Release(), 1u);
}

/// An outer object that keeps the inner IUnknown it was given.
struct Outer final : IUnknown {
    HRESULT QueryInterface(const IID& riid, void** ppv) override
    {
        if (riid != IUnknown::iid) return inner->QueryInterface(riid, ppv);
        *ppv = this;
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }

    ULONG references = 1;
    IUnknown* inner = nullptr;
};

TEST_F(Entries, EveryClassAggregatesAndOnlyForIUnknown)
{
    for (const auto& row : ObjectMap()) {
        IUnknown* object = nullptr;
        auto factory = factoryOf(*row.pclsid);
        ASSERT_EQ(factory->CreateInstance(nullptr, IUnknown::iid, reinterpret_cast<void**>(&object)), S_OK);
        object->Release();
    }
    for (const auto& row : ObjectMap()) {
        SCOPED_TRACE(row.script.coclass);
        auto factory = factoryOf(*row.pclsid);
        Outer outer;
        void* out = &out;
        EXPECT_EQ(factory->CreateInstance(&outer, IClassFactory::iid, &out), E_NOINTERFACE);
        EXPECT_EQ(out, nullptr);
        ASSERT_EQ(factory->CreateInstance(&outer, IUnknown::iid, reinterpret_cast<void**>(&outer.inner)), S_OK);
        // The inner IUnknown answers for the object itself.
        void* identity = nullptr;
        ASSERT_EQ(outer.inner->QueryInterface(IUnknown::iid, &identity), S_OK);
        EXPECT_EQ(identity, outer.inner);
        outer.inner->Release();
        EXPECT_EQ(outer.inner->Release(), 0u);
        EXPECT_EQ(outer.references, 1u);
    }
    // Through the template factory, with the host's own interface asked of the outer object.
    auto hostFactory = factoryOf(kHostByTemplate);
    Outer outer;
    ASSERT_EQ(hostFactory->CreateInstance(&outer, IUnknown::iid, reinterpret_cast<void**>(&outer.inner)), S_OK);
    com::ComPtr<IQXDynamicEffect> host;
    ASSERT_EQ(outer.QueryInterface(IQXDynamicEffect::iid, reinterpret_cast<void**>(host.out())), S_OK);
    EXPECT_EQ(outer.references, 2u);
    void* identity = nullptr;
    ASSERT_EQ(host->QueryInterface(IUnknown::iid, &identity), S_OK);
    EXPECT_EQ(identity, &outer);
    outer.Release();
    host.reset();
    EXPECT_EQ(outer.references, 1u);
    EXPECT_EQ(outer.inner->Release(), 0u);
}

}  // namespace
}  // namespace qx
