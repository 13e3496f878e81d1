// Case folding into a caller's buffer, for code that tells many texts apart
// or orders them case-insensitively (the account's suggestion lists and
// sorting): the folded forms compare byte by byte exactly as
// CaseInsensitiveCompare orders the texts. Nothing here is owned beyond the
// buffer the caller passes.
#pragma once

#include <string>
#include <string_view>

#include "tarn/platform/text.h"

namespace tarn {

// ASCII (the usual case) is lowered in place; anything else goes through the
// full Unicode folding.
inline void FoldInto(std::string_view text, std::string& out) {
  if (IsAscii(text)) {
    out.assign(text);
    for (char& c : out) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
  } else {
    out = CaseFold(text);
  }
}

}  // namespace tarn
