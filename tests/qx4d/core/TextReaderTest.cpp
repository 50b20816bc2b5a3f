#include "qx4d/core/TextReader.h"

#include "qx4d/core/FileManager.h"
#include "tests/qx4d/core/TestFiles.h"

#include <gtest/gtest.h>

#include <string>

namespace qx4d {
namespace {

using test::bytesOf;

bool load(TextReader& reader, std::string_view bytes) { return reader.SetBuffer(bytesOf(bytes), bytes.size()); }

// Every token to the end, read across lines.
std::vector<String> allTokens(TextReader& reader)
{
    std::vector<String> tokens;
    while (reader.NextToken(true)) tokens.push_back(reader);
    return tokens;
}

// A block reader's loop over keys: the first token of each statement, its line dropped.
std::vector<String> keys(std::string_view text)
{
    TextReader reader;
    EXPECT_TRUE(load(reader, text));
    std::vector<String> found;
    String key;
    while (reader.NextToken(key, true)) {
        found.push_back(key);
        reader.SkipLine();
    }
    return found;
}

TEST(TextReaderDecoding, ThreeEncodings)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, "caf\xE9 \x80"));  // Windows-1252
    EXPECT_EQ(allTokens(reader), (std::vector<String>{u"café", u"€"}));

    ASSERT_TRUE(load(reader,
                     "\xEF\xBB\xBF"
                     "caf\xC3\xA9 \xE2\x82\xAC"));
    EXPECT_EQ(allTokens(reader), (std::vector<String>{u"café", u"€"}));

    ASSERT_TRUE(load(reader, std::string("\xFF\xFE"
                                         "a\0\xE9\0 \0\xAC\x20",
                                         10)));
    EXPECT_EQ(allTokens(reader), (std::vector<String>{u"aé", u"€"}));
}

TEST(TextReaderDecoding, NoBigEndianAndNoStopAtZero)
{
    TextReader reader;
    // FE FF is no byte-order mark here: two Windows-1252 letters.
    ASSERT_TRUE(load(reader, "\xFE\xFFx"));
    EXPECT_EQ(allTokens(reader), (std::vector<String>{u"þÿx"}));

    ASSERT_TRUE(load(reader, std::string("a\0b c", 5)));
    EXPECT_EQ(allTokens(reader), (std::vector<String>{String(u"a\0b", 3), u"c"}));
}

TEST(TextReaderDecoding, EmptyTextsAndRefusedBuffers)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, "\xEF\xBB\xBF"));
    EXPECT_TRUE(reader.IsAtEnd());
    EXPECT_FALSE(reader.NextToken(true));

    ASSERT_TRUE(load(reader, "\xFF\xFE"));
    EXPECT_FALSE(reader.NextToken(true));

    EXPECT_FALSE(reader.SetBuffer(bytesOf("x"), 0));
    EXPECT_FALSE(reader.SetBuffer(nullptr, 4));
    EXPECT_TRUE(reader.IsAtEnd());
    EXPECT_FALSE(reader.NextToken(true));
}

TEST(TextReaderDecoding, OddUtf16SizeLeavesOutTheLoneByte)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, std::string("\xFF\xFE"
                                         "a\0b\0c",
                                         7)));
    EXPECT_EQ(allTokens(reader), (std::vector<String>{u"ab"}));
}

TEST(TextReaderTokens, WhitespaceOnlySeparates)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, "Camera{ \"two words\"\t//note\r\n  }{ /*x*/"));
    EXPECT_EQ(allTokens(reader), (std::vector<String>{u"Camera{", u"\"two", u"words\"", u"//note", u"}{", u"/*x*/"}));
}

TEST(TextReaderTokens, SameLineModeStopsAtTheLineEndAndKeepsOut)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, "a b\r\nc"));
    String out(u"before");
    EXPECT_TRUE(reader.NextToken(out, false));
    EXPECT_TRUE(reader.NextToken(out, false));
    EXPECT_EQ(out, u"b");
    EXPECT_FALSE(reader.NextToken(out, false));
    EXPECT_EQ(out, u"b");
    EXPECT_TRUE(reader.IsLineEnd());
    EXPECT_TRUE(reader.NextToken(out, true));
    EXPECT_EQ(out, u"c");
    EXPECT_FALSE(reader.NextToken(out, true));
    EXPECT_EQ(out, u"c");
}

TEST(TextReaderTokens, CursorQueriesAndPeeking)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, " \tx\n"));
    EXPECT_TRUE(reader.IsBlank());
    EXPECT_FALSE(reader.IsLineEnd());
    const TextReader::Position start = reader.SaveCursor();
    EXPECT_TRUE(reader.NextToken(true));
    EXPECT_EQ(reader, u"x");
    EXPECT_TRUE(reader.IsLineEnd());
    EXPECT_FALSE(reader.IsAtEnd());
    reader.RestoreCursor(start);
    String peeked;
    EXPECT_TRUE(reader.NextToken(peeked, true));
    EXPECT_EQ(peeked, u"x");
    EXPECT_FALSE(reader.NextToken(true));
    EXPECT_TRUE(reader.IsAtEnd());
    EXPECT_FALSE(reader.IsBlank());
    EXPECT_FALSE(reader.IsLineEnd());
}

TEST(TextReaderComments, LineCommentsInKeyPositionCostNothing)
{
    EXPECT_EQ(keys("// a comment\nKey 1\n//\n// another\nNext 2"), (std::vector<String>{u"Key", u"Next"}));
    // Glued to its text, "//text" is a key nobody knows, dropped with its line.
    EXPECT_EQ(keys("//text more\nKey 1"), (std::vector<String>{u"//text", u"Key"}));
}

TEST(TextReaderComments, TrailingCommentCostsTheNextLine)
{
    EXPECT_EQ(keys("Position 1 2 3 // text\nScale 2 2 2\nPivot 0 0 0"), (std::vector<String>{u"Position", u"Pivot"}));
    EXPECT_EQ(keys("Position 1 2 3 //text\nScale 2 2 2\nPivot 0 0 0"),
              (std::vector<String>{u"Position", u"Scale", u"Pivot"}));
    // Each further "//" in the dropped line drops one more line.
    EXPECT_EQ(keys("Key a // b // c\nLine2 x\nLine3 y\nLine4 z"), (std::vector<String>{u"Key", u"Line4"}));
}

TEST(TextReaderComments, BlockCommentsNestAndRunToTheEnd)
{
    EXPECT_EQ(keys("/* a */\nKey 1"), (std::vector<String>{u"Key"}));
    EXPECT_EQ(keys("/* a /* b */ c */ Key 1\nNext"), (std::vector<String>{u"Key", u"Next"}));
    EXPECT_EQ(keys("/* /* */ */ Key\nNext"), (std::vector<String>{u"Key", u"Next"}));
    EXPECT_EQ(keys("/* a\n b\n*/\nKey"), (std::vector<String>{u"Key"}));
    // A "//" inside a block still drops its line, and with it a "*/" that stands there.
    EXPECT_EQ(keys("/* a // */ b\n c */ Key"), (std::vector<String>{u"Key"}));

    TextReader reader;
    ASSERT_TRUE(load(reader, "/* never closed\nKey 1"));
    EXPECT_TRUE(reader.NextToken(true));  // the block found no end: the last token read stays
    EXPECT_EQ(reader, u"1");
    EXPECT_FALSE(reader.NextToken(true));
}

TEST(TextReaderComments, CommentMarkAtTheEndIsLeftAsToken)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, "Key\n//"));
    String key;
    ASSERT_TRUE(reader.NextToken(key, true));
    EXPECT_TRUE(reader.NextToken(key, true));
    EXPECT_EQ(key, u"//");
    EXPECT_FALSE(reader.NextToken(key, true));

    ASSERT_TRUE(load(reader, "  /*  "));
    EXPECT_TRUE(reader.NextToken(key, true));
    EXPECT_EQ(key, u"/*");
}

TEST(TextReaderComments, SkipLineThroughACommentUsesTheReadersOwnToken)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, "Key // dropped\nLost line\nNext"));
    String key;
    ASSERT_TRUE(reader.NextToken(key, true));
    reader.SkipLine();
    // The comment's follow-up token and the rest of that line went through the reader.
    EXPECT_EQ(reader, u"line");
    ASSERT_TRUE(reader.NextToken(key, true));
    EXPECT_EQ(key, u"Next");
}

TEST(TextReaderComments, ThousandsOfCommentsDontExhaustTheStack)
{
    std::string lines;
    for (int i = 0; i < 200000; ++i) lines += "// comment line\n";
    EXPECT_EQ(keys(lines + "Key 1"), (std::vector<String>{u"Key"}));

    std::string nested;
    for (int i = 0; i < 200000; ++i) nested += "/* ";
    for (int i = 0; i < 200000; ++i) nested += "*/ ";
    EXPECT_EQ(keys(nested + "Key\nNext"), (std::vector<String>{u"Key", u"Next"}));

    // Each "//" of a dropped line costs one line: x, y and all but two of the z lines.
    std::string marks = "Key";
    for (int i = 0; i < 200000; ++i) marks += " //";
    marks += "\nx\ny\n";
    for (int i = 0; i < 200000; ++i) marks += "z\n";
    EXPECT_EQ(keys(marks + "last"), (std::vector<String>{u"Key", u"z", u"z", u"last"}));
}

TEST(TextReaderValues, VectorsTakeWhateverTokenComes)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, "Position 1 2\nScale 3 3 3\nPivot 4 5 6"));
    String key;
    ASSERT_TRUE(reader.NextToken(key, true));
    EXPECT_FLOAT_EQ(ReadFloat(reader), 1.0f);
    EXPECT_FLOAT_EQ(ReadFloat(reader), 2.0f);
    EXPECT_FLOAT_EQ(ReadFloat(reader), 0.0f);  // "Scale"
    reader.SkipLine();
    ASSERT_TRUE(reader.NextToken(key, true));
    EXPECT_EQ(key, u"Pivot");
}

TEST(TextReaderValues, HelpersGiveDefaultsWithNoTokenLeft)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, "7\n\n -3 TRUE 2.5"));
    EXPECT_EQ(ReadInt(reader), 7);
    EXPECT_EQ(ReadInt(reader), -3);
    EXPECT_TRUE(ReadBool(reader));
    EXPECT_FLOAT_EQ(ReadFloat(reader), 2.5f);
    // The reader still holds "2.5": the defaults don't come from converting it.
    EXPECT_FLOAT_EQ(ReadFloat(reader), 0.0f);
    EXPECT_EQ(ReadInt(reader), 0);
    EXPECT_FALSE(ReadBool(reader));
}

TEST(TextReaderValues, ReadValueQuotesAndLineEnds)
{
    TextReader reader;
    ASSERT_TRUE(load(reader, "\"two words\" two words \"open\nNext \"\" // \"x\"y"));
    String value;
    reader.ReadValue(value);
    EXPECT_EQ(value, u"two words");
    EXPECT_EQ(reader, u"two words");
    reader.ReadValue(value);
    EXPECT_EQ(value, u"two");
    ASSERT_TRUE(load(reader, "\"open\nNext \"\" // \"x\"y"));
    reader.ReadValue(value);
    EXPECT_EQ(value, u"open");
    EXPECT_TRUE(reader.IsLineEnd());
    reader.ReadValue(value);
    EXPECT_EQ(value, u"Next");
    reader.ReadValue(value);
    EXPECT_EQ(value, u"");
    reader.ReadValue(value);
    EXPECT_EQ(value, u"//");  // comment marks mean nothing to a value
    reader.ReadValue(value);
    EXPECT_EQ(value, u"x");  // the text behind the closing quote is left
    reader.ReadValue(value);
    EXPECT_EQ(value, u"y");
    reader.ReadValue(reader);
    EXPECT_EQ(reader, u"");
}

TEST(TextReaderOpen, ReadsThroughTheFileManager)
{
    TextReader reader;
    EXPECT_FALSE(reader.Open(u"SCENES:scene.txt"));  // no file manager yet

    test::TempFolder folder;
    folder.Write("scene.txt",
                 "\xEF\xBB\xBF"
                 "Name \"A b\"");
    folder.Write("empty.txt", "");
    FileManager files;
    ASSERT_TRUE(files.Mount(u"SCENES", folder.Wide()));
    ASSERT_TRUE(reader.Open(u"SCENES:scene.txt"));
    String value;
    ASSERT_TRUE(reader.NextToken(true));
    reader.ReadValue(value);
    EXPECT_EQ(value, u"A b");
    EXPECT_FALSE(reader.Open(u"SCENES:missing.txt"));
    EXPECT_FALSE(reader.Open(u"SCENES:empty.txt"));
    EXPECT_FALSE(reader.NextToken(true));
}

}  // namespace
}  // namespace qx4d
