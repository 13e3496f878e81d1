#include "tarn/model/number_formatter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "tarn/model/decimal_rounding.h"
#include "tarn/platform/collections.h"
#include "tarn/platform/text.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

// Fraction digits beyond this are meaningless for a double and would only
// grow the formatting buffer.
constexpr int kMaximumFractionDigits = 40;

// Blanks that may surround an amount typed by hand: ASCII white space, the
// no-break and narrow no-break spaces and the zero-width space that stands
// for "no separator".
size_t blankLengthAt(std::string_view text, size_t i) {
  const unsigned char c = static_cast<unsigned char>(text[i]);
  if (c == ' ' || c == '\t' || c == '\n' || c == '\r') return 1;
  const std::string_view rest = text.substr(i);
  if (rest.starts_with("\xC2\xA0")) return 2;
  if (rest.starts_with("\xE2\x80\xAF") || rest.starts_with("\xE2\x80\x8B")) return 3;
  return 0;
}

size_t blankLengthBefore(std::string_view text, size_t end) {
  if (end >= 1 && blankLengthAt(text, end - 1) == 1) return 1;
  if (end >= 2 && text.substr(end - 2, 2) == "\xC2\xA0") return 2;
  if (end >= 3) {
    const std::string_view last = text.substr(end - 3, 3);
    if (last == "\xE2\x80\xAF" || last == "\xE2\x80\x8B") return 3;
  }
  return 0;
}

std::string_view trimBlanks(std::string_view text) {
  size_t begin = 0;
  while (begin < text.size()) {
    const size_t length = blankLengthAt(text, begin);
    if (length == 0) break;
    begin += length;
  }
  size_t end = text.size();
  while (end > begin) {
    const size_t length = blankLengthBefore(text, end);
    if (length == 0) break;
    end -= length;
  }
  return text.substr(begin, end - begin);
}

bool isUtf8Continuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

size_t codePointCount(std::string_view text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !isUtf8Continuation(c); }));
}

// The text without any case-insensitive occurrence of `symbol`. A match is
// looked for over as many code points as the symbol has, which covers the
// currency symbols in use (letters whose folded forms change length, such
// as "ß", only match their own length).
std::string removingIgnoringCase(std::string_view text, std::string_view symbol) {
  std::string result;
  result.reserve(text.size());
  const bool ascii = IsAscii(symbol);
  const size_t symbolPoints = ascii ? symbol.size() : codePointCount(symbol);
  size_t i = 0;
  while (i < text.size()) {
    size_t matchLength = 0;
    if (ascii) {
      if (AsciiEqualIgnoringCase(text.substr(i, symbol.size()), symbol))
        matchLength = symbol.size();
    } else {
      size_t end = i;
      for (size_t points = 0; points < symbolPoints && end < text.size(); ++points) {
        ++end;
        while (end < text.size() && isUtf8Continuation(text[end])) ++end;
      }
      if (CaseInsensitiveEqual(text.substr(i, end - i), symbol)) matchLength = end - i;
    }
    if (matchLength > 0) {
      i += matchLength;
    } else {
      result.push_back(text[i]);
      ++i;
    }
  }
  return result;
}

bool matchAffixes(std::string_view text, std::string_view prefix, std::string_view suffix,
                  std::string_view* core) {
  if (text.size() < prefix.size() + suffix.size()) return false;
  if (!text.starts_with(prefix) || !text.ends_with(suffix)) return false;
  *core = text.substr(prefix.size(), text.size() - prefix.size() - suffix.size());
  return true;
}

}  // namespace

TARNNumberFormatter::TARNNumberFormatter() {
  setFormat("#,##0.##");
}

void TARNNumberFormatter::setFormat(std::string_view pattern) {
  format_.assign(pattern);
  parsePattern();
}

void TARNNumberFormatter::setLocalizesFormat(bool localizes) {
  localizesFormat_ = localizes;
  parsePattern();
}

void TARNNumberFormatter::setDecimalSeparator(std::string separator) {
  decimalSeparator_ = std::move(separator);
}

void TARNNumberFormatter::setThousandSeparator(std::string separator) {
  thousandSeparator_ = std::move(separator);
  refreshParseAffixes();
}

void TARNNumberFormatter::setCurrencySymbol(std::optional<std::string> symbol) {
  currencySymbol_ = std::move(symbol);
  refreshParseAffixes();
}

void TARNNumberFormatter::setDefaultObjectValue(std::optional<double> value) {
  if (value) defaultObjectValue_ = value;
}

std::optional<double> TARNNumberFormatter::defaultObjectValue() const {
  return defaultObjectValue_ ? defaultObjectValue_ : minimum_;
}

void TARNNumberFormatter::parsePattern() {
  std::string decimalMarker = ".";
  std::string groupMarker = ",";
  if (localizesFormat_) {
    if (std::string user = UserDefault("NSDecimalSeparator"); !user.empty()) decimalMarker = user;
    if (std::string user = UserDefault("NSThousandsSeparator"); !user.empty()) groupMarker = user;
  }

  auto parseSection = [&](std::string_view text) {
    Section section;
    const size_t first = text.find_first_of("#0");
    if (first == std::string_view::npos) {
      section.prefix.assign(text);
      section.minimumIntegerDigits = 1;
      return section;
    }
    // The number part ends behind its last digit placeholder, so a marker
    // written after it ("kr.") stays in the suffix.
    size_t end = first;
    for (size_t i = first; i < text.size();) {
      if (text[i] == '#' || text[i] == '0') {
        end = ++i;
      } else if (text.substr(i).starts_with(decimalMarker)) {
        i += decimalMarker.size();
      } else if (text.substr(i).starts_with(groupMarker)) {
        i += groupMarker.size();
      } else {
        break;
      }
    }
    bool inFraction = false;
    bool grouping = false;
    int digitsSinceGroup = 0;
    for (size_t i = first; i < end;) {
      const char c = text[i];
      if (c == '#' || c == '0') {
        if (inFraction) {
          section.maximumFractionDigits++;
          if (c == '0') section.minimumFractionDigits = section.maximumFractionDigits;
        } else {
          if (c == '0') section.minimumIntegerDigits++;
          digitsSinceGroup++;
        }
        ++i;
      } else if (text.substr(i).starts_with(decimalMarker)) {
        inFraction = true;
        i += decimalMarker.size();
      } else {
        if (!inFraction) {
          grouping = true;
          digitsSinceGroup = 0;
        }
        i += groupMarker.size();
      }
    }
    section.maximumFractionDigits = std::min(section.maximumFractionDigits, kMaximumFractionDigits);
    section.minimumFractionDigits =
        std::min(section.minimumFractionDigits, section.maximumFractionDigits);
    section.minimumIntegerDigits = std::min(section.minimumIntegerDigits, 309);
    if (grouping) section.groupingSize = digitsSinceGroup > 0 ? digitsSinceGroup : 3;
    section.prefix.assign(text.substr(0, first));
    section.suffix.assign(text.substr(end));
    return section;
  };

  std::vector<std::string_view> sections;
  std::string_view rest = format_;
  for (;;) {
    const size_t semicolon = rest.find(';');
    sections.push_back(rest.substr(0, semicolon));
    if (semicolon == std::string_view::npos) break;
    rest.remove_prefix(semicolon + 1);
  }
  positive_ = parseSection(sections[0]);
  zeroText_.reset();
  hasNegativeSection_ = sections.size() >= 2;
  if (sections.size() >= 3 && !sections[1].empty()) zeroText_ = std::string(sections[1]);
  if (hasNegativeSection_)
    negative_ = parseSection(sections.size() == 2 ? sections[1] : sections[2]);
  refreshParseAffixes();
}

std::string TARNNumberFormatter::removeIgnoredText(std::string_view text) const {
  std::string result = thousandSeparator_.empty()
                           ? std::string(text)
                           : withoutCharactersInSet(text, thousandSeparator_);
  if (currencySymbol_ && !currencySymbol_->empty()) {
    result = removingIgnoringCase(result, *currencySymbol_);
  }
  return result;
}

void TARNNumberFormatter::refreshParseAffixes() {
  auto affixes = [&](const Section& section) {
    return ParseAffixes{std::string(trimBlanks(removeIgnoredText(section.prefix))),
                        std::string(trimBlanks(removeIgnoredText(section.suffix)))};
  };
  positiveAffixes_ = affixes(positive_);
  negativeAffixes_ = hasNegativeSection_ ? affixes(negative_) : ParseAffixes{};
  zeroParseText_ =
      zeroText_ ? std::string(trimBlanks(removeIgnoredText(*zeroText_))) : std::string();
}

double TARNNumberFormatter::roundToScale(double value, int scale) {
  // Amounts are mostly stored already rounded to cents: when the value is the
  // double nearest to a whole number k of 10^-scale units it is returned as
  // it is, without the decimal reading. k / 10^scale is correctly rounded, so
  // the test is exact; and below 2^50 units a double's spacing is under half
  // a unit, so its shortest decimal text rounds back to k as well.
  if (scale >= 0 && scale <= 15 && std::isfinite(value)) {
    static constexpr double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const double power = kPowers[scale];
    const double units = value * power;
    if (std::fabs(units) < 0x1p50 && std::nearbyint(units) / power == value) {
      return value;
    }
  }
  return RoundDecimalPlain(value, scale);
}

void TARNNumberFormatter::appendNumber(std::string& out, double magnitude,
                                       const Section& section) const {
  // 309 integer digits at most for a finite double, plus the fraction.
  char buffer[320 + kMaximumFractionDigits];
  const auto written = std::to_chars(buffer, buffer + sizeof buffer, magnitude,
                                     std::chars_format::fixed, section.maximumFractionDigits);
  std::string_view digits(buffer, static_cast<size_t>(written.ptr - buffer));
  const size_t point = digits.find('.');
  std::string_view integer = digits.substr(0, point);
  std::string_view fraction =
      point == std::string_view::npos ? std::string_view() : digits.substr(point + 1);
  while (fraction.size() > static_cast<size_t>(section.minimumFractionDigits) &&
         fraction.back() == '0') {
    fraction.remove_suffix(1);
  }
  while (!integer.empty() && integer.front() == '0' &&
         integer.size() > static_cast<size_t>(section.minimumIntegerDigits)) {
    integer.remove_prefix(1);
  }
  if (integer.empty() && fraction.empty()) integer = "0";

  const size_t padding = section.minimumIntegerDigits > static_cast<int>(integer.size())
                             ? static_cast<size_t>(section.minimumIntegerDigits) - integer.size()
                             : 0;
  const size_t length = padding + integer.size();
  const size_t group = static_cast<size_t>(section.groupingSize);
  const size_t separators = (group > 0 && length > 0) ? (length - 1) / group : 0;
  const size_t total = length + separators * thousandSeparator_.size() +
                       (fraction.empty() ? 0 : decimalSeparator_.size() + fraction.size());
  // One resize, then the digits are written in place.
  const size_t start = out.size();
  out.resize(start + total);
  char* cursor = out.data() + start;
  // Digits left before the next separator: the leading group may be short.
  size_t untilSeparator = group > 0 ? (length - 1) % group + 1 : length;
  for (size_t i = 0; i < length; ++i) {
    if (untilSeparator == 0) {
      cursor = std::copy(thousandSeparator_.begin(), thousandSeparator_.end(), cursor);
      untilSeparator = group;
    }
    *cursor++ = i < padding ? '0' : integer[i - padding];
    --untilSeparator;
  }
  if (!fraction.empty()) {
    cursor = std::copy(decimalSeparator_.begin(), decimalSeparator_.end(), cursor);
    std::copy(fraction.begin(), fraction.end(), cursor);
  }
}

std::string TARNNumberFormatter::stringForObjectValue(double value) const {
  std::string out;
  appendStringForObjectValue(out, value);
  return out;
}

void TARNNumberFormatter::appendStringForObjectValue(std::string& out, double value) const {
  if (std::isnan(value)) {
    out += "NaN";
    return;
  }
  if (roundingScale_) value = roundToScale(value, *roundingScale_);

  const Section* section = (value < 0 && hasNegativeSection_) ? &negative_ : &positive_;
  double magnitude = std::fabs(value);
  if (!roundingScale_ || *roundingScale_ > section->maximumFractionDigits) {
    magnitude = roundToScale(magnitude, section->maximumFractionDigits);
  }
  // A value that rounds to nothing is zero, whatever its sign was.
  if (magnitude == 0) {
    if (zeroText_) {
      out += *zeroText_;
      return;
    }
    section = &positive_;
  }
  const bool negative = value < 0 && magnitude != 0;

  out.reserve(out.size() + section->prefix.size() + section->suffix.size() + 32);
  if (negative && !hasNegativeSection_) out.push_back('-');
  out += section->prefix;
  if (std::isinf(magnitude)) {
    out += "\xE2\x88\x9E";  // the infinity sign
  } else {
    appendNumber(out, magnitude, *section);
  }
  out += section->suffix;
}

std::optional<double> TARNNumberFormatter::parseNumber(std::string_view text) const {
  const std::string_view trimmed = trimBlanks(text);
  if (trimmed.empty()) return std::nullopt;

  bool negative = false;
  std::optional<double> value;
  std::string_view core = trimmed;
  if (zeroText_ && !zeroParseText_.empty() && trimmed == zeroParseText_) {
    value = 0.0;
  } else if (hasNegativeSection_ &&
             !(negativeAffixes_.prefix.empty() && negativeAffixes_.suffix.empty()) &&
             matchAffixes(trimmed, negativeAffixes_.prefix, negativeAffixes_.suffix, &core)) {
    negative = true;
  } else if (!matchAffixes(trimmed, positiveAffixes_.prefix, positiveAffixes_.suffix, &core)) {
    core = trimmed;  // a bare number is welcome too
  }

  if (!value) {
    core = trimBlanks(core);
    if (core.starts_with('-') || core.starts_with('+')) {
      negative = negative != (core.front() == '-');
      core = trimBlanks(core.substr(1));
    } else if (core.starts_with("\xE2\x88\x92")) {  // the minus sign
      negative = !negative;
      core = trimBlanks(core.substr(3));
    }
    // Digits with at most one decimal separator, rewritten for from_chars.
    char buffer[400];
    size_t length = 0;
    bool sawDigit = false;
    bool sawPoint = false;
    for (size_t i = 0; i < core.size();) {
      if (length + 2 >= sizeof buffer) return std::nullopt;
      const char c = core[i];
      if (c >= '0' && c <= '9') {
        buffer[length++] = c;
        sawDigit = true;
        ++i;
      } else if (!sawPoint && !decimalSeparator_.empty() &&
                 core.substr(i).starts_with(decimalSeparator_)) {
        buffer[length++] = '.';
        sawPoint = true;
        i += decimalSeparator_.size();
      } else {
        return std::nullopt;
      }
    }
    if (!sawDigit) return std::nullopt;
    double magnitude = 0.0;
    const auto result = std::from_chars(buffer, buffer + length, magnitude);
    if (result.ec != std::errc()) return std::nullopt;
    value = negative ? -magnitude : magnitude;
  }

  if (roundingScale_) value = roundToScale(*value, *roundingScale_);
  if (minimum_ && *value < *minimum_) return std::nullopt;
  if (maximum_ && *value > *maximum_) return std::nullopt;
  return value;
}

bool TARNNumberFormatter::getObjectValue(std::optional<double>& object, std::string_view string,
                                         std::string* /*errorDescription*/) const {
  std::optional<double> value;
  if (!string.empty()) value = parseNumber(removeIgnoredText(string));
  if (!value) value = defaultObjectValue();
  object = value;
  return true;
}

bool TARNNumberFormatter::groupsAreWhole(std::string_view text) const {
  const std::string& separator = thousandSeparator_;
  if (separator.empty()) return true;
  const auto isDigit = [&](size_t i) {
    return i < text.size() && text[i] >= '0' && text[i] <= '9';
  };
  const size_t group = positive_.groupingSize > 0 ? static_cast<size_t>(positive_.groupingSize) : 3;
  const size_t point = decimalSeparator_.empty() || decimalSeparator_ == separator
                           ? std::string_view::npos
                           : text.find(decimalSeparator_);
  for (size_t at = text.find(separator); at != std::string_view::npos;
       at = text.find(separator, at + separator.size())) {
    const size_t after = at + separator.size();
    // Only a separator between digits belongs to the number; a blank
    // separator also stands between a symbol and the number ("1 234,50 kr").
    if (at == 0 || !isDigit(at - 1) || !isDigit(after)) continue;
    if (point != std::string_view::npos && at > point) return false;
    size_t digits = 0;
    while (isDigit(after + digits)) ++digits;
    if (digits != group) return false;
  }
  return true;
}

std::optional<double> TARNNumberFormatter::numberFromString(std::string_view string) const {
  if (!groupsAreWhole(string)) return std::nullopt;
  return parseNumber(removeIgnoredText(string));
}

std::optional<TARNNumberFormatter::AttributedString>
TARNNumberFormatter::attributedStringForObjectValue(std::optional<double> object,
                                                    const Attributes& defaultAttributes) const {
  if (!object) return std::nullopt;
  return AttributedString{stringForObjectValue(*object), defaultAttributes};
}

std::string TARNNumberFormatter::editingStringForObjectValue(double object) const {
  return stringForObjectValue(object);
}

std::optional<std::string> TARNNumberFormatter::editingStringForObjectValue(
    const AttributedString& object) const {
  std::optional<double> value;
  getObjectValue(value, object.string);
  if (!value) return std::nullopt;
  return stringForObjectValue(*value);
}

}  // namespace tarn
