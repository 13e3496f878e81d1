#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "account_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/account/export_options.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/filters/filter.h"
#include "tarn/filters/filter_codes.h"
#include "tarn/filters/filter_condition_group.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

using namespace testing;
using Row = std::vector<std::string>;

// Categories shared through a controller, two types, and a register with a
// check, a split, a void entry and an entry without category.
struct ExportLedger {
  InMemoryAccountsController controller;
  std::shared_ptr<TARNAccount> account = SignedInAccount();
  TARNAccount& a = *account;

  ExportLedger() {
    auto category = [](const char* name, std::int32_t number) {
      auto made = std::make_shared<TARNAccountEntryCategory>();
      made->setName(std::string(name));
      made->setNumber(number);
      return made;
    };
    auto home = category("Home", 1);
    home->addChild(category("Rent", 2));
    controller.categories() = {home, category("Food", 3)};
    a.setAccountsController(&controller);
    auto type = [](const char* name, std::int32_t number, bool check) {
      auto made = std::make_shared<TARNAccountEntryType>();
      made->SetName(std::string(name));
      made->SetNumber(number);
      made->SetIsCheck(check);
      made->SetIsDeposit(!check);
      return made;
    };
    a.types() = {type("Check", 10, true), type("Payroll", 11, false)};
    a.SetName(std::string("Everyday"));
    a.SetStartingBalance(100.0);

    auto check = Add(a, 1, 20240105, -1200.0, "January rent", "Landlord");
    check->SetIsCheck(true);
    check->SetCheckNumber(101);
    check->SetCleared(1);
    check->SetType(10);
    check->SetCategory(2);
    auto salary = Add(a, 2, 20240103, 2500.5, "Salary", "Employer");
    salary->SetType(11);
    salary->SetTaxDeductible(true);
    auto groceries = Add(a, 3, 20240105, 0.0, "Groceries & more", "Market");
    groceries->SetCleared(1);
    groceries->SetCategory(3);
    groceries->addSplitLineItemWithCategory(3, "Food", "Market", -40.0);
    groceries->addSplitLineItemWithCategory(2, "Bits", "Market", -5.67);
    groceries->addSplitLineItemWithCategory(99, "Unknown", "Market", -0.01);
    // Void, numbered 0 without being a check, with an unknown category.
    auto voided = Add(a, 4, 20240110, -10.0, "Cancelled", "Nobody");
    voided->SetCheckNumber(0);
    voided->SetVoid(true);
    voided->SetCategory(42);
    // The earliest entry, in a folder: it dates the starting balance but is not exported.
    auto folder = std::make_shared<TARNAccountFolder>();
    folder->setEntries({MakeEntry(5, 20231201, -3.0)});
    a.addFolder(folder);
  }
};

// A reader written apart from the writer: records end at a "^" line, each line
// is a code letter and its text, and "S" opens a split line that "E" and "$" fill.
struct QifRecord {
  std::vector<std::string> headers;
  std::multimap<char, std::string> fields;
  std::vector<std::array<std::string, 3>> splits;  // category, memo, amount
  std::string field(char code) const {
    auto found = fields.find(code);
    return found == fields.end() ? "<none>" : found->second;
  }
};

std::vector<QifRecord> ReadQif(const std::string& text, const std::string& eol) {
  std::vector<QifRecord> records(1);
  for (std::size_t start = 0, end; start < text.size(); start = end + eol.size()) {
    if ((end = text.find(eol, start)) == std::string::npos) {
      ADD_FAILURE() << "unterminated last line";
      break;
    }
    const std::string line = text.substr(start, end - start);
    EXPECT_EQ(line.find_first_of("\r\n"), std::string::npos) << line;
    QifRecord& record = records.back();
    const char code = line.empty() ? ' ' : line[0];
    if (line == "^") {
      records.emplace_back();
    } else if (code == '!') {
      record.headers.push_back(line);
    } else if (code == 'S') {
      record.splits.push_back({line.substr(1), "", ""});
    } else if (code == 'E' || code == '$') {
      if (record.splits.empty()) ADD_FAILURE() << "split detail without a split: " << line;
      if (!record.splits.empty()) record.splits.back()[code == 'E' ? 1 : 2] = line.substr(1);
    } else if (!line.empty()) {
      record.fields.emplace(code, line.substr(1));
    }
  }
  EXPECT_TRUE(records.back().fields.empty()) << "record without its end";
  records.pop_back();
  return records;
}

double Amount(const std::string& text) {
  return std::strtod(text.c_str(), nullptr);
}

TEST(ExportQif, RoundTripThroughAnIndependentReader) {
  ExportLedger ledger;
  TARNExportOptions options;
  options.dateFormat = "%d.%m.%Y";
  options.lineEnding = "\r\n";
  options.resolvedMeansReconciled = true;
  const auto records = ReadQif(ledger.a.asQIFStringWithOptions(&options), "\r\n");

  // The header, the starting balance dated by the earliest entry (one in a
  // folder), then the register by date with the day's check first.
  ASSERT_EQ(records.size(), 2u + ledger.a.GetEntries().size());
  EXPECT_EQ(records[0].headers, Row{"!Account"});
  EXPECT_EQ(records[0].field('N'), "Everyday");
  EXPECT_EQ(records[0].field('T'), "Bank");
  EXPECT_EQ(records[0].field('B'), "1351.82");
  EXPECT_NEAR(Amount(records[0].field('B')), ledger.a.GetBalance(), 1e-9);
  EXPECT_EQ(records[1].headers, Row{"!Type:Bank"});
  EXPECT_EQ(records[1].field('D'), "01.12.2023");
  EXPECT_EQ(records[1].field('M'), "Starting Balance");
  EXPECT_EQ(records[1].field('T'), "100.00");
  EXPECT_EQ(records[1].field('C'), "X");

  // Categories: the full name on the entry, the own name on split lines,
  // nothing for an unknown or missing one.
  const std::pair<std::int32_t, std::string> order[] = {
      {2, ""}, {1, "Home:Rent"}, {3, "Food"}, {4, ""}};
  for (std::size_t i = 0; i < 4; ++i) {
    SCOPED_TRACE("entry " + std::to_string(order[i].first));
    const QifRecord& record = records[2 + i];
    const auto entry = ledger.a.GetEntryWithNumber(order[i].first);
    ASSERT_NE(entry, nullptr);
    const auto date = CalendarDate::dateWithString(record.field('D'), "%d.%m.%Y");
    ASSERT_TRUE(date.has_value());
    EXPECT_EQ(date->dateNumber(), entry->GetDate());
    EXPECT_NEAR(Amount(record.field('T')), entry->GetAmount(), 1e-9);
    EXPECT_EQ(record.field('P'), entry->GetToFrom());
    EXPECT_EQ(record.field('M'), entry->GetDescription());
    EXPECT_EQ(record.field('C'), entry->GetCleared() ? "X" : "<none>");
    EXPECT_EQ(record.fields.count('L'), 1u);
    EXPECT_EQ(record.field('L'), order[i].second);
    EXPECT_EQ(record.field('N'),
              entry->GetCheckNumber() >= 0 ? std::to_string(entry->GetCheckNumber()) : "<none>");
    ASSERT_EQ(record.splits.size(), entry->splitLineItems().size());
    for (std::size_t s = 0; s < record.splits.size(); ++s) {
      EXPECT_EQ(record.splits[s][1], entry->splitLineItems()[s]->description());
      EXPECT_NEAR(Amount(record.splits[s][2]), entry->splitLineItems()[s]->amount(), 1e-9);
    }
  }
  EXPECT_EQ(records[4].field('T'), "-45.68");
  EXPECT_EQ(records[4].splits[1][2], "-5.67");
  EXPECT_EQ(records[4].splits[0][0], "Food");
  EXPECT_EQ(records[4].splits[1][0], "Rent");
  EXPECT_EQ(records[4].splits[2][0], "");
  EXPECT_EQ(records[2].field('T'), "2500.50");
}

TEST(ExportQif, DefaultsFilterAndEmptyAccount) {
  ExportLedger ledger;
  // Defaults: "\n", four-digit years, "*" for resolved; no options means default options.
  const std::string qif = ledger.a.asQIFStringWithOptions(nullptr);
  TARNExportOptions defaults;
  EXPECT_EQ(qif, ledger.a.asQIFStringWithOptions(&defaults));
  EXPECT_EQ(qif.find('\r'), std::string::npos);
  EXPECT_EQ(qif.substr(0, 47), "!Account\nNEveryday\nTBank\nB1351.82\n^\n!Type:Bank\n");
  EXPECT_NE(qif.find("D01/05/2024\nN101\nPLandlord\nMJanuary rent\nT-1200.00\nC*\nLHome:Rent\n^\n"),
            std::string::npos);
  EXPECT_NE(qif.find("D01/03/2024\nPEmployer\nMSalary\nT2500.50\nL\n^\n"), std::string::npos);

  // With a filter: only what it keeps, and no starting balance.
  auto filter = std::make_shared<TARNFilter>();
  auto group = std::make_shared<TARNFilterConditionGroup>();
  group->addConditionWithCategory(kFieldDescription, kConditionKeepMatches, kTextContains,
                                  plist::Value(std::string("gro")));
  filter->addConditionGroup(group);
  TARNExportOptions options;
  options.exportFilter = filter;
  const auto filtered = ReadQif(ledger.a.asQIFStringWithOptions(&options), "\n");
  ASSERT_EQ(filtered.size(), 2u);
  EXPECT_EQ(filtered[1].headers, Row{"!Type:Bank"});
  EXPECT_EQ(filtered[1].field('M'), "Groceries & more");

  // An empty account: the header and a starting balance dated today.
  PinnedClock clock(CalendarDate(2025, 2, 3, 14, 30));
  auto empty = SignedInAccount();
  empty->SetName(std::string("New"));
  empty->SetStartingBalance(-2.5);
  EXPECT_EQ(empty->asQIFStringWithOptions(nullptr),
            "!Account\nNNew\nTBank\nB-2.50\n^\n!Type:Bank\nD02/03/2025\nMStarting Balance\n"
            "T-2.50\nC*\n^\n");
}

Row Split(const std::string& text, char separator) {
  Row parts;
  std::size_t start = 0;
  for (std::size_t end; (end = text.find(separator, start)) != std::string::npos; start = end + 1)
    parts.push_back(text.substr(start, end - start));
  parts.push_back(text.substr(start));
  return parts;
}

// The rows of the table; the text ends with a line ending.
std::vector<Row> Rows(const std::string& text) {
  Row lines = Split(text, '\n');
  EXPECT_EQ(lines.back(), "");
  lines.pop_back();
  std::vector<Row> rows;
  for (const std::string& line : lines) rows.push_back(Split(line, '\t'));
  return rows;
}

const char kHeader[] =
    "Date\tType\tDescription\tTo/From\tCategory\tResolved\tTax-Deductible\tAmount\tKind\tCheck "
    "#\tID\tBalance";

TEST(ExportText, OneRowPerEntryWithARunningBalanceThatCountsVoidEntries) {
  ExportLedger ledger;
  SetUserDefault("NSShortDateFormatString", "%Y-%m-%d");
  const std::string text = ledger.a.asTabDelimitedStringWithOptions(nullptr);
  ResetUserDefaults();
  const auto rows = Rows(text);

  ASSERT_EQ(rows.size(), 2u + ledger.a.GetEntries().size());
  EXPECT_EQ(text.substr(0, text.find('\n')), kHeader);
  for (std::size_t i = 2; i < rows.size(); ++i) EXPECT_EQ(rows[i].size(), 12u);
  // The starting-balance row ends with one tab more.
  EXPECT_EQ(rows[1], (Row{"2023-12-01", "", "Starting Balance", "", "", "Yes", "", "100.00", "", "",
                          "", "100.00", ""}));
  EXPECT_EQ(rows[2], (Row{"2024-01-03", "Payroll", "Salary", "Employer", "", "No", "Yes", "2500.50",
                          "Deposit", "", "2", "2600.50"}));
  EXPECT_EQ(rows[3], (Row{"2024-01-05", "Check", "January rent", "Landlord", "Home:Rent", "Yes",
                          "No", "-1200.00", "Debit", "101", "1", "1400.50"}));
  EXPECT_EQ((Row{rows[4][1], rows[4][4], rows[4][7]}), (Row{"", "Food", "-45.68"}));
  // The void entry is shown and counted, unlike in the account's balance.
  EXPECT_EQ((Row{rows[5][7], rows[5][9], rows[5][11]}), (Row{"-10.00", "0", "1344.82"}));
  double expected = ledger.a.GetStartingBalance();
  for (const auto& entry : ledger.a.GetEntries()) expected += entry->GetAmount();
  EXPECT_NEAR(Amount(rows.back()[11]), expected, 1e-9);
}

TEST(ExportText, FilterAndEmptyAccount) {
  ExportLedger ledger;
  TARNExportOptions options;
  options.exportFilter = std::make_shared<TARNFilter>();  // keeps everything
  options.lineEnding = "\r\n";                            // QIF only
  const auto rows = Rows(ledger.a.asTabDelimitedStringWithOptions(&options));
  // No starting-balance row, yet the running balance starts from it.
  ASSERT_EQ(rows.size(), 1u + ledger.a.GetEntries().size());
  EXPECT_EQ(rows[1][10], "2");
  EXPECT_EQ(rows[1][11], "2600.50");

  PinnedClock clock(CalendarDate(2025, 2, 3));
  EXPECT_EQ(
      SignedInAccount()->asTabDelimitedStringWithOptions(nullptr),
      std::string(kHeader) + "\n02/03/25\t\tStarting Balance\t\t\tYes\t\t0.00\t\t\t\t0.00\t\n");
}

}  // namespace
}  // namespace tarn
