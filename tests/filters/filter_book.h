// A small book for the filter tests: an accounts controller holding a category
// tree (Food, Auto with its child Fuel, Café), an account with three entry
// types that reaches the categories through the controller, and a maker of
// entries of that account.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/account/accounts_controller.h"
#include "tarn/filters/filter_codes.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"

namespace tarn::testing {

inline constexpr int32_t kCheckType = 4;
inline constexpr int32_t kDepositType = 10;
inline constexpr int32_t kInactiveType = 12;
inline constexpr int32_t kFood = 1;
inline constexpr int32_t kAuto = 2;
inline constexpr int32_t kFuel = 3;
inline constexpr int32_t kCafe = 4;

class TestAccountsController : public TARNAccountsController {
 public:
  std::shared_ptr<PFCurrency> currency() override { return nullptr; }
  std::shared_ptr<PFCurrency> currencyWithCode(const std::string&) override { return nullptr; }
  std::vector<std::shared_ptr<PFCurrency>>& currencies() override { return currencies_; }
  std::shared_ptr<TARNAccountEntryCategory> categoryWithNumber(int32_t number) override {
    ++lookups;
    for (const auto& category : allCategories()) {
      if (category->number() == number) return category;
    }
    return nullptr;
  }
  std::vector<std::shared_ptr<TARNAccountEntryCategory>> allCategories() override {
    std::vector<std::shared_ptr<TARNAccountEntryCategory>> all;
    for (const auto& root : roots) {
      all.push_back(root);
      for (const auto& child : root->allChildren()) all.push_back(child);
    }
    return all;
  }

  std::vector<std::shared_ptr<TARNAccountEntryCategory>> roots;
  int lookups = 0;

 private:
  std::vector<std::shared_ptr<PFCurrency>> currencies_;
};

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
    controller.roots = {MakeCategory("Food", kFood), autoCategory, MakeCategory("Café", kCafe)};
    account.setAccountsController(&controller);
    account.types() = {MakeType("Check", kCheckType), MakeType("Deposit", kDepositType)};
    account.inactiveTypes() = {MakeType("Old Transfer", kInactiveType)};
  }
  FilterBook(const FilterBook&) = delete;
  FilterBook& operator=(const FilterBook&) = delete;

  std::shared_ptr<TARNAccountEntry> Entry(const EntryFields& fields) {
    auto entry = std::make_shared<TARNAccountEntry>();
    entry->SetAccount(&account);
    entry->SetNumber(nextNumber_++);
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

  // Entries dated by the given date numbers, described by their date.
  TARNEntryList Dated(const std::vector<DateNumber>& dates) {
    TARNEntryList entries;
    for (DateNumber date : dates) {
      entries.push_back(Entry({.description = std::to_string(date), .date = date}));
    }
    return entries;
  }

  TestAccountsController controller;
  TARNAccount account;

 private:
  int32_t nextNumber_ = 0;
};

// The descriptions of the entries, in order: what most assertions compare.
inline std::vector<std::string> Descriptions(const TARNEntryList& entries) {
  std::vector<std::string> descriptions;
  for (const auto& entry : entries) descriptions.push_back(entry->GetDescription());
  return descriptions;
}

inline std::vector<DateNumber> Dates(const TARNEntryList& entries) {
  std::vector<DateNumber> dates;
  for (const auto& entry : entries) dates.push_back(entry->GetDate());
  return dates;
}

}  // namespace tarn::testing
