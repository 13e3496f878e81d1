#include "tarn/filters/filter_condition.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "filters/filter_book.h"
#include "tarn/model/split_line_item.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

using testing::Descriptions, testing::FilterBook, testing::MakeCategory, testing::MakeType;
using testing::kCafe, testing::kCheckType, testing::kDepositType, testing::kFood, testing::kFuel,
    testing::kInactiveType;
using Strings = std::vector<std::string>;

// A condition on the field under test and the entries it keeps, by description.
struct Row {
  int32_t qualifier, logic;
  plist::Value data;
  Strings kept;
};

void Expect(int32_t field, const TARNEntryList& entries, const std::vector<Row>& rows) {
  for (size_t i = 0; i < rows.size(); ++i) {
    const Row& r = rows[i];
    auto condition = TARNFilterCondition::initWithCategory(field, r.qualifier, r.logic, r.data);
    EXPECT_EQ(Descriptions(condition->filterEntries(entries)), r.kept)
        << "field " << field << ", row " << i;
  }
}

TEST(FilterCondition, TextFieldsFoldCaseAndUnicode) {
  FilterBook book;
  const TARNEntryList entries = book.Entries({{.description = "Grocery Store", .toFrom = "Acme"},
                                              {.description = "grocery", .notes = "Acme"},
                                              {"STRASSE 5"},
                                              {"Café Olé"},
                                              {"Store of groceries"}});
  // An unknown qualifier never matches.
  Expect(kFieldDescription, entries,
         {{kTextIsExactly, 1, "GROCERY", {"grocery"}},
          {kTextContains, 1, "store", {"Grocery Store", "Store of groceries"}},
          {kTextEndsWith, 1, "OLÉ", {"Café Olé"}},
          {kTextContains, 0, "grocer", {"STRASSE 5", "Café Olé"}},
          {7, 1, "grocery", {}},
          {7, 0, "grocery", Descriptions(entries)}});
  Expect(kFieldToFrom, entries, {{kTextContains, 1, "acme", {"Grocery Store"}}});
  Expect(kFieldNotes, entries, {{kTextContains, 1, "acme", {"grocery"}}});
  // The named field tests ignore the condition's own field code.
  auto acme = TARNFilterCondition::initWithCategory(99, kTextContains, 1, "acme");
  EXPECT_EQ(Descriptions(acme->filter_ToFrom(entries)), Strings{"Grocery Store"});
  EXPECT_EQ(Descriptions(acme->filter_Notes(entries)), Strings{"grocery"});
  EXPECT_EQ(Descriptions(acme->filter_General(entries)), (Strings{"Grocery Store", "grocery"}));
}

TEST(FilterCondition, MissingEmptyOrWrongKindDataPassesEverythingWhateverTheLogic) {
  // The second entry has no type and no line items: a restricting condition would drop it.
  FilterBook book;
  const TARNEntryList entries =
      book.Entries({{.description = "a", .amount = -5, .checkNumber = 7}, {"b", 12}});
  entries[0]->SetVoid(true);
  const plist::Value number(5), text("5"), empty(""), nil, dictionary = plist::Dictionary{{"a", 1}};
  // clang-format off
  const std::vector<std::tuple<int32_t, int32_t, plist::Value>> cases = {
      {kFieldDescription, kTextContains, empty},     {kFieldDescription, kTextContains, nil},
      {kFieldNotes, kTextIsExactly, number},         {kFieldSplitDescription, kTextContains, empty},
      {kFieldSplitCategory, kTextContains, number},  {kFieldAnything, kTextContains, empty},
      {kFieldCheckNumberText, kTextContains, number}, {kFieldAmountText, kTextContains, empty},
      {kFieldType, kTextIsExactly, empty},           {kFieldCategory, kTextIsExactly, dictionary},
      {kFieldAmount, kAmountIsEqualTo, text},        {kFieldVoid, kFlagIs, text},
      {kFieldCheck, kFlagIs, nil},                   {kFieldDate, kDateIsToday, dictionary},
      {kFieldDate, kDateIsToday, nil},               {99, kTextContains, plist::Value("zzz")}};
  // clang-format on
  for (const auto& [field, qualifier, data] : cases) {
    Expect(field, entries, {{qualifier, 0, data, {"a", "b"}}, {qualifier, 1, data, {"a", "b"}}});
  }
}

TEST(FilterCondition, FlagsCompareUnderIsOnlyAndCheckNumbersReadZeroWithoutOne) {
  FilterBook book;
  const TARNEntryList entries = book.Entries({{.description = "check", .checkNumber = 5},
                                              {"cleared"},
                                              {"taxvoid"},
                                              {.description = "zero", .checkNumber = 0}});
  entries[1]->SetCleared(2);  // any nonzero mark is resolved
  entries[2]->SetTaxDeductible(true);
  entries[2]->SetVoid(true);
  Expect(kFieldCheck, entries,
         {{kFlagIs, 1, true, {"check", "zero"}},
          {kFlagIs, 1, 0, {"cleared", "taxvoid"}},
          {kFlagIs, 0, true, {"cleared", "taxvoid"}}});
  Expect(kFieldResolved, entries, {{kFlagIs, 1, 1, {"cleared"}}});
  Expect(kFieldTaxDeductible, entries, {{kFlagIs, 1, true, {"taxvoid"}}});
  Expect(kFieldVoid, entries,
         {{kFlagIs, 1, 1.0, {"taxvoid"}}, {6, 0, true, Descriptions(entries)}});
  Expect(kFieldCheckNumberText, entries,
         {{kTextIsExactly, 1, "0", {"cleared", "taxvoid", "zero"}},
          {kTextContains, 1, "5", {"check"}},
          {kTextContains, 1, "-", {}}});
}

TEST(FilterCondition, AmountToleranceIsFortyHundredthsWithStrictBounds) {
  FilterBook book;
  TARNEntryList entries;
  for (const char* name : {"10.39", "9.61", "10.40", "9.60", "10.00", "10.41", "9.59", "-10.00"}) {
    entries.push_back(book.Entry({.description = name, .amount = std::stod(name)}));
  }
  // Signed: a debit of 10 is not "equal to 10"; unknown qualifiers never match.
  Expect(kFieldAmount, entries,
         {{kAmountIsEqualTo, 1, 10.0, {"10.39", "9.61", "10.00"}},
          {kAmountIsGreaterThan, 1, 10.0, {"10.41"}},
          {kAmountIsLessThan, 1, 10.0, {"9.59", "-10.00"}},
          {kAmountIsEqualTo, 1, -10, {"-10.00"}},
          {2, 0, 10.0, Descriptions(entries)}});
}

TEST(FilterCondition, AmountTextUsesTheUsersSeparators) {
  FilterBook book;
  const TARNEntryList entries = book.Entries({{"thousand", 1000.5}, {"twelve", 12}});
  SetUserDefault("NSDecimalSeparator", ".");
  SetUserDefault("NSThousandsSeparator", ",");
  // A search text that is nothing but separators is found nowhere.
  Expect(kFieldAmountText, entries,
         {{kTextContains, 1, "1,000", {"thousand"}},
          {kTextIsExactly, 1, "12.00", {"twelve"}},
          {kTextContains, 1, ",,", {}},
          {kTextContains, 0, ",", Descriptions(entries)}});
  SetUserDefault("NSDecimalSeparator", ",");
  SetUserDefault("NSThousandsSeparator", ".");
  Expect(kFieldAmountText, entries,
         {{kTextIsExactly, 1, "1.000,50", {"thousand"}}, {kTextContains, 1, "12.00", {}}});
  ResetUserDefaults();
}

TEST(FilterCondition, TypeAndCategoryDropEntriesThatDoNotResolve) {
  FilterBook book;
  TARNAccount bare;  // no types, no categories, no controller
  bare.types().clear();
  bare.inactiveTypes().clear();
  bare.categories().clear();
  const TARNEntryList entries =
      book.Entries({{.description = "check food", .type = kCheckType, .category = kFood},
                    {.description = "deposit fuel", .type = kDepositType, .category = kFuel},
                    {.description = "inactive cafe", .type = kInactiveType, .category = kCafe},
                    {.description = "none"},
                    {.description = "unknown", .type = 99, .category = 99},
                    {.description = "orphan", .type = kCheckType, .category = kFood},
                    {.description = "stranger", .type = kCheckType, .category = kFood}});
  entries[5]->SetAccount(nullptr);
  entries[6]->SetAccount(&bare);
  Expect(kFieldType, entries,
         {{kTextIsExactly, 1, "check", {"check food"}},
          {kTextIsExactly, 0, "Check", {"deposit fuel", "inactive cafe"}},
          {kTextStartsWith, 1, "old", {"inactive cafe"}}});
  // Categories are tested by their full name.
  Expect(kFieldCategory, entries,
         {{kTextIsExactly, 1, "auto:fuel", {"deposit fuel"}},
          {kTextIsExactly, 1, "Fuel", {}},
          {kTextIsExactly, 0, "Food", {"deposit fuel", "inactive cafe"}}});
}

TEST(FilterCondition, SplitConditionsNeedLineItemsWhateverTheLogic) {
  FilterBook book;
  const TARNEntryList entries =
      book.Entries({{"plain"}, {"lunch gas"}, {"stray dinner"}, {"stray"}});
  entries[1]->addSplitLineItemWithCategory(kFood, "Lunch", "", -5);
  entries[1]->addSplitLineItemWithCategory(kFuel, "Gas", "", -20);
  entries[2]->addSplitLineItemWithCategory(77, "stray", "", -1);
  entries[2]->addSplitLineItemWithCategory(kFood, "Dinner", "", -9);
  entries[3]->addSplitLineItemWithCategory(77, "Lunch", "", -3);
  // Line categories are tested by their own name. Logic 0 keeps an entry when
  // any resolvable line does not match; lines of unknown categories are skipped.
  Expect(kFieldSplitCategory, entries,
         {{kTextIsExactly, 1, "fuel", {"lunch gas"}},
          {kTextIsExactly, 1, "Auto:Fuel", {}},
          {kTextIsExactly, 0, "Fuel", {"lunch gas", "stray dinner"}},
          {kTextIsExactly, 0, "Food", {"lunch gas"}}});
  Expect(kFieldSplitDescription, entries,
         {{kTextContains, 1, "LUNCH", {"lunch gas", "stray"}},
          {kTextContains, 0, "lunch", {"lunch gas", "stray dinner"}},
          {kTextContains, 0, "zzz", {"lunch gas", "stray dinner", "stray"}}});
  book.account.setAccountsController(nullptr);  // no line category resolves
  Expect(kFieldSplitCategory, entries, {{kTextContains, 1, "o", {}}, {kTextContains, 0, "o", {}}});
}

TEST(FilterCondition, AnythingTriesFiveTextsAndLogicZeroKeepsOnlyEntriesMatchingNone) {
  FilterBook book;
  book.account.types().push_back(MakeType("Zed Transfer", 20));
  book.controller.categories().push_back(MakeCategory("Zedland", 30));
  const TARNEntryList entries =
      book.Entries({{.description = "Zed's"},
                    {.description = "by type", .type = 20},
                    {.description = "by category", .category = 30},
                    {.description = "by payee", .toFrom = "zed inc"},
                    {.description = "by notes", .notes = "ZED"},
                    {.description = "none", .type = kCheckType, .category = 99},
                    {.description = "unresolved", .type = 99}});
  Expect(kFieldAnything, entries,
         {{kTextContains, 1, "zed", {"Zed's", "by type", "by category", "by payee", "by notes"}},
          {kTextContains, 0, "zed", {"none", "unresolved"}},
          {kTextIsExactly, 1, "zedland", {"by category"}}});
}

}  // namespace
}  // namespace tarn
