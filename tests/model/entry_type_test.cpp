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
  EXPECT_TRUE(dictionary.find("isCheck")->isBoolean());
  EXPECT_TRUE(dictionary.find("isDeposit")->isBoolean());
  EXPECT_TRUE(dictionary.find("number")->isInteger());
  auto loaded = TARNAccountEntryType::initWithDictionary(dictionary);
  EXPECT_EQ(loaded->GetName(), "Épicerie");
  EXPECT_EQ(loaded->asDictionary(), dictionary);

  EXPECT_EQ(TARNAccountEntryType::initWithDictionary(plist::Value())->asDictionary(),
            TARNAccountEntryType().asDictionary());
  plist::Dictionary partial{{"isDeposit", plist::Value(1)}, {"name", plist::Value(7)}};
  auto deposit = TARNAccountEntryType::initWithDictionary(partial);
  EXPECT_TRUE(deposit->GetIsDeposit());  // any number reads as a flag
  EXPECT_EQ(deposit->GetName(), "");     // a name that is no string is ignored
  EXPECT_EQ(deposit->GetNumber(), 0);
}

TEST(EntryType, NamesCompareCaseInsensitively) {
  EXPECT_EQ(Named("Épicerie").NameIsGreaterThan(Named("épicerie")), 0);
  EXPECT_EQ(Named("Épicerie").NameIsGreaterThan(Named("Épicerie ")), -1);
  EXPECT_EQ(Named("Automatic Draft").NameIsGreaterThan(Named("ATM")), 1);
}

TEST(EntryType, DefaultTypesSortedByNameWithBothTransfers) {
  const auto types = TARNAccountEntryType::defaultTypes();
  ASSERT_EQ(types.size(), 13u);
  EXPECT_TRUE(std::is_sorted(types.begin(), types.end(), [](const auto& a, const auto& b) {
    return a->NameIsGreaterThan(*b) < 0;
  }));
  EXPECT_EQ(types[0]->GetName(), "ATM");
  EXPECT_EQ(types[1]->GetName(), "Automatic Draft");
  std::vector<int32_t> numbers;
  int checks = 0, deposits = 0;
  for (const auto& type : types) {
    numbers.push_back(type->GetNumber());
    checks += type->GetIsCheck();
    deposits += type->GetIsDeposit();
  }
  std::sort(numbers.begin(), numbers.end());
  for (int32_t i = 0; i < 13; ++i) EXPECT_EQ(numbers[i], i);
  EXPECT_EQ(checks, 1);
  EXPECT_EQ(deposits, 3);

  auto position = [&](int32_t number) {
    return std::find_if(types.begin(), types.end(),
                        [&](const auto& type) { return type->GetNumber() == number; });
  };
  EXPECT_TRUE((*position(TARNAccountEntryType::kTypeCheck))->GetIsCheck());
  // The two transfers share a name; the stable sort keeps the debit before the deposit.
  auto out = position(TARNAccountEntryType::kTypeTransferOut);
  auto in = position(TARNAccountEntryType::kTypeTransferIn);
  EXPECT_EQ((*out)->GetName(), "Transfer");
  EXPECT_EQ((*in)->GetName(), "Transfer");
  EXPECT_TRUE(!(*out)->GetIsDeposit() && (*in)->GetIsDeposit());
  EXPECT_LT(out, in);
}

}  // namespace
}  // namespace tarn
