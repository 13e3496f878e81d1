// Opening and saving a whole account: the account dictionary to a loaded
// account and back, and the full path from a property-list file (binary and
// XML) to an account and back to a file, at 10,000 to 1,000,000 entries.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/log.h"
#include "tarn/platform/plist_file.h"

namespace {

using tarn::TARNAccount;
using tarn::TARNAccountEntry;
namespace plist = tarn::plist;

// A register of `count` entries made through the entry interface: every
// fourth split over three lines, every tenth a linked transfer, every seventh
// a check, every fifth with notes; plus one folder of a hundred entries.
plist::Value MakeAccountDictionary(std::int64_t count) {
  const char* payees[] = {"Corner Store", "Electric Company", "Employer", "Landlord", "Bank"};
  TARNAccount account;
  account.SetName("Benchmark checking");
  account.SetPassword("");
  auto makeEntry = [&](std::int64_t i) {
    auto entry = std::make_shared<TARNAccountEntry>();
    entry->SetNumber(static_cast<std::int32_t>(i));
    entry->SetDate(static_cast<tarn::DateNumber>(20000101 + (i % 28) + (i / 28 % 12) * 100 +
                                                 (i / 336 % 20) * 10000));
    if (i % 3 == 0) {
      entry->SetIsDeposit(true);
    } else {
      entry->SetIsDebit(true);
    }
    if (i % 7 == 0) {
      entry->SetIsCheck(true);
      entry->SetCheckNumber(static_cast<std::int32_t>(i / 7));
    }
    entry->SetDescription("Entry " + std::to_string(i % 997));
    entry->SetType(static_cast<std::int32_t>(i % 13));
    entry->SetCategory(static_cast<std::int32_t>(i % 40));
    entry->SetAmount(static_cast<double>(i % 100000) / 100.0 - 500.0);
    entry->SetToFrom(payees[i % 5]);
    entry->SetCleared(i % 2 == 0);
    if (i % 10 == 0) {
      entry->SetIsLinked(true);
      entry->SetLinkedEntry(static_cast<std::int32_t>(i + 1));
      entry->SetLinkedAccount(2);
      entry->SetLinkedExchangedAmount(-12.5);
    }
    if (i % 5 == 0) entry->SetNotes("see statement");
    if (i % 4 == 0) {
      for (int line = 0; line < 3; ++line) {
        entry->addSplitLineItemWithCategory(line, "Line", payees[line], -10.25 * (line + 1));
      }
    }
    return entry;
  };
  TARNAccount::Entries entries;
  entries.reserve(static_cast<std::size_t>(count));
  for (std::int64_t i = 0; i < count; ++i) entries.push_back(makeEntry(i));
  account.SetEntries(std::move(entries));
  auto folder = std::make_shared<tarn::TARNAccountFolder>();
  for (std::int64_t i = 0; i < 100; ++i) folder->entries().push_back(makeEntry(count + i));
  account.SetFolders({folder});
  account.SetNumberCount(static_cast<std::int32_t>(count + 100));
  return account.asDictionary();
}

const plist::Value& StoredAccount(std::int64_t count) {
  static std::map<std::int64_t, plist::Value> cache;
  auto found = cache.find(count);
  if (found == cache.end()) found = cache.emplace(count, MakeAccountDictionary(count)).first;
  return found->second;
}

std::string StoredFile(std::int64_t count, plist::Format format) {
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("tarn_bench_account_" + std::to_string(count) +
                             (format == plist::Format::Binary ? ".bplist" : ".xml")))
                               .string();
  if (!std::filesystem::exists(path)) plist::WriteFile(path, StoredAccount(count), format);
  return path;
}

void Quiet() {
  tarn::SetLogSink([](std::string_view) {});
}

void BM_AccountInitWithDictionary(benchmark::State& state) {
  Quiet();
  const plist::Value& stored = StoredAccount(state.range(0));
  for (auto _ : state) {
    auto account = TARNAccount::initWithDictionary(stored, nullptr);
    benchmark::DoNotOptimize(account.get());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_AccountAsDictionary(benchmark::State& state) {
  Quiet();
  auto account = TARNAccount::initWithDictionary(StoredAccount(state.range(0)), nullptr);
  for (auto _ : state) {
    plist::Value saved = account->asDictionary();
    benchmark::DoNotOptimize(saved);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The opening of a document: file to loaded account.
void FileToAccount(benchmark::State& state, plist::Format format) {
  Quiet();
  const std::string path = StoredFile(state.range(0), format);
  for (auto _ : state) {
    auto account = TARNAccount::initWithDictionary(plist::ReadFile(path), nullptr);
    benchmark::DoNotOptimize(account.get());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Opening and saving: file to account, account to a new file.
void FileToAccountToFile(benchmark::State& state, plist::Format format) {
  Quiet();
  const std::string path = StoredFile(state.range(0), format);
  const std::string out = path + ".out";
  for (auto _ : state) {
    auto account = TARNAccount::initWithDictionary(plist::ReadFile(path), nullptr);
    plist::WriteFile(out, account->asDictionary(), format);
  }
  std::filesystem::remove(out);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The share of the file reading alone, for comparison.
void BM_BinaryFileRead(benchmark::State& state) {
  const std::string path = StoredFile(state.range(0), plist::Format::Binary);
  for (auto _ : state) {
    plist::Value stored = plist::ReadFile(path);
    benchmark::DoNotOptimize(stored);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_BinaryFileToAccount(benchmark::State& state) {
  FileToAccount(state, plist::Format::Binary);
}
void BM_XmlFileToAccount(benchmark::State& state) {
  FileToAccount(state, plist::Format::Xml);
}
void BM_BinaryFileToAccountToFile(benchmark::State& state) {
  FileToAccountToFile(state, plist::Format::Binary);
}
void BM_XmlFileToAccountToFile(benchmark::State& state) {
  FileToAccountToFile(state, plist::Format::Xml);
}

#define TARN_ACCOUNT_SIZES \
  ->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)

BENCHMARK(BM_AccountInitWithDictionary) TARN_ACCOUNT_SIZES;
BENCHMARK(BM_AccountAsDictionary) TARN_ACCOUNT_SIZES;
BENCHMARK(BM_BinaryFileRead) TARN_ACCOUNT_SIZES;
BENCHMARK(BM_BinaryFileToAccount) TARN_ACCOUNT_SIZES;
BENCHMARK(BM_XmlFileToAccount) TARN_ACCOUNT_SIZES;
BENCHMARK(BM_BinaryFileToAccountToFile) TARN_ACCOUNT_SIZES;
BENCHMARK(BM_XmlFileToAccountToFile) TARN_ACCOUNT_SIZES;

}  // namespace
