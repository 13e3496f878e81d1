#include "tarn/ui/table_view_data_source.h"

#include "tarn/ui/assertion_handler.h"

namespace tarn {
namespace {

// Reports name the panels' shared utilities file, where these checks live
// for the host's logs.
constexpr const char* kAssertionFile = "TARNUtilities";

bool Check(bool condition, const char* conditionText, const char* method, int line) {
  if (!condition) ReportAssertionFailure({conditionText, method, kAssertionFile, line});
  return condition;
}

QVariant EmptyString() {
  return QVariant(QString(""));
}

}  // namespace

TARNTableViewDataSource::TARNTableViewDataSource() {
  dictionary_.reserve(10);
}

void TARNTableViewDataSource::setObject(QVariantList values, const QString& key) {
  dictionary_.insert(key, std::move(values));
}

const QVariantList* TARNTableViewDataSource::objectForKey(const QString& key) const {
  auto found = dictionary_.constFind(key);
  return found == dictionary_.constEnd() ? nullptr : &*found;
}

QStringList TARNTableViewDataSource::allKeys() const {
  return dictionary_.keys();
}

void TARNTableViewDataSource::padColumn(QVariantList& values, std::int32_t numberOfRows) {
  while (values.size() < numberOfRows) values.append(EmptyString());
}

void TARNTableViewDataSource::setTableView(TARNTableView* tableView) {
  if (tableView == nullptr) return;
  if (tableView_ != nullptr) dictionary_.clear();
  tableView_ = tableView;
  for (const TARNTableColumn& column : tableView->tableColumns()) {
    QVariantList values;
    padColumn(values, numberOfRows_);
    dictionary_.insert(column.identifier, std::move(values));
  }
}

void TARNTableViewDataSource::setNumberOfRows(std::int32_t numberOfRows) {
  if (!Check(numberOfRows > -1, "theNumberOfRows > -1",
             "-[TARNTableViewDataSource setNumberOfRows:]", __LINE__)) {
    return;
  }
  for (QVariantList& values : dictionary_) padColumn(values, numberOfRows);
  numberOfRows_ = numberOfRows;
}

void TARNTableViewDataSource::clearAllRows() {
  for (QVariantList& values : dictionary_) {
    for (QVariant& value : values) value = EmptyString();
  }
}

void TARNTableViewDataSource::setObject(const QVariant& value, const std::optional<QString>& key,
                                        std::int32_t row) {
  if (!Check(row < numberOfRows_ && key.has_value(), "theRow < numberOfRows && theKey",
             "-[TARNTableViewDataSource setObject:forKey:row:]", __LINE__)) {
    return;
  }
  if (row < 0) return;  // no such row: nothing to replace
  QVariantList& values = dictionary_[*key];
  padColumn(values, numberOfRows_);
  values[row] = value;
}

QVariant TARNTableViewDataSource::objectForKey(const QString& key, std::int32_t row) const {
  const QVariantList* values = objectForKey(key);
  if (!Check(row < numberOfRows_ && values != nullptr,
             "theRow < numberOfRows && [self objectForKey:theKey]",
             "-[TARNTableViewDataSource objectForKey:row:]", __LINE__)) {
    return QVariant();
  }
  // A column array set whole may be shorter than the row count.
  if (row < 0 || row >= values->size()) return QVariant();
  return values->at(row);
}

int TARNTableViewDataSource::numberOfRowsInTableView(TARNTableView* /*tableView*/) {
  return numberOfRows_;
}

QVariant TARNTableViewDataSource::tableViewObjectValue(TARNTableView* tableView,
                                                       const TARNTableColumn& column, int row) {
  if (!Check(row >= 0 && row < numberOfRowsInTableView(tableView),
             "theRow >= 0 && theRow < [self numberOfRowsInTableView:theTableView]",
             "-[TARNTableViewDataSource tableView:objectValueForTableColumn:row:]", __LINE__)) {
    return QVariant();
  }
  return objectForKey(column.identifier, row);
}

void TARNTableViewDataSource::tableViewSetObjectValue(TARNTableView* /*tableView*/,
                                                      const QVariant& value,
                                                      const TARNTableColumn& column, int row) {
  setObject(value.isValid() ? value : EmptyString(), column.identifier, row);
}

}  // namespace tarn
