// Numbers for new schedules, types and categories, and check numbers: the
// highest in use, the next free one, and the first gap after a given check.

#include <algorithm>
#include <cstdint>
#include <limits>
#include <tuple>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/account/ledger_entries.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"

namespace tarn {

namespace {

// The highest check number of the working set, linked deposits left out;
// -1 when there is none.
std::int32_t HighestUsedCheckNumber(const TARNAccount& account) {
  std::int32_t highest = -1;
  ForEachLedgerEntry(account, [&](const std::shared_ptr<TARNAccountEntry>& entry) {
    if (!IsLinkedDeposit(*entry)) highest = std::max(highest, entry->GetCheckNumber());
  });
  return highest;
}

void RaiseToHighestCategoryNumber(const TARNAccount::Categories& categories,
                                  std::int32_t& highest) {
  for (const auto& category : categories) {
    if (!category) continue;
    highest = std::max(highest, category->number());
    RaiseToHighestCategoryNumber(category->children(), highest);
  }
}

}  // namespace

std::int32_t TARNAccount::NextAvailableScheduleNumber() const {
  std::int32_t highest = std::numeric_limits<std::int32_t>::min();
  bool any = false;
  for (const auto& schedule : schedules_) {
    if (!schedule) continue;
    highest = std::max(highest, schedule->GetNumber());
    any = true;
  }
  return any ? highest + 1 : 0;
}

std::int32_t TARNAccount::HighestCheckNumber() const {
  const std::int32_t highest = HighestUsedCheckNumber(*this);
  return startingCheckNumber_ > highest ? startingCheckNumber_ - 1 : highest;
}

std::int32_t TARNAccount::NextAvailableCheckNumber() const {
  const std::int32_t highest = HighestUsedCheckNumber(*this);
  return startingCheckNumber_ > highest ? startingCheckNumber_ : highest + 1;
}

std::int32_t TARNAccount::NextAvailableCheckNumberAfterEntry(const TARNAccountEntry* entry) const {
  const std::int32_t highest = HighestCheckNumber();
  if (!entry) return std::max(highest + 1, startingCheckNumber_);
  if (entry->GetCheckNumber() == highest) return highest + 1;

  // In check-number order checks come first, so only checks can follow a
  // check, and nothing that matters follows a non-check: sorting the
  // register's checks (with the entry itself) is enough.
  struct CheckKey {
    std::int32_t checkNumber;
    std::int32_t number;
    const TARNAccountEntry* entry;
  };
  std::vector<CheckKey> checks;
  for (const auto& other : entries_) {
    if (other && other->IsCheck()) {
      checks.push_back({other->GetCheckNumber(), other->GetNumber(), other.get()});
    }
  }
  std::sort(checks.begin(), checks.end(), [](const CheckKey& a, const CheckKey& b) {
    return std::tie(a.checkNumber, a.number) < std::tie(b.checkNumber, b.number);
  });

  std::int32_t candidate = entry->GetCheckNumber();
  const auto at = std::find_if(checks.begin(), checks.end(),
                               [entry](const CheckKey& key) { return key.entry == entry; });
  // The entry's own kind decides: after a linked deposit no check moves the
  // candidate.
  if (at != checks.end() && !IsLinkedDeposit(*entry)) {
    for (auto next = at + 1; next != checks.end(); ++next) {
      ++candidate;
      if (next->checkNumber > candidate) break;  // a gap
      candidate = next->checkNumber;
    }
  }
  if (candidate == highest) ++candidate;
  return candidate;
}

std::int32_t TARNAccount::NextCheckNumberAfterCheckNumber(std::int32_t n) const {
  const std::int32_t highest = HighestCheckNumber();
  if (n == highest) return highest;
  std::int32_t result = highest;
  ForEachLedgerEntry(*this, [&](const std::shared_ptr<TARNAccountEntry>& entry) {
    if (!entry->IsCheck() || IsLinkedDeposit(*entry)) return;
    const std::int32_t check = entry->GetCheckNumber();
    if (check < result && check > n) result = check;
  });
  return result;
}

std::int32_t TARNAccount::nextAvailableTypeNumber() const {
  std::int32_t highest = -1;
  for (const Types* list : {&types_, &inactiveTypes_}) {
    for (const auto& type : *list) {
      if (type) highest = std::max(highest, type->GetNumber());
    }
  }
  return highest + 1;
}

std::int32_t TARNAccount::nextAvailableCategoryNumber() const {
  std::int32_t highest = -1;
  RaiseToHighestCategoryNumber(categories_, highest);
  RaiseToHighestCategoryNumber(inactiveCategories_, highest);
  return highest + 1;
}

}  // namespace tarn
