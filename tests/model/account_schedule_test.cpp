#include "tarn/model/account_schedule.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tarn/platform/log.h"

namespace tarn {
namespace {

using plist::Value;
using Dates = std::vector<DateNumber>;
using Lines = std::vector<std::string>;

// Collects log lines while alive, then puts the old sink back.
class LogCapture {
 public:
  LogCapture() : old_(SetLogSink([this](std::string_view line) { lines_.emplace_back(line); })) {}
  ~LogCapture() { SetLogSink(old_); }
  const Lines& lines() const { return lines_; }

 private:
  Lines lines_;
  LogSink old_;
};

// Pins "today" while alive.
class PinnedToday {
 public:
  explicit PinnedToday(DateNumber today) {
    CalendarDate::overrideNow(CalendarDate::dateWithDateNumber(today));
  }
  ~PinnedToday() { CalendarDate::overrideNow(std::nullopt); }
};

Dates DatesOf(const TARNAccountSchedule::Entries& entries) {
  Dates dates;
  for (const auto& entry : entries) dates.push_back(entry->GetDate());
  return dates;
}

std::shared_ptr<TARNAccountSchedule> MakeSchedule(std::int32_t rule, DateNumber first,
                                                  bool usePrecedingFriday = false) {
  auto schedule = std::make_shared<TARNAccountSchedule>();
  schedule->SetRepeatIntervalType(rule);
  schedule->SetDate(first);
  schedule->SetUsePrecedingFriday(usePrecedingFriday);
  return schedule;
}

TARNAccountSchedule::Entries DueToday(const TARNAccountSchedule& schedule) {
  return schedule.EvaluateForDate(CalendarDate::now());
}

TEST(TARNAccountSchedule, StartsEmptyAndRepeatsForever) {
  const TARNAccountSchedule schedule;
  EXPECT_EQ(schedule.GetRepeatIntervalType(), 0);
  EXPECT_EQ(schedule.GetRepeatInterval(), 1);
  EXPECT_EQ(schedule.GetRepeatUntilType(), kRepeatUntilForever);
  EXPECT_EQ(schedule.GetRepeatUntil(), 0);
  EXPECT_FALSE(schedule.GetUsePrecedingFriday());
  EXPECT_TRUE(schedule.GetCommittedDates().empty());
  EXPECT_EQ(schedule.GetLastCommittedDate(), 0);
  EXPECT_EQ(schedule.NextEntryDate(), -1);  // rule 0 has no occurrences
  // The entry part keeps the entry's own defaults.
  EXPECT_EQ(schedule.GetNumber(), -1);
  EXPECT_EQ(schedule.GetType(), -1);
  EXPECT_EQ(schedule.GetDate(), 0);
}

TEST(TARNAccountSchedule, DictionaryRoundTrip) {
  auto schedule = MakeSchedule(kRepeatEveryNMonths, 20240131, true);
  schedule->SetNumber(12);
  schedule->SetType(3);
  schedule->SetCategory(7);
  schedule->SetDescription(std::string("Rent"));
  schedule->SetToFrom(std::string("Landlord"));
  schedule->SetNotes(std::string("flat 2"));
  schedule->SetIsDebit(true);
  schedule->SetAmount(-850.0);
  schedule->addSplitLineItemWithCategory(7, "rent", "Landlord", -800.0);
  schedule->addSplitLineItemWithCategory(8, "parking", "Landlord", -50.0);
  schedule->SetRepeatInterval(2);
  schedule->SetRepeatUntilType(kRepeatUntilDate);
  schedule->SetRepeatUntil(20251231);
  schedule->AddCommittedDate(20240329);
  schedule->AddCommittedDate(20240131);

  const Value dictionary = schedule->asDictionary();
  ASSERT_TRUE(dictionary.isDictionary());
  EXPECT_EQ(dictionary.find("repeatIntervalType")->intValue(), kRepeatEveryNMonths);
  EXPECT_EQ(dictionary.find("repeatInterval")->intValue(), 2);
  EXPECT_EQ(dictionary.find("repeatUntilType")->intValue(), kRepeatUntilDate);
  EXPECT_EQ(dictionary.find("repeatUntil")->intValue(), 20251231);
  EXPECT_TRUE(dictionary.find("usePrecedingFriday")->isBoolean());
  EXPECT_TRUE(dictionary.find("usePrecedingFriday")->boolValue());
  EXPECT_EQ(*dictionary.find("committedDates"),
            Value(plist::Array{Value(20240131), Value(20240329)}));
  // The entry's keys are there too.
  EXPECT_EQ(dictionary.find("description")->stringValue(), "Rent");
  EXPECT_EQ(dictionary.find("date")->intValue(), 20240131);
  EXPECT_EQ(dictionary.find("splitLineItems")->arrayValue().size(), 2u);

  LogCapture log;
  const auto loaded = TARNAccountSchedule::initWithDictionary(dictionary);
  EXPECT_EQ(log.lines(), Lines{});
  EXPECT_EQ(loaded->asDictionary(), dictionary);
  EXPECT_EQ(loaded->GetRepeatIntervalType(), kRepeatEveryNMonths);
  EXPECT_EQ(loaded->GetRepeatInterval(), 2);
  EXPECT_EQ(loaded->GetRepeatUntilType(), kRepeatUntilDate);
  EXPECT_EQ(loaded->GetRepeatUntil(), 20251231);
  EXPECT_TRUE(loaded->GetUsePrecedingFriday());
  EXPECT_EQ(loaded->GetCommittedDates(), (Dates{20240131, 20240329}));
  EXPECT_EQ(loaded->GetLastCommittedDate(), 20240329);
  EXPECT_EQ(loaded->GetDescription(), "Rent");
  EXPECT_EQ(loaded->GetNumber(), 12);
  EXPECT_DOUBLE_EQ(loaded->GetAmount(), -850.0);
  EXPECT_EQ(loaded->NextEntryDate(), schedule->NextEntryDate());

  // A default schedule round-trips too; "usePrecedingFriday" is still a Boolean.
  const TARNAccountSchedule empty;
  const Value emptyDictionary = empty.asDictionary();
  EXPECT_TRUE(emptyDictionary.find("usePrecedingFriday")->isBoolean());
  EXPECT_EQ(*emptyDictionary.find("committedDates"), Value(plist::Array{}));
  EXPECT_EQ(TARNAccountSchedule::initWithDictionary(emptyDictionary)->asDictionary(),
            emptyDictionary);
}

TEST(TARNAccountSchedule, LoadingLogsMissingAndMalformedKeys) {
  // A complete entry dictionary without any schedule key: one line per key,
  // in the order the keys are read.
  const TARNAccountSchedule plain;
  Value dictionary = plain.asDictionary();
  for (const char* key : {"repeatIntervalType", "repeatInterval", "repeatUntilType", "repeatUntil",
                          "usePrecedingFriday", "committedDates"}) {
    dictionary.mutableDictionary().erase(key);
  }
  {
    LogCapture log;
    const auto loaded = TARNAccountSchedule::initWithDictionary(dictionary);
    EXPECT_EQ(
        log.lines(),
        (Lines{"No repeatIntervalType found for schedule.", "No repeatInterval found for schedule.",
               "No repeatUntilType found for schedule.", "No repeatUntil found for schedule.",
               "No usePrecedingFriday found for schedule.",
               "No committedDates found for schedule."}));
    EXPECT_EQ(loaded->asDictionary(), plain.asDictionary());
  }

  // "committedDates" that is no array.
  {
    auto schedule = MakeSchedule(kRepeatMonthly, 20240115);
    schedule->AddCommittedDate(20240115);
    Value malformed = schedule->asDictionary();
    malformed.set("committedDates", Value("20240115"));
    LogCapture log;
    const auto loaded = TARNAccountSchedule::initWithDictionary(malformed);
    EXPECT_EQ(log.lines(), (Lines{"committedDates is in the wrong format for schedule."}));
    EXPECT_TRUE(loaded->GetCommittedDates().empty());
    EXPECT_EQ(loaded->GetRepeatIntervalType(), kRepeatMonthly);
  }

  // Values of another kind keep the defaults; elements of the committed list
  // that are no numbers are passed over, and the list is put in order.
  {
    Value odd = plain.asDictionary();
    odd.set("repeatIntervalType", Value("4"));
    odd.set("repeatInterval", Value(plist::Array{}));
    odd.set("usePrecedingFriday", Value(1));
    odd.set("committedDates",
            Value(plist::Array{Value(20240301), Value("x"), Value(20240101), Value(20240201.0)}));
    LogCapture log;
    const auto loaded = TARNAccountSchedule::initWithDictionary(odd);
    EXPECT_EQ(log.lines(), Lines{});
    EXPECT_EQ(loaded->GetRepeatIntervalType(), 0);
    EXPECT_EQ(loaded->GetRepeatInterval(), 1);
    EXPECT_TRUE(loaded->GetUsePrecedingFriday());
    EXPECT_EQ(loaded->GetCommittedDates(), (Dates{20240101, 20240201, 20240301}));
    EXPECT_TRUE(loaded->DateIsCommitted(20240201));
  }

  // No dictionary at all: defaults, and nothing to say.
  {
    LogCapture log;
    const auto loaded = TARNAccountSchedule::initWithDictionary(Value());
    EXPECT_EQ(log.lines(), Lines{});
    EXPECT_EQ(loaded->asDictionary(), plain.asDictionary());
  }
}

TEST(TARNAccountSchedule, EntriesAreCopiesOfTheTemplate) {
  auto schedule = MakeSchedule(kRepeatWeekly, 20240101);
  schedule->SetNumber(4);
  schedule->SetDescription(std::string("Allowance"));
  schedule->SetIsDeposit(true);
  schedule->SetAmount(20.0);
  schedule->addSplitLineItemWithCategory(2, "kid one", "", 10.0);
  schedule->addSplitLineItemWithCategory(3, "kid two", "", 10.0);
  schedule->AddCommittedDate(20240108);

  const auto entry = schedule->EntryForDate(20240115);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(dynamic_cast<TARNAccountSchedule*>(entry.get()), nullptr);  // a plain entry
  EXPECT_EQ(entry->GetDate(), 20240115);
  EXPECT_EQ(entry->GetNumber(), 4);
  EXPECT_EQ(entry->GetDescription(), "Allowance");
  EXPECT_TRUE(entry->IsDeposit());
  EXPECT_DOUBLE_EQ(entry->GetAmount(), 20.0);
  ASSERT_EQ(entry->splitLineItems().size(), 2u);
  EXPECT_NE(entry->splitLineItems()[0], schedule->splitLineItems()[0]);  // copied, not shared
  EXPECT_EQ(entry->asDictionary().find("repeatIntervalType"), nullptr);

  const auto entries = schedule->EntriesFromDate(20240101, 20240131);
  EXPECT_EQ(DatesOf(entries), (Dates{20240101, 20240115, 20240122, 20240129}));
  for (const auto& each : entries) {
    EXPECT_EQ(each->asDictionary(), schedule->EntryForDate(each->GetDate())->asDictionary());
  }
  // The range's ends fall between the weekly steps.
  EXPECT_EQ(DatesOf(schedule->EntriesFromDate(20240102, 20240121)), (Dates{20240115}));
  EXPECT_TRUE(schedule->EntriesFromDate(20240131, 20240101).empty());

  // Committing an entry takes its date out of the next range.
  schedule->CommitEntry(*entries[1]);
  EXPECT_TRUE(schedule->DateIsCommitted(20240115));
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
  EXPECT_EQ(schedule->AdjustDateForUsePrecedingFriday(20240915), 20240913);

  {
    PinnedToday today(20240913);  // Friday the 13th
    const auto due = DueToday(*schedule);
    ASSERT_EQ(DatesOf(due), (Dates{20240913}));
    schedule->CommitEntry(*due[0]);
    EXPECT_TRUE(schedule->DateIsCommitted(20240913));
    EXPECT_FALSE(schedule->DateIsCommitted(20240915));
    EXPECT_TRUE(DueToday(*schedule).empty());
    EXPECT_EQ(schedule->NextEntryDate(), 20241015);
  }
  {
    // Thursday the 12th: the weekend has not come into reach yet.
    PinnedToday today(20240912);
    auto fresh = MakeSchedule(kRepeatMonthly, 20240815, true);
    fresh->AddCommittedDate(20240815);
    EXPECT_TRUE(DueToday(*fresh).empty());
  }
}

TEST(TARNAccountSchedule, FridayAndSaturdayReachOverTheWeekend) {
  // Every seven days from Sunday 7 January 2024, moved to Friday.
  auto schedule = MakeSchedule(kRepeatEveryNDays, 20240107, true);
  schedule->SetRepeatInterval(7);
  schedule->AddCommittedDate(20240105);  // the first, entered as its Friday
  {
    PinnedToday today(20240112);  // Friday: Sunday the 14th is due as the 12th
    EXPECT_EQ(DatesOf(DueToday(*schedule)), (Dates{20240112}));
  }
  {
    PinnedToday today(20240113);  // Saturday
    EXPECT_EQ(DatesOf(DueToday(*schedule)), (Dates{20240112}));
  }
  {
    PinnedToday today(20240111);  // Thursday
    EXPECT_TRUE(DueToday(*schedule).empty());
  }
  // Without the weekend rule Friday reaches no further than Friday.
  schedule->SetUsePrecedingFriday(false);
  {
    PinnedToday today(20240112);
    EXPECT_EQ(DatesOf(DueToday(*schedule)), (Dates{20240107}));
  }

  // The reach also applies to rules that keep weekend dates: a daily
  // schedule on a Friday offers Saturday and Sunday as they are.
  auto daily = MakeSchedule(kRepeatDaily, 20240105, true);
  {
    PinnedToday today(20240105);
    EXPECT_EQ(DatesOf(DueToday(*daily)), (Dates{20240105, 20240106, 20240107}));
  }
  // A schedule that starts after the horizon has nothing due.
  auto later = MakeSchedule(kRepeatDaily, 20240108, true);
  {
    PinnedToday today(20240105);
    EXPECT_TRUE(DueToday(*later).empty());
  }
}

TEST(TARNAccountSchedule, CountLimitedSchedules) {
  PinnedToday today(20240320);  // a Wednesday
  auto schedule = MakeSchedule(kRepeatDaily, 20240301);
  schedule->SetRepeatUntilType(kRepeatUntilCount);
  schedule->SetRepeatUntil(3);
  EXPECT_EQ(DatesOf(DueToday(*schedule)), (Dates{20240301, 20240302, 20240303}));

  schedule->AddCommittedDate(20240301);
  schedule->AddCommittedDate(20240305);
  // Two of three are entered: one more at most, the earliest uncommitted.
  EXPECT_EQ(DatesOf(DueToday(*schedule)), (Dates{20240302}));
  schedule->AddCommittedDate(20240302);
  EXPECT_TRUE(DueToday(*schedule).empty());

  // Fewer occurrences than the count are all returned.
  auto weekly = MakeSchedule(kRepeatWeekly, 20240306);
  weekly->SetRepeatUntilType(kRepeatUntilCount);
  weekly->SetRepeatUntil(10);
  EXPECT_EQ(DatesOf(DueToday(*weekly)), (Dates{20240306, 20240313, 20240320}));

  // A count of zero or less is used up from the start.
  weekly->SetRepeatUntil(0);
  EXPECT_TRUE(DueToday(*weekly).empty());
  weekly->SetRepeatUntil(-2);
  EXPECT_TRUE(DueToday(*weekly).empty());

  // Thirty years of daily occurrences, of which only the first five count.
  auto old = MakeSchedule(kRepeatDaily, 19940101);
  old->SetRepeatUntilType(kRepeatUntilCount);
  old->SetRepeatUntil(5);
  EXPECT_EQ(DatesOf(DueToday(*old)), (Dates{19940101, 19940102, 19940103, 19940104, 19940105}));
}

TEST(TARNAccountSchedule, DateLimitedSchedules) {
  auto schedule = MakeSchedule(kRepeatDaily, 20240301, true);
  schedule->SetRepeatUntilType(kRepeatUntilDate);
  schedule->SetRepeatUntil(20240305);
  {
    PinnedToday today(20240320);  // past the last date: up to it
    EXPECT_EQ(DatesOf(DueToday(*schedule)),
              (Dates{20240301, 20240302, 20240303, 20240304, 20240305}));
  }
  {
    PinnedToday today(20240305);  // on the last date
    EXPECT_EQ(DueToday(*schedule).size(), 5u);
  }
  {
    PinnedToday today(20240220);  // before the first occurrence
    EXPECT_TRUE(DueToday(*schedule).empty());
  }

  // Friday 8 March: the weekend is reached only as far as the last date.
  schedule->SetRepeatUntil(20240320);
  {
    PinnedToday today(20240308);
    EXPECT_EQ(DatesOf(DueToday(*schedule)).back(), 20240310);
  }
  schedule->SetRepeatUntil(20240309);
  {
    PinnedToday today(20240308);
    EXPECT_EQ(DatesOf(DueToday(*schedule)).back(), 20240309);
  }
  {
    PinnedToday today(20240309);  // Saturday on the last date
    EXPECT_EQ(DatesOf(DueToday(*schedule)).back(), 20240309);
  }
  schedule->SetRepeatUntil(20240310);
  {
    PinnedToday today(20240309);  // Saturday before the last date
    EXPECT_EQ(DatesOf(DueToday(*schedule)).back(), 20240310);
  }
  schedule->SetUsePrecedingFriday(false);
  schedule->SetRepeatUntil(20240320);
  {
    PinnedToday today(20240308);
    EXPECT_EQ(DatesOf(DueToday(*schedule)).back(), 20240308);
  }

  // A last date before the schedule's own date: nothing is ever due.
  auto backwards = MakeSchedule(kRepeatDaily, 20240301);
  backwards->SetRepeatUntilType(kRepeatUntilDate);
  backwards->SetRepeatUntil(20240201);
  {
    PinnedToday today(20240215);
    EXPECT_TRUE(DueToday(*backwards).empty());
  }
  {
    PinnedToday today(20240315);
    EXPECT_TRUE(DueToday(*backwards).empty());
  }
}

TEST(TARNAccountSchedule, UnknownRulesAndRepeatTypesYieldNothing) {
  PinnedToday today(20240320);
  auto schedule = MakeSchedule(7, 20240101);
  EXPECT_EQ(schedule->NextEntryDate(), -1);
  for (std::int32_t until : {kRepeatUntilForever, kRepeatUntilCount, kRepeatUntilDate}) {
    schedule->SetRepeatUntilType(until);
    schedule->SetRepeatUntil(until == kRepeatUntilDate ? 20241231 : 5);
    EXPECT_TRUE(DueToday(*schedule).empty()) << until;
  }
  EXPECT_TRUE(schedule->EntriesFromDate(20240101, 20241231).empty());

  auto monthly = MakeSchedule(kRepeatMonthly, 20240101);
  for (std::int32_t until : {0, 4, -1}) {
    monthly->SetRepeatUntilType(until);
    EXPECT_TRUE(DueToday(*monthly).empty()) << until;
  }
  monthly->SetRepeatUntilType(kRepeatUntilForever);
  EXPECT_EQ(DueToday(*monthly).size(), 3u);
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
