// Undoing an import or a scheduled entry through the parts it touched must
// leave the book exactly as the whole-book copy would: each test runs the
// same steps on two copies of the sample household, one undone with
// AccountChange and one with BookContents, and compares the books' whole
// dictionaries after every step.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "book/book_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/book/book.h"
#include "tarn/book/book_changes.h"
#include "tarn/book/due_schedules.h"
#include "tarn/book/import_review.h"
#include "tarn/book/sample_book.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/schedule_recurrence.h"
#include "tarn/platform/value.h"

namespace tarn {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;

Value Entry(double amount, DateNumber date, const std::string& payee, const std::string& fitID,
            const std::string& type = "", const std::string& category = "") {
  Dictionary entry;
  entry["amount"] = Value(amount);
  entry["isDeposit"] = Value(amount > 0);
  entry["date"] = Value(static_cast<std::int64_t>(date));
  entry["toFrom"] = Value(payee);
  if (!fitID.empty()) entry["fitID"] = Value(fitID);
  if (!type.empty()) entry["type"] = Value(type);
  if (!category.empty()) entry["category"] = Value(category);
  return Value(std::move(entry));
}

// Two identical books: `parts` is undone by AccountChange, `whole` by
// BookContents.
class AccountChangeTest : public testing::QuietDayTest {
 protected:
  AccountChangeTest() {
    SampleBookOptions options;
    options.years = 1;
    parts_ = MakeSampleBook(options);
    whole_ = MakeSampleBook(options);
  }

  void ExpectSame(const char* step) const {
    EXPECT_TRUE(parts_->asDictionary() == whole_->asDictionary()) << step;
  }

  std::unique_ptr<TARNBook> parts_;
  std::unique_ptr<TARNBook> whole_;
};

// An import into `account` of `book`: new and existing types, new nested and
// top-level categories, an identifier remembered before, one repeated in
// the file and one entry matching an existing one.
std::vector<EntryKey> Import(TARNBook& book, TARNAccount& account,
                             std::optional<AccountChange>* change, Value* before) {
  const auto& existing = *account.GetEntries().front();
  TARNImportReview review(book, account, ImportFormat::OFX, {});
  review.addEntries({
      Entry(-12.5, 20261102, "Bakery", "OLD-1"),
      Entry(-40, 20261103, "Hardware Barn", "N-1", "Card Swipe", "Home:Tools"),
      Entry(-41, 20261104, "Hardware Barn", "N-2", "card swipe", "Home:Tools:Power"),
      Entry(-41, 20261104, "Hardware Barn", "N-2"),
      Entry(900, 20261105, "Acme", "N-3", "Bonus", "Zeta Income:Bonus"),
      Entry(existing.GetAmount(), existing.GetDate(), existing.GetToFrom(), ""),
      Entry(-3, 20261106, "Parking", "", "", "Home"),
  });
  // The host stores the options outside the change.
  review.storeOptions();
  if (before) *before = book.asDictionary();
  if (change) change->emplace(BeforeImport(book, account.GetNumber(), review));
  std::vector<EntryKey> added;
  for (const auto& entry : review.accept())
    added.push_back({account.GetNumber(), entry->GetNumber()});
  return added;
}

TEST_F(AccountChangeTest, ImportUndoneAndRedoneMatchesTheWholeBookCopy) {
  // Imported entries go into the selected folder when there is one.
  std::shared_ptr<TARNAccount> withFolder;
  for (const auto& account : parts_->accounts()) {
    if (!account->folders().empty()) withFolder = account;
  }
  ASSERT_TRUE(withFolder) << "the sample book has no folder";
  auto& partsAccount = *withFolder;
  auto& wholeAccount = *whole_->accountWithNumber(partsAccount.GetNumber());
  for (auto* account : {&partsAccount, &wholeAccount})
    account->setFolder(account->folders().front());
  const std::size_t typesBefore = partsAccount.types().size();
  const std::size_t inFolderBefore = partsAccount.folders().front()->entries().size();

  for (auto* book : {parts_.get(), whole_.get()}) {
    book->rememberImportedIdentifier(partsAccount.GetNumber(), "OLD-1");
  }
  Value original;
  std::optional<AccountChange> change;
  const auto added = Import(*parts_, partsAccount, &change, &original);
  ASSERT_TRUE(change);
  change->finish(*parts_, added);

  const BookContents wholeBefore(*whole_);
  const auto wholeAdded = Import(*whole_, wholeAccount, nullptr, nullptr);
  const BookContents wholeAfter(*whole_);
  const Value wholeImported = whole_->asDictionary();
  ExpectSame("imported");
  // The import did what the test means it to: entries, a type, categories.
  ASSERT_EQ(added.size(), wholeAdded.size());
  EXPECT_GE(added.size(), 4u);
  EXPECT_GT(partsAccount.types().size(), typesBefore);
  EXPECT_TRUE(parts_->categoryWithFullName("Home:Tools:Power"));
  EXPECT_TRUE(parts_->categoryWithFullName("Zeta Income:Bonus"));
  EXPECT_EQ(partsAccount.folders().front()->entries().size(), inFolderBefore + added.size());
  const Value imported = parts_->asDictionary();

  for (int round = 0; round < 2; ++round) {
    change->undo(*parts_);
    wholeBefore.restore(*whole_);
    ExpectSame("undone");
    EXPECT_TRUE(parts_->asDictionary() == original);
    EXPECT_FALSE(parts_->categoryWithFullName("Zeta Income"));
    // The identifier known before the import stays known; the new ones go.
    EXPECT_TRUE(parts_->importedIdentifiers(partsAccount.GetNumber()).count("OLD-1"));
    EXPECT_FALSE(parts_->importedIdentifiers(partsAccount.GetNumber()).count("N-2"));

    change->redo(*parts_);
    wholeAfter.restore(*whole_);
    // Reading a book back sorts each account's types by name, where the
    // import appended its new ones: the whole copy's redo differs from the
    // import in that order only, so the redo is held to the book as the
    // import left it.
    EXPECT_TRUE(parts_->asDictionary() == wholeImported);
    EXPECT_TRUE(parts_->asDictionary() == imported);
  }
  // What is kept is the import's: the added entries and short lists only.
  EXPECT_EQ(change->entries().after().size(), added.size());

  // A later import after the redo numbers its entries after the first.
  TARNImportReview later(*parts_, partsAccount, ImportFormat::OFX, {});
  later.addEntries({Entry(-7, 20261110, "Florist", "N-9")});
  const auto more = later.accept();
  ASSERT_EQ(more.size(), 1u);
  EXPECT_GT(more.front()->GetNumber(), added.back().entry);
}

TEST_F(AccountChangeTest, EnteringSkippingAndChangingSchedulesUndoLikeTheWholeBookCopy) {
  // The first account with occurrences due today.
  std::shared_ptr<TARNAccount> partsAccount;
  std::vector<DueOccurrence> due;
  for (const auto& account : parts_->accounts()) {
    due = DueOccurrences(*account, CalendarDate::now());
    if (due.size() >= 2) {
      partsAccount = account;
      break;
    }
  }
  ASSERT_TRUE(partsAccount) << "the sample book has no account with two due occurrences";
  const std::int32_t number = partsAccount->GetNumber();
  auto wholeAccount = whole_->accountWithNumber(number);

  // A schedule that ends after one occurrence leaves the list when entered.
  for (auto* account : {partsAccount.get(), wholeAccount.get()}) {
    auto once = std::make_shared<TARNAccountSchedule>();
    once->SetNumber(account->NextAvailableScheduleNumber());
    once->SetDate(20261120);
    once->SetAmount(-9.99);
    once->SetDescription("Trial subscription");
    once->SetRepeatIntervalType(kRepeatMonthly);
    once->SetRepeatUntilType(kRepeatUntilCount);
    once->SetRepeatUntil(1);
    account->AddSchedule(once);
  }
  due = DueOccurrences(*partsAccount, CalendarDate::now());

  const auto step = [&](const char* what, auto operation) {
    const Value original = parts_->asDictionary();
    AccountChange change(*parts_, number, {.schedules = true});
    const auto added = operation(*partsAccount);
    change.finish(*parts_, added);
    const BookContents wholeBefore(*whole_);
    // Restoring a whole book makes its accounts anew: look the account up.
    operation(*whole_->accountWithNumber(number));
    const BookContents wholeAfter(*whole_);
    ExpectSame(what);
    const Value changed = parts_->asDictionary();
    EXPECT_FALSE(changed == original) << what << ": the step changed nothing";

    change.undo(*parts_);
    wholeBefore.restore(*whole_);
    ExpectSame(what);
    EXPECT_TRUE(parts_->asDictionary() == original) << what;
    change.redo(*parts_);
    wholeAfter.restore(*whole_);
    ExpectSame(what);
    EXPECT_TRUE(parts_->asDictionary() == changed) << what;
  };

  const DueOccurrence first = due.front();
  step("enter", [&](TARNAccount& account) {
    auto entry = EnterOccurrence(account, first.schedule, first.date);
    return std::vector<EntryKey>{{account.GetNumber(), entry->GetNumber()}};
  });
  const DueOccurrence second = due[1];
  step("skip", [&](TARNAccount& account) {
    SkipOccurrence(account, second.schedule, second.date);
    return std::vector<EntryKey>{};
  });
  std::int32_t trial = -1;
  for (const auto& occurrence : DueOccurrences(*partsAccount, CalendarDate::now())) {
    if (occurrence.description == "Trial subscription") trial = occurrence.schedule;
  }
  ASSERT_GE(trial, 0);
  const std::size_t schedules = partsAccount->GetSchedules().size();
  step("enter the last", [&](TARNAccount& account) {
    auto entry = EnterOccurrence(account, trial, 20261120);
    return std::vector<EntryKey>{{account.GetNumber(), entry->GetNumber()}};
  });
  EXPECT_LE(partsAccount->GetSchedules().size(), schedules);
  step("change", [&](TARNAccount& account) {
    auto schedule = ScheduleWithNumber(account, first.schedule);
    schedule->SetRepeatIntervalType(kRepeatEveryNWeeks);
    schedule->SetRepeatInterval(3);
    schedule->SetUsePrecedingFriday(!schedule->GetUsePrecedingFriday());
    return std::vector<EntryKey>{};
  });
}

}  // namespace
}  // namespace tarn
