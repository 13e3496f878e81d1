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

// The first due occurrence of any account.
std::optional<std::pair<std::int32_t, tarn::DueOccurrence>> FirstDue(const TARNBook& book) {
  for (const auto& account : book.accounts()) {
    const auto due = tarn::DueOccurrences(*account, tarn::CalendarDate::now());
    if (!due.empty()) return std::make_pair(account->GetNumber(), due.front());
  }
  return std::nullopt;
}

// The two ways of keeping an undo step: begin() before the operation,
// end() after it with the entries it added.
class WholeBook {
 public:
  void begin(const TARNBook& book, const tarn::TARNImportReview*, std::int32_t) {
    before_.emplace(book);
  }
  void end(const TARNBook& book, const std::vector<tarn::EntryKey>&) { after_.emplace(book); }
  void undo(TARNBook& book) const { before_->restore(book); }
  void redo(TARNBook& book) const { after_->restore(book); }

 private:
  std::optional<tarn::BookContents> before_;
  std::optional<tarn::BookContents> after_;
};

class Parts {
 public:
  void begin(const TARNBook& book, const tarn::TARNImportReview* review, std::int32_t account) {
    if (review) {
      change_.emplace(tarn::BeforeImport(book, account, *review));
    } else {
      change_.emplace(book, account, tarn::AccountChange::Parts{.schedules = true});
    }
  }
  void end(const TARNBook& book, const std::vector<tarn::EntryKey>& added) {
    change_->finish(book, added);
  }
  void undo(TARNBook& book) const { change_->undo(book); }
  void redo(TARNBook& book) const { change_->redo(book); }

 private:
  std::optional<tarn::AccountChange> change_;
};

// Times one command kept as `Way`: capture, operation, capture, undo, redo.
// The book is put back (untimed) after each round.
template <typename Way, bool Import>
void BM_Undo(benchmark::State& state) {
  auto book = LargeBook(state.range(0));
  Kept kept;
  int round = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::unique_ptr<tarn::TARNImportReview> review;
    std::int32_t account = book->accounts().front()->GetNumber();
    tarn::DueOccurrence due;
    if (Import) {
      review = Review(*book, ++round);
    } else if (const auto first = FirstDue(*book)) {
      account = first->first;
      due = first->second;
    } else {
      state.SkipWithError("no due occurrence in the sample book");
      break;
    }
    state.ResumeTiming();
    Kept captured;
    auto way = std::make_unique<Way>();
    way->begin(*book, review.get(), account);
    std::vector<tarn::EntryKey> added;
    if (Import) {
      for (const auto& entry : review->accept()) added.push_back({account, entry->GetNumber()});
    } else {
      const auto entry =
          tarn::EnterOccurrence(*book->accountWithNumber(account), due.schedule, due.date);
      added.push_back({account, entry->GetNumber()});
    }
    way->end(*book, added);
    captured.measure();
    kept = captured;
    way->undo(*book);
    way->redo(*book);
    state.PauseTiming();
    way->undo(*book);
    way.reset();
    state.ResumeTiming();
  }
  kept.report(state);
}
BENCHMARK(BM_Undo<WholeBook, true>)
    ->Name("BM_ImportUndoWholeBook")
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Undo<Parts, true>)
    ->Name("BM_ImportUndoParts")
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Undo<WholeBook, false>)
    ->Name("BM_EnterScheduleUndoWholeBook")
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Undo<Parts, false>)
    ->Name("BM_EnterScheduleUndoParts")
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);

}  // namespace
