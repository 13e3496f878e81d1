// Names of types and categories, look-ups by name, and transfers.

#include "tarn/book/book_entries.h"

#include <cmath>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/book/book.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/text.h"

namespace tarn {

std::string EntryTypeName(const TARNAccount& account, const TARNAccountEntry& entry) {
  if (entry.GetType() < 0) return {};
  auto type = account.accountEntryTypeForNumber(entry.GetType());
  return type ? type->GetName() : std::string();
}

std::string EntryCategoryText(const TARNAccount& account, const TARNAccountEntry& entry) {
  if (!entry.splitLineItems().empty()) return "Split";
  if (entry.GetCategory() < 0) return {};
  auto category = account.accountEntryCategoryForNumber(entry.GetCategory());
  return category ? category->fullName() : std::string();
}

std::shared_ptr<TARNAccountEntryType> EntryTypeWithName(const TARNAccount& account,
                                                        std::string_view name, bool deposit) {
  for (const auto* list : {&account.types(), &account.inactiveTypes()}) {
    for (const auto& type : *list) {
      if (type->GetIsDeposit() == deposit && CaseInsensitiveEqual(type->GetName(), name)) {
        return type;
      }
    }
  }
  return nullptr;
}

std::shared_ptr<TARNAccountFolder> FolderWithName(const TARNAccount& account,
                                                  std::string_view name) {
  for (const auto& folder : account.folders()) {
    if (CaseInsensitiveEqual(folder->name(), name)) return folder;
  }
  return nullptr;
}

std::shared_ptr<TARNFilter> SmartFolderWithName(const TARNAccount& account, std::string_view name) {
  for (const auto& smartFolder : account.smartFolders()) {
    if (CaseInsensitiveEqual(smartFolder->name(), name)) return smartFolder;
  }
  return nullptr;
}

namespace {

// syncToEntry copies the amount as it stands when both accounts share a
// currency; the mirror of money out is money in, so the host turns the sign.
// Between currencies the exchanged amounts already carry each side's sign.
void Mirror(const TARNAccountEntry& source, TARNAccountEntry& mirror) {
  source.syncToEntry(mirror);
  const TARNAccount* from = source.GetAccount();
  const TARNAccount* to = mirror.GetAccount();
  if (from && to && from->currency() == to->currency()) {
    mirror.SetAmount(-source.GetAmount());
    mirror.SetLinkedExchangedAmount(source.GetAmount());
    for (const auto& item : mirror.splitLineItems()) {
      item->setAmount(-item->amount());
      item->setExchangedAmount(-item->exchangedAmount());
    }
  }
  const std::int32_t type = mirror.IsDeposit() ? TARNAccountEntryType::kTypeTransferIn
                                               : TARNAccountEntryType::kTypeTransferOut;
  if (to && to->accountEntryTypeForNumber(type)) mirror.SetType(type);
}

}  // namespace

std::shared_ptr<TARNAccountEntry> LinkTransfer(TARNBook& /*book*/, TARNAccount& from,
                                               const std::shared_ptr<TARNAccountEntry>& entry,
                                               TARNAccount& to,
                                               std::optional<double> exchangedAmount) {
  const double amount = entry->GetAmount();
  double exchanged = -amount;
  if (from.currency() != to.currency()) {
    exchanged = exchangedAmount ? std::fabs(*exchangedAmount)
                                : std::fabs(from.currency()->convertAmount(amount, to.currency()));
    if (amount > 0) exchanged = -exchanged;
  }
  auto mirror = std::make_shared<TARNAccountEntry>();
  mirror->SetNumber(to.NextAvailableNumber());
  to.AddEntry(mirror);
  entry->SetIsLinked(true);
  entry->SetLinkedEntry(mirror->GetNumber());
  entry->SetLinkedAccount(to.GetNumber());
  entry->SetLinkedExchangedAmount(exchanged);
  if (entry->GetToFrom().empty()) entry->SetToFrom(to.GetName());
  Mirror(*entry, *mirror);
  from.setLastFromAccount(from.GetNumber());
  from.setLastToAccount(to.GetNumber());
  return mirror;
}

std::shared_ptr<TARNAccountEntry> LinkedEntry(const TARNBook& book, const TARNAccountEntry& entry) {
  if (!entry.IsLinked()) return nullptr;
  auto other = book.accountWithNumber(entry.GetLinkedAccount());
  if (!other) return nullptr;
  auto mirror = other->GetEntryWithNumber(entry.GetLinkedEntry());
  if (!mirror || !mirror->IsLinked()) return nullptr;
  return mirror;
}

void SyncTransfer(const TARNBook& book, TARNAccountEntry& entry) {
  auto mirror = LinkedEntry(book, entry);
  if (!mirror) return;
  if (entry.GetAccount() && mirror->GetAccount() &&
      entry.GetAccount()->currency() != mirror->GetAccount()->currency()) {
    // Keep the exchanged amount's sign opposite to the entry's.
    const double exchanged = std::fabs(entry.GetLinkedExchangedAmount());
    entry.SetLinkedExchangedAmount(entry.GetAmount() > 0 ? -exchanged : exchanged);
  }
  Mirror(entry, *mirror);
}

void RemoveEntryAndTransfer(const TARNBook& book, TARNAccount& account,
                            const std::shared_ptr<TARNAccountEntry>& entry) {
  if (auto mirror = LinkedEntry(book, *entry)) {
    if (TARNAccount* other = mirror->GetAccount()) other->RemoveEntry(mirror);
  }
  account.RemoveEntry(entry);
}

}  // namespace tarn
