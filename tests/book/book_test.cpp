// The book: its file (round trips, backups, refusals, bare account files),
// its shared currencies and categories, transfers between its accounts, the
// lock that serialises changes, and the sample household.

#include "tarn/book/book.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include <unistd.h>

#include "book/book_test_support.h"
#include "tarn/account/account.h"
#include "tarn/book/book_entries.h"
#include "tarn/book/book_lock.h"
#include "tarn/book/book_progress.h"
#include "tarn/book/sample_book.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/error.h"
#include "tarn/platform/log.h"

namespace tarn {
namespace {

namespace fs = std::filesystem;

class BookTest : public testing::QuietDayTest {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("tarn_book_test_" + std::to_string(::getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }
  std::string path(const std::string& name) const { return (dir_ / name).string(); }
  static std::string contents(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  static std::unique_ptr<TARNBook> sample(std::int64_t entries = 0) {
    SampleBookOptions options;
    options.years = 1;
    options.entries = entries;
    return MakeSampleBook(options);
  }
  static std::shared_ptr<TARNAccountEntry> addEntry(TARNAccount& account, double amount) {
    auto entry = std::make_shared<TARNAccountEntry>();
    entry->SetNumber(account.NextAvailableNumber());
    entry->SetDate(20261120);
    entry->SetAmount(amount);
    amount < 0 ? entry->SetIsDebit(true) : entry->SetIsDeposit(true);
    account.AddEntry(entry);
    return entry;
  }

  fs::path dir_;
};

TEST_F(BookTest, SavedBooksReadBackWholeInBothFormats) {
  auto book = sample();
  book->rememberImportedIdentifier(0, "FITID-1");
  book->rememberImportedIdentifier(0, "FITID-2");
  const plist::Value written = book->asDictionary();
  for (auto format : {plist::Format::Binary, plist::Format::Xml}) {
    const std::string file = path(format == plist::Format::Xml ? "xml.tarn" : "binary.tarn");
    book->setFormat(format);
    book->saveAs(file);
    auto read = TARNBook::open(file);
    EXPECT_EQ(read->format(), format);
    EXPECT_EQ(read->asDictionary(), written);
    EXPECT_EQ(read->importedIdentifiers(0), (std::set<std::string>{"FITID-1", "FITID-2"}));
    EXPECT_TRUE(read->importedIdentifiers(1).empty());
    // Accounts share the book's currency objects, so a transfer between
    // them counts as one currency.
    EXPECT_EQ(read->accounts()[0]->currency(), read->accounts()[1]->currency());
    EXPECT_EQ(read->accounts()[0]->accountsController(), read.get());
  }
}

TEST_F(BookTest, SavingKeepsThePreviousFileAndNeverOverwritesAStranger) {
  auto book = sample();
  const std::string file = path("book.tarn");
  book->saveAs(file);
  const std::string first = contents(file);
  addEntry(*book->accounts()[0], -1.0);
  book->save();
  EXPECT_EQ(contents(TARNBook::BackupPath(file)), first);
  EXPECT_NE(contents(file), first);

  // A book that did not come from a file does not replace it.
  TARNBook other;
  EXPECT_THROW(other.saveAs(file), FileError);
  EXPECT_NE(contents(file), first);
}

TEST_F(BookTest, TellsWhenAnotherProgramChangedItsFileSinceReadOrWritten) {
  TARNBook unsaved;
  EXPECT_FALSE(unsaved.fileChangedOnDisk());
  const std::string file = path("shared.tarn");
  sample()->saveAs(file);
  auto mine = TARNBook::open(file);
  EXPECT_FALSE(mine->fileChangedOnDisk());
  EXPECT_EQ(mine->fileStamp(), TARNBook::StampOfFile(file));

  // Another program's save of the same size in the same second still
  // counts: the atomic save puts a new file under the name.
  auto theirs = TARNBook::open(file);
  theirs->save();
  EXPECT_TRUE(mine->fileChangedOnDisk());
  // Saving takes the new file as the book's own.
  addEntry(*mine->accounts()[0], -2.0);
  mine->save();
  EXPECT_FALSE(mine->fileChangedOnDisk());
  // A change in place (same file, other bytes) counts too, as does removal.
  { std::ofstream(file, std::ios::app) << ' '; }
  EXPECT_TRUE(mine->fileChangedOnDisk());
  mine->saveAs(path("moved.tarn"));
  EXPECT_FALSE(mine->fileChangedOnDisk());
  fs::remove(path("moved.tarn"));
  EXPECT_TRUE(mine->fileChangedOnDisk());
  EXPECT_EQ(TARNBook::StampOfFile(path("moved.tarn")), std::nullopt);
}

TEST_F(BookTest, FilesThatAreNoBookAreRefusedNamingTheFile) {
  auto expectRefused = [&](const std::string& name, const std::string& bytes,
                           const std::string& reason) {
    const std::string file = path(name);
    std::ofstream(file, std::ios::binary) << bytes;
    try {
      TARNBook::open(file);
      ADD_FAILURE() << name << " was read";
    } catch (const FileError& error) {
      EXPECT_EQ(error.path(), file);
      EXPECT_NE(error.reason().find(reason), std::string::npos) << error.reason();
    }
    EXPECT_EQ(contents(file), bytes);
  };
  EXPECT_THROW(TARNBook::open(path("missing.tarn")), FileError);
  expectRefused("text.tarn", "hello\n", "not a property list");
  expectRefused("array.plist", "<plist><array/></plist>", "not a Tarn book");
  expectRefused("later.plist",
                "<plist><dict><key>bookVersion</key><integer>99</integer></dict></plist>",
                "version 99");
  expectRefused("accounts.plist",
                "<plist><dict><key>bookVersion</key><integer>1</integer>"
                "<key>accounts</key><string>x</string></dict></plist>",
                "\"accounts\" is not an array");

  auto book = sample();
  book->saveAs(path("whole.tarn"));
  const std::string whole = contents(path("whole.tarn"));
  expectRefused("cut.tarn", whole.substr(0, whole.size() / 2), "truncated");
}

TEST_F(BookTest, BareAccountFilesOfOldVersionsOpenUpgradedAndSaveAsAccounts) {
  const std::string file = path("old.plist");
  fs::copy_file(TARN_TEST_DATA_DIR "/book/account_version6_seconds_dates.plist", file);
  auto book = TARNBook::open(file);
  ASSERT_TRUE(book->openedBareAccount());
  ASSERT_EQ(book->accounts().size(), 1u);
  auto& account = *book->accounts()[0];
  EXPECT_EQ(account.GetName(), "Old Checking");
  ASSERT_EQ(account.GetEntries().size(), 3u);
  EXPECT_EQ(account.GetEntries()[0]->GetDate(), 20070315);
  EXPECT_EQ(account.GetEntries()[2]->splitLineItems().size(), 2u);
  EXPECT_DOUBLE_EQ(account.GetBalance(), 257.50);

  book->save();
  const plist::Value saved = plist::ReadFile(file);
  EXPECT_EQ(saved.find("accounts"), nullptr);
  ASSERT_NE(saved.find("version"), nullptr);
  EXPECT_EQ(saved.find("version")->intValue(), 8);
}

TEST_F(BookTest, CurrencyCodesAreThreeCharactersAndUniqueRegardlessOfCase) {
  TARNBook book;
  EXPECT_EQ(book.currencyWithCode("usd"), book.currency());
  EXPECT_TRUE(book.currencyCodeProblem("USD", nullptr).has_value());
  EXPECT_TRUE(book.currencyCodeProblem("usd", nullptr).has_value());
  EXPECT_FALSE(book.currencyCodeProblem("usd", book.currency().get()).has_value());
  EXPECT_TRUE(book.currencyCodeProblem("EURO", nullptr).has_value());
  EXPECT_TRUE(book.currencyCodeProblem("EU", nullptr).has_value());
  EXPECT_FALSE(book.currencyCodeProblem("€UR", nullptr).has_value());
  auto euro = std::make_shared<PFCurrency>();
  euro->setCode("EUR");
  book.addCurrency(euro);
  auto again = std::make_shared<PFCurrency>();
  again->setCode("eur");
  EXPECT_THROW(book.addCurrency(again), std::invalid_argument);
  EXPECT_EQ(book.currencies().size(), 2u);
}

TEST_F(BookTest, CategoryPathsAreFoundOrMadeAndRemovalMovesEveryUse) {
  TARNBook book;
  auto fuel = book.addCategoryPath("Auto:Fuel");
  EXPECT_EQ(fuel->fullName(), "Auto:Fuel");
  EXPECT_EQ(book.addCategoryPath("auto:FUEL"), fuel);
  auto repairs = book.addCategoryPath("Auto:Repairs");
  EXPECT_EQ(repairs->parent(), fuel->parent());
  auto travel = book.addCategoryPath("Travel");
  EXPECT_EQ(book.categoryWithFullName("AUTO:repairs"), repairs);
  EXPECT_EQ(book.categoryWithNumber(travel->number()), travel);
  EXPECT_THROW(book.addCategoryPath("Auto::Oil"), std::invalid_argument);
  EXPECT_THROW(book.renameCategory(*repairs, "fuel"), std::invalid_argument);
  book.renameCategory(*repairs, "Service");
  EXPECT_EQ(book.categoryWithFullName("Auto:Service"), repairs);

  auto account = book.addAccount("Checking");
  auto plain = addEntry(*account, -40);
  plain->SetCategory(fuel->number());
  auto split = addEntry(*account, 0);
  split->addSplitLineItemWithCategory(repairs->number(), "", "", -10);
  split->addSplitLineItemWithCategory(travel->number(), "", "", -5);
  auto schedule = std::make_shared<TARNAccountSchedule>();
  schedule->SetCategory(fuel->number());
  account->AddSchedule(schedule);
  EXPECT_EQ(book.categoryUseCount(*fuel->parent()), 3u);

  auto autoCategory = book.categoryWithFullName("Auto");
  EXPECT_THROW(book.removeCategory(autoCategory, fuel.get()), std::invalid_argument);
  EXPECT_EQ(book.removeCategory(autoCategory, travel.get()), 3u);
  EXPECT_EQ(plain->GetCategory(), travel->number());
  EXPECT_EQ(split->splitLineItems()[0]->category(), travel->number());
  EXPECT_EQ(schedule->GetCategory(), travel->number());
  EXPECT_EQ(book.categoryWithFullName("Auto"), nullptr);
  EXPECT_EQ(book.allCategories().size(), 1u);
}

TEST_F(BookTest, TransfersKeepBothHalvesLinkedAndInStep) {
  TARNBook book;
  auto checking = book.addAccount("Checking");
  auto savings = book.addAccount("Savings");
  EXPECT_THROW(book.addAccount("savings"), std::invalid_argument);
  auto entry = addEntry(*checking, -250);
  auto mirror = LinkTransfer(book, *checking, entry, *savings, std::nullopt);
  EXPECT_DOUBLE_EQ(mirror->GetAmount(), 250);
  EXPECT_TRUE(mirror->IsDeposit());
  EXPECT_EQ(LinkedEntry(book, *entry), mirror);
  EXPECT_EQ(LinkedEntry(book, *mirror), entry);
  EXPECT_EQ(mirror->GetToFrom(), "Checking");
  EXPECT_DOUBLE_EQ(checking->GetBalance() + savings->GetBalance(), 0);

  entry->SetAmount(-300);
  entry->SetDate(20261121);
  entry->SetVoid(true);
  SyncTransfer(book, *entry);
  EXPECT_DOUBLE_EQ(mirror->GetAmount(), 300);
  EXPECT_EQ(mirror->GetDate(), 20261121);
  EXPECT_TRUE(mirror->GetVoid());

  // Between currencies each half keeps its own amount.
  auto euro = std::make_shared<PFCurrency>();
  euro->setCode("EUR");
  euro->setRate(1.25);
  book.addCurrency(euro);
  auto abroad = book.addAccount("Abroad");
  abroad->setCurrency(euro);
  auto payment = addEntry(*checking, -100);
  auto converted = LinkTransfer(book, *checking, payment, *abroad, std::nullopt);
  EXPECT_DOUBLE_EQ(converted->GetAmount(), 80);
  auto exact = LinkTransfer(book, *checking, addEntry(*checking, -100), *abroad, 79.5);
  EXPECT_DOUBLE_EQ(exact->GetAmount(), 79.5);
  EXPECT_DOUBLE_EQ(exact->GetLinkedExchangedAmount(), -100);

  RemoveEntryAndTransfer(book, *checking, payment);
  EXPECT_EQ(checking->GetEntryWithNumber(payment->GetNumber()), nullptr);
  EXPECT_EQ(abroad->GetEntryWithNumber(converted->GetNumber()), nullptr);
  EXPECT_NE(abroad->GetEntryWithNumber(exact->GetNumber()), nullptr);
}

TEST_F(BookTest, ChangesUnderTheLockAllLand) {
  const std::string file = path("shared.tarn");
  {
    TARNBook book;
    book.addAccount("Checking");
    book.saveAs(file);
  }
  // Each writer reads, adds and saves under the lock, as a command does;
  // without the lock, writers that read the same state lose each other's
  // entries.
  constexpr int kWriters = 4;
  constexpr int kRounds = 5;
  std::vector<std::thread> writers;
  for (int w = 0; w < kWriters; ++w) {
    writers.emplace_back([&]() {
      for (int round = 0; round < kRounds; ++round) {
        BookLock lock(file);
        auto book = TARNBook::open(file);
        addEntry(*book->accounts()[0], -1);
        book->save();
      }
    });
  }
  for (auto& writer : writers) writer.join();
  auto book = TARNBook::open(file);
  EXPECT_EQ(book->accounts()[0]->GetEntries().size(), std::size_t{kWriters * kRounds});

  // A second holder waits for the first to let go.
  std::atomic<bool> released = false;
  auto first = std::make_unique<BookLock>(file);
  std::thread waiter([&]() {
    BookLock second(file);
    EXPECT_TRUE(released.load());
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  released = true;
  first.reset();
  waiter.join();
}

TEST_F(BookTest, TheSampleIsTheSameForTheSameOptionsAndPadsToACount) {
  EXPECT_EQ(sample()->asDictionary(), sample()->asDictionary());
  auto padded = sample(5000);
  std::size_t entries = 0;
  for (const auto& account : padded->accounts()) entries += account->GetAllEntries().size();
  EXPECT_EQ(entries, 5000u);
  // Every transfer has its other half.
  for (const auto& account : padded->accounts()) {
    for (const auto& entry : account->GetAllEntries()) {
      if (entry->IsLinked()) {
        EXPECT_NE(LinkedEntry(*padded, *entry), nullptr);
      }
    }
  }
}

// What a host showing progress hears: every step of opening, saving and
// making a sample, with counts that only grow and end at their totals, and
// the same book as without a handler.
TEST_F(BookTest, ProgressReportsEachStepUpToItsTotal) {
  struct Heard {
    std::string step, unit;
    std::uint64_t done, total;
  };
  std::vector<Heard> heard;
  auto listen = [&heard](const TARNBookProgress& progress) {
    heard.push_back(
        {std::string(progress.step), std::string(progress.unit), progress.done, progress.total});
  };
  // The counts of one step never go back and never pass the total; the step
  // ends at its total.
  auto checkSteps = [&heard]() {
    for (std::size_t i = 0; i < heard.size(); ++i) {
      SCOPED_TRACE(heard[i].step);
      EXPECT_LE(heard[i].done, heard[i].total);
      const bool last = i + 1 == heard.size() || heard[i + 1].step != heard[i].step;
      if (last) {
        EXPECT_EQ(heard[i].done, heard[i].total);
      } else {
        EXPECT_LE(heard[i].done, heard[i + 1].done);
      }
    }
  };

  SampleBookOptions options;
  options.years = 1;
  options.entries = 20000;
  options.progress = listen;
  auto made = MakeSampleBook(options);
  checkSteps();
  ASSERT_FALSE(heard.empty());
  EXPECT_EQ(heard.front().step, "Making the household's months");
  EXPECT_EQ(heard.back().step, "Making entries");
  EXPECT_GT(heard.size(), 3u) << "the padding reports as it goes, not only at the end";
  options.progress = nullptr;
  EXPECT_EQ(made->asDictionary(), MakeSampleBook(options)->asDictionary());

  // One of the accounts in a folder too: folder entries count as loaded.
  const std::string file = path("big.tarn");
  made->saveAs(file);
  heard.clear();
  auto book = TARNBook::open(file, listen);
  checkSteps();
  ASSERT_GE(heard.size(), 2u);
  EXPECT_EQ(heard.front().step, "Reading");
  EXPECT_EQ(heard.front().total, 0u) << "reading cannot say how far it is";
  EXPECT_EQ(heard.back().step, "Loading accounts");
  EXPECT_EQ(heard.back().unit, "entries");
  std::uint64_t entries = 0;
  for (const auto& account : book->accounts()) entries += account->GetAllEntries().size();
  EXPECT_EQ(heard.back().total, entries);
  // One report before the accounts and one after each.
  EXPECT_EQ(heard.size(), 2 + book->accounts().size());

  heard.clear();
  book->setProgressHandler(listen);
  book->save();
  ASSERT_FALSE(heard.empty());
  EXPECT_EQ(heard.back().step, "Writing");
  heard.pop_back();
  checkSteps();
  EXPECT_EQ(heard.back().step, "Preparing");
  EXPECT_EQ(heard.back().total, book->accounts().size());
  EXPECT_EQ(TARNBook::open(file)->asDictionary(), book->asDictionary());

  // A bare account file reports its one account's entries.
  const std::string old = path("old.plist");
  fs::copy_file(TARN_TEST_DATA_DIR "/book/account_version6_seconds_dates.plist", old);
  heard.clear();
  TARNBook::open(old, listen);
  checkSteps();
  EXPECT_EQ(heard.back().step, "Loading accounts");
  EXPECT_EQ(heard.back().total, 3u);
}

// Currency dictionaries that lack their code (here in the book's list and in
// both accounts) read as the default code: the accounts share the book's
// currency of that code instead of each adding a twin, so the codes stay
// unique and a second open and save gives the same book.
TEST_F(BookTest, CurrenciesWithoutACodeAreSharedNotDuplicated) {
  auto original = sample();
  plist::Value dictionary = original->asDictionary();
  auto& root = dictionary.mutableDictionary();
  for (auto& currency : root.at("currencies").mutableArray()) {
    currency.mutableDictionary().erase("code");
  }
  for (auto& account : root.at("accounts").mutableArray()) {
    account.mutableDictionary().at("currency").mutableDictionary().erase("code");
  }
  auto book = TARNBook::initWithDictionary(dictionary, "no codes");
  ASSERT_EQ(book->currencies().size(), 1u);
  for (const auto& account : book->accounts()) EXPECT_EQ(account->currency(), book->currency());
  const plist::Value saved = book->asDictionary();
  EXPECT_EQ(TARNBook::initWithDictionary(saved, "saved")->asDictionary(), saved);

  // The file the book fuzzer found it with (other keys damaged too).
  const std::string file = path("found.tarn");
  fs::copy_file(TARN_TEST_DATA_DIR "/book/book_currencies_without_code_mutated.tarn", file);
  auto found = TARNBook::open(file);
  EXPECT_EQ(found->currencies().size(), 1u);
  found->save();
  const plist::Value first = plist::ReadFile(file);
  TARNBook::open(file)->save();
  EXPECT_EQ(plist::ReadFile(file), first);
}

// An account's currency whose code is not three characters ("US Dollar") is
// kept in the book's list where it stands, so reopening the book does not
// move it behind the currencies of later accounts.
TEST_F(BookTest, ACurrencyWithAMalformedCodeKeepsItsPlaceAcrossSaves) {
  const std::string file = path("long_code.tarn");
  fs::copy_file(TARN_TEST_DATA_DIR "/book/book_account_currency_code_too_long.tarn", file);
  auto book = TARNBook::open(file);
  ASSERT_EQ(book->currencies().size(), 3u);
  EXPECT_EQ(book->currencies()[1]->code(), "US Dollar");
  book->save();
  const plist::Value first = plist::ReadFile(file);
  auto again = TARNBook::open(file);
  ASSERT_EQ(again->currencies().size(), 3u);
  EXPECT_EQ(again->currencies()[1]->code(), "US Dollar");
  again->save();
  EXPECT_EQ(plist::ReadFile(file), first);
}

}  // namespace
}  // namespace tarn
