#include "tarn/model/schedule_recurrence.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tarn {
namespace {

using Dates = std::vector<DateNumber>;
using Rule = ScheduleRecurrence;

// The first occurrences that survive the same-day test, walking the steps one by one.
Dates First(const Rule& rule, std::size_t count) {
  Dates dates;
  for (std::int64_t n = 0; dates.size() < count && n < 1000; ++n) {
    if (auto date = rule.OccurrenceAt(n)) dates.push_back(*date);
  }
  return dates;
}

Dates InRange(const Rule& rule, DateNumber from, DateNumber to) {
  return rule.UncommittedDatesInRange(from, to, CommittedDates());
}

TEST(CommittedDates, StaysSortedUniqueAndFindsEveryElement) {
  for (int size = 1; size <= 9; ++size) {
    CommittedDates committed;
    for (int i = size - 1; i >= 0; --i) committed.AddCommittedDate(20240101 + 2 * i);
    committed.AddCommittedDate(20240101);
    ASSERT_EQ(committed.size(), static_cast<std::size_t>(size));
    for (int i = 0; i < size; ++i) {
      EXPECT_TRUE(committed.DateIsCommitted(20240101 + 2 * i)) << size << " " << i;
      EXPECT_FALSE(committed.DateIsCommitted(20240102 + 2 * i)) << size << " " << i;
    }
    EXPECT_FALSE(committed.DateIsCommitted(20231231));
  }
  // A stored list out of order is put in order so that look-ups still work.
  CommittedDates loaded(Dates{20240301, 20240101, 20240201, 20231201});
  EXPECT_TRUE(loaded.DateIsCommitted(20240201));
  loaded.AddCommittedDate(20240115);
  EXPECT_EQ(loaded.dates(), (Dates{20231201, 20240101, 20240115, 20240201, 20240301}));
}

TEST(ScheduleRecurrence, WeekendRuleMovesSaturdayAndSundayBackToFriday) {
  const DateNumber rows[][3] = {{20240914, 1, 20240913}, {20240915, 1, 20240913},
                                {20240913, 1, 20240913}, {20240916, 1, 20240916},
                                {20240915, 0, 20240915}, {20240601, 1, 20240531},
                                {20230101, 1, 20221230}};
  for (const auto& row : rows) {
    EXPECT_EQ(Rule::AdjustDateForUsePrecedingFriday(row[0], row[1]), row[2]) << row[0];
    EXPECT_EQ(Rule(kRepeatMonthly, 1, 20240815, row[1]).AdjustDateForUsePrecedingFriday(row[0]),
              row[2]);
  }
}

TEST(ScheduleRecurrence, FirstOccurrencesOfEveryRule) {
  // Day and week rules keep weekend dates (6 January 2024 is a Saturday); every N days is
  // adjusted (21 January 2024 is a Sunday).
  const Rule daily(kRepeatDaily, 99, 20240104, true);
  const Rule everyTenDays(kRepeatEveryNDays, 10, 20240101, true);
  const Rule everyThreeWeeks(kRepeatEveryNWeeks, 3, 20240106, true);
  EXPECT_EQ(First(daily, 4), (Dates{20240104, 20240105, 20240106, 20240107}));
  EXPECT_EQ(First(Rule(kRepeatWeekly, 5, 20240106, true), 2), (Dates{20240106, 20240113}));
  EXPECT_EQ(First(Rule(kRepeatEveryTwoWeeks, 5, 20231225, true), 2), (Dates{20231225, 20240108}));
  EXPECT_EQ(First(everyTenDays, 4), (Dates{20240101, 20240111, 20240119, 20240131}));
  EXPECT_EQ(First(everyThreeWeeks, 3), (Dates{20240106, 20240127, 20240217}));
  // Month rules skip months without the day: 30 February, 30 and 31 September.
  EXPECT_EQ(First(Rule(kRepeatQuarterly, 1, 20231130, false), 2), (Dates{20231130, 20240530}));
  EXPECT_EQ(First(Rule(kRepeatEveryNMonths, 2, 20240731, false), 2), (Dates{20240731, 20250131}));
  EXPECT_EQ(First(Rule(kRepeatEveryNQuarters, 2, 20240831, false), 2), (Dates{20240831, 20250831}));
  // 29 February + 1 year carries to 1 March; yearly rules have no same-day test.
  EXPECT_EQ(First(Rule(kRepeatYearly, 1, 20240229, false), 6),
            (Dates{20240229, 20250301, 20260301, 20270301, 20280229, 20290301}));
  EXPECT_EQ(First(Rule(kRepeatYearly, 1, 20240229, true), 2), (Dates{20240229, 20250228}));
  EXPECT_EQ(First(Rule(kRepeatEveryNYears, 2, 20240229, false), 3),
            (Dates{20240229, 20260301, 20280229}));
  EXPECT_EQ(First(Rule(kRepeatLastDayOfMonth, 1, 20240115, false), 4),
            (Dates{20240131, 20240229, 20240331, 20240430}));
  // From the end of March every quarter end follows; a date inside a quarter goes to its end.
  EXPECT_EQ(First(Rule(kRepeatEndOfQuarter, 1, 20240331, false), 5),
            (Dates{20240331, 20240630, 20240930, 20241231, 20250331}));
  EXPECT_EQ(First(Rule(kRepeatEndOfQuarter, 1, 20241105, false), 1), (Dates{20241231}));
}

TEST(ScheduleRecurrence, RangesSkipMonthsWithoutTheDayMoveWeekendsAndLeaveOutCommitted) {
  // 31 January + 1 month carries to 2 March, which is not the 31st and is skipped.
  EXPECT_EQ(InRange(Rule(kRepeatMonthly, 7, 20240131, false), 20240101, 20241231),
            (Dates{20240131, 20240331, 20240531, 20240731, 20240831, 20241031, 20241231}));
  const Rule yearly(kRepeatYearly, 1, 20240229, false);
  EXPECT_EQ(InRange(yearly, 20250301, 20250301), (Dates{20250301}));
  EXPECT_EQ(InRange(yearly, 20250302, 20260228), Dates{});
  // 31 March 2024 is a Sunday, 30 June a Sunday and 31 August a Saturday.
  EXPECT_EQ(InRange(Rule(kRepeatLastDayOfMonth, 1, 20240301, true), 20240301, 20240930),
            (Dates{20240329, 20240430, 20240531, 20240628, 20240731, 20240830, 20240930}));
  EXPECT_EQ(InRange(Rule(kRepeatEndOfQuarter, 1, 20240215, true), 20240101, 20241231),
            (Dates{20240329, 20240628, 20240930, 20241231}));
  // A Sunday step just past the range's end is not in it, though its Friday would be.
  const Rule onFridays(kRepeatMonthly, 1, 20240815, true);
  EXPECT_EQ(InRange(onFridays, 20240901, 20240914), Dates{});
  EXPECT_EQ(InRange(onFridays, 20240901, 20240915), (Dates{20240913}));

  // Begun thirty years ago; bounds that are no real dates compare as date numbers do.
  const Rule daily(kRepeatDaily, 1, 19940101, false);
  EXPECT_EQ(InRange(daily, 20240231, 20240302), (Dates{20240301, 20240302}));
  EXPECT_EQ(InRange(daily, 20240229, 20240299), (Dates{20240229}));
  EXPECT_EQ(InRange(daily, 20231232, 20240101), (Dates{20240101}));
  // Committed dates are left out and the limit counts what is returned.
  const CommittedDates committed(Dates{20240302, 20240304});
  EXPECT_EQ(daily.UncommittedDatesInRange(20240301, 20240306, committed, 3),
            (Dates{20240301, 20240303, 20240305}));
}

TEST(ScheduleRecurrence, UnknownRulesAndDegenerateIntervals) {
  for (std::int32_t code : {0, 7, 8, 9, 12, 15, 19, 25, 100, -1}) {
    const Rule rule(code, 1, 20240101, true);
    EXPECT_FALSE(rule.HasOccurrences() || RepeatRuleIsKnown(code)) << code;
    EXPECT_EQ(rule.NextEntryDate(CommittedDates()), -1) << code;
    EXPECT_EQ(InRange(rule, 19000101, 30000101), Dates{}) << code;
    EXPECT_FALSE(rule.OccurrenceAt(0).has_value()) << code;
  }
  for (std::int32_t code : {1, 2, 3, 4, 5, 6, 10, 11, 20, 21, 22, 23, 24}) {
    EXPECT_TRUE(RepeatRuleIsKnown(code)) << code;
  }
  // An every-N rule with N of 0 or less has the first occurrence only; so has one whose second
  // step lies beyond the distant future.
  for (std::int32_t code : {20, 21, 22, 23, 24}) {
    for (std::int32_t interval : {0, -3, 2000000000}) {
      const Rule rule(code, interval, 20240110, false);
      EXPECT_EQ(InRange(rule, 20000101, 99991231), (Dates{20240110})) << code << " " << interval;
      EXPECT_EQ(rule.NextEntryDate(CommittedDates()), 20240110) << code;
      EXPECT_EQ(rule.NextEntryDate(CommittedDates(Dates{20240110})), -1) << code;
    }
    EXPECT_EQ(Rule(code, 2000000000, 20240110, false).CandidateDate(1), -1);
  }
}

TEST(ScheduleRecurrence, NextEntryDateSkipsCommittedOccurrences) {
  const Rule daily(kRepeatDaily, 1, 20240101, false);
  EXPECT_EQ(daily.NextEntryDate(CommittedDates(Dates{20240101, 20240102, 20240104})), 20240103);
  // The committed form of a moved occurrence is its Friday, not the Sunday.
  const Rule onFridays(kRepeatMonthly, 1, 20240815, true);
  EXPECT_EQ(onFridays.NextEntryDate(CommittedDates(Dates{20240815, 20240915})), 20240913);
  // The search gives up beyond the distant future.
  EXPECT_EQ(Rule(kRepeatDaily, 1, 40010101, false).NextEntryDate(CommittedDates()), -1);
  const Rule lastDays(kRepeatDaily, 1, 40001230, false);
  EXPECT_EQ(lastDays.NextEntryDate(CommittedDates(Dates{40001230, 40001231})), -1);
  EXPECT_EQ(InRange(lastDays, 20000101, 50000101), (Dates{40001230, 40001231}));
}

// The range query jumps to the first step inside the range; a walk from the first occurrence
// must give the same dates.
TEST(ScheduleRecurrence, RangeQueryMatchesAWalkFromTheFirstOccurrence) {
  std::mt19937 random(20240101);
  std::uniform_int_distribution<int> dayOffset(-400, 4000);
  std::uniform_int_distribution<int> length(0, 800);
  std::size_t total = 0;
  for (std::int32_t code : {1, 2, 3, 4, 5, 6, 10, 11, 20, 21, 22, 23, 24}) {
    for (DateNumber first : {20000131, 20000229, 20010330, 20121231}) {
      for (int trial = 0; trial < 8; ++trial) {
        const Rule rule(code, trial % 2 ? 3 : 1, first, trial % 4 >= 2);
        SCOPED_TRACE(testing::Message() << code << " " << first << " " << trial);
        const CalendarDate from =
            CalendarDate::dateWithDateNumber(first).dateByAddingYears(0, 0, dayOffset(random));
        const DateNumber to = from.dateByAddingYears(0, 0, length(random)).dateNumber();
        Dates walked;
        for (std::int64_t n = 0; rule.CandidateDate(n) <= to; ++n) {
          if (rule.CandidateDate(n) < from.dateNumber()) continue;
          if (auto date = rule.OccurrenceAt(n)) walked.push_back(*date);
        }
        total += walked.size();
        EXPECT_EQ(InRange(rule, from.dateNumber(), to), walked);

        // Commit every third walked date and some at random (mostly no occurrences).
        CommittedDates committed;
        for (std::size_t i = 0; i < walked.size(); i += 3) committed.AddCommittedDate(walked[i]);
        for (int i = 0; i < 20; ++i) {
          committed.AddCommittedDate(from.dateByAddingYears(0, 0, dayOffset(random)).dateNumber());
        }
        Dates expected;
        for (DateNumber date : walked) {
          if (!committed.DateIsCommitted(date)) expected.push_back(date);
        }
        EXPECT_EQ(rule.UncommittedDatesInRange(from.dateNumber(), to, committed), expected);
        DateNumber next = -1;
        for (std::int64_t n = 0; next < 0 && n < 100000; ++n) {
          const auto date = rule.OccurrenceAt(n);
          if (date && !committed.DateIsCommitted(*date)) next = *date;
        }
        EXPECT_EQ(rule.NextEntryDate(committed), next);
      }
    }
  }
  EXPECT_GT(total, 2000u);  // the ranges do hold occurrences
}

}  // namespace
}  // namespace tarn
