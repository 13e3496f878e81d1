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
