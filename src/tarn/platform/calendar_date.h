// A civil date and time of day to the second, with no time zone: the
// calendar-date value of the ledger. "Today" anywhere in the library is
// CalendarDate::now(), which tests and replaying hosts can pin.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarn {

using DateNumber = std::int32_t;

class CalendarDate {
 public:
  // 1 January 1970, midnight.
  CalendarDate() : CalendarDate(1970, 1, 1) {}
  // Out-of-range fields are carried over as the calendar does: month 13 is
  // January of the next year, day 0 the last day of the month before.
  CalendarDate(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);

  static CalendarDate dateWithDateNumber(DateNumber number);
  DateNumber dateNumber() const;

  // Seconds since 1 January 1970 midnight of the same (zone-less) calendar.
  static CalendarDate dateWithSecondsSince1970(std::int64_t seconds);
  std::int64_t secondsSince1970() const { return seconds_; }
  // Whole days since 1 January 1970 (negative before it).
  std::int64_t daysSince1970() const;

  int yearOfCommonEra() const { return year_; }
  int monthOfYear() const { return month_; }
  int dayOfMonth() const { return day_; }
  int dayOfWeek() const;  // 0 is Sunday
  int dayOfYear() const;  // 1 to 366
  int hourOfDay() const { return hour_; }
  int minuteOfHour() const { return minute_; }
  int secondOfMinute() const { return second_; }
  int daysInMonth() const;
  int quarterOfYear() const { return (month_ - 1) / 3; }  // zero-based

  // Years and months are added first; a day beyond the end of the resulting
  // month carries into the next month (31 January + 1 month is 3 March in a
  // common year); then days, hours, minutes and seconds are added.
  CalendarDate dateByAddingYears(int years, int months, int days, int hours = 0, int minutes = 0,
                                 int seconds = 0) const;

  // Writes the date in a strftime-like calendar format: %Y year (at least four
  // digits), %y year of the century, %m month 01-12, %d day 01-31, %e day
  // without padding, %b/%B English month name abbreviated/full, %a/%A weekday
  // name, %H hour 00-23, %I hour 01-12, %p AM/PM, %M minute, %S second, %j day
  // of the year 001-366, %w weekday 0-6 (Sunday 0), %F milliseconds (always
  // 000), %% a percent sign. Other directives are copied as they stand.
  std::string descriptionWithCalendarFormat(std::string_view format) const;
  // Reads text written in a calendar format; nullopt when the text does not
  // fit it or names no real date (13/01/07, 04/31/07 in "%m/%d/%y"). Numbers
  // take one or two digits (%j up to three, %Y up to four), names are read
  // case-insensitively in full or abbreviated, a space in the format matches
  // any run of whitespace, other characters must match exactly, and trailing
  // whitespace is allowed. Two-digit years (%y): 69-99 are 1969-1999, 00-68
  // are 2000-2068. A format without a year takes the current year; missing
  // month and day are 1, a missing time of day is midnight. The weekday of
  // %a/%A/%w is read but not checked against the date.
  static std::optional<CalendarDate> dateWithString(std::string_view text, std::string_view format);

  static CalendarDate now();
  // Pins now() to a fixed date (tests, hosts replaying a day); nullopt
  // returns to the system clock.
  static void overrideNow(std::optional<CalendarDate> date);

  friend bool operator==(const CalendarDate& a, const CalendarDate& b) {
    return a.seconds_ == b.seconds_;
  }
  friend std::strong_ordering operator<=>(const CalendarDate& a, const CalendarDate& b) {
    return a.seconds_ <=> b.seconds_;
  }

 private:
  explicit CalendarDate(std::int64_t secondsSince1970);
  void fillFieldsFromSeconds();

  std::int64_t seconds_ = 0;
  int year_ = 1970;
  int month_ = 1;
  int day_ = 1;
  int hour_ = 0;
  int minute_ = 0;
  int second_ = 0;
};

// Days of a month (1 to 12) in a year of the proleptic Gregorian calendar.
int DaysInMonth(int month, int year);

// Day counts of the zone-less civil calendar, for code that steps through
// many dates without building calendar objects.
struct CivilDay {
  std::int64_t year;
  int month;  // 1 to 12
  int day;    // 1 to 31
};
// Days since 1 January 1970 of a date whose month is 1 to 12 (the day may
// run past the month's end; it counts on into the next month).
std::int64_t DaysFromCivil(std::int64_t year, int month, int day);
// The same for fields that may lie anywhere, carried as the calendar carries
// them: month 13 is January of the next year, month 0 December of the year
// before, day 0 the last day of the month before. The 64-bit fields let
// callers step a date millions of years without overflow.
std::int64_t DaysFromCivilCarrying(std::int64_t year, std::int64_t month, std::int64_t day);
// The date of a day count; the inverse of both.
CivilDay CivilFromDays(std::int64_t days);
// Division rounding toward negative infinity.
std::int64_t FloorDivide(std::int64_t numerator, std::int64_t denominator);

}  // namespace tarn
