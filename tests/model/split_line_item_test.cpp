#include "tarn/model/split_line_item.h"

#include <gtest/gtest.h>

namespace tarn {
namespace {

using LineItem = TARNAccountEntrySplitLineItem;
using plist::Value;

TEST(SplitLineItem, DictionaryRoundTripAndPartialDictionaries) {
  auto item = LineItem::initWithCategory(12, "Groceries", "Market", -41.257, -37.1);
  const Value dictionary = item->asDictionary();
  // Unlike the entry, a line does not round.
  EXPECT_EQ(dictionary, Value(plist::Dictionary{{"category", Value(12)},
                                                {"toFrom", Value("Market")},
                                                {"description", Value("Groceries")},
                                                {"amount", Value(-41.257)},
                                                {"exchangedAmount", Value(-37.1)}}));
  EXPECT_TRUE(dictionary.find("category")->isInteger());
  EXPECT_EQ(*LineItem::initWithDictionary(dictionary), *item);

  // Only keys that are present and of their kind are read; nil texts become empty.
  auto partial = LineItem::initWithDictionary(Value(
      plist::Dictionary{{"amount", Value(5)}, {"toFrom", Value(3.0)}, {"category", Value("7")}}));
  LineItem expected;
  expected.setAmount(5.0);
  expected.setToFrom("Market");
  expected.setToFrom(std::nullopt);
  EXPECT_EQ(*partial, expected);
  EXPECT_EQ(expected.category(), -1);
  EXPECT_EQ(LineItem::initWithCategory(7, std::nullopt, "", 0, 0)->description(), "");
  EXPECT_EQ(*LineItem::initWithDictionary(Value()), LineItem());
}

}  // namespace
}  // namespace tarn
