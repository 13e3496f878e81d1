#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "account_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/plist_file.h"
#include "tarn/reports/account_summary.h"

namespace tarn {
namespace {

using testing::CapturedLog;
using testing::MakeEntry;
using testing::PinnedClock;

// Every "missing" line of the loader, in the order the keys are read.
const std::vector<std::string> kMissingLines = {
    "Account does not have a name in -[TARNAccount initWithDictionary:]",
    "Account does not have an icon in -[TARNAccount initWithDictionary:]",
    "Account does not have a highResolutionIcon in -[TARNAccount initWithDictionary:]",
    "Account does not have an identification number in -[TARNAccount initWithDictionary:]",
    "Account does not have a version in -[TARNAccount initWithDictionary:]",
    "Account does not have entries in -[TARNAccount initWithDictionary:]",
    "Account does not have schedules in -[TARNAccount initWithDictionary:]",
    "Account does not have a starting check number in -[TARNAccount initWithDictionary:]",
    "No defaultDebitType defined for TARNAccount.",
    "No defaultDepositType defined for TARNAccount.",
    "No preference_Descriptions_Style defined for TARNAccount.",
    "No preference_ToFrom_Style defined for TARNAccount.",
    "No preference_Descriptions_SomeSelection defined for TARNAccount.",
    "No preference_ToFrom_SomeSelection defined for TARNAccount.",
    "No preferredDebitDescriptions defined for TARNAccount.",
    "No preferredDepositDescriptions defined for TARNAccount.",
    "No preferredTos defined for TARNAccount.",
    "No preferredFroms defined for TARNAccount.",
    "No numberCount defined for TARNAccount.",
    "Account does not have a statementBalance in -[TARNAccount initWithDictionary:]",
    "Account does not have any account summaries in -[TARNAccount initWithDictionary:]",
    "No OFXImportZeroAmountsAsDeposits defined for TARNAccount.",
    "No QIFImportEncoding defined for TARNAccount.",
    "No QIFImportDateFormat defined for TARNAccount.",
    "No QIFImportDecimalSeparator defined in -[TARNAccount initWithDictionary:]",
    "No QIFImportThousandsSeparator defined in -[TARNAccount initWithDictionary:]",
    "No QIFImportZeroAmountsAsDeposits defined for TARNAccount.",
    "No QIFImportAllCategories defined for TARNAccount.",
    "No QIFImportSplitLineItems defined for TARNAccount.",
    "No QIFImport_SwapOptions_ToFrom defined for TARNAccount.",
    "No QIFImport_SwapOptions_Category defined for TARNAccount.",
    "No QIFImport_SwapOptions_Description defined for TARNAccount.",
    "No textImportEncoding defined for TARNAccount.",
    "No textImportDataLayout defined for TARNAccount.",
    "No textImportSkipFirstRow defined for TARNAccount.",
    "No textImportDataFormat defined for TARNAccount.",
    "No textImportDateFormat defined for TARNAccount.",
    "No textImportDecimalSeparator defined in TARNAccount:initWithDictionary",
    "No textImportThousandsSeparator defined in TARNAccount:initWithDictionary",
    "No textImportZeroAmountsAsDeposits defined for TARNAccount.",
    "No textExport_ExportType defined for TARNAccount.",
    "No textExport_Encoding defined for TARNAccount.",
};

TEST(AccountDictionary, EmptyOrAbsentDictionaryKeepsDefaultsAndLogsEachMissingKeyInOrder) {
  PinnedClock clock;
  const plist::Value defaults = TARNAccount().asDictionary();
  {
    CapturedLog log;
    auto account = TARNAccount::initWithDictionary(plist::Value(plist::Dictionary{}), nullptr);
    EXPECT_EQ(log.lines(), kMissingLines);
    EXPECT_EQ(account->asDictionary(), defaults);
    EXPECT_EQ(account->GetNumber(), -1);
    EXPECT_EQ(account->types().size(), 13u);
    EXPECT_EQ(account->accountSummaries().size(), 12u);
    EXPECT_EQ(account->smartFolders().size(), 2u);
  }
  for (const plist::Value& notADictionary : {plist::Value(), plist::Value("account")}) {
    CapturedLog log;
    auto account = TARNAccount::initWithDictionary(notADictionary, nullptr);
    EXPECT_EQ(log.lines(),
              std::vector<std::string>{
                  "Invalid theDictionary supplied to -[TARNAccount initWithDictionary:]"});
    EXPECT_EQ(account->asDictionary(), defaults);
  }
}

enum class Accepts { Number, String, Data, Dictionary, Array, StringArray, NumberOrText, Anything };

struct KeyCase {
  const char* key;
  Accepts accepts;
  const char* wrong;  // "" when a wrong kind is passed over silently
};

// Every key of the file, what kind it takes, and the line a wrong kind logs.
const KeyCase kKeys[] = {
    {"name", Accepts::String,
     "Account name is in the wrong format in -[TARNAccount initWithDictionary:]"},
    {"currency", Accepts::Dictionary,
     "Currency is in the wrong format in -[TARNAccount initWithDictionary:]"},
    {"icon", Accepts::Data,
     "Account icon is in the wrong format in -[TARNAccount initWithDictionary:]"},
    {"highResolutionIcon", Accepts::Data,
     "Account highResolutionIcon is in the wrong format in -[TARNAccount initWithDictionary:]"},
    {"number", Accepts::NumberOrText, ""},
    {"version", Accepts::NumberOrText, ""},
    {"types", Accepts::Array, "types are in the wrong format for TARNAccount."},
    {"inactiveTypes", Accepts::Array, "inactiveTypes are in the wrong format for TARNAccount."},
    {"entries", Accepts::Array,
     "Account entries are in the wrong format in -[TARNAccount initWithDictionary:]"},
    {"schedules", Accepts::Array,
     "Account schedules are in the wrong format in -[TARNAccount initWithDictionary:]"},
    {"startingCheckNumber", Accepts::NumberOrText, ""},
    {"startingBalance", Accepts::NumberOrText, ""},
    {"password", Accepts::String,
     "Account password is in the wrong format in -[TARNAccount initWithDictionary:]"},
    {"defaultDebitType", Accepts::Number, "defaultDebitType is in wrong format for TARNAccount."},
    {"defaultDepositType", Accepts::Number,
     "defaultDepositType is in wrong format for TARNAccount."},
    {"preference_Descriptions_Style", Accepts::Number,
     "preference_Descriptions_Style is in wrong format for TARNAccount."},
    {"preference_ToFrom_Style", Accepts::Number,
     "preference_ToFrom_Style is in wrong format for TARNAccount."},
    {"preference_Descriptions_SomeSelection", Accepts::Number,
     "preference_Descriptions_SomeSelection is in wrong format for TARNAccount."},
    {"preference_ToFrom_SomeSelection", Accepts::Number,
     "preference_ToFrom_SomeSelection is in wrong format for TARNAccount."},
    {"preferredDebitDescriptions", Accepts::StringArray,
     "preferredDebitDescriptions is in wrong format for TARNAccount."},
    {"preferredDepositDescriptions", Accepts::StringArray,
     "preferredDepositDescriptions is in wrong format for TARNAccount."},
    {"preferredTos", Accepts::StringArray, "preferredTos is in wrong format for TARNAccount."},
    {"preferredFroms", Accepts::StringArray, "preferredFroms is in wrong format for TARNAccount."},
    {"numberCount", Accepts::Number, "numberCount is in wrong format for TARNAccount."},
    {"statementBalance", Accepts::NumberOrText, ""},
    {"accountSummaries", Accepts::Array, ""},
    {"selectedAccountSummary", Accepts::NumberOrText, ""},
    {"entryFilterType", Accepts::NumberOrText, ""},
    {"entryFilterData", Accepts::Anything, ""},
    {"entryResolvedFilterType", Accepts::NumberOrText, ""},
    {"entryTaxDeductibleFilterType", Accepts::NumberOrText, ""},
    {"entryDateFilterType", Accepts::NumberOrText, ""},
    {"entryDateFilterStartDate", Accepts::NumberOrText, ""},
    {"entryDateFilterEndDate", Accepts::NumberOrText, ""},
    {"reconcileFilterType", Accepts::NumberOrText, ""},
    {"reconcileFilterData", Accepts::Anything, ""},
    {"reconcileResolvedFilterType", Accepts::NumberOrText, ""},
    {"reconcileTaxDeductibleFilterType", Accepts::NumberOrText, ""},
    {"reconcileDateFilterType", Accepts::NumberOrText, ""},
    {"reconcileDateFilterStartDate", Accepts::NumberOrText, ""},
    {"reconcileDateFilterEndDate", Accepts::NumberOrText, ""},
    {"OFXImportZeroAmountsAsDeposits", Accepts::Number,
     "OFXImportZeroAmountsAsDeposits is in wrong format for TARNAccount."},
    {"OFXImport_SwapOptions_Name", Accepts::Number,
     "OFXImport_SwapOptions_Name is in wrong format for TARNAccount."},
    {"OFXImport_SwapOptions_Memo", Accepts::Number,
     "OFXImport_SwapOptions_Memo is in wrong format for TARNAccount."},
    {"OFXImport_SwapOptions_Payee", Accepts::Number,
     "OFXImport_SwapOptions_Payee is in wrong format for TARNAccount."},
    {"OFXImport_SwapOptions_TransactionType", Accepts::Number,
     "OFXImport_SwapOptions_TransactionType is in wrong format for TARNAccount."},
    {"OFXImport_SwapOptions_ReferenceNumber", Accepts::Number,
     "OFXImport_SwapOptions_ReferenceNumber is in wrong format for TARNAccount."},
    {"QIFImportEncoding", Accepts::Number, "QIFImportEncoding is in wrong format for TARNAccount."},
    {"QIFImportDateFormat", Accepts::Number,
     "QIFImportDateFormat is in wrong format for TARNAccount."},
    {"QIFImportDecimalSeparator", Accepts::String,
     "QIFImportDecimalSeparator is in the wrong format in -[TARNAccount initWithDictionary:]"},
    {"QIFImportThousandsSeparator", Accepts::String,
     "QIFImportThousandsSeparator is in the wrong format in -[TARNAccount initWithDictionary:]"},
    {"QIFImportZeroAmountsAsDeposits", Accepts::Number,
     "QIFImportZeroAmountsAsDeposits is in wrong format for TARNAccount."},
    {"QIFImportAllCategories", Accepts::Number,
     "QIFImportAllCategories is in wrong format for TARNAccount."},
    {"QIFImportSplitLineItems", Accepts::Number,
     "QIFImportSplitLineItems is in wrong format for TARNAccount."},
    {"QIFImport_SwapOptions_ToFrom", Accepts::Number,
     "QIFImport_SwapOptions_ToFrom is in wrong format for TARNAccount."},
    {"QIFImport_SwapOptions_Category", Accepts::Number,
     "QIFImport_SwapOptions_Category is in wrong format for TARNAccount."},
    {"QIFImport_SwapOptions_Description", Accepts::Number,
     "QIFImport_SwapOptions_Description is in wrong format for TARNAccount."},
    {"textImportEncoding", Accepts::Number,
     "textImportEncoding is in wrong format for TARNAccount."},
    {"textImportDataLayout", Accepts::String,
     "textImportDataLayout is in wrong format for TARNAccount."},
    {"textImportSkipFirstRow", Accepts::Number,
     "textImportSkipFirstRow is in wrong format for TARNAccount."},
    {"textImportDataFormat", Accepts::Number,
     "textImportDataFormat is in wrong format for TARNAccount."},
    {"textImportDateFormat", Accepts::Number,
     "textImportDateFormat is in wrong format for TARNAccount."},
    {"textImportDecimalSeparator", Accepts::String,
     "textImportDecimalSeparator is in the wrong format in TARNAccount:initWithDictionary"},
    {"textImportThousandsSeparator", Accepts::String,
     "textImportThousandsSeparator is in the wrong format in TARNAccount:initWithDictionary"},
    {"textImportZeroAmountsAsDeposits", Accepts::Number,
     "textImportZeroAmountsAsDeposits is in wrong format for TARNAccount."},
    {"textExport_ExportType", Accepts::Number,
     "textExport_ExportType is in wrong format for TARNAccount."},
    {"textExport_Encoding", Accepts::Number,
     "textExport_Encoding is in wrong format for TARNAccount."},
    {"lastFromAccount", Accepts::Number, "lastFromAccount is in wrong format for TARNAccount."},
    {"lastToAccount", Accepts::Number, "lastToAccount is in wrong format for TARNAccount."},
    {"smartFolders", Accepts::Array, ""},
    {"folders", Accepts::Array, ""},
};

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
    case Accepts::StringArray:
      return value.isArray();
    case Accepts::NumberOrText:
      return value.isNumber() || value.isString();
    case Accepts::Anything:
      return true;
  }
  return false;
}

std::vector<plist::Value> ValuesOfEveryKind() {
  return {plist::Value(true),
          plist::Value(7),
          plist::Value(2.5),
          plist::Value("12"),
          plist::Value(plist::Date{1000.0}),
          plist::Value(plist::Data{1, 2, 3}),
          plist::Value(plist::Array{}),
          plist::Value(plist::Array{plist::Value(1)}),
          plist::Value(plist::Dictionary{{"code", plist::Value(3)}})};
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

// What an account saves when the key is missing from `dictionary`: the
// default of that key with everything else as loaded.
plist::Value WithoutKey(const plist::Value& dictionary, const char* key) {
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
  int cases = 0;
  for (const KeyCase& key : kKeys) {
    for (const plist::Value& value : ValuesOfEveryKind()) {
      if (Takes(key.accepts, value)) continue;
      ++cases;
      // The other keys are present and hold their defaults, so the only line
      // logged is the one for this key.
      plist::Value dictionary = defaults;
      dictionary.set(key.key, value);
      CapturedLog log;
      auto account = TARNAccount::initWithDictionary(dictionary, nullptr);
      const std::vector<std::string> expected =
          *key.wrong ? std::vector<std::string>{key.wrong} : std::vector<std::string>{};
      EXPECT_EQ(log.lines(), expected) << key.key;
      EXPECT_EQ(account->asDictionary(), WithoutKey(defaults, key.key)) << key.key;
    }
  }
  EXPECT_GT(cases, 300);
}

TEST(AccountDictionary, ArraysOfWrongElements) {
  PinnedClock clock;
  const plist::Value defaults = CompleteDefaults();
  const plist::Value wrongElements(plist::Array{plist::Value(1), plist::Value("x")});
  auto load = [&](const char* key, const plist::Value& value, CapturedLog& log) {
    plist::Value dictionary = defaults;
    dictionary.set(key, value);
    log.clear();
    return TARNAccount::initWithDictionary(dictionary, nullptr);
  };
  CapturedLog log;
  // Text lists must hold texts only.
  for (const char* key : {"preferredDebitDescriptions", "preferredDepositDescriptions",
                          "preferredTos", "preferredFroms"}) {
    auto account = load(key, wrongElements, log);
    EXPECT_EQ(log.lines(),
              std::vector<std::string>{std::string(key) + " is in wrong format for TARNAccount."});
    EXPECT_EQ(account->asDictionary(), WithoutKey(defaults, key));
  }
  // Entries and schedules log each element that is no dictionary.
  auto account = load("entries", wrongElements, log);
  EXPECT_EQ(log.count("Invalid theValue encountered in -[TARNAccount InitEntries]"), 2u);
  EXPECT_TRUE(account->GetEntries().empty());
  account = load("schedules", wrongElements, log);
  EXPECT_EQ(log.count("Invalid theDictionary encountered in TARNAccount:InitSchedules"), 2u);
  EXPECT_TRUE(account->GetSchedules().empty());
  // Lists of records drop what cannot be a record, silently; a list given
  // replaces the defaults, an empty summary list does not.
  account = load("types", wrongElements, log);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_TRUE(account->types().empty());
  account = load("inactiveTypes", wrongElements, log);
  EXPECT_TRUE(account->inactiveTypes().empty());
  account = load("smartFolders", wrongElements, log);
  EXPECT_TRUE(account->smartFolders().empty());
  account = load("folders", wrongElements, log);
  EXPECT_TRUE(account->folders().empty());
  account = load("accountSummaries", wrongElements, log);
  EXPECT_TRUE(account->accountSummaries().empty());
  ASSERT_NE(account->selectedAccountSummary(), nullptr);
  EXPECT_EQ(account->selectedAccountSummary()->name(), " Custom...");
  EXPECT_EQ(account->asDictionary().find("selectedAccountSummary")->intValue(), 0);
  account = load("accountSummaries", plist::Value(plist::Array{}), log);
  EXPECT_EQ(account->accountSummaries().size(), 12u);
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
  auto account = TARNAccount::initWithDictionary(dictionary, &controller);
  EXPECT_EQ(account->currency(), euro);
  EXPECT_EQ(account->accountsController(), &controller);

  auto pound = PFCurrency::initWithCode("GBP", "Pound", "£", true, ",", ".", 1.3, 20240101);
  dictionary.set("currency", pound->asDictionary());
  account = TARNAccount::initWithDictionary(dictionary, &controller);
  ASSERT_EQ(controller.currencies().size(), 2u);
  EXPECT_EQ(account->currency(), controller.currencies().back());
  EXPECT_EQ(account->currency()->asDictionary(), pound->asDictionary());
  // Loading the same code again shares the one just added.
  EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, &controller)->currency(),
            controller.currencies().back());

  CapturedLog log;
  dictionary.set("currency", "EUR");
  EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, &controller)->currency(), hostDefault);
  EXPECT_EQ(log.count("Currency is in the wrong format in -[TARNAccount initWithDictionary:]"), 1u);
  EXPECT_EQ(
      TARNAccount::initWithDictionary(plist::Value(plist::Dictionary{}), &controller)->currency(),
      hostDefault);
  // Without a controller a stored currency is the account's own.
  dictionary.set("currency", pound->asDictionary());
  EXPECT_EQ(TARNAccount::initWithDictionary(dictionary, nullptr)->currency()->code(), "GBP");
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
  second.setDateRangeStyle(kSummaryRangeCustom);
  dictionary.set("accountSummaries",
                 plist::Array{first.optionsAsDictionary(), second.optionsAsDictionary()});
  dictionary.set("selectedAccountSummary", 1);
  dictionary.set("textImportDataLayout", "3,1,x,-2");

  CapturedLog log;
  auto account = TARNAccount::initWithDictionary(dictionary, nullptr);
  std::vector<std::string> names;
  for (const auto& each : account->types()) names.push_back(each->GetName());
  EXPECT_EQ(names, (std::vector<std::string>{"Alpha", "beta", "zeta"}));
  ASSERT_EQ(account->inactiveTypes().size(), 2u);
  EXPECT_EQ(account->inactiveTypes()[0]->GetName(), "old");  // appended, not sorted
  EXPECT_EQ(account->defaultDebitType()->GetName(), "old");
  EXPECT_EQ(account->defaultDepositType()->GetName(), "Alpha");
  // Summaries keep the stored order; the selection is an index into it.
  ASSERT_EQ(account->accountSummaries().size(), 2u);
  EXPECT_EQ(account->accountSummaries()[0]->name(), "b");
  EXPECT_EQ(account->selectedAccountSummary()->name(), "a");
  EXPECT_EQ(account->selectedAccountSummary()->dateRangeStyle(), kSummaryRangeCustom);
  EXPECT_EQ(account->GetTextImportDataLayout(), (std::vector<std::int32_t>{3, 1, 0, -2}));
  EXPECT_EQ(account->asDictionary().find("textImportDataLayout")->stringValue(), "3,1,0,-2");

  // An index equal to the count, or negative, leaves the first default selected.
  for (int index : {2, -1}) {
    dictionary.set("selectedAccountSummary", index);
    account = TARNAccount::initWithDictionary(dictionary, nullptr);
    EXPECT_EQ(account->selectedAccountSummary()->name(), " Custom...") << index;
    EXPECT_EQ(account->asDictionary().find("selectedAccountSummary")->intValue(), 0);
  }
  // A type number that names no type leaves no default type.
  dictionary.set("defaultDebitType", -1);
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

TEST(AccountDictionary, PasswordAndAuthentication) {
  PinnedClock clock;
  plist::Value dictionary(plist::Dictionary{});
  EXPECT_FALSE(TARNAccount::initWithDictionary(dictionary, nullptr)->IsAuthenticated());
  dictionary.set("password", "");
  EXPECT_TRUE(TARNAccount::initWithDictionary(dictionary, nullptr)->IsAuthenticated());
  dictionary.set("password", "secret");
  auto account = TARNAccount::initWithDictionary(dictionary, nullptr);
  EXPECT_FALSE(account->IsAuthenticated());
  EXPECT_EQ(account->GetPassword(), "secret");
}

TEST(AccountDictionary, UpgradeThroughTheAccount) {
  PinnedClock clock;
  plist::Value none;
  EXPECT_EQ(TARNAccount::UpdateAccountDictionary(none), nullptr);

  plist::Value fresh(plist::Dictionary{{"name", plist::Value("new")}});
  ASSERT_NE(TARNAccount::UpdateAccountDictionary(fresh), nullptr);
  EXPECT_EQ(fresh, plist::Value(plist::Dictionary{{"name", plist::Value("new")},
                                                  {"number", plist::Value(-1)},
                                                  {"version", plist::Value(8)}}));
  plist::Value nil(plist::Dictionary{{"number", plist::Value(4)}});
  TARNAccount::UpdateAccountDictionaryFromNil(nil);
  EXPECT_EQ(nil.find("number")->intValue(), -1);
  EXPECT_EQ(nil.find("version")->intValue(), 8);

  // Version 1 data with entry numbers 5, 3, 5, and dates in seconds.
  auto entry = [](int number) {
    return plist::Value(plist::Dictionary{{"number", plist::Value(number)},
                                          {"isDebit", plist::Value(true)},
                                          {"date", plist::Value(86400 * 3)},
                                          {"amount", plist::Value(-1.234)}});
  };
  plist::Value old(plist::Dictionary{
      {"version", plist::Value(7)},
      {"entries", plist::Array{entry(5), entry(3), entry(5)}},
  });
  CapturedLog log;  // the version-2 step reports the old preferences it lacks
  plist::Value viaVersion = old;
  viaVersion.set("version", 1);
  ASSERT_NE(TARNAccount::UpdateAccountDictionary(viaVersion), nullptr);
  auto account = TARNAccount::initWithDictionary(viaVersion, nullptr);
  ASSERT_EQ(account->GetEntries().size(), 3u);
  std::vector<int> numbers;
  for (const auto& each : account->GetEntries()) numbers.push_back(each->GetNumber());
  EXPECT_EQ(numbers[0], 5);
  EXPECT_EQ(numbers[1], 3);
  EXPECT_EQ(numbers[2], 6);
  EXPECT_EQ(viaVersion.find("version")->intValue(), 8);
  EXPECT_EQ(account->GetEntries()[0]->GetDate(), 19700104);
  EXPECT_DOUBLE_EQ(account->GetEntries()[0]->GetAmount(), -1.23);
}

}  // namespace
}  // namespace tarn
