// A pattern number formatter that never rejects the user's input: text that
// does not parse (or parses outside the minimum and maximum) becomes the
// default value. Amount fields and the currency formatters use it. It owns
// its settings and its parsed pattern and refers to nothing else.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tarn {

class TARNNumberFormatter {
 public:
  // Text with display attributes (attribute name to value, as the host names
  // them): the core's plain stand-in for an attributed string.
  using Attributes = std::map<std::string, std::string>;
  struct AttributedString {
    std::string string;
    Attributes attributes;
    friend bool operator==(const AttributedString&, const AttributedString&) = default;
  };

  // Pattern "#,##0.##", separators "." and ",", format localisation on, no
  // minimum, maximum, rounding scale, currency symbol or default value.
  TARNNumberFormatter();

  // The pattern: up to three sections "positive;zero;negative" (two sections
  // are "positive;negative"). In the positive and negative sections the
  // number part runs from the first to the last digit placeholder ("0" a
  // digit always shown, "#" a digit shown when needed); the decimal marker
  // splits it into integer and fraction, a group marker in the integer part
  // turns grouping on. Text before and after the number part is written as
  // it stands. The zero section is the text shown for zero, as written.
  // Without a negative section negatives are the positive section behind "-".
  void setFormat(std::string_view pattern);
  const std::string& format() const { return format_; }

  // With localisation on the pattern's markers are the user's separators
  // (the "NSDecimalSeparator" and "NSThousandsSeparator" defaults, read when
  // the pattern is set); with it off they are "." and "," literally. Either
  // way the text written and read uses decimalSeparator() and
  // thousandSeparator().
  void setLocalizesFormat(bool localizes);
  bool localizesFormat() const { return localizesFormat_; }

  void setDecimalSeparator(std::string separator);
  const std::string& decimalSeparator() const { return decimalSeparator_; }
  void setThousandSeparator(std::string separator);
  const std::string& thousandSeparator() const { return thousandSeparator_; }

  // Parsed values outside [minimum, maximum] are refused (and so become the
  // default value). Formatting ignores both.
  void setMinimum(std::optional<double> minimum) { minimum_ = minimum; }
  std::optional<double> minimum() const { return minimum_; }
  void setMaximum(std::optional<double> maximum) { maximum_ = maximum; }
  std::optional<double> maximum() const { return maximum_; }

  // Plain rounding (halves away from zero, on the decimal reading of the
  // double) of every value formatted or parsed; nullopt for none beyond the
  // pattern's fraction digits.
  void setRoundingScale(std::optional<int> scale) { roundingScale_ = scale; }
  std::optional<int> roundingScale() const { return roundingScale_; }

  // A symbol that parsing removes wherever it occurs, in any letter case.
  void setCurrencySymbol(std::optional<std::string> symbol);
  const std::optional<std::string>& currencySymbol() const { return currencySymbol_; }

  // nullopt is ignored: the old default stays.
  void setDefaultObjectValue(std::optional<double> value);
  // The default if one was set, else the minimum (which may be none).
  std::optional<double> defaultObjectValue() const;

  std::string stringForObjectValue(double value) const;
  // The same text appended to `out`, so that a caller formatting many
  // amounts can reuse one buffer.
  void appendStringForObjectValue(std::string& out, double value) const;
  // Never fails: stores the parsed value, or the default value when the text
  // does not give one, and returns true. The error description is untouched.
  bool getObjectValue(std::optional<double>& object, std::string_view string,
                      std::string* errorDescription = nullptr) const;
  // nullopt for a nil object; otherwise the text with exactly the given
  // attributes (negatives are not coloured).
  std::optional<AttributedString> attributedStringForObjectValue(
      std::optional<double> object, const Attributes& defaultAttributes) const;
  std::string editingStringForObjectValue(double object) const;
  // An attributed string is first read back into a number; nullopt when that
  // gives none (no default either).
  std::optional<std::string> editingStringForObjectValue(const AttributedString& object) const;

  // The number the text gives, or nullopt when it gives none: unlike
  // getObjectValue no default stands in, so a field can tell the user that
  // what they typed is no amount. A group separator between two digits must
  // open a whole group of the integer part, so that "12.50" typed where "."
  // groups thousands is refused rather than read as 1250.
  std::optional<double> numberFromString(std::string_view string) const;

 private:
  // One positive or negative section, split once when the pattern is set.
  struct Section {
    std::string prefix;
    std::string suffix;
    int minimumIntegerDigits = 0;
    int minimumFractionDigits = 0;
    int maximumFractionDigits = 0;
    int groupingSize = 0;  // 0: no grouping
  };
  // Affixes as parsing compares them: with the same characters removed as
  // from the text, and trimmed.
  struct ParseAffixes {
    std::string prefix;
    std::string suffix;
  };

  void parsePattern();
  void refreshParseAffixes();
  std::string removeIgnoredText(std::string_view text) const;
  bool groupsAreWhole(std::string_view text) const;
  std::optional<double> parseNumber(std::string_view text) const;
  static double roundToScale(double value, int scale);
  void appendNumber(std::string& out, double magnitude, const Section& section) const;

  std::string format_;
  std::string decimalSeparator_ = ".";
  std::string thousandSeparator_ = ",";
  bool localizesFormat_ = true;
  std::optional<double> minimum_;
  std::optional<double> maximum_;
  std::optional<int> roundingScale_;
  std::optional<std::string> currencySymbol_;
  std::optional<double> defaultObjectValue_;

  Section positive_;
  Section negative_;
  bool hasNegativeSection_ = false;
  std::optional<std::string> zeroText_;
  ParseAffixes positiveAffixes_;
  ParseAffixes negativeAffixes_;
  std::string zeroParseText_;
};

}  // namespace tarn
