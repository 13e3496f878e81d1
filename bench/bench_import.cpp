// QIF and comma-separated import of generated bank files, from the file on
// disk (FileToParse) or from its bytes in memory (ImportParse) to the parse
// dictionary, decoding included, at 100,000 and 1,000,000 records. A tenth
// of the QIF records are split over three lines.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>

#include "tarn/import/qif_import.h"
#include "tarn/import/text_import.h"
#include "tarn/platform/encodings.h"

namespace {

const char* const kPayees[] = {"Market Street Grocers", "Shell Gas Station 1234", "Caf\xe9 du Parc",
                               "Landlord Properties LLC", "Employer Inc Payroll"};
const char* const kCategories[] = {"Food:Groceries", "Auto:Fuel", "Housing:Rent", "Income:Salary",
                                   "Dining"};

// Windows-1252 bytes, as a bank's export program writes them.
std::string MakeQif(std::size_t records, unsigned seed) {
  std::mt19937 random(seed);
  std::string qif = "!Type:Bank\r\n";
  qif.reserve(records * 80);
  char line[160];
  for (std::size_t i = 0; i < records; ++i) {
    const int cents = static_cast<int>(random() % 200000) - 150000;
    const int month = 1 + static_cast<int>(random() % 12);
    const int day = 1 + static_cast<int>(random() % 28);
    const int year = static_cast<int>(random() % 30);
    std::snprintf(line, sizeof line, "D%d/%d'%02d\r\nT%s%d.%02d\r\nN%zu\r\nP%s\r\nM%s %zu\r\n",
                  month, day, year, cents < 0 ? "-" : "", std::abs(cents) / 100,
                  std::abs(cents) % 100, 1000 + i, kPayees[random() % 5], "Memo", i);
    qif += line;
    if (random() % 2) qif += "CX\r\n";
    qif += "L";
    qif += kCategories[random() % 5];
    qif += "\r\n";
    if (i % 10 == 0) {
      const int first = cents / 3;
      const int parts[] = {first, first, cents - 2 * first};
      for (int part : parts) {
        std::snprintf(line, sizeof line, "S%s\r\nESplit\r\n$%s%d.%02d\r\n",
                      kCategories[random() % 5], part < 0 ? "-" : "", std::abs(part) / 100,
                      std::abs(part) % 100);
        qif += line;
      }
    }
    qif += "^\r\n";
  }
  return qif;
}

std::string MakeCsv(std::size_t lines, unsigned seed) {
  std::mt19937 random(seed);
  std::string csv = "Date,Description,Payee,Amount,Category\r\n";
  csv.reserve(lines * 64);
  char line[200];
  for (std::size_t i = 0; i < lines; ++i) {
    const int cents = static_cast<int>(random() % 200000) - 150000;
    std::snprintf(line, sizeof line, "%02d/%02d/20%02d,Purchase %zu,\"%s\",%s%d.%02d,%s\r\n",
                  1 + static_cast<int>(random() % 12), 1 + static_cast<int>(random() % 28),
                  static_cast<int>(random() % 30), i, kPayees[random() % 5], cents < 0 ? "-" : "",
                  std::abs(cents) / 100, std::abs(cents) % 100, kCategories[random() % 5]);
    csv += line;
  }
  return csv;
}

// The result is freed here, outside the importer's functions, so that a
// profile can name each step: reading, parsing and freeing.
[[gnu::noinline]] void FreeResult(tarn::plist::Dictionary&& result) {
  tarn::plist::Dictionary freed = std::move(result);
}

// A generated file on disk, written once per size and removed at exit.
const std::string& GeneratedFile(const std::string& name, const std::string& bytes) {
  static std::map<std::string, std::string> paths;
  auto [found, added] = paths.try_emplace(name);
  if (added) {
    found->second = (std::filesystem::temp_directory_path() /
                     ("tarn_bench_" + std::to_string(::getpid()) + "_" + name))
                        .string();
    std::ofstream(found->second, std::ios::binary) << bytes;
    if (paths.size() == 1) {
      std::atexit([] {
        for (const auto& [key, path] : paths) std::filesystem::remove(path);
      });
    }
  }
  return found->second;
}

// From the file on disk to the parse dictionary, as a host imports: read,
// decode (Windows 1252), normalise, parse, and free the result.
void BM_QIFFileToParse(benchmark::State& state) {
  const std::string bytes = MakeQif(static_cast<std::size_t>(state.range(0)), 7);
  const std::string& path = GeneratedFile("qif" + std::to_string(state.range(0)), bytes);
  std::size_t entries = 0;
  for (auto _ : state) {
    auto importer =
        tarn::TARNQIFImport::initWithContentsOfFile(path, tarn::kWindowsCP1252StringEncoding);
    tarn::plist::Dictionary parsed = importer->parse();
    entries = parsed.at("entries").arrayValue().size();
    FreeResult(std::move(parsed));
  }
  state.counters["MB"] = static_cast<double>(bytes.size()) / 1e6;
  state.counters["entries"] = static_cast<double>(entries);
}
BENCHMARK(BM_QIFFileToParse)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_TextFileToParse(benchmark::State& state) {
  const std::string bytes = MakeCsv(static_cast<std::size_t>(state.range(0)), 7);
  const std::string& path = GeneratedFile("csv" + std::to_string(state.range(0)), bytes);
  std::size_t entries = 0;
  for (auto _ : state) {
    auto importer =
        tarn::TARNTextImport::initWithContentsOfFile(path, tarn::kWindowsCP1252StringEncoding);
    importer->SetDataLayout(std::vector<std::int32_t>{tarn::kColumnDate, tarn::kColumnDescription,
                                                      tarn::kColumnToFrom, tarn::kColumnAmount,
                                                      tarn::kColumnCategory});
    importer->SetSkipFirstRow(true);
    importer->SetDateFormat("%m/%d/%Y");
    tarn::plist::Dictionary parsed = importer->parse();
    entries = parsed.at("entries").arrayValue().size();
    FreeResult(std::move(parsed));
  }
  state.counters["MB"] = static_cast<double>(bytes.size()) / 1e6;
  state.counters["entries"] = static_cast<double>(entries);
}
BENCHMARK(BM_TextFileToParse)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_QIFImportParse(benchmark::State& state) {
  const std::string bytes = MakeQif(static_cast<std::size_t>(state.range(0)), 7);
  std::size_t entries = 0;
  for (auto _ : state) {
    tarn::TARNQIFImport importer;
    importer.SetDataString(tarn::DecodeToUtf8(bytes, tarn::kWindowsCP1252StringEncoding));
    const tarn::plist::Dictionary parsed = importer.parse();
    entries = parsed.at("entries").arrayValue().size();
    benchmark::DoNotOptimize(parsed);
  }
  state.counters["MB"] = static_cast<double>(bytes.size()) / 1e6;
  state.counters["entries"] = static_cast<double>(entries);
}
BENCHMARK(BM_QIFImportParse)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_TextImportParse(benchmark::State& state) {
  const std::string bytes = MakeCsv(static_cast<std::size_t>(state.range(0)), 7);
  std::size_t entries = 0;
  for (auto _ : state) {
    tarn::TARNTextImport importer;
    importer.SetDataLayout(std::vector<std::int32_t>{tarn::kColumnDate, tarn::kColumnDescription,
                                                     tarn::kColumnToFrom, tarn::kColumnAmount,
                                                     tarn::kColumnCategory});
    importer.SetSkipFirstRow(true);
    importer.SetDateFormat("%m/%d/%Y");
    importer.SetDataString(tarn::DecodeToUtf8(bytes, tarn::kWindowsCP1252StringEncoding));
    const tarn::plist::Dictionary parsed = importer.parse();
    entries = parsed.at("entries").arrayValue().size();
    benchmark::DoNotOptimize(parsed);
  }
  state.counters["MB"] = static_cast<double>(bytes.size()) / 1e6;
  state.counters["entries"] = static_cast<double>(entries);
}
BENCHMARK(BM_TextImportParse)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
