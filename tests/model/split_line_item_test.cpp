#include "tarn/model/split_line_item.h"

#include <gtest/gtest.h>

namespace tarn {
namespace {

TEST(SplitLineItem, StartsEmptyAndTurnsNilTextsIntoEmptyOnes) {
  TARNAccountEntrySplitLineItem item;
  EXPECT_EQ(item.category(), -1);
  EXPECT_EQ(item.toFrom(), "");
  EXPECT_EQ(item.description(), "");
  EXPECT_EQ(item.amount(), 0.0);
  EXPECT_EQ(item.exchangedAmount(), 0.0);

  item.setToFrom("Shell");
  item.setDescription("Fuel");
  item.setToFrom(std::nullopt);
  item.setDescription(std::nullopt);
  EXPECT_EQ(item.toFrom(), "");
  EXPECT_EQ(item.description(), "");

  auto made = TARNAccountEntrySplitLineItem::initWithCategory(7, std::nullopt, "Shell", -3.5, -4.0);
  EXPECT_EQ(made->category(), 7);
  EXPECT_EQ(made->description(), "");
  EXPECT_EQ(made->toFrom(), "Shell");
  EXPECT_EQ(made->amount(), -3.5);
  EXPECT_EQ(made->exchangedAmount(), -4.0);
}

TEST(SplitLineItem, KeepsEveryDigitOfItsAmount) {
  // Unlike the entry, a line does not round: 10.125 stays 10.125.
  TARNAccountEntrySplitLineItem item;
  item.setAmount(10.125);
  item.setExchangedAmount(2.675);
  EXPECT_EQ(item.amount(), 10.125);
  EXPECT_EQ(item.exchangedAmount(), 2.675);
}

TEST(SplitLineItem, DictionaryRoundTrip) {
  auto item =
      TARNAccountEntrySplitLineItem::initWithCategory(12, "Groceries", "Market", -41.257, -37.1);
  plist::Value dictionary = item->asDictionary();
  plist::Dictionary expected{{"category", plist::Value(12)},
                             {"toFrom", plist::Value("Market")},
                             {"description", plist::Value("Groceries")},
                             {"amount", plist::Value(-41.257)},
                             {"exchangedAmount", plist::Value(-37.1)}};
  EXPECT_EQ(dictionary, plist::Value(expected));
  EXPECT_TRUE(dictionary.find("category")->isInteger());

  auto back = TARNAccountEntrySplitLineItem::initWithDictionary(dictionary);
  EXPECT_EQ(*back, *item);
}

TEST(SplitLineItem, ReadsOnlyTheKeysThatArePresentAndOfTheirKind) {
  auto partial = TARNAccountEntrySplitLineItem::initWithDictionary(
      plist::Value(plist::Dictionary{{"amount", plist::Value(5)},
                                     {"toFrom", plist::Value(3.0)},
                                     {"category", plist::Value("7")}}));
  EXPECT_EQ(partial->amount(), 5.0);
  EXPECT_EQ(partial->toFrom(), "");
  EXPECT_EQ(partial->category(), -1);
  EXPECT_EQ(partial->exchangedAmount(), 0.0);

  // A nil value leaves the defaults.
  EXPECT_EQ(*TARNAccountEntrySplitLineItem::initWithDictionary(plist::Value()),
            TARNAccountEntrySplitLineItem());
}

}  // namespace
}  // namespace tarn
