// Small builders for the ledger and export tests: entries with the fields a
// test cares about, and an account that is signed in.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tarn/account/account.h"
#include "tarn/model/account_entry.h"

namespace tarn::testing_support {

enum class Kind { Debit, Deposit, Check };

struct EntryFields {
  std::int32_t number = -1;
  DateNumber date = 20240101;
  double amount = 0.0;
  Kind kind = Kind::Debit;
  std::int32_t checkNumber = -1;
  std::string description{};
  std::string toFrom{};
  bool isVoid = false;
  bool cleared = false;
};

inline std::shared_ptr<TARNAccountEntry> MakeEntry(const EntryFields& fields) {
  auto entry = std::make_shared<TARNAccountEntry>();
  entry->SetNumber(fields.number);
  entry->SetDate(fields.date);
  entry->SetAmount(fields.amount);
  entry->SetIsDeposit(fields.kind == Kind::Deposit);
  entry->SetIsDebit(fields.kind != Kind::Deposit);
  entry->SetIsCheck(fields.kind == Kind::Check);
  entry->SetCheckNumber(fields.checkNumber);
  entry->SetDescription(fields.description);
  entry->SetToFrom(fields.toFrom);
  entry->SetVoid(fields.isVoid);
  entry->SetCleared(fields.cleared ? 1 : 0);
  return entry;
}

// Adds the entry to the account (register, or the selected folder).
inline std::shared_ptr<TARNAccountEntry> Add(TARNAccount& account, const EntryFields& fields) {
  auto entry = MakeEntry(fields);
  account.AddEntry(entry);
  return entry;
}

inline std::shared_ptr<TARNAccountEntry> Check(TARNAccount& account, std::int32_t number,
                                               std::int32_t checkNumber, DateNumber date = 20240101,
                                               double amount = -10.0) {
  return Add(account, {.number = number,
                       .date = date,
                       .amount = amount,
                       .kind = Kind::Check,
                       .checkNumber = checkNumber});
}

// A new account whose (empty) password has signed it in.
inline std::shared_ptr<TARNAccount> SignedInAccount() {
  auto account = std::make_shared<TARNAccount>();
  account->SetPassword(std::string());
  return account;
}

}  // namespace tarn::testing_support
