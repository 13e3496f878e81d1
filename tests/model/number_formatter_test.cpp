#include "tarn/model/number_formatter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>

#include "tarn/model/decimal_rounding.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

std::optional<double> parse(const TARNNumberFormatter& formatter, std::string_view text) {
  std::optional<double> value = -999.0;  // must be overwritten
  EXPECT_TRUE(formatter.getObjectValue(value, text));
  return value;
}

TARNNumberFormatter literalFormatter(std::string_view pattern, const char* decimal = nullptr,
                                     const char* thousands = nullptr) {
  TARNNumberFormatter formatter;
  formatter.setLocalizesFormat(false);
  formatter.setFormat(pattern);
  if (decimal) formatter.setDecimalSeparator(decimal);
  if (thousands) formatter.setThousandSeparator(thousands);
  return formatter;
}

TEST(NumberFormatter, WritesAsThePatternSays) {
  const TARNNumberFormatter plain = literalFormatter("#,##0.00");
  const TARNNumberFormatter first = literalFormatter("$ #,##0.00;$ 0.00; -$ #,##0.00");
  const TARNNumberFormatter last = literalFormatter("#,##0.00 kr; 0,00 kr;-#,##0.00 kr", ",", ".");
  const TARNNumberFormatter accounting = literalFormatter("#,##0.00;(#,##0.00)");
  const struct {
    TARNNumberFormatter formatter;
    double value;
    const char* expected;
  } rows[] = {
      {plain, 1234567.891, "1,234,567.89"},
      {plain, -1234.5, "-1,234.50"},  // no negative section
      // Halves away from zero on the decimal reading (2.675 is just below it in binary).
      {plain, 2.675, "2.68"},
      {plain, -2.675, "-2.68"},
      {plain, 999999.995, "1,000,000.00"},
      {plain, -0.001, "0.00"},  // rounded to zero, the sign goes
      {plain, std::nan(""), "NaN"},
      {literalFormatter("0.0##"), 1.5, "1.5"},
      {literalFormatter("0.0##"), 1.23456, "1.235"},
      {literalFormatter("000"), 7.5, "008"},
      {literalFormatter("#.##"), 0.5, ".5"},
      {literalFormatter("#.##"), 0, "0"},
      {first, 1234.5, "$ 1,234.50"},
      {first, -1234.5, " -$ 1,234.50"},
      {first, 0, "$ 0.00"},
      {last, 1234567.5, "1.234.567,50 kr"},
      {last, 0, " 0,00 kr"},  // the zero section as it stands, with its own separator
      {last, -0.0, " 0,00 kr"},
      {accounting, -12, "(12.00)"},                       // two sections are positive and negative
      {literalFormatter("#,##0.00 kr."), 5, "5.00 kr."},  // a trailing marker is suffix
      {literalFormatter("#,##0.00##;zero;-#,##0.00##"), 1.23456, "1.2346"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.formatter.stringForObjectValue(row.value), row.expected) << row.value;

  // With a scale the value is rounded before the section is chosen.
  TARNNumberFormatter scaled = literalFormatter("#,##0.00##;zero;-#,##0.00##");
  scaled.setRoundingScale(2);
  EXPECT_EQ(scaled.stringForObjectValue(1.005), "1.01");
  EXPECT_EQ(scaled.stringForObjectValue(-0.004), "zero");
  EXPECT_EQ(scaled.stringForObjectValue(-0.005), "-0.01");
}

TEST(NumberFormatter, AgreesWithDecimalRoundingOnCentsAndOddValues) {
  // Values in whole cents take a shortcut; both paths must agree with decimal rounding.
  TARNNumberFormatter formatter = literalFormatter("0.00");
  formatter.setRoundingScale(2);
  std::mt19937_64 random(20070315);
  std::uniform_int_distribution<std::int64_t> cents(-100000000000, 100000000000);
  std::uniform_real_distribution<double> odd(-1e7, 1e7);
  char expected[64];
  for (int i = 0; i < 2000; ++i) {
    const double value = (i % 2 == 0) ? static_cast<double>(cents(random)) / 100 : odd(random);
    const double rounded = RoundDecimalPlain(value, 2);
    std::snprintf(expected, sizeof expected, "%.2f", rounded == 0 ? 0.0 : std::fabs(rounded));
    ASSERT_EQ(formatter.stringForObjectValue(value),
              (rounded < 0 ? "-" : "") + std::string(expected))
        << value;
  }
  EXPECT_EQ(formatter.stringForObjectValue(-10.125), "-10.13");  // just past the shortcut
}

TEST(NumberFormatter, LocalisedPatternsUseTheUsersMarkers) {
  const std::string oldDecimal = UserDefault("NSDecimalSeparator");
  const std::string oldThousands = UserDefault("NSThousandsSeparator");
  SetUserDefault("NSDecimalSeparator", ",");
  SetUserDefault("NSThousandsSeparator", ".");
  TARNNumberFormatter formatter;
  formatter.setFormat("#.##0,00");
  formatter.setDecimalSeparator(",");
  formatter.setThousandSeparator(".");
  EXPECT_EQ(formatter.stringForObjectValue(1234.5), "1.234,50");
  // Off: "." is the decimal point, all five placeholders behind it are fraction digits.
  formatter.setLocalizesFormat(false);
  EXPECT_EQ(formatter.stringForObjectValue(1234.5), "1234,50000");
  SetUserDefault("NSDecimalSeparator", oldDecimal);
  SetUserDefault("NSThousandsSeparator", oldThousands);
}

TEST(NumberFormatter, ParsingNeverFailsAndReadsWhatFormattingWrites) {
  TARNNumberFormatter formatter = literalFormatter("#,##0.00;nothing;-#,##0.00");
  formatter.setCurrencySymbol("Kč");  // in any letter case, wherever it stands
  const std::pair<const char*, std::optional<double>> rows[] = {
      {"Kč1,234.50", 1234.5},  {"  -kč1,234.50 ", -1234.5},
      {"12 KČ", 12.0},         {"+7", 7.0},
      {".25", 0.25},           {"nothing", 0.0},
      {"abc", std::nullopt},   {"", std::nullopt},
      {"1.2.3", std::nullopt}, {"-", std::nullopt}};
  for (const auto& [text, expected] : rows) EXPECT_EQ(parse(formatter, text), expected) << text;

  formatter.setMinimum(-5.0);
  EXPECT_EQ(parse(formatter, "abc"), -5.0);  // the minimum becomes the default
  EXPECT_EQ(parse(formatter, "-6"), -5.0);   // below the minimum: refused
  formatter.setDefaultObjectValue(3.0);
  formatter.setDefaultObjectValue(std::nullopt);  // ignored, unlike the date formatter
  formatter.setMaximum(10.0);
  EXPECT_EQ(parse(formatter, "10"), 10.0);
  EXPECT_EQ(parse(formatter, "10.01"), 3.0);
  formatter.setRoundingScale(2);
  EXPECT_EQ(parse(formatter, "2.675"), 2.68);
  std::string error = "untouched";
  std::optional<double> value;
  EXPECT_TRUE(formatter.getObjectValue(value, "zzz", &error));
  EXPECT_EQ(error, "untouched");

  TARNNumberFormatter last = literalFormatter("#,##0.00 kr; 0,00 kr;-#,##0.00 kr", ",", " ");
  TARNNumberFormatter first = literalFormatter("$ #,##0.00;$ 0.00; -$ #,##0.00");
  for (double amount : {0.0, -0.5, 1234567.89, -1234567.89, 1e9}) {
    EXPECT_EQ(parse(last, last.stringForObjectValue(amount)), amount) << amount;
    EXPECT_EQ(parse(first, first.stringForObjectValue(amount)), amount) << amount;
  }
  EXPECT_EQ(parse(last, "1234.5"), std::nullopt);  // "." is nothing here
  EXPECT_EQ(parse(first, "$ -12"), -12.0);
}

TEST(NumberFormatter, AttributedAndEditingStrings) {
  using Text = TARNNumberFormatter::AttributedString;
  TARNNumberFormatter formatter = literalFormatter("#,##0.00");
  const TARNNumberFormatter::Attributes black{{"colour", "black"}};
  EXPECT_EQ(formatter.attributedStringForObjectValue(std::nullopt, black), std::nullopt);
  EXPECT_EQ(formatter.attributedStringForObjectValue(-1234.5, black), (Text{"-1,234.50", black}));
  EXPECT_EQ(formatter.editingStringForObjectValue(Text{"1,234.5", {}}), "1,234.50");
  EXPECT_EQ(formatter.editingStringForObjectValue(Text{"junk", {}}), std::nullopt);
  formatter.setDefaultObjectValue(0.0);
  EXPECT_EQ(formatter.editingStringForObjectValue(Text{"junk", {}}), "0.00");
}

}  // namespace
}  // namespace tarn
