// Unicode-aware, case-insensitive comparison and search of UTF-8 names
// (ICU full case folding), with a fast path when both sides are ASCII.
#pragma once

#include <string>
#include <string_view>

namespace tarn {

// -1, 0 or 1, as a case-insensitive ordering of the two texts.
int CaseInsensitiveCompare(std::string_view a, std::string_view b);
bool CaseInsensitiveEqual(std::string_view a, std::string_view b);

enum class TextAnchor { Anywhere, AtStart, AtEnd };
// Whether the needle occurs case-insensitively in the haystack at the given
// anchor. An empty needle is found everywhere.
bool CaseInsensitiveContains(std::string_view haystack, std::string_view needle,
                             TextAnchor anchor = TextAnchor::Anywhere);

// The case-folded form of a text, for callers that fold one side once and
// compare it against many.
std::string CaseFold(std::string_view text);

bool IsAscii(std::string_view text);

}  // namespace tarn
