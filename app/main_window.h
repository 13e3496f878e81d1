// The check register window: the book's accounts at the side, the selected
// account's register (or reconcile view) with its view filter above and its
// balances below, and the entry form. The window owns its BookDocument; the
// document owns the book.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QStringList>

#include <cstdint>
#include <memory>

class BookDocument;
class EntryEditor;
class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QTableView;
class QTreeWidget;
class QTreeWidgetItem;
class QWidget;
class RegisterModel;
class SchedulesWindow;
class SummaryWindow;

namespace tarn {
class TARNAccount;
class TARNAccountEntry;
class TARNBook;
struct AccountSettings;
}  // namespace tarn

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(QWidget* parent = nullptr);
  ~MainWindow() override;

  // Opens a book (or an old account file) from a path; false, after telling
  // the user why, when it cannot be read.
  bool openPath(const QString& path);
  // An untitled book, or one already in memory (the sample).
  void setBook(std::unique_ptr<tarn::TARNBook> book);
  // The open book, for tests and tools that look at what a command did.
  tarn::TARNBook& book();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void buildMenus();
  void buildWidgets();
  void bookChanged(std::int32_t account);
  void refreshAccounts();
  void accountSelectionChanged();
  void showAccount(std::int32_t number, QTreeWidgetItem* item);
  bool unlock(tarn::TARNAccount& account);
  void loadFilterControls();
  void filterControlsChanged();
  void refreshRegister(bool balancesChanged);
  void refreshBalances();
  // Widens the amount and balance columns to the shown account's format.
  void fitMoneyColumns();
  void registerSelectionChanged();
  void registerClicked(const QModelIndex& index);
  void recordEntry();
  void newEntry();
  void voidEntry();
  void removeEntry();
  void setReconcileMode(bool on);
  void statementBalanceEdited();
  void newAccount();
  void renameAccount();
  void accountSettings();
  // Applies settings to the account through the undo stack; a problem is
  // shown and nothing changes.
  void changeSettings(tarn::TARNAccount& account, const tarn::AccountSettings& after,
                      const QString& text);
  void removeAccount();
  void removeCategory();
  void editCurrencies();
  // Writes the selected account as QIF or tab-delimited text to a file the
  // user names, with the account's remembered format and encoding.
  void exportAccount();
  // Reads a QIF, OFX or text file into the selected account after a review.
  void importFile();
  // Shows (or brings forward) the window of the selected account's
  // scheduled entries.
  void showSchedules();
  void showSummary();
  void newBook();
  void openBook();
  bool saveBook();
  bool saveBookAs();
  // The book's file was changed by another program since the window read
  // or wrote it: asks whether to replace that change; true to replace.
  bool askToReplaceChangedFile(const QString& path);
  bool maybeSave();
  // Closes the summary window, which first asks about unsaved option edits;
  // false when the user cancels.
  bool settleSummaryWindow();
  void addRecent(const QString& path);
  void refillRecentMenu();
  void updateTitle();
  std::shared_ptr<tarn::TARNAccount> currentAccount() const;
  // The entry of the register's selected row, or nullptr.
  std::shared_ptr<tarn::TARNAccountEntry> selectedEntry() const;
  void showProblem(const QString& text);

  std::unique_ptr<BookDocument> document_;
  std::int32_t accountNumber_ = -1;
  bool reconcile_ = false;
  bool loadingControls_ = false;

  QTreeWidget* accounts_ = nullptr;
  QTableView* register_ = nullptr;
  RegisterModel* model_ = nullptr;
  EntryEditor* editor_ = nullptr;
  QLineEdit* search_ = nullptr;
  QComboBox* searchField_ = nullptr;
  QComboBox* resolvedFilter_ = nullptr;
  QComboBox* taxFilter_ = nullptr;
  QComboBox* period_ = nullptr;
  QWidget* reconcileBar_ = nullptr;
  QLineEdit* statementBalance_ = nullptr;
  QLabel* reconcileResolved_ = nullptr;
  QLabel* reconcileDifference_ = nullptr;
  QLabel* balances_ = nullptr;
  QLabel* locked_ = nullptr;
  QAction* undo_ = nullptr;
  QAction* redo_ = nullptr;
  QAction* reconcileAction_ = nullptr;
  QMenu* recentMenu_ = nullptr;
  QPointer<SchedulesWindow> schedulesWindow_;
  QPointer<SummaryWindow> summaryWindow_;
  QString exportDateFormat_ = QStringLiteral("%m/%d/%Y");
};
