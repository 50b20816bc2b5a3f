#include "qx4d/core/XmlDocument.h"

#include "qx4d/core/FileManager.h"
#include "tests/qx4d/core/TestFiles.h"

#include <gtest/gtest.h>

#include <string>

namespace qx4d {
namespace {

using test::bytesOf;

bool parse(XmlDocument& document, std::string_view text) { return document.Parse(bytesOf(text), int64_t(text.size())); }

TEST(XmlDocument, BuildsTheElementTreeWithAttributesInFileOrder)
{
    XmlDocument document;
    ASSERT_TRUE(parse(document,
                      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<Emitter Zeta=\"1\" alpha='2' Mid=\"caf\xC3\xA9 &amp; co\">\n"
                      "  <!-- a comment --> text <?pi data?>\n"
                      "  <Key Time=\"0\" Value=\"1\"/>\n"
                      "  <Key Time=\"1\"><Inner/></Key>\n"
                      "</Emitter>"));
    const XmlNode* root = document.GetRoot();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->name, u"Emitter");
    EXPECT_EQ(root->parent, nullptr);
    EXPECT_EQ(root->attributeNames, (std::vector<String>{u"Zeta", u"alpha", u"Mid"}));
    EXPECT_EQ(root->attributeValues, (std::vector<String>{u"1", u"2", u"café & co"}));
    ASSERT_EQ(root->children.size(), 2u);
    const XmlNode& first = *root->children[0];
    EXPECT_EQ(first.name, u"Key");
    EXPECT_EQ(first.attributeNames, (std::vector<String>{u"Time", u"Value"}));
    EXPECT_EQ(first.parent, root);
    EXPECT_TRUE(first.children.empty());
    const XmlNode& second = *root->children[1];
    ASSERT_EQ(second.children.size(), 1u);
    EXPECT_EQ(second.children[0]->name, u"Inner");
    EXPECT_EQ(second.children[0]->parent, &second);
}

TEST(XmlDocument, AnEarlyEndKeepsWhatWasReadAndStopsAtTheOpenElement)
{
    XmlDocument document;
    ASSERT_TRUE(parse(document, "<Root><A x=\"1\"><B/><C y=\"2\""));
    const XmlNode* current = document.GetRoot();
    ASSERT_NE(current, nullptr);
    // The last start tag isn't complete yet, so the open element is A.
    EXPECT_EQ(current->name, u"A");
    ASSERT_EQ(current->children.size(), 1u);
    EXPECT_EQ(current->children[0]->name, u"B");
    ASSERT_NE(current->parent, nullptr);
    EXPECT_EQ(current->parent->name, u"Root");
}

TEST(XmlDocument, TheRootStaysWhenMoreEndsThanStartsArrive)
{
    XmlDocument document;
    ASSERT_TRUE(parse(document, "<Root><A/></Root>"));
    EXPECT_EQ(document.GetRoot()->name, u"Root");
}

TEST(XmlDocument, RefusesMalformedAndAbsentInput)
{
    XmlDocument document;
    EXPECT_FALSE(parse(document, "<Root><A></B></Root>"));
    EXPECT_FALSE(parse(document, "<Root></Root><Second/>"));
    EXPECT_FALSE(parse(document, "<Root a=\"1\" a=\"2\"/>"));
    EXPECT_FALSE(document.Parse(nullptr, 4));
    EXPECT_FALSE(document.Parse(bytesOf("<R/>"), -1));

    // Nothing at all isn't malformed while more may come: no element, no error.
    EXPECT_TRUE(document.Parse(bytesOf(""), 0));
    EXPECT_EQ(document.GetRoot(), nullptr);
}

TEST(XmlDocument, ReadsUtf16ByItsByteOrderMark)
{
    XmlDocument document;
    const std::string utf16("\xFF\xFE<\0R\0 \0n\0=\0\"\0\xE9\0\"\0/\0>\0", 22);
    ASSERT_TRUE(parse(document, utf16));
    ASSERT_NE(document.GetRoot(), nullptr);
    EXPECT_EQ(document.GetRoot()->name, u"R");
    EXPECT_EQ(document.GetRoot()->attributeValues, (std::vector<String>{u"é"}));
}

TEST(XmlDocument, ASecondParseReplacesTheTree)
{
    XmlDocument document;
    ASSERT_TRUE(parse(document, "<First><A/></First>"));
    ASSERT_TRUE(parse(document, "<Second/>"));
    EXPECT_EQ(document.GetRoot()->name, u"Second");
    EXPECT_TRUE(document.GetRoot()->children.empty());
}

TEST(XmlDocument, DeepNestingIsBuiltAndReleased)
{
    constexpr int kDepth = 200000;
    std::string text;
    for (int i = 0; i < kDepth; ++i) text += "<a>";
    XmlDocument document;
    ASSERT_TRUE(parse(document, text));
    int depth = 0;
    for (const XmlNode* node = document.GetRoot(); node; node = node->parent) ++depth;
    EXPECT_EQ(depth, kDepth);
}

TEST(XmlDocument, LoadsThroughTheFileManager)
{
    XmlDocument document;
    EXPECT_FALSE(document.Load(u"MATERIALS:m.mat"));  // no file manager
    test::TempFolder folder;
    folder.Write("m.mat", "<Material><Surface Diffuse=\"1 1 1\"/></Material>");
    FileManager files;
    ASSERT_TRUE(files.Mount(u"MATERIALS", folder.Wide()));
    ASSERT_TRUE(document.Load(u"MATERIALS:m.mat"));
    EXPECT_EQ(document.GetRoot()->children.at(0)->attributeValues, (std::vector<String>{u"1 1 1"}));
    EXPECT_FALSE(document.Load(u"MATERIALS:missing.mat"));
}

}  // namespace
}  // namespace qx4d
