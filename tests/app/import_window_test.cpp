// File > Import of the check register window, driven as a user drives it:
// the open panel with its date format and encoding, the column layout of a
// text file, the review with its duplicate marks, ticks, category editing
// and sorting, Import, and Undo. Reads real files of the shared corpus.

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "app_test_support.h"
#include "column_layout_dialog.h"
#include "import_review_window.h"
#include "main_window.h"
#include "money_text.h"
#include "register_model.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/import_review.h"
#include "tarn/book/sample_book.h"
#include "tarn/import/text_import.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

namespace {

// The corpus beside the project, or where TARN_CORPUS_DIR says (a work tree
// elsewhere).
const QString kCorpus = qEnvironmentVariable("TARN_CORPUS_DIR", QStringLiteral(TARN_CORPUS_DIR));

long long Cents(double amount) {
  return std::llround(amount * 100);
}

// Runs `answer` on the next modal window of this object name once it is
// the active one, so that one command's panels can be answered in turn.
void WhenModalNamed(QObject* owner, const QString& name, std::function<void(QWidget*)> answer) {
  WhenModal(owner, [owner, name, answer = std::move(answer)](QWidget* modal) {
    if (modal->objectName() == name) return answer(modal);
    // Another window came first: wait again for the one asked for.
    QTest::qWait(20);
    WhenModalNamed(owner, name, answer);
  });
}

}  // namespace

class ImportWindowTest : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void cleanupTestCase();
  void init();
  void cleanup();

  void importsQIFThenMarksItsEntriesAsDuplicatesAndUndoes();
  void importsOFXReadLenientlyWithSortingTicksAndANewCategory();
  void importsCSVThroughTheColumnLayoutAndRemembersIt();
  void reimportsAnExportedAccountWithNothingLost();

 private:
  // Chooses `path` in the import panel (optionally checking the panel).
  void choose(const QString& path, std::function<void(QWidget*)> check = {});
  // The review once it shows: `act` looks and decides (accept or reject).
  void review(std::function<void(ImportReviewDialog*)> act);
  void selectAccount(const QString& name);
  std::shared_ptr<tarn::TARNAccount> account(const std::string& name);
  int registerRowsWith(const QString& date, long long cents, const QString& text) const;
  static QString corpus(const QString& file) { return kCorpus + "/" + file; }

  std::optional<AppTestScratch> scratch_;
  std::unique_ptr<MainWindow> window_;
};

void ImportWindowTest::initTestCase() {
  scratch_.emplace();
  QVERIFY(scratch_->isValid());
}

void ImportWindowTest::cleanupTestCase() {
  scratch_.reset();
}

void ImportWindowTest::init() {
  if (!QDir(kCorpus).exists()) QSKIP("the shared corpus of real files is not on this machine");
  auto book = SampleHousehold();
  book->addAccount("Copy");
  window_ = ShownWindow(std::move(book));
  QVERIFY(window_);
}

void ImportWindowTest::cleanup() {
  if (!window_) return;
  window_->hide();
  window_.reset();
}

void ImportWindowTest::choose(const QString& path, std::function<void(QWidget*)> check) {
  WhenModalNamed(this, "importDialog", [=](QWidget* modal) {
    auto* dialog = qobject_cast<QFileDialog*>(modal);
    QVERIFY(dialog);
    if (check) check(dialog);
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    QVERIFY(name);
    name->setText(path);
    QTest::keyClick(name, Qt::Key_Return);
  });
}

void ImportWindowTest::review(std::function<void(ImportReviewDialog*)> act) {
  WhenModalNamed(this, "importReview", [=](QWidget* modal) {
    auto* dialog = qobject_cast<ImportReviewDialog*>(modal);
    QVERIFY(dialog);
    act(dialog);
  });
}

void ImportWindowTest::selectAccount(const QString& name) {
  auto* tree = window_->findChild<QTreeWidget*>("accounts");
  const auto found = tree->findItems(name, Qt::MatchExactly | Qt::MatchRecursive);
  QVERIFY(!found.isEmpty());
  tree->setCurrentItem(found.first());
}

std::shared_ptr<tarn::TARNAccount> ImportWindowTest::account(const std::string& name) {
  for (const auto& each : window_->book().accounts()) {
    if (each->GetName() == name) return each;
  }
  return nullptr;
}

int ImportWindowTest::registerRowsWith(const QString& date, long long cents,
                                       const QString& text) const {
  QAbstractItemModel* model = window_->findChild<QTableView*>("register")->model();
  int count = 0;
  for (int row = 0; row < model->rowCount(); ++row) {
    // The sample's accounts keep dollars; the register writes them as such.
    const auto amount =
        ReadMoney(CurrencyOf(nullptr), model->index(row, RegisterModel::kAmount).data().toString());
    const long long rowCents = amount ? std::llround(*amount * 100) : 0;
    if (model->index(row, RegisterModel::kDate).data().toString() == date && rowCents == cents &&
        (model->index(row, RegisterModel::kToFrom).data().toString() == text ||
         model->index(row, RegisterModel::kDescription).data().toString() == text)) {
      ++count;
    }
  }
  return count;
}

void ImportWindowTest::importsQIFThenMarksItsEntriesAsDuplicatesAndUndoes() {
  const QString path = corpus("qif/quiffen__test.qif");
  const auto checking = account("Checking");
  QVERIFY(checking);
  const std::size_t before = checking->GetEntries().size();
  QVERIFY(!window_->book().categoryWithFullName("Miscellaneous"));

  choose(path, [](QWidget* dialog) {
    // The panel carries the QIF date format and the encoding choice.
    QVERIFY(dialog->findChild<QComboBox*>("importEncoding"));
    QVERIFY(dialog->findChildren<QComboBox*>().size() >= 3);
  });
  review([](ImportReviewDialog* dialog) {
    const QString counts = dialog->findChild<QLabel*>("importCounts")->text();
    QVERIFY2(counts.contains("6 entries") && counts.contains("0 likely duplicates"),
             qPrintable(counts));
    QVERIFY(!dialog->findChild<QLabel*>("tolerantNotice"));
    // The category the book lacks is marked as new.
    QAbstractItemModel* model = dialog->model();
    bool newCategory = false;
    for (int row = 0; row < model->rowCount(); ++row) {
      const QModelIndex cell = model->index(row, ImportReviewModel::kCategory);
      if (cell.data().toString() == "Miscellaneous (new)") {
        newCategory = !cell.data(Qt::ToolTipRole).toString().isEmpty();
      }
      QCOMPARE(model->index(row, ImportReviewModel::kImport).data(Qt::CheckStateRole).toInt(),
               int(Qt::Checked));
    }
    QVERIFY(newCategory);
    QTest::mouseClick(dialog->findChild<QPushButton*>("importButton"), Qt::LeftButton);
  });
  FindAction(*window_, "&Import...")->trigger();
  QTRY_COMPARE(checking->GetEntries().size(), before + 6);
  QCOMPARE(registerRowsWith("2020-02-11", -2500, "Walmart"), 1);
  QCOMPARE(registerRowsWith("2020-02-14", 3200, "US Post Office"), 1);
  const auto made = window_->book().categoryWithFullName("Miscellaneous");
  QVERIFY(made);
  bool used = false;
  for (const auto& entry : checking->GetEntries()) {
    used =
        used || (entry->GetToFrom() == "US Post Office" && entry->GetCategory() == made->number());
  }
  QVERIFY(used);

  // The same file again: every entry is a likely duplicate and unticked;
  // cancelling adds nothing.
  choose(path);
  review([](ImportReviewDialog* dialog) {
    QAbstractItemModel* model = dialog->model();
    QCOMPARE(model->rowCount(), 6);
    for (int row = 0; row < model->rowCount(); ++row) {
      QCOMPARE(model->index(row, ImportReviewModel::kImport).data(Qt::CheckStateRole).toInt(),
               int(Qt::Unchecked));
      QVERIFY(!model->index(row, ImportReviewModel::kDuplicate).data().toString().isEmpty());
      QVERIFY(model->index(row, ImportReviewModel::kDuplicate)
                  .data(Qt::ToolTipRole)
                  .toString()
                  .startsWith("Matches entry"));
    }
    QVERIFY(dialog->findChild<QLabel*>("importCounts")->text().contains("6 likely duplicates"));
    dialog->reject();
  });
  FindAction(*window_, "&Import...")->trigger();
  QTRY_VERIFY(!QApplication::activeModalWidget());
  QCOMPARE(checking->GetEntries().size(), before + 6);

  // Undo takes the entries and the category made away; redo brings both.
  FindAction(*window_, "&Undo")->trigger();
  QCOMPARE(account("Checking")->GetEntries().size(), before);
  QVERIFY(!window_->book().categoryWithFullName("Miscellaneous"));
  QCOMPARE(registerRowsWith("2020-02-11", -2500, "Walmart"), 0);
  FindAction(*window_, "&Redo")->trigger();
  QCOMPARE(account("Checking")->GetEntries().size(), before + 6);
  QVERIFY(window_->book().categoryWithFullName("Miscellaneous"));
}

void ImportWindowTest::importsOFXReadLenientlyWithSortingTicksAndANewCategory() {
  const QString path = corpus("ofx/jgnash__uglyFormat.ofx");
  selectAccount("Savings");
  const auto savings = account("Savings");
  const std::size_t before = savings->GetEntries().size();
  std::vector<long long> sortedUp;
  std::size_t rows = 0;
  review([&](ImportReviewDialog* dialog) {
    auto* notice = dialog->findChild<QLabel*>("tolerantNotice");
    QVERIFY(notice && notice->isVisible());
    ImportReviewModel* model = dialog->model();
    rows = static_cast<std::size_t>(model->rowCount());
    QVERIFY(rows >= 3);
    // A header click sorts by amount, a second click reverses.
    QHeaderView* header = dialog->table()->horizontalHeader();
    const QPoint amount(header->sectionViewportPosition(ImportReviewModel::kAmount) + 10,
                        header->height() / 2);
    const auto amounts = [&] {
      std::vector<long long> cents;
      for (int row = 0; row < model->rowCount(); ++row) {
        cents.push_back(Cents(model->item(row).entry->GetAmount()));
      }
      return cents;
    };
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, amount);
    sortedUp = amounts();
    QVERIFY(std::is_sorted(sortedUp.begin(), sortedUp.end()));
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, amount);
    const auto down = amounts();
    QVERIFY(std::is_sorted(down.rbegin(), down.rend()));
    QVERIFY(sortedUp != down);
    // The largest deposit (first row now) is left out; the smallest gets a
    // category of a new name.
    QVERIFY(model->setData(model->index(0, ImportReviewModel::kImport), Qt::Unchecked,
                           Qt::CheckStateRole));
    const int last = model->rowCount() - 1;
    QVERIFY(model->setData(model->index(last, ImportReviewModel::kCategory), "Bank Fees:Misc",
                           Qt::EditRole));
    QCOMPARE(model->index(last, ImportReviewModel::kCategory).data().toString(),
             QString("Bank Fees:Misc (new)"));
    // Sorting by the import switch puts the unticked row first.
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(ImportReviewModel::kImport) + 10,
                             header->height() / 2));
    QCOMPARE(model->index(0, ImportReviewModel::kImport).data(Qt::CheckStateRole).toInt(),
             int(Qt::Unchecked));
    QCOMPARE(Cents(model->item(0).entry->GetAmount()), down.front());
    QVERIFY(dialog->findChild<QLabel*>("importCounts")
                ->text()
                .contains(QString("%1 to import").arg(rows - 1)));
    dialog->accept();
  });
  choose(path);
  FindAction(*window_, "&Import...")->trigger();
  QTRY_COMPARE(savings->GetEntries().size(), before + rows - 1);
  const auto fees = window_->book().categoryWithFullName("Bank Fees:Misc");
  QVERIFY(fees);
  std::size_t withFees = 0;
  for (const auto& entry : savings->GetEntries()) {
    if (entry->GetCategory() == fees->number()) {
      ++withFees;
      QCOMPARE(Cents(entry->GetAmount()), sortedUp.front());
    }
  }
  QCOMPARE(withFees, std::size_t{1});
  const std::size_t remembered = window_->book().importedIdentifiers(savings->GetNumber()).size();
  QCOMPARE(remembered, rows - 1);

  // Again: the imported ones are known by their bank identifiers.
  review([&](ImportReviewDialog* dialog) {
    std::size_t before = 0;
    for (int row = 0; row < dialog->model()->rowCount(); ++row) {
      if (dialog->model()->item(row).duplicate == tarn::DuplicateReason::ImportedBefore) ++before;
    }
    QCOMPARE(before, rows - 1);
    dialog->reject();
  });
  choose(path);
  FindAction(*window_, "&Import...")->trigger();
  QTRY_VERIFY(!QApplication::activeModalWidget());

  // Undo forgets the identifiers and the category with the entries.
  FindAction(*window_, "&Undo")->trigger();
  QCOMPARE(account("Savings")->GetEntries().size(), before);
  QVERIFY(window_->book().importedIdentifiers(savings->GetNumber()).empty());
  QVERIFY(!window_->book().categoryWithFullName("Bank Fees:Misc"));
  QVERIFY(!window_->book().categoryWithFullName("Bank Fees"));
}

void ImportWindowTest::importsCSVThroughTheColumnLayoutAndRemembersIt() {
  const QString path = corpus("csv/beangulp__statement.csv");
  const auto checking = account("Checking");
  const std::size_t before = checking->GetEntries().size();
  QVERIFY(!checking->textImportSettings().dataLayout);
  choose(path);
  WhenModalNamed(this, "columnLayout", [](QWidget* modal) {
    auto* dialog = qobject_cast<ColumnLayoutDialog*>(modal);
    QVERIFY(dialog);
    // "Details,Posting Date,Description,Amount,Type,Balance,...": the
    // heading suggests the roles and is skipped.
    QVERIFY(dialog->columnCount() >= 6);
    QCOMPARE(dialog->roleBox(1)->currentData().toInt(), tarn::kColumnDate);
    QCOMPARE(dialog->roleBox(2)->currentData().toInt(), tarn::kColumnDescription);
    QCOMPARE(dialog->roleBox(3)->currentData().toInt(), tarn::kColumnAmount);
    QVERIFY(dialog->findChild<QCheckBox*>("skipFirstRow")->isChecked());
    // The user reads the Type column as plain text instead.
    QComboBox* type = dialog->roleBox(4);
    type->setCurrentIndex(type->findData(-1));
    dialog->accept();
  });
  review([](ImportReviewDialog* dialog) {
    QVERIFY(dialog->findChild<QLabel*>("importCounts")->text().contains("6 entries"));
    dialog->accept();
  });
  FindAction(*window_, "&Import...")->trigger();
  QTRY_COMPARE(checking->GetEntries().size(), before + 6);
  QCOMPARE(registerRowsWith("2016-03-18", -268089, "Payment to Chafe card ending in 1234 03/18"),
           1);
  const auto layout = checking->textImportSettings().dataLayout;
  QVERIFY(layout);
  QCOMPARE(*layout, (std::vector<std::int32_t>{-1, tarn::kColumnDate, tarn::kColumnDescription,
                                               tarn::kColumnAmount}));
  QVERIFY(checking->textImportSettings().skipFirstRow);

  // The next import starts from the remembered layout; undo keeps it.
  FindAction(*window_, "&Undo")->trigger();
  QCOMPARE(account("Checking")->GetEntries().size(), before);
  QVERIFY(account("Checking")->textImportSettings().dataLayout);
  choose(path);
  WhenModalNamed(this, "columnLayout", [](QWidget* modal) {
    auto* dialog = qobject_cast<ColumnLayoutDialog*>(modal);
    QVERIFY(dialog);
    QCOMPARE(dialog->roleBox(4)->currentData().toInt(), -1);
    QCOMPARE(dialog->roleBox(3)->currentData().toInt(), tarn::kColumnAmount);
    dialog->reject();
  });
  FindAction(*window_, "&Import...")->trigger();
  QTRY_VERIFY(!QApplication::activeModalWidget());
  QCOMPARE(account("Checking")->GetEntries().size(), before);
}

void ImportWindowTest::reimportsAnExportedAccountWithNothingLost() {
  const QString path = scratch_->filePath("checking.qif");
  WhenModal(this, [=](QWidget* modal) {
    auto* dialog = qobject_cast<QFileDialog*>(modal);
    QVERIFY(dialog);
    auto* qif = dialog->findChild<QRadioButton*>("exportTypeQIF");
    QVERIFY(qif);
    QTest::mouseClick(qif, Qt::LeftButton);
    auto* dates = dialog->findChild<QComboBox*>("exportDateFormat");
    QCOMPARE(dates->currentData().toString(), QString("%m/%d/%Y"));
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    name->setText(path);
    QTest::keyClick(name, Qt::Key_Return);
  });
  FindAction(*window_, "E&xport...")->trigger();
  QTRY_VERIFY(QFile::exists(path));

  selectAccount("Copy");
  choose(path, [](QWidget* dialog) {
    // Four-digit years, month first, as written.
    for (auto* box : dialog->findChildren<QComboBox*>()) {
      const int item = box->findText("Month/Day/Year (12/31/1999)");
      if (item >= 0) box->setCurrentIndex(item);
    }
  });
  review([](ImportReviewDialog* dialog) {
    QVERIFY(dialog->findChild<QLabel*>("importCounts")->text().contains("0 likely duplicates"));
    dialog->accept();
  });
  FindAction(*window_, "&Import...")->trigger();
  const auto copy = account("Copy");
  QTRY_VERIFY(!copy->GetEntries().empty());

  using Row = std::tuple<tarn::DateNumber, long long, std::string, std::string>;
  tarn::TARNBook& book = window_->book();
  const auto rows = [&](const tarn::TARNAccount& account) {
    std::multiset<Row> all;
    for (const auto& entry : account.GetEntries()) {
      const auto category = book.categoryWithNumber(entry->GetCategory());
      all.emplace(entry->GetDate(), Cents(entry->GetAmount()), entry->GetToFrom(),
                  category ? category->fullName() : std::string());
    }
    return all;
  };
  const auto original = rows(*account("Checking"));
  const auto read = rows(*copy);
  QVERIFY(original.size() > 20);
  // Every entry came back with its date, amount, payee and category; the
  // file's starting balance is one more.
  QVERIFY(read.size() == original.size() || read.size() == original.size() + 1);
  std::vector<Row> missing;
  std::set_difference(original.begin(), original.end(), read.begin(), read.end(),
                      std::back_inserter(missing));
  for (const auto& [date, cents, payee, category] : missing) {
    qWarning("lost: %d %lld %s %s", date, cents, payee.c_str(), category.c_str());
  }
  QVERIFY(missing.empty());
}

QTEST_MAIN(ImportWindowTest)
#include "import_window_test.moc"
