// Loading entry dictionaries into entries and writing them back, as an
// account does for its whole register when it is opened and saved.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tarn/model/account_entry.h"
#include "tarn/platform/bulk_storage.h"

namespace {

using tarn::TARNAccountEntry;
using tarn::plist::Array;
using tarn::plist::Dictionary;
using tarn::plist::Value;

constexpr std::int64_t kEntryCount = 1'000'000;

// A register's worth of entry dictionaries: every fourth entry is split over
// three lines, every tenth is a linked transfer, every fifth has notes.
Array makeStoredEntries(std::int64_t count) {
  const char* payees[] = {"Corner Store", "Electric Company", "Employer", "Landlord", "Bank"};
  Array all;
  all.reserve(static_cast<std::size_t>(count));
  for (std::int64_t i = 0; i < count; ++i) {
    std::int32_t flags = (i % 3 == 0) ? tarn::kEntryFlagDeposit : tarn::kEntryFlagDebit;
    if (i % 10 == 0) flags |= tarn::kEntryFlagLinked;
    if (i % 7 == 0) flags |= tarn::kEntryFlagCheck;
    Dictionary entry{{"date", Value(std::int64_t{20000101 + (i % 28) + (i / 28 % 12) * 100})},
                     {"number", Value(i)},
                     {"checkNumber", Value(i % 7 == 0 ? i / 7 : std::int64_t{-1})},
                     {"entryFlags", Value(flags)},
                     {"description", Value("Entry " + std::to_string(i % 997))},
                     {"type", Value(std::int64_t{i % 13})},
                     {"category", Value(std::int64_t{i % 40})},
                     {"amount", Value(static_cast<double>(i % 100000) / 100.0 - 500.0)},
                     {"toFrom", Value(payees[i % 5])},
                     {"cleared", Value(i % 2 == 0)}};
    if (flags & tarn::kEntryFlagLinked) {
      entry.emplace("linkedEntry", Value(i + 1));
      entry.emplace("linkedAccount", Value(2));
      entry.emplace("linkedExchangedAmount", Value(-12.5));
    }
    if (i % 5 == 0) entry.emplace("notes", Value("see statement"));
    if (i % 4 == 0) {
      Array lines;
      for (int line = 0; line < 3; ++line) {
        lines.emplace_back(Dictionary{{"category", Value(line)},
                                      {"toFrom", Value(payees[line])},
                                      {"description", Value("Line")},
                                      {"amount", Value(-10.25 * (line + 1))},
                                      {"exchangedAmount", Value(-8.0 * (line + 1))}});
      }
      entry.emplace("splitLineItems", Value(std::move(lines)));
    }
    all.emplace_back(std::move(entry));
  }
  return all;
}

// `count` stored dictionaries, made once per count: 1,000,000 for a large
// register, and a small one whose memory the allocator reuses round to round.
const Array& storedEntries(std::int64_t count) {
  static std::map<std::int64_t, Array> made;
  auto it = made.find(count);
  if (it == made.end()) it = made.emplace(count, makeStoredEntries(count)).first;
  return it->second;
}

void BM_LoadEntries(benchmark::State& state) {
  const Array& stored = storedEntries(state.range(0));
  // Kept across rounds so that only the entries are made and freed each time.
  std::vector<std::shared_ptr<TARNAccountEntry>> entries;
  entries.reserve(stored.size());
  for (auto _ : state) {
    for (const Value& dictionary : stored) {
      entries.push_back(TARNAccountEntry::initWithDictionary(dictionary));
    }
    benchmark::DoNotOptimize(entries.data());
    state.PauseTiming();  // freeing the register is not part of loading it
    entries.clear();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(stored.size()));
}
BENCHMARK(BM_LoadEntries)->Arg(kEntryCount)->Arg(10'000)->Unit(benchmark::kMillisecond);

void BM_WriteEntries(benchmark::State& state) {
  const Array& stored = storedEntries(state.range(0));
  std::vector<std::shared_ptr<TARNAccountEntry>> entries;
  entries.reserve(stored.size());
  for (const Value& dictionary : stored) {
    entries.push_back(TARNAccountEntry::initWithDictionary(dictionary));
  }
  Array written;
  written.reserve(entries.size());
  for (auto _ : state) {
    // Saving builds the whole tree in bulk storage, as an account does.
    tarn::plist::BulkStorageScope bulk;
    for (const auto& entry : entries) written.push_back(entry->asDictionary());
    benchmark::DoNotOptimize(written.data());
    state.PauseTiming();
    written.clear();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(entries.size()));
}
BENCHMARK(BM_WriteEntries)->Arg(kEntryCount)->Arg(10'000)->Unit(benchmark::kMillisecond);

}  // namespace
