#include "tarn/platform/text.h"

#include <unicode/ucasemap.h>

#include <algorithm>
#include <memory>

namespace tarn {
namespace {

unsigned char asciiLower(unsigned char c) {
  return (c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c;
}

int sign(int value) {
  return (value > 0) - (value < 0);
}

}  // namespace

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string CaseFold(std::string_view text) {
  if (IsAscii(text)) {
    std::string folded(text);
    for (char& c : folded) c = static_cast<char>(asciiLower(static_cast<unsigned char>(c)));
    return folded;
  }
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<UCaseMap, decltype(&ucasemap_close)> map(ucasemap_open(nullptr, 0, &status),
                                                           ucasemap_close);
  if (U_FAILURE(status)) return std::string(text);
  std::string folded(text.size() * 3 + 4, '\0');
  status = U_ZERO_ERROR;
  int32_t length =
      ucasemap_utf8FoldCase(map.get(), folded.data(), static_cast<int32_t>(folded.size()),
                            text.data(), static_cast<int32_t>(text.size()), &status);
  if (status == U_BUFFER_OVERFLOW_ERROR) {
    folded.assign(static_cast<size_t>(length), '\0');
    status = U_ZERO_ERROR;
    length = ucasemap_utf8FoldCase(map.get(), folded.data(), length, text.data(),
                                   static_cast<int32_t>(text.size()), &status);
  }
  if (U_FAILURE(status)) return std::string(text);
  folded.resize(static_cast<size_t>(length));
  return folded;
}

int CaseInsensitiveCompare(std::string_view a, std::string_view b) {
  if (IsAscii(a) && IsAscii(b)) {
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
      const int difference = asciiLower(static_cast<unsigned char>(a[i])) -
                             asciiLower(static_cast<unsigned char>(b[i]));
      if (difference != 0) return sign(difference);
    }
    return sign(static_cast<int>(a.size() > b.size()) - static_cast<int>(a.size() < b.size()));
  }
  return sign(CaseFold(a).compare(CaseFold(b)));
}

bool CaseInsensitiveEqual(std::string_view a, std::string_view b) {
  return CaseInsensitiveCompare(a, b) == 0;
}

bool CaseInsensitiveContains(std::string_view haystack, std::string_view needle,
                             TextAnchor anchor) {
  if (needle.empty()) return true;
  const std::string foldedHaystack = CaseFold(haystack);
  const std::string foldedNeedle = CaseFold(needle);
  if (foldedNeedle.size() > foldedHaystack.size()) return false;
  switch (anchor) {
    case TextAnchor::AtStart:
      return foldedHaystack.compare(0, foldedNeedle.size(), foldedNeedle) == 0;
    case TextAnchor::AtEnd:
      return foldedHaystack.compare(foldedHaystack.size() - foldedNeedle.size(),
                                    foldedNeedle.size(), foldedNeedle) == 0;
    case TextAnchor::Anywhere:
      return foldedHaystack.find(foldedNeedle) != std::string::npos;
  }
  return false;
}

}  // namespace tarn
