#include "tarn/platform/utf8.h"

#include <cstring>

namespace tarn::plist {
namespace {

// The length of the valid prefix of the text.
std::size_t validPrefix(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    if (i + 8 <= text.size()) {
      std::uint64_t word;
      std::memcpy(&word, text.data() + i, 8);
      if ((word & 0x8080808080808080ull) == 0) {
        i += 8;
        continue;
      }
    }
    const Utf8Sequence sequence = DecodeUtf8Sequence(text, i);
    if (sequence.length == 0) return i;
    i += sequence.length;
  }
  return i;
}

}  // namespace

void MakeValidUtf8(std::string& text) {
  const std::size_t valid = validPrefix(text);
  if (valid == text.size()) return;
  std::string repaired(text, 0, valid);
  for (std::size_t i = valid; i < text.size();) {
    const Utf8Sequence sequence = DecodeUtf8Sequence(text, i);
    if (sequence.length == 0) {
      repaired += "\xEF\xBF\xBD";
      ++i;
    } else {
      repaired.append(text, i, sequence.length);
      i += sequence.length;
    }
  }
  text = std::move(repaired);
}

}  // namespace tarn::plist
