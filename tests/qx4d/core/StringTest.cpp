#include "qx4d/core/String.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace qx4d {
namespace {

TEST(String, NumbersTakeTheirPrefixAndGiveZeroForText)
{
    EXPECT_FLOAT_EQ(String(u"2.5").ToFloat(), 2.5f);
    EXPECT_FLOAT_EQ(String(u"  -1.25e2xyz").ToFloat(), -125.0f);
    EXPECT_FLOAT_EQ(String(u"abc").ToFloat(), 0.0f);
    EXPECT_FLOAT_EQ(String(u".5").ToFloat(), 0.5f);
    EXPECT_EQ(String(u"42px").ToInt(), 42);
    EXPECT_EQ(String(u"-7").ToInt(), -7);
    EXPECT_EQ(String(u"x1").ToInt(), 0);
    EXPECT_EQ(String(u"4294967295").ToUInt(), 4294967295u);
    EXPECT_EQ(String(u"-1").ToUInt(), 4294967295u);  // negated modulo 2^32
    EXPECT_EQ(String(u"12abc").ToUInt(), 12u);
}

TEST(String, FloatsBeyondTheFloatRangeBecomeInfinite)
{
    EXPECT_EQ(String(u"1e39").ToFloat(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(String(u"-1e39").ToFloat(), -std::numeric_limits<float>::infinity());
    // Just above the largest float, still below half a unit more: rounds down to it.
    EXPECT_EQ(String(u"3.4028235e38").ToFloat(), std::numeric_limits<float>::max());
    EXPECT_EQ(String(u"1e-50").ToFloat(), 0.0f);
}

TEST(String, ToBoolAcceptsOnlyOneAndTrue)
{
    EXPECT_TRUE(String(u"1").ToBool());
    EXPECT_TRUE(String(u"true").ToBool());
    EXPECT_TRUE(String(u"TRUE").ToBool());
    EXPECT_TRUE(String(u"tRuE").ToBool());
    EXPECT_FALSE(String(u"on").ToBool());
    EXPECT_FALSE(String(u"yes").ToBool());
    EXPECT_FALSE(String(u"0").ToBool());
    EXPECT_FALSE(String(u"").ToBool());
    EXPECT_FALSE(String(u"11").ToBool());
    EXPECT_FALSE(String(u" true").ToBool());
    EXPECT_FALSE(String(u"truex").ToBool());
}

TEST(String, EqualsNoCaseFoldsAsciiLettersOnly)
{
    EXPECT_EQ(String(u"Time").EqualsNoCase(u"TIME"), 0);
    EXPECT_EQ(String(u"").EqualsNoCase(u""), 0);
    EXPECT_LT(String(u"abc").EqualsNoCase(u"ABD"), 0);
    EXPECT_GT(String(u"b").EqualsNoCase(u"A"), 0);
    // The shorter text is the smaller, as a terminated string is.
    EXPECT_LT(String(u"ab").EqualsNoCase(u"abc"), 0);
    EXPECT_GT(String(u"abc").EqualsNoCase(u"AB"), 0);
    // The C locale folds only A to Z.
    EXPECT_NE(String(u"é").EqualsNoCase(u"É"), 0);
    // '_' (0x5F) lies between 'Z' and 'a': folding to lower case puts it below letters.
    EXPECT_LT(String(u"_").EqualsNoCase(u"A"), 0);
}

TEST(String, StartsWithMeansTheFirstOccurrenceIsAtZero)
{
    EXPECT_TRUE(String(u"data/a.txt").StartsWith(u"data/"));
    EXPECT_TRUE(String(u"abc").StartsWith(u""));
    EXPECT_FALSE(String(u"xdata/").StartsWith(u"data/"));
    EXPECT_FALSE(String(u"Data/a").StartsWith(u"data/"));
    EXPECT_FALSE(String(u"da").StartsWith(u"data"));
}

TEST(String, ReplaceCharCountsReplacements)
{
    String path(u"a\\b\\c");
    EXPECT_EQ(path.ReplaceChar(u'\\', u'/'), 2);
    EXPECT_EQ(path, u"a/b/c");
    EXPECT_EQ(path.ReplaceChar(u'/', u'/'), 0);
    EXPECT_EQ(path.ReplaceChar(u'x', u'y'), 0);
    EXPECT_EQ(path, u"a/b/c");
}

TEST(String, LeftAndMidClampToTheText)
{
    const String text(u"abcdef");
    EXPECT_EQ(text.Left(2), u"ab");
    EXPECT_EQ(text.Left(6), u"abcdef");
    EXPECT_EQ(text.Left(100), u"abcdef");
    EXPECT_EQ(text.Left(0), u"");
    EXPECT_EQ(text.Mid(4), u"ef");
    EXPECT_EQ(text.Mid(6), u"");
    EXPECT_EQ(text.Mid(60), u"");
    EXPECT_EQ(text.Mid(1, 3), u"bcd");
    EXPECT_EQ(text.Mid(4, 10), u"ef");
    EXPECT_EQ(text.Mid(7, 1), u"");
}

TEST(String, SplitDropsEmptyPieces)
{
    std::vector<String> pieces;
    String(u"1 1, 2 2").Split(u", ", pieces);
    EXPECT_EQ(pieces, (std::vector<String>{u"1", u"1", u"2", u"2"}));

    pieces.clear();
    String(u"1,,2").Split(u",", pieces);
    EXPECT_EQ(pieces, (std::vector<String>{u"1", u"2"}));

    pieces.clear();
    String(u",,, ,").Split(u", ", pieces);
    EXPECT_TRUE(pieces.empty());
}

TEST(String, SplitAppendsAndHandlesMissingDelimiters)
{
    std::vector<String> pieces{u"kept"};
    String(u"a b").Split(nullptr, pieces);
    String(u"c d").Split(u"", pieces);
    String(u"").Split(u" ", pieces);
    String(u"").Split(nullptr, pieces);
    EXPECT_EQ(pieces, (std::vector<String>{u"kept", u"a b", u"c d"}));
}

TEST(String, FormatFollowsTheWindowsWideRules)
{
    String text(u"old contents");
    text.Format(u"%ld;%ld;", int32_t(100), int32_t(-900));
    EXPECT_EQ(text, u"100;-900;");

    text.Format(u"%s\\%s.%S", u"Scenes", u"Cube", "afx");
    EXPECT_EQ(text, u"Scenes\\Cube.afx");

    text.Format(u"[%5d|%-4d|%05.1f|%x|%X|%c|%%]", 42, 7, 3.14159, 255, 255, int(u'é'));
    EXPECT_EQ(text, u"[   42|7   |003.1|ff|FF|é|%]");

    text.Format(u"%lld %I64d %.2s %*d", int64_t(1) << 40, int64_t(-5), u"abcdef", 3, 9);
    EXPECT_EQ(text, u"1099511627776 -5 ab   9");

    text.Format(u"%s", static_cast<const char16_t*>(nullptr));
    EXPECT_EQ(text, u"(null)");

    text.Format(nullptr);
    EXPECT_EQ(text, u"");
}

TEST(String, FormatCapsAbsurdWidths)
{
    String text;
    text.Format(u"%999999999d", 1);
    EXPECT_LE(text.size(), 4096u);
    EXPECT_EQ(text.back(), u'1');
}

}  // namespace
}  // namespace qx4d
