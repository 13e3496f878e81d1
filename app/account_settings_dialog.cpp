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

#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/model/currency.h"

AccountSettingsDialog::AccountSettingsDialog(tarn::TARNBook& book, const tarn::TARNAccount& account,
                                             QWidget* parent)
    : QDialog(parent), settings_(tarn::CaptureAccountSettings(account)) {
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
  startingBalance_ = new QLineEdit(QString::number(settings_.startingBalance, 'f', 2), this);
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

void AccountSettingsDialog::accept() {
  QString balance = startingBalance_->text().trimmed();
  balance.remove(',');
  balance.remove('$');
  bool ok = false;
  const double value = balance.isEmpty() ? 0.0 : balance.toDouble(&ok);
  if ((!ok && !balance.isEmpty()) || !std::isfinite(value)) {
    QMessageBox::warning(this, windowTitle(),
                         tr("\"%1\" is not an amount.").arg(startingBalance_->text()));
    return;
  }
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
