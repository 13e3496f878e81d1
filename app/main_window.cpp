// The check register window: layout, menus and what each action does.

#include "main_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QTableView>
#include <QTreeWidget>
#include <QUndoStack>
#include <QVBoxLayout>

#include <cmath>
#include <set>
#include <stdexcept>

#include "account_settings_dialog.h"
#include "book_document.h"
#include "entry_editor.h"
#include "import_run.h"
#include "modal_run.h"
#include "money_text.h"
#include "register_model.h"
#include "schedules_window.h"
#include "summary_window.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/account/account_settings.h"
#include "tarn/account/export_options.h"
#include "tarn/book/book.h"
#include "tarn/book/book_changes.h"
#include "tarn/book/book_lock.h"
#include "tarn/book/entry_form.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/error.h"
#include "tarn/platform/plist_file.h"
#include "tarn/ui/edit_currency_controller.h"
#include "tarn/ui/export_accessory_manager.h"
#include "tarn/ui/remove_category_controller.h"

namespace {

constexpr int kItemAccount = 0;
constexpr int kItemFolder = 1;
constexpr int kItemSmartFolder = 2;
constexpr int kRoleKind = Qt::UserRole;
constexpr int kRoleAccount = Qt::UserRole + 1;
constexpr int kRoleIndex = Qt::UserRole + 2;
constexpr int kRecentCount = 8;

void AddItems(QComboBox* box, std::initializer_list<std::pair<const char*, int>> items) {
  for (const auto& [text, code] : items) box->addItem(QObject::tr(text), code);
}

QComboBox* Combo(QWidget* parent, const char* name) {
  auto* box = new QComboBox(parent);
  box->setObjectName(QString::fromLatin1(name));
  return box;
}

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
  setObjectName("mainWindow");
  buildWidgets();
  buildMenus();
  setBook(std::make_unique<tarn::TARNBook>());
  resize(1180, 720);
}

MainWindow::~MainWindow() = default;

void MainWindow::buildWidgets() {
  accounts_ = new QTreeWidget(this);
  accounts_->setObjectName("accounts");
  accounts_->setColumnCount(2);
  accounts_->setHeaderLabels({tr("Account"), tr("Balance")});
  accounts_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  accounts_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  accounts_->header()->setStretchLastSection(false);
  accounts_->setMinimumWidth(230);
  connect(accounts_, &QTreeWidget::itemSelectionChanged, this,
          &MainWindow::accountSelectionChanged);

  auto* right = new QWidget(this);
  auto* column = new QVBoxLayout(right);
  column->setContentsMargins(0, 0, 0, 0);

  // The view filter.
  auto* filterBar = new QHBoxLayout;
  search_ = new QLineEdit(right);
  search_->setObjectName("search");
  search_->setPlaceholderText(tr("Search"));
  search_->setClearButtonEnabled(true);
  searchField_ = Combo(right, "searchField");
  AddItems(searchField_, {{"All Fields", 0},
                          {"Description", tarn::kViewSearchDescription},
                          {"To/From", tarn::kViewSearchToFrom},
                          {"Type", tarn::kViewSearchType},
                          {"Notes", tarn::kViewSearchNotes},
                          {"Amount", tarn::kViewSearchAmount},
                          {"Check Number", tarn::kViewSearchCheckNumber},
                          {"Category", tarn::kViewSearchCategory},
                          {"Split Description", tarn::kViewSearchSplitDescription},
                          {"Split Category", tarn::kViewSearchSplitCategory}});
  resolvedFilter_ = Combo(right, "resolvedFilter");
  AddItems(resolvedFilter_, {{"Resolved and Unresolved", tarn::kViewResolvedAll},
                             {"Resolved Only", tarn::kViewResolvedOnly},
                             {"Unresolved Only", tarn::kViewUnresolvedOnly}});
  taxFilter_ = Combo(right, "taxFilter");
  AddItems(taxFilter_, {{"Any Tax Status", tarn::kViewTaxDeductibleAll},
                        {"Tax-Deductible", tarn::kViewTaxDeductibleOnly},
                        {"Not Tax-Deductible", tarn::kViewNotTaxDeductible}});
  period_ = Combo(right, "period");
  AddItems(period_, {{"All Entries", tarn::kViewDateAllEntries},
                     {"First Entry to Today", tarn::kViewDateFirstEntryToToday},
                     {"Today", tarn::kViewDateToday},
                     {"Yesterday", tarn::kViewDateYesterday},
                     {"This Week", 30},
                     {"This Month", 31},
                     {"This Quarter", 32},
                     {"This Year", 33},
                     {"Last Week", 40},
                     {"Last Month", 41},
                     {"Last Quarter", 42},
                     {"Last Year", 43},
                     {"Week to Date", 50},
                     {"Month to Date", 51},
                     {"Quarter to Date", 52},
                     {"Year to Date", 53}});
  filterBar->addWidget(search_, 2);
  filterBar->addWidget(searchField_);
  filterBar->addWidget(resolvedFilter_);
  filterBar->addWidget(taxFilter_);
  filterBar->addWidget(period_);
  column->addLayout(filterBar);
  connect(search_, &QLineEdit::textChanged, this, &MainWindow::filterControlsChanged);
  for (QComboBox* box : {searchField_, resolvedFilter_, taxFilter_, period_}) {
    connect(box, &QComboBox::currentIndexChanged, this, &MainWindow::filterControlsChanged);
  }

  // The reconcile bar.
  reconcileBar_ = new QWidget(right);
  reconcileBar_->setObjectName("reconcileBar");
  auto* reconcileRow = new QHBoxLayout(reconcileBar_);
  reconcileRow->setContentsMargins(0, 0, 0, 0);
  statementBalance_ = new QLineEdit(reconcileBar_);
  statementBalance_->setObjectName("statementBalance");
  statementBalance_->setAlignment(Qt::AlignRight);
  statementBalance_->setMaximumWidth(140);
  reconcileResolved_ = new QLabel(reconcileBar_);
  reconcileResolved_->setObjectName("reconcileResolved");
  reconcileDifference_ = new QLabel(reconcileBar_);
  reconcileDifference_->setObjectName("reconcileDifference");
  reconcileRow->addWidget(new QLabel(tr("Statement balance:"), reconcileBar_));
  reconcileRow->addWidget(statementBalance_);
  reconcileRow->addSpacing(16);
  reconcileRow->addWidget(reconcileResolved_);
  reconcileRow->addSpacing(16);
  reconcileRow->addWidget(reconcileDifference_);
  reconcileRow->addStretch();
  reconcileRow->addWidget(
      new QLabel(tr("Click an entry's Resolved mark to resolve it."), reconcileBar_));
  reconcileBar_->hide();
  column->addWidget(reconcileBar_);
  connect(statementBalance_, &QLineEdit::editingFinished, this,
          &MainWindow::statementBalanceEdited);

  model_ = new RegisterModel(this);
  register_ = new QTableView(right);
  register_->setObjectName("register");
  register_->setModel(model_);
  register_->setSelectionBehavior(QAbstractItemView::SelectRows);
  register_->setSelectionMode(QAbstractItemView::SingleSelection);
  register_->setSortingEnabled(true);
  register_->horizontalHeader()->setSortIndicator(RegisterModel::kDate, Qt::AscendingOrder);
  register_->verticalHeader()->hide();
  register_->verticalHeader()->setDefaultSectionSize(22);
  register_->setAlternatingRowColors(true);
  register_->setWordWrap(false);
  auto* header = register_->horizontalHeader();
  header->setSectionResizeMode(QHeaderView::Interactive);
  header->setSectionResizeMode(RegisterModel::kDescription, QHeaderView::Stretch);
  const int widths[] = {92, 56, 110, 0, 150, 150, 70, 100, 110};
  for (int i = 0; i < RegisterModel::kColumnCount; ++i) {
    if (widths[i]) register_->setColumnWidth(i, widths[i]);
  }
  column->addWidget(register_, 1);
  connect(register_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
          &MainWindow::registerSelectionChanged);
  connect(register_, &QTableView::clicked, this, &MainWindow::registerClicked);

  editor_ = new EntryEditor(right);
  column->addWidget(editor_);
  connect(editor_, &EntryEditor::recordRequested, this, &MainWindow::recordEntry);
  connect(editor_, &EntryEditor::newRequested, this, &MainWindow::newEntry);
  connect(editor_, &EntryEditor::voidRequested, this, &MainWindow::voidEntry);
  connect(editor_, &EntryEditor::removeRequested, this, &MainWindow::removeEntry);

  locked_ = new QLabel(tr("This account is locked. Select it again to enter its password."), right);
  locked_->setObjectName("locked");
  locked_->setAlignment(Qt::AlignCenter);
  locked_->hide();
  column->addWidget(locked_);

  auto* splitter = new QSplitter(this);
  splitter->addWidget(accounts_);
  splitter->addWidget(right);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({250, 930});
  setCentralWidget(splitter);

  balances_ = new QLabel(this);
  balances_->setObjectName("balances");
  statusBar()->addPermanentWidget(balances_);
}

void MainWindow::buildMenus() {
  QMenu* file = menuBar()->addMenu(tr("&File"));
  file->addAction(tr("&New Book"), QKeySequence::New, this, &MainWindow::newBook);
  file->addAction(tr("&Open..."), QKeySequence::Open, this, &MainWindow::openBook);
  recentMenu_ = file->addMenu(tr("Open &Recent"));
  recentMenu_->setObjectName("recentMenu");
  file->addSeparator();
  file->addAction(tr("&Save"), QKeySequence::Save, this, &MainWindow::saveBook);
  file->addAction(tr("Save &As..."), QKeySequence::SaveAs, this, &MainWindow::saveBookAs);
  file->addSeparator();
  file->addAction(tr("&Import..."), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I), this,
                  &MainWindow::importFile);
  file->addAction(tr("E&xport..."), this, &MainWindow::exportAccount);
  file->addSeparator();
  file->addAction(tr("&Close"), QKeySequence::Close, this, &QWidget::close);
  refillRecentMenu();

  QMenu* edit = menuBar()->addMenu(tr("&Edit"));
  undo_ = edit->addAction(tr("&Undo"));
  undo_->setObjectName("undo");
  undo_->setShortcut(QKeySequence::Undo);
  redo_ = edit->addAction(tr("&Redo"));
  redo_->setObjectName("redo");
  redo_->setShortcut(QKeySequence::Redo);
  edit->addSeparator();
  edit->addAction(tr("New &Entry"), QKeySequence(Qt::CTRL | Qt::Key_E), this,
                  &MainWindow::newEntry);
  edit->addAction(tr("&Void Entry"), this, &MainWindow::voidEntry);
  edit->addAction(tr("&Remove Entry"), this, &MainWindow::removeEntry);

  QMenu* account = menuBar()->addMenu(tr("&Account"));
  account->addAction(tr("&New Account..."), this, &MainWindow::newAccount);
  account->addAction(tr("Re&name Account..."), this, &MainWindow::renameAccount);
  account->addAction(tr("Account &Settings..."), this, &MainWindow::accountSettings);
  account->addAction(tr("&Remove Account"), this, &MainWindow::removeAccount);
  account->addAction(tr("Scheduled &Entries..."), QKeySequence(Qt::CTRL | Qt::Key_J), this,
                     &MainWindow::showSchedules);
  account->addAction(tr("Su&mmary..."), this, &MainWindow::showSummary);
  account->addSeparator();
  reconcileAction_ = account->addAction(tr("Re&concile"));
  reconcileAction_->setObjectName("reconcile");
  reconcileAction_->setCheckable(true);
  reconcileAction_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
  connect(reconcileAction_, &QAction::toggled, this, &MainWindow::setReconcileMode);

  QMenu* categories = menuBar()->addMenu(tr("&Categories"));
  categories->addAction(tr("&Remove Category..."), this, &MainWindow::removeCategory);
  QMenu* currencies = menuBar()->addMenu(tr("C&urrencies"));
  currencies->addAction(tr("&Edit Currencies..."), this, &MainWindow::editCurrencies);
}

void MainWindow::setBook(std::unique_ptr<tarn::TARNBook> book) {
  // The schedules window works on the document being replaced.
  delete schedulesWindow_;
  delete summaryWindow_;
  document_ = std::make_unique<BookDocument>(std::move(book));
  connect(document_.get(), &BookDocument::changed, this, &MainWindow::bookChanged);
  connect(document_.get(), &BookDocument::modifiedChanged, this, &MainWindow::updateTitle);
  QUndoStack* stack = document_->undoStack();
  undo_->disconnect();
  redo_->disconnect();
  connect(undo_, &QAction::triggered, stack, &QUndoStack::undo);
  connect(redo_, &QAction::triggered, stack, &QUndoStack::redo);
  connect(stack, &QUndoStack::canUndoChanged, undo_, &QAction::setEnabled);
  connect(stack, &QUndoStack::canRedoChanged, redo_, &QAction::setEnabled);
  undo_->setEnabled(false);
  redo_->setEnabled(false);
  accountNumber_ = -1;
  model_->setAccount(nullptr, RegisterModel::View::Register);
  refreshAccounts();
  if (accounts_->topLevelItemCount() > 0) {
    accounts_->setCurrentItem(accounts_->topLevelItem(0));
  }
  updateTitle();
}

tarn::TARNBook& MainWindow::book() {
  return document_->book();
}

std::shared_ptr<tarn::TARNAccount> MainWindow::currentAccount() const {
  return document_ ? document_->book().accountWithNumber(accountNumber_) : nullptr;
}

void MainWindow::showProblem(const QString& text) {
  const ModalRun modal(this);
  QMessageBox::warning(this, tr("Tarn"), text);
}

// --- Accounts ---------------------------------------------------------------

void MainWindow::refreshAccounts() {
  const QSignalBlocker block(accounts_);
  accounts_->clear();
  QTreeWidgetItem* selected = nullptr;
  for (const auto& account : document_->book().accounts()) {
    auto* item = new QTreeWidgetItem(accounts_);
    item->setText(0, QString::fromStdString(account->GetName()));
    item->setData(0, kRoleKind, kItemAccount);
    item->setData(0, kRoleAccount, account->GetNumber());
    if (account->IsAuthenticated()) {
      const double balance = account->GetBalance();
      item->setText(1, MoneyText(account.get(), balance));
      if (balance < -0.001) item->setForeground(1, QColor(176, 0, 32));
    } else {
      item->setText(1, tr("Locked"));
    }
    item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
    int index = 0;
    for (const auto& folder : account->folders()) {
      auto* child = new QTreeWidgetItem(item, {QString::fromStdString(folder->name())});
      child->setData(0, kRoleKind, kItemFolder);
      child->setData(0, kRoleAccount, account->GetNumber());
      child->setData(0, kRoleIndex, index++);
      if (account->IsAuthenticated() && account->folder() == folder) selected = child;
    }
    index = 0;
    for (const auto& smart : account->smartFolders()) {
      auto* child = new QTreeWidgetItem(item, {QString::fromStdString(smart->name())});
      child->setData(0, kRoleKind, kItemSmartFolder);
      child->setData(0, kRoleAccount, account->GetNumber());
      child->setData(0, kRoleIndex, index++);
      QFont font = child->font(0);
      font.setItalic(true);
      child->setFont(0, font);
      if (account->IsAuthenticated() && account->smartFolder() == smart) selected = child;
    }
    if (account->GetNumber() == accountNumber_) {
      item->setExpanded(true);
      if (!selected) selected = item;
    }
  }
  if (selected) accounts_->setCurrentItem(selected);
}

void MainWindow::accountSelectionChanged() {
  QTreeWidgetItem* item = accounts_->currentItem();
  if (!item) return;
  showAccount(item->data(0, kRoleAccount).toInt(), item);
}

bool MainWindow::unlock(tarn::TARNAccount& account) {
  if (account.IsAuthenticated()) return true;
  bool ok = false;
  QString password;
  {
    const ModalRun modal(this);
    password = QInputDialog::getText(this, tr("Password"),
                                     tr("Enter the password of the account \"%1\":")
                                         .arg(QString::fromStdString(account.GetName())),
                                     QLineEdit::Password, QString(), &ok);
  }
  if (!ok) return false;
  if (!account.Authenticate(password.toStdString())) {
    showProblem(
        tr("That is not the password of \"%1\".").arg(QString::fromStdString(account.GetName())));
    return false;
  }
  return true;
}

void MainWindow::showAccount(std::int32_t number, QTreeWidgetItem* item) {
  auto account = document_->book().accountWithNumber(number);
  if (!account) return;
  const bool open = unlock(*account);
  accountNumber_ = number;
  if (schedulesWindow_) schedulesWindow_->setAccount(number);
  if (summaryWindow_) summaryWindow_->setAccount(number);
  if (open) {
    const int kind = item ? item->data(0, kRoleKind).toInt() : kItemAccount;
    const auto index = static_cast<std::size_t>(item ? item->data(0, kRoleIndex).toInt() : 0);
    account->setFolder(kind == kItemFolder && index < account->folders().size()
                           ? account->folders()[index]
                           : nullptr);
    account->setSmartFolder(kind == kItemSmartFolder && index < account->smartFolders().size()
                                ? account->smartFolders()[index]
                                : nullptr);
    if (item && item->text(1) == tr("Locked")) {
      item->setText(1, MoneyText(account.get(), account->GetBalance()));
    }
  }
  register_->setVisible(open);
  editor_->setVisible(open);
  locked_->setVisible(!open);
  editor_->setAccount(&document_->book(), account.get());
  loadFilterControls();
  model_->setAccount(account.get(),
                     reconcile_ ? RegisterModel::View::Reconcile : RegisterModel::View::Register);
  fitMoneyColumns();
  register_->scrollToBottom();
  refreshBalances();
}

void MainWindow::fitMoneyColumns() {
  // Wide enough for large amounts in the account's format (a symbol, a
  // negative's marks and the grouping take room), never narrower than set.
  const QFontMetrics metrics(register_->font());
  const int margin = 2 * register_->style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 16;
  const std::pair<int, double> widest[] = {{RegisterModel::kAmount, -99999.99},
                                           {RegisterModel::kBalance, -9999999.99}};
  for (const auto& [column, amount] : widest) {
    const int width = metrics.horizontalAdvance(model_->formatAmount(amount)) + margin;
    if (register_->columnWidth(column) < width) register_->setColumnWidth(column, width);
  }
}

// --- View filter -------------------------------------------------------------

void MainWindow::loadFilterControls() {
  auto account = currentAccount();
  loadingControls_ = true;
  const tarn::ViewFilterSettings settings = !account     ? tarn::ViewFilterSettings()
                                            : reconcile_ ? account->reconcileViewFilterSettings()
                                                         : account->entryViewFilterSettings();
  search_->setText(settings.filterData.isString()
                       ? QString::fromStdString(settings.filterData.stringValue())
                       : QString());
  auto choose = [](QComboBox* box, int code) {
    const int index = box->findData(code);
    box->setCurrentIndex(index >= 0 ? index : 0);
  };
  choose(searchField_, settings.filterType);
  choose(resolvedFilter_, settings.resolvedFilterType);
  choose(taxFilter_, settings.taxDeductibleFilterType);
  if (period_->findData(settings.dateFilterType) < 0) {
    period_->addItem(tr("Custom Dates"), settings.dateFilterType);
  }
  choose(period_, settings.dateFilterType);
  loadingControls_ = false;
}

void MainWindow::filterControlsChanged() {
  if (loadingControls_) return;
  auto account = currentAccount();
  if (!account || !account->IsAuthenticated()) return;
  tarn::ViewFilterSettings settings =
      reconcile_ ? account->reconcileViewFilterSettings() : account->entryViewFilterSettings();
  settings.filterData = tarn::plist::Value(search_->text().toStdString());
  settings.filterType = searchField_->currentData().toInt();
  settings.resolvedFilterType = resolvedFilter_->currentData().toInt();
  settings.taxDeductibleFilterType = taxFilter_->currentData().toInt();
  settings.dateFilterType = period_->currentData().toInt();
  if (reconcile_) {
    account->setReconcileViewFilterSettings(std::move(settings));
  } else {
    account->setEntryViewFilterSettings(std::move(settings));
  }
  document_->markViewChanged();
  refreshRegister(false);
}

// --- Register ------------------------------------------------------------------

std::shared_ptr<tarn::TARNAccountEntry> MainWindow::selectedEntry() const {
  const QModelIndexList rows = register_->selectionModel()->selectedRows();
  return rows.isEmpty() ? nullptr : model_->entryAt(rows.first().row());
}

void MainWindow::refreshRegister(bool balancesChanged) {
  const auto entry = selectedEntry();
  model_->refresh(balancesChanged);
  if (balancesChanged) fitMoneyColumns();  // the currency may have changed
  if (entry) {
    const int row = model_->rowOfEntry(entry->GetNumber());
    if (row >= 0) {
      const QSignalBlocker block(register_->selectionModel());
      register_->selectRow(row);
    }
  }
  if (balancesChanged && editor_->isEditing()) {
    // The entry in the form may have been changed or taken away (by undo).
    auto account = currentAccount();
    auto shown = account ? account->GetEntryWithNumber(editor_->editingNumber()) : nullptr;
    if (shown) {
      editor_->showForm(tarn::EntryFormFromEntry(document_->book(), *account, *shown),
                        shown->GetNumber());
    } else {
      register_->clearSelection();
      editor_->clearForNewEntry();
    }
  }
  refreshBalances();
}

void MainWindow::refreshBalances() {
  auto account = currentAccount();
  if (!account || !account->IsAuthenticated()) {
    balances_->setText(account ? tr("Locked") : QString());
    reconcileResolved_->clear();
    reconcileDifference_->clear();
    return;
  }
  const auto money = [this](double amount) { return model_->formatAmount(amount); };
  balances_->setText(
      tr("Balance: %1    Resolved: %2    Unresolved: %3    Today: %4    %5 entries shown")
          .arg(money(account->GetBalance()), money(account->GetResolvedBalance()),
               money(account->GetUnresolvedBalance()), money(account->GetTodaysBalance()))
          .arg(model_->rowCount()));
  const double statement = account->statementBalance();
  const double resolved = account->GetResolvedBalance();
  const double difference = statement - resolved;
  if (!statementBalance_->hasFocus()) statementBalance_->setText(money(statement).trimmed());
  reconcileResolved_->setText(tr("Resolved balance: %1").arg(money(resolved)));
  reconcileDifference_->setText(tr("Difference: %1").arg(money(difference)));
  reconcileDifference_->setStyleSheet(std::fabs(difference) < 0.005
                                          ? QStringLiteral("color: #006e28; font-weight: bold")
                                          : QStringLiteral("color: #b00020; font-weight: bold"));
}

void MainWindow::bookChanged(std::int32_t account) {
  if (!currentAccount()) accountNumber_ = -1;
  if (account < 0 || account != accountNumber_) {
    // The accounts themselves may have changed: rebuild the list (which
    // shows the current account again).
    refreshAccounts();
    if (accountNumber_ < 0 && accounts_->topLevelItemCount() > 0) {
      accounts_->setCurrentItem(accounts_->topLevelItem(0));
    }
    auto current = currentAccount();
    editor_->setAccount(&document_->book(), current.get());
    model_->setAccount(current.get(),
                       reconcile_ ? RegisterModel::View::Reconcile : RegisterModel::View::Register);
    fitMoneyColumns();
    refreshBalances();
    return;
  }
  refreshRegister(true);
  // The side list's names and balances: a transfer changes two accounts.
  for (int i = 0; i < accounts_->topLevelItemCount(); ++i) {
    QTreeWidgetItem* item = accounts_->topLevelItem(i);
    auto each = document_->book().accountWithNumber(item->data(0, kRoleAccount).toInt());
    if (!each) continue;
    item->setText(0, QString::fromStdString(each->GetName()));
    if (!each->IsAuthenticated()) continue;
    const double balance = each->GetBalance();
    item->setText(1, MoneyText(each.get(), balance));
    item->setForeground(1, balance < -0.001 ? QColor(176, 0, 32) : palette().color(QPalette::Text));
  }
}

void MainWindow::registerSelectionChanged() {
  auto account = currentAccount();
  auto entry = selectedEntry();
  if (!account || !entry) return;
  editor_->showForm(tarn::EntryFormFromEntry(document_->book(), *account, *entry),
                    entry->GetNumber());
}

void MainWindow::registerClicked(const QModelIndex& index) {
  if (!reconcile_ || index.column() != RegisterModel::kResolved) return;
  auto account = currentAccount();
  auto entry = model_->entryAt(index.row());
  if (!account || !entry) return;
  std::optional<tarn::EntriesChange> change;
  const bool resolve = entry->GetCleared() == 0;
  tarn::SetEntryResolved(document_->book(), *account, entry, resolve, &change);
  document_->pushEntries(resolve ? tr("Resolve Entry") : tr("Unresolve Entry"), std::move(*change),
                         account->GetNumber());
}

// --- Entries ---------------------------------------------------------------------

void MainWindow::recordEntry() {
  auto account = currentAccount();
  if (!account || !account->IsAuthenticated()) return;
  QString problem;
  const auto form = editor_->form(&problem);
  if (!form) return showProblem(problem);
  std::shared_ptr<tarn::TARNAccountEntry> entry;
  if (editor_->isEditing()) {
    entry = account->GetEntryWithNumber(editor_->editingNumber());
    if (!entry) return showProblem(tr("The entry in the form no longer exists."));
  }
  std::optional<tarn::EntriesChange> change;
  try {
    entry = tarn::RecordEntryForm(document_->book(), *account, entry, *form, &change);
  } catch (const std::invalid_argument& error) {
    return showProblem(QString::fromUtf8(error.what()));
  }
  const bool edited = editor_->isEditing();
  const int number = entry->GetNumber();
  document_->pushEntries(edited ? tr("Change Entry") : tr("New Entry"), std::move(*change),
                         account->GetNumber());
  if (edited) {
    const int row = model_->rowOfEntry(number);
    if (row >= 0) register_->selectRow(row);
  } else {
    // Ready for the next line of the register.
    register_->clearSelection();
    const int row = model_->rowOfEntry(number);
    if (row >= 0) register_->scrollTo(model_->index(row, 0));
    editor_->clearForNewEntry();
  }
}

void MainWindow::newEntry() {
  register_->clearSelection();
  register_->setCurrentIndex(QModelIndex());
  editor_->clearForNewEntry();
}

void MainWindow::voidEntry() {
  auto account = currentAccount();
  auto entry = account ? account->GetEntryWithNumber(editor_->editingNumber()) : nullptr;
  if (!account || !entry) return;
  std::optional<tarn::EntriesChange> change;
  const bool makeVoid = !entry->GetVoid();
  tarn::SetEntryVoid(document_->book(), *account, entry, makeVoid, &change);
  document_->pushEntries(makeVoid ? tr("Void Entry") : tr("Restore Entry"), std::move(*change),
                         account->GetNumber());
}

void MainWindow::removeEntry() {
  auto account = currentAccount();
  auto entry = account ? account->GetEntryWithNumber(editor_->editingNumber()) : nullptr;
  if (!account || !entry) return;
  std::optional<tarn::EntriesChange> change;
  tarn::RemoveEntry(document_->book(), *account, entry, &change);
  document_->pushEntries(tr("Remove Entry"), std::move(*change), account->GetNumber());
  newEntry();
}

// --- Reconcile ---------------------------------------------------------------------

void MainWindow::setReconcileMode(bool on) {
  reconcile_ = on;
  reconcileBar_->setVisible(on);
  loadFilterControls();
  model_->setAccount(currentAccount().get(),
                     on ? RegisterModel::View::Reconcile : RegisterModel::View::Register);
  refreshBalances();
}

void MainWindow::statementBalanceEdited() {
  auto account = currentAccount();
  if (!account || !account->IsAuthenticated()) return;
  const tarn::PFCurrency& currency = CurrencyOf(account.get());
  const auto read = ReadMoney(currency, statementBalance_->text());
  if (!read || !std::isfinite(*read)) {
    const QString typed = statementBalance_->text();
    refreshBalances();
    return showProblem(NotAnAmount(currency, typed));
  }
  const double value = *read;
  if (std::fabs(value - account->statementBalance()) < 0.005) return refreshBalances();
  tarn::AccountSettings settings = tarn::CaptureAccountSettings(*account);
  settings.statementBalance = std::round(value * 100) / 100;
  changeSettings(*account, settings, tr("Statement Balance"));
}

// --- Accounts, categories, currencies ------------------------------------------------

void MainWindow::newAccount() {
  bool ok = false;
  QString name;
  {
    const ModalRun modal(this);
    name = QInputDialog::getText(this, tr("New Account"), tr("Name of the account:"),
                                 QLineEdit::Normal, QString(), &ok);
  }
  if (!ok) return;
  tarn::BookContents before(document_->book());
  std::shared_ptr<tarn::TARNAccount> account;
  try {
    account = document_->book().addAccount(name.trimmed().toStdString());
  } catch (const std::invalid_argument& error) {
    return showProblem(QString::fromUtf8(error.what()));
  }
  account->Authenticate(std::string());
  accountNumber_ = account->GetNumber();
  document_->pushContents(tr("New Account"), std::move(before),
                          tarn::BookContents(document_->book()));
}

void MainWindow::renameAccount() {
  auto account = currentAccount();
  if (!account || !unlock(*account)) return;
  bool ok = false;
  QString name;
  {
    const ModalRun modal(this);
    name = QInputDialog::getText(this, tr("Rename Account"), tr("New name:"), QLineEdit::Normal,
                                 QString::fromStdString(account->GetName()), &ok);
  }
  if (!ok) return;
  tarn::AccountSettings settings = tarn::CaptureAccountSettings(*account);
  settings.name = name.trimmed().toStdString();
  changeSettings(*account, settings, tr("Rename Account"));
}

void MainWindow::changeSettings(tarn::TARNAccount& account, const tarn::AccountSettings& after,
                                const QString& text) {
  const tarn::AccountSettings before = tarn::CaptureAccountSettings(account);
  if (after == before) return;
  try {
    tarn::ApplyAccountSettings(document_->book(), account, after);
  } catch (const std::invalid_argument& error) {
    return showProblem(QString::fromUtf8(error.what()));
  }
  document_->pushSettings(text, account.GetNumber(), before, after);
}

void MainWindow::accountSettings() {
  auto account = currentAccount();
  if (!account || !unlock(*account)) return;
  AccountSettingsDialog dialog(document_->book(), *account, this);
  {
    const ModalRun modal(this);
    if (dialog.exec() != QDialog::Accepted) return;
  }
  changeSettings(*account, dialog.settings(), tr("Account Settings"));
}

void MainWindow::removeAccount() {
  auto account = currentAccount();
  if (!account || !unlock(*account)) return;
  QMessageBox::StandardButton answer;
  {
    const ModalRun modal(this);
    answer =
        QMessageBox::question(this, tr("Remove Account"),
                              tr("Remove the account \"%1\" and its %2 entries? You can undo this.")
                                  .arg(QString::fromStdString(account->GetName()))
                                  .arg(account->GetAllEntries().size()));
  }
  if (answer != QMessageBox::Yes) return;
  tarn::BookContents before(document_->book());
  document_->book().removeAccount(account);
  accountNumber_ = -1;
  document_->pushContents(tr("Remove Account"), std::move(before),
                          tarn::BookContents(document_->book()));
}

void MainWindow::removeCategory() {
  tarn::TARNBook& book = document_->book();
  const auto all = book.allCategories();
  if (all.empty()) return showProblem(tr("The book has no categories."));
  QStringList names;
  for (const auto& category : all) names << QString::fromStdString(category->fullName());
  bool ok = false;
  QString chosen;
  {
    const ModalRun modal(this);
    chosen = QInputDialog::getItem(this, tr("Remove Category"), tr("Category to remove:"), names, 0,
                                   false, &ok);
  }
  if (!ok) return;
  auto category = book.categoryWithFullName(chosen.toStdString());
  if (!category) return;

  // The choices: every category but the one removed and its children.
  std::set<const tarn::TARNAccountEntryCategory*> removed{category.get()};
  for (const auto& child : category->allChildren()) removed.insert(child.get());
  auto data = std::make_shared<tarn::RemoveCategoryData>();
  for (const auto& each : all) {
    if (!removed.count(each.get())) data->categories.push_back(each);
  }
  data->oldCategories = {category};
  data->newCategories = {-1};
  bool accepted = false;
  {
    const ModalRun modal(this);
    accepted = tarn::PFRemoveCategoryController::sharedRunForCategory(data);
  }
  if (!accepted) return;
  const std::int32_t number = data->newCategories.empty() ? -1 : data->newCategories.front();
  auto moveTo = number >= 0 ? book.categoryWithNumber(number) : nullptr;
  tarn::BookContents before(book);
  book.removeCategory(category, moveTo.get());
  document_->pushContents(tr("Remove Category"), std::move(before), tarn::BookContents(book));
}

void MainWindow::editCurrencies() {
  tarn::TARNBook& book = document_->book();
  QStringList names;
  for (const auto& currency : book.currencies()) {
    names << QString::fromStdString(currency->code() + " - " + currency->description());
  }
  const QString newCurrency = tr("New Currency...");
  names << newCurrency;
  bool ok = false;
  QString chosen;
  {
    const ModalRun modal(this);
    chosen =
        QInputDialog::getItem(this, tr("Edit Currencies"), tr("Currency:"), names, 0, false, &ok);
  }
  if (!ok) return;
  const qsizetype index = names.indexOf(chosen);
  const bool adding = chosen == newCurrency || index < 0 ||
                      static_cast<std::size_t>(index) >= book.currencies().size();
  // A new currency starts blank, with the base currency's separators.
  const auto& base = book.currency();
  auto currency =
      adding ? tarn::PFCurrency::initWithCode(std::string(), std::string(), std::string(), true,
                                              base->thousandsSeparator(), base->decimalSeparator(),
                                              1.0, tarn::CalendarDate::now().dateNumber())
             : book.currencies()[static_cast<std::size_t>(index)];
  std::vector<std::shared_ptr<tarn::PFCurrency>> currencies = book.currencies();
  if (adding) currencies.push_back(currency);

  tarn::BookContents before(book);
  auto* panel = tarn::PFEditCurrencyController::sharedEditCurrencyController();
  panel->setBaseCurrency(book.currency());
  panel->setEditCurrency(currency);
  panel->setCurrencies(std::move(currencies));
  int answer = 0;
  {
    const ModalRun modal(this);
    answer = panel->editCurrencyWindow_Run();
  }
  panel->setEditCurrency(nullptr);
  if (answer != 1) return;
  if (adding) {
    try {
      book.addCurrency(currency);
    } catch (const std::invalid_argument& error) {
      return showProblem(QString::fromUtf8(error.what()));
    }
  }
  document_->pushContents(adding ? tr("New Currency") : tr("Edit Currency"), std::move(before),
                          tarn::BookContents(book));
}

// --- Export and schedules ------------------------------------------------------

void MainWindow::exportAccount() {
  auto account = currentAccount();
  if (!account) return showProblem(tr("Select the account to export first."));
  if (!unlock(*account)) return;

  QFileDialog dialog(this, tr("Export \"%1\"").arg(QString::fromStdString(account->GetName())));
  dialog.setObjectName(QStringLiteral("exportDialog"));
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.setNameFilters({tr("QIF and text files (*.qif *.txt)"), tr("All files (*)")});

  auto accessory = tarn::TARNExportAccessoryManager::exportAccessoryManager();
  accessory->setExportType(account->textExport_ExportType());
  accessory->setEncoding(account->textExport_Encoding() != 0 ? account->textExport_Encoding()
                                                             : tarn::kUTF8StringEncoding);
  auto* options = new QWidget;
  auto* form = new QFormLayout(options);
  form->setContentsMargins(0, 0, 0, 0);
  form->addRow(accessory->view());
  auto* dateFormat = new QComboBox;
  dateFormat->setObjectName(QStringLiteral("exportDateFormat"));
  for (const char* format : {"%m/%d/%Y", "%d/%m/%Y", "%Y-%m-%d", "%m/%d/%y", "%d.%m.%Y"}) {
    const QString text = QString::fromLatin1(format);
    QString sample = text;
    sample.replace("%Y", "2026").replace("%y", "26").replace("%m", "11").replace("%d", "24");
    dateFormat->addItem(tr("%1 (QIF only)").arg(sample), text);
  }
  dateFormat->setCurrentIndex(std::max(0, dateFormat->findData(exportDateFormat_)));
  form->addRow(tr("QIF dates:"), dateFormat);
  auto* folder = new QComboBox;
  folder->setObjectName(QStringLiteral("exportSmartFolder"));
  folder->addItem(tr("Every entry of the register"));
  for (const auto& smartFolder : account->smartFolders()) {
    folder->addItem(tr("Smart folder \"%1\"").arg(QString::fromStdString(smartFolder->name())));
  }
  form->addRow(tr("Entries:"), folder);
  if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout())) {
    grid->addWidget(options, grid->rowCount(), 0, 1, grid->columnCount());
  } else {
    dialog.layout()->addWidget(options);
  }
  const bool qif = accessory->exportType() == tarn::TARNExportAccessoryManager::kExportTypeQIF;
  dialog.selectFile(QString::fromStdString(account->GetName()) + (qif ? ".qif" : ".txt"));

  int result = QDialog::Rejected;
  {
    const ModalRun modal(this);
    result = dialog.exec();
  }
  // The accessory's view goes back to its manager before the dialog, which
  // would delete it, goes away.
  accessory->view()->setParent(nullptr);
  if (result != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;

  QString path = dialog.selectedFiles().first();
  const int exportType = accessory->exportType();
  const bool asQIF = exportType == tarn::TARNExportAccessoryManager::kExportTypeQIF;
  if (QFileInfo(path).suffix().isEmpty()) path += asQIF ? ".qif" : ".txt";
  const tarn::StringEncoding encoding = accessory->encoding();
  exportDateFormat_ = dateFormat->currentData().toString();

  tarn::TARNExportOptions exportOptions;
  exportOptions.dateFormat = exportDateFormat_.toStdString();
  if (folder->currentIndex() > 0) {
    exportOptions.exportFilter =
        account->smartFolders()[static_cast<std::size_t>(folder->currentIndex() - 1)];
  }
  const std::string text = asQIF ? account->asQIFStringWithOptions(&exportOptions)
                                 : account->asTabDelimitedStringWithOptions(&exportOptions);
  const auto bytes = tarn::EncodeFromUtf8(text, encoding);
  if (!bytes) {
    return showProblem(tr("The account holds text that %1 cannot write. Choose another encoding, "
                          "such as UTF-8.")
                           .arg(QString::fromStdString(tarn::NameOfStringEncoding(encoding))));
  }
  try {
    tarn::plist::WriteBytesAtomically(path.toStdString(), *bytes);
  } catch (const tarn::FileError& error) {
    return showProblem(tr("The export could not be written: %1").arg(error.what()));
  }
  // The choices are remembered with the account, as view settings are.
  if (account->textExport_ExportType() != exportType ||
      account->textExport_Encoding() != static_cast<std::int32_t>(encoding)) {
    account->setTextExport_ExportType(exportType);
    account->setTextExport_Encoding(static_cast<std::int32_t>(encoding));
    document_->markViewChanged();
  }
}

void MainWindow::importFile() {
  auto account = currentAccount();
  if (!account) return showProblem(tr("Select the account to import into first."));
  if (!unlock(*account)) return;
  RunImport(this, *document_, *account);
}

namespace {

// Shows the per-account window kept in `window`: made on first use (and
// deleted when closed), brought forward over the selected account after that.
template <typename Window>
void ShowAccountWindow(QPointer<Window>& window, BookDocument* document, std::int32_t account,
                       QWidget* parent) {
  if (!window) {
    window = new Window(document, account, parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
  } else {
    window->setAccount(account);
  }
  window->show();
  window->raise();
  window->activateWindow();
}

}  // namespace

void MainWindow::showSchedules() {
  if (!document_) return;
  auto account = currentAccount();
  if (account && !unlock(*account)) return;
  ShowAccountWindow(schedulesWindow_, document_.get(), accountNumber_, this);
}

void MainWindow::showSummary() {
  if (!document_) return;
  auto account = currentAccount();
  if (account && !unlock(*account)) return;
  ShowAccountWindow(summaryWindow_, document_.get(), accountNumber_, this);
}

// --- Files ----------------------------------------------------------------------------

void MainWindow::newBook() {
  if (!settleSummaryWindow() || !maybeSave()) return;
  setBook(std::make_unique<tarn::TARNBook>());
}

void MainWindow::openBook() {
  if (!settleSummaryWindow() || !maybeSave()) return;
  QString path;
  {
    const ModalRun modal(this);
    path = QFileDialog::getOpenFileName(
        this, tr("Open Book"), QString(),
        tr("Books and accounts (*.tarn *.plist *.account);;All files (*)"), nullptr,
        QFileDialog::DontUseNativeDialog);
  }
  if (!path.isEmpty()) openPath(path);
}

bool MainWindow::openPath(const QString& path) {
  std::unique_ptr<tarn::TARNBook> book;
  try {
    // Read under the book's lock, so that a tarn command writing it at the
    // same moment is waited for rather than read half done. A file in a
    // folder where no lock file can be made is read without one.
    std::unique_ptr<tarn::BookLock> lock;
    if (QFileInfo::exists(path)) {
      try {
        lock = std::make_unique<tarn::BookLock>(path.toStdString());
      } catch (const tarn::FileError&) {
      }
    }
    book = tarn::TARNBook::open(path.toStdString());
  } catch (const tarn::FileError& error) {
    showProblem(tr("The book could not be opened.\n\n%1").arg(QString::fromUtf8(error.what())));
    return false;
  }
  setBook(std::move(book));
  addRecent(path);
  return true;
}

bool MainWindow::saveBook() {
  tarn::TARNBook& book = document_->book();
  if (book.path().empty()) return saveBookAs();
  const QString path = QString::fromStdString(book.path());
  // The lock is held only while the file is looked at and written, never
  // while the user is asked: a tarn command waiting for it would wait on
  // the user.
  std::optional<tarn::TARNBook::FileStamp> replaceable;
  bool asked = false;
  try {
    for (;;) {
      {
        const tarn::BookLock lock(book.path());
        const auto onDisk = tarn::TARNBook::StampOfFile(book.path());
        if (!book.fileChangedOnDisk() || (asked && onDisk == replaceable)) {
          book.save();
          break;
        }
        replaceable = onDisk;
        asked = true;
      }
      if (!askToReplaceChangedFile(path)) return false;
    }
  } catch (const tarn::FileError& error) {
    showProblem(tr("The book could not be saved.\n\n%1").arg(QString::fromUtf8(error.what())));
    return false;
  }
  document_->markSaved();
  addRecent(path);
  return true;
}

bool MainWindow::askToReplaceChangedFile(const QString& path) {
  const QString name = QFileInfo(path).fileName();
  QMessageBox box(QMessageBox::Warning, tr("Book Changed on Disk"),
                  tr("\"%1\" was changed by another program (such as the tarn command) since "
                     "this window opened or last saved it.")
                      .arg(name),
                  QMessageBox::NoButton, this);
  box.setObjectName(QStringLiteral("bookChangedOnDisk"));
  box.setInformativeText(
      tr("Saving replaces the other change with this window's book; the file it replaces is "
         "kept as \"%1\". Cancel leaves the file as the other program wrote it.")
          .arg(QFileInfo(QString::fromStdString(tarn::TARNBook::BackupPath(path.toStdString())))
                   .fileName()));
  QPushButton* replace = box.addButton(tr("Replace"), QMessageBox::DestructiveRole);
  box.addButton(QMessageBox::Cancel);
  box.setDefaultButton(QMessageBox::Cancel);
  {
    const ModalRun modal(this);
    box.exec();
  }
  return box.clickedButton() == replace;
}

bool MainWindow::saveBookAs() {
  QString path;
  {
    const ModalRun modal(this);
    path = QFileDialog::getSaveFileName(
        this, tr("Save Book As"), QString::fromStdString(document_->book().path()),
        tr("Books (*.tarn);;All files (*)"), nullptr, QFileDialog::DontUseNativeDialog);
  }
  if (path.isEmpty()) return false;
  try {
    const tarn::BookLock lock(path.toStdString());
    // The dialog has already asked whether to replace an existing file.
    document_->book().saveAs(path.toStdString(), true);
  } catch (const tarn::FileError& error) {
    showProblem(tr("The book could not be saved.\n\n%1").arg(QString::fromUtf8(error.what())));
    return false;
  }
  document_->markSaved();
  addRecent(path);
  return true;
}

// The summary window settles its unsaved options before the book is saved
// or replaced, so that saving takes them along.
bool MainWindow::settleSummaryWindow() {
  return !summaryWindow_ || !summaryWindow_->isVisible() || summaryWindow_->close();
}

bool MainWindow::maybeSave() {
  if (!document_ || !document_->isModified()) return true;
  QMessageBox::StandardButton answer;
  {
    const ModalRun modal(this);
    answer = QMessageBox::question(
        this, tr("Unsaved Changes"), tr("The book has changes that are not saved. Save them?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
  }
  if (answer == QMessageBox::Cancel) return false;
  if (answer == QMessageBox::Save) return saveBook();
  return true;
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (settleSummaryWindow() && maybeSave()) {
    event->accept();
  } else {
    event->ignore();
  }
}

void MainWindow::addRecent(const QString& path) {
  QSettings settings;
  QStringList recent = settings.value("recentBooks").toStringList();
  const QString absolute = QFileInfo(path).absoluteFilePath();
  recent.removeAll(absolute);
  recent.prepend(absolute);
  while (recent.size() > kRecentCount) recent.removeLast();
  settings.setValue("recentBooks", recent);
  refillRecentMenu();
  updateTitle();
}

void MainWindow::refillRecentMenu() {
  recentMenu_->clear();
  const QStringList recent = QSettings().value("recentBooks").toStringList();
  for (const QString& path : recent) {
    recentMenu_
        ->addAction(QFileInfo(path).fileName(), this,
                    [this, path] {
                      if (settleSummaryWindow() && maybeSave()) openPath(path);
                    })
        ->setToolTip(path);
  }
  recentMenu_->setEnabled(!recent.isEmpty());
}

void MainWindow::updateTitle() {
  if (!document_) return;
  const std::string& path = document_->book().path();
  const QString name =
      path.empty() ? tr("Untitled") : QFileInfo(QString::fromStdString(path)).fileName();
  setWindowTitle(name + QStringLiteral("[*] - Tarn"));
  setWindowModified(document_->isModified());
}
