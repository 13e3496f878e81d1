// The numbers that smart-folder filters store: which field of an entry a
// condition tests, how it compares, and how groups combine. The account file
// keeps them as plain integers; these names say what 50 or 63 means.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace tarn {

class TARNAccountEntry;

// The entries a filter reads and returns: shared with their account, never
// owned by the filter.
using TARNEntryList = std::vector<std::shared_ptr<TARNAccountEntry>>;

// Field codes (a condition's `category`).
inline constexpr std::int32_t kFieldDescription = 0;
inline constexpr std::int32_t kFieldDate = 1;
inline constexpr std::int32_t kFieldAmount = 2;
inline constexpr std::int32_t kFieldType = 3;
inline constexpr std::int32_t kFieldCheck = 4;
inline constexpr std::int32_t kFieldToFrom = 5;
inline constexpr std::int32_t kFieldResolved = 6;
inline constexpr std::int32_t kFieldTaxDeductible = 7;
inline constexpr std::int32_t kFieldCategory = 8;
inline constexpr std::int32_t kFieldVoid = 9;
inline constexpr std::int32_t kFieldCheckNumberText = 10;
inline constexpr std::int32_t kFieldAmountText = 11;
inline constexpr std::int32_t kFieldSplitCategory = 20;
inline constexpr std::int32_t kFieldSplitDescription = 21;
inline constexpr std::int32_t kFieldNotes = 30;
inline constexpr std::int32_t kFieldAnything = 50;

// A condition's `logic`: keep the entries that match, or those that do not
// (the editor's "is not", "does not contain" ... labels).
inline constexpr std::int32_t kConditionKeepNonMatches = 0;
inline constexpr std::int32_t kConditionKeepMatches = 1;

// Qualifiers of the text fields.
inline constexpr std::int32_t kTextIsExactly = 1;
inline constexpr std::int32_t kTextContains = 6;
inline constexpr std::int32_t kTextStartsWith = 8;
inline constexpr std::int32_t kTextEndsWith = 9;

// Qualifiers of the amount, and its tolerance: deliberately wide, forty
// hundredths either side, not a rounding margin.
inline constexpr std::int32_t kAmountIsEqualTo = 1;
inline constexpr std::int32_t kAmountIsGreaterThan = 3;
inline constexpr std::int32_t kAmountIsLessThan = 4;
inline constexpr double kAmountTolerance = 0.4;

// The one qualifier of the four flags (check, resolved, tax-deductible, void).
inline constexpr std::int32_t kFlagIs = 1;

// Qualifiers of the date. A and B are the condition's one or two numbers.
inline constexpr std::int32_t kDateIsBefore = 0;         // date number A
inline constexpr std::int32_t kDateIsExactly = 1;        // date number A
inline constexpr std::int32_t kDateIsAfter = 2;          // date number A
inline constexpr std::int32_t kDateInLastDays = 20;      // A days
inline constexpr std::int32_t kDateInNextDays = 21;      // A days
inline constexpr std::int32_t kDateBetweenDaysAgo = 22;  // A and B days ago
inline constexpr std::int32_t kDateIsToday = 23;
inline constexpr std::int32_t kDateIsYesterday = 24;
inline constexpr std::int32_t kDateInLastWeeks = 30;
inline constexpr std::int32_t kDateInNextWeeks = 31;
inline constexpr std::int32_t kDateBetweenWeeksAgo = 32;
inline constexpr std::int32_t kDateDuringThisWeek = 33;
inline constexpr std::int32_t kDateDuringLastWeek = 34;
inline constexpr std::int32_t kDateWeekToDate = 35;
inline constexpr std::int32_t kDateInLastMonths = 40;
inline constexpr std::int32_t kDateInNextMonths = 41;
inline constexpr std::int32_t kDateBetweenMonthsAgo = 42;
inline constexpr std::int32_t kDateDuringThisMonth = 43;
inline constexpr std::int32_t kDateDuringLastMonth = 44;
inline constexpr std::int32_t kDateMonthToDate = 45;
inline constexpr std::int32_t kDateInLastQuarters = 50;
inline constexpr std::int32_t kDateInNextQuarters = 51;
inline constexpr std::int32_t kDateBetweenQuartersAgo = 52;
inline constexpr std::int32_t kDateDuringThisQuarter = 53;
inline constexpr std::int32_t kDateDuringLastQuarter = 54;
inline constexpr std::int32_t kDateQuarterToDate = 55;
inline constexpr std::int32_t kDateInLastYears = 60;
inline constexpr std::int32_t kDateInNextYears = 61;
inline constexpr std::int32_t kDateBetweenYearsAgo = 62;
inline constexpr std::int32_t kDateDuringThisYear = 63;
inline constexpr std::int32_t kDateDuringLastYear = 64;
inline constexpr std::int32_t kDateYearToDate = 65;
inline constexpr std::int32_t kDateBetweenDates = 70;  // date numbers A to B, inclusive

// A group's `qualifier`: how its conditions combine.
inline constexpr std::int32_t kGroupMatchAny = 0;
inline constexpr std::int32_t kGroupMatchAll = 1;

// A group's `logic`: how it joins the groups before it in its filter.
inline constexpr std::int32_t kGroupLogicAnd = 0;
inline constexpr std::int32_t kGroupLogicOr = 1;

}  // namespace tarn
