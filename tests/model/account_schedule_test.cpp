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

// The dates due with "today" pinned.
Dates DueOn(DateNumber today, const TARNAccountSchedule& schedule) {
  CalendarDate::overrideNow(CalendarDate::dateWithDateNumber(today));
  auto entries = schedule.EvaluateForDate(CalendarDate::now());
  CalendarDate::overrideNow(std::nullopt);
  return DatesOf(entries);
}

TEST(TARNAccountSchedule, DictionaryRoundTrip) {
  auto schedule = MakeSchedule(kRepeatEveryNMonths, 20240131, true, kRepeatUntilDate, 20251231);
  schedule->SetDescription(std::string("Rent"));
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
  LogCapture log;
  const auto loaded = TARNAccountSchedule::initWithDictionary(dictionary);
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_EQ(loaded->asDictionary(), dictionary);
  EXPECT_EQ(loaded->GetLastCommittedDate(), 20240329);

  // A default schedule round-trips too; "usePrecedingFriday" is still a Boolean.
  const Value plain = TARNAccountSchedule().asDictionary();
  EXPECT_TRUE(plain.find("usePrecedingFriday")->isBoolean());
  EXPECT_EQ(TARNAccountSchedule::initWithDictionary(plain)->asDictionary(), plain);
}

TEST(TARNAccountSchedule, LoadingLogsMissingAndMalformedKeys) {
  const Value plain = TARNAccountSchedule().asDictionary();
  Value dictionary = plain;
  Lines expected;
  for (const char* key : {"repeatIntervalType", "repeatInterval", "repeatUntilType", "repeatUntil",
                          "usePrecedingFriday", "committedDates"}) {
    dictionary.mutableDictionary().erase(key);
    expected.push_back(std::string("No ") + key + " found for schedule.");
  }
  LogCapture log;
  EXPECT_EQ(TARNAccountSchedule::initWithDictionary(dictionary)->asDictionary(), plain);
  EXPECT_EQ(log.lines, expected);

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
  odd.set("usePrecedingFriday", Value(1));
  odd.set("committedDates",
          Value(plist::Array{Value(20240301), Value("x"), Value(20240101), Value(20240201.0)}));
  loaded = TARNAccountSchedule::initWithDictionary(odd);
  EXPECT_EQ(loaded->GetRepeatIntervalType(), 0);
  EXPECT_TRUE(loaded->GetUsePrecedingFriday());
  EXPECT_EQ(loaded->GetCommittedDates(), (Dates{20240101, 20240201, 20240301}));
  EXPECT_EQ(TARNAccountSchedule::initWithDictionary(Value())->asDictionary(), plain);
  EXPECT_EQ(log.lines, Lines{});
}

TEST(TARNAccountSchedule, EntriesAreCopiesOfTheTemplate) {
  auto schedule = MakeSchedule(kRepeatWeekly, 20240101);
  schedule->SetDescription(std::string("Allowance"));
  schedule->addSplitLineItemWithCategory(2, "kid one", "", 10.0);
  schedule->AddCommittedDate(20240108);

  const auto entry = schedule->EntryForDate(20240115);
  EXPECT_EQ(dynamic_cast<TARNAccountSchedule*>(entry.get()), nullptr);  // a plain entry
  EXPECT_EQ(entry->GetDate(), 20240115);
  EXPECT_EQ(entry->GetDescription(), "Allowance");
  EXPECT_NE(entry->splitLineItems().at(0), schedule->splitLineItems()[0]);  // copied

  const auto entries = schedule->EntriesFromDate(20240101, 20240131);
  EXPECT_EQ(DatesOf(entries), (Dates{20240101, 20240115, 20240122, 20240129}));
  EXPECT_EQ(DatesOf(schedule->EntriesFromDate(20240102, 20240121)), (Dates{20240115}));
  EXPECT_TRUE(schedule->EntriesFromDate(20240131, 20240101).empty());
  schedule->CommitEntry(*entries[1]);
  EXPECT_EQ(schedule->NextEntryDate(), 20240101);
  schedule->CommitEntry(*entries[0]);
  EXPECT_EQ(schedule->NextEntryDate(), 20240122);
  EXPECT_EQ(schedule->GetLastCommittedDate(), 20240115);
}

TEST(TARNAccountSchedule, DueDatesAcrossWeekendsAndLimits) {
  // Monthly on the 15th, moved to Friday: 15 September 2024 is a Sunday.
  auto monthly = MakeSchedule(kRepeatMonthly, 20240815, true);
  monthly->AddCommittedDate(20240815);
  EXPECT_EQ(monthly->NextEntryDate(), 20240913);
  EXPECT_EQ(DueOn(20240912, *monthly), Dates{});  // Thursday: the weekend is not in reach
  EXPECT_EQ(DueOn(20240913, *monthly), (Dates{20240913}));
  monthly->CommitEntry(*monthly->EntryForDate(20240913));
  EXPECT_TRUE(monthly->DateIsCommitted(20240913));
  EXPECT_EQ(DueOn(20240913, *monthly), Dates{});
  EXPECT_EQ(monthly->NextEntryDate(), 20241015);

  // Every seven days from Sunday 7 January 2024, moved to Friday; the first entered.
  auto weekly = MakeSchedule(kRepeatEveryNDays, 20240107, true);
  weekly->SetRepeatInterval(7);
  weekly->AddCommittedDate(20240105);
  EXPECT_EQ(DueOn(20240112, *weekly), (Dates{20240112}));  // Friday reaches Sunday
  EXPECT_EQ(DueOn(20240113, *weekly), (Dates{20240112}));  // Saturday too
  weekly->SetUsePrecedingFriday(false);  // without the rule Friday reaches no further
  EXPECT_EQ(DueOn(20240112, *weekly), (Dates{20240107}));
  // Rules that keep weekend dates reach over the weekend too.
  EXPECT_EQ(DueOn(20240105, *MakeSchedule(kRepeatDaily, 20240105, true)),
            (Dates{20240105, 20240106, 20240107}));

  const Dates firstFive{20240301, 20240302, 20240303, 20240304, 20240305};
  auto dateLimited = MakeSchedule(kRepeatDaily, 20240301, true, kRepeatUntilDate, 20240305);
  EXPECT_EQ(DueOn(20240320, *dateLimited), firstFive);
  EXPECT_EQ(DueOn(20240305, *dateLimited), firstFive);
  EXPECT_EQ(DueOn(20240220, *dateLimited), Dates{});
  auto backwards = MakeSchedule(kRepeatDaily, 20240301, false, kRepeatUntilDate, 20240201);
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
  fewer->SetRepeatUntil(-2);
  EXPECT_EQ(DueOn(20240320, *fewer), Dates{});
  // Thirty years of daily occurrences, of which only the first five count.
  auto old = MakeSchedule(kRepeatDaily, 19940101, false, kRepeatUntilCount, 5);
  EXPECT_EQ(DueOn(20240320, *old), (Dates{19940101, 19940102, 19940103, 19940104, 19940105}));
}

TEST(TARNAccountSchedule, UnknownRulesAndRepeatTypesYieldNothing) {
  auto schedule = MakeSchedule(7, 20240101);
  EXPECT_EQ(schedule->NextEntryDate(), -1);
  EXPECT_TRUE(schedule->EntriesFromDate(20240101, 20241231).empty());
  for (std::int32_t until : {kRepeatUntilForever, kRepeatUntilCount, kRepeatUntilDate}) {
    schedule->SetRepeatUntilType(until);
    schedule->SetRepeatUntil(until == kRepeatUntilDate ? 20241231 : 5);
    EXPECT_EQ(DueOn(20240320, *schedule), Dates{}) << until;
  }
  auto monthly = MakeSchedule(kRepeatMonthly, 20240101);
  for (std::int32_t until : {0, 4, -1}) {
    monthly->SetRepeatUntilType(until);
    EXPECT_EQ(DueOn(20240320, *monthly), Dates{}) << until;
  }
}

TEST(TARNAccountSchedule, SortsByNextEntryDate) {
  auto soon = MakeSchedule(kRepeatMonthly, 20240110);
  auto later = MakeSchedule(kRepeatMonthly, 20240105);
  later->AddCommittedDate(20240105);  // next is 5 February
  EXPECT_EQ(later->NextEntryDateIsGreaterThan(*soon), 1);
  EXPECT_EQ(soon->NextEntryDateIsGreaterThan(*MakeSchedule(kRepeatDaily, 20240110)), 0);
  EXPECT_EQ(MakeSchedule(7, 20230101)->NextEntryDateIsGreaterThan(*soon), -1);  // -1 first
  EXPECT_EQ(later->NextEntryDateIsGreaterThan_Reversed(*soon), -1);
  EXPECT_EQ(soon->NextEntryDateIsGreaterThan_Reversed(*later), 1);
}

}  // namespace
}  // namespace tarn
