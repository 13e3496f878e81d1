#include "tarn/reports/summary_result.h"

#include <string>
#include <utility>

namespace tarn {

namespace {

constexpr std::int64_t kSeconds1970To2001 = 978307200;

plist::Value RowValue(const TARNSummaryRow& row) {
  plist::Dictionary dictionary;
  dictionary.reserve(3);
  dictionary.appendSorted("amount", row.amount);
  if (row.debits) dictionary.appendSorted("debits", *row.debits);
  if (row.deposits) dictionary.appendSorted("deposits", *row.deposits);
  return plist::Value(std::move(dictionary));
}

plist::Value NamedRowsValue(const std::vector<TARNSummaryNamedRow>& rows) {
  plist::Dictionary dictionary;
  dictionary.reserve(rows.size());
  // Sorted by name already: each key goes at the end.
  for (const TARNSummaryNamedRow& row : rows) dictionary.appendSorted(row.name, RowValue(row.row));
  return plist::Value(std::move(dictionary));
}

plist::Value CategoryRowsValue(const std::vector<TARNSummaryCategoryRow>& rows) {
  plist::Array array;
  array.reserve(rows.size());
  for (const TARNSummaryCategoryRow& row : rows) {
    plist::Dictionary dictionary;
    dictionary.reserve(5);
    dictionary.appendSorted("amount", row.row.amount);
    dictionary.appendSorted("children", CategoryRowsValue(row.children));
    if (row.row.debits) dictionary.appendSorted("debits", *row.row.debits);
    if (row.row.deposits) dictionary.appendSorted("deposits", *row.row.deposits);
    dictionary.appendSorted("subtotalName", row.subtotalName);
    array.emplace_back(std::move(dictionary));
  }
  return plist::Value(std::move(array));
}

plist::Value IndexesValue(const std::vector<std::int64_t>& indexes, std::size_t first,
                          std::size_t count) {
  plist::Array array;
  array.reserve(count);
  for (std::size_t i = first; i < first + count; ++i) array.emplace_back(indexes[i]);
  return plist::Value(std::move(array));
}

// The keys that a period and the whole range share, in byte order.
plist::Dictionary CommonKeys(const CalendarDate& startDate, const CalendarDate& endDate,
                             plist::Value entries, const TARNSummaryTotals& totals,
                             double runningTotal, double startBalance, double endBalance,
                             const TARNSummarySubtotals& subtotals) {
  plist::Dictionary d;
  d.reserve(19);
  d.appendSorted("categoriesSubtotals", CategoryRowsValue(subtotals.categories));
  d.appendSorted("debitsTotal", totals.debitsTotal);
  d.appendSorted("depositsTotal", totals.depositsTotal);
  d.appendSorted("descriptionsSubtotals", NamedRowsValue(subtotals.descriptions));
  d.appendSorted("endBalance", endBalance);
  d.appendSorted("endDate", PropertyListDate(endDate));
  d.appendSorted("entries", std::move(entries));
  d.appendSorted("entryCount", static_cast<std::int64_t>(totals.entryCount));
  d.appendSorted("resolvedTotal", totals.resolvedTotal);
  d.appendSorted("runningTotal", runningTotal);
  d.appendSorted("startBalance", startBalance);
  d.appendSorted("startDate", PropertyListDate(startDate));
  d.appendSorted("taxDeductibleTotal", totals.taxDeductibleTotal);
  d.appendSorted("taxableTotal", totals.taxableTotal);
  d.appendSorted("toFromSubtotals", NamedRowsValue(subtotals.toFroms));
  d.appendSorted("total", totals.total);
  d.appendSorted("typesSubtotals", NamedRowsValue(subtotals.types));
  d.appendSorted("unresolvedTotal", totals.unresolvedTotal);
  return d;
}

}  // namespace

plist::Date PropertyListDate(const CalendarDate& date) {
  return plist::Date{static_cast<double>(date.secondsSince1970() - kSeconds1970To2001)};
}

plist::Value TARNSummaryResult::periodAsDictionary(const TARNSummaryPeriod& period) const {
  return plist::Value(CommonKeys(period.startDate, period.endDate,
                                 IndexesValue(entryIndexes, period.firstEntry, period.entriesCount),
                                 period.totals, period.runningTotal, period.startBalance,
                                 period.endBalance, period.subtotals));
}

plist::Value TARNSummaryResult::asDictionary() const {
  plist::Dictionary d =
      CommonKeys(startDate, endDate, IndexesValue(entryIndexes, 0, entryIndexes.size()), totals,
                 runningTotal, startBalance, endBalance, subtotals);
  plist::Array periodValues;
  periodValues.reserve(periods.size());
  for (const TARNSummaryPeriod& period : periods)
    periodValues.push_back(periodAsDictionary(period));
  d.emplace("subtotals", std::move(periodValues));
  return plist::Value(std::move(d));
}

}  // namespace tarn
