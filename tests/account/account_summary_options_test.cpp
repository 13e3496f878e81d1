#include <gtest/gtest.h>

#include "account_test_support.h"
#include "tarn/reports/account_summary.h"

namespace tarn {
namespace {

TEST(AccountSummaryOptions, OptionsSurviveTheirDictionary) {
  testing::PinnedClock clock;
  TARNAccountSummary summary;
  EXPECT_EQ(summary.startDate(), testing::PinnedClock::kToday);
  const plist::Value options = summary.optionsAsDictionary();
  EXPECT_EQ(options.dictionaryValue().size(), 19u);
  EXPECT_TRUE(options.find("showDebits")->isBoolean());
  EXPECT_TRUE(options.find("showChecks")->isInteger());

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

  // Missing keys and keys of another kind keep what the summary had.
  copy->setOptionsFromDictionary(plist::Value(plist::Dictionary{
      {"name", plist::Value(4)}, {"showChecks", plist::Value("0")}, {"filterType", 10}}));
  EXPECT_EQ(copy->name(), "Fuel, this year");
  EXPECT_EQ(copy->showChecks(), 1);
  EXPECT_EQ(copy->filterType(), 10);
  copy->setName(std::nullopt);
  EXPECT_EQ(copy->name(), "Fuel, this year");

  TARNAccountSummary other;
  other.setName("FUEL, THIS YEAR");
  EXPECT_EQ(summary.NameIsGreaterThan(other), 0);  // case does not count
  other.setName("expenses");
  EXPECT_EQ(summary.NameIsGreaterThan(other), 1);
  EXPECT_EQ(summary.NameIsGreaterThan_Reversed(other), -1);
}

}  // namespace
}  // namespace tarn
