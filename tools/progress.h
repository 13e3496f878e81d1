// Progress of a long step on a terminal: one line on standard error, drawn
// only once the work has run for half a second (quick commands stay quiet),
// redrawn a few times a second, and wiped when the work ends. Off the
// terminal (a pipe, a file, the golden tests) it draws nothing at all and
// its handler is empty, so the book does not even report.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "tarn/book/book_progress.h"

namespace tarn::cli {

class ProgressReporter {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  // Draws on standard error when it is a terminal and TARN_NO_PROGRESS is unset.
  ProgressReporter();
  // Draws on `out` when `enabled`. With `ticking`, a thread redraws the line
  // while a step reports nothing (reading a large file is one call); without
  // it only reports and tick() draw, which is what tests use with their clock.
  ProgressReporter(std::FILE* out, bool enabled, bool ticking, Clock clock);
  ~ProgressReporter();
  ProgressReporter(const ProgressReporter&) = delete;
  ProgressReporter& operator=(const ProgressReporter&) = delete;

  // The handler to give the book; empty when disabled.
  TARNBookProgressHandler handler();
  // Draws the line if the work has run long enough and the last drawing is
  // old enough.
  void tick();
  // Wipes the line if one was drawn; later reports draw nothing.
  void finish();
  // Whether a line has been drawn (and not yet wiped).
  bool shown() const;

  // The line for a step: "Loading accounts: 40,000 of 100,000 entries (40%)"
  // or, when the step cannot say how far it is, "Reading... 1.5 s".
  static std::string Line(const TARNBookProgress& progress, std::chrono::milliseconds elapsed);

  static constexpr std::chrono::milliseconds kQuietFor{500};
  static constexpr std::chrono::milliseconds kRedrawEvery{100};

 private:
  void report(const TARNBookProgress& progress);
  void drawLocked(std::chrono::steady_clock::time_point now);

  std::FILE* out_;
  bool enabled_;
  Clock clock_;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point lastDrawn_{};
  mutable std::mutex mutex_;
  std::condition_variable stop_;
  bool finished_ = false;
  bool drawn_ = false;
  // The last report, its texts copied (the book's views die with the call).
  std::string step_, unit_;
  std::uint64_t done_ = 0, total_ = 0;
  // The line on the screen, not drawn again while it would not change.
  std::string line_;
  std::thread ticker_;
};

}  // namespace tarn::cli
