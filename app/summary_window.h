// The summaries of one account: pick one of the account's saved summaries
// or change its options, and see the range's totals and balances, the
// periods, a bar chart of each period's debits and deposits, the category
// tree with a column per period and the type, description and payee
// subtotals. The options can be saved back into the account, over the
// chosen summary or as a new one, through the document's undo stack.
// The window works on a copy of the chosen summary; the account changes
// only when the user saves. Leaving options that were edited but not saved
// (by choosing another summary or closing the window) asks first whether to
// save them, drop them or stay.
#pragma once

#include <QDialog>

#include <cstddef>
#include <cstdint>
#include <memory>

#include "tarn/platform/value.h"

class BookDocument;
class QChart;
class QCheckBox;
class QChartView;
class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QTableView;
class QTreeView;
class SummaryCategoryModel;
class SummaryNamedRowsModel;
class SummaryPeriodsModel;

namespace tarn {
class TARNAccountSummary;
struct TARNSummaryResult;
}  // namespace tarn

class SummaryWindow : public QDialog {
  Q_OBJECT

 public:
  SummaryWindow(BookDocument* document, std::int32_t account, QWidget* parent = nullptr);
  ~SummaryWindow() override;

  std::int32_t account() const { return account_; }
  // Follows another account; unsaved option edits are asked about first,
  // and on Cancel the window stays on its account.
  void setAccount(std::int32_t account);

  // The last result shown; nullptr while the account is locked or missing.
  const std::shared_ptr<const tarn::TARNSummaryResult>& result() const { return result_; }
  // Periods at most this many are charted; more would be bars too thin to read.
  static constexpr std::size_t kMostChartedPeriods = 400;

  // Whether the options shown differ from the chosen summary's as saved
  // (for a range worked out from today or the entries, not its dates).
  bool hasUnsavedEdits() const;

  // Closing asks about unsaved edits first; Cancel keeps the window open.
  void reject() override;

 private:
  void buildOptions(class QFormLayout* form);
  void reloadSummaries(bool keepOptions);
  void chooseSummary(int index);
  void showOptions();
  void optionsChanged();
  void subtotalsChanged();
  void showSubtotalTabs();
  // Asks whether to save the unsaved edits, drop them or cancel; true when
  // the window may go on to leave them (saved or dropped), false to stay.
  bool settleUnsavedEdits();
  void recompute();
  void showResult();
  void showChart();
  // Shows the chart, deleting the one shown before (the view does not).
  void replaceChart(QChart* chart);
  // False when nothing could be saved (no name, or the account is locked).
  bool save(bool asNew);

  BookDocument* document_;
  std::int32_t account_;
  bool loading_ = false;
  // The options being looked at, and the saved summary they came from (its
  // place in the account's list and its options as they were).
  std::unique_ptr<tarn::TARNAccountSummary> working_;
  int chosen_ = -1;
  tarn::plist::Value chosenOptions_;
  std::shared_ptr<const tarn::TARNSummaryResult> result_;

  QLabel* title_ = nullptr;
  QComboBox* saved_ = nullptr;
  QLineEdit* name_ = nullptr;
  QComboBox* range_ = nullptr;
  QDateEdit* start_ = nullptr;
  QDateEdit* end_ = nullptr;
  QComboBox* period_ = nullptr;
  QCheckBox* debits_ = nullptr;
  QCheckBox* deposits_ = nullptr;
  QComboBox* resolved_ = nullptr;
  QComboBox* taxDeductible_ = nullptr;
  QComboBox* checks_ = nullptr;
  QCheckBox* filter_ = nullptr;
  QComboBox* filterType_ = nullptr;
  QLineEdit* filterText_ = nullptr;
  QCheckBox* parentsInclude_ = nullptr;
  QCheckBox* subtotalCategories_ = nullptr;
  QCheckBox* subtotalTypes_ = nullptr;
  QCheckBox* subtotalDescriptions_ = nullptr;
  QCheckBox* subtotalPayees_ = nullptr;
  QPushButton* saveOver_ = nullptr;
  QPushButton* saveNew_ = nullptr;

  QLabel* rangeText_ = nullptr;
  QLabel* entryCount_ = nullptr;
  QLabel* debitsTotal_ = nullptr;
  QLabel* depositsTotal_ = nullptr;
  QLabel* total_ = nullptr;
  QLabel* startBalance_ = nullptr;
  QLabel* endBalance_ = nullptr;
  QChartView* chart_ = nullptr;
  QTabWidget* tabs_ = nullptr;
  QTableView* periodsView_ = nullptr;
  QTreeView* categoriesView_ = nullptr;
  QTableView* typesView_ = nullptr;
  QTableView* descriptionsView_ = nullptr;
  QTableView* payeesView_ = nullptr;
  SummaryPeriodsModel* periods_ = nullptr;
  SummaryCategoryModel* categories_ = nullptr;
  SummaryNamedRowsModel* types_ = nullptr;
  SummaryNamedRowsModel* descriptions_ = nullptr;
  SummaryNamedRowsModel* payees_ = nullptr;
};
