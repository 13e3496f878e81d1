#include "tarn/platform/value.h"

#include <gtest/gtest.h>

#include <limits>

namespace tarn::plist {
namespace {

TEST(PlistValue, NumbersReadAsThePlatformReadsThem) {
  EXPECT_EQ(Value(3.99).intValue(), 3);
  EXPECT_EQ(Value(-3.99).longValue(), -3);
  EXPECT_EQ(Value(true).intValue(), 1);
  EXPECT_TRUE(Value(0.5).boolValue());
  EXPECT_EQ(Value(std::int64_t{0x1'0000'0005}).intValue(), 5);  // narrowed to 32 bits
  EXPECT_EQ(Value(std::numeric_limits<double>::quiet_NaN()).longValue(), 0);
  EXPECT_EQ(Value(1e300).longValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Value("12").intValue(), 0);  // text is not a number
  EXPECT_EQ(Value(7).stringValue(), "");
  EXPECT_TRUE(Value().arrayValue().empty());
  EXPECT_EQ(Value("x").find("key"), nullptr);
}

TEST(PlistValue, SortedDictionaryKeepsKeysOrderedWhateverTheInsertionOrder) {
  Dictionary dictionary;
  dictionary["number"] = 5;
  dictionary.emplace("amount", 1.5);
  dictionary.emplace_hint(dictionary.end(), "date", 20070315);  // wrong hint: still placed right
  dictionary.emplace_hint(dictionary.begin(), "type", 4);
  EXPECT_FALSE(dictionary.emplace("amount", 9.0).second);  // emplace keeps the first value
  dictionary.insert_or_assign("number", 6);

  std::vector<std::string> keys;
  for (const auto& [key, value] : dictionary) keys.push_back(key);
  EXPECT_EQ(keys, (std::vector<std::string>{"amount", "date", "number", "type"}));
  EXPECT_EQ(dictionary.at("amount").doubleValue(), 1.5);
  EXPECT_EQ(dictionary.at("number").intValue(), 6);
  EXPECT_THROW(dictionary.at("missing"), std::out_of_range);
  EXPECT_EQ(dictionary.erase("date"), 1u);
  EXPECT_EQ(dictionary.find("date"), dictionary.end());

  Dictionary sameKeysOtherOrder{{"type", 4}, {"number", 6}, {"amount", 1.5}};
  EXPECT_EQ(Value(dictionary), Value(sameKeysOtherOrder));
  sameKeysOtherOrder["type"] = 5;
  EXPECT_NE(Value(dictionary), Value(sameKeysOtherOrder));
}

TEST(PlistValue, NestedValuesCopyDeeply) {
  Value account;
  account.set("entries", Array{Value(Dictionary{{"amount", -10.0}})});
  Value copy = account;
  copy.mutableDictionary()["entries"].mutableArray()[0].set("amount", -20.0);
  EXPECT_EQ(account.find("entries")->arrayValue()[0].find("amount")->doubleValue(), -10.0);
  EXPECT_NE(account, copy);
}

}  // namespace
}  // namespace tarn::plist
