#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "account_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/account/account_resources.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/plist_file.h"
#include "tarn/platform/user_defaults.h"
#include "tarn/reports/account_summary.h"

namespace tarn {
namespace {

using namespace testing;
using Lines = std::vector<std::string>;
using V = std::vector<std::int32_t>;

const std::string kInit = " in -[TARNAccount initWithDictionary:]";
const auto Lacks = [](const std::string& what) { return "Account does not have " + what + kInit; };
const auto No = [](const std::string& key) { return "No " + key + " defined for TARNAccount."; };
const auto WrongFor = [](std::string key) { return key + " is in wrong format for TARNAccount."; };
const auto WrongIn = [](std::string what) { return what + " is in the wrong format" + kInit; };

Lines Words(const std::string& text, char separator = ' ') {
  return Split(text, separator);
}

// Every "missing" line of the loader, in the order the keys are read.
Lines MissingLines() {
  Lines lines;
  auto lacks = [&](const std::string& what) {
    for (const std::string& each : Words(what, '|')) lines.push_back(Lacks(each));
  };
  auto no = [&](const std::string& keys) {
    for (const std::string& key : Words(keys)) lines.push_back(No(key));
  };
  lacks(
      "a name|an icon|a highResolutionIcon|an identification number|a version|entries|"
      "schedules|a starting check number");
  no("defaultDebitType defaultDepositType preference_Descriptions_Style preference_ToFrom_Style "
     "preference_Descriptions_SomeSelection preference_ToFrom_SomeSelection "
     "preferredDebitDescriptions preferredDepositDescriptions preferredTos preferredFroms "
     "numberCount");
  lacks("a statementBalance|any account summaries");
  no("OFXImportZeroAmountsAsDeposits QIFImportEncoding QIFImportDateFormat");
  lines.push_back("No QIFImportDecimalSeparator defined" + kInit);
  lines.push_back("No QIFImportThousandsSeparator defined" + kInit);
  no("QIFImportZeroAmountsAsDeposits QIFImportAllCategories QIFImportSplitLineItems "
     "QIFImport_SwapOptions_ToFrom QIFImport_SwapOptions_Category "
     "QIFImport_SwapOptions_Description textImportEncoding textImportDataLayout "
     "textImportSkipFirstRow textImportDataFormat textImportDateFormat");
  lines.push_back("No textImportDecimalSeparator defined in TARNAccount:initWithDictionary");
  lines.push_back("No textImportThousandsSeparator defined in TARNAccount:initWithDictionary");
  no("textImportZeroAmountsAsDeposits textExport_ExportType textExport_Encoding");
  return lines;
}

TEST(AccountDictionary, EmptyOrAbsentDictionaryKeepsDefaultsAndLogsEachMissingKeyInOrder) {
  PinnedClock clock;
  const plist::Value defaults = TARNAccount().asDictionary();
  {
    CapturedLog log;
    auto account = TARNAccount::initWithDictionary(plist::Value(plist::Dictionary{}), nullptr);
    EXPECT_EQ(log.lines(), MissingLines());
    EXPECT_EQ(account->asDictionary(), defaults);
  }
  for (const plist::Value& notADictionary : {plist::Value(), plist::Value("account")}) {
    CapturedLog log;
    auto account = TARNAccount::initWithDictionary(notADictionary, nullptr);
    EXPECT_EQ(log.lines(),
              Lines{"Invalid theDictionary supplied to -[TARNAccount initWithDictionary:]"});
    EXPECT_EQ(account->asDictionary(), defaults);
  }
}

struct KeyCase {
  std::string key;
  std::string takes;  // the kinds it reads: number, string, data, Dictionary, array
  std::string wrong;  // empty when a wrong kind is passed over silently
};

bool Takes(const std::string& kinds, const plist::Value& value) {
  auto has = [&](char kind) { return kinds.find(kind) != std::string::npos; };
  return (value.isNumber() && has('n')) || (value.isString() && has('s')) ||
         (value.isData() && has('d')) || (value.isDictionary() && has('D')) ||
         (value.isArray() && has('a'));
}

// Every key of the file but the filter data (which takes anything), the kinds
// it takes, and the line a wrong kind logs.
std::vector<KeyCase> AllKeys() {
  const std::string textIn = " is in the wrong format in TARNAccount:initWithDictionary";
  std::vector<KeyCase> keys = {
      {"name", "s", WrongIn("Account name")},
      {"currency", "D", WrongIn("Currency")},
      {"icon", "d", WrongIn("Account icon")},
      {"highResolutionIcon", "d", WrongIn("Account highResolutionIcon")},
      {"password", "s", WrongIn("Account password")},
      {"types", "a", "types are in the wrong format for TARNAccount."},
      {"inactiveTypes", "a", "inactiveTypes are in the wrong format for TARNAccount."},
      {"entries", "a", "Account entries are in the wrong format" + kInit},
      {"schedules", "a", "Account schedules are in the wrong format" + kInit},
      {"QIFImportDecimalSeparator", "s", WrongIn("QIFImportDecimalSeparator")},
      {"QIFImportThousandsSeparator", "s", WrongIn("QIFImportThousandsSeparator")},
      {"textImportDecimalSeparator", "s", "textImportDecimalSeparator" + textIn},
      {"textImportThousandsSeparator", "s", "textImportThousandsSeparator" + textIn},
      {"textImportDataLayout", "s", WrongFor("textImportDataLayout")}};
  for (const std::string& key :
       Words("preferredDebitDescriptions preferredDepositDescriptions preferredTos preferredFroms"))
    keys.push_back({key, "a", WrongFor(key)});
  for (const std::string& key :
       Words("defaultDebitType defaultDepositType preference_Descriptions_Style "
             "preference_ToFrom_Style preference_Descriptions_SomeSelection "
             "preference_ToFrom_SomeSelection numberCount OFXImportZeroAmountsAsDeposits "
             "OFXImport_SwapOptions_Name OFXImport_SwapOptions_Memo OFXImport_SwapOptions_Payee "
             "OFXImport_SwapOptions_TransactionType OFXImport_SwapOptions_ReferenceNumber "
             "QIFImportEncoding QIFImportDateFormat QIFImportZeroAmountsAsDeposits "
             "QIFImportAllCategories QIFImportSplitLineItems QIFImport_SwapOptions_ToFrom "
             "QIFImport_SwapOptions_Category QIFImport_SwapOptions_Description textImportEncoding "
             "textImportSkipFirstRow textImportDataFormat textImportDateFormat "
             "textImportZeroAmountsAsDeposits textExport_ExportType textExport_Encoding "
             "lastFromAccount lastToAccount"))
    keys.push_back({key, "n", WrongFor(key)});
  for (const std::string& key : Words("number version startingCheckNumber startingBalance "
                                      "statementBalance selectedAccountSummary"))
    keys.push_back({key, "ns", ""});
  for (const char* view : {"entry", "reconcile"}) {
    for (const std::string& key : Words("FilterType ResolvedFilterType TaxDeductibleFilterType "
                                        "DateFilterType DateFilterStartDate DateFilterEndDate"))
      keys.push_back({view + key, "ns", ""});
  }
  for (const std::string& key : Words("accountSummaries smartFolders folders"))
    keys.push_back({key, "a", ""});
  return keys;
}

// A saved default account plus the user's own lists a new account leaves out,
// so that loading it logs nothing.
plist::Value CompleteDefaults() {
  TARNAccount account;
  account.SetPreferredDebitDescriptions(TARNAccount::Strings{"a"});
  account.SetPreferredDepositDescriptions(TARNAccount::Strings{});
  account.SetPreferredTos(TARNAccount::Strings{"b", "c"});
  account.SetPreferredFroms(TARNAccount::Strings{"d"});
  account.SetTextImportDataLayout(std::vector<std::int32_t>{1, 2});
  return account.asDictionary();
}

// What an account saves when the key is missing: its default, all else as loaded.
plist::Value WithoutKey(const plist::Value& dictionary, const std::string& key) {
  plist::Value without = dictionary;
  without.mutableDictionary().erase(key);
  CapturedLog quiet;
  return TARNAccount::initWithDictionary(without, nullptr)->asDictionary();
}

TEST(AccountDictionary, EveryKeyHoldingEveryWrongKindLogsItsLineAndKeepsTheDefault) {
  PinnedClock clock;
  const plist::Value defaults = CompleteDefaults();
  {
    CapturedLog log;
    EXPECT_EQ(TARNAccount::initWithDictionary(defaults, nullptr)->asDictionary(), defaults);
    EXPECT_TRUE(log.lines().empty());
  }
  const plist::Value kinds[] = {plist::Value(true),
                                plist::Value(7),
                                plist::Value(2.5),
                                plist::Value("12"),
                                plist::Value(plist::Date{1000.0}),
                                plist::Value(plist::Data{1, 2, 3}),
                                plist::Value(plist::Array{}),
                                plist::Value(plist::Array{plist::Value(1)}),
                                plist::Value(plist::Dictionary{{"code", plist::Value(3)}})};
  int cases = 0;
  for (const KeyCase& key : AllKeys()) {
    for (const plist::Value& value : kinds) {
      if (Takes(key.takes, value)) continue;
      ++cases;
      plist::Value dictionary = defaults;
      dictionary.set(key.key, value);
      CapturedLog log;
      auto account = TARNAccount::initWithDictionary(dictionary, nullptr);
      EXPECT_EQ(log.lines(), key.wrong.empty() ? Lines{} : Lines{key.wrong}) << key.key;
      EXPECT_EQ(account->asDictionary(), WithoutKey(defaults, key.key)) << key.key;
    }
  }
  EXPECT_GT(cases, 300);
}

TEST(AccountDictionary, ArraysOfWrongElements) {
  PinnedClock clock;
  const plist::Value defaults = CompleteDefaults();
  CapturedLog log;
  auto load = [&](const std::string& key,
                  plist::Array value = {plist::Value(1), plist::Value("x")}) {
    plist::Value dictionary = defaults;
    dictionary.set(key, plist::Value(std::move(value)));
    log.clear();
    return TARNAccount::initWithDictionary(dictionary, nullptr);
  };
  for (const std::string& key : Words(
           "preferredDebitDescriptions preferredDepositDescriptions preferredTos preferredFroms")) {
    auto account = load(key);
    EXPECT_EQ(log.lines(), Lines{WrongFor(key)});
    EXPECT_EQ(account->asDictionary(), WithoutKey(defaults, key));
  }
  // Entries and schedules log each element that is no dictionary.
  EXPECT_TRUE(load("entries")->GetEntries().empty());
  EXPECT_EQ(log.count("Invalid theValue encountered in -[TARNAccount InitEntries]"), 2u);
  EXPECT_TRUE(load("schedules")->GetSchedules().empty());
  EXPECT_EQ(log.count("Invalid theDictionary encountered in TARNAccount:InitSchedules"), 2u);
  // Lists of records drop silently what cannot be a record; a list given
  // replaces the defaults, an empty summary list does not.
  EXPECT_TRUE(load("types")->types().empty());
  EXPECT_TRUE(log.lines().empty());
  EXPECT_TRUE(load("inactiveTypes")->inactiveTypes().empty());
  EXPECT_TRUE(load("smartFolders")->smartFolders().empty());
  EXPECT_TRUE(load("folders")->folders().empty());
  auto account = load("accountSummaries");
  EXPECT_TRUE(account->accountSummaries().empty());
  ASSERT_NE(account->selectedAccountSummary(), nullptr);
  EXPECT_EQ(account->selectedAccountSummary()->name(), " Custom...");
  EXPECT_EQ(account->asDictionary().find("selectedAccountSummary")->intValue(), 0);
  EXPECT_EQ(load("accountSummaries", {})->accountSummaries().size(), 12u);
}

TEST(AccountDictionary, LooseNumbersPasswordAndTheLastToAccountFlag) {
  PinnedClock clock;
  CapturedLog log;
  plist::Value dictionary(plist::Dictionary{{"number", "12abc"},
                                            {"startingCheckNumber", " -40"},
                                            {"startingBalance", "150.25 dollars"},
                                            {"entryDateFilterType", "61"},
                                            {"version", plist::Array{}},
                                            {"password", ""}});
  auto account = TARNAccount::initWithDictionary(dictionary, nullptr);
  EXPECT_EQ(account->GetNumber(), 12);
  EXPECT_EQ(account->GetStartingCheckNumber(), -40);
  EXPECT_DOUBLE_EQ(account->GetStartingBalance(), 150.25);
  EXPECT_EQ(account->entryDateFilterType(), 61);
  EXPECT_EQ(account->GetVersion(), 8);
  EXPECT_TRUE(account->IsAuthenticated());  // an empty stored password signs in
  dictionary.set("password", "secret");
  EXPECT_FALSE(TARNAccount::initWithDictionary(dictionary, nullptr)->IsAuthenticated());

  // "lastToAccount" is stored as a flag of its low byte; "lastFromAccount" whole.
  for (const auto& [stored, readBack] : {std::pair{3, 1}, {256, 0}, {-1, 1}, {0, 0}, {519, 1}}) {
    TARNAccount saved;
    saved.setLastToAccount(stored);
    saved.setLastFromAccount(stored);
    auto reloaded = TARNAccount::initWithDictionary(saved.asDictionary(), nullptr);
    EXPECT_EQ(reloaded->lastToAccount(), readBack) << stored;
    EXPECT_EQ(reloaded->lastFromAccount(), stored);
  }
}

TEST(AccountDictionary, CurrenciesAreSharedThroughTheController) {
  PinnedClock clock;
  CapturedLog log;
  auto currency = [](const char* code, const char* name, double rate) {
    return PFCurrency::initWithCode(code, name, "$", true, ",", ".", rate, 20240101);
  };
  auto hostDefault = currency("CAD", "Canadian Dollar", 0.7);
  auto euro = currency("EUR", "Euro", 1.1);
  InMemoryAccountsController controller(hostDefault);
  controller.currencies().push_back(euro);
  // A known code takes the host's currency, whatever else is stored.
  plist::Value dictionary(
      plist::Dictionary{{"currency", currency("EUR", "Other", 9.0)->asDictionary()}});
  EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, &controller)->currency(), euro);
  // A new one joins the host's list, once.
  auto pound = currency("GBP", "Pound", 1.3);
  dictionary.set("currency", pound->asDictionary());
  auto account = TARNAccount::initWithDictionary(dictionary, &controller);
  ASSERT_EQ(controller.currencies().size(), 2u);
  EXPECT_EQ(account->currency(), controller.currencies().back());
  EXPECT_EQ(account->currency()->asDictionary(), pound->asDictionary());
  EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, &controller)->currency(),
            controller.currencies().back());
  EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, nullptr)->currency()->code(), "GBP");
  dictionary.set("currency", "EUR");
  EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, &controller)->currency(), hostDefault);
}

TEST(AccountDictionary, TypesSummariesAndLayout) {
  PinnedClock clock;
  auto type = [](const char* name, int number, bool deposit) {
    return MakeType(name, number, deposit)->asDictionary();
  };
  auto summary = [](const char* name) {
    TARNAccountSummary made;
    made.setName(name);
    return made.optionsAsDictionary();
  };
  plist::Value dictionary(plist::Dictionary{
      {"types",
       plist::Array{type("zeta", 1, false), type("Alpha", 2, true), type("beta", 3, false)}},
      {"inactiveTypes", plist::Array{type("old", 9, false), type("Aardvark", 8, false)}},
      {"defaultDebitType", 9},
      {"defaultDepositType", 2},
      {"accountSummaries", plist::Array{summary("b"), summary("a")}},
      {"selectedAccountSummary", 1},
      {"textImportDataLayout", "3,1,x,-2"}});
  CapturedLog log;
  auto account = TARNAccount::initWithDictionary(dictionary, nullptr);
  Lines names;
  for (const auto& each : account->types()) names.push_back(each->GetName());
  EXPECT_EQ(names, (Lines{"Alpha", "beta", "zeta"}));
  EXPECT_EQ(account->inactiveTypes()[0]->GetName(), "old");  // appended, not sorted
  EXPECT_EQ(account->defaultDebitType()->GetName(), "old");
  EXPECT_EQ(account->defaultDepositType()->GetName(), "Alpha");
  // Summaries keep the stored order; the selection is an index into it.
  EXPECT_EQ(account->accountSummaries()[0]->name(), "b");
  EXPECT_EQ(account->selectedAccountSummary()->name(), "a");
  EXPECT_EQ(account->asDictionary().find("textImportDataLayout")->stringValue(), "3,1,0,-2");
  // An index equal to the count, or negative, leaves the first default selected.
  for (int index : {2, -1}) {
    dictionary.set("selectedAccountSummary", index);
    account = TARNAccount::initWithDictionary(dictionary, nullptr);
    EXPECT_EQ(account->selectedAccountSummary()->name(), " Custom...") << index;
    EXPECT_EQ(account->asDictionary().find("selectedAccountSummary")->intValue(), 0);
  }
  dictionary.set("defaultDebitType", -1);  // names no type
  EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, nullptr)->defaultDebitType(), nullptr);
}

TEST(AccountDictionary, UpgradeThroughTheAccount) {
  plist::Value nil(plist::Dictionary{{"number", plist::Value(4)}});
  TARNAccount::UpdateAccountDictionaryFromNil(nil);
  EXPECT_EQ(nil, plist::Value(plist::Dictionary{{"number", -1}, {"version", 8}}));
  plist::Value entry(plist::Dictionary{{"number", 5}, {"isDebit", true}, {"amount", -1.234}});
  plist::Value old(plist::Dictionary{{"version", 1}, {"entries", plist::Array{entry, entry}}});
  CapturedLog log;  // the version-2 step reports the old preferences it lacks
  ASSERT_EQ(TARNAccount::UpdateAccountDictionary(old), &old);
  auto account = TARNAccount::initWithDictionary(old, nullptr);
  EXPECT_EQ(Numbers(account->GetEntries()), (std::vector<std::int32_t>{5, 6}));
  EXPECT_DOUBLE_EQ(account->GetEntries()[0]->GetAmount(), -1.23);
}

struct Condition {
  int field, logic, qualifier;
  plist::Value data;
  bool operator==(const Condition&) const = default;
};

std::vector<Condition> Conditions(const TARNFilter& filter) {
  std::vector<Condition> out;
  for (const auto& group : filter.conditionGroups()) {
    for (const auto& each : group->conditions())
      out.push_back({each->category(), each->logic(), each->qualifier(), each->data()});
  }
  return out;
}

TEST(AccountDefaults, NewAccount) {
  PinnedClock clock;
  TARNAccount account;
  EXPECT_EQ(account.textExport_Encoding(), static_cast<std::int32_t>(DefaultCStringEncoding()));
  EXPECT_EQ(account.GetQIFImportDecimalSeparator(), UserDefault("NSDecimalSeparator"));
  EXPECT_EQ(account.GetTextImportThousandsSeparator(), UserDefault("NSThousandsSeparator"));
  EXPECT_EQ(account.entryDateFilterStartDate(), PinnedClock::kToday);
  EXPECT_EQ(account.currency()->code(), "USD");
  EXPECT_EQ(account.currency()->lastUpdate(), PinnedClock::kToday);

  // Thirteen types sorted by name, "Transfer" twice (out and in).
  ASSERT_EQ(account.types().size(), 13u);
  for (std::size_t i = 1; i < account.types().size(); ++i)
    EXPECT_LE(account.types()[i - 1]->NameIsGreaterThan(*account.types()[i]), 0);
  EXPECT_EQ(account.accountEntryTypeForNumber(12)->GetName(), "Transfer");
  EXPECT_TRUE(account.accountEntryTypeForNumber(12)->GetIsDeposit());

  // Twelve summaries sorted by name, " Custom..." first and selected.
  const auto& summaries = account.accountSummaries();
  ASSERT_EQ(summaries.size(), 12u);
  EXPECT_EQ(account.selectedAccountSummary(), summaries.front());
  EXPECT_EQ(summaries[0]->name(), " Custom...");
  EXPECT_EQ(summaries[4]->name(), "Expenses, Month To Date");
  EXPECT_FALSE(summaries[4]->showDeposits());
  EXPECT_EQ(summaries[10]->name(), "Tax-Deductible, Last Year");
  EXPECT_EQ(summaries[10]->dateRangeStyle(), 7);

  // Two smart folders: during this year and during last year.
  ASSERT_EQ(account.smartFolders().size(), 2u);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(account.smartFolders()[i]->name(), i ? "Last Year" : "This Year");
    EXPECT_EQ(Conditions(*account.smartFolders()[i]),
              (std::vector<Condition>{{1, 1, 63 + i, plist::Value(plist::Array{})}}));
  }
  // The default icons are the shipped TIFF images.
  ASSERT_TRUE(account.icon().has_value() && account.highResolutionIcon().has_value());
  EXPECT_EQ(std::string(account.icon()->begin(), account.icon()->begin() + 4),
            std::string("II*\0", 4));
  EXPECT_GT(account.highResolutionIcon()->size(), account.icon()->size());
}

TEST(AccountDefaults, MissingIconResourcesLeaveNoIcon) {
  PinnedClock clock;
  SetResourceDirectory("/nonexistent/tarn-resources");
  {
    CapturedLog log;
    TARNAccount first, second;
    EXPECT_FALSE(first.icon().has_value());
    EXPECT_FALSE(second.highResolutionIcon().has_value());
    EXPECT_EQ(log.lines().size(), 2u);  // one line per missing image, not per account
    const plist::Value saved = first.asDictionary();
    EXPECT_EQ(saved.find("icon"), nullptr);
    EXPECT_EQ(saved.find("highResolutionIcon"), nullptr);
  }
  SetResourceDirectory(std::nullopt);
  EXPECT_TRUE(TARNAccount().icon().has_value());
}

// An account that uses every list and record of the format (the single
// numbers and texts are changed one by one below).
std::shared_ptr<TARNAccount> RichAccount(TARNAccountsController* controller) {
  auto account = std::make_shared<TARNAccount>();
  TARNAccount& a = *account;
  a.setAccountsController(controller);
  a.setIcon(TARNAccount::Image{'I', 'I', '*', 0, 9, 9});
  a.setCurrency(PFCurrency::initWithCode("EUR", "Euro", "€", false, ".", ",", 1.08, 20240501));

  auto check = AddCheck(a, 1, 1001, 20240101, -45.5);
  check->SetDescription("Groceries");
  check->SetType(TARNAccountEntryType::kTypeCheck);
  check->SetToFrom("Market");
  check->SetNotes("weekly");
  check->SetCleared(1);
  auto split = Add(a, 2, 20240203, -120.0, "Split bill");
  split->addSplitLineItemWithCategory(3, "food", "Shop", -70.0);
  split->addSplitLineItemWithCategory(4, "fuel", "Shop", -50.0);
  split->SetTaxDeductible(true);
  auto transfer = Add(a, 3, 20240310, 300.0, "From savings");
  transfer->SetIsLinked(true);
  transfer->SetLinkedAccount(7);
  transfer->SetLinkedEntry(55);
  transfer->SetLinkedExchangedAmount(280.0);
  Add(a, 4, 20240311, -9.99, "Void")->SetVoid(true);

  auto schedule = std::make_shared<TARNAccountSchedule>();
  schedule->SetNumber(1);
  schedule->SetDate(20240105);
  schedule->SetAmount(-800.0);
  schedule->SetIsDebit(true);
  schedule->SetDescription("Rent");
  schedule->SetRepeatIntervalType(3);
  schedule->SetRepeatUntilType(kRepeatUntilDate);
  schedule->SetRepeatUntil(20251231);
  schedule->AddCommittedDate(20240105);
  a.SetSchedules({schedule});

  a.inactiveTypes().push_back(MakeType("Telegraph", 40, false));
  a.setDefaultDebitType(a.accountEntryTypeForNumber(4));
  a.setDefaultDepositType(a.accountEntryTypeForNumber(10));
  a.SetPreferredDebitDescriptions(TARNAccount::Strings{"Rent", "Groceries"});
  a.SetPreferredFroms(TARNAccount::Strings{});

  auto summary = std::make_shared<TARNAccountSummary>();
  summary->setName("Fuel");
  a.addAccountSummary(summary);
  a.selectAccountSummary(summary);

  a.setReconcileFilterData(plist::Value(plist::Array{plist::Value(3)}));

  a.SetTextImportDataLayout(std::vector<std::int32_t>{2, 0, 5});

  auto smart = std::make_shared<TARNFilter>();
  smart->setName("Big");
  auto group = std::make_shared<TARNFilterConditionGroup>();
  group->addConditionWithCategory(kFieldAmount, 1, kAmountIsLessThan, plist::Value(-100.0));
  smart->addConditionGroup(group);
  a.addSmartFolder(smart);

  auto folder = std::make_shared<TARNAccountFolder>();
  folder->setName("2023");
  a.addFolder(folder);
  a.setFolder(folder);
  Add(a, 5, 20231201, -12.0, "Old");
  Add(a, 6, 20231202, 30.0, "Older");
  a.setFolder(nullptr);
  return account;
}

TEST(AccountRoundTrip, SavedDictionaryLoadsBackToTheSameDictionary) {
  PinnedClock clock;
  CapturedLog log;
  InMemoryAccountsController controller(
      PFCurrency::initWithCode("USD", "US Dollar", "$", true, ",", ".", 1.0, PinnedClock::kToday));
  const plist::Value plain = TARNAccount().asDictionary();
  EXPECT_EQ(TARNAccount::initWithDictionary(plain, nullptr)->asDictionary(), plain);
  EXPECT_EQ(TARNAccount::initWithDictionary(plain, &controller)->asDictionary(), plain);
  // The stored US dollar was not among the host's currencies: it joined them.
  ASSERT_EQ(controller.currencies().size(), 1u);
  EXPECT_EQ(controller.currencies()[0]->code(), "USD");

  const plist::Value saved = RichAccount(&controller)->asDictionary();
  auto reloaded = TARNAccount::initWithDictionary(saved, &controller);
  EXPECT_EQ(reloaded->asDictionary(), saved);
  ASSERT_EQ(reloaded->GetEntries().size(), 4u);
  EXPECT_EQ(reloaded->GetEntries()[1]->splitLineItems().size(), 2u);
  EXPECT_EQ(reloaded->GetEntries()[0]->GetAccount(), reloaded.get());
  ASSERT_EQ(reloaded->folders().size(), 1u);
  EXPECT_EQ(reloaded->folders()[0]->entries().size(), 2u);
  EXPECT_EQ(reloaded->folders()[0]->entries()[0]->GetAccount(), reloaded.get());
  EXPECT_EQ(reloaded->GetSchedules()[0]->GetAccount(), reloaded.get());
  EXPECT_EQ(reloaded->selectedAccountSummary()->name(), "Fuel");
  EXPECT_EQ(reloaded->smartFolders().size(), 3u);
  EXPECT_EQ(reloaded->currency()->code(), "EUR");
  EXPECT_EQ(controller.currencies().size(), 2u);  // the euro joined the host's list
  for (const std::string& bytes : {plist::ToBinary(saved), plist::ToXml(saved)})
    EXPECT_EQ(TARNAccount::initWithDictionary(plist::Parse(bytes), &controller)->asDictionary(),
              saved);
}

// The same kind of value as `value`, but another one.
plist::Value Changed(const plist::Value& value) {
  if (value.isBoolean()) return !value.boolValue();
  if (value.isReal()) return value.doubleValue() + 1.5;
  if (value.isInteger()) return value.longValue() + 1;
  return value.stringValue() + "x";
}

TEST(AccountRoundTrip, EveryNumberAndTextOfAnAccountOrSummaryKeepsAChangedValue) {
  PinnedClock clock;
  const plist::Value account = TARNAccount().asDictionary();
  const plist::Value summary = TARNAccountSummary().optionsAsDictionary();
  int changed = 0;
  for (const plist::Value* defaults : {&account, &summary}) {
    for (const auto& [key, value] : defaults->dictionaryValue()) {
      if (!value.isNumber() && !value.isString()) continue;
      ++changed;
      plist::Value dictionary = *defaults;
      dictionary.set(key, Changed(value));
      CapturedLog quiet;
      EXPECT_EQ(defaults == &account
                    ? TARNAccount::initWithDictionary(dictionary, nullptr)->asDictionary()
                    : TARNAccountSummary::initWithOptionsDictionary(dictionary, {})
                          ->optionsAsDictionary(),
                dictionary)
          << key;
    }
  }
  EXPECT_EQ(changed, 75);
}

TEST(AccountSummaryOptions, KindsMissingKeysAndNames) {
  PinnedClock clock;
  TARNAccountSummary summary;
  EXPECT_EQ(summary.startDate(), PinnedClock::kToday);
  const plist::Value options = summary.optionsAsDictionary();
  EXPECT_EQ(options.dictionaryValue().size(), 19u);
  EXPECT_TRUE(options.find("showDebits")->isBoolean());
  EXPECT_TRUE(options.find("showChecks")->isInteger());
  // Missing keys and keys of another kind keep what the summary had.
  summary.setName("Fuel, this year");
  summary.setShowChecks(1);
  summary.setOptionsFromDictionary(plist::Value(plist::Dictionary{
      {"name", plist::Value(4)}, {"showChecks", plist::Value("0")}, {"filterType", 10}}));
  summary.setName(std::nullopt);
  EXPECT_EQ(summary.name(), "Fuel, this year");
  EXPECT_EQ(summary.showChecks(), 1);
  EXPECT_EQ(summary.filterType(), 10);

  TARNAccountSummary other;
  other.setName("FUEL, THIS YEAR");
  EXPECT_EQ(summary.NameIsGreaterThan(other), 0);  // case does not count
  other.setName("expenses");
  EXPECT_EQ(summary.NameIsGreaterThan(other), 1);
  EXPECT_EQ(summary.NameIsGreaterThan_Reversed(other), -1);
}

TEST(AccountFolder, NameEntriesTotalAndDictionary) {
  TARNAccountFolder folder;
  folder.setName("Taxes");
  folder.setName(std::nullopt);
  EXPECT_EQ(folder.name(), "Untitled");
  folder.setEntries({MakeEntry(1, 20240101, -10.25), MakeEntry(2, 20240102, 4.0),
                     MakeEntry(3, 20240103, -100.0)});
  folder.entries()[2]->SetVoid(true);
  folder.setName("Taxes");
  auto copy = TARNAccountFolder::initWithDictionary(folder.asDictionary());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->asDictionary(), folder.asDictionary());
  EXPECT_EQ(Numbers(copy->entries()), (V{1, 2, 3}));
  EXPECT_DOUBLE_EQ(copy->total(), -6.25);
  EXPECT_EQ(TARNAccountFolder::initWithDictionary(plist::Value(3)), nullptr);

  // Entry problems are told in the account loader's words.
  CapturedLog log;
  plist::Value bad(plist::Dictionary{{"entries", plist::Value("x")}});
  TARNAccountFolder::initWithDictionary(bad);
  bad.set("entries", plist::Array{plist::Value(1), MakeEntry(9, 20240101, 1.0)->asDictionary()});
  EXPECT_EQ(Numbers(TARNAccountFolder::initWithDictionary(bad)->entries()), V{9});
  EXPECT_EQ(log.lines(), (Lines{"Invalid theArray supplied to -[TARNAccount InitEntries]",
                                "Invalid theValue encountered in -[TARNAccount InitEntries]"}));
}

TEST(AccountFolders, ListsIgnoreDuplicatesAbsenteesAndBadIndexes) {
  TARNAccount account;
  account.removeAllSmartFolders();
  auto a = std::make_shared<TARNFilter>(), b = std::make_shared<TARNFilter>();
  for (const auto& each : {a, a, std::shared_ptr<TARNFilter>(), b}) account.addSmartFolder(each);
  account.removeSmartFolder(std::make_shared<TARNFilter>());
  account.removeSmartFolderAtIndex(-1);
  account.removeSmartFolderAtIndex(2);
  EXPECT_EQ(account.smartFolders(), (TARNAccount::Filters{a, b}));
  account.removeSmartFolderAtIndex(0);
  EXPECT_EQ(account.smartFolders(), TARNAccount::Filters{b});

  auto f = std::make_shared<TARNAccountFolder>(), g = std::make_shared<TARNAccountFolder>();
  for (const auto& each : {f, f, g}) account.addFolder(each);
  account.removeFolderAtIndex(5);
  account.removeFolder(std::make_shared<TARNAccountFolder>());
  EXPECT_EQ(account.folders(), (TARNAccount::Folders{f, g}));
  account.removeFolder(f);
  EXPECT_EQ(account.folders(), TARNAccount::Folders{g});
  account.setFolder(std::make_shared<TARNAccountFolder>());  // not in the list: not kept
  EXPECT_EQ(account.folder(), nullptr);

  // Entries go to the selected folder and come out of wherever they are.
  auto inRegister = Add(account, 1, 20240101, -5.0);
  account.setFolder(g);
  auto inFolder = Add(account, 2, 20240102, -6.0);
  EXPECT_EQ(Numbers(account.GetEntries()), V{1});
  EXPECT_EQ(Numbers(g->entries()), V{2});
  EXPECT_EQ(inFolder->GetAccount(), &account);
  account.RemoveEntry(inFolder);
  account.RemoveEntry(inRegister);
  EXPECT_TRUE(g->entries().empty());
  EXPECT_TRUE(account.GetEntries().empty());
  // SetFolders points the folders' entries at the account.
  auto h = std::make_shared<TARNAccountFolder>();
  h->setEntries({MakeEntry(1, 20240101, 1.0)});
  account.SetFolders({h});
  EXPECT_EQ(h->entries()[0]->GetAccount(), &account);
}

TEST(AccountViewFilters, FiltersBuiltFromTheSettings) {
  PinnedClock clock;
  TARNAccount account;
  int number = 0;
  for (DateNumber date : {20240310, 20231105, 20240101}) Add(account, ++number, date, -1.0);

  // Defaults: search anything for "", the dates of all entries, no flags.
  auto filter = account.entryFilter();
  EXPECT_EQ(filter->name(), "General");
  ASSERT_EQ(filter->conditionGroups().size(), 1u);
  EXPECT_EQ(filter->conditionGroups()[0]->logic(), 0);
  EXPECT_EQ(filter->conditionGroups()[0]->qualifier(), 1);
  EXPECT_EQ(Conditions(*filter), (std::vector<Condition>{{50, 1, 6, plist::Value("")},
                                                         {1, 1, 2, plist::Value(20231104)},
                                                         {1, 1, 0, plist::Value(20240311)}}));

  account.setReconcileFilterType(kViewSearchSplitCategory);
  account.setReconcileFilterData(plist::Value());
  account.setReconcileDateFilterType(kViewDateFirstEntryToToday);
  account.setReconcileResolvedFilterType(kViewUnresolvedOnly);
  account.setReconcileTaxDeductibleFilterType(kViewTaxDeductibleOnly);
  filter = account.reconcileFilter();
  EXPECT_EQ(filter->name(), "Split Category");
  EXPECT_EQ(Conditions(*filter), (std::vector<Condition>{{20, 1, 6, plist::Value("")},
                                                         {1, 1, 2, plist::Value(20231104)},
                                                         {1, 1, 0, plist::Value(20240616)},
                                                         {6, 1, 1, plist::Value(false)},
                                                         {7, 1, 1, plist::Value(true)}}));

  // Named periods and the custom range; types outside the tables add nothing.
  const std::pair<int, std::pair<int, int>> periods[] = {{kViewDateToday, {20240615, 20240615}},
                                                         {kViewDateYesterday, {20240614, 20240614}},
                                                         {31, {20240601, 20240630}},
                                                         {43, {20230101, 20231231}},
                                                         {51, {20240601, 20240615}},
                                                         {kViewDateCustom, {20240201, 20240229}}};
  account.setEntryDateFilterStartDate(20240201);
  account.setEntryDateFilterEndDate(20240229);
  for (const auto& [type, range] : periods) {
    account.setEntryDateFilterType(type);
    auto conditions = Conditions(*account.entryFilter());
    ASSERT_EQ(conditions.size(), 3u) << type;
    EXPECT_EQ(conditions[1].data, plist::Value(range.first - 1)) << type;
    EXPECT_EQ(conditions[2].data, plist::Value(range.second + 1)) << type;
  }
  account.setEntryDateFilterType(99);
  account.setEntryResolvedFilterType(kViewResolvedOnly);
  account.setEntryTaxDeductibleFilterType(93);
  account.setEntryFilterType(kViewSearchCheckNumber);
  account.setEntryFilterData(plist::Value("101"));
  filter = account.entryFilter();
  EXPECT_EQ(filter->name(), "Check Number");
  EXPECT_EQ(Conditions(*filter), (std::vector<Condition>{{10, 1, 6, plist::Value("101")},
                                                         {6, 1, 1, plist::Value(true)}}));
  EXPECT_TRUE(Conditions(*account.filterForViewType(3)).empty());
}

TEST(AccountViewFilters, FilteredEntriesOfTheTwoViews) {
  PinnedClock clock;
  TARNAccount account;
  for (int i = 1; i <= 6; ++i)
    Add(account, i, 20240100 + i, i % 2 ? -10.0 * i : 10.0 * i)->SetCleared(i <= 2 ? 1 : 0);
  // The default settings pass every entry.
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(Numbers(account.reconcileFilteredEntries()), (V{1, 2, 3, 4, 5, 6}));
  account.setReconcileResolvedFilterType(kViewUnresolvedOnly);
  EXPECT_EQ(Numbers(account.reconcileFilteredEntries()), (V{3, 4, 5, 6}));
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{1, 2, 3, 4, 5, 6}));
  account.setEntryDateFilterType(kViewDateCustom);
  account.setEntryDateFilterStartDate(20240102);
  account.setEntryDateFilterEndDate(20240105);
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{2, 3, 4, 5}));

  // A smart folder narrows the view; a selected folder hides it and shows its own entries.
  auto deposits = std::make_shared<TARNFilter>();
  auto group = std::make_shared<TARNFilterConditionGroup>();
  group->addConditionWithCategory(kFieldAmount, 1, kAmountIsGreaterThan, plist::Value(0.0));
  deposits->addConditionGroup(group);
  account.addSmartFolder(deposits);
  account.setSmartFolder(deposits);
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{2, 4}));
  auto folder = std::make_shared<TARNAccountFolder>();
  folder->setEntries(
      {MakeEntry(20, 20240103, -1.0), MakeEntry(21, 20240109, -2.0), MakeEntry(22, 20240104, 3.0)});
  account.SetFolders({folder});
  account.setFolder(folder);
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{20, 22}));
  account.setFolder(nullptr);
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), (V{2, 4}));
}

TEST(AccountViewFilters, AllEntriesRangeComesFromTheRegisterOnly) {
  PinnedClock clock;
  TARNAccount account;
  auto folder = std::make_shared<TARNAccountFolder>();
  folder->setEntries({MakeEntry(1, 20240101, -1.0), MakeEntry(2, PinnedClock::kToday, -2.0),
                      MakeEntry(3, 20240701, -3.0)});
  account.SetFolders({folder});
  account.setFolder(folder);
  // An empty register: the range is today alone, whatever the folder holds.
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), V{2});
  account.setFolder(nullptr);
  Add(account, 4, 20231231, -1.0);
  Add(account, 5, 20240102, -1.0);
  account.setFolder(folder);
  EXPECT_EQ(Numbers(account.entryFilteredEntries()), V{1});
}

}  // namespace
}  // namespace tarn
