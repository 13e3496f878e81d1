// Fields, suggestions and keyboard order of the entry form.

#include "entry_editor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStringList>
#include <QTableWidget>

#include <cmath>

#include "money_text.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/ui/day_field_binding.h"

namespace {

QStringList ToQt(const std::vector<std::string>& list) {
  QStringList out;
  out.reserve(static_cast<qsizetype>(list.size()));
  for (const auto& text : list) out << QString::fromStdString(text);
  return out;
}

void SetCompletions(QLineEdit* field, const QStringList& list) {
  auto* completer = new QCompleter(list, field);
  completer->setCaseSensitivity(Qt::CaseInsensitive);
  completer->setFilterMode(Qt::MatchStartsWith);
  delete field->completer();
  field->setCompleter(completer);
}

// The size of an amount as typed in the currency: the sign is dropped, the
// type says which way the money goes.
std::optional<double> ReadSize(const tarn::PFCurrency& currency, const QString& text) {
  const auto value = ReadMoney(currency, text);
  if (!value || !std::isfinite(*value)) return std::nullopt;
  return std::fabs(*value);
}

QLineEdit* Field(QWidget* parent, const char* name, const QString& placeholder) {
  auto* field = new QLineEdit(parent);
  field->setObjectName(QString::fromLatin1(name));
  field->setPlaceholderText(placeholder);
  return field;
}

}  // namespace

EntryEditor::EntryEditor(QWidget* parent) : QWidget(parent) {
  setObjectName("entryEditor");
  // The date as a paper register has it: month, day, year; the day field
  // never offers a day the month lacks.
  month_ = new QComboBox(this);
  month_->setObjectName("entryMonth");
  for (const char* name :
       {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"}) {
    month_->addItem(tr(name));
  }
  day_ = new QSpinBox(this);
  day_->setObjectName("entryDay");
  day_->setRange(1, 31);
  year_ = new QSpinBox(this);
  year_->setObjectName("entryYear");
  year_->setRange(1900, 2999);
  year_->setGroupSeparatorShown(false);
  new tarn::DayFieldBinding(day_, month_, year_);
  auto* date = new QWidget(this);
  auto* dateRow = new QHBoxLayout(date);
  dateRow->setContentsMargins(0, 0, 0, 0);
  dateRow->setSpacing(2);
  dateRow->addWidget(month_);
  dateRow->addWidget(day_);
  dateRow->addWidget(year_);
  type_ = new QComboBox(this);
  type_->setObjectName("entryType");
  checkNumber_ = Field(this, "entryCheckNumber", tr("No."));
  checkNumber_->setAlignment(Qt::AlignRight);
  checkNumber_->setMaximumWidth(70);
  toFrom_ = Field(this, "entryToFrom", tr("To/From"));
  description_ = Field(this, "entryDescription", tr("Description"));
  category_ = Field(this, "entryCategory", tr("Category"));
  amount_ = Field(this, "entryAmount", tr("Amount"));
  amount_->setAlignment(Qt::AlignRight);
  notes_ = Field(this, "entryNotes", tr("Notes"));
  cleared_ = new QCheckBox(tr("Resolved"), this);
  cleared_->setObjectName("entryCleared");
  taxDeductible_ = new QCheckBox(tr("Tax-deductible"), this);
  taxDeductible_->setObjectName("entryTaxDeductible");
  transfer_ = new QComboBox(this);
  transfer_->setObjectName("entryTransfer");
  exchangedLabel_ = new QLabel(tr("They receive:"), this);
  exchanged_ = Field(this, "entryExchanged", tr("Amount in their currency"));
  exchanged_->setAlignment(Qt::AlignRight);
  split_ = new QCheckBox(tr("Split"), this);
  split_->setObjectName("entrySplit");
  splits_ = new QTableWidget(0, 3, this);
  splits_->setObjectName("entrySplits");
  splits_->setHorizontalHeaderLabels({tr("Category"), tr("Description"), tr("Amount")});
  splits_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
  splits_->verticalHeader()->hide();
  splits_->setMaximumHeight(110);
  splits_->setEditTriggers(QAbstractItemView::AllEditTriggers);
  addLine_ = new QPushButton(tr("Add Line"), this);
  addLine_->setObjectName("entryAddLine");
  removeLine_ = new QPushButton(tr("Remove Line"), this);
  removeLine_->setObjectName("entryRemoveLine");
  new_ = new QPushButton(tr("New"), this);
  new_->setObjectName("entryNew");
  record_ = new QPushButton(tr("Record"), this);
  record_->setObjectName("entryRecord");
  record_->setDefault(true);
  void_ = new QPushButton(tr("Void"), this);
  void_->setObjectName("entryVoid");
  remove_ = new QPushButton(tr("Remove"), this);
  remove_->setObjectName("entryRemove");

  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(6, 6, 6, 6);
  int column = 0;
  for (auto [label, widget] :
       std::initializer_list<std::pair<QString, QWidget*>>{{tr("Date"), date},
                                                           {tr("Type"), type_},
                                                           {tr("No."), checkNumber_},
                                                           {tr("To/From"), toFrom_},
                                                           {tr("Description"), description_},
                                                           {tr("Category"), category_},
                                                           {tr("Amount"), amount_}}) {
    grid->addWidget(new QLabel(label, this), 0, column);
    grid->addWidget(widget, 1, column);
    ++column;
  }
  grid->setColumnStretch(3, 2);
  grid->setColumnStretch(4, 3);
  grid->setColumnStretch(5, 2);
  grid->setColumnStretch(6, 1);
  auto* second = new QHBoxLayout;
  second->addWidget(new QLabel(tr("Notes"), this));
  second->addWidget(notes_, 3);
  second->addWidget(cleared_);
  second->addWidget(taxDeductible_);
  second->addWidget(new QLabel(tr("Transfer to"), this));
  second->addWidget(transfer_, 1);
  second->addWidget(exchangedLabel_);
  second->addWidget(exchanged_, 1);
  grid->addLayout(second, 2, 0, 1, column);
  auto* splitRow = new QHBoxLayout;
  splitRow->addWidget(split_);
  splitRow->addWidget(splits_, 1);
  auto* splitButtons = new QVBoxLayout;
  splitButtons->addWidget(addLine_);
  splitButtons->addWidget(removeLine_);
  splitButtons->addStretch();
  splitRow->addLayout(splitButtons);
  grid->addLayout(splitRow, 3, 0, 1, column);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(new_);
  buttons->addWidget(void_);
  buttons->addWidget(remove_);
  buttons->addWidget(record_);
  grid->addLayout(buttons, 4, 0, 1, column);

  // A paper register's order.
  QWidget* order[] = {month_,       day_,       year_,   type_,   checkNumber_, toFrom_,
                      description_, category_,  amount_, notes_,  cleared_,     taxDeductible_,
                      transfer_,    exchanged_, split_,  splits_, record_};
  for (std::size_t i = 0; i + 1 < std::size(order); ++i) setTabOrder(order[i], order[i + 1]);

  for (QLineEdit* field :
       {checkNumber_, toFrom_, description_, category_, amount_, notes_, exchanged_}) {
    connect(field, &QLineEdit::returnPressed, this, &EntryEditor::recordRequested);
  }
  connect(record_, &QPushButton::clicked, this, &EntryEditor::recordRequested);
  connect(new_, &QPushButton::clicked, this, &EntryEditor::newRequested);
  connect(void_, &QPushButton::clicked, this, &EntryEditor::voidRequested);
  connect(remove_, &QPushButton::clicked, this, &EntryEditor::removeRequested);
  connect(type_, &QComboBox::currentIndexChanged, this, &EntryEditor::typeChanged);
  connect(transfer_, &QComboBox::currentIndexChanged, this, &EntryEditor::transferChanged);
  connect(split_, &QCheckBox::toggled, this, &EntryEditor::splitToggled);
  connect(addLine_, &QPushButton::clicked, this, [this] { addSplitLine({}); });
  connect(removeLine_, &QPushButton::clicked, this, [this] {
    if (splits_->currentRow() >= 0) splits_->removeRow(splits_->currentRow());
  });
  splitToggled(false);
  setEnabled(false);
  // The register takes the height; the form keeps what its fields need.
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
}

void EntryEditor::setAccount(tarn::TARNBook* book, tarn::TARNAccount* account) {
  book_ = book;
  account_ = account;
  setEnabled(account && account->IsAuthenticated());
  const QSignalBlocker typeBlock(type_);
  const QSignalBlocker transferBlock(transfer_);
  type_->clear();
  transfer_->clear();
  if (!account) return;
  // Room for a large amount in the account's format.
  amount_->setMinimumWidth(
      amount_->fontMetrics().horizontalAdvance(MoneyText(account, 999999.99).trimmed()) + 16);
  for (const auto& type : account->types()) {
    type_->addItem(QString::fromStdString(type->GetName()), type->GetIsDeposit());
  }
  transfer_->addItem(tr("No transfer"), -1);
  for (const auto& other : book->accounts()) {
    if (other.get() != account) {
      transfer_->addItem(QString::fromStdString(other->GetName()), other->GetNumber());
    }
  }
  QStringList categories;
  for (const auto& category : book->allCategories()) {
    categories << QString::fromStdString(category->fullName());
  }
  SetCompletions(category_, categories);
  clearForNewEntry();
}

const tarn::PFCurrency& EntryEditor::transferCurrency(std::int32_t account) const {
  auto other = book_ ? book_->accountWithNumber(account) : nullptr;
  return CurrencyOf(other ? other.get() : account_);
}

bool EntryEditor::currentTypeIsDeposit() const {
  return type_->currentData().toBool();
}

void EntryEditor::refillSuggestions() {
  if (!account_ || !account_->IsAuthenticated()) return;
  const bool deposit = currentTypeIsDeposit();
  // The lists the account's suggestion preferences pick (all, the most
  // recent, or the user's own), every text when the preference is unknown.
  auto parties = deposit ? account_->GetPreferredFroms() : account_->GetPreferredTos();
  if (!parties) parties = deposit ? account_->Froms_All() : account_->Tos_All();
  auto descriptions = deposit ? account_->GetPreferredDepositDescriptions()
                              : account_->GetPreferredDebitDescriptions();
  if (!descriptions) {
    descriptions =
        deposit ? account_->DepositDescriptions_All() : account_->DebitDescriptions_All();
  }
  SetCompletions(toFrom_, ToQt(*parties));
  SetCompletions(description_, ToQt(*descriptions));
}

void EntryEditor::typeChanged() {
  if (!account_) return;
  tarn::EntryForm probe;
  probe.deposit = currentTypeIsDeposit();
  probe.type = type_->currentText().toStdString();
  const bool check = tarn::EntryFormIsCheck(*account_, probe);
  checkNumber_->setEnabled(check);
  if (check && checkNumber_->text().isEmpty()) {
    checkNumber_->setText(QString::number(account_->NextAvailableCheckNumber()));
  } else if (!check) {
    checkNumber_->clear();
  }
  refillSuggestions();
}

void EntryEditor::transferChanged() {
  bool otherCurrency = false;
  if (book_ && account_) {
    if (auto other = book_->accountWithNumber(transfer_->currentData().toInt())) {
      otherCurrency = other->currency() != account_->currency();
    }
  }
  exchangedLabel_->setVisible(otherCurrency);
  exchanged_->setVisible(otherCurrency);
  split_->setEnabled(transfer_->currentData().toInt() < 0);
}

void EntryEditor::splitToggled(bool on) {
  splits_->setVisible(on);
  addLine_->setVisible(on);
  removeLine_->setVisible(on);
  category_->setEnabled(!on);
  amount_->setReadOnly(on);
  transfer_->setEnabled(!on);
  if (on && splits_->rowCount() == 0) {
    addSplitLine({category_->text().toStdString(), "",
                  ReadSize(CurrencyOf(account_), amount_->text()).value_or(0)});
    addSplitLine({});
  }
}

void EntryEditor::addSplitLine(const tarn::EntryFormSplit& split) {
  const int row = splits_->rowCount();
  splits_->insertRow(row);
  splits_->setItem(row, 0, new QTableWidgetItem(QString::fromStdString(split.category)));
  splits_->setItem(row, 1, new QTableWidgetItem(QString::fromStdString(split.description)));
  auto* amount = new QTableWidgetItem(
      split.amount != 0 ? MoneyText(CurrencyOf(account_), std::fabs(split.amount)).trimmed()
                        : QString());
  amount->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
  splits_->setItem(row, 2, amount);
}

void EntryEditor::showForm(const tarn::EntryForm& form, std::int32_t entryNumber) {
  editingNumber_ = entryNumber;
  const bool editing = entryNumber >= 0;
  year_->setValue(form.date / 10000);
  month_->setCurrentIndex(form.date / 100 % 100 - 1);
  day_->setValue(form.date % 100);
  int typeIndex = -1;
  for (int i = 0; i < type_->count(); ++i) {
    if (type_->itemText(i).compare(QString::fromStdString(form.type), Qt::CaseInsensitive) == 0 &&
        type_->itemData(i).toBool() == form.deposit) {
      typeIndex = i;
    }
  }
  checkNumber_->setText(form.checkNumber ? QString::number(*form.checkNumber) : QString());
  type_->setCurrentIndex(typeIndex);
  typeChanged();
  toFrom_->setText(QString::fromStdString(form.toFrom));
  description_->setText(QString::fromStdString(form.description));
  // A split entry's categories are on its lines.
  category_->setText(form.splits.empty() ? QString::fromStdString(form.category) : QString());
  const tarn::PFCurrency& currency = CurrencyOf(account_);
  amount_->setText(form.amount != 0 || editing
                       ? MoneyText(currency, std::fabs(form.amount)).trimmed()
                       : QString());
  notes_->setText(QString::fromStdString(form.notes));
  cleared_->setChecked(form.cleared);
  taxDeductible_->setChecked(form.taxDeductible);
  transfer_->setCurrentIndex(std::max(0, transfer_->findData(form.transferAccount)));
  exchanged_->setText(form.exchangedAmount ? MoneyText(transferCurrency(form.transferAccount),
                                                       std::fabs(*form.exchangedAmount))
                                                 .trimmed()
                                           : QString());
  transferChanged();
  splits_->setRowCount(0);
  for (const auto& split : form.splits) addSplitLine(split);
  const QSignalBlocker block(split_);
  split_->setChecked(!form.splits.empty());
  splits_->setVisible(!form.splits.empty());
  addLine_->setVisible(!form.splits.empty());
  removeLine_->setVisible(!form.splits.empty());
  category_->setEnabled(form.splits.empty());
  amount_->setReadOnly(!form.splits.empty());
  transfer_->setEnabled(form.splits.empty());
  void_->setEnabled(editing);
  remove_->setEnabled(editing);
}

void EntryEditor::clearForNewEntry() {
  if (!account_) return;
  showForm(tarn::NewEntryForm(*account_, tarn::CalendarDate::now().dateNumber()), -1);
  month_->setFocus();
}

std::optional<tarn::EntryForm> EntryEditor::form(QString* problem) const {
  tarn::EntryForm form;
  form.date = year_->value() * 10000 + (month_->currentIndex() + 1) * 100 + day_->value();
  form.deposit = currentTypeIsDeposit();
  form.type = type_->currentText().toStdString();
  if (checkNumber_->isEnabled() && !checkNumber_->text().trimmed().isEmpty()) {
    bool ok = false;
    const int number = checkNumber_->text().trimmed().toInt(&ok);
    if (!ok || number < 0) {
      *problem = tr("\"%1\" is not a check number.").arg(checkNumber_->text());
      return std::nullopt;
    }
    form.checkNumber = number;
  }
  form.toFrom = toFrom_->text().trimmed().toStdString();
  form.description = description_->text().trimmed().toStdString();
  form.notes = notes_->text().toStdString();
  form.cleared = cleared_->isChecked();
  form.taxDeductible = taxDeductible_->isChecked();
  const tarn::PFCurrency& currency = CurrencyOf(account_);
  if (split_->isChecked()) {
    for (int row = 0; row < splits_->rowCount(); ++row) {
      auto text = [&](int column) {
        auto* item = splits_->item(row, column);
        return item ? item->text().trimmed() : QString();
      };
      if (text(0).isEmpty() && text(1).isEmpty() && text(2).isEmpty()) continue;
      const auto amount = ReadSize(currency, text(2));
      if (!amount) {
        *problem = NotAnAmount(currency, text(2));
        return std::nullopt;
      }
      form.splits.push_back({text(0).toStdString(), text(1).toStdString(), *amount});
    }
  } else {
    form.category = category_->text().trimmed().toStdString();
    const auto amount = ReadSize(currency, amount_->text());
    if (!amount) {
      *problem = NotAnAmount(currency, amount_->text());
      return std::nullopt;
    }
    form.amount = *amount;
  }
  form.transferAccount = transfer_->currentData().toInt();
  if (!exchanged_->isHidden() && !exchanged_->text().trimmed().isEmpty()) {
    const tarn::PFCurrency& other = transferCurrency(form.transferAccount);
    const auto exchanged = ReadSize(other, exchanged_->text());
    if (!exchanged) {
      *problem = NotAnAmount(other, exchanged_->text());
      return std::nullopt;
    }
    form.exchangedAmount = *exchanged;
  }
  return form;
}
