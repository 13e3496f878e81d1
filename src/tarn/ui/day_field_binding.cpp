#include "tarn/ui/day_field_binding.h"

#include <QComboBox>
#include <QSpinBox>

#include "tarn/model/day_field.h"

namespace tarn {

void TweakDayFieldForMonthAndYear(QSpinBox* field, int month, int year) {
  if (field == nullptr) return;
  const int maximum = MaximumDayForMonthAndYear(month, year);
  // Qt lowers a value above the new maximum by itself; doing it here as well
  // keeps the rule visible and independent of that behaviour.
  field->setMaximum(maximum);
  if (field->value() > maximum) field->setValue(maximum);
}

DayFieldBinding::DayFieldBinding(QSpinBox* day, QSpinBox* month, QSpinBox* year)
    : QObject(day), day_(day), monthSpinBox_(month), year_(year) {
  if (month != nullptr) connect(month, &QSpinBox::valueChanged, this, &DayFieldBinding::update);
  if (year != nullptr) connect(year, &QSpinBox::valueChanged, this, &DayFieldBinding::update);
  update();
}

DayFieldBinding::DayFieldBinding(QSpinBox* day, QComboBox* month, QSpinBox* year)
    : QObject(day), day_(day), monthComboBox_(month), year_(year) {
  if (month != nullptr) {
    connect(month, &QComboBox::currentIndexChanged, this, &DayFieldBinding::update);
  }
  if (year != nullptr) connect(year, &QSpinBox::valueChanged, this, &DayFieldBinding::update);
  update();
}

int DayFieldBinding::currentMonth() const {
  if (monthSpinBox_ != nullptr) return monthSpinBox_->value();
  if (monthComboBox_ != nullptr) return monthComboBox_->currentIndex() + 1;
  return 1;
}

void DayFieldBinding::update() {
  if (day_ == nullptr || year_ == nullptr) return;
  TweakDayFieldForMonthAndYear(day_, currentMonth(), year_->value());
}

}  // namespace tarn
