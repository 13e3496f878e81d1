#include "tarn/model/date_number.h"

#include <gtest/gtest.h>

#include "tarn/model/day_field.h"

namespace tarn {
namespace {

TEST(DateNumber, ConvertsBothWaysAndCarriesOutOfRangeFields) {
  const CalendarDate leap = DateNumberToNSCalendarDate(20000229);
  EXPECT_EQ(leap, CalendarDate(2000, 2, 29));  // at midnight
  EXPECT_EQ(NSCalendarDateToDateNumber(leap), 20000229);
  EXPECT_EQ(NSCalendarDateToDateNumber(CalendarDate(2007, 3, 15, 23, 59, 59)), 20070315);
  EXPECT_EQ(NSCalendarDateToDateNumber(CalendarDate(1, 1, 1)), 10101);
  EXPECT_EQ(NSCalendarDateToDateNumber(std::nullopt), 19700101);
  // Year 0, month 0, day 0 is 30 November of year -1.
  const std::pair<DateNumber, DateNumber> rows[] = {
      {20070230, 20070302}, {20071301, 20080101}, {20070100, 20061231}, {0, -10000 + 1100 + 30}};
  for (auto [stored, carried] : rows) {
    EXPECT_EQ(NSCalendarDateToDateNumber(DateNumberToNSCalendarDate(stored)), carried) << stored;
  }
}

TEST(DayField, MaximumDayUsesThePlainFourthYearRule) {
  const int expected[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int month = 1; month <= 12; ++month) {
    EXPECT_EQ(MaximumDayForMonthAndYear(month, 2023), expected[month - 1]) << month;
  }
  // No century exception; any month outside the named ones is treated as February.
  const int rows[][3] = {{2, 1900, 29}, {2, 2100, 29}, {2, -4, 29},
                         {2, -3, 28},   {0, 2023, 28}, {13, 2024, 29}};
  for (const auto& row : rows) {
    EXPECT_EQ(MaximumDayForMonthAndYear(row[0], row[1]), row[2]) << row[0] << "/" << row[1];
  }
}

TEST(DayField, ClampOnlyLowersDaysPastTheEnd) {
  const int rows[][4] = {{31, 4, 2023, 30},  {30, 2, 1900, 29}, {29, 2, 2023, 28},
                         {31, 12, 2023, 31}, {0, 2, 2023, 0},   {-5, 6, 2023, -5}};
  for (const auto& row : rows) {
    EXPECT_EQ(ClampDayForMonthAndYear(row[0], row[1], row[2]), row[3]) << row[0] << " " << row[1];
  }
}

}  // namespace
}  // namespace tarn
