#include "tarn/model/account_entry.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
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
using LineItem = TARNAccountEntrySplitLineItem;

const std::string kWhere = " in -[TARNAccountEntry initWithDictionary:]";

// A complete, linked, split entry with flag bits beyond the named ones.
std::shared_ptr<TARNAccountEntry> fullEntry() {
  LogCapture quiet;
  auto entry = TARNAccountEntry::initWithDictionary(
      Value(Dictionary{{"entryFlags", Value(kEntryFlagDebit | kEntryFlagLinked | kEntryFlagCheck |
                                            kEntryFlagVoid | 8 | 32 | 512)}}));
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
  entry->addSplitLineItem(LineItem::initWithCategory(6, "Fuel", "Pump", -25.5, -20.0));
  return entry;
}

TEST(AccountEntry, DictionaryRoundTripKeepsEveryFieldAndFlagBit) {
  auto entry = fullEntry();
  const Value dictionary = entry->asDictionary();
  EXPECT_EQ(dictionary.find("amount")->doubleValue(), -75.5);  // the field, not the split total
  EXPECT_EQ(dictionary.find("entryFlags")->intValue(), 1 | 4 | 16 | 128 | 8 | 32 | 512);
  EXPECT_TRUE(dictionary.find("cleared")->isBoolean() && dictionary.find("date")->isInteger());
  EXPECT_EQ(dictionary.dictionaryValue().size(), 15u);
  auto back = TARNAccountEntry::initWithDictionary(dictionary);
  EXPECT_EQ(back->asDictionary(), dictionary);

  // Without link, notes and lines those keys are left out.
  const Value plain = TARNAccountEntry().asDictionary();
  for (const char* absent :
       {"linkedEntry", "linkedAccount", "linkedExchangedAmount", "notes", "splitLineItems"}) {
    EXPECT_EQ(plain.find(absent), nullptr) << absent;
  }
  EXPECT_EQ(plain.dictionaryValue().size(), 10u);
  EXPECT_EQ(TARNAccountEntry::initWithDictionary(plain)->asDictionary(), plain);
}

TEST(AccountEntry, LogsEachMissingOrMalformedKey) {
  LogCapture log;
  auto entry = TARNAccountEntry::initWithDictionary(Value(Dictionary{}));
  Lines expected;
  for (const char* key : {"date", "number", "checkNumber", "entryFlags", "description", "type",
                          "amount", "toFrom", "cleared"}) {
    expected.push_back(std::string("No ") + key + " defined for theDictionary" + kWhere);
  }
  EXPECT_EQ(log.lines, expected);
  EXPECT_EQ(entry->asDictionary(), TARNAccountEntry().asDictionary());
  log.lines.clear();
  TARNAccountEntry::initWithDictionary(Value());  // nil: defaults without a word
  EXPECT_TRUE(log.lines.empty());

  // Every key of the wrong kind, in reading order; linked, so that the link keys are read.
  const char* keys[] = {"date",        "number",        "checkNumber",
                        "linkedEntry", "linkedAccount", "linkedExchangedAmount",
                        "description", "type",          "category",
                        "amount",      "toFrom",        "cleared"};
  const Value wrongKinds[] = {
      Value("2007-03-15"), Value("12"), Value(Dictionary{}), Value("3"),    Value(plist::Array{}),
      Value("1.5"),        Value(3),    Value("Check"),      Value("Auto"), Value("12.50"),
      Value(true),         Value("yes")};
  Value bad(Dictionary{{"entryFlags", Value(kEntryFlagLinked)},
                       {"notes", Value(1.0)},
                       {"splitLineItems", Value("not a list")}});
  expected.clear();
  for (std::size_t i = 0; i < std::size(keys); ++i) {
    bad.set(keys[i], wrongKinds[i]);
    expected.push_back(keys[i] + (" is in the wrong format" + kWhere));
  }
  expected.push_back("notes are in the wrong format" + kWhere);
  log.lines.clear();
  entry = TARNAccountEntry::initWithDictionary(bad);
  EXPECT_EQ(log.lines, expected);
  TARNAccountEntry linkedDefault;
  linkedDefault.SetIsLinked(true);
  EXPECT_EQ(entry->asDictionary(), linkedDefault.asDictionary());

  log.lines.clear();
  TARNAccountEntry::initWithDictionary(Value(Dictionary{{"entryFlags", Value("4")}}));
  EXPECT_EQ(log.lines.at(3), "entryFlags is in the wrong format" + kWhere);
}

TEST(AccountEntry, ReadsNumbersOfAnyKindAndLinkKeysOnlyWhenLinked) {
  LogCapture log;
  auto entry = TARNAccountEntry::initWithDictionary(
      Value(Dictionary{{"date", Value(20070315.9)},
                       {"number", Value(true)},
                       {"checkNumber", Value(std::int64_t{101})},
                       {"entryFlags", Value(kEntryFlagDeposit | 1024)},
                       {"linkedEntry", Value(9)},
                       {"description", Value("Pay")},
                       {"type", Value(10.0)},
                       {"amount", Value(1234.567)},
                       {"toFrom", Value("Employer")},
                       {"cleared", Value(5)}}));
  EXPECT_TRUE(log.lines.empty());
  EXPECT_EQ(std::tuple(entry->GetDate(), entry->GetNumber(), entry->GetType(), entry->GetCleared()),
            std::tuple(20070315, 1, 10, 1));
  EXPECT_EQ(entry->GetAmount(), 1234.567);  // not rounded
  EXPECT_EQ(entry->GetLinkedEntry(), -1);
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
  EXPECT_EQ(std::pair(linked->GetLinkedEntry(), linked->GetLinkedAccount()), std::pair(-1, -1));
  EXPECT_EQ(linked->GetLinkedExchangedAmount(), -60.25);
  linked->SetTaxDeductible(true);
  linked->SetVoid(false);
  EXPECT_EQ(linked->asDictionary().find("entryFlags")->intValue(), 1 | 64 | 8 | 16 | 32 | 512);

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
}

TEST(AccountEntry, LineItemsListAndTotals) {
  TARNAccountEntry entry;
  entry.SetAmount(-100.0);
  auto rent = LineItem::initWithCategory(1, "Rent", "", -80.0, -70.0);
  auto power = LineItem::initWithCategory(2, "Power", "", -10.125, 0.0);
  entry.addSplitLineItem(nullptr);
  entry.addSplitLineItem(rent);
  entry.insertSplitLineItem(power, 0);
  entry.insertSplitLineItem(power, 3);   // beyond the end
  entry.insertSplitLineItem(power, -1);  // negative
  entry.insertSplitLineItem(nullptr, 0);
  ASSERT_EQ(entry.splitLineItems(), (TARNAccountEntry::LineItems{power, rent}));
  entry.insertSplitLineItem(power, 2);           // at the end is allowed
  EXPECT_DOUBLE_EQ(entry.GetAmount(), -100.25);  // exchanged amounts not summed

  entry.removeSplitLineItem(power);  // every occurrence
  entry.removeSplitLineItemAtIndex(1);
  entry.removeSplitLineItemAtIndex(-1);
  ASSERT_EQ(entry.splitLineItems().size(), 1u);
  entry.removeSplitLineItem(entry.splitLineItems()[0]);  // a reference into the list itself
  EXPECT_EQ(entry.GetAmount(), -100.0);
  entry.addSplitLineItemWithCategory(3, "Gift", "Aunt", 25.5);
  EXPECT_EQ(entry.splitLineItems()[0]->exchangedAmount(), 25.5);
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
  LogCapture quiet;
  auto schedule = TARNAccountSchedule::initWithDictionary(original->asDictionary());
  auto plain = TARNAccountEntry::entryWithEntry(schedule.get());
  const TARNAccountEntry& plainEntry = *plain;
  EXPECT_EQ(typeid(plainEntry), typeid(TARNAccountEntry));
  EXPECT_EQ(plain->asDictionary(), original->asDictionary());

  // Nothing to copy from: an entry that was never initialised.
  auto blank = TARNAccountEntry::initWithEntry(nullptr);
  EXPECT_EQ(blank->GetNumber() | blank->GetCheckNumber() | blank->GetLinkedAccount(), 0);
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
#define BOTH(name) \
  { #name, &TARNAccountEntry::name##IsGreaterThan, &TARNAccountEntry::name##IsGreaterThan_Reversed }
const struct {
  const char* name;
  Comparison forward, reversed;
} kComparisons[] = {BOTH(Account),
                    BOTH(CheckNumber),
                    BOTH(Date),
                    BOTH(Description),
                    BOTH(ToFrom),
                    BOTH(Amount),
                    BOTH(Balance),
                    BOTH(Number),
                    BOTH(Cleared),
                    BOTH(DatePrimaryCheckSecondary),
                    BOTH(TypePrimaryDateSecondary),
                    BOTH(CategoryPrimaryDateSecondary)};
#undef BOTH

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
  a.SetDescription("rent");
  b.SetDescription("Rent");
  EXPECT_EQ(a.DescriptionIsGreaterThan(b), 1);  // equal ignoring case: the number

  // Types resolve in the receiver's account ("ATM" < "automatic draft"); unknown is "".
  a.SetType(1);
  b.SetType(2);
  b.SetAccount(&savings);
  EXPECT_EQ(a.TypePrimaryDateSecondaryIsGreaterThan(b), 1);
  b.SetType(99);
  EXPECT_EQ(a.TypePrimaryDateSecondaryIsGreaterThan(b), 1);
  // Categories by full name: "Auto:Fuel" < "Books".
  a.SetCategory(11);
  b.SetCategory(12);
  EXPECT_EQ(a.CategoryPrimaryDateSecondaryIsGreaterThan(b), -1);

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

TEST(AccountEntry, SyncToEntrySwapsAmountsOnlyBetweenDistinctCurrencyObjects) {
  const auto dollar = std::make_shared<PFCurrency>();
  // An equal copy is still another currency object.
  for (const auto& otherCurrency : {dollar, std::make_shared<PFCurrency>(*dollar)}) {
    const bool same = otherCurrency == dollar;
    SCOPED_TRACE(same);
    TARNAccount from, to;
    from.SetName("Checking");
    from.SetNumber(1);
    from.setCurrency(dollar);
    to.setCurrency(otherCurrency);
    auto source = fullEntry();  // a void debit
    source->SetAccount(&from);
    if (!same) source->SetIsDeposit(true);
    source->SetVoid(same);
    TARNAccountEntry mirror;
    mirror.SetAccount(&to);
    same ? mirror.SetIsDebit(true) : mirror.SetIsDeposit(true);
    mirror.SetVoid(!same);
    mirror.SetLinkedExchangedAmount(5.0);
    mirror.addSplitLineItemWithCategory(9, "stale", "", 1.0);

    source->syncToEntry(mirror);
    // Linked, on the opposite side of the source, void as the source.
    EXPECT_EQ(std::tuple(mirror.IsLinked(), mirror.IsDeposit(), mirror.IsDebit(), mirror.GetVoid()),
              std::tuple(true, same, !same, same));
    EXPECT_EQ(std::pair(mirror.GetLinkedEntry(), mirror.GetLinkedAccount()), std::pair(42, 1));
    EXPECT_EQ(mirror.GetToFrom(), "Checking");
    EXPECT_EQ(mirror.GetDescription(), "Groceries and fuel");
    // Amounts as they stand (the caller chooses the signs); exchanged left alone if same.
    EXPECT_EQ(mirror.asDictionary().find("amount")->doubleValue(), same ? -75.5 : -60.25);
    EXPECT_EQ(mirror.GetLinkedExchangedAmount(), same ? 5.0 : -75.5);
    ASSERT_EQ(mirror.splitLineItems().size(), 2u);
    EXPECT_NE(mirror.splitLineItems()[1], source->splitLineItems()[1]);
    EXPECT_EQ(
        *mirror.splitLineItems()[1],
        *LineItem::initWithCategory(6, "Fuel", "Pump", same ? -25.5 : -20.0, same ? -20.0 : -25.5));
  }
}

TEST(AccountEntry, SpeakableStringReadsTheEntryAloud) {
  const std::string savedFormat = UserDefault("NSShortDateFormatString");
  SetUserDefault("NSShortDateFormatString", "%m/%d/%y");
  TARNAccount account;
  account.types() = {makeType(4, "Check")};
  auto autoCategory = makeCategory(10, "Auto");
  autoCategory->addChild(makeCategory(17, "Fuel"));
  account.categories().push_back(autoCategory->allChildren()[0]);
  auto entry = fullEntry();
  entry->SetAccount(&account);
  EXPECT_EQ(entry->asSpeakableString(),
            "03/15/07.  Debit in the Amount of:  -75.50 .  Type:  Check .  Category:  Fuel .  "
            "Check Number:  1001 .  To:  Corner Store .  Description:  Groceries and fuel .  "
            "Resolved .  ");

  // Unknown type and category, no check or description, a deposit, unresolved.
  entry->SetIsDeposit(true);
  entry->SetAmount(250.0);
  entry->SetType(5);
  entry->SetCategory(-1);
  entry->SetIsCheck(false);
  entry->SetDescription("");
  entry->SetCleared(0);
  EXPECT_EQ(
      entry->asSpeakableString(),
      "03/15/07.  Deposit in the Amount of:  250.00 .  From:  Corner Store .  Unresolved .  ");
  // Neither debit nor deposit: no amount and no party sentence.
  TARNAccountEntry neither;
  neither.SetDate(20070315);
  neither.SetToFrom("Shell");
  EXPECT_EQ(neither.asSpeakableString(), "03/15/07.  Unresolved .  ");
  SetUserDefault("NSShortDateFormatString", savedFormat);
}

}  // namespace
}  // namespace tarn
