#include "tarn/model/entry_split.h"

#include <utility>

#include "tarn/model/decimal_rounding.h"
#include "tarn/platform/log.h"

namespace tarn {
namespace {

const std::string kNoText;
constexpr char kWrongFormat[] =
    "theValue is in the wrong format in TARNAccountEntrySplit:initWithDictionary";

// The array under a key, or nullptr after logging why there is none.
const plist::Array* arrayForKey(const plist::Dictionary& dictionary, std::string_view key,
                                std::string_view missingMessage) {
  auto it = dictionary.find(key);
  if (it == dictionary.end()) {
    Log(missingMessage);
    return nullptr;
  }
  if (!it->second.isArray()) {
    Log(kWrongFormat);
    return nullptr;
  }
  return &it->second.arrayValue();
}

// Array elements that are no text count as nil and leave the part as it is.
std::optional<std::string> textOf(const plist::Value& value) {
  if (!value.isString()) return std::nullopt;
  return value.stringValue();
}

}  // namespace

std::shared_ptr<TARNAccountEntrySplit> TARNAccountEntrySplit::splitWithSplit(
    const std::shared_ptr<TARNAccountEntrySplit>& split) {
  if (!split) return nullptr;
  return initWithSplit(split.get());
}

std::shared_ptr<TARNAccountEntrySplit> TARNAccountEntrySplit::initWithDictionary(
    const plist::Value& dictionary) {
  auto split = std::make_shared<TARNAccountEntrySplit>();
  split->loadFromDictionary(dictionary);
  return split;
}

std::shared_ptr<TARNAccountEntrySplit> TARNAccountEntrySplit::initWithSplit(
    const TARNAccountEntrySplit* split) {
  auto copy = std::make_shared<TARNAccountEntrySplit>();
  if (split) copy->loadFromDictionary(split->asDictionary());
  return copy;
}

void TARNAccountEntrySplit::loadFromDictionary(const plist::Value& value) {
  if (!value.isDictionary()) return;
  const plist::Dictionary& dictionary = value.dictionaryValue();
  if (const auto* descriptions = arrayForKey(
          dictionary, "descriptions",
          "No description defined for theDictionary in TARNAccountEntrySplit:initWithDictionary")) {
    for (std::size_t i = 0; i < descriptions->size(); ++i) {
      SetDescription(textOf((*descriptions)[i]), static_cast<int>(i));
    }
  }
  if (const auto* toFroms = arrayForKey(
          dictionary, "toFrom",
          "No toFroms defined for theDictionary in TARNAccountEntrySplit:initWithDictionary")) {
    for (std::size_t i = 0; i < toFroms->size(); ++i) {
      SetToFrom(textOf((*toFroms)[i]), static_cast<int>(i));
    }
  }
  if (const auto* amounts = arrayForKey(
          dictionary, "amounts",
          "No amounts defined for theDictionary in TARNAccountEntrySplit:initWithDictionary")) {
    for (std::size_t i = 0; i < amounts->size(); ++i) {
      SetAmount((*amounts)[i].doubleValue(), static_cast<int>(i));
    }
  }
}

plist::Value TARNAccountEntrySplit::asDictionary() const {
  plist::Array descriptions(descriptions_.begin(), descriptions_.end());
  plist::Array toFroms(toFroms_.begin(), toFroms_.end());
  plist::Array amounts(amounts_.begin(), amounts_.end());
  plist::Dictionary dictionary;
  dictionary.emplace("amounts", std::move(amounts));
  dictionary.emplace("descriptions", std::move(descriptions));
  dictionary.emplace("toFrom", std::move(toFroms));
  return plist::Value(std::move(dictionary));
}

void TARNAccountEntrySplit::SetDescription(std::optional<std::string> description, int index) {
  if (description && isPart(index)) descriptions_[index] = std::move(*description);
}

void TARNAccountEntrySplit::SetToFrom(std::optional<std::string> toFrom, int index) {
  if (toFrom && isPart(index)) toFroms_[index] = std::move(*toFrom);
}

void TARNAccountEntrySplit::SetAmount(double amount, int index) {
  if (index >= kPartCount) {
    Log("Split index out of range of split array in TARNAccountEntrySplit:SetAmount");
    return;
  }
  if (index < 0) return;
  amounts_[index] = RoundDecimalPlain(amount, 2);
}

void TARNAccountEntrySplit::SetEnabled(bool enabled, int index) {
  if (index < 0 || index > kPartCount) return;
  states_[index] = enabled ? 1 : 0;
}

const std::string& TARNAccountEntrySplit::GetDescription(int index) const {
  return isPart(index) ? descriptions_[index] : kNoText;
}

const std::string& TARNAccountEntrySplit::GetToFrom(int index) const {
  return isPart(index) ? toFroms_[index] : kNoText;
}

double TARNAccountEntrySplit::GetAmount(int index) const {
  return isPart(index) ? amounts_[index] : 0.0;
}

bool TARNAccountEntrySplit::GetEnabled(int index) const {
  return isPart(index) && states_[index] != 0;
}

double TARNAccountEntrySplit::GetTotal() const {
  double total = 0.0;
  for (double amount : amounts_) total += amount;
  return total;
}

}  // namespace tarn
