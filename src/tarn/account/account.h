// The account document: one check register with its entries, types and
// currency. It owns its types, local categories and currency reference; the
// accounts controller it reaches shared categories through is not owned.
// (So far only what entries ask of their account: name, number, currency and
// the type and category look-ups.)
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarn {

class PFCurrency;
class TARNAccountEntryCategory;
class TARNAccountEntryType;
class TARNAccountsController;

class TARNAccount {
 public:
  using Types = std::vector<std::shared_ptr<TARNAccountEntryType>>;
  using Categories = std::vector<std::shared_ptr<TARNAccountEntryCategory>>;

  TARNAccount();
  ~TARNAccount();
  TARNAccount(const TARNAccount&) = delete;
  TARNAccount& operator=(const TARNAccount&) = delete;

  TARNAccountsController* accountsController() const { return accountsController_; }
  void setAccountsController(TARNAccountsController* controller) {
    accountsController_ = controller;
  }

  std::int32_t GetNumber() const { return number_; }
  void SetNumber(std::int32_t number) { number_ = number; }
  const std::string& GetName() const { return name_; }
  // nullopt is ignored.
  void SetName(std::optional<std::string> name);

  const std::shared_ptr<PFCurrency>& currency() const { return currency_; }
  void setCurrency(std::shared_ptr<PFCurrency> currency);

  // Active and deactivated entry types, and the local categories (used only
  // when there is no accounts controller).
  Types& types() { return types_; }
  Types& inactiveTypes() { return inactiveTypes_; }
  Categories& categories() { return categories_; }

  // Searches the active types, then the inactive ones; nullptr when absent.
  std::shared_ptr<TARNAccountEntryType> accountEntryTypeForNumber(std::int32_t number) const;
  // Through the accounts controller when there is one, else among the local
  // categories; nullptr when absent.
  std::shared_ptr<TARNAccountEntryCategory> accountEntryCategoryForNumber(
      std::int32_t number) const;

 private:
  TARNAccountsController* accountsController_ = nullptr;
  std::int32_t number_ = -1;
  std::string name_;
  std::shared_ptr<PFCurrency> currency_;
  Types types_;
  Types inactiveTypes_;
  Categories categories_;
};

}  // namespace tarn
