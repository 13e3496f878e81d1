#include "tarn/filters/filter.h"

#include <algorithm>

#include "tarn/model/account_entry.h"
#include "tarn/platform/collections.h"

namespace tarn {

std::shared_ptr<TARNFilter> TARNFilter::filterWithFilter(const TARNFilter* filter) {
  if (!filter) return nullptr;
  return initWithDictionary(filter->asDictionary());
}

std::shared_ptr<TARNFilter> TARNFilter::filterWithDictionary(const plist::Value& dictionary) {
  return initWithDictionary(dictionary);
}

std::shared_ptr<TARNFilter> TARNFilter::initWithDictionary(const plist::Value& dictionary) {
  auto filter = std::make_shared<TARNFilter>();
  if (const plist::Value* name = dictionary.find("name"); name && name->isString()) {
    filter->name_ = name->stringValue();
  }
  if (const plist::Value* groups = dictionary.find("conditionGroups")) {
    for (const plist::Value& element : groups->arrayValue()) {
      // An element that is no group dictionary does not load and is skipped.
      if (!element.isDictionary()) continue;
      if (auto group = TARNFilterConditionGroup::initWithDictionary(element)) {
        filter->conditionGroups_.push_back(std::move(group));
      }
    }
  }
  return filter;
}

plist::Value TARNFilter::asDictionary() const {
  plist::Array groups;
  groups.reserve(conditionGroups_.size());
  for (const auto& group : conditionGroups_) {
    if (group) groups.push_back(group->asDictionary());
  }
  plist::Dictionary dictionary;
  dictionary.emplace("name", plist::Value(name_));
  dictionary.emplace("conditionGroups", plist::Value(std::move(groups)));
  return plist::Value(std::move(dictionary));
}

void TARNFilter::addConditionGroup(std::shared_ptr<TARNFilterConditionGroup> group) {
  insertConditionGroup(std::move(group), static_cast<std::int32_t>(conditionGroups_.size()));
}

void TARNFilter::insertConditionGroup(std::shared_ptr<TARNFilterConditionGroup> group,
                                      std::int32_t index) {
  if (!group || index < 0 || static_cast<std::size_t>(index) > conditionGroups_.size()) return;
  if (std::find(conditionGroups_.begin(), conditionGroups_.end(), group) !=
      conditionGroups_.end()) {
    return;
  }
  conditionGroups_.insert(conditionGroups_.begin() + index, std::move(group));
}

void TARNFilter::removeConditionGroup(const std::shared_ptr<TARNFilterConditionGroup>& group) {
  std::erase(conditionGroups_, group);
}

void TARNFilter::removeConditionGroupAtIndex(std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= conditionGroups_.size()) return;
  conditionGroups_.erase(conditionGroups_.begin() + index);
}

TARNEntryList TARNFilter::filterEntries(const TARNEntryList& entries) const {
  // The and-list narrows group by group; until the first "and" group it is
  // the input itself, read in place rather than copied.
  const TARNEntryList* andList = &entries;
  TARNEntryList narrowed;
  TARNEntryList orSet;

  for (const auto& group : conditionGroups_) {
    if (!group) continue;
    if (group->logic() == kGroupLogicAnd) {
      if (orSet.empty()) {
        narrowed = group->filterEntries(*andList);
      } else {
        TARNEntryList remaining = *andList;
        removeObjectsInArray_Optimized(remaining, orSet);
        narrowed = group->filterEntries(remaining);
      }
      andList = &narrowed;
    } else if (group->logic() == kGroupLogicOr) {
      // Each "or" group judges the whole input again, less what earlier "or"
      // groups already added.
      TARNEntryList added;
      if (orSet.empty()) {
        added = group->filterEntries(entries);
      } else {
        TARNEntryList remaining = entries;
        removeObjectsInArray_Optimized(remaining, orSet);
        added = group->filterEntries(remaining);
      }
      orSet.insert(orSet.end(), std::make_move_iterator(added.begin()),
                   std::make_move_iterator(added.end()));
    }
  }

  TARNEntryList result = andList == &narrowed ? std::move(narrowed) : entries;
  removeObjectsInArray_Optimized(result, orSet);
  result.insert(result.end(), std::make_move_iterator(orSet.begin()),
                std::make_move_iterator(orSet.end()));
  return result;
}

double TARNFilter::filterAndTotalEntries(const TARNEntryList& entries) const {
  double total = 0.0;
  for (const auto& entry : filterEntries(entries)) {
    if (!entry->GetVoid()) total += entry->GetAmount();
  }
  return total;
}

}  // namespace tarn
