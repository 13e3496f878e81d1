// The account's settings sheet: name, currency, starting balance and check
// number, and password. It edits a copy of the settings; the window applies
// them through the library and the undo stack.
#pragma once

#include <QDialog>

#include <memory>

#include "tarn/book/book_changes.h"

class QComboBox;
class QLineEdit;
class QSpinBox;

namespace tarn {
class PFCurrency;
class TARNAccount;
class TARNBook;
}  // namespace tarn

class AccountSettingsDialog : public QDialog {
  Q_OBJECT

 public:
  AccountSettingsDialog(tarn::TARNBook& book, const tarn::TARNAccount& account,
                        QWidget* parent = nullptr);
  tarn::AccountSettings settings() const { return settings_; }

  void accept() override;

 private:
  std::shared_ptr<tarn::PFCurrency> chosenCurrency() const;

  tarn::TARNBook& book_;
  // The currency the starting balance is written in.
  std::shared_ptr<tarn::PFCurrency> shownCurrency_;
  tarn::AccountSettings settings_;
  QLineEdit* name_;
  QComboBox* currency_;
  QLineEdit* startingBalance_;
  QSpinBox* startingCheckNumber_;
  QLineEdit* password_;
  QLineEdit* confirm_;
};
