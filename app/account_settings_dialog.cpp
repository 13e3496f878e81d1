// Fields of the account settings sheet.

#include "account_settings_dialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QSpinBox>

#include <cmath>
#include <limits>

#include "money_text.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/model/currency.h"

AccountSettingsDialog::AccountSettingsDialog(tarn::TARNBook& book, const tarn::TARNAccount& account,
                                             QWidget* parent)
    : QDialog(parent), book_(book), settings_(tarn::CaptureAccountSettings(account)) {
  setObjectName("accountSettings");
  setWindowTitle(tr("Account Settings"));
  name_ = new QLineEdit(QString::fromStdString(settings_.name), this);
  name_->setObjectName("settingsName");
  currency_ = new QComboBox(this);
  currency_->setObjectName("settingsCurrency");
  for (const auto& currency : book.currencies()) {
    currency_->addItem(QString::fromStdString(currency->code() + " - " + currency->description()),
                       QString::fromStdString(currency->code()));
  }
  currency_->setCurrentIndex(
      std::max(0, currency_->findData(QString::fromStdString(settings_.currencyCode))));
  shownCurrency_ = account.currency();
  startingBalance_ = new QLineEdit(MoneyText(&account, settings_.startingBalance).trimmed(), this);
  // The balance is written in the currency chosen: another choice rewrites it.
  connect(currency_, &QComboBox::currentIndexChanged, this, [this] {
    const auto chosen = chosenCurrency();
    if (!shownCurrency_ || !chosen || chosen == shownCurrency_) return;
    if (const auto value = ReadMoney(*shownCurrency_, startingBalance_->text())) {
      startingBalance_->setText(MoneyText(*chosen, *value).trimmed());
    }
    shownCurrency_ = chosen;
  });
  startingBalance_->setObjectName("settingsStartingBalance");
  startingBalance_->setAlignment(Qt::AlignRight);
  startingCheckNumber_ = new QSpinBox(this);
  startingCheckNumber_->setObjectName("settingsStartingCheckNumber");
  startingCheckNumber_->setRange(0, std::numeric_limits<int>::max());
  startingCheckNumber_->setValue(settings_.startingCheckNumber);
  password_ = new QLineEdit(QString::fromStdString(settings_.password), this);
  password_->setObjectName("settingsPassword");
  password_->setEchoMode(QLineEdit::Password);
  confirm_ = new QLineEdit(QString::fromStdString(settings_.password), this);
  confirm_->setObjectName("settingsConfirm");
  confirm_->setEchoMode(QLineEdit::Password);

  auto* form = new QFormLayout(this);
  form->addRow(tr("Name:"), name_);
  form->addRow(tr("Currency:"), currency_);
  form->addRow(tr("Starting balance:"), startingBalance_);
  form->addRow(tr("Starting check number:"), startingCheckNumber_);
  form->addRow(tr("Password:"), password_);
  form->addRow(tr("Confirm password:"), confirm_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  form->addRow(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

std::shared_ptr<tarn::PFCurrency> AccountSettingsDialog::chosenCurrency() const {
  return book_.currencyWithCode(currency_->currentData().toString().toStdString());
}

void AccountSettingsDialog::accept() {
  // The starting balance is read in the currency chosen, which may be new.
  const auto chosen = chosenCurrency();
  const tarn::PFCurrency& currency = chosen ? *chosen : *book_.currency();
  const auto read = ReadMoney(currency, startingBalance_->text());
  if (!read || !std::isfinite(*read)) {
    QMessageBox::warning(this, windowTitle(), NotAnAmount(currency, startingBalance_->text()));
    return;
  }
  const double value = *read;
  if (name_->text().trimmed().isEmpty()) {
    QMessageBox::warning(this, windowTitle(), tr("An account needs a name."));
    return;
  }
  if (password_->text() != confirm_->text()) {
    QMessageBox::warning(this, windowTitle(), tr("The two passwords differ."));
    return;
  }
  settings_.name = name_->text().trimmed().toStdString();
  settings_.currencyCode = currency_->currentData().toString().toStdString();
  settings_.startingBalance = std::round(value * 100) / 100;
  settings_.startingCheckNumber = startingCheckNumber_->value();
  settings_.password = password_->text().toStdString();
  QDialog::accept();
}
