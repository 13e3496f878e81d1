#include "tarn/model/split_line_item.h"

#include <gtest/gtest.h>

namespace tarn {
namespace {

TEST(SplitLineItem, NilTextsBecomeEmptyAndAmountsKeepEveryDigit) {
  auto made = TARNAccountEntrySplitLineItem::initWithCategory(7, std::nullopt, "Shell", -3.5, -4.0);
  EXPECT_EQ(made->category(), 7);
  EXPECT_EQ(made->description(), "");
  EXPECT_EQ(made->toFrom(), "Shell");
  made->setToFrom(std::nullopt);
  EXPECT_EQ(made->toFrom(), "");
  // Unlike the entry, a line does not round.
  made->setAmount(10.125);
  made->setExchangedAmount(2.675);
  EXPECT_EQ(made->amount(), 10.125);
  EXPECT_EQ(made->exchangedAmount(), 2.675);
}

TEST(SplitLineItem, DictionaryRoundTripAndPartialDictionaries) {
  auto item =
      TARNAccountEntrySplitLineItem::initWithCategory(12, "Groceries", "Market", -41.257, -37.1);
  plist::Value dictionary = item->asDictionary();
  EXPECT_EQ(dictionary, plist::Value(plist::Dictionary{{"category", plist::Value(12)},
                                                       {"toFrom", plist::Value("Market")},
                                                       {"description", plist::Value("Groceries")},
                                                       {"amount", plist::Value(-41.257)},
                                                       {"exchangedAmount", plist::Value(-37.1)}}));
  EXPECT_TRUE(dictionary.find("category")->isInteger());
  EXPECT_EQ(*TARNAccountEntrySplitLineItem::initWithDictionary(dictionary), *item);

  // Only keys that are present and of their kind are read.
  auto partial = TARNAccountEntrySplitLineItem::initWithDictionary(
      plist::Value(plist::Dictionary{{"amount", plist::Value(5)},
                                     {"toFrom", plist::Value(3.0)},
                                     {"category", plist::Value("7")}}));
  TARNAccountEntrySplitLineItem expected;
  expected.setAmount(5.0);
  EXPECT_EQ(*partial, expected);
  EXPECT_EQ(expected.category(), -1);
  EXPECT_EQ(*TARNAccountEntrySplitLineItem::initWithDictionary(plist::Value()),
            TARNAccountEntrySplitLineItem());
}

}  // namespace
}  // namespace tarn
