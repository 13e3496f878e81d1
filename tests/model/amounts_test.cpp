#include "tarn/model/amounts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "tarn/model/decimal_rounding.h"

namespace tarn {
namespace {

TEST(Amounts, RoundValueRoundsHalvesAwayFromZeroInDoubleArithmetic) {
  const std::pair<double, double> rows[] = {
      {2.675, 2.68},   // the sum lands exactly on 268
      {-1.005, -1.0},  // -100.99999999999997 truncates to -100
      {1.115, 1.11},  {0.125, 0.13}, {-0.005, -0.01}, {1234.565, 1234.57}, {9e15, 9e15}};
  for (auto [value, expected] : rows) EXPECT_DOUBLE_EQ(RoundValue(value), expected) << value;
  EXPECT_EQ(RoundValue(0.004), 0.0);
  EXPECT_FALSE(std::signbit(RoundValue(-0.004)));  // truncation gives integer 0, so +0.0
  EXPECT_EQ(RoundValue(0.35), 35 * 0.01);          // multiplied by 0.01, not divided by 100
  EXPECT_NE(RoundValue(0.35), 0.35);
  const double indefinite = static_cast<double>(std::numeric_limits<std::int64_t>::min()) * 0.01;
  for (double outside : {std::nan(""), std::numeric_limits<double>::infinity(), -1e300}) {
    EXPECT_EQ(RoundValue(outside), indefinite) << outside;
  }
}

TEST(Amounts, RoundNearZeroValueExcludesItsBoundsAndTruncateCutsTowardZero) {
  for (double kept : {0.001, -0.001, -12.5}) EXPECT_EQ(RoundNearZeroValue(kept), kept);
  EXPECT_EQ(RoundNearZeroValue(-0.0009), 0.0);
  EXPECT_FALSE(std::signbit(RoundNearZeroValue(-0.0009)));
  EXPECT_FALSE(std::signbit(RoundNearZeroValue(-0.0)));
  EXPECT_TRUE(std::isnan(RoundNearZeroValue(std::nan(""))));

  EXPECT_DOUBLE_EQ(TruncateValue(-1.999, 2), -1.99);
  EXPECT_DOUBLE_EQ(TruncateValue(0.29, 2), 0.28);  // 0.29 * 100 is 28.999999999999996
  EXPECT_DOUBLE_EQ(TruncateValue(1.23456, 0), 1.0);
  EXPECT_TRUE(std::isnan(TruncateValue(1.5, -1)));  // factor 0.1 truncates to 0
}

TEST(Amounts, AmountStrings) {
  const struct {
    double value;
    const char *dollarCommas, *commas, *dollar;
  } rows[] = {
      {1234.5, "$1,234.50", "1,234.50", "$1234.50"},
      {-1234.5, "-$1,234.50", "-1,234.50", "-$1234.50"},
      {1234567.891, "$1,234,567.89", "1,234,567.89", "$1234567.89"},
      {999.999, "$1,000.00", "1,000.00", "$1000.00"},  // grouped after rounding
      {0, "$0.00", "0.00", "$0.00"},
      {-0.001, "-$0.00", "-0.00", "-$0.00"},
      // Negative zero fails the x < 0 test, yet "%.2f" still writes its sign.
      {-0.0, "$0.00", "0.00", "$-0.00"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(FloatToDollarCommasAmountString(row.value), row.dollarCommas) << row.value;
    EXPECT_EQ(FloatToCommasAmountString(row.value), row.commas) << row.value;
    EXPECT_EQ(FloatToDollarAmountString(row.value), row.dollar) << row.value;
  }
  EXPECT_EQ(FloatToDollarCommasAmountString(RoundNearZeroValue(-0.0009)), "$0.00");
}

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
