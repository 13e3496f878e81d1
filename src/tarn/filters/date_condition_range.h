// The dates a date condition accepts: its qualifier and numbers resolved
// against today into a comparison with one date or a closed range. Resolved
// once per filter run; a plain value that refers to nothing.
// Internal to the filters module: not installed.
#pragma once

#include <cstdint>

#include "tarn/platform/calendar_date.h"

namespace tarn {

struct DateConditionRange {
  enum class Comparison { Before, On, After, Within, Never };

  Comparison comparison = Comparison::Never;
  // Wide enough for the rows whose arithmetic lands millions of years away.
  std::int64_t start = 0;
  std::int64_t end = 0;

  bool matches(DateNumber date) const {
    switch (comparison) {
      case Comparison::Before:
        return date < start;
      case Comparison::On:
        return date == start;
      case Comparison::After:
        return date > start;
      case Comparison::Within:
        return start <= date && date <= end;
      case Comparison::Never:
        break;
    }
    return false;
  }
};

// The range of a date qualifier with numbers a and b (counts, or date numbers
// for "is before/exactly/after" and "between two dates"), relative to `today`
// (midnight). Named periods come from DateRangeForMnemonic, which reads
// CalendarDate::now() itself. An unknown qualifier never matches.
DateConditionRange ResolveDateConditionRange(std::int32_t qualifier, std::int32_t a, std::int32_t b,
                                             const CalendarDate& today);

}  // namespace tarn
