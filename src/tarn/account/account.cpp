#include "tarn/account/account.h"

#include <utility>

#include "tarn/account/accounts_controller.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"

namespace tarn {

TARNAccount::TARNAccount() = default;
TARNAccount::~TARNAccount() = default;

void TARNAccount::SetName(std::optional<std::string> name) {
  if (name) name_ = std::move(*name);
}

void TARNAccount::setCurrency(std::shared_ptr<PFCurrency> currency) {
  currency_ = std::move(currency);
}

std::shared_ptr<TARNAccountEntryType> TARNAccount::accountEntryTypeForNumber(
    std::int32_t number) const {
  for (const Types* list : {&types_, &inactiveTypes_}) {
    for (const auto& type : *list) {
      if (type && type->GetNumber() == number) return type;
    }
  }
  return nullptr;
}

std::shared_ptr<TARNAccountEntryCategory> TARNAccount::accountEntryCategoryForNumber(
    std::int32_t number) const {
  if (accountsController_) return accountsController_->categoryWithNumber(number);
  for (const auto& category : categories_) {
    if (category && category->number() == number) return category;
  }
  return nullptr;
}

}  // namespace tarn
