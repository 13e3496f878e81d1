// A small book for the filter tests: an accounts controller holding a category
// tree (Food, Auto with its child Fuel, Café), an account with three entry
// types that reaches the categories through the controller, and a maker of
// entries of that account.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/filters/filter_codes.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"

namespace tarn::testing {

inline constexpr int32_t kCheckType = 4, kDepositType = 10, kInactiveType = 12;
inline constexpr int32_t kFood = 1, kAuto = 2, kFuel = 3, kCafe = 4;

inline std::shared_ptr<TARNAccountEntryCategory> MakeCategory(const std::string& name,
                                                              int32_t number) {
  auto category = std::make_shared<TARNAccountEntryCategory>();
  category->setName(name);
  category->setNumber(number);
  return category;
}

inline std::shared_ptr<TARNAccountEntryType> MakeType(const std::string& name, int32_t number) {
  auto type = std::make_shared<TARNAccountEntryType>();
  type->SetName(name);
  type->SetNumber(number);
  return type;
}

struct EntryFields {
  std::string description = "";
  double amount = 0.0;
  DateNumber date = 20070315;
  int32_t type = -1;
  int32_t category = -1;
  std::string toFrom = "";
  std::string notes = "";
  int32_t checkNumber = -1;
};

class FilterBook {
 public:
  FilterBook() {
    auto autoCategory = MakeCategory("Auto", kAuto);
    autoCategory->addChild(MakeCategory("Fuel", kFuel));
    controller.categories() = {MakeCategory("Food", kFood), autoCategory,
                               MakeCategory("Café", kCafe)};
    account.setAccountsController(&controller);
    account.types() = {MakeType("Check", kCheckType), MakeType("Deposit", kDepositType)};
    account.inactiveTypes() = {MakeType("Old Transfer", kInactiveType)};
  }

  std::shared_ptr<TARNAccountEntry> Entry(const EntryFields& fields) {
    auto entry = std::make_shared<TARNAccountEntry>();
    entry->SetAccount(&account);
    entry->SetDescription(fields.description);
    entry->SetAmount(fields.amount);
    entry->SetDate(fields.date);
    entry->SetType(fields.type);
    entry->SetCategory(fields.category);
    entry->SetToFrom(fields.toFrom);
    entry->SetNotes(fields.notes);
    entry->SetCheckNumber(fields.checkNumber);
    if (fields.checkNumber >= 0) entry->SetIsCheck(true);
    return entry;
  }

  TARNEntryList Entries(const std::vector<EntryFields>& fields) {
    TARNEntryList entries;
    for (const EntryFields& one : fields) entries.push_back(Entry(one));
    return entries;
  }

  InMemoryAccountsController controller;
  TARNAccount account;
};

// The descriptions of the entries, in order: what most assertions compare.
inline std::vector<std::string> Descriptions(const TARNEntryList& entries) {
  std::vector<std::string> descriptions;
  for (const auto& entry : entries) descriptions.push_back(entry->GetDescription());
  return descriptions;
}

}  // namespace tarn::testing
