// The day field of the entry form: a spin box whose maximum follows the month
// and year chosen beside it, so that it never offers 31 April. The day-count
// rule is the core's (tarn/model/day_field.h); this file binds it to widgets.
// A binding refers to its three widgets without owning them and is itself a
// child of the day field, so it goes with it.
#pragma once

#include <QObject>
#include <QPointer>

class QComboBox;
class QSpinBox;

namespace tarn {

// Sets the field's maximum to the number of days of the month in the year
// (February has 29 in every year divisible by 4) and lowers the field's value
// to it when greater. A null field does nothing.
void TweakDayFieldForMonthAndYear(QSpinBox* field, int month, int year);

class DayFieldBinding : public QObject {
  Q_OBJECT

 public:
  // Month as a number from 1 to 12.
  DayFieldBinding(QSpinBox* day, QSpinBox* month, QSpinBox* year);
  // Month chosen from a list of the twelve months, January first.
  DayFieldBinding(QSpinBox* day, QComboBox* month, QSpinBox* year);

  // Applies the current month and year to the day field; the binding calls
  // it whenever either changes, and once when made.
  void update();

 private:
  int currentMonth() const;

  QPointer<QSpinBox> day_;
  QPointer<QSpinBox> monthSpinBox_;
  QPointer<QComboBox> monthComboBox_;
  QPointer<QSpinBox> year_;
};

}  // namespace tarn
