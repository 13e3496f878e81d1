// What one undoable import of 20 entries and one entered scheduled entry
// cost on a 100,000-entry sample household: the change captured before and
// after the operation, then undone and redone. The whole-book copy
// (BookContents) against the parts the operation touched (AccountChange).
// The "kept_heap" and "kept_resident" counters are the memory one undo step
// holds: malloc's bytes in use and the process's resident bytes added
// between the capture before and the capture after (the command's own new
// records included, so an upper bound).

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <unistd.h>

#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/book_changes.h"
#include "tarn/book/due_schedules.h"
#include "tarn/book/import_review.h"
#include "tarn/book/sample_book.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"
#include "tarn/platform/value.h"

namespace {

using tarn::TARNBook;
namespace plist = tarn::plist;

std::unique_ptr<TARNBook> LargeBook(std::int64_t entries) {
  tarn::SetLogSink([](std::string_view) {});
  tarn::CalendarDate::overrideNow(tarn::CalendarDate(2026, 11, 24));
  tarn::SampleBookOptions options;
  options.entries = entries;
  return tarn::MakeSampleBook(options);
}

// Bytes in use from the heap and from malloc's own mappings (large blocks).
std::size_t HeapInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// Resident bytes of the process: dictionaries built for a whole book take
// their storage from mapped chunks that malloc does not count.
std::size_t Resident() {
  std::ifstream statm("/proc/self/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  statm >> size >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// What capturing one undo step added: heap bytes and resident bytes.
struct Kept {
  std::size_t heap = HeapInUse();
  std::size_t resident = Resident();
  double heapBytes = 0;
  double residentBytes = 0;
  void measure() {
    heapBytes = static_cast<double>(HeapInUse()) - static_cast<double>(heap);
    residentBytes = static_cast<double>(Resident()) - static_cast<double>(resident);
  }
  void report(benchmark::State& state) const {
    state.counters["kept_heap"] = heapBytes;
    state.counters["kept_resident"] = residentBytes;
  }
};

// A statement of 20 entries, some naming a type and categories the book has
// not got.
plist::Array Statement(int round) {
  plist::Array entries;
  for (int i = 0; i < 20; ++i) {
    plist::Dictionary entry;
    entry["amount"] = plist::Value(-10.0 - i - round * 0.01);
    entry["isDeposit"] = plist::Value(false);
    entry["date"] = plist::Value(static_cast<std::int64_t>(20261101 + i));
    entry["toFrom"] = plist::Value("Statement payee " + std::to_string(i));
    entry["fitID"] = plist::Value("BENCH-" + std::to_string(round) + "-" + std::to_string(i));
    if (i % 5 == 0) entry["type"] = plist::Value(std::string("Bench Swipe"));
    if (i % 4 == 0) entry["category"] = plist::Value("Bench:Item " + std::to_string(i));
    entries.push_back(plist::Value(std::move(entry)));
  }
  return entries;
}

std::unique_ptr<tarn::TARNImportReview> Review(TARNBook& book, int round) {
  auto& account = *book.accounts().front();
  auto review = std::make_unique<tarn::TARNImportReview>(book, account, tarn::ImportFormat::OFX,
                                                         tarn::ImportFileOptions{});
  review->addEntries(Statement(round));
  review->storeOptions();
  return review;
}

void BM_ImportUndoWholeBook(benchmark::State& state) {
  auto book = LargeBook(state.range(0));
  Kept kept;
  int round = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto review = Review(*book, ++round);
    state.ResumeTiming();
    Kept captured;
    auto before = std::make_unique<tarn::BookContents>(*book);
    review->accept();
    auto after = std::make_unique<tarn::BookContents>(*book);
    captured.measure();
    kept = captured;
    before->restore(*book);
    after->restore(*book);
    state.PauseTiming();
    before->restore(*book);
    before.reset();
    after.reset();
    state.ResumeTiming();
  }
  kept.report(state);
}
BENCHMARK(BM_ImportUndoWholeBook)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_ImportUndoParts(benchmark::State& state) {
  auto book = LargeBook(state.range(0));
  const std::int32_t account = book->accounts().front()->GetNumber();
  Kept kept;
  int round = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto review = Review(*book, ++round);
    state.ResumeTiming();
    Kept captured;
    auto change =
        std::make_unique<tarn::AccountChange>(tarn::BeforeImport(*book, account, *review));
    std::vector<tarn::EntryKey> keys;
    for (const auto& entry : review->accept()) keys.push_back({account, entry->GetNumber()});
    change->finish(*book, keys);
    captured.measure();
    kept = captured;
    change->undo(*book);
    change->redo(*book);
    state.PauseTiming();
    change->undo(*book);
    change.reset();
    state.ResumeTiming();
  }
  kept.report(state);
}
BENCHMARK(BM_ImportUndoParts)->Arg(100000)->Unit(benchmark::kMillisecond);

// The first due occurrence of any account.
std::optional<std::pair<std::int32_t, tarn::DueOccurrence>> FirstDue(const TARNBook& book) {
  for (const auto& account : book.accounts()) {
    const auto due = tarn::DueOccurrences(*account, tarn::CalendarDate::now());
    if (!due.empty()) return std::make_pair(account->GetNumber(), due.front());
  }
  return std::nullopt;
}

void BM_EnterScheduleUndoWholeBook(benchmark::State& state) {
  auto book = LargeBook(state.range(0));
  Kept kept;
  for (auto _ : state) {
    state.PauseTiming();
    const auto due = FirstDue(*book);
    if (!due) {
      state.SkipWithError("no due occurrence in the sample book");
      break;
    }
    state.ResumeTiming();
    Kept captured;
    auto before = std::make_unique<tarn::BookContents>(*book);
    tarn::EnterOccurrence(*book->accountWithNumber(due->first), due->second.schedule,
                          due->second.date);
    auto after = std::make_unique<tarn::BookContents>(*book);
    captured.measure();
    kept = captured;
    before->restore(*book);
    after->restore(*book);
    state.PauseTiming();
    before->restore(*book);
    before.reset();
    after.reset();
    state.ResumeTiming();
  }
  kept.report(state);
}
BENCHMARK(BM_EnterScheduleUndoWholeBook)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_EnterScheduleUndoParts(benchmark::State& state) {
  auto book = LargeBook(state.range(0));
  Kept kept;
  for (auto _ : state) {
    state.PauseTiming();
    const auto due = FirstDue(*book);
    if (!due) {
      state.SkipWithError("no due occurrence in the sample book");
      break;
    }
    state.ResumeTiming();
    Kept captured;
    auto change = std::make_unique<tarn::AccountChange>(
        *book, due->first, tarn::AccountChange::Parts{.schedules = true});
    auto entry = tarn::EnterOccurrence(*book->accountWithNumber(due->first), due->second.schedule,
                                       due->second.date);
    change->finish(*book, {{due->first, entry->GetNumber()}});
    entry.reset();
    captured.measure();
    kept = captured;
    change->undo(*book);
    change->redo(*book);
    state.PauseTiming();
    change->undo(*book);
    change.reset();
    state.ResumeTiming();
  }
  kept.report(state);
}
BENCHMARK(BM_EnterScheduleUndoParts)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
