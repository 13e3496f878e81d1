// A made-up household's book, the same for the same options: a checking,
// a savings and a card account with a category tree, salary, rent checks,
// groceries, card spending, transfers, split and void entries, schedules, a
// folder and smart folders. It is the bundled example and, with a target
// entry count, the large book the benchmarks and timings use.
#pragma once

#include <cstdint>
#include <memory>

#include "tarn/book/book_progress.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {

class TARNBook;

struct SampleBookOptions {
  // Whole months of activity, ending with the month before `today`.
  int years = 2;
  std::uint64_t seed = 1;
  // When above the household's own count, extra card and checking purchases
  // spread over the period bring the book to this many entries.
  std::int64_t entries = 0;
  DateNumber today = 0;  // 0: CalendarDate::now()
  // Hears of the months made, then of the padding entries.
  TARNBookProgressHandler progress;
};

std::unique_ptr<TARNBook> MakeSampleBook(const SampleBookOptions& options);

}  // namespace tarn
