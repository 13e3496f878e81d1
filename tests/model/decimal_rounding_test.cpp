#include "tarn/model/decimal_rounding.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tarn {
namespace {

TEST(DecimalRounding, RoundsTheShortestDecimalTextHalfAwayFromZero) {
  // Binary doubles just below the half (10.125 is exact; 2.675 and 1.005 are not).
  const std::pair<double, double> cents[] = {
      {10.125, 10.13}, {-2.125, -2.13},  {2.675, 2.68}, {1.005, 1.01},
      {-1.005, -1.01}, {0.004, 0.0},     {0.005, 0.01}, {99.995, 100.0},
      {12.34, 12.34},  {0.0049999, 0.0}, {1e20, 1e20},  {123456789.125, 123456789.13}};
  for (auto [value, expected] : cents) EXPECT_EQ(RoundDecimalPlain(value, 2), expected) << value;
  EXPECT_EQ(RoundDecimalPlain(0.5, 0), 1.0);
  EXPECT_TRUE(std::isnan(RoundDecimalPlain(std::nan(""), 2)));
}

}  // namespace
}  // namespace tarn
