// The review of an import before anything is added: one row per imported
// entry with its import switch, date, amount, payee, description, the type
// and category it will get (either may be a new one, made on import), and
// the reason it is likely a duplicate. The model answers cells straight from
// the review's items, so a file of ten thousand entries shows at once; the
// dialog adds a line of counts and, for an OFX file the faithful reading
// refused, a notice that the tolerant reading was used.
#pragma once

#include <QAbstractTableModel>
#include <QDialog>
#include <QStringList>

#include <cstddef>
#include <vector>

class QLabel;
class QTableView;

namespace tarn {
class TARNAccount;
class TARNBook;
class TARNImportReview;
struct ImportedFile;
struct ImportReviewItem;
}  // namespace tarn

class ImportReviewModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column {
    kImport,
    kDate,
    kAmount,
    kPayee,
    kDescription,
    kType,
    kCategory,
    kDuplicate,
    kColumnCount
  };

  ImportReviewModel(tarn::TARNImportReview& review, tarn::TARNBook& book,
                    tarn::TARNAccount& account, QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  int columnCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // The import switch (check state), or a type or category name: an existing
  // one is chosen, any other name is made on import.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  // Orders the rows with the import entries' comparators; equal rows keep
  // the file's order.
  void sort(int column, Qt::SortOrder order) override;

  // The review item a row shows.
  tarn::ImportReviewItem& item(int row);
  // The names a type or category cell offers: the account's types of the
  // row's direction, or every category of the book.
  QStringList choices(const QModelIndex& index) const;
  void setAllTicked(bool ticked);

 signals:
  void ticksChanged();

 private:
  QString typeText(const tarn::ImportReviewItem& item) const;
  QString categoryText(const tarn::ImportReviewItem& item) const;

  tarn::TARNImportReview& review_;
  tarn::TARNBook& book_;
  tarn::TARNAccount& account_;
  // Row -> index of the review item.
  std::vector<std::size_t> order_;
  QStringList categoryNames_;
};

class ImportReviewDialog : public QDialog {
  Q_OBJECT

 public:
  ImportReviewDialog(tarn::TARNImportReview& review, const tarn::ImportedFile& file,
                     tarn::TARNBook& book, tarn::TARNAccount& account, QWidget* parent = nullptr);

  ImportReviewModel* model() const { return model_; }
  QTableView* table() const { return table_; }

 private:
  void updateCounts();

  tarn::TARNImportReview& review_;
  ImportReviewModel* model_ = nullptr;
  QTableView* table_ = nullptr;
  QLabel* counts_ = nullptr;
  QString fileName_;
};

// What a duplicate mark says, for its tooltip; "" for none.
QString DuplicateReasonText(const tarn::ImportReviewItem& item);
