// The day-count rule behind the day field of the date entry panels: the
// largest day a field may hold for a month and year, and the clamping that
// the field applies when the month or year changes. The widget binding sits
// in the ui module and calls these.
#pragma once

namespace tarn {

// 30 for months 4, 6, 9 and 11; 31 for 1, 3, 5, 7, 8, 10 and 12; for any
// other value (February) 29 when year % 4 == 0, else 28. The plain
// every-fourth-year rule is deliberate: 1900 and 2100 allow 29 days.
int MaximumDayForMonthAndYear(int month, int year);

// The day, lowered to MaximumDayForMonthAndYear when it is greater; smaller
// values (0 or negative included) are left to the field's own minimum.
int ClampDayForMonthAndYear(int day, int month, int year);

}  // namespace tarn
