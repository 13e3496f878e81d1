// How a summary's range is cut into periods: days, weeks (aligned to
// Sunday), months and quarters (counted from the range's first day),
// calendar years, or the whole range. Each period runs from its first
// moment to its last second; the last one is cut at the range's end.
#pragma once

#include <cstdint>
#include <vector>

#include "tarn/platform/calendar_date.h"

namespace tarn {

struct TARNSummaryPeriodBounds {
  CalendarDate start;  // 00:00:00 of the period's first day
  CalendarDate end;    // 23:59:59 of its last day

  friend bool operator==(const TARNSummaryPeriodBounds&, const TARNSummaryPeriodBounds&) = default;
};

// The periods of the range from `first` to `last` (both days counted); none
// when the range ends before it starts. A style outside 0 to 5 gives the
// whole range, as 5 does.
std::vector<TARNSummaryPeriodBounds> SummaryPeriodsOfRange(DateNumber first, DateNumber last,
                                                           std::int32_t periodStyle);

}  // namespace tarn
