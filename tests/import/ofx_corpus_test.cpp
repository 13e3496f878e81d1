// Real OFX and QFX files of other programs' test suites, read from the shared
// corpus folder (never copied into the project). Every file loads and parses,
// faithfully or else tolerantly; the statements and transactions found match
// an independent count over the file's text.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "import/import_test_support.h"
#include "tarn/account/account_settings.h"
#include "tarn/import/ofx_import.h"

namespace tarn {
namespace {

namespace fs = std::filesystem;
using testing::Key;

fs::path corpusFolder() {
  return testing::CorpusDir() / "ofx";
}

std::vector<fs::path> corpusFiles() {
  return testing::FilesIn(corpusFolder());
}

struct Counts {
  std::vector<std::size_t> transactionsPerStatement;
  friend bool operator==(const Counts&, const Counts&) = default;
  friend void PrintTo(const Counts& counts, std::ostream* out) {
    *out << "transactions per statement:";
    for (std::size_t count : counts.transactionsPerStatement) *out << ' ' << count;
  }
};

// Counted over the raw text: for each bank, card or loan message set, its
// first statement and the transactions in that statement's first list.
Counts countedInText(const std::string& text) {
  struct Kind {
    const char* set;
    const char* statement;
    const char* transaction;
  };
  const Kind kinds[] = {{"BANKMSGSRSV1", "STMTRS", "STMTTRN"},
                        {"CREDITCARDMSGSRSV1", "CCSTMTRS", "STMTTRN"},
                        {"LOANMSGSRSV1", "LOANSTMTRS", "LOANSTMTTRN"}};
  std::map<std::size_t, std::size_t> byPosition;
  for (const Kind& kind : kinds) {
    const std::string open = std::string("<") + kind.set + ">";
    const std::string close = std::string("</") + kind.set + ">";
    for (std::size_t at = text.find(open); at != std::string::npos; at = text.find(open, at + 1)) {
      const std::size_t end = text.find(close, at);
      const std::string set = text.substr(at, end - at);
      const std::size_t statement = set.find(std::string("<") + kind.statement + ">");
      if (statement == std::string::npos) continue;
      const std::size_t statementEnd =
          set.find(std::string("</") + kind.statement + ">", statement);
      const std::string body = set.substr(statement, statementEnd - statement);
      // Only the statement's first transaction list is read.
      const std::string listName =
          kind.transaction == std::string("STMTTRN") ? "BANKTRANLIST" : "LOANTRANLIST";
      const std::size_t list = body.find("<" + listName + ">");
      const std::string transactions =
          list == std::string::npos
              ? std::string()
              : body.substr(list, body.find("</" + listName + ">", list) - list);
      std::size_t count = 0;
      const std::string transaction = std::string("<") + kind.transaction + ">";
      for (std::size_t t = transactions.find(transaction); t != std::string::npos;
           t = transactions.find(transaction, t + 1)) {
        ++count;
      }
      byPosition[at] = count;
    }
  }
  Counts counts;
  for (const auto& [position, count] : byPosition) counts.transactionsPerStatement.push_back(count);
  return counts;
}

bool isSaneDate(std::int64_t date) {
  const std::int64_t year = date / 10000, month = date / 100 % 100, day = date % 100;
  return year >= 1980 && year <= 2030 && month >= 1 && month <= 12 && day >= 1 && day <= 31;
}

TEST(OFXCorpus, EveryFileLoadsAndParsesWithTheTransactionsItHolds) {
  const std::vector<fs::path> files = corpusFiles();
  if (files.empty()) GTEST_SKIP() << "no OFX corpus at " << corpusFolder();
  std::map<std::string, OFXLoadFailure> faithfulFailures;
  for (const fs::path& path : files) {
    SCOPED_TRACE(path.filename().string());
    OFXLoadError error;
    auto importer = TARNOFXImport::initWithContentsOfFile(path.string(), {}, &error);
    if (!importer) {
      EXPECT_NE(error.failure, OFXLoadFailure::None);
      EXPECT_NE(error.failure, OFXLoadFailure::Unreadable);
      faithfulFailures[path.filename().string()] = error.failure;
      importer = TARNOFXImport::initWithContentsOfFile(path.string(), {true}, &error);
      ASSERT_TRUE(importer) << error.description();
    }
    importer->SetOptions(OFXImportSettings{});
    const plist::Value result = importer->parse();
    Counts parsed;
    for (const plist::Value& account : result.find("accounts")->arrayValue()) {
      const plist::Array& entries = account.find("entries")->arrayValue();
      parsed.transactionsPerStatement.push_back(entries.size());
      for (const plist::Value& entry : entries) {
        ASSERT_TRUE(entry.find("date"));
        EXPECT_TRUE(isSaneDate(entry.find("date")->longValue())) << entry.find("date")->longValue();
        ASSERT_TRUE(entry.find("amount"));
        const double amount = entry.find("amount")->doubleValue();
        EXPECT_TRUE(std::isfinite(amount) && std::fabs(amount) < 1e7) << amount;
        EXPECT_EQ(entry.find("isDeposit")->boolValue(), amount >= 0);
        EXPECT_TRUE(entry.find("type"));
      }
    }
    EXPECT_EQ(parsed, countedInText(testing::FileText(path)));
  }
  // The files the faithful reading rejects, and why: references already
  // escaped in OFX 1 (the doubled entity name), Windows-1252 bytes that the
  // XML parser cannot read as UTF-8, and SGML under an XML declaration.
  const std::map<std::string, OFXLoadFailure> expected = {
      {"actual__html-vals.qfx", OFXLoadFailure::XMLRejected},
      {"asgrim__ofxdata-bb-two-stmtrs.ofx", OFXLoadFailure::XMLRejected},
      {"beangulp__2013-12-03.bofa.ofx", OFXLoadFailure::XMLRejected},
      {"jgnash__File_with_Accents.ofx", OFXLoadFailure::XMLRejected},
      {"jgnash__uglyFormat.ofx", OFXLoadFailure::XMLRejected},
      {"ofxparse__anzcc.ofx", OFXLoadFailure::XMLRejected},
  };
  for (const auto& [name, failure] : faithfulFailures) {
    EXPECT_TRUE(expected.count(name) && expected.at(name) == failure) << name;
  }
}

// A few files read closely.
class OFXCorpusFile : public ::testing::Test {
 protected:
  void SetUp() override {
    if (corpusFiles().empty()) GTEST_SKIP() << "no OFX corpus at " << corpusFolder();
  }
  static plist::Value parsed(const char* name, bool tolerant = false) {
    auto importer =
        TARNOFXImport::initWithContentsOfFile((corpusFolder() / name).string(), {tolerant});
    if (!importer) return {};
    importer->SetOptions(OFXImportSettings{});
    return importer->parse();
  }
  static const plist::Array& entries(const plist::Value& result, std::size_t account = 0) {
    return Key(Key(result, "accounts").arrayValue().at(account), "entries").arrayValue();
  }
};

TEST_F(OFXCorpusFile, OneLineFileWithoutNewlines) {
  const plist::Value result = parsed("ofxgo__wellsfargo.qfx");
  ASSERT_FALSE(result.isNil());
  const plist::Value& account = Key(result, "accounts").arrayValue().at(0);
  EXPECT_EQ(Key(account, "accountID").stringValue(), "9876543210");
  EXPECT_EQ(Key(account, "currency").stringValue(), "USD");
  const plist::Value& entry = entries(result).at(0);
  EXPECT_EQ(Key(entry, "date").intValue(), 20201201);
  EXPECT_EQ(Key(entry, "amount").doubleValue(), -12.34);
  EXPECT_EQ(Key(entry, "description").stringValue(), "AE Visa Card AE EPAY");
  EXPECT_EQ(Key(entry, "notes").stringValue(), "XXXXX1234");
  EXPECT_EQ(Key(entry, "type").stringValue(), "DIRECTDEBIT");
  EXPECT_EQ(Key(entry, "fitID").stringValue(), "202012011");
}

TEST_F(OFXCorpusFile, CDataNamesAndBareAmpersandMemos) {
  const plist::Value suncorp = parsed("ofxparse__suncorp.ofx");
  ASSERT_FALSE(suncorp.isNil());
  EXPECT_EQ(Key(entries(suncorp).at(0), "description").stringValue(),
            "EFTPOS WDL HANDYWAY ALDI STORE  ");
  const plist::Value amazon = parsed("asgrim__ofxdata-memoWithAmpersand.ofx");
  ASSERT_FALSE(amazon.isNil());
  bool found = false;
  for (const plist::Value& entry : entries(amazon)) {
    const plist::Value* notes = entry.find("notes");
    if (notes && notes->stringValue() == "Amazon.Com.Br Amazon & Cloud 3/3") found = true;
  }
  EXPECT_TRUE(found);
}

TEST_F(OFXCorpusFile, EscapedAmpersandsReadTolerantly) {
  EXPECT_TRUE(parsed("actual__html-vals.qfx").isNil());
  const plist::Value result = parsed("actual__html-vals.qfx", true);
  ASSERT_FALSE(result.isNil());
  EXPECT_EQ(Key(entries(result).at(0), "notes").stringValue(),
            "PREAUTHORIZED DEBIT;B.C. HYDRO & POWER AUTHORITY;Electronic Funds Transfer");
  // "&amp;lt;" is an escaped ampersand followed by "lt;", kept as written.
  EXPECT_EQ(Key(entries(result).at(1), "description").stringValue(), "TPAY &lt;DEFTPYMT&gt;");
}

TEST_F(OFXCorpusFile, AccentsInWindows1252ReadTolerantly) {
  const plist::Value result = parsed("jgnash__File_with_Accents.ofx", true);
  ASSERT_FALSE(result.isNil());
  const std::string name = Key(entries(result).at(1), "description").stringValue();
  EXPECT_EQ(name.substr(0, 20), "Second Transaction (");
  EXPECT_EQ(name.substr(20, 4), "\xC3\x80\xC3\xA0");  // Àà
}

TEST_F(OFXCorpusFile, CardAndBankMessageSetsInOrder) {
  const plist::Value result = parsed("oca__test_ofx.ofx");
  ASSERT_FALSE(result.isNil());
  ASSERT_EQ(Key(result, "accounts").arrayValue().size(), 2u);
  const plist::Value bofa = parsed("beangulp__2013-12-03.bofa.ofx", true);
  ASSERT_FALSE(bofa.isNil());
  EXPECT_EQ(entries(bofa).size(), 27u);
  EXPECT_EQ(Key(Key(bofa, "accounts").arrayValue().at(0), "accountID").stringValue(),
            "379700001111222");
}

}  // namespace
}  // namespace tarn
