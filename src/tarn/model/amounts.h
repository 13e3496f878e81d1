// Rounding, truncation and plain-text forms of amounts (doubles in whole
// currency units, debits negative). The text forms always use "." for the
// decimal point, "," for grouping and "$" for the symbol; text in an
// account's own currency goes through the currency instead.
#pragma once

#include <string>

namespace tarn {

// Rounds to cents, halves away from zero, in double arithmetic: (x +/- 0.005)
// * 100 truncated to a 64-bit integer, times 0.01. Binary edges show through:
// (2.675 + 0.005) * 100 is exactly 268 (2.68), but (-1.005 - 0.005) * 100 is
// -100.99999999999997, so -1.005 gives -1.00. NaN, infinities and
// magnitudes past the 64-bit range truncate to the smallest 64-bit integer,
// as the processor's conversion does, and so come back as
// -92233720368547758.08.
double RoundValue(double value);

// 0.0 for -0.001 < x < 0.001 (bounds excluded), otherwise x. Keeps balances
// and totals from printing as -0.00.
double RoundNearZeroValue(double value);

// Cuts x to `places` decimals toward zero: factor = 10^places truncated to a
// 32-bit integer, then (x * factor truncated to 64 bits) / factor. Negative
// places make the factor 0 and the result NaN.
double TruncateValue(double value, int places);

// "$1,234.50" / "-$1,234.50": two decimals, "," every three digits.
std::string FloatToDollarCommasAmountString(double value);
// "1,234.50" / "-1,234.50".
std::string FloatToCommasAmountString(double value);
// "$1234.50" / "-$1234.50": no grouping; the "$" goes behind the minus sign
// that the formatted number carries.
std::string FloatToDollarAmountString(double value);

}  // namespace tarn
