#include "tarn/model/decimal_rounding.h"

#include <charconv>
#include <cmath>
#include <string>

namespace tarn {

double RoundDecimalPlain(double value, int scale) {
  if (!std::isfinite(value) || value == 0.0) return value;

  // Shortest round-trip text in scientific form: "-d.ddde+XX".
  char buffer[64];
  const auto written =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific);
  const std::string_view text(buffer, static_cast<size_t>(written.ptr - buffer));
  const bool negative = text.front() == '-';
  const size_t exponentMark = text.find('e');
  std::string digits;
  for (char c : text.substr(0, exponentMark)) {
    if (c >= '0' && c <= '9') digits.push_back(c);
  }
  int exponent = 0;
  std::string_view exponentText = text.substr(exponentMark + 1);
  if (!exponentText.empty() && exponentText.front() == '+') exponentText.remove_prefix(1);
  std::from_chars(exponentText.data(), exponentText.data() + exponentText.size(), exponent);

  // value = 0.<digits> * 10^(exponent + 1); keep the digits down to 10^-scale.
  const long keep = static_cast<long>(exponent) + 1 + scale;
  if (keep >= static_cast<long>(digits.size())) return value;  // already exact at this scale
  if (keep < 0) return negative ? -0.0 : 0.0;

  const bool roundUp = digits[static_cast<size_t>(keep)] >= '5';
  digits.resize(static_cast<size_t>(keep));
  int resultExponent = -scale;  // the last kept digit stands for 10^-scale
  if (roundUp) {
    long position = keep - 1;
    while (position >= 0 && digits[static_cast<size_t>(position)] == '9') {
      digits[static_cast<size_t>(position)] = '0';
      --position;
    }
    if (position >= 0) {
      ++digits[static_cast<size_t>(position)];
    } else {
      digits.insert(digits.begin(), '1');
    }
  }
  if (digits.empty() || digits.find_first_not_of('0') == std::string::npos) {
    return negative ? -0.0 : 0.0;
  }
  std::string rounded = (negative ? "-" : "") + digits + "e" + std::to_string(resultExponent);
  double result = 0.0;
  std::from_chars(rounded.data(), rounded.data() + rounded.size(), result);
  return result;
}

}  // namespace tarn
