#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "account/export_test_ledger.h"
#include "tarn/account/account.h"
#include "tarn/account/export_options.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

using testing_support::ExportLedger;

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
  auto empty = testing_support::SignedInAccount();
  EXPECT_EQ(
      empty->asTabDelimitedStringWithOptions(nullptr),
      std::string(kHeader) + "\n02/03/25\t\tStarting Balance\t\t\tYes\t\t0.00\t\t\t\t0.00\t\n");
  CalendarDate::overrideNow(std::nullopt);
}

}  // namespace
}  // namespace tarn
