// The panel that edits one currency: code, name, symbol and its place,
// separators, and the exchange rate against the account's base currency,
// from the interface file "EditCurrency". It refuses a code that is not three
// characters long or that another currency already uses. The controller owns
// its window and its rate formatter; it shares the currencies it is given.
#pragma once

#include <QObject>
#include <memory>
#include <vector>

#include "tarn/model/currency.h"
#include "tarn/model/number_formatter.h"

class QCheckBox;
class QComboBox;
class QDialog;
class QLabel;
class QLineEdit;
class QWidget;

namespace Ui {
class EditCurrency;
}

namespace tarn {

class PFEditCurrencyController : public QObject {
  Q_OBJECT

 public:
  // Loads "EditCurrency" with the new controller as owner, remembers the
  // window's height and puts the rate formatter on both rate fields.
  PFEditCurrencyController();
  ~PFEditCurrencyController() override;

  // One controller for the process, made on first use and kept.
  static PFEditCurrencyController* sharedEditCurrencyController();

  void setBaseCurrency(std::shared_ptr<PFCurrency> currency) {
    baseCurrency_ = std::move(currency);
  }
  const std::shared_ptr<PFCurrency>& baseCurrency() const { return baseCurrency_; }
  void setEditCurrency(std::shared_ptr<PFCurrency> currency) {
    editCurrency_ = std::move(currency);
  }
  const std::shared_ptr<PFCurrency>& editCurrency() const { return editCurrency_; }
  // Every currency, the edited one included, for the uniqueness of codes.
  void setCurrencies(std::vector<std::shared_ptr<PFCurrency>> currencies) {
    currencies_ = std::move(currencies);
  }
  const std::vector<std::shared_ptr<PFCurrency>>& currencies() const { return currencies_; }
  // Shows or hides the rate part of the window (only when the value changes).
  void setShowRate(bool showRate);
  bool showRate() const { return showRate_; }
  int defaultWindowHeight() const { return defaultWindowHeight_; }

  // Fills the panel and runs it modally: 1 when the user pressed OK (the
  // currency is then saved), 0 for Cancel, and 0 at once without a currency.
  int editCurrencyWindow_Run();
  void editCurrencyWindow_Populate();
  void editCurrencyWindow_Save();
  // The code is three characters long and no other currency has it, in any
  // letter case; otherwise an alert says why and the answer is false.
  bool editCurrencyWindow_Code_Field_Validate();
  // Whether a control may end editing: the code field only with a valid code.
  bool controlTextShouldEndEditing(QWidget* control);

  // The rate formatter: five decimals, at least 0.00001, the user's separators.
  static std::shared_ptr<TARNNumberFormatter> makeRateFormatter();
  const std::shared_ptr<TARNNumberFormatter>& rateFormatter() const { return rateFormatter_; }

  QDialog* editCurrencyWindow() const { return editCurrencyWindow_; }

 public slots:
  void editCurrencyWindow_OK_Button();
  void editCurrencyWindow_Cancel_Button();
  // The code field changed: its labels follow the typed code.
  void editCurrencyWindow_Code_Field();
  // A rate field ended editing: the other gets 1 divided by its value. The
  // field with tag 0 (base per currency) sets the currency-per-base field.
  void editCurrencyWindow_Rate_Field(QLineEdit* sender);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void awakeFromNib();
  void setRateFormatter(std::shared_ptr<TARNNumberFormatter> formatter);
  double rateFieldValue(const QLineEdit* field) const;
  void setRateFieldValue(QLineEdit* field, double value);
  void resizeWindowHeight(int height);
  void validateCodeAfterLeaving();

  std::shared_ptr<PFCurrency> baseCurrency_;
  std::shared_ptr<PFCurrency> editCurrency_;
  std::vector<std::shared_ptr<PFCurrency>> currencies_;
  bool showRate_ = true;
  int defaultWindowHeight_ = 0;
  std::shared_ptr<TARNNumberFormatter> rateFormatter_;
  bool validating_ = false;

  std::unique_ptr<Ui::EditCurrency> ui_;
  QDialog* editCurrencyWindow_;
};

}  // namespace tarn
