#include "tarn/platform/calendar_date.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace tarn {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

// Seconds of a civil date whose fields may be out of range (carried over).
std::int64_t secondsFromFields(std::int64_t year, std::int64_t month, std::int64_t day,
                               std::int64_t hour, std::int64_t minute, std::int64_t second) {
  return DaysFromCivilCarrying(year, month, day) * kSecondsPerDay + hour * 3600 + minute * 60 +
         second;
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

std::int64_t FloorDivide(std::int64_t numerator, std::int64_t denominator) {
  std::int64_t quotient = numerator / denominator;
  if ((numerator % denominator != 0) && ((numerator < 0) != (denominator < 0))) --quotient;
  return quotient;
}

std::int64_t DaysFromCivil(std::int64_t year, int month, int day) {
  year -= month <= 2;
  const std::int64_t era = FloorDivide(year, 400);
  const auto yearOfEra = static_cast<unsigned>(year - era * 400);
  const auto monthFromMarch = static_cast<unsigned>(month > 2 ? month - 3 : month + 9);
  const auto dayOfYear = static_cast<std::int64_t>((153 * monthFromMarch + 2) / 5) + day - 1;
  const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

std::int64_t DaysFromCivilCarrying(std::int64_t year, std::int64_t month, std::int64_t day) {
  const std::int64_t yearsCarried = FloorDivide(month - 1, 12);
  const auto monthOfYear = static_cast<int>(month - 1 - yearsCarried * 12) + 1;
  return DaysFromCivil(year + yearsCarried, monthOfYear, 1) + (day - 1);
}

CivilDay CivilFromDays(std::int64_t days) {
  days += 719468;
  const std::int64_t era = FloorDivide(days, 146097);
  const auto dayOfEra = static_cast<unsigned>(days - era * 146097);
  const unsigned yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned monthFromMarch = (5 * dayOfYear + 2) / 153;
  const auto day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
  const auto month =
      static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
  return {static_cast<std::int64_t>(yearOfEra) + era * 400 + (month <= 2), month, day};
}

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
  const std::int64_t days = FloorDivide(seconds_, kSecondsPerDay);
  const std::int64_t secondOfDay = seconds_ - days * kSecondsPerDay;
  const CivilDay civil = CivilFromDays(days);
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
  return FloorDivide(seconds_, kSecondsPerDay);
}

int CalendarDate::dayOfWeek() const {
  // 1 January 1970 was a Thursday (4).
  const std::int64_t weekday = (daysSince1970() % 7 + 7 + 4) % 7;
  return static_cast<int>(weekday);
}

int CalendarDate::dayOfYear() const {
  return static_cast<int>(daysSince1970() - DaysFromCivil(year_, 1, 1)) + 1;
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

// Calendar formats: dates written as and read from text.

namespace {

constexpr const char* kMonthNames[] = {"January",   "February", "March",    "April",
                                       "May",       "June",     "July",     "August",
                                       "September", "October",  "November", "December"};
constexpr const char* kDayNames[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};

void appendNumber(std::string& out, long long value, int width) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%0*lld", width, value);
  out += buffer;
}

bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
char lowerAscii(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// A cursor over the text being read.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  void skipSpaces() {
    while (pos_ < text_.size() && isSpace(text_[pos_])) ++pos_;
  }
  bool atEnd() const { return pos_ >= text_.size(); }

  bool literal(char c) {
    if (pos_ < text_.size() && text_[pos_] == c) {
      ++pos_;
      return true;
    }
    return false;
  }

  // One to maxDigits decimal digits, after optional leading whitespace.
  std::optional<int> number(int maxDigits) {
    skipSpaces();
    int value = 0;
    int digits = 0;
    while (digits < maxDigits && pos_ < text_.size() && isDigit(text_[pos_])) {
      value = value * 10 + (text_[pos_] - '0');
      ++pos_;
      ++digits;
    }
    if (digits == 0) return std::nullopt;
    return value;
  }

  // Index of the name (full or its first three letters) that the text holds
  // here, case-insensitively; the longest match wins.
  template <std::size_t N>
  std::optional<int> name(const char* const (&names)[N]) {
    skipSpaces();
    for (std::size_t i = 0; i < N; ++i) {
      if (matchesAhead(names[i])) {
        pos_ += std::strlen(names[i]);
        return static_cast<int>(i);
      }
    }
    for (std::size_t i = 0; i < N; ++i) {
      if (matchesAhead(std::string_view(names[i], 3))) {
        pos_ += 3;
        return static_cast<int>(i);
      }
    }
    return std::nullopt;
  }

 private:
  bool matchesAhead(std::string_view word) const {
    if (text_.size() - pos_ < word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i) {
      if (lowerAscii(text_[pos_ + i]) != lowerAscii(word[i])) return false;
    }
    return true;
  }

  std::string_view text_;
  std::size_t pos_ = 0;
};

}  // namespace

std::string CalendarDate::descriptionWithCalendarFormat(std::string_view format) const {
  std::string out;
  out.reserve(format.size() + 16);
  for (std::size_t i = 0; i < format.size(); ++i) {
    const char c = format[i];
    if (c != '%' || i + 1 == format.size()) {
      out += c;
      continue;
    }
    const char directive = format[++i];
    switch (directive) {
      case 'Y':
        appendNumber(out, year_, year_ < 0 ? 5 : 4);
        break;
      case 'y':
        appendNumber(out, ((year_ % 100) + 100) % 100, 2);
        break;
      case 'm':
        appendNumber(out, month_, 2);
        break;
      case 'd':
        appendNumber(out, day_, 2);
        break;
      case 'e':
        appendNumber(out, day_, 1);
        break;
      case 'b':
        out.append(kMonthNames[month_ - 1], 3);
        break;
      case 'B':
        out += kMonthNames[month_ - 1];
        break;
      case 'a':
        out.append(kDayNames[dayOfWeek()], 3);
        break;
      case 'A':
        out += kDayNames[dayOfWeek()];
        break;
      case 'H':
        appendNumber(out, hour_, 2);
        break;
      case 'I':
        appendNumber(out, hour_ % 12 == 0 ? 12 : hour_ % 12, 2);
        break;
      case 'p':
        out += hour_ < 12 ? "AM" : "PM";
        break;
      case 'M':
        appendNumber(out, minute_, 2);
        break;
      case 'S':
        appendNumber(out, second_, 2);
        break;
      case 'j':
        appendNumber(out, dayOfYear(), 3);
        break;
      case 'w':
        appendNumber(out, dayOfWeek(), 1);
        break;
      case 'F':
        out += "000";  // dates keep whole seconds
        break;
      case '%':
        out += '%';
        break;
      default:
        // Unknown directives are written as they stand.
        out += '%';
        out += directive;
        break;
    }
  }
  return out;
}

std::optional<CalendarDate> CalendarDate::dateWithString(std::string_view text,
                                                         std::string_view format) {
  Reader reader(text);
  std::optional<int> year, month, day, yearDay;
  int hour = 0, minute = 0, second = 0;
  std::optional<int> hour12;
  std::optional<bool> afternoon;

  for (std::size_t i = 0; i < format.size(); ++i) {
    const char c = format[i];
    if (isSpace(c)) {
      reader.skipSpaces();
      continue;
    }
    if (c != '%' || i + 1 == format.size()) {
      if (!reader.literal(c)) return std::nullopt;
      continue;
    }
    const char directive = format[++i];
    std::optional<int> value;
    switch (directive) {
      case 'Y':
        if (!(year = reader.number(4))) return std::nullopt;
        break;
      case 'y':
        if (!(value = reader.number(2))) return std::nullopt;
        year = *value < 69 ? 2000 + *value : 1900 + *value;
        break;
      case 'm':
        if (!(month = reader.number(2))) return std::nullopt;
        break;
      case 'd':
      case 'e':
        if (!(day = reader.number(2))) return std::nullopt;
        break;
      case 'b':
      case 'B':
        if (!(value = reader.name(kMonthNames))) return std::nullopt;
        month = *value + 1;
        break;
      case 'a':
      case 'A':
        // The weekday is read for its shape only; the date comes from the
        // other fields.
        if (!reader.name(kDayNames)) return std::nullopt;
        break;
      case 'H':
        if (!(value = reader.number(2)) || *value > 23) return std::nullopt;
        hour = *value;
        break;
      case 'I':
        if (!(hour12 = reader.number(2)) || *hour12 < 1 || *hour12 > 12) return std::nullopt;
        break;
      case 'p':
        reader.skipSpaces();
        if (reader.literal('A') || reader.literal('a')) {
          afternoon = false;
        } else if (reader.literal('P') || reader.literal('p')) {
          afternoon = true;
        } else {
          return std::nullopt;
        }
        if (!reader.literal('M') && !reader.literal('m')) return std::nullopt;
        break;
      case 'M':
        if (!(value = reader.number(2)) || *value > 59) return std::nullopt;
        minute = *value;
        break;
      case 'S':
        if (!(value = reader.number(2)) || *value > 59) return std::nullopt;
        second = *value;
        break;
      case 'j':
        if (!(yearDay = reader.number(3))) return std::nullopt;
        break;
      case 'w':
        if (!(value = reader.number(1)) || *value > 6) return std::nullopt;
        break;
      case 'F':
        if (!reader.number(3)) return std::nullopt;  // milliseconds are dropped
        break;
      case '%':
        if (!reader.literal('%')) return std::nullopt;
        break;
      default:
        if (!reader.literal('%') || !reader.literal(directive)) return std::nullopt;
        break;
    }
  }
  reader.skipSpaces();
  if (!reader.atEnd()) return std::nullopt;

  if (hour12) hour = afternoon ? *hour12 % 12 + (*afternoon ? 12 : 0) : *hour12;
  // Today is asked only when the format reads no year.
  const int y = year ? *year : now().yearOfCommonEra();
  if (yearDay && !month && !day) {
    const int daysInYear = DaysInMonth(2, y) == 29 ? 366 : 365;
    if (*yearDay < 1 || *yearDay > daysInYear) return std::nullopt;
    return CalendarDate(y, 1, *yearDay, hour, minute, second);
  }
  const int m = month.value_or(1);
  const int d = day.value_or(1);
  if (m < 1 || m > 12 || d < 1 || d > DaysInMonth(m, y)) return std::nullopt;
  return CalendarDate(y, m, d, hour, minute, second);
}

}  // namespace tarn
