// An entry type: how the money of an entry moved (check, ATM, deposit ...), and
// whether entries of the type are deposits and carry check numbers. The account
// owns its types; entries refer to them by type number only.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarn/platform/value.h"

namespace tarn {

class TARNAccountEntryType {
 public:
  // Named constants for the type numbers of the default set.
  static constexpr int32_t kTypeATM = 0;
  static constexpr int32_t kTypeAutomaticDraft = 1;
  static constexpr int32_t kTypeCash = 2;
  static constexpr int32_t kTypeCashiersCheck = 3;
  static constexpr int32_t kTypeCheck = 4;
  static constexpr int32_t kTypeDebitCard = 5;
  static constexpr int32_t kTypeDraft = 6;
  static constexpr int32_t kTypeMoneyOrder = 7;
  static constexpr int32_t kTypeOnlinePayment = 8;
  static constexpr int32_t kTypeTransferOut = 9;
  static constexpr int32_t kTypeDeposit = 10;
  static constexpr int32_t kTypeDirectDeposit = 11;
  static constexpr int32_t kTypeTransferIn = 12;

  // Empty name, number 0, neither a check nor a deposit.
  TARNAccountEntryType() = default;

  // Reads "name", "isCheck", "isDeposit" and "number"; missing keys (or a nil
  // or non-dictionary value) keep the defaults. Never nullptr.
  static std::shared_ptr<TARNAccountEntryType> initWithDictionary(const plist::Value& dictionary);
  // All four keys, always.
  plist::Value asDictionary() const;

  // The types a new account starts with, names localised, sorted by name.
  static std::vector<std::shared_ptr<TARNAccountEntryType>> defaultTypes();

  // Ignores nullopt.
  void SetName(std::optional<std::string> name);
  void SetIsCheck(bool isCheck) { isCheck_ = isCheck; }
  void SetIsDeposit(bool isDeposit) { isDeposit_ = isDeposit; }
  void SetNumber(int32_t number) { number_ = number; }

  std::string GetName() const { return name_; }
  bool GetIsCheck() const { return isCheck_; }
  bool GetIsDeposit() const { return isDeposit_; }
  int32_t GetNumber() const { return number_; }

  // Case-insensitive order of the names: 1 when this name sorts after the
  // other's, -1 before, 0 equal. Lists of types are sorted ascending by it.
  int NameIsGreaterThan(const TARNAccountEntryType& other) const;

 private:
  std::string name_;
  int32_t number_ = 0;
  bool isCheck_ = false;
  bool isDeposit_ = false;
};

}  // namespace tarn
