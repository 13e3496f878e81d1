// Conversions between date numbers (YYYYMMDD in one 32-bit integer) and
// calendar dates. Every stored or compared date of the ledger is a date
// number; these two functions are the only way in and out of one.
#pragma once

#include <optional>

#include "tarn/platform/calendar_date.h"

namespace tarn {

// The date at midnight. Out-of-range months and days are handed to the
// calendar as they stand, so they carry over (20070230 is 2 March 2007).
CalendarDate DateNumberToNSCalendarDate(DateNumber number);

// year * 10000 + month * 100 + day. A missing date (std::nullopt) gives
// 19700101.
DateNumber NSCalendarDateToDateNumber(const std::optional<CalendarDate>& date);

}  // namespace tarn
