#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "account_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/reports/account_summary.h"

namespace tarn {
namespace {

using namespace testing;
using Lines = std::vector<std::string>;

const std::string kInit = " in -[TARNAccount initWithDictionary:]";
const auto Lacks = [](const std::string& what) { return "Account does not have " + what + kInit; };
const auto No = [](const std::string& key) { return "No " + key + " defined for TARNAccount."; };
const auto WrongFor = [](std::string key) { return key + " is in wrong format for TARNAccount."; };
const auto WrongIn = [](std::string what) { return what + " is in the wrong format" + kInit; };

Lines Words(const std::string& text, char separator = ' ') {
  Lines words;
  std::size_t start = 0;
  for (std::size_t end; (end = text.find(separator, start)) != std::string::npos; start = end + 1)
    words.push_back(text.substr(start, end - start));
  words.push_back(text.substr(start));
  return words;
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
  CapturedLog log;
  dictionary.set("currency", "EUR");
  EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, &controller)->currency(), hostDefault);
}

TEST(AccountDictionary, TypesSummariesAndLayout) {
  PinnedClock clock;
  auto type = [](const char* name, int number, bool deposit) {
    TARNAccountEntryType made;
    made.SetName(name);
    made.SetNumber(number);
    made.SetIsDeposit(deposit);
    return made.asDictionary();
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

}  // namespace
}  // namespace tarn
