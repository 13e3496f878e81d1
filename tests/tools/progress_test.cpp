// The tarn program's progress line: quiet for quick work, drawn and redrawn
// at a bounded rate for long work, wiped at the end, and never drawn off a
// terminal.

#include "tools/progress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

namespace tarn::cli {
namespace {

using std::chrono::milliseconds;
using TimePoint = std::chrono::steady_clock::time_point;

// A reporter writing to a temporary file, on a clock the test moves.
class ProgressTest : public ::testing::Test {
 protected:
  void SetUp() override { out_ = std::tmpfile(); }
  void TearDown() override { std::fclose(out_); }

  std::unique_ptr<ProgressReporter> reporter(bool enabled) {
    return std::make_unique<ProgressReporter>(out_, enabled, false, [this]() { return now_; });
  }
  void at(int ms) { now_ = TimePoint{} + milliseconds(ms); }
  std::string written() const {
    std::fflush(out_);
    std::string text;
    std::rewind(out_);
    for (int c; (c = std::fgetc(out_)) != EOF;) text += static_cast<char>(c);
    return text;
  }
  static TARNBookProgress loading(std::uint64_t done) {
    return {"Loading accounts", "entries", done, 100000};
  }

  std::FILE* out_ = nullptr;
  TimePoint now_{};
};

TEST_F(ProgressTest, QuickWorkDrawsNothing) {
  at(0);
  auto progress = reporter(true);
  auto handler = progress->handler();
  ASSERT_TRUE(handler);
  handler({"Reading", {}, 0, 0});
  at(300);
  handler(loading(50000));
  at(499);
  handler(loading(100000));
  progress->tick();
  progress->finish();
  EXPECT_EQ(written(), "");
}

TEST_F(ProgressTest, LongWorkDrawsAtABoundedRateAndWipesTheLineAtTheEnd) {
  at(0);
  auto progress = reporter(true);
  auto handler = progress->handler();
  handler({"Reading", {}, 0, 0});
  at(600);
  progress->tick();  // one call, such as reading the file, still under way
  at(650);
  progress->tick();     // too soon to redraw
  handler(loading(0));  // a new step shows at once
  at(660);
  handler(loading(40000));  // too soon
  at(800);
  handler(loading(60000));
  at(1000);
  handler(loading(60000));  // the same line is not drawn again
  progress->finish();
  handler(loading(100000));  // after the end: nothing
  EXPECT_EQ(written(),
            "\rReading... 0.6 s\x1b[K"
            "\rLoading accounts: 0 of 100,000 entries (0%)\x1b[K"
            "\rLoading accounts: 60,000 of 100,000 entries (60%)\x1b[K"
            "\r\x1b[K");
}

TEST_F(ProgressTest, OffTheTerminalThereIsNoHandlerAndNoOutput) {
  at(0);
  auto progress = reporter(false);
  EXPECT_FALSE(progress->handler()) << "the book should not even report";
  at(5000);
  progress->tick();
  progress->finish();
  EXPECT_EQ(written(), "");
}

TEST_F(ProgressTest, TheTickingThreadDrawsWhileAStepIsSilent) {
  // The real clock and the ticking thread: a step that reports once and then
  // works for longer than the quiet time still shows, and the line is gone
  // at the end.
  const auto start = std::chrono::steady_clock::now();
  ProgressReporter progress(out_, true, true, std::chrono::steady_clock::now);
  progress.handler()({"Writing", {}, 0, 0});
  while (!progress.shown() && std::chrono::steady_clock::now() - start < std::chrono::seconds(20)) {
    std::this_thread::sleep_for(milliseconds(20));
  }
  EXPECT_GE(std::chrono::steady_clock::now() - start, ProgressReporter::kQuietFor);
  progress.finish();
  const std::string text = written();
  EXPECT_EQ(text.rfind("\rWriting... ", 0), 0u) << text;
  EXPECT_EQ(text.substr(text.size() - 4), "\r\x1b[K");
}

TEST(ProgressLine, CountsAreGroupedAndClampedAndUnknownTotalsShowTheTime) {
  EXPECT_EQ(ProgressReporter::Line({"Making entries", "entries", 1234567, 5000000}, {}),
            "Making entries: 1,234,567 of 5,000,000 entries (24%)");
  EXPECT_EQ(ProgressReporter::Line({"Preparing", "accounts", 7, 3}, {}),
            "Preparing: 3 of 3 accounts (100%)");
  EXPECT_EQ(ProgressReporter::Line({"Writing", {}, 0, 0}, milliseconds(1549)), "Writing... 1.5 s");
  // A count without a total cannot give a share.
  EXPECT_EQ(ProgressReporter::Line({"Loading accounts", "entries", 10, 0}, milliseconds(700)),
            "Loading accounts... 0.7 s");
}

}  // namespace
}  // namespace tarn::cli
