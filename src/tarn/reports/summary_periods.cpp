#include "tarn/reports/summary_periods.h"

#include "tarn/reports/account_summary.h"

namespace tarn {

namespace {

// The last second of the period that starts at `start`.
CalendarDate PeriodEnd(const CalendarDate& start, std::int32_t style) {
  switch (style) {
    case kSummaryPeriodDay:
      return start.dateByAddingYears(0, 0, 0, 23, 59, 59);
    case kSummaryPeriodWeek:
      // To the Saturday of the start's week (Sunday is 0).
      return start.dateByAddingYears(0, 0, 6 - start.dayOfWeek(), 23, 59, 59);
    case kSummaryPeriodMonth:
      return start.dateByAddingYears(0, 1, 0, 0, 0, -1);
    case kSummaryPeriodQuarter:
      return start.dateByAddingYears(0, 3, 0, 0, 0, -1);
    case kSummaryPeriodYear:
      return CalendarDate(start.yearOfCommonEra() + 1, 1, 1).dateByAddingYears(0, 0, 0, 0, 0, -1);
    default:
      return start;  // the whole range; cut at its end by the caller
  }
}

bool KnownStyle(std::int32_t style) {
  return style >= kSummaryPeriodDay && style < kSummaryPeriodWholeRange;
}

}  // namespace

std::vector<TARNSummaryPeriodBounds> SummaryPeriodsOfRange(DateNumber first, DateNumber last,
                                                           std::int32_t periodStyle) {
  std::vector<TARNSummaryPeriodBounds> periods;
  const CalendarDate rangeStart = CalendarDate::dateWithDateNumber(first);
  const CalendarDate rangeEnd =
      CalendarDate::dateWithDateNumber(last).dateByAddingYears(0, 0, 0, 23, 59, 59);
  if (rangeEnd < rangeStart) return periods;
  if (!KnownStyle(periodStyle)) {
    periods.push_back({rangeStart, rangeEnd});
    return periods;
  }
  CalendarDate start = rangeStart;
  while (start <= rangeEnd) {
    CalendarDate end = PeriodEnd(start, periodStyle);
    if (rangeEnd < end) end = rangeEnd;
    periods.push_back({start, end});
    start = end.dateByAddingYears(0, 0, 0, 0, 0, 1);
  }
  return periods;
}

}  // namespace tarn
