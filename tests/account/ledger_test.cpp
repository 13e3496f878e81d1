#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "account/ledger_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/model/schedule_recurrence.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {
namespace {

using testing_support::Add;
using testing_support::Check;
using testing_support::Kind;
using testing_support::MakeEntry;
using testing_support::SignedInAccount;
using Strings = TARNAccount::Strings;
using V = std::vector<std::int32_t>;

V Numbers(const TARNAccount::Entries& entries) {
  V numbers;
  for (const auto& entry : entries) numbers.push_back(entry->GetNumber());
  return numbers;
}

std::shared_ptr<TARNAccountEntryType> MakeType(const std::string& name, std::int32_t number,
                                               bool deposit) {
  auto type = std::make_shared<TARNAccountEntryType>();
  type->SetName(name);
  type->SetNumber(number);
  type->SetIsDeposit(deposit);
  return type;
}

// One busy day (5 January) between an earlier deposit and a later debit:
// checks 100 to 102 (102 void) and non-checks entered as 2, 5 and 6 (6 void).
struct BusyDay {
  std::shared_ptr<TARNAccount> account = SignedInAccount();
  std::shared_ptr<TARNAccountEntry> deposit, early, check101, check100, late, voided, after,
      voidCheck;

  BusyDay() {
    account->SetStartingBalance(1000.0);
    deposit =
        Add(*account, {.number = 1, .date = 20240101, .amount = 500.0, .kind = Kind::Deposit});
    early = Add(*account, {.number = 2, .date = 20240105, .amount = -20.0});
    check101 = Check(*account, 3, 101, 20240105, -30.0);
    check100 = Check(*account, 4, 100, 20240105, -40.0);
    late = Add(*account, {.number = 5, .date = 20240105, .amount = -50.0, .cleared = true});
    voided = Add(*account, {.number = 6, .date = 20240105, .amount = -60.0, .isVoid = true});
    after = Add(*account, {.number = 7, .date = 20240110, .amount = -70.0, .cleared = true});
    voidCheck = Add(*account, {.number = 8,
                               .date = 20240105,
                               .amount = -80.0,
                               .kind = Kind::Check,
                               .checkNumber = 102,
                               .isVoid = true});
  }
};

TEST(LedgerBalances, RunningBalanceAtEntryOrdersChecksAheadOfOtherEntriesOnTheDay) {
  BusyDay day;
  // In register order. A check sees only the day's checks up to its own
  // number; a non-check sees every check of the day, even one entered after
  // it. Void entries have a place in the order but add nothing, even their own.
  const std::pair<std::shared_ptr<TARNAccountEntry>, double> expected[] = {
      {day.deposit, 1500.0},   {day.check100, 1460.0}, {day.check101, 1430.0},
      {day.voidCheck, 1430.0}, {day.early, 1410.0},    {day.late, 1360.0},
      {day.voided, 1360.0},    {day.after, 1290.0}};
  for (const auto& [entry, balance] : expected) {
    EXPECT_DOUBLE_EQ(day.account->GetRunningBalanceAtEntry(entry.get()), balance)
        << entry->GetNumber();
  }
  EXPECT_DOUBLE_EQ(day.account->GetRunningBalanceAtEntry(nullptr), 0.0);
  for (const auto& entry : day.account->GetEntries()) entry->SetCachedRunningBalance(-1.0);
  day.account->CacheRunningBalances();
  for (const auto& [entry, balance] : expected) {
    EXPECT_DOUBLE_EQ(entry->GetCachedRunningBalance(), balance) << entry->GetNumber();
  }
}

TEST(LedgerBalances, BalancesAndTotalsLeaveVoidEntriesOut) {
  BusyDay day;
  TARNAccount& account = *day.account;
  EXPECT_DOUBLE_EQ(account.GetBalance(), 1290.0);
  EXPECT_DOUBLE_EQ(account.GetResolvedBalance(), 1000.0 - 50.0 - 70.0);
  EXPECT_DOUBLE_EQ(account.GetUnresolvedBalance(), 1290.0 - 880.0);
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceBeforeDate(20240105), 1500.0);
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceThroughDate(20240105), 1360.0);
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceThroughDate(20231231), 1000.0);
  EXPECT_DOUBLE_EQ(account.GetDebitsTotal(), -20.0 - 30.0 - 40.0 - 50.0 - 70.0);
  EXPECT_DOUBLE_EQ(account.GetDepositsTotal(), 500.0);
  CalendarDate::overrideNow(CalendarDate(2024, 1, 7));
  EXPECT_DOUBLE_EQ(account.GetTodaysBalance(), 1360.0);
  CalendarDate::overrideNow(std::nullopt);

  // Signed out, the balance hides; the others do not ask.
  auto locked = std::make_shared<TARNAccount>();
  locked->SetPassword(std::string("secret"));
  locked->SetStartingBalance(25.0);
  Add(*locked, {.number = 1, .amount = -5.0});
  EXPECT_DOUBLE_EQ(locked->GetBalance(), 0.0);
  EXPECT_DOUBLE_EQ(locked->GetRunningBalanceThroughDate(20991231), 20.0);
  EXPECT_TRUE(locked->Authenticate(std::string("secret")));
  EXPECT_DOUBLE_EQ(locked->GetBalance(), 20.0);
}

TEST(LedgerBalances, CachedAndSingleRunningBalancesAgreeOnARandomLedger) {
  auto account = SignedInAccount();
  account->SetStartingBalance(100.0);
  std::mt19937 random(7);
  std::int32_t nextCheck = 500;
  for (std::int32_t number = 1; number <= 200; ++number) {
    const DateNumber date = 20240101 + static_cast<DateNumber>(random() % 6);
    const double amount = static_cast<double>(static_cast<int>(random() % 20000) - 10000) / 100.0;
    const bool isVoid = random() % 7 == 0;
    // Check numbers are handed out out of order, as paper checks are.
    const std::int32_t checkNumber =
        random() % 3 == 0 ? nextCheck + static_cast<int>(random() % 5) : -1;
    if (checkNumber >= 0) nextCheck += 5;
    Add(*account, {.number = number,
                   .date = date,
                   .amount = amount,
                   .kind = checkNumber >= 0 ? Kind::Check : Kind::Debit,
                   .checkNumber = checkNumber,
                   .isVoid = isVoid});
  }
  account->CacheRunningBalances();
  for (const auto& entry : account->GetEntries()) {
    EXPECT_NEAR(entry->GetCachedRunningBalance(), account->GetRunningBalanceAtEntry(entry.get()),
                1e-6)
        << "entry " << entry->GetNumber();
  }
}

TEST(LedgerBalances, FoldersBelongToTheWorkingSet) {
  auto account = SignedInAccount();
  auto inRegister = Add(*account, {.number = 1, .amount = -10.0});
  auto folder = std::make_shared<TARNAccountFolder>();
  account->addFolder(folder);
  account->setFolder(folder);
  auto inFolder = Add(*account, {.number = 2, .amount = 4.0, .kind = Kind::Deposit});
  account->setFolder(nullptr);
  auto later = Add(*account, {.number = 3, .amount = -1.0});
  EXPECT_EQ(account->GetAllEntries(), (TARNAccount::Entries{inRegister, later, inFolder}));
  EXPECT_EQ(account->GetDebits(), (TARNAccount::Entries{inRegister, later}));
  EXPECT_EQ(account->GetDeposits(), (TARNAccount::Entries{inFolder}));
  EXPECT_DOUBLE_EQ(account->GetBalance(), -7.0);
  account->CacheRunningBalances();
  EXPECT_DOUBLE_EQ(inFolder->GetCachedRunningBalance(), -6.0);
}

TEST(LedgerLookups, EntriesByNumberDateAndEnteringOrder) {
  auto account = SignedInAccount();
  EXPECT_EQ(account->GetFirstEntry(), nullptr);
  EXPECT_EQ(account->GetLastEnteredCheck(), nullptr);
  auto a = Add(*account, {.number = 5, .date = 20240301});
  Add(*account, {.number = 2, .date = 20240101});
  auto c = Check(*account, 9, 100, 20240101);
  Check(*account, 3, 101, 20240301);  // same last date: a stays last
  auto folder = std::make_shared<TARNAccountFolder>();
  account->addFolder(folder);
  account->setFolder(folder);
  auto filed = Add(*account, {.number = 12, .date = 20230615});
  account->setFolder(nullptr);
  EXPECT_EQ(account->GetEntryWithNumber(9), c);
  EXPECT_EQ(account->GetEntryWithNumber(12), filed);
  EXPECT_EQ(account->GetEntryWithNumber(77), nullptr);
  EXPECT_EQ(account->GetFirstEntry(), filed);
  EXPECT_EQ(account->GetLastEntry(), a);
  EXPECT_EQ(account->GetLastEnteredEntry(), filed);
  EXPECT_EQ(account->GetLastEnteredCheck(), c);
}

TEST(LedgerLookups, TypesByNameAndDeactivation) {
  auto account = SignedInAccount();
  auto atm = MakeType("ATM", 1, false);
  auto payroll = MakeType("Payroll", 2, true);
  auto fee = MakeType("Fee", 3, false);
  auto oldFee = MakeType("Old", 4, false);
  auto refund = MakeType("Fee", 5, true);  // a deposit type with a debit type's name
  account->types() = {atm, payroll, fee, refund};
  account->inactiveTypes() = {oldFee};
  account->setDefaultDebitType(fee);
  account->setDefaultDepositType(payroll);
  EXPECT_EQ(account->debitEntryTypeForName("Fee"), fee);
  EXPECT_EQ(account->depositEntryTypeForName("Fee"), refund);
  EXPECT_EQ(account->debitEntryTypeForName("fee"), nullptr);  // exact match only
  EXPECT_EQ(account->debitEntryTypeForName("Old"), oldFee);   // inactive ones too
  EXPECT_EQ(account->GetDebitTypes(), (TARNAccount::Types{atm, fee}));

  account->deactivateType(fee);
  EXPECT_EQ(account->defaultDebitType(), nullptr);
  EXPECT_EQ(account->defaultDepositType(), payroll);
  EXPECT_EQ(account->types(), (TARNAccount::Types{atm, payroll, refund}));
  EXPECT_EQ(account->inactiveTypes(), (TARNAccount::Types{oldFee, fee}));
  EXPECT_EQ(account->accountEntryTypeForNumber(3), fee);  // still found by number

  auto rent = std::make_shared<TARNAccountEntryCategory>();
  rent->setNumber(8);
  account->categories().push_back(rent);
  account->deactivateCategory(rent);
  EXPECT_TRUE(account->categories().empty());
  EXPECT_EQ(account->inactiveCategories(), (TARNAccount::Categories{rent}));
  // With a controller, categories are the controller's.
  InMemoryAccountsController controller;
  auto shared = std::make_shared<TARNAccountEntryCategory>();
  shared->setNumber(8);
  controller.categories().push_back(shared);
  account->setAccountsController(&controller);
  EXPECT_EQ(account->accountEntryCategoryForNumber(8), shared);
  account->setAccountsController(nullptr);
}

TEST(LedgerLookups, PendingScheduledEntries) {
  CalendarDate::overrideNow(CalendarDate(2024, 3, 10));
  auto account = SignedInAccount();
  EXPECT_FALSE(account->HasPendingScheduledEntries());
  auto weekly = std::make_shared<TARNAccountSchedule>();
  weekly->SetDate(20240301);  // Friday: 1, 8 and 15 March
  weekly->SetRepeatIntervalType(kRepeatWeekly);
  account->AddSchedule(weekly);
  EXPECT_TRUE(account->HasPendingScheduledEntries());
  EXPECT_EQ(account->numberOfPendingScheduledEntriesForDate(CalendarDate(2024, 3, 10)), 2);
  EXPECT_EQ(account->numberOfPendingScheduledEntriesForDate(CalendarDate(2024, 3, 20)), 3);
  EXPECT_EQ(account->numberOfPendingScheduledEntriesForDate(std::nullopt), 0);
  weekly->AddCommittedDate(20240301);
  weekly->AddCommittedDate(20240308);
  EXPECT_FALSE(account->HasPendingScheduledEntries());
  CalendarDate::overrideNow(std::nullopt);
}

TEST(LedgerNumbering, EmptyAccountStartsAtTheStartingCheckNumber) {
  auto account = SignedInAccount();
  for (const auto& [start, highest] : {std::pair{1, 0}, {-1, -1}, {3000, 2999}}) {
    account->SetStartingCheckNumber(start);
    EXPECT_EQ(account->HighestCheckNumber(), highest);
    EXPECT_EQ(account->NextAvailableCheckNumber(), highest + 1);
    EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(nullptr), highest + 1);
  }
}

TEST(LedgerNumbering, GapsAmongChecks100_101_103) {
  auto account = SignedInAccount();
  // Entered out of order: the search sorts by check number.
  auto c103 = Check(*account, 1, 103);
  auto c100 = Check(*account, 2, 100);
  auto c101 = Check(*account, 3, 101);
  Add(*account, {.number = 4, .amount = -1.0});  // no check number
  EXPECT_EQ(account->HighestCheckNumber(), 103);
  EXPECT_EQ(account->NextAvailableCheckNumber(), 104);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(c100.get()), 102);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(c101.get()), 102);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(c103.get()), 104);
  for (const auto& [after, next] :
       {std::pair{100, 101}, {101, 103}, {103, 103}, {50, 100}, {500, 103}}) {
    EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(after), next) << after;
  }
  // Without a gap the walk runs to the end and steps past the highest.
  Check(*account, 5, 102);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(c100.get()), 104);
}

TEST(LedgerNumbering, LinkedDepositsStayOutOfCheckNumbering) {
  auto account = SignedInAccount();
  Check(*account, 1, 100);
  Check(*account, 2, 101);
  Check(*account, 3, 103);
  // The receiving halves of transfers carry the other account's check numbers.
  auto transfer =
      Add(*account, {.number = 4, .amount = 50.0, .kind = Kind::Deposit, .checkNumber = 99});
  transfer->SetIsLinked(true);
  transfer->SetIsCheck(true);
  Add(*account, {.number = 5, .amount = 50.0, .kind = Kind::Deposit, .checkNumber = 900})
      ->SetIsLinked(true);
  EXPECT_EQ(account->HighestCheckNumber(), 103);
  EXPECT_EQ(account->NextAvailableCheckNumber(), 104);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(50), 100);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(101), 103);
  // From a linked deposit no check moves the candidate: it stays its own number.
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(transfer.get()), 99);
  // A linked debit (the sending half) counts like any entry.
  Add(*account, {.number = 6, .amount = -5.0, .checkNumber = 950})->SetIsLinked(true);
  EXPECT_EQ(account->HighestCheckNumber(), 950);
}

TEST(LedgerNumbering, EntrySchedulesTypesAndCategoriesNumbers) {
  auto account = SignedInAccount();
  account->SetNumberCount(41);
  EXPECT_EQ(account->NextAvailableNumber(), 42);
  EXPECT_EQ(account->NextAvailableNumber(), 43);
  auto schedule = std::make_shared<TARNAccountSchedule>();
  schedule->SetNumber(7);
  account->AddSchedule(schedule);
  EXPECT_EQ(account->NextAvailableScheduleNumber(), 8);
  EXPECT_EQ(account->ScheduleForNumber(7), schedule);
  account->types() = {MakeType("a", -4, false)};
  EXPECT_EQ(account->nextAvailableTypeNumber(), 0);
  account->inactiveTypes().push_back(MakeType("b", 12, false));
  EXPECT_EQ(account->nextAvailableTypeNumber(), 13);
  auto parent = std::make_shared<TARNAccountEntryCategory>();
  parent->setNumber(3);
  auto child = std::make_shared<TARNAccountEntryCategory>();
  child->setNumber(9);
  parent->addChild(child);
  account->categories().push_back(parent);
  EXPECT_EQ(account->nextAvailableCategoryNumber(), 10);
}

TEST(LedgerSorting, ColumnsWithTiesBrokenByEntryNumber) {
  auto account = SignedInAccount();
  Add(*account, {.number = 4, .date = 20240102, .amount = -5.0, .description = "rent"});
  Add(*account, {.number = 2, .date = 20240101, .amount = -5.0, .description = "Rent"});
  Add(*account, {.number = 9,
                 .date = 20240101,
                 .amount = 7.0,
                 .kind = Kind::Deposit,
                 .description = "apples",
                 .cleared = true});
  Check(*account, 1, 300, 20240102, -1.0);
  Check(*account, 3, 200, 20240102, -2.0);
  account->SortBy(5, true);  // resolved first
  EXPECT_EQ(Numbers(account->GetEntries()).front(), 9);
  const std::tuple<int, bool, V> cases[] = {
      {1, false, {2, 9, 3, 1, 4}},  // date, then checks by number, then entry number
      {1, true, {4, 1, 3, 9, 2}},
      {3, false, {1, 3, 9, 2, 4}},  // "rent" and "Rent" tie: entry number decides
      {3, true, {4, 2, 9, 3, 1}},
      {4, false, {2, 4, 3, 1, 9}},   // the two -5.00 tie
      {0, false, {3, 1, 2, 4, 9}},   // checks first
      {99, true, {1, 2, 3, 4, 9}}};  // no such column: entry number only
  for (const auto& [column, descending, expected] : cases) {
    account->SortBy(column, descending);
    EXPECT_EQ(Numbers(account->GetEntries()), expected) << column << " " << descending;
  }
  // With a folder selected, the folder is sorted and the register kept.
  auto folder = std::make_shared<TARNAccountFolder>();
  folder->setEntries(
      {MakeEntry({.number = 8, .date = 20230101}), MakeEntry({.number = 6, .date = 20220101})});
  account->addFolder(folder);
  account->setFolder(folder);
  account->SortBy(1, false);
  EXPECT_EQ(Numbers(folder->entries()), (V{6, 8}));
  EXPECT_EQ(Numbers(account->GetEntries()), (V{1, 2, 3, 4, 9}));
}

TEST(LedgerSorting, ColumnsAgreeWithTheEntryComparatorsOnARandomRegister) {
  auto account = SignedInAccount();
  std::mt19937 random(11);
  const char* const texts[] = {"apple", "Apple", "Äpfel", "äPFEL", "b", "", "Straße", "STRASSE"};
  for (std::int32_t number = 0; number < 200; ++number) {
    const bool check = random() % 2 == 0;
    // Some entry numbers repeat, as in a damaged file: list order breaks the tie.
    Add(*account, {.number = number % 50 == 7 ? 7 : number,
                   .date = 20240101 + static_cast<DateNumber>(random() % 4),
                   .kind = check ? Kind::Check : Kind::Debit,
                   .checkNumber = static_cast<std::int32_t>(random() % 50) - (check ? 0 : 60),
                   .description = texts[random() % 8],
                   .toFrom = texts[random() % 8]});
  }
  using Comparator = int (TARNAccountEntry::*)(const TARNAccountEntry&) const;
  const std::pair<int, Comparator> columns[] = {
      {0, &TARNAccountEntry::CheckNumberIsGreaterThan},
      {1, &TARNAccountEntry::DatePrimaryCheckSecondaryIsGreaterThan},
      {3, &TARNAccountEntry::DescriptionIsGreaterThan},
      {6, &TARNAccountEntry::ToFromIsGreaterThan},
      {4, &TARNAccountEntry::AmountIsGreaterThan}};
  for (const auto& [column, compare] : columns) {
    for (const bool descending : {false, true}) {
      // What the comparators give: by entry number, then stably by the column.
      TARNAccount::Entries expected = account->GetEntries();
      std::stable_sort(expected.begin(), expected.end(),
                       [](const auto& a, const auto& b) { return a->NumberIsGreaterThan(*b) < 0; });
      std::stable_sort(expected.begin(), expected.end(), [&](const auto& a, const auto& b) {
        const int order = ((*a).*compare)(*b);
        return descending ? order > 0 : order < 0;
      });
      account->SortBy(column, descending);
      EXPECT_EQ(account->GetEntries(), expected) << "column " << column << " " << descending;
    }
  }
}

TEST(LedgerSorting, AccountsCompareByNameNumberAndBalance) {
  auto a = SignedInAccount();
  auto b = SignedInAccount();
  a->SetName(std::string("checking"));
  b->SetName(std::string("CHECKING"));
  a->SetNumber(2);
  b->SetNumber(1);
  a->SetStartingBalance(10.0);
  b->SetStartingBalance(3.0);
  EXPECT_EQ(a->NameIsGreaterThan(*b), 0);
  EXPECT_EQ(a->NumberIsGreaterThan(*b), 1);
  EXPECT_EQ(a->BalanceIsGreaterThan(*b), 1);
  EXPECT_EQ(a->BalanceIsGreaterThan_Reversed(*b), -1);
  // A signed-out account's balance reads 0.
  auto locked = std::make_shared<TARNAccount>();
  locked->SetPassword(std::string("x"));
  locked->SetStartingBalance(-5.0);
  EXPECT_EQ(locked->BalanceIsGreaterThan(*SignedInAccount()), 0);
}

TEST(LedgerPassword, SigningInAndOut) {
  auto account = std::make_shared<TARNAccount>();
  account->SetPassword(std::string("Secret"));
  EXPECT_FALSE(account->IsAuthenticated());
  EXPECT_FALSE(account->Authenticate(std::string("secret")));  // case matters
  EXPECT_FALSE(account->Authenticate(std::nullopt));
  EXPECT_TRUE(account->Authenticate(std::string("Secret")));
  // A wrong password after the right one leaves the account open.
  EXPECT_TRUE(account->Authenticate(std::string("wrong")));
  EXPECT_TRUE(account->IsAuthenticated());
  // Only nil closes it again.
  EXPECT_FALSE(account->Authenticate(std::nullopt));
  EXPECT_FALSE(account->IsAuthenticated());
  // nullopt does not change the password; the empty password opens at once.
  account->SetPassword(std::nullopt);
  EXPECT_EQ(account->GetPassword(), "Secret");
  account->SetPassword(std::string());
  EXPECT_FALSE(account->HasPassword());
  EXPECT_TRUE(account->IsAuthenticated());
}

TEST(LedgerSuggestions, AllListsAreDistinctCaseInsensitivelyAndSorted) {
  auto account = SignedInAccount();
  const std::tuple<Kind, const char*, const char*> entries[] = {
      {Kind::Debit, "groceries", "Corner Shop"},
      {Kind::Debit, "Rent", "landlord"},
      {Kind::Debit, "GROCERIES", ""},
      {Kind::Debit, "", "corner shop"},
      {Kind::Debit, "Straße", "Äpfel"},
      {Kind::Debit, "STRASSE", "äPFEL"},
      {Kind::Deposit, "Salary", "Employer"},
      {Kind::Deposit, "rent", "Tenant"}};
  std::int32_t number = 0;
  for (const auto& [kind, description, toFrom] : entries)
    Add(*account, {.number = ++number, .kind = kind, .description = description, .toFrom = toFrom});
  // The first spelling met is the one kept; empty texts never appear.
  EXPECT_EQ(account->DebitDescriptions_All(), (Strings{"groceries", "Rent", "Straße"}));
  EXPECT_EQ(account->Tos_All(), (Strings{"Corner Shop", "landlord", "Äpfel"}));
  EXPECT_EQ(account->DepositDescriptions_All(), (Strings{"rent", "Salary"}));
  EXPECT_EQ(account->Froms_All(), (Strings{"Employer", "Tenant"}));
}

TEST(LedgerSuggestions, SomeListsAreNewestFirstAndStopOneAfterTheCount) {
  auto account = SignedInAccount();
  // Entered out of list order: entry numbers say which is newest; a repeat does not count.
  const std::pair<int, const char*> entries[] = {{3, "three"}, {1, "one"}, {5, "five"},
                                                 {4, "FIVE"},  {2, "two"}, {6, "six"}};
  for (const auto& [number, description] : entries)
    Add(*account, {.number = number, .description = description});
  EXPECT_EQ(account->DebitDescriptions_Some(2), (Strings{"six", "five", "three"}));
  EXPECT_EQ(account->DebitDescriptions_Some(0), (Strings{"six"}));
  EXPECT_EQ(account->DebitDescriptions_Some(50), (Strings{"six", "five", "three", "two", "one"}));
  // Fifty-one out of sixty distinct payees with the default count.
  auto many = SignedInAccount();
  for (int i = 0; i < 60; ++i) {
    Add(*many, {.number = i, .kind = Kind::Deposit, .toFrom = "payer " + std::to_string(i)});
  }
  const Strings froms = many->Froms_Some(50);
  ASSERT_EQ(froms.size(), 51u);
  EXPECT_EQ(froms.front(), "payer 59");
  EXPECT_EQ(froms.back(), "payer 9");
  EXPECT_EQ(many->GetPreferredFroms(), froms);  // style 1 with 50 by default
}

TEST(LedgerSuggestions, NothingWhileSignedOut) {
  auto account = std::make_shared<TARNAccount>();
  account->SetPassword(std::string("pw"));
  Add(*account, {.number = 1, .description = "Rent", .toFrom = "Landlord"});
  Add(*account, {.number = 2, .kind = Kind::Deposit, .description = "Pay", .toFrom = "Boss"});
  account->SetPreferredTos(Strings{"Mine"});
  EXPECT_TRUE(account->DebitDescriptions_All().empty());
  EXPECT_TRUE(account->DepositDescriptions_All().empty());
  EXPECT_TRUE(account->Tos_All().empty());
  EXPECT_TRUE(account->Froms_All().empty());
  EXPECT_TRUE(account->Tos_Some(20).empty());
  EXPECT_TRUE(account->Froms_Some(5).empty());
  EXPECT_EQ(account->Tos_Specific(), Strings{"Mine"});  // the user's own list is not hidden
  account->Authenticate(std::string("pw"));
  EXPECT_EQ(account->Tos_All(), Strings{"Landlord"});
  EXPECT_EQ(account->Froms_Some(5), Strings{"Boss"});
}

TEST(LedgerSuggestions, PreferredListsFollowTheStyle) {
  auto account = SignedInAccount();
  Add(*account, {.number = 1, .description = "b", .toFrom = "y"});
  Add(*account, {.number = 2, .description = "a", .toFrom = "x"});
  Add(*account, {.number = 3, .description = "c", .toFrom = "z"});
  account->SetPreferredDebitDescriptions(Strings{"mine"});
  account->SetPreference_Descriptions_SomeSelection(1);
  const std::pair<int, std::optional<Strings>> styles[] = {
      {0, Strings{"a", "b", "c"}}, {1, Strings{"c", "a"}}, {2, Strings{"mine"}}, {3, std::nullopt}};
  for (const auto& [style, expected] : styles) {
    account->SetPreference_Descriptions_Style(style);
    EXPECT_EQ(account->GetPreferredDebitDescriptions(), expected) << style;
  }
  account->SetPreference_Descriptions_Style(2);
  EXPECT_EQ(account->GetPreferredDepositDescriptions(), std::nullopt);  // none stored
  // The party lists have their own style.
  account->SetPreference_ToFrom_Style(0);
  EXPECT_EQ(account->GetPreferredTos(), (Strings{"x", "y", "z"}));
  EXPECT_EQ(account->GetPreferredFroms(), Strings{});
}

TEST(LedgerSuggestions, ImportsFromAnotherAccount) {
  auto mine = SignedInAccount();
  auto theirs = std::make_shared<TARNAccount>();
  theirs->SetPassword(std::string("pw"));
  mine->types() = {MakeType("ATM", 0, false), MakeType("Deposit", 4, true)};
  theirs->types() = {MakeType("atm", 0, false), MakeType("Wire", 1, false),
                     MakeType("Deposit", 2, true), MakeType("ATM", 3, true)};
  mine->SetPreferredDebitDescriptions(Strings{"Rent"});
  theirs->SetPreferredDebitDescriptions(Strings{"rent", "Food", "food"});
  theirs->SetPreferredTos(Strings{"Shop"});
  mine->SetPreferredFroms(Strings{"Boss"});
  // Nothing from an account that is signed out (or from none).
  mine->importTypesFromAccount(theirs.get());
  mine->importDescriptionsFromAccount(theirs.get());
  mine->importToFromsFromAccount(nullptr);
  EXPECT_EQ(mine->types().size(), 2u);
  EXPECT_EQ(mine->preferredDebitDescriptions(), Strings{"Rent"});

  theirs->Authenticate(std::string("pw"));
  mine->importTypesFromAccount(theirs.get());
  // "atm" matches "ATM" of the same direction; a deposit "ATM" is new here.
  std::vector<std::tuple<std::string, bool, int>> types;
  for (const auto& type : mine->types())
    types.emplace_back(type->GetName(), type->GetIsDeposit(), type->GetNumber());
  EXPECT_EQ(types,
            (std::vector<std::tuple<std::string, bool, int>>{
                {"ATM", false, 0}, {"ATM", true, 6}, {"Deposit", true, 4}, {"Wire", false, 5}}));
  EXPECT_NE(mine->types()[3], theirs->types()[1]);  // a copy, not the other's record
  mine->importDescriptionsFromAccount(theirs.get());
  mine->importToFromsFromAccount(theirs.get());
  EXPECT_EQ(mine->preferredDebitDescriptions(), (Strings{"Rent", "Food"}));
  EXPECT_EQ(mine->preferredTos(), Strings{"Shop"});
  EXPECT_EQ(mine->preferredFroms(), Strings{"Boss"});
}

}  // namespace
}  // namespace tarn
