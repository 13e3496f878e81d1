#include "tarn/model/entry_type.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarn {
namespace {

TEST(EntryType, DefaultsAndNilName) {
  TARNAccountEntryType type;
  EXPECT_EQ(type.GetName(), "");
  EXPECT_EQ(type.GetNumber(), 0);
  EXPECT_FALSE(type.GetIsCheck());
  EXPECT_FALSE(type.GetIsDeposit());
  type.SetName("Check");
  type.SetName(std::nullopt);
  EXPECT_EQ(type.GetName(), "Check");
  type.SetName("");
  EXPECT_EQ(type.GetName(), "");
}

TEST(EntryType, DictionaryRoundTripAndMissingKeys) {
  TARNAccountEntryType type;
  type.SetName("Épicerie");
  type.SetNumber(42);
  type.SetIsCheck(true);
  const plist::Value dictionary = type.asDictionary();
  ASSERT_TRUE(dictionary.isDictionary());
  EXPECT_EQ(dictionary.dictionaryValue().size(), 4u);
  EXPECT_TRUE(dictionary.find("isCheck")->isBoolean());
  EXPECT_TRUE(dictionary.find("isDeposit")->isBoolean());
  EXPECT_TRUE(dictionary.find("number")->isInteger());

  auto loaded = TARNAccountEntryType::initWithDictionary(dictionary);
  EXPECT_EQ(loaded->GetName(), "Épicerie");
  EXPECT_EQ(loaded->GetNumber(), 42);
  EXPECT_TRUE(loaded->GetIsCheck());
  EXPECT_FALSE(loaded->GetIsDeposit());
  EXPECT_EQ(loaded->asDictionary(), dictionary);

  // Nil leaves every default; a partial dictionary only what it holds.
  auto empty = TARNAccountEntryType::initWithDictionary(plist::Value());
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty->asDictionary(), TARNAccountEntryType().asDictionary());
  plist::Dictionary partial{{"isDeposit", plist::Value(1)}, {"name", plist::Value(7)}};
  auto deposit = TARNAccountEntryType::initWithDictionary(partial);
  EXPECT_TRUE(deposit->GetIsDeposit());  // any number reads as a flag
  EXPECT_EQ(deposit->GetName(), "");     // a name that is no string is ignored
  EXPECT_EQ(deposit->GetNumber(), 0);
}

TEST(EntryType, NamesCompareCaseInsensitively) {
  auto named = [](const char* name) {
    TARNAccountEntryType type;
    type.SetName(name);
    return type;
  };
  EXPECT_EQ(named("ATM").NameIsGreaterThan(named("Automatic Draft")), -1);
  EXPECT_EQ(named("Automatic Draft").NameIsGreaterThan(named("ATM")), 1);
  EXPECT_EQ(named("cash").NameIsGreaterThan(named("Cash")), 0);
  EXPECT_EQ(named("Épicerie").NameIsGreaterThan(named("épicerie")), 0);
  EXPECT_EQ(named("Épicerie").NameIsGreaterThan(named("Épicerie ")), -1);
}

TEST(EntryType, DefaultTypesSortedByNameWithBothTransfers) {
  const auto types = TARNAccountEntryType::defaultTypes();
  ASSERT_EQ(types.size(), 13u);
  EXPECT_TRUE(std::is_sorted(types.begin(), types.end(), [](const auto& a, const auto& b) {
    return a->NameIsGreaterThan(*b) < 0;
  }));
  EXPECT_EQ(types.front()->GetName(), "ATM");
  EXPECT_EQ(types[1]->GetName(), "Automatic Draft");
  std::vector<int32_t> numbers;
  for (const auto& type : types) numbers.push_back(type->GetNumber());
  std::sort(numbers.begin(), numbers.end());
  for (int32_t i = 0; i < 13; ++i) EXPECT_EQ(numbers[i], i);

  auto byNumber = [&](int32_t number) {
    return *std::find_if(types.begin(), types.end(),
                         [&](const auto& type) { return type->GetNumber() == number; });
  };
  EXPECT_TRUE(byNumber(TARNAccountEntryType::kTypeCheck)->GetIsCheck());
  EXPECT_FALSE(byNumber(TARNAccountEntryType::kTypeCashiersCheck)->GetIsCheck());
  int checks = 0, deposits = 0;
  for (const auto& type : types) {
    checks += type->GetIsCheck();
    deposits += type->GetIsDeposit();
  }
  EXPECT_EQ(checks, 1);
  EXPECT_EQ(deposits, 3);
  // The two transfers share a name and differ in direction; the stable sort
  // keeps the debit (9) before the deposit (12).
  auto out = byNumber(TARNAccountEntryType::kTypeTransferOut);
  auto in = byNumber(TARNAccountEntryType::kTypeTransferIn);
  EXPECT_EQ(out->GetName(), "Transfer");
  EXPECT_EQ(in->GetName(), "Transfer");
  EXPECT_FALSE(out->GetIsDeposit());
  EXPECT_TRUE(in->GetIsDeposit());
  EXPECT_LT(std::find(types.begin(), types.end(), out), std::find(types.begin(), types.end(), in));
}

}  // namespace
}  // namespace tarn
