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

}  // namespace
}  // namespace qx
