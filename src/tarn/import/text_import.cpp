#include "tarn/import/text_import.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <unordered_set>

#include "tarn/import/import_entry_keys.h"
#include "tarn/import/import_scanning.h"
#include "tarn/platform/bulk_storage.h"
#include "tarn/platform/collections.h"
#include "tarn/platform/log.h"
#include "tarn/platform/text.h"

namespace tarn {
namespace {

bool IsYesOrX(std::string_view text) {
  return CaseInsensitiveEqual(text, "yes") || CaseInsensitiveEqual(text, "x");
}

bool IsLineEnd(char c) {
  return c == '\r' || c == '\n';
}

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return std::hash<std::string_view>{}(text);
  }
};

}  // namespace

// The distinct {"name", "isDeposit"} pairs of the entries' "type" texts, in
// the order they first appear.
class TARNTextImport::TypeList {
 public:
  void add(std::string_view name, bool deposit) {
    if (seen_[deposit].find(name) != seen_[deposit].end()) return;
    seen_[deposit].emplace(name);
    plist::Dictionary type;
    type.try_emplace(kImportIsDepositKey, deposit);
    type.try_emplace("name", std::string(name));
    types_.emplace_back(std::move(type));
  }
  plist::Array take() { return std::move(types_); }

 private:
  std::unordered_set<std::string, TextHash, std::equal_to<>> seen_[2];
  plist::Array types_;
};

namespace {}  // namespace

std::shared_ptr<TARNTextImport> TARNTextImport::initWithString(std::optional<std::string> text) {
  auto importer = std::make_shared<TARNTextImport>();
  importer->SetDataString(std::move(text));
  return importer;
}

std::shared_ptr<TARNTextImport> TARNTextImport::initWithContentsOfFile(
    std::optional<std::string> path, StringEncoding encoding) {
  if (!path) return initWithString(std::nullopt);
  std::optional<std::string> text = ReadImportFile(*path, encoding);
  if (!text) {
    Log("Could not read the text file " + *path);
    return std::make_shared<TARNTextImport>();
  }
  return initWithString(std::move(text));
}

void TARNTextImport::SetDataString(std::optional<std::string> text) {
  if (!text) {
    dataString_.clear();
    SetError(kTextImportNoData);
    return;
  }
  SetError(kTextImportNoError);
  dataString_ = std::move(*text);
  NormaliseImportLineEndsInPlace(dataString_);
}

void TARNTextImport::SetSettings(const TextImportSettings& settings, std::string dateFormat) {
  SetDateFormat(std::move(dateFormat));
  if (settings.dataLayout) SetDataLayout(settings.dataLayout);
  SetSkipFirstRow(settings.skipFirstRow);
  SetDataFormat(settings.dataFormat);
  if (!settings.decimalSeparator.empty()) SetDecimalSeparator(settings.decimalSeparator);
  if (!settings.thousandsSeparator.empty()) SetThousandsSeparator(settings.thousandsSeparator);
  SetImportZeroAmountsAsDeposits(settings.zeroAmountsAsDeposits != 0);
}

plist::Array TARNTextImport::EntryListStringToEntries(std::string_view text) const {
  return EntriesOfLines(text, nullptr);
}

plist::Array TARNTextImport::EntriesOfLines(std::string_view text, TypeList* types) const {
  plist::Array entries;
  entries.reserve(CountOf('\r', text) + 1);
  // One field list and one buffer for quoted fields, reused line by line.
  std::vector<std::string_view> fields;
  std::string scratch;
  bool skipping = skipFirstRow_;
  // Lines end at carriage returns; a line feed can only be the text's last
  // character, left by the normalisation, and ends its line too. Both are
  // found by forward searches, each byte searched once for each.
  ForwardFinder nextReturn(text, "\r");
  ForwardFinder nextFeed(text, "\n");
  std::size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && IsLineEnd(text[i])) ++i;
    if (i == text.size()) break;
    const std::size_t end = std::min(nextReturn.next(i), nextFeed.next(i));
    const std::string_view line = text.substr(i, end - i);
    i = end;
    if (skipping) {
      skipping = false;
      continue;
    }
    plist::Value entry = EntryOf(line, fields, scratch, types);
    if (!entry.isNil()) entries.push_back(std::move(entry));
  }
  return entries;
}

plist::Value TARNTextImport::EntryStringToEntry(std::string_view line) const {
  std::vector<std::string_view> fields;
  std::string scratch;
  return EntryOf(line, fields, scratch, nullptr);
}

plist::Value TARNTextImport::EntryOf(std::string_view line, std::vector<std::string_view>& fields,
                                     std::string& scratch, TypeList* types) const {
  if (line.empty()) return {};
  if (dataFormat_ == kTextImportCommaSeparated) {
    CSVLineFields(line, fields, scratch);
  } else {
    fields.clear();
    std::size_t start = 0;
    for (std::size_t tab; (tab = line.find('\t', start)) != std::string_view::npos;
         start = tab + 1) {
      fields.push_back(line.substr(start, tab - start));
    }
    fields.push_back(line.substr(start));
  }

  // Every role's value; a later column of the same role replaces it.
  std::optional<double> amount, negativeAmount, positiveAmount;
  std::optional<std::int32_t> number;
  std::optional<DateNumber> date;
  std::optional<bool> cleared;
  bool taxDeductible = false;
  std::optional<std::string_view> description, toFrom, type, category;
  const std::size_t columns = std::min(fields.size(), dataLayout_.size());
  for (std::size_t column = 0; column < columns; ++column) {
    const std::string_view text = fields[column];
    switch (dataLayout_[column]) {
      case kColumnAmount:
        amount = ReadAmount(text);
        break;
      case kColumnNumber:
        if (const std::int32_t read = LeadingInteger(text);
            read != std::numeric_limits<std::int32_t>::max()) {
          number = read;
        }
        break;
      case kColumnDate:
        date = ReadDate(text);
        break;
      case kColumnDescription:
        description = text;
        break;
      case kColumnCleared:
        cleared = IsYesOrX(text) || LeadingInteger(text) >= 1;
        break;
      case kColumnTaxDeductible:
        taxDeductible = taxDeductible || IsYesOrX(text) || LeadingInteger(text) == 1;
        break;
      case kColumnToFrom:
        toFrom = text;
        break;
      case kColumnType:
        type = text;
        break;
      case kColumnDebit:
        if (!text.empty()) negativeAmount = -std::fabs(ReadAmount(text));
        break;
      case kColumnDeposit:
        if (!text.empty()) positiveAmount = std::fabs(ReadAmount(text));
        break;
      case kColumnCategory:
        category = text;
        break;
      default:
        break;
    }
  }
  if (!amount) {
    if (positiveAmount && negativeAmount) {
      amount = *positiveAmount != 0.0 ? *positiveAmount : *negativeAmount;
    } else {
      amount = positiveAmount ? *positiveAmount : negativeAmount.value_or(0.0);
    }
  }

  // Keys in ascending order: each one is appended without a comparison.
  const bool deposit = IsDeposit(*amount);
  plist::Dictionary entry;
  entry.reserve(5 + (category ? 1 : 0) + (cleared ? 1 : 0) + (description ? 1 : 0) +
                (negativeAmount ? 1 : 0) + (positiveAmount ? 1 : 0) + (taxDeductible ? 1 : 0) +
                (toFrom ? 1 : 0) + (type ? 1 : 0));
  entry.appendSorted(kImportAmountKey, *amount);
  if (category) entry.appendSorted(kImportCategoryKey, std::string(*category));
  if (cleared) entry.appendSorted(kImportClearedKey, *cleared);
  if (date) entry.appendSorted(kImportDateKey, *date);
  if (description) entry.appendSorted(kImportDescriptionKey, std::string(*description));
  entry.appendSorted(kImportIsDepositKey, deposit);
  if (negativeAmount) entry.appendSorted(kImportNegativeAmountKey, *negativeAmount);
  if (number) entry.appendSorted(kImportNumberKey, *number);
  if (positiveAmount) entry.appendSorted(kImportPositiveAmountKey, *positiveAmount);
  if (taxDeductible) entry.appendSorted(kImportTaxDeductibleKey, true);
  if (toFrom) entry.appendSorted(kImportToFromKey, std::string(*toFrom));
  if (type) {
    entry.appendSorted(kImportTypeKey, std::string(*type));
    if (types) types->add(*type, deposit);
  }
  return entry;
}

plist::Array TARNTextImport::Entries() const {
  return EntryListStringToEntries(dataString_);
}

plist::Array TARNTextImport::EntryTypes() const {
  TypeList types;
  EntriesOfLines(dataString_, &types);
  return types.take();
}

plist::Dictionary TARNTextImport::parse() const {
  // The whole tree is built at once.
  plist::BulkStorageScope bulk;
  // The types are gathered while the lines are read: no second walk over
  // the entries.
  TypeList typeList;
  plist::Array entries = EntriesOfLines(dataString_, &typeList);
  plist::Array types = typeList.take();
  // Built by moving: an initializer list would copy the entries.
  plist::Dictionary result;
  result.try_emplace("entries", std::move(entries));
  result.try_emplace("types", std::move(types));
  return result;
}

std::shared_ptr<TARNAccountEntryType> TARNTextImport::TypeWithName(std::string_view name,
                                                                   bool deposit) const {
  for (const auto& type : types_) {
    if (type && type->GetIsDeposit() == deposit && type->GetName() == name) return type;
  }
  return nullptr;
}

std::shared_ptr<TARNAccountEntryType> TARNTextImport::DepositTypeWithName(
    std::string_view name) const {
  return TypeWithName(name, true);
}

std::shared_ptr<TARNAccountEntryType> TARNTextImport::DebitTypeWithName(
    std::string_view name) const {
  return TypeWithName(name, false);
}

}  // namespace tarn
