#include "tarn/import/import_text_rules.h"

#include "tarn/import/import_scanning.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace tarn {
namespace {

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

// The 31 separator characters of a date text, as a table of bytes.
constexpr std::array<bool, 256> kDateSeparators = [] {
  std::array<bool, 256> table{};
  for (const char c : std::string_view("/\\-.,*+^!@#$%&()_=[]{}|;:'\"<>`~")) {
    table[static_cast<unsigned char>(c)] = true;
  }
  return table;
}();

bool IsDateSeparator(char c) {
  return kDateSeparators[static_cast<unsigned char>(c)];
}

bool IsAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}

// Three integers, each after skipping whatever is not an ASCII digit; a run
// of digits beyond the 32-bit range reads as its largest value.
DateComponents ThreeNumbersBetweenNonDigits(std::string_view text) {
  constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
  DateComponents components{0, 0, 0};
  std::size_t i = 0;
  for (auto& component : components) {
    while (i < text.size() && !IsAsciiDigit(text[i])) ++i;
    if (i == text.size()) break;
    std::int64_t value = 0;
    for (; i < text.size() && IsAsciiDigit(text[i]); ++i) {
      value = std::min(value * 10 + (text[i] - '0'), kLargest);
    }
    component = static_cast<std::int32_t>(value);
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
    return LeadingInteger(
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
  std::string_view trimmed = TrimImportWhiteSpace(text);
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
    } else if (DecimalDigitValueAt(working, i, next) >= 0) {
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

namespace {

bool ReducesYears(std::string_view dateFormat) {
  return dateFormat.find("%y") != std::string_view::npos;
}

// The date number of the components, joined by slashes and read in the format.
DateNumber DateNumberOfComponents(const DateComponents& components, std::string_view dateFormat) {
  const auto date = CalendarDate::dateWithString(JoinComponents(components), dateFormat);
  return date ? date->dateNumber() : 0;
}

// Whether a calendar format reads a year (%y or %Y as a directive, not
// after "%%").
bool NamesTheYear(std::string_view dateFormat) {
  for (std::size_t i = 0; i + 1 < dateFormat.size(); ++i) {
    if (dateFormat[i] != '%') continue;
    const char directive = dateFormat[++i];
    if (directive == 'y' || directive == 'Y') return true;
  }
  return false;
}

bool IsAmountCharacter(char c) {
  return c == '.' || c == '-' || (c >= '0' && c <= '9');
}

}  // namespace

DateNumber ImportDateNumber(std::string_view text, std::string_view dateFormat) {
  DateComponents components = DateStringComponents(text, dateFormat);
  if (ReducesYears(dateFormat)) {
    for (auto& component : components) component %= 100;
  }
  return DateNumberOfComponents(components, dateFormat);
}

ImportDateReader::ImportDateReader(std::string dateFormat)
    : format_(std::move(dateFormat)),
      reduceYears_(ReducesYears(format_)),
      rememberDates_(NamesTheYear(format_)) {}

DateNumber ImportDateReader::read(std::string_view text) {
  if (valid_ && text == lastText_) return lastDate_;
  DateComponents components = DateStringComponents(text, format_);
  if (reduceYears_) {
    for (auto& component : components) component %= 100;
  }
  // Components are never negative; three of 21 bits make one key.
  constexpr std::int32_t kKeyLimit = 1 << 21;
  const bool keyed = rememberDates_ && components[0] >= 0 && components[0] < kKeyLimit &&
                     components[1] >= 0 && components[1] < kKeyLimit && components[2] >= 0 &&
                     components[2] < kKeyLimit;
  DateNumber date;
  if (keyed) {
    const std::uint64_t key = static_cast<std::uint64_t>(components[0]) << 42 |
                              static_cast<std::uint64_t>(components[1]) << 21 |
                              static_cast<std::uint64_t>(components[2]);
    // A file of random texts cannot make the table grow without bound.
    if (datesOfComponents_.size() >= (std::size_t{1} << 16)) datesOfComponents_.clear();
    const auto [found, added] = datesOfComponents_.try_emplace(key, 0);
    if (added) found->second = DateNumberOfComponents(components, format_);
    date = found->second;
  } else {
    date = DateNumberOfComponents(components, format_);
  }
  lastText_.assign(text);
  lastDate_ = date;
  valid_ = true;
  return date;
}

double ReadImportAmount(std::string_view text, std::string_view decimalSeparator,
                        std::string_view thousandsSeparator) {
  const auto plainReading = [&] {
    return LeadingDecimalNumber(TweakAmountString(text, decimalSeparator, thousandsSeparator));
  };
  const auto singleAscii = [](std::string_view separator) {
    return separator.empty() ||
           (separator.size() == 1 && static_cast<unsigned char>(separator[0]) < 0x80);
  };
  if (!singleAscii(decimalSeparator) || !singleAscii(thousandsSeparator)) return plainReading();
  const int decimal = decimalSeparator.empty() ? -1 : decimalSeparator[0];
  const int thousands = thousandsSeparator.empty() ? -1 : thousandsSeparator[0];

  std::string_view trimmed = TrimImportWhiteSpace(text);
  // The cleaned text, built as TweakAmountString builds it: one-character
  // separators are replaced character by character, thousands first.
  char cleaned[64];
  std::size_t length = 0;
  const auto take = [&](char c) {
    if (c == thousands) return true;
    if (c == decimal) c = '.';
    if (!IsAmountCharacter(c)) return true;
    if (length == sizeof cleaned) return false;
    cleaned[length++] = c;
    return true;
  };
  if (trimmed.size() >= 2 && trimmed.front() == '(' && trimmed.back() == ')') {
    take('-');
    trimmed = trimmed.substr(1, trimmed.size() - 2);
  }
  for (const char c : trimmed) {
    // Digits of other scripts, and long texts, take the plain reading.
    if (static_cast<unsigned char>(c) >= 0x80 || !take(c)) return plainReading();
  }
  // Only "-", "." and ASCII digits are left. The usual amount, a sign, up to
  // fifteen digits and one point, is its digits as an integer divided by a
  // power of ten: both exact doubles, so the quotient is the correctly
  // rounded value that from_chars would give.
  {
    static constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                              1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    std::size_t i = 0;
    const bool negative = length > 0 && cleaned[0] == '-';
    if (negative) ++i;
    std::int64_t digits = 0;
    int count = 0, decimals = -1;
    for (; i < length && count <= 15; ++i) {
      const char c = cleaned[i];
      if (c >= '0' && c <= '9') {
        digits = digits * 10 + (c - '0');
        ++count;
        if (decimals >= 0) ++decimals;
      } else if (c == '.' && decimals < 0) {
        decimals = 0;
      } else {
        break;
      }
    }
    // The whole leading number was read: any further digit stopped it early.
    const bool whole = i == length || !(cleaned[i] >= '0' && cleaned[i] <= '9');
    if (count > 0 && count <= 15 && whole) {
      const double value = static_cast<double>(digits) / kPowersOfTen[decimals > 0 ? decimals : 0];
      return negative ? -value : value;
    }
  }
  // Longer numbers: the fixed-format reading of from_chars takes the same
  // leading number that LeadingDecimalNumber does.
  double value = 0.0;
  const auto result = std::from_chars(cleaned, cleaned + length, value, std::chars_format::fixed);
  if (result.ec == std::errc()) return value;
  if (result.ec == std::errc::invalid_argument) return 0.0;
  return LeadingDecimalNumber(std::string_view(cleaned, length));
}

}  // namespace tarn
