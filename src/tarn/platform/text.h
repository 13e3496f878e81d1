// Unicode-aware, case-insensitive comparison and search of UTF-8 names
// (ICU full case folding, so "straße" equals "STRASSE"), with a fast path
// that allocates nothing when both sides are ASCII.
#pragma once

#include <string>
#include <string_view>

namespace tarn {

// -1, 0 or 1, as a case-insensitive ordering of the two texts: the order of
// their case-folded forms, byte by byte (which is code-point order). It is a
// total order on folded texts, so it serves std::sort. Bytes that are not
// valid UTF-8 fold to themselves.
int CaseInsensitiveCompare(std::string_view a, std::string_view b);
bool CaseInsensitiveEqual(std::string_view a, std::string_view b);

// Where a case-insensitive search must find the needle. Whole asks for the
// whole haystack, the same as CaseInsensitiveEqual.
enum class TextAnchor { Anywhere, AtStart, AtEnd, Whole };

// Whether the needle occurs case-insensitively in the haystack at the given
// anchor. An empty needle is found everywhere (Whole: only in an empty haystack).
// The search runs on the folded forms, so "SS" is found in "straße".
bool CaseInsensitiveContains(std::string_view haystack, std::string_view needle,
                             TextAnchor anchor = TextAnchor::Anywhere);

// The case-folded form of a text, for callers that fold one side once and
// compare it against many.
std::string CaseFold(std::string_view text);
// The same into a caller's buffer, for code that folds many texts in a row
// (the account's suggestion lists and sorting): the folded forms compare byte
// by byte exactly as CaseInsensitiveCompare orders the texts.
void FoldInto(std::string_view text, std::string& out);

bool IsAscii(std::string_view text);

// Equality with only the ASCII letters A-Z folded; every other byte must
// match exactly, so "SS" never equals "ß". For matching the parts of a text
// whose length in bytes must not change.
bool AsciiEqualIgnoringCase(std::string_view a, std::string_view b);

// A needle folded once and matched against many haystacks, for filters that
// run over every entry on each keystroke. matches() allocates nothing when the
// haystack is ASCII and, for haystacks of usual length, nothing otherwise either.
class CaseInsensitiveMatcher {
 public:
  explicit CaseInsensitiveMatcher(std::string_view needle,
                                  TextAnchor anchor = TextAnchor::Anywhere);

  bool matches(std::string_view haystack) const;

  const std::string& foldedNeedle() const { return needle_; }
  TextAnchor anchor() const { return anchor_; }

 private:
  std::string needle_;  // folded
  TextAnchor anchor_;
  bool needleIsAscii_;
};

}  // namespace tarn
