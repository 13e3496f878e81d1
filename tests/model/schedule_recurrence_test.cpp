#include "tarn/model/schedule_recurrence.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tarn {
namespace {

using Dates = std::vector<DateNumber>;

// The first `count` occurrences that survive the same-day test, walking the
// steps one by one.
Dates FirstOccurrences(const ScheduleRecurrence& rule, int count) {
  Dates dates;
  for (std::int64_t n = 0; static_cast<int>(dates.size()) < count && n < 1000; ++n) {
    if (auto date = rule.OccurrenceAt(n)) dates.push_back(*date);
  }
  return dates;
}

Dates InRange(const ScheduleRecurrence& rule, DateNumber from, DateNumber to) {
  return rule.UncommittedDatesInRange(from, to, CommittedDates());
}

TEST(CommittedDates, LookUpFindsEveryElementAndNothingElse) {
  // Sizes around the point where halving hands over to the linear scan.
  for (int size = 0; size <= 9; ++size) {
    CommittedDates committed;
    for (int i = 0; i < size; ++i) committed.AddCommittedDate(20240101 + 2 * i);
    ASSERT_EQ(committed.size(), static_cast<std::size_t>(size));
    for (int i = 0; i < size; ++i) {
      EXPECT_TRUE(committed.DateIsCommitted(20240101 + 2 * i)) << size << " " << i;
      EXPECT_FALSE(committed.DateIsCommitted(20240102 + 2 * i)) << size << " " << i;
    }
    EXPECT_FALSE(committed.DateIsCommitted(20231231));
    EXPECT_FALSE(committed.DateIsCommitted(0));
  }
}

TEST(CommittedDates, StaysSortedAndUnique) {
  CommittedDates committed;
  for (DateNumber date : {20240510, 20240105, 20240510, 20240301, 20240105, 20241231, 20240101}) {
    committed.AddCommittedDate(date);
  }
  EXPECT_EQ(committed.dates(), (Dates{20240101, 20240105, 20240301, 20240510, 20241231}));

  // A stored list out of order is put in order so that look-ups still work.
  CommittedDates loaded(Dates{20240301, 20240101, 20240201, 20231201});
  EXPECT_EQ(loaded.dates(), (Dates{20231201, 20240101, 20240201, 20240301}));
  EXPECT_TRUE(loaded.DateIsCommitted(20240201));
  loaded.AddCommittedDate(20240115);
  EXPECT_EQ(loaded.dates(), (Dates{20231201, 20240101, 20240115, 20240201, 20240301}));
}

TEST(ScheduleRecurrence, WeekendRuleMovesSaturdayAndSundayBackToFriday) {
  EXPECT_EQ(ScheduleRecurrence::AdjustDateForUsePrecedingFriday(20240914, true), 20240913);
  EXPECT_EQ(ScheduleRecurrence::AdjustDateForUsePrecedingFriday(20240915, true), 20240913);
  EXPECT_EQ(ScheduleRecurrence::AdjustDateForUsePrecedingFriday(20240913, true), 20240913);
  EXPECT_EQ(ScheduleRecurrence::AdjustDateForUsePrecedingFriday(20240916, true), 20240916);
  EXPECT_EQ(ScheduleRecurrence::AdjustDateForUsePrecedingFriday(20240915, false), 20240915);
  // Across a month and a year.
  EXPECT_EQ(ScheduleRecurrence::AdjustDateForUsePrecedingFriday(20240601, true), 20240531);
  EXPECT_EQ(ScheduleRecurrence::AdjustDateForUsePrecedingFriday(20230101, true), 20221230);

  const ScheduleRecurrence withFlag(kRepeatMonthly, 1, 20240815, true);
  EXPECT_EQ(withFlag.AdjustDateForUsePrecedingFriday(20240915), 20240913);
  const ScheduleRecurrence withoutFlag(kRepeatMonthly, 1, 20240815, false);
  EXPECT_EQ(withoutFlag.AdjustDateForUsePrecedingFriday(20240915), 20240915);
}

TEST(ScheduleRecurrence, DayAndWeekRules) {
  // The weekend rule is set but these rules keep weekend dates (6 January
  // 2024 is a Saturday).
  const ScheduleRecurrence daily(kRepeatDaily, 99, 20240104, true);
  EXPECT_FALSE(daily.IsAdjusted());
  EXPECT_EQ(FirstOccurrences(daily, 5), (Dates{20240104, 20240105, 20240106, 20240107, 20240108}));
  EXPECT_EQ(FirstOccurrences(ScheduleRecurrence(kRepeatDaily, 1, 20240227, false), 4),
            (Dates{20240227, 20240228, 20240229, 20240301}));

  const ScheduleRecurrence weekly(kRepeatWeekly, 5, 20240106, true);
  EXPECT_EQ(FirstOccurrences(weekly, 3), (Dates{20240106, 20240113, 20240120}));

  const ScheduleRecurrence fortnightly(kRepeatEveryTwoWeeks, 5, 20231225, true);
  EXPECT_EQ(FirstOccurrences(fortnightly, 4), (Dates{20231225, 20240108, 20240122, 20240205}));

  // Every N days is adjusted: 21 January 2024 is a Sunday.
  const ScheduleRecurrence everyTenDays(kRepeatEveryNDays, 10, 20240101, true);
  EXPECT_TRUE(everyTenDays.IsAdjusted());
  EXPECT_EQ(FirstOccurrences(everyTenDays, 4), (Dates{20240101, 20240111, 20240119, 20240131}));
  EXPECT_EQ(everyTenDays.CandidateDate(2), 20240121);

  // Every N weeks is not adjusted, as the weekly rules are not.
  const ScheduleRecurrence everyThreeWeeks(kRepeatEveryNWeeks, 3, 20240106, true);
  EXPECT_FALSE(everyThreeWeeks.IsAdjusted());
  EXPECT_EQ(FirstOccurrences(everyThreeWeeks, 3), (Dates{20240106, 20240127, 20240217}));
}

TEST(ScheduleRecurrence, MonthRulesSkipMonthsWithoutTheDay) {
  // 2024 is a leap year: 31 January + 1 month carries to 2 March, which is
  // not the 31st and is skipped, as are April, June, September and November.
  const ScheduleRecurrence monthly(kRepeatMonthly, 7, 20240131, false);
  EXPECT_EQ(monthly.CandidateDate(1), 20240302);
  EXPECT_FALSE(monthly.OccurrenceAt(1).has_value());
  EXPECT_EQ(InRange(monthly, 20240101, 20241231),
            (Dates{20240131, 20240331, 20240531, 20240731, 20240831, 20241031, 20241231}));

  // The 29th is missing only from February of common years.
  EXPECT_EQ(InRange(ScheduleRecurrence(kRepeatMonthly, 1, 20240129, false), 20240101, 20250331),
            (Dates{20240129, 20240229, 20240329, 20240429, 20240529, 20240629, 20240729, 20240829,
                   20240929, 20241029, 20241129, 20241229, 20250129, 20250329}));

  // Quarterly from 30 November: 30 February is skipped.
  EXPECT_EQ(FirstOccurrences(ScheduleRecurrence(kRepeatQuarterly, 1, 20231130, false), 3),
            (Dates{20231130, 20240530, 20240830}));

  // Every two months from the 31st: September and November have no 31st.
  EXPECT_EQ(FirstOccurrences(ScheduleRecurrence(kRepeatEveryNMonths, 2, 20240131, false), 5),
            (Dates{20240131, 20240331, 20240531, 20240731, 20250131}));

  // Every two quarters from 31 August: 31 February is skipped.
  EXPECT_EQ(FirstOccurrences(ScheduleRecurrence(kRepeatEveryNQuarters, 2, 20240831, false), 3),
            (Dates{20240831, 20250831, 20260831}));
  EXPECT_EQ(FirstOccurrences(ScheduleRecurrence(kRepeatEveryNQuarters, 2, 20240115, false), 3),
            (Dates{20240115, 20240715, 20250115}));

  // A Sunday the 15th moves to Friday the 13th (15 September and 15 December
  // 2024 are Sundays, 15 June a Saturday).
  const ScheduleRecurrence onFridays(kRepeatMonthly, 1, 20240515, true);
  EXPECT_EQ(
      InRange(onFridays, 20240501, 20241231),
      (Dates{20240515, 20240614, 20240715, 20240815, 20240913, 20241015, 20241115, 20241213}));
}

TEST(ScheduleRecurrence, YearRulesCarryTheLeapDay) {
  // 29 February + 1 year is 1 March (the calendar carries the missing day);
  // yearly rules have no same-day test, so that date counts.
  const ScheduleRecurrence yearly(kRepeatYearly, 1, 20240229, false);
  EXPECT_EQ(FirstOccurrences(yearly, 6),
            (Dates{20240229, 20250301, 20260301, 20270301, 20280229, 20290301}));
  // 1 March 2025 is a Saturday.
  EXPECT_EQ(FirstOccurrences(ScheduleRecurrence(kRepeatYearly, 1, 20240229, true), 2),
            (Dates{20240229, 20250228}));
  // Every two years from a leap day: 2026 carries, 2028 has the day.
  EXPECT_EQ(FirstOccurrences(ScheduleRecurrence(kRepeatEveryNYears, 2, 20240229, false), 3),
            (Dates{20240229, 20260301, 20280229}));
  // A range that starts on the carried date still finds it.
  EXPECT_EQ(InRange(yearly, 20250301, 20250301), (Dates{20250301}));
  EXPECT_EQ(InRange(yearly, 20250302, 20260228), Dates{});
}

TEST(ScheduleRecurrence, MonthEndAndQuarterEndRules) {
  const ScheduleRecurrence lastDay(kRepeatLastDayOfMonth, 1, 20240115, false);
  EXPECT_EQ(FirstOccurrences(lastDay, 5),
            (Dates{20240131, 20240229, 20240331, 20240430, 20240531}));
  EXPECT_EQ(InRange(lastDay, 20250201, 20250228), (Dates{20250228}));
  // 31 March 2024 is a Sunday and 31 August a Saturday.
  const ScheduleRecurrence lastFriday(kRepeatLastDayOfMonth, 1, 20240301, true);
  EXPECT_EQ(InRange(lastFriday, 20240301, 20240930),
            (Dates{20240329, 20240430, 20240531, 20240628, 20240731, 20240830, 20240930}));

  // From the end of March every quarter end follows, June included.
  const ScheduleRecurrence quarterEnd(kRepeatEndOfQuarter, 1, 20240331, false);
  EXPECT_EQ(FirstOccurrences(quarterEnd, 6),
            (Dates{20240331, 20240630, 20240930, 20241231, 20250331, 20250630}));
  // A first date inside a quarter is taken to that quarter's end.
  EXPECT_EQ(FirstOccurrences(ScheduleRecurrence(kRepeatEndOfQuarter, 1, 20241105, false), 2),
            (Dates{20241231, 20250331}));
  // 31 March and 30 June 2024 are Sundays.
  EXPECT_EQ(InRange(ScheduleRecurrence(kRepeatEndOfQuarter, 1, 20240215, true), 20240101, 20241231),
            (Dates{20240329, 20240628, 20240930, 20241231}));
}

TEST(ScheduleRecurrence, UnknownRulesAndDegenerateIntervals) {
  for (std::int32_t code : {0, 7, 8, 9, 12, 15, 19, 25, 100, -1}) {
    const ScheduleRecurrence rule(code, 1, 20240101, true);
    EXPECT_FALSE(rule.HasOccurrences()) << code;
    EXPECT_FALSE(RepeatRuleIsKnown(code)) << code;
    EXPECT_EQ(rule.NextEntryDate(CommittedDates()), -1) << code;
    EXPECT_EQ(InRange(rule, 19000101, 30000101), Dates{}) << code;
    EXPECT_FALSE(rule.OccurrenceAt(0).has_value()) << code;
  }
  for (std::int32_t code : {1, 2, 3, 4, 5, 6, 10, 11, 20, 21, 22, 23, 24}) {
    EXPECT_TRUE(RepeatRuleIsKnown(code)) << code;
  }

  // An every-N rule with N of 0 (or less) has the first occurrence only.
  for (std::int32_t code : {20, 21, 22, 23, 24}) {
    for (std::int32_t interval : {0, -3}) {
      const ScheduleRecurrence rule(code, interval, 20240110, false);
      EXPECT_EQ(InRange(rule, 20000101, 20301231), (Dates{20240110})) << code;
      CommittedDates committed;
      EXPECT_EQ(rule.NextEntryDate(committed), 20240110) << code;
      committed.AddCommittedDate(20240110);
      EXPECT_EQ(rule.NextEntryDate(committed), -1) << code;
    }
  }

  // Intervals so large that the second step lies beyond the distant future.
  for (std::int32_t code : {20, 21, 22, 23, 24}) {
    const ScheduleRecurrence rule(code, 2000000000, 20240110, false);
    EXPECT_EQ(InRange(rule, 20000101, 99991231), (Dates{20240110})) << code;
    EXPECT_EQ(rule.CandidateDate(1), -1) << code;
  }
}

TEST(ScheduleRecurrence, NextEntryDateSkipsCommittedOccurrences) {
  const ScheduleRecurrence daily(kRepeatDaily, 1, 20240101, false);
  CommittedDates committed;
  EXPECT_EQ(daily.NextEntryDate(committed), 20240101);
  for (DateNumber date : {20240101, 20240102, 20240104}) committed.AddCommittedDate(date);
  EXPECT_EQ(daily.NextEntryDate(committed), 20240103);
  committed.AddCommittedDate(20240103);
  EXPECT_EQ(daily.NextEntryDate(committed), 20240105);

  // The committed form of a moved occurrence is its Friday.
  const ScheduleRecurrence onFridays(kRepeatMonthly, 1, 20240815, true);
  CommittedDates fridays(Dates{20240815, 20240913});
  EXPECT_EQ(onFridays.NextEntryDate(fridays), 20241015);
  CommittedDates sunday(Dates{20240815, 20240915});
  EXPECT_EQ(onFridays.NextEntryDate(sunday), 20240913);

  // A monthly schedule on the 31st steps over the short months.
  const ScheduleRecurrence monthEnd(kRepeatMonthly, 1, 20240331, false);
  EXPECT_EQ(monthEnd.NextEntryDate(CommittedDates(Dates{20240331})), 20240531);

  // The search gives up beyond the distant future.
  EXPECT_EQ(ScheduleRecurrence(kRepeatDaily, 1, 40010101, false).NextEntryDate(committed), -1);
  const ScheduleRecurrence lastDays(kRepeatDaily, 1, 40001230, false);
  EXPECT_EQ(lastDays.NextEntryDate(CommittedDates(Dates{40001230})), 40001231);
  EXPECT_EQ(lastDays.NextEntryDate(CommittedDates(Dates{40001230, 40001231})), -1);
  EXPECT_EQ(InRange(lastDays, 20000101, 50000101), (Dates{40001230, 40001231}));
}

TEST(ScheduleRecurrence, RangeAlignsToWholeStepsAndLeavesOutCommittedDates) {
  // Weekly from Wednesday 3 January 2024: the range's ends are aligned to the
  // Wednesdays inside it.
  const ScheduleRecurrence weekly(kRepeatWeekly, 1, 20240103, false);
  EXPECT_EQ(InRange(weekly, 20240111, 20240201), (Dates{20240117, 20240124, 20240131}));
  EXPECT_EQ(InRange(weekly, 20240117, 20240131), (Dates{20240117, 20240124, 20240131}));
  EXPECT_EQ(InRange(weekly, 20240118, 20240123), Dates{});
  EXPECT_EQ(InRange(weekly, 20231201, 20240110), (Dates{20240103, 20240110}));
  EXPECT_EQ(InRange(weekly, 20240201, 20240101), Dates{});

  // A daily schedule begun thirty years ago, over one month.
  const ScheduleRecurrence daily(kRepeatDaily, 1, 19940101, false);
  const Dates march = InRange(daily, 20240301, 20240331);
  ASSERT_EQ(march.size(), 31u);
  EXPECT_EQ(march.front(), 20240301);
  EXPECT_EQ(march.back(), 20240331);

  // Bounds that are no real dates compare as date numbers do.
  EXPECT_EQ(InRange(daily, 20240231, 20240302), (Dates{20240301, 20240302}));
  EXPECT_EQ(InRange(daily, 20240230, 20240299), Dates{});
  EXPECT_EQ(InRange(daily, 20240229, 20240299), (Dates{20240229}));
  EXPECT_EQ(InRange(daily, 20231299, 20240100), Dates{});
  EXPECT_EQ(InRange(daily, 20231232, 20240101), (Dates{20240101}));

  // Committed dates are left out and the limit counts what is returned.
  const CommittedDates committed(Dates{20240302, 20240304});
  EXPECT_EQ(daily.UncommittedDatesInRange(20240301, 20240306, committed),
            (Dates{20240301, 20240303, 20240305, 20240306}));
  EXPECT_EQ(daily.UncommittedDatesInRange(20240301, 20240306, committed, 2),
            (Dates{20240301, 20240303}));
  EXPECT_EQ(daily.UncommittedDatesInRange(20240301, 20240306, committed, 0), Dates{});

  // The range holds the step's date; a Sunday step just past the range's end
  // is not in it even though its Friday would be.
  const ScheduleRecurrence onFridays(kRepeatMonthly, 1, 20240815, true);
  EXPECT_EQ(InRange(onFridays, 20240901, 20240914), Dates{});
  EXPECT_EQ(InRange(onFridays, 20240901, 20240915), (Dates{20240913}));
}

TEST(ScheduleRecurrence, RangeQueryMatchesAWalkFromTheFirstOccurrence) {
  // The range query jumps to the first step inside the range and walks the
  // committed list with one cursor; walking every step from the first
  // occurrence and asking the list for each date must give the same dates.
  std::mt19937 random(20240101);
  std::uniform_int_distribution<int> dayOffset(-400, 4000);
  std::uniform_int_distribution<int> length(0, 800);
  const std::int32_t codes[] = {1, 2, 3, 4, 5, 6, 10, 11, 20, 21, 22, 23, 24};
  const DateNumber firsts[] = {20000131, 20000229, 20010330, 20050806, 20121231};
  std::size_t total = 0;
  for (std::int32_t code : codes) {
    for (DateNumber first : firsts) {
      for (int interval : {1, 3}) {
        for (bool friday : {false, true}) {
          const ScheduleRecurrence rule(code, interval, first, friday);
          const CalendarDate start = CalendarDate::dateWithDateNumber(first);
          for (int trial = 0; trial < 6; ++trial) {
            const CalendarDate from = start.dateByAddingYears(0, 0, dayOffset(random));
            const CalendarDate to = from.dateByAddingYears(0, 0, length(random));
            Dates walked;
            for (std::int64_t n = 0;; ++n) {
              const DateNumber step = rule.CandidateDate(n);
              if (step > to.dateNumber()) break;
              if (step < from.dateNumber()) continue;
              if (auto date = rule.OccurrenceAt(n)) walked.push_back(*date);
            }
            total += walked.size();
            EXPECT_EQ(InRange(rule, from.dateNumber(), to.dateNumber()), walked)
                << code << " " << first << " " << interval << " " << friday << " "
                << from.dateNumber() << " " << to.dateNumber();

            // Commit every third walked date and some dates at random (mostly
            // no occurrences); the query must leave out exactly the committed ones.
            CommittedDates committed;
            for (std::size_t i = 0; i < walked.size(); i += 3) {
              committed.AddCommittedDate(walked[i]);
            }
            for (int i = 0; i < 20; ++i) {
              committed.AddCommittedDate(
                  from.dateByAddingYears(0, 0, dayOffset(random)).dateNumber());
            }
            Dates expected;
            for (DateNumber date : walked) {
              if (!committed.DateIsCommitted(date)) expected.push_back(date);
            }
            EXPECT_EQ(rule.UncommittedDatesInRange(from.dateNumber(), to.dateNumber(), committed),
                      expected)
                << code << " " << first << " " << interval << " " << friday;
            DateNumber next = -1;
            for (std::int64_t n = 0; next < 0 && n < 100000; ++n) {
              const auto date = rule.OccurrenceAt(n);
              if (date && !committed.DateIsCommitted(*date)) next = *date;
            }
            EXPECT_EQ(rule.NextEntryDate(committed), next) << code << " " << first;
          }
        }
      }
    }
  }
  EXPECT_GT(total, 10000u);  // the ranges do hold occurrences
}

}  // namespace
}  // namespace tarn
