// The SGML-to-XML steps of OFX 1: the end-tag walk and the two ampersand walks.
#include <gtest/gtest.h>

#include <string>

#include "tarn/import/ofx_import.h"

namespace tarn {
namespace {

TEST(OFXEndTags, ElementsGetTheirEndTagsAndWhiteSpaceBetweenTagsGoes) {
  struct Case {
    const char* input;
    const char* expected;
  };
  const Case cases[] = {
      // A value followed by the next start tag gets its end tag, trimmed.
      {"<TRNAMT>-10.00\r\n<FITID>7\r\n</STMTTRN>",
       "<TRNAMT>-10.00</TRNAMT><FITID>7</FITID></STMTTRN>"},
      // An end tag already in place is not doubled.
      {"<NAME>Shop</NAME>\n<MEMO>x</MEMO>", "<NAME>Shop</NAME><MEMO>x</MEMO>"},
      // Aggregates that open other elements add nothing.
      {"<OFX>\n  <BANKMSGSRSV1>\n <CODE>0\n</BANKMSGSRSV1></OFX>",
       "<OFX><BANKMSGSRSV1><CODE>0</CODE></BANKMSGSRSV1></OFX>"},
      // An empty element keeps its own end tag and gets no second one.
      {"<CURDEF></CURDEF><X>", "<CURDEF></CURDEF><X>"},
      // White space inside a value stays; only its ends are trimmed.
      {"<NAME>  Two  words \t\n<X>", "<NAME>Two  words</NAME><X>"},
      // The end tag of another element does not count as this one's.
      {"<NAME>A</NAMES>", "<NAME>A</NAME></NAMES>"},
      // Running out inside a value or a tag copies what was read.
      {"<A>1<B>tail", "<A>1</A><B>tail"},
      {"<A>1<B", "<A>1<B"},
      {"<A", "<A"},
      {"text only", "text only"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TARNOFXImport::addMissingEndTagsToElementsInString(c.input), c.expected) << c.input;
  }
}

TEST(OFXAmpersands, FaithfulWalkKeepsItsTwoQuirks) {
  struct Case {
    const char* input;
    const char* expected;
  };
  const Case cases[] = {
      {"<N>A & B</N>", "<N>A &amp; B</N>"},
      {"<N>AT&T;</N>", "<N>AT&amp;T;</N>"},
      // A known entity has its name written twice (letter case as written),
      // which the XML parser then rejects.
      {"<N>A&amp;B</N>", "<N>A&ampamp;B</N>"},
      {"<N>A&LT;B</N>", "<N>A&LTLT;B</N>"},
      {"<N>&quot;x</N>", "<N>&quotquot;x</N>"},
      // A ";" further away than any known name leaves a bare ampersand.
      {"<N>A&ampere;</N>", "<N>A&amp;ampere;</N>"},
      // An ampersand directly after another one ends the walk and drops the rest.
      {"<N>A&&B</N><M>lost</M>", "<N>A&amp;"},
      {"&<N>x</N>", ""},
      {"<N>no ampersand</N>", "<N>no ampersand</N>"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TARNOFXImport::escapePhysicalEntitiesInElementsInString(c.input), c.expected)
        << c.input;
  }
}

TEST(OFXAmpersands, TolerantWalkKeepsReferencesOnceAndEscapesTheRest) {
  struct Case {
    const char* input;
    const char* expected;
  };
  const Case cases[] = {
      {"<N>A & B</N>", "<N>A &amp; B</N>"},
      {"<N>A&amp;B</N>", "<N>A&amp;B</N>"},
      {"<N>A&AMP;B &Lt;</N>", "<N>A&amp;B &lt;</N>"},
      {"<N>&#38;&#x26;</N>", "<N>&#38;&#x26;</N>"},
      {"<N>&#;&#xZ;</N>", "<N>&amp;#;&amp;#xZ;</N>"},
      {"<N>A&&B</N><M>kept</M>", "<N>A&amp;&amp;B</N><M>kept</M>"},
      {"&", "&amp;"},
      {"<N>x&</N>", "<N>x&amp;</N>"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TARNOFXImport::escapeAmpersandsTolerantly(c.input), c.expected) << c.input;
  }
}

}  // namespace
}  // namespace tarn
