// Rows, cells and sorting of the register table.

#include "register_model.h"

#include <QBrush>
#include <QColor>
#include <QFont>

#include "money_text.h"
#include "tarn/account/account.h"
#include "tarn/account/accounts_controller.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"

using tarn::TARNAccount;

namespace {

QString DateText(tarn::DateNumber date) {
  return QString::asprintf("%04d-%02d-%02d", date / 10000, date / 100 % 100, date % 100);
}

// The account's sort code of a column; the balance follows the register's
// date order and the category, which has no code, does too.
int SortCode(int column) {
  switch (column) {
    case RegisterModel::kCheckNumber:
      return TARNAccount::kSortColumnCheckNumber;
    case RegisterModel::kType:
      return TARNAccount::kSortColumnType;
    case RegisterModel::kDescription:
      return TARNAccount::kSortColumnDescription;
    case RegisterModel::kToFrom:
      return TARNAccount::kSortColumnToFrom;
    case RegisterModel::kResolved:
      return TARNAccount::kSortColumnResolved;
    case RegisterModel::kAmount:
      return TARNAccount::kSortColumnAmount;
    default:
      return TARNAccount::kSortColumnDate;
  }
}

void AddCategoryNames(QHash<int, QString>& names,
                      const std::shared_ptr<tarn::TARNAccountEntryCategory>& category) {
  names.insert(category->number(), QString::fromStdString(category->fullName()));
  for (const auto& child : category->children()) AddCategoryNames(names, child);
}

}  // namespace

RegisterModel::RegisterModel(QObject* parent)
    : QAbstractTableModel(parent), formatter_(CurrencyOf(nullptr).formatter()) {}

void RegisterModel::setAccount(TARNAccount* account, View view) {
  account_ = account;
  view_ = view;
  refresh(true);
}

void RegisterModel::refresh(bool balancesChanged) {
  beginResetModel();
  rows_.clear();
  if (account_ && account_->IsAuthenticated()) {
    if (balancesChanged) {
      account_->CacheRunningBalances();
      rebuildNames();
      // A change of the account's currency, or of the currency itself,
      // comes as a change of the book.
      formatter_ = CurrencyOf(account_).formatter();
    }
    rows_ = view_ == View::Register ? account_->entryFilteredEntries()
                                    : account_->reconcileFilteredEntries();
    sortRows();
  }
  endResetModel();
}

void RegisterModel::rebuildNames() {
  typeNames_.clear();
  categoryNames_.clear();
  for (const auto* list : {&account_->types(), &account_->inactiveTypes()}) {
    for (const auto& type : *list) {
      typeNames_.insert(type->GetNumber(), QString::fromStdString(type->GetName()));
    }
  }
  if (auto* controller = account_->accountsController()) {
    for (const auto& category : controller->allCategories()) {
      categoryNames_.insert(category->number(), QString::fromStdString(category->fullName()));
    }
  } else {
    for (const auto& category : account_->categories()) AddCategoryNames(categoryNames_, category);
  }
}

void RegisterModel::sortRows() {
  TARNAccount::SortEntries(rows_, SortCode(sortColumn_), sortOrder_ == Qt::DescendingOrder);
}

void RegisterModel::sort(int column, Qt::SortOrder order) {
  sortColumn_ = column;
  sortOrder_ = order;
  beginResetModel();
  sortRows();
  endResetModel();
}

std::shared_ptr<tarn::TARNAccountEntry> RegisterModel::entryAt(int row) const {
  if (row < 0 || row >= static_cast<int>(rows_.size())) return nullptr;
  return rows_[static_cast<std::size_t>(row)];
}

int RegisterModel::rowOfEntry(int number) const {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (rows_[i]->GetNumber() == number) return static_cast<int>(i);
  }
  return -1;
}

int RegisterModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int RegisterModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

QString RegisterModel::formatAmount(double amount) const {
  text_.clear();
  formatter_->appendStringForObjectValue(text_, amount);
  return QString::fromUtf8(text_.data(), static_cast<qsizetype>(text_.size()));
}

QVariant RegisterModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= static_cast<int>(rows_.size())) return {};
  const tarn::TARNAccountEntry& entry = *rows_[static_cast<std::size_t>(index.row())];
  const int column = index.column();
  switch (role) {
    case Qt::DisplayRole:
      switch (column) {
        case kDate:
          return DateText(entry.GetDate());
        case kCheckNumber:
          return entry.IsCheck() && entry.GetCheckNumber() >= 0
                     ? QString::number(entry.GetCheckNumber())
                     : QString();
        case kType:
          return typeNames_.value(entry.GetType());
        case kDescription:
          return QString::fromStdString(entry.GetDescription());
        case kToFrom:
          return QString::fromStdString(entry.GetToFrom());
        case kCategory:
          return entry.splitLineItems().empty() ? categoryNames_.value(entry.GetCategory())
                                                : tr("Split");
        case kResolved:
          return entry.GetCleared() ? QStringLiteral("✓") : QString();
        case kAmount:
          return formatAmount(entry.GetAmount());
        case kBalance:
          return formatAmount(entry.GetCachedRunningBalance());
        default:
          return {};
      }
    case Qt::TextAlignmentRole:
      if (column == kAmount || column == kBalance || column == kCheckNumber) {
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
      }
      if (column == kResolved) return QVariant(Qt::AlignCenter);
      return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::ForegroundRole:
      if (entry.GetVoid()) return QBrush(QColor(128, 128, 128));
      if (column == kAmount) {
        return QBrush(entry.GetAmount() < 0 ? QColor(176, 0, 32) : QColor(0, 110, 40));
      }
      if (column == kBalance && entry.GetCachedRunningBalance() < -0.001) {
        return QBrush(QColor(176, 0, 32));
      }
      return {};
    case Qt::FontRole:
      if (entry.GetVoid()) {
        QFont font;
        font.setStrikeOut(true);
        return font;
      }
      return {};
    case Qt::ToolTipRole:
      if (entry.GetVoid()) return tr("Void");
      if (!entry.GetNotes().empty()) return QString::fromStdString(entry.GetNotes());
      return {};
    case Qt::UserRole:  // the entry number, for tests and selection
      return entry.GetNumber();
    default:
      return {};
  }
}

QVariant RegisterModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole) {
    if (section == kAmount || section == kBalance || section == kCheckNumber) {
      return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    }
    return {};
  }
  if (role != Qt::DisplayRole || section < 0 || section >= kColumnCount) return {};
  static const char* const kTitles[kColumnCount] = {
      QT_TR_NOOP("Date"),        QT_TR_NOOP("No."),     QT_TR_NOOP("Type"),
      QT_TR_NOOP("Description"), QT_TR_NOOP("To/From"), QT_TR_NOOP("Category"),
      QT_TR_NOOP("Resolved"),    QT_TR_NOOP("Amount"),  QT_TR_NOOP("Balance")};
  return tr(kTitles[section]);
}

Qt::ItemFlags RegisterModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}
