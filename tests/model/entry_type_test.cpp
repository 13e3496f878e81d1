#include "tarn/model/entry_type.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarn {
namespace {

TARNAccountEntryType Named(const char* name) {
  TARNAccountEntryType type;
  type.SetName(name);
  return type;
}

TEST(EntryType, DictionaryRoundTripAndMissingKeys) {
  TARNAccountEntryType type = Named("Épicerie");
  type.SetName(std::nullopt);  // ignored
  type.SetNumber(42);
  type.SetIsCheck(true);
  const plist::Value dictionary = type.asDictionary();
  EXPECT_EQ(dictionary.dictionaryValue().size(), 4u);
  EXPECT_TRUE(dictionary.find("isCheck")->isBoolean() && dictionary.find("number")->isInteger());
  auto loaded = TARNAccountEntryType::initWithDictionary(dictionary);
  EXPECT_EQ(loaded->GetName(), "Épicerie");
  EXPECT_EQ(loaded->asDictionary(), dictionary);

  EXPECT_EQ(TARNAccountEntryType::initWithDictionary(plist::Value())->asDictionary(),
            TARNAccountEntryType().asDictionary());
  auto deposit = TARNAccountEntryType::initWithDictionary(
      plist::Dictionary{{"isDeposit", plist::Value(1)}, {"name", plist::Value(7)}});
  EXPECT_TRUE(deposit->GetIsDeposit());  // any number reads as a flag
  EXPECT_EQ(deposit->GetName(), "");     // a name that is no string is ignored
}

TEST(EntryType, NamesCompareCaseInsensitively) {
  EXPECT_EQ(Named("Épicerie").NameIsGreaterThan(Named("épicerie")), 0);
  EXPECT_EQ(Named("Épicerie").NameIsGreaterThan(Named("Épicerie ")), -1);
  EXPECT_EQ(Named("Automatic Draft").NameIsGreaterThan(Named("ATM")), 1);
}

TEST(EntryType, DefaultTypesSortedByNameWithBothTransfers) {
  const auto types = TARNAccountEntryType::defaultTypes();
  ASSERT_EQ(types.size(), 13u);
  std::vector<int32_t> numbers, checks, deposits;
  for (const auto& type : types) {
    numbers.push_back(type->GetNumber());
    if (type->GetIsCheck()) checks.push_back(type->GetNumber());
    if (type->GetIsDeposit()) deposits.push_back(type->GetName() == "Transfer");
  }
  EXPECT_TRUE(std::is_sorted(types.begin(), types.end(), [](const auto& a, const auto& b) {
    return a->NameIsGreaterThan(*b) < 0;
  }));
  EXPECT_EQ(types[1]->GetName(), "Automatic Draft");  // after "ATM"
  EXPECT_EQ(checks, std::vector<int32_t>{TARNAccountEntryType::kTypeCheck});
  EXPECT_EQ(std::count(deposits.begin(), deposits.end(), 1), 1);
  EXPECT_EQ(deposits.size(), 3u);
  // The two transfers share a name; the stable sort keeps the debit before the deposit.
  auto out = std::find(numbers.begin(), numbers.end(), TARNAccountEntryType::kTypeTransferOut);
  auto in = std::find(numbers.begin(), numbers.end(), TARNAccountEntryType::kTypeTransferIn);
  EXPECT_EQ(types[in - numbers.begin()]->GetName(), types[out - numbers.begin()]->GetName());
  EXPECT_EQ(in - out, 1);
  std::sort(numbers.begin(), numbers.end());
  for (int32_t i = 0; i < 13; ++i) EXPECT_EQ(numbers[i], i);
}

}  // namespace
}  // namespace tarn
