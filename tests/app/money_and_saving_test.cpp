// Amounts in the window written in the account's currency (register,
// balances, reconcile bar, entry form, scheduled entries) and read back as
// the user types them; and saving a book that the tarn command changed on
// disk meanwhile.

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <thread>

#include "app_test_support.h"
#include "main_window.h"
#include "register_model.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/book_lock.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"

namespace {

// Euros as a German bank writes them ("-1.234,50 €"), made with Qt's own
// German number formatting rather than the window's.
QString Euros(double amount) {
  const double rounded = std::round(amount * 100) / 100;
  const QString number = QLocale(QLocale::German).toString(std::fabs(rounded), 'f', 2);
  return (rounded < 0 ? QStringLiteral("-") : QString()) + number + QStringLiteral(" €");
}

// Whether another process could take the book's lock now.
bool LockIsFree(const QString& bookPath) {
  const std::string lockPath = tarn::BookLock::LockPath(bookPath.toStdString());
  const int fd = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  const bool free = ::flock(fd, LOCK_EX | LOCK_NB) == 0;
  ::close(fd);
  return free;
}

}  // namespace

class MoneyAndSavingTest : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void cleanupTestCase();
  void cleanup();

  void showsAndReadsAmountsInTheAccountsCurrency();
  void savingOverAnotherWritersChangeAsksFirst();

 private:
  template <typename T>
  T* find(const char* name) const {
    return FindWidget<T>(*window_, name);
  }
  RegisterModel* model() const {
    return qobject_cast<RegisterModel*>(find<QTableView>("register")->model());
  }
  int rowOfEntry(int number) const { return model()->rowOfEntry(number); }
  QString cell(int row, int column) const { return model()->index(row, column).data().toString(); }
  void selectAccount(const QString& name);
  void typeInto(const char* field, const QString& text);
  void recordEntry();

  std::unique_ptr<AppTestScratch> scratch_;
  std::unique_ptr<MainWindow> window_;
};

void MoneyAndSavingTest::initTestCase() {
  scratch_ = std::make_unique<AppTestScratch>();
  QVERIFY(scratch_->isValid());
}

void MoneyAndSavingTest::cleanupTestCase() {
  scratch_.reset();
}

void MoneyAndSavingTest::cleanup() {
  if (window_) window_->hide();
  window_.reset();
}

void MoneyAndSavingTest::selectAccount(const QString& name) {
  auto* tree = find<QTreeWidget>("accounts");
  const auto items = tree->findItems(name, Qt::MatchExactly);
  QVERIFY2(!items.isEmpty(), qPrintable(name));
  tree->setCurrentItem(items.first());
}

void MoneyAndSavingTest::typeInto(const char* field, const QString& text) {
  auto* edit = find<QLineEdit>(field);
  edit->setFocus();
  edit->selectAll();
  QTest::keyClick(edit, Qt::Key_Backspace);
  // Key clicks are Latin-1 only; a symbol such as € comes as typed text.
  edit->insert(text);
}

void MoneyAndSavingTest::recordEntry() {
  QTest::keyClick(find<QLineEdit>("entryAmount"), Qt::Key_Return);
}

void MoneyAndSavingTest::showsAndReadsAmountsInTheAccountsCurrency() {
  // The household keeps its checking account in euros, written the German
  // way, with one large deposit so that grouping shows.
  auto book = SampleHousehold();
  auto euro = tarn::PFCurrency::initWithCode("EUR", "Euro", "€", false, ".", ",", 1.1, kTestToday);
  book->addCurrency(euro);
  auto checking = book->accountWithName("Checking");
  QVERIFY(checking);
  checking->setCurrency(euro);
  auto deposit = std::make_shared<tarn::TARNAccountEntry>();
  deposit->SetNumber(checking->NextAvailableNumber());
  deposit->SetDate(20261101);
  deposit->SetIsDeposit(true);
  for (const auto& type : checking->types()) {
    if (type->GetIsDeposit()) deposit->SetType(type->GetNumber());
  }
  deposit->SetAmount(1234567.89);
  deposit->SetDescription("Inheritance");
  checking->AddEntry(deposit);
  const int depositNumber = deposit->GetNumber();
  checking->CacheRunningBalances();
  const double balance = checking->GetBalance();
  const double resolved = checking->GetResolvedBalance();
  const double statement = checking->statementBalance();
  window_ = ShownWindow(std::move(book));
  QVERIFY(window_);
  selectAccount("Checking");

  // The register: every amount and balance in euros, as the bank writes them.
  const int row = rowOfEntry(depositNumber);
  QVERIFY(row >= 0);
  QCOMPARE(cell(row, RegisterModel::kAmount), QString("1.234.567,89 €"));
  int debits = 0;
  for (int each = 0; each < model()->rowCount(); ++each) {
    const auto entry = model()->entryAt(each);
    QCOMPARE(cell(each, RegisterModel::kAmount), Euros(entry->GetAmount()));
    QCOMPARE(cell(each, RegisterModel::kBalance), Euros(entry->GetCachedRunningBalance()));
    if (entry->GetAmount() < 0) ++debits;
  }
  QVERIFY(debits > 10);
  // The columns are wide enough for the widest figures.
  auto* table = find<QTableView>("register");
  const QFontMetrics metrics(table->font());
  for (int column : {int(RegisterModel::kAmount), int(RegisterModel::kBalance)}) {
    for (int each = 0; each < model()->rowCount(); ++each) {
      QVERIFY2(metrics.horizontalAdvance(cell(each, column)) + 8 <= table->columnWidth(column),
               qPrintable(cell(each, column)));
    }
  }
  // The balances line and the side list; the other accounts stay in dollars.
  QVERIFY2(find<QLabel>("balances")->text().contains("Balance: " + Euros(balance)),
           qPrintable(find<QLabel>("balances")->text()));
  auto* tree = find<QTreeWidget>("accounts");
  QCOMPARE(tree->findItems("Checking", Qt::MatchExactly).first()->text(1), Euros(balance));
  QVERIFY(tree->findItems("Savings", Qt::MatchExactly).first()->text(1).startsWith("$ "));

  // The form shows the amount in the same format and reads what the user
  // types with or without symbol and grouping; another format is refused.
  find<QTableView>("register")->selectRow(row);
  QCOMPARE(find<QLineEdit>("entryAmount")->text(), QString("1.234.567,89 €"));
  const struct {
    const char* typed;
    const char* shown;
  } typings[] = {{"2.500,5", "2.500,50 €"}, {"€ 99,95", "99,95 €"}, {"1250", "1.250,00 €"}};
  for (const auto& typing : typings) {
    typeInto("entryAmount", typing.typed);
    recordEntry();
    QCOMPARE(cell(rowOfEntry(depositNumber), RegisterModel::kAmount), QString(typing.shown));
  }
  QString message;
  WhenModal(this, [&message](QWidget* modal) {
    auto* box = qobject_cast<QMessageBox*>(modal);
    QVERIFY(box);
    message = box->text();
    QTest::keyClick(box, Qt::Key_Return);
  });
  typeInto("entryAmount", "12.50");  // a dollar habit: "." groups thousands here
  recordEntry();
  QVERIFY2(message.contains("12.50") && message.contains("EUR") && message.contains("1.234,56 €"),
           qPrintable(message));
  QCOMPARE(cell(rowOfEntry(depositNumber), RegisterModel::kAmount), QString("1.250,00 €"));

  // The reconcile bar: statement balance shown, typed and compared in euros.
  FindAction(*window_, "Re&concile")->trigger();
  QCOMPARE(find<QLineEdit>("statementBalance")->text(), Euros(statement));
  QVERIFY(find<QLabel>("reconcileResolved")->text().endsWith(Euros(resolved)));
  typeInto("statementBalance", "1.000,25");
  QTest::keyClick(find<QLineEdit>("statementBalance"), Qt::Key_Return);
  QCOMPARE(find<QLineEdit>("statementBalance")->text(), Euros(1000.25));
  QVERIFY2(find<QLabel>("reconcileDifference")->text().endsWith(Euros(1000.25 - resolved)),
           qPrintable(find<QLabel>("reconcileDifference")->text()));
  FindAction(*window_, "Re&concile")->trigger();

  // The scheduled entries of the account, in euros too.
  FindAction(*window_, "Scheduled &Entries...")->trigger();
  auto* schedulesWindow = window_->findChild<QWidget*>("schedulesWindow");
  QVERIFY(schedulesWindow);
  auto* schedules = schedulesWindow->findChild<QTableWidget*>("schedules");
  QVERIFY(schedules && schedules->rowCount() > 0);
  for (int each = 0; each < schedules->rowCount(); ++each) {
    const QString amount = schedules->item(each, 1)->text();
    QVERIFY2(amount.endsWith(" €") && !amount.contains('$'), qPrintable(amount));
  }
}

void MoneyAndSavingTest::savingOverAnotherWritersChangeAsksFirst() {
  const QString path = scratch_->filePath("shared.tarn");
  SampleHousehold()->saveAs(path.toStdString());
  window_ = ShownWindow();
  QVERIFY(window_);
  QVERIFY(window_->openPath(path));
  // Opening let go of the lock: a tarn command can work on the book.
  QVERIFY(LockIsFree(path));
  selectAccount("Checking");
  QTest::mouseClick(find<QPushButton>("entryNew"), Qt::LeftButton);
  typeInto("entryDescription", "Mine");
  typeInto("entryAmount", "10");
  recordEntry();
  QVERIFY(window_->isWindowModified());

  // A tarn command holds the lock while it changes the book; the window's
  // Save waits for it and then finds the file changed.
  std::atomic<bool> locked{false};
  std::thread command([&] {
    const tarn::BookLock lock(path.toStdString());
    locked = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    auto theirs = tarn::TARNBook::open(path.toStdString());
    theirs->addAccount("Theirs");
    theirs->save();
  });
  while (!locked) std::this_thread::sleep_for(std::chrono::milliseconds(5));

  auto hasAccount = [&path](const char* name) {
    return tarn::TARNBook::open(path.toStdString())->accountWithName(name) != nullptr;
  };
  auto hasEntry = [&path](const char* description) {
    auto book = tarn::TARNBook::open(path.toStdString());
    for (const auto& entry : book->accountWithName("Checking")->GetEntries()) {
      if (entry->GetDescription() == description) return true;
    }
    return false;
  };
  // Answers the question with the button of `role`, noting what was asked.
  int asked = 0;
  auto answer = [this, &asked](QMessageBox::ButtonRole role) {
    WhenModal(this, [&asked, role](QWidget* modal) {
      auto* box = qobject_cast<QMessageBox*>(modal);
      QVERIFY(box);
      QCOMPARE(box->objectName(), QString("bookChangedOnDisk"));
      QVERIFY2(box->text().contains("shared.tarn"), qPrintable(box->text()));
      ++asked;
      for (QAbstractButton* button : box->buttons()) {
        if (box->buttonRole(button) == role) return QTest::mouseClick(button, Qt::LeftButton);
      }
      QFAIL("no such button");
    });
  };

  // Cancel: the other change stays on disk, unmixed with the window's.
  answer(QMessageBox::RejectRole);
  FindAction(*window_, "&Save")->trigger();
  command.join();
  QCOMPARE(asked, 1);
  QVERIFY(hasAccount("Theirs"));
  QVERIFY(!hasEntry("Mine"));
  QVERIFY(window_->isWindowModified());
  QVERIFY(LockIsFree(path));

  // Asked again; replacing writes the window's book and keeps theirs as
  // the backup.
  answer(QMessageBox::DestructiveRole);
  FindAction(*window_, "&Save")->trigger();
  QCOMPARE(asked, 2);
  QVERIFY(hasEntry("Mine"));
  QVERIFY(!hasAccount("Theirs"));
  QVERIFY(tarn::TARNBook::open(tarn::TARNBook::BackupPath(path.toStdString()))
              ->accountWithName("Theirs"));
  QVERIFY(!window_->isWindowModified());
  QVERIFY(LockIsFree(path));

  // Nobody else wrote since: the next save asks nothing.
  typeInto("entryDescription", "Mine again");
  typeInto("entryAmount", "11");
  recordEntry();
  {
    QObject guard;
    WhenModal(&guard, [&asked](QWidget* modal) {
      ++asked;
      modal->close();
    });
    FindAction(*window_, "&Save")->trigger();
    QApplication::processEvents();
  }
  QCOMPARE(asked, 2);
  QVERIFY(hasEntry("Mine again"));
  QVERIFY(!window_->isWindowModified());
}

QTEST_MAIN(MoneyAndSavingTest)
#include "money_and_saving_test.moc"
