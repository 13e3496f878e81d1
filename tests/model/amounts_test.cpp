#include "tarn/model/amounts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace tarn {
namespace {

TEST(Amounts, RoundValueRoundsHalvesAwayFromZeroInDoubleArithmetic) {
  EXPECT_DOUBLE_EQ(RoundValue(2.675), 2.68);   // the sum lands exactly on 268
  EXPECT_DOUBLE_EQ(RoundValue(-1.005), -1.0);  // -100.99999999999997 truncates to -100
  EXPECT_DOUBLE_EQ(RoundValue(1.115), 1.11);   // 111.99999999999999
  EXPECT_DOUBLE_EQ(RoundValue(0.125), 0.13);
  EXPECT_DOUBLE_EQ(RoundValue(-0.005), -0.01);  // halves go away from zero on both sides
  EXPECT_DOUBLE_EQ(RoundValue(0.995), 1.0);
  EXPECT_DOUBLE_EQ(RoundValue(1234.565), 1234.57);
  EXPECT_EQ(RoundValue(0.004), 0.0);
  EXPECT_FALSE(std::signbit(RoundValue(-0.004)));  // truncation gives integer 0, so +0.0
  // Multiplying by 0.01 is not dividing by 100: 35 * 0.01 is 0.35000000000000003.
  EXPECT_EQ(RoundValue(0.35), 35 * 0.01);
  EXPECT_NE(RoundValue(0.35), 0.35);
}

TEST(Amounts, RoundValueOfValuesOutsideTheIntegerRange) {
  const double indefinite = static_cast<double>(std::numeric_limits<std::int64_t>::min()) * 0.01;
  EXPECT_EQ(RoundValue(std::nan("")), indefinite);
  EXPECT_EQ(RoundValue(std::numeric_limits<double>::infinity()), indefinite);
  EXPECT_EQ(RoundValue(-1e300), indefinite);
  EXPECT_DOUBLE_EQ(RoundValue(9e15), 9e15);
}

TEST(Amounts, RoundNearZeroValueExcludesItsBounds) {
  EXPECT_EQ(RoundNearZeroValue(0.001), 0.001);
  EXPECT_EQ(RoundNearZeroValue(-0.001), -0.001);
  EXPECT_EQ(RoundNearZeroValue(-0.0009), 0.0);
  EXPECT_FALSE(std::signbit(RoundNearZeroValue(-0.0009)));
  EXPECT_FALSE(std::signbit(RoundNearZeroValue(-0.0)));
  EXPECT_EQ(RoundNearZeroValue(0.00099), 0.0);
  EXPECT_EQ(RoundNearZeroValue(-12.5), -12.5);
  EXPECT_TRUE(std::isnan(RoundNearZeroValue(std::nan(""))));
}

TEST(Amounts, TruncateValueCutsTowardZero) {
  EXPECT_DOUBLE_EQ(TruncateValue(1.999, 2), 1.99);
  EXPECT_DOUBLE_EQ(TruncateValue(-1.999, 2), -1.99);
  EXPECT_DOUBLE_EQ(TruncateValue(0.29, 2), 0.28);  // 0.29 * 100 is 28.999999999999996
  EXPECT_DOUBLE_EQ(TruncateValue(1.23456, 0), 1.0);
  EXPECT_DOUBLE_EQ(TruncateValue(1.23456, 3), 1.234);
  EXPECT_TRUE(std::isnan(TruncateValue(1.5, -1)));  // factor 0.1 truncates to 0
}

TEST(Amounts, DollarCommasAmountString) {
  EXPECT_EQ(FloatToDollarCommasAmountString(1234.5), "$1,234.50");
  EXPECT_EQ(FloatToDollarCommasAmountString(-1234.5), "-$1,234.50");
  EXPECT_EQ(FloatToDollarCommasAmountString(1234567.891), "$1,234,567.89");
  EXPECT_EQ(FloatToDollarCommasAmountString(-5), "-$5.00");
  EXPECT_EQ(FloatToDollarCommasAmountString(999.99), "$999.99");
  EXPECT_EQ(FloatToDollarCommasAmountString(999.999), "$1,000.00");  // grouped after rounding
  EXPECT_EQ(FloatToDollarCommasAmountString(100000), "$100,000.00");
  EXPECT_EQ(FloatToDollarCommasAmountString(0), "$0.00");
  EXPECT_EQ(FloatToDollarCommasAmountString(-0.001), "-$0.00");
  EXPECT_EQ(FloatToDollarCommasAmountString(-0.0), "$0.00");
  EXPECT_EQ(FloatToDollarCommasAmountString(RoundNearZeroValue(-0.0009)), "$0.00");
  EXPECT_EQ(FloatToDollarCommasAmountString(RoundNearZeroValue(-0.001)), "-$0.00");
}

TEST(Amounts, CommasAmountString) {
  EXPECT_EQ(FloatToCommasAmountString(1234.5), "1,234.50");
  EXPECT_EQ(FloatToCommasAmountString(-1234.5), "-1,234.50");
  EXPECT_EQ(FloatToCommasAmountString(1234567.891), "1,234,567.89");
  EXPECT_EQ(FloatToCommasAmountString(-5), "-5.00");
  EXPECT_EQ(FloatToCommasAmountString(999.99), "999.99");
  EXPECT_EQ(FloatToCommasAmountString(0), "0.00");
  EXPECT_EQ(FloatToCommasAmountString(-0.001), "-0.00");
  EXPECT_EQ(FloatToCommasAmountString(-0.0), "0.00");
}

TEST(Amounts, DollarAmountStringPutsTheSymbolBehindTheSign) {
  EXPECT_EQ(FloatToDollarAmountString(1234.5), "$1234.50");
  EXPECT_EQ(FloatToDollarAmountString(-1234.5), "-$1234.50");
  EXPECT_EQ(FloatToDollarAmountString(1234567.891), "$1234567.89");
  EXPECT_EQ(FloatToDollarAmountString(-5), "-$5.00");
  EXPECT_EQ(FloatToDollarAmountString(0), "$0.00");
  EXPECT_EQ(FloatToDollarAmountString(-0.001), "-$0.00");
  // Negative zero fails the x < 0 test, yet "%.2f" still writes its sign.
  EXPECT_EQ(FloatToDollarAmountString(-0.0), "$-0.00");
}

}  // namespace
}  // namespace tarn
