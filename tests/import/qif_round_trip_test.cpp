// The QIF reader takes back what the account's QIF export writes: generated
// accounts are exported and read again, and every entry compared field by
// field, under both year formats of the reader.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "account/account_test_support.h"
#include "import/import_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/export_options.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/import/qif_import.h"

namespace tarn {
namespace {

using plist::Array;
using plist::Value;

using testing::Key;

const char* const kTexts[] = {"",
                              "Market",
                              "Caf\u00e9 M\u00fcller & S\u00f6hne",
                              "\u6771\u4eac",
                              "\u0395\u03bb\u03bb\u03ac\u03b4\u03b1",
                              " spaced ",
                              "Tab\there",
                              "\U0001F600 smile",
                              "a/b (c) [d] 50%"};

struct GeneratedAccount {
  InMemoryAccountsController controller;
  std::shared_ptr<TARNAccount> account = testing::SignedInAccount();
  std::vector<std::shared_ptr<TARNAccountEntryCategory>> categories;

  GeneratedAccount(std::mt19937& random, int year) {
    controller.categories() = {
        testing::MakeCategory("Home", 1, {testing::MakeCategory("R\u00e9novation", 2)}),
        testing::MakeCategory("Food", 3), testing::MakeCategory("\u00c9pargne", 4)};
    categories = controller.allCategories();
    account->setAccountsController(&controller);
    account->SetName(std::string("Compte ch\u00e8que"));
    account->SetStartingBalance(250.0);

    // Every day of the year, and some days twice.
    const CalendarDate first(year, 1, 1);
    const int days = CalendarDate(year + 1, 1, 1).daysSince1970() - first.daysSince1970();
    std::int32_t number = 0;
    for (int day = 0; day < days + 60; ++day) {
      const DateNumber date =
          first.dateByAddingYears(0, 0, day < days ? day : static_cast<int>(random() % days))
              .dateNumber();
      auto entry = std::make_shared<TARNAccountEntry>();
      entry->SetNumber(number);
      entry->SetDate(date);
      const double cents = static_cast<double>(static_cast<int>(random() % 2000000) - 1000000);
      entry->SetAmount(cents / 100.0);
      if (cents < 0) {
        entry->SetIsDebit(true);
      } else {
        entry->SetIsDeposit(true);
      }
      if (cents < 0 && random() % 3 == 0) {
        entry->SetIsCheck(true);
        entry->SetCheckNumber(static_cast<std::int32_t>(1000 + number));
      }
      entry->SetToFrom(std::string(kTexts[random() % std::size(kTexts)]));
      // The memo carries the entry number, so the test can find it again.
      entry->SetDescription(std::string(kTexts[random() % std::size(kTexts)]) + " #" +
                            std::to_string(number));
      entry->SetCleared(random() % 2);
      entry->SetCategory(random() % 5 == 0 ? 42 : 1 + static_cast<std::int32_t>(random() % 4));
      if (random() % 10 == 0) {
        const int lines = 1 + static_cast<int>(random() % 4);
        for (int line = 0; line < lines; ++line) {
          const double split = static_cast<double>(static_cast<int>(random() % 20000) - 5000);
          entry->addSplitLineItemWithCategory(1 + static_cast<std::int32_t>(random() % 5),
                                              kTexts[random() % std::size(kTexts)], "",
                                              split / 100.0);
        }
      }
      account->AddEntry(entry);
      ++number;
    }
  }

  std::string categoryName(std::int32_t number, bool full) const {
    for (const auto& category : categories) {
      if (category->number() == number) return full ? category->fullName() : category->name();
    }
    return "";
  }
};

void ExpectRoundTrip(const GeneratedAccount& generated, const TARNExportOptions& options,
                     const std::string& readFormat) {
  TARNQIFImport importer;
  importer.SetDateFormat(readFormat);
  importer.SetDataString(generated.account->asQIFStringWithOptions(&options));
  const plist::Dictionary parsed = importer.parse();
  const Array& entries = parsed.at("entries").arrayValue();
  const TARNAccount& account = *generated.account;
  ASSERT_EQ(entries.size(), account.GetEntries().size() + 1);  // the starting balance first
  EXPECT_EQ(Key(entries[0], "amount").doubleValue(), 250.0);

  const Array& accounts = parsed.at("accounts").arrayValue();
  ASSERT_EQ(accounts.size(), 1u);
  EXPECT_EQ(Key(accounts[0], "name").stringValue(), account.GetName());
  EXPECT_EQ(Key(accounts[0], "entries").arrayValue(), entries);

  std::map<std::int32_t, const TARNAccountEntry*> byNumber;
  for (const auto& entry : account.GetEntries()) byNumber[entry->GetNumber()] = entry.get();
  for (std::size_t i = 1; i < entries.size(); ++i) {
    const Value& read = entries[i];
    const std::string& memo = Key(read, "description").stringValue();
    const std::int32_t number = std::stoi(memo.substr(memo.rfind('#') + 1));
    const TARNAccountEntry& entry = *byNumber.at(number);
    SCOPED_TRACE("entry " + std::to_string(number));
    EXPECT_EQ(Key(read, "date").intValue(), entry.GetDate());
    if (entry.splitLineItems().empty()) {
      EXPECT_EQ(Key(read, "amount").doubleValue(), entry.GetAmount());
    } else {  // the split total, written to the cent
      EXPECT_NEAR(Key(read, "amount").doubleValue(), entry.GetAmount(), 0.005);
    }
    EXPECT_EQ(Key(read, "toFrom").stringValue(), entry.GetToFrom());
    EXPECT_EQ(memo, entry.GetDescription());
    EXPECT_EQ(Key(read, "category").stringValue(),
              generated.categoryName(entry.GetCategory(), true));
    EXPECT_EQ(Key(read, "cleared").boolValue(), entry.GetCleared() != 0);
    if (entry.GetCheckNumber() >= 0) {
      EXPECT_EQ(Key(read, "number"), Value(entry.GetCheckNumber()));
    } else {
      EXPECT_TRUE(Key(read, "number").isNil());
    }
    const Array& splits = Key(read, "splits").arrayValue();
    ASSERT_EQ(splits.size(), entry.splitLineItems().size());
    for (std::size_t s = 0; s < splits.size(); ++s) {
      const auto& item = *entry.splitLineItems()[s];
      EXPECT_EQ(Key(splits[s], "amount").doubleValue(), item.amount());
      EXPECT_EQ(Key(splits[s], "category").stringValue(),
                generated.categoryName(item.category(), false));
      EXPECT_EQ(Key(splits[s], "description").stringValue(), item.description());
    }
  }
}

TEST(QIFRoundTrip, ExportedAccountsReadBackUnderBothYearFormats) {
  std::mt19937 random(2024);
  for (int year : {1970, 1999, 2000, 2024, 2068}) {
    SCOPED_TRACE("year " + std::to_string(year));
    const GeneratedAccount generated(random, year);
    TARNExportOptions options;  // four-digit years, "\n", "*"
    ExpectRoundTrip(generated, options, "%m/%d/%y");
    ExpectRoundTrip(generated, options, "%m/%d/%Y");
    options.lineEnding = "\r\n";
    options.resolvedMeansReconciled = true;
    options.dateFormat = "%d/%m/%Y";
    ExpectRoundTrip(generated, options, "%d/%m/%y");
    options.lineEnding = "\r";
    options.dateFormat = "%m/%d/%y";  // two-digit years both ways
    ExpectRoundTrip(generated, options, "%m/%d/%y");
  }
  // Four-digit years outside the two-digit window come back only whole.
  const GeneratedAccount old(random, 1900);
  ExpectRoundTrip(old, TARNExportOptions(), "%m/%d/%Y");
}

}  // namespace
}  // namespace tarn
