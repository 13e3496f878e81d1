#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <tuple>
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
#include "tarn/model/account_schedule.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/model/schedule_recurrence.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

using namespace testing;
using Strings = TARNAccount::Strings;
using V = std::vector<std::int32_t>;
using EntryPtr = std::shared_ptr<TARNAccountEntry>;
using Row = std::vector<std::string>;

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

  auto rent = MakeCategory("Rent", 8);
  account->categories().push_back(rent);
  account->deactivateCategory(rent);
  EXPECT_TRUE(account->categories().empty());
  EXPECT_EQ(account->inactiveCategories(), (TARNAccount::Categories{rent}));
  InMemoryAccountsController controller;  // with a controller, categories are its own
  auto shared = MakeCategory("Rent", 8);
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
  auto parent = MakeCategory("Home", 3);
  parent->addChild(MakeCategory("Garden", 9));
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
      std::stable_sort(expected.begin(), expected.end(),
                       [&, by = compare](const auto& a, const auto& b) {
                         const int order = ((*a).*by)(*b);
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

// Categories shared through a controller, two types, and a register with a
// check, a split, a void entry and an entry without category.
struct ExportLedger {
  InMemoryAccountsController controller;
  std::shared_ptr<TARNAccount> account = SignedInAccount();
  TARNAccount& a = *account;

  ExportLedger() {
    controller.categories() = {MakeCategory("Home", 1, {MakeCategory("Rent", 2)}),
                               MakeCategory("Food", 3)};
    a.setAccountsController(&controller);
    a.types() = {MakeType("Check", 10, false, true), MakeType("Payroll", 11, true)};
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
  using Fields = std::multimap<char, std::string>;
  EXPECT_EQ(records[0].headers, Row{"!Account"});
  EXPECT_EQ(records[0].fields, (Fields{{'N', "Everyday"}, {'T', "Bank"}, {'B', "1351.82"}}));
  EXPECT_NEAR(Amount(records[0].field('B')), ledger.a.GetBalance(), 1e-9);
  EXPECT_EQ(records[1].headers, Row{"!Type:Bank"});
  EXPECT_EQ(records[1].fields,
            (Fields{{'D', "01.12.2023"}, {'M', "Starting Balance"}, {'T', "100.00"}, {'C', "X"}}));

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
