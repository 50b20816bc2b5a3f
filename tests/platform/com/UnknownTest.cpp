#include "platform/com/Unknown.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

struct IFirst : IUnknown {
    static constexpr IID iid = guid("{11111111-0000-0000-0000-000000000001}");
    virtual int first() = 0;
};
struct ISecond : IUnknown {
    static constexpr IID iid = guid("{22222222-0000-0000-0000-000000000002}");
    virtual int second() = 0;
};

class Both final : public com::ComObject<IFirst, ISecond> {
public:
    explicit Both(bool& destroyed) : destroyed_(destroyed) {}
    ~Both() override { destroyed_ = true; }
    int first() override { return 1; }
    int second() override { return 2; }

private:
    bool& destroyed_;
};

TEST(ComObject, AnswersEachInterfaceAndOneIdentity)
{
    bool destroyed = false;
    auto object = com::ComPtr<IFirst>(new Both(destroyed));
    com::ComPtr<ISecond> second;
    ASSERT_EQ(object->QueryInterface(ISecond::iid, reinterpret_cast<void**>(second.out())), S_OK);
    EXPECT_EQ(second->second(), 2);

    com::ComPtr<IUnknown> viaFirst;
    com::ComPtr<IUnknown> viaSecond;
    object->QueryInterface(IUnknown::iid, reinterpret_cast<void**>(viaFirst.out()));
    second->QueryInterface(IUnknown::iid, reinterpret_cast<void**>(viaSecond.out()));
    EXPECT_EQ(viaFirst.get(), viaSecond.get());

    void* none = reinterpret_cast<void*>(1);
    EXPECT_EQ(object->QueryInterface(guid("{33333333-0000-0000-0000-000000000003}"), &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(object->QueryInterface(IFirst::iid, nullptr), E_POINTER);

    object.reset();
    second.reset();
    viaFirst.reset();
    EXPECT_FALSE(destroyed);
    viaSecond.reset();
    EXPECT_TRUE(destroyed);
}

/// An outer object that counts what the aggregated object's interfaces ask of it.
struct Outer final : IUnknown {
    HRESULT QueryInterface(const IID& riid, void** ppv) override
    {
        if (riid == IUnknown::iid) {
            *ppv = this;
            AddRef();
            return S_OK;
        }
        return inner->QueryInterface(riid, ppv);
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }

    ULONG references = 1;
    IUnknown* inner = nullptr;
};

TEST(ComObject, AnAggregatedObjectCountsOnItsOuterObjectAndLivesByItsInnerUnknown)
{
    bool destroyed = false;
    Outer outer;
    auto object = com::ComPtr<Both>(new Both(destroyed));
    outer.inner = object.detach()->aggregate(&outer);

    com::ComPtr<ISecond> second;
    ASSERT_EQ(outer.QueryInterface(ISecond::iid, reinterpret_cast<void**>(second.out())), S_OK);
    EXPECT_EQ(outer.references, 2u);  // the interface's reference went to the outer object
    void* identity = nullptr;
    ASSERT_EQ(second->QueryInterface(IUnknown::iid, &identity), S_OK);
    EXPECT_EQ(identity, &outer);
    EXPECT_EQ(outer.references, 3u);
    outer.Release();
    second.reset();
    EXPECT_EQ(outer.references, 1u);

    // The inner IUnknown answers for the object itself, apart from the outer one.
    void* innerIdentity = nullptr;
    ASSERT_EQ(outer.inner->QueryInterface(IUnknown::iid, &innerIdentity), S_OK);
    EXPECT_EQ(innerIdentity, outer.inner);
    EXPECT_EQ(outer.inner->Release(), 1u);
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(outer.inner->Release(), 0u);
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(outer.references, 1u);
}

}  // namespace
}  // namespace qx
