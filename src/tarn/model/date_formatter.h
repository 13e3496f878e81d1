// TARNDateFormatter: the date formatter of the register's date fields and
// columns. It writes and reads dates in one calendar format and never
// rejects what the user typed: text that cannot be read becomes the
// formatter's default date (today at midnight unless changed). It owns its
// default date, a plain value.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tarn/platform/calendar_date.h"

namespace tarn {

class TARNDateFormatter {
 public:
  // The user's short date format (user default "NSShortDateFormatString",
  // "%m/%d/%y" when unset), no natural language.
  TARNDateFormatter();
  static std::shared_ptr<TARNDateFormatter> initWithDateFormat(std::string format,
                                                               bool allowNaturalLanguage);

  const std::string& dateFormat() const { return dateFormat_; }
  bool allowsNaturalLanguage() const { return allowsNaturalLanguage_; }

  // std::nullopt is the missing date. Setting nullopt clears the default, so
  // unreadable text then yields no date.
  const std::optional<CalendarDate>& defaultObjectValue() const { return defaultObjectValue_; }
  void setDefaultObjectValue(std::optional<CalendarDate> value);

  // The date in the formatter's format; nullopt for a missing date.
  std::optional<std::string> stringForObjectValue(const std::optional<CalendarDate>& date) const;

  // Reads `string` into `object` and returns true, always: text that does not
  // fit the format (see CalendarDate::dateWithString) yields the default
  // date. With natural language allowed, "today", "yesterday" and
  // "tomorrow" (any case) are read as well. `errorDescription` is never
  // written; it is there for callers written against formatters that fail.
  bool getObjectValue(std::optional<CalendarDate>& object, std::string_view string,
                      std::string* errorDescription = nullptr) const;

 private:
  TARNDateFormatter(std::string format, bool allowNaturalLanguage);
  std::optional<CalendarDate> parse(std::string_view string) const;

  std::string dateFormat_;
  bool allowsNaturalLanguage_ = false;
  std::optional<CalendarDate> defaultObjectValue_;
};

}  // namespace tarn
