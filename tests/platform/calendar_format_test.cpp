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

TEST(CalendarFormat, ReadsDatesThatFitTheFormatAndRejectsTheRest) {
  struct Case {
    const char* text;
    const char* format;
    DateNumber expected;  // 0: rejected
  };
  // clang-format off
  const Case cases[] = {
      {"3/5/07", "%m/%d/%y", 20070305},    {"03/05/07", "%m/%d/%y", 20070305},
      {"12/31/1999", "%m/%d/%Y", 19991231}, {"20070305", "%Y%m%d", 20070305},
      {" 5.3.2007 ", "%e.%m.%Y", 20070305}, {"064 2007", "%j %Y", 20070305},
      {"366 2024", "%j %Y", 20241231},      {"366 2023", "%j %Y", 0}, {"0 2023", "%j %Y", 0},
      {"2007-03-05 0 12:00:00.250", "%Y-%m-%d %w %H:%M:%S.%F", 20070305},
      {"2007-03-05 7", "%Y-%m-%d %w", 0},
      // Two-digit years: 69 to 99 are 1900s, the rest 2000s.
      {"1/1/69", "%m/%d/%y", 19690101}, {"1/1/99", "%m/%d/%y", 19990101},
      {"1/1/00", "%m/%d/%y", 20000101}, {"1/1/68", "%m/%d/%y", 20680101},
      {"1/1/7", "%m/%d/%y", 20070101},  {"1/1/2007", "%m/%d/%y", 0},
      // Names in any case, full or abbreviated; the weekday is not checked.
      {"march 5, 2007", "%B %e, %Y", 20070305},       {"MAR 5, 2007", "%B %e, %Y", 20070305},
      {"September 5, 2007", "%b %e, %Y", 20070905},   {"May 5 2007", "%b %e %Y", 20070505},
      {"Monday, 5 Mar 2007", "%A, %e %b %Y", 20070305},
      {"fri 5 Mar 2007", "%a %e %b %Y", 20070305},    {"Smarch 5 2007", "%b %e %Y", 0},
      {"Funday 5 Mar 2007", "%a %e %b %Y", 0},
      {"13/01/07", "%m/%d/%y", 0},   {"00/01/07", "%m/%d/%y", 0}, {"04/31/07", "%m/%d/%y", 0},
      {"02/29/2023", "%m/%d/%Y", 0}, {"02/29/2024", "%m/%d/%Y", 20240229},
      {"02/29/1900", "%m/%d/%Y", 0}, {"3-5-07", "%m/%d/%y", 0}, {"3/5/07x", "%m/%d/%y", 0},
      {"3/5", "%m/%d/%y", 0},        {"", "%m/%d/%y", 0},       {"a/5/07", "%m/%d/%y", 0},
      {"2007-03-05 24:00", "%Y-%m-%d %H:%M", 0}, {"2007-03-05 23:60", "%Y-%m-%d %H:%M", 0},
      {"2007-03-05 13:00 PM", "%Y-%m-%d %I:%M %p", 0},
      {"100% 2007", "100%% %Y", 20070101},       {"100 2007", "100%% %Y", 0}};
  // clang-format on
  for (const Case& c : cases) {
    EXPECT_EQ(read(c.text, c.format).value_or(0), c.expected) << c.text << " as " << c.format;
  }
  EXPECT_EQ(CalendarDate::dateWithString("2007-03-05 9:07:05", "%Y-%m-%d %H:%M:%S"),
            CalendarDate(2007, 3, 5, 9, 7, 5));
  EXPECT_EQ(CalendarDate::dateWithString("1/2/2007 12:15 am", "%m/%d/%Y %I:%M %p"),
            CalendarDate(2007, 1, 2, 0, 15));
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
