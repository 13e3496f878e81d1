// A summary's range, its filter and the computation of its result: the
// survivors of the filter are sorted by date once and the periods are swept
// with one cursor; the balances at the period bounds come from one pass over
// each account.

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tarn/filters/filter.h"
#include "tarn/filters/filter_codes.h"
#include "tarn/filters/filter_condition_group.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/amounts.h"
#include "tarn/model/currency.h"
#include "tarn/platform/date_ranges.h"
#include "tarn/reports/account_summary.h"
#include "tarn/reports/summary_accumulators.h"
#include "tarn/reports/summary_periods.h"

namespace tarn {

namespace {

using summary_detail::BalanceTable;
using summary_detail::EntryNames;
using summary_detail::PeriodAccumulator;
using summary_detail::RangeAccumulator;
using summary_detail::SummaryNames;

// Styles 2 to 11 and 15 to 18 name a mnemonic period; -1 for the others.
int MnemonicOfRangeStyle(std::int32_t style) {
  if (style >= 2 && style <= 11) return style - 2;
  if (style >= 15 && style <= 18) return style - 5;
  return -1;
}

// The text conditions of each filter type: the fields searched.
std::vector<std::int32_t> SearchedFields(std::int32_t filterType) {
  switch (filterType) {
    case kSummarySearchAnything:
      return {kFieldAnything};
    case kSummarySearchTypeName:
      return {kFieldType};
    case kSummarySearchDescription:
      return {kFieldDescription};
    case kSummarySearchToFromAndCategory:
      return {kFieldToFrom, kFieldCategory};
    case kSummarySearchCategory:
      return {kFieldCategory};
    case kSummarySearchSplitDescription:
      return {kFieldSplitDescription};
    case kSummarySearchSplitCategory:
      return {kFieldSplitCategory};
    case kSummarySearchNotes:
      return {kFieldNotes};
    default:
      return {};
  }
}

// The flag condition of a three-way choice: only those with the flag (0),
// only those without (1), or none (2 and anything else).
void AddChoice(TARNFilterConditionGroup& group, std::int32_t field, std::int32_t choice) {
  if (choice == kSummaryShowOnly || choice == kSummaryShowOthers) {
    group.addConditionWithCategory(field, kConditionKeepMatches, kFlagIs,
                                   plist::Value(choice == kSummaryShowOnly));
  }
}

// Where each survivor stands in the summary's entries. The candidates are
// the summary's debits and then its deposits (indexes given), and the filter
// keeps their order, so one walk matches them; anything the walk cannot
// place is looked up.
std::vector<std::int64_t> IndexesOfSurvivors(const TARNAccountSummary::Entries& survivors,
                                             const TARNAccountSummary::Entries& candidates,
                                             const std::vector<std::int64_t>& candidateIndexes,
                                             const TARNAccountSummary::Entries& all) {
  std::vector<std::int64_t> indexes;
  indexes.reserve(survivors.size());
  std::size_t at = 0;
  std::unordered_map<const TARNAccountEntry*, std::int64_t> lookUp;
  for (const auto& survivor : survivors) {
    while (at < candidates.size() && candidates[at] != survivor) ++at;
    if (at < candidates.size()) {
      indexes.push_back(candidateIndexes[at++]);
      continue;
    }
    if (lookUp.empty()) {
      for (std::size_t i = all.size(); i-- > 0;) lookUp[all[i].get()] = std::int64_t(i);
    }
    auto found = lookUp.find(survivor.get());
    indexes.push_back(found != lookUp.end() ? found->second : -1);
    at = candidates.size();
  }
  return indexes;
}

}  // namespace

void TARNAccountSummary::updateDateRange() {
  CalendarDate start = CalendarDate::dateWithDateNumber(startDate_);
  CalendarDate end = CalendarDate::dateWithDateNumber(endDate_);
  int mnemonic = MnemonicOfRangeStyle(dateRangeStyle_);
  if (dateRangeStyle_ == kSummaryRangeFirstToLastEntry ||
      dateRangeStyle_ == kSummaryRangeFirstEntryToToday) {
    const auto first = GetFirstEntry();
    if (!first) {
      mnemonic = kMnemonicToday;
    } else {
      start = CalendarDate::dateWithDateNumber(first->GetDate());
      end = dateRangeStyle_ == kSummaryRangeFirstToLastEntry
                ? CalendarDate::dateWithDateNumber(GetLastEntry()->GetDate())
                : CalendarDate::now();
    }
  }
  if (mnemonic >= 0) DateRangeForMnemonic(mnemonic, start, end);
  startDate_ = start.dateNumber();
  endDate_ = end.dateNumber();
}

std::shared_ptr<TARNFilter> TARNAccountSummary::summaryFilter() const {
  auto filter = std::make_shared<TARNFilter>();
  auto group = std::make_shared<TARNFilterConditionGroup>();
  // Date numbers shifted by one as integers: after the day before the start
  // and before the day after the end.
  group->addConditionWithCategory(kFieldDate, kConditionKeepMatches, kDateIsAfter,
                                  plist::Value(std::int64_t{startDate_} - 1));
  group->addConditionWithCategory(kFieldDate, kConditionKeepMatches, kDateIsBefore,
                                  plist::Value(std::int64_t{endDate_} + 1));
  AddChoice(*group, kFieldResolved, showResolved_);
  AddChoice(*group, kFieldTaxDeductible, showTaxDeductible_);
  AddChoice(*group, kFieldCheck, showChecks_);
  if (filter_) {
    for (std::int32_t field : SearchedFields(filterType_)) {
      group->addConditionWithCategory(field, kConditionKeepMatches, kTextContains, filterData_);
    }
  }
  filter->addConditionGroup(std::move(group));
  return filter;
}

std::shared_ptr<const TARNSummaryResult> TARNAccountSummary::ComputeResult() {
  auto result = std::make_shared<TARNSummaryResult>();
  updateDateRange();
  const std::shared_ptr<PFCurrency> target = currency();

  // The candidates, with their places in the summary's entries.
  Entries candidates;
  std::vector<std::int64_t> candidateIndexes;
  for (int pass = 0; pass < 2; ++pass) {
    if (pass == 0 ? !showDebits_ : !showDeposits_) continue;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      const auto& entry = entries_[i];
      if (entry && (pass == 0 ? entry->IsDebit() : entry->IsDeposit())) {
        candidates.push_back(entry);
        candidateIndexes.push_back(static_cast<std::int64_t>(i));
      }
    }
  }
  Entries survivors = summaryFilter()->filterEntries(candidates);
  std::vector<std::int64_t> survivorIndexes =
      IndexesOfSurvivors(survivors, candidates, candidateIndexes, entries_);
  candidates = Entries();

  // Sorted once by date, then entry number; ties keep the filter's order.
  struct Key {
    DateNumber date;
    std::int32_t number;
    std::uint32_t position;
  };
  std::vector<Key> keys;
  keys.reserve(survivors.size());
  for (std::size_t i = 0; i < survivors.size(); ++i) {
    keys.push_back({survivors[i]->GetDate(), survivors[i]->GetNumber(), std::uint32_t(i)});
  }
  const auto before = [](const Key& a, const Key& b) {
    if (a.date != b.date) return a.date < b.date;
    if (a.number != b.number) return a.number < b.number;
    return a.position < b.position;
  };
  // Registers are mostly kept in date order, so the survivors are usually
  // two sorted runs (the debits, then the deposits): merge them then.
  const auto descent = std::is_sorted_until(keys.begin(), keys.end(), before);
  if (descent != keys.end()) {
    if (std::is_sorted(descent, keys.end(), before)) {
      std::inplace_merge(keys.begin(), descent, keys.end(), before);
    } else {
      std::sort(keys.begin(), keys.end(), before);
    }
  }
  result->entries.reserve(keys.size());
  result->entryIndexes.reserve(keys.size());
  for (const Key& key : keys) {
    result->entries.push_back(std::move(survivors[key.position]));
    result->entryIndexes.push_back(survivorIndexes[key.position]);
  }

  const std::vector<TARNSummaryPeriodBounds> bounds =
      SummaryPeriodsOfRange(startDate_, endDate_, subtotalPeriodStyle_);
  std::vector<DateNumber> balanceDates{startDate_, endDate_ + 1};
  balanceDates.reserve(2 * bounds.size() + 2);
  for (const auto& period : bounds) {
    balanceDates.push_back(period.start.dateNumber());
    balanceDates.push_back(period.end.dateNumber() + 1);
  }
  const BalanceTable balances(accounts_, target.get(), std::move(balanceDates));

  const auto& sorted = result->entries;
  SummaryNames names;
  const std::vector<EntryNames> entryNames = names.number(sorted);
  PeriodAccumulator periodSums(target.get(), parentCategorySubtotalsIncludeSubcategorySubtotals_,
                               names);
  RangeAccumulator rangeSums(names);
  std::size_t cursor = 0;
  result->periods.reserve(bounds.size());
  for (const auto& bound : bounds) {
    const DateNumber firstDay = bound.start.dateNumber();
    const DateNumber lastDay = bound.end.dateNumber();
    while (cursor < sorted.size() && sorted[cursor]->GetDate() < firstDay) ++cursor;
    TARNSummaryPeriod& period = result->periods.emplace_back();
    period.startDate = bound.start;
    period.endDate = bound.end;
    period.firstEntry = cursor;
    period.startBalance = RoundNearZeroValue(balances.before(firstDay));
    period.endBalance = RoundNearZeroValue(balances.through(lastDay));
    periodSums.start(cursor < sorted.size() && sorted[cursor]->GetDate() <= lastDay
                         ? sorted[cursor].get()
                         : nullptr,
                     period.startBalance);
    for (; cursor < sorted.size() && sorted[cursor]->GetDate() <= lastDay; ++cursor) {
      periodSums.add(*sorted[cursor], entryNames[cursor]);
    }
    period.entriesCount = cursor - period.firstEntry;
    periodSums.finish(period, &rangeSums);
  }
  rangeSums.finish(*result);

  result->startDate = CalendarDate::dateWithDateNumber(startDate_);
  result->endDate = CalendarDate::dateWithDateNumber(endDate_);
  result->startBalance = RoundNearZeroValue(balances.before(startDate_));
  result->endBalance = RoundNearZeroValue(balances.through(endDate_));
  result->runningTotal = result->startBalance + result->totals.total;
  summaryResult_ = result;
  return result;
}

plist::Value TARNAccountSummary::Summary() {
  return ComputeResult()->asDictionary();
}

void TARNAccountSummary::Refresh() {
  summaryDictionary_ = Summary();
}

plist::Value TARNAccountSummary::SubtotalEntries(const Entries& entries,
                                                 const CalendarDate& startDate,
                                                 const CalendarDate& endDate) const {
  const std::shared_ptr<PFCurrency> target = currency();
  TARNSummaryResult holder;
  holder.entries = entries;
  std::unordered_map<const TARNAccountEntry*, std::int64_t> places;
  for (std::size_t i = entries_.size(); i-- > 0;) places[entries_[i].get()] = std::int64_t(i);
  for (const auto& entry : entries) {
    auto found = places.find(entry.get());
    holder.entryIndexes.push_back(found != places.end() ? found->second : -1);
  }
  TARNSummaryPeriod period;
  period.startDate = startDate;
  period.endDate = endDate;
  period.entriesCount = entries.size();
  period.startBalance = RoundNearZeroValue(GetRunningBalanceBeforeDate(startDate.dateNumber()));
  period.endBalance = RoundNearZeroValue(GetRunningBalanceThroughDate(endDate.dateNumber()));
  SummaryNames names;
  const std::vector<EntryNames> entryNames = names.number(entries);
  PeriodAccumulator sums(target.get(), parentCategorySubtotalsIncludeSubcategorySubtotals_, names);
  const TARNAccountEntry* first = nullptr;
  for (const auto& entry : entries) {
    if (entry) {
      first = entry.get();
      break;
    }
  }
  sums.start(first, period.startBalance);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (entries[i]) sums.add(*entries[i], entryNames[i]);
  }
  sums.finish(period, nullptr);
  return holder.periodAsDictionary(period);
}

}  // namespace tarn
