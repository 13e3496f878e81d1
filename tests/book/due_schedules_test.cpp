// The due occurrences of an account's schedules, and entering or skipping
// them: the register and the schedule's entered dates change together or
// not at all.

#include "tarn/book/due_schedules.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "book/book_test_support.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/schedule_recurrence.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

namespace tarn {
namespace {

class DueSchedulesTest : public testing::QuietDayTest {
 protected:
  void SetUp() override { checking_ = book_.addAccount("Checking"); }

  std::shared_ptr<TARNAccountSchedule> Monthly(DateNumber first, double amount,
                                               const char* description, bool friday) {
    auto schedule = std::make_shared<TARNAccountSchedule>();
    schedule->SetNumber(checking_->NextAvailableScheduleNumber());
    schedule->SetDate(first);
    schedule->SetAmount(amount);
    schedule->SetDescription(description);
    schedule->SetRepeatIntervalType(kRepeatMonthly);
    schedule->SetUsePrecedingFriday(friday);
    checking_->AddSchedule(schedule);
    return schedule;
  }

  TARNBook book_;
  std::shared_ptr<TARNAccount> checking_;
};

TEST_F(DueSchedulesTest, ListsDueOccurrencesInDateOrderWithTheWeekendRuleApplied) {
  Monthly(20261015, 1650.0, "Salary", false);
  // The 1st of November 2026 is a Sunday: with the weekend rule it falls
  // due on Friday the 30th of October.
  Monthly(20261001, -1450.0, "Rent", true);
  const auto due = DueOccurrences(*checking_, CalendarDate::now());
  ASSERT_EQ(due.size(), 4u);
  EXPECT_EQ(due[0].date, 20261001);
  EXPECT_EQ(due[0].description, "Rent");
  EXPECT_EQ(due[1].date, 20261015);
  EXPECT_EQ(due[2].date, 20261030);
  EXPECT_EQ(due[2].description, "Rent");
  EXPECT_EQ(due[2].amount, -1450.0);
  EXPECT_EQ(due[3].date, 20261115);
}

TEST_F(DueSchedulesTest, EnteringAddsTheEntryAndSkippingOnlyMovesTheScheduleOn) {
  auto rent = Monthly(20261001, -1450.0, "Rent", true);
  const std::size_t before = checking_->GetEntries().size();

  auto entry = EnterOccurrence(*checking_, rent->GetNumber(), 20261030);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->GetDate(), 20261030);
  EXPECT_EQ(entry->GetAmount(), -1450.0);
  EXPECT_EQ(entry->GetDescription(), "Rent");
  EXPECT_NE(entry->GetNumber(), rent->GetNumber());
  ASSERT_EQ(checking_->GetEntries().size(), before + 1);
  // The Friday date counts as the Sunday's occurrence: it is not due again.
  auto due = DueOccurrences(*checking_, CalendarDate::now());
  ASSERT_EQ(due.size(), 1u);
  EXPECT_EQ(due[0].date, 20261001);

  // A second Enter of the same occurrence is refused and changes nothing.
  EXPECT_THROW(EnterOccurrence(*checking_, rent->GetNumber(), 20261030), std::invalid_argument);
  EXPECT_THROW(SkipOccurrence(*checking_, rent->GetNumber(), 20261030), std::invalid_argument);
  EXPECT_THROW(EnterOccurrence(*checking_, 999, 20261001), std::invalid_argument);
  EXPECT_EQ(checking_->GetEntries().size(), before + 1);

  SkipOccurrence(*checking_, rent->GetNumber(), 20261001);
  EXPECT_EQ(checking_->GetEntries().size(), before + 1);
  EXPECT_TRUE(DueOccurrences(*checking_, CalendarDate::now()).empty());
  EXPECT_EQ(rent->NextEntryDate(), 20261201);
}

}  // namespace
}  // namespace tarn
