// Reading and writing the account dictionary, the stored form of an account.
// Keys are read in the order of the file format, each with its own log line
// when it is missing or of the wrong kind; the default stays in both cases.
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/account/accounts_controller.h"
#include "tarn/account/entry_list_loading.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/bulk_storage.h"
#include "tarn/platform/log.h"
#include "tarn/platform/number_text.h"
#include "tarn/reports/account_summary.h"

namespace tarn {

namespace {

constexpr std::string_view kInvalidDictionary =
    "Invalid theDictionary supplied to -[TARNAccount initWithDictionary:]";

// Keys read without a test of their kind: numbers, and texts by their leading
// number as the platform reads them. Values of other kinds cannot be read as
// a number and leave the default.
std::optional<std::int32_t> LooseInteger(const plist::Value& value) {
  if (value.isNumber()) return value.intValue();
  if (value.isString()) return LeadingInteger(value.stringValue());
  return std::nullopt;
}

std::optional<double> LooseReal(const plist::Value& value) {
  if (value.isNumber()) return value.doubleValue();
  if (value.isString()) return LeadingReal(value.stringValue());
  return std::nullopt;
}

void LogIfAny(std::string_view line) {
  if (!line.empty()) Log(line);
}

// One reader per kind of key. Each logs `missing` when the key is absent and
// `wrong` when the value is of another kind (an empty text logs nothing), and
// calls `apply` only with a usable value.
class KeyReader {
 public:
  explicit KeyReader(const plist::Value& dictionary) : dictionary_(dictionary) {}

  const plist::Value* find(std::string_view key) const { return dictionary_.find(key); }

  template <typename Apply>
  void number(std::string_view key, std::string_view missing, std::string_view wrong,
              Apply apply) const {
    const plist::Value* value = find(key);
    if (!value) return LogIfAny(missing);
    if (!value->isNumber()) return LogIfAny(wrong);
    apply(*value);
  }

  template <typename Apply>
  void string(std::string_view key, std::string_view missing, std::string_view wrong,
              Apply apply) const {
    const plist::Value* value = find(key);
    if (!value) return LogIfAny(missing);
    if (!value->isString()) return LogIfAny(wrong);
    apply(value->stringValue());
  }

  template <typename Apply>
  void looseInteger(std::string_view key, std::string_view missing, Apply apply) const {
    const plist::Value* value = find(key);
    if (!value) return LogIfAny(missing);
    if (auto number = LooseInteger(*value)) apply(*number);
  }

  template <typename Apply>
  void looseReal(std::string_view key, std::string_view missing, Apply apply) const {
    const plist::Value* value = find(key);
    if (!value) return LogIfAny(missing);
    if (auto number = LooseReal(*value)) apply(*number);
  }

  // An array whose elements are all texts.
  void strings(std::string_view key, std::string_view missing, std::string_view wrong,
               std::optional<std::vector<std::string>>& field) const {
    const plist::Value* value = find(key);
    if (!value) return LogIfAny(missing);
    if (!value->isArray()) return LogIfAny(wrong);
    std::vector<std::string> texts;
    texts.reserve(value->arrayValue().size());
    for (const plist::Value& element : value->arrayValue()) {
      if (!element.isString()) return LogIfAny(wrong);
      texts.push_back(element.stringValue());
    }
    field = std::move(texts);
  }

 private:
  const plist::Value& dictionary_;
};

// The option keys that share one message pattern: "No <key> defined for
// TARNAccount." and "<key> is in wrong format for TARNAccount.".
std::string NoneDefined(std::string_view key) {
  return "No " + std::string(key) + " defined for TARNAccount.";
}
std::string WrongFormat(std::string_view key) {
  return std::string(key) + " is in wrong format for TARNAccount.";
}

std::vector<std::int32_t> SplitLayout(const std::string& text) {
  std::vector<std::int32_t> layout;
  if (text.empty()) return layout;
  std::size_t start = 0;
  while (true) {
    const std::size_t comma = text.find(',', start);
    layout.push_back(LeadingInteger(std::string_view(text).substr(
        start, comma == std::string::npos ? std::string::npos : comma - start)));
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return layout;
}

std::string JoinLayout(const std::vector<std::int32_t>& layout) {
  std::string text;
  for (std::size_t i = 0; i < layout.size(); ++i) {
    if (i) text += ',';
    text += std::to_string(layout[i]);
  }
  return text;
}

template <typename Record>
plist::Array DictionariesOf(const std::vector<std::shared_ptr<Record>>& records) {
  plist::Array array;
  array.reserve(records.size());
  for (const auto& record : records) array.push_back(record->asDictionary());
  return array;
}

plist::Array StringArray(const std::vector<std::string>& texts) {
  return plist::Array(texts.begin(), texts.end());
}

// How a key of the remembered options logs its absence and a value of the
// wrong kind: the shared option lines (or nothing when absent), or the lines
// of the QIF and text-import separators, worded as the format has them.
enum class KeyLines { kOption, kOptionQuietWhenMissing, kInitMethod, kInitFunction };

std::string MissingLine(std::string_view key, KeyLines lines) {
  switch (lines) {
    case KeyLines::kOption:
      return NoneDefined(key);
    case KeyLines::kOptionQuietWhenMissing:
      return {};
    case KeyLines::kInitMethod:
      return "No " + std::string(key) + " defined in -[TARNAccount initWithDictionary:]";
    case KeyLines::kInitFunction:
      return "No " + std::string(key) + " defined in TARNAccount:initWithDictionary";
  }
  return {};
}

std::string WrongLine(std::string_view key, KeyLines lines) {
  switch (lines) {
    case KeyLines::kOption:
    case KeyLines::kOptionQuietWhenMissing:
      return WrongFormat(key);
    case KeyLines::kInitMethod:
      return std::string(key) + " is in the wrong format in -[TARNAccount initWithDictionary:]";
    case KeyLines::kInitFunction:
      return std::string(key) + " is in the wrong format in TARNAccount:initWithDictionary";
  }
  return {};
}

// Each group of options lists its keys once, in the order they are read, and
// a reader or a writer visits them: flags and integers are stored as
// numbers, separators as texts, the text-import column layout as the text
// "3,0,1", and the text import's zero-amount choice (a byte) as a flag.
template <typename OFX, typename Visit>
void OFXImportFields(OFX& ofx, Visit&& visit) {
  using enum KeyLines;
  visit("OFXImportZeroAmountsAsDeposits", kOption, ofx.zeroAmountsAsDeposits);
  visit("OFXImport_SwapOptions_Name", kOptionQuietWhenMissing, ofx.swapName);
  visit("OFXImport_SwapOptions_Memo", kOptionQuietWhenMissing, ofx.swapMemo);
  visit("OFXImport_SwapOptions_Payee", kOptionQuietWhenMissing, ofx.swapPayee);
  visit("OFXImport_SwapOptions_TransactionType", kOptionQuietWhenMissing, ofx.swapTransactionType);
  visit("OFXImport_SwapOptions_ReferenceNumber", kOptionQuietWhenMissing, ofx.swapReferenceNumber);
}

template <typename QIF, typename Visit>
void QIFImportFields(QIF& qif, Visit&& visit) {
  using enum KeyLines;
  visit("QIFImportEncoding", kOption, qif.encoding);
  visit("QIFImportDateFormat", kOption, qif.dateFormat);
  visit("QIFImportDecimalSeparator", kInitMethod, qif.decimalSeparator);
  visit("QIFImportThousandsSeparator", kInitMethod, qif.thousandsSeparator);
  visit("QIFImportZeroAmountsAsDeposits", kOption, qif.zeroAmountsAsDeposits);
  visit("QIFImportAllCategories", kOption, qif.allCategories);
  visit("QIFImportSplitLineItems", kOption, qif.splitLineItems);
  visit("QIFImport_SwapOptions_ToFrom", kOption, qif.swapToFrom);
  visit("QIFImport_SwapOptions_Category", kOption, qif.swapCategory);
  visit("QIFImport_SwapOptions_Description", kOption, qif.swapDescription);
}

template <typename Text, typename Visit>
void TextImportFields(Text& text, Visit&& visit) {
  using enum KeyLines;
  visit("textImportEncoding", kOption, text.encoding);
  visit("textImportDataLayout", kOption, text.dataLayout);
  visit("textImportSkipFirstRow", kOption, text.skipFirstRow);
  visit("textImportDataFormat", kOption, text.dataFormat);
  visit("textImportDateFormat", kOption, text.dateFormat);
  visit("textImportDecimalSeparator", kInitFunction, text.decimalSeparator);
  visit("textImportThousandsSeparator", kInitFunction, text.thousandsSeparator);
  visit("textImportZeroAmountsAsDeposits", kOption, text.zeroAmountsAsDeposits);
}

template <typename Export, typename Visit>
void TextExportFields(Export& text, Visit&& visit) {
  visit("textExport_ExportType", KeyLines::kOption, text.exportType);
  visit("textExport_Encoding", KeyLines::kOption, text.encoding);
}

// Reads a key into its field, logging as the key's lines say; the field keeps
// its value when the key is absent or of the wrong kind.
class FieldReader {
 public:
  explicit FieldReader(const KeyReader& keys) : keys_(keys) {}

  void operator()(std::string_view key, KeyLines lines, bool& field) const {
    keys_.number(key, MissingLine(key, lines), WrongLine(key, lines),
                 [&field](const plist::Value& v) { field = v.boolValue(); });
  }
  void operator()(std::string_view key, KeyLines lines, std::uint8_t& field) const {
    keys_.number(key, MissingLine(key, lines), WrongLine(key, lines),
                 [&field](const plist::Value& v) { field = v.boolValue() ? 1 : 0; });
  }
  void operator()(std::string_view key, KeyLines lines, std::int32_t& field) const {
    keys_.number(key, MissingLine(key, lines), WrongLine(key, lines),
                 [&field](const plist::Value& v) { field = v.intValue(); });
  }
  void operator()(std::string_view key, KeyLines lines, std::string& field) const {
    keys_.string(key, MissingLine(key, lines), WrongLine(key, lines),
                 [&field](const std::string& s) { field = s; });
  }
  void operator()(std::string_view key, KeyLines lines,
                  std::optional<std::vector<std::int32_t>>& field) const {
    keys_.string(key, MissingLine(key, lines), WrongLine(key, lines),
                 [&field](const std::string& s) { field = SplitLayout(s); });
  }

 private:
  const KeyReader& keys_;
};

// Stores each field under its key; a text-import layout the user never made
// is left out.
class FieldWriter {
 public:
  explicit FieldWriter(plist::Dictionary& d) : d_(d) {}

  void operator()(const char* key, KeyLines, bool field) const { d_.emplace(key, field); }
  void operator()(const char* key, KeyLines, std::uint8_t field) const {
    d_.emplace(key, field != 0);
  }
  void operator()(const char* key, KeyLines, std::int32_t field) const { d_.emplace(key, field); }
  void operator()(const char* key, KeyLines, const std::string& field) const {
    d_.emplace(key, field);
  }
  void operator()(const char* key, KeyLines,
                  const std::optional<std::vector<std::int32_t>>& field) const {
    if (field) d_.emplace(key, JoinLayout(*field));
  }

 private:
  plist::Dictionary& d_;
};

// The fields of a view filter, in the order they are stored. Each key is the
// view's prefix ("entry" or "reconcile") followed by the field's suffix.
constexpr const char* kFilterDataSuffix = "FilterData";
struct ViewFilterNumber {
  const char* suffix;
  std::int32_t ViewFilterSettings::*field;
};
constexpr ViewFilterNumber kViewFilterNumbers[] = {
    {"FilterType", &ViewFilterSettings::filterType},
    {"ResolvedFilterType", &ViewFilterSettings::resolvedFilterType},
    {"TaxDeductibleFilterType", &ViewFilterSettings::taxDeductibleFilterType},
    {"DateFilterType", &ViewFilterSettings::dateFilterType},
    {"DateFilterStartDate", &ViewFilterSettings::dateFilterStartDate},
    {"DateFilterEndDate", &ViewFilterSettings::dateFilterEndDate},
};

// Missing keys are not logged; numbers are read loosely, and the search text
// is kept whatever its kind.
void ReadViewFilter(const KeyReader& keys, std::string_view prefix, ViewFilterSettings& view) {
  std::string key(prefix);
  if (const plist::Value* data = keys.find(key.append(kFilterDataSuffix))) view.filterData = *data;
  for (const ViewFilterNumber& number : kViewFilterNumbers) {
    key.assign(prefix).append(number.suffix);
    if (const plist::Value* value = keys.find(key)) {
      if (auto read = LooseInteger(*value)) view.*number.field = *read;
    }
  }
}

void WriteViewFilter(plist::Dictionary& d, std::string_view prefix,
                     const ViewFilterSettings& view) {
  std::string key(prefix);
  for (const ViewFilterNumber& number : kViewFilterNumbers) {
    d.emplace(key.assign(prefix).append(number.suffix), view.*number.field);
  }
  // A nil search text is left out.
  if (!view.filterData.isNil())
    d.emplace(key.assign(prefix).append(kFilterDataSuffix), view.filterData);
}

}  // namespace

std::shared_ptr<TARNAccount> TARNAccount::initWithDictionary(const plist::Value& dictionary,
                                                             TARNAccountsController* controller) {
  auto account = std::make_shared<TARNAccount>();
  account->setAccountsController(controller);
  if (!dictionary.isDictionary()) {
    Log(kInvalidDictionary);
    return account;
  }
  account->loadIdentity(dictionary);
  account->loadTypesAndRecords(dictionary);
  account->loadPreferences(dictionary);
  account->loadSummaries(dictionary);
  account->loadViewFilters(dictionary);
  account->loadImportExportOptions(dictionary);
  account->loadFolders(dictionary);
  return account;
}

const TARNAccount::Entries* TARNAccount::InitEntries(const plist::Value& array) {
  auto entries = LoadEntryList(array);
  if (!entries) return nullptr;
  SetEntries(std::move(*entries));
  return &entries_;
}

const TARNAccount::Schedules* TARNAccount::InitSchedules(const plist::Value& array) {
  auto schedules = LoadScheduleList(array);
  if (!schedules) return nullptr;
  SetSchedules(std::move(*schedules));
  return &schedules_;
}

// Name, currency, icons, number and version.
void TARNAccount::loadIdentity(const plist::Value& dictionary) {
  const KeyReader keys(dictionary);
  keys.string("name", "Account does not have a name in -[TARNAccount initWithDictionary:]",
              "Account name is in the wrong format in -[TARNAccount initWithDictionary:]",
              [this](const std::string& name) { SetName(name); });
  readCurrency(keys.find("currency"));
  auto readIcon = [&keys](std::string_view key, std::string_view missing, std::string_view wrong,
                          auto set) {
    const plist::Value* value = keys.find(key);
    if (!value) return Log(missing);
    if (!value->isData()) return Log(wrong);
    set(value->dataValue());
  };
  readIcon("icon", "Account does not have an icon in -[TARNAccount initWithDictionary:]",
           "Account icon is in the wrong format in -[TARNAccount initWithDictionary:]",
           [this](const Image& image) { setIcon(image); });
  readIcon("highResolutionIcon",
           "Account does not have a highResolutionIcon in -[TARNAccount initWithDictionary:]",
           "Account highResolutionIcon is in the wrong format in -[TARNAccount "
           "initWithDictionary:]",
           [this](const Image& image) { setHighResolutionIcon(image); });
  keys.looseInteger("number",
                    "Account does not have an identification number in -[TARNAccount "
                    "initWithDictionary:]",
                    [this](std::int32_t number) { SetNumber(number); });
  keys.looseInteger("version",
                    "Account does not have a version in -[TARNAccount initWithDictionary:]",
                    [this](std::int32_t version) { SetVersion(version); });
}

// A known currency is shared with the other accounts; a new one joins the
// controller's list. Without a usable value the host's default currency is
// taken; without a controller (or a default from it) the account keeps its own.
void TARNAccount::readCurrency(const plist::Value* value) {
  TARNAccountsController* controller = accountsController_;
  if (value && value->isDictionary()) {
    std::string code;
    if (const plist::Value* stored = value->find("code"); stored && stored->isString()) {
      code = stored->stringValue();
    }
    if (controller) {
      if (auto known = controller->currencyWithCode(code)) {
        setCurrency(std::move(known));
        return;
      }
    }
    if (auto made = PFCurrency::initWithDictionary(*value)) {
      setCurrency(made);
      if (controller) controller->currencies().push_back(std::move(made));
      return;
    }
  } else if (value) {
    Log("Currency is in the wrong format in -[TARNAccount initWithDictionary:]");
  }
  if (controller) {
    if (auto fallback = controller->currency()) setCurrency(std::move(fallback));
  }
}

// Types, entries, schedules, check number, balance and password.
void TARNAccount::loadTypesAndRecords(const plist::Value& dictionary) {
  const KeyReader keys(dictionary);
  auto readTypes = [&keys](std::string_view key, std::string_view wrong, Types& list,
                           bool replace) {
    const plist::Value* value = keys.find(key);
    if (!value) return;
    if (!value->isArray()) return Log(wrong);
    if (replace) list.clear();
    for (const plist::Value& element : value->arrayValue()) {
      if (element.isDictionary()) list.push_back(TARNAccountEntryType::initWithDictionary(element));
    }
  };
  readTypes("types", "types are in the wrong format for TARNAccount.", types_, true);
  if (const plist::Value* types = keys.find("types"); types && types->isArray()) {
    std::stable_sort(types_.begin(), types_.end(),
                     [](const auto& a, const auto& b) { return a->NameIsGreaterThan(*b) < 0; });
  }
  readTypes("inactiveTypes", "inactiveTypes are in the wrong format for TARNAccount.",
            inactiveTypes_, false);

  if (const plist::Value* entries = keys.find("entries"); !entries) {
    Log("Account does not have entries in -[TARNAccount initWithDictionary:]");
  } else if (!entries->isArray()) {
    Log("Account entries are in the wrong format in -[TARNAccount initWithDictionary:]");
  } else {
    InitEntries(*entries);
  }
  if (const plist::Value* schedules = keys.find("schedules"); !schedules) {
    Log("Account does not have schedules in -[TARNAccount initWithDictionary:]");
  } else if (!schedules->isArray()) {
    Log("Account schedules are in the wrong format in -[TARNAccount initWithDictionary:]");
  } else {
    InitSchedules(*schedules);
  }

  keys.looseInteger(
      "startingCheckNumber",
      "Account does not have a starting check number in -[TARNAccount initWithDictionary:]",
      [this](std::int32_t number) { startingCheckNumber_ = number; });
  keys.looseReal("startingBalance", "", [this](double balance) { startingBalance_ = balance; });
  keys.string("password", "",
              "Account password is in the wrong format in -[TARNAccount initWithDictionary:]",
              [this](const std::string& password) { SetPassword(password); });
}

// Default types, suggestion preferences, numberCount and the statement balance.
void TARNAccount::loadPreferences(const plist::Value& dictionary) {
  const KeyReader keys(dictionary);
  keys.number("defaultDebitType", NoneDefined("defaultDebitType"), WrongFormat("defaultDebitType"),
              [this](const plist::Value& v) {
                setDefaultDebitType(accountEntryTypeForNumber(v.intValue()));
              });
  keys.number("defaultDepositType", NoneDefined("defaultDepositType"),
              WrongFormat("defaultDepositType"), [this](const plist::Value& v) {
                setDefaultDepositType(accountEntryTypeForNumber(v.intValue()));
              });
  const std::pair<const char*, std::int32_t*> styles[] = {
      {"preference_Descriptions_Style", &preference_Descriptions_Style_},
      {"preference_ToFrom_Style", &preference_ToFrom_Style_},
      {"preference_Descriptions_SomeSelection", &preference_Descriptions_SomeSelection_},
      {"preference_ToFrom_SomeSelection", &preference_ToFrom_SomeSelection_},
  };
  for (const auto& [key, field] : styles) {
    keys.number(key, NoneDefined(key), WrongFormat(key),
                [target = field](const plist::Value& v) { *target = v.intValue(); });
  }
  const std::pair<const char*, std::optional<Strings>*> lists[] = {
      {"preferredDebitDescriptions", &preferredDebitDescriptions_},
      {"preferredDepositDescriptions", &preferredDepositDescriptions_},
      {"preferredTos", &preferredTos_},
      {"preferredFroms", &preferredFroms_},
  };
  for (const auto& [key, field] : lists) {
    keys.strings(key, NoneDefined(key), WrongFormat(key), *field);
  }
  keys.number("numberCount", NoneDefined("numberCount"), WrongFormat("numberCount"),
              [this](const plist::Value& v) { numberCount_ = v.intValue(); });
  keys.looseReal("statementBalance",
                 "Account does not have a statementBalance in -[TARNAccount initWithDictionary:]",
                 [this](double balance) { setStatementBalance(balance); });
}

// The summaries replace the defaults only when there is at least one; the
// selection is an index into the list as loaded.
void TARNAccount::loadSummaries(const plist::Value& dictionary) {
  const KeyReader keys(dictionary);
  const plist::Value* summaries = keys.find("accountSummaries");
  if (!summaries) {
    Log("Account does not have any account summaries in -[TARNAccount initWithDictionary:]");
  } else if (summaries->isArray() && !summaries->arrayValue().empty()) {
    accountSummaries_.clear();
    for (const plist::Value& options : summaries->arrayValue()) {
      if (options.isDictionary()) {
        addAccountSummary(TARNAccountSummary::initWithOptionsDictionary(options, {}));
      }
    }
  }
  keys.looseInteger("selectedAccountSummary", "", [this](std::int32_t index) {
    if (static_cast<std::uint32_t>(index) < accountSummaries_.size()) {
      selectAccountSummaryAtIndex(index);
    }
  });
}

void TARNAccount::loadViewFilters(const plist::Value& dictionary) {
  const KeyReader keys(dictionary);
  ReadViewFilter(keys, "entry", entryViewFilter_);
  ReadViewFilter(keys, "reconcile", reconcileViewFilter_);
}

void TARNAccount::loadImportExportOptions(const plist::Value& dictionary) {
  const KeyReader keys(dictionary);
  const FieldReader reader(keys);
  OFXImportFields(ofxImport_, reader);
  QIFImportFields(qifImport_, reader);
  TextImportFields(textImport_, reader);
  TextExportFields(textExport_, reader);
  reader("lastFromAccount", KeyLines::kOptionQuietWhenMissing, lastFromAccount_);
  reader("lastToAccount", KeyLines::kOptionQuietWhenMissing, lastToAccount_);
}

// Smart folders and folders replace the defaults when the key holds a list.
void TARNAccount::loadFolders(const plist::Value& dictionary) {
  const KeyReader keys(dictionary);
  if (const plist::Value* smartFolders = keys.find("smartFolders");
      smartFolders && smartFolders->isArray()) {
    removeAllSmartFolders();
    for (const plist::Value& element : smartFolders->arrayValue()) {
      if (element.isDictionary()) addSmartFolder(TARNFilter::initWithDictionary(element));
    }
  }
  if (const plist::Value* folders = keys.find("folders"); folders && folders->isArray()) {
    removeAllFolders();
    for (const plist::Value& element : folders->arrayValue()) {
      auto folder = TARNAccountFolder::initWithDictionary(element);
      if (!folder) continue;
      for (const auto& entry : folder->entries()) entry->SetAccount(this);
      addFolder(std::move(folder));
    }
  }
}

plist::Value TARNAccount::asDictionary() const {
  // The tree of a whole account is built to be written and then dropped.
  plist::BulkStorageScope bulk;
  plist::Dictionary d;
  d.emplace("name", name_);
  if (currency_) d.emplace("currency", currency_->asDictionary());
  if (icon_) d.emplace("icon", *icon_);
  if (highResolutionIcon_) d.emplace("highResolutionIcon", *highResolutionIcon_);
  d.emplace("number", number_);
  d.emplace("version", version_);
  d.emplace("entries", DictionariesOf(entries_));
  d.emplace("schedules", DictionariesOf(schedules_));
  d.emplace("startingCheckNumber", startingCheckNumber_);
  d.emplace("numberCount", numberCount_);
  d.emplace("startingBalance", startingBalance_);
  d.emplace("password", password_);
  d.emplace("types", DictionariesOf(types_));
  d.emplace("inactiveTypes", DictionariesOf(inactiveTypes_));
  d.emplace("defaultDebitType", defaultDebitType_ ? defaultDebitType_->GetNumber() : -1);
  d.emplace("defaultDepositType", defaultDepositType_ ? defaultDepositType_->GetNumber() : -1);
  d.emplace("preference_Descriptions_Style", preference_Descriptions_Style_);
  d.emplace("preference_ToFrom_Style", preference_ToFrom_Style_);
  d.emplace("preference_Descriptions_SomeSelection", preference_Descriptions_SomeSelection_);
  d.emplace("preference_ToFrom_SomeSelection", preference_ToFrom_SomeSelection_);
  if (preferredDebitDescriptions_) {
    d.emplace("preferredDebitDescriptions", StringArray(*preferredDebitDescriptions_));
  }
  if (preferredDepositDescriptions_) {
    d.emplace("preferredDepositDescriptions", StringArray(*preferredDepositDescriptions_));
  }
  if (preferredTos_) d.emplace("preferredTos", StringArray(*preferredTos_));
  if (preferredFroms_) d.emplace("preferredFroms", StringArray(*preferredFroms_));
  d.emplace("statementBalance", statementBalance_);

  plist::Array summaries;
  summaries.reserve(accountSummaries_.size());
  for (const auto& summary : accountSummaries_) summaries.push_back(summary->optionsAsDictionary());
  // The index of the selection in the list; 0 when none or not in the list.
  const auto selected =
      std::find(accountSummaries_.begin(), accountSummaries_.end(), selectedAccountSummary_);
  const std::int32_t selectedIndex =
      selectedAccountSummary_ && selected != accountSummaries_.end()
          ? static_cast<std::int32_t>(selected - accountSummaries_.begin())
          : 0;
  d.emplace("accountSummaries", std::move(summaries));
  d.emplace("selectedAccountSummary", selectedIndex);

  WriteViewFilter(d, "entry", entryViewFilter_);
  WriteViewFilter(d, "reconcile", reconcileViewFilter_);
  const FieldWriter writer(d);
  OFXImportFields(ofxImport_, writer);
  QIFImportFields(qifImport_, writer);
  TextImportFields(textImport_, writer);
  TextExportFields(textExport_, writer);
  d.emplace("lastFromAccount", lastFromAccount_);
  // Stored as a flag made from the low byte, not as the number: read back, any
  // account number with a non-zero low byte becomes 1. Kept for compatibility
  // with existing files.
  d.emplace("lastToAccount", static_cast<bool>(static_cast<std::uint8_t>(lastToAccount_)));

  d.emplace("smartFolders", DictionariesOf(smartFolders_));
  d.emplace("folders", DictionariesOf(folders_));
  return plist::Value(std::move(d));
}

}  // namespace tarn
