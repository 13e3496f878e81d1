// Reads comma- or tab-separated text, one entry per line, whose columns the
// user has described (the data layout), into import dictionaries of the same
// form as the QIF importer's. It owns its text and options and never touches
// an account; the entry types it looks names up in are shared with the host.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/account/account_settings.h"
#include "tarn/import/import_options.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/value.h"

namespace tarn {

inline constexpr std::int32_t kTextImportNoError = 0;
inline constexpr std::int32_t kTextImportNoData = 1;

// Data formats: comma-separated values; any other value is tab-separated.
inline constexpr std::int32_t kTextImportCommaSeparated = 0;
inline constexpr std::int32_t kTextImportTabSeparated = 1;

// The role of a column in the data layout; any other code ignores the column.
inline constexpr std::int32_t kColumnAmount = 0;
inline constexpr std::int32_t kColumnNumber = 10;
inline constexpr std::int32_t kColumnDate = 20;
inline constexpr std::int32_t kColumnDescription = 30;
inline constexpr std::int32_t kColumnCleared = 40;
inline constexpr std::int32_t kColumnTaxDeductible = 50;
inline constexpr std::int32_t kColumnToFrom = 60;
inline constexpr std::int32_t kColumnType = 70;
inline constexpr std::int32_t kColumnDebit = 80;
inline constexpr std::int32_t kColumnDeposit = 90;
inline constexpr std::int32_t kColumnCategory = 100;

class TARNTextImport : public ImportOptions {
 public:
  // The date format, separators, zero-amount rule, error and source name
  // are the ImportOptions this importer is.
  TARNTextImport() : ImportOptions(/*importSplitLineItems=*/false) {}
  static std::shared_ptr<TARNTextImport> initWithString(std::optional<std::string> text);
  // As the QIF importer: the stored encoding, else the encoding the bytes
  // suggest; an unreadable file leaves no data and error 0.
  static std::shared_ptr<TARNTextImport> initWithContentsOfFile(std::optional<std::string> path,
                                                                StringEncoding encoding);

  // Normalises line ends (a carriage return in front, line feeds turned into
  // carriage returns); nil stores "" and sets error 1.
  void SetDataString(std::optional<std::string> text);
  const std::string& dataString() const { return dataString_; }

  void SetDataFormat(std::int32_t format) { dataFormat_ = format; }
  std::int32_t GetDataFormat() const { return dataFormat_; }
  void SetDataLayout(std::optional<std::vector<std::int32_t>> layout) {
    dataLayout_ = layout.value_or(std::vector<std::int32_t>{});
  }
  const std::vector<std::int32_t>& GetDataLayout() const { return dataLayout_; }
  void SetSkipFirstRow(bool skip) { skipFirstRow_ = skip; }
  bool GetSkipFirstRow() const { return skipFirstRow_; }
  // Text files name no account.
  std::int32_t importAccount() const { return -1; }
  // The entry types that DepositTypeWithName and DebitTypeWithName look in;
  // the reader never fills it.
  std::vector<std::shared_ptr<TARNAccountEntryType>>& types() { return types_; }
  // The remembered options of an account in one call, with the date format
  // the host's index stands for; empty separators and a missing layout leave
  // the current ones.
  void SetSettings(const TextImportSettings& settings, std::string dateFormat);

  // {"entries", "types"}.
  plist::Dictionary parse() const;
  plist::Array Entries() const;
  plist::Array EntryListStringToEntries(std::string_view text) const;
  // A nil value for an empty line.
  plist::Value EntryStringToEntry(std::string_view line) const;
  // The distinct {"name", "isDeposit"} pairs of the entries' "type" texts.
  plist::Array EntryTypes() const;

  std::shared_ptr<TARNAccountEntryType> DepositTypeWithName(std::string_view name) const;
  std::shared_ptr<TARNAccountEntryType> DebitTypeWithName(std::string_view name) const;

 private:
  class TypeList;
  // The entries of the lines; with `types`, gathers the types as it goes.
  plist::Array EntriesOfLines(std::string_view text, TypeList* types) const;
  // One line, split into `fields` with `scratch` for quoted fields.
  plist::Value EntryOf(std::string_view line, std::vector<std::string_view>& fields,
                       std::string& scratch, TypeList* types) const;
  std::shared_ptr<TARNAccountEntryType> TypeWithName(std::string_view name, bool deposit) const;

  std::string dataString_;
  std::int32_t dataFormat_ = kTextImportCommaSeparated;
  std::vector<std::int32_t> dataLayout_;
  bool skipFirstRow_ = false;
  std::vector<std::shared_ptr<TARNAccountEntryType>> types_;
};

}  // namespace tarn
