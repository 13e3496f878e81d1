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

using testing::CapturedLog;
using testing::PinnedClock;
using Lines = std::vector<std::string>;

const std::string kInit = " in -[TARNAccount initWithDictionary:]";
const auto Lacks = [](const std::string& what) { return "Account does not have " + what + kInit; };
const auto No = [](const std::string& key) { return "No " + key + " defined for TARNAccount."; };
const auto WrongFor = [](std::string key) { return key + " is in wrong format for TARNAccount."; };
const auto WrongIn = [](std::string what) { return what + " is in the wrong format" + kInit; };

// Splits at `separator` (a space by default).
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
    EXPECT_EQ(account->types().size(), 13u);
    EXPECT_EQ(account->accountSummaries().size(), 12u);
    EXPECT_EQ(account->smartFolders().size(), 2u);
  }
  for (const plist::Value& notADictionary : {plist::Value(), plist::Value("account")}) {
    CapturedLog log;
    auto account = TARNAccount::initWithDictionary(notADictionary, nullptr);
    EXPECT_EQ(log.lines(),
              Lines{"Invalid theDictionary supplied to -[TARNAccount initWithDictionary:]"});
    EXPECT_EQ(account->asDictionary(), defaults);
  }
}

enum class Accepts { Number, String, Data, Dictionary, Array, NumberOrText };

struct KeyCase {
  std::string key;
  Accepts accepts;
  std::string wrong;  // empty when a wrong kind is passed over silently
};

// Every key of the file (but the filter data, which takes anything), what kind
// it takes, and the line a wrong kind logs.
std::vector<KeyCase> AllKeys() {
  const std::string textIn = " is in the wrong format in TARNAccount:initWithDictionary";
  std::vector<KeyCase> keys = {
      {"name", Accepts::String, WrongIn("Account name")},
      {"currency", Accepts::Dictionary, WrongIn("Currency")},
      {"icon", Accepts::Data, WrongIn("Account icon")},
      {"highResolutionIcon", Accepts::Data, WrongIn("Account highResolutionIcon")},
      {"password", Accepts::String, WrongIn("Account password")},
      {"types", Accepts::Array, "types are in the wrong format for TARNAccount."},
      {"inactiveTypes", Accepts::Array, "inactiveTypes are in the wrong format for TARNAccount."},
      {"entries", Accepts::Array, "Account entries are in the wrong format" + kInit},
      {"schedules", Accepts::Array, "Account schedules are in the wrong format" + kInit},
      {"QIFImportDecimalSeparator", Accepts::String, WrongIn("QIFImportDecimalSeparator")},
      {"QIFImportThousandsSeparator", Accepts::String, WrongIn("QIFImportThousandsSeparator")},
      {"textImportDecimalSeparator", Accepts::String, "textImportDecimalSeparator" + textIn},
      {"textImportThousandsSeparator", Accepts::String, "textImportThousandsSeparator" + textIn},
      {"textImportDataLayout", Accepts::String, WrongFor("textImportDataLayout")}};
  for (const char* key : {"preferredDebitDescriptions", "preferredDepositDescriptions",
                          "preferredTos", "preferredFroms"})
    keys.push_back({key, Accepts::Array, WrongFor(key)});
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
    keys.push_back({key, Accepts::Number, WrongFor(key)});
  for (const char* key : {"number", "version", "startingCheckNumber", "startingBalance",
                          "statementBalance", "selectedAccountSummary"})
    keys.push_back({key, Accepts::NumberOrText, ""});
  for (const char* view : {"entry", "reconcile"}) {
    for (const char* key : {"FilterType", "ResolvedFilterType", "TaxDeductibleFilterType",
                            "DateFilterType", "DateFilterStartDate", "DateFilterEndDate"})
      keys.push_back({view + std::string(key), Accepts::NumberOrText, ""});
  }
  for (const char* key : {"accountSummaries", "smartFolders", "folders"})
    keys.push_back({key, Accepts::Array, ""});
  return keys;
}

bool Takes(Accepts accepts, const plist::Value& value) {
  switch (accepts) {
    case Accepts::Number:
      return value.isNumber();
    case Accepts::String:
      return value.isString();
    case Accepts::Data:
      return value.isData();
    case Accepts::Dictionary:
      return value.isDictionary();
    case Accepts::Array:
      return value.isArray();
    case Accepts::NumberOrText:
      return value.isNumber() || value.isString();
  }
  return false;
}

// A saved default account, plus the keys that a new account leaves out (the
// user's own lists), so that loading it logs nothing.
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
      if (Takes(key.accepts, value)) continue;
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
  auto load = [&](const char* key, plist::Array value = {plist::Value(1), plist::Value("x")}) {
    plist::Value dictionary = defaults;
    dictionary.set(key, plist::Value(std::move(value)));
    log.clear();
    return TARNAccount::initWithDictionary(dictionary, nullptr);
  };
  for (const char* key : {"preferredDebitDescriptions", "preferredDepositDescriptions",
                          "preferredTos", "preferredFroms"}) {
    auto account = load(key);
    EXPECT_EQ(log.lines(), Lines{WrongFor(key)});
    EXPECT_EQ(account->asDictionary(), WithoutKey(defaults, key));
  }
  // Entries and schedules log each element that is no dictionary.
  EXPECT_TRUE(load("entries")->GetEntries().empty());
  EXPECT_EQ(log.count("Invalid theValue encountered in -[TARNAccount InitEntries]"), 2u);
  EXPECT_TRUE(load("schedules")->GetSchedules().empty());
  EXPECT_EQ(log.count("Invalid theDictionary encountered in TARNAccount:InitSchedules"), 2u);
  // Lists of records drop what cannot be a record, silently; a list given
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

TEST(AccountDictionary, LooseNumbersReadTextsByTheirLeadingNumber) {
  PinnedClock clock;
  plist::Value dictionary(plist::Dictionary{});
  dictionary.set("number", "12abc");
  dictionary.set("startingCheckNumber", " -40");
  dictionary.set("startingBalance", "150.25 dollars");
  dictionary.set("entryDateFilterType", "61");
  dictionary.set("version", plist::Value(plist::Array{}));
  CapturedLog log;
  auto account = TARNAccount::initWithDictionary(dictionary, nullptr);
  EXPECT_EQ(account->GetNumber(), 12);
  EXPECT_EQ(account->GetStartingCheckNumber(), -40);
  EXPECT_DOUBLE_EQ(account->GetStartingBalance(), 150.25);
  EXPECT_EQ(account->entryDateFilterType(), 61);
  EXPECT_EQ(account->GetVersion(), 8);
}

TEST(AccountDictionary, CurrenciesAreSharedThroughTheController) {
  PinnedClock clock;
  auto hostDefault = PFCurrency::initWithCode("CAD", "Canadian Dollar", "$", true, ",", ".", 0.7,
                                              PinnedClock::kToday);
  auto euro = PFCurrency::initWithCode("EUR", "Euro", "€", false, ".", ",", 1.1, 20240101);
  InMemoryAccountsController controller(hostDefault);
  controller.currencies().push_back(euro);
  plist::Value dictionary(plist::Dictionary{});
  dictionary.set(
      "currency",
      PFCurrency::initWithCode("EUR", "Other", "E", true, ",", ".", 9.0, 20200101)->asDictionary());
  EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, &controller)->currency(), euro);

  auto pound = PFCurrency::initWithCode("GBP", "Pound", "£", true, ",", ".", 1.3, 20240101);
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
    TARNAccountEntryType t;
    t.SetName(name);
    t.SetNumber(number);
    t.SetIsDeposit(deposit);
    return t.asDictionary();
  };
  plist::Value dictionary(plist::Dictionary{});
  dictionary.set("types", plist::Array{type("zeta", 1, false), type("Alpha", 2, true),
                                       type("beta", 3, false)});
  dictionary.set("inactiveTypes", plist::Array{type("old", 9, false), type("Aardvark", 8, false)});
  dictionary.set("defaultDebitType", 9);
  dictionary.set("defaultDepositType", 2);
  TARNAccountSummary first;
  first.setName("b");
  TARNAccountSummary second;
  second.setName("a");
  dictionary.set("accountSummaries",
                 plist::Array{first.optionsAsDictionary(), second.optionsAsDictionary()});
  dictionary.set("selectedAccountSummary", 1);
  dictionary.set("textImportDataLayout", "3,1,x,-2");

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

TEST(AccountDictionary, LastToAccountIsStoredAsAFlagOfItsLowByte) {
  PinnedClock clock;
  const std::pair<int, int> cases[] = {{3, 1}, {256, 0}, {-1, 1}, {0, 0}, {512 + 7, 1}};
  for (const auto& [stored, readBack] : cases) {
    TARNAccount account;
    account.setLastToAccount(stored);
    account.setLastFromAccount(stored);
    auto reloaded = TARNAccount::initWithDictionary(account.asDictionary(), nullptr);
    EXPECT_EQ(reloaded->lastToAccount(), readBack) << stored;
    EXPECT_EQ(reloaded->lastFromAccount(), stored);
  }
}

TEST(AccountDictionary, EmptyStoredPasswordSignsIn) {
  PinnedClock clock;
  CapturedLog log;
  for (const auto& [password, signedIn] : {std::pair{"", true}, std::pair{"secret", false}}) {
    plist::Value dictionary(plist::Dictionary{{"password", plist::Value(password)}});
    EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, nullptr)->IsAuthenticated(), signedIn);
  }
}

TEST(AccountDictionary, UpgradeThroughTheAccount) {
  PinnedClock clock;
  plist::Value nil(plist::Dictionary{{"number", plist::Value(4)}});
  TARNAccount::UpdateAccountDictionaryFromNil(nil);
  EXPECT_EQ(nil, plist::Value(plist::Dictionary{{"number", plist::Value(-1)},
                                                {"version", plist::Value(8)}}));
  auto entry = [](int number) {
    return plist::Value(plist::Dictionary{{"number", plist::Value(number)},
                                          {"isDebit", plist::Value(true)},
                                          {"date", plist::Value(86400 * 3)},
                                          {"amount", plist::Value(-1.234)}});
  };
  plist::Value old(plist::Dictionary{{"version", plist::Value(1)},
                                     {"entries", plist::Array{entry(5), entry(3), entry(5)}}});
  CapturedLog log;  // the version-2 step reports the old preferences it lacks
  ASSERT_NE(TARNAccount::UpdateAccountDictionary(old), nullptr);
  auto account = TARNAccount::initWithDictionary(old, nullptr);
  ASSERT_EQ(account->GetEntries().size(), 3u);
  std::vector<int> numbers;
  for (const auto& each : account->GetEntries()) numbers.push_back(each->GetNumber());
  EXPECT_EQ(numbers, (std::vector<int>{5, 3, 6}));
  EXPECT_EQ(account->GetEntries()[0]->GetDate(), 19700104);
  EXPECT_DOUBLE_EQ(account->GetEntries()[0]->GetAmount(), -1.23);
}

}  // namespace
}  // namespace tarn
