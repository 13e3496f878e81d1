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

// ImportDateNumber in one date format, remembering the last text it read:
// the records of a file come in date order, so most dates repeat the one
// before. Not shared between threads.
class ImportDateReader {
 public:
  explicit ImportDateReader(std::string dateFormat) : format_(std::move(dateFormat)) {}
  DateNumber read(std::string_view text) {
    if (!valid_ || text != lastText_) {
      lastText_.assign(text);
      lastDate_ = ImportDateNumber(text, format_);
      valid_ = true;
    }
    return lastDate_;
  }

 private:
  std::string format_;
  std::string lastText_;
  DateNumber lastDate_ = 0;
  bool valid_ = false;
};

// The leading integer of a text as a 32-bit number, clamped: the platform's
// LeadingInteger under the name the importers first used.
inline std::int32_t LeadingInt32(std::string_view text) {
  return LeadingInteger(text);
}

}  // namespace tarn
