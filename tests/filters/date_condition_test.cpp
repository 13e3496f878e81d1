#include <gtest/gtest.h>

#include <vector>

#include "filters/filter_book.h"
#include "tarn/filters/filter_condition.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {
namespace {

using DateList = std::vector<DateNumber>;

class PinnedToday {
 public:
  explicit PinnedToday(const CalendarDate& today) { CalendarDate::overrideNow(today); }
  ~PinnedToday() { CalendarDate::overrideNow(std::nullopt); }
};

plist::Value Pair(int a, int b) {
  return plist::Array{plist::Value(a), plist::Value(b)};
}

// A date condition and the first and last date it matches, 0 for none: of the
// test's dates, those in that span are kept (logic 1) or those outside it (logic 0).
struct Row {
  int32_t qualifier;
  plist::Value data;
  DateNumber first, last;
  int32_t logic = 1;
};

class DateConditionTest : public ::testing::Test {
 protected:
  DateList Kept(int32_t qualifier, plist::Value data, const DateList& dates, int32_t logic = 1) {
    TARNEntryList entries;
    for (DateNumber date : dates) entries.push_back(book_.Entry({.date = date}));
    auto condition = TARNFilterCondition::initWithCategory(kFieldDate, qualifier, logic, data);
    DateList kept;
    for (const auto& entry : condition->filterEntries(entries)) kept.push_back(entry->GetDate());
    return kept;
  }
  void Expect(const DateList& dates, const std::vector<Row>& rows) {
    for (size_t i = 0; i < rows.size(); ++i) {
      const Row& r = rows[i];
      DateList expected;
      for (DateNumber date : dates) {
        if ((r.first <= date && date <= r.last) == (r.logic != 0)) expected.push_back(date);
      }
      EXPECT_EQ(Kept(r.qualifier, r.data, dates, r.logic), expected)
          << "row " << i << ", qualifier " << r.qualifier;
    }
  }

  testing::FilterBook book_;
};

TEST_F(DateConditionTest, DayRowsAndTheFormsOfTheValue) {
  // Late on a Tuesday: the time of day is dropped. A text reads its leading
  // integer, elements after the second are ignored and an empty array reads 0.
  PinnedToday pin(CalendarDate(2026, 3, 31, 23, 59, 59));
  const DateList dates = {20260228, 20260301, 20260310, 20260311, 20260314,
                          20260315, 20260316, 20260320, 20260321, 20260328,
                          20260329, 20260330, 20260331, 20260401, 20260402};
  // clang-format off
  Expect(dates, {{kDateIsBefore, 20260301, 20260228, 20260228},
                 {kDateIsExactly, 20260315, 20260315, 20260315},
                 {kDateIsAfter, 20260401, 20260402, 20260402},
                 {kDateIsExactly, plist::Array{plist::Value(20260315)}, 20260315, 20260315},
                 {kDateIsToday, 0, 20260331, 20260331}, {kDateIsYesterday, 0, 20260330, 20260330},
                 {kDateInLastDays, 3, 20260329, 20260331},
                 {kDateInLastDays, "3 days", 20260329, 20260331},
                 {kDateInNextDays, plist::Array{plist::Value(2)}, 20260331, 20260401},
                 {kDateBetweenDaysAgo, Pair(10, 3), 20260321, 20260328},
                 {kDateBetweenDaysAgo, plist::Array{10, 3, 99}, 20260321, 20260328},
                 {kDateInLastDays, plist::Array{}, 0, 0},
                 {kDateInLastDays, plist::Array{}, 0, 0, 0},
                 {kDateBetweenDates, Pair(20260301, 20260310), 20260301, 20260310},
                 {kDateBetweenDates, Pair(20260310, 20260301), 0, 0},
                 {99, 0, 0, 0}, {99, 0, 0, 0, 0}});
  // clang-format on
}

TEST_F(DateConditionTest, WeekRowsOnTheFirstAndLastDayOfTheWeek) {
  // Sunday 15 to Saturday 21 November 2026. "In the next weeks" ends on the
  // first day of its last week; "between weeks ago" counts B from the start
  // already moved back A weeks.
  const DateList dates = {20261025, 20261101, 20261107, 20261108, 20261114,
                          20261115, 20261116, 20261121, 20261122, 20261123};
  for (const CalendarDate& today : {CalendarDate(2026, 11, 15), CalendarDate(2026, 11, 21)}) {
    PinnedToday pin(today);
    SCOPED_TRACE(today.dateNumber());
    Expect(dates, {{kDateDuringThisWeek, 0, 20261115, 20261121},
                   {kDateDuringLastWeek, 0, 20261108, 20261114},
                   {kDateInLastWeeks, 2, 20261108, 20261121},
                   {kDateInNextWeeks, 1, 20261115, 20261115},
                   {kDateInNextWeeks, 2, 20261115, 20261122},
                   {kDateBetweenWeeksAgo, Pair(1, -1), 20261108, 20261115},
                   {kDateBetweenWeeksAgo, Pair(2, 1), 0, 0},
                   {kDateWeekToDate, 0, 20261115, today.dateNumber()}});
  }
}

TEST_F(DateConditionTest, MonthRowsOnTheFirstAndLastDayOfTheMonth) {
  // "In the last months" takes the whole current month, days after today included.
  const DateList dates = {20251231, 20260101, 20260131, 20260201, 20260228, 20260301,
                          20260302, 20260310, 20260331, 20260401, 20260430, 20260501};
  for (const CalendarDate& today : {CalendarDate(2026, 3, 1), CalendarDate(2026, 3, 31)}) {
    PinnedToday pin(today);
    SCOPED_TRACE(today.dateNumber());
    Expect(dates, {{kDateDuringThisMonth, 0, 20260301, 20260331},
                   {kDateDuringLastMonth, 0, 20260201, 20260228},
                   {kDateInLastMonths, 1, 20260301, 20260331},
                   {kDateInLastMonths, 2, 20260201, 20260331},
                   {kDateInNextMonths, 2, 20260301, 20260430},
                   {kDateMonthToDate, 0, 20260301, today.dateNumber()}});
  }
  // 1 January + 2 months - 1 day, in one step, is the last day of February.
  PinnedToday endOfJanuary(CalendarDate(2026, 1, 31));
  Expect(dates, {{kDateInNextMonths, 2, 20260101, 20260228}});
  // "Between months ago" puts both ends on the first of a month; on 31 March
  // "31 February" carries into March first.
  PinnedToday midMarch(CalendarDate(2026, 3, 15));
  Expect(dates, {{kDateBetweenMonthsAgo, Pair(2, 1), 20260101, 20260201}});
  PinnedToday endOfMarch(CalendarDate(2026, 3, 31));
  Expect(dates, {{kDateBetweenMonthsAgo, Pair(2, 1), 20260101, 20260301}});
}

TEST_F(DateConditionTest, QuarterRowsOnTheFirstAndLastDayOfTheQuarter) {
  // On 31 March the next quarters end at the quarter's end plus three months
  // and a day, less a day: 31 March + 3 months carries to 1 July. "Between
  // quarters ago" ends long before it starts: nothing, or all.
  const DateList dates = {20250930, 20251001, 20251231, 20260101, 20260331, 20260401,
                          20260402, 20260630, 20260701, 20260702, 20260930, 20261001};
  {
    PinnedToday pin(CalendarDate(2026, 3, 31));
    Expect(dates, {{kDateDuringThisQuarter, 0, 20260101, 20260331},
                   {kDateDuringLastQuarter, 0, 20251001, 20251231},
                   {kDateQuarterToDate, 0, 20260101, 20260331},
                   {kDateInNextQuarters, 2, 20260101, 20260701}});
  }
  PinnedToday pin(CalendarDate(2026, 4, 1));
  Expect(dates, {{kDateDuringThisQuarter, 0, 20260401, 20260630},
                 {kDateDuringLastQuarter, 0, 20260101, 20260331},
                 {kDateQuarterToDate, 0, 20260401, 20260401},
                 {kDateInLastQuarters, 2, 20260101, 20260630},
                 {kDateInNextQuarters, 2, 20260401, 20260930},
                 {kDateBetweenQuartersAgo, Pair(2, 1), 0, 0},
                 {kDateBetweenQuartersAgo, Pair(1, 0), 0, 0},
                 {kDateBetweenQuartersAgo, Pair(2, 1), 0, 0, 0}});
}

TEST_F(DateConditionTest, YearRowsOnTheFirstAndLastDayOfTheYear) {
  // "Between years ago" starts far after it ends: nothing, or all.
  const DateList dates = {20241231, 20250101, 20251231, 20260101,
                          20261231, 20270101, 20271231, 20280101};
  for (const CalendarDate& today : {CalendarDate(2026, 1, 1), CalendarDate(2026, 12, 31)}) {
    PinnedToday pin(today);
    SCOPED_TRACE(today.dateNumber());
    Expect(dates, {{kDateDuringThisYear, 0, 20260101, 20261231},
                   {kDateDuringLastYear, 0, 20250101, 20251231},
                   {kDateInLastYears, 2, 20250101, 20261231},
                   {kDateInNextYears, 2, 20260101, 20271231},
                   {kDateBetweenYearsAgo, Pair(2, 1), 0, 0},
                   {kDateBetweenYearsAgo, Pair(2, 1), 0, 0, 0},
                   {kDateYearToDate, 0, 20260101, today.dateNumber()}});
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
      const size_t kept = Kept(qualifier, Pair(a, a), dates).size();
      EXPECT_EQ(kept + Kept(qualifier, Pair(a, a), dates, 0).size(), dates.size()) << qualifier;
    }
  }
  Expect(dates, {{kDateInLastDays, Pair(INT32_MAX, 0), 19700101, 20260615},
                 {kDateInNextYears, Pair(INT32_MAX, 0), 20260615, 99991231}});
}

}  // namespace
}  // namespace tarn
