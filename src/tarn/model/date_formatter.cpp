#include "tarn/model/date_formatter.h"

#include <utility>

#include "tarn/model/date_number.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

constexpr const char* kFallbackShortDateFormat = "%m/%d/%y";

std::string userShortDateFormat() {
  std::string format = UserDefault("NSShortDateFormatString");
  return format.empty() ? kFallbackShortDateFormat : format;
}

// Today's date number turned back into a date: today at midnight.
CalendarDate todayAtMidnight() {
  return DateNumberToNSCalendarDate(NSCalendarDateToDateNumber(CalendarDate::now()));
}

std::string_view trimmed(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

}  // namespace

TARNDateFormatter::TARNDateFormatter() : TARNDateFormatter(userShortDateFormat(), false) {}

TARNDateFormatter::TARNDateFormatter(std::string format, bool allowNaturalLanguage)
    : dateFormat_(std::move(format)),
      allowsNaturalLanguage_(allowNaturalLanguage),
      defaultObjectValue_(todayAtMidnight()) {}

std::shared_ptr<TARNDateFormatter> TARNDateFormatter::initWithDateFormat(
    std::string format, bool allowNaturalLanguage) {
  return std::shared_ptr<TARNDateFormatter>(
      new TARNDateFormatter(std::move(format), allowNaturalLanguage));
}

void TARNDateFormatter::setDefaultObjectValue(std::optional<CalendarDate> value) {
  defaultObjectValue_ = value;
}

std::optional<std::string> TARNDateFormatter::stringForObjectValue(
    const std::optional<CalendarDate>& date) const {
  if (!date) return std::nullopt;
  return date->descriptionWithCalendarFormat(dateFormat_);
}

std::optional<CalendarDate> TARNDateFormatter::parse(std::string_view string) const {
  if (auto date = CalendarDate::dateWithString(string, dateFormat_)) return date;
  if (!allowsNaturalLanguage_) return std::nullopt;
  const std::string_view word = trimmed(string);
  const CalendarDate today = todayAtMidnight();
  if (equalsIgnoringAsciiCase(word, "today")) return today;
  if (equalsIgnoringAsciiCase(word, "yesterday")) return today.dateByAddingYears(0, 0, -1);
  if (equalsIgnoringAsciiCase(word, "tomorrow")) return today.dateByAddingYears(0, 0, 1);
  return std::nullopt;
}

bool TARNDateFormatter::getObjectValue(std::optional<CalendarDate>& object, std::string_view string,
                                       std::string* /*errorDescription*/) const {
  std::optional<CalendarDate> date = parse(string);
  object = date ? date : defaultObjectValue_;
  return true;
}

}  // namespace tarn
