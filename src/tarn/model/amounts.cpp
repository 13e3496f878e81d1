#include "tarn/model/amounts.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace tarn {
namespace {

// Truncation toward zero as the processor converts: a value that is NaN or
// does not fit gives the smallest integer of the type (the "integer
// indefinite" result) instead of undefined behaviour.
template <typename Int>
Int truncateToInteger(double value) {
  constexpr double kLimit = -static_cast<double>(std::numeric_limits<Int>::min());  // 2^(bits-1)
  if (!(value > -kLimit - 1.0 && value < kLimit)) return std::numeric_limits<Int>::min();
  return static_cast<Int>(value);
}

std::string formatTwoDecimals(double value) {
  char buffer[400];  // room for the largest double written in full
  std::snprintf(buffer, sizeof buffer, "%.2f", value);
  return buffer;
}

// Inserts "," every three digits left of the decimal point of "%.2f" text.
void insertGroupSeparators(std::string& text) {
  for (std::ptrdiff_t position = static_cast<std::ptrdiff_t>(text.size()) - 6; position > 0;
       position -= 3) {
    text.insert(static_cast<std::size_t>(position), 1, ',');
  }
}

std::string commasAmountString(double value, const char* negativePrefix,
                               const char* positivePrefix) {
  std::string text = formatTwoDecimals(std::fabs(value));
  insertGroupSeparators(text);
  text.insert(0, value < 0 ? negativePrefix : positivePrefix);
  return text;
}

}  // namespace

double RoundValue(double value) {
  const double shifted = value < 0 ? (value - 0.005) * 100 : (value + 0.005) * 100;
  return static_cast<double>(truncateToInteger<std::int64_t>(shifted)) * 0.01;
}

double RoundNearZeroValue(double value) {
  return (value > -0.001 && value < 0.001) ? 0.0 : value;
}

double TruncateValue(double value, int places) {
  const double factor =
      static_cast<double>(truncateToInteger<std::int32_t>(std::pow(10.0, places)));
  return static_cast<double>(truncateToInteger<std::int64_t>(value * factor)) / factor;
}

std::string FloatToDollarCommasAmountString(double value) {
  return commasAmountString(value, "-$", "$");
}

std::string FloatToCommasAmountString(double value) {
  return commasAmountString(value, "-", "");
}

std::string FloatToDollarAmountString(double value) {
  std::string text = formatTwoDecimals(value);
  text.insert(value < 0 ? 1 : 0, 1, '$');
  return text;
}

}  // namespace tarn
