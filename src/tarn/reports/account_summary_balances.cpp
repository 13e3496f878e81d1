// A summary's currency, the balances of its accounts in that currency, and
// the look-ups over its entries.

#include <functional>

#include "tarn/account/account.h"
#include "tarn/account/accounts_controller.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/currency.h"
#include "tarn/reports/account_summary.h"

namespace tarn {

namespace {

// The sum over the accounts of each one's value, converted from its currency.
template <typename Value>
double SumOverAccounts(const TARNAccountSummary& summary, Value&& value) {
  const std::shared_ptr<PFCurrency> target = summary.currency();
  double sum = 0.0;
  for (const TARNAccount* account : summary.accounts()) {
    if (!account) continue;
    const double own = value(*account);
    const auto& from = account->currency();
    sum += from ? from->convertAmount(own, target) : own;
  }
  return sum;
}

// The first entry for which `better(entry, best)` never held.
template <typename Better>
std::shared_ptr<TARNAccountEntry> BestEntry(const TARNAccountSummary::Entries& entries,
                                            Better&& better) {
  const std::shared_ptr<TARNAccountEntry>* best = nullptr;
  for (const auto& entry : entries) {
    if (entry && (!best || better(*entry, **best))) best = &entry;
  }
  return best ? *best : nullptr;
}

template <typename Keep>
TARNAccountSummary::Entries EntriesWhere(const TARNAccountSummary::Entries& entries, Keep&& keep) {
  TARNAccountSummary::Entries kept;
  for (const auto& entry : entries) {
    if (entry && keep(*entry)) kept.push_back(entry);
  }
  return kept;
}

}  // namespace

std::shared_ptr<PFCurrency> TARNAccountSummary::currency() const {
  if (accounts_.empty() || !accounts_.front()) return std::make_shared<PFCurrency>();
  const TARNAccount& first = *accounts_.front();
  if (accounts_.size() > 1 && first.accountsController()) {
    if (auto shared = first.accountsController()->currency()) return shared;
  }
  if (first.currency()) return first.currency();
  return std::make_shared<PFCurrency>();
}

double TARNAccountSummary::GetStartingBalance() const {
  return SumOverAccounts(*this,
                         [](const TARNAccount& account) { return account.GetStartingBalance(); });
}

double TARNAccountSummary::GetStartingBalanceBeforeDate(DateNumber date) const {
  const std::shared_ptr<PFCurrency> target = currency();
  double sum = 0.0;
  for (const TARNAccount* account : accounts_) {
    if (!account) continue;
    const auto first = account->GetFirstEntry();
    if (!first || first->GetDate() >= date) continue;
    const auto& from = account->currency();
    sum += from ? from->convertAmount(account->GetStartingBalance(), target)
                : account->GetStartingBalance();
  }
  return sum;
}

double TARNAccountSummary::GetRunningBalanceBeforeDate(DateNumber date) const {
  return SumOverAccounts(*this, [date](const TARNAccount& account) {
    return account.GetRunningBalanceBeforeDate(date);
  });
}

double TARNAccountSummary::GetRunningBalanceThroughDate(DateNumber date) const {
  return SumOverAccounts(*this, [date](const TARNAccount& account) {
    return account.GetRunningBalanceThroughDate(date);
  });
}

TARNAccountSummary::Entries TARNAccountSummary::GetDebits() const {
  return EntriesWhere(entries_, [](const TARNAccountEntry& entry) { return entry.IsDebit(); });
}

TARNAccountSummary::Entries TARNAccountSummary::GetDeposits() const {
  return EntriesWhere(entries_, [](const TARNAccountEntry& entry) { return entry.IsDeposit(); });
}

std::shared_ptr<TARNAccountEntry> TARNAccountSummary::GetFirstEntry() const {
  return BestEntry(entries_, [](const TARNAccountEntry& entry, const TARNAccountEntry& best) {
    return entry.GetDate() < best.GetDate();
  });
}

std::shared_ptr<TARNAccountEntry> TARNAccountSummary::GetLastEntry() const {
  return BestEntry(entries_, [](const TARNAccountEntry& entry, const TARNAccountEntry& best) {
    return entry.GetDate() > best.GetDate();
  });
}

}  // namespace tarn
