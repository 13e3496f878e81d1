#include <gtest/gtest.h>

#include "tarn/platform/calendar_date.h"

namespace tarn {
namespace {

std::optional<DateNumber> read(std::string_view text, std::string_view format) {
  const auto date = CalendarDate::dateWithString(text, format);
  if (!date) return std::nullopt;
  return date->dateNumber();
}

TEST(CalendarFormat, WritesEveryDirective) {
  const CalendarDate date(2007, 3, 5, 14, 7, 9);  // a Monday
  EXPECT_EQ(date.descriptionWithCalendarFormat("%Y %y %m %d %e"), "2007 07 03 05 5");
  EXPECT_EQ(date.descriptionWithCalendarFormat("%b %B %a %A"), "Mar March Mon Monday");
  EXPECT_EQ(date.descriptionWithCalendarFormat("%H:%M:%S %I%p"), "14:07:09 02PM");
  EXPECT_EQ(date.descriptionWithCalendarFormat("%j 100%% %q %w %S.%F"), "064 100% %q 1 09.000");
  EXPECT_EQ(CalendarDate(2024, 12, 31).descriptionWithCalendarFormat("%j"), "366");
  EXPECT_EQ(CalendarDate(2000, 1, 1).descriptionWithCalendarFormat("%y"), "00");
  EXPECT_EQ(CalendarDate(987, 1, 1).descriptionWithCalendarFormat("%Y/%y"), "0987/87");
  EXPECT_EQ(CalendarDate(2007, 3, 5, 0, 30).descriptionWithCalendarFormat("%I %p"), "12 AM");
  EXPECT_EQ(CalendarDate(2007, 3, 5, 12).descriptionWithCalendarFormat("%I %p"), "12 PM");
  EXPECT_EQ(date.descriptionWithCalendarFormat("trailing %"), "trailing %");
  EXPECT_EQ(date.descriptionWithCalendarFormat(""), "");
}

TEST(CalendarFormat, ReadsNumbersOfOneOrTwoDigits) {
  EXPECT_EQ(read("3/5/07", "%m/%d/%y"), 20070305);
  EXPECT_EQ(read("03/05/07", "%m/%d/%y"), 20070305);
  EXPECT_EQ(read("12/31/1999", "%m/%d/%Y"), 19991231);
  EXPECT_EQ(read("2007-03-05", "%Y-%m-%d"), 20070305);
  EXPECT_EQ(read("20070305", "%Y%m%d"), 20070305);  // fixed widths need no separators
  EXPECT_EQ(read(" 5.3.2007 ", "%e.%m.%Y"), 20070305);
  EXPECT_EQ(read("064 2007", "%j %Y"), 20070305);
  EXPECT_EQ(read("366 2024", "%j %Y"), 20241231);
  EXPECT_EQ(read("2007-03-05 0 12:00:00.250", "%Y-%m-%d %w %H:%M:%S.%F"), 20070305);
  EXPECT_FALSE(read("2007-03-05 7", "%Y-%m-%d %w"));
  EXPECT_FALSE(read("366 2023", "%j %Y"));
  EXPECT_FALSE(read("0 2023", "%j %Y"));
  const auto time = CalendarDate::dateWithString("2007-03-05 9:07:05", "%Y-%m-%d %H:%M:%S");
  ASSERT_TRUE(time);
  EXPECT_EQ(*time, CalendarDate(2007, 3, 5, 9, 7, 5));
  const auto pm = CalendarDate::dateWithString("1/2/2007 12:15 am", "%m/%d/%Y %I:%M %p");
  ASSERT_TRUE(pm);
  EXPECT_EQ(*pm, CalendarDate(2007, 1, 2, 0, 15));
}

TEST(CalendarFormat, TwoDigitYearsPivotAt69) {
  EXPECT_EQ(read("1/1/69", "%m/%d/%y"), 19690101);
  EXPECT_EQ(read("1/1/99", "%m/%d/%y"), 19990101);
  EXPECT_EQ(read("1/1/00", "%m/%d/%y"), 20000101);
  EXPECT_EQ(read("1/1/68", "%m/%d/%y"), 20680101);
  EXPECT_EQ(read("1/1/7", "%m/%d/%y"), 20070101);
  EXPECT_FALSE(read("1/1/2007", "%m/%d/%y"));  // the third and fourth digits are left over
}

TEST(CalendarFormat, ReadsNamesInAnyCase) {
  EXPECT_EQ(read("march 5, 2007", "%B %e, %Y"), 20070305);
  EXPECT_EQ(read("MAR 5, 2007", "%B %e, %Y"), 20070305);
  EXPECT_EQ(read("Sep 5, 2007", "%b %e, %Y"), 20070905);
  EXPECT_EQ(read("September 5, 2007", "%b %e, %Y"), 20070905);
  EXPECT_EQ(read("May 5 2007", "%b %e %Y"), 20070505);
  EXPECT_EQ(read("Monday, 5 Mar 2007", "%A, %e %b %Y"), 20070305);
  EXPECT_EQ(read("fri 5 Mar 2007", "%a %e %b %Y"), 20070305);  // weekday not checked
  EXPECT_FALSE(read("Smarch 5 2007", "%b %e %Y"));
  EXPECT_FALSE(read("Funday 5 Mar 2007", "%a %e %b %Y"));
}

TEST(CalendarFormat, RejectsTextThatDoesNotFit) {
  EXPECT_FALSE(read("13/01/07", "%m/%d/%y"));
  EXPECT_FALSE(read("00/01/07", "%m/%d/%y"));
  EXPECT_FALSE(read("04/31/07", "%m/%d/%y"));
  EXPECT_FALSE(read("02/29/2023", "%m/%d/%Y"));
  EXPECT_EQ(read("02/29/2024", "%m/%d/%Y"), 20240229);
  EXPECT_FALSE(read("02/29/1900", "%m/%d/%Y"));
  EXPECT_FALSE(read("3-5-07", "%m/%d/%y"));
  EXPECT_FALSE(read("3/5/07x", "%m/%d/%y"));
  EXPECT_FALSE(read("3/5", "%m/%d/%y"));
  EXPECT_FALSE(read("", "%m/%d/%y"));
  EXPECT_FALSE(read("a/5/07", "%m/%d/%y"));
  EXPECT_FALSE(CalendarDate::dateWithString("2007-03-05 24:00", "%Y-%m-%d %H:%M"));
  EXPECT_FALSE(CalendarDate::dateWithString("2007-03-05 23:60", "%Y-%m-%d %H:%M"));
  EXPECT_FALSE(CalendarDate::dateWithString("2007-03-05 13:00 PM", "%Y-%m-%d %I:%M %p"));
  EXPECT_EQ(read("100% 2007", "100%% %Y"), 20070101);
  EXPECT_FALSE(read("100 2007", "100%% %Y"));
}

TEST(CalendarFormat, MissingFieldsTakeDefaults) {
  CalendarDate::overrideNow(CalendarDate(2026, 11, 21, 10, 0));
  EXPECT_EQ(read("3/5", "%m/%d"), 20260305);
  EXPECT_FALSE(read("2/29", "%m/%d"));  // 2026 is a common year
  EXPECT_EQ(read("2007", "%Y"), 20070101);
  CalendarDate::overrideNow(std::nullopt);
}

TEST(CalendarFormat, RoundTripsThroughText) {
  const char* formats[] = {"%m/%d/%y", "%d.%m.%Y", "%A %B %e %Y %H:%M:%S", "%Y%j"};
  for (const char* format : formats) {
    for (CalendarDate date(1969, 12, 25, 7, 8, 9); date < CalendarDate(2069, 1, 10);
         date = date.dateByAddingYears(0, 0, 397)) {
      const std::string text = date.descriptionWithCalendarFormat(format);
      const auto back = CalendarDate::dateWithString(text, format);
      ASSERT_TRUE(back) << format << " " << text;
      EXPECT_EQ(back->dateNumber(), date.dateNumber()) << format << " " << text;
    }
  }
}

}  // namespace
}  // namespace tarn
