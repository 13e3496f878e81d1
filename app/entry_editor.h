// The form below the register for a new or selected entry. It shows an
// EntryForm and gives one back; recording is the window's (through the
// library's RecordEntryForm). Tab moves field to field and Return records,
// as in a paper register.
#pragma once

#include <QWidget>

#include <cstdint>
#include <memory>

#include "tarn/book/entry_form.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTableWidget;

namespace tarn {
class PFCurrency;
class TARNAccount;
class TARNBook;
}  // namespace tarn

class EntryEditor : public QWidget {
  Q_OBJECT

 public:
  explicit EntryEditor(QWidget* parent = nullptr);

  // The account the form writes into; refills the type list, suggestions
  // and transfer accounts. nullptr disables the form.
  void setAccount(tarn::TARNBook* book, tarn::TARNAccount* account);
  // Shows the form of the entry numbered `entryNumber`, or of a new entry
  // when it is -1.
  void showForm(const tarn::EntryForm& form, std::int32_t entryNumber);
  // A blank form for a new entry dated today.
  void clearForNewEntry();
  // What the fields say; nullopt (with `problem` set) when a field cannot be
  // read, such as an amount that is no number.
  std::optional<tarn::EntryForm> form(QString* problem) const;
  bool isEditing() const { return editingNumber_ >= 0; }
  std::int32_t editingNumber() const { return editingNumber_; }

 signals:
  void recordRequested();
  void newRequested();
  void voidRequested();
  void removeRequested();

 private:
  void typeChanged();
  void transferChanged();
  void splitToggled(bool on);
  void addSplitLine(const tarn::EntryFormSplit& split);
  void refillSuggestions();
  bool currentTypeIsDeposit() const;
  // The currency of the other account of a transfer (the form's own when
  // there is none).
  const tarn::PFCurrency& transferCurrency(std::int32_t account) const;

  tarn::TARNBook* book_ = nullptr;
  tarn::TARNAccount* account_ = nullptr;
  std::int32_t editingNumber_ = -1;
  QComboBox* month_;
  QSpinBox* day_;
  QSpinBox* year_;
  QComboBox* type_;
  QLineEdit* checkNumber_;
  QLineEdit* toFrom_;
  QLineEdit* description_;
  QLineEdit* category_;
  QLineEdit* amount_;
  QLineEdit* notes_;
  QCheckBox* cleared_;
  QCheckBox* taxDeductible_;
  QComboBox* transfer_;
  QLabel* exchangedLabel_;
  QLineEdit* exchanged_;
  QCheckBox* split_;
  QTableWidget* splits_;
  QPushButton* addLine_;
  QPushButton* removeLine_;
  QPushButton* new_;
  QPushButton* record_;
  QPushButton* void_;
  QPushButton* remove_;
};
