// Reads a QIF file into plain import dictionaries: the entries of every
// bank-like section, the entries of each named account of an account list,
// and the category names the file uses. The importer owns only its text and
// options; it never touches an account. The host reads the result of parse()
// and turns the entries it keeps into import entries for review.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/account/account_settings.h"
#include "tarn/import/import_options.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/value.h"

namespace tarn {

// Error codes of the QIF importer.
inline constexpr std::int32_t kQIFImportNoError = 0;
inline constexpr std::int32_t kQIFImportNoData = 1;
inline constexpr std::int32_t kQIFImportUnterminatedAutoSwitch = 10;

// Where a swapped QIF line goes: the P, M and L lines each take one of these;
// any other value drops the line.
inline constexpr std::int32_t kImportFieldCategory = 0;
inline constexpr std::int32_t kImportFieldToFrom = 1;
inline constexpr std::int32_t kImportFieldDescription = 2;

class TARNQIFImport : public ImportOptions {
 public:
  // The date format, separators, zero-amount rule, error and source name
  // are the ImportOptions this importer is.
  TARNQIFImport() : ImportOptions(/*importSplitLineItems=*/true) {}
  // nullptr never: a nil text gives an importer with error 1.
  static std::shared_ptr<TARNQIFImport> initWithString(std::optional<std::string> text);
  // Decodes the file in the encoding, or, when that fails, in the encoding
  // the bytes suggest (a byte-order mark, else UTF-8, else the system's
  // 8-bit encoding). A file that cannot be read leaves no data and error 0;
  // a nil path leaves error 1.
  static std::shared_ptr<TARNQIFImport> initWithContentsOfFile(std::optional<std::string> path,
                                                               StringEncoding encoding);

  // Normalises the text (a carriage return in front, line feeds turned into
  // carriage returns), keeps its category section, removes an AutoSwitch
  // account list and the accounts without a bank-like section.
  void SetDataString(std::optional<std::string> text);
  const std::string& dataString() const { return dataString_; }

  void SetSwapOptions_Category(std::int32_t option) { swapOptions_Category_ = option; }
  void SetSwapOptions_ToFrom(std::int32_t option) { swapOptions_ToFrom_ = option; }
  void SetSwapOptions_Description(std::int32_t option) { swapOptions_Description_ = option; }
  std::int32_t GetSwapOptions_Category() const { return swapOptions_Category_; }
  std::int32_t GetSwapOptions_ToFrom() const { return swapOptions_ToFrom_; }
  std::int32_t GetSwapOptions_Description() const { return swapOptions_Description_; }
  void setImportAccount(std::int32_t account) { importAccount_ = account; }
  std::int32_t importAccount() const { return importAccount_; }
  // The remembered options of an account in one call. The settings hold the
  // date format as the host's index, so the host passes the format itself;
  // empty separators leave the current ones.
  void SetSettings(const QIFImportSettings& settings, std::string dateFormat);

  // {"entries", "categories"} and, when the file names accounts, "accounts".
  plist::Dictionary parse() const;

  // The steps of parse.
  plist::Array Entries() const;
  std::vector<std::string> AccountNames() const;
  // The first account whose header names it (a prefix match); nullopt when none.
  std::optional<std::string_view> AccountWithName(std::string_view name) const;
  plist::Array EntriesForAccountWithName(std::string_view name) const;
  plist::Array EntryListStringToEntries(std::string_view list) const;
  // A nil value for a blank record.
  plist::Value EntryStringToEntry(std::string_view record) const;
  std::vector<std::string> EntryCategories() const;

  // The category section.
  void SaveEntryCategoriesListString(std::string_view text);
  const std::string& entryCategoriesListString() const { return entryCategoriesListString_; }
  std::vector<std::string> EntryCategoryListStringToEntryCategories(std::string_view list) const;
  // {"name", "isDeposit"}; nil for a record without a name.
  plist::Value EntryCategoryStringToEntryCategory(std::string_view record) const;
  plist::Array EntryTypeListStringToEntryTypes(std::string_view list) const;
  plist::Value EntryTypeStringToEntryType(std::string_view record) const;

  void RemoveInvalidAccounts();

  // The section types that hold ledger entries.
  static const std::vector<std::string>& validListTypes();
  // An entry point that was never finished: an empty array for nil, and
  // nullopt (nil) for any text.
  static std::optional<plist::Array> StringToEntries(std::optional<std::string_view> text);

 private:
  plist::Array AccountEntries(std::string_view accountText) const;
  // Entries of every bank-like section; with `categories`, also each entry's
  // "category" text, a view into the data string.
  plist::Array EntriesOfSections(std::vector<std::string_view>* categories) const;
  void AppendEntries(std::string_view list, plist::Array& entries,
                     std::vector<std::string_view>* categories) const;
  plist::Value EntryOf(std::string_view record, std::vector<std::string_view>* categories) const;
  std::vector<std::string> CategoriesOf(const std::vector<std::string_view>& entryCategories) const;

  std::string dataString_;
  std::string entryTypesListString_;  // reserved; nothing fills it
  std::string entryCategoriesListString_;
  std::int32_t swapOptions_Category_ = kImportFieldCategory;
  std::int32_t swapOptions_ToFrom_ = kImportFieldToFrom;
  std::int32_t swapOptions_Description_ = kImportFieldDescription;
  std::int32_t importAccount_ = -1;
};

}  // namespace tarn
