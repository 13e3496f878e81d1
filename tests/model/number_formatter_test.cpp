#include "tarn/model/number_formatter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
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

TARNNumberFormatter literalFormatter(std::string_view pattern) {
  TARNNumberFormatter formatter;
  formatter.setLocalizesFormat(false);
  formatter.setFormat(pattern);
  return formatter;
}

TEST(NumberFormatter, WritesDigitsGroupsAndFractionAsThePatternSays) {
  TARNNumberFormatter plain = literalFormatter("#,##0.00");
  EXPECT_EQ(plain.stringForObjectValue(1234.5), "1,234.50");
  EXPECT_EQ(plain.stringForObjectValue(1234567.891), "1,234,567.89");
  EXPECT_EQ(plain.stringForObjectValue(999.99), "999.99");
  EXPECT_EQ(plain.stringForObjectValue(0.5), "0.50");
  EXPECT_EQ(plain.stringForObjectValue(0), "0.00");
  EXPECT_EQ(plain.stringForObjectValue(-1234.5), "-1,234.50");  // no negative section
  // Halves away from zero on the decimal reading (2.675 is just below it in binary).
  EXPECT_EQ(plain.stringForObjectValue(2.675), "2.68");
  EXPECT_EQ(plain.stringForObjectValue(-2.675), "-2.68");
  EXPECT_EQ(plain.stringForObjectValue(999999.995), "1,000,000.00");
  // Something that rounds to zero loses its sign.
  EXPECT_EQ(plain.stringForObjectValue(-0.001), "0.00");

  TARNNumberFormatter optional = literalFormatter("0.0##");
  EXPECT_EQ(optional.stringForObjectValue(1.5), "1.5");
  EXPECT_EQ(optional.stringForObjectValue(1.23456), "1.235");
  EXPECT_EQ(optional.stringForObjectValue(1234), "1234.0");  // no grouping marker

  TARNNumberFormatter padded = literalFormatter("000");
  EXPECT_EQ(padded.stringForObjectValue(7), "007");
  EXPECT_EQ(padded.stringForObjectValue(7.5), "008");

  TARNNumberFormatter bare = literalFormatter("#.##");
  EXPECT_EQ(bare.stringForObjectValue(0.5), ".5");
  EXPECT_EQ(bare.stringForObjectValue(0), "0");

  EXPECT_EQ(plain.stringForObjectValue(std::nan("")), "NaN");
}

TEST(NumberFormatter, AgreesWithDecimalRoundingOnCentsAndOddValues) {
  // Values already in cents take a shortcut; the rest go through decimal
  // rounding. Both must write what decimal rounding gives.
  TARNNumberFormatter formatter = literalFormatter("0.00");
  formatter.setRoundingScale(2);
  std::mt19937_64 random(20070315);
  std::uniform_int_distribution<std::int64_t> cents(-100000000000, 100000000000);
  std::uniform_real_distribution<double> odd(-1e7, 1e7);
  char expected[64];
  for (int i = 0; i < 20000; ++i) {
    const double value = (i % 2 == 0) ? static_cast<double>(cents(random)) / 100 : odd(random);
    const double rounded = RoundDecimalPlain(value, 2);
    std::snprintf(expected, sizeof expected, "%.2f", rounded == 0 ? 0.0 : std::fabs(rounded));
    const std::string sign = rounded < 0 ? "-" : "";
    ASSERT_EQ(formatter.stringForObjectValue(value), sign + expected) << value;
  }
  // Halves just past the shortcut's reach.
  EXPECT_EQ(formatter.stringForObjectValue(0.125), "0.13");
  EXPECT_EQ(formatter.stringForObjectValue(-10.125), "-10.13");
}

TEST(NumberFormatter, KeepsLiteralTextAndPicksTheSectionBySign) {
  TARNNumberFormatter first = literalFormatter("$ #,##0.00;$ 0.00; -$ #,##0.00");
  EXPECT_EQ(first.stringForObjectValue(1234.5), "$ 1,234.50");
  EXPECT_EQ(first.stringForObjectValue(-1234.5), " -$ 1,234.50");
  EXPECT_EQ(first.stringForObjectValue(0), "$ 0.00");

  TARNNumberFormatter last = literalFormatter("#,##0.00 kr; 0,00 kr;-#,##0.00 kr");
  last.setDecimalSeparator(",");
  last.setThousandSeparator(".");
  EXPECT_EQ(last.stringForObjectValue(1234567.5), "1.234.567,50 kr");
  EXPECT_EQ(last.stringForObjectValue(-0.5), "-0,50 kr");
  // The zero section is written as it stands, with its own separator.
  EXPECT_EQ(last.stringForObjectValue(0), " 0,00 kr");
  EXPECT_EQ(last.stringForObjectValue(-0.0), " 0,00 kr");

  TARNNumberFormatter spaced = literalFormatter("#,##0.00");
  spaced.setDecimalSeparator(",");
  spaced.setThousandSeparator(" ");
  EXPECT_EQ(spaced.stringForObjectValue(1234567.891), "1 234 567,89");

  // Two sections are positive and negative.
  TARNNumberFormatter accounting = literalFormatter("#,##0.00;(#,##0.00)");
  EXPECT_EQ(accounting.stringForObjectValue(-12), "(12.00)");
  EXPECT_EQ(accounting.stringForObjectValue(0), "0.00");

  // A marker behind the last digit placeholder belongs to the suffix.
  TARNNumberFormatter dotted = literalFormatter("#,##0.00 kr.");
  EXPECT_EQ(dotted.stringForObjectValue(5), "5.00 kr.");
}

TEST(NumberFormatter, RoundsToTheScaleBeforeChoosingTheSection) {
  TARNNumberFormatter formatter = literalFormatter("#,##0.00##;zero;-#,##0.00##");
  EXPECT_EQ(formatter.stringForObjectValue(1.23456), "1.2346");
  formatter.setRoundingScale(2);
  EXPECT_EQ(formatter.stringForObjectValue(1.23456), "1.23");
  EXPECT_EQ(formatter.stringForObjectValue(1.005), "1.01");
  EXPECT_EQ(formatter.stringForObjectValue(-0.004), "zero");
  EXPECT_EQ(formatter.stringForObjectValue(-0.005), "-0.01");
}

TEST(NumberFormatter, LocalisedPatternsUseTheUsersMarkers) {
  const std::string oldDecimal = UserDefault("NSDecimalSeparator");
  const std::string oldThousands = UserDefault("NSThousandsSeparator");
  SetUserDefault("NSDecimalSeparator", ",");
  SetUserDefault("NSThousandsSeparator", ".");
  TARNNumberFormatter formatter;
  formatter.setFormat("#.##0,00");  // read with the user's markers
  formatter.setDecimalSeparator(",");
  formatter.setThousandSeparator(".");
  EXPECT_EQ(formatter.stringForObjectValue(1234.5), "1.234,50");
  // Off: the same pattern is read with "." and "," as they stand, so "."
  // is the decimal point, all five placeholders behind it are fraction
  // digits and there is no grouping.
  formatter.setLocalizesFormat(false);
  EXPECT_EQ(formatter.stringForObjectValue(1234.5), "1234,50000");
  SetUserDefault("NSDecimalSeparator", oldDecimal);
  SetUserDefault("NSThousandsSeparator", oldThousands);
}

TEST(NumberFormatter, ParsingNeverFailsAndFallsBackToTheDefault) {
  TARNNumberFormatter formatter = literalFormatter("#,##0.00");
  formatter.setCurrencySymbol("$");
  EXPECT_EQ(parse(formatter, "$1,234.50"), 1234.5);
  EXPECT_EQ(parse(formatter, "  -$1,234.50 "), -1234.5);
  EXPECT_EQ(parse(formatter, "1234.5$"), 1234.5);
  EXPECT_EQ(parse(formatter, "+7"), 7.0);
  EXPECT_EQ(parse(formatter, ".25"), 0.25);

  // Nothing parses and there is no default or minimum: no value, still success.
  EXPECT_EQ(parse(formatter, "abc"), std::nullopt);
  EXPECT_EQ(parse(formatter, ""), std::nullopt);
  EXPECT_EQ(parse(formatter, "1.2.3"), std::nullopt);
  EXPECT_EQ(parse(formatter, "-"), std::nullopt);

  formatter.setMinimum(-5.0);
  EXPECT_EQ(formatter.defaultObjectValue(), -5.0);
  EXPECT_EQ(parse(formatter, "abc"), -5.0);
  EXPECT_EQ(parse(formatter, "-6"), -5.0);  // below the minimum: refused

  formatter.setDefaultObjectValue(3.0);
  EXPECT_EQ(parse(formatter, "abc"), 3.0);
  formatter.setDefaultObjectValue(std::nullopt);  // ignored
  EXPECT_EQ(formatter.defaultObjectValue(), 3.0);
  EXPECT_EQ(parse(formatter, ""), 3.0);

  formatter.setMaximum(10.0);
  EXPECT_EQ(parse(formatter, "10"), 10.0);
  EXPECT_EQ(parse(formatter, "10.01"), 3.0);

  // The error description is left alone.
  std::string error = "untouched";
  std::optional<double> value;
  EXPECT_TRUE(formatter.getObjectValue(value, "zzz", &error));
  EXPECT_EQ(error, "untouched");
}

TEST(NumberFormatter, ParsingReadsWhatFormattingWrites) {
  TARNNumberFormatter last = literalFormatter("#,##0.00 kr; 0,00 kr;-#,##0.00 kr");
  last.setDecimalSeparator(",");
  last.setThousandSeparator(" ");
  for (double amount : {0.0, 0.5, -0.5, 1234567.89, -1234567.89, 1e9}) {
    EXPECT_EQ(parse(last, last.stringForObjectValue(amount)), amount) << amount;
  }
  EXPECT_EQ(parse(last, "1 234,5"), 1234.5);
  EXPECT_EQ(parse(last, "1234.5"), std::nullopt);  // "." is nothing here

  TARNNumberFormatter first = literalFormatter("$ #,##0.00;$ 0.00; -$ #,##0.00");
  for (double amount : {0.0, 12.34, -12.34, -1234.5}) {
    EXPECT_EQ(parse(first, first.stringForObjectValue(amount)), amount) << amount;
  }
  EXPECT_EQ(parse(first, "-$12"), -12.0);
  EXPECT_EQ(parse(first, "$ -12"), -12.0);
  EXPECT_EQ(parse(first, "12"), 12.0);  // a bare number is accepted

  // The currency symbol goes in any letter case, wherever it stands.
  TARNNumberFormatter symbol = literalFormatter("#,##0.00");
  symbol.setCurrencySymbol("Kč");
  EXPECT_EQ(parse(symbol, "12 KČ"), 12.0);
  EXPECT_EQ(parse(symbol, "kč12"), 12.0);

  // A zero section without digits reads back as zero.
  TARNNumberFormatter nothing = literalFormatter("#,##0.00;nothing;-#,##0.00");
  EXPECT_EQ(nothing.stringForObjectValue(0), "nothing");
  EXPECT_EQ(parse(nothing, "nothing"), 0.0);

  // Parsed values are rounded to the scale.
  TARNNumberFormatter cents = literalFormatter("#,##0.00");
  cents.setRoundingScale(2);
  EXPECT_EQ(parse(cents, "2.675"), 2.68);
}

TEST(NumberFormatter, AttributedAndEditingStrings) {
  TARNNumberFormatter formatter = literalFormatter("#,##0.00");
  TARNNumberFormatter::Attributes attributes{{"colour", "black"}};
  EXPECT_EQ(formatter.attributedStringForObjectValue(std::nullopt, attributes), std::nullopt);
  auto attributed = formatter.attributedStringForObjectValue(-1234.5, attributes);
  ASSERT_TRUE(attributed.has_value());
  EXPECT_EQ(attributed->string, "-1,234.50");
  EXPECT_EQ(attributed->attributes, attributes);  // negatives get no colour of their own

  EXPECT_EQ(formatter.editingStringForObjectValue(1234.5), "1,234.50");
  EXPECT_EQ(
      formatter.editingStringForObjectValue(TARNNumberFormatter::AttributedString{"1,234.5", {}}),
      "1,234.50");
  EXPECT_EQ(
      formatter.editingStringForObjectValue(TARNNumberFormatter::AttributedString{"junk", {}}),
      std::nullopt);
  formatter.setDefaultObjectValue(0.0);
  EXPECT_EQ(
      formatter.editingStringForObjectValue(TARNNumberFormatter::AttributedString{"junk", {}}),
      "0.00");
}

}  // namespace
}  // namespace tarn
