// One condition of a smart folder: which field of an entry is tested, with
// which comparison, against which value, and whether matches or non-matches
// are kept. Owned by its condition group; it owns its value and only reads
// the entries it is given (and, through their account, types and categories).
#pragma once

#include <cstdint>
#include <memory>

#include "tarn/filters/filter_codes.h"
#include "tarn/platform/value.h"

namespace tarn {

class TARNFilterCondition {
 public:
  // Description contains "" (which restricts nothing), keeping matches.
  TARNFilterCondition() = default;

  // Reads "category", "logic", "qualifier" (numbers; another kind keeps the
  // default) and "data" (stored whatever its kind). Never logs. A nil value
  // gives the defaults; a value that is not a dictionary gives nullptr.
  static std::shared_ptr<TARNFilterCondition> initWithDictionary(const plist::Value& dictionary);
  // Note the order: qualifier before logic.
  static std::shared_ptr<TARNFilterCondition> initWithCategory(std::int32_t category,
                                                               std::int32_t qualifier,
                                                               std::int32_t logic,
                                                               plist::Value data);
  // "category", "logic", "qualifier", and "data" when it is not nil.
  plist::Value asDictionary() const;

  // The field code (see filter_codes.h), not an entry category.
  std::int32_t category() const { return category_; }
  void setCategory(std::int32_t category) { category_ = category; }
  std::int32_t logic() const { return logic_; }
  void setLogic(std::int32_t logic) { logic_ = logic; }
  std::int32_t qualifier() const { return qualifier_; }
  void setQualifier(std::int32_t qualifier) { qualifier_ = qualifier; }
  const plist::Value& data() const { return data_; }
  // Nil is allowed and stays nil (the condition then restricts nothing).
  void setData(plist::Value data) { data_ = std::move(data); }

  // The entries that pass, in input order, by the test of this condition's
  // field; an unknown field passes every entry. The input is not changed.
  // A condition whose value is missing, of the wrong kind, or (for text) empty
  // passes every entry whatever its logic.
  TARNEntryList filterEntries(const TARNEntryList& entries) const;

  // The test of one field, whatever `category` says.
  TARNEntryList filter_Description(const TARNEntryList& entries) const;
  TARNEntryList filter_Date(const TARNEntryList& entries) const;
  TARNEntryList filter_Amount(const TARNEntryList& entries) const;
  TARNEntryList filter_Type(const TARNEntryList& entries) const;
  TARNEntryList filter_Check(const TARNEntryList& entries) const;
  TARNEntryList filter_ToFrom(const TARNEntryList& entries) const;
  TARNEntryList filter_Cleared(const TARNEntryList& entries) const;
  TARNEntryList filter_TaxDeductible(const TARNEntryList& entries) const;
  TARNEntryList filter_Category(const TARNEntryList& entries) const;
  TARNEntryList filter_Void(const TARNEntryList& entries) const;
  TARNEntryList filter_CheckString(const TARNEntryList& entries) const;
  TARNEntryList filter_AmountString(const TARNEntryList& entries) const;
  TARNEntryList filter_SplitCategory(const TARNEntryList& entries) const;
  TARNEntryList filter_SplitDescription(const TARNEntryList& entries) const;
  TARNEntryList filter_Notes(const TARNEntryList& entries) const;
  TARNEntryList filter_General(const TARNEntryList& entries) const;

 private:
  TARNEntryList filterByField(const TARNEntryList& entries, std::int32_t field) const;

  std::int32_t category_ = kFieldDescription;
  std::int32_t logic_ = kConditionKeepMatches;
  std::int32_t qualifier_ = kTextContains;
  plist::Value data_ = plist::Value(std::string());
};

}  // namespace tarn
