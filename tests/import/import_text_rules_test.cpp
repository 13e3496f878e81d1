#include "tarn/import/import_text_rules.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <random>
#include <string>

namespace tarn {
namespace {

TEST(ImportTextRules, TweakAmountStringCleansBracketsSeparatorsAndMarks) {
  struct Row {
    const char* text;
    const char* decimal;
    const char* thousands;
    const char* expected;
  };
  const Row rows[] = {
      {"(1,234.50)", ".", ",", "-1234.50"},
      {" 1.234,56 ", ",", ".", "1234.56"},
      {"$ 12.00 USD", ".", ",", "12.00"},
      {"$(5.00)", ".", ",", "5.00"},  // a sign before the bracket keeps it positive
      {"+3", ".", ",", "3"},
      {"()", ".", ",", "-"},
      {"(", ".", ",", ""},
      {"\u00a0(7)\u2003", ".", ",", "-7"},  // Unicode blanks are trimmed before the brackets
      {"1 000,5", ",", " ", "1000.5"},
      {"\u0661\u0662\u066b\u0665", "\u066b", "\u066c", "\u0661\u0662.\u0665"},  // Arabic-Indic
      {"1axb5", "ab", "x", "1.5"},      // thousands go first, so their removal can join a decimal
      {"1,000.25", "", "", "1000.25"},  // empty separators match nothing
      {"12'345.00", ".", "'", "12345.00"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(TweakAmountString(row.text, row.decimal, row.thousands), row.expected) << row.text;
  }
}

class ImportDateRules : public ::testing::Test {
 protected:
  void SetUp() override { CalendarDate::overrideNow(CalendarDate(2007, 3, 15)); }
  void TearDown() override { CalendarDate::overrideNow(std::nullopt); }
};

TEST_F(ImportDateRules, DateStringComponentsFollowSeparatorsLengthAndFormat) {
  struct Row {
    const char* text;
    const char* format;
    DateComponents expected;
  };
  const Row rows[] = {
      {"1/ 5'98", "%m/%d/%y", {1, 5, 98}},
      {"2005-01-15", "%Y/%m/%d", {2005, 1, 15}},
      {"15.01.2005", "%d/%m/%Y", {15, 1, 2005}},
      {"1/5", "%m/%d/%y", {1, 5, 0}},  // missing numbers are 0
      {"99999999999/1/1", "%m/%d/%y", {std::numeric_limits<std::int32_t>::max(), 1, 1}},
      {"011505", "%m/%d/%y", {1, 15, 5}},
      {"1 5 98", "%m/%d/%y", {1, 5, 98}},  // blanks are no separators: cut in pairs
      {"01152005", "%m/%d/%Y", {1, 15, 2005}},
      {"20050115", "%Y/%m/%d", {2005, 1, 15}},
      {"01200515", "%m/%Y/%d", {1, 2005, 15}},
      {"20050115", "%y/%m/%d", {2005, 1, 15}},       // the year letter is found in either case
      {"\u00e91234567", "%m/%d/%Y", {0, 23, 4567}},  // characters, not bytes
      // No year in the format: today written in the format, cut in pairs.
      {"01152005", "%m/%d", {3, 0, 5}},
      // Neither separators nor a known length: today.
      {"yesterday", "%m/%d/%y", {3, 15, 7}},
      {"", "%d/%m/%Y", {15, 3, 2007}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(DateStringComponents(row.text, row.format), row.expected)
        << row.text << " in " << row.format;
  }
  EXPECT_EQ(TweakDateString("1/5'03", "%m/%d/%y"), "1/5/3");
  EXPECT_EQ(TweakDateString("2005-01-15", "%Y/%m/%d"), "2005/1/15");
}

TEST_F(ImportDateRules, ImportDateNumberReducesTwoDigitYearsOnly) {
  struct Row {
    const char* text;
    const char* format;
    DateNumber expected;
  };
  const Row rows[] = {
      {"1/5'03", "%m/%d/%y", 20030105},     {"1/5/2003", "%m/%d/%y", 20030105},
      {"12/31/1999", "%m/%d/%y", 19991231}, {"1/5/2003", "%m/%d/%Y", 20030105},
      {"1/5/03", "%m/%d/%Y", 30105},        {"13/45/03", "%m/%d/%y", 0},
      {"15.01.2005", "%d/%m/%Y", 20050115}, {"2/29/2007", "%m/%d/%Y", 0},
      {"garbage", "%m/%d/%y", 20070315},    {"1-5-3", "%m-%d-%y", 0},  // the text read uses "/"
  };
  for (const Row& row : rows) {
    EXPECT_EQ(ImportDateNumber(row.text, row.format), row.expected)
        << row.text << " in " << row.format;
  }
}

// The reader remembers dates by their components; it must answer what the
// plain reading answers, for every format, on another day too (formats
// without a year read today's year, and are not remembered).
TEST_F(ImportDateRules, DateReaderAnswersAsThePlainReading) {
  std::mt19937 random(5);
  const char* const formats[] = {"%m/%d/%y",  "%d/%m/%Y", "%Y/%m/%d",   "%m/%d",
                                 "%%y/%m/%d", "%y/%j",    "%d/%m/%y %H"};
  const char* const pieces[] = {"1", "12", "31", "2", "29", "2007", "99", "00",   "0",
                                "/", "-",  "'",  " ", ".",  "x",    "13", "2000", "123456"};
  for (const CalendarDate today : {CalendarDate(2007, 3, 15), CalendarDate(2012, 2, 29)}) {
    CalendarDate::overrideNow(today);
    for (const char* format : formats) {
      ImportDateReader reader(format);
      for (int round = 0; round < 3000; ++round) {
        std::string text;
        const int count = static_cast<int>(random() % 6);
        for (int i = 0; i < count; ++i) text += pieces[random() % std::size(pieces)];
        EXPECT_EQ(reader.read(text), ImportDateNumber(text, format)) << text << " in " << format;
      }
    }
  }
}

// Amounts are read without building the cleaned text when the separators
// are single ASCII characters; the plain reading is the reference.
TEST(ImportTextRules, ReadImportAmountAnswersAsThePlainReading) {
  std::mt19937 random(9);
  const char* const pieces[] = {"0",
                                "1",
                                "5",
                                "9",
                                ".",
                                ",",
                                "-",
                                "(",
                                ")",
                                " ",
                                "$",
                                "'",
                                "+",
                                "e",
                                "\u00a0",
                                "\u0663",
                                "\u066b",
                                "00000000000000000000",
                                "12345678901234567890"};
  const char* const separators[][2] = {{".", ","},  {",", "."},           {".", ""},  {"", ""},
                                       {",", " "},  {"-", ","},           {".", "-"}, {".", "."},
                                       {"ab", "x"}, {"\u066b", "\u066c"}, {"(", ")"}};
  for (const auto& [decimal, thousands] : separators) {
    for (int round = 0; round < 3000; ++round) {
      std::string text;
      const int count = static_cast<int>(random() % 9);
      for (int i = 0; i < count; ++i) text += pieces[random() % std::size(pieces)];
      const double plain = LeadingDecimalNumber(TweakAmountString(text, decimal, thousands));
      const double fast = ReadImportAmount(text, decimal, thousands);
      // Equal, and of the same sign for zeros.
      EXPECT_TRUE(plain == fast && std::signbit(plain) == std::signbit(fast))
          << "'" << text << "' with " << decimal << " " << thousands << ": " << plain << " vs "
          << fast;
    }
  }
  // A long text of digits is read whole.
  const std::string digits(400, '9');
  EXPECT_EQ(ReadImportAmount(digits, ".", ","), std::numeric_limits<double>::infinity());
  EXPECT_EQ(ReadImportAmount("(1,234.50)", ".", ","), -1234.5);
}

}  // namespace
}  // namespace tarn
