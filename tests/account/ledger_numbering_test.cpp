#include <gtest/gtest.h>

#include <memory>

#include "account/ledger_test_support.h"
#include "tarn/account/account.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"

namespace tarn {
namespace {

using testing_support::Add;
using testing_support::Check;
using testing_support::Kind;
using testing_support::SignedInAccount;

TEST(LedgerNumbering, EmptyAccountStartsAtTheStartingCheckNumber) {
  auto account = SignedInAccount();
  account->SetStartingCheckNumber(1);
  EXPECT_EQ(account->HighestCheckNumber(), 0);
  EXPECT_EQ(account->NextAvailableCheckNumber(), 1);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(nullptr), 1);
  account->SetStartingCheckNumber(-1);
  EXPECT_EQ(account->HighestCheckNumber(), -1);
  EXPECT_EQ(account->NextAvailableCheckNumber(), 0);
  account->SetStartingCheckNumber(3000);
  EXPECT_EQ(account->HighestCheckNumber(), 2999);
  EXPECT_EQ(account->NextAvailableCheckNumber(), 3000);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(nullptr), 3000);
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
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(nullptr), 104);

  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(100), 101);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(101), 103);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(103), 103);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(50), 100);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(500), 103);

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
  auto bigTransfer =
      Add(*account, {.number = 5, .amount = 50.0, .kind = Kind::Deposit, .checkNumber = 900});
  bigTransfer->SetIsLinked(true);
  EXPECT_EQ(account->HighestCheckNumber(), 103);
  EXPECT_EQ(account->NextAvailableCheckNumber(), 104);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(50), 100);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(101), 103);
  // From a linked deposit no check moves the candidate: it stays its own number.
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(transfer.get()), 99);

  // A linked debit (the sending half) counts like any entry.
  auto sent = Add(*account, {.number = 6, .amount = -5.0, .checkNumber = 950});
  sent->SetIsLinked(true);
  EXPECT_EQ(account->HighestCheckNumber(), 950);
}

TEST(LedgerNumbering, EntrySchedulesTypesAndCategoriesNumbers) {
  auto account = SignedInAccount();
  account->SetNumberCount(41);
  EXPECT_EQ(account->NextAvailableNumber(), 42);
  EXPECT_EQ(account->NextAvailableNumber(), 43);

  EXPECT_EQ(account->NextAvailableScheduleNumber(), 0);
  auto schedule = std::make_shared<TARNAccountSchedule>();
  schedule->SetNumber(7);
  account->AddSchedule(schedule);
  EXPECT_EQ(schedule->GetAccount(), account.get());
  EXPECT_EQ(account->NextAvailableScheduleNumber(), 8);
  EXPECT_EQ(account->ScheduleForNumber(7), schedule);
  EXPECT_EQ(account->ScheduleForNumber(8), nullptr);
  account->RemoveSchedule(schedule);
  EXPECT_TRUE(account->GetSchedules().empty());

  account->types().clear();
  EXPECT_EQ(account->nextAvailableTypeNumber(), 0);
  auto type = std::make_shared<TARNAccountEntryType>();
  type->SetNumber(-4);
  account->types().push_back(type);
  EXPECT_EQ(account->nextAvailableTypeNumber(), 0);
  auto inactive = std::make_shared<TARNAccountEntryType>();
  inactive->SetNumber(12);
  account->inactiveTypes().push_back(inactive);
  EXPECT_EQ(account->nextAvailableTypeNumber(), 13);

  EXPECT_EQ(account->nextAvailableCategoryNumber(), 0);
  auto parent = std::make_shared<TARNAccountEntryCategory>();
  parent->setNumber(3);
  auto child = std::make_shared<TARNAccountEntryCategory>();
  child->setNumber(9);
  parent->addChild(child);
  account->categories().push_back(parent);
  EXPECT_EQ(account->nextAvailableCategoryNumber(), 10);
}

}  // namespace
}  // namespace tarn
