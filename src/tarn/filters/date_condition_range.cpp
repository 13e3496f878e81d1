#include "tarn/filters/date_condition_range.h"

#include "tarn/filters/filter_codes.h"
#include "tarn/platform/date_ranges.h"

namespace tarn {
namespace {

CivilDay civilOf(const CalendarDate& date) {
  return {date.yearOfCommonEra(), date.monthOfYear(), date.dayOfMonth()};
}

// The calendar's one-step addition of years, months and days, on day counts
// and 64-bit years: some rows push a date millions (or billions) of years
// away, where a CalendarDate or a 32-bit date number would overflow, while
// the comparison with an entry's date must still come out right. Years and
// months are added first, a day past the end of the month carries into the
// next one, then days are added.
CivilDay add(const CivilDay& date, std::int64_t years, std::int64_t months, std::int64_t days) {
  return CivilFromDays(DaysFromCivilCarrying(date.year + years, date.month + months, date.day) +
                       days);
}

std::int64_t numberOf(const CivilDay& date) {
  return date.year * 10000 + date.month * 100 + date.day;
}

struct Period {
  CivilDay start;
  CivilDay end;
};

Period period(int mnemonic) {
  CalendarDate start;
  CalendarDate end;
  DateRangeForMnemonic(mnemonic, start, end);
  return {civilOf(start), civilOf(end)};
}

DateConditionRange within(const CivilDay& start, const CivilDay& end) {
  return {DateConditionRange::Comparison::Within, numberOf(start), numberOf(end)};
}

DateConditionRange within(const Period& range) {
  return within(range.start, range.end);
}

DateConditionRange on(const CivilDay& date) {
  return {DateConditionRange::Comparison::On, numberOf(date), numberOf(date)};
}

}  // namespace

DateConditionRange ResolveDateConditionRange(std::int32_t qualifier, std::int32_t a, std::int32_t b,
                                             const CalendarDate& today) {
  using Comparison = DateConditionRange::Comparison;
  const std::int64_t A = a;
  const std::int64_t B = b;
  const CivilDay now = civilOf(today);

  switch (qualifier) {
    case kDateIsBefore:
      return {Comparison::Before, A, A};
    case kDateIsExactly:
      return {Comparison::On, A, A};
    case kDateIsAfter:
      return {Comparison::After, A, A};
    case kDateIsToday:
      return on(period(kMnemonicToday).start);
    case kDateIsYesterday:
      return on(period(kMnemonicYesterday).start);

    case kDateInLastDays:
      return within(add(now, 0, 0, 1 - A), now);
    case kDateInNextDays:
      return within(now, add(now, 0, 0, A - 1));
    case kDateBetweenDaysAgo:
      return within(add(now, 0, 0, -A), add(now, 0, 0, -B));

    case kDateInLastWeeks: {
      const Period week = period(kMnemonicThisWeek);
      return within(add(week.start, 0, 0, 7 - 7 * A), week.end);
    }
    case kDateInNextWeeks: {
      // Ends on the first day of the last week it spans, as it always has.
      const Period week = period(kMnemonicThisWeek);
      return within(week.start, add(week.start, 0, 0, 7 * A - 7));
    }
    case kDateBetweenWeeksAgo: {
      // The second count runs from the already moved start, as it always has.
      const CivilDay start = add(now, 0, 0, -today.dayOfWeek() - 7 * A);
      return within(start, add(start, 0, 0, -7 * B));
    }

    case kDateInLastMonths: {
      const Period month = period(kMnemonicThisMonth);
      return within(add(month.start, 0, 1 - A, 0), month.end);
    }
    case kDateInNextMonths: {
      const Period month = period(kMnemonicThisMonth);
      return within(month.start, add(month.start, 0, A, -1));
    }
    case kDateBetweenMonthsAgo: {
      // Both ends on the first of a month: the later month's other days are out.
      CivilDay start = add(now, 0, -A, 0);
      CivilDay end = add(now, 0, -B, 0);
      start.day = 1;
      end.day = 1;
      return within(start, end);
    }

    case kDateInLastQuarters: {
      const Period quarter = period(kMnemonicThisQuarter);
      return within(add(quarter.start, 0, 3 - 3 * A, 0), quarter.end);
    }
    case kDateInNextQuarters: {
      const Period quarter = period(kMnemonicThisQuarter);
      const CivilDay dayAfter = add(quarter.end, 0, 3 * A - 3, 1);
      return within(quarter.start, add(dayAfter, 0, 0, -1));
    }
    case kDateBetweenQuartersAgo: {
      // The month count mixes B with the start's date number, which puts the
      // end long before the start: nothing matches. Kept as it computes.
      const Period quarter = period(kMnemonicThisQuarter);
      const CivilDay start = add(quarter.start, 0, 3 - 3 * B, 0);
      return within(start, add(start, 0, 3 * (B - numberOf(start)), -1));
    }

    case kDateInLastYears: {
      const Period year = period(kMnemonicThisYear);
      return within(add(year.start, 1 - A, 0, 0), year.end);
    }
    case kDateInNextYears: {
      const Period year = period(kMnemonicThisYear);
      return within(year.start, add(year.end, A - 1, 0, 0));
    }
    case kDateBetweenYearsAgo: {
      // The start moves by the end's date number in years, far past the end:
      // nothing matches. Kept as it computes.
      const Period year = period(kMnemonicThisYear);
      const CivilDay end = add(year.end, 1 - A, 0, 0);
      return within(add(year.start, numberOf(end) - 1, 0, 0), end);
    }

    case kDateDuringThisWeek:
      return within(period(kMnemonicThisWeek));
    case kDateDuringThisMonth:
      return within(period(kMnemonicThisMonth));
    case kDateDuringThisQuarter:
      return within(period(kMnemonicThisQuarter));
    case kDateDuringThisYear:
      return within(period(kMnemonicThisYear));
    case kDateDuringLastWeek:
      return within(period(kMnemonicLastWeek));
    case kDateDuringLastMonth:
      return within(period(kMnemonicLastMonth));
    case kDateDuringLastQuarter:
      return within(period(kMnemonicLastQuarter));
    case kDateDuringLastYear:
      return within(period(kMnemonicLastYear));
    case kDateWeekToDate:
      return within(period(kMnemonicWeekToDate));
    case kDateMonthToDate:
      return within(period(kMnemonicMonthToDate));
    case kDateQuarterToDate:
      return within(period(kMnemonicQuarterToDate));
    case kDateYearToDate:
      return within(period(kMnemonicYearToDate));

    case kDateBetweenDates:
      return {Comparison::Within, A, B};
    default:
      return {};
  }
}

}  // namespace tarn
