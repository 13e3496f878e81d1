#include "tarn/platform/calendar_date.h"

#include <chrono>
#include <mutex>

namespace tarn {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

// Days since 1970-01-01 of a proleptic Gregorian civil date (month 1-12).
std::int64_t daysFromCivil(std::int64_t year, unsigned month, unsigned day) {
  year -= month <= 2;
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const unsigned yearOfEra = static_cast<unsigned>(year - era * 400);
  const unsigned dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + static_cast<std::int64_t>(dayOfEra) - 719468;
}

struct CivilDay {
  std::int64_t year;
  unsigned month;
  unsigned day;
};

CivilDay civilFromDays(std::int64_t days) {
  days += 719468;
  const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const unsigned dayOfEra = static_cast<unsigned>(days - era * 146097);
  const unsigned yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t year = static_cast<std::int64_t>(yearOfEra) + era * 400;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned mp = (5 * dayOfYear + 2) / 153;
  const unsigned day = dayOfYear - (153 * mp + 2) / 5 + 1;
  const unsigned month = mp < 10 ? mp + 3 : mp - 9;
  return {year + (month <= 2), month, day};
}

std::int64_t floorDiv(std::int64_t a, std::int64_t b) {
  std::int64_t q = a / b;
  if ((a % b != 0) && ((a < 0) != (b < 0))) --q;
  return q;
}

// Seconds of a civil date whose fields may be out of range (carried over).
std::int64_t secondsFromFields(std::int64_t year, std::int64_t month, std::int64_t day,
                               std::int64_t hour, std::int64_t minute, std::int64_t second) {
  const std::int64_t monthIndex = month - 1;
  year += floorDiv(monthIndex, 12);
  const auto normalizedMonth =
      static_cast<unsigned>(monthIndex - floorDiv(monthIndex, 12) * 12 + 1);
  const std::int64_t days = daysFromCivil(year, normalizedMonth, 1) + (day - 1);
  return days * kSecondsPerDay + hour * 3600 + minute * 60 + second;
}

std::mutex& nowMutex() {
  static std::mutex mutex;
  return mutex;
}
std::optional<CalendarDate>& pinnedNow() {
  static std::optional<CalendarDate> pinned;
  return pinned;
}

}  // namespace

int DaysInMonth(int month, int year) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  if (month == 2) {
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return leap ? 29 : 28;
  }
  return kDays[month - 1];
}

CalendarDate::CalendarDate(int year, int month, int day, int hour, int minute, int second)
    : CalendarDate(secondsFromFields(year, month, day, hour, minute, second)) {}

CalendarDate::CalendarDate(std::int64_t secondsSince1970) : seconds_(secondsSince1970) {
  fillFieldsFromSeconds();
}

void CalendarDate::fillFieldsFromSeconds() {
  const std::int64_t days = floorDiv(seconds_, kSecondsPerDay);
  const std::int64_t secondOfDay = seconds_ - days * kSecondsPerDay;
  const CivilDay civil = civilFromDays(days);
  year_ = static_cast<int>(civil.year);
  month_ = static_cast<int>(civil.month);
  day_ = static_cast<int>(civil.day);
  hour_ = static_cast<int>(secondOfDay / 3600);
  minute_ = static_cast<int>(secondOfDay / 60 % 60);
  second_ = static_cast<int>(secondOfDay % 60);
}

CalendarDate CalendarDate::dateWithDateNumber(DateNumber number) {
  return CalendarDate(number / 10000, (number % 10000) / 100, number % 100);
}

DateNumber CalendarDate::dateNumber() const {
  return year_ * 10000 + month_ * 100 + day_;
}

CalendarDate CalendarDate::dateWithSecondsSince1970(std::int64_t seconds) {
  return CalendarDate(seconds);
}

std::int64_t CalendarDate::daysSince1970() const {
  return floorDiv(seconds_, kSecondsPerDay);
}

int CalendarDate::dayOfWeek() const {
  // 1 January 1970 was a Thursday (4).
  const std::int64_t weekday = (daysSince1970() % 7 + 7 + 4) % 7;
  return static_cast<int>(weekday);
}

int CalendarDate::dayOfYear() const {
  return static_cast<int>(daysSince1970() - daysFromCivil(year_, 1, 1)) + 1;
}

int CalendarDate::daysInMonth() const {
  return DaysInMonth(month_, year_);
}

CalendarDate CalendarDate::dateByAddingYears(int years, int months, int days, int hours,
                                             int minutes, int seconds) const {
  const std::int64_t shifted =
      secondsFromFields(static_cast<std::int64_t>(year_) + years,
                        static_cast<std::int64_t>(month_) + months, day_, hour_, minute_, second_);
  return CalendarDate(shifted + static_cast<std::int64_t>(days) * kSecondsPerDay +
                      static_cast<std::int64_t>(hours) * 3600 +
                      static_cast<std::int64_t>(minutes) * 60 + seconds);
}

CalendarDate CalendarDate::now() {
  {
    std::lock_guard lock(nowMutex());
    if (pinnedNow()) return *pinnedNow();
  }
  // The system clock read as local civil time.
  const auto clock = std::chrono::system_clock::now();
  const std::time_t time = std::chrono::system_clock::to_time_t(clock);
  std::tm local{};
  localtime_r(&time, &local);
  return CalendarDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                      local.tm_min, local.tm_sec);
}

void CalendarDate::overrideNow(std::optional<CalendarDate> date) {
  std::lock_guard lock(nowMutex());
  pinnedNow() = date;
}

}  // namespace tarn
