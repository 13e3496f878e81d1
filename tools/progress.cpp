// A progress line on the terminal for the book's long steps.

#include "tools/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include <fmt/format.h>

namespace tarn::cli {

namespace {

// 100000 -> "100,000".
std::string Grouped(std::uint64_t value) {
  std::string digits = std::to_string(value);
  for (auto at = static_cast<std::ptrdiff_t>(digits.size()) - 3; at > 0; at -= 3) {
    digits.insert(static_cast<std::size_t>(at), ",");
  }
  return digits;
}

}  // namespace

ProgressReporter::ProgressReporter()
    : ProgressReporter(stderr, isatty(STDERR_FILENO) && !std::getenv("TARN_NO_PROGRESS"), true,
                       std::chrono::steady_clock::now) {}

ProgressReporter::ProgressReporter(std::FILE* out, bool enabled, bool ticking, Clock clock)
    : out_(out), enabled_(enabled), clock_(std::move(clock)), start_(clock_()) {
  if (enabled_ && ticking) {
    ticker_ = std::thread([this]() {
      std::unique_lock lock(mutex_);
      while (!stop_.wait_for(lock, kRedrawEvery, [this]() { return finished_; })) {
        drawLocked(clock_());
      }
    });
  }
}

ProgressReporter::~ProgressReporter() {
  finish();
}

TARNBookProgressHandler ProgressReporter::handler() {
  if (!enabled_) return {};
  return [this](const TARNBookProgress& progress) { report(progress); };
}

void ProgressReporter::report(const TARNBookProgress& progress) {
  std::lock_guard lock(mutex_);
  if (finished_) return;
  const bool newStep = step_ != progress.step;
  step_.assign(progress.step);
  unit_.assign(progress.unit);
  done_ = progress.done;
  total_ = progress.total;
  // A new step shows at once (once past the quiet time); counts at most a
  // few times a second.
  if (newStep) lastDrawn_ = {};
  drawLocked(clock_());
}

void ProgressReporter::tick() {
  std::lock_guard lock(mutex_);
  drawLocked(clock_());
}

void ProgressReporter::drawLocked(std::chrono::steady_clock::time_point now) {
  if (!enabled_ || finished_ || step_.empty()) return;
  if (now - start_ < kQuietFor) return;
  if (drawn_ && now - lastDrawn_ < kRedrawEvery) return;
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - start_);
  const std::string line = Line(TARNBookProgress{step_, unit_, done_, total_}, elapsed);
  lastDrawn_ = now;
  if (drawn_ && line == line_) return;
  // Back to the line's start, the text, the rest of the old line wiped.
  std::fprintf(out_, "\r%s\x1b[K", line.c_str());
  std::fflush(out_);
  drawn_ = true;
  line_ = line;
}

void ProgressReporter::finish() {
  {
    std::lock_guard lock(mutex_);
    if (finished_) return;
    finished_ = true;
    if (drawn_) {
      std::fputs("\r\x1b[K", out_);
      std::fflush(out_);
    }
  }
  stop_.notify_all();
  if (ticker_.joinable()) ticker_.join();
}

bool ProgressReporter::shown() const {
  std::lock_guard lock(mutex_);
  return drawn_ && !finished_;
}

std::string ProgressReporter::Line(const TARNBookProgress& progress,
                                   std::chrono::milliseconds elapsed) {
  if (progress.total == 0 || progress.unit.empty()) {
    return fmt::format("{}... {:.1f} s", progress.step, elapsed.count() / 1000.0);
  }
  const std::uint64_t done = std::min(progress.done, progress.total);
  return fmt::format("{}: {} of {} {} ({}%)", progress.step, Grouped(done), Grouped(progress.total),
                     progress.unit, done * 100 / progress.total);
}

}  // namespace tarn::cli
