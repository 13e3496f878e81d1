#include "tarn/account/account.h"

#include <algorithm>
#include <utility>

#include "tarn/account/account_folder.h"
#include "tarn/account/account_resources.h"
#include "tarn/account/account_upgrade.h"
#include "tarn/account/accounts_controller.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/localized.h"
#include "tarn/platform/user_defaults.h"
#include "tarn/reports/account_summary.h"

namespace tarn {

namespace {

std::shared_ptr<PFCurrency> DefaultCurrency() {
  return PFCurrency::initWithCode("USD", "US Dollar", "$", true, ",", ".", 1.0,
                                  CalendarDate::now().dateNumber());
}

std::shared_ptr<TARNFilter> DefaultSmartFolder(const char* nameKey, std::int32_t qualifier) {
  auto filter = std::make_shared<TARNFilter>();
  filter->setName(Localized(nameKey));
  auto group = std::make_shared<TARNFilterConditionGroup>();
  group->addConditionWithCategory(kFieldDate, kConditionKeepMatches, qualifier,
                                  plist::Value(plist::Array{}));
  filter->addConditionGroup(std::move(group));
  return filter;
}

}  // namespace

// The defaults are set in the order the file format lists them; the currency
// comes last.
TARNAccount::TARNAccount()
    : icon_(ImageResource("accounticon_default")),
      highResolutionIcon_(ImageResource("accounticon_default_128")),
      types_(defaultTypes()) {
  accountSummaries_ = defaultAccountSummaries();
  if (!accountSummaries_.empty()) selectedAccountSummary_ = accountSummaries_.front();

  // Both views start with an empty search and today as the custom range.
  const DateNumber today = CalendarDate::now().dateNumber();
  for (ViewFilterSettings* view : {&entryViewFilter_, &reconcileViewFilter_}) {
    view->filterData = plist::Value(std::string());
    view->dateFilterStartDate = today;
    view->dateFilterEndDate = today;
  }

  const auto systemEncoding = static_cast<std::int32_t>(DefaultCStringEncoding());
  const std::string decimalSeparator = UserDefault("NSDecimalSeparator");
  const std::string thousandsSeparator = UserDefault("NSThousandsSeparator");
  qifImport_.encoding = systemEncoding;
  qifImport_.decimalSeparator = decimalSeparator;
  qifImport_.thousandsSeparator = thousandsSeparator;
  textImport_.encoding = systemEncoding;
  textImport_.decimalSeparator = decimalSeparator;
  textImport_.thousandsSeparator = thousandsSeparator;
  textExport_.encoding = systemEncoding;

  smartFolders_ = defaultSmartFolders();
  currency_ = DefaultCurrency();
}

// Entries and types go before the rest, as the account's own records.
TARNAccount::~TARNAccount() {
  types_.clear();
  inactiveTypes_.clear();
  entries_.clear();
}

TARNAccount::Types TARNAccount::defaultTypes() {
  return TARNAccountEntryType::defaultTypes();
}

TARNAccount::Summaries TARNAccount::defaultAccountSummaries() const {
  struct Default {
    const char* name;
    std::int32_t dateRangeStyle;
    bool showDebits = true;
    bool showDeposits = true;
    std::int32_t showTaxDeductible = kSummaryShowAll;
  };
  static const Default kDefaults[] = {
      {" Custom...", kSummaryRangeFirstToLastEntry},
      {"All Entries, Month To Date", kSummaryRangeMonthToDate},
      {"All Entries, Quarter To Date", kSummaryRangeQuarterToDate},
      {"All Entries, Year To Date", kSummaryRangeYearToDate},
      {"Expenses, Month To Date", kSummaryRangeMonthToDate, true, false},
      {"Expenses, Quarter To Date", kSummaryRangeQuarterToDate, true, false},
      {"Expenses, Year To Date", kSummaryRangeYearToDate, true, false},
      {"Income, Month To Date", kSummaryRangeMonthToDate, false, true},
      {"Income, Quarter To Date", kSummaryRangeQuarterToDate, false, true},
      {"Income, Year To Date", kSummaryRangeYearToDate, false, true},
      {"Tax-Deductible, Last Year", kSummaryRangeLastYear, true, true, kSummaryShowOnly},
      {"Tax-Deductible, This Year", kSummaryRangeThisYear, true, true, kSummaryShowOnly},
  };
  Summaries summaries;
  summaries.reserve(std::size(kDefaults));
  for (const Default& settings : kDefaults) {
    auto summary = std::make_shared<TARNAccountSummary>();
    summary->setEntries(entries_);
    summary->setName(settings.name);
    summary->setDateRangeStyle(settings.dateRangeStyle);
    summary->setShowDebits(settings.showDebits);
    summary->setShowDeposits(settings.showDeposits);
    summary->setShowTaxDeductible(settings.showTaxDeductible);
    summaries.push_back(std::move(summary));
  }
  std::stable_sort(summaries.begin(), summaries.end(),
                   [](const auto& a, const auto& b) { return a->NameIsGreaterThan(*b) < 0; });
  return summaries;
}

TARNAccount::Filters TARNAccount::defaultSmartFolders() {
  return {DefaultSmartFolder("This Year", kDateDuringThisYear),
          DefaultSmartFolder("Last Year", kDateDuringLastYear)};
}

plist::Value* TARNAccount::UpdateAccountDictionary(plist::Value& dictionary) {
  return AccountDictionaryUpgrade::UpdateAccountDictionary(dictionary);
}

plist::Value* TARNAccount::UpdateAccountDictionary(plist::Value& dictionary, std::int32_t version) {
  return AccountDictionaryUpgrade::UpdateAccountDictionary(dictionary, version);
}

plist::Value* TARNAccount::UpdateAccountDictionaryFromNil(plist::Value& dictionary) {
  return AccountDictionaryUpgrade::UpdateAccountDictionaryFromNil(dictionary);
}

void TARNAccount::SetName(std::optional<std::string> name) {
  if (name) name_ = std::move(*name);
}

void TARNAccount::setIcon(std::optional<Image> icon) {
  if (icon && icon->empty()) icon.reset();
  icon_ = std::move(icon);
}

void TARNAccount::setHighResolutionIcon(std::optional<Image> icon) {
  if (icon && icon->empty()) icon.reset();
  highResolutionIcon_ = std::move(icon);
}

void TARNAccount::setCurrency(std::shared_ptr<PFCurrency> currency) {
  currency_ = std::move(currency);
}

void TARNAccount::SetPassword(std::optional<std::string> password) {
  if (!password) return;
  password_ = std::move(*password);
  if (password_.empty()) authenticated_ = true;
}

bool TARNAccount::Authenticate(const std::optional<std::string>& password) {
  // An account always holds a password string (empty for none), so the
  // "no password at all" case of older hosts cannot arise here.
  if (!password) {
    authenticated_ = false;
  } else if (*password == password_) {
    authenticated_ = true;
  }
  return authenticated_;
}

void TARNAccount::setDefaultDebitType(std::shared_ptr<TARNAccountEntryType> type) {
  defaultDebitType_ = std::move(type);
}

void TARNAccount::setDefaultDepositType(std::shared_ptr<TARNAccountEntryType> type) {
  defaultDepositType_ = std::move(type);
}

std::shared_ptr<TARNAccountEntryType> TARNAccount::accountEntryTypeForNumber(
    std::int32_t number) const {
  // Type lists are short (a dozen or two), so a scan beats a map here.
  for (const Types* list : {&types_, &inactiveTypes_}) {
    for (const auto& type : *list) {
      if (type && type->GetNumber() == number) return type;
    }
  }
  return nullptr;
}

std::shared_ptr<TARNAccountEntryCategory> TARNAccount::accountEntryCategoryForNumber(
    std::int32_t number) const {
  if (accountsController_) return accountsController_->categoryWithNumber(number);
  for (const auto& category : categories_) {
    if (category && category->number() == number) return category;
  }
  return nullptr;
}

void TARNAccount::addAccountSummary(std::shared_ptr<TARNAccountSummary> summary) {
  if (summary) accountSummaries_.push_back(std::move(summary));
}

void TARNAccount::removeAccountSummary(const std::shared_ptr<TARNAccountSummary>& summary) {
  std::erase(accountSummaries_, summary);
}

void TARNAccount::selectAccountSummary(std::shared_ptr<TARNAccountSummary> summary) {
  selectedAccountSummary_ = std::move(summary);
}

void TARNAccount::selectAccountSummaryAtIndex(std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= accountSummaries_.size()) return;
  selectedAccountSummary_ = accountSummaries_[static_cast<std::size_t>(index)];
}

}  // namespace tarn
