// Recording the entry form into an account.

#include "tarn/book/entry_form.h"

#include <cmath>
#include <stdexcept>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/book_entries.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/amounts.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/model/split_line_item.h"

namespace tarn {

namespace {

std::shared_ptr<TARNAccountEntryType> FormType(const TARNAccount& account, const EntryForm& form) {
  if (!form.type.empty()) return EntryTypeWithName(account, form.type, form.deposit);
  return form.deposit ? account.defaultDepositType() : account.defaultDebitType();
}

std::string CategoryName(const TARNAccount& account, std::int32_t number) {
  if (number < 0) return {};
  auto category = account.accountEntryCategoryForNumber(number);
  return category ? category->fullName() : std::string();
}

std::int32_t CategoryNumber(const TARNBook& book, const std::string& name) {
  if (name.empty()) return -1;
  auto category = book.categoryWithFullName(name);
  return category ? category->number() : -1;
}

double Signed(const EntryForm& form, double magnitude) {
  return form.deposit ? std::fabs(magnitude) : -std::fabs(magnitude);
}

std::vector<EntryKey> KeysOf(const TARNBook& book, const TARNAccount& account,
                             const std::shared_ptr<TARNAccountEntry>& entry) {
  std::vector<EntryKey> keys;
  if (!entry) return keys;
  keys.push_back({account.GetNumber(), entry->GetNumber()});
  if (auto mirror = LinkedEntry(book, *entry)) {
    keys.push_back({mirror->GetAccount()->GetNumber(), mirror->GetNumber()});
  }
  return keys;
}

void Finish(std::optional<EntriesChange>* change, const TARNBook& book, const TARNAccount& account,
            const std::shared_ptr<TARNAccountEntry>& entry) {
  if (change && *change) (*change)->finish(book, KeysOf(book, account, entry));
}

}  // namespace

EntryForm EntryFormFromEntry(const TARNBook& book, const TARNAccount& account,
                             const TARNAccountEntry& entry) {
  EntryForm form;
  form.date = entry.GetDate();
  form.deposit = entry.GetAmount() > 0 || (entry.GetAmount() == 0 && entry.IsDeposit());
  form.type = EntryTypeName(account, entry);
  if (entry.IsCheck()) form.checkNumber = entry.GetCheckNumber();
  form.toFrom = entry.GetToFrom();
  form.description = entry.GetDescription();
  form.category = CategoryName(account, entry.GetCategory());
  form.amount = std::fabs(entry.GetAmount());
  form.notes = entry.GetNotes();
  form.cleared = entry.GetCleared() != 0;
  form.taxDeductible = entry.GetTaxDeductible();
  for (const auto& item : entry.splitLineItems()) {
    form.splits.push_back(
        {CategoryName(account, item->category()), item->description(), std::fabs(item->amount())});
  }
  if (auto mirror = LinkedEntry(book, entry)) {
    form.transferAccount = mirror->GetAccount()->GetNumber();
    if (account.currency() != mirror->GetAccount()->currency()) {
      form.exchangedAmount = std::fabs(entry.GetLinkedExchangedAmount());
    }
  }
  return form;
}

EntryForm NewEntryForm(const TARNAccount& account, DateNumber date) {
  EntryForm form;
  form.date = date;
  auto type = account.defaultDebitType();
  if (!type) {
    // No default chosen: the first active payment type.
    const auto debits = account.GetDebitTypes();
    if (!debits.empty()) type = debits.front();
  }
  if (type) form.type = type->GetName();
  return form;
}

bool EntryFormIsCheck(const TARNAccount& account, const EntryForm& form) {
  auto type = FormType(account, form);
  return type && type->GetIsCheck() && !form.deposit;
}

std::optional<std::string> EntryFormProblem(const TARNBook& book, const TARNAccount& account,
                                            const EntryForm& form) {
  if (form.date <= 0) return "The entry needs a date.";
  if (!form.type.empty() && !EntryTypeWithName(account, form.type, form.deposit)) {
    return "\"" + form.type + "\" is not a " + (form.deposit ? "deposit" : "payment") +
           " type of this account.";
  }
  if (!form.category.empty() && !book.categoryWithFullName(form.category)) {
    return "There is no category \"" + form.category + "\".";
  }
  for (const auto& split : form.splits) {
    if (!split.category.empty() && !book.categoryWithFullName(split.category)) {
      return "There is no category \"" + split.category + "\".";
    }
  }
  if (form.transferAccount >= 0) {
    auto other = book.accountWithNumber(form.transferAccount);
    if (!other) return "The account to transfer to no longer exists.";
    if (other.get() == &account) return "An account cannot transfer to itself.";
    if (!form.splits.empty()) return "A transfer cannot also be split.";
  }
  if (form.checkNumber && *form.checkNumber < 0) return "A check number cannot be negative.";
  return std::nullopt;
}

std::shared_ptr<TARNAccountEntry> RecordEntryForm(TARNBook& book, TARNAccount& account,
                                                  std::shared_ptr<TARNAccountEntry> entry,
                                                  const EntryForm& form,
                                                  std::optional<EntriesChange>* change) {
  if (auto problem = EntryFormProblem(book, account, form)) throw std::invalid_argument(*problem);
  if (change) change->emplace(book, KeysOf(book, account, entry));
  const bool adding = !entry;
  if (adding) entry = std::make_shared<TARNAccountEntry>();

  entry->SetDate(form.date);
  entry->SetIsDeposit(form.deposit);
  entry->SetIsDebit(!form.deposit);
  auto type = FormType(account, form);
  entry->SetType(type ? type->GetNumber() : -1);
  if (EntryFormIsCheck(account, form)) {
    entry->SetIsCheck(true);
    entry->SetCheckNumber(form.checkNumber ? *form.checkNumber
                                           : account.NextAvailableCheckNumber());
  } else {
    entry->SetIsCheck(false);
    if (!entry->IsLinked()) entry->SetCheckNumber(-1);
  }
  entry->SetToFrom(form.toFrom);
  entry->SetDescription(form.description);
  entry->SetNotes(form.notes);
  entry->SetCleared(form.cleared ? 1 : 0);
  entry->SetTaxDeductible(form.taxDeductible);
  entry->removeAllSplitLineItems();
  if (form.splits.empty()) {
    entry->SetCategory(CategoryNumber(book, form.category));
    entry->SetAmount(Signed(form, form.amount));
  } else {
    entry->SetCategory(-1);
    double total = 0.0;
    for (const auto& split : form.splits) {
      const double amount = RoundValue(Signed(form, split.amount));
      entry->addSplitLineItemWithCategory(CategoryNumber(book, split.category), split.description,
                                          form.toFrom, amount);
      total += amount;
    }
    entry->SetAmount(RoundValue(total));
  }
  if (adding) {
    entry->SetNumber(account.NextAvailableNumber());
    account.AddEntry(entry);
  }

  // The transfer: keep, replace or drop the other half.
  auto mirror = LinkedEntry(book, *entry);
  const std::int32_t linkedTo = mirror ? mirror->GetAccount()->GetNumber() : -1;
  if (mirror && linkedTo != form.transferAccount) {
    mirror->GetAccount()->RemoveEntry(mirror);
    mirror = nullptr;
  }
  if (!mirror && entry->IsLinked()) {
    entry->SetIsLinked(false);
    entry->SetLinkedEntry(-1);
    entry->SetLinkedAccount(-1);
    entry->SetLinkedExchangedAmount(0.0);
  }
  if (form.transferAccount >= 0) {
    if (mirror) {
      if (form.exchangedAmount) entry->SetLinkedExchangedAmount(*form.exchangedAmount);
      SyncTransfer(book, *entry);
    } else {
      auto other = book.accountWithNumber(form.transferAccount);
      LinkTransfer(book, account, entry, *other, form.exchangedAmount);
    }
  }
  Finish(change, book, account, entry);
  return entry;
}

void SetEntryVoid(TARNBook& book, TARNAccount& account,
                  const std::shared_ptr<TARNAccountEntry>& entry, bool isVoid,
                  std::optional<EntriesChange>* change) {
  if (change) change->emplace(book, KeysOf(book, account, entry));
  entry->SetVoid(isVoid);
  SyncTransfer(book, *entry);
  Finish(change, book, account, entry);
}

void RemoveEntry(TARNBook& book, TARNAccount& account,
                 const std::shared_ptr<TARNAccountEntry>& entry,
                 std::optional<EntriesChange>* change) {
  if (change) change->emplace(book, KeysOf(book, account, entry));
  RemoveEntryAndTransfer(book, account, entry);
  if (change && *change) (*change)->finish(book);
}

void SetEntryResolved(TARNBook& book, TARNAccount& account,
                      const std::shared_ptr<TARNAccountEntry>& entry, bool resolved,
                      std::optional<EntriesChange>* change) {
  if (change) change->emplace(book, KeysOf(book, account, entry));
  entry->SetCleared(resolved ? 1 : 0);
  Finish(change, book, account, entry);
}

}  // namespace tarn
