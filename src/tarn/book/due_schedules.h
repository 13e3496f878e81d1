// The account's scheduled entries as the host's schedules window works with
// them: a readable name for a repetition rule, the occurrences due by a
// date, and entering or skipping one of them. Entering adds a plain entry to
// the register and marks the occurrence entered; skipping only marks it, so
// the schedule moves on without an entry.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tarn/platform/calendar_date.h"

namespace tarn {

class TARNAccount;
class TARNAccountEntry;
class TARNAccountSchedule;

// "monthly", "every 3 weeks", ...; "never" for a rule without occurrences.
std::string DescribeRepeatRule(std::int32_t repeatIntervalType, std::int32_t interval);

// One occurrence of a schedule that is due and not yet entered or skipped.
struct DueOccurrence {
  std::int32_t schedule = -1;  // the schedule's number
  DateNumber date = 0;         // weekend rule applied
  std::string description;
  double amount = 0.0;
};

// Every due occurrence of the account's schedules by `today`, in date order
// (schedules in their order within a day).
std::vector<DueOccurrence> DueOccurrences(const TARNAccount& account, const CalendarDate& today);

// The account's schedule with that number, or nullptr.
std::shared_ptr<TARNAccountSchedule> ScheduleWithNumber(const TARNAccount& account,
                                                        std::int32_t number);

// Adds the schedule's entry for the date to the register, with the next
// entry number (and the next check number for a check), and marks the date
// entered. Throws std::invalid_argument, changing nothing, for an unknown
// schedule or a date already entered or skipped.
std::shared_ptr<TARNAccountEntry> EnterOccurrence(TARNAccount& account, std::int32_t schedule,
                                                  DateNumber date);
// Marks the date entered without adding an entry; the same errors.
void SkipOccurrence(TARNAccount& account, std::int32_t schedule, DateNumber date);

}  // namespace tarn
