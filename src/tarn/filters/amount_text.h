// The text form of an amount that "amount as text" conditions search: two
// decimals, no grouping, the user's decimal separator, halves rounded away
// from zero. Written into a caller's buffer so that a filter run over many
// entries formats without allocating.
// Internal to the filters module: not installed.
#pragma once

#include <string>
#include <string_view>

namespace tarn {

// Replaces `out` with the amount as "###0.00": the double read as its
// shortest round-trip decimal (10.125 is 10.125, not 10.12499...), rounded to
// cents with halves away from zero, a minus sign only when the rounded value
// is not zero, and `decimalSeparator` between units and cents.
void FormatAmountText(double amount, std::string_view decimalSeparator, std::string& out);

}  // namespace tarn
