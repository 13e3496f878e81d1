#include "tarn/platform/number_text.h"

#include <gtest/gtest.h>

#include <string>

#include <cmath>
#include <limits>

namespace tarn {
namespace {

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

// The white space skipped is the scanner's: every ASCII white-space control
// (the account's reading once stopped at a carriage return, form feed or
// vertical tab, the filters' at a no-break space) and the Unicode spaces and
// line ends. A zero-width space is no white space.
TEST(NumberText, LeadingWhiteSpaceIsTheScannersWhiteSpaceAndNewlines) {
  EXPECT_EQ(LeadingWhiteSpaceLength(" \t\n\v\f\r7"), 6u);
  EXPECT_EQ(LeadingWhiteSpaceLength("\xC2\x85\xC2\xA0"
                                    "7"),
            4u);  // next line, no-break space
  EXPECT_EQ(LeadingWhiteSpaceLength("\xE1\x9A\x80"
                                    "7"),
            3u);  // ogham space mark
  EXPECT_EQ(LeadingWhiteSpaceLength("\xE2\x80\x80\xE2\x80\x8A"
                                    "7"),
            6u);  // en quad, hair space
  EXPECT_EQ(LeadingWhiteSpaceLength("\xE2\x80\xA8\xE2\x80\xA9\xE2\x80\xAF"
                                    "7"),
            9u);
  EXPECT_EQ(LeadingWhiteSpaceLength("\xE2\x81\x9F\xE3\x80\x80"
                                    "7"),
            6u);  // U+205F, U+3000
  EXPECT_EQ(LeadingWhiteSpaceLength("\xE2\x80\x8B"
                                    "7"),
            0u);                                   // zero-width space
  EXPECT_EQ(LeadingWhiteSpaceLength("\xC2"), 0u);  // truncated sequence
  EXPECT_EQ(LeadingWhiteSpaceLength("\xE2\x80"), 0u);
  EXPECT_EQ(LeadingWhiteSpaceLength("\x1F"
                                    "7"),
            0u);  // a control that is no white space
  EXPECT_EQ(LeadingWhiteSpaceLength("   "), 3u);
  EXPECT_EQ(LeadingWhiteSpaceLength(""), 0u);

  EXPECT_EQ(LeadingInteger("\r\n12"), 12);
  EXPECT_EQ(LeadingInteger("\f\v-3 days"), -3);
  EXPECT_EQ(LeadingInteger("\xC2\xA0"
                           "61"),
            61);
  EXPECT_EQ(LeadingInteger("\xE3\x80\x80"
                           "8"),
            8);
  EXPECT_EQ(LeadingInteger("\xE2\x80\x8B"
                           "8"),
            0);
  EXPECT_DOUBLE_EQ(LeadingReal("\r\xC2\xA0"
                               "2.5"),
                   2.5);
}

TEST(NumberText, LeadingIntegerReadsASignAndDigitsClampedTo32Bits) {
  EXPECT_EQ(LeadingInteger("12abc"), 12);
  EXPECT_EQ(LeadingInteger("+5"), 5);
  EXPECT_EQ(LeadingInteger("-0"), 0);
  EXPECT_EQ(LeadingInteger("3.9"), 3);
  EXPECT_EQ(LeadingInteger(""), 0);
  EXPECT_EQ(LeadingInteger("abc"), 0);
  EXPECT_EQ(LeadingInteger("- 5"), 0);  // no white space after the sign
  EXPECT_EQ(LeadingInteger("+-5"), 0);
  EXPECT_EQ(LeadingInteger("x12"), 0);
  EXPECT_EQ(LeadingInteger("2147483647"), kMax);
  EXPECT_EQ(LeadingInteger("2147483648"), kMax);
  EXPECT_EQ(LeadingInteger("-2147483648"), kMin);
  EXPECT_EQ(LeadingInteger("-2147483649"), kMin);
  EXPECT_EQ(LeadingInteger("99999999999999999999999999"), kMax);
  EXPECT_EQ(LeadingInteger("-99999999999999999999999999"), kMin);
  EXPECT_EQ(LeadingInteger("0000000000000000000000042"), 42);
}

TEST(NumberText, LeadingRealReadsTheLongestDecimalNumber) {
  EXPECT_DOUBLE_EQ(LeadingReal("150.25 dollars"), 150.25);
  EXPECT_DOUBLE_EQ(LeadingReal("+1.5e3x"), 1500.0);
  EXPECT_DOUBLE_EQ(LeadingReal("-.5"), -0.5);
  EXPECT_DOUBLE_EQ(LeadingReal("7."), 7.0);
  EXPECT_DOUBLE_EQ(LeadingReal("2e"), 2.0);
  EXPECT_EQ(LeadingReal(""), 0.0);
  EXPECT_EQ(LeadingReal("abc"), 0.0);
  EXPECT_EQ(LeadingReal("+-1"), 0.0);
  EXPECT_EQ(LeadingReal("--1"), 0.0);
  EXPECT_EQ(LeadingReal("0x10"), 0.0);  // no hexadecimal
  EXPECT_EQ(LeadingReal("1e999"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(LeadingReal("-1e999"), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(LeadingReal("1e-999"), 0.0);
  EXPECT_GT(LeadingReal("4e-320"), 0.0);  // subnormal
  EXPECT_EQ(LeadingReal("inf"), std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(LeadingReal("nan")));
}

TEST(NumberText, LeadingDecimalNumberReadsPlainDecimalsOfAnyScript) {
  const std::pair<const char*, double> decimals[] = {
      {"-1234.50", -1234.5}, {"12.34.56", 12.34}, {"--5", 0.0},   {"5-3", 5.0},
      {".5", 0.5},           {"-.5", -0.5},       {".", 0.0},     {"", 0.0},
      {"7.", 7.0},           {" 2.5", 2.5},       {"-", 0.0},     {"\u0661\u0662.\u0665", 12.5},
      {"0.1", 0.1},          {"abc", 0.0},        {"+4.25", 4.25}};
  for (auto [text, expected] : decimals) {
    EXPECT_DOUBLE_EQ(LeadingDecimalNumber(text), expected) << text;
  }
  EXPECT_EQ(LeadingDecimalNumber("1" + std::string(400, '0')),
            std::numeric_limits<double>::infinity());
  EXPECT_EQ(LeadingDecimalNumber("-1" + std::string(400, '0') + ".5"),
            -std::numeric_limits<double>::infinity());
  EXPECT_EQ(LeadingDecimalNumber("0." + std::string(400, '0') + "1"), 0.0);
}

}  // namespace
}  // namespace tarn
