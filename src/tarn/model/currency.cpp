#include "tarn/model/currency.h"

#include <utility>

#include "tarn/platform/text.h"

namespace tarn {
namespace {

// Stands in for an empty separator: never empty, shows as nothing.
constexpr const char* kZeroWidthSpace = "\xE2\x80\x8B";

std::string separatorOrZeroWidthSpace(std::optional<std::string> separator) {
  if (!separator || separator->empty()) return kZeroWidthSpace;
  return std::move(*separator);
}

}  // namespace

PFCurrency::PFCurrency()
    : code_("BRD"),
      description_("Brisal Software Dollar"),
      symbol_("$"),
      thousandsSeparator_(","),
      decimalSeparator_("."),
      lastUpdate_(CalendarDate::now().dateNumber()) {}

std::shared_ptr<PFCurrency> PFCurrency::initWithDictionary(const plist::Value& dictionary) {
  auto currency = std::make_shared<PFCurrency>();
  currency->applyDictionary(dictionary);
  return currency;
}

std::shared_ptr<PFCurrency> PFCurrency::initWithCode(std::optional<std::string> code,
                                                     std::optional<std::string> description,
                                                     std::optional<std::string> symbol,
                                                     bool symbolPrecedesAmounts,
                                                     std::optional<std::string> thousandsSeparator,
                                                     std::optional<std::string> decimalSeparator,
                                                     double rate, DateNumber lastUpdate) {
  auto currency = std::make_shared<PFCurrency>();
  currency->setCode(std::move(code));
  currency->setDescription(std::move(description));
  currency->setSymbol(std::move(symbol));
  currency->setSymbolPrecedesAmounts(symbolPrecedesAmounts);
  currency->setThousandsSeparator(std::move(thousandsSeparator));
  currency->setDecimalSeparator(std::move(decimalSeparator));
  currency->setRate(rate);
  currency->setLastUpdate(lastUpdate);
  return currency;
}

void PFCurrency::applyDictionary(const plist::Value& dictionary) {
  auto string = [&](std::string_view key) -> const plist::Value* {
    const plist::Value* value = dictionary.find(key);
    return value && value->isString() ? value : nullptr;
  };
  auto number = [&](std::string_view key) -> const plist::Value* {
    const plist::Value* value = dictionary.find(key);
    return value && value->isNumber() ? value : nullptr;
  };
  if (auto* value = string("code")) setCode(value->stringValue());
  if (auto* value = string("description")) setDescription(value->stringValue());
  if (auto* value = string("symbol")) setSymbol(value->stringValue());
  if (auto* value = number("symbolPrecedesAmounts")) setSymbolPrecedesAmounts(value->boolValue());
  if (auto* value = string("thousandsSeparator")) setThousandsSeparator(value->stringValue());
  if (auto* value = string("decimalSeparator")) setDecimalSeparator(value->stringValue());
  if (auto* value = number("rate")) setRate(value->doubleValue());
  if (auto* value = number("lastUpdate")) setLastUpdate(value->intValue());
}

plist::Value PFCurrency::asDictionary() const {
  plist::Dictionary dictionary;
  dictionary.emplace("code", code_);
  dictionary.emplace("description", description_);
  dictionary.emplace("symbol", symbol_);
  dictionary.emplace("symbolPrecedesAmounts", symbolPrecedesAmounts_);
  dictionary.emplace("thousandsSeparator", thousandsSeparator_);
  dictionary.emplace("decimalSeparator", decimalSeparator_);
  dictionary.emplace("rate", rate_);
  dictionary.emplace("lastUpdate", static_cast<std::int64_t>(lastUpdate_));
  return plist::Value(std::move(dictionary));
}

void PFCurrency::setCode(std::optional<std::string> code) {
  code_ = code.value_or("");
}

void PFCurrency::setDescription(std::optional<std::string> description) {
  description_ = description.value_or("");
}

void PFCurrency::setSymbol(std::optional<std::string> symbol) {
  symbol_ = symbol.value_or("");
  formatters_.clear();
}

void PFCurrency::setSymbolPrecedesAmounts(bool precedes) {
  symbolPrecedesAmounts_ = precedes;
  formatters_.clear();
}

void PFCurrency::setThousandsSeparator(std::optional<std::string> separator) {
  thousandsSeparator_ = separatorOrZeroWidthSpace(std::move(separator));
  formatters_.clear();
}

void PFCurrency::setDecimalSeparator(std::optional<std::string> separator) {
  decimalSeparator_ = separatorOrZeroWidthSpace(std::move(separator));
  formatters_.clear();
}

std::string PFCurrency::formatString() const {
  const std::string& s = symbol_;
  const std::string& d = decimalSeparator_;
  // The blank that opens the symbol-first negative section and the
  // symbol-last zero section is part of how amounts have always looked.
  if (symbolPrecedesAmounts_) {
    return s + " #,##0.00;" + s + " 0" + d + "00; -" + s + " #,##0.00";
  }
  return "#,##0.00 " + s + "; 0" + d + "00 " + s + ";-#,##0.00 " + s;
}

std::shared_ptr<TARNNumberFormatter> PFCurrency::makeFormatter() const {
  auto formatter = std::make_shared<TARNNumberFormatter>();
  formatter->setRoundingScale(2);
  formatter->setFormat(formatString());
  formatter->setLocalizesFormat(false);
  formatter->setDecimalSeparator(decimalSeparator_);
  formatter->setThousandSeparator(thousandsSeparator_);
  return formatter;
}

std::shared_ptr<TARNNumberFormatter> PFCurrency::formatter() const {
  if (!formatters_.formatter) {
    formatters_.formatter = makeFormatter();
    formatters_.formatter->setDefaultObjectValue(0.0);
  }
  return formatters_.formatter;
}

std::shared_ptr<TARNNumberFormatter> PFCurrency::negativeFormatter() const {
  if (!formatters_.negativeFormatter) {
    formatters_.negativeFormatter = makeFormatter();
    formatters_.negativeFormatter->setMaximum(0.0);
    formatters_.negativeFormatter->setDefaultObjectValue(0.0);
  }
  return formatters_.negativeFormatter;
}

std::shared_ptr<TARNNumberFormatter> PFCurrency::positiveFormatter() const {
  if (!formatters_.positiveFormatter) {
    formatters_.positiveFormatter = makeFormatter();
    formatters_.positiveFormatter->setMinimum(0.0);
    formatters_.positiveFormatter->setDefaultObjectValue(0.0);
  }
  return formatters_.positiveFormatter;
}

std::optional<double> PFCurrency::amountFromString(std::string_view text) const {
  // A copy, so the shared formatter keeps reading the symbol only where
  // the pattern has it.
  TARNNumberFormatter reader = *formatter();
  reader.setCurrencySymbol(symbol_);
  return reader.numberFromString(text);
}

double PFCurrency::convertAmount(double amount, const PFCurrency* other) const {
  if (other == nullptr) return amount;
  return amount * rate_ / other->rate_;
}

int PFCurrency::codeIsGreaterThan(const PFCurrency& other) const {
  return CaseInsensitiveCompare(code_, other.code_);
}

std::shared_ptr<PFEditingCurrency> PFEditingCurrency::initWithDictionary(
    const plist::Value& dictionary) {
  auto currency = std::make_shared<PFEditingCurrency>();
  currency->applyDictionary(dictionary);
  return currency;
}

}  // namespace tarn
