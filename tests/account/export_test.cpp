#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "account/ledger_test_support.h"
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

using testing_support::Add;
using testing_support::Kind;
using testing_support::MakeEntry;
using testing_support::SignedInAccount;

// Three categories shared through a controller, two types, and a register with
// a check, a split, a void entry and an entry without category.
struct ExportLedger {
  InMemoryAccountsController controller;
  std::shared_ptr<TARNAccount> account = SignedInAccount();

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
    account->setAccountsController(&controller);
    auto checkType = std::make_shared<TARNAccountEntryType>();
    checkType->SetName(std::string("Check"));
    checkType->SetNumber(10);
    checkType->SetIsCheck(true);
    auto payType = std::make_shared<TARNAccountEntryType>();
    payType->SetName(std::string("Payroll"));
    payType->SetNumber(11);
    payType->SetIsDeposit(true);
    account->types() = {checkType, payType};
    account->SetName(std::string("Everyday"));
    account->SetStartingBalance(100.0);

    auto check = Add(*account, {.number = 1,
                                .date = 20240105,
                                .amount = -1200.0,
                                .kind = Kind::Check,
                                .checkNumber = 101,
                                .description = "January rent",
                                .toFrom = "Landlord",
                                .cleared = true});
    check->SetType(10);
    check->SetCategory(2);
    auto salary = Add(*account, {.number = 2,
                                 .date = 20240103,
                                 .amount = 2500.5,
                                 .kind = Kind::Deposit,
                                 .description = "Salary",
                                 .toFrom = "Employer"});
    salary->SetType(11);
    salary->SetTaxDeductible(true);
    auto groceries = Add(*account, {.number = 3,
                                    .date = 20240105,
                                    .description = "Groceries & more",
                                    .toFrom = "Market",
                                    .cleared = true});
    groceries->SetCategory(3);
    groceries->addSplitLineItemWithCategory(3, "Food", "Market", -40.0);
    groceries->addSplitLineItemWithCategory(2, "Bits", "Market", -5.67);
    groceries->addSplitLineItemWithCategory(99, "Unknown", "Market", -0.01);
    // Void, numbered 0 without being a check, with an unknown category.
    auto voided = Add(*account, {.number = 4,
                                 .date = 20240110,
                                 .amount = -10.0,
                                 .checkNumber = 0,
                                 .description = "Cancelled",
                                 .toFrom = "Nobody",
                                 .isVoid = true});
    voided->SetCategory(42);

    // The earliest entry, in a folder: it dates the starting balance but is not exported.
    auto folder = std::make_shared<TARNAccountFolder>();
    folder->setEntries({MakeEntry({.number = 5, .date = 20231201, .amount = -3.0})});
    account->addFolder(folder);
  }
};

// A reader of the records written, independent of the writer: lines split at
// the line ending, records ended by a "^" line, each line a code letter and
// its text; "S" opens a split line that "E" and "$" fill in.
struct QifSplit {
  std::string category, memo, amount;
};
struct QifRecord {
  std::vector<std::string> headers;  // lines starting with "!"
  std::vector<std::pair<char, std::string>> fields;
  std::vector<QifSplit> splits;

  std::string field(char code) const {
    for (const auto& [c, text] : fields) {
      if (c == code) return text;
    }
    return "<none>";
  }
  int count(char code) const {
    int n = 0;
    for (const auto& field : fields) n += field.first == code;
    return n;
  }
};

std::vector<QifRecord> ReadQif(const std::string& text, std::string_view lineEnding) {
  std::vector<QifRecord> records(1);
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find(lineEnding, start);
    EXPECT_NE(end, std::string::npos) << "unterminated last line";
    if (end == std::string::npos) break;
    const std::string line = text.substr(start, end - start);
    EXPECT_EQ(line.find_first_of("\r\n"), std::string::npos) << "stray line break in " << line;
    start = end + lineEnding.size();
    QifRecord& record = records.back();
    if (line == "^") {
      records.emplace_back();
    } else if (!line.empty() && line[0] == '!') {
      record.headers.push_back(line);
    } else if (!line.empty() && line[0] == 'S') {
      record.splits.push_back({line.substr(1), "", ""});
    } else if (!line.empty() && (line[0] == 'E' || line[0] == '$')) {
      EXPECT_FALSE(record.splits.empty()) << line;
      if (record.splits.empty()) continue;
      (line[0] == 'E' ? record.splits.back().memo : record.splits.back().amount) = line.substr(1);
    } else if (!line.empty()) {
      record.fields.emplace_back(line[0], line.substr(1));
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
  TARNAccount& account = *ledger.account;
  TARNExportOptions options;
  options.dateFormat = "%d.%m.%Y";
  options.lineEnding = "\r\n";
  options.resolvedMeansReconciled = true;
  const std::string qif = account.asQIFStringWithOptions(&options);
  const std::vector<QifRecord> records = ReadQif(qif, "\r\n");

  // Account header, then the starting balance dated by the earliest entry of
  // the account (here one in a folder), then the register in date order with
  // the day's check ahead of the other entry.
  ASSERT_EQ(records.size(), 2u + account.GetEntries().size());
  EXPECT_EQ(records[0].headers, std::vector<std::string>{"!Account"});
  EXPECT_EQ(records[0].field('N'), "Everyday");
  EXPECT_EQ(records[0].field('T'), "Bank");
  EXPECT_NEAR(Amount(records[0].field('B')), account.GetBalance(), 1e-9);
  EXPECT_EQ(records[0].field('B'), "1351.82");
  EXPECT_EQ(records[1].headers, std::vector<std::string>{"!Type:Bank"});
  EXPECT_EQ(records[1].field('D'), "01.12.2023");
  EXPECT_EQ(records[1].field('M'), "Starting Balance");
  EXPECT_EQ(records[1].field('T'), "100.00");
  EXPECT_EQ(records[1].field('C'), "X");

  const std::vector<std::int32_t> order = {2, 1, 3, 4};
  for (std::size_t i = 0; i < order.size(); ++i) {
    SCOPED_TRACE("entry " + std::to_string(order[i]));
    const QifRecord& record = records[2 + i];
    const auto entry = account.GetEntryWithNumber(order[i]);
    ASSERT_NE(entry, nullptr);
    const auto date = CalendarDate::dateWithString(record.field('D'), "%d.%m.%Y");
    ASSERT_TRUE(date.has_value());
    EXPECT_EQ(date->dateNumber(), entry->GetDate());
    EXPECT_NEAR(Amount(record.field('T')), entry->GetAmount(), 1e-9);
    EXPECT_EQ(record.field('P'), entry->GetToFrom());
    EXPECT_EQ(record.field('M'), entry->GetDescription());
    EXPECT_EQ(record.field('C'), entry->GetCleared() ? "X" : "<none>");
    EXPECT_EQ(record.count('L'), 1);
    if (entry->GetCheckNumber() >= 0) {
      EXPECT_EQ(record.field('N'), std::to_string(entry->GetCheckNumber()));
    } else {
      EXPECT_EQ(record.count('N'), 0);
    }
    ASSERT_EQ(record.splits.size(), entry->splitLineItems().size());
    for (std::size_t s = 0; s < record.splits.size(); ++s) {
      EXPECT_EQ(record.splits[s].memo, entry->splitLineItems()[s]->description());
      EXPECT_NEAR(Amount(record.splits[s].amount), entry->splitLineItems()[s]->amount(), 1e-9);
    }
  }
  // Categories: the full name on the entry, the own name on split lines,
  // nothing for an unknown or missing one.
  EXPECT_EQ(records[2].field('L'), "");
  EXPECT_EQ(records[3].field('L'), "Home:Rent");
  EXPECT_EQ(records[4].field('L'), "Food");
  EXPECT_EQ(records[4].field('T'), "-45.68");
  EXPECT_EQ(records[4].splits[0].category, "Food");
  EXPECT_EQ(records[4].splits[1].category, "Rent");
  EXPECT_EQ(records[4].splits[1].amount, "-5.67");
  EXPECT_EQ(records[4].splits[2].category, "");
  EXPECT_EQ(records[5].field('L'), "");
  EXPECT_EQ(records[5].field('N'), "0");  // a check number of 0 is written
  EXPECT_EQ(records[2].field('T'), "2500.50");
}

TEST(ExportQif, DefaultsFilterAndEmptyAccount) {
  ExportLedger ledger;
  TARNAccount& account = *ledger.account;
  // Defaults: "\n", four-digit years, "*" for resolved; no options at all
  // means the same as default options.
  const std::string qif = account.asQIFStringWithOptions(nullptr);
  EXPECT_EQ(qif, account.asQIFStringWithOptions(std::make_unique<TARNExportOptions>().get()));
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
  const std::vector<QifRecord> filtered = ReadQif(account.asQIFStringWithOptions(&options), "\n");
  ASSERT_EQ(filtered.size(), 2u);
  EXPECT_EQ(filtered[1].headers, std::vector<std::string>{"!Type:Bank"});
  EXPECT_EQ(filtered[1].field('M'), "Groceries & more");

  // An empty account: the header and a starting balance dated today.
  CalendarDate::overrideNow(CalendarDate(2025, 2, 3, 14, 30));
  auto empty = SignedInAccount();
  empty->SetName(std::string("New"));
  empty->SetStartingBalance(-2.5);
  EXPECT_EQ(empty->asQIFStringWithOptions(nullptr),
            "!Account\nNNew\nTBank\nB-2.50\n^\n!Type:Bank\nD02/03/2025\nMStarting Balance\n"
            "T-2.50\nC*\n^\n");
  CalendarDate::overrideNow(std::nullopt);
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = text.find(separator, start);
    parts.push_back(text.substr(start, end - start));
    if (end == std::string::npos) return parts;
    start = end + 1;
  }
}

// The rows of the table (the line after the last "\n" must be empty).
std::vector<std::vector<std::string>> Rows(const std::string& text) {
  std::vector<std::string> lines = Split(text, '\n');
  EXPECT_EQ(lines.back(), "");
  lines.pop_back();
  std::vector<std::vector<std::string>> rows;
  for (const std::string& line : lines) rows.push_back(Split(line, '\t'));
  return rows;
}

const char kHeader[] =
    "Date\tType\tDescription\tTo/From\tCategory\tResolved\tTax-Deductible\tAmount\tKind\tCheck "
    "#\tID\tBalance";

TEST(ExportText, OneRowPerEntryWithARunningBalanceThatCountsVoidEntries) {
  ExportLedger ledger;
  TARNAccount& account = *ledger.account;
  SetUserDefault("NSShortDateFormatString", "%Y-%m-%d");
  const std::string text = account.asTabDelimitedStringWithOptions(nullptr);
  ResetUserDefaults();
  const auto rows = Rows(text);

  ASSERT_EQ(rows.size(), 2u + account.GetEntries().size());
  EXPECT_EQ(text.substr(0, text.find('\n')), kHeader);
  // Twelve columns; the starting-balance row ends with one tab more.
  for (std::size_t i = 2; i < rows.size(); ++i) EXPECT_EQ(rows[i].size(), 12u);
  EXPECT_EQ(rows[1], (std::vector<std::string>{"2023-12-01", "", "Starting Balance", "", "", "Yes",
                                               "", "100.00", "", "", "", "100.00", ""}));
  EXPECT_EQ(rows[2],
            (std::vector<std::string>{"2024-01-03", "Payroll", "Salary", "Employer", "", "No",
                                      "Yes", "2500.50", "Deposit", "", "2", "2600.50"}));
  EXPECT_EQ(rows[3], (std::vector<std::string>{"2024-01-05", "Check", "January rent", "Landlord",
                                               "Home:Rent", "Yes", "No", "-1200.00", "Debit", "101",
                                               "1", "1400.50"}));
  EXPECT_EQ(rows[4][4], "Food");
  EXPECT_EQ(rows[4][7], "-45.68");
  EXPECT_EQ(rows[4][1], "");  // no type
  // The void entry is shown and counted, unlike in the account's balance.
  EXPECT_EQ(rows[5][7], "-10.00");
  EXPECT_EQ(rows[5][9], "0");
  EXPECT_EQ(rows[5][11], "1344.82");

  double expected = account.GetStartingBalance();
  for (const auto& entry : account.GetEntries()) expected += entry->GetAmount();
  EXPECT_NEAR(std::strtod(rows.back()[11].c_str(), nullptr), expected, 1e-9);
  EXPECT_NE(rows.back()[11], "1354.82");  // what skipping the void entry would give
}

TEST(ExportText, FilterAndEmptyAccount) {
  ExportLedger ledger;
  TARNAccount& account = *ledger.account;
  TARNExportOptions options;
  options.exportFilter = std::make_shared<TARNFilter>();  // keeps everything
  options.lineEnding = "\r\n";                            // QIF only
  const auto rows = Rows(account.asTabDelimitedStringWithOptions(&options));
  // No starting-balance row, yet the running balance starts from it.
  ASSERT_EQ(rows.size(), 1u + account.GetEntries().size());
  EXPECT_EQ(rows[1][10], "2");
  EXPECT_EQ(rows[1][11], "2600.50");

  CalendarDate::overrideNow(CalendarDate(2025, 2, 3));
  auto empty = SignedInAccount();
  EXPECT_EQ(
      empty->asTabDelimitedStringWithOptions(nullptr),
      std::string(kHeader) + "\n02/03/25\t\tStarting Balance\t\t\tYes\t\t0.00\t\t\t\t0.00\t\n");
  CalendarDate::overrideNow(std::nullopt);
}

}  // namespace
}  // namespace tarn
