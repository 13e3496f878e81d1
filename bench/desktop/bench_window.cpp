// The register window on a large book: opening a book and showing its
// register, one keystroke in the search field (refilter and redraw), and
// scrolling a page (the model answers cells from cached balances), and the
// summary window over the whole ten years by month: opened and drawn, and
// computed and drawn again after one option changes.
// Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise.
//   ./build/bench/bench_window --benchmark_min_time=2

#include <benchmark/benchmark.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <memory>
#include <string>

#include "main_window.h"
#include "summary_window.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/sample_book.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"
#include "tarn/reports/account_summary.h"
#include "tarn/reports/summary_result.h"

namespace {

QTemporaryDir* scratch = nullptr;

// The sample household grown to `entries` entries, written once per size.
QString BookWith(std::int64_t entries) {
  const QString path = scratch->filePath(QString("book_%1.tarn").arg(entries));
  if (!QFile::exists(path)) {
    tarn::SampleBookOptions options;
    options.years = 10;
    options.entries = entries;
    tarn::MakeSampleBook(options)->saveAs(path.toStdString());
  }
  return path;
}

// Shows the book's largest account, as a user clicking it in the side list.
void ShowLargestAccount(MainWindow& window, const QString& path) {
  static QString largest;
  if (largest.isEmpty()) {
    auto book = tarn::TARNBook::open(path.toStdString());
    std::size_t most = 0;
    for (const auto& account : book->accounts()) {
      if (account->GetEntries().size() >= most) {
        most = account->GetEntries().size();
        largest = QString::fromStdString(account->GetName());
      }
    }
  }
  auto* tree = window.findChild<QTreeWidget*>("accounts");
  tree->setCurrentItem(tree->findItems(largest, Qt::MatchExactly).value(0));
}

void Draw(QWidget& window) {
  window.repaint();
  QApplication::processEvents();
}

// A window showing the largest account of a book of `entries` entries.
void ShowBook(MainWindow& window, std::int64_t entries) {
  const QString path = BookWith(entries);
  window.resize(1280, 800);
  window.openPath(path);
  ShowLargestAccount(window, path);
  window.show();
  Draw(window);
}

void BM_OpenAndShowRegister(benchmark::State& state) {
  BookWith(state.range(0));
  for (auto _ : state) {
    MainWindow window;
    ShowBook(window, state.range(0));
    benchmark::DoNotOptimize(&window);
    state.PauseTiming();
    window.hide();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_OpenAndShowRegister)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_SearchKeystroke(benchmark::State& state) {
  MainWindow window;
  ShowBook(window, state.range(0));
  auto* search = window.findChild<QLineEdit*>("search");
  auto* table = window.findChild<QTableView*>("register");
  search->setFocus();
  // Typing "gro", then taking it back, one key at a time.
  const QString word = "gro";
  int step = 0;
  for (auto _ : state) {
    const int phase = step++ % 6;
    if (phase < 3) {
      QTest::keyClick(search, word.at(phase).toLatin1());
    } else {
      QTest::keyClick(search, Qt::Key_Backspace);
    }
    table->viewport()->repaint();
    benchmark::DoNotOptimize(table->model()->rowCount());
  }
  search->clear();
  state.counters["rows"] = table->model()->rowCount();
  state.SetLabel(window.findChild<QTreeWidget*>("accounts")->currentItem()->text(0).toStdString());
}
BENCHMARK(BM_SearchKeystroke)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_ScrollPage(benchmark::State& state) {
  MainWindow window;
  ShowBook(window, state.range(0));
  auto* table = window.findChild<QTableView*>("register");
  state.counters["rows"] = table->model()->rowCount();
  QScrollBar* bar = table->verticalScrollBar();
  int value = 0;
  for (auto _ : state) {
    value = (value + bar->pageStep() * 37) % std::max(1, bar->maximum());
    bar->setValue(value);
    table->viewport()->repaint();
  }
}
BENCHMARK(BM_ScrollPage)->Arg(100000)->Unit(benchmark::kMicrosecond);

// Opens the summary window on the shown account, as the menu command does.
// The account's first summary (" Custom...") runs from the first to the last
// entry by month: the book's ten years.
SummaryWindow* OpenSummary(MainWindow& window) {
  for (QAction* action : window.findChildren<QAction*>()) {
    if (action->text() == QStringLiteral("Su&mmary...")) action->trigger();
  }
  auto* summary = window.findChild<SummaryWindow*>("summaryWindow");
  if (summary) {
    summary->repaint();
    QApplication::processEvents();
  }
  return summary;
}

void CountSummary(benchmark::State& state, const SummaryWindow& summary) {
  const auto& result = summary.result();
  if (!result) return state.SkipWithError("no summary shown");
  state.counters["periods"] = static_cast<double>(result->periods.size());
  state.counters["entries"] = result->totals.entryCount;
}

void BM_OpenSummaryWindow(benchmark::State& state) {
  MainWindow window;
  ShowBook(window, state.range(0));
  SummaryWindow* summary = nullptr;
  for (auto _ : state) {
    summary = OpenSummary(window);
    if (!summary) return state.SkipWithError("the summary window did not open");
    state.PauseTiming();
    if (summary->result()) CountSummary(state, *summary);
    delete summary;
    state.ResumeTiming();
  }
}
BENCHMARK(BM_OpenSummaryWindow)->Arg(100000)->Unit(benchmark::kMillisecond);

// One option changed (parents with or without their subcategories), so the
// monthly summary is computed and every view refilled and drawn again.
void BM_SummaryOptionChange(benchmark::State& state) {
  MainWindow window;
  ShowBook(window, state.range(0));
  SummaryWindow* summary = OpenSummary(window);
  if (!summary) return state.SkipWithError("the summary window did not open");
  auto* parents = summary->findChild<QCheckBox*>("parentsIncludeSubcategories");
  for (auto _ : state) {
    parents->toggle();
    summary->repaint();
    QApplication::processEvents();
  }
  CountSummary(state, *summary);
}
BENCHMARK(BM_SummaryOptionChange)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  QTemporaryDir dir;
  scratch = &dir;
  tarn::SetLogSink([](std::string_view) {});
  tarn::CalendarDate::overrideNow(tarn::CalendarDate(2026, 11, 24));
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
