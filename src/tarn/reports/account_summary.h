// A saved report of an account: a named set of options (date range, which
// entries, which subtotals, an optional text filter) kept in the account's
// list of summaries and stored there as an options dictionary. On request it
// totals its entries over the range and its periods, with subtotals by
// category, type, description and party and the accounts' balances, as a
// typed result and as the dictionary the host reads. The summary holds the
// entries it works on (shared with their account) and the last result, and
// refers to the accounts the entries come from without owning them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/platform/calendar_date.h"
#include "tarn/platform/value.h"
#include "tarn/reports/summary_category_tree.h"
#include "tarn/reports/summary_result.h"

namespace tarn {

class PFCurrency;
class TARNAccount;
class TARNAccountEntry;
class TARNFilter;

// How a summary picks its range ("dateRangeStyle"). Styles 2 to 11 and 15 to
// 18 name a period; the gaps are part of the stored vocabulary.
inline constexpr std::int32_t kSummaryRangeFirstToLastEntry = 0;
inline constexpr std::int32_t kSummaryRangeFirstEntryToToday = 1;
inline constexpr std::int32_t kSummaryRangeLastYear = 7;
inline constexpr std::int32_t kSummaryRangeThisYear = 11;
inline constexpr std::int32_t kSummaryRangeMonthToDate = 16;
inline constexpr std::int32_t kSummaryRangeQuarterToDate = 17;
inline constexpr std::int32_t kSummaryRangeYearToDate = 18;
inline constexpr std::int32_t kSummaryRangeCustom = 20;

// How long the periods of a summary are ("subtotalPeriodStyle"). Any other
// value is treated as the whole range.
inline constexpr std::int32_t kSummaryPeriodDay = 0;
inline constexpr std::int32_t kSummaryPeriodWeek = 1;
inline constexpr std::int32_t kSummaryPeriodMonth = 2;
inline constexpr std::int32_t kSummaryPeriodQuarter = 3;
inline constexpr std::int32_t kSummaryPeriodYear = 4;
inline constexpr std::int32_t kSummaryPeriodWholeRange = 5;

// Which field the summary's text filter searches ("filterType").
inline constexpr std::int32_t kSummarySearchAnything = 0;
inline constexpr std::int32_t kSummarySearchTypeName = 1;
inline constexpr std::int32_t kSummarySearchDescription = 2;
inline constexpr std::int32_t kSummarySearchToFromAndCategory = 3;
inline constexpr std::int32_t kSummarySearchCategory = 4;
inline constexpr std::int32_t kSummarySearchSplitDescription = 10;
inline constexpr std::int32_t kSummarySearchSplitCategory = 12;
inline constexpr std::int32_t kSummarySearchNotes = 20;

// The three-way choices of showResolved, showTaxDeductible and showChecks.
inline constexpr std::int32_t kSummaryShowOnly = 0;
inline constexpr std::int32_t kSummaryShowOthers = 1;
inline constexpr std::int32_t kSummaryShowAll = 2;

class TARNAccountSummary {
 public:
  using Entries = std::vector<std::shared_ptr<TARNAccountEntry>>;
  using Accounts = std::vector<TARNAccount*>;

  // "Untitled Summary", first-to-last-entry range of today, debits and
  // deposits of every kind, all subtotals, monthly periods, no text filter.
  TARNAccountSummary();

  // A summary with the stored options applied over the defaults, working on
  // the given entries.
  static std::shared_ptr<TARNAccountSummary> initWithOptionsDictionary(const plist::Value& options,
                                                                       Entries entries);
  // Every option; "filterData" only when there is one.
  plist::Value optionsAsDictionary() const;
  // Applies the options present in the dictionary (a key of another kind is
  // passed over); missing keys keep their values and nothing is logged.
  void setOptionsFromDictionary(const plist::Value& options);

  const std::string& name() const { return name_; }
  // nullopt is ignored.
  void setName(std::optional<std::string> name);
  std::int32_t dateRangeStyle() const { return dateRangeStyle_; }
  void setDateRangeStyle(std::int32_t style) { dateRangeStyle_ = style; }
  DateNumber startDate() const { return startDate_; }
  void setStartDate(DateNumber date) { startDate_ = date; }
  DateNumber endDate() const { return endDate_; }
  void setEndDate(DateNumber date) { endDate_ = date; }
  std::int32_t showStyle() const { return showStyle_; }
  void setShowStyle(std::int32_t style) { showStyle_ = style; }
  bool showDebits() const { return showDebits_; }
  void setShowDebits(bool show) { showDebits_ = show; }
  bool showDeposits() const { return showDeposits_; }
  void setShowDeposits(bool show) { showDeposits_ = show; }
  std::int32_t showResolved() const { return showResolved_; }
  void setShowResolved(std::int32_t show) { showResolved_ = show; }
  std::int32_t showTaxDeductible() const { return showTaxDeductible_; }
  void setShowTaxDeductible(std::int32_t show) { showTaxDeductible_ = show; }
  std::int32_t showChecks() const { return showChecks_; }
  void setShowChecks(std::int32_t show) { showChecks_ = show; }
  bool subtotalDescriptions() const { return subtotalDescriptions_; }
  void setSubtotalDescriptions(bool on) { subtotalDescriptions_ = on; }
  bool subtotalTypes() const { return subtotalTypes_; }
  void setSubtotalTypes(bool on) { subtotalTypes_ = on; }
  bool subtotalToFroms() const { return subtotalToFroms_; }
  void setSubtotalToFroms(bool on) { subtotalToFroms_ = on; }
  bool subtotalCategories() const { return subtotalCategories_; }
  void setSubtotalCategories(bool on) { subtotalCategories_ = on; }
  std::int32_t subtotalPeriodStyle() const { return subtotalPeriodStyle_; }
  void setSubtotalPeriodStyle(std::int32_t style) { subtotalPeriodStyle_ = style; }
  bool parentCategorySubtotalsIncludeSubcategorySubtotals() const {
    return parentCategorySubtotalsIncludeSubcategorySubtotals_;
  }
  void setParentCategorySubtotalsIncludeSubcategorySubtotals(bool on) {
    parentCategorySubtotalsIncludeSubcategorySubtotals_ = on;
  }
  bool filter() const { return filter_; }
  void setFilter(bool on) { filter_ = on; }
  std::int32_t filterType() const { return filterType_; }
  void setFilterType(std::int32_t type) { filterType_ = type; }
  // Usually the search text; any stored value is kept as it is.
  const plist::Value& filterData() const { return filterData_; }
  void setFilterData(plist::Value data) { filterData_ = std::move(data); }

  const Entries& entries() const { return entries_; }
  void setEntries(Entries entries) { entries_ = std::move(entries); }
  const Accounts& accounts() const { return accounts_; }
  void setAccounts(Accounts accounts) { accounts_ = std::move(accounts); }
  // The last result stored by Refresh; nil until then.
  const plist::Value& summaryDictionary() const { return summaryDictionary_; }
  // The typed view of the last result computed (by Summary, Refresh or
  // ComputeResult); nullptr until then.
  const std::shared_ptr<const TARNSummaryResult>& summaryResult() const { return summaryResult_; }

  // ---------------------------------------------------------------------
  // Computing (account_summary_compute.cpp)
  // ---------------------------------------------------------------------
  // Resolves dateRangeStyle into startDate and endDate. Styles without a
  // range (custom, and the numbers the table leaves out) keep both dates.
  void updateDateRange();
  // The summary's conditions as a filter of one group where all must hold:
  // the range's dates, the resolved, tax-deductible and check choices, and
  // the text filter when it is on.
  std::shared_ptr<TARNFilter> summaryFilter() const;
  // Computes the result (after updateDateRange), keeps it as summaryResult
  // and returns it.
  std::shared_ptr<const TARNSummaryResult> ComputeResult();
  // The result dictionary of a fresh computation.
  plist::Value Summary();
  // Recomputes the result into summaryDictionary.
  void Refresh();
  // The period dictionary of the given entries, as counted between the two
  // moments (the period's first day gives the start balance, its last day
  // the end balance). "entries" names each entry by its place in the
  // summary's entries, -1 for one that is not there.
  plist::Value SubtotalEntries(const Entries& entries, const CalendarDate& startDate,
                               const CalendarDate& endDate) const;

  // ---------------------------------------------------------------------
  // Currency and balances over the accounts (account_summary_balances.cpp)
  // ---------------------------------------------------------------------
  // The account's currency with one account; with more, the default currency
  // of the first account's accounts controller (the first account's own
  // currency when it has none); with no account, a new default currency.
  std::shared_ptr<PFCurrency> currency() const;
  // Sums over the accounts, each converted into the summary's currency.
  double GetStartingBalance() const;
  // Only the accounts whose first entry is dated before the date count.
  double GetStartingBalanceBeforeDate(DateNumber date) const;
  double GetRunningBalanceBeforeDate(DateNumber date) const;
  double GetRunningBalanceThroughDate(DateNumber date) const;

  // Over the summary's entries, in their order.
  Entries GetDebits() const;
  Entries GetDeposits() const;
  // Smallest (largest) date; the first in list order among equal dates;
  // nullptr without entries.
  std::shared_ptr<TARNAccountEntry> GetFirstEntry() const;
  std::shared_ptr<TARNAccountEntry> GetLastEntry() const;

  // Every row of a category tree, each followed by its descendants (depth
  // first). The rows stay in the tree; the pointers are valid while it is
  // not changed.
  std::vector<const plist::Value*> allCategorySubtotalsForCategorySubtotals(
      const plist::Array& rows) const;
  // Adds one period's category rows into the whole range's rows: each row's
  // amount to the row at the same path (made when missing), and to its
  // "deposits" (an amount of zero or more) or "debits". nullopt is the top.
  void processOverallSummaryCategorySubtotals(const plist::Array& periodRows,
                                              std::optional<std::string_view> parentName,
                                              plist::Array& overallRows) const;

  // Case-insensitive order of the names: 1, 0 or -1 as this name sorts after,
  // with or before the other's.
  int NameIsGreaterThan(const TARNAccountSummary& other) const;
  int NameIsGreaterThan_Reversed(const TARNAccountSummary& other) const {
    return -NameIsGreaterThan(other);
  }

 private:
  std::string name_;
  std::int32_t dateRangeStyle_ = kSummaryRangeFirstToLastEntry;
  DateNumber startDate_;
  DateNumber endDate_;
  std::int32_t showStyle_ = 0;
  bool showDebits_ = true;
  bool showDeposits_ = true;
  std::int32_t showResolved_ = kSummaryShowAll;
  std::int32_t showTaxDeductible_ = kSummaryShowAll;
  std::int32_t showChecks_ = kSummaryShowAll;
  bool subtotalDescriptions_ = true;
  bool subtotalTypes_ = true;
  bool subtotalToFroms_ = true;
  bool subtotalCategories_ = true;
  std::int32_t subtotalPeriodStyle_ = 2;  // months
  bool parentCategorySubtotalsIncludeSubcategorySubtotals_ = true;
  bool filter_ = false;
  std::int32_t filterType_ = 0;
  plist::Value filterData_;
  Entries entries_;
  // Not owned: an account holds its summaries, so owning would make a cycle.
  Accounts accounts_;
  plist::Value summaryDictionary_;
  std::shared_ptr<const TARNSummaryResult> summaryResult_;
};

}  // namespace tarn
