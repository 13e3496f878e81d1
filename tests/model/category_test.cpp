#include "tarn/model/category.h"

#include <gtest/gtest.h>

namespace tarn {
namespace {

using Category = TARNAccountEntryCategory;
using Names = std::vector<std::string>;

std::shared_ptr<Category> Named(const char* name, int32_t number = -1) {
  auto category = std::make_shared<Category>();
  category->setName(name);
  category->setNumber(number);
  return category;
}

Names FullNames(const Category::Children& categories) {
  Names names;
  for (const auto& category : categories) names.push_back(category->fullName());
  return names;
}

plist::Value Dictionary(const char* name, int number, plist::Array children = {}) {
  return plist::Dictionary{{"name", plist::Value(name)},
                           {"number", plist::Value(number)},
                           {"children", plist::Value(std::move(children))}};
}

TEST(Category, NestedDictionaryRoundTripSortsAndParents) {
  auto root = Category::initWithDictionary(
      Dictionary("Auto", 1,
                 {Dictionary("Service", 3), Dictionary("fuel", 2, {Dictionary("Diesel", 5)}),
                  plist::Value("not a category"), Dictionary("Épicerie", 4)}));
  // Sorted case-insensitively on load; the stray string is skipped.
  EXPECT_EQ(FullNames(root->allChildren()),
            (Names{"Auto:fuel", "Auto:fuel:Diesel", "Auto:Service", "Auto:Épicerie"}));
  const auto diesel = root->children()[0]->children()[0];
  EXPECT_EQ(diesel->parents(), (std::vector<Category*>{root.get(), root->children()[0].get()}));
  // Written back in the sorted order, "children" always present, no "parent".
  const plist::Value written = root->asDictionary();
  EXPECT_EQ(written.find("parent"), nullptr);
  EXPECT_EQ(written.find("children")->arrayValue()[2].find("children")->arrayValue().size(), 0u);
  EXPECT_EQ(Category::initWithDictionary(written)->asDictionary(), written);

  // Number 0 without the key, -1 without a dictionary at all.
  auto unnumbered = Category::initWithDictionary(plist::Dictionary{{"name", plist::Value("Auto")}});
  EXPECT_EQ(unnumbered->number(), 0);
  EXPECT_EQ(Category::initWithDictionary(plist::Value())->number(), -1);
  unnumbered->setName(std::nullopt);  // ignored
  EXPECT_EQ(unnumbered->name(), "Auto");
}

TEST(Category, EditingCategoriesBuildEditingChildrenAndCopyPlain) {
  using Editing = TARNEditingAccountEntryCategory;
  const plist::Value stored = Dictionary("Auto", 1, {Dictionary("Fuel", 2)});
  auto editing = Editing::initWithDictionary(stored);
  ASSERT_NE(std::dynamic_pointer_cast<Editing>(editing->children()[0]), nullptr);
  EXPECT_EQ(editing->asDictionary(), stored);
  // Copies are plain, deep and detached: new children, no parent.
  auto copied = editing->children()[0]->copy();
  EXPECT_EQ(std::dynamic_pointer_cast<Editing>(copied), nullptr);
  EXPECT_EQ(copied->fullName(), "Fuel");
  copied = editing->copy();
  EXPECT_EQ(std::dynamic_pointer_cast<Editing>(copied->children().at(0)), nullptr);
  EXPECT_NE(copied->children()[0], editing->children()[0]);
  EXPECT_EQ(copied->children()[0]->parent(), copied.get());
}

TEST(Category, AddChildMovesBetweenParentsAndDropsARepeatedChild) {
  auto autoCategory = Named("Auto");
  auto home = Named("Home");
  auto fuel = Named("fuel");
  autoCategory->addChild(Named("Service"));
  autoCategory->addChild(fuel);
  autoCategory->addChild(nullptr);
  EXPECT_EQ(FullNames(autoCategory->children()), (Names{"Auto:fuel", "Auto:Service"}));

  home->addChild(fuel);  // taken out of the old parent
  EXPECT_EQ(fuel->parent(), home.get());
  EXPECT_EQ(autoCategory->childWithName("FUEL"), nullptr);
  EXPECT_EQ(home->childWithName("FUEL"), fuel);

  // A child the receiver already holds: appended, then removed by the old parent (the
  // receiver itself) with every occurrence; parent kept.
  home->addChild(fuel);
  EXPECT_TRUE(home->children().empty());
  EXPECT_EQ(fuel->parent(), home.get());

  // A removed child keeps its parent, so adding it anywhere asks the old one again.
  auto service = autoCategory->childWithName("service");
  autoCategory->removeChild(service);
  EXPECT_EQ(service->parent(), autoCategory.get());
  home->addChild(service);
  EXPECT_EQ(home->children(), Category::Children{service});
  EXPECT_EQ(service->parent(), home.get());
}

TEST(Category, InsertChildChecksTheIndexThenSorts) {
  auto parent = Named("Auto");
  parent->insertChild(Named("Fuel"), 1);  // beyond the end of an empty list
  parent->insertChild(Named("Fuel"), -1);
  parent->insertChild(nullptr, 0);
  EXPECT_TRUE(parent->children().empty());
  parent->insertChild(Named("Tolls"), 0);
  parent->insertChild(Named("Fuel"), 1);  // at the end, then sorted first
  EXPECT_EQ(FullNames(parent->children()), (Names{"Auto:Fuel", "Auto:Tolls"}));
  parent->removeChildAtIndex(2);
  parent->removeChildAtIndex(-1);

  // Renaming breaks the order until sortChildren, which recurses.
  auto tolls = parent->children()[1];
  tolls->addChild(Named("Zone B"));
  tolls->addChild(Named("Zone C"));
  parent->children()[0]->setName("Wash");
  tolls->children()[1]->setName("Zone A");
  parent->sortChildren();
  EXPECT_EQ(FullNames(parent->allChildren()),
            (Names{"Auto:Tolls", "Auto:Tolls:Zone A", "Auto:Tolls:Zone B", "Auto:Wash"}));
}

TEST(Category, FullNamesAndLookups) {
  auto root = Category::initWithDictionary(Dictionary(
      "Auto", 1, {Dictionary("Fuel", 2, {Dictionary("Diesel", 3)}), Dictionary("Épicerie", 4)}));
  root->addChild(Named("fuel", 9));  // duplicate full names: the first in pre-order wins
  const std::pair<std::optional<std::string>, int> byFullName[] = {
      {"auto:fuel", 2},     {"Auto:Fu", -2}, {"Auto:Fuel:", -2}, {"AUTO:FUEL:DIESEL", 3},
      {"auto:épicerie", 4}, {"AUTO", 1},     {std::nullopt, -2}, {"Fuel", -2}};
  for (const auto& [name, number] : byFullName) {
    auto found = root->childWithFullName(name);
    EXPECT_EQ(found ? found->number() : -2, number) << name.value_or("nil");
  }
  EXPECT_EQ(root->childWithName("ÉPICERIE")->number(), 4);
  EXPECT_EQ(root->childWithName("Diesel"), nullptr);  // direct children only
  EXPECT_EQ(root->childWithName(std::nullopt), nullptr);

  auto unnamed = Named("");
  auto child = Named("Gifts");
  unnamed->addChild(child);
  EXPECT_EQ(child->fullName(), ":Gifts");

  // Children that outlive their parent no longer point at it.
  auto orphan = root->children()[0];
  root.reset();
  EXPECT_EQ(orphan->parent(), nullptr);
  EXPECT_EQ(orphan->children()[0]->fullName(), "Fuel:Diesel");
}

TEST(Category, NameComparisonIgnoresCase) {
  EXPECT_EQ(Named("cash")->nameIsGreaterThan(*Named("Cash")), 0);
  EXPECT_EQ(Named("Épicerie")->nameIsGreaterThan(*Named("épicerie")), 0);
  EXPECT_EQ(Named("CAFÉ")->nameIsGreaterThan(*Named("Café")), 0);
  EXPECT_EQ(Named("ATM")->nameIsGreaterThan(*Named("Automatic Draft")), -1);
  EXPECT_EQ(Named("Automatic Draft")->nameIsGreaterThan(*Named("ATM")), 1);
}

}  // namespace
}  // namespace tarn
