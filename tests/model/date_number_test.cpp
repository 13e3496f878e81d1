#include "tarn/model/date_number.h"

#include <gtest/gtest.h>

namespace tarn {
namespace {

TEST(DateNumber, ConvertsBothWays) {
  const CalendarDate leap = DateNumberToNSCalendarDate(20000229);
  EXPECT_EQ(leap.yearOfCommonEra(), 2000);
  EXPECT_EQ(leap.monthOfYear(), 2);
  EXPECT_EQ(leap.dayOfMonth(), 29);
  EXPECT_EQ(leap.hourOfDay(), 0);
  EXPECT_EQ(leap.minuteOfHour(), 0);
  EXPECT_EQ(NSCalendarDateToDateNumber(leap), 20000229);
  EXPECT_EQ(NSCalendarDateToDateNumber(CalendarDate(2007, 3, 15, 23, 59, 59)), 20070315);
  EXPECT_EQ(DateNumberToNSCalendarDate(20070315), CalendarDate::dateWithDateNumber(20070315));
  EXPECT_EQ(NSCalendarDateToDateNumber(CalendarDate(1, 1, 1)), 10101);
}

TEST(DateNumber, MissingDateAndOutOfRangeFields) {
  EXPECT_EQ(NSCalendarDateToDateNumber(std::nullopt), 19700101);
  // The calendar carries fields past their range.
  EXPECT_EQ(NSCalendarDateToDateNumber(DateNumberToNSCalendarDate(20070230)), 20070302);
  EXPECT_EQ(NSCalendarDateToDateNumber(DateNumberToNSCalendarDate(20071301)), 20080101);
  EXPECT_EQ(NSCalendarDateToDateNumber(DateNumberToNSCalendarDate(20070100)), 20061231);
  // Year 0, month 0, day 0: 30 November of year -1.
  EXPECT_EQ(NSCalendarDateToDateNumber(DateNumberToNSCalendarDate(0)), -10000 + 1100 + 30);
}

}  // namespace
}  // namespace tarn
