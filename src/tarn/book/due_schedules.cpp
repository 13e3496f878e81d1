#include "tarn/book/due_schedules.h"

#include <algorithm>
#include <stdexcept>

#include "tarn/account/account.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/schedule_recurrence.h"

namespace tarn {

std::string DescribeRepeatRule(std::int32_t repeatIntervalType, std::int32_t interval) {
  const std::string n = std::to_string(interval);
  switch (repeatIntervalType) {
    case kRepeatDaily:
      return "daily";
    case kRepeatWeekly:
      return "weekly";
    case kRepeatEveryTwoWeeks:
      return "every two weeks";
    case kRepeatMonthly:
      return "monthly";
    case kRepeatYearly:
      return "yearly";
    case kRepeatLastDayOfMonth:
      return "last day of month";
    case kRepeatQuarterly:
      return "quarterly";
    case kRepeatEndOfQuarter:
      return "end of quarter";
    case kRepeatEveryNDays:
      return "every " + n + " days";
    case kRepeatEveryNWeeks:
      return "every " + n + " weeks";
    case kRepeatEveryNMonths:
      return "every " + n + " months";
    case kRepeatEveryNYears:
      return "every " + n + " years";
    case kRepeatEveryNQuarters:
      return "every " + n + " quarters";
    default:
      return "never";
  }
}

std::vector<DueOccurrence> DueOccurrences(const TARNAccount& account, const CalendarDate& today) {
  std::vector<DueOccurrence> due;
  for (const auto& schedule : account.GetSchedules()) {
    for (const auto& entry : schedule->EvaluateForDate(today)) {
      due.push_back(
          {schedule->GetNumber(), entry->GetDate(), entry->GetDescription(), entry->GetAmount()});
    }
  }
  std::stable_sort(due.begin(), due.end(),
                   [](const DueOccurrence& a, const DueOccurrence& b) { return a.date < b.date; });
  return due;
}

std::shared_ptr<TARNAccountSchedule> ScheduleWithNumber(const TARNAccount& account,
                                                        std::int32_t number) {
  for (const auto& schedule : account.GetSchedules()) {
    if (schedule->GetNumber() == number) return schedule;
  }
  return nullptr;
}

namespace {

TARNAccountSchedule& OpenOccurrence(const TARNAccount& account, std::int32_t number,
                                    DateNumber date) {
  auto schedule = ScheduleWithNumber(account, number);
  if (!schedule) {
    throw std::invalid_argument("the account has no scheduled entry " + std::to_string(number));
  }
  if (schedule->DateIsCommitted(date)) {
    throw std::invalid_argument("that occurrence was already entered or skipped");
  }
  return *schedule;
}

}  // namespace

std::shared_ptr<TARNAccountEntry> EnterOccurrence(TARNAccount& account, std::int32_t schedule,
                                                  DateNumber date) {
  TARNAccountSchedule& found = OpenOccurrence(account, schedule, date);
  auto entry = found.EntryForDate(date);
  entry->SetNumber(account.NextAvailableNumber());
  if (entry->IsCheck()) entry->SetCheckNumber(account.NextAvailableCheckNumber());
  account.AddEntry(entry);
  found.CommitEntry(*entry);
  return entry;
}

void SkipOccurrence(TARNAccount& account, std::int32_t schedule, DateNumber date) {
  OpenOccurrence(account, schedule, date).AddCommittedDate(date);
}

}  // namespace tarn
