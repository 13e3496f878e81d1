#include "tarn/model/day_field.h"

#include <gtest/gtest.h>

namespace tarn {
namespace {

TEST(DayField, MaximumDayUsesThePlainFourthYearRule) {
  const int expected[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int month = 1; month <= 12; ++month) {
    EXPECT_EQ(MaximumDayForMonthAndYear(month, 2023), expected[month - 1]) << month;
  }
  EXPECT_EQ(MaximumDayForMonthAndYear(2, 2024), 29);
  EXPECT_EQ(MaximumDayForMonthAndYear(2, 1900), 29);  // no century exception
  EXPECT_EQ(MaximumDayForMonthAndYear(2, 2000), 29);
  EXPECT_EQ(MaximumDayForMonthAndYear(2, 2100), 29);
  EXPECT_EQ(MaximumDayForMonthAndYear(2, -4), 29);
  EXPECT_EQ(MaximumDayForMonthAndYear(2, -3), 28);
  // Any month outside the named ones is treated as February.
  EXPECT_EQ(MaximumDayForMonthAndYear(0, 2023), 28);
  EXPECT_EQ(MaximumDayForMonthAndYear(13, 2024), 29);
}

TEST(DayField, ClampOnlyLowersDaysPastTheEnd) {
  EXPECT_EQ(ClampDayForMonthAndYear(31, 4, 2023), 30);
  EXPECT_EQ(ClampDayForMonthAndYear(30, 2, 1900), 29);
  EXPECT_EQ(ClampDayForMonthAndYear(29, 2, 2023), 28);
  EXPECT_EQ(ClampDayForMonthAndYear(31, 12, 2023), 31);
  EXPECT_EQ(ClampDayForMonthAndYear(15, 2, 2023), 15);
  EXPECT_EQ(ClampDayForMonthAndYear(0, 2, 2023), 0);
  EXPECT_EQ(ClampDayForMonthAndYear(-5, 6, 2023), -5);
}

}  // namespace
}  // namespace tarn
