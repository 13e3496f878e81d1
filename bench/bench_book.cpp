// The book behind the tarn program at the size of its timing targets: a
// 100,000-entry sample household opened, viewed, changed and saved. The
// whole-process figures of the program are in docs/performance.md.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/sample_book.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

namespace {

using tarn::TARNBook;

// Writes the sample book of `entries` entries once per size.
const std::string& SampleFile(std::int64_t entries) {
  static std::map<std::int64_t, std::string> files;
  auto& file = files[entries];
  if (file.empty()) {
    tarn::SetLogSink([](std::string_view) {});
    tarn::CalendarDate::overrideNow(tarn::CalendarDate(2026, 11, 24));
    file = (std::filesystem::temp_directory_path() /
            ("tarn_bench_book_" + std::to_string(entries) + ".tarn"))
               .string();
    std::filesystem::remove(file);
    tarn::SampleBookOptions options;
    options.entries = entries;
    tarn::MakeSampleBook(options)->saveAs(file);
  }
  return file;
}

void BM_OpenBook(benchmark::State& state) {
  const std::string& file = SampleFile(state.range(0));
  for (auto _ : state) {
    auto book = TARNBook::open(file);
    benchmark::DoNotOptimize(book->accounts().front()->GetBalance());
  }
}
BENCHMARK(BM_OpenBook)->Arg(100000)->Unit(benchmark::kMillisecond);

// What `tarn register --limit 50` does after opening: the view, running
// balances and the register order.
void BM_RegisterView(benchmark::State& state) {
  auto book = TARNBook::open(SampleFile(state.range(0)));
  auto& account = *book->accounts().back();
  for (auto _ : state) {
    auto shown = account.entryFilteredEntries();
    account.CacheRunningBalances();
    tarn::TARNAccount::SortEntries(shown, 1, false);
    benchmark::DoNotOptimize(shown.back()->GetCachedRunningBalance());
  }
}
BENCHMARK(BM_RegisterView)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_SaveBook(benchmark::State& state) {
  auto book = TARNBook::open(SampleFile(state.range(0)));
  for (auto _ : state) book->save();
}
BENCHMARK(BM_SaveBook)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
