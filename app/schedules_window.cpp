#include "schedules_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

#include <stdexcept>
#include <vector>

#include "book_document.h"
#include "money_text.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/book_changes.h"
#include "tarn/book/due_schedules.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/schedule_recurrence.h"

namespace {

constexpr int kRoleSchedule = Qt::UserRole;
constexpr int kRoleDate = Qt::UserRole + 1;

QString DateText(tarn::DateNumber date) {
  return QString::asprintf("%04d-%02d-%02d", date / 10000, date / 100 % 100, date % 100);
}

QDate ToQDate(tarn::DateNumber date) {
  return QDate(date / 10000, date / 100 % 100, date % 100);
}

tarn::DateNumber FromQDate(const QDate& date) {
  return date.year() * 10000 + date.month() * 100 + date.day();
}

// The rules a user picks from, in the order of the pop-up; those with "N"
// take the interval.
constexpr std::int32_t kRules[] = {
    tarn::kRepeatDaily,        tarn::kRepeatWeekly,         tarn::kRepeatEveryTwoWeeks,
    tarn::kRepeatMonthly,      tarn::kRepeatLastDayOfMonth, tarn::kRepeatQuarterly,
    tarn::kRepeatEndOfQuarter, tarn::kRepeatYearly,         tarn::kRepeatEveryNDays,
    tarn::kRepeatEveryNWeeks,  tarn::kRepeatEveryNMonths,   tarn::kRepeatEveryNQuarters,
    tarn::kRepeatEveryNYears};

bool TakesInterval(std::int32_t rule) {
  return rule >= tarn::kRepeatEveryNDays;
}

QString RuleName(std::int32_t rule) {
  if (!TakesInterval(rule)) {
    QString name = QString::fromStdString(tarn::DescribeRepeatRule(rule, 1));
    name[0] = name[0].toUpper();
    return name;
  }
  switch (rule) {
    case tarn::kRepeatEveryNDays:
      return QObject::tr("Every N days");
    case tarn::kRepeatEveryNWeeks:
      return QObject::tr("Every N weeks");
    case tarn::kRepeatEveryNMonths:
      return QObject::tr("Every N months");
    case tarn::kRepeatEveryNQuarters:
      return QObject::tr("Every N quarters");
    default:
      return QObject::tr("Every N years");
  }
}

QString EndText(const tarn::TARNAccountSchedule& schedule) {
  switch (schedule.GetRepeatUntilType()) {
    case tarn::kRepeatUntilCount:
      return QObject::tr("after %1 entries").arg(schedule.GetRepeatUntil());
    case tarn::kRepeatUntilDate:
      return QObject::tr("on %1").arg(DateText(schedule.GetRepeatUntil()));
    default:
      return QObject::tr("never");
  }
}

QTableWidget* MakeTable(const char* name, const QStringList& headers) {
  auto* table = new QTableWidget(0, static_cast<int>(headers.size()));
  table->setObjectName(QString::fromLatin1(name));
  table->setHorizontalHeaderLabels(headers);
  table->setSelectionBehavior(QAbstractItemView::SelectRows);
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->verticalHeader()->hide();
  table->horizontalHeader()->setStretchLastSection(false);
  return table;
}

}  // namespace

SchedulesWindow::SchedulesWindow(BookDocument* document, std::int32_t account, QWidget* parent)
    : QDialog(parent), document_(document), account_(account) {
  setObjectName(QStringLiteral("schedulesWindow"));
  setWindowTitle(tr("Scheduled Entries"));
  auto* layout = new QVBoxLayout(this);

  title_ = new QLabel;
  QFont bold = title_->font();
  bold.setBold(true);
  title_->setFont(bold);
  layout->addWidget(title_);

  schedules_ = MakeTable("schedules", {tr("Description"), tr("Amount"), tr("Repeats"), tr("Ends"),
                                       tr("Weekends"), tr("Next")});
  schedules_->setSelectionMode(QAbstractItemView::SingleSelection);
  schedules_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
  layout->addWidget(schedules_, 3);

  auto* ruleBox = new QGroupBox(tr("Repeat rule of the selected schedule"));
  auto* form = new QFormLayout(ruleBox);
  auto* ruleRow = new QHBoxLayout;
  rule_ = new QComboBox;
  rule_->setObjectName(QStringLiteral("repeatRule"));
  for (std::int32_t rule : kRules) rule_->addItem(RuleName(rule), rule);
  interval_ = new QSpinBox;
  interval_->setObjectName(QStringLiteral("repeatInterval"));
  interval_->setRange(1, 999);
  interval_->setPrefix(tr("N = "));
  ruleRow->addWidget(rule_);
  ruleRow->addWidget(interval_);
  ruleRow->addStretch();
  form->addRow(tr("Repeats:"), ruleRow);
  auto* endRow = new QHBoxLayout;
  until_ = new QComboBox;
  until_->setObjectName(QStringLiteral("repeatUntilType"));
  until_->addItem(tr("Never"), tarn::kRepeatUntilForever);
  until_->addItem(tr("After a number of entries"), tarn::kRepeatUntilCount);
  until_->addItem(tr("On a date"), tarn::kRepeatUntilDate);
  count_ = new QSpinBox;
  count_->setObjectName(QStringLiteral("repeatCount"));
  count_->setRange(1, 100000);
  count_->setSuffix(tr(" entries"));
  endDate_ = new QDateEdit;
  endDate_->setObjectName(QStringLiteral("repeatUntilDate"));
  endDate_->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
  endDate_->setCalendarPopup(true);
  endRow->addWidget(until_);
  endRow->addWidget(count_);
  endRow->addWidget(endDate_);
  endRow->addStretch();
  form->addRow(tr("Ends:"), endRow);
  friday_ = new QCheckBox(tr("A date on a weekend moves to the Friday before"));
  friday_->setObjectName(QStringLiteral("usePrecedingFriday"));
  form->addRow(tr("Weekends:"), friday_);
  apply_ = new QPushButton(tr("Apply"));
  apply_->setObjectName(QStringLiteral("applyRule"));
  auto* applyRow = new QHBoxLayout;
  applyRow->addStretch();
  applyRow->addWidget(apply_);
  form->addRow(applyRow);
  layout->addWidget(ruleBox);

  dueLabel_ = new QLabel;
  layout->addWidget(dueLabel_);
  due_ = MakeTable("dueEntries", {tr("Date"), tr("Description"), tr("Amount")});
  due_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  due_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
  layout->addWidget(due_, 2);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  skip_ = new QPushButton(tr("Skip"));
  skip_->setObjectName(QStringLiteral("skipDue"));
  enter_ = new QPushButton(tr("Enter"));
  enter_->setObjectName(QStringLiteral("enterDue"));
  buttons->addWidget(skip_);
  buttons->addWidget(enter_);
  layout->addLayout(buttons);

  connect(schedules_, &QTableWidget::itemSelectionChanged, this,
          &SchedulesWindow::scheduleSelectionChanged);
  connect(due_, &QTableWidget::itemSelectionChanged, this, [this] {
    const bool any = !due_->selectedItems().isEmpty();
    enter_->setEnabled(any);
    skip_->setEnabled(any);
  });
  connect(rule_, &QComboBox::currentIndexChanged, this, &SchedulesWindow::ruleControlsChanged);
  connect(until_, &QComboBox::currentIndexChanged, this, &SchedulesWindow::ruleControlsChanged);
  connect(enter_, &QPushButton::clicked, this, [this] { enterOrSkip(true); });
  connect(skip_, &QPushButton::clicked, this, [this] { enterOrSkip(false); });
  connect(apply_, &QPushButton::clicked, this, &SchedulesWindow::applyRule);
  connect(document_, &BookDocument::changed, this, [this](std::int32_t account) {
    if (account < 0 || account == account_) refresh();
  });

  resize(760, 560);
  refresh();
}

void SchedulesWindow::setAccount(std::int32_t account) {
  account_ = account;
  refresh();
}

std::int32_t SchedulesWindow::selectedSchedule() const {
  const auto rows = schedules_->selectionModel()->selectedRows();
  if (rows.isEmpty()) return -1;
  return schedules_->item(rows.first().row(), 0)->data(kRoleSchedule).toInt();
}

void SchedulesWindow::refresh() {
  const std::int32_t keep = selectedSchedule();
  const QSignalBlocker blockSchedules(schedules_);
  schedules_->setRowCount(0);
  due_->setRowCount(0);
  auto account = document_->book().accountWithNumber(account_);
  if (!account || !account->IsAuthenticated()) {
    dueLabel_->clear();
    title_->setText(account ? tr("%1 is locked").arg(QString::fromStdString(account->GetName()))
                            : tr("No account selected"));
    scheduleSelectionChanged();
    enter_->setEnabled(false);
    skip_->setEnabled(false);
    return;
  }
  title_->setText(tr("Scheduled entries of %1").arg(QString::fromStdString(account->GetName())));
  int selectRow = -1;
  for (const auto& schedule : account->GetSchedules()) {
    const int row = schedules_->rowCount();
    schedules_->insertRow(row);
    auto* description = new QTableWidgetItem(QString::fromStdString(schedule->GetDescription()));
    description->setData(kRoleSchedule, schedule->GetNumber());
    schedules_->setItem(row, 0, description);
    auto* amount = new QTableWidgetItem(MoneyText(account.get(), schedule->GetAmount()));
    amount->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    schedules_->setItem(row, 1, amount);
    schedules_->setItem(row, 2,
                        new QTableWidgetItem(QString::fromStdString(tarn::DescribeRepeatRule(
                            schedule->GetRepeatIntervalType(), schedule->GetRepeatInterval()))));
    schedules_->setItem(row, 3, new QTableWidgetItem(EndText(*schedule)));
    schedules_->setItem(
        row, 4,
        new QTableWidgetItem(schedule->GetUsePrecedingFriday() ? tr("Friday before")
                                                               : tr("as they fall")));
    const tarn::DateNumber next = schedule->NextEntryDate();
    schedules_->setItem(row, 5, new QTableWidgetItem(next > 0 ? DateText(next) : tr("done")));
    if (schedule->GetNumber() == keep) selectRow = row;
  }
  schedules_->resizeColumnsToContents();
  schedules_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
  if (selectRow < 0 && schedules_->rowCount() > 0) selectRow = 0;
  if (selectRow >= 0) schedules_->selectRow(selectRow);

  const tarn::CalendarDate today = tarn::CalendarDate::now();
  const auto dueOccurrences = tarn::DueOccurrences(*account, today);
  dueLabel_->setText(dueOccurrences.empty()
                         ? tr("Nothing is due by today, %1.").arg(DateText(today.dateNumber()))
                         : tr("Due by today, %1:").arg(DateText(today.dateNumber())));
  for (const auto& due : dueOccurrences) {
    const int row = due_->rowCount();
    due_->insertRow(row);
    auto* date = new QTableWidgetItem(DateText(due.date));
    date->setData(kRoleSchedule, due.schedule);
    date->setData(kRoleDate, due.date);
    due_->setItem(row, 0, date);
    due_->setItem(row, 1, new QTableWidgetItem(QString::fromStdString(due.description)));
    auto* amount = new QTableWidgetItem(MoneyText(account.get(), due.amount));
    amount->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    due_->setItem(row, 2, amount);
  }
  due_->resizeColumnsToContents();
  due_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
  enter_->setEnabled(false);
  skip_->setEnabled(false);
  scheduleSelectionChanged();
}

void SchedulesWindow::scheduleSelectionChanged() {
  const QSignalBlocker blockRule(rule_);
  const QSignalBlocker blockUntil(until_);
  auto account = document_->book().accountWithNumber(account_);
  auto schedule = account ? tarn::ScheduleWithNumber(*account, selectedSchedule()) : nullptr;
  for (QWidget* each : {static_cast<QWidget*>(rule_), static_cast<QWidget*>(interval_),
                        static_cast<QWidget*>(until_), static_cast<QWidget*>(count_),
                        static_cast<QWidget*>(endDate_), static_cast<QWidget*>(friday_),
                        static_cast<QWidget*>(apply_)}) {
    each->setEnabled(schedule != nullptr);
  }
  if (!schedule) return;
  // A stored rule the pop-up does not offer shows as the first until the
  // user picks one.
  rule_->setCurrentIndex(std::max(0, rule_->findData(schedule->GetRepeatIntervalType())));
  interval_->setValue(std::max(1, schedule->GetRepeatInterval()));
  until_->setCurrentIndex(std::max(0, until_->findData(schedule->GetRepeatUntilType())));
  const std::int32_t until = schedule->GetRepeatUntil();
  count_->setValue(schedule->GetRepeatUntilType() == tarn::kRepeatUntilCount ? std::max(1, until)
                                                                             : 12);
  const QDate endDate = ToQDate(until);
  endDate_->setDate(schedule->GetRepeatUntilType() == tarn::kRepeatUntilDate && endDate.isValid()
                        ? endDate
                        : ToQDate(tarn::CalendarDate::now().dateNumber()).addYears(1));
  friday_->setChecked(schedule->GetUsePrecedingFriday());
  ruleControlsChanged();
}

void SchedulesWindow::ruleControlsChanged() {
  const bool editable = apply_->isEnabled();
  interval_->setVisible(TakesInterval(rule_->currentData().toInt()));
  interval_->setEnabled(editable);
  const int until = until_->currentData().toInt();
  count_->setVisible(until == tarn::kRepeatUntilCount);
  endDate_->setVisible(until == tarn::kRepeatUntilDate);
}

void SchedulesWindow::enterOrSkip(bool enter) {
  auto account = document_->book().accountWithNumber(account_);
  const auto rows = due_->selectionModel()->selectedRows();
  if (!account || rows.isEmpty()) return;
  tarn::AccountChange change(document_->book(), account_, {.schedules = true});
  std::vector<tarn::EntryKey> added;
  try {
    for (const QModelIndex& row : rows) {
      const QTableWidgetItem* item = due_->item(row.row(), 0);
      const std::int32_t schedule = item->data(kRoleSchedule).toInt();
      const tarn::DateNumber date = item->data(kRoleDate).toInt();
      if (enter) {
        const auto entry = tarn::EnterOccurrence(*account, schedule, date);
        added.push_back({account_, entry->GetNumber()});
      } else {
        tarn::SkipOccurrence(*account, schedule, date);
      }
    }
  } catch (const std::exception& error) {
    // Whatever was entered before the failure is taken back.
    change.finish(document_->book(), added);
    change.undo(document_->book());
    document_->notifyChanged(account_);
    QMessageBox::warning(this, tr("Tarn"), QString::fromStdString(error.what()));
    return;
  }
  const QString text =
      enter ? (rows.size() == 1 ? tr("Enter Scheduled Entry") : tr("Enter Scheduled Entries"))
            : (rows.size() == 1 ? tr("Skip Scheduled Entry") : tr("Skip Scheduled Entries"));
  change.finish(document_->book(), added);
  document_->pushAccountChange(text, std::move(change), -1);
}

void SchedulesWindow::applyRule() {
  auto account = document_->book().accountWithNumber(account_);
  auto schedule = account ? tarn::ScheduleWithNumber(*account, selectedSchedule()) : nullptr;
  if (!schedule) return;
  const std::int32_t rule = rule_->currentData().toInt();
  const std::int32_t interval = TakesInterval(rule) ? interval_->value() : 1;
  const std::int32_t untilType = until_->currentData().toInt();
  std::int32_t until = 0;
  if (untilType == tarn::kRepeatUntilCount) until = count_->value();
  if (untilType == tarn::kRepeatUntilDate) {
    until = FromQDate(endDate_->date());
    if (until < schedule->GetDate()) {
      QMessageBox::warning(this, tr("Tarn"),
                           tr("The schedule cannot end before its first date, %1.")
                               .arg(DateText(schedule->GetDate())));
      return;
    }
  }
  const bool friday = friday_->isChecked();
  if (rule == schedule->GetRepeatIntervalType() && interval == schedule->GetRepeatInterval() &&
      untilType == schedule->GetRepeatUntilType() && until == schedule->GetRepeatUntil() &&
      friday == schedule->GetUsePrecedingFriday()) {
    return;
  }
  tarn::AccountChange change(document_->book(), account_, {.schedules = true});
  schedule->SetRepeatIntervalType(rule);
  schedule->SetRepeatInterval(interval);
  schedule->SetRepeatUntilType(untilType);
  schedule->SetRepeatUntil(until);
  schedule->SetUsePrecedingFriday(friday);
  change.finish(document_->book());
  document_->pushAccountChange(tr("Change Schedule"), std::move(change), -1);
}
