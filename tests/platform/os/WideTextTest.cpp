#include "platform/os/WideText.h"

#include <gtest/gtest.h>

namespace qx::os {
namespace {

TEST(WideText, RoundTripsEveryPlane)
{
    const std::u16string text = u"Gouttes d'eau \u00E9\u20AC \U0001F600";
    EXPECT_EQ(fromUtf8(toUtf8(text)), text);
    EXPECT_EQ(toUtf8(u"\u00E9"), "\xC3\xA9");
}

TEST(WideText, IllFormedInputBecomesReplacementCharacters)
{
    EXPECT_EQ(fromUtf8("a\xC3"), u"a\uFFFD");
    EXPECT_EQ(fromUtf8("\xC0\xAF"), u"\uFFFD");      // overlong '/'
    EXPECT_EQ(fromUtf8("\xED\xA0\x80"), u"\uFFFD");  // encoded surrogate
    EXPECT_EQ(toUtf8(std::u16string(1, char16_t(0xD800))), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace qx::os
