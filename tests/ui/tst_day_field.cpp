// The entry form's day field kept valid by its month and year fields, driven
// by typing into the month and year spin boxes.
#include <QComboBox>
#include <QSpinBox>
#include <QTest>
#include <QVBoxLayout>

#include "tarn/ui/day_field_binding.h"

namespace {

// Replaces a spin box's text by typing, as a user does, and commits it.
void TypeInto(QSpinBox* box, const QString& text) {
  box->setFocus();
  box->selectAll();
  QTest::keyClicks(box, text);
  QTest::keyClick(box, Qt::Key_Tab);
}

}  // namespace

class DayFieldTest : public QObject {
  Q_OBJECT

 private slots:
  void freeFunctionUsesPlainLeapRule() {
    QSpinBox field;
    field.setRange(1, 31);
    field.setValue(31);
    tarn::TweakDayFieldForMonthAndYear(&field, 2, 1900);
    QCOMPARE(field.maximum(), 29);
    QCOMPARE(field.value(), 29);
    tarn::TweakDayFieldForMonthAndYear(&field, 2, 2023);
    QCOMPARE(field.value(), 28);
    // Widening the month raises the maximum but never the value.
    tarn::TweakDayFieldForMonthAndYear(&field, 12, 2023);
    QCOMPARE(field.maximum(), 31);
    QCOMPARE(field.value(), 28);
    tarn::TweakDayFieldForMonthAndYear(nullptr, 2, 2023);
  }

  void typingMonthAndYearClampsTheDay() {
    QWidget form;
    auto* layout = new QVBoxLayout(&form);
    auto* month = new QSpinBox;
    month->setRange(1, 12);
    month->setValue(1);
    auto* day = new QSpinBox;
    day->setRange(1, 31);
    day->setValue(31);
    auto* year = new QSpinBox;
    year->setRange(1900, 2100);
    year->setValue(2024);
    layout->addWidget(month);
    layout->addWidget(day);
    layout->addWidget(year);
    new tarn::DayFieldBinding(day, month, year);
    form.show();
    QVERIFY(QTest::qWaitForWindowExposed(&form));
    QCOMPARE(day->maximum(), 31);

    TypeInto(month, "4");
    QCOMPARE(month->value(), 4);
    QCOMPARE(day->maximum(), 30);
    QCOMPARE(day->value(), 30);

    TypeInto(month, "2");
    QCOMPARE(day->value(), 29);  // 2024 is a leap year
    TypeInto(year, "2023");
    QCOMPARE(day->maximum(), 28);
    QCOMPARE(day->value(), 28);
    TypeInto(year, "1900");  // divisible by 4: 29 days, century or not
    QCOMPARE(day->maximum(), 29);
    QCOMPARE(day->value(), 28);

    // The user can now type a day up to the new maximum, and no further.
    TypeInto(day, "29");
    QCOMPARE(day->value(), 29);
    TypeInto(month, "5");
    TypeInto(day, "31");
    QCOMPARE(day->value(), 31);
  }

  void monthChosenFromAList() {
    QSpinBox day;
    day.setRange(1, 31);
    day.setValue(31);
    QComboBox month;
    for (const char* name : {"January", "February", "March", "April", "May", "June", "July",
                             "August", "September", "October", "November", "December"}) {
      month.addItem(name);
    }
    QSpinBox year;
    year.setRange(1900, 2100);
    year.setValue(2021);
    new tarn::DayFieldBinding(&day, &month, &year);
    QCOMPARE(day.maximum(), 31);  // January
    month.setCurrentIndex(10);    // November
    QCOMPARE(day.value(), 30);
    month.setCurrentIndex(1);
    QCOMPARE(day.value(), 28);
  }
};

QTEST_MAIN(DayFieldTest)
#include "tst_day_field.moc"
