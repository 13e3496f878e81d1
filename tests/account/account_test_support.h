// Helpers of the account tests: a pinned clock, captured log lines and a
// quick way to make entries.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

namespace tarn::testing {

// Pins today at 15 June 2024 for the life of the object.
class PinnedClock {
 public:
  PinnedClock() { CalendarDate::overrideNow(CalendarDate(2024, 6, 15, 10, 30, 0)); }
  ~PinnedClock() { CalendarDate::overrideNow(std::nullopt); }
  static constexpr DateNumber kToday = 20240615;
};

// Collects every log line written while it lives.
class CapturedLog {
 public:
  CapturedLog() {
    previous_ = SetLogSink([this](std::string_view line) { lines_.emplace_back(line); });
  }
  ~CapturedLog() { SetLogSink(previous_); }
  const std::vector<std::string>& lines() const { return lines_; }
  std::size_t count(std::string_view line) const {
    std::size_t n = 0;
    for (const auto& each : lines_) n += each == line;
    return n;
  }
  void clear() { lines_.clear(); }

 private:
  LogSink previous_;
  std::vector<std::string> lines_;
};

inline std::shared_ptr<TARNAccountEntry> MakeEntry(std::int32_t number, DateNumber date,
                                                   double amount, std::string description = "") {
  auto entry = std::make_shared<TARNAccountEntry>();
  entry->SetNumber(number);
  entry->SetDate(date);
  entry->SetAmount(amount);
  if (amount < 0) {
    entry->SetIsDebit(true);
  } else {
    entry->SetIsDeposit(true);
  }
  entry->SetDescription(std::move(description));
  return entry;
}

}  // namespace tarn::testing
