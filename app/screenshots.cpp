// Renders the window on the sample household book to PNG files: the
// register, the entry form holding a split entry, reconcile mode, the
// scheduled entries, the checking account's summary of the year and the
// review of an import.
//   tarn-desktop-screenshots [folder]   (default: docs/screenshots)
// Run with QT_QPA_PLATFORM=offscreen on a machine without a display.

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QTableView>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTreeView>

#include <cstdio>

#include "import_review_window.h"
#include "import_run.h"
#include "main_window.h"
#include "register_model.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/import_review.h"
#include "tarn/book/sample_book.h"
#include "tarn/import/import_file.h"
#include "tarn/platform/calendar_date.h"

namespace {

bool Save(QWidget& window, const QString& folder, const QString& name) {
  QApplication::processEvents();
  const QString path = QDir(folder).filePath(name);
  if (!window.grab().save(path)) {
    std::fprintf(stderr, "%s: cannot write\n", qPrintable(path));
    return false;
  }
  std::printf("%s\n", qPrintable(path));
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setOrganizationName("Tarn");
  QApplication::setApplicationName("tarn-desktop-screenshots");
  const QString folder =
      argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("docs/screenshots");
  QDir().mkpath(folder);

  // The same book on every run: the sample household up to a fixed day.
  tarn::CalendarDate::overrideNow(tarn::CalendarDate(2026, 11, 24));
  tarn::SampleBookOptions options;
  options.years = 1;
  MainWindow window;
  window.setBook(tarn::MakeSampleBook(options));
  window.resize(1280, 800);
  window.show();
  bool ok = Save(window, folder, "window_register.png");

  // A split entry in the form.
  auto* table = window.findChild<QTableView*>("register");
  auto* model = qobject_cast<RegisterModel*>(table->model());
  for (int row = model->rowCount() - 1; row >= 0; --row) {
    if (model->index(row, RegisterModel::kCategory).data().toString() == "Split") {
      table->selectRow(row);
      table->scrollTo(model->index(row, 0));
      break;
    }
  }
  ok = Save(window, folder, "window_entry.png") && ok;

  // Reconcile mode against a statement that counts the first unresolved
  // entry, which is then resolved by a click on its mark.
  window.findChild<QAction*>("reconcile")->setChecked(true);
  auto* statement = window.findChild<QLineEdit*>("statementBalance");
  // Dollars as the window writes them: "$ 1,234.50", " -$ 12.00".
  const auto money = [](QString text) {
    return text.remove(',').remove('$').remove(' ').toDouble();
  };
  for (int row = 0; row < model->rowCount(); ++row) {
    const QModelIndex mark = model->index(row, RegisterModel::kResolved);
    if (!mark.data().toString().isEmpty()) continue;
    const QString resolved =
        window.findChild<QLabel*>("reconcileResolved")->text().section(':', -1);
    const double amount = money(model->index(row, RegisterModel::kAmount).data().toString());
    statement->setText(QString::number(money(resolved) + amount, 'f', 2));
    emit statement->editingFinished();
    emit table->clicked(model->index(row, RegisterModel::kResolved));
    table->selectRow(row);
    table->scrollTo(mark, QAbstractItemView::PositionAtCenter);
    break;
  }
  ok = Save(window, folder, "window_reconcile.png") && ok;

  // The checking account's scheduled entries, with November's due ones.
  window.findChild<QAction*>("reconcile")->setChecked(false);
  for (QAction* action : window.findChildren<QAction*>()) {
    if (action->text() == QStringLiteral("Scheduled &Entries...")) action->trigger();
  }
  auto* schedules = window.findChild<QWidget*>("schedulesWindow");
  if (!schedules) {
    std::fprintf(stderr, "the schedules window did not open\n");
    return 1;
  }
  if (auto* due = schedules->findChild<QTableWidget*>("dueEntries"); due && due->rowCount() > 0) {
    due->selectRow(0);
  }
  ok = Save(*schedules, folder, "window_schedules.png") && ok;
  schedules->close();

  // The year so far by month: the chart and the category tree opened out.
  for (QAction* action : window.findChildren<QAction*>()) {
    if (action->text() == QStringLiteral("Su&mmary...")) action->trigger();
  }
  auto* summary = window.findChild<QWidget*>("summaryWindow");
  if (!summary) {
    std::fprintf(stderr, "the summary window did not open\n");
    return 1;
  }
  auto* saved = summary->findChild<QComboBox*>("savedSummaries");
  saved->setCurrentIndex(saved->findText(QStringLiteral("All Entries, Year To Date")));
  summary->findChild<QTreeView*>("categories")->expandAll();
  ok = Save(*summary, folder, "window_summary.png") && ok;
  summary->close();

  // The review of a bank's QIF file: one entry the account already holds
  // (marked as a likely duplicate, unticked) and one of a category the book
  // does not have yet.
  tarn::TARNBook& book = window.book();
  auto checking = book.accounts().front();
  const auto& existing = *checking->GetEntries().back();
  const auto qifDate = [](tarn::DateNumber date) {
    return QString::asprintf("%02d/%02d/%04d", date / 100 % 100, date % 100, date / 10000);
  };
  QString qif = QStringLiteral("!Type:Bank\n");
  const auto record = [&](const QString& date, double amount, const QString& payee,
                          const QString& memo, const QString& category) {
    qif += QStringLiteral("D%1\nT%2\nP%3\nM%4\nL%5\n^\n")
               .arg(date, QString::number(amount, 'f', 2), payee, memo, category);
  };
  record(qifDate(existing.GetDate()), existing.GetAmount(),
         QString::fromStdString(existing.GetToFrom()),
         QString::fromStdString(existing.GetDescription()), QString());
  record("11/25/2026", -64.20, "Corner Grocer", "Weekly shop", "Food:Groceries");
  record("11/26/2026", -38.75, "Green Thumb Nursery", "Tomato seedlings", "Garden:Plants");
  record("11/27/2026", -12.00, "City Parking", "Downtown garage", "Auto");
  record("11/28/2026", 1850.00, "Acme Payroll", "Salary", "Income:Salary");
  QTemporaryDir scratch;
  const QString qifPath = scratch.filePath("bank-november.qif");
  QFile qifFile(qifPath);
  if (!qifFile.open(QIODevice::WriteOnly)) return 1;
  qifFile.write(qif.toUtf8());
  qifFile.close();
  tarn::ImportFileOptions importOptions = RememberedImportOptions(*checking);
  importOptions.qif.dateFormat = tarn::ImportDateFormatIndex("%m/%d/%Y").value_or(0);
  const tarn::ImportedFile imported = tarn::ReadImportedFile(qifPath.toStdString(), importOptions);
  tarn::TARNImportReview review(book, *checking, imported.format, importOptions);
  review.addEntries(imported.entries);
  ImportReviewDialog dialog(review, imported, book, *checking, &window);
  dialog.resize(1180, 320);
  dialog.show();
  dialog.table()->setCurrentIndex(QModelIndex());
  ok = Save(dialog, folder, "import_review.png") && ok;
  dialog.hide();
  return ok ? 0 : 1;
}
