// OFX import from a file to the parse() dictionary, on generated bank
// statements of 100,000 and 1,000,000 transactions: OFX 1 (SGML without end
// tags, about 140 bytes a transaction) and OFX 2 (XML, about 190), with the
// loading and parsing steps apart.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>

#include "tarn/account/account_settings.h"
#include "tarn/import/ofx_import.h"

namespace {

std::string transactionsFile(std::size_t count, bool xml) {
  static const char* const kNames[] = {"GROCERY STORE 1234", "SHELL OIL 5566",     "ACME RENT",
                                       "PAYROLL DEPOSIT",    "CITY WATER & POWER", "CAFE LUNA",
                                       "BOOKS AND MORE 77",  "PHARMACY 0042"};
  static const char* const kTypes[] = {"DEBIT", "CREDIT", "POS", "CHECK", "ATM", "XFER"};
  std::mt19937 random(7);
  std::string text;
  text.reserve(count * (xml ? 200 : 150) + 1024);
  if (xml) {
    text +=
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n"
        "<?OFX OFXHEADER=\"200\" VERSION=\"211\" SECURITY=\"NONE\" OLDFILEUID=\"NONE\" "
        "NEWFILEUID=\"NONE\"?>\n";
  } else {
    text +=
        "OFXHEADER:100\nDATA:OFXSGML\nVERSION:102\nSECURITY:NONE\nENCODING:USASCII\n"
        "CHARSET:1252\nCOMPRESSION:NONE\nOLDFILEUID:NONE\nNEWFILEUID:NONE\n\n";
  }
  const auto element = [&](const char* name, const std::string& value) {
    text += '<';
    text += name;
    text += '>';
    text += value;
    if (xml) {
      text += "</";
      text += name;
      text += '>';
    }
    text += '\n';
  };
  text += "<OFX>\n<BANKMSGSRSV1>\n<STMTTRNRS>\n";
  element("TRNUID", "1");
  text += "<STMTRS>\n";
  element("CURDEF", "USD");
  text += "<BANKACCTFROM>\n";
  element("BANKID", "121000248");
  element("ACCTID", "9876543210");
  element("ACCTTYPE", "CHECKING");
  text += "</BANKACCTFROM>\n<BANKTRANLIST>\n";
  for (std::size_t i = 0; i < count; ++i) {
    char amount[32];
    std::snprintf(amount, sizeof amount, "%s%u.%02u", random() % 4 ? "-" : "",
                  static_cast<unsigned>(random() % 2000), static_cast<unsigned>(random() % 100));
    char date[32];
    std::snprintf(date, sizeof date, "20%02u%02u%02u120000[-5:EST]",
                  static_cast<unsigned>(10 + random() % 15),
                  static_cast<unsigned>(1 + random() % 12),
                  static_cast<unsigned>(1 + random() % 28));
    std::string name = kNames[random() % std::size(kNames)];
    if (xml) {
      const std::size_t amp = name.find('&');
      if (amp != std::string::npos) name.replace(amp, 1, "&amp;");
    }
    text += xml ? "<STMTTRN>\n  " : "<STMTTRN>\n";
    element("TRNTYPE", kTypes[random() % std::size(kTypes)]);
    element("DTPOSTED", date);
    element("TRNAMT", amount);
    element("FITID", std::to_string(202400000000 + i));
    element("NAME", name);
    element("MEMO", "CARD 5678 REF " + std::to_string(random() % 100000));
    text += "</STMTTRN>\n";
  }
  text += "</BANKTRANLIST>\n</STMTRS>\n</STMTTRNRS>\n</BANKMSGSRSV1>\n</OFX>\n";
  return text;
}

// One generated file per size and form, written once to the temporary folder.
const std::string& generatedFile(std::size_t count, bool xml) {
  static std::map<std::pair<std::size_t, bool>, std::string> paths;
  auto& path = paths[{count, xml}];
  if (path.empty()) {
    path = (std::filesystem::temp_directory_path() /
            ("tarn_bench_ofx" + std::string(xml ? "2_" : "1_") + std::to_string(count) + ".ofx"))
               .string();
    std::ofstream(path, std::ios::binary) << transactionsFile(count, xml);
  }
  return path;
}

void fileToParse(benchmark::State& state, bool xml) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const std::string& path = generatedFile(count, xml);
  std::size_t entries = 0;
  for (auto _ : state) {
    auto importer = tarn::TARNOFXImport::initWithContentsOfFile(path);
    if (!importer) {
      state.SkipWithError("the generated file did not load");
      return;
    }
    importer->SetOptions(tarn::OFXImportSettings{});
    const tarn::plist::Value result = importer->parse();
    entries = result.find("accounts")->arrayValue()[0].find("entries")->arrayValue().size();
    benchmark::DoNotOptimize(entries);
  }
  if (entries != count) state.SkipWithError("wrong number of entries");
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(std::filesystem::file_size(path)));
  state.counters["MB"] = static_cast<double>(std::filesystem::file_size(path)) / 1e6;
}

void loadOnly(benchmark::State& state, bool xml) {
  const std::string& path = generatedFile(static_cast<std::size_t>(state.range(0)), xml);
  for (auto _ : state) {
    auto importer = tarn::TARNOFXImport::initWithContentsOfFile(path);
    benchmark::DoNotOptimize(importer.get());
  }
}

void parseOnly(benchmark::State& state, bool xml) {
  const std::string& path = generatedFile(static_cast<std::size_t>(state.range(0)), xml);
  auto importer = tarn::TARNOFXImport::initWithContentsOfFile(path);
  importer->SetOptions(tarn::OFXImportSettings{});
  for (auto _ : state) {
    const tarn::plist::Value result = importer->parse();
    benchmark::DoNotOptimize(&result);
  }
}

void BM_OFX1FileToParse(benchmark::State& state) {
  fileToParse(state, false);
}
void BM_OFX2FileToParse(benchmark::State& state) {
  fileToParse(state, true);
}
void BM_OFX1Load(benchmark::State& state) {
  loadOnly(state, false);
}
void BM_OFX2Load(benchmark::State& state) {
  loadOnly(state, true);
}
void BM_OFX1Parse(benchmark::State& state) {
  parseOnly(state, false);
}
void BM_OFX2Parse(benchmark::State& state) {
  parseOnly(state, true);
}

BENCHMARK(BM_OFX1FileToParse)->Arg(100000)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_OFX2FileToParse)->Arg(100000)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_OFX1Load)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OFX2Load)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OFX1Parse)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OFX2Parse)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OFX1FileToParse)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_OFX2FileToParse)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
