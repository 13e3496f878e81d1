// Upgrading large stored accounts: a version-1 account runs the whole cascade
// (numbering, old preferences, rounding, dates, splits); a version-7 account
// only the conversion of transfers and ten-slot splits.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>

#include "tarn/account/account_upgrade.h"
#include "tarn/platform/log.h"

namespace {

using tarn::AccountDictionaryUpgrade;
using tarn::plist::Array;
using tarn::plist::Dictionary;
using tarn::plist::Value;

constexpr std::int64_t kFirstDate = 1104537600;  // 1 January 2005, in seconds

Value oldSplit(std::mt19937& random) {
  Array descriptions(10, Value("")), toFroms(10, Value("")), amounts(10, Value(0.0));
  for (int slot = 0; slot < 3; ++slot) {
    descriptions[slot] = "Groceries";
    toFroms[slot] = "Market";
    amounts[slot] = static_cast<double>(random() % 100000) / 1000.0;
  }
  return Dictionary{{"descriptions", std::move(descriptions)},
                    {"toFrom", std::move(toFroms)},
                    {"amounts", std::move(amounts)}};
}

// A version-1 account: one number in a hundred repeats an earlier one, one
// entry in twenty is split, amounts carry a third decimal, dates are seconds.
Value versionOneAccount(std::int64_t entryCount) {
  std::mt19937 random(42);
  Array entries;
  entries.reserve(static_cast<std::size_t>(entryCount));
  for (std::int64_t i = 0; i < entryCount; ++i) {
    const std::int64_t number = (i % 100 == 99) ? static_cast<std::int64_t>(random() % (i + 1)) : i;
    Dictionary entry{{"number", number},
                     {"isDebit", random() % 3 != 0},
                     {"isCheck", random() % 5 == 0},
                     {"amount", static_cast<double>(random() % 1000000) / 1000.0},
                     {"date", kFirstDate + i * 3600},
                     {"description", "Payment"},
                     {"toFrom", "Someone"},
                     {"type", 4}};
    if (i % 20 == 0) entry.emplace("split", oldSplit(random));
    entries.emplace_back(std::move(entry));
  }
  Array schedules;
  for (int i = 0; i < 50; ++i) {
    schedules.emplace_back(Dictionary{{"date", kFirstDate},
                                      {"repeatUntil", 3},
                                      {"committedDates", Array(24, Value(kFirstDate))}});
  }
  return Dictionary{{"version", 1},
                    {"name", "Checking"},
                    {"startingBalance", 100.005},
                    {"entries", std::move(entries)},
                    {"schedules", std::move(schedules)}};
}

// A version-7 account: flags already built, one entry in ten a transfer, one in five split.
Value versionSevenAccount(std::int64_t entryCount) {
  std::mt19937 random(7);
  Array entries;
  entries.reserve(static_cast<std::size_t>(entryCount));
  for (std::int64_t i = 0; i < entryCount; ++i) {
    std::int32_t flags = random() % 2 ? 1 : 2;
    Dictionary entry{{"number", i}, {"amount", 12.5}, {"date", 20070315}};
    if (i % 10 == 0) {
      flags |= 4 | (random() % 2 ? 8 : 0);
      entry.emplace("transferEntry", i);
      entry.emplace("transferAccount", 2);
    }
    entry.emplace("entryFlags", flags);
    if (i % 5 == 0) entry.emplace("split", oldSplit(random));
    entries.emplace_back(std::move(entry));
  }
  return Dictionary{{"version", 7}, {"name", "Checking"}, {"entries", std::move(entries)}};
}

void runUpgrade(benchmark::State& state, const Value& original) {
  const auto previousLoader = AccountDictionaryUpgrade::SetPreferencesLoader([] {
    return Value(Dictionary{{"types", Array{}}, {"inactiveTypes", Array{}}});
  });
  const auto previousSink = tarn::SetLogSink([](std::string_view) {});
  for (auto _ : state) {
    state.PauseTiming();
    Value account = original;
    state.ResumeTiming();
    benchmark::DoNotOptimize(AccountDictionaryUpgrade::UpdateAccountDictionary(account));
    state.PauseTiming();
    account = Value();  // freeing the copy is not part of the upgrade
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  tarn::SetLogSink(previousSink);
  AccountDictionaryUpgrade::SetPreferencesLoader(previousLoader);
}

void BM_UpgradeFromVersion1(benchmark::State& state) {
  runUpgrade(state, versionOneAccount(state.range(0)));
}
BENCHMARK(BM_UpgradeFromVersion1)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_UpgradeFromVersion7(benchmark::State& state) {
  runUpgrade(state, versionSevenAccount(state.range(0)));
}
BENCHMARK(BM_UpgradeFromVersion7)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
