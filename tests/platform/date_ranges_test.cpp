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

using Range = std::pair<DateNumber, DateNumber>;

TEST(DateRanges, MidweekMidQuarter) {
  // Wednesday 13 May 2026.
  const DateNumber today = 20260513;
  EXPECT_EQ(rangeOn(today, kMnemonicToday), Range(20260513, 20260513));
  EXPECT_EQ(rangeOn(today, kMnemonicYesterday), Range(20260512, 20260512));
  EXPECT_EQ(rangeOn(today, kMnemonicLastWeek), Range(20260503, 20260509));
  EXPECT_EQ(rangeOn(today, kMnemonicLastMonth), Range(20260401, 20260430));
  EXPECT_EQ(rangeOn(today, kMnemonicLastQuarter), Range(20260101, 20260331));
  EXPECT_EQ(rangeOn(today, kMnemonicLastYear), Range(20250101, 20251231));
  EXPECT_EQ(rangeOn(today, kMnemonicThisWeek), Range(20260510, 20260516));
  EXPECT_EQ(rangeOn(today, kMnemonicThisMonth), Range(20260501, 20260531));
  EXPECT_EQ(rangeOn(today, kMnemonicThisQuarter), Range(20260401, 20260630));
  EXPECT_EQ(rangeOn(today, kMnemonicThisYear), Range(20260101, 20261231));
  EXPECT_EQ(rangeOn(today, kMnemonicWeekToDate), Range(20260510, 20260513));
  EXPECT_EQ(rangeOn(today, kMnemonicMonthToDate), Range(20260501, 20260513));
  EXPECT_EQ(rangeOn(today, kMnemonicQuarterToDate), Range(20260401, 20260513));
  EXPECT_EQ(rangeOn(today, kMnemonicYearToDate), Range(20260101, 20260513));
  EXPECT_EQ(rangeOn(today, 14), Range(20260513, 20260513));
  EXPECT_EQ(rangeOn(today, -1), Range(20260513, 20260513));
}

TEST(DateRanges, FirstDayOfTheYearOnASunday) {
  // 1 January 2023 was a Sunday: every period starts today.
  const DateNumber today = 20230101;
  EXPECT_EQ(rangeOn(today, kMnemonicYesterday), Range(20221231, 20221231));
  EXPECT_EQ(rangeOn(today, kMnemonicLastWeek), Range(20221225, 20221231));
  EXPECT_EQ(rangeOn(today, kMnemonicLastMonth), Range(20221201, 20221231));
  EXPECT_EQ(rangeOn(today, kMnemonicLastQuarter), Range(20221001, 20221231));
  EXPECT_EQ(rangeOn(today, kMnemonicLastYear), Range(20220101, 20221231));
  EXPECT_EQ(rangeOn(today, kMnemonicThisWeek), Range(20230101, 20230107));
  EXPECT_EQ(rangeOn(today, kMnemonicWeekToDate), Range(20230101, 20230101));
  EXPECT_EQ(rangeOn(today, kMnemonicMonthToDate), Range(20230101, 20230101));
  EXPECT_EQ(rangeOn(today, kMnemonicQuarterToDate), Range(20230101, 20230101));
  EXPECT_EQ(rangeOn(today, kMnemonicYearToDate), Range(20230101, 20230101));
}

TEST(DateRanges, LastDayOfAQuarterOnASaturday) {
  // 31 March 2018 was a Saturday.
  const DateNumber today = 20180331;
  EXPECT_EQ(rangeOn(today, kMnemonicThisWeek), Range(20180325, 20180331));
  EXPECT_EQ(rangeOn(today, kMnemonicWeekToDate), Range(20180325, 20180331));
  EXPECT_EQ(rangeOn(today, kMnemonicLastWeek), Range(20180318, 20180324));
  EXPECT_EQ(rangeOn(today, kMnemonicLastMonth), Range(20180201, 20180228));
  EXPECT_EQ(rangeOn(today, kMnemonicThisQuarter), Range(20180101, 20180331));
  EXPECT_EQ(rangeOn(today, kMnemonicLastQuarter), Range(20171001, 20171231));
  EXPECT_EQ(rangeOn(today, kMnemonicQuarterToDate), Range(20180101, 20180331));
}

TEST(DateRanges, WeeksAndMonthsAcrossBoundaries) {
  // Tuesday 1 March 2016 (leap year): last month is a 29-day February, and
  // the week began in February.
  EXPECT_EQ(rangeOn(20160301, kMnemonicLastMonth), Range(20160201, 20160229));
  EXPECT_EQ(rangeOn(20160301, kMnemonicThisWeek), Range(20160228, 20160305));
  EXPECT_EQ(rangeOn(20160301, kMnemonicWeekToDate), Range(20160228, 20160301));
  EXPECT_EQ(rangeOn(20160301, kMnemonicYesterday), Range(20160229, 20160229));
  // Thursday 31 December 2026: this week runs into the next year.
  EXPECT_EQ(rangeOn(20261231, kMnemonicThisWeek), Range(20261227, 20270102));
  EXPECT_EQ(rangeOn(20261231, kMnemonicThisQuarter), Range(20261001, 20261231));
  EXPECT_EQ(rangeOn(20261231, kMnemonicLastQuarter), Range(20260701, 20260930));
  // 31 July: last month (June) has 30 days; the quarter began 1 July.
  EXPECT_EQ(rangeOn(20250731, kMnemonicLastMonth), Range(20250601, 20250630));
  EXPECT_EQ(rangeOn(20250731, kMnemonicLastQuarter), Range(20250401, 20250630));
  EXPECT_EQ(rangeOn(20251001, kMnemonicLastQuarter), Range(20250701, 20250930));
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
