#include "tarn/filters/amount_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace tarn {
namespace {

std::string Text(double amount, std::string_view separator = ".") {
  std::string out = "left over";
  FormatAmountText(amount, separator, out);
  return out;
}

TEST(AmountText, TwoDecimalsNoGroupingHalvesAwayFromZero) {
  // The shortest decimal of the double is rounded: 10.125 and 2.675 round up although
  // their binary values lie just below the half. Carries run through every nine and
  // out of the units; with nothing left to sign, no minus.
  // clang-format off
  const std::pair<double, const char*> cases[] = {
      {12, "12.00"}, {10.125, "10.13"}, {-2.125, "-2.13"}, {2.675, "2.68"}, {1.004, "1.00"},
      {9.995, "10.00"}, {-999.999, "-1000.00"}, {-0.004, "0.00"}, {-0.0, "0.00"}, {-0.005, "-0.01"},
      {5e-324, "0.00"}, {1e21, "1000000000000000000000.00"},
      {std::numeric_limits<double>::quiet_NaN(), "NaN"}, {12345678901234.56, "12345678901234.56"}};
  // clang-format on
  for (const auto& [amount, text] : cases) EXPECT_EQ(Text(amount), text) << amount;

  // Whole cents, from small to large, read back digit for digit.
  uint64_t seed = 99;
  for (int i = 0; i < 2000; ++i) {
    seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
    const long long cents = static_cast<long long>(seed >> (20 + i % 40)) * (i % 2 ? 1 : -1);
    const unsigned long long magnitude = cents < 0 ? -cents : cents;
    const std::string expected = (cents < 0 ? "-" : "") + std::to_string(magnitude / 100) + "." +
                                 std::to_string(magnitude % 100 / 10) +
                                 std::to_string(magnitude % 10);
    EXPECT_EQ(Text(static_cast<double>(cents) / 100.0), expected) << cents;
  }

  // The user's separator, of any length, replaces the point.
  EXPECT_EQ(Text(1000.5, ","), "1000,50");
  EXPECT_EQ(Text(-3, "\u066B"), "-3\u066B00");
}

}  // namespace
}  // namespace tarn
