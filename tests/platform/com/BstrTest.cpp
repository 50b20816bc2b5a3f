#include "platform/com/Bstr.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(Bstr, KeepsLengthPrefixAndTerminator)
{
    BSTR text = SysAllocString(u"Déplacement");
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 11u);
    EXPECT_EQ(text[11], u'\0');
    EXPECT_EQ(std::u16string_view(text), u"Déplacement");
    SysFreeString(text);
}

TEST(Bstr, EmbeddedNullsAndEmptyTextsCount)
{
    BSTR text = SysAllocStringLen(u"a\0b", 3);
    EXPECT_EQ(SysStringLen(text), 3u);
    SysFreeString(text);
    BSTR empty = SysAllocString(u"");
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(SysStringLen(empty), 0u);
    SysFreeString(empty);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    SysFreeString(nullptr);
}

TEST(Bstr, OwnerFreesPreviousTextOnOut)
{
    Bstr owner(u"first");
    *owner.out() = SysAllocString(u"second");
    EXPECT_EQ(owner.view(), u"second");
    Bstr moved = std::move(owner);
    EXPECT_EQ(moved.view(), u"second");
}

}  // namespace
}  // namespace qx
