// The import review's model, its type and category editors, and the dialog.

#include "import_review_window.h"

#include <QBrush>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFont>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <numeric>

#include "money_text.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/book_entries.h"
#include "tarn/book/import_review.h"
#include "tarn/import/import_entry.h"
#include "tarn/import/import_file.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"

namespace {

QString Qs(const std::string& text) {
  return QString::fromStdString(text);
}

QString DateText(tarn::DateNumber date) {
  if (date <= 0) return QObject::tr("(none)");
  return QString::asprintf("%04d-%02d-%02d", date / 10000, date / 100 % 100, date % 100);
}

// A combo box of the names a cell offers that also takes a new name.
class ChoiceDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                        const QModelIndex& index) const override {
    auto* box = new QComboBox(parent);
    box->setObjectName(QStringLiteral("reviewChoice"));
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    const auto* model = qobject_cast<const ImportReviewModel*>(index.model());
    if (model) box->addItems(model->choices(index));
    return box;
  }
  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    auto* box = static_cast<QComboBox*>(editor);
    box->setCurrentText(index.data(Qt::EditRole).toString());
  }
  void setModelData(QWidget* editor, QAbstractItemModel* model,
                    const QModelIndex& index) const override {
    model->setData(index, static_cast<QComboBox*>(editor)->currentText().trimmed(), Qt::EditRole);
  }
};

}  // namespace

QString DuplicateReasonText(const tarn::ImportReviewItem& item) {
  switch (item.duplicate) {
    case tarn::DuplicateReason::ImportedBefore:
      return QObject::tr("Imported before (bank identifier %1)").arg(Qs(item.fitID));
    case tarn::DuplicateReason::SameInFile:
      return QObject::tr("An earlier entry of this file has the bank identifier %1")
          .arg(Qs(item.fitID));
    case tarn::DuplicateReason::MatchesEntry:
      return QObject::tr("Matches entry %1 of the account (amount, date and payee)")
          .arg(item.matchedEntry);
    case tarn::DuplicateReason::None:
      break;
  }
  return {};
}

// --- Model ----------------------------------------------------------------------

ImportReviewModel::ImportReviewModel(tarn::TARNImportReview& review, tarn::TARNBook& book,
                                     tarn::TARNAccount& account, QObject* parent)
    : QAbstractTableModel(parent), review_(review), book_(book), account_(account) {
  order_.resize(review_.items().size());
  std::iota(order_.begin(), order_.end(), std::size_t{0});
}

int ImportReviewModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(order_.size());
}

int ImportReviewModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

tarn::ImportReviewItem& ImportReviewModel::item(int row) {
  return review_.items()[order_[static_cast<std::size_t>(row)]];
}

QString ImportReviewModel::typeText(const tarn::ImportReviewItem& item) const {
  if (item.newType) return Qs(item.typeText);
  const auto& type = item.entry->GetActualType();
  return type ? Qs(type->GetName()) : QString();
}

QString ImportReviewModel::categoryText(const tarn::ImportReviewItem& item) const {
  if (!item.entry->splitLineItems().empty()) return tr("Split");
  if (item.newCategory) return Qs(tarn::ImportCategoryPath(item.categoryText));
  if (const auto& category = item.entry->GetActualCategory()) return Qs(category->fullName());
  // A transfer, or a text that names no category, as the file gave it.
  return Qs(item.categoryText);
}

QVariant ImportReviewModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const tarn::ImportReviewItem& item =
      review_.items()[order_[static_cast<std::size_t>(index.row())]];
  const tarn::TARNImportEntry& entry = *item.entry;
  const int column = index.column();
  const bool newMark =
      (column == kType && item.newType) || (column == kCategory && item.newCategory);
  switch (role) {
    case Qt::CheckStateRole:
      if (column == kImport) return entry.GetImport() ? Qt::Checked : Qt::Unchecked;
      return {};
    case Qt::DisplayRole:
    case Qt::EditRole:
      switch (column) {
        case kDate:
          return DateText(entry.GetDate());
        case kAmount:
          return MoneyText(&account_, entry.GetAmount());
        case kPayee:
          return Qs(entry.GetToFrom());
        case kDescription:
          return Qs(entry.GetDescription());
        case kType:
          if (role == Qt::DisplayRole && item.newType) return tr("%1 (new)").arg(typeText(item));
          return typeText(item);
        case kCategory:
          if (role == Qt::DisplayRole && item.newCategory) {
            return tr("%1 (new)").arg(categoryText(item));
          }
          return categoryText(item);
        case kDuplicate:
          return item.duplicate == tarn::DuplicateReason::None ? QString() : tr("⚠ Duplicate");
        default:
          return {};
      }
    case Qt::ToolTipRole:
      if (column == kDuplicate) return DuplicateReasonText(item);
      if (newMark) return tr("Made on import: the book has none of this name yet");
      return {};
    case Qt::ForegroundRole:
      if (column == kAmount) {
        return QBrush(entry.GetAmount() < 0 ? QColor(176, 0, 32) : QColor(0, 110, 40));
      }
      if (column == kDuplicate) return QBrush(QColor(180, 90, 0));
      if (newMark) return QBrush(QColor(30, 80, 170));
      return {};
    case Qt::FontRole:
      if (newMark) {
        QFont font;
        font.setItalic(true);
        return font;
      }
      return {};
    case Qt::TextAlignmentRole:
      if (column == kAmount) return int(Qt::AlignRight | Qt::AlignVCenter);
      return {};
    default:
      return {};
  }
}

QVariant ImportReviewModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  static const char* const kTitles[kColumnCount] = {
      QT_TR_NOOP("Import"),   QT_TR_NOOP("Date"),        QT_TR_NOOP("Amount"),
      QT_TR_NOOP("Payee"),    QT_TR_NOOP("Description"), QT_TR_NOOP("Type"),
      QT_TR_NOOP("Category"), QT_TR_NOOP("Duplicate")};
  if (section < 0 || section >= kColumnCount) return {};
  return tr(kTitles[section]);
}

Qt::ItemFlags ImportReviewModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (index.column() == kImport) flags |= Qt::ItemIsUserCheckable;
  if (index.column() == kType) flags |= Qt::ItemIsEditable;
  if (index.column() == kCategory && review_.items()[order_[static_cast<std::size_t>(index.row())]]
                                         .entry->splitLineItems()
                                         .empty()) {
    flags |= Qt::ItemIsEditable;
  }
  return flags;
}

bool ImportReviewModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || index.row() >= rowCount()) return false;
  tarn::ImportReviewItem& it = item(index.row());
  tarn::TARNImportEntry& entry = *it.entry;
  if (index.column() == kImport && role == Qt::CheckStateRole) {
    entry.SetImport(value.toInt() == Qt::Checked);
    emit dataChanged(index, index, {Qt::CheckStateRole});
    emit ticksChanged();
    return true;
  }
  if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable)) return false;
  const std::string name = value.toString().trimmed().toStdString();
  if (index.column() == kType) {
    if (name.empty()) return false;  // every entry has a type
    auto type = tarn::EntryTypeWithName(account_, name, entry.IsDeposit());
    entry.SetActualType(type);
    it.typeText = type ? type->GetName() : name;
    it.newType = !type;
  } else {
    const std::string path = tarn::ImportCategoryPath(name);
    auto category = path.empty() ? nullptr : book_.categoryWithFullName(path);
    entry.SetActualCategory(category);
    it.categoryText = name;
    it.newCategory = !category && !path.empty();
  }
  emit dataChanged(index, index);
  return true;
}

QStringList ImportReviewModel::choices(const QModelIndex& index) const {
  if (!index.isValid()) return {};
  if (index.column() == kType) {
    const bool deposit =
        review_.items()[order_[static_cast<std::size_t>(index.row())]].entry->IsDeposit();
    QStringList names;
    for (const auto& type : account_.types()) {
      if (type->GetIsDeposit() == deposit) names << Qs(type->GetName());
    }
    return names;
  }
  if (index.column() == kCategory) {
    QStringList names{QString()};
    for (const auto& category : book_.allCategories()) names << Qs(category->fullName());
    return names;
  }
  return {};
}

void ImportReviewModel::setAllTicked(bool ticked) {
  for (auto& each : review_.items()) each.entry->SetImport(ticked);
  if (!order_.empty()) {
    emit dataChanged(index(0, kImport), index(rowCount() - 1, kImport), {Qt::CheckStateRole});
  }
  emit ticksChanged();
}

void ImportReviewModel::sort(int column, Qt::SortOrder order) {
  using Entry = tarn::TARNImportEntry;
  const auto& items = review_.items();
  const bool up = order == Qt::AscendingOrder;
  // The comparator of a column, -1, 0 or 1 as the entries order.
  std::function<int(const Entry&, const Entry&)> compare;
  switch (column) {
    case kImport:
      compare = [up](const Entry& a, const Entry& b) {
        return up ? a.ImportIsGreaterThan(b) : a.ImportIsGreaterThan_Reversed(b);
      };
      break;
    case kDate:
      compare = [up](const Entry& a, const Entry& b) {
        return up ? a.DateIsGreaterThan(b) : a.DateIsGreaterThan_Reversed(b);
      };
      break;
    case kAmount:
      compare = [up](const Entry& a, const Entry& b) {
        return up ? a.AmountIsGreaterThan(b) : a.AmountIsGreaterThan_Reversed(b);
      };
      break;
    case kPayee:
      compare = [up](const Entry& a, const Entry& b) {
        return up ? a.ToFromIsGreaterThan(b) : a.ToFromIsGreaterThan_Reversed(b);
      };
      break;
    case kDescription:
      compare = [up](const Entry& a, const Entry& b) {
        return up ? a.DescriptionIsGreaterThan(b) : a.DescriptionIsGreaterThan_Reversed(b);
      };
      break;
    case kType:
      compare = [up](const Entry& a, const Entry& b) {
        return up ? a.TypePrimaryDateSecondaryIsGreaterThan(b)
                  : a.TypePrimaryDateSecondaryIsGreaterThan_Reversed(b);
      };
      break;
    case kCategory:
      compare = [up](const Entry& a, const Entry& b) {
        return up ? a.CategoryPrimaryDateSecondaryIsGreaterThan(b)
                  : a.CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(b);
      };
      break;
    default:
      break;
  }
  emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  const QModelIndexList before = persistentIndexList();
  std::vector<std::size_t> itemsBefore;
  itemsBefore.reserve(static_cast<std::size_t>(before.size()));
  for (const QModelIndex& each : before)
    itemsBefore.push_back(order_[static_cast<std::size_t>(each.row())]);
  if (compare) {
    std::stable_sort(order_.begin(), order_.end(), [&](std::size_t a, std::size_t b) {
      return compare(*items[a].entry, *items[b].entry) < 0;
    });
  } else {
    // Duplicates: the marked ones together, the file's order within.
    std::stable_sort(order_.begin(), order_.end(), [&](std::size_t a, std::size_t b) {
      const bool da = items[a].duplicate != tarn::DuplicateReason::None;
      const bool db = items[b].duplicate != tarn::DuplicateReason::None;
      return up ? da < db : da > db;
    });
  }
  std::vector<int> rowOf(order_.size());
  for (std::size_t row = 0; row < order_.size(); ++row) rowOf[order_[row]] = static_cast<int>(row);
  QModelIndexList after;
  after.reserve(before.size());
  for (qsizetype i = 0; i < before.size(); ++i) {
    after.push_back(index(rowOf[itemsBefore[static_cast<std::size_t>(i)]], before[i].column()));
  }
  changePersistentIndexList(before, after);
  emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

// --- Dialog -----------------------------------------------------------------------

ImportReviewDialog::ImportReviewDialog(tarn::TARNImportReview& review,
                                       const tarn::ImportedFile& file, tarn::TARNBook& book,
                                       tarn::TARNAccount& account, QWidget* parent)
    : QDialog(parent), review_(review) {
  setObjectName(QStringLiteral("importReview"));
  fileName_ = QFileInfo(Qs(file.path)).fileName();
  setWindowTitle(tr("Import \"%1\" into \"%2\"").arg(fileName_, Qs(account.GetName())));
  auto* column = new QVBoxLayout(this);

  counts_ = new QLabel(this);
  counts_->setObjectName(QStringLiteral("importCounts"));
  column->addWidget(counts_);
  if (file.tolerant) {
    auto* notice = new QLabel(
        tr("This OFX file does not follow the format strictly, so it was read leniently (%1). "
           "Check the dates and amounts before importing.")
            .arg(Qs(file.faithfulFailure)),
        this);
    notice->setObjectName(QStringLiteral("tolerantNotice"));
    notice->setWordWrap(true);
    notice->setStyleSheet(QStringLiteral("QLabel { background: #fff4d6; padding: 6px; }"));
    column->addWidget(notice);
  }

  model_ = new ImportReviewModel(review, book, account, this);
  table_ = new QTableView(this);
  table_->setObjectName(QStringLiteral("importTable"));
  table_->setModel(model_);
  table_->setItemDelegateForColumn(ImportReviewModel::kType, new ChoiceDelegate(table_));
  table_->setItemDelegateForColumn(ImportReviewModel::kCategory, new ChoiceDelegate(table_));
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::SelectedClicked |
                          QAbstractItemView::EditKeyPressed);
  table_->setSortingEnabled(false);
  table_->horizontalHeader()->setSortIndicatorShown(true);
  table_->horizontalHeader()->setSectionsClickable(true);
  table_->verticalHeader()->hide();
  // Fixed row heights: the view never measures ten thousand rows.
  table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  table_->verticalHeader()->setDefaultSectionSize(22);
  table_->setAlternatingRowColors(true);
  table_->setWordWrap(false);
  auto* header = table_->horizontalHeader();
  header->setSectionResizeMode(QHeaderView::Interactive);
  header->setSectionResizeMode(ImportReviewModel::kDescription, QHeaderView::Stretch);
  const int widths[] = {64, 92, 96, 170, 0, 120, 170, 100};
  for (int i = 0; i < ImportReviewModel::kColumnCount; ++i) {
    if (widths[i]) table_->setColumnWidth(i, widths[i]);
  }
  // The header keeps the sort indicator (a second click on a column flips
  // it); the model sorts its row order, leaving the review's items alone.
  header->setSortIndicator(-1, Qt::AscendingOrder);
  connect(header, &QHeaderView::sortIndicatorChanged, model_,
          [this](int section, Qt::SortOrder order) { model_->sort(section, order); });
  column->addWidget(table_, 1);

  auto* row = new QHBoxLayout;
  auto* tickAll = new QPushButton(tr("Tick All"), this);
  tickAll->setObjectName(QStringLiteral("tickAll"));
  auto* untickAll = new QPushButton(tr("Untick All"), this);
  untickAll->setObjectName(QStringLiteral("untickAll"));
  connect(tickAll, &QPushButton::clicked, this, [this] { model_->setAllTicked(true); });
  connect(untickAll, &QPushButton::clicked, this, [this] { model_->setAllTicked(false); });
  row->addWidget(tickAll);
  row->addWidget(untickAll);
  row->addStretch(1);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setText(tr("Import"));
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("importButton"));
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  row->addWidget(buttons);
  column->addLayout(row);

  connect(model_, &ImportReviewModel::ticksChanged, this, &ImportReviewDialog::updateCounts);
  updateCounts();
  resize(1040, 600);
}

void ImportReviewDialog::updateCounts() {
  const std::size_t total = review_.items().size();
  const std::size_t duplicates = review_.duplicateCount();
  const std::size_t ticked = review_.tickedCount();
  counts_->setText(tr("%1: %2 %3, %4 likely %5 (unticked); %6 to import")
                       .arg(fileName_)
                       .arg(total)
                       .arg(total == 1 ? tr("entry") : tr("entries"))
                       .arg(duplicates)
                       .arg(duplicates == 1 ? tr("duplicate") : tr("duplicates"))
                       .arg(ticked));
}
