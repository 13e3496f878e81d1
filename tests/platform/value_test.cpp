#include "tarn/platform/value.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <vector>

#include "tarn/platform/bulk_storage.h"

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

TEST(PlistValue, OptionalNumberKeysReplaceAFieldOnlyWithANumber) {
  const Value stored(Dictionary{{"count", 4.7}, {"flag", 0.5}, {"text", "12"}, {"off", false}});
  std::int32_t count = -1;
  bool flag = false;
  ReadNumber(stored, "count", count);
  ReadFlag(stored, "flag", flag);
  EXPECT_EQ(count, 4);
  EXPECT_TRUE(flag);
  ReadNumber(stored, "text", count);     // a text is no number
  ReadNumber(stored, "missing", count);  // nor is nothing
  ReadNumber(Value(7), "count", count);  // a receiver that is no dictionary
  EXPECT_EQ(count, 4);
  ReadFlag(stored, "off", flag);
  EXPECT_FALSE(flag);
  ReadNumber(stored, "off", count);
  EXPECT_EQ(count, 0);
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

// Dictionaries built in bulk share large chunks; each chunk must stay alive
// while any of them does, whichever thread frees them and whether or not
// they grow again outside the scope.
TEST(PlistValue, DictionariesBuiltInBulkLiveOnAfterTheScopeAndDieOnAnyThread) {
  auto entry = [](int i) {
    return Value(
        Dictionary{{"amount", i * 0.5}, {"number", i}, {"payee", "Payee " + std::to_string(i)}});
  };
  std::vector<Value> early;
  std::vector<Value> late;
  {
    BulkStorageScope bulk;
    // Some 12 MB of dictionaries: several chunks.
    for (int i = 0; i < 40000; ++i) (i % 2 == 0 ? early : late).push_back(entry(i));
    BulkStorageScope nested;
  }
  std::thread([&early] { early.clear(); }).join();
  for (std::size_t i = 0; i < late.size(); ++i) {
    late[i].set("zzz", static_cast<int>(i));  // grows past its bulk array
    late[i].set("amount", -1.0);
  }
  Value copy = late.back();
  late.resize(late.size() / 2);
  for (std::size_t i = 0; i < late.size(); ++i) {
    const int number = static_cast<int>(2 * i + 1);
    ASSERT_EQ(late[i].find("payee")->stringValue(), "Payee " + std::to_string(number));
    ASSERT_EQ(late[i].find("zzz")->intValue(), static_cast<int>(i));
    ASSERT_EQ(late[i].find("amount")->doubleValue(), -1.0);
  }
  EXPECT_EQ(copy.find("number")->intValue(), 39999);
  EXPECT_EQ(copy.dictionaryValue().size(), 4u);
}

}  // namespace
}  // namespace tarn::plist
