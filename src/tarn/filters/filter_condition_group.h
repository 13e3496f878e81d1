// A condition group of a smart folder: conditions that must all hold, or of
// which any may hold, and how the group joins the groups before it. Owned by
// its filter; it owns its conditions and only reads the entries it is given.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tarn/filters/filter_codes.h"
#include "tarn/filters/filter_condition.h"
#include "tarn/platform/value.h"

namespace tarn {

class TARNFilterConditionGroup {
 public:
  using Conditions = std::vector<std::shared_ptr<TARNFilterCondition>>;

  // Joins by "and", all conditions must hold, no conditions.
  TARNFilterConditionGroup() = default;
  // A member-wise copy would share the conditions; the filter's deep copy
  // goes through the dictionaries.
  TARNFilterConditionGroup(const TARNFilterConditionGroup&) = delete;
  TARNFilterConditionGroup& operator=(const TARNFilterConditionGroup&) = delete;

  // Reads "logic", "qualifier" (numbers; another kind keeps the default) and
  // "conditions" (each element loaded as a condition; elements that are not
  // dictionaries are skipped, and a value that is not an array gives none).
  // Never logs. A nil value gives the defaults; a value that is not a
  // dictionary gives nullptr.
  static std::shared_ptr<TARNFilterConditionGroup> initWithDictionary(
      const plist::Value& dictionary);
  plist::Value asDictionary() const;

  std::int32_t logic() const { return logic_; }
  void setLogic(std::int32_t logic) { logic_ = logic; }
  std::int32_t qualifier() const { return qualifier_; }
  void setQualifier(std::int32_t qualifier) { qualifier_ = qualifier; }
  Conditions& conditions() { return conditions_; }
  const Conditions& conditions() const { return conditions_; }

  // Ignored for nullptr and for a condition already in the list.
  void addCondition(std::shared_ptr<TARNFilterCondition> condition);
  // A new condition, added to the list; nullptr (and nothing added) when the
  // data is nil. Note the order: logic before qualifier.
  std::shared_ptr<TARNFilterCondition> addConditionWithCategory(std::int32_t category,
                                                                std::int32_t logic,
                                                                std::int32_t qualifier,
                                                                plist::Value data);
  // Removes every occurrence; ignored when absent.
  void removeCondition(const std::shared_ptr<TARNFilterCondition>& condition);
  // Ignored when negative or not less than the count.
  void removeConditionAtIndex(std::int32_t index);
  void removeAllConditions() { conditions_.clear(); }

  // The entries that pass, in input order. All: every condition must keep the
  // entry. Any: some condition must keep it, and every entry must be kept by
  // one: conditions are tried in order until each entry has found one, and an
  // entry that no condition keeps (or any entry, when there are no
  // conditions) throws std::out_of_range, as running past the last condition
  // always has. Another qualifier passes nothing.
  TARNEntryList filterEntries(const TARNEntryList& entries) const;

 private:
  std::int32_t logic_ = kGroupLogicAnd;
  std::int32_t qualifier_ = kGroupMatchAll;
  Conditions conditions_;
};

}  // namespace tarn
