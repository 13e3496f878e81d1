#include "tarn/model/account_schedule.h"

#include <limits>
#include <string_view>
#include <utility>

#include "tarn/platform/log.h"

namespace tarn {
namespace {

using plist::Value;

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

// The number under `key`, or nullptr; a missing key is logged. A value of
// another kind keeps the default without a message (the format has none).
const Value* numberForKey(const plist::Dictionary& dictionary, std::string_view key,
                          std::string_view missingMessage) {
  const auto found = dictionary.find(key);
  if (found == dictionary.end()) {
    Log(missingMessage);
    return nullptr;
  }
  return found->second.isNumber() ? &found->second : nullptr;
}

DateNumber daysLater(const CalendarDate& date, int days) {
  return date.dateByAddingYears(0, 0, days).dateNumber();
}

}  // namespace

std::shared_ptr<TARNAccountSchedule> TARNAccountSchedule::initWithDictionary(
    const Value& dictionary) {
  auto schedule = std::make_shared<TARNAccountSchedule>();
  schedule->loadFromDictionary(dictionary);
  return schedule;
}

void TARNAccountSchedule::loadFromDictionary(const Value& value) {
  TARNAccountEntry::loadFromDictionary(value);
  if (!value.isDictionary()) return;
  const plist::Dictionary& dictionary = value.dictionaryValue();

  if (const Value* found = numberForKey(dictionary, "repeatIntervalType",
                                        "No repeatIntervalType found for schedule.")) {
    repeatIntervalType_ = found->intValue();
  }
  if (const Value* found =
          numberForKey(dictionary, "repeatInterval", "No repeatInterval found for schedule.")) {
    repeatInterval_ = found->intValue();
  }
  if (const Value* found =
          numberForKey(dictionary, "repeatUntilType", "No repeatUntilType found for schedule.")) {
    repeatUntilType_ = found->intValue();
  }
  if (const Value* found =
          numberForKey(dictionary, "repeatUntil", "No repeatUntil found for schedule.")) {
    repeatUntil_ = found->intValue();
  }
  if (const Value* found = numberForKey(dictionary, "usePrecedingFriday",
                                        "No usePrecedingFriday found for schedule.")) {
    usePrecedingFriday_ = found->boolValue();
  }
  const auto committed = dictionary.find("committedDates");
  if (committed == dictionary.end()) {
    Log("No committedDates found for schedule.");
  } else if (!committed->second.isArray()) {
    Log("committedDates is in the wrong format for schedule.");
  } else {
    std::vector<DateNumber> dates;
    dates.reserve(committed->second.arrayValue().size());
    for (const Value& date : committed->second.arrayValue()) {
      if (date.isNumber()) dates.push_back(date.intValue());
    }
    committedDates_ = CommittedDates(std::move(dates));
  }
}

plist::Value TARNAccountSchedule::asDictionary() const {
  plist::Dictionary dictionary;
  dictionary.reserve(entryKeyCount() + 6);  // the entry's keys and the schedule's
  writeEntryKeys(dictionary);
  dictionary["repeatIntervalType"] = Value(repeatIntervalType_);
  dictionary["repeatInterval"] = Value(repeatInterval_);
  dictionary["repeatUntilType"] = Value(repeatUntilType_);
  dictionary["repeatUntil"] = Value(repeatUntil_);
  dictionary["usePrecedingFriday"] = Value(usePrecedingFriday_);
  plist::Array dates;
  dates.reserve(committedDates_.size());
  for (DateNumber date : committedDates_.dates()) dates.emplace_back(date);
  dictionary["committedDates"] = Value(std::move(dates));
  return Value(std::move(dictionary));
}

DateNumber TARNAccountSchedule::GetLastCommittedDate() const {
  return committedDates_.empty() ? 0 : committedDates_.dates().back();
}

ScheduleRecurrence TARNAccountSchedule::recurrence() const {
  return ScheduleRecurrence(repeatIntervalType_, repeatInterval_, GetDate(), usePrecedingFriday_);
}

DateNumber TARNAccountSchedule::AdjustDateForUsePrecedingFriday(DateNumber date) const {
  return ScheduleRecurrence::AdjustDateForUsePrecedingFriday(date, usePrecedingFriday_);
}

DateNumber TARNAccountSchedule::NextEntryDate() const {
  return recurrence().NextEntryDate(committedDates_);
}

std::shared_ptr<TARNAccountEntry> TARNAccountSchedule::EntryForDate(DateNumber date) const {
  std::shared_ptr<TARNAccountEntry> entry = TARNAccountEntry::entryWithEntry(this);
  entry->SetDate(date);
  return entry;
}

TARNAccountSchedule::Entries TARNAccountSchedule::EntriesInRange(DateNumber from, DateNumber to,
                                                                 std::size_t limit) const {
  const std::vector<DateNumber> dates =
      recurrence().UncommittedDatesInRange(from, to, committedDates_, limit);
  Entries entries;
  if (dates.empty()) return entries;
  entries.reserve(dates.size());
  // What EntryForDate does for each date, with the template's dictionary
  // built once: the schedule's own keys (the committed dates among them)
  // are ignored by the entry's reader, so they are left out.
  plist::Dictionary keys;
  writeEntryKeys(keys);
  const Value entryKeys(std::move(keys));
  for (DateNumber date : dates) {
    std::shared_ptr<TARNAccountEntry> entry = TARNAccountEntry::initWithDictionary(entryKeys);
    entry->SetAccount(GetAccount());
    entry->SetDate(date);
    entries.push_back(std::move(entry));
  }
  return entries;
}

TARNAccountSchedule::Entries TARNAccountSchedule::EntriesFromDate(DateNumber from,
                                                                  DateNumber to) const {
  return EntriesInRange(from, to, kNoLimit);
}

DateNumber TARNAccountSchedule::HorizonFor(const CalendarDate& date) const {
  if (usePrecedingFriday_) {
    switch (date.dayOfWeek()) {
      case 5:  // Friday: Saturday's and Sunday's occurrences are due today
        return daysLater(date, 2);
      case 6:  // Saturday: Sunday's occurrence is due today
        return daysLater(date, 1);
      default:
        break;
    }
  }
  return date.dateNumber();
}

TARNAccountSchedule::Entries TARNAccountSchedule::EvaluateForDate(const CalendarDate& date) const {
  const DateNumber first = GetDate();
  switch (repeatUntilType_) {
    case kRepeatUntilForever: {
      const DateNumber horizon = HorizonFor(date);
      if (horizon < first) return {};
      return EntriesInRange(first, horizon, kNoLimit);
    }
    case kRepeatUntilCount: {
      const auto committed = static_cast<std::int64_t>(committedDates_.size());
      if (committed >= repeatUntil_) return {};
      const DateNumber horizon = HorizonFor(date);
      if (horizon < first) return {};
      // Only as many as the count leaves, the earliest first.
      return EntriesInRange(first, horizon, static_cast<std::size_t>(repeatUntil_ - committed));
    }
    case kRepeatUntilDate: {
      const DateNumber today = date.dateNumber();
      DateNumber horizon = today;
      if (today >= repeatUntil_ && today >= first) {
        horizon = repeatUntil_;
      } else if (usePrecedingFriday_) {
        // Reach over the weekend, but never past the last date.
        if (date.dayOfWeek() == 5) {
          if (repeatUntil_ >= daysLater(date, 2)) {
            horizon = daysLater(date, 2);
          } else if (repeatUntil_ >= daysLater(date, 1)) {
            horizon = daysLater(date, 1);
          }
        } else if (date.dayOfWeek() == 6 && repeatUntil_ > today) {
          horizon = daysLater(date, 1);
        }
      }
      if (horizon < first) return {};
      return EntriesInRange(first, horizon, kNoLimit);
    }
    default:
      return {};
  }
}

int TARNAccountSchedule::NextEntryDateIsGreaterThan(const TARNAccountSchedule& other) const {
  const DateNumber mine = NextEntryDate();
  const DateNumber theirs = other.NextEntryDate();
  if (mine > theirs) return 1;
  if (mine < theirs) return -1;
  return 0;
}

int TARNAccountSchedule::NextEntryDateIsGreaterThan_Reversed(
    const TARNAccountSchedule& other) const {
  return -NextEntryDateIsGreaterThan(other);
}

}  // namespace tarn
