// What an account asks of the host's accounts controller: the currencies and
// categories that every account shares. The host implements it and owns it;
// accounts hold it as a reference they do not own.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tarn {

class PFCurrency;
class TARNAccountEntryCategory;

class TARNAccountsController {
 public:
  virtual ~TARNAccountsController() = default;
  // The host's default currency.
  virtual std::shared_ptr<PFCurrency> currency() = 0;
  virtual std::shared_ptr<PFCurrency> currencyWithCode(const std::string& code) = 0;
  virtual std::vector<std::shared_ptr<PFCurrency>>& currencies() = 0;
  virtual std::shared_ptr<TARNAccountEntryCategory> categoryWithNumber(std::int32_t number) = 0;
  // Every category, flat, in pre-order (each followed by its descendants).
  virtual std::vector<std::shared_ptr<TARNAccountEntryCategory>> allCategories() = 0;
};

}  // namespace tarn
