#include <gtest/gtest.h>

#include <vector>

#include "filters/filter_book.h"
#include "tarn/filters/filter_condition.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {
namespace {

using testing::Dates;
using testing::FilterBook;
using DateList = std::vector<DateNumber>;

// Pins today for the life of the object.
class PinnedToday {
 public:
  explicit PinnedToday(const CalendarDate& today) { CalendarDate::overrideNow(today); }
  ~PinnedToday() { CalendarDate::overrideNow(std::nullopt); }
};

class DateConditionTest : public ::testing::Test {
 protected:
  // The dates that a date condition keeps of entries dated `dates`.
  DateList Kept(int32_t qualifier, plist::Value data, const DateList& dates, int32_t logic = 1) {
    auto condition =
        TARNFilterCondition::initWithCategory(kFieldDate, qualifier, logic, std::move(data));
    return Dates(condition->filterEntries(book_.Dated(dates)));
  }
  DateList KeptFor(int32_t qualifier, int a, int b, const DateList& dates) {
    return Kept(qualifier, plist::Array{plist::Value(a), plist::Value(b)}, dates);
  }

  FilterBook book_;
};

TEST_F(DateConditionTest, DayRowsAndTheFormsOfTheValue) {
  // A Tuesday, late in the evening: the time of day is dropped.
  PinnedToday pin(CalendarDate(2026, 3, 31, 23, 59, 59));
  const DateList around = {20260314, 20260315, 20260316};
  EXPECT_EQ(Kept(kDateIsBefore, 20260315, around), DateList{20260314});
  EXPECT_EQ(Kept(kDateIsExactly, 20260315, around), DateList{20260315});
  EXPECT_EQ(Kept(kDateIsAfter, 20260315, around), DateList{20260316});
  EXPECT_EQ(Kept(kDateIsExactly, plist::Array{plist::Value(20260315)}, around), DateList{20260315});

  const DateList edges = {20260330, 20260331, 20260401};
  EXPECT_EQ(Kept(kDateIsToday, 0, edges), DateList{20260331});
  EXPECT_EQ(Kept(kDateIsYesterday, 0, edges), DateList{20260330});
  EXPECT_EQ(Kept(kDateIsToday, 0, edges, 0), (DateList{20260330, 20260401}));

  const DateList days = {20260328, 20260329, 20260331, 20260401, 20260402};
  EXPECT_EQ(Kept(kDateInLastDays, 3, days), (DateList{20260329, 20260331}));
  // A text answers its leading integer as a number does.
  EXPECT_EQ(Kept(kDateInLastDays, "3 days", days), (DateList{20260329, 20260331}));
  EXPECT_EQ(Kept(kDateInNextDays, plist::Array{plist::Value(2)}, days),
            (DateList{20260331, 20260401}));
  EXPECT_EQ(KeptFor(kDateBetweenDaysAgo, 10, 3, {20260320, 20260321, 20260328, 20260329}),
            (DateList{20260321, 20260328}));
  // Elements after the second are ignored.
  EXPECT_EQ(
      Kept(kDateBetweenDaysAgo, plist::Array{plist::Value(10), plist::Value(3), plist::Value(99)},
           {20260320, 20260321}),
      DateList{20260321});
  // An empty array reads A = 0: "in the last 0 days" is nothing.
  EXPECT_TRUE(Kept(kDateInLastDays, plist::Array{}, days).empty());
  EXPECT_EQ(Kept(kDateInLastDays, plist::Array{}, days, 0).size(), days.size());

  EXPECT_EQ(
      KeptFor(kDateBetweenDates, 20260301, 20260310, {20260228, 20260301, 20260310, 20260311}),
      (DateList{20260301, 20260310}));
  EXPECT_TRUE(KeptFor(kDateBetweenDates, 20260310, 20260301, {20260305}).empty());
  EXPECT_TRUE(Kept(99, 0, days).empty());
  EXPECT_EQ(Kept(99, 0, days, 0).size(), days.size());
}

TEST_F(DateConditionTest, WeekRowsOnTheFirstAndLastDayOfTheWeek) {
  // Weeks run Sunday 15 November to Saturday 21 November 2026.
  for (const CalendarDate& today : {CalendarDate(2026, 11, 15), CalendarDate(2026, 11, 21)}) {
    PinnedToday pin(today);
    SCOPED_TRACE(today.dateNumber());
    EXPECT_EQ(Kept(kDateDuringThisWeek, 0, {20261114, 20261115, 20261121, 20261122}),
              (DateList{20261115, 20261121}));
    EXPECT_EQ(Kept(kDateDuringLastWeek, 0, {20261107, 20261108, 20261114, 20261115}),
              (DateList{20261108, 20261114}));
    EXPECT_EQ(Kept(kDateInLastWeeks, 2, {20261107, 20261108, 20261121, 20261122}),
              (DateList{20261108, 20261121}));
    // "In the next 1 week" is the first day of this week alone; each further
    // week adds one day seven days on.
    EXPECT_EQ(Kept(kDateInNextWeeks, 1, {20261114, 20261115, 20261116, 20261121}),
              DateList{20261115});
    EXPECT_EQ(Kept(kDateInNextWeeks, 2, {20261115, 20261121, 20261122, 20261123}),
              (DateList{20261115, 20261121, 20261122}));
    // B counts from the start already moved back A weeks from Sunday.
    EXPECT_EQ(KeptFor(kDateBetweenWeeksAgo, 1, -1, {20261107, 20261108, 20261115, 20261116}),
              (DateList{20261108, 20261115}));
    EXPECT_TRUE(KeptFor(kDateBetweenWeeksAgo, 2, 1, {20261025, 20261101, 20261108}).empty());
  }
  {
    PinnedToday pin(CalendarDate(2026, 11, 15));
    EXPECT_EQ(Kept(kDateWeekToDate, 0, {20261114, 20261115, 20261116}), DateList{20261115});
  }
  {
    PinnedToday pin(CalendarDate(2026, 11, 21));
    EXPECT_EQ(Kept(kDateWeekToDate, 0, {20261114, 20261115, 20261121, 20261122}),
              (DateList{20261115, 20261121}));
  }
}

TEST_F(DateConditionTest, MonthRowsOnTheFirstAndLastDayOfTheMonth) {
  const DateList march = {20260228, 20260301, 20260310, 20260331, 20260401};
  for (const CalendarDate& today : {CalendarDate(2026, 3, 1), CalendarDate(2026, 3, 31)}) {
    PinnedToday pin(today);
    SCOPED_TRACE(today.dateNumber());
    EXPECT_EQ(Kept(kDateDuringThisMonth, 0, march), (DateList{20260301, 20260310, 20260331}));
    EXPECT_EQ(Kept(kDateDuringLastMonth, 0, {20260131, 20260201, 20260228, 20260301}),
              (DateList{20260201, 20260228}));
    // The whole current month, days after today included.
    EXPECT_EQ(Kept(kDateInLastMonths, 1, march), (DateList{20260301, 20260310, 20260331}));
    EXPECT_EQ(Kept(kDateInLastMonths, 2, {20260131, 20260201, 20260331, 20260401}),
              (DateList{20260201, 20260331}));
    EXPECT_EQ(Kept(kDateInNextMonths, 2, {20260228, 20260301, 20260430, 20260501}),
              (DateList{20260301, 20260430}));
  }
  {
    PinnedToday pin(CalendarDate(2026, 3, 1));
    EXPECT_EQ(Kept(kDateMonthToDate, 0, march), DateList{20260301});
  }
  {
    PinnedToday pin(CalendarDate(2026, 1, 31));
    // One step: 1 January + 2 months - 1 day is the last day of February.
    EXPECT_EQ(Kept(kDateInNextMonths, 2, {20260101, 20260228, 20260301}),
              (DateList{20260101, 20260228}));
  }
  {
    // Both ends fall on the first of a month: 1 February, not 28 February.
    PinnedToday pin(CalendarDate(2026, 3, 15));
    EXPECT_EQ(KeptFor(kDateBetweenMonthsAgo, 2, 1, {20251231, 20260101, 20260201, 20260202}),
              (DateList{20260101, 20260201}));
  }
  {
    // 31 March - 1 month is "31 February", which the calendar carries into
    // March before the day is moved to 1.
    PinnedToday pin(CalendarDate(2026, 3, 31));
    EXPECT_EQ(KeptFor(kDateBetweenMonthsAgo, 2, 1, {20251231, 20260101, 20260301, 20260302}),
              (DateList{20260101, 20260301}));
  }
}

TEST_F(DateConditionTest, QuarterRowsOnTheFirstAndLastDayOfTheQuarter) {
  {
    PinnedToday pin(CalendarDate(2026, 3, 31));
    EXPECT_EQ(Kept(kDateDuringThisQuarter, 0, {20251231, 20260101, 20260331, 20260401}),
              (DateList{20260101, 20260331}));
    EXPECT_EQ(Kept(kDateDuringLastQuarter, 0, {20250930, 20251001, 20251231, 20260101}),
              (DateList{20251001, 20251231}));
    EXPECT_EQ(Kept(kDateQuarterToDate, 0, {20260101, 20260331, 20260401}),
              (DateList{20260101, 20260331}));
    // The end is the quarter's end plus three months and a day, less a day:
    // 31 March + 3 months carries to 1 July.
    EXPECT_EQ(Kept(kDateInNextQuarters, 2, {20260101, 20260630, 20260701, 20260702}),
              (DateList{20260101, 20260630, 20260701}));
  }
  {
    PinnedToday pin(CalendarDate(2026, 4, 1));
    EXPECT_EQ(Kept(kDateDuringThisQuarter, 0, {20260331, 20260401, 20260630, 20260701}),
              (DateList{20260401, 20260630}));
    EXPECT_EQ(Kept(kDateDuringLastQuarter, 0, {20251231, 20260101, 20260331, 20260401}),
              (DateList{20260101, 20260331}));
    EXPECT_EQ(Kept(kDateQuarterToDate, 0, {20260331, 20260401, 20260402}), DateList{20260401});
    EXPECT_EQ(Kept(kDateInLastQuarters, 2, {20251231, 20260101, 20260630, 20260701}),
              (DateList{20260101, 20260630}));
    EXPECT_EQ(Kept(kDateInNextQuarters, 2, {20260331, 20260401, 20260930, 20261001}),
              (DateList{20260401, 20260930}));
    // "Between quarters ago" ends long before it starts: nothing, or all.
    const DateList any = {20250101, 20260101, 20260401, 20270101};
    EXPECT_TRUE(KeptFor(kDateBetweenQuartersAgo, 2, 1, any).empty());
    EXPECT_TRUE(KeptFor(kDateBetweenQuartersAgo, 1, 0, any).empty());
    EXPECT_EQ(Kept(kDateBetweenQuartersAgo, plist::Array{plist::Value(2), plist::Value(1)}, any, 0),
              any);
  }
}

TEST_F(DateConditionTest, YearRowsOnTheFirstAndLastDayOfTheYear) {
  const DateList years = {20241231, 20250101, 20251231, 20260101,
                          20261231, 20270101, 20271231, 20280101};
  for (const CalendarDate& today : {CalendarDate(2026, 1, 1), CalendarDate(2026, 12, 31)}) {
    PinnedToday pin(today);
    SCOPED_TRACE(today.dateNumber());
    EXPECT_EQ(Kept(kDateDuringThisYear, 0, years), (DateList{20260101, 20261231}));
    EXPECT_EQ(Kept(kDateDuringLastYear, 0, years), (DateList{20250101, 20251231}));
    EXPECT_EQ(Kept(kDateInLastYears, 2, years), (DateList{20250101, 20251231, 20260101, 20261231}));
    EXPECT_EQ(Kept(kDateInNextYears, 2, years), (DateList{20260101, 20261231, 20270101, 20271231}));
    // "Between years ago" starts far after it ends: nothing, or all.
    EXPECT_TRUE(KeptFor(kDateBetweenYearsAgo, 2, 1, years).empty());
    EXPECT_EQ(Kept(kDateBetweenYearsAgo, plist::Array{plist::Value(2), plist::Value(1)}, years, 0),
              years);
  }
  {
    PinnedToday pin(CalendarDate(2026, 1, 1));
    EXPECT_EQ(Kept(kDateYearToDate, 0, years), DateList{20260101});
  }
  {
    PinnedToday pin(CalendarDate(2026, 12, 31));
    EXPECT_EQ(Kept(kDateYearToDate, 0, years), (DateList{20260101, 20261231}));
  }
}

TEST_F(DateConditionTest, ExtremeCountsStayInRange) {
  // Counts at the ends of the 32-bit range must neither overflow nor match
  // entries they cannot reach.
  PinnedToday pin(CalendarDate(2026, 6, 15));
  const DateList dates = {19700101, 20260615, 99991231};
  for (int32_t qualifier :
       {kDateInLastDays, kDateInNextWeeks, kDateBetweenWeeksAgo, kDateInLastMonths,
        kDateBetweenQuartersAgo, kDateInNextYears, kDateBetweenYearsAgo}) {
    for (int a : {INT32_MIN, INT32_MAX}) {
      const DateList kept = KeptFor(qualifier, a, a, dates);
      const DateList dropped =
          Kept(qualifier, plist::Array{plist::Value(a), plist::Value(a)}, dates, 0);
      EXPECT_EQ(kept.size() + dropped.size(), dates.size()) << qualifier << " " << a;
    }
  }
  EXPECT_EQ(KeptFor(kDateInLastDays, INT32_MAX, 0, dates), (DateList{19700101, 20260615}));
  EXPECT_EQ(KeptFor(kDateInNextYears, INT32_MAX, 0, dates), (DateList{20260615, 99991231}));
}

}  // namespace
}  // namespace tarn
