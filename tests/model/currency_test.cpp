#include "tarn/model/currency.h"

#include <gtest/gtest.h>

namespace tarn {
namespace {

constexpr const char* kZeroWidthSpace = "\xE2\x80\x8B";

class CurrencyTest : public ::testing::Test {
 protected:
  void SetUp() override { CalendarDate::overrideNow(CalendarDate(2007, 3, 15, 10, 30)); }
  void TearDown() override { CalendarDate::overrideNow(std::nullopt); }
};

std::optional<double> parse(const TARNNumberFormatter& formatter, std::string_view text) {
  std::optional<double> value;
  EXPECT_TRUE(formatter.getObjectValue(value, text));
  return value;
}

std::shared_ptr<PFCurrency> krona() {
  return PFCurrency::initWithCode("SEK", "Swedish krona", "kr", false, " ", ",", 0.1, 20070301);
}

TEST_F(CurrencyTest, DefaultsAndDictionaryRoundTrip) {
  // Missing keys keep the defaults; lastUpdate is today, rate 1.0.
  plist::Value partial(plist::Dictionary{{"code", plist::Value("EUR")},
                                         {"symbolPrecedesAmounts", plist::Value(false)}});
  auto euro = PFCurrency::initWithDictionary(partial);
  EXPECT_EQ(euro->code(), "EUR");
  EXPECT_EQ(euro->description(), "Brisal Software Dollar");
  EXPECT_EQ(euro->symbol(), "$");
  EXPECT_FALSE(euro->symbolPrecedesAmounts());
  EXPECT_EQ(euro->rate(), 1.0);
  EXPECT_EQ(euro->lastUpdate(), 20070315);

  auto original = krona();
  const plist::Value stored = original->asDictionary();
  ASSERT_EQ(stored.dictionaryValue().size(), 8u);
  EXPECT_TRUE(stored.find("symbolPrecedesAmounts")->isBoolean());
  EXPECT_TRUE(stored.find("rate")->isReal());
  EXPECT_EQ(stored.find("lastUpdate")->intValue(), 20070301);
  EXPECT_EQ(PFCurrency::initWithDictionary(stored)->asDictionary(), stored);

  // Editing copies load the same keys and start unused, standing for nothing.
  auto editing = PFEditingCurrency::initWithDictionary(stored);
  EXPECT_EQ(editing->asDictionary(), stored);
  EXPECT_FALSE(editing->inUse());
  EXPECT_EQ(editing->original(), nullptr);
}

TEST_F(CurrencyTest, NilAndEmptyStringsBecomeEmptyOrZeroWidthSpace) {
  PFCurrency currency;
  currency.setCode(std::nullopt);
  currency.setSymbol(std::nullopt);
  EXPECT_EQ(currency.code(), "");
  EXPECT_EQ(currency.symbol(), "");
  currency.setThousandsSeparator("");
  currency.setDecimalSeparator(std::nullopt);
  EXPECT_EQ(currency.decimalSeparator(), kZeroWidthSpace);
  EXPECT_EQ(currency.asDictionary().find("thousandsSeparator")->stringValue(), kZeroWidthSpace);

  // An empty thousands separator groups with a separator that shows as nothing.
  currency.setDecimalSeparator(".");
  currency.setSymbol("$");
  EXPECT_EQ(currency.formatter()->stringForObjectValue(1234.5),
            std::string("$ 1") + kZeroWidthSpace + "234.50");
  EXPECT_EQ(parse(*currency.formatter(), "$ 1234.50"), 1234.5);
}

TEST_F(CurrencyTest, FormattersWriteAndReadTheCurrencysAmounts) {
  PFCurrency dollar;
  EXPECT_EQ(dollar.formatString(), "$ #,##0.00;$ 0.00; -$ #,##0.00");
  auto sek = krona();
  EXPECT_EQ(sek->formatString(), "#,##0.00 kr; 0,00 kr;-#,##0.00 kr");
  auto formatter = dollar.formatter();
  const struct {
    decltype(dollar.formatter()) formatter;
    double value;
    const char* expected;
  } rows[] = {{formatter, 1234.5, "$ 1,234.50"},  {formatter, -1234.5, " -$ 1,234.50"},
              {formatter, 0, "$ 0.00"},           {formatter, 0.004, "$ 0.00"},
              {formatter, 2.675, "$ 2.68"},       {sek->formatter(), 1234567.5, "1 234 567,50 kr"},
              {sek->formatter(), -3, "-3,00 kr"}, {sek->formatter(), 0, " 0,00 kr"}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.formatter->stringForObjectValue(row.value), row.expected) << row.value;
  }
  EXPECT_EQ(parse(*formatter, "$1,234.50"), 1234.5);
  EXPECT_EQ(parse(*formatter, "-$1,234.50"), -1234.5);
  EXPECT_EQ(parse(*formatter, "abc"), 0.0);
  EXPECT_EQ(parse(*sek->formatter(), "1 234,50 kr"), 1234.5);

  // Each signed formatter refuses the other sign and reads 0 instead.
  auto negative = dollar.negativeFormatter();
  auto positive = dollar.positiveFormatter();
  EXPECT_EQ(parse(*negative, "-$12.00"), -12.0);
  EXPECT_EQ(parse(*negative, "$12.00"), 0.0);
  EXPECT_EQ(parse(*positive, "$12.00"), 12.0);
  EXPECT_EQ(parse(*positive, "-$12.00"), 0.0);
}

TEST_F(CurrencyTest, FormatChangesDiscardTheCachedFormatters) {
  PFCurrency currency;
  auto formatter = currency.formatter();
  auto negative = currency.negativeFormatter();
  auto positive = currency.positiveFormatter();
  // Code, description, rate and date leave the formatters alone.
  currency.setCode("USD");
  currency.setDescription("US dollar");
  currency.setRate(2.0);
  currency.setLastUpdate(20070101);
  EXPECT_EQ(currency.formatter(), formatter);
  EXPECT_EQ(currency.negativeFormatter(), negative);

  currency.setSymbol("US$");
  auto renewed = currency.formatter();
  EXPECT_NE(renewed, formatter);
  EXPECT_NE(currency.negativeFormatter(), negative);
  EXPECT_NE(currency.positiveFormatter(), positive);
  EXPECT_EQ(renewed->stringForObjectValue(5), "US$ 5.00");

  currency.setSymbolPrecedesAmounts(false);
  EXPECT_NE(currency.formatter(), renewed);
  renewed = currency.formatter();
  currency.setDecimalSeparator(",");
  EXPECT_NE(currency.formatter(), renewed);
  renewed = currency.formatter();
  currency.setThousandsSeparator(" ");
  EXPECT_NE(currency.formatter(), renewed);
  EXPECT_EQ(currency.formatString(), "#,##0.00 US$; 0,00 US$;-#,##0.00 US$");
  EXPECT_EQ(currency.formatter()->stringForObjectValue(1234.5), "1 234,50 US$");

  PFCurrency copy = currency;  // a copy builds its own formatters
  EXPECT_NE(copy.formatter(), currency.formatter());
}

TEST_F(CurrencyTest, ConvertsByRatesAndSortsByCode) {
  auto home = PFCurrency::initWithCode("USD", "US dollar", "$", true, ",", ".", 1.0, 20070315);
  auto dearer = PFCurrency::initWithCode("gbp", "Pound", "£", true, ",", ".", 1.25, 20070315);
  EXPECT_DOUBLE_EQ(home->convertAmount(100, dearer), 80.0);
  EXPECT_DOUBLE_EQ(dearer->convertAmount(80, home.get()), 100.0);
  EXPECT_EQ(home->convertAmount(100, nullptr), 100.0);

  EXPECT_EQ(home->codeIsGreaterThan(*dearer), 1);
  EXPECT_EQ(dearer->codeIsGreaterThan(*home), -1);
  auto same = PFCurrency::initWithCode("usd", "", "", true, "", "", 1.0, 0);
  EXPECT_EQ(home->codeIsGreaterThan(*same), 0);
}

}  // namespace
}  // namespace tarn
