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

// Longer than the stack buffer that short texts are folded into.
std::string longMemo() {
  std::string memo;
  for (int i = 0; i < 300; ++i) memo += "é";
  return memo + "Zürich";
}

TEST(Text, ComparisonIgnoresCaseAndFoldsNonAsciiFully) {
  struct Case {
    std::string a, b;
    int order;
  };
  // Full folding itself is checked against ICU below.
  // clang-format off
  const Case cases[] = {
      {"apple", "APPLE", 0}, {"apple", "Banana", -1}, {"Zebra", "apple", 1}, {"", "", 0},
      {"Rent", "rent payment", -1}, {"", "a", -1}, {"Groceries", "Grocerie", 1},
      {"_", "a", -1}, {"_", "A", -1},  // '_' lies between the cases: folding puts it first
      {"Café", "CAFÉ", 0}, {"ÉPICERIE", "épicerie", 0}, {"Straße", "strasse", 0},
      {"Cafe", "Café", -1}, {"straße", "strasser", -1}, {"Épicerie", "epicerie", 1},
      {"Caf\xC3", "Caf\xC3", 0}, {"Caf\xC3", "Café", -1}};  // the é cut short
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.a + " / " + c.b);
    EXPECT_EQ(CaseInsensitiveCompare(c.a, c.b), c.order);
    EXPECT_EQ(CaseInsensitiveCompare(c.b, c.a), -c.order);
    EXPECT_EQ(CaseInsensitiveEqual(c.a, c.b), c.order == 0);
  }
  EXPECT_EQ(CaseFold("Straße ÉTÉ"), "strasse été");
  EXPECT_EQ(CaseFold("MIXED Case 42"), "mixed case 42");
  EXPECT_EQ(CaseFold("A\x80Z"), "a\x80z");
  // Folding into a reused buffer: a long text first, so that a shorter one
  // must not keep its tail, and non-ASCII after an ASCII prefix.
  std::string buffer;
  for (std::string_view text : {"A LONG ASCII NAME", "Straße ÉTÉ", "AB", ""}) {
    FoldInto(text, buffer);
    EXPECT_EQ(buffer, CaseFold(text)) << text;
  }
  EXPECT_EQ(buffer, "");
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

TEST(Text, SearchHonoursItsAnchor) {
  using enum TextAnchor;
  struct Case {
    std::string haystack, needle;
    TextAnchor anchor;
    bool found;
  };
  const std::string memo = longMemo();
  // Searches run on folded texts: an expansion can hold the match, and a needle
  // longer in bytes than the haystack can still be found.
  // clang-format off
  const Case cases[] = {
      {"Épicerie du Coin", "DU", Anywhere, true},  {"Épicerie du Coin", "épi", AtStart, true},
      {"Épicerie du Coin", "cerie", AtStart, false}, {"Épicerie du Coin", "COIN", AtEnd, true},
      {"Épicerie du Coin", "du", AtEnd, false},
      {"Épicerie du Coin", "ÉPICERIE DU COIN", Whole, true},
      {"Épicerie du Coin", "ÉPICERIE DU", Whole, false},
      {"Rent", "rents", Anywhere, false}, {"Rent", "rents", AtEnd, false},
      {"Monthly RENT", "rent", AtEnd, true}, {"Monthly RENT", "monthly", AtEnd, false},
      {"Große Straße", "SS", AtEnd, false}, {"Große Straße", "SSE", AtEnd, true},
      {"Große", "GROSS", AtStart, true}, {"\xCE\x90", "\xCE\xB9\xCC\x88\xCC\x81", Whole, true},
      {"\xE2\x84\xAA" "ilo", "kilo", AtStart, true},
      {"anything", "", Whole, false}, {"", "", Whole, true},
      {"\xFF\xFEMarché\xFF", "MARCHÉ", Anywhere, true},  // invalid UTF-8 does no harm
      {"x\xE2\x82", "X\xE2\x82", Whole, true}, {"\xF0\x9F", "\xF0\x9F\x98\x80", Anywhere, false},
      {memo, "ÉÉZÜRICH", AtEnd, true}, {memo, "ZÜRICHE", Anywhere, false}};
  // clang-format on
  for (const Case& c : cases) {
    EXPECT_EQ(CaseInsensitiveContains(c.haystack, c.needle, c.anchor), c.found)
        << c.needle << " in " << c.haystack.substr(0, 20);
  }
  for (TextAnchor anchor : {Anywhere, AtStart, AtEnd}) {
    EXPECT_TRUE(CaseInsensitiveContains("anything", "", anchor));
    EXPECT_TRUE(CaseInsensitiveContains("", "", anchor));
    EXPECT_FALSE(CaseInsensitiveContains("", "x", anchor));
  }
}

TEST(Text, MatcherAgreesWithTheOneShotSearch) {
  const std::string memo = longMemo();
  // clang-format off
  const std::vector<std::string> haystacks = {
      "", "Rent", "Monthly RENT", "Café", "CAFÉ CRÈME", "Große Straße", "strasse", memo, "kilo",
      "Épicerie du Coin", "\xFF" "bad", "ΌΣΟΣ", "\xE2\x84\xAA" "ilo", "Ünïcödé"};
  const std::vector<std::string> needles = {"", "rent", "RE", "é", "CAFÉ", "ss", "STRASSE", "k",
      "KILO", "ÉZÜR", "du", "bad", "σ", "ΣΟΣ", "Ö", "ß", "\xE2\x84\xAA", "\xFF"};
  // clang-format on
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
  for (size_t length = 1; length < 20; ++length) {
    for (size_t at = 0; at < length; ++at) {
      std::string text(length, 'a');
      text[at] = '\x80';
      EXPECT_FALSE(IsAscii(text)) << length << " " << at;
    }
  }
}

TEST(Text, AsciiEqualityFoldsOnlyTheAsciiLetters) {
  EXPECT_TRUE(AsciiEqualIgnoringCase("Kr.", "kR."));
  EXPECT_TRUE(AsciiEqualIgnoringCase("", ""));
  EXPECT_FALSE(AsciiEqualIgnoringCase("kr", "kr."));
  EXPECT_FALSE(AsciiEqualIgnoringCase("[", "{"));  // 0x5B and 0x7B differ by 0x20 too
  EXPECT_FALSE(AsciiEqualIgnoringCase("@", "`"));
  // Full folding would make these equal; the same length in bytes does not.
  EXPECT_FALSE(AsciiEqualIgnoringCase("\xC3\x9F", "ss"));  // ß
  EXPECT_TRUE(CaseInsensitiveEqual("\xC3\x9F", "ss"));
  EXPECT_FALSE(AsciiEqualIgnoringCase("\xC3\x89", "\xC3\xA9"));  // É, é
  EXPECT_TRUE(AsciiEqualIgnoringCase("\xC3\x89", "\xC3\x89"));
}

}  // namespace
}  // namespace tarn
