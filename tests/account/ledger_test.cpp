#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "account_test_support.h"
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

using namespace testing;
using Strings = TARNAccount::Strings;
using V = std::vector<std::int32_t>;
using EntryPtr = std::shared_ptr<TARNAccountEntry>;

std::shared_ptr<TARNAccountEntryType> MakeType(const std::string& name, std::int32_t number,
                                               bool deposit) {
  auto type = std::make_shared<TARNAccountEntryType>();
  type->SetName(name);
  type->SetNumber(number);
  type->SetIsDeposit(deposit);
  return type;
}

std::shared_ptr<TARNAccountEntryCategory> MakeCategory(std::int32_t number) {
  auto category = std::make_shared<TARNAccountEntryCategory>();
  category->setNumber(number);
  return category;
}

// A deposit, then a busy 5 January: checks 100 to 102 (102 void) and non-checks
// entered as 2, 5 and 6 (6 void), then a later debit.
struct BusyDay {
  std::shared_ptr<TARNAccount> account = SignedInAccount();
  TARNAccount& a = *account;
  EntryPtr deposit = Add(a, 1, 20240101, 500.0), early = Add(a, 2, 20240105, -20.0),
           check101 = AddCheck(a, 3, 101, 20240105, -30.0),
           check100 = AddCheck(a, 4, 100, 20240105, -40.0), late = Add(a, 5, 20240105, -50.0),
           voided = Add(a, 6, 20240105, -60.0), after = Add(a, 7, 20240110, -70.0),
           voidCheck = AddCheck(a, 8, 102, 20240105, -80.0);
  BusyDay() {
    a.SetStartingBalance(1000.0);
    late->SetCleared(1);
    after->SetCleared(1);
    voided->SetVoid(true);
    voidCheck->SetVoid(true);
  }
};

TEST(LedgerBalances, RunningBalanceAtEntryOrdersChecksAheadOfOtherEntriesOnTheDay) {
  BusyDay day;
  // A check sees the day's checks up to its own number, a non-check every check
  // of the day; void entries take a place but add nothing.
  const std::pair<EntryPtr, double> expected[] = {{day.deposit, 1500.0},  {day.check100, 1460.0},
                                                  {day.check101, 1430.0}, {day.voidCheck, 1430.0},
                                                  {day.early, 1410.0},    {day.late, 1360.0},
                                                  {day.voided, 1360.0},   {day.after, 1290.0}};
  for (const auto& [entry, balance] : expected)
    EXPECT_DOUBLE_EQ(day.a.GetRunningBalanceAtEntry(entry.get()), balance) << entry->GetNumber();
  EXPECT_DOUBLE_EQ(day.a.GetRunningBalanceAtEntry(nullptr), 0.0);
  for (const auto& entry : day.a.GetEntries()) entry->SetCachedRunningBalance(-1.0);
  day.a.CacheRunningBalances();
  for (const auto& [entry, balance] : expected)
    EXPECT_DOUBLE_EQ(entry->GetCachedRunningBalance(), balance) << entry->GetNumber();
}

TEST(LedgerBalances, BalancesAndTotalsLeaveVoidEntriesOut) {
  BusyDay day;
  EXPECT_DOUBLE_EQ(day.a.GetBalance(), 1290.0);
  EXPECT_DOUBLE_EQ(day.a.GetResolvedBalance(), 1000.0 - 50.0 - 70.0);
  EXPECT_DOUBLE_EQ(day.a.GetUnresolvedBalance(), 1290.0 - 880.0);
  EXPECT_DOUBLE_EQ(day.a.GetRunningBalanceBeforeDate(20240105), 1500.0);
  EXPECT_DOUBLE_EQ(day.a.GetRunningBalanceThroughDate(20240105), 1360.0);
  EXPECT_DOUBLE_EQ(day.a.GetRunningBalanceThroughDate(20231231), 1000.0);
  EXPECT_DOUBLE_EQ(day.a.GetDebitsTotal(), -20.0 - 30.0 - 40.0 - 50.0 - 70.0);
  EXPECT_DOUBLE_EQ(day.a.GetDepositsTotal(), 500.0);
  PinnedClock clock(CalendarDate(2024, 1, 7));
  EXPECT_DOUBLE_EQ(day.a.GetTodaysBalance(), 1360.0);
}

TEST(LedgerBalances, CachedAndSingleRunningBalancesAgreeOnARandomLedger) {
  auto account = SignedInAccount();
  account->SetStartingBalance(100.0);
  std::mt19937 random(7);
  for (std::int32_t number = 1, nextCheck = 500; number <= 150; ++number) {
    const DateNumber date = 20240101 + static_cast<DateNumber>(random() % 6);
    auto entry = Add(*account, number, date, (static_cast<int>(random() % 20000) - 10000) / 100.0);
    entry->SetVoid(random() % 7 == 0);
    if (random() % 3 == 0) {  // check numbers handed out out of order
      entry->SetIsCheck(true);
      entry->SetCheckNumber(nextCheck + static_cast<std::int32_t>(random() % 5));
      nextCheck += 5;
    }
  }
  account->CacheRunningBalances();
  for (const auto& entry : account->GetEntries()) {
    EXPECT_NEAR(entry->GetCachedRunningBalance(), account->GetRunningBalanceAtEntry(entry.get()),
                1e-6)
        << entry->GetNumber();
  }
}

TEST(LedgerBalances, FoldersBelongToTheWorkingSet) {
  auto account = SignedInAccount();
  auto inRegister = Add(*account, 1, 20240101, -10.0);
  auto folder = std::make_shared<TARNAccountFolder>();
  account->addFolder(folder);
  account->setFolder(folder);
  auto inFolder = Add(*account, 2, 20240101, 4.0);
  account->setFolder(nullptr);
  auto later = Add(*account, 3, 20240101, -1.0);
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
  auto a = Add(*account, 5, 20240301, -1.0);
  Add(*account, 2, 20240101, -1.0);
  auto c = AddCheck(*account, 9, 100, 20240101);
  AddCheck(*account, 3, 101, 20240301);  // same last date: a stays last
  auto folder = std::make_shared<TARNAccountFolder>();
  account->addFolder(folder);
  account->setFolder(folder);
  auto filed = Add(*account, 12, 20230615, -1.0);
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
  auto atm = MakeType("ATM", 1, false), payroll = MakeType("Payroll", 2, true),
       fee = MakeType("Fee", 3, false), oldFee = MakeType("Old", 4, false),
       refund = MakeType("Fee", 5, true);
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
  EXPECT_EQ(account->accountEntryTypeForNumber(3), fee);

  auto rent = MakeCategory(8);
  account->categories().push_back(rent);
  account->deactivateCategory(rent);
  EXPECT_TRUE(account->categories().empty());
  EXPECT_EQ(account->inactiveCategories(), (TARNAccount::Categories{rent}));
  InMemoryAccountsController controller;  // with a controller, categories are its own
  auto shared = MakeCategory(8);
  controller.categories().push_back(shared);
  account->setAccountsController(&controller);
  EXPECT_EQ(account->accountEntryCategoryForNumber(8), shared);
  account->setAccountsController(nullptr);
}

TEST(LedgerLookups, PendingScheduledEntries) {
  PinnedClock clock(CalendarDate(2024, 3, 10));
  auto account = SignedInAccount();
  EXPECT_FALSE(account->HasPendingScheduledEntries());
  auto weekly = std::make_shared<TARNAccountSchedule>();
  weekly->SetDate(20240301);  // 1, 8 and 15 March
  weekly->SetRepeatIntervalType(kRepeatWeekly);
  account->AddSchedule(weekly);
  EXPECT_TRUE(account->HasPendingScheduledEntries());
  EXPECT_EQ(account->numberOfPendingScheduledEntriesForDate(CalendarDate(2024, 3, 10)), 2);
  EXPECT_EQ(account->numberOfPendingScheduledEntriesForDate(CalendarDate(2024, 3, 20)), 3);
  EXPECT_EQ(account->numberOfPendingScheduledEntriesForDate(std::nullopt), 0);
  weekly->AddCommittedDate(20240301);
  weekly->AddCommittedDate(20240308);
  EXPECT_FALSE(account->HasPendingScheduledEntries());
}

TEST(LedgerNumbering, CheckNumbersAroundTheGapIn100_101_103) {
  auto account = SignedInAccount();
  for (const auto& [start, highest] : {std::pair{3000, 2999}, {-1, -1}, {1, 0}}) {
    account->SetStartingCheckNumber(start);
    EXPECT_EQ(account->HighestCheckNumber(), highest);
    EXPECT_EQ(account->NextAvailableCheckNumber(), highest + 1);
    EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(nullptr), highest + 1);
  }
  auto c103 = AddCheck(*account, 1, 103);  // entered out of order
  auto c100 = AddCheck(*account, 2, 100);
  auto c101 = AddCheck(*account, 3, 101);
  Add(*account, 4, 20240101, -1.0);
  EXPECT_EQ(account->HighestCheckNumber(), 103);
  EXPECT_EQ(account->NextAvailableCheckNumber(), 104);
  const std::pair<EntryPtr, int> afterEntry[] = {{c100, 102}, {c101, 102}, {c103, 104}};
  for (const auto& [entry, next] : afterEntry)
    EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(entry.get()), next) << next;
  for (const auto& [after, next] :
       {std::pair{100, 101}, {101, 103}, {103, 103}, {50, 100}, {500, 103}})
    EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(after), next) << after;

  // The receiving halves of transfers carry the other account's check numbers.
  auto transfer = AddCheck(*account, 5, 99, 20240101, 50.0);
  transfer->SetIsLinked(true);
  Add(*account, 6, 20240101, 50.0)->SetIsLinked(true);
  account->GetEntryWithNumber(6)->SetCheckNumber(900);
  EXPECT_EQ(account->HighestCheckNumber(), 103);
  EXPECT_EQ(account->NextAvailableCheckNumber(), 104);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(50), 100);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(101), 103);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(transfer.get()), 99);
  // Without a gap the walk steps past the highest.
  AddCheck(*account, 7, 102);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(c100.get()), 104);
  // A linked debit (the sending half) counts like any entry.
  AddCheck(*account, 8, 950, 20240101, -5.0)->SetIsLinked(true);
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
  auto parent = MakeCategory(3);
  parent->addChild(MakeCategory(9));
  account->categories().push_back(parent);
  EXPECT_EQ(account->nextAvailableCategoryNumber(), 10);
}

TEST(LedgerSorting, ColumnsWithTiesBrokenByEntryNumber) {
  auto account = SignedInAccount();
  Add(*account, 4, 20240102, -5.0, "rent");
  Add(*account, 2, 20240101, -5.0, "Rent");
  Add(*account, 9, 20240101, 7.0, "apples")->SetCleared(1);
  AddCheck(*account, 1, 300, 20240102, -1.0);
  AddCheck(*account, 3, 200, 20240102, -2.0);
  account->SortBy(5, true);  // resolved first
  EXPECT_EQ(Numbers(account->GetEntries()).front(), 9);
  const std::tuple<int, bool, V> cases[] = {
      {1, false, {2, 9, 3, 1, 4}},  // date, then checks by number, then entry number
      {1, true, {4, 1, 3, 9, 2}},  {3, false, {1, 3, 9, 2, 4}},  // "rent" and "Rent" tie
      {3, true, {4, 2, 9, 3, 1}},  {4, false, {2, 4, 3, 1, 9}},  // the two -5.00 tie
      {0, false, {3, 1, 2, 4, 9}},                               // checks first
      {99, true, {1, 2, 3, 4, 9}}};  // no such column: entry number only
  for (const auto& [column, descending, expected] : cases) {
    account->SortBy(column, descending);
    EXPECT_EQ(Numbers(account->GetEntries()), expected) << column << " " << descending;
  }
  // With a folder selected, the folder is sorted and the register kept.
  auto folder = std::make_shared<TARNAccountFolder>();
  folder->setEntries({MakeEntry(8, 20230101, 0.0), MakeEntry(6, 20220101, 0.0)});
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
  for (std::int32_t number = 0; number < 150; ++number) {
    const DateNumber date = 20240101 + static_cast<DateNumber>(random() % 4);
    // Some entry numbers repeat, as in a damaged file: list order breaks the tie.
    auto entry = Add(*account, number % 50 == 7 ? 7 : number, date, 0.0, texts[random() % 8],
                     texts[random() % 8]);
    const bool check = random() % 2 == 0;
    entry->SetIsCheck(check);
    entry->SetCheckNumber(static_cast<std::int32_t>(random() % 50) - (check ? 0 : 60));
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
  auto a = SignedInAccount(), b = SignedInAccount();
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
}

TEST(LedgerPassword, SigningInAndOutAndWhatASignedOutAccountHides) {
  auto account = std::make_shared<TARNAccount>();
  account->SetPassword(std::string("Secret"));
  account->SetStartingBalance(25.0);
  Add(*account, 1, 20240101, -5.0, "Rent", "Landlord");
  Add(*account, 2, 20240101, 7.0, "Pay", "Boss");
  account->SetPreferredTos(Strings{"Mine"});
  EXPECT_FALSE(account->IsAuthenticated());
  EXPECT_DOUBLE_EQ(account->GetBalance(), 0.0);
  EXPECT_EQ(account->BalanceIsGreaterThan(*SignedInAccount()), 0);
  EXPECT_DOUBLE_EQ(account->GetRunningBalanceThroughDate(20991231), 27.0);  // does not ask
  EXPECT_EQ(
      (std::vector<Strings>{account->DebitDescriptions_All(), account->DepositDescriptions_All(),
                            account->Tos_All(), account->Froms_All(), account->Tos_Some(20),
                            account->Froms_Some(5)}),
      std::vector<Strings>(6));
  EXPECT_EQ(account->Tos_Specific(), Strings{"Mine"});  // the user's own list is not hidden
  EXPECT_FALSE(account->Authenticate(std::string("secret")));
  EXPECT_FALSE(account->Authenticate(std::nullopt));
  EXPECT_TRUE(account->Authenticate(std::string("Secret")));
  EXPECT_DOUBLE_EQ(account->GetBalance(), 27.0);
  EXPECT_EQ(account->Tos_All(), Strings{"Landlord"});
  EXPECT_EQ(account->Froms_Some(5), Strings{"Boss"});
  // A wrong password after the right one leaves it open; only nil closes it.
  EXPECT_TRUE(account->Authenticate(std::string("wrong")));
  EXPECT_TRUE(account->IsAuthenticated());
  EXPECT_FALSE(account->Authenticate(std::nullopt));
  EXPECT_FALSE(account->IsAuthenticated());
  account->SetPassword(std::nullopt);  // keeps the password
  EXPECT_EQ(account->GetPassword(), "Secret");
  account->SetPassword(std::string());
  EXPECT_FALSE(account->HasPassword());
  EXPECT_TRUE(account->IsAuthenticated());
}

TEST(LedgerSuggestions, AllListsAreDistinctCaseInsensitivelyAndSorted) {
  auto account = SignedInAccount();
  const std::tuple<double, const char*, const char*> entries[] = {
      {-1, "groceries", "Corner Shop"}, {-1, "Rent", "landlord"}, {-1, "GROCERIES", ""},
      {-1, "", "corner shop"},          {-1, "Straße", "Äpfel"},  {-1, "STRASSE", "äPFEL"},
      {1, "Salary", "Employer"},        {1, "rent", "Tenant"}};
  std::int32_t number = 0;
  for (const auto& [amount, description, toFrom] : entries)
    Add(*account, ++number, 20240101, amount, description, toFrom);
  // The first spelling met is kept; empty texts never appear.
  EXPECT_EQ(account->DebitDescriptions_All(), (Strings{"groceries", "Rent", "Straße"}));
  EXPECT_EQ(account->Tos_All(), (Strings{"Corner Shop", "landlord", "Äpfel"}));
  EXPECT_EQ(account->DepositDescriptions_All(), (Strings{"rent", "Salary"}));
  EXPECT_EQ(account->Froms_All(), (Strings{"Employer", "Tenant"}));
}

TEST(LedgerSuggestions, SomeListsAreNewestFirstAndStopOneAfterTheCount) {
  auto account = SignedInAccount();
  // Entry numbers, not list order, say which is newest; a repeat does not count.
  const std::pair<int, const char*> entries[] = {{3, "three"}, {1, "one"}, {5, "five"},
                                                 {4, "FIVE"},  {2, "two"}, {6, "six"}};
  for (const auto& [number, description] : entries)
    Add(*account, number, 20240101, -1, description);
  EXPECT_EQ(account->DebitDescriptions_Some(2), (Strings{"six", "five", "three"}));
  EXPECT_EQ(account->DebitDescriptions_Some(0), (Strings{"six"}));
  EXPECT_EQ(account->DebitDescriptions_Some(50), (Strings{"six", "five", "three", "two", "one"}));
  auto many = SignedInAccount();
  for (int i = 0; i < 60; ++i) Add(*many, i, 20240101, 1, "", "payer " + std::to_string(i));
  const Strings froms = many->Froms_Some(50);
  ASSERT_EQ(froms.size(), 51u);
  EXPECT_EQ(froms.front(), "payer 59");
  EXPECT_EQ(froms.back(), "payer 9");
  EXPECT_EQ(many->GetPreferredFroms(), froms);  // style 1 with 50 by default
}

TEST(LedgerSuggestions, PreferredListsFollowTheStyle) {
  auto account = SignedInAccount();
  Add(*account, 1, 20240101, -1, "b", "y");
  Add(*account, 2, 20240101, -1, "a", "x");
  Add(*account, 3, 20240101, -1, "c", "z");
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
  account->SetPreference_ToFrom_Style(0);  // the party lists have their own style
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
  // Nothing from an account that is signed out, or from none.
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
            (decltype(types){
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
