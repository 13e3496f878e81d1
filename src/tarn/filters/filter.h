// A smart folder: a named, ordered list of condition groups that selects
// entries of an account. The account owns its smart folders (and builds
// throw-away filters for its views); a filter owns its groups and only reads
// the entries it is given. Nothing is cached between runs.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarn/filters/filter_codes.h"
#include "tarn/filters/filter_condition_group.h"
#include "tarn/platform/value.h"

namespace tarn {

class TARNFilter {
 public:
  using ConditionGroups = std::vector<std::shared_ptr<TARNFilterConditionGroup>>;

  // Empty name, no groups (so every entry passes).
  TARNFilter() = default;
  // A member-wise copy would share the groups; copies go through
  // filterWithFilter.
  TARNFilter(const TARNFilter&) = delete;
  TARNFilter& operator=(const TARNFilter&) = delete;

  // A deep copy through the filter's dictionary: new groups and conditions,
  // nothing shared with the source. nullptr for nullptr.
  static std::shared_ptr<TARNFilter> filterWithFilter(const TARNFilter* filter);
  static std::shared_ptr<TARNFilter> filterWithDictionary(const plist::Value& dictionary);
  // Reads "name" (a string) and "conditionGroups" (each element loaded as a
  // group; elements that do not load are skipped, and a value that is not an
  // array gives none). Never logs; nil, or a value that is not a dictionary,
  // gives an empty filter. Never nullptr.
  static std::shared_ptr<TARNFilter> initWithDictionary(const plist::Value& dictionary);
  // "name" and "conditionGroups", always.
  plist::Value asDictionary() const;

  const std::string& name() const { return name_; }
  // nullopt stores the empty string.
  void setName(std::optional<std::string> name) { name_ = name ? std::move(*name) : std::string(); }

  ConditionGroups& conditionGroups() { return conditionGroups_; }
  const ConditionGroups& conditionGroups() const { return conditionGroups_; }
  // Ignored for nullptr and for a group already in the list.
  void addConditionGroup(std::shared_ptr<TARNFilterConditionGroup> group);
  // Ignored for nullptr, a group already in the list, a negative index or one
  // greater than the count; the count itself appends.
  void insertConditionGroup(std::shared_ptr<TARNFilterConditionGroup> group, std::int32_t index);
  // Removes every occurrence; ignored when absent.
  void removeConditionGroup(const std::shared_ptr<TARNFilterConditionGroup>& group);
  // Ignored when negative or not less than the count.
  void removeConditionGroupAtIndex(std::int32_t index);
  void removeAllConditionGroups() { conditionGroups_.clear(); }

  // The passing entries. Groups in order: an "and" group narrows the
  // and-list (the input at first) less what "or" groups took; an "or" group
  // adds its result on the whole input, less what earlier "or" groups took,
  // to the or-set; groups of another logic are skipped. The result is the
  // and-list less the or-set, followed by the or-set, so a first group
  // marked "or" passes every entry. Throws std::out_of_range only from an
  // "any" group that runs out of conditions.
  TARNEntryList filterEntries(const TARNEntryList& entries) const;
  // The sum of GetAmount over the passing entries that are not void, in order,
  // from 0.0.
  double filterAndTotalEntries(const TARNEntryList& entries) const;

 private:
  std::string name_;
  ConditionGroups conditionGroups_;
};

}  // namespace tarn
