// The result of an account summary as plain C++ values: the whole range's
// totals, balances and subtotals, and the same for each period, in date
// order. The summary computes this once; the property-list dictionary the
// host reads by key is written from it (asDictionary), so the two always
// agree. The result holds the entries it counted (shared with their
// account), each period naming its run of them by position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tarn/platform/calendar_date.h"
#include "tarn/platform/value.h"

namespace tarn {

class TARNAccountEntry;

// One subtotal: the sum of the amounts, and the sums of the debit and of the
// other amounts, each present only once something was added to it.
struct TARNSummaryRow {
  double amount = 0.0;
  std::optional<double> debits;
  std::optional<double> deposits;

  friend bool operator==(const TARNSummaryRow&, const TARNSummaryRow&) = default;
};

// A subtotal keyed by a name: an entry type's name, a description or a
// to/from text (compared exactly, letter case included).
struct TARNSummaryNamedRow {
  std::string name;
  TARNSummaryRow row;

  friend bool operator==(const TARNSummaryNamedRow&, const TARNSummaryNamedRow&) = default;
};

// A row of the category tree: a category's own name (the last part of its
// full name), its subtotal and the rows of its subcategories, in the order
// they were first met.
struct TARNSummaryCategoryRow {
  std::string subtotalName;
  TARNSummaryRow row;
  std::vector<TARNSummaryCategoryRow> children;

  friend bool operator==(const TARNSummaryCategoryRow&, const TARNSummaryCategoryRow&) = default;
};

// The counts and totals of a period or of the whole range. Void entries are
// in none of them.
struct TARNSummaryTotals {
  std::int32_t entryCount = 0;
  double total = 0.0;
  double debitsTotal = 0.0;
  double depositsTotal = 0.0;
  double resolvedTotal = 0.0;
  double unresolvedTotal = 0.0;
  double taxableTotal = 0.0;
  double taxDeductibleTotal = 0.0;

  friend bool operator==(const TARNSummaryTotals&, const TARNSummaryTotals&) = default;
};

// The subtotals of a period or of the whole range. Named rows are sorted by
// name in byte order (the order of the dictionary's keys).
struct TARNSummarySubtotals {
  std::vector<TARNSummaryCategoryRow> categories;
  std::vector<TARNSummaryNamedRow> types;
  std::vector<TARNSummaryNamedRow> descriptions;
  std::vector<TARNSummaryNamedRow> toFroms;

  friend bool operator==(const TARNSummarySubtotals&, const TARNSummarySubtotals&) = default;
};

// One period: its first and last moment, where its entries start in the
// result's entry list and how many there are (void ones included), totals,
// balances and subtotals. runningTotal is the start balance plus the amounts
// of the period's entries.
struct TARNSummaryPeriod {
  CalendarDate startDate;
  CalendarDate endDate;
  std::size_t firstEntry = 0;
  std::size_t entriesCount = 0;
  TARNSummaryTotals totals;
  double runningTotal = 0.0;
  double startBalance = 0.0;
  double endBalance = 0.0;
  TARNSummarySubtotals subtotals;
};

struct TARNSummaryResult {
  using Entries = std::vector<std::shared_ptr<TARNAccountEntry>>;

  // The range's first and last day, at midnight.
  CalendarDate startDate;
  CalendarDate endDate;
  // Every entry that passed the summary's conditions, in date order (then
  // entry number); the periods cut this list into runs.
  Entries entries;
  // Where each of those entries stands in the summary's own entry list.
  std::vector<std::int64_t> entryIndexes;
  std::vector<TARNSummaryPeriod> periods;
  TARNSummaryTotals totals;
  // The range's start balance plus its total.
  double runningTotal = 0.0;
  double startBalance = 0.0;
  double endBalance = 0.0;
  TARNSummarySubtotals subtotals;

  std::span<const std::shared_ptr<TARNAccountEntry>> entriesOf(const TARNSummaryPeriod& p) const {
    return std::span<const std::shared_ptr<TARNAccountEntry>>(entries).subspan(p.firstEntry,
                                                                               p.entriesCount);
  }
  // The dictionary the host reads: "subtotals" (one dictionary per period)
  // and the whole range's values under the keys of a period dictionary.
  plist::Value asDictionary() const;
  // One period's dictionary.
  plist::Value periodAsDictionary(const TARNSummaryPeriod& period) const;
};

// A calendar date as a property list stores it.
plist::Date PropertyListDate(const CalendarDate& date);

}  // namespace tarn
