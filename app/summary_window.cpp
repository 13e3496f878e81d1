#include "summary_window.h"

#include <QBarSeries>
#include <QBarSet>
#include <QCategoryAxis>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDateEdit>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QSplitter>
#include <QTabWidget>
#include <QTableView>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "book_document.h"
#include "modal_run.h"
#include "money_text.h"
#include "summary_models.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/book_changes.h"
#include "tarn/model/currency.h"
#include "tarn/model/number_formatter.h"
#include "tarn/reports/account_summary.h"
#include "tarn/reports/summary_result.h"
#include "tarn/ui/modal_states.h"

namespace {

struct Choice {
  std::int32_t value;
  const char* label;
};

// The ranges a user picks from, in the order of the pop-up. The stored
// numbers skip 12 to 14 and 19.
constexpr Choice kRanges[] = {
    {tarn::kSummaryRangeFirstToLastEntry,
     QT_TRANSLATE_NOOP("SummaryWindow", "First to Last Entry")},
    {tarn::kSummaryRangeFirstEntryToToday,
     QT_TRANSLATE_NOOP("SummaryWindow", "First Entry to Today")},
    {2, QT_TRANSLATE_NOOP("SummaryWindow", "Today")},
    {3, QT_TRANSLATE_NOOP("SummaryWindow", "Yesterday")},
    {4, QT_TRANSLATE_NOOP("SummaryWindow", "Last Week")},
    {5, QT_TRANSLATE_NOOP("SummaryWindow", "Last Month")},
    {6, QT_TRANSLATE_NOOP("SummaryWindow", "Last Quarter")},
    {tarn::kSummaryRangeLastYear, QT_TRANSLATE_NOOP("SummaryWindow", "Last Year")},
    {8, QT_TRANSLATE_NOOP("SummaryWindow", "This Week")},
    {9, QT_TRANSLATE_NOOP("SummaryWindow", "This Month")},
    {10, QT_TRANSLATE_NOOP("SummaryWindow", "This Quarter")},
    {tarn::kSummaryRangeThisYear, QT_TRANSLATE_NOOP("SummaryWindow", "This Year")},
    {15, QT_TRANSLATE_NOOP("SummaryWindow", "Week to Date")},
    {tarn::kSummaryRangeMonthToDate, QT_TRANSLATE_NOOP("SummaryWindow", "Month to Date")},
    {tarn::kSummaryRangeQuarterToDate, QT_TRANSLATE_NOOP("SummaryWindow", "Quarter to Date")},
    {tarn::kSummaryRangeYearToDate, QT_TRANSLATE_NOOP("SummaryWindow", "Year to Date")},
    {tarn::kSummaryRangeCustom, QT_TRANSLATE_NOOP("SummaryWindow", "Custom Dates")}};

constexpr Choice kPeriods[] = {
    {tarn::kSummaryPeriodDay, QT_TRANSLATE_NOOP("SummaryWindow", "Days")},
    {tarn::kSummaryPeriodWeek, QT_TRANSLATE_NOOP("SummaryWindow", "Weeks")},
    {tarn::kSummaryPeriodMonth, QT_TRANSLATE_NOOP("SummaryWindow", "Months")},
    {tarn::kSummaryPeriodQuarter, QT_TRANSLATE_NOOP("SummaryWindow", "Quarters")},
    {tarn::kSummaryPeriodYear, QT_TRANSLATE_NOOP("SummaryWindow", "Years")},
    {tarn::kSummaryPeriodWholeRange, QT_TRANSLATE_NOOP("SummaryWindow", "Whole Range")}};

constexpr Choice kSearchFields[] = {
    {tarn::kSummarySearchAnything, QT_TRANSLATE_NOOP("SummaryWindow", "Anything")},
    {tarn::kSummarySearchTypeName, QT_TRANSLATE_NOOP("SummaryWindow", "Type")},
    {tarn::kSummarySearchDescription, QT_TRANSLATE_NOOP("SummaryWindow", "Description")},
    {tarn::kSummarySearchToFromAndCategory,
     QT_TRANSLATE_NOOP("SummaryWindow", "Payee or Category")},
    {tarn::kSummarySearchCategory, QT_TRANSLATE_NOOP("SummaryWindow", "Category")},
    {tarn::kSummarySearchSplitDescription, QT_TRANSLATE_NOOP("SummaryWindow", "Split Description")},
    {tarn::kSummarySearchSplitCategory, QT_TRANSLATE_NOOP("SummaryWindow", "Split Category")},
    {tarn::kSummarySearchNotes, QT_TRANSLATE_NOOP("SummaryWindow", "Notes")}};

template <std::size_t N>
QComboBox* ChoiceBox(const char* name, const Choice (&choices)[N]) {
  auto* box = new QComboBox;
  box->setObjectName(QString::fromLatin1(name));
  for (const Choice& each : choices) {
    box->addItem(QCoreApplication::translate("SummaryWindow", each.label), each.value);
  }
  return box;
}

// Selects the item holding the value. A stored value the pop-up does not
// offer gets an item of its own, so that it shows and is saved as it was.
void SelectValue(QComboBox* box, std::int32_t value, const QString& unknown) {
  int index = box->findData(value);
  if (index < 0) {
    box->addItem(unknown.arg(value), value);
    index = box->count() - 1;
  }
  box->setCurrentIndex(index);
}

QDate ToQDate(tarn::DateNumber date) {
  return QDate(date / 10000, date / 100 % 100, date % 100);
}

tarn::DateNumber FromQDate(const QDate& date) {
  return date.year() * 10000 + date.month() * 100 + date.day();
}

// Saved names may start with a space (" Custom..." sorts first); the
// pop-up shows them without it.
QString Shown(const std::string& name) {
  return QString::fromStdString(name).trimmed();
}

QTableView* MakeTable(const char* name, QAbstractItemModel* model) {
  auto* table = new QTableView;
  table->setObjectName(QString::fromLatin1(name));
  table->setModel(model);
  table->setSelectionBehavior(QAbstractItemView::SelectRows);
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setAlternatingRowColors(true);
  table->verticalHeader()->hide();
  table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
  table->setWordWrap(false);
  return table;
}

// A round step (1, 2 or 5 times a power of ten) that cuts 0 to `highest`
// into about five parts.
double AxisStep(double highest) {
  if (!(highest > 0) || !std::isfinite(highest)) return 1;
  const double rough = highest / 5;
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  const double scaled = rough / power;
  return (scaled <= 1 ? 1 : scaled <= 2 ? 2 : scaled <= 5 ? 5 : 10) * power;
}

// An axis amount as the currency writes it; whole steps drop the ".00".
QString AxisAmount(const tarn::TARNNumberFormatter* formatter, double value, bool whole) {
  if (!formatter) return QLocale().toString(value, 'f', whole ? 0 : 2);
  QString text = QString::fromStdString(formatter->stringForObjectValue(value));
  const QString separator = QString::fromStdString(formatter->decimalSeparator());
  const qsizetype at = separator.isEmpty() ? -1 : text.lastIndexOf(separator);
  if (!whole || at < 0) return text;
  qsizetype end = at + separator.size();
  while (end < text.size() && text[end] == QLatin1Char('0')) ++end;
  if (end > at + separator.size() && (end == text.size() || !text[end].isDigit()))
    text.remove(at, end - at);
  return text;
}

QLabel* FigureLabel(const char* name) {
  auto* label = new QLabel;
  label->setObjectName(QString::fromLatin1(name));
  label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

}  // namespace

SummaryWindow::SummaryWindow(BookDocument* document, std::int32_t account, QWidget* parent)
    : QDialog(parent),
      document_(document),
      account_(account),
      working_(std::make_unique<tarn::TARNAccountSummary>()) {
  setObjectName(QStringLiteral("summaryWindow"));
  setWindowTitle(tr("Summary"));
  auto* layout = new QHBoxLayout(this);

  // Left: the saved summaries and the options.
  auto* optionsBox = new QGroupBox(tr("Options"));
  auto* form = new QFormLayout(optionsBox);
  form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  buildOptions(form);
  optionsBox->setMaximumWidth(360);
  layout->addWidget(optionsBox);

  // Right: the figures, the chart and the tables.
  auto* right = new QVBoxLayout;
  title_ = new QLabel;
  QFont bold = title_->font();
  bold.setBold(true);
  title_->setFont(bold);
  right->addWidget(title_);
  rangeText_ = new QLabel;
  rangeText_->setObjectName(QStringLiteral("rangeText"));
  right->addWidget(rangeText_);

  auto* figures = new QGridLayout;
  const auto addFigure = [figures](int column, const QString& caption, QLabel* value) {
    auto* label = new QLabel(caption);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    figures->addWidget(label, 0, column);
    value->setFont([value] {
      QFont font = value->font();
      font.setBold(true);
      return font;
    }());
    figures->addWidget(value, 1, column);
  };
  entryCount_ = FigureLabel("entryCount");
  debitsTotal_ = FigureLabel("debitsTotal");
  depositsTotal_ = FigureLabel("depositsTotal");
  total_ = FigureLabel("total");
  startBalance_ = FigureLabel("startBalance");
  endBalance_ = FigureLabel("endBalance");
  addFigure(0, tr("Entries"), entryCount_);
  addFigure(1, tr("Start Balance"), startBalance_);
  addFigure(2, tr("Debits"), debitsTotal_);
  addFigure(3, tr("Deposits"), depositsTotal_);
  addFigure(4, tr("Total"), total_);
  addFigure(5, tr("End Balance"), endBalance_);
  right->addLayout(figures);

  auto* splitter = new QSplitter(Qt::Vertical);
  chart_ = new QChartView;
  chart_->setObjectName(QStringLiteral("summaryChart"));
  chart_->setRenderHint(QPainter::Antialiasing);
  chart_->setMinimumHeight(220);
  splitter->addWidget(chart_);

  tabs_ = new QTabWidget;
  tabs_->setObjectName(QStringLiteral("summaryTabs"));
  periods_ = new SummaryPeriodsModel(this);
  categories_ = new SummaryCategoryModel(this);
  types_ = new SummaryNamedRowsModel(tr("Type"), tr("(no type)"), this);
  descriptions_ = new SummaryNamedRowsModel(tr("Description"), tr("(no description)"), this);
  payees_ = new SummaryNamedRowsModel(tr("Payee"), tr("(no payee)"), this);
  periodsView_ = MakeTable("periods", periods_);
  categoriesView_ = new QTreeView;
  categoriesView_->setObjectName(QStringLiteral("categories"));
  categoriesView_->setModel(categories_);
  categoriesView_->setUniformRowHeights(true);
  categoriesView_->setAlternatingRowColors(true);
  categoriesView_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  categoriesView_->header()->setStretchLastSection(false);
  typesView_ = MakeTable("types", types_);
  descriptionsView_ = MakeTable("descriptions", descriptions_);
  payeesView_ = MakeTable("payees", payees_);
  tabs_->addTab(categoriesView_, tr("Categories"));
  tabs_->addTab(periodsView_, tr("Periods"));
  tabs_->addTab(typesView_, tr("Types"));
  tabs_->addTab(descriptionsView_, tr("Descriptions"));
  tabs_->addTab(payeesView_, tr("Payees"));
  splitter->addWidget(tabs_);
  splitter->setStretchFactor(0, 2);
  splitter->setStretchFactor(1, 3);
  right->addWidget(splitter, 1);
  layout->addLayout(right, 1);

  connect(document_, &BookDocument::changed, this, [this](std::int32_t changed) {
    if (changed < 0 || changed == account_) reloadSummaries(true);
  });

  resize(1180, 780);
  reloadSummaries(false);
}

SummaryWindow::~SummaryWindow() = default;

void SummaryWindow::buildOptions(QFormLayout* form) {
  saved_ = new QComboBox;
  saved_->setObjectName(QStringLiteral("savedSummaries"));
  form->addRow(tr("Summary:"), saved_);
  name_ = new QLineEdit;
  name_->setObjectName(QStringLiteral("summaryName"));
  form->addRow(tr("Name:"), name_);

  range_ = ChoiceBox("rangeStyle", kRanges);
  form->addRow(tr("Range:"), range_);
  start_ = new QDateEdit;
  start_->setObjectName(QStringLiteral("startDate"));
  end_ = new QDateEdit;
  end_->setObjectName(QStringLiteral("endDate"));
  for (QDateEdit* edit : {start_, end_}) {
    edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    edit->setCalendarPopup(true);
  }
  form->addRow(tr("From:"), start_);
  form->addRow(tr("To:"), end_);
  period_ = ChoiceBox("periodStyle", kPeriods);
  form->addRow(tr("Periods:"), period_);

  debits_ = new QCheckBox(tr("Debits"));
  debits_->setObjectName(QStringLiteral("showDebits"));
  deposits_ = new QCheckBox(tr("Deposits"));
  deposits_->setObjectName(QStringLiteral("showDeposits"));
  auto* kinds = new QHBoxLayout;
  kinds->addWidget(debits_);
  kinds->addWidget(deposits_);
  kinds->addStretch();
  form->addRow(tr("Entries:"), kinds);
  resolved_ = ChoiceBox("showResolved", {{tarn::kSummaryShowAll, "All"},
                                         {tarn::kSummaryShowOnly, "Resolved only"},
                                         {tarn::kSummaryShowOthers, "Unresolved only"}});
  form->addRow(tr("Resolved:"), resolved_);
  taxDeductible_ =
      ChoiceBox("showTaxDeductible", {{tarn::kSummaryShowAll, "All"},
                                      {tarn::kSummaryShowOnly, "Tax-deductible only"},
                                      {tarn::kSummaryShowOthers, "Not tax-deductible"}});
  form->addRow(tr("Tax:"), taxDeductible_);
  checks_ = ChoiceBox("showChecks", {{tarn::kSummaryShowAll, "All"},
                                     {tarn::kSummaryShowOnly, "Checks only"},
                                     {tarn::kSummaryShowOthers, "No checks"}});
  form->addRow(tr("Checks:"), checks_);

  filter_ = new QCheckBox(tr("Only entries whose"));
  filter_->setObjectName(QStringLiteral("filter"));
  filterType_ = ChoiceBox("filterType", kSearchFields);
  auto* filterRow = new QHBoxLayout;
  filterRow->addWidget(filter_);
  filterRow->addWidget(filterType_, 1);
  form->addRow(filterRow);
  filterText_ = new QLineEdit;
  filterText_->setObjectName(QStringLiteral("filterText"));
  filterText_->setPlaceholderText(tr("contains this text"));
  form->addRow(tr("Contains:"), filterText_);

  parentsInclude_ = new QCheckBox(tr("Parent categories include their subcategories"));
  parentsInclude_->setObjectName(QStringLiteral("parentsIncludeSubcategories"));
  form->addRow(parentsInclude_);

  // Which kinds of subtotals the summary shows, each as a tab of its own.
  const auto subtotalBox = [](const QString& text, const char* name) {
    auto* box = new QCheckBox(text);
    box->setObjectName(QString::fromLatin1(name));
    return box;
  };
  subtotalCategories_ = subtotalBox(tr("Categories"), "subtotalCategories");
  subtotalTypes_ = subtotalBox(tr("Types"), "subtotalTypes");
  subtotalDescriptions_ = subtotalBox(tr("Descriptions"), "subtotalDescriptions");
  subtotalPayees_ = subtotalBox(tr("Payees"), "subtotalToFroms");
  auto* subtotals = new QGridLayout;
  subtotals->addWidget(subtotalCategories_, 0, 0);
  subtotals->addWidget(subtotalTypes_, 0, 1);
  subtotals->addWidget(subtotalDescriptions_, 1, 0);
  subtotals->addWidget(subtotalPayees_, 1, 1);
  form->addRow(tr("Subtotals:"), subtotals);

  saveOver_ = new QPushButton(tr("Save"));
  saveOver_->setObjectName(QStringLiteral("saveSummary"));
  saveOver_->setToolTip(tr("Keep these options in the chosen summary"));
  saveNew_ = new QPushButton(tr("Save as New"));
  saveNew_->setObjectName(QStringLiteral("saveSummaryAsNew"));
  saveNew_->setToolTip(tr("Add these options to the account as a new summary"));
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(saveNew_);
  buttons->addWidget(saveOver_);
  form->addRow(buttons);

  connect(saved_, &QComboBox::currentIndexChanged, this, &SummaryWindow::chooseSummary);
  connect(name_, &QLineEdit::textChanged, this, [this](const QString& text) {
    const bool named = result_ && !text.trimmed().isEmpty();
    saveOver_->setEnabled(named && chosen_ >= 0);
    saveNew_->setEnabled(named);
  });
  for (QComboBox* box : {range_, period_, resolved_, taxDeductible_, checks_, filterType_}) {
    connect(box, &QComboBox::currentIndexChanged, this, &SummaryWindow::optionsChanged);
  }
  for (QDateEdit* edit : {start_, end_}) {
    connect(edit, &QDateEdit::dateChanged, this, &SummaryWindow::optionsChanged);
  }
  for (QCheckBox* box : {debits_, deposits_, filter_, parentsInclude_}) {
    connect(box, &QCheckBox::toggled, this, &SummaryWindow::optionsChanged);
  }
  // The subtotal choices change what is shown, not what is computed.
  for (QCheckBox* box :
       {subtotalCategories_, subtotalTypes_, subtotalDescriptions_, subtotalPayees_}) {
    connect(box, &QCheckBox::toggled, this, &SummaryWindow::subtotalsChanged);
  }
  // The search text is applied when the user is done typing it, so a long
  // text costs one computation rather than one per key.
  connect(filterText_, &QLineEdit::editingFinished, this, [this] {
    if (!filter_->isChecked() && !filterText_->text().isEmpty()) {
      filter_->setChecked(true);  // computes once, through optionsChanged
    } else {
      optionsChanged();
    }
  });
  connect(saveOver_, &QPushButton::clicked, this, [this] { save(false); });
  connect(saveNew_, &QPushButton::clicked, this, [this] { save(true); });
}

void SummaryWindow::setAccount(std::int32_t account) {
  if (account == account_) return;
  // Cancel keeps the window on the account whose options are being edited.
  if (!settleUnsavedEdits()) return;
  account_ = account;
  chosen_ = -1;
  reloadSummaries(false);
}

// Fills the pop-up with the account's saved summaries. With keepOptions the
// chosen summary stays and so do the options being edited, unless the saved
// summary itself changed (an undo of a save): then its options show again.
void SummaryWindow::reloadSummaries(bool keepOptions) {
  auto account = document_->book().accountWithNumber(account_);
  const QSignalBlocker block(saved_);
  saved_->clear();
  if (!account || !account->IsAuthenticated()) {
    title_->setText(account ? tr("%1 is locked").arg(QString::fromStdString(account->GetName()))
                            : tr("No account selected"));
    chosen_ = -1;
    result_.reset();
    showResult();
    return;
  }
  title_->setText(tr("Summaries of %1").arg(QString::fromStdString(account->GetName())));
  const auto& summaries = account->accountSummaries();
  for (const auto& summary : summaries) saved_->addItem(Shown(summary->name()));
  const int count = static_cast<int>(summaries.size());
  if (count == 0) {
    // An account without saved summaries still has the defaults' options to
    // look at, and can save them.
    chosen_ = -1;
    *working_ = tarn::TARNAccountSummary();
    showOptions();
    recompute();
    return;
  }
  bool reload = !keepOptions || chosen_ < 0 || chosen_ >= count;
  if (reload) {
    chosen_ = 0;
    const auto selected = account->selectedAccountSummary();
    for (int i = 0; i < count; ++i) {
      if (summaries[static_cast<std::size_t>(i)] == selected) chosen_ = i;
    }
  }
  const auto& summary = summaries[static_cast<std::size_t>(chosen_)];
  tarn::plist::Value options = summary->optionsAsDictionary();
  if (options != chosenOptions_) reload = true;
  saved_->setCurrentIndex(chosen_);
  if (reload) {
    chosenOptions_ = std::move(options);
    *working_ = *summary;
    showOptions();
  }
  recompute();
}

void SummaryWindow::chooseSummary(int index) {
  auto account = document_->book().accountWithNumber(account_);
  if (!account || index < 0 ||
      static_cast<std::size_t>(index) >= account->accountSummaries().size()) {
    return;
  }
  if (index != chosen_ && !settleUnsavedEdits()) {
    // Staying: the pop-up shows the summary whose options are being edited.
    const QSignalBlocker block(saved_);
    saved_->setCurrentIndex(chosen_);
    return;
  }
  {
    // Saving them filled the pop-up again on the summary being left.
    const QSignalBlocker block(saved_);
    saved_->setCurrentIndex(index);
  }
  chosen_ = index;
  const auto& summary = account->accountSummaries()[static_cast<std::size_t>(index)];
  chosenOptions_ = summary->optionsAsDictionary();
  *working_ = *summary;
  showOptions();
  recompute();
}

// Puts the working summary's options into the controls.
void SummaryWindow::showOptions() {
  loading_ = true;
  const tarn::TARNAccountSummary& summary = *working_;
  name_->setText(Shown(summary.name()));
  // Items a previous summary added for its unknown values go first.
  while (range_->count() > static_cast<int>(std::size(kRanges)))
    range_->removeItem(range_->count() - 1);
  while (period_->count() > static_cast<int>(std::size(kPeriods)))
    period_->removeItem(period_->count() - 1);
  while (filterType_->count() > static_cast<int>(std::size(kSearchFields))) {
    filterType_->removeItem(filterType_->count() - 1);
  }
  SelectValue(range_, summary.dateRangeStyle(), tr("Saved dates (style %1)"));
  SelectValue(period_, summary.subtotalPeriodStyle(), tr("Whole range (style %1)"));
  debits_->setChecked(summary.showDebits());
  deposits_->setChecked(summary.showDeposits());
  SelectValue(resolved_, summary.showResolved(), tr("All (choice %1)"));
  SelectValue(taxDeductible_, summary.showTaxDeductible(), tr("All (choice %1)"));
  SelectValue(checks_, summary.showChecks(), tr("All (choice %1)"));
  filter_->setChecked(summary.filter());
  SelectValue(filterType_, summary.filterType(), tr("Nothing (field %1)"));
  filterText_->setText(summary.filterData().isString()
                           ? QString::fromStdString(summary.filterData().stringValue())
                           : QString());
  parentsInclude_->setChecked(summary.parentCategorySubtotalsIncludeSubcategorySubtotals());
  subtotalCategories_->setChecked(summary.subtotalCategories());
  subtotalTypes_->setChecked(summary.subtotalTypes());
  subtotalDescriptions_->setChecked(summary.subtotalDescriptions());
  subtotalPayees_->setChecked(summary.subtotalToFroms());
  loading_ = false;
}

// Reads the controls into the working summary and computes it again.
void SummaryWindow::optionsChanged() {
  if (loading_) return;
  tarn::TARNAccountSummary& summary = *working_;
  summary.setDateRangeStyle(range_->currentData().toInt());
  if (summary.dateRangeStyle() == tarn::kSummaryRangeCustom) {
    summary.setStartDate(FromQDate(start_->date()));
    summary.setEndDate(FromQDate(end_->date()));
  }
  summary.setSubtotalPeriodStyle(period_->currentData().toInt());
  summary.setShowDebits(debits_->isChecked());
  summary.setShowDeposits(deposits_->isChecked());
  summary.setShowResolved(resolved_->currentData().toInt());
  summary.setShowTaxDeductible(taxDeductible_->currentData().toInt());
  summary.setShowChecks(checks_->currentData().toInt());
  summary.setFilter(filter_->isChecked());
  summary.setFilterType(filterType_->currentData().toInt());
  // Text is kept as text; a stored value of another kind stays until edited.
  const std::string text = filterText_->text().toStdString();
  if (summary.filterData().isString() || !text.empty())
    summary.setFilterData(tarn::plist::Value(text));
  summary.setParentCategorySubtotalsIncludeSubcategorySubtotals(parentsInclude_->isChecked());
  recompute();
}

void SummaryWindow::subtotalsChanged() {
  if (loading_) return;
  working_->setSubtotalCategories(subtotalCategories_->isChecked());
  working_->setSubtotalTypes(subtotalTypes_->isChecked());
  working_->setSubtotalDescriptions(subtotalDescriptions_->isChecked());
  working_->setSubtotalToFroms(subtotalPayees_->isChecked());
  showSubtotalTabs();
}

// A kind of subtotal the summary leaves out does not show its tab.
void SummaryWindow::showSubtotalTabs() {
  tabs_->setTabVisible(tabs_->indexOf(categoriesView_), working_->subtotalCategories());
  tabs_->setTabVisible(tabs_->indexOf(typesView_), working_->subtotalTypes());
  tabs_->setTabVisible(tabs_->indexOf(descriptionsView_), working_->subtotalDescriptions());
  tabs_->setTabVisible(tabs_->indexOf(payeesView_), working_->subtotalToFroms());
}

bool SummaryWindow::hasUnsavedEdits() const {
  if (!result_) return false;  // nothing shown, nothing edited
  auto account = document_->book().accountWithNumber(account_);
  const std::shared_ptr<tarn::TARNAccountSummary> saved =
      account && chosen_ >= 0 &&
              static_cast<std::size_t>(chosen_) < account->accountSummaries().size()
          ? account->accountSummaries()[static_cast<std::size_t>(chosen_)]
          : nullptr;
  const tarn::TARNAccountSummary defaults;
  const tarn::TARNAccountSummary& before = saved ? *saved : defaults;
  if (name_->text().trimmed() != Shown(before.name())) return true;
  tarn::plist::Value now = working_->optionsAsDictionary();
  tarn::plist::Value then = before.optionsAsDictionary();
  // The dates of a range worked out from today or from the entries are
  // stored back by every computation; only custom dates (and the stored
  // dates of a style without words) are the user's.
  const std::int32_t style = working_->dateRangeStyle();
  const bool datesWorkedOut = style >= tarn::kSummaryRangeFirstToLastEntry &&
                              (style <= tarn::kSummaryRangeThisYear ||
                               (style >= 15 && style <= tarn::kSummaryRangeYearToDate));
  for (tarn::plist::Value* options : {&now, &then}) {
    options->mutableDictionary().erase("name");
    if (datesWorkedOut) {
      options->mutableDictionary().erase("startDate");
      options->mutableDictionary().erase("endDate");
    }
  }
  return now != then;
}

bool SummaryWindow::settleUnsavedEdits() {
  if (!hasUnsavedEdits()) return true;
  const QString name = name_->text().trimmed();
  QMessageBox::StandardButton answer;
  {
    // Run as the main window runs its panels: its menus and controls, and
    // this window's, are off until the question is answered.
    std::optional<ModalRun> main;
    if (auto* window = qobject_cast<QMainWindow*>(parentWidget())) main.emplace(window);
    const tarn::ModalDisabling own(this);
    answer = QMessageBox::question(
        this, tr("Unsaved Summary Options"),
        tr("The options of \"%1\" have changes that are not saved. Save them?")
            .arg(name.isEmpty() ? tr("Untitled Summary") : name),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
  }
  if (answer == QMessageBox::Cancel) return false;
  if (answer == QMessageBox::Save) {
    if (name.isEmpty()) name_->setText(tr("Untitled Summary"));
    return save(chosen_ < 0);
  }
  return true;
}

void SummaryWindow::reject() {
  if (!settleUnsavedEdits()) return;
  QDialog::reject();
}

void SummaryWindow::recompute() {
  auto account = document_->book().accountWithNumber(account_);
  if (!account || !account->IsAuthenticated()) {
    result_.reset();
    showResult();
    return;
  }
  working_->setEntries(account->GetAllEntries());
  working_->setAccounts({account.get()});
  result_ = working_->ComputeResult();
  // The summary keeps no entries beyond its computation; the result holds
  // the ones it counted.
  working_->setEntries({});
  showResult();
}

void SummaryWindow::showResult() {
  auto account = document_->book().accountWithNumber(account_);
  // The account's currency is held, so the tables keep writing in it
  // until the next result even if the book's currencies are replaced.
  std::shared_ptr<const tarn::PFCurrency> currency = account ? account->currency() : nullptr;
  AmountFormat format = [currency](double amount) {
    return MoneyText(currency ? *currency : CurrencyOf(nullptr), amount);
  };
  const std::int32_t periodStyle = working_->subtotalPeriodStyle();
  periods_->setResult(result_, periodStyle, format);
  categories_->setResult(result_, periodStyle, format);
  types_->setRows(result_, result_ ? &result_->subtotals.types : nullptr, format);
  descriptions_->setRows(result_, result_ ? &result_->subtotals.descriptions : nullptr, format);
  payees_->setRows(result_, result_ ? &result_->subtotals.toFroms : nullptr, format);

  showSubtotalTabs();

  const bool have = result_ != nullptr;
  for (QWidget* each : std::initializer_list<QWidget*>{
           saved_, name_, range_, period_, debits_, deposits_, resolved_, taxDeductible_, checks_,
           filter_, filterType_, filterText_, parentsInclude_, subtotalCategories_, subtotalTypes_,
           subtotalDescriptions_, subtotalPayees_}) {
    each->setEnabled(have);
  }
  saveOver_->setEnabled(have && chosen_ >= 0 && !name_->text().trimmed().isEmpty());
  saveNew_->setEnabled(have && !name_->text().trimmed().isEmpty());
  if (!have) {
    for (QLabel* label : {rangeText_, entryCount_, debitsTotal_, depositsTotal_, total_,
                          startBalance_, endBalance_}) {
      label->clear();
    }
    showChart();
    return;
  }

  // The range as the summary resolved it; the date fields follow it and can
  // be edited only for custom dates.
  {
    const QSignalBlocker blockStart(start_);
    const QSignalBlocker blockEnd(end_);
    start_->setDate(ToQDate(working_->startDate()));
    end_->setDate(ToQDate(working_->endDate()));
  }
  const bool custom = working_->dateRangeStyle() == tarn::kSummaryRangeCustom;
  start_->setEnabled(custom);
  end_->setEnabled(custom);
  const QString from = ToQDate(working_->startDate()).toString(Qt::ISODate);
  const QString to = ToQDate(working_->endDate()).toString(Qt::ISODate);
  if (working_->startDate() > working_->endDate()) {
    rangeText_->setText(
        tr("The range starts on %1, after it ends on %2: no entries are counted.").arg(from, to));
  } else {
    const auto count = result_->periods.size();
    rangeText_->setText(count == 1 ? tr("%1 to %2, one period").arg(from, to)
                                   : tr("%1 to %2, %3 periods").arg(from, to).arg(count));
  }
  const tarn::TARNSummaryTotals& totals = result_->totals;
  entryCount_->setText(QString::number(totals.entryCount));
  debitsTotal_->setText(format(totals.debitsTotal));
  depositsTotal_->setText(format(totals.depositsTotal));
  total_->setText(format(totals.total));
  startBalance_->setText(format(result_->startBalance));
  endBalance_->setText(format(result_->endBalance));

  // Columns sized once from the widest amount a cell is likely to hold,
  // rather than by measuring every cell of every period.
  const int amountWidth =
      std::max(fontMetrics().horizontalAdvance(format(-888888.88)),
               fontMetrics().horizontalAdvance(QStringLiteral("Start Balance"))) +
      12;
  for (QTableView* table : {periodsView_, typesView_, descriptionsView_, payeesView_}) {
    QHeaderView* header = table->horizontalHeader();
    header->setDefaultSectionSize(amountWidth);
    header->setMinimumSectionSize(48);
  }
  periodsView_->setColumnWidth(SummaryPeriodsModel::kPeriod,
                               fontMetrics().horizontalAdvance(QStringLiteral("8888-88-88")) + 24);
  periodsView_->setColumnWidth(SummaryPeriodsModel::kEnd,
                               fontMetrics().horizontalAdvance(QStringLiteral("8888-88-88")) + 16);
  periodsView_->setColumnWidth(SummaryPeriodsModel::kEntries,
                               fontMetrics().horizontalAdvance(QStringLiteral("Entries")) + 24);
  for (QTableView* table : {typesView_, descriptionsView_, payeesView_}) {
    table->horizontalHeader()->setSectionResizeMode(SummaryNamedRowsModel::kName,
                                                    QHeaderView::Stretch);
  }
  categoriesView_->header()->setDefaultSectionSize(amountWidth);
  categoriesView_->setColumnWidth(SummaryCategoryModel::kName, 220);
  showChart();
}

// Debits and deposits of each period side by side, both as heights above
// zero. Periods are named below the bars; when there are many, only the
// first period of each year is named.
void SummaryWindow::showChart() {
  auto* chart = new QChart;
  chart->legend()->setAlignment(Qt::AlignTop);
  chart->setMargins(QMargins(4, 4, 4, 4));
  if (!result_ || result_->periods.empty()) {
    chart->setTitle(result_ ? tr("No periods in the range") : QString());
    replaceChart(chart);
    return;
  }
  const auto& periods = result_->periods;
  if (periods.size() > kMostChartedPeriods) {
    chart->setTitle(
        tr("%1 periods are too many to chart; choose longer periods.").arg(periods.size()));
    replaceChart(chart);
    return;
  }
  auto* debits = new QBarSet(tr("Debits"));
  auto* deposits = new QBarSet(tr("Deposits"));
  debits->setColor(QColor(200, 60, 60));
  deposits->setColor(QColor(40, 150, 80));
  debits->setBorderColor(Qt::transparent);
  deposits->setBorderColor(Qt::transparent);
  double highest = 0;
  for (const auto& period : periods) {
    *debits << std::fabs(period.totals.debitsTotal);
    *deposits << period.totals.depositsTotal;
    highest =
        std::max({highest, std::fabs(period.totals.debitsTotal), period.totals.depositsTotal});
  }
  auto* series = new QBarSeries;
  series->append(debits);
  series->append(deposits);
  series->setBarWidth(0.8);
  chart->addSeries(series);

  auto* across = new QCategoryAxis;
  across->setLabelsPosition(QCategoryAxis::AxisLabelsPositionCenter);
  across->setStartValue(-0.5);
  const std::int32_t style = working_->subtotalPeriodStyle();
  const bool byYear = periods.size() > 24;
  for (std::size_t i = 0; i < periods.size(); ++i) {
    const bool last = i + 1 == periods.size();
    if (!byYear) {
      across->append(SummaryPeriodLabel(periods[i], style), static_cast<double>(i) + 0.5);
    } else if (last || periods[i + 1].startDate.yearOfCommonEra() !=
                           periods[i].startDate.yearOfCommonEra()) {
      across->append(QString::number(periods[i].startDate.yearOfCommonEra()),
                     static_cast<double>(i) + 0.5);
    }
  }
  across->setRange(-0.5, static_cast<double>(periods.size()) - 0.5);
  across->setGridLineVisible(false);
  if (!byYear && periods.size() > 6) across->setLabelsAngle(-45);
  chart->addAxis(across, Qt::AlignBottom);
  series->attachAxis(across);

  // Amounts up the side in the account's currency format, at round steps.
  const double step = AxisStep(highest);
  const int steps = std::max(1, static_cast<int>(std::ceil(highest / step - 1e-9)));
  auto* up = new QCategoryAxis;
  up->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
  up->setStartValue(0);
  const auto account = document_->book().accountWithNumber(account_);
  const auto formatter =
      account && account->currency() ? account->currency()->formatter() : nullptr;
  for (int i = 0; i <= steps; ++i) {
    const double value = step * i;
    up->append(AxisAmount(formatter.get(), value, step >= 1), value);
  }
  up->setRange(0, step * steps);
  chart->addAxis(up, Qt::AlignLeft);
  series->attachAxis(up);
  replaceChart(chart);
}

void SummaryWindow::replaceChart(QChart* chart) {
  QChart* old = chart_->chart();
  chart_->setChart(chart);
  delete old;
}

bool SummaryWindow::save(bool asNew) {
  auto account = document_->book().accountWithNumber(account_);
  if (!account || !account->IsAuthenticated()) return false;
  const QString name = name_->text().trimmed();
  if (name.isEmpty()) return false;
  const auto& summaries = account->accountSummaries();
  std::optional<std::size_t> place;
  if (!asNew && chosen_ >= 0 && static_cast<std::size_t>(chosen_) < summaries.size()) {
    place = static_cast<std::size_t>(chosen_);
    // A saved name keeps its leading space (" Custom..." sorts first) when
    // the user did not rename it.
    if (Shown(summaries[*place]->name()) == name)
      working_->setName(summaries[*place]->name());
    else
      working_->setName(name.toStdString());
  } else {
    working_->setName(name.toStdString());
  }
  tarn::AccountSummaries before = tarn::CaptureAccountSummaries(*account);
  const std::size_t saved =
      tarn::SaveAccountSummary(*account, working_->optionsAsDictionary(), place);
  chosen_ = static_cast<int>(saved);
  chosenOptions_ = summaries[saved]->optionsAsDictionary();
  *working_ = *summaries[saved];
  document_->pushSummaries(asNew ? tr("Save Summary as New") : tr("Save Summary"), account_,
                           std::move(before), tarn::CaptureAccountSummaries(*account));
  showOptions();  // a new name may have had a number added
  return true;
}
