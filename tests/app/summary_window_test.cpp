// The Summary window of the check register, driven as a user drives it:
// the account's saved summaries chosen one by one and their totals checked
// against the register's entries summed here; options changed and the
// tables following; options saved into the account and taken back by Undo;
// unsaved options asked about before they are left.

#include <QAction>
#include <QApplication>
#include <QBarSeries>
#include <QBarSet>
#include <QCategoryAxis>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>

#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app_test_support.h"
#include "main_window.h"
#include "summary_models.h"
#include "summary_window.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/sample_book.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/split_line_item.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/text.h"
#include "tarn/reports/account_summary.h"
#include "tarn/reports/summary_result.h"

namespace {

tarn::DateNumber FromQDate(const QDate& date) {
  return date.year() * 10000 + date.month() * 100 + date.day();
}

// What the window's options select, read back from its controls, so that
// the sums below follow the same choices the user made.
struct Selection {
  tarn::DateNumber from = 0;
  tarn::DateNumber to = 0;
  bool debits = true;
  bool deposits = true;
  int resolved = tarn::kSummaryShowAll;
  int taxDeductible = tarn::kSummaryShowAll;
  int checks = tarn::kSummaryShowAll;
  QString description;  // a description filter's text, when on
};

bool Counts(const tarn::TARNAccountEntry& entry, const Selection& selection) {
  if (entry.GetDate() < selection.from || entry.GetDate() > selection.to) return false;
  if (!(entry.IsDebit() && selection.debits) && !(entry.IsDeposit() && selection.deposits)) {
    return false;
  }
  const auto choice = [](int chosen, bool has) {
    return chosen == tarn::kSummaryShowAll || (chosen == tarn::kSummaryShowOnly) == has;
  };
  return choice(selection.resolved, entry.GetCleared() != 0) &&
         choice(selection.taxDeductible, entry.GetTaxDeductible()) &&
         choice(selection.checks, entry.IsCheck()) &&
         (selection.description.isEmpty() ||
          tarn::CaseInsensitiveContains(entry.GetDescription(),
                                        selection.description.toStdString()));
}

struct Sums {
  int count = 0;
  double debits = 0;
  double deposits = 0;
  // Amount per category path ("Food", "Food:Groceries"), each parent
  // counting its subcategories; split entries through their lines.
  std::map<std::string, double> categories;
};

}  // namespace

class SummaryWindowTest : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void cleanupTestCase();
  void init();
  void cleanup();

  void savedSummariesAgreeWithTheRegister();
  void optionsChangeTheTables();
  void savesOptionsIntoTheAccountWithUndo();
  void keepsStoredStylesThePopUpsDoNotOffer();
  void subtotalChoicesHideTabsAndAreSaved();
  void asksBeforeLeavingUnsavedOptions();
  void asksBeforeFollowingAnotherAccountOrBook();

 private:
  SummaryWindow* open();
  Selection selectionShown() const;
  Sums sumRegister(const Selection& selection) const;
  QString money(double amount) const;
  QString label(const char* name) const;
  template <typename T>
  T* child(const char* name) const {
    T* found = summary_->findChild<T*>(QString::fromLatin1(name));
    if (!found) qFatal("no %s in the summary window", name);
    return found;
  }

  std::unique_ptr<AppTestScratch> scratch_;
  std::unique_ptr<MainWindow> window_;
  tarn::TARNBook* book_ = nullptr;
  SummaryWindow* summary_ = nullptr;
};

void SummaryWindowTest::initTestCase() {
  scratch_ = std::make_unique<AppTestScratch>();
  QVERIFY(scratch_->isValid());
}

void SummaryWindowTest::cleanupTestCase() {
  scratch_.reset();
}

void SummaryWindowTest::init() {
  auto book = SampleHousehold();
  book_ = book.get();
  window_ = ShownWindow(std::move(book));
  QVERIFY(window_);
  summary_ = open();
  QVERIFY(summary_);
}

void SummaryWindowTest::cleanup() {
  window_.reset();
  summary_ = nullptr;
}

SummaryWindow* SummaryWindowTest::open() {
  FindAction(*window_, "Su&mmary...")->trigger();
  return window_->findChild<SummaryWindow*>("summaryWindow");
}

Selection SummaryWindowTest::selectionShown() const {
  Selection selection;
  selection.from = FromQDate(child<QDateEdit>("startDate")->date());
  selection.to = FromQDate(child<QDateEdit>("endDate")->date());
  selection.debits = child<QCheckBox>("showDebits")->isChecked();
  selection.deposits = child<QCheckBox>("showDeposits")->isChecked();
  selection.resolved = child<QComboBox>("showResolved")->currentData().toInt();
  selection.taxDeductible = child<QComboBox>("showTaxDeductible")->currentData().toInt();
  selection.checks = child<QComboBox>("showChecks")->currentData().toInt();
  if (child<QCheckBox>("filter")->isChecked() &&
      child<QComboBox>("filterType")->currentData().toInt() == tarn::kSummarySearchDescription) {
    selection.description = child<QLineEdit>("filterText")->text();
  }
  return selection;
}

// The register's entries (and its folders') summed over the selection, the
// plain way: one pass, no filter, no periods.
Sums SummaryWindowTest::sumRegister(const Selection& selection) const {
  const auto account = book_->accountWithNumber(summary_->account());
  Sums sums;
  const auto file = [&account, &sums](std::int32_t number, double amount) {
    auto category = account->accountEntryCategoryForNumber(number);
    const std::string full = category ? category->fullName() : std::string();
    for (std::size_t colon = full.find(':'); colon != std::string::npos;
         colon = full.find(':', colon + 1)) {
      sums.categories[full.substr(0, colon)] += amount;
    }
    sums.categories[full] += amount;
  };
  for (const auto& entry : account->GetAllEntries()) {
    if (entry->GetVoid() || !Counts(*entry, selection)) continue;
    ++sums.count;
    (entry->IsDeposit() ? sums.deposits : sums.debits) += entry->GetAmount();  // debit otherwise
    if (entry->splitLineItems().empty()) {
      file(entry->GetCategory(), entry->GetAmount());
    } else {
      for (const auto& item : entry->splitLineItems()) file(item->category(), item->amount());
    }
  }
  return sums;
}

QString SummaryWindowTest::money(double amount) const {
  const auto account = book_->accountWithNumber(summary_->account());
  amount = std::round(amount * 100) / 100;
  if (amount == 0) amount = 0;
  return QString::fromStdString(account->currency()->formatter()->stringForObjectValue(amount));
}

QString SummaryWindowTest::label(const char* name) const {
  return child<QLabel>(name)->text();
}

void SummaryWindowTest::savedSummariesAgreeWithTheRegister() {
  const auto account = book_->accountWithNumber(summary_->account());
  QVERIFY(account);
  auto* saved = child<QComboBox>("savedSummaries");
  QCOMPARE(saved->count(), static_cast<int>(account->accountSummaries().size()));
  QVERIFY(saved->count() >= 10);  // the defaults
  auto* categories = child<QTreeView>("categories")->model();

  int withEntries = 0;
  for (int i = 0; i < saved->count(); ++i) {
    saved->setCurrentIndex(i);
    const QString name = saved->currentText();
    const Selection selection = selectionShown();
    const Sums sums = sumRegister(selection);
    QCOMPARE(label("entryCount"), QString::number(sums.count));
    QCOMPARE(label("debitsTotal"), money(sums.debits));
    QCOMPARE(label("depositsTotal"), money(sums.deposits));
    QCOMPARE(label("total"), money(sums.debits + sums.deposits));
    if (sums.count > 0) ++withEntries;

    // Every row of the category tree over the whole range and in each
    // period (a blank cell where the period has nothing of it).
    auto* tree = qobject_cast<SummaryCategoryModel*>(categories);
    const auto& periods = summary_->result()->periods;
    QCOMPARE(categories->columnCount(),
             SummaryCategoryModel::kFirstPeriod + static_cast<int>(periods.size()));
    std::vector<Sums> periodSums;
    for (const auto& period : periods) {
      Selection inPeriod = selection;
      inPeriod.from = period.startDate.dateNumber();
      inPeriod.to = period.endDate.dateNumber();
      periodSums.push_back(sumRegister(inPeriod));
    }
    std::size_t rows = 0;
    std::function<void(const QModelIndex&)> check = [&](const QModelIndex& parent) {
      for (int row = 0; row < categories->rowCount(parent); ++row) {
        ++rows;
        const QModelIndex nameCell = categories->index(row, SummaryCategoryModel::kName, parent);
        const std::string path = tree->fullName(nameCell).toStdString();
        QVERIFY2(sums.categories.count(path), path.c_str());
        QCOMPARE(categories->index(row, SummaryCategoryModel::kRange, parent).data().toString(),
                 money(sums.categories.at(path)));
        for (std::size_t p = 0; p < periods.size(); ++p) {
          const auto found = periodSums[p].categories.find(path);
          QCOMPARE(
              categories
                  ->index(row, SummaryCategoryModel::kFirstPeriod + static_cast<int>(p), parent)
                  .data()
                  .toString(),
              found == periodSums[p].categories.end() ? QString() : money(found->second));
        }
        check(nameCell);
      }
    };
    check({});
    QCOMPARE(rows, sums.categories.size());
  }
  QVERIFY(withEntries >= 5);  // the year's summaries are not all empty

  // Custom dates from the middle of a month, debits only and resolved.
  auto* range = child<QComboBox>("rangeStyle");
  range->setCurrentIndex(range->findData(tarn::kSummaryRangeCustom));
  QVERIFY(child<QDateEdit>("startDate")->isEnabled());
  child<QDateEdit>("startDate")->setDate(QDate(2025, 12, 15));
  child<QDateEdit>("endDate")->setDate(QDate(2026, 6, 14));
  child<QCheckBox>("showDeposits")->setChecked(false);
  child<QCheckBox>("showDebits")->setChecked(true);
  auto* resolved = child<QComboBox>("showResolved");
  resolved->setCurrentIndex(resolved->findData(tarn::kSummaryShowOnly));
  const Sums custom = sumRegister(selectionShown());
  QVERIFY(custom.count > 0);
  QCOMPARE(label("entryCount"), QString::number(custom.count));
  QCOMPARE(label("debitsTotal"), money(custom.debits));
  QCOMPARE(label("depositsTotal"), money(0));
}

void SummaryWindowTest::optionsChangeTheTables() {
  auto* saved = child<QComboBox>("savedSummaries");
  saved->setCurrentIndex(saved->findText("All Entries, Year To Date"));
  QVERIFY(saved->currentIndex() >= 0);
  auto* periods = child<QTableView>("periods")->model();
  auto* categories = child<QTreeView>("categories")->model();
  auto* periodStyle = child<QComboBox>("periodStyle");
  QCOMPARE(periodStyle->currentData().toInt(), tarn::kSummaryPeriodMonth);
  // 1 January to 24 November: eleven months, the last cut short.
  QCOMPARE(periods->rowCount(), 11);
  QCOMPARE(periods->index(0, SummaryPeriodsModel::kPeriod).data().toString(), QString("Jan 2026"));
  QCOMPARE(periods->index(10, SummaryPeriodsModel::kEnd).data().toString(), QString("2026-11-24"));
  QCOMPARE(categories->columnCount(), SummaryCategoryModel::kFirstPeriod + 11);
  const QString total = label("total");

  periodStyle->setCurrentIndex(periodStyle->findData(tarn::kSummaryPeriodQuarter));
  QCOMPARE(periods->rowCount(), 4);
  QCOMPARE(periods->index(3, SummaryPeriodsModel::kPeriod).data().toString(), QString("Q4 2026"));
  QCOMPARE(periods->index(3, SummaryPeriodsModel::kEnd).data().toString(), QString("2026-11-24"));
  QCOMPARE(categories->columnCount(), SummaryCategoryModel::kFirstPeriod + 4);
  QCOMPARE(label("total"), total);  // the range is the same
  // The chart has a debit and a deposit bar per period, debits as heights.
  auto* bars =
      qobject_cast<QBarSeries*>(child<QChartView>("summaryChart")->chart()->series().value(0));
  QVERIFY(bars);
  QCOMPARE(bars->barSets().size(), 2);
  for (int row = 0; row < periods->rowCount(); ++row) {
    QCOMPARE(
        bars->barSets()[0]->at(row),
        std::fabs(
            periods->index(row, SummaryPeriodsModel::kDebits).data(kSummaryAmountRole).toDouble()));
    QCOMPARE(
        bars->barSets()[1]->at(row),
        periods->index(row, SummaryPeriodsModel::kDeposits).data(kSummaryAmountRole).toDouble());
  }
  QCOMPARE(bars->barSets()[0]->count(), 4);
  // The amounts up the side are the account's money, whole, at round steps
  // reaching above the highest bar.
  auto* side = qobject_cast<QCategoryAxis*>(
      child<QChartView>("summaryChart")->chart()->axes(Qt::Vertical).value(0));
  QVERIFY(side);
  const QStringList marks = side->categoriesLabels();
  QVERIFY(marks.size() >= 3);
  double highest = 0;
  for (QBarSet* set : bars->barSets()) {
    for (int i = 0; i < set->count(); ++i) highest = std::max(highest, set->at(i));
  }
  QVERIFY(highest >= 1000);
  QVERIFY(side->endValue(marks.last()) >= highest);
  QVERIFY(side->endValue(marks.last()) < highest * 2);
  for (const QString& mark : marks) {
    const double value = side->endValue(mark);
    QCOMPARE(value, std::round(value));
    QCOMPARE(mark, money(value).remove(QStringLiteral(".00")));
  }
  QVERIFY(marks.last().contains(','));  // grouped thousands
  periodStyle->setCurrentIndex(periodStyle->findData(tarn::kSummaryPeriodWholeRange));
  QCOMPARE(periods->rowCount(), 1);
  // Each period's end balance is the next one's start balance; the range's
  // end balance is the start plus the total.
  periodStyle->setCurrentIndex(periodStyle->findData(tarn::kSummaryPeriodWeek));
  QVERIFY(periods->rowCount() >= 47);
  for (int row = 1; row < periods->rowCount(); ++row) {
    QCOMPARE(periods->index(row, SummaryPeriodsModel::kStartBalance).data().toString(),
             periods->index(row - 1, SummaryPeriodsModel::kEndBalance).data().toString());
  }
  const auto& result = *summary_->result();
  QCOMPARE(label("endBalance"), money(result.startBalance + result.totals.total));

  // A description filter: the count and totals follow the text, and every
  // description subtotal holds it.
  const auto account = book_->accountWithNumber(summary_->account());
  std::string description;
  for (const auto& entry : account->GetEntries()) {
    if (entry->GetDate() >= 20260101 && !entry->GetDescription().empty() && !entry->GetVoid()) {
      description = entry->GetDescription();
      break;
    }
  }
  QVERIFY(!description.empty());
  auto* field = child<QComboBox>("filterType");
  field->setCurrentIndex(field->findData(tarn::kSummarySearchDescription));
  auto* text = child<QLineEdit>("filterText");
  const QString needle = QString::fromStdString(description).left(5).toLower();
  text->setText(needle);
  emit text->editingFinished();
  QVERIFY(child<QCheckBox>("filter")->isChecked());
  const Sums filtered = sumRegister(selectionShown());
  QVERIFY(filtered.count > 0);
  QCOMPARE(label("entryCount"), QString::number(filtered.count));
  QCOMPARE(label("total"), money(filtered.debits + filtered.deposits));
  QVERIFY(label("total") != total);
  auto* descriptions = child<QTableView>("descriptions")->model();
  QVERIFY(descriptions->rowCount() > 0);
  for (int row = 0; row < descriptions->rowCount(); ++row) {
    QVERIFY(descriptions->index(row, 0).data().toString().toLower().contains(needle));
  }
  text->clear();
  emit text->editingFinished();
  QCOMPARE(label("total"), total);

  // Parent rows with and without their subcategories: with them, a parent
  // counts its own entries and every descendant's.
  const auto amountOf = [&categories](const QModelIndex& index) {
    return categories->index(index.row(), SummaryCategoryModel::kRange, index.parent())
        .data(kSummaryAmountRole)
        .toDouble();
  };
  std::function<double(const QModelIndex&)> descendants = [&](const QModelIndex& parent) {
    double sum = 0;
    for (int row = 0; row < categories->rowCount(parent); ++row) {
      const QModelIndex each = categories->index(row, 0, parent);
      sum += amountOf(each) + descendants(each);
    }
    return sum;
  };
  std::map<QString, double> inclusive;
  int parents = 0;
  for (int row = 0; row < categories->rowCount(); ++row) {
    const QModelIndex top = categories->index(row, 0);
    inclusive[top.data().toString()] = amountOf(top);
    if (categories->rowCount(top) > 0) ++parents;
  }
  QVERIFY(parents > 0);
  child<QCheckBox>("parentsIncludeSubcategories")->setChecked(false);
  for (int row = 0; row < categories->rowCount(); ++row) {
    const QModelIndex top = categories->index(row, 0);
    QVERIFY(std::fabs(amountOf(top) + descendants(top) - inclusive[top.data().toString()]) < 0.02);
  }
}

void SummaryWindowTest::savesOptionsIntoTheAccountWithUndo() {
  const auto account = book_->accountWithNumber(summary_->account());
  auto* undo = window_->findChild<QAction*>("undo");
  auto* redo = window_->findChild<QAction*>("redo");
  QVERIFY(undo && redo);
  QVERIFY(!undo->isEnabled());
  auto* saved = child<QComboBox>("savedSummaries");
  const int count = saved->count();
  saved->setCurrentIndex(saved->findText("Expenses, Year To Date"));
  const int chosen = saved->currentIndex();
  QVERIFY(chosen >= 0);
  const auto summaryAt = [&account](int index) {
    return account->accountSummaries()[static_cast<std::size_t>(index)];
  };
  const tarn::plist::Value before = summaryAt(chosen)->optionsAsDictionary();

  // Quarterly periods saved over the chosen summary.
  auto* periodStyle = child<QComboBox>("periodStyle");
  periodStyle->setCurrentIndex(periodStyle->findData(tarn::kSummaryPeriodQuarter));
  QCOMPARE(summaryAt(chosen)->subtotalPeriodStyle(), tarn::kSummaryPeriodMonth);
  QTest::mouseClick(child<QPushButton>("saveSummary"), Qt::LeftButton);
  QVERIFY(undo->isEnabled());
  QCOMPARE(summaryAt(chosen)->subtotalPeriodStyle(), tarn::kSummaryPeriodQuarter);
  QCOMPARE(summaryAt(chosen)->name(), std::string("Expenses, Year To Date"));
  QCOMPARE(saved->count(), count);

  // Undo puts the saved options back, and the window shows them.
  undo->trigger();
  QCOMPARE(summaryAt(chosen)->optionsAsDictionary(), before);
  QCOMPARE(periodStyle->currentData().toInt(), tarn::kSummaryPeriodMonth);
  QCOMPARE(saved->currentIndex(), chosen);
  redo->trigger();
  QCOMPARE(summaryAt(chosen)->subtotalPeriodStyle(), tarn::kSummaryPeriodQuarter);

  // Saved as new under a name of its own, then under a name already taken.
  child<QLineEdit>("summaryName")->setText("Groceries by Week");
  periodStyle->setCurrentIndex(periodStyle->findData(tarn::kSummaryPeriodWeek));
  QTest::mouseClick(child<QPushButton>("saveSummaryAsNew"), Qt::LeftButton);
  QCOMPARE(saved->count(), count + 1);
  QCOMPARE(saved->currentText(), QString("Groceries by Week"));
  QCOMPARE(summaryAt(count)->subtotalPeriodStyle(), tarn::kSummaryPeriodWeek);
  QCOMPARE(summaryAt(chosen)->subtotalPeriodStyle(), tarn::kSummaryPeriodQuarter);
  QTest::mouseClick(child<QPushButton>("saveSummaryAsNew"), Qt::LeftButton);
  QCOMPARE(saved->count(), count + 2);
  QCOMPARE(summaryAt(count + 1)->name(), std::string("Groceries by Week 2"));
  QCOMPARE(child<QLineEdit>("summaryName")->text(), QString("Groceries by Week 2"));

  // Undo takes the new summaries away one by one, then the first save.
  undo->trigger();
  undo->trigger();
  QCOMPARE(saved->count(), count);
  QCOMPARE(static_cast<int>(account->accountSummaries().size()), count);
  undo->trigger();
  QCOMPARE(summaryAt(chosen)->optionsAsDictionary(), before);

  // What was saved survives the book being written and read back.
  redo->trigger();
  const auto reread = tarn::TARNAccount::initWithDictionary(account->asDictionary(), nullptr);
  QCOMPARE(reread->accountSummaries()[static_cast<std::size_t>(chosen)]->subtotalPeriodStyle(),
           tarn::kSummaryPeriodQuarter);
}

// A file may hold range, period and search numbers the pop-ups have no
// words for: the summary shows with its stored dates and is saved back with
// the same numbers.
void SummaryWindowTest::keepsStoredStylesThePopUpsDoNotOffer() {
  const std::int32_t number = summary_->account();
  const auto account = book_->accountWithNumber(number);
  auto odd = std::make_shared<tarn::TARNAccountSummary>();
  odd->setName(std::string("Odd Numbers"));
  odd->setDateRangeStyle(13);
  odd->setStartDate(20260301);
  odd->setEndDate(20260331);
  odd->setSubtotalPeriodStyle(9);
  odd->setFilter(true);
  odd->setFilterType(7);
  odd->setFilterData(tarn::plist::Value("anything"));
  account->addAccountSummary(odd);
  summary_->setAccount(-1);
  summary_->setAccount(number);
  auto* saved = child<QComboBox>("savedSummaries");
  saved->setCurrentIndex(saved->findText("Odd Numbers"));
  QCOMPARE(child<QComboBox>("rangeStyle")->currentText(), QString("Saved dates (style 13)"));
  QCOMPARE(child<QComboBox>("periodStyle")->currentData().toInt(), 9);
  QCOMPARE(child<QComboBox>("filterType")->currentData().toInt(), 7);
  QCOMPARE(child<QTableView>("periods")->model()->rowCount(), 1);  // the whole range
  // A search field without a condition filters nothing.
  Selection march;
  march.from = 20260301;
  march.to = 20260331;
  QCOMPARE(label("entryCount"), QString::number(sumRegister(march).count));

  child<QCheckBox>("showDeposits")->setChecked(false);
  QTest::mouseClick(child<QPushButton>("saveSummary"), Qt::LeftButton);
  const auto& stored = account->accountSummaries().back();
  QCOMPARE(stored->name(), std::string("Odd Numbers"));
  QCOMPARE(stored->dateRangeStyle(), 13);
  QCOMPARE(stored->startDate(), 20260301);
  QCOMPARE(stored->endDate(), 20260331);
  QCOMPARE(stored->subtotalPeriodStyle(), 9);
  QCOMPARE(stored->filterType(), 7);
  QCOMPARE(stored->filterData(), tarn::plist::Value("anything"));
  QVERIFY(!stored->showDeposits());
}

void SummaryWindowTest::subtotalChoicesHideTabsAndAreSaved() {
  const auto account = book_->accountWithNumber(summary_->account());
  auto* saved = child<QComboBox>("savedSummaries");
  saved->setCurrentIndex(saved->findText("All Entries, Year To Date"));
  const int chosen = saved->currentIndex();
  QVERIFY(chosen >= 0);
  auto* tabs = child<QTabWidget>("summaryTabs");
  const std::vector<std::pair<const char*, const char*>> kinds = {
      {"subtotalCategories", "categories"},
      {"subtotalTypes", "types"},
      {"subtotalDescriptions", "descriptions"},
      {"subtotalToFroms", "payees"}};
  const auto tabShown = [&](const char* view) {
    return tabs->isTabVisible(tabs->indexOf(child<QWidget>(view)));
  };
  const QString total = label("total");
  // Each choice hides its own tab and no other; the figures stay.
  for (const auto& [box, view] : kinds) {
    QVERIFY(child<QCheckBox>(box)->isChecked());
    child<QCheckBox>(box)->setChecked(false);
    for (const auto& [otherBox, otherView] : kinds) {
      QCOMPARE(tabShown(otherView), child<QCheckBox>(otherBox)->isChecked());
    }
    QVERIFY(!tabShown(view));
    QVERIFY(tabShown("periods"));
    QCOMPARE(label("total"), total);
  }
  child<QCheckBox>("subtotalTypes")->setChecked(true);
  QTest::mouseClick(child<QPushButton>("saveSummary"), Qt::LeftButton);
  const auto stored = account->accountSummaries()[static_cast<std::size_t>(chosen)];
  QVERIFY(!stored->subtotalCategories());
  QVERIFY(stored->subtotalTypes());
  QVERIFY(!stored->subtotalDescriptions());
  QVERIFY(!stored->subtotalToFroms());
  const auto reread = tarn::TARNAccount::initWithDictionary(account->asDictionary(), nullptr);
  const auto& back = reread->accountSummaries()[static_cast<std::size_t>(chosen)];
  QVERIFY(!back->subtotalCategories() && back->subtotalTypes());

  // Another summary shows all its tabs; coming back hides the saved ones.
  saved->setCurrentIndex(chosen == 0 ? 1 : 0);
  for (const auto& [box, view] : kinds) QVERIFY(tabShown(view));
  saved->setCurrentIndex(chosen);
  QVERIFY(!child<QCheckBox>("subtotalCategories")->isChecked());
  QVERIFY(!tabShown("categories"));
  QVERIFY(tabShown("types"));
  QVERIFY(!tabShown("payees"));
}

void SummaryWindowTest::asksBeforeLeavingUnsavedOptions() {
  const auto account = book_->accountWithNumber(summary_->account());
  auto* saved = child<QComboBox>("savedSummaries");
  auto* periodStyle = child<QComboBox>("periodStyle");
  const int first = saved->findText("Expenses, Year To Date");
  const int second = saved->findText("All Entries, Year To Date");
  QVERIFY(first >= 0 && second >= 0);
  saved->setCurrentIndex(first);
  const auto storedAt = [&account](int index) {
    return account->accountSummaries()[static_cast<std::size_t>(index)];
  };
  const tarn::plist::Value firstBefore = storedAt(first)->optionsAsDictionary();

  // Answers the next question with `button`, noting what it asked.
  int asked = 0;
  QString question;
  bool windowOffWhileAsking = false;
  const auto answerWith = [&](QMessageBox::StandardButton button) {
    WhenModal(this, [&, button](QWidget* modal) {
      auto* box = qobject_cast<QMessageBox*>(modal);
      QVERIFY(box);
      ++asked;
      question = box->text();
      windowOffWhileAsking = !child<QPushButton>("saveSummary")->isEnabled() &&
                             !child<QComboBox>("periodStyle")->isEnabled();
      QVERIFY(box->button(QMessageBox::Save) && box->button(QMessageBox::Discard));
      box->button(button)->click();
    });
  };

  // Nothing edited: choosing summaries and coming back asks nothing, even
  // though each computation works its dates out again.
  {
    QObject guard;
    WhenModal(&guard, [&asked](QWidget* modal) {
      ++asked;
      modal->close();
    });
    saved->setCurrentIndex(second);
    saved->setCurrentIndex(first);
    QCOMPARE(asked, 0);
  }

  // Cancel stays on the edited summary with the edits.
  periodStyle->setCurrentIndex(periodStyle->findData(tarn::kSummaryPeriodQuarter));
  child<QLineEdit>("summaryName")->setText("Expenses by Quarter");
  answerWith(QMessageBox::Cancel);
  saved->setCurrentIndex(second);
  QCOMPARE(asked, 1);
  QVERIFY(question.contains("Expenses by Quarter"));
  QVERIFY(windowOffWhileAsking);
  QCOMPARE(saved->currentIndex(), first);
  QCOMPARE(periodStyle->currentData().toInt(), tarn::kSummaryPeriodQuarter);
  QCOMPARE(child<QLineEdit>("summaryName")->text(), QString("Expenses by Quarter"));
  QCOMPARE(child<QTableView>("periods")->model()->rowCount(), 4);
  QVERIFY(child<QPushButton>("saveSummary")->isEnabled());  // given back after the run
  QCOMPARE(storedAt(first)->optionsAsDictionary(), firstBefore);

  // Discard drops them: the other summary shows, and the first is as saved.
  answerWith(QMessageBox::Discard);
  saved->setCurrentIndex(second);
  QCOMPARE(asked, 2);
  QCOMPARE(saved->currentIndex(), second);
  QCOMPARE(child<QLineEdit>("summaryName")->text(), QString("All Entries, Year To Date"));
  QCOMPARE(storedAt(first)->optionsAsDictionary(), firstBefore);
  saved->setCurrentIndex(first);  // nothing edited in the second
  QCOMPARE(asked, 2);
  QCOMPARE(periodStyle->currentData().toInt(), tarn::kSummaryPeriodMonth);

  // Save keeps them in the summary being left, with Undo.
  periodStyle->setCurrentIndex(periodStyle->findData(tarn::kSummaryPeriodWeek));
  answerWith(QMessageBox::Save);
  saved->setCurrentIndex(second);
  QCOMPARE(asked, 3);
  QCOMPARE(saved->currentIndex(), second);
  QCOMPARE(storedAt(first)->subtotalPeriodStyle(), tarn::kSummaryPeriodWeek);
  QCOMPARE(storedAt(first)->name(), std::string("Expenses, Year To Date"));
  QVERIFY(window_->findChild<QAction*>("undo")->isEnabled());

  // Closing: Cancel keeps the window and its edits, Discard closes it.
  const QPointer<SummaryWindow> shown(summary_);
  auto* deposits = child<QCheckBox>("showDeposits");
  deposits->setChecked(!deposits->isChecked());
  const bool edited = deposits->isChecked();
  answerWith(QMessageBox::Cancel);
  QVERIFY(!summary_->close());
  QCOMPARE(asked, 4);
  QVERIFY(summary_->isVisible());
  QCOMPARE(deposits->isChecked(), edited);
  answerWith(QMessageBox::Discard);
  QVERIFY(summary_->close());
  QCOMPARE(asked, 5);
  QVERIFY(storedAt(second)->showDeposits() != edited);
  QTRY_VERIFY(!shown);  // deleted on close
  summary_ = nullptr;
}

// The register's account list and File > New Book reach a summary window
// with unsaved edits through the same question as its own pop-up.
void SummaryWindowTest::asksBeforeFollowingAnotherAccountOrBook() {
  auto* periodStyle = child<QComboBox>("periodStyle");
  periodStyle->setCurrentIndex(periodStyle->findData(tarn::kSummaryPeriodQuarter));
  const std::int32_t edited = summary_->account();
  const auto nameOf = [this](std::int32_t number) {
    return QString::fromStdString(book_->accountWithNumber(number)->GetName());
  };
  QStringList others{"Checking", "Savings", "Credit Card"};
  others.removeAll(nameOf(edited));
  QCOMPARE(others.size(), 2);
  const auto select = [this](const QString& name) {
    auto* tree = window_->findChild<QTreeWidget*>("accounts");
    const auto items = tree->findItems(name, Qt::MatchExactly);
    QVERIFY2(!items.isEmpty(), qPrintable(name));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                      tree->visualItemRect(items.first()).center());
    QCOMPARE(tree->currentItem(), items.first());
  };
  int asked = 0;
  const auto answerWith = [this, &asked](QMessageBox::StandardButton button) {
    WhenModal(this, [&asked, button](QWidget* modal) {
      auto* box = qobject_cast<QMessageBox*>(modal);
      QVERIFY(box);
      ++asked;
      box->button(button)->click();
    });
  };

  // Cancel keeps the window on its account, with the edits.
  answerWith(QMessageBox::Cancel);
  select(others[0]);
  QCOMPARE(asked, 1);
  QCOMPARE(summary_->account(), edited);
  QCOMPARE(periodStyle->currentData().toInt(), tarn::kSummaryPeriodQuarter);

  // A new book waits for the answer too; Cancel keeps this book and window.
  answerWith(QMessageBox::Cancel);
  FindAction(*window_, "&New Book")->trigger();
  QCOMPARE(asked, 2);
  QCOMPARE(&window_->book(), book_);
  QVERIFY(summary_->isVisible());

  // Discard follows the account chosen.
  answerWith(QMessageBox::Discard);
  select(others[1]);
  QCOMPARE(asked, 3);
  QCOMPARE(nameOf(summary_->account()), others[1]);
}

QTEST_MAIN(SummaryWindowTest)
#include "summary_window_test.moc"
