#include "tarn/platform/date_ranges.h"

namespace tarn {

void DateRangeForMnemonic(int mnemonic, CalendarDate& start, CalendarDate& end) {
  const CalendarDate now = CalendarDate::now();
  const int year = now.yearOfCommonEra();
  const int month = now.monthOfYear();
  const int day = now.dayOfMonth();
  const CalendarDate today(year, month, day);
  // First month (1, 4, 7 or 10) of the current quarter.
  const int quarterMonth = now.quarterOfYear() * 3 + 1;
  const CalendarDate sunday(year, month, day - now.dayOfWeek());

  // Field overflow does the month and year arithmetic: day 0 of a month is
  // the last day of the month before, month 0 is December of the year before.
  switch (mnemonic) {
    case kMnemonicYesterday:
      start = end = CalendarDate(year, month, day - 1);
      return;
    case kMnemonicLastWeek:
      start = sunday.dateByAddingYears(0, 0, -7);
      end = sunday.dateByAddingYears(0, 0, -1);
      return;
    case kMnemonicLastMonth:
      start = CalendarDate(year, month - 1, 1);
      end = CalendarDate(year, month, 0);
      return;
    case kMnemonicLastQuarter:
      start = CalendarDate(year, quarterMonth - 3, 1);
      end = CalendarDate(year, quarterMonth, 0);
      return;
    case kMnemonicLastYear:
      start = CalendarDate(year - 1, 1, 1);
      end = CalendarDate(year - 1, 12, 31);
      return;
    case kMnemonicThisWeek:
      start = sunday;
      end = sunday.dateByAddingYears(0, 0, 6);
      return;
    case kMnemonicThisMonth:
      start = CalendarDate(year, month, 1);
      end = CalendarDate(year, month + 1, 0);
      return;
    case kMnemonicThisQuarter:
      start = CalendarDate(year, quarterMonth, 1);
      end = CalendarDate(year, quarterMonth + 3, 0);
      return;
    case kMnemonicThisYear:
      start = CalendarDate(year, 1, 1);
      end = CalendarDate(year, 12, 31);
      return;
    case kMnemonicWeekToDate:
      start = sunday;
      end = today;
      return;
    case kMnemonicMonthToDate:
      start = CalendarDate(year, month, 1);
      end = today;
      return;
    case kMnemonicQuarterToDate:
      start = CalendarDate(year, quarterMonth, 1);
      end = today;
      return;
    case kMnemonicYearToDate:
      start = CalendarDate(year, 1, 1);
      end = today;
      return;
    case kMnemonicToday:
    default:
      start = end = today;
      return;
  }
}

std::string DateFormatStringToShortestDateFormatString(std::string_view format) {
  std::string shortest;
  shortest.reserve(format.size());
  for (std::size_t i = 0; i < format.size(); ++i) {
    shortest += format[i];
    if (format[i] != '%' || i + 1 == format.size()) continue;
    char directive = format[++i];
    switch (directive) {
      case 'Y':
        directive = 'y';
        break;
      case 'd':
        directive = 'e';
        break;
      case 'B':
        directive = 'b';
        break;
      case 'A':
        directive = 'a';
        break;
      default:
        break;
    }
    shortest += directive;
  }
  return shortest;
}

}  // namespace tarn
