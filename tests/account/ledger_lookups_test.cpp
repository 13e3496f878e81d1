#include <gtest/gtest.h>

#include <memory>

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
using testing_support::SignedInAccount;

std::shared_ptr<TARNAccountEntryType> MakeType(const std::string& name, std::int32_t number,
                                               bool deposit) {
  auto type = std::make_shared<TARNAccountEntryType>();
  type->SetName(name);
  type->SetNumber(number);
  type->SetIsDeposit(deposit);
  return type;
}

TEST(LedgerLookups, EntriesByNumberDateAndEnteringOrder) {
  auto account = SignedInAccount();
  EXPECT_EQ(account->GetFirstEntry(), nullptr);
  EXPECT_EQ(account->GetLastEntry(), nullptr);
  EXPECT_EQ(account->GetLastEnteredEntry(), nullptr);
  EXPECT_EQ(account->GetLastEnteredCheck(), nullptr);

  auto a = Add(*account, {.number = 5, .date = 20240301});
  auto b = Add(*account, {.number = 2, .date = 20240101});
  auto c = Check(*account, 9, 100, 20240101);  // same first date: b stays first
  auto d = Check(*account, 3, 101, 20240301);  // same last date: a stays last
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
  (void)b;
  (void)d;
}

TEST(LedgerLookups, TypesByNameAndDeactivation) {
  auto account = SignedInAccount();
  account->types().clear();
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
  EXPECT_EQ(account->depositEntryTypeForName("ATM"), nullptr);
  EXPECT_EQ(account->GetDebitTypes(), (TARNAccount::Types{atm, fee}));
  EXPECT_EQ(account->GetDepositTypes(), (TARNAccount::Types{payroll, refund}));

  account->deactivateType(fee);
  EXPECT_EQ(account->defaultDebitType(), nullptr);
  EXPECT_EQ(account->defaultDepositType(), payroll);
  EXPECT_EQ(account->types(), (TARNAccount::Types{atm, payroll, refund}));
  EXPECT_EQ(account->inactiveTypes(), (TARNAccount::Types{oldFee, fee}));
  EXPECT_EQ(account->accountEntryTypeForNumber(3), fee);  // still found by number
  account->deactivateType(payroll);
  EXPECT_EQ(account->defaultDepositType(), nullptr);
  account->deactivateType(nullptr);
  EXPECT_EQ(account->inactiveTypes().size(), 3u);

  auto rent = std::make_shared<TARNAccountEntryCategory>();
  rent->setNumber(8);
  account->categories().push_back(rent);
  EXPECT_EQ(account->accountEntryCategoryForNumber(8), rent);
  account->deactivateCategory(rent);
  EXPECT_TRUE(account->categories().empty());
  EXPECT_EQ(account->inactiveCategories(),
            (TARNAccount::Categories{std::shared_ptr<TARNAccountEntryCategory>(rent)}));

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
  EXPECT_EQ(account->numberOfPendingScheduledEntriesForDate(CalendarDate(2024, 3, 10)), 0);

  auto weekly = std::make_shared<TARNAccountSchedule>();
  weekly->SetNumber(0);
  weekly->SetDate(20240301);  // Friday: 1, 8 and 15 March
  weekly->SetRepeatIntervalType(kRepeatWeekly);
  account->AddSchedule(weekly);
  auto later = std::make_shared<TARNAccountSchedule>();
  later->SetNumber(1);
  later->SetDate(20240401);
  later->SetRepeatIntervalType(kRepeatMonthly);
  account->AddSchedule(later);

  EXPECT_TRUE(account->HasPendingScheduledEntries());
  const std::int32_t dueNow =
      static_cast<std::int32_t>(weekly->EvaluateForDate(CalendarDate(2024, 3, 10)).size());
  EXPECT_GE(dueNow, 2);
  EXPECT_EQ(account->numberOfPendingScheduledEntriesForDate(CalendarDate(2024, 3, 10)), dueNow);
  EXPECT_EQ(account->numberOfPendingScheduledEntriesForDate(std::nullopt), 0);
  EXPECT_GT(account->numberOfPendingScheduledEntriesForDate(CalendarDate(2024, 4, 20)), dueNow);

  weekly->AddCommittedDate(20240301);
  weekly->AddCommittedDate(20240308);
  EXPECT_FALSE(account->HasPendingScheduledEntries());
  CalendarDate::overrideNow(std::nullopt);
}

}  // namespace
}  // namespace tarn
