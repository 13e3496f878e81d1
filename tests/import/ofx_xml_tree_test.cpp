// The XML tree the OFX importer walks: node kinds, rejection with offsets,
// encodings, and look-up by path.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tarn/import/ofx_xml_tree.h"

namespace tarn {
namespace {

// The children of a node as "kind:string" texts.
std::vector<std::string> childrenOf(XMLNode node) {
  std::vector<std::string> out;
  for (XMLNode child = node.firstChild(); child; child = child.nextSibling()) {
    const char* kind = child.type() == XMLNodeType::Element           ? "element:"
                       : child.type() == XMLNodeType::Text            ? "text:"
                       : child.type() == XMLNodeType::EntityReference ? "entity:"
                                                                      : "document:";
    out.push_back(kind + std::string(child.string()));
  }
  return out;
}

using Strings = std::vector<std::string>;

TEST(OFXXMLTree, ReportsElementsTextAndEntityReferencesSeparately) {
  auto tree = OFXXMLTree::Parse(
      "<?xml version=\"1.0\"?>\n<?OFX VERSION=\"200\"?>\n<!-- note -->\n"
      "<OFX>\n  <A>x&amp;y &lt;z&gt;</A>\n  <B> </B>\n  <C><![CDATA[a & b]]></C>"
      "<D>p<![CDATA[q]]>&#38;r&#x41;</D><E>  &amp;  </E></OFX>");
  ASSERT_TRUE(tree);
  const XMLNode ofx = BKXMLTreeAtPath(tree->document(), "/OFX");
  EXPECT_EQ(childrenOf(ofx),
            (Strings{"element:A", "element:B", "element:C", "element:D", "element:E"}));
  EXPECT_EQ(childrenOf(BKXMLTreeAtPath(ofx, "A")),
            (Strings{"text:x", "entity:amp", "text:y ", "entity:lt", "text:z", "entity:gt"}));
  // White space only is no text; CDATA and character references are text,
  // merged with their neighbours into one node.
  EXPECT_EQ(childrenOf(BKXMLTreeAtPath(ofx, "B")), Strings{});
  EXPECT_EQ(childrenOf(BKXMLTreeAtPath(ofx, "C")), Strings{"text:a & b"});
  EXPECT_TRUE(BKXMLTreeAtPath(ofx, "C").isSimpleText());
  EXPECT_EQ(childrenOf(BKXMLTreeAtPath(ofx, "D")), Strings{"text:pq&rA"});
  EXPECT_EQ(childrenOf(BKXMLTreeAtPath(ofx, "E")), Strings{"entity:amp"});
  EXPECT_FALSE(BKXMLTreeAtPath(ofx, "A").isSimpleText());
  EXPECT_EQ(BKXMLTreeAtPath(ofx, "A").childCount(), 6u);
  EXPECT_EQ(BKXMLTreeAtPath(ofx, "A").childAtIndex(2).string(), "y ");
  EXPECT_FALSE(BKXMLTreeAtPath(ofx, "A").childAtIndex(6));
}

TEST(OFXXMLTree, PathsFollowTheFirstMatchingChildAndALeadingSlashStartsAtTheDocument) {
  auto tree = OFXXMLTree::Parse(
      "<OFX><M><S><T>first</T></S><S><T>second</T><U>u</U></S></M><T>top</T></OFX>");
  ASSERT_TRUE(tree);
  const XMLNode ofx = BKXMLTreeAtPath(tree->document(), "/OFX");
  ASSERT_TRUE(ofx);
  EXPECT_EQ(BKXMLTreeAtPath(ofx, "M/S/T").firstChild().string(), "first");
  // The first S is taken even though only the second holds a U.
  EXPECT_FALSE(BKXMLTreeAtPath(ofx, "M/S/U"));
  EXPECT_EQ(BKXMLTreeAtPath(BKXMLTreeAtPath(ofx, "M/S"), "/OFX/T").firstChild().string(), "top");
  EXPECT_FALSE(BKXMLTreeAtPath(ofx, "OFX"));
  EXPECT_FALSE(BKXMLTreeAtPath(XMLNode(), "OFX"));
  EXPECT_EQ(BKXMLTreeAtPath(ofx, ""), ofx);
  // Names are compared exactly.
  EXPECT_FALSE(BKXMLTreeAtPath(tree->document(), "/ofx"));
}

TEST(OFXXMLTree, RejectsWhatAnXMLParserRejectsAndSaysWhere) {
  struct Case {
    std::string document;
    std::size_t offset;
  };
  const Case cases[] = {
      {"<OFX><N>A&ampamp;B</N></OFX>", 9},    // an undefined entity
      {"<OFX><N>A & B</N></OFX>", 10},        // an ampersand that opens no reference
      {"<OFX><N>&#0;</N></OFX>", 8},          // a character XML does not allow
      {"<OFX><N>A</M></OFX>", 11},            // a mismatched end tag
      {"<OFX><N a=\"&x;\">A</N></OFX>", 12},  // an undefined entity in an attribute
      {"<OFX>\xC3(</OFX>", 5},                // not UTF-8
  };
  for (const Case& c : cases) {
    XMLParseError error;
    EXPECT_FALSE(OFXXMLTree::Parse(c.document, false, &error)) << c.document;
    EXPECT_FALSE(error.reason.empty()) << c.document;
    EXPECT_NEAR(static_cast<double>(error.offset), static_cast<double>(c.offset), 2.0)
        << c.document << ": " << error.reason;
  }
  XMLParseError error;
  EXPECT_FALSE(OFXXMLTree::Parse("<OFX><A></OFX>", false, &error));
  EXPECT_FALSE(OFXXMLTree::Parse("", false, &error));
  EXPECT_FALSE(
      OFXXMLTree::Parse("<?xml version=\"1.0\" encoding=\"no-such\"?><OFX/>", false, &error));
  EXPECT_NE(error.reason.find("no-such"), std::string::npos);
}

TEST(OFXXMLTree, ReadsByteOrderMarksAndDeclaredEncodings) {
  const std::string expected = "Caf\xC3\xA9";
  const auto nameIn = [](const std::unique_ptr<OFXXMLTree>& tree) {
    return tree ? std::string(BKXMLTreeAtPath(tree->document(), "/OFX/N").firstChild().string())
                : std::string("(rejected)");
  };
  EXPECT_EQ(nameIn(OFXXMLTree::Parse("\xEF\xBB\xBF<OFX><N>Caf\xC3\xA9</N></OFX>")), expected);
  static constexpr char kUtf16le[] =
      "\xFF\xFE<\0O\0F\0X\0>\0<\0N\0>\0C\0a\0f\0\xE9\0<\0/\0N\0>\0<\0/\0O\0F\0X\0>\0";
  const std::string utf16le(kUtf16le, sizeof kUtf16le - 1);
  EXPECT_EQ(nameIn(OFXXMLTree::Parse(utf16le)), expected);
  const std::string latin =
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><OFX><N>Caf\xE9</N></OFX>";
  EXPECT_EQ(nameIn(OFXXMLTree::Parse(latin)), expected);
  // A declaration that lies: UTF-8 bytes under a Latin-1 declaration read as
  // Latin-1, unless UTF-8 is preferred.
  const std::string lying =
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><OFX><N>Caf\xC3\xA9</N></OFX>";
  EXPECT_EQ(nameIn(OFXXMLTree::Parse(lying)), "Caf\xC3\x83\xC2\xA9");
  EXPECT_EQ(nameIn(OFXXMLTree::Parse(lying, true)), expected);
  // A declaration of UTF-16 in single bytes is ignored.
  EXPECT_EQ(nameIn(OFXXMLTree::Parse(
                "<?xml version=\"1.0\" encoding=\"utf-16\"?><OFX><N>Caf\xC3\xA9</N></OFX>")),
            expected);
  // ASCII declared, more than ASCII present.
  XMLParseError error;
  EXPECT_FALSE(OFXXMLTree::Parse("<?xml version=\"1.0\" encoding=\"us-ascii\"?><OFX>\xC3\xA9</OFX>",
                                 false, &error));
}

TEST(OFXXMLTree, DeepNestingNeedsNoDeepStack) {
  std::string document;
  for (int i = 0; i < 200000; ++i) document += "<A>";
  document += "x";
  for (int i = 0; i < 200000; ++i) document += "</A>";
  auto tree = OFXXMLTree::Parse(document);
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->nodeCount(), 200002u);
}

}  // namespace
}  // namespace tarn
