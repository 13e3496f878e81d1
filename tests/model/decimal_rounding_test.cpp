#include "tarn/model/decimal_rounding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tarn {
namespace {

TEST(DecimalRounding, RoundsTheShortestDecimalTextHalfAwayFromZero) {
  // Binary doubles just below the half (10.125 is exact; 2.675 and 1.005 are not).
  EXPECT_EQ(RoundDecimalPlain(10.125, 2), 10.13);
  EXPECT_EQ(RoundDecimalPlain(-2.125, 2), -2.13);
  EXPECT_EQ(RoundDecimalPlain(2.675, 2), 2.68);
  EXPECT_EQ(RoundDecimalPlain(1.005, 2), 1.01);
  EXPECT_EQ(RoundDecimalPlain(-1.005, 2), -1.01);
  EXPECT_EQ(RoundDecimalPlain(0.004, 2), 0.0);
  EXPECT_EQ(RoundDecimalPlain(0.005, 2), 0.01);
  EXPECT_EQ(RoundDecimalPlain(99.995, 2), 100.0);
  EXPECT_EQ(RoundDecimalPlain(9.999, 2), 10.0);
  EXPECT_EQ(RoundDecimalPlain(12.34, 2), 12.34);
  EXPECT_EQ(RoundDecimalPlain(0.0049999, 2), 0.0);
  EXPECT_EQ(RoundDecimalPlain(1e20, 2), 1e20);
  EXPECT_EQ(RoundDecimalPlain(123456789.125, 2), 123456789.13);
  EXPECT_EQ(RoundDecimalPlain(0.5, 0), 1.0);
  EXPECT_TRUE(std::isnan(RoundDecimalPlain(std::numeric_limits<double>::quiet_NaN(), 2)));
}

}  // namespace
}  // namespace tarn
