#include "tarn/model/date_number.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tarn
