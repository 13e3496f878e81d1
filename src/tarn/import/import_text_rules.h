// The clean-up rules that every importer (QIF, OFX, delimited text) applies
// to the amount and date texts of another program's file. They are free
// functions of the text and the user's chosen separators and date format, so
// each importer passes its own options and nothing is shared between files.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "tarn/platform/calendar_date.h"

namespace tarn {

// An amount text made readable: white space trimmed, accounting brackets
// "(12.50)" turned into a minus sign, every thousands separator removed and
// every decimal separator turned into ".", then everything but decimal
// digits (of any script), "." and "-" dropped. Separators match literally;
// an empty separator matches nothing.
std::string TweakAmountString(std::string_view text, std::string_view decimalSeparator,
                              std::string_view thousandsSeparator);

// The first, second and third number of a date text, in the order they stand.
// A text with a separator character (/ \ - . , and the other ASCII marks) is
// read as three numbers around any non-digits ("1/ 5'98" gives 1, 5, 98); a
// bare six-character text is cut in pairs; a bare eight-character text is cut
// where the date format puts its four-digit year; anything else reads as
// today written in the date format. Missing numbers are 0.
using DateComponents = std::array<std::int32_t, 3>;
DateComponents DateStringComponents(std::string_view text, std::string_view dateFormat);

// The three components joined as "first/second/third" (unpadded decimals).
std::string TweakDateString(std::string_view text, std::string_view dateFormat);

// The date number an importer stores for a date text: when the format holds
// "%y" the components are first reduced modulo 100, then the slash-joined
// text is read in the format. 0 when it does not read as a real date.
DateNumber ImportDateNumber(std::string_view text, std::string_view dateFormat);

// The longest leading decimal number of a text, after any leading white
// space: an optional sign, digits (of any script) and at most one ".",
// with at least one digit. 0 when there is none; a number beyond the range
// of a double reads as an infinity of its sign.
double LeadingDecimalNumber(std::string_view text);

// The leading integer of a text as a 32-bit number: leading white space, an
// optional sign, then ASCII digits. 0 when there are none ("check" reads as
// 0); a value beyond the 32-bit range saturates to its largest or smallest.
std::int32_t LeadingInt32(std::string_view text);

}  // namespace tarn
