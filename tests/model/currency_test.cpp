#include "tarn/model/currency.h"

#include <gtest/gtest.h>

#include <functional>
#include <tuple>

namespace tarn {
namespace {

constexpr const char* kZeroWidthSpace = "\xE2\x80\x8B";

std::optional<double> parse(const TARNNumberFormatter& formatter, std::string_view text) {
  std::optional<double> value;
  EXPECT_TRUE(formatter.getObjectValue(value, text));
  return value;
}

std::shared_ptr<PFCurrency> krona() {
  return PFCurrency::initWithCode("SEK", "Swedish krona", "kr", false, " ", ",", 0.1, 20070301);
}

TEST(Currency, DefaultsAndDictionaryRoundTrip) {
  // Missing keys keep the defaults; lastUpdate is today.
  CalendarDate::overrideNow(CalendarDate(2007, 3, 15, 10, 30));
  auto euro = PFCurrency::initWithDictionary(plist::Dictionary{
      {"code", plist::Value("EUR")}, {"symbolPrecedesAmounts", plist::Value(false)}});
  CalendarDate::overrideNow(std::nullopt);
  EXPECT_EQ(euro->code() + euro->symbol(), "EUR$");
  EXPECT_FALSE(euro->symbolPrecedesAmounts());
  EXPECT_EQ(euro->rate(), 1.0);
  EXPECT_EQ(euro->lastUpdate(), 20070315);

  const plist::Value stored = krona()->asDictionary();
  ASSERT_EQ(stored.dictionaryValue().size(), 8u);
  EXPECT_TRUE(stored.find("symbolPrecedesAmounts")->isBoolean() && stored.find("rate")->isReal());
  EXPECT_EQ(PFCurrency::initWithDictionary(stored)->asDictionary(), stored);
  // Editing copies load the same keys and start unused, standing for nothing.
  auto editing = PFEditingCurrency::initWithDictionary(stored);
  EXPECT_EQ(editing->asDictionary(), stored);
  EXPECT_FALSE(editing->inUse());
  EXPECT_EQ(editing->original(), nullptr);
}

TEST(Currency, NilAndEmptyStringsBecomeEmptyOrZeroWidthSpace) {
  PFCurrency currency;
  currency.setCode(std::nullopt);
  currency.setSymbol(std::nullopt);
  EXPECT_EQ(currency.code() + currency.symbol(), "");
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

TEST(Currency, FormattersWriteAndReadTheCurrencysAmounts) {
  PFCurrency dollar;
  auto sek = krona();
  EXPECT_EQ(dollar.formatString(), "$ #,##0.00;$ 0.00; -$ #,##0.00");
  EXPECT_EQ(sek->formatString(), "#,##0.00 kr; 0,00 kr;-#,##0.00 kr");
  const std::tuple<const PFCurrency*, double, const char*> rows[] = {
      {&dollar, 1234.5, "$ 1,234.50"},
      {&dollar, -1234.5, " -$ 1,234.50"},
      {&dollar, 0, "$ 0.00"},
      {&dollar, 2.675, "$ 2.68"},
      {sek.get(), 1234567.5, "1 234 567,50 kr"},
      {sek.get(), -3, "-3,00 kr"},
      {sek.get(), 0, " 0,00 kr"}};
  for (const auto& [currency, value, expected] : rows) {
    EXPECT_EQ(currency->formatter()->stringForObjectValue(value), expected) << value;
  }
  EXPECT_EQ(parse(*dollar.formatter(), "$1,234.50"), 1234.5);
  EXPECT_EQ(parse(*dollar.formatter(), "abc"), 0.0);
  EXPECT_EQ(parse(*sek->formatter(), "1 234,50 kr"), 1234.5);

  // Each signed formatter refuses the other sign and reads 0 instead.
  EXPECT_EQ(parse(*dollar.negativeFormatter(), "-$12.00"), -12.0);
  EXPECT_EQ(parse(*dollar.negativeFormatter(), "$12.00"), 0.0);
  EXPECT_EQ(parse(*dollar.positiveFormatter(), "$12.00"), 12.0);
  EXPECT_EQ(parse(*dollar.positiveFormatter(), "-$12.00"), 0.0);
}

TEST(Currency, ReadsAmountsAsTypedAndRefusesWhatIsNoAmount) {
  PFCurrency dollar;
  auto euro = PFCurrency::initWithCode("EUR", "Euro", "\u20AC", false, ".", ",", 1.1, 20260101);
  auto sek = krona();
  const std::tuple<const PFCurrency*, const char*, std::optional<double>> rows[] = {
      // What the formatter writes reads back, negatives included.
      {&dollar, "$ 1,234.50", 1234.5},
      {&dollar, " -$ 1,234.50", -1234.5},
      {euro.get(), "1.234,50 \u20AC", 1234.5},
      {euro.get(), "-1.234,50 \u20AC", -1234.5},
      {euro.get(), " 0,00 \u20AC", 0.0},
      {sek.get(), "1 234 567,50 kr", 1234567.5},
      // With or without symbol and grouping, the symbol on either side.
      {&dollar, "1234.5", 1234.5},
      {&dollar, "$1,234", 1234.0},
      {euro.get(), "\u20AC 12,5", 12.5},
      {euro.get(), "1234,567", 1234.57},
      {sek.get(), "12 KR", 12.0},
      // No amount: no default of 0 stands in.
      {&dollar, "", std::nullopt},
      {&dollar, "ten", std::nullopt},
      {&dollar, "1.2.3", std::nullopt},
      {&dollar, "$", std::nullopt},
      // Another format's grouping is refused rather than misread.
      {euro.get(), "12.50", std::nullopt},
      {&dollar, "12,50", std::nullopt},
      {&dollar, "1,2345.00", std::nullopt},
      {euro.get(), "1,234.5", std::nullopt}};
  for (const auto& [currency, text, expected] : rows) {
    EXPECT_EQ(currency->amountFromString(text), expected) << currency->code() << " " << text;
  }
  // The shared formatter still turns bad text into its default.
  EXPECT_EQ(parse(*euro->formatter(), "12.50"), 1250.0);
  EXPECT_EQ(parse(*dollar.formatter(), "ten"), 0.0);
}

TEST(Currency, FormatChangesDiscardTheCachedFormatters) {
  PFCurrency currency;
  auto formatter = currency.formatter();
  auto negative = currency.negativeFormatter();
  auto positive = currency.positiveFormatter();
  currency.setSymbol("US$");
  EXPECT_NE(currency.negativeFormatter(), negative);
  EXPECT_NE(currency.positiveFormatter(), positive);
  EXPECT_EQ(currency.formatter()->stringForObjectValue(5), "US$ 5.00");

  const std::function<void()> changes[] = {[&] { currency.setSymbolPrecedesAmounts(false); },
                                           [&] { currency.setDecimalSeparator(","); },
                                           [&] { currency.setThousandsSeparator(" "); }};
  for (const auto& change : changes) {
    formatter = currency.formatter();
    change();
    EXPECT_NE(currency.formatter(), formatter);
  }
  EXPECT_EQ(currency.formatter()->stringForObjectValue(1234.5), "1 234,50 US$");
  PFCurrency copy = currency;  // a copy builds its own formatters
  EXPECT_NE(copy.formatter(), currency.formatter());
}

TEST(Currency, ConvertsByRatesAndSortsByCode) {
  auto home = PFCurrency::initWithCode("USD", "US dollar", "$", true, ",", ".", 1.0, 20070315);
  auto dearer = PFCurrency::initWithCode("gbp", "Pound", "£", true, ",", ".", 1.25, 20070315);
  EXPECT_DOUBLE_EQ(home->convertAmount(100, dearer), 80.0);
  EXPECT_DOUBLE_EQ(dearer->convertAmount(80, home.get()), 100.0);
  EXPECT_EQ(home->convertAmount(100, nullptr), 100.0);

  EXPECT_EQ(home->codeIsGreaterThan(*dearer), 1);
  auto same = PFCurrency::initWithCode("usd", "", "", true, "", "", 1.0, 0);
  EXPECT_EQ(home->codeIsGreaterThan(*same), 0);
}

}  // namespace
}  // namespace tarn
