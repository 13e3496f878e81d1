#include "tarn/filters/text_condition_matcher.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tarn/filters/filter_codes.h"
#include "tarn/platform/text.h"

namespace tarn {
namespace {

TEST(TextConditionMatcher, AgreesWithTheFullFoldingSearch) {
  // ASCII pieces of both cases and punctuation, and characters whose folding
  // changes length or lands in ASCII (ß -> ss, Kelvin sign -> k, long s -> s,
  // the fi ligature -> fi).
  const std::vector<std::string> pieces = {"a", "A", "b", "K",      "k",      "s",      "S",
                                           "f", "i", "@", "`",      " ",      "1",      "x",
                                           "é", "É", "ß", "\u212A", "\u017F", "\uFB01", "{"};
  const std::pair<int32_t, TextAnchor> qualifiers[] = {{kTextIsExactly, TextAnchor::Whole},
                                                       {kTextContains, TextAnchor::Anywhere},
                                                       {kTextStartsWith, TextAnchor::AtStart},
                                                       {kTextEndsWith, TextAnchor::AtEnd}};
  uint32_t seed = 7;
  auto next = [&seed] {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 16) & 0x7FFF;
  };
  auto text = [&](size_t length, size_t alphabet) {
    std::string result;
    for (size_t i = 0; i < length; ++i) result += pieces[next() % alphabet];
    return result;
  };

  for (int round = 0; round < 2000; ++round) {
    // Mostly ASCII needles (the quick path), some with folding characters.
    const std::string needle = text(1 + next() % 3, round % 4 == 0 ? pieces.size() : 15);
    const std::string haystack = text(next() % 24, round % 3 == 0 ? pieces.size() : 15);
    for (const auto& [qualifier, anchor] : qualifiers) {
      EXPECT_EQ(TextConditionMatcher(needle, qualifier).matches(haystack),
                CaseInsensitiveContains(haystack, needle, anchor))
          << "needle \"" << needle << "\" haystack \"" << haystack << "\" qualifier " << qualifier;
    }
  }

  // Matches in the ASCII part before a folding character, and across it.
  EXPECT_TRUE(TextConditionMatcher("mark", kTextContains).matches("Supermarket café"));
  EXPECT_TRUE(TextConditionMatcher("sk", kTextContains).matches("tas\u212A list"));
  EXPECT_TRUE(TextConditionMatcher("strasse", kTextStartsWith).matches("Straße 5"));
}

}  // namespace
}  // namespace tarn
