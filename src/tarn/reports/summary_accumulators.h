// The running sums behind a summary: one accumulator counts the entries of a
// period (totals, keyed subtotals, category tree), another merges the
// periods into the whole range, and a balance table answers the accounts'
// balances at the period bounds. Used by the summary's computation only.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tarn/reports/summary_result.h"

namespace tarn {

class PFCurrency;
class TARNAccount;
class TARNAccountEntry;

namespace summary_detail {

// The amount in the summary's currency, from the currency of the entry's
// account (unchanged when there is none).
double ConvertedAmount(const TARNAccountEntry& entry, double amount, const PFCurrency* target);

// Category numbers to the parts of their full names ("Auto:Fuel" gives
// "Auto", "Fuel"), from the category list that serves an entry: the
// accounts controller's, or the account's own without one. A number that
// names no category gives the one part "".
class CategoryPaths {
 public:
  // Takes the list that serves the entry's account, when it is not the one
  // already taken. The parts handed out before stay valid until the list
  // changes.
  void useListOf(const TARNAccountEntry& entry);
  const std::vector<std::string>& partsOf(std::int32_t number) const;
  // Bumped whenever the list changes.
  std::uint32_t generation() const { return generation_; }

 private:
  const void* source_ = nullptr;
  bool loaded_ = false;
  std::uint32_t generation_ = 0;
  std::unordered_map<std::int32_t, std::vector<std::string>> parts_;
  std::vector<std::string> none_{std::string()};
};

// Entry type names by account and number ("" for a number with no type).
class TypeNames {
 public:
  std::string_view nameOf(const TARNAccountEntry& entry);

 private:
  struct Key {
    const TARNAccount* account;
    std::int32_t number;
    friend bool operator==(const Key&, const Key&) = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const {
      return std::hash<const void*>()(key.account) ^ (std::size_t(std::uint32_t(key.number)) << 1);
    }
  };
  // Node-based: the names stay where they are as the map grows.
  std::unordered_map<Key, std::string, KeyHash> names_;
};

// Subtotals keyed by a name, in the order first met.
class NamedRows {
 public:
  // The row's amount and, by `debit`, its debits or deposits grow by the amount.
  void add(std::string_view name, double amount, bool debit);
  // Adds another row's sums (made when missing).
  void merge(std::string_view name, const TARNSummaryRow& row);
  // The rows sorted by name; the accumulator is left empty.
  std::vector<TARNSummaryNamedRow> take();
  void clear();

 private:
  TARNSummaryRow* find(std::string_view name, bool& made);
  // Keys are views of the names kept in names_.
  std::unordered_map<std::string_view, std::uint32_t> index_;
  std::deque<std::string> names_;
  std::vector<TARNSummaryRow> rows_;
};

// A category tree built row by row: rows found by name case-insensitively
// at each level, made in the order first met.
class CategoryTree {
 public:
  static constexpr std::uint32_t kTop = UINT32_MAX;
  // The row named `name` under `parent` (kTop for the top), made when missing.
  std::uint32_t child(std::uint32_t parent, std::string_view name);
  TARNSummaryRow& row(std::uint32_t node) { return nodes_[node].row; }
  std::vector<TARNSummaryCategoryRow> take();
  void clear();

 private:
  struct Node {
    std::string name;
    TARNSummaryRow row;
    std::vector<std::uint32_t> children;
  };
  TARNSummaryCategoryRow build(std::uint32_t node);
  std::vector<Node> nodes_;
  std::vector<std::uint32_t> top_;
};

// Counts the entries of one period.
class PeriodAccumulator {
 public:
  PeriodAccumulator(const PFCurrency* target, bool parentsInclude)
      : target_(target), parentsInclude_(parentsInclude) {}
  // Starts a period whose first entry is `first` (nullptr for none).
  void start(const TARNAccountEntry* first, double startBalance);
  void add(const TARNAccountEntry& entry);
  // Moves the sums of the period into it and starts afresh.
  void finish(TARNSummaryPeriod& period);

 private:
  void fileCategory(std::int32_t number, double amount, bool debit);
  static void addToRow(TARNSummaryRow& row, double amount, bool debit);

  const PFCurrency* target_;
  bool parentsInclude_;
  CategoryPaths paths_;
  TypeNames typeNames_;
  TARNSummaryTotals totals_;
  double running_ = 0.0;
  NamedRows types_;
  NamedRows descriptions_;
  NamedRows toFroms_;
  CategoryTree categories_;
  // Per category number, the rows of its path (top first), valid for one
  // period and one category list.
  struct Filed {
    std::uint32_t period = UINT32_MAX;
    std::uint32_t generation = 0;
    std::vector<std::uint32_t> nodes;
  };
  std::unordered_map<std::int32_t, Filed> filed_;
  std::uint32_t period_ = 0;
};

// Merges the periods, in order, into the whole range.
class RangeAccumulator {
 public:
  void add(const TARNSummaryPeriod& period);
  void finish(TARNSummaryResult& result);

 private:
  void mergeCategories(const std::vector<TARNSummaryCategoryRow>& rows, std::uint32_t parent);

  TARNSummaryTotals totals_;
  NamedRows types_;
  NamedRows descriptions_;
  NamedRows toFroms_;
  CategoryTree categories_;
};

// The accounts' balance before each of a set of dates, converted into the
// summary's currency and summed over the accounts, from one pass over each
// account's entries.
class BalanceTable {
 public:
  BalanceTable(const std::vector<TARNAccount*>& accounts, const PFCurrency* target,
               std::vector<DateNumber> dates);
  // The balance of the entries dated before the date; it must be one of
  // the dates given.
  double before(DateNumber date) const;
  // Of the entries dated on or before the date; the day after (date + 1 as
  // a number) must have been given.
  double through(DateNumber date) const { return before(date + 1); }

 private:
  std::vector<DateNumber> dates_;
  std::vector<double> balances_;
};

}  // namespace summary_detail
}  // namespace tarn
