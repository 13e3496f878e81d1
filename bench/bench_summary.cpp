// Account summaries over ten years of entries: monthly with the category
// tree, daily and yearly, each to the finished result dictionary.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>

#include "tarn/account/account.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/reports/account_summary.h"

namespace {

using tarn::TARNAccount;
using tarn::TARNAccountSummary;

struct Book {
  tarn::InMemoryAccountsController controller;
  std::shared_ptr<TARNAccount> account = std::make_shared<TARNAccount>();
};

std::shared_ptr<tarn::TARNAccountEntryCategory> Category(std::string name, std::int32_t number) {
  auto category = std::make_shared<tarn::TARNAccountEntryCategory>();
  category->setName(std::move(name));
  category->setNumber(number);
  return category;
}

// `count` entries spread evenly over 2015-2024 (every calendar day): four
// debits to one deposit, the default entry types, a fifth of them checks,
// one in twenty split over two categories, one in a hundred void; 400
// descriptions and 150 parties; 42 categories in three levels.
std::unique_ptr<Book> MakeBook(std::int64_t count) {
  auto book = std::make_unique<Book>();
  for (int top = 0; top < 6; ++top) {
    auto parent = Category("Group " + std::to_string(top), top * 100);
    for (int child = 1; child <= 3; ++child) {
      auto middle = Category("Item " + std::to_string(child), top * 100 + child * 10);
      middle->addChild(Category("Detail", top * 100 + child * 10 + 1));
      parent->addChild(middle);
    }
    book->controller.categories().push_back(parent);
  }
  TARNAccount& account = *book->account;
  account.setAccountsController(&book->controller);
  account.SetPassword(std::string());
  account.SetStartingBalance(1000.0);

  std::mt19937 random(2024);
  const tarn::CalendarDate first(2015, 1, 1);
  const std::int64_t days = 3653;  // 2015-01-01 to 2024-12-31
  for (std::int64_t i = 0; i < count; ++i) {
    auto entry = std::make_shared<tarn::TARNAccountEntry>();
    entry->SetNumber(static_cast<std::int32_t>(i + 1));
    entry->SetDate(first.dateByAddingYears(0, 0, static_cast<int>(i * days / count)).dateNumber());
    const bool deposit = random() % 5 == 0;
    entry->SetIsDeposit(deposit);
    entry->SetIsDebit(!deposit);
    entry->SetType(deposit ? 10 + std::int32_t(random() % 3) : std::int32_t(random() % 10));
    if (!deposit && random() % 4 == 0) entry->SetIsCheck(true);
    const double cents = static_cast<double>(random() % 50000) / 100.0;
    entry->SetAmount(deposit ? cents : -cents);
    entry->SetDescription("Shop " + std::to_string(random() % 400));
    entry->SetToFrom("Payee " + std::to_string(random() % 150));
    const std::int32_t top = std::int32_t(random() % 6) * 100;
    const std::int32_t depth = std::int32_t(random() % 3);
    const std::int32_t middle = std::int32_t(1 + random() % 3) * 10;
    entry->SetCategory(depth == 0 ? top : depth == 1 ? top + middle : top + middle + 1);
    entry->SetCleared(random() % 3 != 0);
    entry->SetTaxDeductible(random() % 10 == 0);
    entry->SetVoid(random() % 100 == 0);
    if (random() % 20 == 0) {
      entry->addSplitLineItemWithCategory(110, "Part one", "", -cents / 2);
      entry->addSplitLineItemWithCategory(320, "Part two", "", -cents / 2);
    }
    account.AddEntry(entry);
  }
  return book;
}

Book& BookOf(std::int64_t count) {
  static std::map<std::int64_t, std::unique_ptr<Book>> books;
  auto& book = books[count];
  if (!book) book = MakeBook(count);
  return *book;
}

// A summary of every entry from the first to the last, cut by the style.
std::shared_ptr<TARNAccountSummary> SummaryOf(Book& book, std::int32_t periodStyle) {
  auto summary = std::make_shared<TARNAccountSummary>();
  summary->setEntries(book.account->GetAllEntries());
  summary->setAccounts({book.account.get()});
  summary->setDateRangeStyle(tarn::kSummaryRangeFirstToLastEntry);
  summary->setSubtotalPeriodStyle(periodStyle);
  return summary;
}

void RunSummary(benchmark::State& state, std::int32_t periodStyle) {
  Book& book = BookOf(state.range(0));
  auto summary = SummaryOf(book, periodStyle);
  std::size_t periods = 0;
  for (auto _ : state) {
    summary->Refresh();
    periods = summary->summaryDictionary().find("subtotals")->arrayValue().size();
    benchmark::DoNotOptimize(periods);
  }
  state.counters["periods"] = static_cast<double>(periods);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_SummaryMonthlyWithCategoryTree(benchmark::State& state) {
  RunSummary(state, tarn::kSummaryPeriodMonth);
}
void BM_SummaryDaily(benchmark::State& state) {
  RunSummary(state, tarn::kSummaryPeriodDay);
}
void BM_SummaryYearly(benchmark::State& state) {
  RunSummary(state, tarn::kSummaryPeriodYear);
}

// The typed result alone, without writing the dictionary.
void BM_SummaryMonthlyTypedOnly(benchmark::State& state) {
  Book& book = BookOf(state.range(0));
  auto summary = SummaryOf(book, tarn::kSummaryPeriodMonth);
  for (auto _ : state) benchmark::DoNotOptimize(summary->ComputeResult());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define SUMMARY_SIZES(bm) BENCHMARK(bm)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)
SUMMARY_SIZES(BM_SummaryMonthlyWithCategoryTree);
SUMMARY_SIZES(BM_SummaryDaily);
SUMMARY_SIZES(BM_SummaryYearly);
SUMMARY_SIZES(BM_SummaryMonthlyTypedOnly);

}  // namespace
