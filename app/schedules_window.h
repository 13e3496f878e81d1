// The scheduled entries of one account: each schedule with its rule, end,
// weekend rule and next date; the occurrences due by today with Enter and
// Skip; and the selected schedule's rule to edit. Every change goes through
// the document's undo stack, so the window's Undo takes it back.
#pragma once

#include <QDialog>

#include <cstdint>

class BookDocument;
class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QPushButton;
class QSpinBox;
class QTableWidget;

class SchedulesWindow : public QDialog {
  Q_OBJECT

 public:
  SchedulesWindow(BookDocument* document, std::int32_t account, QWidget* parent = nullptr);

  std::int32_t account() const { return account_; }
  void setAccount(std::int32_t account);

 private:
  void refresh();
  void scheduleSelectionChanged();
  void ruleControlsChanged();
  void enterOrSkip(bool enter);
  void applyRule();
  std::int32_t selectedSchedule() const;

  BookDocument* document_;
  std::int32_t account_;
  bool loading_ = false;

  QLabel* title_ = nullptr;
  QTableWidget* schedules_ = nullptr;
  QLabel* dueLabel_ = nullptr;
  QTableWidget* due_ = nullptr;
  QPushButton* enter_ = nullptr;
  QPushButton* skip_ = nullptr;
  QComboBox* rule_ = nullptr;
  QSpinBox* interval_ = nullptr;
  QCheckBox* friday_ = nullptr;
  QComboBox* until_ = nullptr;
  QSpinBox* count_ = nullptr;
  QDateEdit* endDate_ = nullptr;
  QPushButton* apply_ = nullptr;
};
