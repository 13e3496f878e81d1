// Ledger operations over a large register: balances, cached running
// balances, suggestion lists, column sorts and the two exports.
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

namespace {

using tarn::TARNAccount;

struct Ledger {
  tarn::InMemoryAccountsController controller;
  std::shared_ptr<TARNAccount> account = std::make_shared<TARNAccount>();
};

// A register of `count` entries over about ten years: four debits to one
// deposit, a fifth of them checks, one in twenty split, a few void; 3,000
// descriptions and 800 parties in mixed case, 40 categories in two levels.
std::unique_ptr<Ledger> MakeLedger(std::int64_t count) {
  auto ledger = std::make_unique<Ledger>();
  for (int top = 0; top < 8; ++top) {
    auto parent = std::make_shared<tarn::TARNAccountEntryCategory>();
    parent->setName("Group " + std::to_string(top));
    parent->setNumber(top * 10);
    for (int child = 1; child <= 4; ++child) {
      auto leaf = std::make_shared<tarn::TARNAccountEntryCategory>();
      leaf->setName("Item " + std::to_string(child));
      leaf->setNumber(top * 10 + child);
      parent->addChild(leaf);
    }
    ledger->controller.categories().push_back(parent);
  }
  TARNAccount& account = *ledger->account;
  account.setAccountsController(&ledger->controller);
  account.SetPassword(std::string());
  account.SetStartingBalance(1000.0);

  std::mt19937 random(2024);
  std::int32_t checkNumber = 1000;
  for (std::int64_t i = 0; i < count; ++i) {
    auto entry = std::make_shared<tarn::TARNAccountEntry>();
    entry->SetNumber(static_cast<std::int32_t>(i));
    const auto day = static_cast<std::int32_t>(i * 3650 / count);
    entry->SetDate(20100101 + (day / 365) * 10000 + ((day % 365) / 31 % 12) * 100 + day % 28);
    const bool deposit = random() % 5 == 0;
    entry->SetIsDeposit(deposit);
    entry->SetIsDebit(!deposit);
    if (!deposit && random() % 4 == 0) {
      entry->SetIsCheck(true);
      entry->SetCheckNumber(checkNumber++);
    }
    const double cents = static_cast<double>(random() % 50000) / 100.0;
    entry->SetAmount(deposit ? cents : -cents);
    const unsigned description = random() % 3000;
    entry->SetDescription((description % 2 ? "Shop " : "SHOP ") + std::to_string(description));
    entry->SetToFrom("Payee " + std::to_string(random() % 800));
    entry->SetCategory(static_cast<std::int32_t>(random() % 8 * 10 + random() % 5));
    entry->SetCleared(random() % 3 != 0);
    entry->SetVoid(random() % 100 == 0);
    if (random() % 20 == 0) {
      entry->addSplitLineItemWithCategory(1, "Part one", "", -cents / 2);
      entry->addSplitLineItemWithCategory(12, "Part two", "", -cents / 2);
    }
    account.AddEntry(entry);
  }
  return ledger;
}

// Registers are built once per size and shared by the benchmarks.
Ledger& LedgerOf(std::int64_t count) {
  static std::map<std::int64_t, std::unique_ptr<Ledger>> ledgers;
  auto& ledger = ledgers[count];
  if (!ledger) ledger = MakeLedger(count);
  return *ledger;
}

void Finish(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_GetBalance(benchmark::State& state) {
  TARNAccount& account = *LedgerOf(state.range(0)).account;
  for (auto _ : state) benchmark::DoNotOptimize(account.GetBalance());
  Finish(state);
}

void BM_CacheRunningBalances(benchmark::State& state) {
  TARNAccount& account = *LedgerOf(state.range(0)).account;
  for (auto _ : state) account.CacheRunningBalances();
  Finish(state);
}

void BM_DebitDescriptions_All(benchmark::State& state) {
  TARNAccount& account = *LedgerOf(state.range(0)).account;
  for (auto _ : state) benchmark::DoNotOptimize(account.DebitDescriptions_All());
  Finish(state);
}

void BM_Tos_Some50(benchmark::State& state) {
  TARNAccount& account = *LedgerOf(state.range(0)).account;
  for (auto _ : state) benchmark::DoNotOptimize(account.Tos_Some(50));
  Finish(state);
}

// Each run starts from the order the previous run left, reversed by the
// entry-number pass, so every run really sorts.
void BM_SortByDate(benchmark::State& state) {
  TARNAccount& account = *LedgerOf(state.range(0)).account;
  for (auto _ : state) account.SortBy(1, true);
  Finish(state);
}

void BM_SortByDescription(benchmark::State& state) {
  TARNAccount& account = *LedgerOf(state.range(0)).account;
  for (auto _ : state) account.SortBy(3, false);
  Finish(state);
}

void BM_ExportQIF(benchmark::State& state) {
  TARNAccount& account = *LedgerOf(state.range(0)).account;
  for (auto _ : state) benchmark::DoNotOptimize(account.asQIFStringWithOptions(nullptr));
  Finish(state);
}

void BM_ExportTabDelimited(benchmark::State& state) {
  TARNAccount& account = *LedgerOf(state.range(0)).account;
  for (auto _ : state) benchmark::DoNotOptimize(account.asTabDelimitedStringWithOptions(nullptr));
  Finish(state);
}

#define LEDGER_SIZES(bm) BENCHMARK(bm)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)

LEDGER_SIZES(BM_GetBalance);
LEDGER_SIZES(BM_CacheRunningBalances);
LEDGER_SIZES(BM_DebitDescriptions_All);
LEDGER_SIZES(BM_Tos_Some50);
LEDGER_SIZES(BM_SortByDate);
LEDGER_SIZES(BM_SortByDescription);
LEDGER_SIZES(BM_ExportQIF);
LEDGER_SIZES(BM_ExportTabDelimited);

}  // namespace
