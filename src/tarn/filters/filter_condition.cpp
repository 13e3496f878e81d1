#include "tarn/filters/filter_condition.h"

#include "tarn/filters/prepared_condition.h"

namespace tarn {

std::shared_ptr<TARNFilterCondition> TARNFilterCondition::initWithDictionary(
    const plist::Value& dictionary) {
  if (!dictionary.isNil() && !dictionary.isDictionary()) return nullptr;
  auto condition = std::make_shared<TARNFilterCondition>();
  plist::ReadNumber(dictionary, "category", condition->category_);
  plist::ReadNumber(dictionary, "logic", condition->logic_);
  plist::ReadNumber(dictionary, "qualifier", condition->qualifier_);
  if (const plist::Value* data = dictionary.find("data")) condition->data_ = *data;
  return condition;
}

std::shared_ptr<TARNFilterCondition> TARNFilterCondition::initWithCategory(std::int32_t category,
                                                                           std::int32_t qualifier,
                                                                           std::int32_t logic,
                                                                           plist::Value data) {
  auto condition = std::make_shared<TARNFilterCondition>();
  condition->category_ = category;
  condition->qualifier_ = qualifier;
  condition->logic_ = logic;
  condition->data_ = std::move(data);
  return condition;
}

plist::Value TARNFilterCondition::asDictionary() const {
  plist::Dictionary dictionary;
  dictionary.emplace("category", plist::Value(category_));
  dictionary.emplace("logic", plist::Value(logic_));
  dictionary.emplace("qualifier", plist::Value(qualifier_));
  if (!data_.isNil()) dictionary.emplace("data", data_);
  return plist::Value(std::move(dictionary));
}

TARNEntryList TARNFilterCondition::filterByField(const TARNEntryList& entries,
                                                 std::int32_t field) const {
  if (entries.empty()) return {};
  PreparedCondition test(*this, field);
  if (!test.restricts()) return entries;
  TARNEntryList kept;
  for (const auto& entry : entries) {
    if (test.keeps(*entry)) kept.push_back(entry);
  }
  return kept;
}

TARNEntryList TARNFilterCondition::filterEntries(const TARNEntryList& entries) const {
  switch (category_) {
    case kFieldDescription:
    case kFieldDate:
    case kFieldAmount:
    case kFieldType:
    case kFieldCheck:
    case kFieldToFrom:
    case kFieldResolved:
    case kFieldTaxDeductible:
    case kFieldCategory:
    case kFieldVoid:
    case kFieldCheckNumberText:
    case kFieldAmountText:
    case kFieldSplitCategory:
    case kFieldSplitDescription:
    case kFieldNotes:
    case kFieldAnything:
      return filterByField(entries, category_);
    default:
      return entries;  // an unknown field restricts nothing
  }
}

TARNEntryList TARNFilterCondition::filter_Description(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldDescription);
}
TARNEntryList TARNFilterCondition::filter_Date(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldDate);
}
TARNEntryList TARNFilterCondition::filter_Amount(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldAmount);
}
TARNEntryList TARNFilterCondition::filter_Type(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldType);
}
TARNEntryList TARNFilterCondition::filter_Check(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldCheck);
}
TARNEntryList TARNFilterCondition::filter_ToFrom(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldToFrom);
}
TARNEntryList TARNFilterCondition::filter_Cleared(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldResolved);
}
TARNEntryList TARNFilterCondition::filter_TaxDeductible(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldTaxDeductible);
}
TARNEntryList TARNFilterCondition::filter_Category(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldCategory);
}
TARNEntryList TARNFilterCondition::filter_Void(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldVoid);
}
TARNEntryList TARNFilterCondition::filter_CheckString(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldCheckNumberText);
}
TARNEntryList TARNFilterCondition::filter_AmountString(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldAmountText);
}
TARNEntryList TARNFilterCondition::filter_SplitCategory(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldSplitCategory);
}
TARNEntryList TARNFilterCondition::filter_SplitDescription(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldSplitDescription);
}
TARNEntryList TARNFilterCondition::filter_Notes(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldNotes);
}
TARNEntryList TARNFilterCondition::filter_General(const TARNEntryList& entries) const {
  return filterByField(entries, kFieldAnything);
}

}  // namespace tarn
