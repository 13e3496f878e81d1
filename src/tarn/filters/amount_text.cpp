#include "tarn/filters/amount_text.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace tarn {

void FormatAmountText(double amount, std::string_view decimalSeparator, std::string& out) {
  out.clear();
  if (std::isnan(amount)) {
    out = "NaN";
    return;
  }
  if (std::isinf(amount)) {
    out = amount < 0 ? "-\u221E" : "+\u221E";
    return;
  }

  // Nearly every amount is a whole number of cents. When the double is the
  // one nearest to n/100 (and far below the magnitudes where two such
  // decimals share a double), n/100 is its shortest decimal and the cents
  // need no rounding.
  if (std::fabs(amount) < 1e13) {
    const long long cents = std::llround(amount * 100.0);
    if (static_cast<double>(cents) / 100.0 == amount) {
      const unsigned long long magnitude =
          cents < 0 ? 0ULL - static_cast<unsigned long long>(cents) : cents;
      char units[24];
      const auto end = std::to_chars(units, units + sizeof units, magnitude / 100).ptr;
      if (cents < 0) out.push_back('-');
      out.append(units, end);
      out.append(decimalSeparator);
      out.push_back(static_cast<char>('0' + magnitude % 100 / 10));
      out.push_back(static_cast<char>('0' + magnitude % 10));
      return;
    }
  }

  // The shortest fixed-notation text of a double is at most about 330
  // characters (the smallest subnormals).
  char text[512];
  const auto written =
      std::to_chars(text, text + sizeof text, std::fabs(amount), std::chars_format::fixed);
  const std::string_view decimal(text, static_cast<std::size_t>(written.ptr - text));
  const std::size_t point = decimal.find('.');
  const std::string_view units = decimal.substr(0, point);
  const std::string_view fraction =
      point == std::string_view::npos ? std::string_view() : decimal.substr(point + 1);

  // Units followed by exactly two fraction digits, with one spare place in
  // front for a carry out of the units.
  char digits[sizeof text + 3];
  digits[0] = '0';
  std::memcpy(digits + 1, units.data(), units.size());
  std::size_t length = 1 + units.size();
  digits[length++] = fraction.size() > 0 ? fraction[0] : '0';
  digits[length++] = fraction.size() > 1 ? fraction[1] : '0';
  if (fraction.size() > 2 && fraction[2] >= '5') {
    std::size_t position = length;
    while (position-- > 0) {
      if (digits[position] == '9') {
        digits[position] = '0';
      } else {
        ++digits[position];
        break;
      }
    }
  }
  const std::size_t first = digits[0] == '0' ? 1 : 0;
  bool zero = true;
  for (std::size_t i = first; i < length; ++i) zero = zero && digits[i] == '0';

  if (amount < 0 && !zero) out.push_back('-');
  out.append(digits + first, length - 2 - first);
  out.append(decimalSeparator);
  out.append(digits + length - 2, 2);
}

}  // namespace tarn
