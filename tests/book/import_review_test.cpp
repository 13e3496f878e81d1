// The import review: duplicate matching (against a plain quadratic matcher on
// generated data), the marking of likely duplicates in a book's account, the
// matching of type and category texts, and acceptance.

#include "tarn/book/import_review.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>

#include "book/book_test_support.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

namespace tarn {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;

// The plain reading: each imported entry in turn takes, among the existing
// entries not yet taken, the one of the same amount, at most `window` days
// away and with a compatible payee, nearest in date, then earlier, then first.
std::vector<std::ptrdiff_t> QuadraticMatch(const std::vector<DuplicateKey>& imported,
                                           const std::vector<DuplicateKey>& existing,
                                           std::int64_t window) {
  std::vector<bool> taken(existing.size());
  std::vector<std::ptrdiff_t> result(imported.size(), -1);
  for (std::size_t i = 0; i < imported.size(); ++i) {
    std::ptrdiff_t best = -1;
    for (std::size_t e = 0; e < existing.size(); ++e) {
      const DuplicateKey& a = imported[i];
      const DuplicateKey& b = existing[e];
      if (taken[e] || a.cents != b.cents || std::llabs(a.day - b.day) > window) continue;
      if (!a.payee.empty() && !b.payee.empty() && a.payee != b.payee) continue;
      if (best < 0) {
        best = static_cast<std::ptrdiff_t>(e);
        continue;
      }
      const DuplicateKey& c = existing[static_cast<std::size_t>(best)];
      if (std::make_tuple(std::llabs(a.day - b.day), b.day) <
          std::make_tuple(std::llabs(a.day - c.day), c.day)) {
        best = static_cast<std::ptrdiff_t>(e);
      }
    }
    if (best >= 0) {
      result[i] = best;
      taken[static_cast<std::size_t>(best)] = true;
    }
  }
  return result;
}

TEST(DuplicateMatching, AgreesWithThePlainMatcherOnGeneratedData) {
  std::mt19937 random(2026);
  const std::vector<std::string> payees = {"", "", "corner grocer", "acme", "city vet"};
  // Few amounts and a short span of days, so that many entries compete for
  // the same existing ones; sizes from empty to a few hundred.
  for (int round = 0; round < 300; ++round) {
    const std::size_t existingCount = random() % 200;
    const std::size_t importedCount = random() % 120;
    const int amounts = 1 + static_cast<int>(random() % 6);
    const int span = 1 + static_cast<int>(random() % 40);
    const auto key = [&]() {
      return DuplicateKey{static_cast<std::int64_t>(random() % amounts) * 125 - 300,
                          static_cast<std::int64_t>(random() % span) + 19000,
                          payees[random() % payees.size()]};
    };
    std::vector<DuplicateKey> existing(existingCount), imported(importedCount);
    for (auto& each : existing) each = key();
    for (auto& each : imported) each = key();
    const std::int64_t window = round % 10 == 0 ? 0 : 3;
    ASSERT_EQ(MatchDuplicates(imported, existing, window),
              QuadraticMatch(imported, existing, window))
        << "round " << round;
  }
}

TEST(DuplicateMatching, EachExistingEntryMatchesOnceAndTheNearestDateWins) {
  const std::vector<DuplicateKey> existing = {
      {-7500, 100, "city vet"},  // 0
      {-7500, 103, ""},          // 1
      {-7500, 96, "other vet"},  // 2
      {1000, 100, ""},           // 3
  };
  const std::vector<DuplicateKey> imported = {
      {-7500, 102, "city vet"},  // nearest is 1 (one day), not 0 (two days)
      {-7500, 102, "city vet"},  // then 0; 2 has another payee
      {-7500, 102, "city vet"},  // nothing left
      {-7500, 99, ""},           // no payee: 2 (three days) is still free
      {1000, 104, ""},           // four days from 3: no match
  };
  EXPECT_EQ(MatchDuplicates(imported, existing), (std::vector<std::ptrdiff_t>{1, 0, -1, 2, -1}));
  // Equal distances: the earlier date first, then the existing entry listed first.
  EXPECT_EQ(MatchDuplicates({{5, 10, ""}}, {{5, 12, ""}, {5, 8, ""}, {5, 8, ""}}),
            (std::vector<std::ptrdiff_t>{1}));
}

TEST(DuplicateMatching, DayNumbersCountAcrossMonthsAndLeapYears) {
  EXPECT_EQ(DayOfDateNumber(19700101), 0);
  EXPECT_EQ(DayOfDateNumber(20240229) - DayOfDateNumber(20240228), 1);
  EXPECT_EQ(DayOfDateNumber(20240301) - DayOfDateNumber(20240229), 1);
  EXPECT_EQ(DayOfDateNumber(20230301) - DayOfDateNumber(20230228), 1);
  EXPECT_EQ(DayOfDateNumber(20270101) - DayOfDateNumber(20261231), 1);
  // Every day of four years in order, one apart.
  CalendarDate day(2023, 1, 1);
  for (int i = 0; i < 1461; ++i) {
    const CalendarDate next = day.dateByAddingYears(0, 0, 1, 0, 0, 0);
    ASSERT_EQ(DayOfDateNumber(next.dateNumber()) - DayOfDateNumber(day.dateNumber()), 1)
        << day.dateNumber();
    day = next;
  }
}

TEST(ImportCategoryPathTest, DropsClassesTransfersAndBlankParts) {
  EXPECT_EQ(ImportCategoryPath("Food:Groceries/Business"), "Food:Groceries");
  EXPECT_EQ(ImportCategoryPath("  Auto : Fuel "), "Auto:Fuel");
  EXPECT_EQ(ImportCategoryPath("[Savings]"), "");
  EXPECT_EQ(ImportCategoryPath("Food::Groceries"), "");
  EXPECT_EQ(ImportCategoryPath("Food:"), "");
  EXPECT_EQ(ImportCategoryPath(""), "");
}

Dictionary EntryDictionary(double amount, DateNumber date, const std::string& payee,
                           const std::string& fitID = "", const std::string& type = "",
                           const std::string& category = "") {
  Dictionary entry;
  entry["amount"] = Value(amount);
  entry["isDeposit"] = Value(amount > 0);
  entry["date"] = Value(static_cast<std::int64_t>(date));
  if (!payee.empty()) entry["toFrom"] = Value(payee);
  if (!fitID.empty()) entry["fitID"] = Value(fitID);
  if (!type.empty()) entry["type"] = Value(type);
  if (!category.empty()) entry["category"] = Value(category);
  return entry;
}

Value Entry(double amount, DateNumber date, const std::string& payee, const std::string& fitID = "",
            const std::string& type = "", const std::string& category = "") {
  return Value(EntryDictionary(amount, date, payee, fitID, type, category));
}

class ImportReviewTest : public testing::QuietDayTest {
 protected:
  void SetUp() override {
    account_ = book_.addAccount("Checking");
    book_.addCategoryPath("Food:Groceries");
  }

  std::shared_ptr<TARNAccountEntry> AddExisting(double amount, DateNumber date,
                                                const std::string& payee) {
    auto entry = std::make_shared<TARNAccountEntry>();
    entry->SetAmount(amount);
    entry->SetDate(date);
    entry->SetToFrom(payee);
    entry->SetNumber(account_->NextAvailableNumber());
    account_->AddEntry(entry);
    return entry;
  }

  TARNImportReview Review(const Array& entries, ImportFormat format = ImportFormat::OFX,
                          ImportFileOptions options = {}) {
    TARNImportReview review(book_, *account_, format, std::move(options));
    review.addEntries(entries);
    return review;
  }

  TARNBook book_;
  std::shared_ptr<TARNAccount> account_;
};

TEST_F(ImportReviewTest, MarksKnownIdentifiersRepeatsInTheFileAndMatchingEntries) {
  book_.rememberImportedIdentifier(account_->GetNumber(), "F1");
  const auto grocer = AddExisting(-54.2, 20260302, "Corner Grocer");
  const auto vet = AddExisting(-75, 20260314, "City Vet");
  const auto review = Review({
      Entry(-10, 20260301, "Bakery", "F1"),           // imported before
      Entry(-11, 20260301, "Bakery", "F2"),           // new
      Entry(-11, 20260301, "Bakery", "F2"),           // the same identifier again
      Entry(-54.2, 20260305, "corner grocer", "F3"),  // an identifier: never matched by amount
      Entry(-54.2, 20260304, "CORNER GROCER"),        // two days, payee in other letters
      Entry(-75, 20260311, "City Vet"),               // three days
      Entry(-75, 20260312, ""),                       // the vet entry is taken already
      Entry(-75, 20260318, "City Vet"),               // four days from it
  });
  const auto& items = review.items();
  ASSERT_EQ(items.size(), 8u);
  const std::vector<DuplicateReason> reasons = {
      DuplicateReason::ImportedBefore, DuplicateReason::None,         DuplicateReason::SameInFile,
      DuplicateReason::None,           DuplicateReason::MatchesEntry, DuplicateReason::MatchesEntry,
      DuplicateReason::None,           DuplicateReason::None};
  for (std::size_t i = 0; i < items.size(); ++i) {
    EXPECT_EQ(items[i].duplicate, reasons[i]) << i;
    EXPECT_EQ(items[i].entry->GetImport(), reasons[i] == DuplicateReason::None) << i;
  }
  EXPECT_EQ(items[4].matchedEntry, grocer->GetNumber());
  EXPECT_EQ(items[5].matchedEntry, vet->GetNumber());
  EXPECT_EQ(review.duplicateCount(), 4u);
  EXPECT_EQ(review.tickedCount(), 4u);
}

TEST_F(ImportReviewTest, MatchesTypesAndCategoriesByNameAndMakesMissingOnesOnlyOnAcceptance) {
  auto review = Review({
      Entry(-60, 20260312, "ATM Main St", "A1", "atm", "food:GROCERIES"),
      Entry(500, 20260313, "Acme", "A2", "Bonus", "Income:Bonus/Work"),
      Entry(250, 20260314, "Acme", "A3", "BONUS", "income:bonus"),
      Entry(-300, 20260315, "Savings", "A4", "", "[Savings]"),
  });
  auto& items = review.items();
  ASSERT_EQ(items.size(), 4u);
  ASSERT_TRUE(items[0].entry->GetActualType());
  EXPECT_EQ(items[0].entry->GetActualType()->GetName(), "ATM");
  EXPECT_FALSE(items[0].newType);
  ASSERT_TRUE(items[0].entry->GetActualCategory());
  EXPECT_EQ(items[0].entry->GetActualCategory()->fullName(), "Food:Groceries");
  EXPECT_EQ(items[0].entry->GetCategory(), items[0].entry->GetActualCategory()->number());
  EXPECT_TRUE(items[1].newType);
  EXPECT_TRUE(items[1].newCategory);
  EXPECT_FALSE(items[3].newCategory);  // a transfer names an account, not a category
  // Nothing is made while the review is open.
  EXPECT_FALSE(book_.categoryWithFullName("Income:Bonus"));
  const std::size_t typesBefore = account_->types().size();

  review.tickOnly({1, 2, 3});
  const auto added = review.accept();
  ASSERT_EQ(added.size(), 3u);
  const auto bonus = book_.categoryWithFullName("Income:Bonus");
  ASSERT_TRUE(bonus);
  EXPECT_EQ(added[0]->GetCategory(), bonus->number());
  EXPECT_EQ(added[1]->GetCategory(), bonus->number());
  // One new type for both entries that name it, numbered after the others.
  EXPECT_EQ(account_->types().size(), typesBefore + 1);
  EXPECT_EQ(added[0]->GetType(), added[1]->GetType());
  const auto type = account_->accountEntryTypeForNumber(added[0]->GetType());
  ASSERT_TRUE(type);
  EXPECT_EQ(type->GetName(), "Bonus");
  EXPECT_TRUE(type->GetIsDeposit());
  EXPECT_EQ(added[2]->GetCategory(), -1);
}

TEST_F(ImportReviewTest, AcceptanceAddsTheTickedEntriesRemembersIdentifiersAndStoresOptions) {
  AddExisting(-20, 20260301, "Old");
  ImportFileOptions options;
  options.ofx.swapMemo = 2;
  options.ofx.zeroAmountsAsDeposits = false;
  options.qif.swapToFrom = 0;  // not the format read: not stored
  auto review = Review(
      {Entry(-5, 20260310, "A", "X1"), Entry(-20, 20260302, "Old"), Entry(7.5, 20260311, "B")},
      ImportFormat::OFX, options);
  EXPECT_FALSE(review.tickOnly({0, 3}));
  EXPECT_EQ(review.tickedCount(), 2u);  // unchanged by the refused choice
  const std::int32_t before = account_->GetNumberCount();
  const QIFImportSettings qifBefore = account_->qifImportSettings();
  const auto added = review.accept();
  ASSERT_EQ(added.size(), 2u);
  EXPECT_EQ(added[0]->GetNumber(), before + 1);
  EXPECT_EQ(added[1]->GetNumber(), before + 2);
  EXPECT_EQ(added[1]->GetAmount(), 7.5);
  EXPECT_TRUE(added[1]->IsDeposit());
  // Plain entries in the account: the review's own objects stay with it.
  EXPECT_EQ(dynamic_cast<TARNImportEntry*>(added[0].get()), nullptr);
  EXPECT_EQ(added[0]->GetAccount(), account_.get());
  EXPECT_EQ(account_->GetEntries().size(), 3u);
  EXPECT_TRUE(book_.importedIdentifiers(account_->GetNumber()).count("X1"));
  EXPECT_EQ(account_->ofxImportSettings(), options.ofx);
  EXPECT_EQ(account_->qifImportSettings(), qifBefore);

  // The same statement again: all three are known now.
  const auto again = Review(
      {Entry(-5, 20260310, "A", "X1"), Entry(-20, 20260302, "Old"), Entry(7.5, 20260311, "B")});
  EXPECT_EQ(again.duplicateCount(), 3u);
  EXPECT_EQ(again.items()[0].duplicate, DuplicateReason::ImportedBefore);
}

TEST_F(ImportReviewTest, QifSplitsKeepTheirLinesAndCategories) {
  Dictionary split1, split2;
  split1["amount"] = Value(-80.0);
  split1["category"] = Value("Food:Groceries");
  split1["description"] = Value("Food");
  split2["amount"] = Value(std::string("-31.44"));
  split2["category"] = Value("Household");
  Dictionary entry = EntryDictionary(-111.44, 20260315, "Costco");
  entry["splits"] = Value(Array{Value(split1), Value(split2)});
  auto review = Review({Value(std::move(entry))}, ImportFormat::QIF);
  const auto& lines = review.items()[0].entry->splitLineItems();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0]->category(), book_.categoryWithFullName("Food:Groceries")->number());
  EXPECT_EQ(lines[1]->category(), -1);
  EXPECT_DOUBLE_EQ(lines[1]->amount(), -31.44);
  const auto added = review.accept();
  ASSERT_EQ(added.size(), 1u);
  ASSERT_TRUE(book_.categoryWithFullName("Household"));
  EXPECT_EQ(added[0]->splitLineItems()[1]->category(),
            book_.categoryWithFullName("Household")->number());
  EXPECT_DOUBLE_EQ(added[0]->GetAmount(), -111.44);
}

}  // namespace
}  // namespace tarn
