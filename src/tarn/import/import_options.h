// The reading options that the QIF and text importers share: the date format
// and its reader, the amount separators, the zero-amount rule, the two
// switches carried for the host, the error code and the name of the source
// file. Both importers are ImportOptions, so its setters and getters are
// theirs; the clean-up rules read the separators and the date format here.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tarn/import/import_text_rules.h"

namespace tarn {

class ImportOptions {
 public:
  // The importers differ in one default: QIF reads split lines, text has none.
  explicit ImportOptions(bool importSplitLineItems) : importSplitLineItems_(importSplitLineItems) {}

  void SetDateFormat(std::string format);
  const std::string& GetDateFormat() const { return dateFormatString_; }
  // A nil separator leaves the current one.
  void SetDecimalSeparator(std::optional<std::string> separator) {
    if (separator) decimalSeparator_ = std::move(*separator);
  }
  void SetThousandsSeparator(std::optional<std::string> separator) {
    if (separator) thousandsSeparator_ = std::move(*separator);
  }
  const std::string& GetDecimalSeparator() const { return decimalSeparator_; }
  const std::string& GetThousandsSeparator() const { return thousandsSeparator_; }
  void SetImportZeroAmountsAsDeposits(bool on) { importZeroAmountsAsDeposits_ = on; }
  bool GetImportZeroAmountsAsDeposits() const { return importZeroAmountsAsDeposits_; }
  void SetImportAllCategories(bool on) { importAllCategories_ = on; }
  bool GetImportAllCategories() const { return importAllCategories_; }
  void SetImportSplitLineItems(bool on) { importSplitLineItems_ = on; }
  bool GetImportSplitLineItems() const { return importSplitLineItems_; }
  void SetError(std::int32_t error) { error_ = error; }
  std::int32_t error() const { return error_; }
  void setSourceName(std::optional<std::string> name) { sourceName_ = name.value_or(""); }
  const std::string& sourceName() const { return sourceName_; }

  // An amount text cleaned and read as a number.
  double ReadAmount(std::string_view text) const {
    return ReadImportAmount(text, decimalSeparator_, thousandsSeparator_);
  }
  // The date number of a date text (0 when it does not read as a date).
  DateNumber ReadDate(std::string_view text) const { return dates_.read(text); }
  // Money in: above zero, or zero when zero amounts count as deposits.
  bool IsDeposit(double amount) const {
    return amount != 0.0 ? amount > 0.0 : importZeroAmountsAsDeposits_;
  }

  // The shared clean-up rules with these separators and this date format.
  std::string TweakAmountString(std::string_view text) const {
    return tarn::TweakAmountString(text, decimalSeparator_, thousandsSeparator_);
  }
  DateComponents DateStringComponents(std::string_view text) const {
    return tarn::DateStringComponents(text, dateFormatString_);
  }
  std::string TweakDateString(std::string_view text) const {
    return tarn::TweakDateString(text, dateFormatString_);
  }

 private:
  std::string dateFormatString_ = "%m/%d/%y";
  mutable ImportDateReader dates_{dateFormatString_};
  std::string decimalSeparator_ = ".";
  std::string thousandsSeparator_ = ",";
  bool importZeroAmountsAsDeposits_ = true;
  bool importAllCategories_ = false;
  bool importSplitLineItems_;
  std::int32_t error_ = 0;
  std::string sourceName_;
};

inline void ImportOptions::SetDateFormat(std::string format) {
  dateFormatString_ = std::move(format);
  dates_ = ImportDateReader(dateFormatString_);
}

}  // namespace tarn
