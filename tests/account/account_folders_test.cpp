#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "account_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/filters/filter.h"

namespace tarn {
namespace {

using namespace testing;
using V = std::vector<std::int32_t>;
using Lines = std::vector<std::string>;

TEST(AccountFolder, NameEntriesTotalAndDictionary) {
  TARNAccountFolder folder;
  folder.setName("Taxes");
  folder.setName(std::nullopt);
  EXPECT_EQ(folder.name(), "Untitled");
  folder.setEntries({MakeEntry(1, 20240101, -10.25), MakeEntry(2, 20240102, 4.0),
                     MakeEntry(3, 20240103, -100.0)});
  folder.entries()[2]->SetVoid(true);
  folder.setName("Taxes");
  auto copy = TARNAccountFolder::initWithDictionary(folder.asDictionary());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->asDictionary(), folder.asDictionary());
  EXPECT_EQ(Numbers(copy->entries()), (V{1, 2, 3}));
  EXPECT_DOUBLE_EQ(copy->total(), -6.25);
  EXPECT_EQ(TARNAccountFolder::initWithDictionary(plist::Value(3)), nullptr);

  // Entry problems are told in the account loader's words.
  CapturedLog log;
  plist::Value bad(plist::Dictionary{{"entries", plist::Value("x")}});
  TARNAccountFolder::initWithDictionary(bad);
  bad.set("entries", plist::Array{plist::Value(1), MakeEntry(9, 20240101, 1.0)->asDictionary()});
  EXPECT_EQ(Numbers(TARNAccountFolder::initWithDictionary(bad)->entries()), V{9});
  EXPECT_EQ(log.lines(), (Lines{"Invalid theArray supplied to -[TARNAccount InitEntries]",
                                "Invalid theValue encountered in -[TARNAccount InitEntries]"}));
}

TEST(AccountFolders, ListsIgnoreDuplicatesAbsenteesAndBadIndexes) {
  TARNAccount account;
  account.removeAllSmartFolders();
  auto a = std::make_shared<TARNFilter>(), b = std::make_shared<TARNFilter>();
  for (const auto& each : {a, a, std::shared_ptr<TARNFilter>(), b}) account.addSmartFolder(each);
  account.removeSmartFolder(std::make_shared<TARNFilter>());
  account.removeSmartFolderAtIndex(-1);
  account.removeSmartFolderAtIndex(2);
  EXPECT_EQ(account.smartFolders(), (TARNAccount::Filters{a, b}));
  account.removeSmartFolderAtIndex(0);
  EXPECT_EQ(account.smartFolders(), TARNAccount::Filters{b});

  auto f = std::make_shared<TARNAccountFolder>(), g = std::make_shared<TARNAccountFolder>();
  for (const auto& each : {f, f, g}) account.addFolder(each);
  account.removeFolderAtIndex(5);
  account.removeFolder(std::make_shared<TARNAccountFolder>());
  EXPECT_EQ(account.folders(), (TARNAccount::Folders{f, g}));
  account.removeFolder(f);
  EXPECT_EQ(account.folders(), TARNAccount::Folders{g});
  account.setFolder(std::make_shared<TARNAccountFolder>());  // not in the list: not kept
  EXPECT_EQ(account.folder(), nullptr);

  // Entries go to the selected folder and come out of wherever they are.
  auto inRegister = Add(account, 1, 20240101, -5.0);
  account.setFolder(g);
  auto inFolder = Add(account, 2, 20240102, -6.0);
  EXPECT_EQ(Numbers(account.GetEntries()), V{1});
  EXPECT_EQ(Numbers(g->entries()), V{2});
  EXPECT_EQ(inFolder->GetAccount(), &account);
  account.RemoveEntry(inFolder);
  account.RemoveEntry(inRegister);
  EXPECT_TRUE(g->entries().empty());
  EXPECT_TRUE(account.GetEntries().empty());
  // SetFolders points the folders' entries at the account.
  auto h = std::make_shared<TARNAccountFolder>();
  h->setEntries({MakeEntry(1, 20240101, 1.0)});
  account.SetFolders({h});
  EXPECT_EQ(h->entries()[0]->GetAccount(), &account);
}

struct Condition {
  int field, logic, qualifier;
  plist::Value data;
  bool operator==(const Condition&) const = default;
};

std::vector<Condition> Conditions(const TARNFilter& filter) {
  std::vector<Condition> out;
  for (const auto& group : filter.conditionGroups()) {
    for (const auto& each : group->conditions())
      out.push_back({each->category(), each->logic(), each->qualifier(), each->data()});
  }
  return out;
}

TEST(AccountViewFilters, FiltersBuiltFromTheSettings) {
  PinnedClock clock;
  TARNAccount account;
  int number = 0;
  for (DateNumber date : {20240310, 20231105, 20240101}) Add(account, ++number, date, -1.0);

  // Defaults: search anything for "", the dates of all entries, no flags.
  auto filter = account.entryFilter();
  EXPECT_EQ(filter->name(), "General");
  ASSERT_EQ(filter->conditionGroups().size(), 1u);
  EXPECT_EQ(filter->conditionGroups()[0]->logic(), 0);
  EXPECT_EQ(filter->conditionGroups()[0]->qualifier(), 1);
  EXPECT_EQ(Conditions(*filter), (std::vector<Condition>{{50, 1, 6, plist::Value("")},
                                                         {1, 1, 2, plist::Value(20231104)},
                                                         {1, 1, 0, plist::Value(20240311)}}));

  account.setReconcileFilterType(kViewSearchSplitCategory);
  account.setReconcileFilterData(plist::Value());
  account.setReconcileDateFilterType(kViewDateFirstEntryToToday);
  account.setReconcileResolvedFilterType(kViewUnresolvedOnly);
  account.setReconcileTaxDeductibleFilterType(kViewTaxDeductibleOnly);
  filter = account.reconcileFilter();
  EXPECT_EQ(filter->name(), "Split Category");
  EXPECT_EQ(Conditions(*filter), (std::vector<Condition>{{20, 1, 6, plist::Value("")},
                                                         {1, 1, 2, plist::Value(20231104)},
                                                         {1, 1, 0, plist::Value(20240616)},
                                                         {6, 1, 1, plist::Value(false)},
                                                         {7, 1, 1, plist::Value(true)}}));

  // Named periods and the custom range; types outside the tables add nothing.
  const std::pair<int, std::pair<int, int>> periods[] = {{kViewDateToday, {20240615, 20240615}},
                                                         {kViewDateYesterday, {20240614, 20240614}},
                                                         {31, {20240601, 20240630}},
                                                         {43, {20230101, 20231231}},
                                                         {51, {20240601, 20240615}},
                                                         {kViewDateCustom, {20240201, 20240229}}};
  account.setEntryDateFilterStartDate(20240201);
  account.setEntryDateFilterEndDate(20240229);
  for (const auto& [type, range] : periods) {
    account.setEntryDateFilterType(type);
    auto conditions = Conditions(*account.entryFilter());
    ASSERT_EQ(conditions.size(), 3u) << type;
    EXPECT_EQ(conditions[1].data, plist::Value(range.first - 1)) << type;
    EXPECT_EQ(conditions[2].data, plist::Value(range.second + 1)) << type;
  }
  account.setEntryDateFilterType(99);
  account.setEntryResolvedFilterType(kViewResolvedOnly);
  account.setEntryTaxDeductibleFilterType(93);
  account.setEntryFilterType(kViewSearchCheckNumber);
  account.setEntryFilterData(plist::Value("101"));
  filter = account.entryFilter();
  EXPECT_EQ(filter->name(), "Check Number");
  EXPECT_EQ(Conditions(*filter), (std::vector<Condition>{{10, 1, 6, plist::Value("101")},
                                                         {6, 1, 1, plist::Value(true)}}));
  EXPECT_TRUE(Conditions(*account.filterForViewType(3)).empty());
}

TEST(AccountViewFilters, FilteredEntriesOfTheTwoViews) {
  PinnedClock clock;
  TARNAccount account;
  for (int i = 1; i <= 6; ++i)
    Add(account, i, 20240100 + i, i % 2 ? -10.0 * i : 10.0 * i)->SetCleared(i <= 2 ? 1 : 0);
  // The default settings pass every entry.
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(Numbers(account.reconcileFilteredEntries()), (V{1, 2, 3, 4, 5, 6}));
  account.setReconcileResolvedFilterType(kViewUnresolvedOnly);
  EXPECT_EQ(Numbers(account.reconcileFilteredEntries()), (V{3, 4, 5, 6}));
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{1, 2, 3, 4, 5, 6}));
  account.setEntryDateFilterType(kViewDateCustom);
  account.setEntryDateFilterStartDate(20240102);
  account.setEntryDateFilterEndDate(20240105);
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{2, 3, 4, 5}));

  // A smart folder narrows the view; a selected folder hides it and shows its own entries.
  auto deposits = std::make_shared<TARNFilter>();
  auto group = std::make_shared<TARNFilterConditionGroup>();
  group->addConditionWithCategory(kFieldAmount, 1, kAmountIsGreaterThan, plist::Value(0.0));
  deposits->addConditionGroup(group);
  account.addSmartFolder(deposits);
  account.setSmartFolder(deposits);
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{2, 4}));
  auto folder = std::make_shared<TARNAccountFolder>();
  folder->setEntries(
      {MakeEntry(20, 20240103, -1.0), MakeEntry(21, 20240109, -2.0), MakeEntry(22, 20240104, 3.0)});
  account.SetFolders({folder});
  account.setFolder(folder);
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{20, 22}));
  account.setFolder(nullptr);
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{2, 4}));
}

TEST(AccountViewFilters, AllEntriesRangeComesFromTheRegisterOnly) {
  PinnedClock clock;
  TARNAccount account;
  auto folder = std::make_shared<TARNAccountFolder>();
  folder->setEntries({MakeEntry(1, 20240101, -1.0), MakeEntry(2, PinnedClock::kToday, -2.0),
                      MakeEntry(3, 20240701, -3.0)});
  account.SetFolders({folder});
  account.setFolder(folder);
  // An empty register: the range is today alone, whatever the folder holds.
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), V{2});
  account.setFolder(nullptr);
  Add(account, 4, 20231231, -1.0);
  Add(account, 5, 20240102, -1.0);
  account.setFolder(folder);
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), V{1});
}

}  // namespace
}  // namespace tarn
