#include "tarn/ui/table_view.h"

#include <QComboBox>
#include <QHeaderView>
#include <QStyledItemDelegate>
#include <algorithm>

namespace tarn {
namespace {

// Edits a pop-up column's cell with a combo box of the column's menu; the
// choice is committed as soon as it is made.
class PopUpDelegate : public QStyledItemDelegate {
 public:
  PopUpDelegate(TARNTableView* tableView, QObject* parent)
      : QStyledItemDelegate(parent), tableView_(tableView) {}

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override {
    const PopUpMenu* menu = menuOf(index);
    if (menu == nullptr) return QStyledItemDelegate::createEditor(parent, option, index);
    auto* comboBox = new QComboBox(parent);
    SetPopUpMenu(comboBox, *menu);
    connect(comboBox, &QComboBox::activated, this,
            [this, comboBox] { emit const_cast<PopUpDelegate*>(this)->commitData(comboBox); });
    return comboBox;
  }

  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    auto* comboBox = qobject_cast<QComboBox*>(editor);
    if (comboBox == nullptr || menuOf(index) == nullptr) {
      QStyledItemDelegate::setEditorData(editor, index);
      return;
    }
    int position = index.data(Qt::EditRole).toInt();
    // A separator cannot be the current item; the item after it stands in.
    while (position >= 0 && position < comboBox->count() &&
           !comboBox->itemData(position).isValid()) {
      ++position;
    }
    comboBox->setCurrentIndex(position < comboBox->count() ? position : -1);
  }

  void setModelData(QWidget* editor, QAbstractItemModel* model,
                    const QModelIndex& index) const override {
    auto* comboBox = qobject_cast<QComboBox*>(editor);
    if (comboBox == nullptr || menuOf(index) == nullptr) {
      QStyledItemDelegate::setModelData(editor, model, index);
      return;
    }
    if (comboBox->currentIndex() != index.data(Qt::EditRole).toInt()) {
      model->setData(index, comboBox->currentIndex(), Qt::EditRole);
    }
  }

 private:
  const PopUpMenu* menuOf(const QModelIndex& index) const {
    const auto& columns = tableView_->tableColumns();
    if (index.column() < 0 || static_cast<std::size_t>(index.column()) >= columns.size())
      return nullptr;
    const auto& menu = columns[static_cast<std::size_t>(index.column())].menu;
    return menu ? &*menu : nullptr;
  }

  TARNTableView* tableView_;
};

}  // namespace

TARNTableModel::TARNTableModel(TARNTableView* tableView)
    : QAbstractTableModel(tableView), tableView_(tableView) {}

int TARNTableModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid() || tableView_->dataSource() == nullptr) return 0;
  return std::max(0, tableView_->dataSource()->numberOfRowsInTableView(tableView_));
}

int TARNTableModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(tableView_->tableColumns().size());
}

QVariant TARNTableModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || tableView_->dataSource() == nullptr) return QVariant();
  if (role != Qt::DisplayRole && role != Qt::EditRole) return QVariant();
  const TARNTableColumn& column =
      tableView_->tableColumns()[static_cast<std::size_t>(index.column())];
  const QVariant value =
      tableView_->dataSource()->tableViewObjectValue(tableView_, column, index.row());
  if (role == Qt::DisplayRole && column.menu) return column.menu->titleShownAt(value.toInt());
  return value;
}

bool TARNTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || role != Qt::EditRole || tableView_->dataSource() == nullptr) return false;
  const TARNTableColumn& column =
      tableView_->tableColumns()[static_cast<std::size_t>(index.column())];
  tableView_->dataSource()->tableViewSetObjectValue(tableView_, value, column, index.row());
  emit dataChanged(index, index, {Qt::DisplayRole, Qt::EditRole});
  return true;
}

QVariant TARNTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
  const auto& columns = tableView_->tableColumns();
  if (orientation != Qt::Horizontal || section < 0 ||
      static_cast<std::size_t>(section) >= columns.size()) {
    return QAbstractTableModel::headerData(section, orientation, role);
  }
  if (role == Qt::DisplayRole) return columns[static_cast<std::size_t>(section)].title;
  if (role == kColumnIdentifierRole) return columns[static_cast<std::size_t>(section)].identifier;
  return QVariant();
}

Qt::ItemFlags TARNTableModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = QAbstractTableModel::flags(index);
  if (index.isValid() &&
      tableView_->tableColumns()[static_cast<std::size_t>(index.column())].editable) {
    flags |= Qt::ItemIsEditable;
  }
  return flags;
}

void TARNTableModel::reload() {
  beginResetModel();
  endResetModel();
}

TARNTableView::TARNTableView(QWidget* parent)
    : QTableView(parent), model_(new TARNTableModel(this)) {
  setModel(model_);
  setItemDelegate(new PopUpDelegate(this, this));
  setSelectionBehavior(QAbstractItemView::SelectRows);
  verticalHeader()->hide();
  horizontalHeader()->setStretchLastSection(true);
}

void TARNTableView::addTableColumn(TARNTableColumn column) {
  columns_.push_back(std::move(column));
  reloadData();
}

const TARNTableColumn* TARNTableView::tableColumnWithIdentifier(const QString& identifier) const {
  for (const TARNTableColumn& column : columns_) {
    if (column.identifier == identifier) return &column;
  }
  return nullptr;
}

bool TARNTableView::setDataCellMenu(const QString& identifier, const PopUpMenu& menu) {
  for (TARNTableColumn& column : columns_) {
    if (column.identifier != identifier) continue;
    column.menu = menu;
    reloadData();
    return true;
  }
  return false;
}

void TARNTableView::setDataSource(TableDataSource* dataSource) {
  dataSource_ = dataSource;
  reloadData();
}

void TARNTableView::reloadData() {
  model_->reload();
  openPopUpEditors();
}

// Pop-up cells show their menu at all times, as a pop-up button cell does.
void TARNTableView::openPopUpEditors() {
  const int rows = model_->rowCount();
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    if (!columns_[column].menu || !columns_[column].editable) continue;
    for (int row = 0; row < rows; ++row)
      openPersistentEditor(model_->index(row, static_cast<int>(column)));
  }
}

}  // namespace tarn
