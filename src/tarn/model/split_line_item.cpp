#include "tarn/model/split_line_item.h"

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
  // Keys are optional and read silently; a value of the wrong kind is passed over.
  if (auto it = dictionary.find("category"); it != dictionary.end() && it->second.isNumber()) {
    category_ = it->second.intValue();
  }
  if (auto it = dictionary.find("toFrom"); it != dictionary.end() && it->second.isString()) {
    toFrom_ = it->second.stringValue();
  }
  if (auto it = dictionary.find("description"); it != dictionary.end() && it->second.isString()) {
    description_ = it->second.stringValue();
  }
  if (auto it = dictionary.find("amount"); it != dictionary.end() && it->second.isNumber()) {
    amount_ = it->second.doubleValue();
  }
  if (auto it = dictionary.find("exchangedAmount");
      it != dictionary.end() && it->second.isNumber()) {
    exchangedAmount_ = it->second.doubleValue();
  }
}

plist::Value TARNAccountEntrySplitLineItem::asDictionary() const {
  // Built in key order so that every insertion lands at the end hint.
  plist::Dictionary dictionary;
  dictionary.reserve(5);
  dictionary.emplace_hint(dictionary.end(), "amount"sv, amount_);
  dictionary.emplace_hint(dictionary.end(), "category"sv, std::int64_t{category_});
  dictionary.emplace_hint(dictionary.end(), "description"sv, description_);
  dictionary.emplace_hint(dictionary.end(), "exchangedAmount"sv, exchangedAmount_);
  dictionary.emplace_hint(dictionary.end(), "toFrom"sv, toFrom_);
  return plist::Value(std::move(dictionary));
}

void TARNAccountEntrySplitLineItem::setToFrom(std::optional<std::string> toFrom) {
  toFrom_ = toFrom ? std::move(*toFrom) : std::string();
}

void TARNAccountEntrySplitLineItem::setDescription(std::optional<std::string> description) {
  description_ = description ? std::move(*description) : std::string();
}

}  // namespace tarn
