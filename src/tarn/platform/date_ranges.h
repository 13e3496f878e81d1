// Named periods relative to today, and date-format helpers of the companion
// framework.
#pragma once

#include <string>
#include <string_view>

#include "tarn/platform/calendar_date.h"

namespace tarn {

// Period mnemonics, as filters, view filters and summaries store them.
enum DateMnemonic : int {
  kMnemonicToday = 0,
  kMnemonicYesterday = 1,
  kMnemonicLastWeek = 2,
  kMnemonicLastMonth = 3,
  kMnemonicLastQuarter = 4,
  kMnemonicLastYear = 5,
  kMnemonicThisWeek = 6,
  kMnemonicThisMonth = 7,
  kMnemonicThisQuarter = 8,
  kMnemonicThisYear = 9,
  kMnemonicWeekToDate = 10,
  kMnemonicMonthToDate = 11,
  kMnemonicQuarterToDate = 12,
  kMnemonicYearToDate = 13,
};

// Fills in the first and last day (both at midnight, both inside the period)
// of the period relative to CalendarDate::now(). Weeks run Sunday to
// Saturday; quarters are January-March, April-June, July-September and
// October-December; "to date" periods end today; "last" periods are the
// whole period before the current one. An unknown mnemonic gives today for
// both.
void DateRangeForMnemonic(int mnemonic, CalendarDate& start, CalendarDate& end);

// The shortest form of a calendar format, for a date column that has little
// room: four-digit years become two-digit ("%Y" -> "%y"), padded days lose
// their padding ("%d" -> "%e"), month and weekday names are abbreviated
// ("%B" -> "%b", "%A" -> "%a"). Numeric months stay "%m" (there is no
// unpadded month directive), and "%%" and literal text are kept.
std::string DateFormatStringToShortestDateFormatString(std::string_view format);

}  // namespace tarn
