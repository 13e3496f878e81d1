// The import review of a generated 10,000-transaction OFX statement: from
// the file chosen in the open panel to the review window shown with its rows
// drawn (reading, the review with its duplicate search against the sample
// household's checking account, the dialog built, shown and painted).
// Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise.
//   ./build/bench/bench_import_window --benchmark_repetitions=5

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QFile>
#include <QMainWindow>
#include <QTableView>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>
#include <random>
#include <string>

#include "book_document.h"
#include "import_review_window.h"
#include "import_run.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/import_review.h"
#include "tarn/book/sample_book.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"
#include "window_bench_main.h"

namespace {

QTemporaryDir* scratch = nullptr;

// An OFX 1 statement of `count` transactions over fifteen years, each with
// its own bank identifier.
QString StatementWith(std::int64_t count) {
  const QString path = scratch->filePath(QString("statement_%1.ofx").arg(count));
  if (QFile::exists(path)) return path;
  static const char* const kPayees[] = {"GROCERY 12", "FUEL STOP", "RENT",  "PAYROLL",
                                        "WATER CO",   "CAFE",      "BOOKS", "PHARMACY"};
  std::mt19937 random(3);
  std::string text =
      "OFXHEADER:100\nDATA:OFXSGML\nVERSION:102\nSECURITY:NONE\nENCODING:USASCII\n"
      "CHARSET:1252\nCOMPRESSION:NONE\nOLDFILEUID:NONE\nNEWFILEUID:NONE\n\n"
      "<OFX><BANKMSGSRSV1><STMTTRNRS><TRNUID>1<STMTRS><CURDEF>USD<BANKACCTFROM>"
      "<BANKID>121000248<ACCTID>555<ACCTTYPE>CHECKING</BANKACCTFROM><BANKTRANLIST>\n";
  for (std::int64_t i = 0; i < count; ++i) {
    char line[256];
    std::snprintf(line, sizeof line,
                  "<STMTTRN><TRNTYPE>%s<DTPOSTED>20%02u%02u%02u<TRNAMT>%s%u.%02u<FITID>F%lld"
                  "<NAME>%s<MEMO>REF %u</STMTTRN>\n",
                  random() % 4 ? "DEBIT" : "CREDIT", static_cast<unsigned>(10 + random() % 15),
                  static_cast<unsigned>(1 + random() % 12),
                  static_cast<unsigned>(1 + random() % 28), random() % 4 ? "-" : "",
                  static_cast<unsigned>(random() % 900), static_cast<unsigned>(random() % 100),
                  static_cast<long long>(i), kPayees[random() % std::size(kPayees)],
                  static_cast<unsigned>(random() % 9999));
    text += line;
  }
  text += "</BANKTRANLIST></STMTRS></STMTTRNRS></BANKMSGSRSV1></OFX>\n";
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return {};
  file.write(text.data(), static_cast<qint64>(text.size()));
  return path;
}

void BM_ImportReviewShown(benchmark::State& state) {
  const QString path = StatementWith(state.range(0));
  tarn::SampleBookOptions options;
  options.years = 1;
  BookDocument document(tarn::MakeSampleBook(options));
  tarn::TARNAccount& account = *document.book().accounts().front();
  QMainWindow window;
  int rows = 0;
  std::size_t duplicates = 0;
  for (auto _ : state) {
    ImportChoice choice{path, RememberedImportOptions(account)};
    auto prepared = PrepareImport(&window, document, account, std::move(choice));
    if (!prepared) {
      state.SkipWithError("the statement could not be read");
      break;
    }
    ImportReviewDialog dialog(*prepared->review, prepared->file, document.book(), account, &window);
    dialog.show();
    dialog.repaint();
    QApplication::processEvents();
    rows = dialog.table()->model()->rowCount();
    duplicates = prepared->review->duplicateCount();
    state.PauseTiming();
    dialog.hide();
    prepared.reset();
    state.ResumeTiming();
  }
  state.counters["rows"] = rows;
  state.counters["duplicates"] = static_cast<double>(duplicates);
}
BENCHMARK(BM_ImportReviewShown)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  return RunWindowBenchmarks(argc, argv, scratch);
}
