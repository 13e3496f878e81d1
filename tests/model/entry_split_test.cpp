#include "tarn/model/entry_split.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/model_test_support.h"

namespace tarn {
namespace {

using plist::Value;
using Lines = std::vector<std::string>;
const char* const kOutOfRange =
    "Split index out of range of split array in TARNAccountEntrySplit:SetAmount";
const std::string kRead = " in TARNAccountEntrySplit:initWithDictionary";

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
  EXPECT_DOUBLE_EQ(split.GetTotal(), 8.0);  // disabled parts count too

  // The eleventh mark is accepted and never read back.
  split.SetEnabled(true, 0);
  split.SetEnabled(true, 10);
  EXPECT_TRUE(split.GetEnabled(0));
  EXPECT_FALSE(split.GetEnabled(10));

  split.SetDescription("Rent", 3);
  split.SetDescription(std::nullopt, 3);  // nil is ignored
  EXPECT_EQ(split.GetDescription(3), "Rent");
}

TEST(EntrySplit, DictionaryRoundTripWithoutEnabledMarks) {
  TARNAccountEntrySplit split;
  for (int i = 0; i < TARNAccountEntrySplit::kPartCount; ++i) {
    split.SetDescription("item " + std::to_string(i), i);
    split.SetToFrom("party " + std::to_string(i), i);
    split.SetAmount(i * 1.5 - 3.0, i);
  }
  split.SetEnabled(true, 2);
  const Value dictionary = split.asDictionary();
  EXPECT_EQ(dictionary.find("toFrom")->arrayValue().size(), 10u);  // singular key, ten payees
  EXPECT_TRUE(dictionary.find("amounts")->arrayValue()[0].isReal());
  EXPECT_EQ(dictionary.dictionaryValue().size(), 3u);

  auto back = TARNAccountEntrySplit::initWithDictionary(dictionary);
  EXPECT_EQ(back->asDictionary(), dictionary);
  EXPECT_FALSE(back->GetEnabled(2));  // the marks are not stored
  auto copy = TARNAccountEntrySplit::splitWithSplit(back);
  EXPECT_NE(copy, back);
  EXPECT_EQ(copy->asDictionary(), dictionary);
  EXPECT_EQ(TARNAccountEntrySplit::splitWithSplit(nullptr), nullptr);
}

TEST(EntrySplit, ReadingLogsMissingAndMalformedKeys) {
  LogCapture log;
  TARNAccountEntrySplit::initWithDictionary(Value(plist::Dictionary{}));
  EXPECT_EQ(log.lines, (Lines{"No description defined for theDictionary" + kRead,
                              "No toFroms defined for theDictionary" + kRead,
                              "No amounts defined for theDictionary" + kRead}));

  log.lines.clear();
  auto split = TARNAccountEntrySplit::initWithDictionary(
      Value(plist::Dictionary{{"descriptions", Value("Rent")},
                              {"toFrom", Value(plist::Array{Value("A"), Value("B")})},
                              {"amounts", Value(12)}}));
  EXPECT_EQ(log.lines, Lines(2, "theValue is in the wrong format" + kRead));
  EXPECT_EQ(split->GetToFrom(1), "B");

  // Shorter arrays fill the first parts; an eleventh amount is logged.
  log.lines.clear();
  split = TARNAccountEntrySplit::initWithDictionary(
      Value(plist::Dictionary{{"descriptions", Value(plist::Array{Value("x")})},
                              {"toFrom", Value(plist::Array{})},
                              {"amounts", Value(plist::Array(11, Value(1.005)))}}));
  EXPECT_EQ(log.lines, Lines{kOutOfRange});
  EXPECT_EQ(split->GetDescription(0), "x");
  EXPECT_EQ(split->GetAmount(9), 1.01);
}

}  // namespace
}  // namespace tarn
