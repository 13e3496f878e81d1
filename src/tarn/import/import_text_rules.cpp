#include "tarn/import/import_text_rules.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace tarn {
namespace {

bool IsAsciiSpace(unsigned char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// The code point at byte offset i and the offset after it; an ill-formed
// sequence reads as one negative code point of one byte.
UChar32 NextCodePoint(std::string_view text, std::size_t& i) {
  UChar32 c;
  std::int32_t offset = static_cast<std::int32_t>(i);
  U8_NEXT(reinterpret_cast<const std::uint8_t*>(text.data()), offset,
          static_cast<std::int32_t>(text.size()), c);
  i = static_cast<std::size_t>(offset);
  return c;
}

bool IsSpaceAt(std::string_view text, std::size_t i, std::size_t& next) {
  const auto byte = static_cast<unsigned char>(text[i]);
  if (byte < 0x80) {
    next = i + 1;
    return IsAsciiSpace(byte);
  }
  next = i;
  const UChar32 c = NextCodePoint(text, next);
  return c >= 0 && u_isUWhiteSpace(c);
}

std::string_view TrimWhiteSpace(std::string_view text) {
  std::size_t start = 0, next = 0;
  while (start < text.size() && IsSpaceAt(text, start, next)) start = next;
  std::size_t end = text.size();
  while (end > start) {
    // Step back to the first byte of the last code point.
    std::size_t last = end - 1;
    while (last > start && (static_cast<unsigned char>(text[last]) & 0xC0) == 0x80) --last;
    if (!IsSpaceAt(text, last, next) || next != end) break;
    end = last;
  }
  return text.substr(start, end - start);
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  if (from.empty() || text.find(from) == std::string::npos) return;
  std::string result;
  result.reserve(text.size());
  std::size_t start = 0;
  for (std::size_t found; (found = text.find(from, start)) != std::string::npos;
       start = found + from.size()) {
    result.append(text, start, found - start);
    result.append(to);
  }
  result.append(text, start);
  text = std::move(result);
}

// The value of a decimal digit of any script, or -1.
int DigitValueAt(std::string_view text, std::size_t i, std::size_t& next) {
  const auto byte = static_cast<unsigned char>(text[i]);
  if (byte < 0x80) {
    next = i + 1;
    return byte >= '0' && byte <= '9' ? byte - '0' : -1;
  }
  next = i;
  const UChar32 c = NextCodePoint(text, next);
  if (c < 0 || u_charType(c) != U_DECIMAL_DIGIT_NUMBER) return -1;
  return u_charDigitValue(c);
}

bool IsDateSeparator(char c) {
  constexpr std::string_view kSeparators = "/\\-.,*+^!@#$%&()_=[]{}|;:'\"<>`~";
  return kSeparators.find(c) != std::string_view::npos;
}

// Three integers, each after skipping whatever is not an ASCII digit.
DateComponents ThreeNumbersBetweenNonDigits(std::string_view text) {
  DateComponents components{0, 0, 0};
  std::size_t i = 0;
  for (auto& component : components) {
    while (i < text.size() && !(text[i] >= '0' && text[i] <= '9')) ++i;
    if (i == text.size()) break;
    const std::size_t start = i;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i;
    component = LeadingInt32(text.substr(start, i - start));
  }
  return components;
}

// Byte offsets of the first nine code points of a text (offsets past its
// end are the end) and how many code points it has, counted up to ten.
struct CodePoints {
  std::size_t offsets[10];
  std::size_t count;
};
CodePoints FirstCodePoints(std::string_view text) {
  CodePoints points;
  std::size_t n = 0, i = 0;
  while (i < text.size() && n < 10) {
    points.offsets[n++] = i;
    NextCodePoint(text, i);
  }
  for (std::size_t k = n; k < 10; ++k) points.offsets[k] = text.size();
  points.count = i == text.size() ? n : 11;
  return points;
}

// The text cut after `first` and `first + second` code points, up to code
// point `end`, each piece read as an integer.
DateComponents CutAt(std::string_view text, const CodePoints& points, int first, int second,
                     int end) {
  auto piece = [&](int from, int to) {
    return LeadingInt32(
        text.substr(points.offsets[from], points.offsets[to] - points.offsets[from]));
  };
  return {piece(0, first), piece(first, first + second), piece(first + second, end)};
}

std::string TodayInFormat(std::string_view dateFormat) {
  return CalendarDate::now().descriptionWithCalendarFormat(dateFormat);
}

void AppendInt(std::string& out, std::int32_t value) {
  char buffer[16];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out.append(buffer, result.ptr);
}

std::string JoinComponents(const DateComponents& components) {
  std::string joined;
  joined.reserve(24);
  AppendInt(joined, components[0]);
  joined += '/';
  AppendInt(joined, components[1]);
  joined += '/';
  AppendInt(joined, components[2]);
  return joined;
}

}  // namespace

std::string TweakAmountString(std::string_view text, std::string_view decimalSeparator,
                              std::string_view thousandsSeparator) {
  std::string_view trimmed = TrimWhiteSpace(text);
  std::string working;
  if (trimmed.size() >= 2 && trimmed.front() == '(' && trimmed.back() == ')') {
    working.reserve(trimmed.size());
    working += '-';
    working.append(trimmed.substr(1, trimmed.size() - 2));
  } else {
    working.assign(trimmed);
  }
  ReplaceAll(working, thousandsSeparator, "");
  ReplaceAll(working, decimalSeparator, ".");

  std::string result;
  result.reserve(working.size());
  for (std::size_t i = 0, next = 0; i < working.size(); i = next) {
    const char c = working[i];
    if (c == '.' || c == '-') {
      result += c;
      next = i + 1;
    } else if (DigitValueAt(working, i, next) >= 0) {
      result.append(working, i, next - i);
    }
  }
  return result;
}

DateComponents DateStringComponents(std::string_view text, std::string_view dateFormat) {
  for (char c : text) {
    if (IsDateSeparator(c)) return ThreeNumbersBetweenNonDigits(text);
  }
  const CodePoints points = FirstCodePoints(text);
  if (points.count == 6) return CutAt(text, points, 2, 2, 6);
  if (points.count == 8) {
    const std::size_t yearAt = dateFormat.find_first_of("yY");
    if (yearAt == std::string_view::npos) {
      const std::string today = TodayInFormat(dateFormat);
      return CutAt(today, FirstCodePoints(today), 2, 2, 6);
    }
    const std::string_view beforeYear = dateFormat.substr(0, yearAt);
    const int fieldsBefore = (beforeYear.find_first_of("mM") != std::string_view::npos) +
                             (beforeYear.find_first_of("dD") != std::string_view::npos);
    if (fieldsBefore == 0) return CutAt(text, points, 4, 2, 8);
    if (fieldsBefore == 1) return CutAt(text, points, 2, 4, 8);
    return CutAt(text, points, 2, 2, 8);
  }
  return ThreeNumbersBetweenNonDigits(TodayInFormat(dateFormat));
}

std::string TweakDateString(std::string_view text, std::string_view dateFormat) {
  return JoinComponents(DateStringComponents(text, dateFormat));
}

DateNumber ImportDateNumber(std::string_view text, std::string_view dateFormat) {
  DateComponents components = DateStringComponents(text, dateFormat);
  if (dateFormat.find("%y") != std::string_view::npos) {
    for (auto& component : components) component %= 100;
  }
  const auto date = CalendarDate::dateWithString(JoinComponents(components), dateFormat);
  return date ? date->dateNumber() : 0;
}

double LeadingDecimalNumber(std::string_view text) {
  std::size_t i = 0, next = 0;
  while (i < text.size() && IsSpaceAt(text, i, next)) i = next;
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
      if (!sawDigit && (after >= text.size() || DigitValueAt(text, after, next) < 0)) break;
      sawPoint = true;
      ascii += '.';
      i = after;
      continue;
    }
    const int digit = DigitValueAt(text, i, next);
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

std::int32_t LeadingInt32(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && IsAsciiSpace(static_cast<unsigned char>(text[i]))) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  std::int64_t value = 0;
  constexpr std::int64_t kLimit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = std::min(value * 10 + (text[i] - '0'), kLimit);
  }
  if (negative) return static_cast<std::int32_t>(-value);
  return static_cast<std::int32_t>(std::min<std::int64_t>(value, kLimit - 1));
}

}  // namespace tarn
