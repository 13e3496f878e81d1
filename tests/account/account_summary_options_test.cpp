#include <gtest/gtest.h>

#include "account_test_support.h"
#include "tarn/reports/account_summary.h"

namespace tarn {
namespace {

using testing::PinnedClock;

TEST(AccountSummaryOptions, DefaultsAndStoredOptions) {
  PinnedClock clock;
  TARNAccountSummary summary;
  EXPECT_EQ(summary.name(), "Untitled Summary");
  EXPECT_EQ(summary.dateRangeStyle(), 0);
  EXPECT_EQ(summary.startDate(), PinnedClock::kToday);
  EXPECT_EQ(summary.endDate(), PinnedClock::kToday);
  EXPECT_TRUE(summary.showDebits() && summary.showDeposits());
  EXPECT_EQ(summary.showResolved(), 2);
  EXPECT_EQ(summary.showChecks(), 2);
  EXPECT_EQ(summary.subtotalPeriodStyle(), 2);
  EXPECT_TRUE(summary.parentCategorySubtotalsIncludeSubcategorySubtotals());
  EXPECT_FALSE(summary.filter());
  EXPECT_EQ(summary.filterData(), plist::Value(""));
  EXPECT_TRUE(summary.summaryDictionary().isNil());

  const plist::Value options = summary.optionsAsDictionary();
  EXPECT_EQ(options.dictionaryValue().size(), 19u);
  EXPECT_TRUE(options.find("showDebits")->isBoolean());
  EXPECT_TRUE(options.find("showChecks")->isInteger());

  // Every option survives its dictionary.
  summary.setName("Fuel, this year");
  summary.setDateRangeStyle(kSummaryRangeCustom);
  summary.setStartDate(20240101);
  summary.setEndDate(20241231);
  summary.setShowStyle(3);
  summary.setShowDebits(false);
  summary.setShowResolved(1);
  summary.setShowTaxDeductible(0);
  summary.setShowChecks(1);
  summary.setSubtotalTypes(false);
  summary.setSubtotalPeriodStyle(5);
  summary.setParentCategorySubtotalsIncludeSubcategorySubtotals(false);
  summary.setFilter(true);
  summary.setFilterType(3);
  summary.setFilterData(plist::Value("gas"));
  auto copy = TARNAccountSummary::initWithOptionsDictionary(summary.optionsAsDictionary(), {});
  EXPECT_EQ(copy->optionsAsDictionary(), summary.optionsAsDictionary());
  EXPECT_EQ(copy->filterData(), plist::Value("gas"));
  EXPECT_FALSE(copy->showDebits());

  // Missing keys and keys of another kind keep what the summary had.
  plist::Value partial(plist::Dictionary{{"name", plist::Value(4)},
                                         {"showChecks", plist::Value("0")},
                                         {"filterType", plist::Value(10)}});
  copy->setOptionsFromDictionary(partial);
  EXPECT_EQ(copy->name(), "Fuel, this year");
  EXPECT_EQ(copy->showChecks(), 1);
  EXPECT_EQ(copy->filterType(), 10);
  copy->setName(std::nullopt);
  EXPECT_EQ(copy->name(), "Fuel, this year");
}

TEST(AccountSummaryOptions, NamesOrderWithoutRegardToCase) {
  TARNAccountSummary a;
  a.setName("income");
  TARNAccountSummary b;
  b.setName("Expenses");
  TARNAccountSummary c;
  c.setName("INCOME");
  EXPECT_EQ(a.NameIsGreaterThan(b), 1);
  EXPECT_EQ(b.NameIsGreaterThan(a), -1);
  EXPECT_EQ(a.NameIsGreaterThan(c), 0);
  EXPECT_EQ(a.NameIsGreaterThan_Reversed(b), -1);
}

}  // namespace
}  // namespace tarn
