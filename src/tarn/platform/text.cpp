#include "tarn/platform/text.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace tarn {
namespace {

// Full case folding maps one code point to at most three, each at most four
// bytes in UTF-8.
constexpr size_t kMaxFoldedBytes = 12;

constexpr std::array<unsigned char, 256> makeAsciiLowerTable() {
  std::array<unsigned char, 256> table{};
  for (int c = 0; c < 256; ++c) {
    table[c] = static_cast<unsigned char>((c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c);
  }
  return table;
}
constexpr std::array<unsigned char, 256> kAsciiLower = makeAsciiLowerTable();

inline unsigned char lower(char c) {
  return kAsciiLower[static_cast<unsigned char>(c)];
}

int sign(int value) {
  return (value > 0) - (value < 0);
}

constexpr uint64_t kOnes = 0x0101010101010101ULL;
constexpr uint64_t kHighBits = 0x8080808080808080ULL;

// Lower-cases eight ASCII bytes at once: a byte gets 0x20 when it lies in
// 'A'..'Z'. The additions cannot carry into the next byte because every byte
// is below 0x80.
inline uint64_t lowerAsciiWord(uint64_t word) {
  const uint64_t atLeastA = (word + kOnes * (0x80 - 'A')) & kHighBits;
  const uint64_t aboveZ = (word + kOnes * (0x7F - 'Z')) & kHighBits;
  return word | ((atLeastA & ~aboveZ) >> 2);
}

// Full folding of one code point through ICU's string folding; returns the
// UTF-8 length.
size_t fullFoldWithIcu(UChar32 c, char* out) {
  UChar source[2];
  int32_t sourceLength = 0;
  U16_APPEND_UNSAFE(source, sourceLength, c);
  UChar folded[8];
  UErrorCode status = U_ZERO_ERROR;
  const int32_t foldedLength =
      u_strFoldCase(folded, 8, source, sourceLength, U_FOLD_CASE_DEFAULT, &status);
  int32_t length = 0;
  if (U_FAILURE(status)) {
    U8_APPEND_UNSAFE(out, length, c);
    return static_cast<size_t>(length);
  }
  for (int32_t i = 0; i < foldedLength;) {
    UChar32 unit;
    U16_NEXT(folded, i, foldedLength, unit);
    U8_APPEND_UNSAFE(out, length, unit);
  }
  return static_cast<size_t>(length);
}

// Above U+07FF, full folding differs from the one-to-one simple folding only
// in three blocks (Latin Extended Additional's ẖ..ẞ, Greek Extended, the
// Latin and Armenian ligatures); elsewhere the cheaper simple folding is exact.
size_t foldAbove07FF(UChar32 c, char* out) {
  if ((c >= 0x1E96 && c <= 0x1E9E) || (c >= 0x1F50 && c <= 0x1FFF) ||
      (c >= 0xFB00 && c <= 0xFB17)) {
    return fullFoldWithIcu(c, out);
  }
  int32_t length = 0;
  U8_APPEND_UNSAFE(out, length, u_foldCase(c, U_FOLD_CASE_DEFAULT));
  return static_cast<size_t>(length);
}

// The folded forms of U+0080..U+07FF (Latin, Greek, Cyrillic, Hebrew, Arabic),
// computed once: accented names are the common non-ASCII case.
struct TwoByteFold {
  uint8_t length;
  char bytes[7];
};
class TwoByteFoldTable {
 public:
  TwoByteFoldTable() {
    for (UChar32 c = 0x80; c < 0x800; ++c) {
      char buffer[kMaxFoldedBytes];
      const size_t length = fullFoldWithIcu(c, buffer);
      TwoByteFold& entry = entries_[c - 0x80];
      entry.length = static_cast<uint8_t>(std::min(length, sizeof entry.bytes));
      std::memcpy(entry.bytes, buffer, entry.length);
    }
  }
  const TwoByteFold& operator[](UChar32 c) const { return entries_[c - 0x80]; }

 private:
  std::array<TwoByteFold, 0x800 - 0x80> entries_;
};
const TwoByteFoldTable& twoByteFolds() {
  static const TwoByteFoldTable table;
  return table;
}

// Folds the code point that starts at text[position] (a byte >= 0x80) into
// `out`, advances `position` and returns the folded length. Ill-formed bytes
// are copied as they stand.
size_t foldNonAscii(std::string_view text, size_t& position, char* out) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const auto length = static_cast<int32_t>(text.size());
  auto start = static_cast<int32_t>(position);
  int32_t next = start;
  UChar32 c;
  U8_NEXT(bytes, next, length, c);
  position = static_cast<size_t>(next);
  if (c < 0) {
    const auto count = static_cast<size_t>(next - start);
    std::memcpy(out, bytes + start, count);
    return count;
  }
  if (c < 0x800) {
    const TwoByteFold& entry = twoByteFolds()[c];
    std::memcpy(out, entry.bytes, entry.length);
    return entry.length;
  }
  return foldAbove07FF(c, out);
}

// Yields the folded bytes of a text one at a time, folding lazily so that a
// comparison stops folding at the first difference.
class FoldCursor {
 public:
  explicit FoldCursor(std::string_view text) : text_(text) {}

  // The next folded byte, or -1 at the end.
  int next() {
    if (pendingAt_ < pendingLength_) return static_cast<unsigned char>(pending_[pendingAt_++]);
    if (position_ >= text_.size()) return -1;
    const char c = text_[position_];
    if (static_cast<unsigned char>(c) < 0x80) {
      ++position_;
      return lower(c);
    }
    pendingLength_ = foldNonAscii(text_, position_, pending_);
    pendingAt_ = 1;
    return static_cast<unsigned char>(pending_[0]);
  }

 private:
  std::string_view text_;
  size_t position_ = 0;
  char pending_[kMaxFoldedBytes];
  size_t pendingLength_ = 0;
  size_t pendingAt_ = 0;
};

// A folded text kept on the stack when it is short, on the heap otherwise.
class FoldedText {
 public:
  explicit FoldedText(std::string_view text) {
    size_t position = 0;
    while (position < text.size()) {
      const char c = text[position];
      if (static_cast<unsigned char>(c) < 0x80) {
        push(static_cast<char>(lower(c)));
        ++position;
      } else {
        char buffer[kMaxFoldedBytes];
        const size_t length = foldNonAscii(text, position, buffer);
        for (size_t i = 0; i < length; ++i) push(buffer[i]);
      }
    }
  }
  FoldedText(const FoldedText&) = delete;
  FoldedText& operator=(const FoldedText&) = delete;

  std::string_view view() const {
    return onHeap_ ? std::string_view(heap_) : std::string_view(inline_, size_);
  }

 private:
  void push(char c) {
    if (onHeap_) {
      heap_.push_back(c);
    } else if (size_ < sizeof inline_) {
      inline_[size_++] = c;
    } else {
      heap_.reserve(2 * sizeof inline_);
      heap_.assign(inline_, size_);
      heap_.push_back(c);
      onHeap_ = true;
    }
  }

  char inline_[256];
  size_t size_ = 0;
  std::string heap_;
  bool onHeap_ = false;
};

bool asciiEqualAt(std::string_view haystack, size_t offset, std::string_view needle) {
  for (size_t i = 0; i < needle.size(); ++i) {
    if (lower(haystack[offset + i]) != lower(needle[i])) return false;
  }
  return true;
}

// Both sides ASCII: compare with lowered bytes in place.
bool asciiSearch(std::string_view haystack, std::string_view needle, TextAnchor anchor) {
  if (needle.size() > haystack.size()) return false;
  switch (anchor) {
    case TextAnchor::AtStart:
      return asciiEqualAt(haystack, 0, needle);
    case TextAnchor::AtEnd:
      return asciiEqualAt(haystack, haystack.size() - needle.size(), needle);
    case TextAnchor::Whole:
      return needle.size() == haystack.size() && asciiEqualAt(haystack, 0, needle);
    case TextAnchor::Anywhere:
      break;
  }
  if (needle.empty()) return true;
  const unsigned char first = lower(needle[0]);
  const size_t last = haystack.size() - needle.size();
  for (size_t i = 0; i <= last; ++i) {
    if (lower(haystack[i]) == first && asciiEqualAt(haystack, i, needle)) return true;
  }
  return false;
}

// The needle is folded already; the haystack is folded here, lazily where the
// anchor allows.
bool foldedSearch(std::string_view haystack, std::string_view foldedNeedle, TextAnchor anchor) {
  if (anchor == TextAnchor::AtStart || anchor == TextAnchor::Whole) {
    FoldCursor cursor(haystack);
    for (const char c : foldedNeedle) {
      if (cursor.next() != static_cast<unsigned char>(c)) return false;
    }
    return anchor == TextAnchor::AtStart || cursor.next() == -1;
  }
  const FoldedText folded(haystack);
  const std::string_view text = folded.view();
  if (anchor == TextAnchor::AtEnd) {
    return text.size() >= foldedNeedle.size() &&
           text.compare(text.size() - foldedNeedle.size(), foldedNeedle.size(), foldedNeedle) == 0;
  }
  return text.find(foldedNeedle) != std::string_view::npos;
}

}  // namespace

bool IsAscii(std::string_view text) {
  const char* data = text.data();
  size_t size = text.size();
  uint64_t accumulated = 0;
  while (size >= 8) {
    uint64_t word;
    std::memcpy(&word, data, 8);
    accumulated |= word;
    data += 8;
    size -= 8;
  }
  for (size_t i = 0; i < size; ++i) accumulated |= static_cast<unsigned char>(data[i]);
  return (accumulated & kHighBits) == 0;
}

bool AsciiEqualIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && asciiEqualAt(a, 0, b);
}

void FoldInto(std::string_view text, std::string& out) {
  out.assign(text);
  // ASCII (the usual case) is lowered in place; the first byte beyond it
  // sends the rest through the full Unicode folding.
  size_t position = 0;
  for (; position < out.size(); ++position) {
    const char c = out[position];
    if (static_cast<unsigned char>(c) >= 0x80) break;
    out[position] = static_cast<char>(lower(c));
  }
  if (position == out.size()) return;
  out.resize(position);
  while (position < text.size()) {
    const char c = text[position];
    if (static_cast<unsigned char>(c) < 0x80) {
      out.push_back(static_cast<char>(lower(c)));
      ++position;
    } else {
      char buffer[kMaxFoldedBytes];
      out.append(buffer, foldNonAscii(text, position, buffer));
    }
  }
}

std::string CaseFold(std::string_view text) {
  std::string folded;
  FoldInto(text, folded);
  return folded;
}

int CaseInsensitiveCompare(std::string_view a, std::string_view b) {
  // The common ASCII prefix first, eight bytes at a time and then byte by
  // byte; folding is context-free, so the rest can be folded on its own.
  const size_t common = std::min(a.size(), b.size());
  size_t i = 0;
  // Most pairs of names differ in their first letter. (Signs are computed
  // arithmetically: which name comes first is a coin toss for the predictor.)
  if (common > 0) {
    const auto x = static_cast<unsigned char>(a[0]);
    const auto y = static_cast<unsigned char>(b[0]);
    const int difference = kAsciiLower[x] - kAsciiLower[y];
    if (((x | y) & 0x80) == 0 && difference != 0) return sign(difference);
  }
  if constexpr (std::endian::native == std::endian::little) {
    while (i + 8 <= common || (i < common && common >= 8)) {
      // The last word overlaps the one before; the bytes read twice are equal.
      if (i + 8 > common) i = common - 8;
      uint64_t x;
      uint64_t y;
      std::memcpy(&x, a.data() + i, 8);
      std::memcpy(&y, b.data() + i, 8);
      if ((x | y) & kHighBits) break;
      const uint64_t lowerX = lowerAsciiWord(x);
      const uint64_t lowerY = lowerAsciiWord(y);
      if (lowerX != lowerY) {
        // The lowest differing byte is the first in memory.
        const int shift = std::countr_zero(lowerX ^ lowerY) & ~7;
        return sign(static_cast<int>((lowerX >> shift) & 0xFF) -
                    static_cast<int>((lowerY >> shift) & 0xFF));
      }
      i += 8;
    }
  }
  for (; i < common; ++i) {
    const auto x = static_cast<unsigned char>(a[i]);
    const auto y = static_cast<unsigned char>(b[i]);
    if ((x | y) & 0x80) break;
    const int difference = kAsciiLower[x] - kAsciiLower[y];
    if (difference != 0) return sign(difference);
  }
  if (i == common && (i == a.size() || i == b.size())) {
    return sign(static_cast<int>(a.size() > b.size()) - static_cast<int>(a.size() < b.size()));
  }
  FoldCursor left(a.substr(i));
  FoldCursor right(b.substr(i));
  for (;;) {
    const int x = left.next();
    const int y = right.next();
    if (x != y) return x < y ? -1 : 1;
    if (x < 0) return 0;
  }
}

bool CaseInsensitiveEqual(std::string_view a, std::string_view b) {
  return CaseInsensitiveCompare(a, b) == 0;
}

bool CaseInsensitiveContains(std::string_view haystack, std::string_view needle,
                             TextAnchor anchor) {
  if (needle.empty()) return anchor != TextAnchor::Whole || haystack.empty();
  const bool haystackIsAscii = IsAscii(haystack);
  if (haystackIsAscii && IsAscii(needle)) return asciiSearch(haystack, needle, anchor);
  const FoldedText foldedNeedle(needle);
  if (haystackIsAscii && IsAscii(foldedNeedle.view())) {
    return asciiSearch(haystack, foldedNeedle.view(), anchor);
  }
  return foldedSearch(haystack, foldedNeedle.view(), anchor);
}

CaseInsensitiveMatcher::CaseInsensitiveMatcher(std::string_view needle, TextAnchor anchor)
    : needle_(CaseFold(needle)), anchor_(anchor), needleIsAscii_(IsAscii(needle_)) {}

bool CaseInsensitiveMatcher::matches(std::string_view haystack) const {
  if (needle_.empty()) return anchor_ != TextAnchor::Whole || haystack.empty();
  if (IsAscii(haystack)) {
    // A folded ASCII haystack holds no byte above 0x7F, so a needle with one
    // cannot occur in it.
    return needleIsAscii_ && asciiSearch(haystack, needle_, anchor_);
  }
  return foldedSearch(haystack, needle_, anchor_);
}

}  // namespace tarn
