#include "tarn/filters/text_condition_matcher.h"

#include <bit>
#include <cstring>

#include "tarn/filters/filter_codes.h"

namespace tarn {
namespace {

constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
constexpr std::uint64_t kHighBits = 0x8080808080808080ULL;

char lowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

// Whether the bytes at `offset` equal the folded ASCII needle, case aside
// (a byte above 0x7F equals none of its bytes). The caller has checked that
// the needle fits.
bool equalAt(std::string_view haystack, std::size_t offset, std::string_view needle) {
  for (std::size_t i = 0; i < needle.size(); ++i) {
    if (lowerAscii(haystack[offset + i]) != needle[i]) return false;
  }
  return true;
}

bool hasHighByte(std::string_view text, std::size_t from, std::size_t to) {
  for (std::size_t i = from; i < to; ++i) {
    if (static_cast<unsigned char>(text[i]) & 0x80) return true;
  }
  return false;
}

std::optional<TextAnchor> anchorForQualifier(std::int32_t qualifier) {
  switch (qualifier) {
    case kTextIsExactly:
      return TextAnchor::Whole;
    case kTextContains:
      return TextAnchor::Anywhere;
    case kTextStartsWith:
      return TextAnchor::AtStart;
    case kTextEndsWith:
      return TextAnchor::AtEnd;
    default:
      return std::nullopt;
  }
}

}  // namespace

TextConditionMatcher::TextConditionMatcher(std::string_view needle, std::int32_t qualifier) {
  const auto anchor = anchorForQualifier(qualifier);
  if (!anchor) return;
  matcher_.emplace(needle, *anchor);
  const std::string& folded = matcher_->foldedNeedle();
  quick_ = !folded.empty() && IsAscii(folded) &&
           (*anchor == TextAnchor::Anywhere || *anchor == TextAnchor::AtStart);
}

bool TextConditionMatcher::matches(std::string_view haystack) const {
  if (!matcher_) return false;
  if (quick_) {
    const Quick quick = quickSearch(haystack);
    if (quick != Quick::Unsure) return quick == Quick::Match;
  }
  return matcher_->matches(haystack);
}

// Case folding maps each character on its own, so the folded haystack starts
// with the lowered form of an ASCII prefix: a needle found there is found,
// and only bytes above 0x7F can fold into something else.
TextConditionMatcher::Quick TextConditionMatcher::quickSearch(std::string_view haystack) const {
  const std::string_view needle = matcher_->foldedNeedle();
  const std::size_t size = haystack.size();

  if (matcher_->anchor() == TextAnchor::AtStart) {
    const std::size_t prefix = std::min(size, needle.size());
    if (hasHighByte(haystack, 0, prefix)) return Quick::Unsure;
    if (size < needle.size()) return Quick::NoMatch;  // all ASCII, and too short
    return equalAt(haystack, 0, needle) ? Quick::Match : Quick::NoMatch;
  }

  // Candidates for the needle's first byte, eight bytes at a time: a letter
  // matches either case through bit 0x20; other bytes must be equal.
  const char first = needle[0];
  const bool letter = first >= 'a' && first <= 'z';
  const std::uint64_t caseMask = letter ? 0x20 * kOnes : 0;
  const std::uint64_t target = static_cast<unsigned char>(first) * kOnes;
  std::size_t position = 0;
  for (; position + 8 <= size; position += 8) {
    std::uint64_t word;
    std::memcpy(&word, haystack.data() + position, 8);
    if (word & kHighBits) return Quick::Unsure;
    const std::uint64_t differ = (word | caseMask) ^ target;
    // A zero byte of `differ` is a candidate (bytes above a candidate may be
    // flagged too; each one is checked).
    std::uint64_t candidates = (differ - kOnes) & ~differ & kHighBits;
    while (candidates != 0) {
      const std::size_t at = position + static_cast<std::size_t>(std::countr_zero(candidates)) / 8;
      // A byte above 0x7F within reach differs from every needle byte here;
      // the scan meets it later and hands the haystack on.
      if (at + needle.size() <= size && equalAt(haystack, at, needle)) {
        return Quick::Match;
      }
      candidates &= candidates - 1;
    }
  }
  for (; position < size; ++position) {
    const char c = haystack[position];
    if (static_cast<unsigned char>(c) & 0x80) return Quick::Unsure;
    if (lowerAscii(c) == first && position + needle.size() <= size &&
        equalAt(haystack, position, needle)) {
      return Quick::Match;
    }
  }
  return Quick::NoMatch;
}

}  // namespace tarn
