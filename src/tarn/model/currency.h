// An account's currency: code, name, symbol and its place, separators and
// exchange rate, with three number formatters built from them on demand and
// owned by the currency. PFEditingCurrency is the currency editor's working
// copy; it points at the currency it stands for without owning it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tarn/model/number_formatter.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/value.h"

namespace tarn {

class PFCurrency {
 public:
  // "BRD", "Brisal Software Dollar", "$" before amounts, "," and ".", rate
  // 1.0, last update today.
  PFCurrency();
  virtual ~PFCurrency() = default;
  // Copies share no formatters: each builds its own.
  PFCurrency(const PFCurrency&) = default;
  PFCurrency& operator=(const PFCurrency&) = default;

  // Keys are applied only when present (and of the stored kind); nothing is
  // logged for missing ones.
  static std::shared_ptr<PFCurrency> initWithDictionary(const plist::Value& dictionary);
  static std::shared_ptr<PFCurrency> initWithCode(std::optional<std::string> code,
                                                  std::optional<std::string> description,
                                                  std::optional<std::string> symbol,
                                                  bool symbolPrecedesAmounts,
                                                  std::optional<std::string> thousandsSeparator,
                                                  std::optional<std::string> decimalSeparator,
                                                  double rate, DateNumber lastUpdate);
  // All eight keys.
  plist::Value asDictionary() const;

  // nullopt becomes the empty string.
  void setCode(std::optional<std::string> code);
  const std::string& code() const { return code_; }
  void setDescription(std::optional<std::string> description);
  const std::string& description() const { return description_; }

  // The setters of symbol, its place and the separators discard the
  // formatters. An empty or missing separator becomes the zero-width space,
  // so that the formatters always get one and it shows as nothing.
  void setSymbol(std::optional<std::string> symbol);
  const std::string& symbol() const { return symbol_; }
  void setSymbolPrecedesAmounts(bool precedes);
  bool symbolPrecedesAmounts() const { return symbolPrecedesAmounts_; }
  void setThousandsSeparator(std::optional<std::string> separator);
  const std::string& thousandsSeparator() const { return thousandsSeparator_; }
  void setDecimalSeparator(std::optional<std::string> separator);
  const std::string& decimalSeparator() const { return decimalSeparator_; }

  // Worth of one unit in the reference unit that all rates share.
  void setRate(double rate) { rate_ = rate; }
  double rate() const { return rate_; }
  void setLastUpdate(DateNumber lastUpdate) { lastUpdate_ = lastUpdate; }
  DateNumber lastUpdate() const { return lastUpdate_; }

  // "positive;zero;negative" pattern of the formatters.
  std::string formatString() const;
  // Any amount; amounts of zero or less; amounts of zero or more. Text that
  // does not parse, or falls outside, reads as 0.
  std::shared_ptr<TARNNumberFormatter> formatter() const;
  std::shared_ptr<TARNNumberFormatter> negativeFormatter() const;
  std::shared_ptr<TARNNumberFormatter> positiveFormatter() const;
  // An amount as a user types it in this currency: with or without the
  // symbol (anywhere, in any letter case) and the grouping, rounded to
  // cents; nullopt when the text is no amount (see numberFromString).
  std::optional<double> amountFromString(std::string_view text) const;

  // amount * rate() / other's rate, unrounded; the amount itself without one.
  double convertAmount(double amount, const PFCurrency* other) const;
  double convertAmount(double amount, const std::shared_ptr<PFCurrency>& other) const {
    return convertAmount(amount, other.get());
  }
  // Case-insensitive order of the codes: -1, 0 or 1.
  int codeIsGreaterThan(const PFCurrency& other) const;

 protected:
  void applyDictionary(const plist::Value& dictionary);

 private:
  // Built on first request, dropped when the format changes. Copying a
  // currency copies none of it.
  struct FormatterCache {
    FormatterCache() = default;
    FormatterCache(const FormatterCache&) {}
    FormatterCache& operator=(const FormatterCache&) {
      clear();
      return *this;
    }
    void clear() {
      formatter.reset();
      negativeFormatter.reset();
      positiveFormatter.reset();
    }
    std::shared_ptr<TARNNumberFormatter> formatter;
    std::shared_ptr<TARNNumberFormatter> negativeFormatter;
    std::shared_ptr<TARNNumberFormatter> positiveFormatter;
  };

  std::shared_ptr<TARNNumberFormatter> makeFormatter() const;

  std::string code_;
  std::string description_;
  std::string symbol_;
  bool symbolPrecedesAmounts_ = true;
  std::string thousandsSeparator_;
  std::string decimalSeparator_;
  double rate_ = 1.0;
  DateNumber lastUpdate_ = 0;
  mutable FormatterCache formatters_;
};

class PFEditingCurrency : public PFCurrency {
 public:
  PFEditingCurrency() = default;
  static std::shared_ptr<PFEditingCurrency> initWithDictionary(const plist::Value& dictionary);

  void setInUse(bool inUse) { inUse_ = inUse; }
  bool inUse() const { return inUse_; }
  // Not owned: the currency this copy stands for, or nullptr.
  void setOriginal(PFCurrency* original) { original_ = original; }
  PFCurrency* original() const { return original_; }

 private:
  bool inUse_ = false;
  PFCurrency* original_ = nullptr;
};

}  // namespace tarn
