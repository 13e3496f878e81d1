// Numbers read from the start of a text as the platform's strings read them
// (the integer and double values of a string): white space skipped, then the
// longest number there, 0 when there is none. Used for stored values that may
// be texts where numbers are expected, and by the importers for amounts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarn {

// The byte length of the white space at the start of a text, as the
// platform's scanner skips it: the Unicode white space and line ends (tab,
// line feed, vertical tab, form feed, carriage return, space, next line,
// no-break space and the other space separators, line and paragraph
// separators). Text that is not valid UTF-8 is not white space.
std::size_t LeadingWhiteSpaceLength(std::string_view text);

// White space skipped, an optional sign, then decimal digits; 0 when there
// are none. Values beyond the 32-bit range are clamped to it.
std::int32_t LeadingInteger(std::string_view text);

// White space skipped, then the longest decimal number there (an optional
// sign, digits with an optional fraction and exponent, or "inf", "infinity"
// and "nan"); 0 when there is none. Overflow gives an infinity of the sign,
// underflow 0 or the nearest subnormal.
double LeadingReal(std::string_view text);

// The value of the decimal digit (of any script) at byte offset i, or -1;
// `next` is set to the offset after the character.
int DecimalDigitValueAt(std::string_view text, std::size_t i, std::size_t& next);

// White space skipped, then the longest plain decimal number there: an
// optional sign, digits of any script and at most one ".", with at least one
// digit (no exponent, no "inf"). 0 when there is none; beyond the range of a
// double, an infinity of the sign. The importers read cleaned amounts so.
double LeadingDecimalNumber(std::string_view text);

}  // namespace tarn
