#include "tarn/platform/number_text.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace tarn {
namespace {

// The length of one white-space character at the start of `text`, 0 if none.
std::size_t whiteSpaceAt(std::string_view text) {
  const auto byte = [&text](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
  };
  const unsigned first = byte(0);
  if (first == ' ' || (first >= '\t' && first <= '\r')) return 1;
  if (first == 0xC2) {
    // U+0085 next line, U+00A0 no-break space.
    return byte(1) == 0x85 || byte(1) == 0xA0 ? 2 : 0;
  }
  if (first == 0xE1) {
    return byte(1) == 0x9A && byte(2) == 0x80 ? 3 : 0;  // U+1680 ogham space mark
  }
  if (first == 0xE2) {
    const unsigned second = byte(1);
    const unsigned third = byte(2);
    // U+2000-U+200A spaces, U+2028 line and U+2029 paragraph separators,
    // U+202F narrow no-break space.
    if (second == 0x80 &&
        ((third >= 0x80 && third <= 0x8A) || third == 0xA8 || third == 0xA9 || third == 0xAF)) {
      return 3;
    }
    return second == 0x81 && third == 0x9F ? 3 : 0;  // U+205F medium mathematical space
  }
  if (first == 0xE3) {
    return byte(1) == 0x80 && byte(2) == 0x80 ? 3 : 0;  // U+3000 ideographic space
  }
  return 0;
}

}  // namespace

int DecimalDigitValueAt(std::string_view text, std::size_t i, std::size_t& next) {
  const auto byte = static_cast<unsigned char>(text[i]);
  if (byte < 0x80) {
    next = i + 1;
    return byte >= '0' && byte <= '9' ? byte - '0' : -1;
  }
  UChar32 c;
  auto offset = static_cast<std::int32_t>(i);
  U8_NEXT(reinterpret_cast<const std::uint8_t*>(text.data()), offset,
          static_cast<std::int32_t>(text.size()), c);
  next = static_cast<std::size_t>(offset);
  if (c < 0 || u_charType(c) != U_DECIMAL_DIGIT_NUMBER) return -1;
  return u_charDigitValue(c);
}

std::size_t LeadingWhiteSpaceLength(std::string_view text) {
  std::size_t skipped = 0;
  while (const std::size_t length = whiteSpaceAt(text.substr(skipped))) skipped += length;
  return skipped;
}

std::int32_t LeadingInteger(std::string_view text) {
  std::size_t i = LeadingWhiteSpaceLength(text);
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  // Digits past the 32-bit range cannot bring the value back into it.
  constexpr std::int64_t kLimit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
  std::int64_t magnitude = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    magnitude = std::min<std::int64_t>(magnitude * 10 + (text[i] - '0'), kLimit);
  }
  const std::int64_t value = negative ? -magnitude : magnitude;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

double LeadingReal(std::string_view text) {
  std::size_t i = LeadingWhiteSpaceLength(text);
  // from_chars takes a minus sign but no plus; a second sign is no number.
  if (i < text.size() && text[i] == '+') {
    ++i;
    if (i < text.size() && text[i] == '-') return 0.0;
  }
  double value = 0.0;
  const char* begin = text.data() + i;
  const auto [end, error] = std::from_chars(begin, text.data() + text.size(), value);
  if (error == std::errc::result_out_of_range) {
    // from_chars leaves the value alone; strtod gives the infinity of the
    // sign on overflow and 0 or a subnormal on underflow.
    return std::strtod(std::string(begin, end).c_str(), nullptr);
  }
  return error == std::errc() ? value : 0.0;
}

double LeadingDecimalNumber(std::string_view text) {
  std::size_t i = LeadingWhiteSpaceLength(text), next = 0;
  std::string ascii;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) {
    if (text[i] == '-') ascii += '-';
    ++i;
  }
  bool sawDigit = false, sawPoint = false, significant = false;
  std::size_t integerDigits = 0;
  while (i < text.size()) {
    if (text[i] == '.' && !sawPoint) {
      // A point counts only when a digit follows it or came before it.
      std::size_t after = i + 1;
      if (!sawDigit && (after >= text.size() || DecimalDigitValueAt(text, after, next) < 0)) break;
      sawPoint = true;
      ascii += '.';
      i = after;
      continue;
    }
    const int digit = DecimalDigitValueAt(text, i, next);
    if (digit < 0) break;
    sawDigit = true;
    if (!sawPoint && (digit != 0 || significant)) {
      significant = true;
      ++integerDigits;
    }
    ascii += static_cast<char>('0' + digit);
    i = next;
  }
  if (!sawDigit) return 0.0;
  const char* first = ascii.data();
  const char* last = ascii.data() + ascii.size();
  const bool negative = *first == '-';
  double value = 0.0;
  const auto result = std::from_chars(first, last, value, std::chars_format::fixed);
  if (result.ec == std::errc::result_out_of_range) {
    // Overflow when the integer part is long; otherwise a vanishing fraction.
    const double magnitude = integerDigits > 300 ? std::numeric_limits<double>::infinity() : 0.0;
    return negative ? -magnitude : magnitude;
  }
  return value;
}

}  // namespace tarn
