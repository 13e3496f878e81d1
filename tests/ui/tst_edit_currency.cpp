// The currency panel driven as the user drives it: the filled fields, typing
// a code and rates, the two refusals of a code, the rate part hidden for the
// base currency, and OK and Cancel.
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>

#include "tarn/platform/user_defaults.h"
#include "tarn/ui/edit_currency_controller.h"
#include "ui_test_support.h"

using tarn::PFCurrency;
using tarn::PFEditCurrencyController;

namespace {

std::shared_ptr<PFCurrency> Currency(const std::string& code, const std::string& name,
                                     const std::string& symbol, double rate) {
  return PFCurrency::initWithCode(code, name, symbol, true, ",", ".", rate, 20240105);
}

template <typename T>
T* Child(QWidget* window, const char* name) {
  T* child = window->findChild<T*>(name);
  if (child == nullptr) qWarning("no widget %s", name);
  return child;
}

QLineEdit* Field(QWidget* window, const char* name) {
  return Child<QLineEdit>(window, name);
}

// Replaces a field's text by typing, as a user does.
void Retype(QLineEdit* field, const QString& text) {
  field->setFocus();
  field->selectAll();
  QTest::keyClicks(field, text);
}

// The alert that a refused code raises, read and dismissed with its OK
// button; `texts` receives its statement and message.
std::shared_ptr<bool> DismissAlert(QWidget* window, QStringList* texts) {
  return tarn::uitest::WhenModal(
      [texts](QWidget* modal) {
        auto* alert = qobject_cast<QMessageBox*>(modal);
        QVERIFY(alert != nullptr);
        *texts = {alert->text(), alert->informativeText(), alert->windowTitle()};
        tarn::uitest::ClickButton(alert, "OK");
      },
      window);
}

struct Book {
  Book() {
    usd = Currency("USD", "US Dollar", "$", 1.0);
    eur = Currency("EUR", "Euro", "\xE2\x82\xAC", 1.25);
    chf = Currency("CHF", "Swiss Franc", "Fr.", 0.8);
    controller.setBaseCurrency(usd);
    controller.setCurrencies({usd, eur, chf});
  }
  std::shared_ptr<PFCurrency> usd, eur, chf;
  PFEditCurrencyController controller;
};

}  // namespace

class EditCurrencyTest : public QObject {
  Q_OBJECT

 private slots:
  void init() { tarn::ResetUserDefaults(); }

  void fillsThePanelFromTheCurrency() {
    Book book;
    book.controller.setEditCurrency(book.eur);
    book.controller.editCurrencyWindow_Populate();
    QWidget* window = book.controller.editCurrencyWindow();
    QCOMPARE(Field(window, "editCurrencyWindow_Code_Field")->text(), QString("EUR"));
    QCOMPARE(Field(window, "editCurrencyWindow_Description_Field")->text(), QString("Euro"));
    QCOMPARE(Child<QComboBox>(window, "editCurrencyWindow_Symbol_Box")->currentText(),
             QString("\u20AC"));
    QVERIFY(
        Child<QCheckBox>(window, "editCurrencyWindow_SymbolPrecedesAmounts_Button")->isChecked());
    QCOMPARE(Child<QComboBox>(window, "editCurrencyWindow_Thousands_Box")->currentText(),
             QString(","));
    QCOMPARE(Child<QComboBox>(window, "editCurrencyWindow_Decimal_Box")->currentText(),
             QString("."));
    QCOMPARE(Field(window, "editCurrencyWindow_BasePerCurrency_Field")->text(), QString("1.25000"));
    QCOMPARE(Field(window, "editCurrencyWindow_CurrencyPerBase_Field")->text(), QString("0.80000"));
    QCOMPARE(Child<QLabel>(window, "editCurrencyWindow_CurrencyPerBase_Label_Field")->text(),
             QString("1 EUR ="));
    QCOMPARE(Child<QLabel>(window, "editCurrencyWindow_CurrencyPerBase_LabelSuffix_Field")->text(),
             QString("USD"));
    QCOMPARE(Child<QLabel>(window, "editCurrencyWindow_BasePerCurrency_Label_Field")->text(),
             QString("1 USD ="));
    QCOMPARE(Child<QLabel>(window, "editCurrencyWindow_BasePerCurrency_LabelSuffix_Field")->text(),
             QString("EUR"));
    QVERIFY(book.controller.showRate());

    // The rate formatter: five decimals, a floor of 0.00001, the user's separators.
    tarn::SetUserDefault("NSDecimalSeparator", ",");
    tarn::SetUserDefault("NSThousandsSeparator", ".");
    book.controller.editCurrencyWindow_Populate();
    QCOMPARE(Field(window, "editCurrencyWindow_BasePerCurrency_Field")->text(), QString("1,25000"));
    auto formatter = PFEditCurrencyController::makeRateFormatter();
    std::optional<double> value;
    formatter->getObjectValue(value, "0");
    QCOMPARE(value, std::optional<double>(0.00001));
  }

  void typedRatesAndNameSavedOnOK() {
    Book book;
    book.controller.setEditCurrency(book.eur);
    auto ran = tarn::uitest::WhenModal([&](QWidget* window) {
      QLineEdit* basePerCurrency = Field(window, "editCurrencyWindow_BasePerCurrency_Field");
      QLineEdit* currencyPerBase = Field(window, "editCurrencyWindow_CurrencyPerBase_Field");
      Retype(basePerCurrency, "2");
      QTest::keyClick(basePerCurrency, Qt::Key_Tab);
      QCOMPARE(currencyPerBase->text(), QString("0.50000"));
      QCOMPARE(basePerCurrency->text(), QString("2.00000"));
      Retype(currencyPerBase, "4");
      QTest::keyClick(currencyPerBase, Qt::Key_Tab);
      QCOMPARE(basePerCurrency->text(), QString("0.25000"));
      // Text that is no number becomes the smallest rate.
      Retype(currencyPerBase, "lots");
      QTest::keyClick(currencyPerBase, Qt::Key_Tab);
      QCOMPARE(currencyPerBase->text(), QString("0.00001"));
      QCOMPARE(basePerCurrency->text(), QString("100000.00000"));
      // Typed and left in the field when OK is pressed: it still counts.
      Retype(basePerCurrency, "1.6");
      Retype(Field(window, "editCurrencyWindow_Description_Field"), "Euro (EMU)");
      auto* precedes = Child<QCheckBox>(window, "editCurrencyWindow_SymbolPrecedesAmounts_Button");
      QTest::mouseClick(precedes, Qt::LeftButton, {}, QPoint(6, precedes->height() / 2));
      auto* decimal = Child<QComboBox>(window, "editCurrencyWindow_Decimal_Box");
      decimal->setFocus();
      decimal->lineEdit()->selectAll();
      QTest::keyClicks(decimal, ",");
      Retype(basePerCurrency, "1.6");
      tarn::uitest::ClickButton(window, "OK");
    });
    QCOMPARE(book.controller.editCurrencyWindow_Run(), 1);
    QVERIFY(*ran);
    QCOMPARE(book.eur->rate(), 1.6);
    QCOMPARE(book.eur->description(), std::string("Euro (EMU)"));
    QVERIFY(!book.eur->symbolPrecedesAmounts());
    QCOMPARE(book.eur->decimalSeparator(), std::string(","));
    QCOMPARE(book.eur->code(), std::string("EUR"));  // its own code is not "in use"
    QCOMPARE(book.eur->lastUpdate(), 20240105);
    QVERIFY(!book.controller.editCurrencyWindow()->isVisible());
  }

  void codesRefusedWithAlerts() {
    Book book;
    book.controller.setEditCurrency(book.eur);
    QStringList lengthAlert, inUseAlert;
    auto ran = tarn::uitest::WhenModal([&](QWidget* window) {
      QLineEdit* code = Field(window, "editCurrencyWindow_Code_Field");
      Retype(code, "EU");
      QCOMPARE(Child<QLabel>(window, "editCurrencyWindow_CurrencyPerBase_Label_Field")->text(),
               QString("1 EU ="));
      QCOMPARE(
          Child<QLabel>(window, "editCurrencyWindow_BasePerCurrency_LabelSuffix_Field")->text(),
          QString("EU"));
      auto alerted = DismissAlert(window, &lengthAlert);
      tarn::uitest::ClickButton(window, "OK");
      QVERIFY(*alerted);
      QVERIFY(window->isVisible());  // still open

      // Another currency's code in other letters is in use too.
      Retype(code, "chf");
      alerted = DismissAlert(window, &inUseAlert);
      QTest::keyClick(code, Qt::Key_Return);  // Return presses OK
      QVERIFY(*alerted);
      QVERIFY(window->isVisible());

      Retype(code, "EUX");
      tarn::uitest::ClickButton(window, "OK");
    });
    QCOMPARE(book.controller.editCurrencyWindow_Run(), 1);
    QVERIFY(*ran);
    QCOMPARE(lengthAlert, (QStringList{"The entered Currency code is not the correct length.",
                                       "Please enter a 3-character code for this Currency.", ""}));
    QCOMPARE(inUseAlert, (QStringList{"The entered Currency code is already in use.",
                                      "Please enter another code for this Currency.", ""}));
    QCOMPARE(book.eur->code(), std::string("EUX"));
  }

  void leavingTheCodeFieldChecksTheCode() {
    Book book;
    book.controller.setEditCurrency(book.chf);
    QStringList alert;
    auto ran = tarn::uitest::WhenModal([&](QWidget* window) {
      QLineEdit* code = Field(window, "editCurrencyWindow_Code_Field");
      Retype(code, "usd");
      auto alerted = DismissAlert(window, &alert);
      QTest::keyClick(code, Qt::Key_Tab);
      QTRY_VERIFY(*alerted);
      QTRY_COMPARE(window->focusWidget(), static_cast<QWidget*>(code));  // back in the field
      tarn::uitest::ClickButton(window, "Cancel");                       // no check on the way out
    });
    QCOMPARE(book.controller.editCurrencyWindow_Run(), 0);
    QVERIFY(*ran);
    QCOMPARE(alert.value(0), QString("The entered Currency code is already in use."));
    QCOMPARE(book.chf->code(), std::string("CHF"));  // Cancel changes nothing
    QCOMPARE(book.chf->rate(), 0.8);
  }

  void baseCurrencyHasNoRate() {
    Book book;
    QDialog* window = book.controller.editCurrencyWindow();
    auto* rateView = Child<QGroupBox>(window, "editCurrencyWindow_Rate_View");
    const int fullHeight = book.controller.defaultWindowHeight();
    QCOMPARE(window->height(), fullHeight);

    book.controller.setEditCurrency(book.usd);
    auto ran = tarn::uitest::WhenModal([&](QWidget* shown) {
      QVERIFY(rateView->isHidden());
      QVERIFY(!Field(shown, "editCurrencyWindow_BasePerCurrency_Field")->isEnabled());
      QVERIFY(!Field(shown, "editCurrencyWindow_CurrencyPerBase_Field")->isEnabled());
      // Shorter by the whole rate part, not just by a little.
      QVERIFY(shown->height() <= fullHeight - rateView->sizeHint().height());
      // Nothing below the separators is cut off: the buttons still show.
      QVERIFY(tarn::uitest::ButtonWithText(shown, "OK")->geometry().bottom() < shown->height());
      tarn::uitest::ClickButton(shown, "OK");
    });
    QCOMPARE(book.controller.editCurrencyWindow_Run(), 1);
    QVERIFY(*ran);
    QVERIFY(!book.controller.showRate());
    QCOMPARE(book.usd->rate(), 1.0);

    // A code that differs only in letter case is another currency: rate shown.
    book.controller.setEditCurrency(Currency("usd", "Other", "$", 1.0));
    book.controller.setCurrencies({book.usd});
    book.controller.editCurrencyWindow_Populate();
    QVERIFY(book.controller.showRate());
    QVERIFY(!rateView->isHidden());
    QCOMPARE(window->height(), fullHeight);
    QVERIFY(Field(window, "editCurrencyWindow_BasePerCurrency_Field")->isEnabled());
  }

  void runWithoutCurrencyAndSharedController() {
    PFEditCurrencyController controller;
    QCOMPARE(controller.editCurrencyWindow_Run(), 0);
    QVERIFY(!controller.editCurrencyWindow()->isVisible());
    QCOMPARE(PFEditCurrencyController::sharedEditCurrencyController(),
             PFEditCurrencyController::sharedEditCurrencyController());
    QVERIFY(PFEditCurrencyController::sharedEditCurrencyController()->currencies().empty());
  }
};

QTEST_MAIN(EditCurrencyTest)
#include "tst_edit_currency.moc"
