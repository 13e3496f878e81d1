// UTF-8 checking for the property-list readers and writers: strings in a
// plist::Value are always valid UTF-8, whatever bytes a file held. Malformed
// sequences (stray continuation bytes, overlong forms, surrogates, values past
// U+10FFFF, truncation) become U+FFFD, one per offending byte, in both the
// readers and the binary writer.
// Internal to the platform module: not installed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::plist {

struct Utf8Sequence {
  std::uint32_t codePoint = 0;
  // 0 when the bytes at the position are malformed.
  std::size_t length = 0;
};

// The sequence starting at text[i] (i < text.size()).
inline Utf8Sequence DecodeUtf8Sequence(std::string_view text, std::size_t i) {
  const auto* p = reinterpret_cast<const std::uint8_t*>(text.data());
  const std::uint32_t lead = p[i];
  if (lead < 0x80) return {lead, 1};
  std::size_t length = 0;
  std::uint32_t codePoint = 0;
  std::uint32_t minimum = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, codePoint = lead & 0x1F, minimum = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, codePoint = lead & 0x0F, minimum = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, codePoint = lead & 0x07, minimum = 0x10000;
  }
  if (length == 0 || i + length > text.size()) return {};
  for (std::size_t k = 1; k < length; ++k) {
    if ((p[i + k] & 0xC0) != 0x80) return {};
    codePoint = (codePoint << 6) | (p[i + k] & 0x3F);
  }
  if (codePoint < minimum || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
    return {};
  }
  return {codePoint, length};
}

// Replaces, in place, every byte of a malformed sequence by U+FFFD; valid
// text (the usual case, checked eight ASCII bytes at a time) is not copied.
void MakeValidUtf8(std::string& text);

}  // namespace tarn::plist
