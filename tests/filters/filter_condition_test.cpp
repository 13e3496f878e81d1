#include "tarn/filters/filter_condition.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "filters/filter_book.h"
#include "tarn/model/split_line_item.h"
#include "tarn/platform/log.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

using testing::Descriptions;
using testing::EntryFields;
using testing::FilterBook;
using Strings = std::vector<std::string>;

std::shared_ptr<TARNFilterCondition> Condition(int32_t field, int32_t qualifier, int32_t logic,
                                               plist::Value data) {
  return TARNFilterCondition::initWithCategory(field, qualifier, logic, std::move(data));
}

// What the condition keeps of the entries, by description.
Strings Kept(int32_t field, int32_t qualifier, int32_t logic, plist::Value data,
             const TARNEntryList& entries) {
  return Descriptions(Condition(field, qualifier, logic, std::move(data))->filterEntries(entries));
}

// One condition and the entries it keeps, by description.
struct Row {
  int32_t field, qualifier, logic;
  plist::Value data;
  Strings kept;
};

void ExpectRows(const std::vector<Row>& rows, const TARNEntryList& entries) {
  for (size_t i = 0; i < rows.size(); ++i) {
    const Row& r = rows[i];
    EXPECT_EQ(Kept(r.field, r.qualifier, r.logic, r.data, entries), r.kept)
        << "row " << i << ": field " << r.field << " qualifier " << r.qualifier << " logic "
        << r.logic;
  }
}

TEST(FilterCondition, DictionaryLoadsQuietlyAndKeepsDataOfAnyKind) {
  std::vector<std::string> logged;
  LogSink previous = SetLogSink([&](std::string_view line) { logged.emplace_back(line); });

  // Missing keys and numbers of the wrong kind keep the defaults.
  auto sparse =
      TARNFilterCondition::initWithDictionary(plist::Dictionary{{"logic", "no"}, {"qualifier", 9}});
  ASSERT_NE(sparse, nullptr);
  EXPECT_EQ(sparse->category(), 0);
  EXPECT_EQ(sparse->logic(), 1);
  EXPECT_EQ(sparse->qualifier(), 9);
  EXPECT_EQ(sparse->data(), plist::Value(""));

  // "data" is stored whatever its kind, and written back as it was.
  const plist::Value odd = plist::Dictionary{
      {"category", 1}, {"logic", 0}, {"qualifier", 70}, {"data", plist::Dictionary{{"x", 1}}}};
  auto loaded = TARNFilterCondition::initWithDictionary(odd);
  EXPECT_EQ(loaded->asDictionary(), odd);

  // Nil data stays nil and is left out of the dictionary.
  loaded->setData(plist::Value());
  EXPECT_TRUE(loaded->data().isNil());
  EXPECT_EQ(loaded->asDictionary().find("data"), nullptr);
  EXPECT_EQ(loaded->asDictionary().find("qualifier")->intValue(), 70);

  EXPECT_EQ(TARNFilterCondition::initWithDictionary(plist::Value("text")), nullptr);
  EXPECT_EQ(TARNFilterCondition::initWithDictionary(plist::Value())->qualifier(), kTextContains);

  // Qualifier before logic in this initialiser.
  auto made = TARNFilterCondition::initWithCategory(kFieldAmount, 3, 0, plist::Value(5.0));
  EXPECT_EQ(made->qualifier(), 3);
  EXPECT_EQ(made->logic(), 0);

  SetLogSink(previous);
  EXPECT_TRUE(logged.empty());
}

TEST(FilterCondition, TextQualifiersFoldCaseAndUnicode) {
  FilterBook book;
  const TARNEntryList entries = {
      book.Entry({.description = "Grocery Store"}), book.Entry({.description = "grocery"}),
      book.Entry({.description = "STRASSE 5"}), book.Entry({.description = "Café Olé"}),
      book.Entry({.description = "Store of groceries"})};

  // Nothing is trimmed; logic 0 keeps the non-matches; an unknown qualifier never matches.
  // clang-format off
  ExpectRows({{kFieldDescription, kTextIsExactly, 1, "GROCERY", {"grocery"}},
              {kFieldDescription, kTextContains, 1, "store",
               {"Grocery Store", "Store of groceries"}},
              {kFieldDescription, kTextStartsWith, 1, "sTORE", {"Store of groceries"}},
              {kFieldDescription, kTextEndsWith, 1, "STORE", {"Grocery Store"}},
              {kFieldDescription, kTextEndsWith, 1, "OLÉ", {"Café Olé"}},
              {kFieldDescription, kTextIsExactly, 1, " grocery", {}},
              {kFieldDescription, kTextContains, 0, "grocer", {"STRASSE 5", "Café Olé"}},
              {kFieldDescription, 7, 1, "grocery", {}},
              {kFieldDescription, 7, 0, "grocery", Descriptions(entries)}},
             entries);
  // clang-format on
}

TEST(FilterCondition, MissingEmptyOrWrongKindDataPassesEverythingWhateverTheLogic) {
  FilterBook book;
  auto check = book.Entry({.description = "a", .amount = -5, .checkNumber = 7});
  auto plain = book.Entry({.description = "b", .amount = 12});
  check->SetVoid(true);
  const TARNEntryList entries = {check, plain};
  const plist::Value number(5);
  const plist::Value text("5");
  const plist::Value dictionary = plist::Dictionary{{"a", plist::Value(1)}};

  struct Case {
    int32_t field;
    int32_t qualifier;
    plist::Value data;
  };
  const std::vector<Case> cases = {
      {kFieldDescription, kTextContains, plist::Value("")},
      {kFieldDescription, kTextContains, plist::Value()},
      {kFieldNotes, kTextIsExactly, number},
      {kFieldSplitDescription, kTextContains, plist::Value("")},
      {kFieldSplitCategory, kTextContains, number},
      {kFieldAnything, kTextContains, plist::Value("")},
      {kFieldCheckNumberText, kTextContains, number},
      {kFieldAmountText, kTextContains, plist::Value("")},
      {kFieldType, kTextIsExactly, plist::Value("")},
      {kFieldCategory, kTextIsExactly, dictionary},
      {kFieldAmount, kAmountIsEqualTo, text},
      {kFieldVoid, kFlagIs, text},
      {kFieldCheck, kFlagIs, plist::Value()},
      {kFieldDate, kDateIsToday, dictionary},
      {kFieldDate, kDateIsToday, plist::Value()},
      {99, kTextContains, plist::Value("zzz")},
  };
  for (const Case& c : cases) {
    for (int32_t logic : {0, 1}) {
      EXPECT_EQ(Kept(c.field, c.qualifier, logic, c.data, entries), (Strings{"a", "b"}))
          << "field " << c.field << " logic " << logic;
    }
  }
  // Even entries that the field would drop pass: no type, no line items.
  EXPECT_EQ(Kept(kFieldType, kTextIsExactly, 0, "", entries).size(), 2u);
  EXPECT_TRUE(Condition(kFieldDescription, kTextContains, 1, "a")->filterEntries({}).empty());
}

TEST(FilterCondition, EachFieldTestReadsItsOwnFieldWhateverTheCode) {
  FilterBook book;
  const TARNEntryList entries = {
      book.Entry({.description = "d", .toFrom = "Acme", .notes = "paid", .checkNumber = 1001}),
      book.Entry({.description = "e", .toFrom = "Zeta", .notes = "Acme", .checkNumber = 15})};
  auto condition = Condition(kFieldDescription, kTextContains, 1, "acme");
  EXPECT_TRUE(Descriptions(condition->filterEntries(entries)).empty());
  EXPECT_EQ(Descriptions(condition->filter_ToFrom(entries)), Strings{"d"});
  EXPECT_EQ(Descriptions(condition->filter_Notes(entries)), Strings{"e"});
  condition->setData(plist::Value("00"));
  EXPECT_EQ(Descriptions(condition->filter_CheckString(entries)), Strings{"d"});
  condition->setData(plist::Value("1"));
  condition->setQualifier(kTextStartsWith);
  EXPECT_EQ(Descriptions(condition->filter_CheckString(entries)), (Strings{"d", "e"}));
  condition->setQualifier(kTextEndsWith);
  EXPECT_EQ(Descriptions(condition->filter_CheckString(entries)), Strings{"d"});
}

TEST(FilterCondition, CheckNumberTextReadsZeroWithoutACheckNumber) {
  FilterBook book;
  auto none = book.Entry({.description = "none"});
  ASSERT_EQ(none->GetCheckNumber(), -1);
  auto zero = book.Entry({.description = "zero", .checkNumber = 0});
  auto ten = book.Entry({.description = "ten", .checkNumber = 10});
  const TARNEntryList entries = {none, zero, ten};
  ExpectRows({{kFieldCheckNumberText, kTextIsExactly, 1, "0", {"none", "zero"}},
              {kFieldCheckNumberText, kTextContains, 1, "0", {"none", "zero", "ten"}},
              {kFieldCheckNumberText, kTextIsExactly, 0, "0", {"ten"}},
              {kFieldCheckNumberText, kTextContains, 1, "-", {}}},
             entries);
}

TEST(FilterCondition, AmountToleranceIsFortyHundredthsWithStrictBounds) {
  FilterBook book;
  const std::vector<std::pair<const char*, double>> amounts = {
      {"10.39", 10.39}, {"9.61", 9.61},   {"10.40", 10.40}, {"9.60", 9.60},
      {"10.00", 10.00}, {"10.41", 10.41}, {"9.59", 9.59},   {"-10.00", -10.00}};
  TARNEntryList entries;
  for (const auto& [name, amount] : amounts) {
    entries.push_back(book.Entry({.description = name, .amount = amount}));
  }
  // Signed: a debit of 10 is not "equal to 10"; unknown qualifiers never match.
  // clang-format off
  ExpectRows({{kFieldAmount, kAmountIsEqualTo, 1, 10.0, {"10.39", "9.61", "10.00"}},
              {kFieldAmount, kAmountIsEqualTo, 0, 10, {"10.40", "9.60", "10.41", "9.59", "-10.00"}},
              {kFieldAmount, kAmountIsGreaterThan, 1, 10.0, {"10.41"}},
              {kFieldAmount, kAmountIsLessThan, 1, 10.0, {"9.59", "-10.00"}},
              {kFieldAmount, kAmountIsEqualTo, 1, -10, {"-10.00"}},
              {kFieldAmount, 2, 1, 10.0, {}},
              {kFieldAmount, 2, 0, 10.0, Descriptions(entries)}},
             entries);
  // clang-format on

  // A split entry is tested by its lines' total, not its stored amount.
  auto split = book.Entry({.description = "split", .amount = 50});
  split->addSplitLineItemWithCategory(testing::kFood, "a", "", 6.0);
  split->addSplitLineItemWithCategory(testing::kFuel, "b", "", 4.2);
  EXPECT_EQ(Kept(kFieldAmount, kAmountIsEqualTo, 1, 10.0, {split}), Strings{"split"});
}

TEST(FilterCondition, FlagsCompareUnderIsOnly) {
  FilterBook book;
  auto check = book.Entry({.description = "check", .checkNumber = 5});
  auto cleared = book.Entry({.description = "cleared"});
  cleared->SetCleared(2);  // any nonzero mark is resolved
  auto taxVoid = book.Entry({.description = "taxvoid"});
  taxVoid->SetTaxDeductible(true);
  taxVoid->SetVoid(true);
  const TARNEntryList entries = {check, cleared, taxVoid};

  // Any other qualifier never matches: logic 0 keeps every entry.
  ExpectRows({{kFieldCheck, kFlagIs, 1, true, {"check"}},
              {kFieldCheck, kFlagIs, 1, 0, {"cleared", "taxvoid"}},
              {kFieldCheck, kFlagIs, 0, true, {"cleared", "taxvoid"}},
              {kFieldResolved, kFlagIs, 1, 1, {"cleared"}},
              {kFieldTaxDeductible, kFlagIs, 1, true, {"taxvoid"}},
              {kFieldVoid, kFlagIs, 1, 1.0, {"taxvoid"}},
              {kFieldVoid, kFlagIs, 0, false, {"taxvoid"}},
              {kFieldVoid, 6, 0, true, {"check", "cleared", "taxvoid"}},
              {kFieldVoid, 6, 1, true, {}}},
             entries);
}

TEST(FilterCondition, AmountTextUsesTheUsersSeparators) {
  FilterBook book;
  const TARNEntryList entries = {book.Entry({.description = "thousand", .amount = 1000.5}),
                                 book.Entry({.description = "twelve", .amount = 12}),
                                 book.Entry({.description = "debit", .amount = -5.25}),
                                 book.Entry({.description = "tiny", .amount = 0.004})};

  SetUserDefault("NSDecimalSeparator", ".");
  SetUserDefault("NSThousandsSeparator", ",");
  // A search text that is nothing but separators is found nowhere.
  ExpectRows({{kFieldAmountText, kTextContains, 1, "1,000", {"thousand"}},
              {kFieldAmountText, kTextContains, 1, "00", {"thousand", "twelve", "tiny"}},
              {kFieldAmountText, kTextIsExactly, 1, "12.00", {"twelve"}},
              {kFieldAmountText, kTextStartsWith, 1, "-5", {"debit"}},
              {kFieldAmountText, kTextIsExactly, 1, "0.00", {"tiny"}},
              {kFieldAmountText, kTextContains, 1, ",,", {}},
              {kFieldAmountText, kTextContains, 0, ",", Descriptions(entries)}},
             entries);
  // Swapped separators: the amount is written with a comma, "." is grouping.
  SetUserDefault("NSDecimalSeparator", ",");
  SetUserDefault("NSThousandsSeparator", ".");
  ExpectRows({{kFieldAmountText, kTextIsExactly, 1, "1.000,50", {"thousand"}},
              {kFieldAmountText, kTextEndsWith, 1, ",25", {"debit"}},
              {kFieldAmountText, kTextContains, 1, "12.00", {}}},
             entries);
  ResetUserDefaults();
}

TEST(FilterCondition, TypeAndCategoryDropEntriesThatDoNotResolve) {
  FilterBook book;
  TARNAccount orphanAccount;  // no types, no categories, no controller
  orphanAccount.types().clear();
  orphanAccount.inactiveTypes().clear();
  orphanAccount.categories().clear();
  auto orphan = book.Entry(
      {.description = "orphan", .type = testing::kCheckType, .category = testing::kFood});
  orphan->SetAccount(nullptr);
  auto stranger = book.Entry(
      {.description = "stranger", .type = testing::kCheckType, .category = testing::kFood});
  stranger->SetAccount(&orphanAccount);
  const TARNEntryList entries = {
      book.Entry(
          {.description = "check food", .type = testing::kCheckType, .category = testing::kFood}),
      book.Entry({.description = "deposit fuel",
                  .type = testing::kDepositType,
                  .category = testing::kFuel}),
      book.Entry({.description = "inactive cafe",
                  .type = testing::kInactiveType,
                  .category = testing::kCafe}),
      book.Entry({.description = "none"}),
      book.Entry({.description = "unknown", .type = 99, .category = 99}),
      orphan,
      stranger};

  // Categories are tested by their full name.
  // clang-format off
  ExpectRows({{kFieldType, kTextIsExactly, 1, "check", {"check food"}},
              {kFieldType, kTextIsExactly, 0, "Check", {"deposit fuel", "inactive cafe"}},
              {kFieldType, kTextStartsWith, 1, "old", {"inactive cafe"}},
              {kFieldCategory, kTextIsExactly, 1, "auto:fuel", {"deposit fuel"}},
              {kFieldCategory, kTextIsExactly, 1, "Fuel", {}},
              {kFieldCategory, kTextIsExactly, 0, "Food", {"deposit fuel", "inactive cafe"}},
              {kFieldCategory, kTextContains, 1, "CAFÉ", {"inactive cafe"}}},
             entries);
  // clang-format on
}

TEST(FilterCondition, SplitConditionsNeedLineItemsWhateverTheLogic) {
  FilterBook book;
  auto plain = book.Entry({.description = "plain"});
  auto lunchGas = book.Entry({.description = "lunch gas"});
  lunchGas->addSplitLineItemWithCategory(testing::kFood, "Lunch", "", -5);
  lunchGas->addSplitLineItemWithCategory(testing::kFuel, "Gas", "", -20);
  auto strayDinner = book.Entry({.description = "stray dinner"});
  strayDinner->addSplitLineItemWithCategory(77, "stray", "", -1);
  strayDinner->addSplitLineItemWithCategory(testing::kFood, "Dinner", "", -9);
  auto stray = book.Entry({.description = "stray"});
  stray->addSplitLineItemWithCategory(77, "Lunch", "", -3);
  const TARNEntryList entries = {plain, lunchGas, strayDinner, stray};

  // Line categories are tested by their own name, not the full name. Logic 0:
  // kept when any resolvable line does not match; unknown lines are skipped.
  // clang-format off
  ExpectRows({{kFieldSplitCategory, kTextIsExactly, 1, "fuel", {"lunch gas"}},
              {kFieldSplitCategory, kTextIsExactly, 1, "Auto:Fuel", {}},
              {kFieldSplitCategory, kTextIsExactly, 0, "Fuel", {"lunch gas", "stray dinner"}},
              {kFieldSplitCategory, kTextIsExactly, 0, "Food", {"lunch gas"}},
              {kFieldSplitDescription, kTextContains, 1, "LUNCH", {"lunch gas", "stray"}},
              {kFieldSplitDescription, kTextContains, 0, "lunch", {"lunch gas", "stray dinner"}},
              {kFieldSplitDescription, kTextContains, 0, "zzz",
               {"lunch gas", "stray dinner", "stray"}}},
             entries);
  // clang-format on
  // Without an accounts controller no line category resolves.
  book.account.setAccountsController(nullptr);
  ExpectRows({{kFieldSplitCategory, kTextContains, 1, "o", {}},
              {kFieldSplitCategory, kTextContains, 0, "o", {}}},
             entries);
}

TEST(FilterCondition, AnythingTriesFiveTextsAndLogicZeroKeepsOnlyEntriesMatchingNone) {
  FilterBook book;
  book.account.types().push_back(testing::MakeType("Zed Transfer", 20));
  book.controller.roots.push_back(testing::MakeCategory("Zedland", 30));
  const TARNEntryList entries = {
      book.Entry({.description = "Zed's"}),
      book.Entry({.description = "by type", .type = 20}),
      book.Entry({.description = "by category", .category = 30}),
      book.Entry({.description = "by payee", .toFrom = "zed inc"}),
      book.Entry({.description = "by notes", .notes = "ZED"}),
      book.Entry({.description = "none", .type = testing::kCheckType, .category = 99}),
      book.Entry({.description = "unresolved", .type = 99})};

  // clang-format off
  ExpectRows({{kFieldAnything, kTextContains, 1, "zed",
               {"Zed's", "by type", "by category", "by payee", "by notes"}},
              {kFieldAnything, kTextContains, 0, "zed", {"none", "unresolved"}},
              {kFieldAnything, kTextIsExactly, 1, "zedland", {"by category"}}},
             entries);
  // clang-format on
  auto condition = Condition(kFieldDescription, kTextEndsWith, 1, "inc");
  EXPECT_EQ(Descriptions(condition->filter_General(entries)), Strings{"by payee"});
}

TEST(FilterCondition, NameLookUpsHappenOncePerNumberAndRun) {
  FilterBook book;
  TARNEntryList entries;
  for (int i = 0; i < 50; ++i) {
    entries.push_back(
        book.Entry({.description = "e", .category = i % 2 ? testing::kFood : testing::kFuel}));
  }
  book.controller.lookups = 0;
  EXPECT_EQ(Kept(kFieldCategory, kTextContains, 1, "fuel", entries).size(), 25u);
  EXPECT_EQ(book.controller.lookups, 2);
}

}  // namespace
}  // namespace tarn
