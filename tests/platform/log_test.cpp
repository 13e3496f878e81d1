#include "tarn/platform/log.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarn {
namespace {

TEST(Log, SinkCanBeReplacedAndRestored) {
  std::vector<std::string> first;
  std::vector<std::string> second;
  LogSink original = SetLogSink([&](std::string_view line) { first.emplace_back(line); });
  ASSERT_TRUE(original);
  Log("Account does not have a name");

  LogSink previous = SetLogSink([&](std::string_view line) { second.emplace_back(line); });
  Log("second");
  ASSERT_TRUE(previous);
  previous("through the returned sink");  // the returned sink is the first one
  EXPECT_EQ(first, (std::vector<std::string>{"Account does not have a name",
                                             "through the returned sink"}));
  EXPECT_EQ(second, (std::vector<std::string>{"second"}));

  // An empty sink restores standard error.
  SetLogSink(nullptr);
  testing::internal::CaptureStderr();
  Log("to standard error");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "to standard error\n");
  SetLogSink(original);
}

}  // namespace
}  // namespace tarn
