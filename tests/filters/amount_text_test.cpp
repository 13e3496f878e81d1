#include "tarn/filters/amount_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace tarn {
namespace {

std::string Text(double amount, std::string_view separator = ".") {
  std::string out = "left over";
  FormatAmountText(amount, separator, out);
  return out;
}

TEST(AmountText, TwoDecimalsNoGroupingHalvesAwayFromZero) {
  EXPECT_EQ(Text(12), "12.00");
  EXPECT_EQ(Text(1234567.5), "1234567.50");
  EXPECT_EQ(Text(-5.25), "-5.25");
  EXPECT_EQ(Text(0.5), "0.50");
  // The shortest decimal of the double is rounded: 10.125 and 2.675 round up
  // although their binary values lie just below the half.
  EXPECT_EQ(Text(10.125), "10.13");
  EXPECT_EQ(Text(-2.125), "-2.13");
  EXPECT_EQ(Text(2.675), "2.68");
  EXPECT_EQ(Text(1.004), "1.00");
  // Carries run through every nine and out of the units.
  EXPECT_EQ(Text(9.995), "10.00");
  EXPECT_EQ(Text(-999.999), "-1000.00");
  // Nothing left to sign: no minus.
  EXPECT_EQ(Text(-0.004), "0.00");
  EXPECT_EQ(Text(-0.0), "0.00");
  EXPECT_EQ(Text(-0.005), "-0.01");
  EXPECT_EQ(Text(5e-324), "0.00");
  EXPECT_EQ(Text(1e21), "1000000000000000000000.00");
  EXPECT_EQ(Text(std::numeric_limits<double>::quiet_NaN()), "NaN");

  // The user's separator, of any length, replaces the point.
  EXPECT_EQ(Text(1000.5, ","), "1000,50");
  EXPECT_EQ(Text(-3, "\u066B"), "-3\u066B00");
}

}  // namespace
}  // namespace tarn
