// A condition made ready for one filter run: its value read and checked, its
// text case-folded, the user's separators read and its date range resolved,
// once, so that each entry costs only its comparison. Built from a condition
// (which it does not keep) and used by conditions and groups for a single
// run; it caches type and category look-ups for that run only.
// Internal to the filters module: not installed.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tarn/filters/date_condition_range.h"
#include "tarn/filters/text_condition_matcher.h"

namespace tarn {

class TARNAccountEntry;
class TARNFilterCondition;

// Outcomes of a name test per (account or controller, number): within one
// run a number resolves to the same record for every entry, so each distinct
// number is looked up and compared once. The first owner seen (nearly always
// the only one) gets a table indexed by number; others go to a hash map.
class NameMatchCache {
 public:
  enum class Outcome : std::uint8_t { Unknown, Unresolved, NoMatch, Match };

  template <class Resolve>
  Outcome lookup(const void* owner, std::int32_t number, Resolve&& resolve) {
    if (!hasDenseOwner_) {
      hasDenseOwner_ = true;
      denseOwner_ = owner;
    }
    // Indexed from -1, the number of no type or category.
    if (owner == denseOwner_ && number >= -1 && number < kDenseLimit - 1) {
      if (dense_.empty()) dense_.assign(kDenseLimit, Outcome::Unknown);
      Outcome& slot = dense_[static_cast<std::size_t>(number + 1)];
      if (slot == Outcome::Unknown) slot = resolve();
      return slot;
    }
    const Key key{owner, number};
    const auto found = others_.find(key);
    if (found != others_.end()) return found->second;
    const Outcome outcome = resolve();
    others_.emplace(key, outcome);
    return outcome;
  }

 private:
  static constexpr std::int32_t kDenseLimit = 4096;
  struct Key {
    const void* owner;
    std::int32_t number;
    bool operator==(const Key&) const = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const {
      return std::hash<const void*>()(key.owner) ^
             (std::hash<std::int32_t>()(key.number) * 0x9E3779B97F4A7C15ULL);
    }
  };

  bool hasDenseOwner_ = false;
  const void* denseOwner_ = nullptr;
  std::vector<Outcome> dense_;
  std::unordered_map<Key, Outcome, KeyHash> others_;
};

class PreparedCondition {
 public:
  // Prepares the condition's test of `field` (normally its own field code).
  PreparedCondition(const TARNFilterCondition& condition, std::int32_t field);

  // False when every entry passes: no value, a value of the wrong kind, empty
  // text, or an unknown field.
  bool restricts() const { return restricts_; }
  // Whether the entry is kept, logic applied. Only for a condition that restricts.
  bool keeps(const TARNAccountEntry& entry);
  // A rough rank of the work per entry (0 cheapest), so that a group whose
  // conditions must all hold can try the cheap ones first.
  int cost() const;

 private:
  bool byLogic(bool match) const { return keepMatches_ == match; }
  NameMatchCache::Outcome typeOutcome(const TARNAccountEntry& entry);
  NameMatchCache::Outcome categoryOutcome(const TARNAccountEntry& entry);
  bool keepsByName(NameMatchCache::Outcome outcome) const;
  bool matchesOrEmpty(NameMatchCache::Outcome outcome) const;
  bool keepsBySplitCategory(const TARNAccountEntry& entry);
  bool keepsBySplitDescription(const TARNAccountEntry& entry) const;
  bool flagMatches(bool flag) const { return flagQualifierIs_ && flag == flagValue_; }
  bool amountMatches(double amount) const;

  std::int32_t field_;
  std::int32_t qualifier_;
  bool keepMatches_;
  bool restricts_ = false;

  TextConditionMatcher text_;
  bool textMatchesEmpty_ = false;  // the test of an unknown type or category name
  std::string decimalSeparator_;
  std::string scratch_;  // the amount's text, reused for every entry
  double amount_ = 0.0;
  bool flagValue_ = false;
  bool flagQualifierIs_ = false;
  DateConditionRange dates_;
  NameMatchCache types_;
  NameMatchCache categories_;
  NameMatchCache splitCategories_;
};

}  // namespace tarn
