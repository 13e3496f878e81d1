#include "tarn/model/account_entry.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

#include "model/model_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

using plist::Dictionary;
using plist::Value;
using Lines = std::vector<std::string>;

std::string missing(const char* key) {
  return std::string("No ") + key +
         " defined for theDictionary in -[TARNAccountEntry initWithDictionary:]";
}
std::string wrong(const char* key) {
  return std::string(key) + " is in the wrong format in -[TARNAccountEntry initWithDictionary:]";
}

// A complete, linked, split entry with flag bits beyond the named ones.
std::shared_ptr<TARNAccountEntry> fullEntry() {
  LogCapture quiet;
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

TEST(AccountEntry, DictionaryRoundTripKeepsEveryFieldAndFlagBit) {
  auto entry = fullEntry();
  Value dictionary = entry->asDictionary();
  EXPECT_EQ(dictionary.find("amount")->doubleValue(), -75.5);  // the field, not the split total
  EXPECT_DOUBLE_EQ(entry->GetAmount(), -75.625);
  EXPECT_EQ(dictionary.find("entryFlags")->intValue(), 1 | 4 | 16 | 128 | 8 | 32 | 512);
  EXPECT_TRUE(dictionary.find("cleared")->isBoolean());
  EXPECT_TRUE(dictionary.find("date")->isInteger());
  EXPECT_EQ(dictionary.find("linkedExchangedAmount")->doubleValue(), -60.25);
  EXPECT_EQ(dictionary.find("splitLineItems")->arrayValue().size(), 2u);
  EXPECT_EQ(dictionary.dictionaryValue().size(), 15u);

  auto back = TARNAccountEntry::initWithDictionary(dictionary);
  EXPECT_EQ(back->asDictionary(), dictionary);
  EXPECT_EQ(*back->splitLineItems()[1], *entry->splitLineItems()[1]);
  EXPECT_TRUE(back->IsDebit() && back->IsLinked() && back->IsCheck() && back->GetVoid());
  EXPECT_FALSE(back->GetTaxDeductible());
  EXPECT_EQ(back->GetLinkedAccount(), 3);

  // Without link, notes and lines those keys are left out.
  TARNAccountEntry plain;
  Value plainDictionary = plain.asDictionary();
  for (const char* absent :
       {"linkedEntry", "linkedAccount", "linkedExchangedAmount", "notes", "splitLineItems"}) {
    EXPECT_EQ(plainDictionary.find(absent), nullptr) << absent;
  }
  EXPECT_EQ(plainDictionary.dictionaryValue().size(), 10u);
  EXPECT_EQ(TARNAccountEntry::initWithDictionary(plainDictionary)->asDictionary(), plainDictionary);
}

TEST(AccountEntry, LogsEachMissingOrMalformedKey) {
  LogCapture log;
  auto entry = TARNAccountEntry::initWithDictionary(Value(Dictionary{}));
  EXPECT_EQ(log.lines, (Lines{missing("date"), missing("number"), missing("checkNumber"),
                              missing("entryFlags"), missing("description"), missing("type"),
                              missing("amount"), missing("toFrom"), missing("cleared")}));
  EXPECT_EQ(entry->asDictionary(), TARNAccountEntry().asDictionary());
  log.lines.clear();
  TARNAccountEntry::initWithDictionary(Value());  // nil: defaults without a word
  EXPECT_TRUE(log.lines.empty());

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
  entry = TARNAccountEntry::initWithDictionary(Value(bad));
  EXPECT_EQ(
      log.lines,
      (Lines{wrong("date"), wrong("number"), wrong("checkNumber"), wrong("linkedEntry"),
             wrong("linkedAccount"), wrong("linkedExchangedAmount"), wrong("description"),
             wrong("type"), wrong("category"), wrong("amount"), wrong("toFrom"), wrong("cleared"),
             "notes are in the wrong format in -[TARNAccountEntry initWithDictionary:]"}));
  TARNAccountEntry linkedDefault;
  linkedDefault.SetIsLinked(true);
  EXPECT_EQ(entry->asDictionary(), linkedDefault.asDictionary());

  log.lines.clear();
  TARNAccountEntry::initWithDictionary(Value(Dictionary{{"entryFlags", Value("4")}}));
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
  EXPECT_EQ(entry->asDictionary().find("amount")->doubleValue(), 1234.567);  // not rounded
  EXPECT_EQ(entry->GetAmount(), 1.0);                                        // the items' sum
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
  EXPECT_TRUE(entry.IsDebit() && !entry.IsDeposit());
  entry.SetIsDeposit(false);
  EXPECT_TRUE(entry.IsDebit());

  auto linked = fullEntry();
  linked->SetIsLinked(false);  // forgets the link but not the exchanged amount
  EXPECT_FALSE(linked->IsLinked());
  EXPECT_EQ(linked->GetLinkedEntry(), -1);
  EXPECT_EQ(linked->GetLinkedAccount(), -1);
  EXPECT_EQ(linked->GetLinkedExchangedAmount(), -60.25);

  entry.SetDate(20070315);
  entry.SetDate(-1);
  EXPECT_EQ(entry.GetDate(), 20070315);
  entry.SetDate(0);
  EXPECT_EQ(entry.GetDate(), 0);

  for (auto [amount, expected] : {std::pair{10.125, 10.13}, {-2.125, -2.13}, {2.675, 2.68}}) {
    entry.SetAmount(amount);
    EXPECT_EQ(entry.GetAmount(), expected) << amount;
  }

  entry.SetDescription("Rent");
  entry.SetDescription(std::nullopt);  // ignored, while nil notes clear them
  entry.SetNotes("paid late");
  entry.SetNotes(std::nullopt);
  EXPECT_EQ(entry.GetDescription() + entry.GetNotes(), "Rent");

  linked->SetTaxDeductible(true);
  linked->SetVoid(false);
  EXPECT_EQ(linked->asDictionary().find("entryFlags")->intValue(), 1 | 64 | 8 | 16 | 32 | 512);
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
  entry.removeSplitLineItem(nullptr);
  entry.removeSplitLineItemAtIndex(1);
  entry.removeSplitLineItemAtIndex(-1);
  ASSERT_EQ(entry.splitLineItems().size(), 1u);
  entry.removeSplitLineItem(entry.splitLineItems()[0]);  // a reference into the list itself
  EXPECT_TRUE(entry.splitLineItems().empty());

  entry.addSplitLineItemWithCategory(3, "Gift", "Aunt", 25.5);
  EXPECT_EQ(entry.splitLineItems()[0]->exchangedAmount(), 25.5);
  entry.removeAllSplitLineItems();
  EXPECT_EQ(entry.GetAmount(), -100.0);
}

TEST(AccountEntry, CopiesAreAlwaysPlainEntriesWithTheSameAccount) {
  TARNAccount account;
  auto original = fullEntry();
  original->SetAccount(&account);
  original->SetCachedRunningBalance(512.0);

  auto copy = TARNAccountEntry::entryWithEntry(original.get());
  EXPECT_EQ(copy->asDictionary(), original->asDictionary());
  EXPECT_EQ(copy->GetAccount(), &account);
  EXPECT_EQ(copy->GetCachedRunningBalance(), 0.0);
  EXPECT_NE(copy->splitLineItems()[0], original->splitLineItems()[0]);

  // A scheduled entry, which adds keys of its own, copies to a plain entry.
  LogCapture quiet;  // the schedule's own keys are missing
  auto schedule = TARNAccountSchedule::initWithDictionary(original->asDictionary());
  schedule->SetRepeatInterval(3);
  auto plain = TARNAccountEntry::entryWithEntry(schedule.get());
  const TARNAccountEntry& plainRef = *plain;
  EXPECT_EQ(typeid(plainRef), typeid(TARNAccountEntry));
  EXPECT_EQ(plain->asDictionary(), original->asDictionary());

  // Nothing to copy from: an entry that was never initialised.
  auto blank = TARNAccountEntry::initWithEntry(nullptr);
  EXPECT_EQ(blank->GetNumber() | blank->GetCheckNumber() | blank->GetType(), 0);
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

using Comparison = int (TARNAccountEntry::*)(const TARNAccountEntry&) const;
#define TARN_COMPARISON(name) \
  { #name, &TARNAccountEntry::name##IsGreaterThan, &TARNAccountEntry::name##IsGreaterThan_Reversed }
const struct {
  const char* name;
  Comparison forward, reversed;
} kComparisons[] = {TARN_COMPARISON(Account),
                    TARN_COMPARISON(CheckNumber),
                    TARN_COMPARISON(Date),
                    TARN_COMPARISON(Description),
                    TARN_COMPARISON(ToFrom),
                    TARN_COMPARISON(Amount),
                    TARN_COMPARISON(Balance),
                    TARN_COMPARISON(Number),
                    TARN_COMPARISON(Cleared),
                    TARN_COMPARISON(DatePrimaryCheckSecondary),
                    TARN_COMPARISON(TypePrimaryDateSecondary),
                    TARN_COMPARISON(CategoryPrimaryDateSecondary)};
#undef TARN_COMPARISON

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
  for (const auto& comparison : kComparisons) {
    SCOPED_TRACE(comparison.name);
    EXPECT_EQ(((*low).*comparison.forward)(*high), -1);
    EXPECT_EQ(((*high).*comparison.forward)(*low), 1);
    EXPECT_EQ(((*low).*comparison.forward)(*low), 0);
    EXPECT_EQ(((*low).*comparison.reversed)(*high), 1);
    EXPECT_EQ(((*high).*comparison.reversed)(*low), -1);
  }
}

TEST(AccountEntry, ComparisonsOrderByTheirKeysFirst) {
  TARNAccount checking, savings;
  checking.SetName("checking");
  savings.SetName("Savings");
  checking.types() = {makeType(1, "automatic draft"), makeType(2, "ATM")};
  savings.types() = {makeType(2, "Zoo")};
  InMemoryAccountsController controller;
  auto autoCategory = makeCategory(10, "Auto");
  autoCategory->addChild(makeCategory(11, "Fuel"));
  controller.categories() = {autoCategory, makeCategory(12, "Books")};
  checking.setAccountsController(&controller);

  TARNAccountEntry a, b;  // a is the receiver in every case and has the higher number
  a.SetNumber(2);
  b.SetNumber(1);
  a.SetAccount(&checking);
  b.SetAccount(&savings);
  a.SetDate(20070101);
  b.SetDate(20070102);
  EXPECT_EQ(a.AccountIsGreaterThan(b), -1);
  b.SetAccount(&checking);  // same name: the date decides, then the number
  EXPECT_EQ(a.AccountIsGreaterThan(b), -1);
  b.SetDate(20070101);
  EXPECT_EQ(a.AccountIsGreaterThan(b), 1);

  // A check before a non-check, whatever the numbers; two checks by check number.
  a.SetIsCheck(true);
  a.SetCheckNumber(500);
  EXPECT_EQ(a.CheckNumberIsGreaterThan(b), -1);
  b.SetIsCheck(true);
  b.SetCheckNumber(501);
  EXPECT_EQ(a.CheckNumberIsGreaterThan(b), -1);
  EXPECT_EQ(a.DatePrimaryCheckSecondaryIsGreaterThan(b), -1);

  a.SetDescription("rent");
  b.SetDescription("Rent");
  EXPECT_EQ(a.DescriptionIsGreaterThan(b), 1);  // equal ignoring case: the number
  a.SetToFrom("zoo");
  EXPECT_EQ(a.ToFromIsGreaterThan(b), 1);

  // Types resolve in the receiver's account ("ATM" < "automatic draft"); unknown is "".
  a.SetType(1);
  b.SetType(2);
  b.SetAccount(&savings);
  EXPECT_EQ(a.TypePrimaryDateSecondaryIsGreaterThan(b), 1);
  b.SetType(99);
  EXPECT_EQ(a.TypePrimaryDateSecondaryIsGreaterThan(b), 1);

  // Categories by full name: "Auto:Fuel" < "Books", and "Auto" < "Auto:Fuel".
  a.SetCategory(11);
  b.SetCategory(12);
  EXPECT_EQ(a.CategoryPrimaryDateSecondaryIsGreaterThan(b), -1);
  b.SetCategory(10);
  EXPECT_EQ(a.CategoryPrimaryDateSecondaryIsGreaterThan(b), 1);

  // Amounts through GetAmount, signed: the largest debit first.
  a.SetAmount(-500.0);
  b.SetAmount(-20.0);
  EXPECT_EQ(a.AmountIsGreaterThan(b), -1);
  b.addSplitLineItemWithCategory(1, "", "", -600.0);
  EXPECT_EQ(a.AmountIsGreaterThan(b), 1);

  a.SetCleared(200);  // the mark compares as an unsigned byte
  b.SetCleared(1);
  EXPECT_EQ(a.ClearedIsGreaterThan(b), 1);
}

struct Transfer {
  TARNAccount from, to;
  std::shared_ptr<TARNAccountEntry> source = std::make_shared<TARNAccountEntry>();
  TARNAccountEntry mirror;
  Transfer(std::shared_ptr<PFCurrency> fromCurrency, std::shared_ptr<PFCurrency> toCurrency) {
    from.SetName("Checking");
    from.SetNumber(1);
    from.setCurrency(fromCurrency);
    to.setCurrency(toCurrency);
    source->SetAccount(&from);
    source->SetNumber(8);
    source->SetIsDebit(true);
    source->SetCategory(3);
    source->SetDescription("Move to savings");
    source->SetDate(20070401);
    source->SetVoid(true);
    source->SetAmount(-100.0);
    source->SetLinkedExchangedAmount(-80.0);
    source->addSplitLineItem(
        TARNAccountEntrySplitLineItem::initWithCategory(3, "Part", "Bank", -60.0, -48.0));
    source->addSplitLineItem(
        TARNAccountEntrySplitLineItem::initWithCategory(4, "Rest", "Bank", -40.0, -32.0));
    mirror.SetAccount(&to);
  }
};

TEST(AccountEntry, SyncToEntryMirrorsWithTheSameCurrencyObject) {
  auto shared = std::make_shared<PFCurrency>();
  Transfer transfer(shared, shared);
  TARNAccountEntry& mirror = transfer.mirror;
  mirror.SetLinkedExchangedAmount(5.0);
  mirror.addSplitLineItemWithCategory(9, "stale", "", 1.0);

  transfer.source->syncToEntry(mirror);
  EXPECT_TRUE(mirror.IsLinked() && mirror.IsDeposit() && !mirror.IsDebit() && mirror.GetVoid());
  EXPECT_EQ(mirror.GetLinkedEntry(), 8);
  EXPECT_EQ(mirror.GetLinkedAccount(), 1);
  EXPECT_EQ(mirror.GetToFrom(), "Checking");
  EXPECT_EQ(mirror.GetCategory(), 3);
  EXPECT_EQ(mirror.GetDescription(), "Move to savings");
  EXPECT_EQ(mirror.GetDate(), 20070401);
  // Amounts as they stand (the caller chooses the signs); exchanged left alone.
  EXPECT_EQ(mirror.asDictionary().find("amount")->doubleValue(), -100.0);
  EXPECT_EQ(mirror.GetLinkedExchangedAmount(), 5.0);
  ASSERT_EQ(mirror.splitLineItems().size(), 2u);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(*mirror.splitLineItems()[i], *transfer.source->splitLineItems()[i]);
    EXPECT_NE(mirror.splitLineItems()[i], transfer.source->splitLineItems()[i]);
  }
}

TEST(AccountEntry, SyncToEntrySwapsAmountsBetweenDistinctCurrencyObjects) {
  // Equal in every field, but two objects: that counts as two currencies.
  auto first = std::make_shared<PFCurrency>();
  Transfer transfer(first, std::make_shared<PFCurrency>(*first));
  transfer.source->SetVoid(false);
  transfer.source->SetIsDeposit(true);
  TARNAccountEntry& mirror = transfer.mirror;
  mirror.SetIsDeposit(true);
  mirror.SetVoid(true);

  transfer.source->syncToEntry(mirror);
  EXPECT_TRUE(mirror.IsDebit() && !mirror.IsDeposit() && !mirror.GetVoid());
  EXPECT_EQ(mirror.asDictionary().find("amount")->doubleValue(), -80.0);
  EXPECT_EQ(mirror.GetLinkedExchangedAmount(), -100.0);
  ASSERT_EQ(mirror.splitLineItems().size(), 2u);
  EXPECT_EQ(*mirror.splitLineItems()[1],
            *TARNAccountEntrySplitLineItem::initWithCategory(4, "Rest", "Bank", -32.0, -40.0));
  EXPECT_EQ(mirror.splitLineItems()[0]->amount(), -48.0);
  EXPECT_EQ(mirror.splitLineItems()[0]->exchangedAmount(), -60.0);
}

TEST(AccountEntry, SpeakableStringReadsTheEntryAloud) {
  const std::string savedFormat = UserDefault("NSShortDateFormatString");
  SetUserDefault("NSShortDateFormatString", "%m/%d/%y");
  TARNAccount account;
  account.types() = {makeType(4, "Check")};
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

  // Unknown type and category, no check or description, a deposit, unresolved.
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
