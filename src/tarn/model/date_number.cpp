#include "tarn/model/date_number.h"

namespace tarn {

namespace {
constexpr DateNumber kMissingDateNumber = 19700101;
}  // namespace

CalendarDate DateNumberToNSCalendarDate(DateNumber number) {
  return CalendarDate(number / 10000, (number % 10000) / 100, number % 100);
}

DateNumber NSCalendarDateToDateNumber(const std::optional<CalendarDate>& date) {
  if (!date) return kMissingDateNumber;
  return date->yearOfCommonEra() * 10000 + date->monthOfYear() * 100 + date->dayOfMonth();
}

}  // namespace tarn
