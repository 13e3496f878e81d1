#include "tarn/model/account_entry.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/log.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

using plist::Dictionary;
using plist::Value;

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

std::string missing(const char* key) {
  return std::string("No ") + key +
         " defined for theDictionary in -[TARNAccountEntry initWithDictionary:]";
}
std::string wrong(const char* key) {
  return std::string(key) + " is in the wrong format in -[TARNAccountEntry initWithDictionary:]";
}

// A complete, linked, split entry with flag bits beyond the named ones.
std::shared_ptr<TARNAccountEntry> fullEntry() {
  LogCapture quiet;  // the bare dictionary lacks most keys
  Dictionary raw{{"entryFlags", Value(kEntryFlagDebit | kEntryFlagLinked | kEntryFlagCheck |
                                      kEntryFlagVoid | 8 | 32 | 512)}};
  auto entry = TARNAccountEntry::initWithDictionary(Value(raw));
  entry->SetNumber(42);
  entry->SetCheckNumber(1001);
  entry->SetType(4);
  entry->SetCategory(17);
  entry->SetDescription("Groceries and fuel");
  entry->SetToFrom("Corner Store");
  entry->SetDate(20070315);
  entry->SetAmount(-75.5);
  entry->SetCleared(1);
  entry->SetNotes("receipt in the drawer");
  entry->SetLinkedEntry(7);
  entry->SetLinkedAccount(3);
  entry->SetLinkedExchangedAmount(-60.25);
  entry->addSplitLineItemWithCategory(5, "Food", "Corner Store", -50.125);
  entry->addSplitLineItem(
      TARNAccountEntrySplitLineItem::initWithCategory(6, "Fuel", "Pump", -25.5, -20.0));
  return entry;
}

void expectSameEntry(const TARNAccountEntry& a, const TARNAccountEntry& b) {
  EXPECT_EQ(a.GetNumber(), b.GetNumber());
  EXPECT_EQ(a.GetCheckNumber(), b.GetCheckNumber());
  EXPECT_EQ(a.GetType(), b.GetType());
  EXPECT_EQ(a.GetCategory(), b.GetCategory());
  EXPECT_EQ(a.GetDescription(), b.GetDescription());
  EXPECT_EQ(a.GetToFrom(), b.GetToFrom());
  EXPECT_EQ(a.GetDate(), b.GetDate());
  EXPECT_EQ(a.GetAmount(), b.GetAmount());
  EXPECT_EQ(a.GetCleared(), b.GetCleared());
  EXPECT_EQ(a.GetNotes(), b.GetNotes());
  EXPECT_EQ(a.GetLinkedEntry(), b.GetLinkedEntry());
  EXPECT_EQ(a.GetLinkedAccount(), b.GetLinkedAccount());
  EXPECT_EQ(a.GetLinkedExchangedAmount(), b.GetLinkedExchangedAmount());
  ASSERT_EQ(a.splitLineItems().size(), b.splitLineItems().size());
  for (std::size_t i = 0; i < a.splitLineItems().size(); ++i) {
    EXPECT_EQ(*a.splitLineItems()[i], *b.splitLineItems()[i]);
  }
  // The dictionaries also carry the flag bits, named or not.
  EXPECT_EQ(a.asDictionary(), b.asDictionary());
}

TEST(AccountEntry, StartsWithTheDefaults) {
  TARNAccountEntry entry;
  EXPECT_EQ(entry.GetAccount(), nullptr);
  EXPECT_EQ(entry.GetNumber(), -1);
  EXPECT_EQ(entry.GetCheckNumber(), -1);
  EXPECT_EQ(entry.GetType(), -1);
  EXPECT_EQ(entry.GetCategory(), -1);
  EXPECT_EQ(entry.GetDescription(), "");
  EXPECT_EQ(entry.GetToFrom(), "");
  EXPECT_EQ(entry.GetDate(), 0);
  EXPECT_EQ(entry.GetAmount(), 0.0);
  EXPECT_EQ(entry.GetCleared(), 0);
  EXPECT_EQ(entry.GetNotes(), "");
  EXPECT_EQ(entry.GetLinkedEntry(), -1);
  EXPECT_EQ(entry.GetLinkedAccount(), -1);
  EXPECT_EQ(entry.GetLinkedExchangedAmount(), 0.0);
  EXPECT_EQ(entry.GetCachedRunningBalance(), 0.0);
  EXPECT_FALSE(entry.IsCheck() || entry.IsDebit() || entry.IsDeposit() || entry.IsLinked() ||
               entry.GetTaxDeductible() || entry.GetVoid());
  EXPECT_TRUE(entry.splitLineItems().empty());
}

TEST(AccountEntry, DictionaryRoundTripKeepsEveryFieldAndFlagBit) {
  auto entry = fullEntry();
  Value dictionary = entry->asDictionary();

  // The stored amount is the field, not the split total.
  EXPECT_EQ(dictionary.find("amount")->doubleValue(), -75.5);
  EXPECT_DOUBLE_EQ(entry->GetAmount(), -75.625);
  EXPECT_EQ(dictionary.find("entryFlags")->intValue(), 1 | 4 | 16 | 128 | 8 | 32 | 512);
  EXPECT_TRUE(dictionary.find("cleared")->isBoolean());
  EXPECT_TRUE(dictionary.find("date")->isInteger());
  EXPECT_EQ(dictionary.find("linkedExchangedAmount")->doubleValue(), -60.25);
  EXPECT_EQ(dictionary.find("splitLineItems")->arrayValue().size(), 2u);
  EXPECT_EQ(dictionary.dictionaryValue().size(), 15u);

  auto back = TARNAccountEntry::initWithDictionary(dictionary);
  expectSameEntry(*back, *entry);
  EXPECT_TRUE(back->IsDebit() && back->IsLinked() && back->IsCheck() && back->GetVoid());
  EXPECT_FALSE(back->GetTaxDeductible());

  // Without link, notes and lines those keys are left out.
  TARNAccountEntry plain;
  plain.SetNotes("");
  Value plainDictionary = plain.asDictionary();
  for (const char* absent :
       {"linkedEntry", "linkedAccount", "linkedExchangedAmount", "notes", "splitLineItems"}) {
    EXPECT_EQ(plainDictionary.find(absent), nullptr) << absent;
  }
  EXPECT_EQ(plainDictionary.dictionaryValue().size(), 10u);
  expectSameEntry(*TARNAccountEntry::initWithDictionary(plainDictionary), plain);
}

TEST(AccountEntry, LogsEachMissingKeyInReadingOrder) {
  LogCapture log;
  auto entry = TARNAccountEntry::initWithDictionary(Value(Dictionary{}));
  EXPECT_EQ(log.lines, (std::vector<std::string>{
                           missing("date"), missing("number"), missing("checkNumber"),
                           missing("entryFlags"), missing("description"), missing("type"),
                           missing("amount"), missing("toFrom"), missing("cleared")}));
  expectSameEntry(*entry, TARNAccountEntry());

  // A nil dictionary keeps the defaults without a word.
  log.lines.clear();
  TARNAccountEntry::initWithDictionary(Value());
  EXPECT_TRUE(log.lines.empty());
}

TEST(AccountEntry, LogsEachMalformedKeyAndKeepsItsDefault) {
  LogCapture log;
  // Flags are right (linked) so that the link keys are read too.
  Dictionary bad{{"date", Value("2007-03-15")},
                 {"number", Value("12")},
                 {"checkNumber", Value(Dictionary{})},
                 {"entryFlags", Value(kEntryFlagLinked)},
                 {"linkedEntry", Value("3")},
                 {"linkedAccount", Value(plist::Array{})},
                 {"linkedExchangedAmount", Value("1.5")},
                 {"description", Value(3)},
                 {"type", Value("Check")},
                 {"category", Value("Auto")},
                 {"amount", Value("12.50")},
                 {"toFrom", Value(true)},
                 {"cleared", Value("yes")},
                 {"notes", Value(1.0)},
                 {"splitLineItems", Value("not a list")}};
  auto entry = TARNAccountEntry::initWithDictionary(Value(bad));
  EXPECT_EQ(
      log.lines,
      (std::vector<std::string>{
          wrong("date"), wrong("number"), wrong("checkNumber"), wrong("linkedEntry"),
          wrong("linkedAccount"), wrong("linkedExchangedAmount"), wrong("description"),
          wrong("type"), wrong("category"), wrong("amount"), wrong("toFrom"), wrong("cleared"),
          "notes are in the wrong format in -[TARNAccountEntry initWithDictionary:]"}));
  EXPECT_EQ(entry->GetDate(), 0);
  EXPECT_EQ(entry->GetNumber(), -1);
  EXPECT_EQ(entry->GetLinkedEntry(), -1);
  EXPECT_EQ(entry->GetLinkedExchangedAmount(), 0.0);
  EXPECT_EQ(entry->GetDescription(), "");
  EXPECT_EQ(entry->GetType(), -1);
  EXPECT_EQ(entry->GetCategory(), -1);
  EXPECT_EQ(entry->GetAmount(), 0.0);
  EXPECT_EQ(entry->GetNotes(), "");
  EXPECT_TRUE(entry->splitLineItems().empty());
  EXPECT_TRUE(entry->IsLinked());

  log.lines.clear();
  Dictionary badFlags{{"entryFlags", Value("4")}};
  TARNAccountEntry::initWithDictionary(Value(badFlags));
  EXPECT_EQ(log.lines.at(3), wrong("entryFlags"));
}

TEST(AccountEntry, ReadsNumbersOfAnyKindAndLinkKeysOnlyWhenLinked) {
  LogCapture log;
  Dictionary stored{
      {"date", Value(20070315.9)},
      {"number", Value(true)},
      {"checkNumber", Value(std::int64_t{101})},
      {"entryFlags", Value(kEntryFlagDeposit | 1024)},
      {"linkedEntry", Value(9)},
      {"linkedAccount", Value(2)},
      {"linkedExchangedAmount", Value(4.5)},
      {"description", Value("Pay")},
      {"type", Value(10.0)},
      {"category", Value(3)},
      {"amount", Value(1234.567)},
      {"toFrom", Value("Employer")},
      {"cleared", Value(5)},
      {"splitLineItems", Value(plist::Array{Value(Dictionary{{"amount", Value(1.0)}})})}};
  auto entry = TARNAccountEntry::initWithDictionary(Value(stored));
  EXPECT_TRUE(log.lines.empty());
  EXPECT_EQ(entry->GetDate(), 20070315);
  EXPECT_EQ(entry->GetNumber(), 1);
  EXPECT_EQ(entry->GetType(), 10);
  EXPECT_EQ(entry->GetCleared(), 1);
  // Read as stored, not rounded.
  EXPECT_EQ(entry->asDictionary().find("amount")->doubleValue(), 1234.567);
  EXPECT_EQ(entry->GetAmount(), 1.0);
  // Not linked: the link keys are ignored.
  EXPECT_FALSE(entry->IsLinked());
  EXPECT_EQ(entry->GetLinkedEntry(), -1);
  EXPECT_EQ(entry->GetLinkedAccount(), -1);
  EXPECT_EQ(entry->GetLinkedExchangedAmount(), 0.0);
  EXPECT_EQ(entry->asDictionary().find("entryFlags")->intValue(), 2 | 1024);
}

TEST(AccountEntry, SettersFollowTheirRules) {
  TARNAccountEntry entry;
  entry.SetIsDeposit(true);
  entry.SetIsDebit(false);
  EXPECT_TRUE(entry.IsDeposit());  // NO on a deposit leaves it a deposit
  entry.SetIsDebit(true);
  EXPECT_TRUE(entry.IsDebit());
  EXPECT_FALSE(entry.IsDeposit());
  entry.SetIsDeposit(false);
  EXPECT_TRUE(entry.IsDebit());
  entry.SetIsDeposit(true);
  EXPECT_FALSE(entry.IsDebit());

  entry.SetIsLinked(true);
  entry.SetLinkedEntry(5);
  entry.SetLinkedAccount(6);
  entry.SetLinkedExchangedAmount(9.5);
  entry.SetIsLinked(false);
  EXPECT_FALSE(entry.IsLinked());
  EXPECT_EQ(entry.GetLinkedEntry(), -1);
  EXPECT_EQ(entry.GetLinkedAccount(), -1);
  EXPECT_EQ(entry.GetLinkedExchangedAmount(), 9.5);

  entry.SetDate(20070315);
  entry.SetDate(-1);
  EXPECT_EQ(entry.GetDate(), 20070315);
  entry.SetDate(0);
  EXPECT_EQ(entry.GetDate(), 0);

  entry.SetAmount(10.125);
  EXPECT_EQ(entry.GetAmount(), 10.13);
  entry.SetAmount(-2.125);
  EXPECT_EQ(entry.GetAmount(), -2.13);
  entry.SetAmount(2.675);
  EXPECT_EQ(entry.GetAmount(), 2.68);

  entry.SetDescription("Rent");
  entry.SetDescription(std::nullopt);
  entry.SetToFrom("Landlord");
  entry.SetToFrom(std::nullopt);
  entry.SetNotes("paid late");
  EXPECT_EQ(entry.GetDescription(), "Rent");
  EXPECT_EQ(entry.GetToFrom(), "Landlord");
  entry.SetNotes(std::nullopt);
  EXPECT_EQ(entry.GetNotes(), "");

  entry.SetTaxDeductible(true);
  entry.SetVoid(true);
  entry.SetIsCheck(true);
  EXPECT_TRUE(entry.GetTaxDeductible() && entry.GetVoid() && entry.IsCheck());
  entry.SetVoid(false);
  EXPECT_TRUE(entry.GetTaxDeductible() && !entry.GetVoid() && entry.IsCheck());
}

TEST(AccountEntry, LineItemsListAndTotals) {
  TARNAccountEntry entry;
  entry.SetAmount(-100.0);
  auto rent = TARNAccountEntrySplitLineItem::initWithCategory(1, "Rent", "", -80.0, -70.0);
  auto power = TARNAccountEntrySplitLineItem::initWithCategory(2, "Power", "", -10.125, 0.0);
  entry.addSplitLineItem(nullptr);
  EXPECT_EQ(entry.GetAmount(), -100.0);
  entry.addSplitLineItem(rent);
  entry.insertSplitLineItem(power, 0);
  entry.insertSplitLineItem(power, 3);   // beyond the end
  entry.insertSplitLineItem(power, -1);  // negative
  entry.insertSplitLineItem(nullptr, 0);
  ASSERT_EQ(entry.splitLineItems().size(), 2u);
  EXPECT_EQ(entry.splitLineItems()[0], power);
  entry.insertSplitLineItem(power, 2);           // at the end is allowed
  EXPECT_DOUBLE_EQ(entry.GetAmount(), -100.25);  // exchanged amounts not summed
  EXPECT_DOUBLE_EQ(entry.splitTotal(), -100.25);

  entry.removeSplitLineItem(power);  // every occurrence
  ASSERT_EQ(entry.splitLineItems().size(), 1u);
  entry.removeSplitLineItem(power);
  entry.removeSplitLineItem(nullptr);
  entry.removeSplitLineItemAtIndex(1);
  entry.removeSplitLineItemAtIndex(-1);
  ASSERT_EQ(entry.splitLineItems().size(), 1u);
  entry.removeSplitLineItem(entry.splitLineItems()[0]);  // a reference into the list itself
  EXPECT_TRUE(entry.splitLineItems().empty());

  entry.addSplitLineItemWithCategory(3, "Gift", "Aunt", 25.5);
  EXPECT_EQ(entry.splitLineItems()[0]->exchangedAmount(), 25.5);
  EXPECT_EQ(entry.splitLineItems()[0]->toFrom(), "Aunt");
  entry.removeSplitLineItemAtIndex(0);
  entry.addSplitLineItem(rent);
  entry.removeAllSplitLineItems();
  EXPECT_EQ(entry.GetAmount(), -100.0);
}

// A subclass that adds its own key, as scheduled entries do.
class RepeatingEntry : public TARNAccountEntry {
 public:
  static std::shared_ptr<RepeatingEntry> initWithDictionary(const Value& dictionary) {
    auto entry = std::make_shared<RepeatingEntry>();
    entry->loadFromDictionary(dictionary);
    return entry;
  }
  Value asDictionary() const override {
    Dictionary dictionary;
    writeEntryKeys(dictionary);
    dictionary.emplace("repeatInterval", interval);
    return Value(std::move(dictionary));
  }
  int interval = 1;

 protected:
  void loadFromDictionary(const Value& dictionary) override {
    TARNAccountEntry::loadFromDictionary(dictionary);
    if (const Value* value = dictionary.find("repeatInterval")) interval = value->intValue();
  }
};

TEST(AccountEntry, CopiesAreAlwaysPlainEntriesWithTheSameAccount) {
  TARNAccount account;
  auto original = fullEntry();
  original->SetAccount(&account);
  original->SetCachedRunningBalance(512.0);

  auto copy = TARNAccountEntry::entryWithEntry(original.get());
  expectSameEntry(*copy, *original);
  EXPECT_EQ(copy->GetAccount(), &account);
  EXPECT_EQ(copy->GetCachedRunningBalance(), 0.0);
  EXPECT_NE(copy->splitLineItems()[0], original->splitLineItems()[0]);

  auto repeating = RepeatingEntry::initWithDictionary(original->asDictionary());
  repeating->interval = 3;
  EXPECT_EQ(RepeatingEntry::initWithDictionary(repeating->asDictionary())->interval, 3);
  auto plain = TARNAccountEntry::entryWithEntry(repeating.get());
  const TARNAccountEntry& plainRef = *plain;
  EXPECT_EQ(typeid(plainRef), typeid(TARNAccountEntry));
  EXPECT_EQ(plain->asDictionary().find("repeatInterval"), nullptr);
  EXPECT_EQ(plain->GetNumber(), 42);

  // Nothing to copy from: an entry that was never initialised.
  auto blank = TARNAccountEntry::initWithEntry(nullptr);
  EXPECT_EQ(blank->GetNumber(), 0);
  EXPECT_EQ(blank->GetCheckNumber(), 0);
  EXPECT_EQ(blank->GetType(), 0);
  EXPECT_EQ(blank->GetLinkedAccount(), 0);
}

std::shared_ptr<TARNAccountEntryType> makeType(std::int32_t number, const char* name) {
  auto type = std::make_shared<TARNAccountEntryType>();
  type->SetNumber(number);
  type->SetName(name);
  return type;
}

std::shared_ptr<TARNAccountEntryCategory> makeCategory(std::int32_t number, const char* name) {
  auto category = std::make_shared<TARNAccountEntryCategory>();
  category->setNumber(number);
  category->setName(name);
  return category;
}

TEST(AccountEntry, AccountFindsTypesAndCategories) {
  TARNAccount account;
  // A new account starts with the default types; these tests bring their own.
  account.types().clear();
  account.types().push_back(makeType(4, "Check"));
  account.inactiveTypes().push_back(makeType(20, "Wire"));
  account.categories().push_back(makeCategory(1, "Auto"));
  EXPECT_EQ(account.accountEntryTypeForNumber(4)->GetName(), "Check");
  EXPECT_EQ(account.accountEntryTypeForNumber(20)->GetName(), "Wire");
  EXPECT_EQ(account.accountEntryTypeForNumber(5), nullptr);
  EXPECT_EQ(account.accountEntryCategoryForNumber(1)->name(), "Auto");

  // With a controller, categories come from it alone.
  InMemoryAccountsController controller;
  auto household = makeCategory(2, "Household");
  household->addChild(makeCategory(3, "Repairs"));
  controller.categories().push_back(household);
  account.setAccountsController(&controller);
  EXPECT_EQ(account.accountEntryCategoryForNumber(1), nullptr);
  EXPECT_EQ(account.accountEntryCategoryForNumber(3)->fullName(), "Household:Repairs");
}

using Comparison = int (TARNAccountEntry::*)(const TARNAccountEntry&) const;
struct NamedComparison {
  const char* name;
  Comparison forward;
  Comparison reversed;
};

const std::vector<NamedComparison>& allComparisons() {
  static const std::vector<NamedComparison> comparisons = {
      {"Account", &TARNAccountEntry::AccountIsGreaterThan,
       &TARNAccountEntry::AccountIsGreaterThan_Reversed},
      {"CheckNumber", &TARNAccountEntry::CheckNumberIsGreaterThan,
       &TARNAccountEntry::CheckNumberIsGreaterThan_Reversed},
      {"Date", &TARNAccountEntry::DateIsGreaterThan, &TARNAccountEntry::DateIsGreaterThan_Reversed},
      {"DatePrimaryCheckSecondary", &TARNAccountEntry::DatePrimaryCheckSecondaryIsGreaterThan,
       &TARNAccountEntry::DatePrimaryCheckSecondaryIsGreaterThan_Reversed},
      {"Description", &TARNAccountEntry::DescriptionIsGreaterThan,
       &TARNAccountEntry::DescriptionIsGreaterThan_Reversed},
      {"ToFrom", &TARNAccountEntry::ToFromIsGreaterThan,
       &TARNAccountEntry::ToFromIsGreaterThan_Reversed},
      {"TypePrimaryDateSecondary", &TARNAccountEntry::TypePrimaryDateSecondaryIsGreaterThan,
       &TARNAccountEntry::TypePrimaryDateSecondaryIsGreaterThan_Reversed},
      {"CategoryPrimaryDateSecondary", &TARNAccountEntry::CategoryPrimaryDateSecondaryIsGreaterThan,
       &TARNAccountEntry::CategoryPrimaryDateSecondaryIsGreaterThan_Reversed},
      {"Amount", &TARNAccountEntry::AmountIsGreaterThan,
       &TARNAccountEntry::AmountIsGreaterThan_Reversed},
      {"Balance", &TARNAccountEntry::BalanceIsGreaterThan,
       &TARNAccountEntry::BalanceIsGreaterThan_Reversed},
      {"Number", &TARNAccountEntry::NumberIsGreaterThan,
       &TARNAccountEntry::NumberIsGreaterThan_Reversed},
      {"Cleared", &TARNAccountEntry::ClearedIsGreaterThan,
       &TARNAccountEntry::ClearedIsGreaterThan_Reversed},
  };
  return comparisons;
}

TEST(AccountEntry, EntriesDifferingOnlyInNumberCompareByNumber) {
  TARNAccount account;
  account.SetName("Checking");
  account.types().push_back(makeType(4, "Check"));
  account.categories().push_back(makeCategory(1, "Auto"));
  auto low = fullEntry();
  auto high = TARNAccountEntry::entryWithEntry(low.get());
  low->SetAccount(&account);
  high->SetAccount(&account);
  high->SetNumber(43);
  for (const auto& comparison : allComparisons()) {
    SCOPED_TRACE(comparison.name);
    EXPECT_EQ(((*low).*comparison.forward)(*high), -1);
    EXPECT_EQ(((*high).*comparison.forward)(*low), 1);
    EXPECT_EQ(((*low).*comparison.forward)(*low), 0);
    EXPECT_EQ(((*low).*comparison.reversed)(*high), 1);
    EXPECT_EQ(((*high).*comparison.reversed)(*low), -1);
    EXPECT_EQ(((*low).*comparison.reversed)(*low), 0);
  }
}

TEST(AccountEntry, ComparisonsOrderByTheirKeysFirst) {
  TARNAccount checking;
  checking.SetName("checking");
  TARNAccount savings;
  savings.SetName("Savings");
  // A new account starts with the default types; these tests bring their own.
  checking.types().clear();
  savings.types().clear();
  checking.types().push_back(makeType(1, "automatic draft"));
  checking.types().push_back(makeType(2, "ATM"));
  savings.types().push_back(makeType(2, "Zoo"));
  InMemoryAccountsController controller;
  auto autoCategory = makeCategory(10, "Auto");
  autoCategory->addChild(makeCategory(11, "Fuel"));
  controller.categories().push_back(autoCategory);
  controller.categories().push_back(makeCategory(12, "Books"));
  checking.setAccountsController(&controller);

  TARNAccountEntry a;  // the receiver in every case; the higher number
  TARNAccountEntry b;
  a.SetNumber(2);
  b.SetNumber(1);
  a.SetAccount(&checking);
  b.SetAccount(&savings);
  a.SetDate(20070101);
  b.SetDate(20070102);
  EXPECT_EQ(a.AccountIsGreaterThan(b), -1);
  EXPECT_EQ(a.AccountIsGreaterThan_Reversed(b), 1);
  b.SetAccount(&checking);  // same name: the date decides, then the number
  EXPECT_EQ(a.AccountIsGreaterThan(b), -1);
  b.SetDate(20070101);
  EXPECT_EQ(a.AccountIsGreaterThan(b), 1);
  EXPECT_EQ(a.AccountIsGreaterThan_Reversed(b), -1);

  // A check before a non-check, whatever the numbers; two checks by check number.
  a.SetIsCheck(true);
  a.SetCheckNumber(500);
  EXPECT_EQ(a.CheckNumberIsGreaterThan(b), -1);
  EXPECT_EQ(b.CheckNumberIsGreaterThan(a), 1);
  EXPECT_EQ(a.CheckNumberIsGreaterThan_Reversed(b), 1);
  b.SetIsCheck(true);
  b.SetCheckNumber(501);
  EXPECT_EQ(a.CheckNumberIsGreaterThan(b), -1);
  EXPECT_EQ(a.DatePrimaryCheckSecondaryIsGreaterThan(b), -1);
  b.SetIsCheck(false);
  EXPECT_EQ(a.DatePrimaryCheckSecondaryIsGreaterThan(b), -1);
  b.SetDate(20061231);
  EXPECT_EQ(a.DatePrimaryCheckSecondaryIsGreaterThan(b), 1);
  EXPECT_EQ(a.DateIsGreaterThan(b), 1);
  EXPECT_EQ(a.DateIsGreaterThan_Reversed(b), -1);
  b.SetDate(20070101);

  a.SetDescription("rent");
  b.SetDescription("Rent");
  EXPECT_EQ(a.DescriptionIsGreaterThan(b), 1);  // equal names: the number
  b.SetDescription("Salary");
  EXPECT_EQ(a.DescriptionIsGreaterThan(b), -1);
  a.SetToFrom("zoo");
  b.SetToFrom("Acme");
  EXPECT_EQ(a.ToFromIsGreaterThan(b), 1);
  EXPECT_EQ(a.ToFromIsGreaterThan_Reversed(b), -1);

  // Types resolve in the receiver's account: "ATM" < "automatic draft"; an
  // unknown type counts as "".
  a.SetType(1);
  b.SetType(2);
  EXPECT_EQ(a.TypePrimaryDateSecondaryIsGreaterThan(b), 1);
  EXPECT_EQ(a.TypePrimaryDateSecondaryIsGreaterThan_Reversed(b), -1);
  b.SetType(99);
  EXPECT_EQ(a.TypePrimaryDateSecondaryIsGreaterThan(b), 1);
  b.SetAccount(&savings);  // still looked up in a's account
  b.SetType(2);
  EXPECT_EQ(a.TypePrimaryDateSecondaryIsGreaterThan(b), 1);

  // Categories by full name: "Auto:Fuel" < "Books", and "Auto" < "Auto:Fuel".
  a.SetCategory(11);
  b.SetCategory(12);
  EXPECT_EQ(a.CategoryPrimaryDateSecondaryIsGreaterThan(b), -1);
  b.SetCategory(10);
  EXPECT_EQ(a.CategoryPrimaryDateSecondaryIsGreaterThan(b), 1);
  EXPECT_EQ(a.CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(b), -1);

  // Amounts through GetAmount, signed: the largest debit first.
  a.SetAmount(-500.0);
  b.SetAmount(-20.0);
  EXPECT_EQ(a.AmountIsGreaterThan(b), -1);
  b.addSplitLineItemWithCategory(1, "", "", -600.0);
  EXPECT_EQ(a.AmountIsGreaterThan(b), 1);
  EXPECT_EQ(a.AmountIsGreaterThan_Reversed(b), -1);

  a.SetCachedRunningBalance(10.0);
  b.SetCachedRunningBalance(20.0);
  EXPECT_EQ(a.BalanceIsGreaterThan(b), -1);

  // Unresolved first; the mark compares as an unsigned byte.
  a.SetCleared(200);
  b.SetCleared(1);
  EXPECT_EQ(a.ClearedIsGreaterThan(b), 1);
  EXPECT_EQ(a.ClearedIsGreaterThan_Reversed(b), -1);
  EXPECT_EQ(a.NumberIsGreaterThan(b), 1);
}

struct TwoAccounts {
  TARNAccount from;
  TARNAccount to;
  TwoAccounts() {
    from.SetName("Checking");
    from.SetNumber(1);
    to.SetName("Savings");
    to.SetNumber(2);
  }
};

std::shared_ptr<TARNAccountEntry> transferOut(TARNAccount& account) {
  auto entry = std::make_shared<TARNAccountEntry>();
  entry->SetAccount(&account);
  entry->SetNumber(8);
  entry->SetIsDebit(true);
  entry->SetCategory(3);
  entry->SetDescription("Move to savings");
  entry->SetDate(20070401);
  entry->SetVoid(true);
  entry->SetAmount(-100.0);
  entry->SetLinkedExchangedAmount(-80.0);
  entry->addSplitLineItem(
      TARNAccountEntrySplitLineItem::initWithCategory(3, "Part", "Bank", -60.0, -48.0));
  entry->addSplitLineItem(
      TARNAccountEntrySplitLineItem::initWithCategory(4, "Rest", "Bank", -40.0, -32.0));
  return entry;
}

TEST(AccountEntry, SyncToEntryMirrorsWithTheSameCurrencyObject) {
  TwoAccounts accounts;
  auto shared = std::make_shared<PFCurrency>();
  accounts.from.setCurrency(shared);
  accounts.to.setCurrency(shared);
  auto source = transferOut(accounts.from);
  TARNAccountEntry mirror;
  mirror.SetAccount(&accounts.to);
  mirror.SetLinkedExchangedAmount(5.0);
  mirror.addSplitLineItemWithCategory(9, "stale", "", 1.0);

  source->syncToEntry(mirror);
  EXPECT_TRUE(mirror.IsLinked());
  EXPECT_EQ(mirror.GetLinkedEntry(), 8);
  EXPECT_EQ(mirror.GetLinkedAccount(), 1);
  EXPECT_EQ(mirror.GetToFrom(), "Checking");
  EXPECT_EQ(mirror.GetCategory(), 3);
  EXPECT_EQ(mirror.GetDescription(), "Move to savings");
  EXPECT_EQ(mirror.GetDate(), 20070401);
  EXPECT_TRUE(mirror.IsDeposit());
  EXPECT_FALSE(mirror.IsDebit());
  EXPECT_TRUE(mirror.GetVoid());
  // Amounts as they stand (the caller chooses the signs); exchanged left alone.
  EXPECT_EQ(mirror.asDictionary().find("amount")->doubleValue(), -100.0);
  EXPECT_EQ(mirror.GetLinkedExchangedAmount(), 5.0);
  ASSERT_EQ(mirror.splitLineItems().size(), 2u);
  EXPECT_EQ(*mirror.splitLineItems()[0], *source->splitLineItems()[0]);
  EXPECT_NE(mirror.splitLineItems()[0], source->splitLineItems()[0]);
  EXPECT_EQ(*mirror.splitLineItems()[1], *source->splitLineItems()[1]);
}

TEST(AccountEntry, SyncToEntrySwapsAmountsBetweenDistinctCurrencyObjects) {
  TwoAccounts accounts;
  // Equal in every field, but two objects: that counts as two currencies.
  auto first = std::make_shared<PFCurrency>();
  auto second = std::make_shared<PFCurrency>(*first);
  ASSERT_EQ(first->asDictionary(), second->asDictionary());
  accounts.from.setCurrency(first);
  accounts.to.setCurrency(second);
  auto source = transferOut(accounts.from);
  source->SetVoid(false);
  source->SetIsDeposit(true);
  TARNAccountEntry mirror;
  mirror.SetAccount(&accounts.to);
  mirror.SetIsDeposit(true);
  mirror.SetVoid(true);

  source->syncToEntry(mirror);
  EXPECT_TRUE(mirror.IsDebit());  // the source is no debit
  EXPECT_FALSE(mirror.IsDeposit());
  EXPECT_FALSE(mirror.GetVoid());
  EXPECT_EQ(mirror.asDictionary().find("amount")->doubleValue(), -80.0);
  EXPECT_EQ(mirror.GetLinkedExchangedAmount(), -100.0);
  ASSERT_EQ(mirror.splitLineItems().size(), 2u);
  EXPECT_EQ(mirror.splitLineItems()[0]->amount(), -48.0);
  EXPECT_EQ(mirror.splitLineItems()[0]->exchangedAmount(), -60.0);
  EXPECT_EQ(mirror.splitLineItems()[1]->amount(), -32.0);
  EXPECT_EQ(mirror.splitLineItems()[1]->exchangedAmount(), -40.0);
  EXPECT_EQ(mirror.splitLineItems()[1]->description(), "Rest");
  EXPECT_DOUBLE_EQ(mirror.GetAmount(), -80.0);
}

TEST(AccountEntry, SpeakableStringReadsTheEntryAloud) {
  const std::string savedFormat = UserDefault("NSShortDateFormatString");
  SetUserDefault("NSShortDateFormatString", "%m/%d/%y");
  TARNAccount account;
  // A new account starts with the default types; these tests bring their own.
  account.types().clear();
  account.types().push_back(makeType(4, "Check"));
  auto autoCategory = makeCategory(10, "Auto");
  autoCategory->addChild(makeCategory(11, "Fuel"));
  account.categories().push_back(autoCategory->allChildren()[0]);

  TARNAccountEntry entry;
  entry.SetAccount(&account);
  entry.SetDate(20070315);
  entry.SetIsDebit(true);
  entry.SetAmount(-12.345);
  entry.SetType(4);
  entry.SetCategory(11);
  entry.SetIsCheck(true);
  entry.SetCheckNumber(101);
  entry.SetToFrom("Shell");
  entry.SetDescription("Gas");
  entry.SetCleared(1);
  EXPECT_EQ(entry.asSpeakableString(),
            "03/15/07.  Debit in the Amount of:  -12.35 .  Type:  Check .  Category:  Fuel .  "
            "Check Number:  101 .  To:  Shell .  Description:  Gas .  Resolved .  ");

  // Unknown type and category, no check, a deposit, unresolved.
  entry.SetIsDeposit(true);
  entry.SetAmount(250.0);
  entry.SetType(5);
  entry.SetCategory(-1);
  entry.SetIsCheck(false);
  entry.SetDescription("");
  entry.SetCleared(0);
  EXPECT_EQ(entry.asSpeakableString(),
            "03/15/07.  Deposit in the Amount of:  250.00 .  From:  Shell .  Unresolved .  ");

  // Neither debit nor deposit: no amount and no party sentence.
  TARNAccountEntry neither;
  neither.SetDate(20070315);
  neither.SetToFrom("Shell");
  EXPECT_EQ(neither.asSpeakableString(), "03/15/07.  Unresolved .  ");
  SetUserDefault("NSShortDateFormatString", savedFormat);
}

}  // namespace
}  // namespace tarn
