// Formatting and reading amounts with a currency's formatter, as a register
// or a filter does for every entry.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "tarn/model/currency.h"

namespace {

std::vector<double> amounts(size_t count, bool inCents) {
  std::mt19937_64 random(42);
  std::uniform_int_distribution<long> cents(-10000000, 10000000);
  std::uniform_real_distribution<double> any(-100000.0, 100000.0);
  std::vector<double> values(count);
  for (double& value : values) {
    value = inCents ? static_cast<double>(cents(random)) / 100 : any(random);
  }
  return values;
}

void BM_FormatAmounts(benchmark::State& state) {
  tarn::PFCurrency currency;
  auto formatter = currency.formatter();
  const auto values = amounts(static_cast<size_t>(state.range(0)), state.range(1) != 0);
  for (auto _ : state) {
    size_t total = 0;
    for (double value : values) total += formatter->stringForObjectValue(value).size();
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FormatAmounts)->Args({1000000, 1})->Args({1000000, 0})->Unit(benchmark::kMillisecond);

void BM_AppendAmountsIntoOneBuffer(benchmark::State& state) {
  tarn::PFCurrency currency;
  auto formatter = currency.formatter();
  const auto values = amounts(static_cast<size_t>(state.range(0)), true);
  std::string buffer;
  for (auto _ : state) {
    size_t total = 0;
    for (double value : values) {
      buffer.clear();
      formatter->appendStringForObjectValue(buffer, value);
      total += buffer.size();
    }
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_AppendAmountsIntoOneBuffer)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_ReadAmounts(benchmark::State& state) {
  tarn::PFCurrency currency;
  auto formatter = currency.formatter();
  const auto values = amounts(static_cast<size_t>(state.range(0)), true);
  std::vector<std::string> texts;
  texts.reserve(values.size());
  for (double value : values) texts.push_back(formatter->stringForObjectValue(value));
  for (auto _ : state) {
    double total = 0;
    std::optional<double> value;
    for (const std::string& text : texts) {
      formatter->getObjectValue(value, text);
      total += value.value_or(0);
    }
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ReadAmounts)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
