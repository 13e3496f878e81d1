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
  EXPECT_EQ(*fallback.defaultObjectValue(), CalendarDate(2026, 11, 21));  // today at midnight
}

TEST_F(DateFormatterTest, ParsingNeverFailsAndTakesANilDefault) {
  auto formatter = TARNDateFormatter::initWithDateFormat("%m/%d/%y", false);
  std::optional<CalendarDate> value;
  std::string error = "untouched";
  const std::pair<const char*, CalendarDate> rows[] = {{"3/5/07", CalendarDate(2007, 3, 5)},
                                                       {"not a date", CalendarDate(2026, 11, 21)},
                                                       {"04/31/07", CalendarDate(2026, 11, 21)},
                                                       {"", CalendarDate(2026, 11, 21)}};
  for (const auto& [text, expected] : rows) {
    EXPECT_TRUE(formatter->getObjectValue(value, text, &error));
    EXPECT_EQ(value, expected) << text;
  }
  EXPECT_EQ(error, "untouched");

  formatter->setDefaultObjectValue(CalendarDate(1999, 12, 31));
  formatter->getObjectValue(value, "garbage");
  EXPECT_EQ(value, CalendarDate(1999, 12, 31));
  // Unlike the number formatter, a nil default is kept: unreadable text then gives no date.
  formatter->setDefaultObjectValue(std::nullopt);
  EXPECT_FALSE(formatter->defaultObjectValue());
  EXPECT_TRUE(formatter->getObjectValue(value, "garbage"));
  EXPECT_FALSE(value);
}

TEST_F(DateFormatterTest, NaturalLanguageOnlyWhenAllowed) {
  auto plain = TARNDateFormatter::initWithDateFormat("%Y-%m-%d", false);
  auto natural = TARNDateFormatter::initWithDateFormat("%Y-%m-%d", true);
  std::optional<CalendarDate> value;
  plain->getObjectValue(value, "yesterday");
  EXPECT_EQ(value, CalendarDate(2026, 11, 21));  // the default
  const std::pair<const char*, CalendarDate> rows[] = {{" Yesterday ", CalendarDate(2026, 11, 20)},
                                                       {"TOMORROW", CalendarDate(2026, 11, 22)},
                                                       {"today", CalendarDate(2026, 11, 21)},
                                                       {"2007-03-05", CalendarDate(2007, 3, 5)}};
  for (const auto& [text, expected] : rows) {
    natural->getObjectValue(value, text);
    EXPECT_EQ(value, expected) << text;
  }
}

TEST_F(DateFormatterTest, WritesAndReadsBack) {
  auto formatter = TARNDateFormatter::initWithDateFormat("%a, %b %e, %Y", false);
  const auto text = formatter->stringForObjectValue(CalendarDate(2024, 2, 29));
  EXPECT_EQ(text, "Thu, Feb 29, 2024");
  std::optional<CalendarDate> value;
  formatter->getObjectValue(value, *text);
  EXPECT_EQ(value, CalendarDate(2024, 2, 29));
}

}  // namespace
}  // namespace tarn
