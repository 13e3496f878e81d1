#include "tarn/filters/filter.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "filters/filter_book.h"
#include "tarn/platform/log.h"

namespace tarn {
namespace {

using testing::Descriptions;
using Strings = std::vector<std::string>;
using Group = TARNFilterConditionGroup;
constexpr int32_t kAnd = kGroupLogicAnd, kOr = kGroupLogicOr;

struct Condition {
  int32_t field, logic, qualifier;
  plist::Value data;
};

std::shared_ptr<Group> MakeGroup(int32_t logic, int32_t qualifier,
                                 const std::vector<Condition>& conditions = {}) {
  auto group = std::make_shared<Group>();
  group->setLogic(logic);
  group->setQualifier(qualifier);
  for (const Condition& c : conditions) {
    group->addConditionWithCategory(c.field, c.logic, c.qualifier, c.data);
  }
  return group;
}

std::shared_ptr<Group> Contains(int32_t logic, const char* text) {
  return MakeGroup(logic, kGroupMatchAll, {{kFieldDescription, 1, kTextContains, text}});
}

class FilterTest : public ::testing::Test {
 protected:
  Strings Run(const TARNFilter& filter) { return Descriptions(filter.filterEntries(entries_)); }
  Strings Run(const Group& group) { return Descriptions(group.filterEntries(entries_)); }

  testing::FilterBook book_;
  TARNEntryList entries_ =
      book_.Entries({{"apple", 1}, {"banana", 2}, {"cherry", 3}, {"date", 4}, {"elder", 5}});
};

TEST_F(FilterTest, GroupsMatchAllChainAndMatchAnyFailsWhenConditionsRunOut) {
  EXPECT_EQ(Run(*MakeGroup(kAnd, kGroupMatchAll)).size(), 5u);
  EXPECT_EQ(Run(*MakeGroup(kAnd, kGroupMatchAll,
                           {{kFieldDescription, 1, kTextContains, "e"},
                            {kFieldAmount, 1, kAmountIsGreaterThan, 2.5},
                            {kFieldDescription, 0, kTextStartsWith, "d"}})),
            (Strings{"cherry", "elder"}));
  // "Any" keeps every entry, but each must be kept by some condition.
  auto any = MakeGroup(
      kAnd, kGroupMatchAny,
      {{kFieldDescription, 1, kTextContains, "an"}, {kFieldAmount, 1, kAmountIsGreaterThan, 1.5}});
  EXPECT_THROW(any->filterEntries(entries_), std::out_of_range);  // apple is left
  any->addConditionWithCategory(kFieldDescription, 1, kTextStartsWith, "a");
  EXPECT_EQ(Run(*any).size(), 5u);
  // A condition that restricts nothing keeps every entry.
  EXPECT_EQ(Run(*MakeGroup(kAnd, kGroupMatchAny,
                           {{kFieldNotes, 1, kTextContains, ""},
                            {kFieldDescription, 1, kTextContains, "zzz"}}))
                .size(),
            5u);
  auto empty = MakeGroup(kAnd, kGroupMatchAny);
  EXPECT_THROW(empty->filterEntries(entries_), std::out_of_range);
  EXPECT_TRUE(empty->filterEntries({}).empty());
  EXPECT_TRUE(Run(*MakeGroup(kAnd, 2, {{kFieldDescription, 1, kTextContains, "a"}})).empty());
}

TEST_F(FilterTest, AndOrCombinationOrders) {
  // And groups narrow the and-list, less what or groups took; each or group
  // judges the input less what earlier or groups took; the or-set comes last.
  // A first group marked or leaves the and-list whole; other logics are skipped.
  const std::vector<std::pair<std::vector<std::pair<int32_t, const char*>>, Strings>> rows = {
      {{}, {"apple", "banana", "cherry", "date", "elder"}},
      {{{kAnd, "an"}, {kOr, "e"}}, {"banana", "apple", "cherry", "date", "elder"}},
      {{{kAnd, "an"}, {kOr, "a"}}, {"apple", "banana", "date"}},
      {{{kAnd, "an"}, {kOr, "a"}, {kOr, "e"}}, {"apple", "banana", "date", "cherry", "elder"}},
      {{{kOr, "an"}, {kAnd, "e"}}, {"apple", "cherry", "date", "elder", "banana"}},
      {{{kOr, "an"}, {kAnd, "e"}, {kAnd, "r"}}, {"cherry", "elder", "banana"}},
      {{{kOr, "an"}}, {"apple", "cherry", "date", "elder", "banana"}},
      {{{2, "zzz"}, {kAnd, "ch"}}, {"cherry"}}};
  for (size_t i = 0; i < rows.size(); ++i) {
    TARNFilter filter;
    for (const auto& [logic, text] : rows[i].first) filter.addConditionGroup(Contains(logic, text));
    EXPECT_EQ(Run(filter), rows[i].second) << "row " << i;
  }
  // An and group never sees what the or groups took: banana would fail this any group.
  TARNFilter narrowed;
  narrowed.addConditionGroup(Contains(kOr, "an"));
  narrowed.addConditionGroup(
      MakeGroup(kAnd, kGroupMatchAny, {{kFieldDescription, 1, kTextContains, "e"}}));
  EXPECT_EQ(Run(narrowed), (Strings{"apple", "cherry", "date", "elder", "banana"}));
  TARNFilter failing;  // the any group's failure reaches the caller
  failing.addConditionGroup(MakeGroup(kAnd, kGroupMatchAny));
  EXPECT_THROW(failing.filterEntries(entries_), std::out_of_range);
  EXPECT_TRUE(failing.filterEntries({}).empty());
}

TEST_F(FilterTest, TotalSkipsVoidEntries) {
  TARNFilter filter;
  filter.addConditionGroup(Contains(kAnd, "e"));  // apple, cherry, date, elder
  entries_[3]->SetVoid(true);                     // date
  EXPECT_DOUBLE_EQ(filter.filterAndTotalEntries(entries_), 1 + 3 + 5);
}

TEST_F(FilterTest, ListMaintenanceIgnoresWhatItShould) {
  TARNFilter filter;
  auto first = MakeGroup(kAnd, kGroupMatchAll);
  auto second = MakeGroup(kOr, kGroupMatchAll);
  auto third = MakeGroup(kAnd, kGroupMatchAll);
  filter.addConditionGroup(first);
  filter.addConditionGroup(first);
  filter.addConditionGroup(nullptr);
  filter.insertConditionGroup(second, 2);   // beyond the count
  filter.insertConditionGroup(second, -1);  // negative
  filter.insertConditionGroup(first, 0);    // already there
  filter.insertConditionGroup(second, 1);   // the count appends
  filter.insertConditionGroup(third, 0);
  EXPECT_EQ(filter.conditionGroups(), (TARNFilter::ConditionGroups{third, first, second}));
  filter.removeConditionGroup(MakeGroup(kAnd, kGroupMatchAll));
  filter.removeConditionGroupAtIndex(3);
  filter.removeConditionGroupAtIndex(-1);
  EXPECT_EQ(filter.conditionGroups().size(), 3u);
  filter.removeConditionGroupAtIndex(0);
  filter.removeConditionGroup(second);
  EXPECT_EQ(filter.conditionGroups(), TARNFilter::ConditionGroups{first});

  Group group;
  auto condition = std::make_shared<TARNFilterCondition>();
  group.addCondition(condition);
  group.addCondition(condition);
  group.addCondition(nullptr);
  auto made = group.addConditionWithCategory(kFieldAmount, 0, kAmountIsLessThan, 5);
  EXPECT_EQ(group.addConditionWithCategory(kFieldAmount, 1, 1, plist::Value()), nullptr);
  EXPECT_EQ(group.conditions(), (Group::Conditions{condition, made}));
  group.removeCondition(std::make_shared<TARNFilterCondition>());
  group.removeConditionAtIndex(2);
  group.removeConditionAtIndex(-1);
  EXPECT_EQ(group.conditions().size(), 2u);
  group.removeConditionAtIndex(0);
  EXPECT_EQ(group.conditions(), Group::Conditions{made});

  filter.setName("Big");
  filter.setName(std::nullopt);
  EXPECT_EQ(filter.name(), "");
}

TEST_F(FilterTest, DictionaryRoundTripAndDeepCopyShareNothing) {
  std::vector<std::string> logged;
  LogSink previous = SetLogSink([&](std::string_view line) { logged.emplace_back(line); });
  TARNFilter source;
  source.setName("Groceries");
  source.addConditionGroup(
      MakeGroup(kAnd, kGroupMatchAll,
                {{kFieldDescription, 1, kTextContains, "an"},
                 {kFieldDate, 1, kDateBetweenDates, plist::Array{20070101, 20071231}},
                 {kFieldNotes, 0, kTextContains, plist::Dictionary{{"data of", "any kind"}}}}));
  source.addConditionGroup(
      MakeGroup(kOr, kGroupMatchAny, {{kFieldAmount, 1, kAmountIsLessThan, 100.25}}));
  const plist::Value stored = source.asDictionary();
  EXPECT_EQ(stored.find("name")->stringValue(), "Groceries");
  EXPECT_EQ(TARNFilter::filterWithDictionary(stored)->asDictionary(), stored);

  auto copy = TARNFilter::filterWithFilter(&source);
  ASSERT_NE(copy, nullptr);
  ASSERT_EQ(copy->asDictionary(), stored);
  EXPECT_EQ(Run(*copy), Run(source));
  for (size_t g = 0; g < 2; ++g) {
    const auto &copied = copy->conditionGroups()[g], &original = source.conditionGroups()[g];
    EXPECT_NE(copied, original);
    for (size_t c = 0; c < original->conditions().size(); ++c) {
      EXPECT_NE(copied->conditions()[c], original->conditions()[c]);
    }
  }
  EXPECT_EQ(TARNFilter::filterWithFilter(nullptr), nullptr);

  // Loading skips what is not of its kind, without a word.
  auto sloppy = TARNFilter::initWithDictionary(plist::Dictionary{
      {"name", 7},
      {"conditionGroups",
       plist::Array{"not a group",
                    plist::Dictionary{
                        {"logic", "or"},
                        {"qualifier", 0},
                        {"conditions",
                         plist::Array{1, plist::Dictionary{{"logic", "no"}, {"qualifier", 9}}}}},
                    plist::Dictionary{{"conditions", "not an array"}}}}});
  const plist::Value loaded =
      plist::Dictionary{{"category", 0}, {"logic", 1}, {"qualifier", 9}, {"data", ""}};
  ASSERT_EQ(
      sloppy->asDictionary(),
      plist::Value(plist::Dictionary{
          {"name", ""},
          {"conditionGroups", plist::Array{plist::Dictionary{{"logic", kAnd},
                                                             {"qualifier", kGroupMatchAny},
                                                             {"conditions", plist::Array{loaded}}},
                                           plist::Dictionary{{"logic", kAnd},
                                                             {"qualifier", kGroupMatchAll},
                                                             {"conditions", plist::Array{}}}}}}));
  const auto& condition = sloppy->conditionGroups()[0]->conditions()[0];
  condition->setData(plist::Value());  // nil data is left out
  EXPECT_EQ(condition->asDictionary().find("data"), nullptr);
  EXPECT_EQ(TARNFilterCondition::initWithDictionary(plist::Value("text")), nullptr);
  EXPECT_TRUE(TARNFilter::initWithDictionary(plist::Value())->conditionGroups().empty());
  EXPECT_TRUE(TARNFilter::initWithDictionary(plist::Dictionary{{"conditionGroups", 3}})
                  ->conditionGroups()
                  .empty());
  EXPECT_EQ(Group::initWithDictionary(plist::Value(1)), nullptr);
  SetLogSink(previous);
  EXPECT_TRUE(logged.empty());
}

}  // namespace
}  // namespace tarn
