// Walks over an account's working set of entries (the register, then each
// folder's entries in folder order) without building the combined list, for
// the ledger operations that only read. The account owns the entries; the
// walk borrows them for the length of the call.
// Internal to the account module: not installed.
#pragma once

#include <cstddef>
#include <memory>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/model/account_entry.h"

namespace tarn {

// Calls visit(const std::shared_ptr<TARNAccountEntry>&) for every non-null
// entry of the working set, in order.
template <typename Visit>
void ForEachLedgerEntry(const TARNAccount& account, Visit&& visit) {
  for (const auto& entry : account.GetEntries()) {
    if (entry) visit(entry);
  }
  for (const auto& folder : account.folders()) {
    if (!folder) continue;
    for (const auto& entry : folder->entries()) {
      if (entry) visit(entry);
    }
  }
}

// The number of entries ForEachLedgerEntry may visit (nulls included), for
// reserving.
inline std::size_t LedgerEntryCapacity(const TARNAccount& account) {
  std::size_t count = account.GetEntries().size();
  for (const auto& folder : account.folders()) {
    if (folder) count += folder->entries().size();
  }
  return count;
}

// A linked deposit is the receiving half of a transfer: its check number is
// the other account's and is left out of this account's numbering.
inline bool IsLinkedDeposit(const TARNAccountEntry& entry) {
  return entry.IsLinked() && entry.IsDeposit();
}

}  // namespace tarn
