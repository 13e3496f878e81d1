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

// Two counts, as the "between" qualifiers and the array forms take them.
plist::Value Pair(int a, int b) {
  return plist::Array{plist::Value(a), plist::Value(b)};
}

// A date condition, the entry dates it is given and those it keeps.
struct Row {
  int32_t qualifier;
  plist::Value data;
  DateList dates, kept;
  int32_t logic = 1;
};

class DateConditionTest : public ::testing::Test {
 protected:
  DateList Kept(int32_t qualifier, plist::Value data, const DateList& dates, int32_t logic = 1) {
    auto condition =
        TARNFilterCondition::initWithCategory(kFieldDate, qualifier, logic, std::move(data));
    return Dates(condition->filterEntries(book_.Dated(dates)));
  }
  void Expect(const std::vector<Row>& rows) {
    for (size_t i = 0; i < rows.size(); ++i) {
      const Row& r = rows[i];
      EXPECT_EQ(Kept(r.qualifier, r.data, r.dates, r.logic), r.kept)
          << "row " << i << ", qualifier " << r.qualifier;
    }
  }

  FilterBook book_;
};

TEST_F(DateConditionTest, DayRowsAndTheFormsOfTheValue) {
  // A Tuesday, late in the evening: the time of day is dropped. A text answers
  // its leading integer; elements after the second are ignored; an empty array
  // reads 0, and "in the last 0 days" is nothing.
  PinnedToday pin(CalendarDate(2026, 3, 31, 23, 59, 59));
  const DateList around = {20260314, 20260315, 20260316};
  const DateList edges = {20260330, 20260331, 20260401};
  const DateList days = {20260328, 20260329, 20260331, 20260401, 20260402};
  // clang-format off
  Expect({{kDateIsBefore, 20260315, around, {20260314}},
          {kDateIsExactly, 20260315, around, {20260315}},
          {kDateIsAfter, 20260315, around, {20260316}},
          {kDateIsExactly, plist::Array{plist::Value(20260315)}, around, {20260315}},
          {kDateIsToday, 0, edges, {20260331}},
          {kDateIsYesterday, 0, edges, {20260330}},
          {kDateIsToday, 0, edges, {20260330, 20260401}, 0},
          {kDateInLastDays, 3, days, {20260329, 20260331}},
          {kDateInLastDays, "3 days", days, {20260329, 20260331}},
          {kDateInNextDays, plist::Array{plist::Value(2)}, days, {20260331, 20260401}},
          {kDateBetweenDaysAgo, Pair(10, 3), {20260320, 20260321, 20260328, 20260329},
           {20260321, 20260328}},
          {kDateBetweenDaysAgo, plist::Array{10, 3, 99}, {20260320, 20260321}, {20260321}},
          {kDateInLastDays, plist::Array{}, days, {}},
          {kDateInLastDays, plist::Array{}, days, days, 0},
          {kDateBetweenDates, Pair(20260301, 20260310), {20260228, 20260301, 20260310, 20260311},
           {20260301, 20260310}},
          {kDateBetweenDates, Pair(20260310, 20260301), {20260305}, {}},
          {99, 0, days, {}},
          {99, 0, days, days, 0}});
  // clang-format on
}

TEST_F(DateConditionTest, WeekRowsOnTheFirstAndLastDayOfTheWeek) {
  // Weeks run Sunday 15 November to Saturday 21 November 2026. "In the next 1
  // week" is the first day of this week alone; each further week adds one day
  // seven days on. Between weeks ago: B counts from the start already moved
  // back A weeks from Sunday.
  for (const CalendarDate& today : {CalendarDate(2026, 11, 15), CalendarDate(2026, 11, 21)}) {
    PinnedToday pin(today);
    SCOPED_TRACE(today.dateNumber());
    // clang-format off
    Expect({{kDateDuringThisWeek, 0, {20261114, 20261115, 20261121, 20261122},
             {20261115, 20261121}},
            {kDateDuringLastWeek, 0, {20261107, 20261108, 20261114, 20261115},
             {20261108, 20261114}},
            {kDateInLastWeeks, 2, {20261107, 20261108, 20261121, 20261122}, {20261108, 20261121}},
            {kDateInNextWeeks, 1, {20261114, 20261115, 20261116, 20261121}, {20261115}},
            {kDateInNextWeeks, 2, {20261115, 20261121, 20261122, 20261123},
             {20261115, 20261121, 20261122}},
            {kDateBetweenWeeksAgo, Pair(1, -1), {20261107, 20261108, 20261115, 20261116},
             {20261108, 20261115}},
            {kDateBetweenWeeksAgo, Pair(2, 1), {20261025, 20261101, 20261108}, {}}});
    // clang-format on
  }
  PinnedToday sunday(CalendarDate(2026, 11, 15));
  EXPECT_EQ(Kept(kDateWeekToDate, 0, {20261114, 20261115, 20261116}), DateList{20261115});
  PinnedToday saturday(CalendarDate(2026, 11, 21));
  EXPECT_EQ(Kept(kDateWeekToDate, 0, {20261114, 20261115, 20261121, 20261122}),
            (DateList{20261115, 20261121}));
}

TEST_F(DateConditionTest, MonthRowsOnTheFirstAndLastDayOfTheMonth) {
  // "In the last months" takes the whole current month, days after today included.
  const DateList march = {20260228, 20260301, 20260310, 20260331, 20260401};
  for (const CalendarDate& today : {CalendarDate(2026, 3, 1), CalendarDate(2026, 3, 31)}) {
    PinnedToday pin(today);
    SCOPED_TRACE(today.dateNumber());
    // clang-format off
    Expect({{kDateDuringThisMonth, 0, march, {20260301, 20260310, 20260331}},
            {kDateDuringLastMonth, 0, {20260131, 20260201, 20260228, 20260301},
             {20260201, 20260228}},
            {kDateInLastMonths, 1, march, {20260301, 20260310, 20260331}},
            {kDateInLastMonths, 2, {20260131, 20260201, 20260331, 20260401}, {20260201, 20260331}},
            {kDateInNextMonths, 2, {20260228, 20260301, 20260430, 20260501},
             {20260301, 20260430}}});
    // clang-format on
  }
  PinnedToday first(CalendarDate(2026, 3, 1));
  EXPECT_EQ(Kept(kDateMonthToDate, 0, march), DateList{20260301});
  // One step: 1 January + 2 months - 1 day is the last day of February.
  PinnedToday endOfJanuary(CalendarDate(2026, 1, 31));
  EXPECT_EQ(Kept(kDateInNextMonths, 2, {20260101, 20260228, 20260301}),
            (DateList{20260101, 20260228}));
  // Both ends fall on the first of a month: 1 February, not 28 February.
  PinnedToday midMarch(CalendarDate(2026, 3, 15));
  EXPECT_EQ(Kept(kDateBetweenMonthsAgo, Pair(2, 1), {20251231, 20260101, 20260201, 20260202}),
            (DateList{20260101, 20260201}));
  // 31 March - 1 month is "31 February", which the calendar carries into March
  // before the day is moved to 1.
  PinnedToday endOfMarch(CalendarDate(2026, 3, 31));
  EXPECT_EQ(Kept(kDateBetweenMonthsAgo, Pair(2, 1), {20251231, 20260101, 20260301, 20260302}),
            (DateList{20260101, 20260301}));
}

TEST_F(DateConditionTest, QuarterRowsOnTheFirstAndLastDayOfTheQuarter) {
  // On 31 March the next quarters end at the quarter's end plus three months
  // and a day, less a day: 31 March + 3 months carries to 1 July. "Between
  // quarters ago" ends long before it starts: nothing, or all.
  const DateList any = {20250101, 20260101, 20260401, 20270101};
  {
    PinnedToday pin(CalendarDate(2026, 3, 31));
    // clang-format off
    Expect({{kDateDuringThisQuarter, 0, {20251231, 20260101, 20260331, 20260401},
             {20260101, 20260331}},
            {kDateDuringLastQuarter, 0, {20250930, 20251001, 20251231, 20260101},
             {20251001, 20251231}},
            {kDateQuarterToDate, 0, {20260101, 20260331, 20260401}, {20260101, 20260331}},
            {kDateInNextQuarters, 2, {20260101, 20260630, 20260701, 20260702},
             {20260101, 20260630, 20260701}}});
    // clang-format on
  }
  PinnedToday pin(CalendarDate(2026, 4, 1));
  // clang-format off
  Expect({{kDateDuringThisQuarter, 0, {20260331, 20260401, 20260630, 20260701},
           {20260401, 20260630}},
          {kDateDuringLastQuarter, 0, {20251231, 20260101, 20260331, 20260401},
           {20260101, 20260331}},
          {kDateQuarterToDate, 0, {20260331, 20260401, 20260402}, {20260401}},
          {kDateInLastQuarters, 2, {20251231, 20260101, 20260630, 20260701}, {20260101, 20260630}},
          {kDateInNextQuarters, 2, {20260331, 20260401, 20260930, 20261001}, {20260401, 20260930}},
          {kDateBetweenQuartersAgo, Pair(2, 1), any, {}},
          {kDateBetweenQuartersAgo, Pair(1, 0), any, {}},
          {kDateBetweenQuartersAgo, Pair(2, 1), any, any, 0}});
  // clang-format on
}

TEST_F(DateConditionTest, YearRowsOnTheFirstAndLastDayOfTheYear) {
  // "Between years ago" starts far after it ends: nothing, or all.
  const DateList years = {20241231, 20250101, 20251231, 20260101,
                          20261231, 20270101, 20271231, 20280101};
  for (const CalendarDate& today : {CalendarDate(2026, 1, 1), CalendarDate(2026, 12, 31)}) {
    PinnedToday pin(today);
    SCOPED_TRACE(today.dateNumber());
    // clang-format off
    Expect({{kDateDuringThisYear, 0, years, {20260101, 20261231}},
            {kDateDuringLastYear, 0, years, {20250101, 20251231}},
            {kDateInLastYears, 2, years, {20250101, 20251231, 20260101, 20261231}},
            {kDateInNextYears, 2, years, {20260101, 20261231, 20270101, 20271231}},
            {kDateBetweenYearsAgo, Pair(2, 1), years, {}},
            {kDateBetweenYearsAgo, Pair(2, 1), years, years, 0},
            {kDateYearToDate, 0, years,
             today.dayOfYear() == 1 ? DateList{20260101} : DateList{20260101, 20261231}}});
    // clang-format on
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
      const DateList kept = Kept(qualifier, Pair(a, a), dates);
      const DateList dropped = Kept(qualifier, Pair(a, a), dates, 0);
      EXPECT_EQ(kept.size() + dropped.size(), dates.size()) << qualifier << " " << a;
    }
  }
  EXPECT_EQ(Kept(kDateInLastDays, Pair(INT32_MAX, 0), dates), (DateList{19700101, 20260615}));
  EXPECT_EQ(Kept(kDateInNextYears, Pair(INT32_MAX, 0), dates), (DateList{20260615, 99991231}));
}

}  // namespace
}  // namespace tarn
