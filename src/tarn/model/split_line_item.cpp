#include "tarn/model/split_line_item.h"

#include <string_view>
#include <utility>

namespace tarn {

using namespace std::string_view_literals;

std::shared_ptr<TARNAccountEntrySplitLineItem> TARNAccountEntrySplitLineItem::initWithDictionary(
    const plist::Value& dictionary) {
  auto item = std::make_shared<TARNAccountEntrySplitLineItem>();
  item->loadFromDictionary(dictionary.dictionaryValue());
  return item;
}

std::shared_ptr<TARNAccountEntrySplitLineItem> TARNAccountEntrySplitLineItem::initWithCategory(
    std::int32_t category, std::optional<std::string> description,
    std::optional<std::string> toFrom, double amount, double exchangedAmount) {
  auto item = std::make_shared<TARNAccountEntrySplitLineItem>();
  item->setCategory(category);
  item->setDescription(std::move(description));
  item->setToFrom(std::move(toFrom));
  item->setAmount(amount);
  item->setExchangedAmount(exchangedAmount);
  return item;
}

void TARNAccountEntrySplitLineItem::loadFromDictionary(const plist::Dictionary& dictionary) {
  // Keys are optional and read silently; a value of the wrong kind is passed
  // over. One pass over the keys: a register holds many of these.
  for (const auto& [key, value] : dictionary) {
    const std::string_view name = key;
    if (name == "category") {
      if (value.isNumber()) category_ = value.intValue();
    } else if (name == "toFrom") {
      if (value.isString()) toFrom_ = value.stringValue();
    } else if (name == "description") {
      if (value.isString()) description_ = value.stringValue();
    } else if (name == "amount") {
      if (value.isNumber()) amount_ = value.doubleValue();
    } else if (name == "exchangedAmount") {
      if (value.isNumber()) exchangedAmount_ = value.doubleValue();
    }
  }
}

plist::Value TARNAccountEntrySplitLineItem::asDictionary() const {
  // Appended in key order: no searching or comparing while building.
  plist::Dictionary dictionary;
  dictionary.reserve(5);
  dictionary.appendSorted("amount"sv, amount_);
  dictionary.appendSorted("category"sv, std::int64_t{category_});
  dictionary.appendSorted("description"sv, description_);
  dictionary.appendSorted("exchangedAmount"sv, exchangedAmount_);
  dictionary.appendSorted("toFrom"sv, toFrom_);
  return plist::Value(std::move(dictionary));
}

void TARNAccountEntrySplitLineItem::setToFrom(std::optional<std::string> toFrom) {
  toFrom_ = toFrom ? std::move(*toFrom) : std::string();
}

void TARNAccountEntrySplitLineItem::setDescription(std::optional<std::string> description) {
  description_ = description ? std::move(*description) : std::string();
}

}  // namespace tarn
