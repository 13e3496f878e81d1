#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "account/export_test_ledger.h"
#include "tarn/account/account.h"
#include "tarn/account/export_options.h"
#include "tarn/filters/filter.h"
#include "tarn/filters/filter_codes.h"
#include "tarn/filters/filter_condition_group.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {
namespace {

using testing_support::ExportLedger;

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
  auto empty = testing_support::SignedInAccount();
  empty->SetName(std::string("New"));
  empty->SetStartingBalance(-2.5);
  EXPECT_EQ(empty->asQIFStringWithOptions(nullptr),
            "!Account\nNNew\nTBank\nB-2.50\n^\n!Type:Bank\nD02/03/2025\nMStarting Balance\n"
            "T-2.50\nC*\n^\n");
  CalendarDate::overrideNow(std::nullopt);
}

}  // namespace
}  // namespace tarn
