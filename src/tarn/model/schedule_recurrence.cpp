#include "tarn/model/schedule_recurrence.h"

#include <algorithm>

namespace tarn {
namespace {

// Steps of month rules past this month index (January 4002) are all beyond the
// distant future; they stand for one far day so that huge intervals cannot
// overflow the calendar's year.
constexpr std::int64_t kLastMonthIndex = 4002 * 12;
constexpr std::int64_t kBeyondDays = std::int64_t{1} << 40;

DateNumber dateNumberOfDays(std::int64_t days) {
  const CivilDay civil = CivilFromDays(days);
  return static_cast<DateNumber>(civil.year * 10000 + civil.month * 100 + civil.day);
}

std::int64_t monthIndexOfDays(std::int64_t days) {
  const CivilDay civil = CivilFromDays(days);
  return civil.year * 12 + civil.month - 1;
}

// DateIsCommitted for a walk whose dates never go down: one cursor moves
// forward through the list instead of a search per date.
class CommittedCursor {
 public:
  explicit CommittedCursor(const CommittedDates& committed) : committed_(committed) {}

  bool contains(DateNumber date) {
    const std::vector<DateNumber>& dates = committed_.dates();
    if (!started_ || date < previous_) {
      if (started_) return committed_.DateIsCommitted(date);  // not expected; stay exact
      cursor_ = std::lower_bound(dates.begin(), dates.end(), date);
      started_ = true;
    }
    previous_ = date;
    while (cursor_ != dates.end() && *cursor_ < date) ++cursor_;
    return cursor_ != dates.end() && *cursor_ == date;
  }

 private:
  const CommittedDates& committed_;
  std::vector<DateNumber>::const_iterator cursor_;
  DateNumber previous_ = 0;
  bool started_ = false;
};

// The fields of a date number as written, before any carrying.
struct Fields {
  int year;
  int month;
  int day;
};
Fields fieldsOf(DateNumber number) {
  return {number / 10000, (number % 10000) / 100, number % 100};
}

// The earliest real date whose date number is not below `bound`, so that a
// bound such as 20070231 or 20071300 still compares as date numbers do.
std::int64_t daysOnOrAfter(DateNumber bound) {
  Fields f = fieldsOf(bound);
  if (f.month < 1) return DaysFromCivil(f.year, 1, 1);
  if (f.month > 12) return DaysFromCivil(f.year + 1, 1, 1);
  if (f.day < 1) return DaysFromCivil(f.year, f.month, 1);
  const int daysInMonth = DaysInMonth(f.month, f.year);
  if (f.day > daysInMonth) return DaysFromCivil(f.year, f.month, daysInMonth) + 1;
  return DaysFromCivil(f.year, f.month, f.day);
}

// The latest real date whose date number is not above `bound`.
std::int64_t daysOnOrBefore(DateNumber bound) {
  Fields f = fieldsOf(bound);
  if (f.month < 1) return DaysFromCivil(f.year, 1, 1) - 1;
  if (f.month > 12) return DaysFromCivil(f.year, 12, 31);
  if (f.day < 1) return DaysFromCivil(f.year, f.month, 1) - 1;
  return DaysFromCivil(f.year, f.month, std::min(f.day, DaysInMonth(f.month, f.year)));
}

std::int64_t distantFutureDays() {
  static const std::int64_t days = daysOnOrBefore(kDistantFutureDateNumber);
  return days;
}

}  // namespace

bool RepeatRuleIsKnown(std::int32_t repeatIntervalType) {
  switch (repeatIntervalType) {
    case kRepeatDaily:
    case kRepeatWeekly:
    case kRepeatEveryTwoWeeks:
    case kRepeatMonthly:
    case kRepeatYearly:
    case kRepeatLastDayOfMonth:
    case kRepeatQuarterly:
    case kRepeatEndOfQuarter:
    case kRepeatEveryNDays:
    case kRepeatEveryNWeeks:
    case kRepeatEveryNMonths:
    case kRepeatEveryNYears:
    case kRepeatEveryNQuarters:
      return true;
    default:
      return false;
  }
}

// ---------------------------------------------------------------------------
// CommittedDates

CommittedDates::CommittedDates(std::vector<DateNumber> dates) : dates_(std::move(dates)) {
  if (!std::is_sorted(dates_.begin(), dates_.end())) std::sort(dates_.begin(), dates_.end());
}

bool CommittedDates::DateIsCommitted(DateNumber date) const {
  if (dates_.empty() || date < dates_.front() || date > dates_.back()) return false;
  std::size_t low = 0;
  std::size_t high = dates_.size() - 1;
  while (high - low + 1 >= 3) {
    const std::size_t middle = low + (high - low) / 2;
    const DateNumber value = dates_[middle];
    if (value == date) return true;
    if (value < date) {
      low = middle;
    } else {
      high = middle;
    }
  }
  for (std::size_t i = low; i <= high; ++i) {
    if (dates_[i] == date) return true;
  }
  return false;
}

void CommittedDates::AddCommittedDate(DateNumber date) {
  if (DateIsCommitted(date)) return;
  // Dates are mostly committed in order, so this is usually an append.
  dates_.insert(std::upper_bound(dates_.begin(), dates_.end(), date), date);
}

// ---------------------------------------------------------------------------
// ScheduleRecurrence

ScheduleRecurrence::ScheduleRecurrence(std::int32_t repeatIntervalType, std::int32_t repeatInterval,
                                       DateNumber firstDate, bool usePrecedingFriday)
    : usePrecedingFriday_(usePrecedingFriday) {
  const CalendarDate first = CalendarDate::dateWithDateNumber(firstDate);
  firstDays_ = first.daysSince1970();
  firstMonthIndex_ =
      static_cast<std::int64_t>(first.yearOfCommonEra()) * 12 + first.monthOfYear() - 1;
  firstDay_ = first.dayOfMonth();

  const std::int64_t n = repeatInterval;
  switch (repeatIntervalType) {
    case kRepeatDaily:
      kind_ = Kind::kDays;
      stepDays_ = 1;
      break;
    case kRepeatWeekly:
      kind_ = Kind::kDays;
      stepDays_ = 7;
      break;
    case kRepeatEveryTwoWeeks:
      kind_ = Kind::kDays;
      stepDays_ = 14;
      break;
    case kRepeatMonthly:
      kind_ = Kind::kMonths;
      stepMonths_ = 1;
      sameDayRule_ = adjusted_ = true;
      break;
    case kRepeatYearly:
      kind_ = Kind::kMonths;
      stepMonths_ = 12;
      adjusted_ = true;
      break;
    case kRepeatLastDayOfMonth:
      kind_ = Kind::kLastDayOfMonth;
      stepMonths_ = 1;
      adjusted_ = true;
      break;
    case kRepeatQuarterly:
      kind_ = Kind::kMonths;
      stepMonths_ = 3;
      sameDayRule_ = adjusted_ = true;
      break;
    case kRepeatEndOfQuarter:
      kind_ = Kind::kEndOfQuarter;
      stepMonths_ = 3;
      adjusted_ = true;
      break;
    case kRepeatEveryNDays:
      kind_ = Kind::kDays;
      stepDays_ = n;
      adjusted_ = true;
      break;
    case kRepeatEveryNWeeks:
      kind_ = Kind::kDays;
      stepDays_ = 7 * n;
      break;
    case kRepeatEveryNMonths:
      kind_ = Kind::kMonths;
      stepMonths_ = n;
      sameDayRule_ = adjusted_ = true;
      break;
    case kRepeatEveryNYears:
      kind_ = Kind::kMonths;
      stepMonths_ = 12 * n;
      adjusted_ = true;
      break;
    case kRepeatEveryNQuarters:
      kind_ = Kind::kMonths;
      stepMonths_ = 3 * n;
      sameDayRule_ = adjusted_ = true;
      break;
    default:
      kind_ = Kind::kNone;
      break;
  }
  // Every step of an every-N rule with N of 0 or less lands on or before the
  // first date, so only the first occurrence lies ahead of the schedule.
  onlyFirst_ =
      (kind_ == Kind::kDays && stepDays_ < 1) || (kind_ == Kind::kMonths && stepMonths_ < 1);
}

DateNumber ScheduleRecurrence::AdjustDateForUsePrecedingFriday(DateNumber date,
                                                               bool usePrecedingFriday) {
  if (!usePrecedingFriday) return date;
  const CalendarDate calendar = CalendarDate::dateWithDateNumber(date);
  switch (calendar.dayOfWeek()) {
    case 6:  // Saturday
      return calendar.dateByAddingYears(0, 0, -1).dateNumber();
    case 0:  // Sunday
      return calendar.dateByAddingYears(0, 0, -2).dateNumber();
    default:
      return date;
  }
}

DateNumber ScheduleRecurrence::AdjustDateForUsePrecedingFriday(DateNumber date) const {
  return AdjustDateForUsePrecedingFriday(date, usePrecedingFriday_);
}

std::int64_t ScheduleRecurrence::AdjustDays(std::int64_t days) const {
  if (!adjusted_ || !usePrecedingFriday_) return days;
  // 1 January 1970 (day 0) was a Thursday; 0 is Sunday.
  const std::int64_t weekday = ((days + 4) % 7 + 7) % 7;
  if (weekday == 6) return days - 1;
  if (weekday == 0) return days - 2;
  return days;
}

ScheduleRecurrence::Step ScheduleRecurrence::StepAt(std::int64_t n) const {
  switch (kind_) {
    case Kind::kDays:
      return {firstDays_ + n * stepDays_, true};
    case Kind::kMonths: {
      const std::int64_t month = firstMonthIndex_ + n * stepMonths_;
      if (month > kLastMonthIndex) return {kBeyondDays, true};
      const std::int64_t year = FloorDivide(month, 12);
      const int monthOfYear = static_cast<int>(month - year * 12) + 1;
      const std::int64_t firstOfMonth = DaysFromCivil(year, monthOfYear, 1);
      if (firstDay_ <= DaysInMonth(monthOfYear, static_cast<int>(year))) {
        return {firstOfMonth + firstDay_ - 1, true};
      }
      // The day runs past the month's end and carries into the next month,
      // which only the rules without the same-day test keep.
      return {firstOfMonth + firstDay_ - 1, !sameDayRule_};
    }
    case Kind::kLastDayOfMonth: {
      // The first day of the month after the step's month, less one day.
      const std::int64_t month = firstMonthIndex_ + n + 1;
      if (month > kLastMonthIndex) return {kBeyondDays, true};
      const std::int64_t year = FloorDivide(month, 12);
      return {DaysFromCivil(year, static_cast<int>(month - year * 12) + 1, 1) - 1, true};
    }
    case Kind::kEndOfQuarter: {
      // The quarter of the month reached, not of a carried day: 31 March plus
      // three months is in June, whose quarter ends on 30 June.
      const std::int64_t month = firstMonthIndex_ + 3 * n;
      const std::int64_t next = FloorDivide(month, 3) * 3 + 3;  // the month after the quarter
      if (next > kLastMonthIndex) return {kBeyondDays, true};
      const std::int64_t year = FloorDivide(next, 12);
      return {DaysFromCivil(year, static_cast<int>(next - year * 12) + 1, 1) - 1, true};
    }
    case Kind::kNone:
      break;
  }
  return {0, false};
}

DateNumber ScheduleRecurrence::CandidateDate(std::int64_t n) const {
  if (kind_ == Kind::kNone || n < 0 || (onlyFirst_ && n > 0)) return -1;
  const Step step = StepAt(n);
  if (step.days > distantFutureDays()) return -1;
  return dateNumberOfDays(step.days);
}

std::optional<DateNumber> ScheduleRecurrence::OccurrenceAt(std::int64_t n) const {
  if (kind_ == Kind::kNone || n < 0 || (onlyFirst_ && n > 0)) return std::nullopt;
  const Step step = StepAt(n);
  if (!step.sameDay || step.days > distantFutureDays()) return std::nullopt;
  return dateNumberOfDays(AdjustDays(step.days));
}

std::int64_t ScheduleRecurrence::FirstStepNear(std::int64_t days) const {
  if (onlyFirst_) return 0;
  switch (kind_) {
    case Kind::kDays:
      return std::max<std::int64_t>(0, FloorDivide(days - firstDays_, stepDays_));
    case Kind::kMonths:
    case Kind::kLastDayOfMonth:
    case Kind::kEndOfQuarter:
      // One step early: a step in the month before can carry (yearly 29
      // February) or be taken to a quarter's end inside the range.
      return std::max<std::int64_t>(
          0, FloorDivide(monthIndexOfDays(days) - firstMonthIndex_, stepMonths_) - 1);
    case Kind::kNone:
      break;
  }
  return 0;
}

DateNumber ScheduleRecurrence::NextEntryDate(const CommittedDates& committed) const {
  if (kind_ == Kind::kNone) return -1;
  const std::int64_t last = distantFutureDays();
  CommittedCursor cursor(committed);
  for (std::int64_t n = 0; !(onlyFirst_ && n > 0); ++n) {
    const Step step = StepAt(n);
    if (step.days > last) break;
    if (!step.sameDay) continue;
    const DateNumber date = dateNumberOfDays(AdjustDays(step.days));
    if (!cursor.contains(date)) return date;
  }
  return -1;
}

std::vector<DateNumber> ScheduleRecurrence::UncommittedDatesInRange(DateNumber from, DateNumber to,
                                                                    const CommittedDates& committed,
                                                                    std::size_t limit) const {
  std::vector<DateNumber> dates;
  if (kind_ == Kind::kNone || limit == 0) return dates;
  const std::int64_t first = daysOnOrAfter(from);
  const std::int64_t last = std::min(daysOnOrBefore(to), distantFutureDays());
  if (first > last) return dates;
  CommittedCursor cursor(committed);
  for (std::int64_t n = FirstStepNear(first); !(onlyFirst_ && n > 0); ++n) {
    const Step step = StepAt(n);
    if (step.days > last) break;
    if (step.days < first || !step.sameDay) continue;
    const DateNumber date = dateNumberOfDays(AdjustDays(step.days));
    if (cursor.contains(date)) continue;
    dates.push_back(date);
    if (dates.size() >= limit) break;
  }
  return dates;
}

}  // namespace tarn
