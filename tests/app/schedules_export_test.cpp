// The export and scheduled-entries commands of the check register window,
// driven as a user drives them: the export save panel with its accessory,
// and the schedules window's Enter, Skip and rule editing with Undo.

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTableView>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <tuple>
#include <vector>

#include "app_test_support.h"
#include "main_window.h"
#include "register_model.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/sample_book.h"
#include "tarn/filters/filter.h"
#include "tarn/import/qif_import.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/encodings.h"

namespace {

// Date, amount in cents and payee: what a round trip through QIF must keep.
using Row = std::tuple<tarn::DateNumber, long long, std::string>;

long long Cents(double amount) {
  return std::llround(amount * 100);
}

}  // namespace

class SchedulesExportTest : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void cleanupTestCase();
  void init();
  void cleanup();

  void exportsWithTheRememberedFormatAndReadsBackAsQIF();
  void exportsASmartFolderWithTheChosenDateFormat();
  void entersAndSkipsDueEntriesWithUndo();
  void editsAScheduleRuleWithUndo();

 private:
  // Exports the shown account through the save panel to `path`, first
  // checking that the panel offers `expectedType` and then choosing `type`.
  void exportThroughDialog(const QString& path, const char* expectedType, const char* type);
  QWidget* schedulesWindow() const;
  QAbstractItemModel* registerModel() const;
  int registerRowsWith(const QString& date, const QString& description) const;
  int dueRowWith(const QString& description) const;

  std::unique_ptr<AppTestScratch> scratch_;
  std::unique_ptr<MainWindow> window_;
};

void SchedulesExportTest::initTestCase() {
  scratch_ = std::make_unique<AppTestScratch>();
  QVERIFY(scratch_->isValid());
}

void SchedulesExportTest::cleanupTestCase() {
  scratch_.reset();
}

void SchedulesExportTest::init() {
  window_ = ShownWindow(SampleHousehold());
  QVERIFY(window_);
}

void SchedulesExportTest::cleanup() {
  if (window_) window_->hide();
  window_.reset();
}

void SchedulesExportTest::exportThroughDialog(const QString& path, const char* expectedType,
                                              const char* type) {
  WhenModal(this, [=](QWidget* modal) {
    auto* dialog = qobject_cast<QFileDialog*>(modal);
    QVERIFY(dialog);
    auto* expected = dialog->findChild<QRadioButton*>(QString::fromLatin1(expectedType));
    QVERIFY(expected);
    QVERIFY2(expected->isChecked(), expectedType);
    auto* chosen = dialog->findChild<QRadioButton*>(QString::fromLatin1(type));
    QVERIFY(chosen && chosen->isVisible());
    QTest::mouseClick(chosen, Qt::LeftButton);
    QVERIFY(chosen->isChecked());
    auto* folder = dialog->findChild<QComboBox*>("exportSmartFolder");
    QVERIFY(folder && folder->isVisible());
    QCOMPARE(folder->currentIndex(), 0);  // the whole register
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    QVERIFY(name);
    name->setText(path);
    QTest::keyClick(name, Qt::Key_Return);
  });
  FindAction(*window_, "E&xport...")->trigger();
}

QWidget* SchedulesExportTest::schedulesWindow() const {
  return window_->findChild<QWidget*>("schedulesWindow");
}

QAbstractItemModel* SchedulesExportTest::registerModel() const {
  return window_->findChild<QTableView*>("register")->model();
}

int SchedulesExportTest::registerRowsWith(const QString& date, const QString& description) const {
  QAbstractItemModel* model = registerModel();
  int count = 0;
  for (int row = 0; row < model->rowCount(); ++row) {
    if (model->index(row, RegisterModel::kDate).data().toString() == date &&
        model->index(row, RegisterModel::kDescription).data().toString() == description) {
      ++count;
    }
  }
  return count;
}

int SchedulesExportTest::dueRowWith(const QString& description) const {
  auto* due = schedulesWindow()->findChild<QTableWidget*>("dueEntries");
  for (int row = 0; row < due->rowCount(); ++row) {
    if (due->item(row, 1)->text() == description) return row;
  }
  return -1;
}

void SchedulesExportTest::exportsWithTheRememberedFormatAndReadsBackAsQIF() {
  const auto reference = SampleHousehold();
  const auto account = reference->accounts().front();
  QCOMPARE(window_->findChild<QTreeWidget*>("accounts")->currentItem()->text(0),
           QString::fromStdString(account->GetName()));

  // A new account shows QIF first; choosing text is remembered for the
  // next export, which then switches back to QIF.
  const QString textPath = scratch_->filePath("checking.txt");
  exportThroughDialog(textPath, "exportTypeQIF", "exportTypeText");
  QTRY_VERIFY(QFile::exists(textPath));
  QFile text(textPath);
  QVERIFY(text.open(QIODevice::ReadOnly));
  const QByteArray textBytes = text.readAll();
  QVERIFY(!textBytes.startsWith("!Type"));
  QVERIFY(textBytes.contains('\t'));
  QCOMPARE(textBytes.count('\n'),
           static_cast<qsizetype>(account->GetEntries().size()) + 2);  // header, start

  const QString qifPath = scratch_->filePath("checking");  // no suffix: the format's is added
  exportThroughDialog(qifPath, "exportTypeText", "exportTypeQIF");
  QTRY_VERIFY(QFile::exists(qifPath + ".qif"));
  QVERIFY(!QFile::exists(qifPath));
  // Nothing of the atomic write (a hidden temporary file) is left beside it.
  QCOMPARE(QDir(scratch_->filePath(QString()))
               .entryList({"*checking*"}, QDir::Files | QDir::Hidden)
               .size(),
           2);

  auto import = tarn::TARNQIFImport::initWithContentsOfFile((qifPath + ".qif").toStdString(),
                                                            tarn::kUTF8StringEncoding);
  import->SetDateFormat("%m/%d/%Y");
  const tarn::plist::Dictionary parsed = import->parse();
  const auto found = parsed.find("entries");
  QVERIFY(found != parsed.end());
  std::vector<Row> read;
  for (const auto& entry : found->second.arrayValue()) {
    const auto* description = entry.find("description");
    const auto* date = entry.find("date");
    const auto* amount = entry.find("amount");
    QVERIFY(date && amount);
    read.emplace_back(date->intValue(), Cents(amount->doubleValue()),
                      description ? description->stringValue() : std::string());
  }
  std::vector<Row> expected;
  for (const auto& entry : account->GetEntries()) {
    expected.emplace_back(entry->GetDate(), Cents(entry->GetAmount()), entry->GetDescription());
  }
  // The starting-balance record comes first in the file.
  QVERIFY(!read.empty());
  QCOMPARE(std::get<1>(read.front()), Cents(account->GetStartingBalance()));
  read.erase(read.begin());
  QCOMPARE(read.size(), expected.size());
  QVERIFY(expected.size() > 20);
  std::sort(read.begin(), read.end());
  std::sort(expected.begin(), expected.end());
  for (std::size_t i = 0; i < read.size(); ++i) {
    QCOMPARE(std::get<0>(read[i]), std::get<0>(expected[i]));
    QCOMPARE(std::get<1>(read[i]), std::get<1>(expected[i]));
    QCOMPARE(std::get<2>(read[i]), std::get<2>(expected[i]));
  }
}

void SchedulesExportTest::exportsASmartFolderWithTheChosenDateFormat() {
  const auto reference = SampleHousehold();
  const auto account = reference->accounts().front();
  QVERIFY(!account->smartFolders().empty());
  const auto& smartFolder = account->smartFolders().front();
  const auto expected = smartFolder->filterEntries(account->GetEntries());

  const QString path = scratch_->filePath("folder.qif");
  WhenModal(this, [&](QWidget* modal) {
    auto* dialog = qobject_cast<QFileDialog*>(modal);
    QVERIFY(dialog);
    auto* dates = dialog->findChild<QComboBox*>("exportDateFormat");
    QVERIFY(dates);
    const int iso = dates->findData(QStringLiteral("%Y-%m-%d"));
    QVERIFY(iso > 0);
    dates->setCurrentIndex(iso);
    auto* folder = dialog->findChild<QComboBox*>("exportSmartFolder");
    QVERIFY(folder);
    QCOMPARE(folder->count(), static_cast<int>(account->smartFolders().size()) + 1);
    QVERIFY(folder->itemText(1).contains(QString::fromStdString(smartFolder->name())));
    folder->setCurrentIndex(1);
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    QVERIFY(name);
    name->setText(path);
    QTest::keyClick(name, Qt::Key_Return);
  });
  FindAction(*window_, "E&xport...")->trigger();
  QTRY_VERIFY(QFile::exists(path));

  QFile file(path);
  QVERIFY(file.open(QIODevice::ReadOnly));
  int records = 0;
  while (!file.atEnd()) {
    const QByteArray line = file.readLine().trimmed();
    if (!line.startsWith('D')) continue;
    ++records;
    // Year first, as chosen, for every record.
    QVERIFY2(
        QRegularExpression("^D\\d{4}-\\d{2}-\\d{2}$").match(QString::fromLatin1(line)).hasMatch(),
        line.constData());
  }
  // Only the folder's entries, and no starting-balance record.
  QVERIFY(!expected.empty());
  QVERIFY(expected.size() < account->GetEntries().size());
  QCOMPARE(records, static_cast<int>(expected.size()));
}

void SchedulesExportTest::entersAndSkipsDueEntriesWithUndo() {
  FindAction(*window_, "Scheduled &Entries...")->trigger();
  QWidget* window = schedulesWindow();
  QVERIFY(window && window->isVisible());
  auto* schedules = window->findChild<QTableWidget*>("schedules");
  auto* due = window->findChild<QTableWidget*>("dueEntries");
  QCOMPARE(schedules->rowCount(), 2);  // rent and salary of the checking account
  // The sample months end with October; November's rent (the 1st) and
  // salary (the 15th) are due by the 24th, nothing later.
  QCOMPARE(due->rowCount(), 2);
  const int rent = dueRowWith("Rent");
  QVERIFY(rent >= 0);
  const QString rentDate = due->item(rent, 0)->text();
  QVERIFY(rentDate.startsWith("2026-11-"));
  QCOMPARE(registerRowsWith(rentDate, "Rent"), 0);
  const int rows = registerModel()->rowCount();

  auto* enter = window->findChild<QPushButton*>("enterDue");
  QVERIFY(!enter->isEnabled());
  due->selectRow(rent);
  QVERIFY(enter->isEnabled());
  QTest::mouseClick(enter, Qt::LeftButton);
  QCOMPARE(registerRowsWith(rentDate, "Rent"), 1);
  QCOMPARE(registerModel()->rowCount(), rows + 1);
  QCOMPARE(due->rowCount(), 1);
  QCOMPARE(dueRowWith("Rent"), -1);
  // The rent's next date is now December's.
  const int rentSchedule = schedules->findItems("Rent", Qt::MatchExactly).first()->row();
  QVERIFY(schedules->item(rentSchedule, 5)->text().startsWith("2026-12-"));

  // Undo takes the entry out and makes the rent due again; Redo enters it
  // once more.
  FindAction(*window_, "&Undo")->trigger();
  QCOMPARE(registerRowsWith(rentDate, "Rent"), 0);
  QCOMPARE(registerModel()->rowCount(), rows);
  QCOMPARE(due->rowCount(), 2);
  QVERIFY(dueRowWith("Rent") >= 0);
  FindAction(*window_, "&Redo")->trigger();
  QCOMPARE(registerRowsWith(rentDate, "Rent"), 1);
  QCOMPARE(due->rowCount(), 1);

  // Skipping the salary adds nothing to the register and leaves nothing due.
  const int salary = dueRowWith("Salary");
  QVERIFY(salary >= 0);
  const QString salaryDate = due->item(salary, 0)->text();
  due->selectRow(salary);
  QTest::mouseClick(window->findChild<QPushButton*>("skipDue"), Qt::LeftButton);
  QCOMPARE(due->rowCount(), 0);
  QCOMPARE(registerRowsWith(salaryDate, "Salary"), 0);
  QCOMPARE(registerModel()->rowCount(), rows + 1);
  FindAction(*window_, "&Undo")->trigger();
  QCOMPARE(due->rowCount(), 1);
  QVERIFY(dueRowWith("Salary") >= 0);
  QCOMPARE(registerRowsWith(rentDate, "Rent"), 1);
}

void SchedulesExportTest::editsAScheduleRuleWithUndo() {
  FindAction(*window_, "Scheduled &Entries...")->trigger();
  QWidget* window = schedulesWindow();
  QVERIFY(window);
  auto* schedules = window->findChild<QTableWidget*>("schedules");
  auto* due = window->findChild<QTableWidget*>("dueEntries");
  const int rentRow = schedules->findItems("Rent", Qt::MatchExactly).first()->row();
  schedules->selectRow(rentRow);
  QCOMPARE(schedules->item(rentRow, 2)->text(), QString("monthly"));
  const QString next = schedules->item(rentRow, 5)->text();

  // Every two weeks from the same first date: the weeks since the last
  // entered month's rent bring more rent due.
  auto* rule = window->findChild<QComboBox*>("repeatRule");
  auto* interval = window->findChild<QSpinBox*>("repeatInterval");
  rule->setCurrentIndex(rule->findText("Every N weeks"));
  QVERIFY(interval->isVisibleTo(window));
  interval->setValue(2);
  auto* until = window->findChild<QComboBox*>("repeatUntilType");
  until->setCurrentIndex(until->findText("After a number of entries"));
  auto* count = window->findChild<QSpinBox*>("repeatCount");
  QVERIFY(count->isVisibleTo(window));
  count->setValue(1000);
  window->findChild<QCheckBox*>("usePrecedingFriday")->setChecked(true);
  QTest::mouseClick(window->findChild<QPushButton*>("applyRule"), Qt::LeftButton);

  const int after = schedules->findItems("Rent", Qt::MatchExactly).first()->row();
  QCOMPARE(schedules->item(after, 2)->text(), QString("every 2 weeks"));
  QCOMPARE(schedules->item(after, 3)->text(), QString("after 1000 entries"));
  QCOMPARE(schedules->item(after, 4)->text(), QString("Friday before"));
  QVERIFY(schedules->item(after, 5)->text() != next);
  // The salary stays monthly.
  const int salaryRow = schedules->findItems("Salary", Qt::MatchExactly).first()->row();
  QCOMPARE(schedules->item(salaryRow, 2)->text(), QString("monthly"));

  FindAction(*window_, "&Undo")->trigger();
  const int back = schedules->findItems("Rent", Qt::MatchExactly).first()->row();
  QCOMPARE(schedules->item(back, 2)->text(), QString("monthly"));
  QCOMPARE(schedules->item(back, 3)->text(), QString("never"));
  QCOMPARE(schedules->item(back, 5)->text(), next);
  QCOMPARE(due->rowCount(), 2);
}

QTEST_MAIN(SchedulesExportTest)
#include "schedules_export_test.moc"
