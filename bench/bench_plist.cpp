// Property-list reading and writing on an account-shaped list (an array of
// entry dictionaries of about twelve keys), ours beside libplist's.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <plist/plist.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/libplist_bridge.h"
#include "tarn/platform/plist_file.h"

namespace {

using tarn::plist::Array;
using tarn::plist::Dictionary;
using tarn::plist::Value;

// An account of n entries: repeated payees and descriptions as in a real
// register, unique amounts and check numbers, notes on one entry in five.
Value makeAccount(int n) {
  std::mt19937 random(20070315);
  const char* payees[] = {"Grocer",   "Landlord", "Power & Light", "Caf\xC3\xA9 du Coin", "Payroll",
                          "Pharmacy", "Garage",   "Bookshop",      "Water company",       "Bank"};
  Value account;
  Dictionary& top = account.mutableDictionary();
  top["name"] = "Checking";
  top["version"] = 8;
  Array& entries = top["entries"].mutableArray();
  entries.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    Dictionary entry;
    const int day = i / 30;
    entry["date"] = 20000101 + (day / 336) * 10000 + (day / 28 % 12) * 100 + day % 28;
    entry["number"] = i;
    entry["checkNumber"] = i % 3 == 0 ? 1000 + i : 0;
    entry["entryFlags"] = static_cast<int>(random() % 4);
    entry["type"] = static_cast<int>(random() % 6);
    entry["category"] = static_cast<int>(random() % 40);
    entry["amount"] = static_cast<double>(static_cast<int>(random() % 200000) - 100000) / 100.0;
    const char* payee = payees[random() % 10];
    entry["description"] = std::string("Payment to ") + payee;
    entry["toFrom"] = payee;
    entry["cleared"] = random() % 4 != 0;
    entry["taxDeductible"] = random() % 10 == 0;
    if (i % 5 == 0) entry["notes"] = "Note for entry " + std::to_string(i) + ", kept for taxes";
    entries.emplace_back(std::move(entry));
  }
  return account;
}

// One account per size, with its two encodings, built once.
struct Fixture {
  Value account;
  std::string binary;
  std::string xml;
};

const Fixture& fixture(int n) {
  static std::map<int, std::unique_ptr<Fixture>> cache;
  auto& slot = cache[n];
  if (!slot) {
    slot = std::make_unique<Fixture>();
    slot->account = makeAccount(n);
    slot->binary = tarn::plist::ToBinary(slot->account);
    slot->xml = tarn::plist::ToXml(slot->account);
  }
  return *slot;
}

// Freeing a tree is not reading one; nor is glibc's sweep of the freed
// chunks, which would otherwise land on the next allocation inside the timed
// read. Readers (ours and libplist's) start each round from a trimmed heap.
void release(Value& value) {
  value = Value();
  ::malloc_trim(0);
}

void reportSize(benchmark::State& state, std::size_t bytes) {
  state.counters["MB"] = static_cast<double>(bytes) / 1e6;
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

void BM_OursBinaryRead(benchmark::State& state) {
  const Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    Value value = tarn::plist::ParseBinary(f.binary);
    benchmark::DoNotOptimize(value);
    state.PauseTiming();
    release(value);
    state.ResumeTiming();
  }
  reportSize(state, f.binary.size());
}

// Copying the finished tree with one heap allocation per dictionary (no
// bulk storage, no decoding): what building the tree cost readers before
// they took dictionaries from bulk storage.
void BM_CopyTree(benchmark::State& state) {
  const Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    Value value = f.account;
    benchmark::DoNotOptimize(value);
    state.PauseTiming();
    release(value);
    state.ResumeTiming();
  }
}

void BM_OursBinaryWrite(benchmark::State& state) {
  const Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    std::string bytes = tarn::plist::ToBinary(f.account);
    benchmark::DoNotOptimize(bytes);
  }
  reportSize(state, f.binary.size());
}

void BM_OursXmlRead(benchmark::State& state) {
  const Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    Value value = tarn::plist::ParseXml(f.xml);
    benchmark::DoNotOptimize(value);
    state.PauseTiming();
    release(value);
    state.ResumeTiming();
  }
  reportSize(state, f.xml.size());
}

// The path ReadFile takes: the buffer is parsed where it lies.
void BM_OursXmlReadInPlace(benchmark::State& state) {
  const Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    std::string buffer = f.xml;  // stands for the file just read
    state.ResumeTiming();
    Value value = tarn::plist::ParseXmlInPlace(buffer);
    benchmark::DoNotOptimize(value);
    state.PauseTiming();
    release(value);
    state.ResumeTiming();
  }
  reportSize(state, f.xml.size());
}

void BM_OursXmlWrite(benchmark::State& state) {
  const Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    std::string bytes = tarn::plist::ToXml(f.account);
    benchmark::DoNotOptimize(bytes);
  }
  reportSize(state, f.xml.size());
}

void BM_LibplistBinaryRead(benchmark::State& state) {
  const Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    plist_t node = nullptr;
    plist_from_bin(f.binary.data(), static_cast<std::uint32_t>(f.binary.size()), &node);
    benchmark::DoNotOptimize(node);
    state.PauseTiming();
    plist_free(node);
    ::malloc_trim(0);
    state.ResumeTiming();
  }
  reportSize(state, f.binary.size());
}

void BM_LibplistXmlRead(benchmark::State& state) {
  const Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    plist_t node = nullptr;
    plist_from_xml(f.xml.data(), static_cast<std::uint32_t>(f.xml.size()), &node);
    benchmark::DoNotOptimize(node);
    state.PauseTiming();
    plist_free(node);
    ::malloc_trim(0);
    state.ResumeTiming();
  }
  reportSize(state, f.xml.size());
}

void BM_LibplistBinaryWrite(benchmark::State& state) {
  const Fixture& f = fixture(static_cast<int>(state.range(0)));
  plist_t node = toLibplist(f.account);
  std::uint32_t length = 0;
  for (auto _ : state) {
    char* bytes = nullptr;
    plist_to_bin(node, &bytes, &length);
    benchmark::DoNotOptimize(bytes);
    std::free(bytes);
  }
  plist_free(node);
  reportSize(state, length);
}

// The machine is shared: the fastest of several repetitions is the figure
// least disturbed by other work.
double fastest(const std::vector<double>& times) {
  return *std::min_element(times.begin(), times.end());
}

BENCHMARK(BM_OursBinaryRead)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->ComputeStatistics("min", fastest);
BENCHMARK(BM_CopyTree)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->ComputeStatistics("min", fastest);
BENCHMARK(BM_OursBinaryWrite)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->ComputeStatistics("min", fastest);
BENCHMARK(BM_OursXmlRead)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->ComputeStatistics("min", fastest);
BENCHMARK(BM_OursXmlReadInPlace)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->ComputeStatistics("min", fastest);
BENCHMARK(BM_OursXmlWrite)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->ComputeStatistics("min", fastest);
// libplist only at 100,000 entries; its binary writer is quadratic (seconds
// at this size), so it runs once.
BENCHMARK(BM_LibplistBinaryRead)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->ComputeStatistics("min", fastest);
BENCHMARK(BM_LibplistXmlRead)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->ComputeStatistics("min", fastest);
BENCHMARK(BM_LibplistBinaryWrite)
    ->Arg(100000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->ComputeStatistics("min", fastest);

}  // namespace
