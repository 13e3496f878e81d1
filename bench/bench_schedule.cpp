// Occurrences of schedules over one month, for schedules begun thirty years
// before the month: the cost must not grow with the schedule's age.
#include <benchmark/benchmark.h>

#include "tarn/model/account_schedule.h"
#include "tarn/model/schedule_recurrence.h"

namespace tarn {
namespace {

// A schedule with a committed date for every occurrence before the month,
// as a schedule that has been entered faithfully for thirty years has.
std::shared_ptr<TARNAccountSchedule> AgedSchedule(std::int32_t rule) {
  auto schedule = std::make_shared<TARNAccountSchedule>();
  schedule->SetRepeatIntervalType(rule);
  schedule->SetDate(19940301);
  schedule->SetDescription(std::string("Groceries"));
  schedule->SetIsDebit(true);
  schedule->SetAmount(-42.5);
  for (const DateNumber date : ScheduleRecurrence(rule, 1, 19940301, false)
                                   .UncommittedDatesInRange(19940301, 20240229, CommittedDates())) {
    schedule->AddCommittedDate(date);
  }
  return schedule;
}

void BM_RangeQueryDailyThirtyYears(benchmark::State& state) {
  const ScheduleRecurrence rule(kRepeatDaily, 1, 19940301, false);
  const CommittedDates committed;
  for (auto _ : state) {
    benchmark::DoNotOptimize(rule.UncommittedDatesInRange(20240301, 20240331, committed));
  }
}
BENCHMARK(BM_RangeQueryDailyThirtyYears);

void BM_EntriesFromDateDailyThirtyYears(benchmark::State& state) {
  const auto schedule = AgedSchedule(kRepeatDaily);
  for (auto _ : state) {
    benchmark::DoNotOptimize(schedule->EntriesFromDate(20240301, 20240331));
  }
  state.counters["committed"] = static_cast<double>(schedule->GetCommittedDates().size());
}
BENCHMARK(BM_EntriesFromDateDailyThirtyYears)->Unit(benchmark::kMicrosecond);

void BM_EntriesFromDateMonthlyThirtyYears(benchmark::State& state) {
  const auto schedule = AgedSchedule(kRepeatMonthly);
  for (auto _ : state) {
    benchmark::DoNotOptimize(schedule->EntriesFromDate(20240301, 20240331));
  }
}
BENCHMARK(BM_EntriesFromDateMonthlyThirtyYears)->Unit(benchmark::kMicrosecond);

// Due entries of the daily schedule on the first day of the month after:
// only the month's occurrences are uncommitted.
void BM_EvaluateForDateDailyThirtyYears(benchmark::State& state) {
  const auto schedule = AgedSchedule(kRepeatDaily);
  const CalendarDate today(2024, 3, 31);
  for (auto _ : state) {
    benchmark::DoNotOptimize(schedule->EvaluateForDate(today));
  }
}
BENCHMARK(BM_EvaluateForDateDailyThirtyYears)->Unit(benchmark::kMicrosecond);

void BM_NextEntryDateDailyThirtyYears(benchmark::State& state) {
  const auto schedule = AgedSchedule(kRepeatDaily);
  for (auto _ : state) {
    benchmark::DoNotOptimize(schedule->NextEntryDate());
  }
}
BENCHMARK(BM_NextEntryDateDailyThirtyYears)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tarn
