// Helpers of the summary tests: a household of accounts sharing an accounts
// controller (categories with a case-twin of "Auto:Fuel", two currencies),
// and entries made in one line.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "account/account_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/reports/account_summary.h"

namespace tarn::testing {

// Category numbers of the household.
inline constexpr std::int32_t kAuto = 1;
inline constexpr std::int32_t kAutoFuel = 2;
inline constexpr std::int32_t kAutoRepairs = 3;
inline constexpr std::int32_t kFood = 4;
inline constexpr std::int32_t kFoodGroceries = 5;
inline constexpr std::int32_t kLowerAuto = 6;      // "auto"
inline constexpr std::int32_t kLowerAutoFuel = 7;  // "auto:fuel"
inline constexpr std::int32_t kSalary = 8;
inline constexpr std::int32_t kNoSuchCategory = 99;

inline std::shared_ptr<PFCurrency> MakeCurrency(std::string code, double rate) {
  auto currency = std::make_shared<PFCurrency>();
  currency->setCode(std::move(code));
  currency->setRate(rate);
  return currency;
}

// Two accounts (dollars; euros worth 1.25 dollars) on one controller whose
// default currency is the dollar.
struct Household {
  Household() {
    dollars = MakeCurrency("USD", 1.0);
    euros = MakeCurrency("EUR", 1.25);
    controller.setCurrency(dollars);
    controller.currencies() = {dollars, euros};
    controller.categories() = {
        MakeCategory("Auto", kAuto,
                     {MakeCategory("Fuel", kAutoFuel), MakeCategory("Repairs", kAutoRepairs)}),
        MakeCategory("Food", kFood, {MakeCategory("Groceries", kFoodGroceries)}),
        MakeCategory("auto", kLowerAuto, {MakeCategory("fuel", kLowerAutoFuel)}),
        MakeCategory("Salary", kSalary)};
    checking = SignedInAccount();
    checking->setAccountsController(&controller);
    checking->setCurrency(dollars);
    checking->SetName(std::string("Checking"));
    savings = SignedInAccount();
    savings->setAccountsController(&controller);
    savings->setCurrency(euros);
    savings->SetName(std::string("Savings"));
  }

  // A summary over the given accounts' entries (all of them, in order).
  std::shared_ptr<TARNAccountSummary> Summary(std::vector<TARNAccount*> accounts) const {
    auto summary = std::make_shared<TARNAccountSummary>();
    TARNAccountSummary::Entries entries;
    for (TARNAccount* account : accounts) {
      auto all = account->GetAllEntries();
      entries.insert(entries.end(), all.begin(), all.end());
    }
    summary->setEntries(std::move(entries));
    summary->setAccounts(std::move(accounts));
    return summary;
  }

  InMemoryAccountsController controller;
  std::shared_ptr<PFCurrency> dollars;
  std::shared_ptr<PFCurrency> euros;
  std::shared_ptr<TARNAccount> checking;
  std::shared_ptr<TARNAccount> savings;
};

// An entry of the account: a deposit when the amount is positive, else a
// debit; with a category and a type.
inline std::shared_ptr<TARNAccountEntry> AddEntry(TARNAccount& account, std::int32_t number,
                                                  DateNumber date, double amount,
                                                  std::int32_t category = -1,
                                                  std::string description = "",
                                                  std::string toFrom = "") {
  auto entry = Add(account, number, date, amount, std::move(description), std::move(toFrom));
  entry->SetCategory(category);
  entry->SetType(amount > 0 ? TARNAccountEntryType::kTypeDeposit
                            : TARNAccountEntryType::kTypeDebitCard);
  return entry;
}

}  // namespace tarn::testing
