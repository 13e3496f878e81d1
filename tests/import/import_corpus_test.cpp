// Real files written by other programs, read from the shared corpus folder
// (TARN_CORPUS_DIR in the environment, else the folder beside the project).
// The files stay out of the repository; without the folder these tests skip.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "import/import_test_support.h"
#include "tarn/import/qif_import.h"
#include "tarn/import/text_import.h"
#include "tarn/platform/text.h"

namespace tarn {
namespace {

namespace fs = std::filesystem;
using plist::Array;
using plist::Value;

using testing::CorpusDir;
using testing::FilesIn;
using testing::FileText;
using testing::Key;

#define REQUIRE_CORPUS(sub)                  \
  const fs::path folder = CorpusDir() / sub; \
  if (!fs::is_directory(folder)) GTEST_SKIP() << "no corpus folder " << folder.string()

// The records of a QIF file as a plain line reading counts them: the lines
// that begin with "^" (some programs write "^^") in sections of a bank-like
// type, or in the whole file when it has no section header; none when an
// AutoSwitch block never ends.
std::size_t CountQifRecords(const std::string& text) {
  const std::size_t autoSwitch = text.find("!Option:AutoSwitch");
  if (autoSwitch != std::string::npos &&
      text.find("!Clear:AutoSwitch", autoSwitch) == std::string::npos) {
    return 0;
  }
  const bool headers = text.find("!Type:") != std::string::npos;
  bool inBankSection = !headers;
  std::size_t count = 0;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find_first_of("\r\n", start);
    if (end == std::string::npos) end = text.size();
    const std::string line = text.substr(start, end - start);
    if (line.starts_with("!Type:")) {
      std::string type = line.substr(6);
      while (!type.empty() && type.back() == ' ') type.pop_back();
      inBankSection = false;
      for (const std::string& valid : TARNQIFImport::validListTypes()) {
        if (CaseInsensitiveEqual(type, valid)) inBankSection = true;
      }
    } else if (line.starts_with("!")) {
      inBankSection = false;
    } else if (inBankSection) {
      count += line.starts_with("^") ? 1 : 0;
    }
    start = end + 1;
  }
  return count;
}

void ExpectPlausible(const Array& entries, bool undatedLines = false) {
  for (const Value& entry : entries) {
    const double amount = Key(entry, "amount").doubleValue();
    EXPECT_TRUE(std::isfinite(amount));
    EXPECT_LT(std::fabs(amount), 1e9);
    const Value* date = entry.find("date");
    if (date && !(undatedLines && date->intValue() == 0)) {
      EXPECT_GE(date->intValue(), 19000101);
      EXPECT_LE(date->intValue(), 21001231);
    }
  }
}

TEST(ImportCorpus, EveryQifFileReadsWithPlausibleEntries) {
  REQUIRE_CORPUS("qif");
  const std::vector<fs::path> files = FilesIn(folder);
  EXPECT_FALSE(files.empty());
  for (const fs::path& file : files) {
    SCOPED_TRACE(file.filename().string());
    // Month first unless the file's dates only read day first.
    auto importer = TARNQIFImport::initWithContentsOfFile(file.string(), kUTF8StringEncoding);
    Array entries = importer->Entries();
    auto undated = [&] {
      return std::count_if(entries.begin(), entries.end(), [](const Value& entry) {
        const Value* date = entry.find("date");
        return date && date->intValue() == 0;
      });
    };
    if (undated() > 0) {
      importer->SetDateFormat("%d/%m/%y");
      entries = importer->Entries();
    }
    EXPECT_EQ(undated(), 0);
    ExpectPlausible(entries);
    EXPECT_EQ(entries.size(), CountQifRecords(FileText(file)));
    const plist::Dictionary parsed = importer->parse();
    if (parsed.contains("accounts")) {
      for (const Value& account : parsed.at("accounts").arrayValue()) {
        EXPECT_FALSE(Key(account, "name").stringValue().empty());
        ExpectPlausible(Key(account, "entries").arrayValue());
      }
    }
  }
}

std::shared_ptr<TARNQIFImport> Qif(const fs::path& folder, const char* name,
                                   StringEncoding encoding = kUTF8StringEncoding) {
  return TARNQIFImport::initWithContentsOfFile((folder / name).string(), encoding);
}

TEST(ImportCorpus, QifFilesShowTheFormatsQuirks) {
  REQUIRE_CORPUS("qif");
  // Quicken's blank-and-apostrophe years and a split written against its total.
  Array entries = Qif(folder, "quiffen__test_split.qif")->Entries();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(Key(entries[0], "date").intValue(), 20000101);
  EXPECT_EQ(Key(entries[0], "category").stringValue(), "--Split--");
  const Array& splits = Key(entries[0], "splits").arrayValue();
  ASSERT_EQ(splits.size(), 2u);
  EXPECT_EQ(Key(splits[0], "amount").doubleValue(), -9.0);
  EXPECT_EQ(Key(splits[0], "category").stringValue(), "[An Account]");
  EXPECT_EQ(Key(splits[1], "description").stringValue(), "");

  // An AutoSwitch list without its closing line: error 10 and nothing read.
  auto divx = Qif(folder, "gnucash__divx.qif");
  EXPECT_EQ(divx->error(), kQIFImportUnterminatedAutoSwitch);
  EXPECT_TRUE(divx->parse().at("entries").arrayValue().empty());

  // An investment-only account goes with its header.
  auto investment = Qif(folder, "quiffen__test_unknown_account_type.qif");
  EXPECT_TRUE(investment->AccountNames().empty());
  EXPECT_TRUE(investment->Entries().empty());

  // Three-digit years of a program that wrote the year minus 1900.
  entries = Qif(folder, "gnucash__web.qif")->Entries();
  ASSERT_FALSE(entries.empty());
  EXPECT_EQ(Key(entries[0], "date").intValue(), 19990325);
  EXPECT_EQ(Key(entries[0], "amount").doubleValue(), -99.99);
  EXPECT_TRUE(Key(entries[0], "cleared").boolValue());

  // CRLF lines, an AutoSwitch block, a "!Type:Bank " header with a blank,
  // and a category section.
  auto abc = Qif(folder, "gnucash__abc-all.qif");
  EXPECT_EQ(abc->error(), kQIFImportNoError);
  const plist::Dictionary parsed = abc->parse();
  ASSERT_TRUE(parsed.contains("accounts"));
  const Array& categories = parsed.at("categories").arrayValue();
  ASSERT_FALSE(categories.empty());
  EXPECT_EQ(categories[0].stringValue(), "asdf incomr");
  EXPECT_FALSE(parsed.at("entries").arrayValue().empty());

  // Day-first dates and a Cash section among investment and memorised ones.
  auto qifparse = Qif(folder, "qifparse__file.qif");
  qifparse->SetDateFormat("%d/%m/%Y");
  entries = qifparse->Entries();
  ASSERT_FALSE(entries.empty());
  EXPECT_EQ(Key(entries[0], "date").intValue(), 20131023);

  // Latin-1 bytes in a file that says nothing of its encoding.
  auto german = Qif(folder, "quiffen__test_FMQifTest2023-10-18.qif", kISOLatin1StringEncoding);
  EXPECT_EQ(german->error(), kQIFImportNoError);
  bool nonAscii = false;
  const plist::Dictionary germanParsed = german->parse();
  for (const Value& category : germanParsed.at("categories").arrayValue()) {
    nonAscii = nonAscii || !IsAscii(category.stringValue());
  }
  EXPECT_TRUE(nonAscii);
}

// How a user would lay out each file's columns, and its first and last entry.
struct CsvExpectation {
  DateNumber date;
  double amount;
  const char* key;  // a text field that tells the entry apart
  const char* text;
};

struct CsvCase {
  const char* file;
  StringEncoding encoding;
  // One letter a column: D date, A amount, W withdrawal, R receipt (deposit),
  // S description, P to/from, C category, T type, N number, "-" ignored.
  const char* layout;
  const char* options;  // "tab", "skip" for a heading, then date format and separators
  std::size_t count;    // of the entries with a date of their own
  CsvExpectation first;
  CsvExpectation last;
};

std::vector<std::int32_t> Layout(std::string_view letters) {
  const std::map<char, std::int32_t> roles = {
      {'D', kColumnDate},     {'A', kColumnAmount},      {'W', kColumnDebit},
      {'R', kColumnDeposit},  {'S', kColumnDescription}, {'P', kColumnToFrom},
      {'C', kColumnCategory}, {'T', kColumnType},        {'N', kColumnNumber}};
  std::vector<std::int32_t> layout;
  for (char letter : letters) layout.push_back(roles.count(letter) ? roles.at(letter) : 999);
  return layout;
}

const std::vector<CsvCase>& CsvCases() {
  static const std::vector<CsvCase> cases = {
      {"beangulp__statement.csv",
       kUTF8StringEncoding,
       "-DSAT-N",
       "skip %m/%d/%Y . ,",
       6,
       {20160318, -2680.89, "description", "Payment to Chafe card ending in 1234 03/18"},
       {20160304, -1300.0, "type", "ACH_DEBIT"}},
      {"csv2ofx__capitalone.csv",
       kUTF8StringEncoding,
       "D--SCWR",
       "skip %Y/%m/%d . ,",
       2,
       {20151231, -1000.0, "description", "Airplanes R Us"},
       {20151231, 1000.0, "category", "Payment/Credit"}},
      {"csv2ofx__creditunion.csv",
       kUTF8StringEncoding,
       "-DPACS",
       "skip %m/%d/%y . ,",
       8,
       {20150208, 50000.0, "toFrom", "\u1eb0d\u00f8\u0142\u01a5h No\u01b4a"},
       {20150325, 50000.0, "toFrom", "\u01a2un\u0221u\u0199i Chairman"}},
      {"csv2ofx__ingesp.csv",
       kUTF8StringEncoding,
       "DC-S--A",
       "skip %d/%m/%Y . ,",
       10,
       {20220324, 2.83, "description", "Abono por campa\u00f1a Abono Shopping NARANJA:GALP"},
       {20221113, 500.0, "description", "Traspaso recibido Cuenta N\u00f3mina"}},
      {"csv2ofx__mint_headerless.csv",
       kUTF8StringEncoding,
       "DSCAT",
       "- %m/%d/%y . ,",
       4,
       {20150612, 1000.0, "description", "Transfer from Checking"},
       {20150614, 2500.0, "type", "debit"}},
      {"csv2ofx__schwab-checking.csv",
       kUTF8StringEncoding,
       "D-TNSWR",
       "skip %m/%d/%Y . ,",
       4,
       {20220817, 20.0, "description", "Deposit Mobile Banking"},
       {20220804, -57.27, "description", "PAYPAL INST XFER 220803~ Tran: ACHDW"}},
      {"hledger__sample.fr.cp1252.csv",
       kWindowsCP1252StringEncoding,
       "DSA",
       "skip %Y/%m/%d . ,",
       3,
       {20120322, 50.0, "description", "D\u00c9P\u00d4T"},
       {20120324, -20.0, "description", "CAF\u00c9 \u2014 \u20ac20 RE\u00c7U"}},
      {"hledger__sample.tsv",
       kUTF8StringEncoding,
       "DSRW",
       "tab %m/%Y/%d . ,",
       2,
       {20091009, 50.0, "description", "Flubber Co\U0001F385"},
       {20091109, -50.0, "description", "Flubber Co\U0001F385"}},
      // Account details above the heading: those lines read as no date or
      // as today, and the user drops them in the review.
      {"oca__meta_data_separated_credit_debit.csv",
       kUTF8StringEncoding,
       "DNSWRC",
       "skip %d/%m/%y , .",
       4,
       {20200401, -50.0, "description", "LABEL 1"},
       {20200402, 1300.0, "category", "DETAILS 3"}},
      {"ofxstatement-dutch__ing_ok.csv",
       kUTF8StringEncoding,
       "DS-PT-AC",
       "skip %Y/%m/%d , .",
       6,
       {20200213, 1.25, "description", "Kosten OranjePakket met korting"},
       {20191213, 0.31, "description", "Kosten OranjePakket"}},
  };
  return cases;
}

TEST(ImportCorpus, EveryCsvFileWithTheLayoutAUserWouldChoose) {
  REQUIRE_CORPUS("csv");
  std::map<std::string, const CsvCase*> byFile;
  for (const CsvCase& item : CsvCases()) byFile[item.file] = &item;
  for (const fs::path& file : FilesIn(folder)) {
    const std::string name = file.filename().string();
    SCOPED_TRACE(name);
    const auto found = byFile.find(name);
    if (found == byFile.end()) {
      // Semicolon-separated files: the importer splits at commas or tabs
      // only, so a line gives one entry whose first column is the text up to
      // its first comma.
      auto importer = TARNTextImport::initWithContentsOfFile(file.string(), kUTF8StringEncoding);
      importer->SetDataLayout(std::vector<std::int32_t>{kColumnDescription});
      const Array entries = importer->Entries();
      ExpectPlausible(entries);
      std::size_t lines = 0;
      const std::string raw = FileText(file);
      for (std::size_t i = 0; i < raw.size(); ++i) {
        const bool ends = raw[i] == '\r' || raw[i] == '\n';
        if (!ends && (i == 0 || raw[i - 1] == '\r' || raw[i - 1] == '\n')) ++lines;
      }
      EXPECT_EQ(entries.size(), lines) << "one entry a line";
      continue;
    }
    const CsvCase& item = *found->second;
    byFile.erase(found);
    auto importer = TARNTextImport::initWithContentsOfFile(file.string(), item.encoding);
    std::istringstream options(item.options);
    std::string format, dateFormat, decimal, thousands;
    options >> format >> dateFormat >> decimal >> thousands;
    importer->SetDataFormat(format == "tab" ? kTextImportTabSeparated : kTextImportCommaSeparated);
    importer->SetSkipFirstRow(format == "skip");
    importer->SetDataLayout(Layout(item.layout));
    importer->SetDateFormat(dateFormat);
    importer->SetDecimalSeparator(decimal);
    importer->SetThousandsSeparator(thousands);
    const CalendarDate today(1999, 1, 1);
    CalendarDate::overrideNow(today);
    Array entries = importer->parse().at("entries").arrayValue();
    CalendarDate::overrideNow(std::nullopt);
    ExpectPlausible(entries, true);
    std::erase_if(entries, [&](const Value& entry) {
      const DateNumber date = Key(entry, "date").intValue();
      return date == 0 || date == today.dateNumber();
    });
    ASSERT_EQ(entries.size(), item.count);
    for (const auto& [entry, expected] :
         {std::pair{entries.front(), item.first}, std::pair{entries.back(), item.last}}) {
      EXPECT_EQ(Key(entry, "date").intValue(), expected.date);
      EXPECT_DOUBLE_EQ(Key(entry, "amount").doubleValue(), expected.amount);
      EXPECT_EQ(Key(entry, expected.key).stringValue(), expected.text);
    }
  }
  for (const auto& [name, item] : byFile) ADD_FAILURE() << "no corpus file " << name;
}

}  // namespace
}  // namespace tarn
