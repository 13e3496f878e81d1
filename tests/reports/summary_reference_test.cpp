// The summary against a plain reading of how it is defined: every period
// collects its entries by scanning all survivors, every balance asks the
// accounts again, and the rows are property-list dictionaries built with the
// category-tree functions. Both must agree on generated households.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "reports/summary_test_support.h"
#include "tarn/filters/filter.h"
#include "tarn/model/amounts.h"
#include "tarn/reports/summary_category_tree.h"

namespace tarn::testing {
namespace {

constexpr std::int64_t kSeconds1970To2001 = 978307200;

plist::Value DateValue(const CalendarDate& date) {
  return plist::Value(plist::Date{double(date.secondsSince1970() - kSeconds1970To2001)});
}

double Converted(const TARNAccountEntry& entry, double amount, const PFCurrency& target) {
  TARNAccount* account = entry.GetAccount();
  if (!account || !account->currency()) return amount;
  return account->currency()->convertAmount(amount, &target);
}

void AddToKey(plist::Value& row, const char* key, double amount) {
  plist::Dictionary& d = row.mutableDictionary();
  if (const plist::Value* old = row.find(key)) {
    d[key] = plist::Value(old->doubleValue() + amount);
  } else {
    d[key] = plist::Value(amount);
  }
}

// A keyed row: "amount" and, by the debit flag, "debits" or "deposits".
void AddKeyedRow(plist::Value& rows, const std::string& key, double amount, bool debit) {
  plist::Dictionary& d = rows.mutableDictionary();
  auto found = d.find(key);
  if (found == d.end()) {
    plist::Dictionary row;
    row.emplace("amount", amount);
    row.emplace(debit ? "debits" : "deposits", amount);
    d.emplace(key, plist::Value(std::move(row)));
    return;
  }
  AddToKey(found->second, "amount", amount);
  AddToKey(found->second, debit ? "debits" : "deposits", amount);
}

std::string FullNameOf(const TARNAccountEntry& first, std::int32_t number) {
  TARNAccount* account = first.GetAccount();
  if (!account || !account->accountsController()) return "";
  auto category =
      TARNAccountSummary_CategoryWithNumber(account->accountsController()->allCategories(), number);
  return category ? category->fullName() : "";
}

void FileCategory(const TARNAccountSummary& summary, plist::Array& tree,
                  const std::string& fullName, double amount, bool debit) {
  std::vector<std::string> prefixes;
  for (std::size_t colon = fullName.find(':'); colon != std::string::npos;
       colon = fullName.find(':', colon + 1)) {
    prefixes.push_back(fullName.substr(0, colon));
  }
  prefixes.push_back(fullName);
  if (!summary.parentCategorySubtotalsIncludeSubcategorySubtotals()) {
    prefixes.erase(prefixes.begin(), prefixes.end() - 1);
  }
  for (const std::string& prefix : prefixes) {
    plist::Value& row = TARNAccountSummary_AddCategorySubtotalWithName(tree, prefix);
    AddToKey(row, "amount", amount);
    AddToKey(row, debit ? "debits" : "deposits", amount);
  }
}

plist::Value ReferencePeriod(const TARNAccountSummary& summary,
                             const TARNAccountSummary::Entries& entries, const CalendarDate& start,
                             const CalendarDate& end) {
  const auto target = summary.currency();
  double total = 0, debits = 0, deposits = 0, resolved = 0, unresolved = 0, taxable = 0,
         deductible = 0;
  std::int32_t count = 0;
  const double startBalance =
      RoundNearZeroValue(summary.GetRunningBalanceBeforeDate(start.dateNumber()));
  double running = startBalance;
  plist::Value types{plist::Dictionary()}, descriptions{plist::Dictionary()},
      toFroms{plist::Dictionary()};
  plist::Array tree;
  plist::Array places;
  for (const auto& entry : entries) {
    const auto& all = summary.entries();
    places.emplace_back(std::int64_t(std::find(all.begin(), all.end(), entry) - all.begin()));
    if (entry->GetVoid()) continue;
    const double amount = Converted(*entry, entry->GetAmount(), *target);
    total += amount;
    if (entry->IsDeposit()) {
      deposits += amount;
    } else if (entry->IsDebit()) {
      debits += amount;
    }
    (entry->GetCleared() ? resolved : unresolved) += amount;
    (entry->GetTaxDeductible() ? deductible : taxable) += amount;
    ++count;
    running += amount;
    const bool debit = entry->IsDebit();
    auto type = entry->GetAccount()->accountEntryTypeForNumber(entry->GetType());
    AddKeyedRow(types, type ? type->GetName() : "", amount, debit);
    AddKeyedRow(descriptions, entry->GetDescription(), amount, debit);
    AddKeyedRow(toFroms, entry->GetToFrom(), amount, debit);
    if (entry->splitLineItems().empty()) {
      FileCategory(summary, tree, FullNameOf(*entries.front(), entry->GetCategory()), amount,
                   debit);
    } else {
      for (const auto& item : entry->splitLineItems()) {
        FileCategory(summary, tree, FullNameOf(*entries.front(), item->category()),
                     Converted(*entry, item->amount(), *target), debit);
      }
    }
  }
  plist::Dictionary d;
  d.emplace("startDate", DateValue(start));
  d.emplace("endDate", DateValue(end));
  d.emplace("entries", std::move(places));
  d.emplace("entryCount", std::int64_t{count});
  d.emplace("total", total);
  d.emplace("debitsTotal", debits);
  d.emplace("depositsTotal", deposits);
  d.emplace("resolvedTotal", resolved);
  d.emplace("unresolvedTotal", unresolved);
  d.emplace("taxableTotal", taxable);
  d.emplace("taxDeductibleTotal", deductible);
  d.emplace("runningTotal", running);
  d.emplace("startBalance", startBalance);
  d.emplace("endBalance",
            RoundNearZeroValue(summary.GetRunningBalanceThroughDate(end.dateNumber())));
  d.emplace("categoriesSubtotals", std::move(tree));
  d.emplace("typesSubtotals", std::move(types));
  d.emplace("descriptionsSubtotals", std::move(descriptions));
  d.emplace("toFromSubtotals", std::move(toFroms));
  return plist::Value(std::move(d));
}

void MergeKeyedRows(plist::Value& overall, const plist::Value& period) {
  plist::Dictionary& d = overall.mutableDictionary();
  for (const auto& [key, row] : period.dictionaryValue()) {
    auto found = d.find(key);
    if (found == d.end()) {
      d.emplace(key, row);
      continue;
    }
    for (const char* sum : {"amount", "debits", "deposits"}) {
      if (const plist::Value* value = row.find(sum))
        AddToKey(found->second, sum, value->doubleValue());
    }
  }
}

// The summary read plainly, step by step.
plist::Value ReferenceSummary(TARNAccountSummary& summary) {
  summary.updateDateRange();
  TARNAccountSummary::Entries candidates;
  if (summary.showDebits()) candidates = summary.GetDebits();
  if (summary.showDeposits()) {
    auto deposits = summary.GetDeposits();
    candidates.insert(candidates.end(), deposits.begin(), deposits.end());
  }
  auto survivors = summary.summaryFilter()->filterEntries(candidates);
  std::stable_sort(survivors.begin(), survivors.end(),
                   [](const auto& a, const auto& b) { return a->DateIsGreaterThan(*b) < 0; });

  plist::Array periods;
  const CalendarDate rangeStart = CalendarDate::dateWithDateNumber(summary.startDate());
  const CalendarDate rangeEnd =
      CalendarDate::dateWithDateNumber(summary.endDate()).dateByAddingYears(0, 0, 0, 23, 59, 59);
  const std::int32_t style = summary.subtotalPeriodStyle();
  if (style < 0 || style >= 5) {
    if (rangeStart <= rangeEnd) {
      periods.push_back(ReferencePeriod(summary, survivors, rangeStart, rangeEnd));
    }
  } else {
    for (CalendarDate start = rangeStart; start <= rangeEnd;) {
      CalendarDate end;
      switch (style) {
        case 0:
          end = start.dateByAddingYears(0, 0, 0, 23, 59, 59);
          break;
        case 1: {
          CalendarDate day = start;
          while (day.dateByAddingYears(0, 0, 1).dayOfWeek() != 0)
            day = day.dateByAddingYears(0, 0, 1);
          end = day.dateByAddingYears(0, 0, 0, 23, 59, 59);
          break;
        }
        case 2:
          end = start.dateByAddingYears(0, 1, 0, 0, 0, -1);
          break;
        case 3:
          end = start.dateByAddingYears(0, 3, 0, 0, 0, -1);
          break;
        default:
          end = CalendarDate(start.yearOfCommonEra(), 12, 31, 23, 59, 59);
          break;
      }
      if (end > rangeEnd) end = rangeEnd;
      TARNAccountSummary::Entries inPeriod;
      for (const auto& entry : survivors) {
        if (entry->GetDate() >= start.dateNumber() && entry->GetDate() <= end.dateNumber()) {
          inPeriod.push_back(entry);
        }
      }
      periods.push_back(ReferencePeriod(summary, inPeriod, start, end));
      start = end.dateByAddingYears(0, 0, 0, 0, 0, 1);
    }
  }

  std::int32_t count = 0;
  std::map<std::string, double> totals;
  const char* kTotals[] = {"total",           "debitsTotal",  "depositsTotal",     "resolvedTotal",
                           "unresolvedTotal", "taxableTotal", "taxDeductibleTotal"};
  for (const char* key : kTotals) totals[key] = 0.0;
  plist::Value types{plist::Dictionary()}, descriptions{plist::Dictionary()},
      toFroms{plist::Dictionary()};
  plist::Array tree;
  plist::Array allPlaces;
  for (const plist::Value& period : periods) {
    count += period.find("entryCount")->intValue();
    for (const char* key : kTotals) totals[key] += period.find(key)->doubleValue();
    MergeKeyedRows(types, *period.find("typesSubtotals"));
    MergeKeyedRows(descriptions, *period.find("descriptionsSubtotals"));
    MergeKeyedRows(toFroms, *period.find("toFromSubtotals"));
    summary.processOverallSummaryCategorySubtotals(period.find("categoriesSubtotals")->arrayValue(),
                                                   std::nullopt, tree);
    for (const auto& place : period.find("entries")->arrayValue()) allPlaces.push_back(place);
  }
  plist::Dictionary d;
  d.emplace("subtotals", std::move(periods));
  d.emplace("categoriesSubtotals", std::move(tree));
  d.emplace("typesSubtotals", std::move(types));
  d.emplace("descriptionsSubtotals", std::move(descriptions));
  d.emplace("toFromSubtotals", std::move(toFroms));
  d.emplace("entries", std::move(allPlaces));
  d.emplace("entryCount", std::int64_t{count});
  for (const char* key : kTotals) d.emplace(key, totals[key]);
  d.emplace("startDate", DateValue(rangeStart));
  d.emplace("endDate", DateValue(CalendarDate::dateWithDateNumber(summary.endDate())));
  const double startBalance =
      RoundNearZeroValue(summary.GetRunningBalanceBeforeDate(summary.startDate()));
  d.emplace("startBalance", startBalance);
  d.emplace("endBalance",
            RoundNearZeroValue(summary.GetRunningBalanceThroughDate(summary.endDate())));
  d.emplace("runningTotal", startBalance + totals["total"]);
  return plist::Value(std::move(d));
}

// Exact equality, except that balances (and the running totals that start
// from them) may differ in the last bits: the summary adds the accounts'
// amounts in date order, the accounts in register order.
bool IsBalanceKey(std::string_view key) {
  return key == "startBalance" || key == "endBalance" || key == "runningTotal";
}

void ExpectSame(const plist::Value& expected, const plist::Value& actual, const std::string& path,
                bool balance, int& failures) {
  if (failures > 5) return;
  if (balance && expected.isReal() && actual.isReal()) {
    if (std::fabs(expected.doubleValue() - actual.doubleValue()) > 1e-6) {
      ADD_FAILURE() << path << ": " << expected.doubleValue() << " != " << actual.doubleValue();
      ++failures;
    }
    return;
  }
  if (expected.kind() != actual.kind()) {
    ADD_FAILURE() << path << ": kinds differ";
    ++failures;
    return;
  }
  if (expected.isDictionary()) {
    const auto& a = expected.dictionaryValue();
    const auto& b = actual.dictionaryValue();
    if (a.size() != b.size()) {
      std::string keys;
      for (const auto& [k, v] : a) keys += k + " ";
      keys += "| ";
      for (const auto& [k, v] : b) keys += k + " ";
      ADD_FAILURE() << path << ": keys differ: " << keys;
      ++failures;
      return;
    }
    for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j) {
      if (i->first != j->first) {
        ADD_FAILURE() << path << ": key " << i->first << " vs " << j->first;
        ++failures;
        return;
      }
      ExpectSame(i->second, j->second, path + "/" + i->first, IsBalanceKey(i->first), failures);
    }
    return;
  }
  if (expected.isArray()) {
    const auto& a = expected.arrayValue();
    const auto& b = actual.arrayValue();
    if (a.size() != b.size()) {
      ADD_FAILURE() << path << ": " << a.size() << " items vs " << b.size();
      ++failures;
      return;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
      ExpectSame(a[i], b[i], path + "[" + std::to_string(i) + "]", false, failures);
    }
    return;
  }
  if (!(expected == actual)) {
    std::ostringstream text;
    text.precision(17);
    text << path << ": " << expected.doubleValue() << " vs " << actual.doubleValue() << " ("
         << expected.stringValue() << " / " << actual.stringValue() << ")";
    ADD_FAILURE() << text.str();
    ++failures;
  }
}

// ---------------------------------------------------------------------------
// Generated households
// ---------------------------------------------------------------------------

const char* const kDescriptions[] = {"Coffee", "coffee", "Rent", "Fuel stop", "Market", ""};
const char* const kPayees[] = {"Corner Shop", "Landlord", "", "Station", "corner shop"};
const std::int32_t kCategories[] = {-1,      kAuto,          kAutoFuel,  kAutoRepairs,
                                    kFood,   kFoodGroceries, kLowerAuto, kLowerAutoFuel,
                                    kSalary, kNoSuchCategory};

DateNumber RandomDate(std::mt19937& random, DateNumber from, int days) {
  const CalendarDate start = CalendarDate::dateWithDateNumber(from);
  // A third of the dates fall on a period bound: a first or last of a month,
  // a Sunday or Saturday, the first or last day of a year.
  CalendarDate date = start.dateByAddingYears(0, 0, int(random() % days));
  switch (random() % 9) {
    case 0:
      date = CalendarDate(date.yearOfCommonEra(), date.monthOfYear(), 1);
      break;
    case 1:
      date = CalendarDate(date.yearOfCommonEra(), date.monthOfYear(), date.daysInMonth());
      break;
    case 2:
      date = date.dateByAddingYears(0, 0, -date.dayOfWeek());
      break;
    case 3:
      date = CalendarDate(date.yearOfCommonEra(), random() % 2 ? 1 : 12, random() % 2 ? 1 : 31);
      break;
    default:
      break;
  }
  return date.dateNumber();
}

void AddRandomEntries(TARNAccount& account, std::mt19937& random, int count, DateNumber from,
                      int days) {
  for (int i = 0; i < count; ++i) {
    const double amount = std::round((double(random() % 200000) / 100.0 - 1200.0) * 100.0) / 100.0;
    auto entry = AddEntry(account, i + 1, RandomDate(random, from, days), amount,
                          kCategories[random() % std::size(kCategories)],
                          kDescriptions[random() % std::size(kDescriptions)],
                          kPayees[random() % std::size(kPayees)]);
    // Equal entry numbers on one day keep their list order.
    if (random() % 10 == 0) entry->SetNumber(1);
    entry->SetType(std::int32_t(random() % 14) - 1);
    entry->SetCleared(random() % 2);
    entry->SetTaxDeductible(random() % 4 == 0);
    entry->SetIsCheck(random() % 5 == 0);
    if (random() % 10 == 0) entry->SetVoid(true);
    // Entries that are both or neither debit and deposit.
    if (random() % 40 == 0) entry->SetIsDeposit(true);
    if (random() % 40 == 0) entry->SetIsDebit(false);
    if (random() % 6 == 0) {
      const int items = 1 + int(random() % 3);
      for (int k = 0; k < items; ++k) {
        entry->addSplitLineItemWithCategory(kCategories[random() % std::size(kCategories)], "", "",
                                            double(int(random() % 20000) - 10000) / 100.0);
      }
    }
  }
}

TEST(SummaryReference, AgreesWithThePlainReadingOnGeneratedHouseholds) {
  PinnedClock clock(CalendarDate(2025, 3, 12, 9, 0, 0));
  int compared = 0;
  for (unsigned seed = 1; seed <= 320; ++seed) {
    std::mt19937 random(seed);
    Household home;
    home.checking->SetStartingBalance(double(random() % 100000) / 100.0);
    home.savings->SetStartingBalance(double(random() % 100000) / 100.0);
    const DateNumber from = 20230101 + std::int32_t(random() % 12) * 100 + 14;
    const int days = 30 + int(random() % 700);
    AddRandomEntries(*home.checking, random, int(random() % 160), from, days);
    if (random() % 3 != 0) AddRandomEntries(*home.savings, random, int(random() % 80), from, days);
    std::vector<TARNAccount*> accounts{home.checking.get()};
    if (random() % 3 != 0) accounts.push_back(home.savings.get());
    auto summary = home.Summary(accounts);

    const std::int32_t rangeStyles[] = {0, 1, 3, 7, 9, 16, 18, 20, 20, 20, 20, 13};
    summary->setDateRangeStyle(rangeStyles[random() % std::size(rangeStyles)]);
    const DateNumber start = RandomDate(random, from, days);
    const CalendarDate startDate = CalendarDate::dateWithDateNumber(start);
    summary->setStartDate(start);
    summary->setEndDate(startDate.dateByAddingYears(0, 0, int(random() % 500)).dateNumber());
    summary->setSubtotalPeriodStyle(std::int32_t(random() % 7));
    summary->setShowDebits(random() % 8 != 0);
    summary->setShowDeposits(random() % 8 != 0);
    summary->setShowResolved(std::int32_t(random() % 6) > 2 ? 2 : std::int32_t(random() % 3));
    summary->setShowTaxDeductible(random() % 4 == 0 ? std::int32_t(random() % 2) : 2);
    summary->setShowChecks(random() % 4 == 0 ? std::int32_t(random() % 2) : 2);
    summary->setParentCategorySubtotalsIncludeSubcategorySubtotals(random() % 2);
    if (random() % 5 == 0) {
      const std::int32_t filterTypes[] = {0, 1, 2, 3, 4, 10, 12, 20, 7};
      summary->setFilter(true);
      summary->setFilterType(filterTypes[random() % std::size(filterTypes)]);
      const char* texts[] = {"co", "auto", "Fuel", "shop", "e"};
      summary->setFilterData(plist::Value(texts[random() % std::size(texts)]));
    }

    // The same options on a twin, so that each runs updateDateRange once.
    auto twin = TARNAccountSummary::initWithOptionsDictionary(summary->optionsAsDictionary(),
                                                              summary->entries());
    twin->setAccounts(summary->accounts());
    const plist::Value expected = ReferenceSummary(*twin);
    const plist::Value actual = summary->Summary();
    int failures = 0;
    ExpectSame(expected, actual, "seed " + std::to_string(seed), false, failures);
    if (failures) break;
    ++compared;
  }
  EXPECT_EQ(compared, 320);
}

// The public period call agrees with the plain reading too, on a period
// that is not one of the summary's own.
TEST(SummaryReference, SubtotalEntriesAgreesWithThePlainReading) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    std::mt19937 random(seed * 7919);
    Household home;
    AddRandomEntries(*home.checking, random, 60, 20240301, 90);
    AddRandomEntries(*home.savings, random, 30, 20240301, 90);
    auto summary = home.Summary({home.checking.get(), home.savings.get()});
    summary->setParentCategorySubtotalsIncludeSubcategorySubtotals(seed % 2);
    TARNAccountSummary::Entries some;
    for (const auto& entry : summary->entries()) {
      if (random() % 3 == 0) some.push_back(entry);
    }
    const CalendarDate start(2024, 4, 10);
    const CalendarDate end(2024, 5, 9, 23, 59, 59);
    int failures = 0;
    ExpectSame(ReferencePeriod(*summary, some, start, end),
               summary->SubtotalEntries(some, start, end), "seed " + std::to_string(seed), false,
               failures);
    if (failures) break;
  }
}

}  // namespace
}  // namespace tarn::testing
