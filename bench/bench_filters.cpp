// Smart-folder and view filters over large registers: a description search,
// the register's view filter (a search on every text plus a date range), and
// a smart folder of three groups joined by and/or.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/account/accounts_controller.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/calendar_date.h"

namespace {

using namespace tarn;

class BenchController : public TARNAccountsController {
 public:
  BenchController() {
    const char* names[] = {"Food", "Auto", "Home", "Utilities", "Travel", "Health", "Gifts"};
    int32_t number = 1;
    for (const char* name : names) {
      auto category = std::make_shared<TARNAccountEntryCategory>();
      category->setName(name);
      category->setNumber(number++);
      for (const char* child : {"Misc", "Regular", "One-off"}) {
        auto sub = std::make_shared<TARNAccountEntryCategory>();
        sub->setName(child);
        sub->setNumber(number++);
        category->addChild(sub);
      }
      roots_.push_back(category);
    }
  }
  std::shared_ptr<PFCurrency> currency() override { return nullptr; }
  std::shared_ptr<PFCurrency> currencyWithCode(const std::string&) override { return nullptr; }
  std::vector<std::shared_ptr<PFCurrency>>& currencies() override { return currencies_; }
  std::shared_ptr<TARNAccountEntryCategory> categoryWithNumber(int32_t number) override {
    for (const auto& category : allCategories()) {
      if (category->number() == number) return category;
    }
    return nullptr;
  }
  std::vector<std::shared_ptr<TARNAccountEntryCategory>> allCategories() override {
    std::vector<std::shared_ptr<TARNAccountEntryCategory>> all;
    for (const auto& root : roots_) {
      all.push_back(root);
      for (const auto& child : root->allChildren()) all.push_back(child);
    }
    return all;
  }

 private:
  std::vector<std::shared_ptr<TARNAccountEntryCategory>> roots_;
  std::vector<std::shared_ptr<PFCurrency>> currencies_;
};

// A register of `count` entries over the two years up to 30 June 2026, with
// descriptions, payees and notes drawn from small pools (some with accents).
struct Register {
  explicit Register(int64_t count) {
    account.setAccountsController(&controller);
    account.types() = TARNAccountEntryType::defaultTypes();
    const char* descriptions[] = {"Weekly groceries at the market",
                                  "Coffee beans",
                                  "Fuel for the car",
                                  "Electricity bill",
                                  "Dinner with friends",
                                  "Pharmacy",
                                  "Café crème and croissant",
                                  "Rent",
                                  "Hardware store: paint and brushes",
                                  "Birthday present"};
    const char* payees[] = {"Corner Market", "ACME Power", "Shell", "Dr. Müller",
                            "Landlord",      "Bookshop",   "",      "Bäckerei Schmidt"};
    const char* notes[] = {"", "", "", "paid by card", "reimbursed", "split with Sam"};
    uint32_t seed = 12345;
    auto next = [&seed] {
      seed = seed * 1664525u + 1013904223u;
      return seed >> 8;
    };
    const CalendarDate first(2024, 7, 1);
    entries.reserve(static_cast<size_t>(count));
    for (int64_t i = 0; i < count; ++i) {
      auto entry = std::make_shared<TARNAccountEntry>();
      entry->SetAccount(&account);
      entry->SetNumber(static_cast<int32_t>(i));
      entry->SetDescription(std::string(descriptions[next() % 10]));
      entry->SetToFrom(std::string(payees[next() % 8]));
      entry->SetNotes(std::string(notes[next() % 6]));
      entry->SetType(static_cast<int32_t>(next() % 13));
      entry->SetCategory(static_cast<int32_t>(next() % 29));  // some numbers resolve to nothing
      entry->SetDate(first.dateByAddingYears(0, 0, static_cast<int>(next() % 730)).dateNumber());
      entry->SetAmount(-static_cast<double>(next() % 100000) / 100.0);
      entry->SetCleared(next() % 2);
      if (next() % 5 == 0) {
        entry->SetIsCheck(true);
        entry->SetCheckNumber(static_cast<int32_t>(1000 + i));
      }
      entries.push_back(std::move(entry));
    }
  }

  BenchController controller;
  TARNAccount account;
  TARNEntryList entries;
};

const Register& RegisterOf(int64_t count) {
  static std::map<int64_t, std::unique_ptr<Register>> registers;
  auto& slot = registers[count];
  if (!slot) slot = std::make_unique<Register>(count);
  return *slot;
}

void PinToday() {
  CalendarDate::overrideNow(CalendarDate(2026, 6, 30));
}

void Run(benchmark::State& state, const TARNFilter& filter) {
  const Register& book = RegisterOf(state.range(0));
  size_t passed = 0;
  for (auto _ : state) {
    TARNEntryList result = filter.filterEntries(book.entries);
    passed = result.size();
    benchmark::DoNotOptimize(result.data());
  }
  state.counters["passed"] = static_cast<double>(passed);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// A filter of one group holding one "contains" condition on a field.
void RunContains(benchmark::State& state, std::int32_t field, const char* text) {
  TARNFilter filter;
  auto group = std::make_shared<TARNFilterConditionGroup>();
  group->addConditionWithCategory(field, kConditionKeepMatches, kTextContains, plist::Value(text));
  filter.addConditionGroup(group);
  Run(state, filter);
}

void BM_DescriptionContains(benchmark::State& state) {
  PinToday();
  RunContains(state, kFieldDescription, "coffee");
}
BENCHMARK(BM_DescriptionContains)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// The condition alone, without the filter and group around it.
void BM_DescriptionContainsCondition(benchmark::State& state) {
  const Register& book = RegisterOf(state.range(0));
  auto condition = TARNFilterCondition::initWithCategory(kFieldDescription, kTextContains,
                                                         kConditionKeepMatches, "coffee");
  for (auto _ : state) {
    TARNEntryList result = condition->filterEntries(book.entries);
    benchmark::DoNotOptimize(result.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_DescriptionContainsCondition)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);

// The register's view filter as the account builds it on each keystroke: a
// search on every text field, the date range (inclusive, through "after
// start - 1" and "before end + 1") and resolved entries only. `range(1)`
// picks the range: 0 the whole register (the default "all entries"), 1 this
// year (about half of it).
void BM_ViewFilter(benchmark::State& state) {
  PinToday();
  const bool wholeRegister = state.range(1) == 0;
  TARNFilter filter;
  auto group = std::make_shared<TARNFilterConditionGroup>();
  group->addConditionWithCategory(kFieldAnything, kConditionKeepMatches, kTextContains,
                                  plist::Value("mark"));
  group->addConditionWithCategory(kFieldDate, kConditionKeepMatches, kDateIsAfter,
                                  plist::Value((wholeRegister ? 20240701 : 20260101) - 1));
  group->addConditionWithCategory(kFieldDate, kConditionKeepMatches, kDateIsBefore,
                                  plist::Value((wholeRegister ? 20260630 : 20261231) + 1));
  group->addConditionWithCategory(kFieldResolved, kConditionKeepMatches, kFlagIs,
                                  plist::Value(true));
  filter.addConditionGroup(group);
  Run(state, filter);
}
BENCHMARK(BM_ViewFilter)
    ->Args({100000, 0})
    ->Args({1000000, 0})
    ->Args({100000, 1})
    ->Args({1000000, 1})
    ->Unit(benchmark::kMillisecond);

// The same search alone, resolved or not: the worst case of a keystroke.
void BM_ViewFilterSearchOnly(benchmark::State& state) {
  PinToday();
  RunContains(state, kFieldAnything, "mark");
}
BENCHMARK(BM_ViewFilterSearchOnly)->Arg(100000)->Unit(benchmark::kMillisecond);

// A smart folder: (checks over 500 in the last 6 months) or (category under
// Food) and (resolved).
void BM_ThreeGroupsAndOr(benchmark::State& state) {
  PinToday();
  TARNFilter filter;
  auto checks = std::make_shared<TARNFilterConditionGroup>();
  checks->addConditionWithCategory(kFieldCheck, kConditionKeepMatches, kFlagIs, plist::Value(true));
  checks->addConditionWithCategory(kFieldAmount, kConditionKeepMatches, kAmountIsLessThan,
                                   plist::Value(-500.0));
  checks->addConditionWithCategory(kFieldDate, kConditionKeepMatches, kDateInLastMonths,
                                   plist::Value(6));
  filter.addConditionGroup(checks);
  auto food = std::make_shared<TARNFilterConditionGroup>();
  food->setLogic(kGroupLogicOr);
  food->addConditionWithCategory(kFieldCategory, kConditionKeepMatches, kTextStartsWith,
                                 plist::Value("food"));
  filter.addConditionGroup(food);
  auto resolved = std::make_shared<TARNFilterConditionGroup>();
  resolved->addConditionWithCategory(kFieldResolved, kConditionKeepMatches, kFlagIs,
                                     plist::Value(true));
  filter.addConditionGroup(resolved);
  Run(state, filter);
}
BENCHMARK(BM_ThreeGroupsAndOr)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// Amount as text: one formatted amount per entry.
void BM_AmountTextContains(benchmark::State& state) {
  PinToday();
  RunContains(state, kFieldAmountText, "12.5");
}
BENCHMARK(BM_AmountTextContains)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
