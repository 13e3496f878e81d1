// The account document: one check register with its entries, scheduled
// entries, entry types, summaries, folders, smart folders, view-filter
// settings and the remembered import and export options. The account owns
// every record it holds; its entries and schedules point back at it. It refers
// to the host's accounts controller (shared currencies and categories) and to
// the selected folder and smart folder without owning them.
//
// The settings the account remembers are plain values of account_settings.h.
// The operations follow by area, each under a heading that names the file
// implementing it:
//   making, loading and saving         account.cpp, account_dictionary.cpp
//   identity and appearance            account.cpp
//   entries and schedules              account_lists.cpp
//   register settings and password     account.cpp
//   entry types and categories         account.cpp
//   suggestion-list preferences        account.cpp
//   account summaries                  account.cpp
//   folders and smart folders          account_lists.cpp
//   view filters                       account_view_filters.cpp
//   import and export options          account_settings.h
//   entry sets and balances            account_balances.cpp
//   numbering                          account_numbering.cpp
//   look-ups, due schedules            account_lookups.cpp
//   suggestion lists, imports          account_suggestions.cpp
//   sorting                            account_sorting.cpp
//   export                             account_export_qif.cpp, account_export_text.cpp
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tarn/account/account_settings.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/value.h"

namespace tarn {

class PFCurrency;
class TARNAccountEntry;
class TARNAccountEntryCategory;
class TARNAccountEntryType;
class TARNAccountFolder;
class TARNAccountSchedule;
class TARNAccountSummary;
class TARNAccountsController;
class TARNFilter;
struct TARNExportOptions;

class TARNAccount {
 public:
  using Entries = std::vector<std::shared_ptr<TARNAccountEntry>>;
  using Schedules = std::vector<std::shared_ptr<TARNAccountSchedule>>;
  using Types = std::vector<std::shared_ptr<TARNAccountEntryType>>;
  using Categories = std::vector<std::shared_ptr<TARNAccountEntryCategory>>;
  using Summaries = std::vector<std::shared_ptr<TARNAccountSummary>>;
  using Filters = std::vector<std::shared_ptr<TARNFilter>>;
  using Folders = std::vector<std::shared_ptr<TARNAccountFolder>>;
  using Strings = std::vector<std::string>;
  // Opaque image bytes (TIFF); the core never decodes them.
  using Image = plist::Data;

  // ---------------------------------------------------------------------
  // Making, loading and saving (account.cpp, account_dictionary.cpp)
  // ---------------------------------------------------------------------

  // A new empty account with every default: the default types, summaries and
  // smart folders, a US dollar currency, today's dates, the default icons.
  TARNAccount();
  ~TARNAccount();
  TARNAccount(const TARNAccount&) = delete;
  TARNAccount& operator=(const TARNAccount&) = delete;

  // A new account from a stored (already upgraded) account dictionary, the
  // defaults overlaid key by key. Never fails: a missing or malformed key is
  // logged and keeps its default. The controller is the host's and is not
  // owned; it may be nullptr.
  static std::shared_ptr<TARNAccount> initWithDictionary(const plist::Value& dictionary,
                                                         TARNAccountsController* controller);
  // The account dictionary to store. Nothing of the account changes.
  plist::Value asDictionary() const;

  // Builds the entries (schedules) of an array of stored dictionaries and
  // installs them. Returns the installed list, or nullptr (logged, and no
  // change) when the value is no array.
  const Entries* InitEntries(const plist::Value& array);
  const Schedules* InitSchedules(const plist::Value& array);

  // The format upgrade, run by the host on every stored dictionary before
  // initWithDictionary. Each returns the dictionary, or nullptr when there is
  // none to upgrade.
  static plist::Value* UpdateAccountDictionary(plist::Value& dictionary);
  static plist::Value* UpdateAccountDictionary(plist::Value& dictionary, std::int32_t version);
  static plist::Value* UpdateAccountDictionaryFromNil(plist::Value& dictionary);

  // The defaults of a new account, built afresh at each call.
  static Types defaultTypes();
  Summaries defaultAccountSummaries() const;
  // Categories live with the accounts controller; an account has none of its own.
  static Categories defaultCategories() { return {}; }
  static Filters defaultSmartFolders();

  // ---------------------------------------------------------------------
  // Identity and appearance (account.cpp)
  // ---------------------------------------------------------------------

  TARNAccountsController* accountsController() const { return accountsController_; }
  void setAccountsController(TARNAccountsController* controller) {
    accountsController_ = controller;
  }

  std::int32_t GetNumber() const { return number_; }
  void SetNumber(std::int32_t number) { number_ = number; }
  std::int32_t GetVersion() const { return version_; }
  void SetVersion(std::int32_t version) { version_ = version; }
  const std::string& GetName() const { return name_; }
  // nullopt is ignored.
  void SetName(std::optional<std::string> name);

  // nullopt (or empty bytes, from which no image can be made) means no icon.
  const std::optional<Image>& icon() const { return icon_; }
  void setIcon(std::optional<Image> icon);
  const std::optional<Image>& highResolutionIcon() const { return highResolutionIcon_; }
  void setHighResolutionIcon(std::optional<Image> icon);

  const std::shared_ptr<PFCurrency>& currency() const { return currency_; }
  void setCurrency(std::shared_ptr<PFCurrency> currency);

  bool displayExpanded() const { return displayExpanded_; }
  void setDisplayExpanded(bool expanded) { displayExpanded_ = expanded; }

  // ---------------------------------------------------------------------
  // Entries and schedules (account_lists.cpp)
  // ---------------------------------------------------------------------

  // The register itself, in the order held.
  Entries& GetEntries() { return entries_; }
  const Entries& GetEntries() const { return entries_; }
  // Installs the list and points every entry at this account.
  void SetEntries(Entries entries);
  // Gives the entry this account and appends it to the selected folder, or to
  // the register when no folder is selected. nullptr is ignored.
  void AddEntry(const std::shared_ptr<TARNAccountEntry>& entry);
  // Removes the entry from the register when it is there; otherwise from every
  // folder that holds it. nullptr is ignored.
  void RemoveEntry(const std::shared_ptr<TARNAccountEntry>& entry);

  Schedules& GetSchedules() { return schedules_; }
  const Schedules& GetSchedules() const { return schedules_; }
  // Installs the list and points every schedule at this account.
  void SetSchedules(Schedules schedules);

  // Highest entry number handed out so far.
  std::int32_t GetNumberCount() const { return numberCount_; }
  void SetNumberCount(std::int32_t count) { numberCount_ = count; }
  // Increments numberCount and returns it: the number for a new entry.
  std::int32_t NextAvailableNumber() { return ++numberCount_; }

  // ---------------------------------------------------------------------
  // Register settings and password (account.cpp)
  // ---------------------------------------------------------------------

  std::int32_t GetStartingCheckNumber() const { return startingCheckNumber_; }
  void SetStartingCheckNumber(std::int32_t number) { startingCheckNumber_ = number; }
  double GetStartingBalance() const { return startingBalance_; }
  void SetStartingBalance(double balance) { startingBalance_ = balance; }
  double statementBalance() const { return statementBalance_; }
  void setStatementBalance(double balance) { statementBalance_ = balance; }

  // The stored password ("" for none). SetPassword ignores nullopt; an empty
  // password authenticates the account at once.
  const std::string& GetPassword() const { return password_; }
  void SetPassword(std::optional<std::string> password);
  bool IsAuthenticated() const { return authenticated_; }
  // The empty password means none.
  bool HasPassword() const { return !password_.empty(); }
  // nullopt signs the account out; the stored password signs it in; any
  // other text leaves the state as it was. Returns the state.
  bool Authenticate(const std::optional<std::string>& password);

  // ---------------------------------------------------------------------
  // Entry types and categories (account.cpp)
  // ---------------------------------------------------------------------

  Types& types() { return types_; }
  const Types& types() const { return types_; }
  Types& inactiveTypes() { return inactiveTypes_; }
  const Types& inactiveTypes() const { return inactiveTypes_; }
  const std::shared_ptr<TARNAccountEntryType>& defaultDebitType() const {
    return defaultDebitType_;
  }
  void setDefaultDebitType(std::shared_ptr<TARNAccountEntryType> type);
  const std::shared_ptr<TARNAccountEntryType>& defaultDepositType() const {
    return defaultDepositType_;
  }
  void setDefaultDepositType(std::shared_ptr<TARNAccountEntryType> type);

  // Local categories: used only when there is no accounts controller.
  Categories& categories() { return categories_; }
  const Categories& categories() const { return categories_; }
  Categories& inactiveCategories() { return inactiveCategories_; }
  const Categories& inactiveCategories() const { return inactiveCategories_; }

  // Searches the active types, then the inactive ones; nullptr when absent.
  std::shared_ptr<TARNAccountEntryType> accountEntryTypeForNumber(std::int32_t number) const;
  // Through the accounts controller when there is one, else among the local
  // categories; nullptr when absent.
  std::shared_ptr<TARNAccountEntryCategory> accountEntryCategoryForNumber(
      std::int32_t number) const;

  // ---------------------------------------------------------------------
  // Suggestion-list preferences (account.cpp)
  // ---------------------------------------------------------------------

  std::int32_t GetPreference_Descriptions_Style() const { return preference_Descriptions_Style_; }
  void SetPreference_Descriptions_Style(std::int32_t style) {
    preference_Descriptions_Style_ = style;
  }
  std::int32_t GetPreference_ToFrom_Style() const { return preference_ToFrom_Style_; }
  void SetPreference_ToFrom_Style(std::int32_t style) { preference_ToFrom_Style_ = style; }
  std::int32_t GetPreference_Descriptions_SomeSelection() const {
    return preference_Descriptions_SomeSelection_;
  }
  void SetPreference_Descriptions_SomeSelection(std::int32_t count) {
    preference_Descriptions_SomeSelection_ = count;
  }
  std::int32_t GetPreference_ToFrom_SomeSelection() const {
    return preference_ToFrom_SomeSelection_;
  }
  void SetPreference_ToFrom_SomeSelection(std::int32_t count) {
    preference_ToFrom_SomeSelection_ = count;
  }

  // The user's own suggestion lists; nullopt until the user makes one.
  const std::optional<Strings>& preferredDebitDescriptions() const {
    return preferredDebitDescriptions_;
  }
  void SetPreferredDebitDescriptions(std::optional<Strings> list) {
    preferredDebitDescriptions_ = std::move(list);
  }
  const std::optional<Strings>& preferredDepositDescriptions() const {
    return preferredDepositDescriptions_;
  }
  void SetPreferredDepositDescriptions(std::optional<Strings> list) {
    preferredDepositDescriptions_ = std::move(list);
  }
  const std::optional<Strings>& preferredTos() const { return preferredTos_; }
  void SetPreferredTos(std::optional<Strings> list) { preferredTos_ = std::move(list); }
  const std::optional<Strings>& preferredFroms() const { return preferredFroms_; }
  void SetPreferredFroms(std::optional<Strings> list) { preferredFroms_ = std::move(list); }

  // ---------------------------------------------------------------------
  // Account summaries (account.cpp)
  // ---------------------------------------------------------------------

  Summaries& accountSummaries() { return accountSummaries_; }
  const Summaries& accountSummaries() const { return accountSummaries_; }
  // The summary shown; it is kept alive even after leaving the list.
  const std::shared_ptr<TARNAccountSummary>& selectedAccountSummary() const {
    return selectedAccountSummary_;
  }
  // Appends; nullptr is ignored.
  void addAccountSummary(std::shared_ptr<TARNAccountSummary> summary);
  // Removes every occurrence; ignored when absent.
  void removeAccountSummary(const std::shared_ptr<TARNAccountSummary>& summary);
  void selectAccountSummary(std::shared_ptr<TARNAccountSummary> summary);
  // Ignored when the index is negative or not below the count.
  void selectAccountSummaryAtIndex(std::int32_t index);

  // ---------------------------------------------------------------------
  // Folders and smart folders (account_lists.cpp)
  // ---------------------------------------------------------------------

  Filters& smartFolders() { return smartFolders_; }
  const Filters& smartFolders() const { return smartFolders_; }
  // Ignored for nullptr and for a smart folder already in the list.
  void addSmartFolder(std::shared_ptr<TARNFilter> smartFolder);
  // Ignored when absent.
  void removeSmartFolder(const std::shared_ptr<TARNFilter>& smartFolder);
  // Ignored when negative or not below the count.
  void removeSmartFolderAtIndex(std::int32_t index);
  void removeAllSmartFolders() { smartFolders_.clear(); }

  Folders& folders() { return folders_; }
  const Folders& folders() const { return folders_; }
  // Ignored for nullptr and for a folder already in the list.
  void addFolder(std::shared_ptr<TARNAccountFolder> folder);
  void removeFolder(const std::shared_ptr<TARNAccountFolder>& folder);
  void removeFolderAtIndex(std::int32_t index);
  void removeAllFolders() { folders_.clear(); }
  // Installs the list and points every folder entry at this account.
  void SetFolders(Folders folders);

  // The smart folder and folder selected in the window, or nullptr. The
  // account does not keep them alive: one that its owner dropped reads as
  // nullptr, and one removed from a list stays selected until deselected.
  std::shared_ptr<TARNFilter> smartFolder() const { return smartFolder_.lock(); }
  void setSmartFolder(const std::shared_ptr<TARNFilter>& smartFolder) {
    smartFolder_ = smartFolder;
  }
  std::shared_ptr<TARNAccountFolder> folder() const { return folder_.lock(); }
  void setFolder(const std::shared_ptr<TARNAccountFolder>& folder) { folder_ = folder; }

  // ---------------------------------------------------------------------
  // View filters (account_view_filters.cpp)
  // ---------------------------------------------------------------------

  // A new filter from the settings of the entry view (1) or reconcile view
  // (2): the search, then the date range, resolved and tax-deductible
  // conditions, in one group where all must hold. Other view types have no
  // settings and give a filter without conditions.
  std::shared_ptr<TARNFilter> filterForViewType(std::int32_t viewType) const;
  std::shared_ptr<TARNFilter> entryFilter() const { return filterForViewType(kEntryViewType); }
  std::shared_ptr<TARNFilter> reconcileFilter() const {
    return filterForViewType(kReconcileViewType);
  }
  // What each view shows: the selected folder's entries through the view
  // filter; or, with no folder selected, the register through the view filter
  // and then through the selected smart folder.
  Entries entryFilteredEntries() const;
  Entries reconcileFilteredEntries() const;

  // The settings of each view as one value. Setting them is all it takes:
  // the next filter of that view is built from them.
  const ViewFilterSettings& entryViewFilterSettings() const { return entryViewFilter_; }
  void setEntryViewFilterSettings(ViewFilterSettings settings) {
    entryViewFilter_ = std::move(settings);
  }
  const ViewFilterSettings& reconcileViewFilterSettings() const { return reconcileViewFilter_; }
  void setReconcileViewFilterSettings(ViewFilterSettings settings) {
    reconcileViewFilter_ = std::move(settings);
  }
  // A new filter from any settings, as filterForViewType builds it.
  std::shared_ptr<TARNFilter> filterForViewFilterSettings(const ViewFilterSettings& settings) const;

  // The settings field by field. The search text reads nil as "".
  std::int32_t entryFilterType() const { return entryViewFilter_.filterType; }
  void setEntryFilterType(std::int32_t v) { entryViewFilter_.filterType = v; }
  const plist::Value& entryFilterData() const { return entryViewFilter_.filterData; }
  void setEntryFilterData(plist::Value v) { entryViewFilter_.filterData = std::move(v); }
  std::int32_t entryResolvedFilterType() const { return entryViewFilter_.resolvedFilterType; }
  void setEntryResolvedFilterType(std::int32_t v) { entryViewFilter_.resolvedFilterType = v; }
  std::int32_t entryTaxDeductibleFilterType() const {
    return entryViewFilter_.taxDeductibleFilterType;
  }
  void setEntryTaxDeductibleFilterType(std::int32_t v) {
    entryViewFilter_.taxDeductibleFilterType = v;
  }
  std::int32_t entryDateFilterType() const { return entryViewFilter_.dateFilterType; }
  void setEntryDateFilterType(std::int32_t v) { entryViewFilter_.dateFilterType = v; }
  DateNumber entryDateFilterStartDate() const { return entryViewFilter_.dateFilterStartDate; }
  void setEntryDateFilterStartDate(DateNumber v) { entryViewFilter_.dateFilterStartDate = v; }
  DateNumber entryDateFilterEndDate() const { return entryViewFilter_.dateFilterEndDate; }
  void setEntryDateFilterEndDate(DateNumber v) { entryViewFilter_.dateFilterEndDate = v; }

  std::int32_t reconcileFilterType() const { return reconcileViewFilter_.filterType; }
  void setReconcileFilterType(std::int32_t v) { reconcileViewFilter_.filterType = v; }
  const plist::Value& reconcileFilterData() const { return reconcileViewFilter_.filterData; }
  void setReconcileFilterData(plist::Value v) { reconcileViewFilter_.filterData = std::move(v); }
  std::int32_t reconcileResolvedFilterType() const {
    return reconcileViewFilter_.resolvedFilterType;
  }
  void setReconcileResolvedFilterType(std::int32_t v) {
    reconcileViewFilter_.resolvedFilterType = v;
  }
  std::int32_t reconcileTaxDeductibleFilterType() const {
    return reconcileViewFilter_.taxDeductibleFilterType;
  }
  void setReconcileTaxDeductibleFilterType(std::int32_t v) {
    reconcileViewFilter_.taxDeductibleFilterType = v;
  }
  std::int32_t reconcileDateFilterType() const { return reconcileViewFilter_.dateFilterType; }
  void setReconcileDateFilterType(std::int32_t v) { reconcileViewFilter_.dateFilterType = v; }
  DateNumber reconcileDateFilterStartDate() const {
    return reconcileViewFilter_.dateFilterStartDate;
  }
  void setReconcileDateFilterStartDate(DateNumber v) {
    reconcileViewFilter_.dateFilterStartDate = v;
  }
  DateNumber reconcileDateFilterEndDate() const { return reconcileViewFilter_.dateFilterEndDate; }
  void setReconcileDateFilterEndDate(DateNumber v) { reconcileViewFilter_.dateFilterEndDate = v; }

  // ---------------------------------------------------------------------
  // Remembered import and export options (account_settings.h)
  // ---------------------------------------------------------------------

  // Each group as one value, for the importers and the export panel.
  const OFXImportSettings& ofxImportSettings() const { return ofxImport_; }
  void setOFXImportSettings(OFXImportSettings settings) { ofxImport_ = std::move(settings); }
  const QIFImportSettings& qifImportSettings() const { return qifImport_; }
  void setQIFImportSettings(QIFImportSettings settings) { qifImport_ = std::move(settings); }
  const TextImportSettings& textImportSettings() const { return textImport_; }
  void setTextImportSettings(TextImportSettings settings) { textImport_ = std::move(settings); }
  const TextExportSettings& textExportSettings() const { return textExport_; }
  void setTextExportSettings(TextExportSettings settings) { textExport_ = std::move(settings); }

  // The same options field by field.
  bool GetOFXImportZeroAmountsAsDeposits() const { return ofxImport_.zeroAmountsAsDeposits; }
  void SetOFXImportZeroAmountsAsDeposits(bool v) { ofxImport_.zeroAmountsAsDeposits = v; }
  std::int32_t GetOFXImport_SwapOptions_Name() const { return ofxImport_.swapName; }
  void SetOFXImport_SwapOptions_Name(std::int32_t v) { ofxImport_.swapName = v; }
  std::int32_t GetOFXImport_SwapOptions_Payee() const { return ofxImport_.swapPayee; }
  void SetOFXImport_SwapOptions_Payee(std::int32_t v) { ofxImport_.swapPayee = v; }
  std::int32_t GetOFXImport_SwapOptions_Memo() const { return ofxImport_.swapMemo; }
  void SetOFXImport_SwapOptions_Memo(std::int32_t v) { ofxImport_.swapMemo = v; }
  std::int32_t GetOFXImport_SwapOptions_TransactionType() const {
    return ofxImport_.swapTransactionType;
  }
  void SetOFXImport_SwapOptions_TransactionType(std::int32_t v) {
    ofxImport_.swapTransactionType = v;
  }
  std::int32_t GetOFXImport_SwapOptions_ReferenceNumber() const {
    return ofxImport_.swapReferenceNumber;
  }
  void SetOFXImport_SwapOptions_ReferenceNumber(std::int32_t v) {
    ofxImport_.swapReferenceNumber = v;
  }

  std::int32_t GetQIFImportEncoding() const { return qifImport_.encoding; }
  void SetQIFImportEncoding(std::int32_t v) { qifImport_.encoding = v; }
  std::int32_t GetQIFImportDateFormat() const { return qifImport_.dateFormat; }
  void SetQIFImportDateFormat(std::int32_t v) { qifImport_.dateFormat = v; }
  const std::string& GetQIFImportDecimalSeparator() const { return qifImport_.decimalSeparator; }
  void SetQIFImportDecimalSeparator(std::string v) { qifImport_.decimalSeparator = std::move(v); }
  const std::string& GetQIFImportThousandsSeparator() const {
    return qifImport_.thousandsSeparator;
  }
  void SetQIFImportThousandsSeparator(std::string v) {
    qifImport_.thousandsSeparator = std::move(v);
  }
  bool GetQIFImportZeroAmountsAsDeposits() const { return qifImport_.zeroAmountsAsDeposits; }
  void SetQIFImportZeroAmountsAsDeposits(bool v) { qifImport_.zeroAmountsAsDeposits = v; }
  bool GetQIFImportAllCategories() const { return qifImport_.allCategories; }
  void SetQIFImportAllCategories(bool v) { qifImport_.allCategories = v; }
  bool GetQIFImportSplitLineItems() const { return qifImport_.splitLineItems; }
  void SetQIFImportSplitLineItems(bool v) { qifImport_.splitLineItems = v; }
  std::int32_t GetQIFImport_SwapOptions_ToFrom() const { return qifImport_.swapToFrom; }
  void SetQIFImport_SwapOptions_ToFrom(std::int32_t v) { qifImport_.swapToFrom = v; }
  std::int32_t GetQIFImport_SwapOptions_Category() const { return qifImport_.swapCategory; }
  void SetQIFImport_SwapOptions_Category(std::int32_t v) { qifImport_.swapCategory = v; }
  std::int32_t GetQIFImport_SwapOptions_Description() const { return qifImport_.swapDescription; }
  void SetQIFImport_SwapOptions_Description(std::int32_t v) { qifImport_.swapDescription = v; }

  std::int32_t GetTextImportEncoding() const { return textImport_.encoding; }
  void SetTextImportEncoding(std::int32_t v) { textImport_.encoding = v; }
  const std::optional<std::vector<std::int32_t>>& GetTextImportDataLayout() const {
    return textImport_.dataLayout;
  }
  void SetTextImportDataLayout(std::optional<std::vector<std::int32_t>> v) {
    textImport_.dataLayout = std::move(v);
  }
  bool GetTextImportSkipFirstRow() const { return textImport_.skipFirstRow; }
  void SetTextImportSkipFirstRow(bool v) { textImport_.skipFirstRow = v; }
  std::int32_t GetTextImportDataFormat() const { return textImport_.dataFormat; }
  void SetTextImportDataFormat(std::int32_t v) { textImport_.dataFormat = v; }
  std::int32_t GetTextImportDateFormat() const { return textImport_.dateFormat; }
  void SetTextImportDateFormat(std::int32_t v) { textImport_.dateFormat = v; }
  const std::string& GetTextImportDecimalSeparator() const { return textImport_.decimalSeparator; }
  void SetTextImportDecimalSeparator(std::string v) { textImport_.decimalSeparator = std::move(v); }
  const std::string& GetTextImportThousandsSeparator() const {
    return textImport_.thousandsSeparator;
  }
  void SetTextImportThousandsSeparator(std::string v) {
    textImport_.thousandsSeparator = std::move(v);
  }
  std::uint8_t GetTextImportZeroAmountsAsDeposits() const {
    return textImport_.zeroAmountsAsDeposits;
  }
  void SetTextImportZeroAmountsAsDeposits(std::uint8_t v) { textImport_.zeroAmountsAsDeposits = v; }

  std::int32_t textExport_ExportType() const { return textExport_.exportType; }
  void setTextExport_ExportType(std::int32_t v) { textExport_.exportType = v; }
  std::int32_t textExport_Encoding() const { return textExport_.encoding; }
  void setTextExport_Encoding(std::int32_t v) { textExport_.encoding = v; }

  // Account numbers last used as the two ends of a transfer; -1 for none.
  std::int32_t lastFromAccount() const { return lastFromAccount_; }
  void setLastFromAccount(std::int32_t number) { lastFromAccount_ = number; }
  std::int32_t lastToAccount() const { return lastToAccount_; }
  void setLastToAccount(std::int32_t number) { lastToAccount_ = number; }

  // ---------------------------------------------------------------------
  // Entry sets and balances (account_balances.cpp)
  // ---------------------------------------------------------------------

  // The working set of every balance, total, look-up and check number is
  // GetAllEntries: the register followed by each folder's entries, in folder
  // order.
  Entries GetAllEntries() const;
  Entries GetDebits() const;
  Entries GetDeposits() const;

  // Void entries never count. Each balance is one pass over the entries.
  // 0.0 while the account is not authenticated.
  double GetBalance() const;
  // Entries dated on or before today; no authentication test.
  double GetTodaysBalance() const;
  double GetResolvedBalance() const;
  double GetUnresolvedBalance() const;
  double GetRunningBalanceBeforeDate(DateNumber date) const;
  double GetRunningBalanceThroughDate(DateNumber date) const;
  // The balance after the entry in register order: entries of earlier days,
  // and on the entry's own day checks by check number ahead of the other
  // entries by entering order. 0.0 for nullptr.
  double GetRunningBalanceAtEntry(const TARNAccountEntry* entry) const;
  // Sums of the amounts of debits (deposits); no starting balance.
  double GetDebitsTotal() const;
  double GetDepositsTotal() const;
  // Stores in every entry, void ones included, the balance after it in date
  // and check order. One sort and one pass.
  void CacheRunningBalances();

  // ---------------------------------------------------------------------
  // Numbering (account_numbering.cpp)
  // ---------------------------------------------------------------------

  // Linked deposits (the receiving half of a transfer) carry the other
  // account's check number and never count.
  // One more than the highest schedule number; 0 without schedules.
  std::int32_t NextAvailableScheduleNumber() const;
  // The highest check number of any entry, check or not; startingCheckNumber
  // - 1 when that is higher; -1 when there is nothing.
  std::int32_t HighestCheckNumber() const;
  std::int32_t NextAvailableCheckNumber() const;
  // The first free check number after the entry's, looking for a gap among
  // the register's checks; nullptr asks for the next after the highest.
  std::int32_t NextAvailableCheckNumberAfterEntry(const TARNAccountEntry* entry) const;
  // The smallest check number above n, or the highest check number.
  std::int32_t NextCheckNumberAfterCheckNumber(std::int32_t n) const;
  // One more than the highest number among the active and inactive types
  // (local categories and their children); 0 when none is 0 or more.
  std::int32_t nextAvailableTypeNumber() const;
  std::int32_t nextAvailableCategoryNumber() const;

  // ---------------------------------------------------------------------
  // Look-ups and pending scheduled entries (account_lookups.cpp)
  // ---------------------------------------------------------------------

  // Over GetAllEntries; nullptr when absent.
  std::shared_ptr<TARNAccountEntry> GetEntryWithNumber(std::int32_t number) const;
  // Smallest (largest) date; the first in list order among equal dates.
  std::shared_ptr<TARNAccountEntry> GetFirstEntry() const;
  std::shared_ptr<TARNAccountEntry> GetLastEntry() const;
  // Highest entry number, of all entries or of the checks only.
  std::shared_ptr<TARNAccountEntry> GetLastEnteredEntry() const;
  std::shared_ptr<TARNAccountEntry> GetLastEnteredCheck() const;
  std::shared_ptr<TARNAccountSchedule> ScheduleForNumber(std::int32_t number) const;
  void AddSchedule(const std::shared_ptr<TARNAccountSchedule>& schedule);
  void RemoveSchedule(const std::shared_ptr<TARNAccountSchedule>& schedule);
  // Exact (case-sensitive) name among the active, then the inactive types of
  // that direction.
  std::shared_ptr<TARNAccountEntryType> debitEntryTypeForName(const std::string& name) const;
  std::shared_ptr<TARNAccountEntryType> depositEntryTypeForName(const std::string& name) const;
  // The active types of each direction, in list order.
  Types GetDebitTypes() const;
  Types GetDepositTypes() const;
  // Moves the type to the inactive list, first clearing the default that
  // names it. nullptr is ignored.
  void deactivateType(const std::shared_ptr<TARNAccountEntryType>& type);
  void deactivateCategory(const std::shared_ptr<TARNAccountEntryCategory>& category);

  // Scheduled entries that have come due.
  bool HasPendingScheduledEntries() const;
  // 0 for nullopt.
  std::int32_t numberOfPendingScheduledEntriesForDate(
      const std::optional<CalendarDate>& date) const;

  // ---------------------------------------------------------------------
  // Suggestion lists and imports between accounts (account_suggestions.cpp)
  // ---------------------------------------------------------------------

  // The lists of the entry sheet. Empty while the account is not
  // authenticated. _All: every distinct non-empty
  // text (case-insensitively; the first spelling wins), sorted
  // case-insensitively. _Some: the most recently entered distinct texts,
  // newest first, stopping after the addition made with n already in the
  // list (so up to n + 1). _Specific: the user's own list as stored.
  Strings DebitDescriptions_All() const;
  Strings DebitDescriptions_Some(std::int32_t n) const;
  const std::optional<Strings>& DebitDescriptions_Specific() const;
  Strings DepositDescriptions_All() const;
  Strings DepositDescriptions_Some(std::int32_t n) const;
  const std::optional<Strings>& DepositDescriptions_Specific() const;
  Strings Tos_All() const;
  Strings Tos_Some(std::int32_t n) const;
  const std::optional<Strings>& Tos_Specific() const;
  Strings Froms_All() const;
  Strings Froms_Some(std::int32_t n) const;
  const std::optional<Strings>& Froms_Specific() const;
  // The list the style preference picks: 0 _All, 1 _Some with the stored
  // count, 2 _Specific; nullopt for any other style.
  std::optional<Strings> GetPreferredDebitDescriptions() const;
  std::optional<Strings> GetPreferredDepositDescriptions() const;
  std::optional<Strings> GetPreferredTos() const;
  std::optional<Strings> GetPreferredFroms() const;

  // Imports from another account: nothing unless the other account exists
  // and is authenticated. Types whose names this
  // account lacks (case-insensitively) are copied with new numbers; texts of
  // the user's lists are appended when not already there.
  void importTypesFromAccount(const TARNAccount* other);
  void importDescriptionsFromAccount(const TARNAccount* other);
  void importToFromsFromAccount(const TARNAccount* other);

  // ---------------------------------------------------------------------
  // Sorting (account_sorting.cpp)
  // ---------------------------------------------------------------------

  // Column codes of SortBy and SortEntries.
  static constexpr std::int32_t kSortColumnCheckNumber = 0;
  static constexpr std::int32_t kSortColumnDate = 1;
  static constexpr std::int32_t kSortColumnType = 2;
  static constexpr std::int32_t kSortColumnDescription = 3;
  static constexpr std::int32_t kSortColumnAmount = 4;
  static constexpr std::int32_t kSortColumnResolved = 5;
  static constexpr std::int32_t kSortColumnToFrom = 6;

  // Sorts the selected folder (or the register) in place by a column, entry
  // number breaking ties.
  void SortBy(std::int32_t column, bool descending);
  // The same order applied to any list of entries (a filtered view, say).
  static void SortEntries(Entries& list, std::int32_t column, bool descending);
  // Orders of accounts for the host's list: 1, 0 or -1.
  int NameIsGreaterThan(const TARNAccount& other) const;
  int NameIsGreaterThan_Reversed(const TARNAccount& other) const;
  int NumberIsGreaterThan(const TARNAccount& other) const;
  int BalanceIsGreaterThan(const TARNAccount& other) const;
  int BalanceIsGreaterThan_Reversed(const TARNAccount& other) const;

  // ---------------------------------------------------------------------
  // Export (account_export_qif.cpp, account_export_text.cpp)
  // ---------------------------------------------------------------------

  // The register, or what the options' filter keeps of it, in date and check
  // order; the starting balance leads unless a filter is given. nullptr
  // options mean the defaults.
  std::string asQIFStringWithOptions(const TARNExportOptions* options) const;
  std::string asTabDelimitedStringWithOptions(const TARNExportOptions* options) const;

 private:
  // Reading of the stored dictionary, one group of keys at a time
  // (account_dictionary.cpp).
  void loadIdentity(const plist::Value& dictionary);
  void loadTypesAndRecords(const plist::Value& dictionary);
  void loadPreferences(const plist::Value& dictionary);
  void loadSummaries(const plist::Value& dictionary);
  void loadViewFilters(const plist::Value& dictionary);
  void loadImportExportOptions(const plist::Value& dictionary);
  void loadFolders(const plist::Value& dictionary);
  void readCurrency(const plist::Value* value);

  // The filtered view of one view type, and the date span of the register
  // that its "all entries" range covers (account_view_filters.cpp).
  Entries filteredEntries(std::int32_t viewType) const;
  std::pair<DateNumber, DateNumber> firstAndLastRegisterDates() const;

  // Identity, records and register settings.
  TARNAccountsController* accountsController_ = nullptr;
  std::int32_t number_ = -1;
  std::int32_t version_ = 8;
  std::string name_;
  std::optional<Image> icon_;
  std::optional<Image> highResolutionIcon_;
  std::shared_ptr<PFCurrency> currency_;
  Entries entries_;
  Types types_;
  Types inactiveTypes_;
  std::shared_ptr<TARNAccountEntryType> defaultDebitType_;
  std::shared_ptr<TARNAccountEntryType> defaultDepositType_;
  Categories categories_;
  Categories inactiveCategories_;
  std::int32_t startingCheckNumber_ = 1;
  double startingBalance_ = 0.0;
  std::string password_;
  bool authenticated_ = false;
  Schedules schedules_;
  std::int32_t numberCount_ = 0;
  // Suggestion preferences and summaries.
  std::int32_t preference_Descriptions_Style_ = 1;
  std::int32_t preference_ToFrom_Style_ = 1;
  std::int32_t preference_ToFrom_SomeSelection_ = 50;
  std::int32_t preference_Descriptions_SomeSelection_ = 50;
  std::optional<Strings> preferredDebitDescriptions_;
  std::optional<Strings> preferredDepositDescriptions_;
  std::optional<Strings> preferredTos_;
  std::optional<Strings> preferredFroms_;
  Summaries accountSummaries_;
  std::shared_ptr<TARNAccountSummary> selectedAccountSummary_;
  double statementBalance_ = 0.0;

  // Remembered settings, one value per group.
  ViewFilterSettings entryViewFilter_;
  ViewFilterSettings reconcileViewFilter_;
  OFXImportSettings ofxImport_;
  QIFImportSettings qifImport_;
  TextImportSettings textImport_;
  TextExportSettings textExport_;
  std::int32_t lastFromAccount_ = -1;
  std::int32_t lastToAccount_ = -1;

  // Folders, smart folders and the window's selections.
  Filters smartFolders_;
  Folders folders_;
  std::weak_ptr<TARNFilter> smartFolder_;
  std::weak_ptr<TARNAccountFolder> folder_;
  bool displayExpanded_ = false;
};

}  // namespace tarn
