#include "tarn/import/import_entry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

std::shared_ptr<TARNAccountEntryType> Type(const char* name, std::int32_t number) {
  auto type = std::make_shared<TARNAccountEntryType>();
  type->SetName(std::string(name));
  type->SetNumber(number);
  return type;
}

std::shared_ptr<TARNAccountEntryCategory> Category(const char* name, std::int32_t number) {
  auto category = std::make_shared<TARNAccountEntryCategory>();
  category->setName(std::string(name));
  category->setNumber(number);
  return category;
}

std::shared_ptr<TARNImportEntry> Entry(std::int32_t number, DateNumber date) {
  auto entry = std::make_shared<TARNImportEntry>();
  entry->SetNumber(number);
  entry->SetDate(date);
  return entry;
}

TEST(ImportEntry, ChosenObjectsKeepTheNumbersInStep) {
  TARNImportEntry entry;
  EXPECT_EQ(entry.GetType(), -1);
  EXPECT_EQ(entry.GetCategory(), -1);
  EXPECT_EQ(entry.GetActualType(), nullptr);
  EXPECT_FALSE(entry.GetImport());

  auto type = Type("ATM", 7);
  entry.SetActualType(type);
  EXPECT_EQ(entry.GetType(), 7);
  EXPECT_EQ(type.use_count(), 2);
  entry.SetActualType(nullptr);
  EXPECT_EQ(entry.GetType(), -1);
  EXPECT_EQ(type.use_count(), 1);  // released
  auto parent = Category("Home", 1);
  auto rent = Category("Rent", 2);
  parent->addChild(rent);
  entry.SetActualCategory(rent);
  EXPECT_EQ(entry.GetCategory(), 2);
  entry.SetActualCategory(nullptr);
  EXPECT_EQ(entry.GetCategory(), -1);

  // From a dictionary: its numbers, no objects, not to be imported.
  auto read = TARNImportEntry::initWithDictionary(
      plist::Value(plist::Dictionary{{"type", std::int64_t{4}}, {"category", std::int64_t{9}}}));
  EXPECT_EQ(read->GetType(), 4);
  EXPECT_EQ(read->GetCategory(), 9);
  EXPECT_EQ(read->GetActualType(), nullptr);
  EXPECT_FALSE(read->GetImport());
}

TEST(ImportEntry, ComparatorsUseTheChosenNamesThenDateThenNumber) {
  auto a = Entry(1, 20070102);
  auto b = Entry(2, 20070102);
  EXPECT_EQ(a->TypePrimaryDateSecondaryIsGreaterThan(*b), -1);  // both without type: numbers
  EXPECT_EQ(a->TypePrimaryDateSecondaryIsGreaterThan_Reversed(*b), 1);
  a->SetActualType(Type("atm", 1));
  b->SetActualType(Type("ATM", 2));
  b->SetDate(20070101);
  EXPECT_EQ(a->TypePrimaryDateSecondaryIsGreaterThan(*b), 1);  // same name: the date decides
  b->SetActualType(nullptr);
  EXPECT_EQ(a->TypePrimaryDateSecondaryIsGreaterThan(*b), 1);  // "" sorts first
  EXPECT_EQ(b->TypePrimaryDateSecondaryIsGreaterThan(*b), 0);

  auto home = Category("Home", 1);
  auto rent = Category("Rent", 2);
  home->addChild(rent);
  a->SetActualCategory(rent);  // "Home:Rent"
  b->SetActualCategory(Category("Insurance", 3));
  EXPECT_EQ(a->CategoryPrimaryDateSecondaryIsGreaterThan(*b), -1);
  EXPECT_EQ(a->CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(*b), 1);
  // Against a plain entry, whose numbers mean nothing here.
  TARNAccountEntry plain;
  plain.SetType(1);
  plain.SetDate(20070102);
  EXPECT_EQ(a->TypePrimaryDateSecondaryIsGreaterThan(plain), 1);

  a->SetImport(true);
  EXPECT_EQ(a->ImportIsGreaterThan(*b), 1);
  EXPECT_EQ(b->ImportIsGreaterThan(*a), -1);
  b->SetImport(true);
  EXPECT_EQ(a->ImportIsGreaterThan(*b), -1);
  EXPECT_EQ(a->ImportIsGreaterThan_Reversed(*b), 1);

  // Sorting a review list by import switch keeps the numbers in order.
  std::vector<std::shared_ptr<TARNImportEntry>> list{Entry(3, 0), Entry(1, 0), Entry(2, 0)};
  list[1]->SetImport(true);
  std::sort(list.begin(), list.end(),
            [](const auto& x, const auto& y) { return x->ImportIsGreaterThan(*y) < 0; });
  EXPECT_EQ(list[0]->GetNumber(), 2);
  EXPECT_EQ(list[1]->GetNumber(), 3);
  EXPECT_EQ(list[2]->GetNumber(), 1);
}

TEST(ImportEntry, SpeakableTextHasSixDecimalsAndNoCategory) {
  ResetUserDefaults();
  SetUserDefault("NSShortDateFormatString", "%m/%d/%Y");
  TARNImportEntry deposit;
  deposit.SetDate(20070315);
  deposit.SetAmount(12.5);
  deposit.SetIsDeposit(true);
  deposit.SetToFrom(std::string("Employer"));
  deposit.SetDescription(std::string("Pay"));
  deposit.SetActualType(Type("Payroll", 3));
  deposit.SetActualCategory(Category("Salary", 4));
  deposit.SetCleared(1);
  EXPECT_EQ(deposit.asSpeakableString(),
            "03/15/2007.  Deposit in the Amount of:  12.500000 .  Type:  Payroll .  "
            "From:  Employer .  Description:  Pay .  Resolved .  ");

  TARNImportEntry check;
  check.SetDate(20070316);
  check.SetAmount(-20);
  check.SetIsDebit(true);
  check.SetIsCheck(true);
  check.SetCheckNumber(101);
  check.SetToFrom(std::string("Landlord"));
  EXPECT_EQ(check.asSpeakableString(),
            "03/16/2007.  Debit in the Amount of:  -20.000000 .  Check Number:  101 .  "
            "To:  Landlord .  Unresolved .  ");

  TARNImportEntry neither;
  neither.SetDate(20070317);
  neither.SetToFrom(std::string("Someone"));
  EXPECT_EQ(neither.asSpeakableString(), "03/17/2007.  Unresolved .  ");
  ResetUserDefaults();
}

}  // namespace
}  // namespace tarn
