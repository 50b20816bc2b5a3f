#include "platform/os/CodePage.h"

#include <gtest/gtest.h>

namespace qx::os {
namespace {

TEST(CodePage, AnsiIsWindows1252)
{
    EXPECT_EQ(toWide(CodePage::Ansi, std::string("\x80\xE9\x9F\x81", 4)), u"\u20AC\u00E9\u0178\u0081");
    EXPECT_EQ(fromWide(CodePage::Ansi, u"\u20ACé\u0178"), "\x80\xE9\x9F");
}

TEST(CodePage, OemIsCp850)
{
    // Zip tools on Windows write "é" as 0x82 and box drawing in the upper half.
    EXPECT_EQ(toWide(CodePage::Oem, std::string("\x82\x80\xC4\xFF", 4)), u"éÇ\u2500\u00A0");
    EXPECT_EQ(fromWide(CodePage::Oem, u"é\u2500"), "\x82\xC4");
}

TEST(CodePage, UnmappableCharactersBecomeQuestionMarks)
{
    EXPECT_EQ(fromWide(CodePage::Ansi, u"a\u4E2Db"), "a?b");
    EXPECT_EQ(fromWide(CodePage::Oem, u"\u20AC"), "?");
}

}  // namespace
}  // namespace qx::os
