// A scheduled entry: a template entry that repeats (rent every month, pay
// every two weeks). The inherited fields are the template and the inherited
// date its first occurrence; the schedule remembers which occurrence dates
// were already entered. The account owns its schedules; the entries that a
// schedule hands out are new plain entries owned by the caller.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tarn/model/account_entry.h"
#include "tarn/model/schedule_recurrence.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/value.h"

namespace tarn {

// How long a schedule repeats ("repeatUntilType").
inline constexpr std::int32_t kRepeatUntilForever = 1;
inline constexpr std::int32_t kRepeatUntilCount = 2;
inline constexpr std::int32_t kRepeatUntilDate = 3;

class TARNAccountSchedule : public TARNAccountEntry {
 public:
  using Entries = std::vector<std::shared_ptr<TARNAccountEntry>>;

  // No rule (code 0), interval 1, repeated forever, no weekend rule, nothing
  // committed; the entry fields keep the entry's defaults.
  TARNAccountSchedule() = default;

  // The entry's keys, then the schedule's. A missing key is logged and keeps
  // its default; a nil (or non-dictionary) value leaves every default
  // without a message.
  static std::shared_ptr<TARNAccountSchedule> initWithDictionary(const plist::Value& dictionary);
  // The entry dictionary with the schedule's keys added.
  plist::Value asDictionary() const override;

  std::int32_t GetRepeatIntervalType() const { return repeatIntervalType_; }
  std::int32_t GetRepeatInterval() const { return repeatInterval_; }
  std::int32_t GetRepeatUntilType() const { return repeatUntilType_; }
  std::int32_t GetRepeatUntil() const { return repeatUntil_; }
  bool GetUsePrecedingFriday() const { return usePrecedingFriday_; }
  // Ascending.
  const std::vector<DateNumber>& GetCommittedDates() const { return committedDates_.dates(); }
  // The latest committed date; 0 when nothing is committed.
  DateNumber GetLastCommittedDate() const;

  void SetRepeatIntervalType(std::int32_t type) { repeatIntervalType_ = type; }
  void SetRepeatInterval(std::int32_t interval) { repeatInterval_ = interval; }
  void SetRepeatUntilType(std::int32_t type) { repeatUntilType_ = type; }
  void SetRepeatUntil(std::int32_t until) { repeatUntil_ = until; }
  void SetUsePrecedingFriday(bool use) { usePrecedingFriday_ = use; }

  // Saturday back one day, Sunday back two, when usePrecedingFriday is set.
  DateNumber AdjustDateForUsePrecedingFriday(DateNumber date) const;

  // The first occurrence, in the rule's order, whose (weekend-adjusted) date
  // is not committed; -1 for an unknown rule or when none is left.
  DateNumber NextEntryDate() const;
  // One new entry for every uncommitted occurrence within [from, to].
  Entries EntriesFromDate(DateNumber from, DateNumber to) const;
  // A new plain entry copied from the template, with the given date.
  std::shared_ptr<TARNAccountEntry> EntryForDate(DateNumber date) const;

  bool DateIsCommitted(DateNumber date) const { return committedDates_.DateIsCommitted(date); }
  void AddCommittedDate(DateNumber date) { committedDates_.AddCommittedDate(date); }
  // Commits the entry's date.
  void CommitEntry(const TARNAccountEntry& entry) { AddCommittedDate(entry.GetDate()); }

  // The entries due by `date` ("today" as the host sees it), limited by the
  // schedule's repeat-until setting.
  Entries EvaluateForDate(const CalendarDate& date) const;

  // 1, 0 or -1 as this schedule's next date is later, the same or earlier.
  int NextEntryDateIsGreaterThan(const TARNAccountSchedule& other) const;
  int NextEntryDateIsGreaterThan_Reversed(const TARNAccountSchedule& other) const;

 protected:
  void loadFromDictionary(const plist::Value& dictionary) override;

 private:
  ScheduleRecurrence recurrence() const;
  // The last date to look at for a horizon of `date` (Friday and Saturday
  // reach over the weekend when weekend dates move to Friday).
  DateNumber HorizonFor(const CalendarDate& date) const;
  // Entries for the uncommitted occurrences in the range, at most `limit`.
  Entries EntriesInRange(DateNumber from, DateNumber to, std::size_t limit) const;

  std::int32_t repeatIntervalType_ = 0;
  std::int32_t repeatInterval_ = 1;
  std::int32_t repeatUntilType_ = kRepeatUntilForever;
  std::int32_t repeatUntil_ = 0;
  bool usePrecedingFriday_ = false;
  CommittedDates committedDates_;
};

}  // namespace tarn
