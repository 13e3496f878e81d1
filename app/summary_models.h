// Item models over a computed account summary: the periods as a table, the
// type, description and payee subtotals as tables, and the category tree
// with a column for the whole range and one per period. Each model keeps the
// result it shows (shared, never copied) and formats amounts with the
// account's currency only when a cell is asked for, so a result of many
// periods and rows is shown without building a widget item per cell.
#pragma once

#include <QAbstractItemModel>
#include <QAbstractTableModel>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "tarn/reports/summary_result.h"

// Amount text in the account's currency.
using AmountFormat = std::function<QString(double)>;

// Amount cells answer this role with the amount itself, for sorting and for
// anything that wants the number rather than its text.
inline constexpr int kSummaryAmountRole = Qt::UserRole + 1;

// How a period is named in headers and on the chart: by its first day, or
// its month or year when it covers exactly one.
QString SummaryPeriodLabel(const tarn::TARNSummaryPeriod& period, std::int32_t periodStyle);

class SummaryPeriodsModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column {
    kPeriod,
    kEnd,
    kEntries,
    kDebits,
    kDeposits,
    kTotal,
    kStartBalance,
    kEndBalance,
    kColumnCount
  };

  explicit SummaryPeriodsModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}
  void setResult(std::shared_ptr<const tarn::TARNSummaryResult> result, std::int32_t periodStyle,
                 AmountFormat format);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  std::shared_ptr<const tarn::TARNSummaryResult> result_;
  std::int32_t periodStyle_ = 0;
  AmountFormat format_;
};

// The subtotals by one key (type, description or payee) over the whole
// range: name, amount, debits and deposits.
class SummaryNamedRowsModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { kName, kAmount, kDebits, kDeposits, kColumnCount };

  SummaryNamedRowsModel(QString nameHeader, QString emptyName, QObject* parent = nullptr)
      : QAbstractTableModel(parent),
        nameHeader_(std::move(nameHeader)),
        emptyName_(std::move(emptyName)) {}
  // `rows` lives in `result`.
  void setRows(std::shared_ptr<const tarn::TARNSummaryResult> result,
               const std::vector<tarn::TARNSummaryNamedRow>* rows, AmountFormat format);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  QString nameHeader_;
  QString emptyName_;
  std::shared_ptr<const tarn::TARNSummaryResult> result_;
  const std::vector<tarn::TARNSummaryNamedRow>* rows_ = nullptr;
  AmountFormat format_;
};

// The category tree of the whole range. Columns: the category's own name,
// its amount over the range, then its amount in each period (blank where
// the period has no row for it). Rows of the periods are matched to the
// range's rows by their path of names, letter case aside, as the summary
// itself merges them.
class SummaryCategoryModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  static constexpr int kName = 0;
  static constexpr int kRange = 1;
  static constexpr int kFirstPeriod = 2;

  explicit SummaryCategoryModel(QObject* parent = nullptr) : QAbstractItemModel(parent) {}
  void setResult(std::shared_ptr<const tarn::TARNSummaryResult> result, std::int32_t periodStyle,
                 AmountFormat format);

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  // The full name of the row ("Auto:Fuel"), for tests and tool tips.
  QString fullName(const QModelIndex& index) const;

 private:
  // One row of the tree, flattened: nodes_[0] is the invisible root.
  struct Node {
    const tarn::TARNSummaryCategoryRow* row = nullptr;
    std::size_t parent = 0;
    int place = 0;  // among the parent's children
    std::vector<std::size_t> children;
  };
  void addRows(const std::vector<tarn::TARNSummaryCategoryRow>& rows, std::size_t parent);
  void addPeriodRows(const std::vector<tarn::TARNSummaryCategoryRow>& rows, std::size_t parent,
                     std::size_t period);
  const Node* nodeOf(const QModelIndex& index) const;

  std::shared_ptr<const tarn::TARNSummaryResult> result_;
  std::int32_t periodStyle_ = 0;
  AmountFormat format_;
  std::vector<Node> nodes_;
  // The amount of node n in period p is amounts_[n * periods + p]; NaN where
  // the period has no such row.
  std::vector<double> amounts_;
};
