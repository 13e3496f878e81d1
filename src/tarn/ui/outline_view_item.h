// A tree of outline items, each with a value per column identifier, whose
// root is itself the outline's data source; TARNOutlineModel shows such a
// tree in a Qt tree view. An item owns its children (shared, so one item may
// sit under several parents); the model refers to the root and to the items
// without owning them and must be reloaded after the tree changes.
#pragma once

#include <QAbstractItemModel>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <memory>
#include <optional>
#include <vector>

class QAbstractItemView;

namespace tarn {

class TARNOutlineViewItem {
 public:
  TARNOutlineViewItem();
  virtual ~TARNOutlineViewItem() = default;

  void setObject(const QVariant& value, const QString& key) { dictionary_.insert(key, value); }
  // An invalid QVariant when nothing is stored under the key.
  QVariant objectForKey(const QString& key) const { return dictionary_.value(key); }

  bool Selectable() const { return selectable_; }
  void SetSelectable(bool selectable) { selectable_ = selectable; }
  const QString& identifier() const { return identifier_; }
  // nullopt is ignored.
  void setIdentifier(const std::optional<QString>& identifier);

  // The live array, in display order.
  std::vector<std::shared_ptr<TARNOutlineViewItem>>& GetChildren() { return children_; }
  const std::vector<std::shared_ptr<TARNOutlineViewItem>>& GetChildren() const { return children_; }
  // The first child with that identifier; nullptr when none (or for nullopt).
  std::shared_ptr<TARNOutlineViewItem> childWithIdentifier(
      const std::optional<QString>& identifier) const;

  // A null child is ignored.
  void AddChild(std::shared_ptr<TARNOutlineViewItem> child);
  void AddChildren(const std::vector<std::shared_ptr<TARNOutlineViewItem>>& children);
  // Ignored for a null child, a negative index or one past the end; the
  // index equal to the number of children appends.
  void InsertChild(std::shared_ptr<TARNOutlineViewItem> child, int index);
  // Removes every occurrence of the child.
  void RemoveChild(const std::shared_ptr<TARNOutlineViewItem>& child);
  void RemoveChildren() { children_.clear(); }
  // Ignored when the index is not that of a child.
  void RemoveChildAtIndex(int index);

 private:
  std::vector<std::shared_ptr<TARNOutlineViewItem>> children_;
  QHash<QString, QVariant> dictionary_;
  bool selectable_ = true;
  QString identifier_;
};

// The root of an outline: its own children are the top-level items, and a
// null item in the operations below means the root. The view argument is
// the asking view (unused, kept for hosts that serve several).
class TARNOutlineViewDataSource : public TARNOutlineViewItem {
 public:
  int outlineViewNumberOfChildrenOfItem(const QAbstractItemView* outlineView,
                                        const TARNOutlineViewItem* item) const;
  // nullptr for an index that is not a child's.
  std::shared_ptr<TARNOutlineViewItem> outlineViewChildOfItem(
      const QAbstractItemView* outlineView, int index, const TARNOutlineViewItem* item) const;
  // The root always; an item when it has a child.
  bool outlineViewIsItemExpandable(const QAbstractItemView* outlineView,
                                   const TARNOutlineViewItem* item) const;
  // Invalid for a missing column or item.
  QVariant outlineViewObjectValue(const QAbstractItemView* outlineView,
                                  const std::optional<QString>& columnIdentifier,
                                  const TARNOutlineViewItem* item) const;
  void outlineViewSetObjectValue(const QAbstractItemView* outlineView, const QVariant& value,
                                 const std::optional<QString>& columnIdentifier,
                                 TARNOutlineViewItem* item);
};

// The Qt model of an outline: one column per identifier, rows from the
// data source. Items that are not selectable cannot be selected.
class TARNOutlineModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  TARNOutlineModel(std::shared_ptr<TARNOutlineViewDataSource> dataSource,
                   QStringList columnIdentifiers, QStringList columnTitles,
                   QObject* parent = nullptr);
  ~TARNOutlineModel() override;

  QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
  QModelIndex parent(const QModelIndex& index) const override;
  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  int columnCount(const QModelIndex& parent = QModelIndex()) const override;
  bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

  // The item shown at the index; nullptr for the root.
  TARNOutlineViewItem* itemAt(const QModelIndex& index) const;
  // Call after the tree changed.
  void reloadData();

 private:
  struct Node;
  Node* nodeAt(const QModelIndex& index) const;
  void buildChildren(Node* node) const;

  std::shared_ptr<TARNOutlineViewDataSource> dataSource_;
  QStringList columnIdentifiers_;
  QStringList columnTitles_;
  std::unique_ptr<Node> root_;
};

}  // namespace tarn
