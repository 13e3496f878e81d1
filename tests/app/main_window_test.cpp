// The check register window driven as a user drives it: menus, clicks in
// the account list and the register, typing into the entry form and the
// search field, and answering the dialogs the window puts up. What the
// window shows is checked against the book read back from its file.

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFileDialog>
#include <QFont>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <cmath>
#include <functional>
#include <memory>

#include "app_test_support.h"
#include "main_window.h"
#include "register_model.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/sample_book.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"

namespace {

// A dollar amount as the window writes it (" -$ 1,234.50"), read without
// the window's own reading.
double Money(QString text) {
  text.remove(',').remove('$').remove(' ');
  bool ok = false;
  const double value = text.toDouble(&ok);
  if (!ok) qWarning("not a dollar amount: %s", qPrintable(text));
  return value;
}

}  // namespace

class MainWindowTest : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void cleanupTestCase();
  void init();
  void cleanup();

  void opensTheSampleBookThroughTheOpenDialog();
  void addsACheckWithTheOfferedNumber();
  void addsASplitEntryAndATransfer();
  void voidsUndoesAndRedoes();
  void filtersByTextAndByPeriod();
  void reconcilesAgainstAStatementBalance();
  void savesAndReopensAsItWasLeft();
  void asksForThePasswordBeforeShowingBalances();
  void asksBeforeClosingWithUnsavedChanges();
  void opensAnOldAccountFileThroughTheUpgrade();
  void managesAccountsWithUndo();
  void showsFoldersAndSmartFolders();
  void removesACategoryThroughThePanel();
  void addsACurrencyAndTransfersBetweenCurrencies();
  void keepsTheOpenBookWhenAFileCannotBeRead();

 private:
  // Runs `answer` on the next modal dialog, once it shows.
  void whenModal(std::function<void(QWidget*)> answer);
  void openThroughDialog(const QString& path);
  QAction* action(const QString& text) const;
  void selectAccount(const QString& name);
  QString balanceOf(const QString& name) const;
  int rowWith(int column, const QString& text) const;
  void typeInto(const char* field, const QString& text);
  void chooseType(const QString& name);

  template <typename T>
  T* find(const char* name) const {
    return FindWidget<T>(*window_, name);
  }
  QTableView* table() const { return find<QTableView>("register"); }
  RegisterModel* model() const { return qobject_cast<RegisterModel*>(table()->model()); }

  std::unique_ptr<AppTestScratch> scratch_;
  QString samplePath_;
  std::unique_ptr<MainWindow> window_;
};

void MainWindowTest::initTestCase() {
  scratch_ = std::make_unique<AppTestScratch>();
  QVERIFY(scratch_->isValid());
  samplePath_ = scratch_->filePath("household.tarn");
  SampleHousehold()->saveAs(samplePath_.toStdString());
}

void MainWindowTest::cleanupTestCase() {
  scratch_.reset();
}

void MainWindowTest::init() {
  window_ = ShownWindow();
  QVERIFY(window_);
}

void MainWindowTest::cleanup() {
  if (window_) window_->hide();
  window_.reset();
}

void MainWindowTest::whenModal(std::function<void(QWidget*)> answer) {
  WhenModal(this, std::move(answer));
}

QAction* MainWindowTest::action(const QString& text) const {
  return FindAction(*window_, text);
}

void MainWindowTest::openThroughDialog(const QString& path) {
  whenModal([path](QWidget* modal) {
    auto* dialog = qobject_cast<QFileDialog*>(modal);
    QVERIFY(dialog);
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    QVERIFY(name);
    name->setText(path);
    QTest::keyClick(name, Qt::Key_Return);
  });
  action("&Open...")->trigger();
}

void MainWindowTest::selectAccount(const QString& name) {
  auto* tree = find<QTreeWidget>("accounts");
  const auto items = tree->findItems(name, Qt::MatchExactly);
  QVERIFY2(!items.isEmpty(), qPrintable(name));
  const QRect rect = tree->visualItemRect(items.first());
  QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, rect.center());
  QCOMPARE(tree->currentItem(), items.first());
}

QString MainWindowTest::balanceOf(const QString& name) const {
  auto* tree = find<QTreeWidget>("accounts");
  const auto items = tree->findItems(name, Qt::MatchExactly);
  return items.isEmpty() ? QString() : items.first()->text(1);
}

int MainWindowTest::rowWith(int column, const QString& text) const {
  for (int row = 0; row < model()->rowCount(); ++row) {
    if (model()->index(row, column).data().toString() == text) return row;
  }
  return -1;
}

void MainWindowTest::typeInto(const char* field, const QString& text) {
  auto* edit = find<QLineEdit>(field);
  edit->setFocus();
  edit->selectAll();
  QTest::keyClick(edit, Qt::Key_Backspace);
  QTest::keyClicks(edit, text);
}

void MainWindowTest::chooseType(const QString& name) {
  auto* type = find<QComboBox>("entryType");
  const int index = type->findText(name);
  QVERIFY2(index >= 0, qPrintable(name));
  type->setCurrentIndex(index);
}

void MainWindowTest::opensTheSampleBookThroughTheOpenDialog() {
  openThroughDialog(samplePath_);
  QTRY_COMPARE(find<QTreeWidget>("accounts")->topLevelItemCount(), 3);
  const auto book = tarn::TARNBook::open(samplePath_.toStdString());
  for (const auto& account : book->accounts()) {
    const QString name = QString::fromStdString(account->GetName());
    QCOMPARE(Money(balanceOf(name)), std::round(account->GetBalance() * 100) / 100);
  }
  // The first account is shown: its filtered entries, in date order, the
  // last row's running balance being the account's balance.
  const auto first = book->accounts().front();
  QCOMPARE(model()->rowCount(), static_cast<int>(first->entryFilteredEntries().size()));
  QVERIFY(model()->rowCount() > 20);
  for (int row = 1; row < model()->rowCount(); ++row) {
    QVERIFY(model()->index(row - 1, RegisterModel::kDate).data().toString() <=
            model()->index(row, RegisterModel::kDate).data().toString());
  }
  const int last = model()->rowCount() - 1;
  QCOMPARE(Money(model()->index(last, RegisterModel::kBalance).data().toString()),
           std::round(first->GetBalance() * 100) / 100);
  QVERIFY(find<QLabel>("balances")
              ->text()
              .contains(model()->formatAmount(first->GetResolvedBalance())));
  // Amounts are right-aligned, money out and in told apart by sign and colour.
  const QModelIndex amount = model()->index(0, RegisterModel::kAmount);
  QCOMPARE(amount.data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight, int(Qt::AlignRight));
  int debitRow = -1, depositRow = -1;
  for (int row = 0; row < model()->rowCount(); ++row) {
    const QString text = model()->index(row, RegisterModel::kAmount).data().toString();
    (text.contains('-') ? debitRow : depositRow) = row;
  }
  QVERIFY(debitRow >= 0 && depositRow >= 0);
  QVERIFY(model()->index(debitRow, RegisterModel::kAmount).data(Qt::ForegroundRole) !=
          model()->index(depositRow, RegisterModel::kAmount).data(Qt::ForegroundRole));
  // Sorting by a column, and back.
  QTest::mouseClick(
      table()->horizontalHeader()->viewport(), Qt::LeftButton, {},
      QPoint(table()->horizontalHeader()->sectionViewportPosition(RegisterModel::kAmount) + 10, 5));
  for (int row = 1; row < model()->rowCount(); ++row) {
    QVERIFY(Money(model()->index(row - 1, RegisterModel::kAmount).data().toString()) <=
            Money(model()->index(row, RegisterModel::kAmount).data().toString()));
  }
}

void MainWindowTest::addsACheckWithTheOfferedNumber() {
  QVERIFY(window_->openPath(samplePath_));
  selectAccount("Checking");
  const auto book = tarn::TARNBook::open(samplePath_.toStdString());
  const auto checking = book->accountWithName("Checking");
  const int offered = checking->NextAvailableCheckNumber();
  const double before = checking->GetBalance();
  const int rows = model()->rowCount();

  QTest::mouseClick(find<QPushButton>("entryNew"), Qt::LeftButton);
  chooseType("Check");
  QCOMPARE(find<QLineEdit>("entryCheckNumber")->text(), QString::number(offered));
  typeInto("entryToFrom", "Lakeside Plumbing");
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  QCOMPARE(QApplication::focusWidget(), find<QLineEdit>("entryDescription"));
  typeInto("entryDescription", "Kitchen sink");
  typeInto("entryAmount", "1,234.50");
  QTest::keyClick(find<QLineEdit>("entryAmount"), Qt::Key_Return);

  QCOMPARE(model()->rowCount(), rows + 1);
  const int row = rowWith(RegisterModel::kDescription, "Kitchen sink");
  QVERIFY(row >= 0);
  QCOMPARE(model()->index(row, RegisterModel::kCheckNumber).data().toString(),
           QString::number(offered));
  QCOMPARE(model()->index(row, RegisterModel::kAmount).data().toString(), QString(" -$ 1,234.50"));
  QCOMPARE(Money(balanceOf("Checking")), std::round((before - 1234.5) * 100) / 100);
  // The form is ready for the next check, numbered after this one.
  QVERIFY(find<QLineEdit>("entryToFrom")->text().isEmpty());
  chooseType("Check");
  QCOMPARE(find<QLineEdit>("entryCheckNumber")->text(), QString::number(offered + 1));
}

void MainWindowTest::addsASplitEntryAndATransfer() {
  QVERIFY(window_->openPath(samplePath_));
  selectAccount("Checking");
  const double checking = Money(balanceOf("Checking"));
  const double savings = Money(balanceOf("Savings"));

  // A split over two categories.
  QTest::mouseClick(find<QPushButton>("entryNew"), Qt::LeftButton);
  typeInto("entryToFrom", "Corner Market");
  typeInto("entryDescription", "Groceries and cleaning");
  find<QCheckBox>("entrySplit")->click();
  auto* splits = find<QTableWidget>("entrySplits");
  QCOMPARE(splits->rowCount(), 2);
  const char* lines[2][3] = {{"Food:Groceries", "food", "40.25"}, {"Household", "soap", "9.75"}};
  for (int row = 0; row < 2; ++row) {
    for (int column = 0; column < 3; ++column) {
      const QRect cell = splits->visualItemRect(splits->item(row, column));
      QTest::mouseDClick(splits->viewport(), Qt::LeftButton, {}, cell.center());
      QWidget* editor = QApplication::focusWidget();
      QVERIFY(editor && editor != splits);
      QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
      QTest::keyClicks(editor, lines[row][column]);
      QTest::keyClick(editor, Qt::Key_Return);
    }
  }
  QTest::mouseClick(find<QPushButton>("entryRecord"), Qt::LeftButton);
  const int splitRow = rowWith(RegisterModel::kDescription, "Groceries and cleaning");
  QVERIFY(splitRow >= 0);
  QCOMPARE(model()->index(splitRow, RegisterModel::kCategory).data().toString(), QString("Split"));
  QCOMPARE(model()->index(splitRow, RegisterModel::kAmount).data().toString(),
           QString(" -$ 50.00"));

  // Selecting it shows its lines again.
  table()->selectRow(splitRow);
  QCOMPARE(find<QTableWidget>("entrySplits")->rowCount(), 2);
  QCOMPARE(find<QTableWidget>("entrySplits")->item(1, 0)->text(), QString("Household"));

  // A transfer of 300 to savings.
  QTest::mouseClick(find<QPushButton>("entryNew"), Qt::LeftButton);
  chooseType("Transfer");
  typeInto("entryDescription", "To the rainy-day fund");
  auto* transfer = find<QComboBox>("entryTransfer");
  transfer->setCurrentIndex(transfer->findText("Savings"));
  typeInto("entryAmount", "300");
  QTest::keyClick(find<QLineEdit>("entryAmount"), Qt::Key_Return);
  QCOMPARE(Money(balanceOf("Checking")), std::round((checking - 50 - 300) * 100) / 100);
  QCOMPARE(Money(balanceOf("Savings")), std::round((savings + 300) * 100) / 100);
  selectAccount("Savings");
  const int mirror = rowWith(RegisterModel::kDescription, "To the rainy-day fund");
  QVERIFY(mirror >= 0);
  QCOMPARE(model()->index(mirror, RegisterModel::kAmount).data().toString(), QString("$ 300.00"));
}

void MainWindowTest::voidsUndoesAndRedoes() {
  QVERIFY(window_->openPath(samplePath_));
  selectAccount("Checking");
  const double balance = Money(balanceOf("Checking"));
  int row = -1;
  for (int each = model()->rowCount() - 1; each >= 0; --each) {
    const QModelIndex font = model()->index(each, RegisterModel::kAmount);
    if (!font.data(Qt::FontRole).value<QFont>().strikeOut() &&
        font.data().toString().contains('-')) {
      row = each;
      break;
    }
  }
  QVERIFY(row >= 0);
  const int number = model()->index(row, 0).data(Qt::UserRole).toInt();
  const double amount = Money(model()->index(row, RegisterModel::kAmount).data().toString());
  const QRect cell = table()->visualRect(model()->index(row, RegisterModel::kDescription));
  table()->scrollTo(model()->index(row, 0));
  QTest::mouseClick(table()->viewport(), Qt::LeftButton, {},
                    table()->visualRect(model()->index(row, RegisterModel::kDescription)).center());
  Q_UNUSED(cell);
  QCOMPARE(table()->currentIndex().row(), row);
  QTest::mouseClick(find<QPushButton>("entryVoid"), Qt::LeftButton);

  auto struck = [this, number] {
    for (int each = 0; each < model()->rowCount(); ++each) {
      const QModelIndex index = model()->index(each, RegisterModel::kAmount);
      if (index.data(Qt::UserRole).toInt() == number) {
        return index.data(Qt::FontRole).value<QFont>().strikeOut();
      }
    }
    return false;
  };
  QVERIFY(struck());
  QCOMPARE(Money(balanceOf("Checking")), std::round((balance - amount) * 100) / 100);
  QVERIFY(window_->isWindowModified());

  action("&Undo")->trigger();
  QVERIFY(!struck());
  QCOMPARE(Money(balanceOf("Checking")), balance);
  QVERIFY(!window_->isWindowModified());
  action("&Redo")->trigger();
  QVERIFY(struck());
  QCOMPARE(Money(balanceOf("Checking")), std::round((balance - amount) * 100) / 100);
  auto rowOf = [this, number] {
    for (int each = 0; each < model()->rowCount(); ++each) {
      if (model()->index(each, 0).data(Qt::UserRole).toInt() == number) return each;
    }
    return -1;
  };
  auto click = [this](int at) {
    table()->scrollTo(model()->index(at, 0));
    QTest::mouseClick(
        table()->viewport(), Qt::LeftButton, {},
        table()->visualRect(model()->index(at, RegisterModel::kDescription)).center());
  };

  // Removed, then back in its place by undo; the form lets go of it.
  action("&Undo")->trigger();
  click(rowOf());
  const int count = model()->rowCount();
  QTest::mouseClick(find<QPushButton>("entryRemove"), Qt::LeftButton);
  QCOMPARE(model()->rowCount(), count - 1);
  QCOMPARE(rowOf(), -1);
  QVERIFY(find<QLineEdit>("entryAmount")->text().isEmpty());
  action("&Undo")->trigger();
  QCOMPARE(model()->rowCount(), count);
  QVERIFY(rowOf() >= 0);
  QCOMPARE(Money(balanceOf("Checking")), balance);

  // The entry brought back by undo can be edited, and the edit undone.
  click(rowOf());
  typeInto("entryAmount", "1.00");
  QTest::keyClick(find<QLineEdit>("entryAmount"), Qt::Key_Return);
  QCOMPARE(model()->index(rowOf(), RegisterModel::kAmount).data().toString(), QString(" -$ 1.00"));
  QCOMPARE(model()->rowCount(), count);
  action("&Undo")->trigger();
  QCOMPARE(Money(model()->index(rowOf(), RegisterModel::kAmount).data().toString()), amount);
  QCOMPARE(Money(find<QLineEdit>("entryAmount")->text()), -amount);
  QVERIFY(find<QLineEdit>("entryAmount")->text().startsWith("$ "));
}

void MainWindowTest::filtersByTextAndByPeriod() {
  QVERIFY(window_->openPath(samplePath_));
  selectAccount("Checking");
  const int all = model()->rowCount();
  QTest::keyClicks(find<QLineEdit>("search"), "rent");
  const int found = model()->rowCount();
  QVERIFY(found > 0 && found < all);
  for (int row = 0; row < found; ++row) {
    bool matches = false;
    for (int column = 0; column < RegisterModel::kColumnCount; ++column) {
      matches = matches ||
                model()->index(row, column).data().toString().contains("rent", Qt::CaseInsensitive);
    }
    QVERIFY2(matches,
             qPrintable(model()->index(row, RegisterModel::kDescription).data().toString()));
  }
  find<QLineEdit>("search")->clear();
  QCOMPARE(model()->rowCount(), all);

  // Last month of a pinned 24 November 2026 is October.
  auto* period = find<QComboBox>("period");
  period->setCurrentIndex(period->findText("Last Month"));
  QVERIFY(model()->rowCount() > 0 && model()->rowCount() < all);
  for (int row = 0; row < model()->rowCount(); ++row) {
    QVERIFY(model()->index(row, RegisterModel::kDate).data().toString().startsWith("2026-10-"));
  }
  // The setting is the account's: another account and back keeps it.
  selectAccount("Savings");
  QCOMPARE(period->currentText(), QString("All Entries"));
  selectAccount("Checking");
  QCOMPARE(period->currentText(), QString("Last Month"));
}

void MainWindowTest::reconcilesAgainstAStatementBalance() {
  QVERIFY(window_->openPath(samplePath_));
  selectAccount("Checking");
  const auto book = tarn::TARNBook::open(samplePath_.toStdString());
  const auto checking = book->accountWithName("Checking");
  double resolved = checking->GetResolvedBalance();

  action("Re&concile")->trigger();
  QVERIFY(find<QWidget>("reconcileBar")->isVisible());
  QCOMPARE(model()->rowCount(), static_cast<int>(checking->reconcileFilteredEntries().size()));
  typeInto("statementBalance", "1000");
  QTest::keyClick(find<QLineEdit>("statementBalance"), Qt::Key_Return);
  QVERIFY(find<QLabel>("reconcileResolved")->text().contains(model()->formatAmount(resolved)));
  QVERIFY(
      find<QLabel>("reconcileDifference")->text().contains(model()->formatAmount(1000 - resolved)));

  // Resolve an unresolved entry by clicking its mark.
  const int row = rowWith(RegisterModel::kResolved, QString());
  QVERIFY(row >= 0);
  const double amount = Money(model()->index(row, RegisterModel::kAmount).data().toString());
  const bool isVoid =
      model()->index(row, RegisterModel::kAmount).data(Qt::FontRole).value<QFont>().strikeOut();
  const int number = model()->index(row, 0).data(Qt::UserRole).toInt();
  table()->scrollTo(model()->index(row, RegisterModel::kResolved));
  QTest::mouseClick(table()->viewport(), Qt::LeftButton, {},
                    table()->visualRect(model()->index(row, RegisterModel::kResolved)).center());
  if (!isVoid) resolved += amount;
  QVERIFY(find<QLabel>("reconcileResolved")->text().contains(model()->formatAmount(resolved)));
  QVERIFY(
      find<QLabel>("reconcileDifference")->text().contains(model()->formatAmount(1000 - resolved)));
  bool marked = false;
  for (int each = 0; each < model()->rowCount(); ++each) {
    if (model()->index(each, 0).data(Qt::UserRole).toInt() == number) {
      marked = !model()->index(each, RegisterModel::kResolved).data().toString().isEmpty();
    }
  }
  QVERIFY(marked);
  // Undo takes the mark back, then the statement balance.
  action("&Undo")->trigger();
  QVERIFY(find<QLabel>("reconcileResolved")
              ->text()
              .contains(model()->formatAmount(checking->GetResolvedBalance())));
  action("&Undo")->trigger();
  QCOMPARE(Money(find<QLineEdit>("statementBalance")->text()), checking->statementBalance());
}

void MainWindowTest::savesAndReopensAsItWasLeft() {
  const QString path = scratch_->filePath("kept.tarn");
  QVERIFY(QFile::copy(samplePath_, path));
  QVERIFY(window_->openPath(path));
  selectAccount("Checking");
  QTest::mouseClick(find<QPushButton>("entryNew"), Qt::LeftButton);
  typeInto("entryToFrom", "City Water");
  typeInto("entryDescription", "Water bill");
  typeInto("entryAmount", "61.07");
  QTest::keyClick(find<QLineEdit>("entryAmount"), Qt::Key_Return);
  const QString balance = balanceOf("Checking");
  QTest::keyClicks(find<QLineEdit>("search"), "water");
  QVERIFY(window_->isWindowModified());
  action("&Save")->trigger();
  QVERIFY(!window_->isWindowModified());
  QVERIFY(QFile::exists(path + ".bak"));

  // A fresh window, through the recent books menu.
  window_ = std::make_unique<MainWindow>();
  window_->show();
  auto* recent = window_->findChild<QMenu*>("recentMenu");
  QVERIFY(recent && !recent->actions().isEmpty());
  QCOMPARE(recent->actions().first()->text(), QString("kept.tarn"));
  recent->actions().first()->trigger();
  selectAccount("Checking");
  QCOMPARE(balanceOf("Checking"), balance);
  QCOMPARE(find<QLineEdit>("search")->text(), QString("water"));
  const int row = rowWith(RegisterModel::kDescription, "Water bill");
  QVERIFY(row >= 0);
  QCOMPARE(model()->index(row, RegisterModel::kAmount).data().toString(), QString(" -$ 61.07"));
  QCOMPARE(model()->index(row, RegisterModel::kToFrom).data().toString(), QString("City Water"));
}

void MainWindowTest::asksForThePasswordBeforeShowingBalances() {
  const QString path = scratch_->filePath("private.tarn");
  {
    tarn::TARNBook book;
    book.addAccount("Everyday")->SetStartingBalance(10);
    auto hidden = book.addAccount("Private");
    hidden->SetStartingBalance(4321.5);
    hidden->SetPassword(std::string("hunter2"));
    book.saveAs(path.toStdString());
  }
  QVERIFY(window_->openPath(path));
  QCOMPARE(balanceOf("Private"), QString("Locked"));
  QVERIFY(!find<QLabel>("balances")->text().contains("4,321.50"));

  // A wrong password: nothing shown.
  bool asked = false;
  whenModal([&asked, this](QWidget* modal) {
    auto* dialog = qobject_cast<QInputDialog*>(modal);
    QVERIFY(dialog);
    asked = true;
    QVERIFY(!find<QLabel>("balances")->text().contains("4,321.50"));
    // The rest of the window and its menus wait for the answer.
    for (QAction* menu : window_->menuBar()->actions()) QVERIFY(!menu->isEnabled());
    QVERIFY(!find<QComboBox>("period")->isEnabled());
    QTest::keyClicks(dialog->findChild<QLineEdit*>(), "wrong");
    whenModal([](QWidget* warning) { QTest::keyClick(warning, Qt::Key_Return); });
    QTest::keyClick(dialog->findChild<QLineEdit*>(), Qt::Key_Return);
  });
  selectAccount("Private");
  QVERIFY(asked);
  for (QAction* menu : window_->menuBar()->actions()) QVERIFY(menu->isEnabled());
  QVERIFY(find<QComboBox>("period")->isEnabled());
  QVERIFY(find<QLabel>("locked")->isVisible());
  QVERIFY(!table()->isVisible());
  QCOMPARE(balanceOf("Private"), QString("Locked"));

  // The right one.
  selectAccount("Everyday");
  whenModal([](QWidget* modal) {
    auto* dialog = qobject_cast<QInputDialog*>(modal);
    QVERIFY(dialog);
    QTest::keyClicks(dialog->findChild<QLineEdit*>(), "hunter2");
    QTest::keyClick(dialog->findChild<QLineEdit*>(), Qt::Key_Return);
  });
  selectAccount("Private");
  QVERIFY(table()->isVisible());
  QCOMPARE(balanceOf("Private"), QString("$ 4,321.50"));
  QVERIFY(find<QLabel>("balances")->text().contains("Balance: $ 4,321.50"));
}

void MainWindowTest::asksBeforeClosingWithUnsavedChanges() {
  QVERIFY(window_->openPath(samplePath_));
  selectAccount("Checking");
  typeInto("entryAmount", "5");
  QTest::keyClick(find<QLineEdit>("entryAmount"), Qt::Key_Return);
  QVERIFY(window_->isWindowModified());
  bool asked = false;
  whenModal([&asked](QWidget* modal) {
    auto* box = qobject_cast<QMessageBox*>(modal);
    QVERIFY(box);
    asked = true;
    box->button(QMessageBox::Cancel)->click();
  });
  QVERIFY(!window_->close());
  QVERIFY(asked);
  QVERIFY(window_->isVisible());
  // Undoing the change leaves nothing to ask about.
  action("&Undo")->trigger();
  QVERIFY(!window_->isWindowModified());
  QVERIFY(window_->close());
}

void MainWindowTest::opensAnOldAccountFileThroughTheUpgrade() {
  // A copy: saving replaces the file.
  const QString path = scratch_->filePath("old.plist");
  QVERIFY(QFile::copy(TARN_TEST_DATA_DIR
                      "/accounts/version1_duplicate_numbers_seconds_dates_ten_slot_split.plist",
                      path));
  QFile(path).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
  const auto book = tarn::TARNBook::open(path.toStdString());
  QVERIFY(book->openedBareAccount());
  const auto account = book->accounts().front();
  const QString name = QString::fromStdString(account->GetName());
  const int shown = static_cast<int>(account->entryFilteredEntries().size());
  QVERIFY(shown > 0);

  openThroughDialog(path);
  QTRY_COMPARE(find<QTreeWidget>("accounts")->topLevelItemCount(), 1);
  QCOMPARE(find<QTreeWidget>("accounts")->topLevelItem(0)->text(0), name);
  QCOMPARE(model()->rowCount(), shown);
  QCOMPARE(Money(balanceOf(name)), std::round(account->GetBalance() * 100) / 100);
  for (int row = 0; row < model()->rowCount(); ++row) {
    QVERIFY(model()->index(row, RegisterModel::kDate).data().toString() > "1971");
  }

  // Saved, it is an account file of the current version, read back alike.
  typeInto("entryDescription", "After the upgrade");
  typeInto("entryAmount", "12.34");
  QTest::keyClick(find<QLineEdit>("entryAmount"), Qt::Key_Return);
  action("&Save")->trigger();
  const auto reread = tarn::TARNBook::open(path.toStdString());
  QVERIFY(reread->openedBareAccount());
  QCOMPARE(reread->accounts().front()->GetVersion(), 8);
  QCOMPARE(static_cast<int>(reread->accounts().front()->entryFilteredEntries().size()), shown + 1);
}

void MainWindowTest::managesAccountsWithUndo() {
  QVERIFY(window_->openPath(samplePath_));
  auto* tree = find<QTreeWidget>("accounts");
  whenModal([](QWidget* modal) {
    auto* dialog = qobject_cast<QInputDialog*>(modal);
    QVERIFY(dialog);
    QTest::keyClicks(dialog->findChild<QLineEdit*>(), "Travel");
    QTest::keyClick(dialog->findChild<QLineEdit*>(), Qt::Key_Return);
  });
  action("&New Account...")->trigger();
  QCOMPARE(tree->topLevelItemCount(), 4);
  QCOMPARE(tree->currentItem()->text(0), QString("Travel"));
  QCOMPARE(balanceOf("Travel"), QString("$ 0.00"));

  // Its settings: a starting balance and another name.
  whenModal([](QWidget* modal) {
    auto* name = modal->findChild<QLineEdit*>("settingsName");
    auto* balance = modal->findChild<QLineEdit*>("settingsStartingBalance");
    QVERIFY(name && balance);
    name->selectAll();
    QTest::keyClicks(name, "Holidays");
    balance->selectAll();
    QTest::keyClicks(balance, "250.75");
    QTest::keyClick(balance, Qt::Key_Return);
  });
  action("Account &Settings...")->trigger();
  QCOMPARE(balanceOf("Holidays"), QString("$ 250.75"));
  QVERIFY(find<QLabel>("balances")->text().contains("Balance: $ 250.75"));

  // A name another account has is refused.
  whenModal([this](QWidget* modal) {
    auto* dialog = qobject_cast<QInputDialog*>(modal);
    QVERIFY(dialog);
    dialog->findChild<QLineEdit*>()->selectAll();
    QTest::keyClicks(dialog->findChild<QLineEdit*>(), "savings");
    whenModal([](QWidget* warning) {
      QVERIFY(qobject_cast<QMessageBox*>(warning));
      QTest::keyClick(warning, Qt::Key_Return);
    });
    QTest::keyClick(dialog->findChild<QLineEdit*>(), Qt::Key_Return);
  });
  action("Re&name Account...")->trigger();
  QCOMPARE(balanceOf("Holidays"), QString("$ 250.75"));

  action("&Undo")->trigger();
  QCOMPARE(balanceOf("Travel"), QString("$ 0.00"));
  action("&Undo")->trigger();
  QCOMPARE(tree->topLevelItemCount(), 3);
  QVERIFY(tree->findItems("Travel", Qt::MatchExactly).isEmpty());
  // The accounts left keep their entries and balances.
  const auto book = tarn::TARNBook::open(samplePath_.toStdString());
  QCOMPARE(Money(balanceOf("Checking")),
           std::round(book->accountWithName("Checking")->GetBalance() * 100) / 100);
  action("&Redo")->trigger();
  action("&Redo")->trigger();
  QCOMPARE(balanceOf("Holidays"), QString("$ 250.75"));
  // Removed after a question, and back by undo.
  selectAccount("Holidays");
  whenModal([](QWidget* modal) {
    auto* box = qobject_cast<QMessageBox*>(modal);
    QVERIFY(box);
    box->button(QMessageBox::Yes)->click();
  });
  action("&Remove Account")->trigger();
  QCOMPARE(tree->topLevelItemCount(), 3);
  QVERIFY(tree->findItems("Holidays", Qt::MatchExactly).isEmpty());
  action("&Undo")->trigger();
  QCOMPARE(tree->topLevelItemCount(), 4);
  QCOMPARE(balanceOf("Holidays"), QString("$ 250.75"));
}

void MainWindowTest::showsFoldersAndSmartFolders() {
  QVERIFY(window_->openPath(samplePath_));
  const auto book = tarn::TARNBook::open(samplePath_.toStdString());
  auto* tree = find<QTreeWidget>("accounts");
  int shownFolders = 0;
  for (const auto& account : book->accounts()) {
    QTreeWidgetItem* item =
        tree->findItems(QString::fromStdString(account->GetName()), Qt::MatchExactly).value(0);
    QVERIFY(item);
    QCOMPARE(item->childCount(),
             static_cast<int>(account->folders().size() + account->smartFolders().size()));
    for (int child = 0; child < item->childCount(); ++child) {
      tree->expandItem(item);
      const QRect rect = tree->visualItemRect(item->child(child));
      QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, rect.center());
      QCOMPARE(tree->currentItem(), item->child(child));
      // What the library shows with that folder or smart folder chosen.
      const auto index = static_cast<std::size_t>(child);
      if (index < account->folders().size()) {
        account->setFolder(account->folders()[index]);
        account->setSmartFolder(nullptr);
      } else {
        account->setFolder(nullptr);
        account->setSmartFolder(account->smartFolders()[index - account->folders().size()]);
      }
      QCOMPARE(model()->rowCount(), static_cast<int>(account->entryFilteredEntries().size()));
      ++shownFolders;
    }
  }
  QVERIFY(shownFolders >= 3);
  // The account itself again: the whole register.
  selectAccount("Checking");
  const auto checking = book->accountWithName("Checking");
  checking->setFolder(nullptr);
  checking->setSmartFolder(nullptr);
  QCOMPARE(model()->rowCount(), static_cast<int>(checking->entryFilteredEntries().size()));
}

// Picks `item` in a QInputDialog's list and presses OK.
void PickInList(QWidget* modal, const QString& item) {
  auto* dialog = qobject_cast<QInputDialog*>(modal);
  QVERIFY(dialog);
  auto* list = dialog->findChild<QComboBox*>();
  QVERIFY(list);
  const int index = list->findText(item);
  QVERIFY2(index >= 0, qPrintable(item));
  list->setCurrentIndex(index);
  QTest::keyClick(list, Qt::Key_Return);
}

void MainWindowTest::removesACategoryThroughThePanel() {
  QVERIFY(window_->openPath(samplePath_));
  selectAccount("Checking");
  auto count = [this](const QString& category) {
    int found = 0;
    for (int row = 0; row < model()->rowCount(); ++row) {
      found += model()->index(row, RegisterModel::kCategory).data().toString() == category;
    }
    return found;
  };
  const int charity = count("Charity");
  const int gifts = count("Gifts");
  QVERIFY(charity > 0);

  bool panelShown = false;
  whenModal([this, &panelShown](QWidget* modal) {
    whenModal([&panelShown](QWidget* panel) {
      auto* choice = panel->findChild<QComboBox*>("newCategoryButton");
      QVERIFY(choice);
      panelShown = true;
      QVERIFY(choice->findText("Charity") < 0);  // not a choice for itself
      // Arrow keys through the menu, as a user picks from it.
      QTest::keyClick(choice, Qt::Key_Home);
      for (int step = 0; step < choice->count() && choice->currentText() != "Gifts"; ++step) {
        QTest::keyClick(choice, Qt::Key_Down);
      }
      QCOMPARE(choice->currentText(), QString("Gifts"));
      QTest::mouseClick(panel->findChild<QPushButton*>("removeCategoryOKButton"), Qt::LeftButton);
    });
    PickInList(modal, "Charity");
  });
  action("&Remove Category...")->trigger();
  QVERIFY(panelShown);
  QCOMPARE(count("Charity"), 0);
  QCOMPARE(count("Gifts"), gifts + charity);
  action("&Undo")->trigger();
  QCOMPARE(count("Charity"), charity);
  QCOMPARE(count("Gifts"), gifts);
}

void MainWindowTest::addsACurrencyAndTransfersBetweenCurrencies() {
  QVERIFY(window_->openPath(samplePath_));
  const double savings = Money(balanceOf("Savings"));
  const double checking = Money(balanceOf("Checking"));
  whenModal([this](QWidget* modal) {
    whenModal([](QWidget* panel) {
      auto* code = panel->findChild<QLineEdit*>("editCurrencyWindow_Code_Field");
      auto* name = panel->findChild<QLineEdit*>("editCurrencyWindow_Description_Field");
      auto* rate = panel->findChild<QLineEdit*>("editCurrencyWindow_BasePerCurrency_Field");
      QVERIFY(code && name && rate);
      QTest::keyClicks(code, "EUR");
      QTest::keyClicks(name, "Euro");
      rate->selectAll();
      QTest::keyClicks(rate, "1.10000");
      QTest::mouseClick(panel->findChild<QPushButton*>("editCurrencyWindow_OK_Button"),
                        Qt::LeftButton);
    });
    PickInList(modal, "New Currency...");
  });
  action("&Edit Currencies...")->trigger();

  // Savings now keeps euros.
  selectAccount("Savings");
  whenModal([](QWidget* modal) {
    auto* currency = modal->findChild<QComboBox*>("settingsCurrency");
    QVERIFY(currency);
    const int euro = currency->findText("EUR - Euro");
    QVERIFY(euro >= 0);
    currency->setCurrentIndex(euro);
    QTest::keyClick(modal->findChild<QLineEdit*>("settingsName"), Qt::Key_Return);
  });
  action("Account &Settings...")->trigger();

  // 100 dollars out of checking arrive as 90 euros.
  selectAccount("Checking");
  QTest::mouseClick(find<QPushButton>("entryNew"), Qt::LeftButton);
  chooseType("Transfer");
  typeInto("entryDescription", "Euro savings");
  auto* transfer = find<QComboBox>("entryTransfer");
  transfer->setCurrentIndex(transfer->findText("Savings"));
  QVERIFY(find<QLineEdit>("entryExchanged")->isVisible());
  typeInto("entryAmount", "100");
  typeInto("entryExchanged", "90");
  QTest::keyClick(find<QLineEdit>("entryExchanged"), Qt::Key_Return);
  QCOMPARE(Money(balanceOf("Checking")), std::round((checking - 100) * 100) / 100);
  QCOMPARE(Money(balanceOf("Savings")), std::round((savings + 90) * 100) / 100);

  // Editing the amount on the euro side's other half keeps both in step.
  const int row = rowWith(RegisterModel::kDescription, "Euro savings");
  QVERIFY(row >= 0);
  table()->selectRow(row);
  QCOMPARE(find<QLineEdit>("entryExchanged")->text(), QString("90.00"));
  typeInto("entryExchanged", "92.50");
  QTest::keyClick(find<QLineEdit>("entryExchanged"), Qt::Key_Return);
  QCOMPARE(Money(balanceOf("Savings")), std::round((savings + 92.5) * 100) / 100);
  QCOMPARE(Money(balanceOf("Checking")), std::round((checking - 100) * 100) / 100);
}

void MainWindowTest::keepsTheOpenBookWhenAFileCannotBeRead() {
  QVERIFY(window_->openPath(samplePath_));
  const QString path = scratch_->filePath("notes.tarn");
  {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("shopping list: milk, bread\n");
  }
  QString message;
  whenModal([&message](QWidget* modal) {
    auto* box = qobject_cast<QMessageBox*>(modal);
    QVERIFY(box);
    message = box->text();
    QTest::keyClick(box, Qt::Key_Return);
  });
  QVERIFY(!window_->openPath(path));
  // The message names the file; the book that was open stays.
  QVERIFY2(message.contains("notes.tarn"), qPrintable(message));
  QCOMPARE(find<QTreeWidget>("accounts")->topLevelItemCount(), 3);
  QVERIFY(window_->windowTitle().startsWith("household.tarn"));
}

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
