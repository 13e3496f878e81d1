// The clean-up rules that every importer (QIF, OFX, delimited text) applies
// to the amount and date texts of another program's file. They are free
// functions of the text and the user's chosen separators and date format, so
// each importer passes its own options and nothing is shared between files.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tarn/platform/calendar_date.h"
#include "tarn/platform/number_text.h"

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

// The cleaned amount read as a number: LeadingDecimalNumber of
// TweakAmountString, without building the cleaned text when the separators
// are single ASCII characters (or empty) and the text is ASCII, the usual
// case; any other text takes the plain reading.
double ReadImportAmount(std::string_view text, std::string_view decimalSeparator,
                        std::string_view thousandsSeparator);

// ImportDateNumber in one date format, for the many dates of one file. It
// remembers the last text it read (the records of a file usually come in
// date order), and, when the format names the year, the date number of each
// triple of components it has met: a file holds few distinct days, so the
// calendar reading runs once for each. Without a year in the format the
// reading depends on today and is not remembered. Not shared between threads.
class ImportDateReader {
 public:
  explicit ImportDateReader(std::string dateFormat);
  DateNumber read(std::string_view text);

 private:
  std::string format_;
  bool reduceYears_ = false;    // the format holds "%y": components modulo 100
  bool rememberDates_ = false;  // the format names the year
  std::string lastText_;
  DateNumber lastDate_ = 0;
  bool valid_ = false;
  std::unordered_map<std::uint64_t, DateNumber> datesOfComponents_;
};

// The leading integer of a text as a 32-bit number, clamped: the platform's
// LeadingInteger under the name the importers first used.
inline std::int32_t LeadingInt32(std::string_view text) {
  return LeadingInteger(text);
}

}  // namespace tarn
