// Helpers of the book tests: a fixture that pins today to Tuesday 24 November
// 2026 and keeps the library's log lines out of the test output.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

namespace tarn::testing {

class QuietDayTest : public ::testing::Test {
 protected:
  QuietDayTest() {
    CalendarDate::overrideNow(CalendarDate(2026, 11, 24));
    previousSink_ = SetLogSink([](std::string_view) {});
  }
  ~QuietDayTest() override {
    SetLogSink(previousSink_);
    CalendarDate::overrideNow(std::nullopt);
  }

 private:
  LogSink previousSink_;
};

}  // namespace tarn::testing
