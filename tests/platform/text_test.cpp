#include "tarn/platform/text.h"

#include <gtest/gtest.h>
#include <unicode/ucasemap.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tarn {
namespace {

int foldedOrder(std::string_view a, std::string_view b) {
  const int order = CaseFold(a).compare(CaseFold(b));
  return (order > 0) - (order < 0);
}

TEST(Text, AsciiComparisonIgnoresCaseAndShorterPrefixesComeFirst) {
  EXPECT_EQ(CaseInsensitiveCompare("apple", "APPLE"), 0);
  EXPECT_EQ(CaseInsensitiveCompare("apple", "Banana"), -1);
  EXPECT_EQ(CaseInsensitiveCompare("Zebra", "apple"), 1);
  EXPECT_EQ(CaseInsensitiveCompare("Rent", "rent payment"), -1);
  EXPECT_EQ(CaseInsensitiveCompare("rent payment", "RENT"), 1);
  EXPECT_EQ(CaseInsensitiveCompare("", ""), 0);
  EXPECT_EQ(CaseInsensitiveCompare("", "a"), -1);
  // '_' (0x5F) sits between the upper and lower case letters: folding to lower
  // case puts it before every letter, whatever case the letter has.
  EXPECT_EQ(CaseInsensitiveCompare("_", "a"), -1);
  EXPECT_EQ(CaseInsensitiveCompare("_", "A"), -1);
  EXPECT_TRUE(CaseInsensitiveEqual("Groceries", "gROCERIES"));
  EXPECT_FALSE(CaseInsensitiveEqual("Groceries", "Grocerie"));
}

TEST(Text, NonAsciiNamesFoldFully) {
  EXPECT_TRUE(CaseInsensitiveEqual("Café", "CAFÉ"));
  EXPECT_TRUE(CaseInsensitiveEqual("ÉPICERIE", "épicerie"));
  EXPECT_TRUE(CaseInsensitiveEqual("straße", "STRASSE"));
  EXPECT_TRUE(CaseInsensitiveEqual("Straße", "strasse"));
  EXPECT_TRUE(CaseInsensitiveEqual("ΌΣΟΣ", "όσος"));  // final sigma
  EXPECT_TRUE(
      CaseInsensitiveEqual("\xE2\x84\xAA"
                           "elvin",
                           "kelvin"));  // Kelvin sign
  EXPECT_TRUE(
      CaseInsensitiveEqual("\xEF\xAC\x83"
                           "x",
                           "FFIX"));                        // ffi ligature
  EXPECT_TRUE(CaseInsensitiveEqual("\xE1\xBA\x9E", "ss"));  // capital sharp s
  EXPECT_FALSE(CaseInsensitiveEqual("Cafe", "Café"));
  EXPECT_EQ(CaseInsensitiveCompare("straße", "strasser"), -1);
  EXPECT_EQ(CaseInsensitiveCompare("Épicerie", "epicerie"), 1);  // é after e
  EXPECT_EQ(CaseFold("Straße ÉTÉ"), "strasse été");
  EXPECT_EQ(CaseFold("MIXED Case 42"), "mixed case 42");
}

TEST(Text, ComparisonIsATotalOrderThatAgreesWithTheFoldedTexts) {
  std::vector<std::string> names = {
      "apple",    "Apple",   "APPLES",       "Äpfel",  "äpfel", "Zoo",   "zoë",      "ZOË",
      "straße",   "STRASSE", "Strasse",      "strass", "ΌΣΟΣ",  "όσος",  "café",     "CAFE",
      "Café au",  "",        "_x",           "\xFF",   "\xC3",  "a\xC3", "\xC3\xA9", "é",
      "\xE2\x82", "k",       "\xE2\x84\xAA", "ﬃ",      "ffi",   "ffj"};
  for (const auto& a : names) {
    for (const auto& b : names) {
      const int order = CaseInsensitiveCompare(a, b);
      EXPECT_EQ(order, -CaseInsensitiveCompare(b, a)) << a << " / " << b;
      EXPECT_EQ(order, foldedOrder(a, b)) << a << " / " << b;
      EXPECT_EQ(CaseInsensitiveEqual(a, b), order == 0);
    }
  }
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return CaseInsensitiveCompare(a, b) < 0;
  });
  for (size_t i = 1; i < names.size(); ++i) {
    EXPECT_LE(CaseInsensitiveCompare(names[i - 1], names[i]), 0);
  }
}

TEST(Text, InvalidUtf8IsComparedAndSearchedWithoutHarm) {
  const std::string broken = "Caf\xC3";  // the é cut short
  EXPECT_EQ(CaseInsensitiveCompare(broken, broken), 0);
  EXPECT_FALSE(CaseInsensitiveEqual(broken, "Café"));
  EXPECT_TRUE(CaseInsensitiveContains("\xFF\xFEMarché\xFF", "MARCHÉ"));
  EXPECT_TRUE(CaseInsensitiveContains("x\xE2\x82", "X\xE2\x82", TextAnchor::Whole));
  EXPECT_FALSE(CaseInsensitiveContains("\xF0\x9F", "\xF0\x9F\x98\x80"));
  EXPECT_EQ(CaseFold("A\x80Z"), "a\x80z");
}

TEST(Text, SearchHonoursItsAnchor) {
  const std::string name = "Épicerie du Coin";
  EXPECT_TRUE(CaseInsensitiveContains(name, "DU"));
  EXPECT_TRUE(CaseInsensitiveContains(name, "épi", TextAnchor::AtStart));
  EXPECT_FALSE(CaseInsensitiveContains(name, "cerie", TextAnchor::AtStart));
  EXPECT_TRUE(CaseInsensitiveContains(name, "COIN", TextAnchor::AtEnd));
  EXPECT_FALSE(CaseInsensitiveContains(name, "du", TextAnchor::AtEnd));
  EXPECT_TRUE(CaseInsensitiveContains(name, "ÉPICERIE DU COIN", TextAnchor::Whole));
  EXPECT_FALSE(CaseInsensitiveContains(name, "ÉPICERIE DU", TextAnchor::Whole));
  EXPECT_FALSE(CaseInsensitiveContains("Rent", "rents"));
  EXPECT_FALSE(CaseInsensitiveContains("Rent", "rents", TextAnchor::AtEnd));
  EXPECT_TRUE(CaseInsensitiveContains("Monthly RENT", "rent", TextAnchor::AtEnd));
  EXPECT_FALSE(CaseInsensitiveContains("Monthly RENT", "monthly", TextAnchor::AtEnd));
  // Searches run on folded texts: an expansion can hold the match, and a
  // needle longer in bytes than the haystack can still be found.
  EXPECT_FALSE(CaseInsensitiveContains("Große Straße", "SS", TextAnchor::AtEnd));
  EXPECT_TRUE(CaseInsensitiveContains("Große Straße", "SSE", TextAnchor::AtEnd));
  EXPECT_TRUE(CaseInsensitiveContains("Große", "GROSS", TextAnchor::AtStart));
  EXPECT_TRUE(CaseInsensitiveContains("\xCE\x90", "\xCE\xB9\xCC\x88\xCC\x81", TextAnchor::Whole));
  EXPECT_TRUE(
      CaseInsensitiveContains("\xE2\x84\xAA"
                              "ilo",
                              "kilo", TextAnchor::AtStart));
}

TEST(Text, EmptyNeedlesAndLongHaystacks) {
  for (TextAnchor anchor : {TextAnchor::Anywhere, TextAnchor::AtStart, TextAnchor::AtEnd}) {
    EXPECT_TRUE(CaseInsensitiveContains("anything", "", anchor));
    EXPECT_TRUE(CaseInsensitiveContains("", "", anchor));
    EXPECT_FALSE(CaseInsensitiveContains("", "x", anchor));
    EXPECT_TRUE(CaseInsensitiveMatcher("", anchor).matches("Ünïcödé"));
  }
  EXPECT_FALSE(CaseInsensitiveContains("anything", "", TextAnchor::Whole));
  EXPECT_TRUE(CaseInsensitiveContains("", "", TextAnchor::Whole));

  // Longer than the stack buffer that short texts are folded into.
  std::string memo;
  for (int i = 0; i < 300; ++i) memo += "é";
  memo += "Zürich";
  EXPECT_TRUE(CaseInsensitiveContains(memo, "ÉÉZÜRICH", TextAnchor::AtEnd));
  EXPECT_TRUE(CaseInsensitiveMatcher("ÉZÜR").matches(memo));
  EXPECT_FALSE(CaseInsensitiveMatcher("ZÜRICHE").matches(memo));
}

TEST(Text, MatcherAgreesWithTheOneShotSearch) {
  const std::vector<std::string> haystacks = {"",
                                              "Rent",
                                              "Monthly RENT",
                                              "Café",
                                              "CAFÉ CRÈME",
                                              "Große Straße",
                                              "strasse",
                                              "\xE2\x84\xAA"
                                              "ilo",
                                              "kilo",
                                              "Épicerie du Coin",
                                              "\xFF"
                                              "bad",
                                              "ΌΣΟΣ"};
  const std::vector<std::string> needles = {
      "",   "rent", "RE", "é",   "CAFÉ", "ss", "STRASSE",      "k",   "KILO",
      "du", "bad",  "σ",  "ΣΟΣ", "Ö",    "ß",  "\xE2\x84\xAA", "\xFF"};
  for (TextAnchor anchor :
       {TextAnchor::Anywhere, TextAnchor::AtStart, TextAnchor::AtEnd, TextAnchor::Whole}) {
    for (const auto& needle : needles) {
      const CaseInsensitiveMatcher matcher(needle, anchor);
      EXPECT_EQ(matcher.anchor(), anchor);
      for (const auto& haystack : haystacks) {
        EXPECT_EQ(matcher.matches(haystack), CaseInsensitiveContains(haystack, needle, anchor))
            << "needle " << needle << " in " << haystack << " anchor " << static_cast<int>(anchor);
      }
    }
  }
  EXPECT_EQ(CaseInsensitiveMatcher("STRAßE").foldedNeedle(), "strasse");
  EXPECT_TRUE(CaseInsensitiveMatcher("SS", TextAnchor::AtEnd).matches("Strauß"));
  EXPECT_TRUE(CaseInsensitiveMatcher("k", TextAnchor::Whole).matches("\xE2\x84\xAA"));
  EXPECT_FALSE(CaseInsensitiveMatcher("é").matches("Cafe"));
}

TEST(Text, FoldingAgreesWithIcuForEveryCodePoint) {
  std::string all;
  for (UChar32 c = 0; c <= 0x10FFFF; ++c) {
    if (c >= 0xD800 && c <= 0xDFFF) continue;
    char buffer[4];
    int32_t length = 0;
    U8_APPEND_UNSAFE(buffer, length, c);
    all.append(buffer, static_cast<size_t>(length));
  }
  UErrorCode status = U_ZERO_ERROR;
  UCaseMap* map = ucasemap_open(nullptr, U_FOLD_CASE_DEFAULT, &status);
  ASSERT_TRUE(U_SUCCESS(status));
  std::string expected(all.size() * 3, '\0');
  const int32_t length =
      ucasemap_utf8FoldCase(map, expected.data(), static_cast<int32_t>(expected.size()), all.data(),
                            static_cast<int32_t>(all.size()), &status);
  ucasemap_close(map);
  ASSERT_TRUE(U_SUCCESS(status));
  expected.resize(static_cast<size_t>(length));
  EXPECT_TRUE(CaseFold(all) == expected);
}

TEST(Text, IsAsciiLooksAtEveryByte) {
  EXPECT_TRUE(IsAscii(""));
  EXPECT_TRUE(IsAscii("plain ascii text of some length"));
  for (size_t length = 1; length < 20; ++length) {
    for (size_t at = 0; at < length; ++at) {
      std::string text(length, 'a');
      text[at] = '\x80';
      EXPECT_FALSE(IsAscii(text)) << length << " " << at;
    }
  }
}

}  // namespace
}  // namespace tarn
