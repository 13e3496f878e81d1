#include "tarn/model/entry_type.h"

#include <algorithm>
#include <utility>

#include "tarn/platform/localized.h"
#include "tarn/platform/text.h"

namespace tarn {

std::shared_ptr<TARNAccountEntryType> TARNAccountEntryType::initWithDictionary(
    const plist::Value& dictionary) {
  auto type = std::make_shared<TARNAccountEntryType>();
  // find() answers nullptr for every key of a nil or non-dictionary value.
  if (const plist::Value* name = dictionary.find("name"); name && name->isString()) {
    type->SetName(name->stringValue());
  }
  if (const plist::Value* isCheck = dictionary.find("isCheck")) {
    type->SetIsCheck(isCheck->boolValue());
  }
  if (const plist::Value* isDeposit = dictionary.find("isDeposit")) {
    type->SetIsDeposit(isDeposit->boolValue());
  }
  if (const plist::Value* number = dictionary.find("number")) {
    type->SetNumber(number->intValue());
  }
  return type;
}

plist::Value TARNAccountEntryType::asDictionary() const {
  plist::Dictionary dictionary;
  dictionary.emplace("name", name_);
  dictionary.emplace("isCheck", isCheck_);
  dictionary.emplace("isDeposit", isDeposit_);
  dictionary.emplace("number", std::int64_t{number_});
  return dictionary;
}

std::vector<std::shared_ptr<TARNAccountEntryType>> TARNAccountEntryType::defaultTypes() {
  struct Default {
    int32_t number;
    const char* name;
    bool isCheck;
    bool isDeposit;
  };
  // "Transfer" stands twice: a debit and a deposit, told apart by number only.
  static constexpr Default kDefaults[] = {
      {kTypeATM, "ATM", false, false},
      {kTypeAutomaticDraft, "Automatic Draft", false, false},
      {kTypeCash, "Cash", false, false},
      {kTypeCashiersCheck, "Cashier's Check", false, false},  // no check number
      {kTypeCheck, "Check", true, false},
      {kTypeDebitCard, "Debit Card", false, false},
      {kTypeDraft, "Draft", false, false},
      {kTypeMoneyOrder, "Money Order", false, false},
      {kTypeOnlinePayment, "Online Payment", false, false},
      {kTypeTransferOut, "Transfer", false, false},
      {kTypeDeposit, "Deposit", false, true},
      {kTypeDirectDeposit, "Direct Deposit", false, true},
      {kTypeTransferIn, "Transfer", false, true},
  };
  std::vector<std::shared_ptr<TARNAccountEntryType>> types;
  types.reserve(std::size(kDefaults));
  for (const Default& entry : kDefaults) {
    auto type = std::make_shared<TARNAccountEntryType>();
    type->SetName(Localized(entry.name));
    type->SetNumber(entry.number);
    type->SetIsCheck(entry.isCheck);
    type->SetIsDeposit(entry.isDeposit);
    types.push_back(std::move(type));
  }
  std::stable_sort(types.begin(), types.end(),
                   [](const auto& a, const auto& b) { return a->NameIsGreaterThan(*b) < 0; });
  return types;
}

void TARNAccountEntryType::SetName(std::optional<std::string> name) {
  if (name) name_ = std::move(*name);
}

int TARNAccountEntryType::NameIsGreaterThan(const TARNAccountEntryType& other) const {
  return CaseInsensitiveCompare(name_, other.name_);
}

}  // namespace tarn
