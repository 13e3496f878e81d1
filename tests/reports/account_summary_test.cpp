// Account summaries: ranges, periods, totals, balances and subtotals.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "reports/summary_test_support.h"
#include "tarn/filters/filter.h"
#include "tarn/reports/summary_category_tree.h"
#include "tarn/reports/summary_periods.h"

namespace tarn::testing {
namespace {

double Number(const plist::Value& dictionary, std::string_view key) {
  const plist::Value* value = dictionary.find(key);
  EXPECT_NE(value, nullptr) << key;
  return value ? value->doubleValue() : 0.0;
}

const plist::Value& Row(const plist::Value& result, std::string_view kind, std::string_view name) {
  static const plist::Value kMissing;
  const plist::Value* rows = result.find(kind);
  const plist::Value* row = rows ? rows->find(name) : nullptr;
  EXPECT_NE(row, nullptr) << kind << " " << name;
  return row ? *row : kMissing;
}

const plist::Value& CategoryRow(const plist::Value& result, std::string_view fullName) {
  static const plist::Value kMissing;
  const plist::Value* row = TARNAccountSummary_CategorySubtotalWithName(
      result.find("categoriesSubtotals")->arrayValue(), fullName);
  EXPECT_NE(row, nullptr) << fullName;
  return row ? *row : kMissing;
}

std::vector<std::string> Names(const plist::Array& rows) {
  std::vector<std::string> names;
  for (const auto& row : rows) names.push_back(row.find("subtotalName")->stringValue());
  return names;
}

TARNAccountSummary& Custom(TARNAccountSummary& summary, DateNumber start, DateNumber end,
                           std::int32_t periodStyle = kSummaryPeriodWholeRange) {
  summary.setDateRangeStyle(kSummaryRangeCustom);
  summary.setStartDate(start);
  summary.setEndDate(end);
  summary.setSubtotalPeriodStyle(periodStyle);
  return summary;
}

TEST(AccountSummary, SplitEntryCountsByItemsInTheTreeAndWhollyInTheTotals) {
  Household home;
  auto split = AddEntry(*home.checking, 1, 20240310, 0.0, kFood, "Big shop");
  split->addSplitLineItemWithCategory(kFoodGroceries, "food", "", -60.0);
  split->addSplitLineItemWithCategory(kAutoFuel, "fuel", "", -40.0);
  AddEntry(*home.checking, 2, 20240311, -5.0, kFood, "Snack");
  auto summary = home.Summary({home.checking.get()});
  const plist::Value result = Custom(*summary, 20240301, 20240331).Summary();

  EXPECT_DOUBLE_EQ(Number(result, "total"), -105.0);
  EXPECT_DOUBLE_EQ(Number(result, "debitsTotal"), -105.0);
  EXPECT_EQ(result.find("entryCount")->intValue(), 2);
  // The split's own category (Food) gets nothing of it: only the items count.
  EXPECT_DOUBLE_EQ(Number(CategoryRow(result, "Food"), "amount"), -65.0);
  EXPECT_DOUBLE_EQ(Number(CategoryRow(result, "Food:Groceries"), "amount"), -60.0);
  EXPECT_DOUBLE_EQ(Number(CategoryRow(result, "Auto:Fuel"), "amount"), -40.0);
  EXPECT_DOUBLE_EQ(Number(CategoryRow(result, "Auto"), "amount"), -40.0);
  // Descriptions and types take the whole entry.
  EXPECT_DOUBLE_EQ(Number(Row(result, "descriptionsSubtotals", "Big shop"), "amount"), -100.0);
  EXPECT_DOUBLE_EQ(Number(Row(result, "typesSubtotals", "Debit Card"), "debits"), -105.0);
}

TEST(AccountSummary, CategoriesDifferingOnlyInCaseShareOneRow) {
  Household home;
  AddEntry(*home.checking, 1, 20240310, -30.0, kAutoFuel);
  AddEntry(*home.checking, 2, 20240311, -20.0, kLowerAutoFuel);
  AddEntry(*home.checking, 3, 20240312, -1.0, kLowerAuto);
  auto summary = home.Summary({home.checking.get()});
  const plist::Value result = Custom(*summary, 20240301, 20240331).Summary();

  const auto& top = result.find("categoriesSubtotals")->arrayValue();
  ASSERT_EQ(Names(top), std::vector<std::string>({"Auto"}));  // named as first met
  const auto& children = top[0].find("children")->arrayValue();
  ASSERT_EQ(Names(children), std::vector<std::string>({"Fuel"}));
  EXPECT_DOUBLE_EQ(Number(children[0], "amount"), -50.0);
  EXPECT_DOUBLE_EQ(Number(top[0], "amount"), -51.0);
  EXPECT_EQ(&CategoryRow(result, "AUTO:FUEL"), &children[0]);
}

TEST(AccountSummary, ParentRowsIncludeOrExcludeSubcategoryAmounts) {
  Household home;
  AddEntry(*home.checking, 1, 20240310, -30.0, kAutoFuel);
  AddEntry(*home.checking, 2, 20240311, -12.5, kAuto);
  AddEntry(*home.checking, 3, 20240312, 100.0, kAutoRepairs);  // a refund
  auto summary = home.Summary({home.checking.get()});
  Custom(*summary, 20240301, 20240331, kSummaryPeriodMonth);

  plist::Value result = summary->Summary();
  // The period's row keeps its debits and deposits apart; the whole range's
  // row files the period's net amount by its sign.
  const plist::Value& period = result.find("subtotals")->arrayValue().at(0);
  const plist::Value* periodAuto = TARNAccountSummary_CategorySubtotalWithName(
      period.find("categoriesSubtotals")->arrayValue(), "Auto");
  ASSERT_NE(periodAuto, nullptr);
  EXPECT_DOUBLE_EQ(Number(*periodAuto, "amount"), 57.5);
  EXPECT_DOUBLE_EQ(Number(*periodAuto, "debits"), -42.5);
  EXPECT_DOUBLE_EQ(Number(*periodAuto, "deposits"), 100.0);
  const plist::Value* autoRow = &CategoryRow(result, "Auto");
  EXPECT_DOUBLE_EQ(Number(*autoRow, "amount"), 57.5);
  EXPECT_DOUBLE_EQ(Number(*autoRow, "deposits"), 57.5);
  EXPECT_EQ(autoRow->find("debits"), nullptr);

  summary->setParentCategorySubtotalsIncludeSubcategorySubtotals(false);
  result = summary->Summary();
  autoRow = &CategoryRow(result, "Auto");
  EXPECT_DOUBLE_EQ(Number(*autoRow, "amount"), -12.5);
  EXPECT_DOUBLE_EQ(Number(CategoryRow(result, "Auto:Fuel"), "amount"), -30.0);
  EXPECT_DOUBLE_EQ(Number(CategoryRow(result, "Auto:Repairs"), "deposits"), 100.0);
  // A parent made only on the way to a child holds zero and no sides.
  AddEntry(*home.checking, 4, 20240313, -3.0, kFoodGroceries);
  summary->setEntries(home.checking->GetAllEntries());
  result = summary->Summary();
  const plist::Value* food = &CategoryRow(result, "Food");
  ASSERT_NE(food, nullptr);
  EXPECT_DOUBLE_EQ(Number(*food, "amount"), 0.0);
  EXPECT_EQ(food->find("debits"), nullptr);
}

TEST(AccountSummary, WithoutDebitsAndDepositsOnlyBalancesRemain) {
  Household home;
  home.checking->SetStartingBalance(1000.0);
  AddEntry(*home.checking, 1, 20240210, -100.0);
  AddEntry(*home.checking, 2, 20240310, -30.0, kAutoFuel, "Fuel");
  AddEntry(*home.checking, 3, 20240320, 250.0, kSalary, "Pay");
  auto summary = home.Summary({home.checking.get()});
  summary->setShowDebits(false);
  summary->setShowDeposits(false);
  const plist::Value result = Custom(*summary, 20240301, 20240331, kSummaryPeriodWeek).Summary();

  EXPECT_EQ(result.find("entryCount")->intValue(), 0);
  EXPECT_DOUBLE_EQ(Number(result, "total"), 0.0);
  EXPECT_TRUE(result.find("entries")->arrayValue().empty());
  EXPECT_TRUE(result.find("categoriesSubtotals")->arrayValue().empty());
  EXPECT_TRUE(result.find("descriptionsSubtotals")->dictionaryValue().empty());
  EXPECT_DOUBLE_EQ(Number(result, "startBalance"), 900.0);
  EXPECT_DOUBLE_EQ(Number(result, "endBalance"), 1120.0);
  // Balances per week still follow the account.
  const auto& weeks = result.find("subtotals")->arrayValue();
  ASSERT_EQ(weeks.size(), 6u);  // 1-2, 3-9, 10-16, 17-23, 24-30, 31 March
  EXPECT_DOUBLE_EQ(Number(weeks[2], "startBalance"), 900.0);
  EXPECT_DOUBLE_EQ(Number(weeks[2], "endBalance"), 870.0);
  EXPECT_DOUBLE_EQ(Number(weeks[3], "endBalance"), 1120.0);
}

TEST(AccountSummary, VoidEntriesCountInNoTotal) {
  Household home;
  AddEntry(*home.checking, 1, 20240310, -30.0, kAutoFuel, "Fuel", "Station");
  auto voided = AddEntry(*home.checking, 2, 20240311, -500.0, kAutoFuel, "Fuel", "Station");
  voided->SetVoid(true);
  auto voidedDeposit = AddEntry(*home.checking, 3, 20240312, 70.0, kSalary, "Bonus");
  voidedDeposit->SetVoid(true);
  voidedDeposit->SetCleared(1);
  auto summary = home.Summary({home.checking.get()});
  const plist::Value result = Custom(*summary, 20240301, 20240331, kSummaryPeriodDay).Summary();

  EXPECT_EQ(result.find("entryCount")->intValue(), 1);
  for (const char* key : {"total", "debitsTotal", "unresolvedTotal", "taxableTotal"}) {
    EXPECT_DOUBLE_EQ(Number(result, key), -30.0) << key;
  }
  for (const char* key : {"depositsTotal", "resolvedTotal", "taxDeductibleTotal"}) {
    EXPECT_DOUBLE_EQ(Number(result, key), 0.0) << key;
  }
  EXPECT_DOUBLE_EQ(Number(Row(result, "descriptionsSubtotals", "Fuel"), "amount"), -30.0);
  EXPECT_EQ(result.find("descriptionsSubtotals")->find("Bonus"), nullptr);
  EXPECT_DOUBLE_EQ(Number(CategoryRow(result, "Auto:Fuel"), "amount"), -30.0);
  EXPECT_DOUBLE_EQ(Number(result, "endBalance"), -30.0);
  // The void entries are still listed with their day.
  const auto& days = result.find("subtotals")->arrayValue();
  ASSERT_EQ(days.size(), 31u);
  EXPECT_EQ(days[10].find("entries")->arrayValue().size(), 1u);
  EXPECT_EQ(days[10].find("entryCount")->intValue(), 0);
}

TEST(AccountSummary, TwoAccountsInTwoCurrenciesAddUpInTheControllersCurrency) {
  Household home;
  home.checking->SetStartingBalance(100.0);
  home.savings->SetStartingBalance(200.0);  // euros: 250 dollars
  AddEntry(*home.checking, 1, 20240305, -10.0, kFood, "Lunch");
  AddEntry(*home.savings, 1, 20240306, -8.0, kFood, "Lunch");
  AddEntry(*home.savings, 2, 20240201, 40.0, kSalary);
  auto summary = home.Summary({home.checking.get(), home.savings.get()});
  EXPECT_EQ(summary->currency(), home.dollars);
  EXPECT_DOUBLE_EQ(summary->GetStartingBalance(), 350.0);
  EXPECT_DOUBLE_EQ(summary->GetStartingBalanceBeforeDate(20240301), 250.0);  // savings only
  EXPECT_DOUBLE_EQ(summary->GetStartingBalanceBeforeDate(20240306), 350.0);
  EXPECT_DOUBLE_EQ(summary->GetRunningBalanceBeforeDate(20240301), 400.0);
  EXPECT_DOUBLE_EQ(summary->GetRunningBalanceThroughDate(20240306), 380.0);

  const plist::Value result = Custom(*summary, 20240301, 20240331).Summary();
  EXPECT_DOUBLE_EQ(Number(result, "total"), -20.0);
  EXPECT_DOUBLE_EQ(Number(Row(result, "descriptionsSubtotals", "Lunch"), "debits"), -20.0);
  EXPECT_DOUBLE_EQ(Number(CategoryRow(result, "Food"), "amount"), -20.0);
  EXPECT_DOUBLE_EQ(Number(result, "startBalance"), 400.0);
  EXPECT_DOUBLE_EQ(Number(result, "endBalance"), 380.0);

  // One account: its own currency, nothing converted.
  auto euroSummary = home.Summary({home.savings.get()});
  EXPECT_EQ(euroSummary->currency(), home.euros);
  EXPECT_DOUBLE_EQ(Custom(*euroSummary, 20240301, 20240331).ComputeResult()->totals.total, -8.0);
  // No account: a new default currency; amounts stay as they are.
  TARNAccountSummary loose;
  ASSERT_NE(loose.currency(), nullptr);
  EXPECT_EQ(loose.currency()->code(), PFCurrency().code());
  EXPECT_DOUBLE_EQ(loose.GetRunningBalanceThroughDate(20991231), 0.0);
}

// Period bounds of every style on a range from Friday 15 March 2024 to
// Tuesday 14 January 2025.
TEST(AccountSummary, PeriodsOfEveryStyleOnARangeStartingMidMonth) {
  auto bounds = [](std::int32_t style) {
    std::vector<std::pair<DateNumber, DateNumber>> days;
    for (const auto& period : SummaryPeriodsOfRange(20240315, 20250114, style)) {
      EXPECT_EQ(period.start.hourOfDay() + period.start.minuteOfHour(), 0);
      EXPECT_EQ(period.end.secondsSince1970() % 86400, 86399);
      days.emplace_back(period.start.dateNumber(), period.end.dateNumber());
    }
    return days;
  };
  auto days = bounds(kSummaryPeriodDay);
  EXPECT_EQ(days.size(), 306u);
  EXPECT_EQ(days[0], std::make_pair(20240315, 20240315));
  EXPECT_EQ(days.back(), std::make_pair(20250114, 20250114));

  auto weeks = bounds(kSummaryPeriodWeek);
  EXPECT_EQ(weeks[0], std::make_pair(20240315, 20240316));  // Friday to Saturday
  EXPECT_EQ(weeks[1], std::make_pair(20240317, 20240323));  // Sunday to Saturday
  EXPECT_EQ(weeks.back(), std::make_pair(20250112, 20250114));

  auto months = bounds(kSummaryPeriodMonth);
  ASSERT_EQ(months.size(), 10u);
  EXPECT_EQ(months[0], std::make_pair(20240315, 20240414));
  EXPECT_EQ(months[9], std::make_pair(20241215, 20250114));

  auto quarters = bounds(kSummaryPeriodQuarter);
  ASSERT_EQ(quarters.size(), 4u);
  EXPECT_EQ(quarters[0], std::make_pair(20240315, 20240614));
  EXPECT_EQ(quarters[3], std::make_pair(20241215, 20250114));  // cut at the range's end

  auto years = bounds(kSummaryPeriodYear);
  ASSERT_EQ(years.size(), 2u);
  EXPECT_EQ(years[0], std::make_pair(20240315, 20241231));
  EXPECT_EQ(years[1], std::make_pair(20250101, 20250114));

  EXPECT_EQ(bounds(kSummaryPeriodWholeRange),
            (std::vector<std::pair<DateNumber, DateNumber>>{{20240315, 20250114}}));
  EXPECT_EQ(bounds(9), bounds(kSummaryPeriodWholeRange));
  // A month counted from the 31st carries into the next month, as the
  // calendar adds months.
  auto fromJanuary31 = SummaryPeriodsOfRange(20230131, 20230430, kSummaryPeriodMonth);
  EXPECT_EQ(fromJanuary31[0].end.dateNumber(), 20230302);
  EXPECT_EQ(fromJanuary31[1].start.dateNumber(), 20230303);
  // A range that ends before it starts has no periods.
  EXPECT_TRUE(SummaryPeriodsOfRange(20240315, 20240314, kSummaryPeriodDay).empty());
}

TEST(AccountSummary, EntriesOnTheFirstAndLastDayOfPeriodsFallInside) {
  Household home;
  // The first and last day of the first two months counted from 15 March,
  // and of the first week and year.
  const DateNumber dates[] = {20240315, 20240414, 20240415, 20240514, 20240316, 20240317,
                              20241231, 20250101, 20250114, 20250115, 20240314};
  std::int32_t number = 0;
  for (DateNumber date : dates) AddEntry(*home.checking, ++number, date, -1.0);
  auto summary = home.Summary({home.checking.get()});
  Custom(*summary, 20240315, 20250114);

  auto counts = [&](std::int32_t style) {
    summary->setSubtotalPeriodStyle(style);
    std::vector<std::int32_t> counts;
    for (const auto& period : summary->ComputeResult()->periods) {
      counts.push_back(period.totals.entryCount);
    }
    return counts;
  };
  auto months = counts(kSummaryPeriodMonth);
  EXPECT_THAT(std::vector<std::int32_t>(months.begin(), months.begin() + 3),
              ::testing::ElementsAre(4, 2, 0));
  EXPECT_EQ(months.back(), 3);  // 31 December, 1 and 14 January
  auto weeks = counts(kSummaryPeriodWeek);
  EXPECT_EQ(weeks[0], 2);  // 15 and 16 March
  EXPECT_EQ(weeks[1], 1);  // Sunday 17 March
  EXPECT_THAT(counts(kSummaryPeriodYear), ::testing::ElementsAre(7, 2));
  EXPECT_THAT(counts(kSummaryPeriodWholeRange), ::testing::ElementsAre(9));
  auto days = counts(kSummaryPeriodDay);
  EXPECT_EQ(days.front(), 1);
  EXPECT_EQ(days.back(), 1);
  auto quarters = counts(kSummaryPeriodQuarter);
  EXPECT_THAT(quarters, ::testing::ElementsAre(6, 0, 0, 3));
}

TEST(AccountSummary, EveryDateRangeStyleWithTodayPinned) {
  PinnedClock clock(CalendarDate(2024, 5, 15, 14, 0, 0));  // a Wednesday
  Household home;
  AddEntry(*home.checking, 1, 20230704, -1.0);
  AddEntry(*home.checking, 2, 20220110, -1.0);
  AddEntry(*home.checking, 3, 20240901, -1.0);
  auto summary = home.Summary({home.checking.get()});
  auto range = [&](std::int32_t style) {
    summary->setDateRangeStyle(style);
    summary->setStartDate(20000101);
    summary->setEndDate(20000202);
    summary->updateDateRange();
    return std::make_pair(summary->startDate(), summary->endDate());
  };
  using Range = std::pair<DateNumber, DateNumber>;
  EXPECT_EQ(range(0), Range(20220110, 20240901));
  EXPECT_EQ(range(1), Range(20220110, 20240515));
  EXPECT_EQ(range(2), Range(20240515, 20240515));   // today
  EXPECT_EQ(range(3), Range(20240514, 20240514));   // yesterday
  EXPECT_EQ(range(4), Range(20240505, 20240511));   // last week
  EXPECT_EQ(range(5), Range(20240401, 20240430));   // last month
  EXPECT_EQ(range(6), Range(20240101, 20240331));   // last quarter
  EXPECT_EQ(range(7), Range(20230101, 20231231));   // last year
  EXPECT_EQ(range(8), Range(20240512, 20240518));   // this week
  EXPECT_EQ(range(9), Range(20240501, 20240531));   // this month
  EXPECT_EQ(range(10), Range(20240401, 20240630));  // this quarter
  EXPECT_EQ(range(11), Range(20240101, 20241231));  // this year
  EXPECT_EQ(range(15), Range(20240512, 20240515));  // week to date
  EXPECT_EQ(range(16), Range(20240501, 20240515));  // month to date
  EXPECT_EQ(range(17), Range(20240401, 20240515));  // quarter to date
  EXPECT_EQ(range(18), Range(20240101, 20240515));  // year to date
  // Custom and the numbers without a range keep the stored dates.
  for (std::int32_t style : {12, 13, 14, 19, 20, 21, 40, -1}) {
    EXPECT_EQ(range(style), Range(20000101, 20000202)) << style;
  }
  // Without entries, the first two styles cover today.
  summary->setEntries({});
  EXPECT_EQ(range(0), Range(20240515, 20240515));
  EXPECT_EQ(range(1), Range(20240515, 20240515));
}

TEST(AccountSummary, AnAccountWithoutEntries) {
  PinnedClock clock;
  Household home;
  home.checking->SetStartingBalance(42.0);
  auto summary = home.Summary({home.checking.get()});
  summary->Refresh();
  const plist::Value& result = summary->summaryDictionary();
  ASSERT_TRUE(result.isDictionary());
  EXPECT_EQ(summary->startDate(), PinnedClock::kToday);
  EXPECT_EQ(summary->endDate(), PinnedClock::kToday);
  EXPECT_EQ(result.find("entryCount")->intValue(), 0);
  EXPECT_DOUBLE_EQ(Number(result, "startBalance"), 42.0);
  EXPECT_DOUBLE_EQ(Number(result, "endBalance"), 42.0);
  EXPECT_DOUBLE_EQ(Number(result, "runningTotal"), 42.0);
  const auto& periods = result.find("subtotals")->arrayValue();
  ASSERT_EQ(periods.size(), 1u);  // one (monthly) period cut at today
  EXPECT_EQ(periods[0].find("entryCount")->intValue(), 0);
  EXPECT_EQ(summary->GetFirstEntry(), nullptr);
  EXPECT_EQ(summary->GetLastEntry(), nullptr);
  EXPECT_DOUBLE_EQ(summary->GetStartingBalanceBeforeDate(20991231), 0.0);
  // The typed view is the same computation.
  ASSERT_NE(summary->summaryResult(), nullptr);
  EXPECT_EQ(summary->summaryResult()->asDictionary(), result);
}

TEST(AccountSummary, ResultAndPeriodDictionariesCarryEveryKey) {
  Household home;
  home.checking->SetStartingBalance(10.0);
  AddEntry(*home.checking, 1, 20240301, -4.0, kFood, "Tea", "Cafe");
  auto deposit = AddEntry(*home.checking, 2, 20240402, 50.0, kSalary, "Pay", "Work");
  deposit->SetCleared(1);
  deposit->SetTaxDeductible(true);
  auto summary = home.Summary({home.checking.get()});
  const plist::Value result = Custom(*summary, 20240301, 20240430, kSummaryPeriodMonth).Summary();

  const std::vector<std::string> periodKeys = {
      "categoriesSubtotals", "debitsTotal",    "depositsTotal",   "descriptionsSubtotals",
      "endBalance",          "endDate",        "entries",         "entryCount",
      "resolvedTotal",       "runningTotal",   "startBalance",    "startDate",
      "taxDeductibleTotal",  "taxableTotal",   "toFromSubtotals", "total",
      "typesSubtotals",      "unresolvedTotal"};
  auto keysOf = [](const plist::Value& d) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : d.dictionaryValue()) keys.push_back(key);
    return keys;
  };
  std::vector<std::string> resultKeys = periodKeys;
  resultKeys.insert(resultKeys.begin() + 12, "subtotals");
  EXPECT_EQ(keysOf(result), resultKeys);
  const auto& periods = result.find("subtotals")->arrayValue();
  ASSERT_EQ(periods.size(), 2u);
  EXPECT_EQ(keysOf(periods[0]), periodKeys);

  // Dates: the range's ends at midnight, a period's first and last moment.
  EXPECT_EQ(result.find("startDate")->dateValue().secondsSince2001,
            PropertyListDate(CalendarDate(2024, 3, 1)).secondsSince2001);
  EXPECT_EQ(result.find("endDate")->dateValue().secondsSince2001,
            PropertyListDate(CalendarDate(2024, 4, 30)).secondsSince2001);
  EXPECT_EQ(periods[0].find("endDate")->dateValue().secondsSince2001,
            PropertyListDate(CalendarDate(2024, 3, 31, 23, 59, 59)).secondsSince2001);
  EXPECT_EQ(PropertyListDate(CalendarDate(2001, 1, 1)).secondsSince2001, 0.0);
  // runningTotal starts from the period's start balance.
  EXPECT_DOUBLE_EQ(Number(periods[0], "runningTotal"), 6.0);
  EXPECT_DOUBLE_EQ(Number(periods[1], "startBalance"), 6.0);
  EXPECT_DOUBLE_EQ(Number(periods[1], "runningTotal"), 56.0);
  EXPECT_DOUBLE_EQ(Number(result, "runningTotal"), 56.0);
  EXPECT_DOUBLE_EQ(Number(periods[1], "resolvedTotal"), 50.0);
  EXPECT_DOUBLE_EQ(Number(periods[1], "taxDeductibleTotal"), 50.0);
  EXPECT_DOUBLE_EQ(Number(result, "taxableTotal"), -4.0);
  // Rows: debits only for a debit, deposits only for the rest.
  const plist::Value& tea = Row(result, "descriptionsSubtotals", "Tea");
  EXPECT_NE(tea.find("debits"), nullptr);
  EXPECT_EQ(tea.find("deposits"), nullptr);
  EXPECT_DOUBLE_EQ(Number(Row(result, "toFromSubtotals", "Work"), "deposits"), 50.0);
  EXPECT_DOUBLE_EQ(Number(Row(result, "typesSubtotals", "Deposit"), "amount"), 50.0);
  // "entries" names the entries by their place in the summary's list.
  EXPECT_EQ(periods[1].find("entries")->arrayValue(), plist::Array{plist::Value(1)});

  // The typed view holds the same.
  const auto& typed = *summary->summaryResult();
  ASSERT_EQ(typed.periods.size(), 2u);
  EXPECT_EQ(typed.entriesOf(typed.periods[1]).front(), deposit);
  EXPECT_EQ(typed.subtotals.categories.size(), 2u);
  EXPECT_EQ(typed.subtotals.descriptions.front().name, "Pay");
  EXPECT_EQ(typed.asDictionary(), result);
}

TEST(AccountSummary, ConditionsOfTheFilter) {
  Household home;
  auto check = AddEntry(*home.checking, 1, 20240301, -4.0, kAutoFuel, "Fuel", "Station");
  check->SetIsCheck(true);
  check->SetCheckNumber(100);
  auto cleared = AddEntry(*home.checking, 2, 20240302, -6.0, kFood, "Market", "Corner");
  cleared->SetCleared(1);
  cleared->SetNotes(std::string("weekly run"));
  auto deductible = AddEntry(*home.checking, 3, 20240303, 9.0, kSalary, "Pay", "Work");
  deductible->SetTaxDeductible(true);
  auto split = AddEntry(*home.checking, 4, 20240304, 0.0, kFood, "Split");
  split->addSplitLineItemWithCategory(kAutoRepairs, "tyres", "", -80.0);
  AddEntry(*home.checking, 5, 20240229, -1.0, kFood, "Before the range");
  AddEntry(*home.checking, 6, 20240401, -1.0, kFood, "After the range");
  auto summary = home.Summary({home.checking.get()});
  Custom(*summary, 20240301, 20240331);
  auto numbers = [&]() {
    std::vector<std::int32_t> numbers;
    for (const auto& entry : summary->ComputeResult()->entries)
      numbers.push_back(entry->GetNumber());
    return numbers;
  };
  using ::testing::ElementsAre;
  EXPECT_THAT(numbers(), ElementsAre(1, 2, 3, 4));
  summary->setShowChecks(kSummaryShowOnly);
  EXPECT_THAT(numbers(), ElementsAre(1));
  summary->setShowChecks(kSummaryShowOthers);
  EXPECT_THAT(numbers(), ElementsAre(2, 3, 4));
  summary->setShowChecks(kSummaryShowAll);
  summary->setShowResolved(kSummaryShowOnly);
  EXPECT_THAT(numbers(), ElementsAre(2));
  summary->setShowResolved(kSummaryShowAll);
  summary->setShowTaxDeductible(kSummaryShowOnly);
  EXPECT_THAT(numbers(), ElementsAre(3));
  summary->setShowTaxDeductible(kSummaryShowAll);
  summary->setShowDeposits(false);
  EXPECT_THAT(numbers(), ElementsAre(1, 2, 4));
  summary->setShowDeposits(true);

  summary->setFilter(true);
  auto search = [&](std::int32_t type, std::string text) {
    summary->setFilterType(type);
    summary->setFilterData(plist::Value(std::move(text)));
    return numbers();
  };
  EXPECT_THAT(search(kSummarySearchAnything, "corner"), ElementsAre(2));
  EXPECT_THAT(search(kSummarySearchTypeName, "deposit"), ElementsAre(3));
  EXPECT_THAT(search(kSummarySearchDescription, "PAY"), ElementsAre(3));
  // To/from and category together: both must hold ("Work" but not "Salary").
  EXPECT_THAT(search(kSummarySearchToFromAndCategory, "o"), ElementsAre(1, 2));
  EXPECT_THAT(search(kSummarySearchCategory, "fuel"), ElementsAre(1));
  EXPECT_THAT(search(kSummarySearchSplitDescription, "tyre"), ElementsAre(4));
  EXPECT_THAT(search(kSummarySearchSplitCategory, "repairs"), ElementsAre(4));
  EXPECT_THAT(search(kSummarySearchNotes, "weekly"), ElementsAre(2));
  EXPECT_THAT(search(7, "nothing matches this"), ElementsAre(1, 2, 3, 4));  // no text condition
  summary->setFilter(false);
  EXPECT_THAT(search(kSummarySearchDescription, "nothing"), ElementsAre(1, 2, 3, 4));
}

TEST(AccountSummary, CategoryTreeFunctions) {
  plist::Array rows;
  plist::Value& fuel = TARNAccountSummary_AddCategorySubtotalWithName(rows, "Auto:Fuel");
  EXPECT_EQ(fuel.find("subtotalName")->stringValue(), "Fuel");
  EXPECT_DOUBLE_EQ(fuel.find("amount")->doubleValue(), 0.0);
  EXPECT_TRUE(fuel.find("children")->arrayValue().empty());
  TARNAccountSummary_AddCategorySubtotalWithName(rows, "auto:repairs:tyres");
  TARNAccountSummary_AddCategorySubtotalWithName(rows, "");
  EXPECT_EQ(Names(rows), std::vector<std::string>({"Auto", ""}));
  EXPECT_NE(TARNAccountSummary_CategorySubtotalWithName(rows, "AUTO:Repairs:Tyres"), nullptr);
  EXPECT_EQ(TARNAccountSummary_CategorySubtotalWithName(rows, "Auto:Tyres"), nullptr);
  EXPECT_EQ(TARNAccountSummary_CategorySubtotalWithName(rows, "Food"), nullptr);
  EXPECT_EQ(TARNAccountSummary_CategorySubtotalWithName(rows, ""), &rows[1]);

  TARNAccountSummary summary;
  std::vector<std::string> flat;
  for (const plist::Value* row : summary.allCategorySubtotalsForCategorySubtotals(rows)) {
    flat.push_back(row->find("subtotalName")->stringValue());
  }
  EXPECT_EQ(flat, std::vector<std::string>({"Auto", "Fuel", "repairs", "tyres", ""}));

  // Merging: amounts add up; sides by the sign of each merged amount.
  TARNAccountSummary_CategorySubtotalWithName(rows, "Auto")->set("amount", plist::Value(-5.0));
  TARNAccountSummary_CategorySubtotalWithName(rows, "Auto:Fuel")->set("amount", plist::Value(3.0));
  plist::Array overall;
  summary.processOverallSummaryCategorySubtotals(rows, std::nullopt, overall);
  summary.processOverallSummaryCategorySubtotals(rows, std::nullopt, overall);
  const plist::Value* autoRow = TARNAccountSummary_CategorySubtotalWithName(overall, "auto");
  ASSERT_NE(autoRow, nullptr);
  EXPECT_DOUBLE_EQ(Number(*autoRow, "amount"), -10.0);
  EXPECT_DOUBLE_EQ(Number(*autoRow, "debits"), -10.0);
  EXPECT_EQ(autoRow->find("deposits"), nullptr);
  const plist::Value* tyres =
      TARNAccountSummary_CategorySubtotalWithName(overall, "Auto:Repairs:Tyres");
  ASSERT_NE(tyres, nullptr);
  EXPECT_DOUBLE_EQ(Number(*tyres, "deposits"), 0.0);  // zero counts as a deposit
  EXPECT_EQ(summary.allCategorySubtotalsForCategorySubtotals(overall).size(), 5u);

  Household home;
  auto all = home.controller.allCategories();
  EXPECT_EQ(TARNAccountSummary_CategoryWithNumber(all, kLowerAutoFuel)->fullName(), "auto:fuel");
  EXPECT_EQ(TARNAccountSummary_CategoryWithNumber(all, kNoSuchCategory), nullptr);
}

TEST(AccountSummary, EntryLookUpsOverTheSummarysEntries) {
  Household home;
  auto a = AddEntry(*home.checking, 1, 20240305, -1.0);
  auto b = AddEntry(*home.checking, 2, 20240301, 5.0);
  auto c = AddEntry(*home.checking, 3, 20240301, -2.0);
  auto d = AddEntry(*home.checking, 4, 20240309, 3.0);
  auto e = AddEntry(*home.checking, 5, 20240309, 4.0);
  auto summary = home.Summary({home.checking.get()});
  EXPECT_EQ(summary->GetFirstEntry(), b);  // the first of the earliest day in list order
  EXPECT_EQ(summary->GetLastEntry(), d);
  EXPECT_EQ(summary->GetDebits(), (TARNAccountSummary::Entries{a, c}));
  EXPECT_EQ(summary->GetDeposits(), (TARNAccountSummary::Entries{b, d, e}));
  // Entries of the summary in list order; the result sorts them by date and number.
  const auto result = Custom(*summary, 20240301, 20240331).ComputeResult();
  EXPECT_EQ(result->entries, (TARNAccountSummary::Entries{b, c, a, d, e}));
  EXPECT_EQ(result->entryIndexes, (std::vector<std::int64_t>{1, 2, 0, 3, 4}));
}

}  // namespace
}  // namespace tarn::testing
