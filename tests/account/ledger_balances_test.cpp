#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "account/ledger_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {
namespace {

using testing_support::Add;
using testing_support::Check;
using testing_support::Kind;
using testing_support::SignedInAccount;

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
  TARNAccount& account = *day.account;
  // A check sees only the day's checks up to its own number.
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceAtEntry(day.check100.get()), 1460.0);
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceAtEntry(day.check101.get()), 1430.0);
  // A non-check sees every check of the day, even one entered after it, and
  // the non-checks entered before it.
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceAtEntry(day.early.get()), 1410.0);
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceAtEntry(day.late.get()), 1360.0);
  // Void entries have a place in the order but add nothing, even their own.
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceAtEntry(day.voided.get()), 1360.0);
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceAtEntry(day.voidCheck.get()), 1430.0);
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceAtEntry(day.after.get()), 1290.0);
  EXPECT_DOUBLE_EQ(account.GetRunningBalanceAtEntry(nullptr), 0.0);
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

  auto empty = SignedInAccount();
  empty->SetStartingBalance(12.5);
  EXPECT_DOUBLE_EQ(empty->GetBalance(), 12.5);
}

TEST(LedgerBalances, CachedRunningBalancesFollowTheRegisterOrderAndReachVoidEntries) {
  BusyDay day;
  TARNAccount& account = *day.account;
  for (const auto& entry : account.GetEntries()) entry->SetCachedRunningBalance(-1.0);
  account.CacheRunningBalances();
  EXPECT_DOUBLE_EQ(day.deposit->GetCachedRunningBalance(), 1500.0);
  EXPECT_DOUBLE_EQ(day.check100->GetCachedRunningBalance(), 1460.0);
  EXPECT_DOUBLE_EQ(day.check101->GetCachedRunningBalance(), 1430.0);
  EXPECT_DOUBLE_EQ(day.voidCheck->GetCachedRunningBalance(), 1430.0);
  EXPECT_DOUBLE_EQ(day.early->GetCachedRunningBalance(), 1410.0);
  EXPECT_DOUBLE_EQ(day.late->GetCachedRunningBalance(), 1360.0);
  EXPECT_DOUBLE_EQ(day.voided->GetCachedRunningBalance(), 1360.0);
  EXPECT_DOUBLE_EQ(day.after->GetCachedRunningBalance(), 1290.0);
}

TEST(LedgerBalances, CachedAndSingleRunningBalancesAgreeOnARandomLedger) {
  auto account = SignedInAccount();
  account->SetStartingBalance(100.0);
  std::mt19937 random(7);
  std::int32_t nextCheck = 500;
  for (std::int32_t number = 1; number <= 400; ++number) {
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

  const TARNAccount::Entries all = account->GetAllEntries();
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all[0], inRegister);
  EXPECT_EQ(all[1], later);
  EXPECT_EQ(all[2], inFolder);
  EXPECT_EQ(account->GetDebits(), (TARNAccount::Entries{inRegister, later}));
  EXPECT_EQ(account->GetDeposits(), (TARNAccount::Entries{inFolder}));
  EXPECT_DOUBLE_EQ(account->GetBalance(), -7.0);
  account->CacheRunningBalances();
  EXPECT_DOUBLE_EQ(inFolder->GetCachedRunningBalance(), -6.0);
}

}  // namespace
}  // namespace tarn
