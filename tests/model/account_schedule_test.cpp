#include "tarn/model/account_schedule.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/model_test_support.h"

namespace tarn {
namespace {

using plist::Value;
using Dates = std::vector<DateNumber>;
using Lines = std::vector<std::string>;

Dates DatesOf(const TARNAccountSchedule::Entries& entries) {
  Dates dates;
  for (const auto& entry : entries) dates.push_back(entry->GetDate());
  return dates;
}

std::shared_ptr<TARNAccountSchedule> MakeSchedule(std::int32_t rule, DateNumber first,
                                                  bool friday = false,
                                                  std::int32_t untilType = kRepeatUntilForever,
                                                  std::int32_t until = 0) {
  auto schedule = std::make_shared<TARNAccountSchedule>();
  schedule->SetRepeatIntervalType(rule);
  schedule->SetDate(first);
  schedule->SetUsePrecedingFriday(friday);
  schedule->SetRepeatUntilType(untilType);
  schedule->SetRepeatUntil(until);
  return schedule;
}

// The entries due with "today" pinned.
TARNAccountSchedule::Entries Due(DateNumber today, const TARNAccountSchedule& schedule) {
  CalendarDate::overrideNow(CalendarDate::dateWithDateNumber(today));
  auto entries = schedule.EvaluateForDate(CalendarDate::now());
  CalendarDate::overrideNow(std::nullopt);
  return entries;
}
Dates DueOn(DateNumber today, const TARNAccountSchedule& schedule) {
  return DatesOf(Due(today, schedule));
}

TEST(TARNAccountSchedule, DictionaryRoundTrip) {
  auto schedule = MakeSchedule(kRepeatEveryNMonths, 20240131, true, kRepeatUntilDate, 20251231);
  schedule->SetNumber(12);
  schedule->SetDescription(std::string("Rent"));
  schedule->SetIsDebit(true);
  schedule->SetAmount(-850.0);
  schedule->addSplitLineItemWithCategory(7, "rent", "Landlord", -800.0);
  schedule->addSplitLineItemWithCategory(8, "parking", "Landlord", -50.0);
  schedule->SetRepeatInterval(2);
  schedule->AddCommittedDate(20240329);
  schedule->AddCommittedDate(20240131);

  const Value dictionary = schedule->asDictionary();
  EXPECT_EQ(dictionary.find("repeatIntervalType")->intValue(), kRepeatEveryNMonths);
  EXPECT_EQ(dictionary.find("repeatInterval")->intValue(), 2);
  EXPECT_EQ(dictionary.find("repeatUntilType")->intValue(), kRepeatUntilDate);
  EXPECT_EQ(dictionary.find("repeatUntil")->intValue(), 20251231);
  EXPECT_TRUE(dictionary.find("usePrecedingFriday")->boolValue());
  EXPECT_EQ(*dictionary.find("committedDates"),
            Value(plist::Array{Value(20240131), Value(20240329)}));
  EXPECT_EQ(dictionary.find("splitLineItems")->arrayValue().size(), 2u);

  LogCapture log;
  const auto loaded = TARNAccountSchedule::initWithDictionary(dictionary);
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_EQ(loaded->asDictionary(), dictionary);
  EXPECT_EQ(loaded->GetLastCommittedDate(), 20240329);
  EXPECT_EQ(loaded->NextEntryDate(), schedule->NextEntryDate());

  // A default schedule round-trips too; "usePrecedingFriday" is still a Boolean.
  const Value emptyDictionary = TARNAccountSchedule().asDictionary();
  EXPECT_TRUE(emptyDictionary.find("usePrecedingFriday")->isBoolean());
  EXPECT_EQ(TARNAccountSchedule::initWithDictionary(emptyDictionary)->asDictionary(),
            emptyDictionary);
  EXPECT_EQ(TARNAccountSchedule().NextEntryDate(), -1);  // rule 0 has no occurrences
}

TEST(TARNAccountSchedule, LoadingLogsMissingAndMalformedKeys) {
  const Value plain = TARNAccountSchedule().asDictionary();
  Value dictionary = plain;
  for (const char* key : {"repeatIntervalType", "repeatInterval", "repeatUntilType", "repeatUntil",
                          "usePrecedingFriday", "committedDates"}) {
    dictionary.mutableDictionary().erase(key);
  }
  LogCapture log;
  EXPECT_EQ(TARNAccountSchedule::initWithDictionary(dictionary)->asDictionary(), plain);
  EXPECT_EQ(
      log.lines,
      (Lines{"No repeatIntervalType found for schedule.", "No repeatInterval found for schedule.",
             "No repeatUntilType found for schedule.", "No repeatUntil found for schedule.",
             "No usePrecedingFriday found for schedule.",
             "No committedDates found for schedule."}));

  log.lines.clear();
  auto schedule = MakeSchedule(kRepeatMonthly, 20240115);
  schedule->AddCommittedDate(20240115);
  Value malformed = schedule->asDictionary();
  malformed.set("committedDates", Value("20240115"));
  auto loaded = TARNAccountSchedule::initWithDictionary(malformed);
  EXPECT_EQ(log.lines, (Lines{"committedDates is in the wrong format for schedule."}));
  EXPECT_TRUE(loaded->GetCommittedDates().empty());
  EXPECT_EQ(loaded->GetRepeatIntervalType(), kRepeatMonthly);

  // Values of another kind keep the defaults silently; committed elements that are no
  // numbers are passed over, and the list is put in order.
  log.lines.clear();
  Value odd = plain;
  odd.set("repeatIntervalType", Value("4"));
  odd.set("repeatInterval", Value(plist::Array{}));
  odd.set("usePrecedingFriday", Value(1));
  odd.set("committedDates",
          Value(plist::Array{Value(20240301), Value("x"), Value(20240101), Value(20240201.0)}));
  loaded = TARNAccountSchedule::initWithDictionary(odd);
  EXPECT_EQ(loaded->GetRepeatIntervalType(), 0);
  EXPECT_EQ(loaded->GetRepeatInterval(), 1);
  EXPECT_TRUE(loaded->GetUsePrecedingFriday());
  EXPECT_EQ(loaded->GetCommittedDates(), (Dates{20240101, 20240201, 20240301}));
  EXPECT_EQ(TARNAccountSchedule::initWithDictionary(Value())->asDictionary(), plain);
  EXPECT_EQ(log.lines, Lines{});
}

TEST(TARNAccountSchedule, EntriesAreCopiesOfTheTemplate) {
  auto schedule = MakeSchedule(kRepeatWeekly, 20240101);
  schedule->SetNumber(4);
  schedule->SetDescription(std::string("Allowance"));
  schedule->SetIsDeposit(true);
  schedule->SetAmount(20.0);
  schedule->addSplitLineItemWithCategory(2, "kid one", "", 10.0);
  schedule->AddCommittedDate(20240108);

  const auto entry = schedule->EntryForDate(20240115);
  EXPECT_EQ(dynamic_cast<TARNAccountSchedule*>(entry.get()), nullptr);  // a plain entry
  EXPECT_EQ(entry->GetDate(), 20240115);
  EXPECT_EQ(entry->GetDescription(), "Allowance");
  EXPECT_TRUE(entry->IsDeposit());
  ASSERT_EQ(entry->splitLineItems().size(), 1u);
  EXPECT_NE(entry->splitLineItems()[0], schedule->splitLineItems()[0]);  // copied, not shared
  EXPECT_EQ(entry->asDictionary().find("repeatIntervalType"), nullptr);

  const auto entries = schedule->EntriesFromDate(20240101, 20240131);
  EXPECT_EQ(DatesOf(entries), (Dates{20240101, 20240115, 20240122, 20240129}));
  EXPECT_EQ(DatesOf(schedule->EntriesFromDate(20240102, 20240121)), (Dates{20240115}));
  EXPECT_TRUE(schedule->EntriesFromDate(20240131, 20240101).empty());

  schedule->CommitEntry(*entries[1]);
  EXPECT_EQ(DatesOf(schedule->EntriesFromDate(20240101, 20240131)),
            (Dates{20240101, 20240122, 20240129}));
  EXPECT_EQ(schedule->NextEntryDate(), 20240101);
  schedule->CommitEntry(*entries[0]);
  EXPECT_EQ(schedule->NextEntryDate(), 20240122);
  EXPECT_EQ(schedule->GetLastCommittedDate(), 20240115);
}

TEST(TARNAccountSchedule, SundayOccurrenceIsDueAndCommittedOnFriday) {
  // Monthly on the 15th; 15 September 2024 is a Sunday.
  auto schedule = MakeSchedule(kRepeatMonthly, 20240815, true);
  schedule->AddCommittedDate(20240815);
  EXPECT_EQ(schedule->NextEntryDate(), 20240913);
  EXPECT_EQ(DueOn(20240912, *schedule), Dates{});  // Thursday: the weekend is not in reach
  const auto due = Due(20240913, *schedule);
  ASSERT_EQ(DatesOf(due), (Dates{20240913}));
  schedule->CommitEntry(*due[0]);
  EXPECT_TRUE(schedule->DateIsCommitted(20240913));
  EXPECT_FALSE(schedule->DateIsCommitted(20240915));
  EXPECT_EQ(DueOn(20240913, *schedule), Dates{});
  EXPECT_EQ(schedule->NextEntryDate(), 20241015);
}

TEST(TARNAccountSchedule, DueDatesAcrossWeekendsAndLimits) {
  // Every seven days from Sunday 7 January 2024, moved to Friday; the first entered.
  auto weekly = MakeSchedule(kRepeatEveryNDays, 20240107, true);
  weekly->SetRepeatInterval(7);
  weekly->AddCommittedDate(20240105);
  EXPECT_EQ(DueOn(20240112, *weekly), (Dates{20240112}));  // Friday reaches Sunday
  EXPECT_EQ(DueOn(20240113, *weekly), (Dates{20240112}));  // Saturday too
  EXPECT_EQ(DueOn(20240111, *weekly), Dates{});            // Thursday does not
  weekly->SetUsePrecedingFriday(false);  // without the rule Friday reaches no further
  EXPECT_EQ(DueOn(20240112, *weekly), (Dates{20240107}));
  // Rules that keep weekend dates reach over the weekend too.
  EXPECT_EQ(DueOn(20240105, *MakeSchedule(kRepeatDaily, 20240105, true)),
            (Dates{20240105, 20240106, 20240107}));
  EXPECT_EQ(DueOn(20240105, *MakeSchedule(kRepeatDaily, 20240108, true)), Dates{});

  const Dates firstFive{20240301, 20240302, 20240303, 20240304, 20240305};
  auto dateLimited = MakeSchedule(kRepeatDaily, 20240301, true, kRepeatUntilDate, 20240305);
  EXPECT_EQ(DueOn(20240320, *dateLimited), firstFive);
  EXPECT_EQ(DueOn(20240305, *dateLimited), firstFive);
  EXPECT_EQ(DueOn(20240220, *dateLimited), Dates{});
  auto backwards = MakeSchedule(kRepeatDaily, 20240301, false, kRepeatUntilDate, 20240201);
  EXPECT_EQ(DueOn(20240215, *backwards), Dates{});
  EXPECT_EQ(DueOn(20240315, *backwards), Dates{});
  // On a Friday or Saturday the weekend is reached only as far as the last date.
  const DateNumber reach[][4] = {{20240320, 20240308, 20240310, 1},
                                 {20240309, 20240308, 20240309, 1},
                                 {20240309, 20240309, 20240309, 1},
                                 {20240310, 20240309, 20240310, 1},
                                 {20240320, 20240308, 20240308, 0}};
  for (const auto& row : reach) {
    dateLimited->SetRepeatUntil(row[0]);
    dateLimited->SetUsePrecedingFriday(row[3]);
    EXPECT_EQ(DueOn(row[1], *dateLimited).back(), row[2]) << row[0] << " " << row[1];
  }

  auto counted = MakeSchedule(kRepeatDaily, 20240301, false, kRepeatUntilCount, 3);
  EXPECT_EQ(DueOn(20240320, *counted), (Dates{20240301, 20240302, 20240303}));
  counted->AddCommittedDate(20240301);
  counted->AddCommittedDate(20240305);
  // Two of three entered: one more at most, the earliest uncommitted.
  EXPECT_EQ(DueOn(20240320, *counted), (Dates{20240302}));
  counted->AddCommittedDate(20240302);
  EXPECT_EQ(DueOn(20240320, *counted), Dates{});
  auto fewer = MakeSchedule(kRepeatWeekly, 20240306, false, kRepeatUntilCount, 10);
  EXPECT_EQ(DueOn(20240320, *fewer), (Dates{20240306, 20240313, 20240320}));
  for (int count : {0, -2}) {
    fewer->SetRepeatUntil(count);
    EXPECT_EQ(DueOn(20240320, *fewer), Dates{}) << count;
  }
  // Thirty years of daily occurrences, of which only the first five count.
  auto old = MakeSchedule(kRepeatDaily, 19940101, false, kRepeatUntilCount, 5);
  EXPECT_EQ(DueOn(20240320, *old), (Dates{19940101, 19940102, 19940103, 19940104, 19940105}));
}

TEST(TARNAccountSchedule, UnknownRulesAndRepeatTypesYieldNothing) {
  auto schedule = MakeSchedule(7, 20240101);
  EXPECT_EQ(schedule->NextEntryDate(), -1);
  for (std::int32_t until : {kRepeatUntilForever, kRepeatUntilCount, kRepeatUntilDate}) {
    schedule->SetRepeatUntilType(until);
    schedule->SetRepeatUntil(until == kRepeatUntilDate ? 20241231 : 5);
    EXPECT_EQ(DueOn(20240320, *schedule), Dates{}) << until;
  }
  EXPECT_TRUE(schedule->EntriesFromDate(20240101, 20241231).empty());

  auto monthly = MakeSchedule(kRepeatMonthly, 20240101);
  for (std::int32_t until : {0, 4, -1}) {
    monthly->SetRepeatUntilType(until);
    EXPECT_EQ(DueOn(20240320, *monthly), Dates{}) << until;
  }
  monthly->SetRepeatUntilType(kRepeatUntilForever);
  EXPECT_EQ(DueOn(20240320, *monthly).size(), 3u);
}

TEST(TARNAccountSchedule, SortsByNextEntryDate) {
  auto soon = MakeSchedule(kRepeatMonthly, 20240110);
  auto later = MakeSchedule(kRepeatMonthly, 20240105);
  later->AddCommittedDate(20240105);  // next is 5 February
  auto never = MakeSchedule(7, 20230101);
  auto same = MakeSchedule(kRepeatDaily, 20240110);
  EXPECT_EQ(later->NextEntryDateIsGreaterThan(*soon), 1);
  EXPECT_EQ(soon->NextEntryDateIsGreaterThan(*later), -1);
  EXPECT_EQ(soon->NextEntryDateIsGreaterThan(*same), 0);
  EXPECT_EQ(never->NextEntryDateIsGreaterThan(*soon), -1);  // -1 sorts first
  EXPECT_EQ(later->NextEntryDateIsGreaterThan_Reversed(*soon), -1);
  EXPECT_EQ(soon->NextEntryDateIsGreaterThan_Reversed(*later), 1);
  EXPECT_EQ(soon->NextEntryDateIsGreaterThan_Reversed(*same), 0);
}

}  // namespace
}  // namespace tarn
