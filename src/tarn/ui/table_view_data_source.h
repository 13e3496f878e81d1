// A general table data source that keeps every cell value in a column array,
// keyed by column identifier, so that a window's table needs no data source
// of its own. It refers to its table without owning it; the table's columns
// give the initial keys. Bad rows and keys are reported through the ui
// assertion handler (tarn/ui/assertion_handler.h) and the call is abandoned.
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>
#include <cstdint>
#include <optional>

#include "tarn/ui/table_view.h"

namespace tarn {

class TARNTableViewDataSource : public TableDataSource {
 public:
  TARNTableViewDataSource();

  // Whole column arrays by column identifier.
  void setObject(QVariantList values, const QString& key);
  // nullptr when there is no array under the key.
  const QVariantList* objectForKey(const QString& key) const;
  QStringList allKeys() const;
  int count() const { return static_cast<int>(dictionary_.size()); }

  // A null table is ignored. A new table drops every column array first; then
  // each of its columns gets an array of numberOfRows() empty strings.
  void setTableView(TARNTableView* tableView);
  TARNTableView* tableView() const { return tableView_; }
  // Pads every column array with empty strings up to n values (longer ones
  // are kept as they are). n must not be negative.
  void setNumberOfRows(std::int32_t numberOfRows);
  std::int32_t numberOfRows() const { return numberOfRows_; }
  // Every value becomes the empty string; the row count stays.
  void clearAllRows();

  // Makes the column's array when missing and pads it, then replaces the
  // value at the row, which must be below numberOfRows(); nullopt plays a
  // missing key.
  void setObject(const QVariant& value, const std::optional<QString>& key, std::int32_t row);
  // The value at the row of an existing column; an invalid QVariant after a
  // failed check.
  QVariant objectForKey(const QString& key, std::int32_t row) const;

  int numberOfRowsInTableView(TARNTableView* tableView) override;
  QVariant tableViewObjectValue(TARNTableView* tableView, const TARNTableColumn& column,
                                int row) override;
  // An invalid value is stored as the empty string.
  void tableViewSetObjectValue(TARNTableView* tableView, const QVariant& value,
                               const TARNTableColumn& column, int row) override;

 private:
  static void padColumn(QVariantList& values, std::int32_t numberOfRows);

  TARNTableView* tableView_ = nullptr;
  std::int32_t numberOfRows_ = 0;
  QHash<QString, QVariantList> dictionary_;
};

}  // namespace tarn
