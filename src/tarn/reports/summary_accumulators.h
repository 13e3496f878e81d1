// The running sums behind a summary: one accumulator counts the entries of a
// period (totals, keyed subtotals, category tree), another merges the
// periods into the whole range, and a balance table answers the accounts'
// balances at the period bounds. Used by the summary's computation only.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <span>
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

// The names of the keyed subtotals of one kind (type names, descriptions or
// parties), each numbered once per computation and ranked in byte order, so
// that periods add up and sort their rows by number.
class NameTable {
 public:
  std::uint32_t idOf(std::string_view name);
  // Ranks the names in byte order; to be called after the last idOf.
  void rank();
  std::uint32_t rankOf(std::uint32_t id) const { return ranks_[id]; }
  const std::string& nameOf(std::uint32_t id) const { return names_[id]; }
  std::size_t size() const { return names_.size(); }

 private:
  // Keys are views of the names kept in names_ (a deque: they never move).
  std::unordered_map<std::string_view, std::uint32_t> index_;
  std::deque<std::string> names_;
  std::vector<std::uint32_t> ranks_;
};

// The numbers of an entry's type name, description and party.
struct EntryNames {
  std::uint32_t type = 0;
  std::uint32_t description = 0;
  std::uint32_t toFrom = 0;
};

class SummaryNames {
 public:
  // Numbers the names of the entries that count (void ones do not) and
  // ranks every table; one EntryNames per entry.
  std::vector<EntryNames> number(std::span<const std::shared_ptr<TARNAccountEntry>> entries);

  NameTable types;
  NameTable descriptions;
  NameTable toFroms;

 private:
  struct TypeKey {
    const TARNAccount* account;
    std::int32_t number;
    friend bool operator==(const TypeKey&, const TypeKey&) = default;
  };
  struct TypeKeyHash {
    std::size_t operator()(const TypeKey& key) const {
      return std::hash<const void*>()(key.account) ^ (std::size_t(std::uint32_t(key.number)) << 1);
    }
  };
  // The type name's number by account and type number ("" for no type).
  std::unordered_map<TypeKey, std::uint32_t, TypeKeyHash> typeIds_;
};

// Subtotals keyed by a numbered name.
class NamedRows {
 public:
  explicit NamedRows(const NameTable& names) : names_(&names) {}
  // The row's amount and, by `debit`, its debits or deposits grow by the amount.
  void add(std::uint32_t id, double amount, bool debit);
  // Adds another row's sums (made when missing).
  void merge(std::uint32_t id, const TARNSummaryRow& row);
  // Adds every row into another set of rows of the same names.
  void mergeInto(NamedRows& other) const;
  // The rows sorted by name; the accumulator is left empty.
  std::vector<TARNSummaryNamedRow> take();

 private:
  TARNSummaryRow& find(std::uint32_t id, bool& made);
  const NameTable* names_;
  std::vector<TARNSummaryRow> rows_;  // by name number
  std::vector<std::uint8_t> present_;
  std::vector<std::uint32_t> touched_;
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
class RangeAccumulator;

class PeriodAccumulator {
 public:
  PeriodAccumulator(const PFCurrency* target, bool parentsInclude, const SummaryNames& names)
      : target_(target),
        parentsInclude_(parentsInclude),
        types_(names.types),
        descriptions_(names.descriptions),
        toFroms_(names.toFroms) {}
  // Starts a period whose first entry is `first` (nullptr for none).
  void start(const TARNAccountEntry* first, double startBalance);
  void add(const TARNAccountEntry& entry, const EntryNames& names);
  // Moves the sums of the period into it, adds them to the range when one
  // is given, and starts afresh.
  void finish(TARNSummaryPeriod& period, RangeAccumulator* range);

 private:
  void fileCategory(std::int32_t number, double amount, bool debit);
  static void addToRow(TARNSummaryRow& row, double amount, bool debit);

  const PFCurrency* target_;
  bool parentsInclude_;
  CategoryPaths paths_;
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
  explicit RangeAccumulator(const SummaryNames& names)
      : types_(names.types), descriptions_(names.descriptions), toFroms_(names.toFroms) {}
  // The period's totals and category rows; its keyed rows come through
  // PeriodAccumulator::finish.
  void add(const TARNSummaryPeriod& period);
  void finish(TARNSummaryResult& result);

 private:
  friend class PeriodAccumulator;
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
