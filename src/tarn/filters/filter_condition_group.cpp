#include "tarn/filters/filter_condition_group.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "tarn/filters/prepared_condition.h"
#include "tarn/model/account_entry.h"

namespace tarn {
namespace {

constexpr std::size_t kPrefetchDistance = 16;

// The group's conditions prepared for one run, in order, skipping nullptr
// entries of the live list.
std::vector<PreparedCondition> prepare(const TARNFilterConditionGroup::Conditions& conditions) {
  std::vector<PreparedCondition> prepared;
  prepared.reserve(conditions.size());
  for (const auto& condition : conditions) {
    if (condition) prepared.emplace_back(*condition, condition->category());
  }
  return prepared;
}

}  // namespace

std::shared_ptr<TARNFilterConditionGroup> TARNFilterConditionGroup::initWithDictionary(
    const plist::Value& dictionary) {
  if (!dictionary.isNil() && !dictionary.isDictionary()) return nullptr;
  auto group = std::make_shared<TARNFilterConditionGroup>();
  plist::ReadNumber(dictionary, "logic", group->logic_);
  plist::ReadNumber(dictionary, "qualifier", group->qualifier_);
  if (const plist::Value* conditions = dictionary.find("conditions")) {
    for (const plist::Value& element : conditions->arrayValue()) {
      if (!element.isDictionary()) continue;
      group->conditions_.push_back(TARNFilterCondition::initWithDictionary(element));
    }
  }
  return group;
}

plist::Value TARNFilterConditionGroup::asDictionary() const {
  plist::Array conditions;
  conditions.reserve(conditions_.size());
  for (const auto& condition : conditions_) {
    if (condition) conditions.push_back(condition->asDictionary());
  }
  plist::Dictionary dictionary;
  dictionary.emplace("logic", plist::Value(logic_));
  dictionary.emplace("qualifier", plist::Value(qualifier_));
  dictionary.emplace("conditions", plist::Value(std::move(conditions)));
  return plist::Value(std::move(dictionary));
}

void TARNFilterConditionGroup::addCondition(std::shared_ptr<TARNFilterCondition> condition) {
  if (!condition) return;
  if (std::find(conditions_.begin(), conditions_.end(), condition) != conditions_.end()) return;
  conditions_.push_back(std::move(condition));
}

std::shared_ptr<TARNFilterCondition> TARNFilterConditionGroup::addConditionWithCategory(
    std::int32_t category, std::int32_t logic, std::int32_t qualifier, plist::Value data) {
  if (data.isNil()) return nullptr;
  auto condition =
      TARNFilterCondition::initWithCategory(category, qualifier, logic, std::move(data));
  conditions_.push_back(condition);
  return condition;
}

void TARNFilterConditionGroup::removeCondition(
    const std::shared_ptr<TARNFilterCondition>& condition) {
  std::erase(conditions_, condition);
}

void TARNFilterConditionGroup::removeConditionAtIndex(std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= conditions_.size()) return;
  conditions_.erase(conditions_.begin() + index);
}

TARNEntryList TARNFilterConditionGroup::filterEntries(const TARNEntryList& entries) const {
  if (qualifier_ != kGroupMatchAll && qualifier_ != kGroupMatchAny) return {};

  std::vector<PreparedCondition> prepared = prepare(conditions_);
  if (qualifier_ == kGroupMatchAll) {
    // One pass with every condition per entry gives what chaining the
    // conditions' results would, without the lists in between.
    std::erase_if(prepared, [](const PreparedCondition& test) { return !test.restricts(); });
    if (prepared.empty()) return entries;
    // The tests have no side effects, so their order cannot change the
    // result: cheap ones first spare the text searches most entries.
    std::stable_sort(
        prepared.begin(), prepared.end(),
        [](const PreparedCondition& a, const PreparedCondition& b) { return a.cost() < b.cost(); });
    TARNEntryList kept;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      // Entries lie apart in memory; the first test of each is a cache miss
      // unless its entry is on its way already.
      if (i + kPrefetchDistance < entries.size()) {
        const auto* ahead = reinterpret_cast<const char*>(entries[i + kPrefetchDistance].get());
        for (std::size_t line = 0; line < sizeof(TARNAccountEntry); line += 64) {
          __builtin_prefetch(ahead + line);
        }
      }
      const TARNAccountEntry& entry = *entries[i];
      const bool passes = std::all_of(prepared.begin(), prepared.end(),
                                      [&](PreparedCondition& test) { return test.keeps(entry); });
      if (passes) kept.push_back(entries[i]);
    }
    return kept;
  }

  // Any: the conditions take turns on what the ones before did not keep, and
  // nothing stops them but running out of entries. Each entry is kept by the
  // first condition that keeps it; an entry that none keeps runs past the
  // last condition, which fails as an index out of range.
  for (const auto& entry : entries) {
    const bool kept = std::any_of(prepared.begin(), prepared.end(), [&](PreparedCondition& test) {
      return !test.restricts() || test.keeps(*entry);
    });
    if (!kept) {
      throw std::out_of_range("condition index " + std::to_string(prepared.size()) +
                              " beyond bounds of a group of " + std::to_string(prepared.size()) +
                              " conditions");
    }
  }
  return entries;
}

}  // namespace tarn
