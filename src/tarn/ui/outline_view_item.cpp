#include "tarn/ui/outline_view_item.h"

#include <algorithm>

namespace tarn {

TARNOutlineViewItem::TARNOutlineViewItem() : identifier_("") {
  dictionary_.reserve(10);
}

void TARNOutlineViewItem::setIdentifier(const std::optional<QString>& identifier) {
  if (identifier) identifier_ = *identifier;
}

std::shared_ptr<TARNOutlineViewItem> TARNOutlineViewItem::childWithIdentifier(
    const std::optional<QString>& identifier) const {
  if (!identifier) return nullptr;
  for (const auto& child : children_) {
    if (child->identifier() == *identifier) return child;
  }
  return nullptr;
}

void TARNOutlineViewItem::AddChild(std::shared_ptr<TARNOutlineViewItem> child) {
  if (child != nullptr) children_.push_back(std::move(child));
}

void TARNOutlineViewItem::AddChildren(
    const std::vector<std::shared_ptr<TARNOutlineViewItem>>& children) {
  for (const auto& child : children) AddChild(child);
}

void TARNOutlineViewItem::InsertChild(std::shared_ptr<TARNOutlineViewItem> child, int index) {
  if (child == nullptr || index < 0 || static_cast<std::size_t>(index) > children_.size()) return;
  children_.insert(children_.begin() + index, std::move(child));
}

void TARNOutlineViewItem::RemoveChild(const std::shared_ptr<TARNOutlineViewItem>& child) {
  if (child == nullptr) return;
  children_.erase(std::remove(children_.begin(), children_.end(), child), children_.end());
}

void TARNOutlineViewItem::RemoveChildAtIndex(int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= children_.size()) return;
  children_.erase(children_.begin() + index);
}

int TARNOutlineViewDataSource::outlineViewNumberOfChildrenOfItem(
    const QAbstractItemView* /*outlineView*/, const TARNOutlineViewItem* item) const {
  return static_cast<int>((item != nullptr ? item : this)->GetChildren().size());
}

std::shared_ptr<TARNOutlineViewItem> TARNOutlineViewDataSource::outlineViewChildOfItem(
    const QAbstractItemView* /*outlineView*/, int index, const TARNOutlineViewItem* item) const {
  const auto& children = (item != nullptr ? item : this)->GetChildren();
  if (index < 0 || static_cast<std::size_t>(index) >= children.size()) return nullptr;
  return children[static_cast<std::size_t>(index)];
}

bool TARNOutlineViewDataSource::outlineViewIsItemExpandable(
    const QAbstractItemView* /*outlineView*/, const TARNOutlineViewItem* item) const {
  return item == nullptr || !item->GetChildren().empty();
}

QVariant TARNOutlineViewDataSource::outlineViewObjectValue(
    const QAbstractItemView* /*outlineView*/, const std::optional<QString>& columnIdentifier,
    const TARNOutlineViewItem* item) const {
  if (!columnIdentifier || item == nullptr) return QVariant();
  return item->objectForKey(*columnIdentifier);
}

void TARNOutlineViewDataSource::outlineViewSetObjectValue(
    const QAbstractItemView* /*outlineView*/, const QVariant& value,
    const std::optional<QString>& columnIdentifier, TARNOutlineViewItem* item) {
  if (!columnIdentifier) return;
  (item != nullptr ? item : this)->setObject(value, *columnIdentifier);
}

// The model's mirror of the tree, built a level at a time as the view opens
// it, so that an item under two parents has a row (and a parent) in each.
struct TARNOutlineModel::Node {
  TARNOutlineViewItem* item = nullptr;  // nullptr for the root
  Node* parent = nullptr;
  int row = 0;
  bool built = false;
  std::vector<std::unique_ptr<Node>> children;
};

TARNOutlineModel::TARNOutlineModel(std::shared_ptr<TARNOutlineViewDataSource> dataSource,
                                   QStringList columnIdentifiers, QStringList columnTitles,
                                   QObject* parent)
    : QAbstractItemModel(parent),
      dataSource_(std::move(dataSource)),
      columnIdentifiers_(std::move(columnIdentifiers)),
      columnTitles_(std::move(columnTitles)),
      root_(std::make_unique<Node>()) {}

TARNOutlineModel::~TARNOutlineModel() = default;

TARNOutlineModel::Node* TARNOutlineModel::nodeAt(const QModelIndex& index) const {
  return index.isValid() ? static_cast<Node*>(index.internalPointer()) : root_.get();
}

void TARNOutlineModel::buildChildren(Node* node) const {
  if (node->built || dataSource_ == nullptr) return;
  node->built = true;
  // A null item below the root has no children (null means the root itself).
  if (node->item == nullptr && node != root_.get()) return;
  const int count = dataSource_->outlineViewNumberOfChildrenOfItem(nullptr, node->item);
  for (int row = 0; row < count; ++row) {
    auto child = std::make_unique<Node>();
    child->item = dataSource_->outlineViewChildOfItem(nullptr, row, node->item).get();
    child->parent = node;
    child->row = row;
    node->children.push_back(std::move(child));
  }
}

TARNOutlineViewItem* TARNOutlineModel::itemAt(const QModelIndex& index) const {
  return nodeAt(index)->item;
}

QModelIndex TARNOutlineModel::index(int row, int column, const QModelIndex& parent) const {
  if (column < 0 || column >= columnCount() || row < 0) return QModelIndex();
  Node* node = nodeAt(parent);
  buildChildren(node);
  if (static_cast<std::size_t>(row) >= node->children.size()) return QModelIndex();
  return createIndex(row, column, node->children[static_cast<std::size_t>(row)].get());
}

QModelIndex TARNOutlineModel::parent(const QModelIndex& index) const {
  if (!index.isValid()) return QModelIndex();
  Node* parent = nodeAt(index)->parent;
  if (parent == nullptr || parent == root_.get()) return QModelIndex();
  return createIndex(parent->row, 0, parent);
}

int TARNOutlineModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid() && parent.column() != 0) return 0;
  Node* node = nodeAt(parent);
  buildChildren(node);
  return static_cast<int>(node->children.size());
}

int TARNOutlineModel::columnCount(const QModelIndex& /*parent*/) const {
  return static_cast<int>(columnIdentifiers_.size());
}

bool TARNOutlineModel::hasChildren(const QModelIndex& parent) const {
  if (parent.isValid() && parent.column() != 0) return false;
  if (dataSource_ == nullptr) return false;
  Node* node = nodeAt(parent);
  if (!dataSource_->outlineViewIsItemExpandable(nullptr, node->item)) return false;
  return rowCount(parent) > 0;
}

QVariant TARNOutlineModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || dataSource_ == nullptr ||
      (role != Qt::DisplayRole && role != Qt::EditRole)) {
    return QVariant();
  }
  return dataSource_->outlineViewObjectValue(nullptr, columnIdentifiers_.value(index.column()),
                                             nodeAt(index)->item);
}

bool TARNOutlineModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || dataSource_ == nullptr || role != Qt::EditRole) return false;
  dataSource_->outlineViewSetObjectValue(nullptr, value, columnIdentifiers_.value(index.column()),
                                         nodeAt(index)->item);
  emit dataChanged(index, index, {Qt::DisplayRole, Qt::EditRole});
  return true;
}

QVariant TARNOutlineModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
      section < columnTitles_.size()) {
    return columnTitles_[section];
  }
  return QAbstractItemModel::headerData(section, orientation, role);
}

Qt::ItemFlags TARNOutlineModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsEditable;
  const TARNOutlineViewItem* item = nodeAt(index)->item;
  if (item != nullptr && item->Selectable()) flags |= Qt::ItemIsSelectable;
  return flags;
}

void TARNOutlineModel::reloadData() {
  beginResetModel();
  root_ = std::make_unique<Node>();
  endResetModel();
}

}  // namespace tarn
