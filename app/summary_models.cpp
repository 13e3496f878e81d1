#include "summary_models.h"

#include <QBrush>
#include <QColor>
#include <QDate>
#include <QLocale>

#include <cmath>
#include <limits>
#include <string>
#include <unordered_map>
#include <utility>

#include "tarn/platform/text.h"
#include "tarn/reports/account_summary.h"

namespace {

QDate ToQDate(const tarn::CalendarDate& date) {
  return QDate(date.yearOfCommonEra(), date.monthOfYear(), date.dayOfMonth());
}

QString DateText(const tarn::CalendarDate& date) {
  return ToQDate(date).toString(Qt::ISODate);
}

QVariant AmountCell(const AmountFormat& format, double amount) {
  return format ? format(amount) : QString::number(amount, 'f', 2);
}

QVariant AmountColor(double amount) {
  if (amount < -0.004) return QBrush(QColor(176, 0, 32));
  return {};
}

constexpr auto kRight = Qt::AlignRight | Qt::AlignVCenter;

}  // namespace

QString SummaryPeriodLabel(const tarn::TARNSummaryPeriod& period, std::int32_t periodStyle) {
  const QDate start = ToQDate(period.startDate);
  const QDate end = ToQDate(period.endDate);
  // A calendar month, quarter or year is named as such, also when the
  // range's end cuts it short (the periods table shows the last day).
  switch (periodStyle) {
    case tarn::kSummaryPeriodMonth:
      if (start.day() == 1 && end < start.addMonths(1)) {
        return QLocale::c().toString(start, QStringLiteral("MMM yyyy"));
      }
      break;
    case tarn::kSummaryPeriodQuarter:
      if (start.day() == 1 && (start.month() - 1) % 3 == 0 && end < start.addMonths(3)) {
        return QStringLiteral("Q%1 %2").arg((start.month() - 1) / 3 + 1).arg(start.year());
      }
      break;
    case tarn::kSummaryPeriodYear:
      if (start.dayOfYear() == 1) return QString::number(start.year());
      break;
    default:
      break;
  }
  // Days and weeks, and months or quarters counted from a day in the middle
  // of a month, are named by their first day.
  return start.toString(Qt::ISODate);
}

// --- Periods ------------------------------------------------------------------

void SummaryPeriodsModel::setResult(std::shared_ptr<const tarn::TARNSummaryResult> result,
                                    std::int32_t periodStyle, AmountFormat format) {
  beginResetModel();
  result_ = std::move(result);
  periodStyle_ = periodStyle;
  format_ = std::move(format);
  endResetModel();
}

int SummaryPeriodsModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid() || !result_) return 0;
  return static_cast<int>(result_->periods.size());
}

int SummaryPeriodsModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

QVariant SummaryPeriodsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || !result_ || index.row() >= rowCount()) return {};
  const tarn::TARNSummaryPeriod& period = result_->periods[static_cast<std::size_t>(index.row())];
  const auto amount = [&period](int column) {
    switch (column) {
      case kDebits:
        return period.totals.debitsTotal;
      case kDeposits:
        return period.totals.depositsTotal;
      case kTotal:
        return period.totals.total;
      case kStartBalance:
        return period.startBalance;
      default:
        return period.endBalance;
    }
  };
  const int column = index.column();
  switch (role) {
    case Qt::DisplayRole:
      if (column == kPeriod) return SummaryPeriodLabel(period, periodStyle_);
      if (column == kEnd) return DateText(period.endDate);
      if (column == kEntries) return period.totals.entryCount;
      return AmountCell(format_, amount(column));
    case kSummaryAmountRole:
      if (column >= kDebits) return amount(column);
      return {};
    case Qt::TextAlignmentRole:
      if (column >= kEntries) return QVariant(kRight);
      return {};
    case Qt::ForegroundRole:
      if (column >= kDebits) return AmountColor(amount(column));
      return {};
    default:
      return {};
  }
}

QVariant SummaryPeriodsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole && section >= kEntries) return QVariant(kRight);
  if (role != Qt::DisplayRole) return {};
  switch (section) {
    case kPeriod:
      return tr("Period");
    case kEnd:
      return tr("Last Day");
    case kEntries:
      return tr("Entries");
    case kDebits:
      return tr("Debits");
    case kDeposits:
      return tr("Deposits");
    case kTotal:
      return tr("Total");
    case kStartBalance:
      return tr("Start Balance");
    case kEndBalance:
      return tr("End Balance");
    default:
      return {};
  }
}

// --- Named subtotals ------------------------------------------------------------

void SummaryNamedRowsModel::setRows(std::shared_ptr<const tarn::TARNSummaryResult> result,
                                    const std::vector<tarn::TARNSummaryNamedRow>* rows,
                                    AmountFormat format) {
  beginResetModel();
  result_ = std::move(result);
  rows_ = result_ ? rows : nullptr;
  format_ = std::move(format);
  endResetModel();
}

int SummaryNamedRowsModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid() || !rows_) return 0;
  return static_cast<int>(rows_->size());
}

int SummaryNamedRowsModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

QVariant SummaryNamedRowsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || !rows_ || index.row() >= rowCount()) return {};
  const tarn::TARNSummaryNamedRow& named = (*rows_)[static_cast<std::size_t>(index.row())];
  const int column = index.column();
  const std::optional<double> amount = column == kAmount   ? named.row.amount
                                       : column == kDebits ? named.row.debits
                                                           : named.row.deposits;
  switch (role) {
    case Qt::DisplayRole:
      if (column == kName) {
        return named.name.empty() ? emptyName_ : QString::fromStdString(named.name);
      }
      return amount ? AmountCell(format_, *amount) : QVariant();
    case kSummaryAmountRole:
      return column != kName && amount ? QVariant(*amount) : QVariant();
    case Qt::TextAlignmentRole:
      if (column != kName) return QVariant(kRight);
      return {};
    case Qt::ForegroundRole:
      if (column != kName && amount) return AmountColor(*amount);
      if (column == kName && named.name.empty()) return QBrush(QColor(128, 128, 128));
      return {};
    default:
      return {};
  }
}

QVariant SummaryNamedRowsModel::headerData(int section, Qt::Orientation orientation,
                                           int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole && section != kName) return QVariant(kRight);
  if (role != Qt::DisplayRole) return {};
  switch (section) {
    case kName:
      return nameHeader_;
    case kAmount:
      return tr("Amount");
    case kDebits:
      return tr("Debits");
    case kDeposits:
      return tr("Deposits");
    default:
      return {};
  }
}

// --- Category tree --------------------------------------------------------------

void SummaryCategoryModel::setResult(std::shared_ptr<const tarn::TARNSummaryResult> result,
                                     std::int32_t periodStyle, AmountFormat format) {
  beginResetModel();
  result_ = std::move(result);
  periodStyle_ = periodStyle;
  format_ = std::move(format);
  nodes_.assign(1, Node{});
  amounts_.clear();
  if (result_) {
    addRows(result_->subtotals.categories, 0);
    const std::size_t periods = result_->periods.size();
    amounts_.assign(nodes_.size() * periods, std::numeric_limits<double>::quiet_NaN());
    for (std::size_t p = 0; p < periods; ++p) {
      addPeriodRows(result_->periods[p].subtotals.categories, 0, p);
    }
  }
  endResetModel();
}

void SummaryCategoryModel::addRows(const std::vector<tarn::TARNSummaryCategoryRow>& rows,
                                   std::size_t parent) {
  for (const auto& row : rows) {
    const std::size_t node = nodes_.size();
    nodes_.push_back(Node{&row, parent, static_cast<int>(nodes_[parent].children.size()), {}});
    nodes_[parent].children.push_back(node);
    addRows(row.children, node);
  }
}

// Each level of a period's tree is matched to the range's rows under the
// same parent by folded name; one map per level keeps this linear in the
// rows rather than in rows times siblings.
void SummaryCategoryModel::addPeriodRows(const std::vector<tarn::TARNSummaryCategoryRow>& rows,
                                         std::size_t parent, std::size_t period) {
  if (rows.empty()) return;
  std::unordered_map<std::string, std::size_t> byName;
  byName.reserve(nodes_[parent].children.size());
  for (std::size_t child : nodes_[parent].children) {
    byName.emplace(tarn::CaseFold(nodes_[child].row->subtotalName), child);
  }
  const std::size_t periods = result_->periods.size();
  for (const auto& row : rows) {
    const auto found = byName.find(tarn::CaseFold(row.subtotalName));
    if (found == byName.end()) continue;  // the range's tree holds every period's rows
    double& cell = amounts_[found->second * periods + period];
    cell = std::isnan(cell) ? row.row.amount : cell + row.row.amount;
    addPeriodRows(row.children, found->second, period);
  }
}

const SummaryCategoryModel::Node* SummaryCategoryModel::nodeOf(const QModelIndex& index) const {
  if (!index.isValid()) return &nodes_[0];
  const auto node = static_cast<std::size_t>(index.internalId());
  return node < nodes_.size() ? &nodes_[node] : nullptr;
}

QModelIndex SummaryCategoryModel::index(int row, int column, const QModelIndex& parent) const {
  if (nodes_.empty() || row < 0 || column < 0 || column >= columnCount()) return {};
  const Node* node = nodeOf(parent);
  if (!node || static_cast<std::size_t>(row) >= node->children.size()) return {};
  return createIndex(row, column,
                     static_cast<quintptr>(node->children[static_cast<std::size_t>(row)]));
}

QModelIndex SummaryCategoryModel::parent(const QModelIndex& child) const {
  if (!child.isValid()) return {};
  const Node* node = nodeOf(child);
  if (!node || node->parent == 0) return {};
  return createIndex(nodes_[node->parent].place, 0, static_cast<quintptr>(node->parent));
}

int SummaryCategoryModel::rowCount(const QModelIndex& parent) const {
  if (nodes_.empty() || (parent.isValid() && parent.column() != 0)) return 0;
  const Node* node = nodeOf(parent);
  return node ? static_cast<int>(node->children.size()) : 0;
}

int SummaryCategoryModel::columnCount(const QModelIndex&) const {
  return kFirstPeriod + (result_ ? static_cast<int>(result_->periods.size()) : 0);
}

QVariant SummaryCategoryModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const auto id = static_cast<std::size_t>(index.internalId());
  if (id == 0 || id >= nodes_.size()) return {};
  const tarn::TARNSummaryCategoryRow& row = *nodes_[id].row;
  const int column = index.column();
  double amount = row.row.amount;
  if (column >= kFirstPeriod) {
    amount =
        amounts_[id * result_->periods.size() + static_cast<std::size_t>(column - kFirstPeriod)];
  }
  switch (role) {
    case Qt::DisplayRole:
      if (column == kName) {
        return row.subtotalName.empty() ? tr("(no category)")
                                        : QString::fromStdString(row.subtotalName);
      }
      if (std::isnan(amount)) return {};
      return AmountCell(format_, amount);
    case kSummaryAmountRole:
      if (column == kName || std::isnan(amount)) return {};
      return amount;
    case Qt::TextAlignmentRole:
      if (column != kName) return QVariant(kRight);
      return {};
    case Qt::ForegroundRole:
      if (column != kName && !std::isnan(amount)) return AmountColor(amount);
      return {};
    case Qt::ToolTipRole:
      return fullName(index);
    default:
      return {};
  }
}

QVariant SummaryCategoryModel::headerData(int section, Qt::Orientation orientation,
                                          int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole && section != kName) return QVariant(kRight);
  if (role != Qt::DisplayRole) return {};
  if (section == kName) return tr("Category");
  if (section == kRange) return tr("Whole Range");
  if (!result_ || section - kFirstPeriod >= static_cast<int>(result_->periods.size())) return {};
  return SummaryPeriodLabel(result_->periods[static_cast<std::size_t>(section - kFirstPeriod)],
                            periodStyle_);
}

QString SummaryCategoryModel::fullName(const QModelIndex& index) const {
  if (!index.isValid()) return {};
  QStringList parts;
  for (auto id = static_cast<std::size_t>(index.internalId()); id != 0 && id < nodes_.size();
       id = nodes_[id].parent) {
    parts.prepend(QString::fromStdString(nodes_[id].row->subtotalName));
  }
  return parts.join(QLatin1Char(':'));
}
