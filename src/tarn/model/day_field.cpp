#include "tarn/model/day_field.h"

namespace tarn {

int MaximumDayForMonthAndYear(int month, int year) {
  switch (month) {
    case 4:
    case 6:
    case 9:
    case 11:
      return 30;
    case 1:
    case 3:
    case 5:
    case 7:
    case 8:
    case 10:
    case 12:
      return 31;
    default:
      return year % 4 == 0 ? 29 : 28;
  }
}

int ClampDayForMonthAndYear(int day, int month, int year) {
  const int maximum = MaximumDayForMonthAndYear(month, year);
  return day > maximum ? maximum : day;
}

}  // namespace tarn
