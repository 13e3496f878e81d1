#include "tarn/filters/filter.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "filters/filter_book.h"
#include "tarn/platform/log.h"

namespace tarn {
namespace {

using testing::Descriptions;
using testing::FilterBook;
using Strings = std::vector<std::string>;
using Group = TARNFilterConditionGroup;

std::shared_ptr<Group> MakeGroup(int32_t logic, int32_t qualifier = kGroupMatchAll) {
  auto group = std::make_shared<Group>();
  group->setLogic(logic);
  group->setQualifier(qualifier);
  return group;
}

std::shared_ptr<Group> Contains(int32_t logic, const char* text) {
  auto group = MakeGroup(logic);
  group->addConditionWithCategory(kFieldDescription, kConditionKeepMatches, kTextContains, text);
  return group;
}

class FilterTest : public ::testing::Test {
 protected:
  FilterTest() {
    int amount = 1;
    for (const char* name : {"apple", "banana", "cherry", "date", "elder"}) {
      entries_.push_back(book_.Entry({.description = name, .amount = double(amount++)}));
    }
  }

  Strings Run(const TARNFilter& filter) { return Descriptions(filter.filterEntries(entries_)); }

  FilterBook book_;
  TARNEntryList entries_;
};

TEST_F(FilterTest, GroupsMatchAllChainAndMatchAnyFailsWhenConditionsRunOut) {
  auto all = MakeGroup(kGroupLogicAnd, kGroupMatchAll);
  EXPECT_EQ(Descriptions(all->filterEntries(entries_)).size(), 5u);
  all->addConditionWithCategory(kFieldDescription, 1, kTextContains, "e");
  all->addConditionWithCategory(kFieldAmount, 1, kAmountIsGreaterThan, 2.5);
  EXPECT_EQ(Descriptions(all->filterEntries(entries_)), (Strings{"cherry", "date", "elder"}));
  all->addConditionWithCategory(kFieldDescription, 0, kTextStartsWith, "d");
  EXPECT_EQ(Descriptions(all->filterEntries(entries_)), (Strings{"cherry", "elder"}));

  // "Any" keeps an entry as soon as one condition keeps it, and every entry
  // must find one: otherwise the conditions run out.
  auto any = MakeGroup(kGroupLogicAnd, kGroupMatchAny);
  any->addConditionWithCategory(kFieldDescription, 1, kTextContains, "an");
  EXPECT_THROW(any->filterEntries(entries_), std::out_of_range);
  any->addConditionWithCategory(kFieldAmount, 1, kAmountIsGreaterThan, 1.5);
  EXPECT_THROW(any->filterEntries(entries_), std::out_of_range);  // apple is left
  any->addConditionWithCategory(kFieldDescription, 1, kTextStartsWith, "a");
  EXPECT_EQ(Descriptions(any->filterEntries(entries_)).size(), 5u);
  // A condition that restricts nothing ends the search at once.
  auto open = MakeGroup(kGroupLogicAnd, kGroupMatchAny);
  open->addConditionWithCategory(kFieldNotes, 1, kTextContains, "");
  open->addConditionWithCategory(kFieldDescription, 1, kTextContains, "zzz");
  EXPECT_EQ(Descriptions(open->filterEntries(entries_)).size(), 5u);

  auto empty = MakeGroup(kGroupLogicAnd, kGroupMatchAny);
  EXPECT_THROW(empty->filterEntries(entries_), std::out_of_range);
  EXPECT_TRUE(empty->filterEntries({}).empty());

  auto odd = MakeGroup(kGroupLogicAnd, 2);
  odd->addConditionWithCategory(kFieldDescription, 1, kTextContains, "a");
  EXPECT_TRUE(odd->filterEntries(entries_).empty());
}

TEST_F(FilterTest, AndOrCombinationOrders) {
  TARNFilter filter;
  EXPECT_EQ(Run(filter), (Strings{"apple", "banana", "cherry", "date", "elder"}));

  // [A and, B or]: A's entries, then B's entries that A did not pass.
  filter.addConditionGroup(Contains(kGroupLogicAnd, "an"));
  auto bigger = MakeGroup(kGroupLogicOr);
  bigger->addConditionWithCategory(kFieldAmount, 1, kAmountIsGreaterThan, 3.5);
  filter.addConditionGroup(bigger);
  EXPECT_EQ(Run(filter), (Strings{"banana", "date", "elder"}));

  // An entry that both pass is listed once, in the or-set's place.
  filter.removeConditionGroup(bigger);
  filter.addConditionGroup(Contains(kGroupLogicOr, "a"));
  EXPECT_EQ(Run(filter), (Strings{"apple", "banana", "date"}));

  // A later or group judges the input less what earlier or groups added.
  filter.addConditionGroup(Contains(kGroupLogicOr, "e"));
  EXPECT_EQ(Run(filter), (Strings{"apple", "banana", "date", "cherry", "elder"}));

  // An and group after the or groups narrows only what they have not taken.
  TARNFilter narrowing;
  narrowing.addConditionGroup(Contains(kGroupLogicOr, "an"));
  narrowing.addConditionGroup(Contains(kGroupLogicAnd, "e"));
  EXPECT_EQ(Run(narrowing), (Strings{"apple", "cherry", "date", "elder", "banana"}));
  narrowing.addConditionGroup(Contains(kGroupLogicAnd, "r"));
  EXPECT_EQ(Run(narrowing), (Strings{"cherry", "elder", "banana"}));

  // A first group marked or leaves the and-list whole: everything passes.
  TARNFilter firstOr;
  firstOr.addConditionGroup(Contains(kGroupLogicOr, "an"));
  EXPECT_EQ(Run(firstOr), (Strings{"apple", "cherry", "date", "elder", "banana"}));

  // Groups with another logic are skipped.
  TARNFilter skipped;
  skipped.addConditionGroup(Contains(2, "zzz"));
  skipped.addConditionGroup(Contains(kGroupLogicAnd, "ch"));
  EXPECT_EQ(Run(skipped), Strings{"cherry"});

  // The any group's failure reaches the caller.
  TARNFilter failing;
  failing.addConditionGroup(MakeGroup(kGroupLogicAnd, kGroupMatchAny));
  EXPECT_THROW(failing.filterEntries(entries_), std::out_of_range);
  EXPECT_TRUE(failing.filterEntries({}).empty());
}

TEST_F(FilterTest, TotalSkipsVoidEntries) {
  TARNFilter filter;
  filter.addConditionGroup(Contains(kGroupLogicAnd, "e"));  // apple, cherry, date, elder
  entries_[3]->SetVoid(true);                               // date
  EXPECT_DOUBLE_EQ(filter.filterAndTotalEntries(entries_), 1 + 3 + 5);
  EXPECT_DOUBLE_EQ(TARNFilter().filterAndTotalEntries({}), 0.0);
}

TEST_F(FilterTest, TheViewFilterShapeCombinesSearchDatesAndFlags) {
  auto early = book_.Entry({.description = "Early apple", .date = 20070228});
  auto late = book_.Entry({.description = "Late apple", .date = 20070401});
  auto inside = book_.Entry({.description = "March", .date = 20070331, .notes = "apple pie"});
  inside->SetCleared(1);
  auto uncleared = book_.Entry({.description = "apple", .date = 20070301});
  TARNFilter filter;
  auto group = MakeGroup(kGroupLogicAnd);
  group->addConditionWithCategory(kFieldAnything, 1, kTextContains, "APPLE");
  group->addConditionWithCategory(kFieldDate, 1, kDateIsAfter, 20070301 - 1);
  group->addConditionWithCategory(kFieldDate, 1, kDateIsBefore, 20070331 + 1);
  group->addConditionWithCategory(kFieldResolved, 1, kFlagIs, true);
  filter.addConditionGroup(group);
  EXPECT_EQ(Descriptions(filter.filterEntries({early, late, inside, uncleared})), Strings{"March"});
}

TEST_F(FilterTest, ListMaintenanceIgnoresWhatItShould) {
  TARNFilter filter;
  auto first = MakeGroup(kGroupLogicAnd);
  auto second = MakeGroup(kGroupLogicOr);
  auto third = MakeGroup(kGroupLogicAnd);
  filter.addConditionGroup(first);
  filter.addConditionGroup(first);
  filter.addConditionGroup(nullptr);
  filter.insertConditionGroup(second, 2);   // beyond the count
  filter.insertConditionGroup(second, -1);  // negative
  filter.insertConditionGroup(first, 0);    // already there
  filter.insertConditionGroup(second, 1);   // the count appends
  filter.insertConditionGroup(third, 0);
  EXPECT_EQ(filter.conditionGroups(), (TARNFilter::ConditionGroups{third, first, second}));
  filter.removeConditionGroup(MakeGroup(kGroupLogicAnd));
  filter.removeConditionGroupAtIndex(3);
  filter.removeConditionGroupAtIndex(-1);
  EXPECT_EQ(filter.conditionGroups().size(), 3u);
  filter.removeConditionGroupAtIndex(0);
  filter.removeConditionGroup(second);
  EXPECT_EQ(filter.conditionGroups(), TARNFilter::ConditionGroups{first});
  filter.removeAllConditionGroups();
  EXPECT_TRUE(filter.conditionGroups().empty());

  Group group;
  auto condition = std::make_shared<TARNFilterCondition>();
  group.addCondition(condition);
  group.addCondition(condition);
  group.addCondition(nullptr);
  // Logic before qualifier in the group's maker.
  auto made = group.addConditionWithCategory(kFieldAmount, 0, kAmountIsLessThan, 5);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->logic(), 0);
  EXPECT_EQ(made->qualifier(), kAmountIsLessThan);
  EXPECT_EQ(group.addConditionWithCategory(kFieldAmount, 1, 1, plist::Value()), nullptr);
  EXPECT_EQ(group.conditions(), (Group::Conditions{condition, made}));
  group.removeCondition(std::make_shared<TARNFilterCondition>());
  group.removeConditionAtIndex(2);
  group.removeConditionAtIndex(-1);
  EXPECT_EQ(group.conditions().size(), 2u);
  group.removeConditionAtIndex(0);
  EXPECT_EQ(group.conditions(), Group::Conditions{made});
  group.removeAllConditions();
  EXPECT_TRUE(group.conditions().empty());

  filter.setName("Big");
  filter.setName(std::nullopt);
  EXPECT_EQ(filter.name(), "");
}

TEST_F(FilterTest, DictionaryRoundTripAndDeepCopyShareNothing) {
  std::vector<std::string> logged;
  LogSink previous = SetLogSink([&](std::string_view line) { logged.emplace_back(line); });

  TARNFilter source;
  source.setName("Groceries");
  auto group = MakeGroup(kGroupLogicAnd);
  group->addConditionWithCategory(kFieldDescription, 1, kTextContains, "an");
  group->addConditionWithCategory(kFieldDate, 1, kDateBetweenDates,
                                  plist::Array{20070101, 20071231});
  source.addConditionGroup(group);
  auto orGroup = MakeGroup(kGroupLogicOr, kGroupMatchAny);
  orGroup->addConditionWithCategory(kFieldAmount, 1, kAmountIsLessThan, 100.25);
  source.addConditionGroup(orGroup);

  const plist::Value stored = source.asDictionary();
  EXPECT_EQ(stored.find("name")->stringValue(), "Groceries");
  EXPECT_EQ(TARNFilter::filterWithDictionary(stored)->asDictionary(), stored);

  auto copy = TARNFilter::filterWithFilter(&source);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->asDictionary(), stored);
  EXPECT_EQ(Run(*copy), Run(source));
  ASSERT_EQ(copy->conditionGroups().size(), 2u);
  for (size_t g = 0; g < 2; ++g) {
    const auto& copiedGroup = copy->conditionGroups()[g];
    const auto& sourceGroup = source.conditionGroups()[g];
    EXPECT_NE(copiedGroup, sourceGroup);
    for (size_t c = 0; c < sourceGroup->conditions().size(); ++c) {
      EXPECT_NE(copiedGroup->conditions()[c], sourceGroup->conditions()[c]);
    }
  }
  // Editing the copy leaves the source alone.
  copy->conditionGroups()[0]->conditions()[0]->setData(plist::Value("zzz"));
  copy->conditionGroups()[1]->setLogic(kGroupLogicAnd);
  EXPECT_EQ(source.asDictionary(), stored);
  EXPECT_EQ(TARNFilter::filterWithFilter(nullptr), nullptr);

  // Loading skips what is not of its kind, without a word.
  auto sloppy = TARNFilter::initWithDictionary(plist::Dictionary{
      {"name", 7},
      {"conditionGroups",
       plist::Array{"not a group",
                    plist::Dictionary{{"logic", "or"},
                                      {"qualifier", 0},
                                      {"conditions", plist::Array{1, plist::Dictionary{}}}},
                    plist::Dictionary{{"conditions", "not an array"}}}}});
  EXPECT_EQ(sloppy->name(), "");
  ASSERT_EQ(sloppy->conditionGroups().size(), 2u);
  EXPECT_EQ(sloppy->conditionGroups()[0]->logic(), kGroupLogicAnd);
  EXPECT_EQ(sloppy->conditionGroups()[0]->qualifier(), kGroupMatchAny);
  EXPECT_EQ(sloppy->conditionGroups()[0]->conditions().size(), 1u);
  EXPECT_EQ(sloppy->conditionGroups()[1]->qualifier(), kGroupMatchAll);
  EXPECT_TRUE(sloppy->conditionGroups()[1]->conditions().empty());
  EXPECT_TRUE(TARNFilter::initWithDictionary(plist::Value())->conditionGroups().empty());
  EXPECT_TRUE(TARNFilter::initWithDictionary(plist::Dictionary{{"conditionGroups", 3}})
                  ->conditionGroups()
                  .empty());
  EXPECT_EQ(TARNFilter().asDictionary(),
            plist::Value(plist::Dictionary{{"name", ""}, {"conditionGroups", plist::Array{}}}));
  EXPECT_EQ(Group::initWithDictionary(plist::Value(1)), nullptr);

  SetLogSink(previous);
  EXPECT_TRUE(logged.empty());
}

}  // namespace
}  // namespace tarn
