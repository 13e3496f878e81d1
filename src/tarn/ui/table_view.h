// A table view with identified columns, fed by a data source as the panels'
// tables are: TARNTableView owns its columns and a Qt table model
// (TARNTableModel) that asks the data source, which it does not own, for the
// row count and for each cell by column identifier. A column may show its
// values through a pop-up menu: its cells hold menu positions and show the
// item titles, and a combo box edits them.
#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <QTableView>
#include <QVariant>
#include <optional>
#include <vector>

#include "tarn/ui/pop_up_menu.h"

namespace tarn {

class TARNTableView;

struct TARNTableColumn {
  QString identifier;
  QString title;
  bool editable = true;
  // The data cell's menu; the column's values are positions in it.
  std::optional<PopUpMenu> menu;
};

// What a table asks of whoever feeds it. Values are read and written by
// column; a data source that does not take edits keeps the default setter.
class TableDataSource {
 public:
  virtual ~TableDataSource() = default;
  virtual int numberOfRowsInTableView(TARNTableView* tableView) = 0;
  virtual QVariant tableViewObjectValue(TARNTableView* tableView, const TARNTableColumn& column,
                                        int row) = 0;
  virtual void tableViewSetObjectValue(TARNTableView* /*tableView*/, const QVariant& /*value*/,
                                       const TARNTableColumn& /*column*/, int /*row*/) {}
};

// The Qt model of a TARNTableView: rows from the data source, columns from
// the view. Qt::DisplayRole gives the text shown (a menu item's title for a
// pop-up column), Qt::EditRole the stored value, and the header's
// kColumnIdentifierRole the column identifier.
class TARNTableModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  static constexpr int kColumnIdentifierRole = Qt::UserRole + 1;

  explicit TARNTableModel(TARNTableView* tableView);

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  int columnCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

  // Everything may have changed: rows, columns, values.
  void reload();

 private:
  TARNTableView* tableView_;
};

class TARNTableView : public QTableView {
  Q_OBJECT

 public:
  explicit TARNTableView(QWidget* parent = nullptr);

  void addTableColumn(TARNTableColumn column);
  void addTableColumn(QString identifier, QString title, bool editable = true) {
    addTableColumn(
        TARNTableColumn{std::move(identifier), std::move(title), editable, std::nullopt});
  }
  const std::vector<TARNTableColumn>& tableColumns() const { return columns_; }
  // nullptr when no column has the identifier.
  const TARNTableColumn* tableColumnWithIdentifier(const QString& identifier) const;
  // Shows the column's values through the menu; false when no column has
  // the identifier.
  bool setDataCellMenu(const QString& identifier, const PopUpMenu& menu);

  // Not owned; nullptr shows an empty table.
  void setDataSource(TableDataSource* dataSource);
  TableDataSource* dataSource() const { return dataSource_; }
  // Asks the data source again for every row and value.
  void reloadData();

  TARNTableModel* tableModel() const { return model_; }

 private:
  void openPopUpEditors();

  std::vector<TARNTableColumn> columns_;
  TableDataSource* dataSource_ = nullptr;
  TARNTableModel* model_;
};

}  // namespace tarn
