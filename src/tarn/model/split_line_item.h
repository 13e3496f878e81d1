// One line of a split entry: a category, a party, a description and this
// line's share of the entry's amount (and of its amount in the linked
// account's currency). Owned by its entry's line-item list; refers to its
// category by number only.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tarn/platform/value.h"

namespace tarn {

class TARNAccountEntrySplitLineItem {
 public:
  TARNAccountEntrySplitLineItem() = default;

  // Applies each of "category", "toFrom", "description", "amount" and
  // "exchangedAmount" that is present with the right kind; nothing is logged.
  static std::shared_ptr<TARNAccountEntrySplitLineItem> initWithDictionary(
      const plist::Value& dictionary);
  static std::shared_ptr<TARNAccountEntrySplitLineItem> initWithCategory(
      std::int32_t category, std::optional<std::string> description,
      std::optional<std::string> toFrom, double amount, double exchangedAmount);

  plist::Value asDictionary() const;

  std::int32_t category() const { return category_; }
  void setCategory(std::int32_t category) { category_ = category; }
  const std::string& toFrom() const { return toFrom_; }
  // nullopt stores the empty string.
  void setToFrom(std::optional<std::string> toFrom);
  const std::string& description() const { return description_; }
  void setDescription(std::optional<std::string> description);
  double amount() const { return amount_; }
  // Stored as given: unlike the entry's SetAmount, a line keeps every digit.
  void setAmount(double amount) { amount_ = amount; }
  double exchangedAmount() const { return exchangedAmount_; }
  void setExchangedAmount(double amount) { exchangedAmount_ = amount; }

  friend bool operator==(const TARNAccountEntrySplitLineItem&,
                         const TARNAccountEntrySplitLineItem&) = default;

 private:
  friend class TARNAccountEntry;  // loads lines straight from the entry's dictionary
  void loadFromDictionary(const plist::Dictionary& dictionary);

  std::int32_t category_ = -1;
  std::string toFrom_;
  std::string description_;
  double amount_ = 0.0;
  double exchangedAmount_ = 0.0;
};

}  // namespace tarn
