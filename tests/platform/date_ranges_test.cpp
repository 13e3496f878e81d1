#include "tarn/platform/date_ranges.h"

#include <gtest/gtest.h>

#include <utility>

namespace tarn {
namespace {

// The range of a mnemonic with "now" pinned to `today` (mid-afternoon, to
// show that the bounds fall at midnight), as two date numbers.
std::pair<DateNumber, DateNumber> rangeOn(DateNumber today, int mnemonic) {
  CalendarDate::overrideNow(
      CalendarDate::dateWithDateNumber(today).dateByAddingYears(0, 0, 0, 15, 30));
  CalendarDate start, end;
  DateRangeForMnemonic(mnemonic, start, end);
  CalendarDate::overrideNow(std::nullopt);
  EXPECT_EQ(start.hourOfDay() + start.minuteOfHour() + start.secondOfMinute(), 0);
  EXPECT_EQ(end.hourOfDay() + end.minuteOfHour() + end.secondOfMinute(), 0);
  return {start.dateNumber(), end.dateNumber()};
}

TEST(DateRanges, PeriodsAroundTheirFirstAndLastDays) {
  struct Case {
    DateNumber today;
    int mnemonic;
    DateNumber start, end;
  };
  // clang-format off
  const Case cases[] = {
      // Wednesday 13 May 2026, midweek and mid-quarter; unknown mnemonics mean today.
      {20260513, kMnemonicToday, 20260513, 20260513}, {20260513, 14, 20260513, 20260513},
      {20260513, -1, 20260513, 20260513},
      {20260513, kMnemonicYesterday, 20260512, 20260512},
      {20260513, kMnemonicLastWeek, 20260503, 20260509},
      {20260513, kMnemonicLastMonth, 20260401, 20260430},
      {20260513, kMnemonicLastQuarter, 20260101, 20260331},
      {20260513, kMnemonicLastYear, 20250101, 20251231},
      {20260513, kMnemonicThisWeek, 20260510, 20260516},
      {20260513, kMnemonicThisMonth, 20260501, 20260531},
      {20260513, kMnemonicThisQuarter, 20260401, 20260630},
      {20260513, kMnemonicThisYear, 20260101, 20261231},
      {20260513, kMnemonicWeekToDate, 20260510, 20260513},
      {20260513, kMnemonicMonthToDate, 20260501, 20260513},
      {20260513, kMnemonicQuarterToDate, 20260401, 20260513},
      {20260513, kMnemonicYearToDate, 20260101, 20260513},
      // Sunday 1 January 2023: every period starts today.
      {20230101, kMnemonicYesterday, 20221231, 20221231},
      {20230101, kMnemonicLastWeek, 20221225, 20221231},
      {20230101, kMnemonicLastMonth, 20221201, 20221231},
      {20230101, kMnemonicLastQuarter, 20221001, 20221231},
      {20230101, kMnemonicLastYear, 20220101, 20221231},
      {20230101, kMnemonicThisWeek, 20230101, 20230107},
      {20230101, kMnemonicWeekToDate, 20230101, 20230101},
      {20230101, kMnemonicMonthToDate, 20230101, 20230101},
      {20230101, kMnemonicQuarterToDate, 20230101, 20230101},
      {20230101, kMnemonicYearToDate, 20230101, 20230101},
      // Saturday 31 March 2018, the last day of a week and a quarter.
      {20180331, kMnemonicThisWeek, 20180325, 20180331},
      {20180331, kMnemonicWeekToDate, 20180325, 20180331},
      {20180331, kMnemonicLastWeek, 20180318, 20180324},
      {20180331, kMnemonicLastMonth, 20180201, 20180228},
      {20180331, kMnemonicThisQuarter, 20180101, 20180331},
      {20180331, kMnemonicLastQuarter, 20171001, 20171231},
      {20180331, kMnemonicQuarterToDate, 20180101, 20180331},
      // Tuesday 1 March 2016: a 29-day February, and a week begun in February.
      {20160301, kMnemonicLastMonth, 20160201, 20160229},
      {20160301, kMnemonicThisWeek, 20160228, 20160305},
      {20160301, kMnemonicWeekToDate, 20160228, 20160301},
      {20160301, kMnemonicYesterday, 20160229, 20160229},
      // Thursday 31 December 2026: this week runs into the next year.
      {20261231, kMnemonicThisWeek, 20261227, 20270102},
      {20261231, kMnemonicThisQuarter, 20261001, 20261231},
      {20261231, kMnemonicLastQuarter, 20260701, 20260930},
      {20261231, kMnemonicThisYear, 20260101, 20261231},
      {20250731, kMnemonicLastMonth, 20250601, 20250630},
      {20250731, kMnemonicLastQuarter, 20250401, 20250630},
      {20251001, kMnemonicLastQuarter, 20250701, 20250930}};
  // clang-format on
  for (const Case& c : cases) {
    EXPECT_EQ(rangeOn(c.today, c.mnemonic), std::make_pair(c.start, c.end))
        << "mnemonic " << c.mnemonic << " on " << c.today;
  }
}

TEST(DateRanges, ShortestDateFormat) {
  EXPECT_EQ(DateFormatStringToShortestDateFormatString("%m/%d/%Y"), "%m/%e/%y");
  EXPECT_EQ(DateFormatStringToShortestDateFormatString("%A, %B %d, %Y"), "%a, %b %e, %y");
  EXPECT_EQ(DateFormatStringToShortestDateFormatString("%m/%e/%y"), "%m/%e/%y");
  EXPECT_EQ(DateFormatStringToShortestDateFormatString("%%Y %%%d"), "%%Y %%%e");
  EXPECT_EQ(DateFormatStringToShortestDateFormatString("Year %Y%"), "Year %y%");
  EXPECT_EQ(DateFormatStringToShortestDateFormatString(""), "");
}

}  // namespace
}  // namespace tarn
