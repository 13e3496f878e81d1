// The register table: one row per entry of an account's filtered view, in
// the order the user sorted it. The model holds the rows (shared with the
// account, which owns the entries) and names of types and categories looked
// up once per refresh, so that every cell is answered in constant time and
// scrolling never recomputes a balance: running balances come from the
// entries' cache, filled by the account's CacheRunningBalances. Amounts are
// written by the account currency's formatter, taken once per refresh.
#pragma once

#include <QAbstractTableModel>
#include <QHash>
#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace tarn {
class TARNAccount;
class TARNAccountEntry;
class TARNNumberFormatter;
}  // namespace tarn

class RegisterModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column {
    kDate,
    kCheckNumber,
    kType,
    kDescription,
    kToFrom,
    kCategory,
    kResolved,
    kAmount,
    kBalance,
    kColumnCount
  };
  // Which view's filter the rows come through.
  enum class View { Register, Reconcile };

  explicit RegisterModel(QObject* parent = nullptr);

  // Shows the account (nullptr: nothing) through the view's filter. Call
  // after any change to the account's entries or filter settings;
  // `balancesChanged` says the entries changed, so running balances are
  // computed again (once, for the whole account).
  void setAccount(tarn::TARNAccount* account, View view);
  void refresh(bool balancesChanged);

  tarn::TARNAccount* account() const { return account_; }
  View view() const { return view_; }
  std::shared_ptr<tarn::TARNAccountEntry> entryAt(int row) const;
  // The row of the entry with that number, or -1.
  int rowOfEntry(int number) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  void sort(int column, Qt::SortOrder order) override;

  // Money as the register writes it: in the account's currency, through
  // the formatter taken when the account or its currency last changed.
  QString formatAmount(double amount) const;

 private:
  void rebuildNames();
  void sortRows();

  tarn::TARNAccount* account_ = nullptr;
  View view_ = View::Register;
  std::vector<std::shared_ptr<tarn::TARNAccountEntry>> rows_;
  QHash<int, QString> typeNames_;
  QHash<int, QString> categoryNames_;
  // The currency's formatter, kept alive here should the currency be edited
  // and drop it; and one buffer that every cell's text is written into.
  std::shared_ptr<const tarn::TARNNumberFormatter> formatter_;
  mutable std::string text_;
  int sortColumn_ = kDate;
  Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
};
