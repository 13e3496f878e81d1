// Entry sets, balances and totals of an account. Every balance is a single
// pass over the register and the folders; none builds the combined list.

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/account/ledger_entries.h"
#include "tarn/account/register_order.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {

namespace {

// `start` plus the amounts of the non-void entries that pass.
template <typename Counts>
double SumOf(const TARNAccount& account, double start, Counts&& counts) {
  double balance = start;
  ForEachLedgerEntry(account, [&](const std::shared_ptr<TARNAccountEntry>& entry) {
    if (!entry->GetVoid() && counts(*entry)) balance += entry->GetAmount();
  });
  return balance;
}

template <typename Counts>
double BalanceOf(const TARNAccount& account, Counts&& counts) {
  return SumOf(account, account.GetStartingBalance(), std::forward<Counts>(counts));
}

template <typename Keep>
TARNAccount::Entries EntriesWhere(const TARNAccount& account, Keep&& keep) {
  TARNAccount::Entries result;
  result.reserve(LedgerEntryCapacity(account));
  ForEachLedgerEntry(account, [&](const std::shared_ptr<TARNAccountEntry>& entry) {
    if (keep(*entry)) result.push_back(entry);
  });
  return result;
}

}  // namespace

TARNAccount::Entries TARNAccount::GetAllEntries() const {
  return EntriesWhere(*this, [](const TARNAccountEntry&) { return true; });
}

TARNAccount::Entries TARNAccount::GetDebits() const {
  return EntriesWhere(*this, [](const TARNAccountEntry& entry) { return entry.IsDebit(); });
}

TARNAccount::Entries TARNAccount::GetDeposits() const {
  return EntriesWhere(*this, [](const TARNAccountEntry& entry) { return entry.IsDeposit(); });
}

double TARNAccount::GetBalance() const {
  if (!authenticated_) return 0.0;
  return BalanceOf(*this, [](const TARNAccountEntry&) { return true; });
}

double TARNAccount::GetTodaysBalance() const {
  return GetRunningBalanceThroughDate(CalendarDate::now().dateNumber());
}

double TARNAccount::GetResolvedBalance() const {
  return BalanceOf(*this, [](const TARNAccountEntry& entry) { return entry.GetCleared() != 0; });
}

double TARNAccount::GetUnresolvedBalance() const {
  return GetBalance() - GetResolvedBalance();
}

double TARNAccount::GetRunningBalanceBeforeDate(DateNumber date) const {
  return BalanceOf(*this, [date](const TARNAccountEntry& entry) { return entry.GetDate() < date; });
}

double TARNAccount::GetRunningBalanceThroughDate(DateNumber date) const {
  return BalanceOf(*this,
                   [date](const TARNAccountEntry& entry) { return entry.GetDate() <= date; });
}

double TARNAccount::GetRunningBalanceAtEntry(const TARNAccountEntry* entry) const {
  if (!entry) return 0.0;
  const DateNumber date = entry->GetDate();
  const bool isCheck = entry->IsCheck();
  const std::int32_t checkNumber = entry->GetCheckNumber();
  const std::int32_t number = entry->GetNumber();
  // On the entry's own day, checks come first by check number, then the other
  // entries in the order they were entered.
  double balance = BalanceOf(*this, [&](const TARNAccountEntry& other) {
    if (&other == entry) return false;
    if (other.GetDate() != date) return other.GetDate() < date;
    if (isCheck) return other.IsCheck() && other.GetCheckNumber() <= checkNumber;
    return other.IsCheck() || other.GetNumber() < number;
  });
  if (!entry->GetVoid()) balance += entry->GetAmount();
  return balance;
}

double TARNAccount::GetDebitsTotal() const {
  return SumOf(*this, 0.0, [](const TARNAccountEntry& entry) { return entry.IsDebit(); });
}

double TARNAccount::GetDepositsTotal() const {
  return SumOf(*this, 0.0, [](const TARNAccountEntry& entry) { return entry.IsDeposit(); });
}

void TARNAccount::CacheRunningBalances() {
  std::vector<RegisterOrderKey> order;
  order.reserve(LedgerEntryCapacity(*this));
  std::uint32_t position = 0;
  ForEachLedgerEntry(*this, [&](const std::shared_ptr<TARNAccountEntry>& entry) {
    order.push_back(MakeRegisterOrderKey(*entry, position++));
  });
  std::sort(order.begin(), order.end());

  double running = startingBalance_;
  for (const RegisterOrderKey& key : order) {
    if (!key.entry->GetVoid()) running += key.entry->GetAmount();
    key.entry->SetCachedRunningBalance(running);
  }
}

}  // namespace tarn
