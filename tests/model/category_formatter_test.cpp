#include "tarn/model/category_formatter.h"

#include <gtest/gtest.h>

namespace tarn {
namespace {

std::shared_ptr<TARNAccountEntryCategory> Named(const char* name, int32_t number) {
  auto category = std::make_shared<TARNAccountEntryCategory>();
  category->setName(name);
  category->setNumber(number);
  return category;
}

TEST(CategoryFormatter, WritesFullNamesReadsExactOwnNames) {
  auto autoCategory = Named("Auto", 1);
  auto fuel = Named("Fuel", 2);
  autoCategory->addChild(fuel);
  auto home = Named("Home", 3);
  auto homeFuel = Named("Fuel", 4);  // same own name under another parent
  home->addChild(homeFuel);

  PFCategoryFormatter formatter;
  EXPECT_EQ(formatter.stringForObjectValue(fuel), "Auto:Fuel");
  EXPECT_EQ(formatter.stringForObjectValue(nullptr), "");
  EXPECT_EQ(formatter.getObjectValue("Fuel"), nullptr);  // no list yet
  formatter.setCategories(PFCategoryFormatter::Categories{autoCategory, fuel, home, homeFuel});
  EXPECT_EQ(formatter.getObjectValue("Fuel"), fuel);  // the first in the list wins
  EXPECT_EQ(formatter.getObjectValue("fuel"), nullptr);
  EXPECT_EQ(formatter.getObjectValue("Auto:Fuel"), nullptr);  // what it writes, it can't read
  EXPECT_EQ(formatter.getObjectValue("Home"), home);
  formatter.setCategories(std::nullopt);
  EXPECT_EQ(formatter.getObjectValue("Home"), nullptr);
  EXPECT_EQ(formatter.attributedStringForObjectValue(fuel, {{"font", "italic"}}).string,
            "Auto:Fuel");
}

}  // namespace
}  // namespace tarn
