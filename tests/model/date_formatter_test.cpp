#include "tarn/model/date_formatter.h"

#include <gtest/gtest.h>

#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

const CalendarDate kToday(2026, 11, 21);

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
  EXPECT_EQ(*fallback.defaultObjectValue(), kToday);  // today at midnight
}

TEST_F(DateFormatterTest, ParsingNeverFailsAndTakesANilDefault) {
  auto formatter = TARNDateFormatter::initWithDateFormat("%a, %b %e, %Y", false);
  auto natural = TARNDateFormatter::initWithDateFormat("%a, %b %e, %Y", true);
  EXPECT_EQ(formatter->stringForObjectValue(CalendarDate(2024, 2, 29)), "Thu, Feb 29, 2024");
  std::optional<CalendarDate> value;
  std::string error = "untouched";
  // Natural language only where allowed; otherwise unreadable text gives the default, today.
  const std::tuple<const char*, CalendarDate, CalendarDate> rows[] = {
      {"Thu, Feb 29, 2024", CalendarDate(2024, 2, 29), CalendarDate(2024, 2, 29)},
      {"Thu, Feb 30, 2024", kToday, kToday},
      {"", kToday, kToday},
      {" Yesterday ", kToday, CalendarDate(2026, 11, 20)},
      {"TOMORROW", kToday, CalendarDate(2026, 11, 22)}};
  for (const auto& [text, plainly, naturally] : rows) {
    EXPECT_TRUE(formatter->getObjectValue(value, text, &error));
    EXPECT_EQ(value, plainly) << text;
    natural->getObjectValue(value, text);
    EXPECT_EQ(value, naturally) << text;
  }
  EXPECT_EQ(error, "untouched");

  formatter->setDefaultObjectValue(CalendarDate(1999, 12, 31));
  formatter->getObjectValue(value, "garbage");
  EXPECT_EQ(value, CalendarDate(1999, 12, 31));
  // Unlike the number formatter, a nil default is kept: unreadable text then gives no date.
  formatter->setDefaultObjectValue(std::nullopt);
  EXPECT_TRUE(formatter->getObjectValue(value, "garbage"));
  EXPECT_FALSE(value);
}

}  // namespace
}  // namespace tarn
