// A plain accounts controller that keeps its currencies and categories in
// memory: for tests, benchmarks and small hosts that have no controller of
// their own. It owns what it holds; accounts refer to it without owning it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tarn/account/accounts_controller.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"

namespace tarn {

class InMemoryAccountsController : public TARNAccountsController {
 public:
  InMemoryAccountsController() = default;
  explicit InMemoryAccountsController(std::shared_ptr<PFCurrency> defaultCurrency)
      : defaultCurrency_(std::move(defaultCurrency)) {}

  void setCurrency(std::shared_ptr<PFCurrency> currency) { defaultCurrency_ = std::move(currency); }
  // Top-level categories; their children come with them.
  std::vector<std::shared_ptr<TARNAccountEntryCategory>>& categories() { return categories_; }

  std::shared_ptr<PFCurrency> currency() override { return defaultCurrency_; }
  // The first currency of the list with exactly this code.
  std::shared_ptr<PFCurrency> currencyWithCode(const std::string& code) override {
    for (const auto& currency : currencies_) {
      if (currency && currency->code() == code) return currency;
    }
    return nullptr;
  }
  std::vector<std::shared_ptr<PFCurrency>>& currencies() override { return currencies_; }
  // The first category in pre-order with the number (walked in place, no list built).
  std::shared_ptr<TARNAccountEntryCategory> categoryWithNumber(std::int32_t number) override {
    return findNumber(categories_, number);
  }
  std::vector<std::shared_ptr<TARNAccountEntryCategory>> allCategories() override {
    std::vector<std::shared_ptr<TARNAccountEntryCategory>> all;
    for (const auto& category : categories_) {
      if (!category) continue;
      all.push_back(category);
      auto descendants = category->allChildren();
      all.insert(all.end(), descendants.begin(), descendants.end());
    }
    return all;
  }

 private:
  static std::shared_ptr<TARNAccountEntryCategory> findNumber(
      const std::vector<std::shared_ptr<TARNAccountEntryCategory>>& list, std::int32_t number) {
    for (const auto& category : list) {
      if (!category) continue;
      if (category->number() == number) return category;
      if (auto found = findNumber(category->children(), number)) return found;
    }
    return nullptr;
  }

  std::shared_ptr<PFCurrency> defaultCurrency_;
  std::vector<std::shared_ptr<PFCurrency>> currencies_;
  std::vector<std::shared_ptr<TARNAccountEntryCategory>> categories_;
};

}  // namespace tarn
