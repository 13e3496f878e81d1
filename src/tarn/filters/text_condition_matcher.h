// The text comparison of one filter condition: its search text folded once,
// its qualifier (is exactly, contains, starts with, ends with) and a quick
// one-pass search for the common case of ASCII text on both sides. A value
// held by a prepared condition for one run; refers to nothing.
// Internal to the filters module: not installed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tarn/platform/text.h"

namespace tarn {

class TextConditionMatcher {
 public:
  // Never matches (the test of an unknown qualifier).
  TextConditionMatcher() = default;
  // `qualifier` is a text qualifier code; any other never matches.
  TextConditionMatcher(std::string_view needle, std::int32_t qualifier);

  bool matches(std::string_view haystack) const;

 private:
  enum class Quick { Match, NoMatch, Unsure };
  // Contains / starts with for an ASCII folded needle, reading the haystack
  // once, eight bytes at a time; Unsure when it meets a byte above 0x7F (the
  // full folding then decides).
  Quick quickSearch(std::string_view haystack) const;

  std::optional<CaseInsensitiveMatcher> matcher_;
  bool quick_ = false;
};

}  // namespace tarn
