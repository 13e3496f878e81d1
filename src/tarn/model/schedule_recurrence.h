// The repetition engine of a scheduled entry: which dates a repetition rule
// yields from a first occurrence, and the sorted list of occurrence dates that
// were already turned into real entries. Plain values; TARNAccountSchedule owns
// one list of committed dates and builds a ScheduleRecurrence from its fields.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "tarn/platform/calendar_date.h"

namespace tarn {

// Repetition rule codes as stored under "repeatIntervalType". Any other code
// is a rule without occurrences.
inline constexpr std::int32_t kRepeatDaily = 1;
inline constexpr std::int32_t kRepeatWeekly = 2;
inline constexpr std::int32_t kRepeatEveryTwoWeeks = 3;
inline constexpr std::int32_t kRepeatMonthly = 4;
inline constexpr std::int32_t kRepeatYearly = 5;
inline constexpr std::int32_t kRepeatLastDayOfMonth = 6;
inline constexpr std::int32_t kRepeatQuarterly = 10;
inline constexpr std::int32_t kRepeatEndOfQuarter = 11;
inline constexpr std::int32_t kRepeatEveryNDays = 20;
inline constexpr std::int32_t kRepeatEveryNWeeks = 21;
inline constexpr std::int32_t kRepeatEveryNMonths = 22;
inline constexpr std::int32_t kRepeatEveryNYears = 23;
inline constexpr std::int32_t kRepeatEveryNQuarters = 24;

// The last date that any search for occurrences considers (the platform's
// distant future lies in the year 4000).
inline constexpr DateNumber kDistantFutureDateNumber = 40001231;

// True for the rule codes that have occurrences.
bool RepeatRuleIsKnown(std::int32_t repeatIntervalType);

// Occurrence dates already entered, ascending and without duplicates.
class CommittedDates {
 public:
  CommittedDates() = default;
  // Takes a stored list; it is sorted when it is not already in order (the
  // look-up halves the list and needs the order).
  explicit CommittedDates(std::vector<DateNumber> dates);

  // Halves the index range while it spans three or more elements, then scans
  // the rest; NO at once for an empty list or a date outside its ends.
  bool DateIsCommitted(DateNumber date) const;
  // Adds the date unless it is already there, keeping the order.
  void AddCommittedDate(DateNumber date);

  const std::vector<DateNumber>& dates() const { return dates_; }
  std::size_t size() const { return dates_.size(); }
  bool empty() const { return dates_.empty(); }

  friend bool operator==(const CommittedDates&, const CommittedDates&) = default;

 private:
  std::vector<DateNumber> dates_;
};

// A repetition rule anchored at its first occurrence. Occurrence n (n = 0, 1,
// 2, ...) is the first date stepped n times by the rule; monthly-type rules
// skip a step that lands in a month without the first occurrence's day, and
// the rules that move weekend dates apply the weekend rule when asked to.
class ScheduleRecurrence {
 public:
  ScheduleRecurrence(std::int32_t repeatIntervalType, std::int32_t repeatInterval,
                     DateNumber firstDate, bool usePrecedingFriday);

  bool HasOccurrences() const { return kind_ != Kind::kNone; }
  // Whether the rule moves weekend occurrences (when usePrecedingFriday is set).
  bool IsAdjusted() const { return adjusted_; }

  // Saturday moves back one day and Sunday two when usePrecedingFriday is set;
  // any other date is returned as it is.
  DateNumber AdjustDateForUsePrecedingFriday(DateNumber date) const;
  static DateNumber AdjustDateForUsePrecedingFriday(DateNumber date, bool usePrecedingFriday);

  // The date that step n yields before the weekend rule, day overflow carried
  // into the next month as the calendar carries it; -1 when the rule has no
  // step n or the step lies past the distant future.
  DateNumber CandidateDate(std::int64_t n) const;
  // Occurrence n as it is entered (weekend rule applied), or nullopt when
  // step n fails the same-day test, the rule has no step n or the step lies
  // past the distant future.
  std::optional<DateNumber> OccurrenceAt(std::int64_t n) const;

  // The first occurrence, in the rule's order, that is not committed; -1 when
  // there is none up to the distant future or the rule is unknown.
  DateNumber NextEntryDate(const CommittedDates& committed) const;

  // The entered dates (weekend rule applied) of the occurrences whose step
  // date lies within [from, to], in order, leaving out committed ones, at most
  // `limit` of them. The first step inside the range is computed directly, so
  // the cost depends on the range and not on the age of the schedule.
  std::vector<DateNumber> UncommittedDatesInRange(
      DateNumber from, DateNumber to, const CommittedDates& committed,
      std::size_t limit = std::numeric_limits<std::size_t>::max()) const;

 private:
  enum class Kind { kNone, kDays, kMonths, kLastDayOfMonth, kEndOfQuarter };

  struct Step {
    std::int64_t days;  // days since 1970 of the step's date, overflow carried
    bool sameDay;       // passes the same-day test
  };

  Step StepAt(std::int64_t n) const;
  // The largest n (at least 0) whose step date can be no later than `days`
  // while step n + 1 can still be on or after it.
  std::int64_t FirstStepNear(std::int64_t days) const;
  std::int64_t AdjustDays(std::int64_t days) const;

  Kind kind_ = Kind::kNone;
  bool adjusted_ = false;
  bool usePrecedingFriday_ = false;
  bool sameDayRule_ = false;
  bool onlyFirst_ = false;       // an every-N rule with N below 1 never moves on
  std::int64_t stepDays_ = 0;    // kDays
  std::int64_t stepMonths_ = 0;  // kMonths, kLastDayOfMonth, kEndOfQuarter
  std::int64_t firstDays_ = 0;
  std::int64_t firstMonthIndex_ = 0;  // year * 12 + month - 1
  int firstDay_ = 1;
};

}  // namespace tarn
