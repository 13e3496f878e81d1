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

// The day counts against a plain walk of the calendar, one day at a time,
// from 1 March 1600 to the end of 2400 (leap centuries on both sides).
TEST(CivilDays, MatchAPlainWalkOfTheCalendar) {
  std::int64_t year = 1600;
  int month = 3;
  int day = 1;
  const std::int64_t first = DaysFromCivil(year, month, day);
  EXPECT_EQ(first, -135080);
  for (std::int64_t days = first; year <= 2400; ++days) {
    ASSERT_EQ(DaysFromCivil(year, month, day), days) << year << "-" << month << "-" << day;
    const CivilDay civil = CivilFromDays(days);
    ASSERT_EQ(civil.year, year);
    ASSERT_EQ(civil.month, month);
    ASSERT_EQ(civil.day, day);
    if (++day > DaysInMonth(month, static_cast<int>(year))) {
      day = 1;
      if (++month > 12) {
        month = 1;
        ++year;
      }
    }
  }
  EXPECT_EQ(DaysFromCivil(1970, 1, 1), 0);
  EXPECT_EQ(DaysFromCivil(1969, 12, 31), -1);
}

TEST(CivilDays, OutOfRangeFieldsCarryAsTheCalendarDoes) {
  const auto civil = [](std::int64_t year, std::int64_t month, std::int64_t day) {
    const CivilDay date = CivilFromDays(DaysFromCivilCarrying(year, month, day));
    return date.year * 10000 + date.month * 100 + date.day;
  };
  EXPECT_EQ(civil(2007, 13, 1), 20080101);
  EXPECT_EQ(civil(2007, 0, 1), 20061201);
  EXPECT_EQ(civil(2007, -23, 15), 20050115);
  EXPECT_EQ(civil(2007, 3, 0), 20070228);
  EXPECT_EQ(civil(2024, 2, 30), 20240301);
  EXPECT_EQ(civil(2023, 2, 31 + 365), 20240302);
  // Dates billions of years away, which a date number cannot hold, still
  // count and come back exactly.
  for (const std::int64_t year : {std::int64_t{-4'000'000'000'000}, std::int64_t{-1},
                                  std::int64_t{0}, std::int64_t{3'000'000'000'000}}) {
    for (int month = 1; month <= 12; ++month) {
      const std::int64_t days = DaysFromCivilCarrying(year, month, 29);
      EXPECT_EQ(days, DaysFromCivil(year, month, 29));
      const CivilDay date = CivilFromDays(days);
      const bool carried = month == 2 && DaysInMonth(2, static_cast<int>(year % 400)) == 28;
      EXPECT_EQ(date.year, year);
      EXPECT_EQ(date.month, carried ? 3 : month);
      EXPECT_EQ(date.day, carried ? 1 : 29);
    }
  }
  EXPECT_EQ(DaysFromCivilCarrying(3'000'000'000'000, 1, 1) -
                DaysFromCivilCarrying(2'999'999'999'600, 1, 1),
            146097);
}

TEST(CalendarDate, NowCanBePinned) {
  CalendarDate::overrideNow(CalendarDate(2026, 11, 21, 9, 30));
  EXPECT_EQ(CalendarDate::now().dateNumber(), 20261121);
  CalendarDate::overrideNow(std::nullopt);
  EXPECT_GT(CalendarDate::now().yearOfCommonEra(), 2000);
}

}  // namespace
}  // namespace tarn
