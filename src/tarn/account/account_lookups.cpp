// Look-ups of entries, schedules and types, type and category deactivation,
// and the scheduled entries that have come due.

#include <algorithm>
#include <cstdint>
#include <memory>

#include "tarn/account/account.h"
#include "tarn/account/ledger_entries.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {

namespace {

// The first entry of the working set that `better` prefers to every entry
// before it (a strict preference, so the earliest wins among equals).
template <typename Better>
std::shared_ptr<TARNAccountEntry> BestEntry(const TARNAccount& account, Better&& better,
                                            bool (*eligible)(const TARNAccountEntry&) = nullptr) {
  const std::shared_ptr<TARNAccountEntry>* best = nullptr;
  ForEachLedgerEntry(account, [&](const std::shared_ptr<TARNAccountEntry>& entry) {
    if (eligible && !eligible(*entry)) return;
    if (!best || better(*entry, **best)) best = &entry;
  });
  return best ? *best : nullptr;
}

std::shared_ptr<TARNAccountEntryType> TypeForName(const TARNAccount& account,
                                                  const std::string& name, bool deposit) {
  for (const TARNAccount::Types* list : {&account.types(), &account.inactiveTypes()}) {
    for (const auto& type : *list) {
      if (type && type->GetIsDeposit() == deposit && type->GetName() == name) return type;
    }
  }
  return nullptr;
}

TARNAccount::Types TypesOfDirection(const TARNAccount::Types& types, bool deposit) {
  TARNAccount::Types result;
  for (const auto& type : types) {
    if (type && type->GetIsDeposit() == deposit) result.push_back(type);
  }
  return result;
}

}  // namespace

std::shared_ptr<TARNAccountEntry> TARNAccount::GetEntryWithNumber(std::int32_t number) const {
  std::shared_ptr<TARNAccountEntry> found;
  ForEachLedgerEntry(*this, [&](const std::shared_ptr<TARNAccountEntry>& entry) {
    if (!found && entry->GetNumber() == number) found = entry;
  });
  return found;
}

std::shared_ptr<TARNAccountEntry> TARNAccount::GetFirstEntry() const {
  return BestEntry(*this, [](const TARNAccountEntry& entry, const TARNAccountEntry& best) {
    return entry.GetDate() < best.GetDate();
  });
}

std::shared_ptr<TARNAccountEntry> TARNAccount::GetLastEntry() const {
  return BestEntry(*this, [](const TARNAccountEntry& entry, const TARNAccountEntry& best) {
    return entry.GetDate() > best.GetDate();
  });
}

std::shared_ptr<TARNAccountEntry> TARNAccount::GetLastEnteredEntry() const {
  return BestEntry(*this, [](const TARNAccountEntry& entry, const TARNAccountEntry& best) {
    return entry.GetNumber() > best.GetNumber();
  });
}

std::shared_ptr<TARNAccountEntry> TARNAccount::GetLastEnteredCheck() const {
  return BestEntry(
      *this,
      [](const TARNAccountEntry& entry, const TARNAccountEntry& best) {
        return entry.GetNumber() > best.GetNumber();
      },
      [](const TARNAccountEntry& entry) { return entry.IsCheck(); });
}

std::shared_ptr<TARNAccountSchedule> TARNAccount::ScheduleForNumber(std::int32_t number) const {
  for (const auto& schedule : schedules_) {
    if (schedule && schedule->GetNumber() == number) return schedule;
  }
  return nullptr;
}

void TARNAccount::AddSchedule(const std::shared_ptr<TARNAccountSchedule>& schedule) {
  if (!schedule) return;
  schedule->SetAccount(this);
  schedules_.push_back(schedule);
}

void TARNAccount::RemoveSchedule(const std::shared_ptr<TARNAccountSchedule>& schedule) {
  std::erase(schedules_, schedule);
}

std::shared_ptr<TARNAccountEntryType> TARNAccount::debitEntryTypeForName(
    const std::string& name) const {
  return TypeForName(*this, name, false);
}

std::shared_ptr<TARNAccountEntryType> TARNAccount::depositEntryTypeForName(
    const std::string& name) const {
  return TypeForName(*this, name, true);
}

TARNAccount::Types TARNAccount::GetDebitTypes() const {
  return TypesOfDirection(types_, false);
}

TARNAccount::Types TARNAccount::GetDepositTypes() const {
  return TypesOfDirection(types_, true);
}

void TARNAccount::deactivateType(const std::shared_ptr<TARNAccountEntryType>& type) {
  if (!type) return;
  if (type == defaultDebitType_) {
    defaultDebitType_.reset();
  } else if (type == defaultDepositType_) {
    defaultDepositType_.reset();
  }
  // Held here so that removing the list's last reference cannot free it
  // before it reaches the inactive list.
  std::shared_ptr<TARNAccountEntryType> kept = type;
  std::erase(types_, kept);
  inactiveTypes_.push_back(std::move(kept));
}

void TARNAccount::deactivateCategory(const std::shared_ptr<TARNAccountEntryCategory>& category) {
  if (!category) return;
  std::shared_ptr<TARNAccountEntryCategory> kept = category;
  std::erase(categories_, kept);
  inactiveCategories_.push_back(std::move(kept));
}

bool TARNAccount::HasPendingScheduledEntries() const {
  const CalendarDate today = CalendarDate::now();
  return std::any_of(schedules_.begin(), schedules_.end(), [&](const auto& schedule) {
    return schedule && !schedule->EvaluateForDate(today).empty();
  });
}

std::int32_t TARNAccount::numberOfPendingScheduledEntriesForDate(
    const std::optional<CalendarDate>& date) const {
  if (!date) return 0;
  std::int32_t count = 0;
  for (const auto& schedule : schedules_) {
    if (schedule) count += static_cast<std::int32_t>(schedule->EvaluateForDate(*date).size());
  }
  return count;
}

}  // namespace tarn
