#include "tarn/platform/calendar_date.h"

#include <gtest/gtest.h>

namespace tarn {
namespace {

TEST(CalendarDate, DateNumbersRoundTripAndCarryOutOfRangeFields) {
  EXPECT_EQ(CalendarDate::dateWithDateNumber(20000229).dateNumber(), 20000229);
  EXPECT_EQ(CalendarDate(2007, 13, 1).dateNumber(), 20080101);
  EXPECT_EQ(CalendarDate(2007, 3, 0).dateNumber(), 20070228);
  EXPECT_EQ(CalendarDate(1969, 12, 31, 23, 59, 59).secondsSince1970(), -1);
  EXPECT_EQ(CalendarDate(2026, 11, 22).dayOfWeek(), 0);  // a Sunday
  EXPECT_EQ(CalendarDate(2024, 12, 31).dayOfYear(), 366);
  EXPECT_EQ(CalendarDate(2024, 11, 15).quarterOfYear(), 3);
}

TEST(CalendarDate, AddingMonthsCarriesDaysPastTheEndOfTheMonth) {
  EXPECT_EQ(CalendarDate(2023, 1, 31).dateByAddingYears(0, 1, 0).dateNumber(), 20230303);
  EXPECT_EQ(CalendarDate(2024, 2, 29).dateByAddingYears(1, 0, 0).dateNumber(), 20250301);
  EXPECT_EQ(CalendarDate(2024, 12, 31).dateByAddingYears(0, 0, 1).dateNumber(), 20250101);
}

TEST(CalendarDate, NowCanBePinned) {
  CalendarDate::overrideNow(CalendarDate(2026, 11, 21, 9, 30));
  EXPECT_EQ(CalendarDate::now().dateNumber(), 20261121);
  CalendarDate::overrideNow(std::nullopt);
  EXPECT_GT(CalendarDate::now().yearOfCommonEra(), 2000);
}

}  // namespace
}  // namespace tarn
