#include "tarn/ui/edit_currency_controller.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFocusEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QTimer>
#include <algorithm>

#include "tarn/platform/user_defaults.h"
#include "tarn/ui/alert.h"
#include "tarn/ui/window_placement.h"
#include "ui_EditCurrency.h"

namespace tarn {
namespace {

QString FromStd(const std::string& text) {
  return QString::fromStdString(text);
}

const plist::Value* Field(const plist::Value& dictionary, std::string_view key) {
  return dictionary.find(key);
}

QString StringField(const plist::Value& dictionary, std::string_view key) {
  const plist::Value* value = Field(dictionary, key);
  return value != nullptr ? FromStd(value->stringValue()) : QString();
}

QString RateLabel(const QString& code) {
  return QStringLiteral("1 %1 =").arg(code);
}

constexpr int kResizeMilliseconds = 150;

}  // namespace

PFEditCurrencyController::PFEditCurrencyController()
    : ui_(std::make_unique<Ui::EditCurrency>()), editCurrencyWindow_(new QDialog()) {
  ui_->setupUi(editCurrencyWindow_);
  connect(ui_->editCurrencyWindow_OK_Button, &QPushButton::clicked, this,
          &PFEditCurrencyController::editCurrencyWindow_OK_Button);
  connect(ui_->editCurrencyWindow_Cancel_Button, &QPushButton::clicked, this,
          &PFEditCurrencyController::editCurrencyWindow_Cancel_Button);
  connect(ui_->editCurrencyWindow_Code_Field, &QLineEdit::textChanged, this,
          &PFEditCurrencyController::editCurrencyWindow_Code_Field);
  for (QLineEdit* field : {ui_->editCurrencyWindow_BasePerCurrency_Field,
                           ui_->editCurrencyWindow_CurrencyPerBase_Field}) {
    connect(field, &QLineEdit::editingFinished, this,
            [this, field] { editCurrencyWindow_Rate_Field(field); });
  }
  ui_->editCurrencyWindow_Code_Field->installEventFilter(this);
  awakeFromNib();
}

PFEditCurrencyController::~PFEditCurrencyController() {
  delete editCurrencyWindow_;
}

void PFEditCurrencyController::awakeFromNib() {
  // The height as laid out, with the rate part shown: no taller than the
  // controls need, so that hiding the rate part leaves no gap.
  const QSize hint = editCurrencyWindow_->sizeHint();
  editCurrencyWindow_->resize(std::max(editCurrencyWindow_->width(), hint.width()), hint.height());
  defaultWindowHeight_ = editCurrencyWindow_->height();
  setRateFormatter(makeRateFormatter());
}

PFEditCurrencyController* PFEditCurrencyController::sharedEditCurrencyController() {
  // Kept for the life of the process: its window must not outlive the
  // application object in a static destructor.
  static auto* shared = new PFEditCurrencyController();
  return shared;
}

std::shared_ptr<TARNNumberFormatter> PFEditCurrencyController::makeRateFormatter() {
  auto formatter = std::make_shared<TARNNumberFormatter>();
  formatter->setLocalizesFormat(false);
  formatter->setFormat("0.00000; 0.00000;-0.00000");
  formatter->setMinimum(0.00001);
  formatter->setDecimalSeparator(UserDefault("NSDecimalSeparator"));
  formatter->setThousandSeparator(UserDefault("NSThousandsSeparator"));
  return formatter;
}

void PFEditCurrencyController::setRateFormatter(std::shared_ptr<TARNNumberFormatter> formatter) {
  rateFormatter_ = std::move(formatter);
}

double PFEditCurrencyController::rateFieldValue(const QLineEdit* field) const {
  std::optional<double> value;
  rateFormatter_->getObjectValue(value, field->text().toStdString());
  return value.value_or(0.0);
}

void PFEditCurrencyController::setRateFieldValue(QLineEdit* field, double value) {
  field->setText(FromStd(rateFormatter_->stringForObjectValue(value)));
}

void PFEditCurrencyController::editCurrencyWindow_Populate() {
  if (editCurrency_ == nullptr) return;
  // A fresh formatter, so that changed separators in the user's defaults apply.
  setRateFormatter(makeRateFormatter());

  const plist::Value dictionary = editCurrency_->asDictionary();
  ui_->editCurrencyWindow_Code_Field->setText(StringField(dictionary, "code"));
  ui_->editCurrencyWindow_Description_Field->setText(StringField(dictionary, "description"));
  ui_->editCurrencyWindow_Symbol_Box->setCurrentText(StringField(dictionary, "symbol"));
  const plist::Value* precedes = Field(dictionary, "symbolPrecedesAmounts");
  ui_->editCurrencyWindow_SymbolPrecedesAmounts_Button->setChecked(precedes != nullptr &&
                                                                   precedes->boolValue());
  ui_->editCurrencyWindow_Thousands_Box->setCurrentText(
      StringField(dictionary, "thousandsSeparator"));
  ui_->editCurrencyWindow_Decimal_Box->setCurrentText(StringField(dictionary, "decimalSeparator"));
  const plist::Value* rateValue = Field(dictionary, "rate");
  const double rate = rateValue != nullptr ? rateValue->doubleValue() : 1.0;
  setRateFieldValue(ui_->editCurrencyWindow_BasePerCurrency_Field, rate);
  setRateFieldValue(ui_->editCurrencyWindow_CurrencyPerBase_Field, 1.0 / rate);

  const QString code = FromStd(editCurrency_->code());
  const QString baseCode = baseCurrency_ != nullptr ? FromStd(baseCurrency_->code()) : QString();
  ui_->editCurrencyWindow_CurrencyPerBase_Label_Field->setText(RateLabel(code));
  ui_->editCurrencyWindow_CurrencyPerBase_LabelSuffix_Field->setText(baseCode);
  ui_->editCurrencyWindow_BasePerCurrency_Label_Field->setText(RateLabel(baseCode));
  ui_->editCurrencyWindow_BasePerCurrency_LabelSuffix_Field->setText(code);

  // A currency has no rate against itself.
  setShowRate(code != baseCode);
  ui_->editCurrencyWindow_Code_Field->setFocus();
  ui_->editCurrencyWindow_Code_Field->selectAll();
}

int PFEditCurrencyController::editCurrencyWindow_Run() {
  if (editCurrency_ == nullptr) return 0;
  editCurrencyWindow_Populate();
  CenterWindow(editCurrencyWindow_);
  const int code = editCurrencyWindow_->exec();
  if (code == 1) editCurrencyWindow_Save();
  editCurrencyWindow_->hide();
  return code;
}

void PFEditCurrencyController::editCurrencyWindow_Save() {
  if (editCurrency_ == nullptr) return;
  editCurrency_->setCode(ui_->editCurrencyWindow_Code_Field->text().toStdString());
  editCurrency_->setDescription(ui_->editCurrencyWindow_Description_Field->text().toStdString());
  editCurrency_->setSymbol(ui_->editCurrencyWindow_Symbol_Box->currentText().toStdString());
  editCurrency_->setSymbolPrecedesAmounts(
      ui_->editCurrencyWindow_SymbolPrecedesAmounts_Button->checkState() == Qt::Checked);
  editCurrency_->setThousandsSeparator(
      ui_->editCurrencyWindow_Thousands_Box->currentText().toStdString());
  editCurrency_->setDecimalSeparator(
      ui_->editCurrencyWindow_Decimal_Box->currentText().toStdString());
  editCurrency_->setRate(rateFieldValue(ui_->editCurrencyWindow_BasePerCurrency_Field));
}

bool PFEditCurrencyController::editCurrencyWindow_Code_Field_Validate() {
  const QString code = ui_->editCurrencyWindow_Code_Field->text();
  if (code.size() != 3) {
    RunAlert(editCurrencyWindow_, "The entered Currency code is not the correct length.",
             "Please enter a 3-character code for this Currency.");
    return false;
  }
  for (const auto& currency : currencies_) {
    if (currency == nullptr || currency == editCurrency_) continue;
    if (FromStd(currency->code()).compare(code, Qt::CaseInsensitive) == 0) {
      RunAlert(editCurrencyWindow_, "The entered Currency code is already in use.",
               "Please enter another code for this Currency.");
      return false;
    }
  }
  return true;
}

bool PFEditCurrencyController::controlTextShouldEndEditing(QWidget* control) {
  if (control == ui_->editCurrencyWindow_Code_Field)
    return editCurrencyWindow_Code_Field_Validate();
  return true;
}

void PFEditCurrencyController::editCurrencyWindow_OK_Button() {
  validating_ = true;
  const bool valid = editCurrencyWindow_Code_Field_Validate();
  validating_ = false;
  if (!valid) {
    ui_->editCurrencyWindow_Code_Field->setFocus();
    ui_->editCurrencyWindow_Code_Field->selectAll();
    return;
  }
  // The rate field being edited ends editing first, so its value counts.
  QWidget* focus = QApplication::focusWidget();
  if (focus == ui_->editCurrencyWindow_BasePerCurrency_Field ||
      focus == ui_->editCurrencyWindow_CurrencyPerBase_Field) {
    editCurrencyWindow_Rate_Field(static_cast<QLineEdit*>(focus));
  }
  editCurrencyWindow_->done(1);
}

void PFEditCurrencyController::editCurrencyWindow_Cancel_Button() {
  editCurrencyWindow_->done(0);
}

void PFEditCurrencyController::editCurrencyWindow_Code_Field() {
  const QString code = ui_->editCurrencyWindow_Code_Field->text();
  ui_->editCurrencyWindow_CurrencyPerBase_Label_Field->setText(RateLabel(code));
  ui_->editCurrencyWindow_BasePerCurrency_LabelSuffix_Field->setText(code);
}

void PFEditCurrencyController::editCurrencyWindow_Rate_Field(QLineEdit* sender) {
  if (sender == nullptr) return;
  const double value = rateFieldValue(sender);
  setRateFieldValue(sender, value);  // written back as the formatter shows it
  QLineEdit* other = sender->property("tag").toInt() == 0
                         ? ui_->editCurrencyWindow_CurrencyPerBase_Field
                         : ui_->editCurrencyWindow_BasePerCurrency_Field;
  setRateFieldValue(other, 1.0 / value);
}

void PFEditCurrencyController::setShowRate(bool showRate) {
  if (showRate == showRate_) return;
  QWidget* rateView = ui_->editCurrencyWindow_Rate_View;
  if (showRate) {
    rateView->show();
    ui_->editCurrencyWindow_BasePerCurrency_Field->setEnabled(true);
    ui_->editCurrencyWindow_CurrencyPerBase_Field->setEnabled(true);
    resizeWindowHeight(defaultWindowHeight_);
  } else {
    // Lays the controls out now, also in a window not yet shown.
    editCurrencyWindow_->layout()->setGeometry(editCurrencyWindow_->rect());
    const int decimalBottom =
        ui_->editCurrencyWindow_Decimal_Box
            ->mapTo(editCurrencyWindow_, QPoint(0, ui_->editCurrencyWindow_Decimal_Box->height()))
            .y();
    const int rateBottom = rateView->mapTo(editCurrencyWindow_, QPoint(0, rateView->height())).y();
    rateView->hide();
    ui_->editCurrencyWindow_BasePerCurrency_Field->setEnabled(false);
    ui_->editCurrencyWindow_CurrencyPerBase_Field->setEnabled(false);
    resizeWindowHeight(editCurrencyWindow_->height() - (rateBottom - decimalBottom));
  }
  showRate_ = showRate;
}

// Resizes keeping the top edge in place; animated when the window is on screen.
void PFEditCurrencyController::resizeWindowHeight(int height) {
  // The window's minimum size follows the rate part at once, not after the
  // next layout pass, so that a shrink is not held back by the old minimum.
  editCurrencyWindow_->layout()->invalidate();
  editCurrencyWindow_->layout()->activate();
  const QSize target(editCurrencyWindow_->width(), height);
  if (!editCurrencyWindow_->isVisible()) {
    editCurrencyWindow_->resize(target);
    return;
  }
  auto* animation = new QPropertyAnimation(editCurrencyWindow_, "size", editCurrencyWindow_);
  animation->setDuration(kResizeMilliseconds);
  animation->setEndValue(target);
  animation->start(QAbstractAnimation::DeleteWhenStopped);
}

// Leaving the code field by Tab or by clicking another field checks the code
// once focus has moved; a refused code brings the user back to the field.
// Moving to OK (which checks itself) or Cancel does not.
bool PFEditCurrencyController::eventFilter(QObject* watched, QEvent* event) {
  if (watched == ui_->editCurrencyWindow_Code_Field && event->type() == QEvent::FocusOut &&
      !validating_) {
    const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
    QWidget* next = QApplication::focusWidget();
    if ((reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
         reason == Qt::MouseFocusReason) &&
        next != ui_->editCurrencyWindow_OK_Button &&
        next != ui_->editCurrencyWindow_Cancel_Button && editCurrencyWindow_->isVisible()) {
      QTimer::singleShot(0, this, &PFEditCurrencyController::validateCodeAfterLeaving);
    }
  }
  return QObject::eventFilter(watched, event);
}

void PFEditCurrencyController::validateCodeAfterLeaving() {
  if (validating_ || !editCurrencyWindow_->isVisible()) return;
  validating_ = true;
  const bool valid = controlTextShouldEndEditing(ui_->editCurrencyWindow_Code_Field);
  validating_ = false;
  if (!valid) {
    ui_->editCurrencyWindow_Code_Field->setFocus();
    ui_->editCurrencyWindow_Code_Field->selectAll();
  }
}

}  // namespace tarn
