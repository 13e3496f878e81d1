#include "tarn/model/date_formatter.h"

#include <gtest/gtest.h>

#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

class DateFormatterTest : public ::testing::Test {
 protected:
  void SetUp() override { CalendarDate::overrideNow(CalendarDate(2026, 11, 21, 15, 42, 7)); }
  void TearDown() override { CalendarDate::overrideNow(std::nullopt); }
};

TEST_F(DateFormatterTest, DefaultIsTodayAtMidnight) {
  TARNDateFormatter formatter;
  ASSERT_TRUE(formatter.defaultObjectValue());
  EXPECT_EQ(*formatter.defaultObjectValue(), CalendarDate(2026, 11, 21));
  auto named = TARNDateFormatter::initWithDateFormat("%Y-%m-%d", false);
  EXPECT_EQ(named->dateFormat(), "%Y-%m-%d");
  EXPECT_EQ(*named->defaultObjectValue(), CalendarDate(2026, 11, 21));
}

TEST_F(DateFormatterTest, UsesTheUserShortDateFormat) {
  const std::string saved = UserDefault("NSShortDateFormatString");
  SetUserDefault("NSShortDateFormatString", "%d.%m.%Y");
  TARNDateFormatter european;
  SetUserDefault("NSShortDateFormatString", "");
  TARNDateFormatter fallback;
  SetUserDefault("NSShortDateFormatString", saved);
  EXPECT_EQ(european.stringForObjectValue(CalendarDate(2007, 3, 5)), "05.03.2007");
  EXPECT_EQ(fallback.stringForObjectValue(CalendarDate(2007, 3, 5)), "03/05/07");
  EXPECT_EQ(fallback.stringForObjectValue(std::nullopt), std::nullopt);
}

TEST_F(DateFormatterTest, ParsingNeverFails) {
  auto formatter = TARNDateFormatter::initWithDateFormat("%m/%d/%y", false);
  std::optional<CalendarDate> value;
  std::string error = "untouched";
  EXPECT_TRUE(formatter->getObjectValue(value, "3/5/07", &error));
  EXPECT_EQ(value, CalendarDate(2007, 3, 5));
  EXPECT_TRUE(formatter->getObjectValue(value, "not a date", &error));
  EXPECT_EQ(value, CalendarDate(2026, 11, 21));
  EXPECT_TRUE(formatter->getObjectValue(value, "04/31/07"));  // no such day
  EXPECT_EQ(value, CalendarDate(2026, 11, 21));
  EXPECT_TRUE(formatter->getObjectValue(value, ""));
  EXPECT_EQ(value, CalendarDate(2026, 11, 21));
  EXPECT_EQ(error, "untouched");

  formatter->setDefaultObjectValue(CalendarDate(1999, 12, 31));
  formatter->getObjectValue(value, "garbage");
  EXPECT_EQ(value, CalendarDate(1999, 12, 31));

  // A nil default is kept as nil: unreadable text then gives no date.
  formatter->setDefaultObjectValue(std::nullopt);
  EXPECT_FALSE(formatter->defaultObjectValue());
  value = CalendarDate(2000, 1, 1);
  EXPECT_TRUE(formatter->getObjectValue(value, "garbage"));
  EXPECT_FALSE(value);
}

TEST_F(DateFormatterTest, NaturalLanguageOnlyWhenAllowed) {
  auto plain = TARNDateFormatter::initWithDateFormat("%Y-%m-%d", false);
  auto natural = TARNDateFormatter::initWithDateFormat("%Y-%m-%d", true);
  plain->setDefaultObjectValue(CalendarDate(2000, 1, 1));
  natural->setDefaultObjectValue(CalendarDate(2000, 1, 1));
  std::optional<CalendarDate> value;
  plain->getObjectValue(value, "yesterday");
  EXPECT_EQ(value, CalendarDate(2000, 1, 1));
  natural->getObjectValue(value, " Yesterday ");
  EXPECT_EQ(value, CalendarDate(2026, 11, 20));
  natural->getObjectValue(value, "TOMORROW");
  EXPECT_EQ(value, CalendarDate(2026, 11, 22));
  natural->getObjectValue(value, "today");
  EXPECT_EQ(value, CalendarDate(2026, 11, 21));  // midnight, not the pinned time of day
  natural->getObjectValue(value, "2007-03-05");
  EXPECT_EQ(value, CalendarDate(2007, 3, 5));
}

TEST_F(DateFormatterTest, WritesAndReadsBack) {
  auto formatter = TARNDateFormatter::initWithDateFormat("%a, %b %e, %Y", false);
  const CalendarDate date(2024, 2, 29);
  const auto text = formatter->stringForObjectValue(date);
  EXPECT_EQ(text, "Thu, Feb 29, 2024");
  std::optional<CalendarDate> value;
  formatter->getObjectValue(value, *text);
  EXPECT_EQ(value, date);
}

}  // namespace
}  // namespace tarn
