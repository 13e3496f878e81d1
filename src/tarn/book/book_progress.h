// How a host follows the book's long work (reading or writing a large book,
// making a large sample): the book calls a handler the host gives it with the
// step under way and how far it has come. The handler runs on the thread
// that does the work, between pieces of it; it must not touch the book. The
// library itself never draws anything.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace tarn {

struct TARNBookProgress {
  // "Reading", "Loading accounts", "Preparing", "Writing", "Making entries".
  std::string_view step;
  // What `done` and `total` count ("entries", "accounts", "months"); empty
  // when the step cannot say how far it is (total 0).
  std::string_view unit;
  std::uint64_t done = 0;
  std::uint64_t total = 0;
};

// An empty handler costs nothing: the book then reports nothing.
using TARNBookProgressHandler = std::function<void(const TARNBookProgress&)>;

// Calls the handler when there is one.
inline void ReportProgress(const TARNBookProgressHandler& handler, std::string_view step,
                           std::string_view unit = {}, std::uint64_t done = 0,
                           std::uint64_t total = 0) {
  if (handler) handler(TARNBookProgress{step, unit, done, total});
}

}  // namespace tarn
