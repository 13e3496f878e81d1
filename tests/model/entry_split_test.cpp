#include "tarn/model/entry_split.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/model_test_support.h"

namespace tarn {
namespace {

using Lines = std::vector<std::string>;
const char* const kOutOfRange =
    "Split index out of range of split array in TARNAccountEntrySplit:SetAmount";

TEST(EntrySplit, PartsIndexesAndTotals) {
  LogCapture log;
  TARNAccountEntrySplit split;
  split.SetAmount(10.125, 0);
  split.SetAmount(-2.125, 9);
  split.SetAmount(5.0, 10);  // logged and dropped
  EXPECT_EQ(log.lines, Lines{kOutOfRange});
  EXPECT_EQ(split.GetAmount(0), 10.13);
  EXPECT_EQ(split.GetAmount(9), -2.13);
  EXPECT_EQ(split.GetAmount(10), 0.0);
  split.SetEnabled(true, 0);
  EXPECT_DOUBLE_EQ(split.GetTotal(), 8.0);  // disabled parts count too

  // The eleventh mark is accepted and never read back.
  for (int index : {10, 11}) {
    split.SetEnabled(true, index);
    EXPECT_FALSE(split.GetEnabled(index)) << index;
  }
  EXPECT_TRUE(split.GetEnabled(0));
  split.SetEnabled(false, 0);
  EXPECT_FALSE(split.GetEnabled(0));

  split.SetDescription("Rent", 3);
  split.SetDescription(std::nullopt, 3);
  split.SetToFrom("Landlord", 3);
  split.SetToFrom(std::nullopt, 3);
  EXPECT_EQ(split.GetDescription(3), "Rent");
  EXPECT_EQ(split.GetToFrom(3), "Landlord");
}

TEST(EntrySplit, DictionaryRoundTripWithoutEnabledMarks) {
  TARNAccountEntrySplit split;
  for (int i = 0; i < TARNAccountEntrySplit::kPartCount; ++i) {
    split.SetDescription("item " + std::to_string(i), i);
    split.SetToFrom("party " + std::to_string(i), i);
    split.SetAmount(i * 1.5 - 3.0, i);
  }
  split.SetEnabled(true, 2);

  plist::Value dictionary = split.asDictionary();
  EXPECT_EQ(dictionary.find("toFrom")->arrayValue().size(), 10u);  // singular key, ten payees
  EXPECT_EQ(dictionary.find("descriptions")->arrayValue()[9].stringValue(), "item 9");
  EXPECT_TRUE(dictionary.find("amounts")->arrayValue()[0].isReal());
  EXPECT_EQ(dictionary.dictionaryValue().size(), 3u);

  auto back = TARNAccountEntrySplit::initWithDictionary(dictionary);
  EXPECT_EQ(back->asDictionary(), dictionary);
  EXPECT_EQ(back->GetAmount(9), 10.5);
  EXPECT_FALSE(back->GetEnabled(2));  // the marks are not stored
  auto copy = TARNAccountEntrySplit::splitWithSplit(back);
  EXPECT_EQ(copy->asDictionary(), dictionary);
  EXPECT_NE(copy, back);
  EXPECT_EQ(TARNAccountEntrySplit::splitWithSplit(nullptr), nullptr);
  EXPECT_EQ(TARNAccountEntrySplit::initWithSplit(nullptr)->asDictionary(),
            TARNAccountEntrySplit().asDictionary());
}

TEST(EntrySplit, ReadingLogsMissingAndMalformedKeys) {
  const std::string suffix = " in TARNAccountEntrySplit:initWithDictionary";
  LogCapture log;
  TARNAccountEntrySplit::initWithDictionary(plist::Value(plist::Dictionary{}));
  EXPECT_EQ(log.lines, (Lines{"No description defined for theDictionary" + suffix,
                              "No toFroms defined for theDictionary" + suffix,
                              "No amounts defined for theDictionary" + suffix}));

  log.lines.clear();
  auto split = TARNAccountEntrySplit::initWithDictionary(plist::Value(plist::Dictionary{
      {"descriptions", plist::Value("Rent")},
      {"toFrom", plist::Value(plist::Array{plist::Value("A"), plist::Value("B")})},
      {"amounts", plist::Value(12)}}));
  const std::string wrong = "theValue is in the wrong format" + suffix;
  EXPECT_EQ(log.lines, (Lines{wrong, wrong}));
  EXPECT_EQ(split->GetToFrom(1), "B");
  EXPECT_EQ(split->GetDescription(0), "");

  // Shorter arrays fill the first parts; an eleventh amount is logged.
  log.lines.clear();
  split = TARNAccountEntrySplit::initWithDictionary(plist::Value(
      plist::Dictionary{{"descriptions", plist::Value(plist::Array{plist::Value("x")})},
                        {"toFrom", plist::Value(plist::Array{})},
                        {"amounts", plist::Value(plist::Array(11, plist::Value(1.005)))}}));
  EXPECT_EQ(log.lines, Lines{kOutOfRange});
  EXPECT_EQ(split->GetDescription(0), "x");
  EXPECT_EQ(split->GetAmount(9), 1.01);
}

}  // namespace
}  // namespace tarn
