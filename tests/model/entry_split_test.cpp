#include "tarn/model/entry_split.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tarn/platform/log.h"

namespace tarn {
namespace {

class LogCapture {
 public:
  LogCapture() {
    previous_ = SetLogSink([this](std::string_view line) { lines.emplace_back(line); });
  }
  ~LogCapture() { SetLogSink(previous_); }
  std::vector<std::string> lines;

 private:
  LogSink previous_;
};

plist::Array texts(std::initializer_list<const char*> values) {
  plist::Array array;
  for (const char* value : values) array.emplace_back(value);
  return array;
}

TEST(EntrySplit, PartsIndexesAndTotals) {
  TARNAccountEntrySplit split;
  for (int i = 0; i < TARNAccountEntrySplit::kPartCount; ++i) {
    EXPECT_EQ(split.GetDescription(i), "");
    EXPECT_EQ(split.GetAmount(i), 0.0);
    EXPECT_FALSE(split.GetEnabled(i));
  }

  split.SetAmount(10.125, 0);
  split.SetAmount(-2.125, 9);
  EXPECT_EQ(split.GetAmount(0), 10.13);
  EXPECT_EQ(split.GetAmount(9), -2.13);
  EXPECT_EQ(split.GetAmount(10), 0.0);

  // Disabled parts count in the total too.
  split.SetEnabled(true, 0);
  EXPECT_DOUBLE_EQ(split.GetTotal(), 8.0);

  // The eleventh mark is accepted and never read back.
  split.SetEnabled(true, 10);
  EXPECT_FALSE(split.GetEnabled(10));
  split.SetEnabled(true, 11);
  EXPECT_FALSE(split.GetEnabled(11));
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

TEST(EntrySplit, AmountIndexAboveNineIsLogged) {
  LogCapture log;
  TARNAccountEntrySplit split;
  split.SetAmount(5.0, 10);
  split.SetAmount(5.0, 9);
  EXPECT_EQ(log.lines,
            std::vector<std::string>{
                "Split index out of range of split array in TARNAccountEntrySplit:SetAmount"});
  EXPECT_DOUBLE_EQ(split.GetTotal(), 5.0);
}

TEST(EntrySplit, DictionaryRoundTripWithoutEnabledMarks) {
  TARNAccountEntrySplit split;
  for (int i = 0; i < TARNAccountEntrySplit::kPartCount; ++i) {
    split.SetDescription("part " + std::to_string(i), i);
    split.SetToFrom("party " + std::to_string(i), i);
    split.SetAmount(i * 1.5 - 3.0, i);
  }
  split.SetEnabled(true, 2);

  plist::Value dictionary = split.asDictionary();
  ASSERT_TRUE(dictionary.find("toFrom") != nullptr);  // singular key, ten payees
  EXPECT_EQ(dictionary.find("toFrom")->arrayValue().size(), 10u);
  EXPECT_EQ(dictionary.find("amounts")->arrayValue().size(), 10u);
  EXPECT_TRUE(dictionary.find("amounts")->arrayValue()[0].isReal());
  EXPECT_EQ(dictionary.dictionaryValue().size(), 3u);

  auto back = TARNAccountEntrySplit::initWithDictionary(dictionary);
  for (int i = 0; i < TARNAccountEntrySplit::kPartCount; ++i) {
    EXPECT_EQ(back->GetDescription(i), split.GetDescription(i));
    EXPECT_EQ(back->GetToFrom(i), split.GetToFrom(i));
    EXPECT_EQ(back->GetAmount(i), split.GetAmount(i));
  }
  EXPECT_EQ(back->asDictionary(), dictionary);
  // The enabled marks are not stored, so a copy has none.
  EXPECT_FALSE(back->GetEnabled(2));
  auto copy = TARNAccountEntrySplit::splitWithSplit(back);
  EXPECT_EQ(copy->asDictionary(), dictionary);
  EXPECT_NE(copy, back);
  EXPECT_EQ(TARNAccountEntrySplit::splitWithSplit(nullptr), nullptr);
  EXPECT_EQ(TARNAccountEntrySplit::initWithSplit(nullptr)->asDictionary(),
            TARNAccountEntrySplit().asDictionary());
}

TEST(EntrySplit, ReadingLogsMissingAndMalformedKeys) {
  {
    LogCapture log;
    TARNAccountEntrySplit::initWithDictionary(plist::Value(plist::Dictionary{}));
    EXPECT_EQ(
        log.lines,
        (std::vector<std::string>{
            "No description defined for theDictionary in TARNAccountEntrySplit:initWithDictionary",
            "No toFroms defined for theDictionary in TARNAccountEntrySplit:initWithDictionary",
            "No amounts defined for theDictionary in TARNAccountEntrySplit:initWithDictionary"}));
  }
  {
    LogCapture log;
    auto split = TARNAccountEntrySplit::initWithDictionary(
        plist::Value(plist::Dictionary{{"descriptions", plist::Value("Rent")},
                                       {"toFrom", plist::Value(texts({"A", "B"}))},
                                       {"amounts", plist::Value(12)}}));
    const std::string wrong =
        "theValue is in the wrong format in TARNAccountEntrySplit:initWithDictionary";
    EXPECT_EQ(log.lines, (std::vector<std::string>{wrong, wrong}));
    EXPECT_EQ(split->GetToFrom(1), "B");
    EXPECT_EQ(split->GetDescription(0), "");
  }
  {
    // Shorter arrays fill the first parts; an eleventh amount is logged.
    LogCapture log;
    plist::Array amounts(11, plist::Value(1.005));
    auto split = TARNAccountEntrySplit::initWithDictionary(
        plist::Value(plist::Dictionary{{"descriptions", plist::Value(texts({"x"}))},
                                       {"toFrom", plist::Value(plist::Array{})},
                                       {"amounts", plist::Value(amounts)}}));
    EXPECT_EQ(log.lines,
              std::vector<std::string>{
                  "Split index out of range of split array in TARNAccountEntrySplit:SetAmount"});
    EXPECT_EQ(split->GetDescription(0), "x");
    EXPECT_EQ(split->GetAmount(9), 1.01);
  }
}

}  // namespace
}  // namespace tarn
