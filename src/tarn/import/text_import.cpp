#include "tarn/import/text_import.h"

#include <cmath>
#include <limits>
#include <unordered_set>

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

}  // namespace

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
    error_ = kTextImportNoData;
    return;
  }
  error_ = kTextImportNoError;
  dataString_ = NormaliseImportLineEnds(*text);
}

void TARNTextImport::SetDecimalSeparator(std::optional<std::string> separator) {
  if (separator) decimalSeparator_ = std::move(*separator);
}

void TARNTextImport::SetThousandsSeparator(std::optional<std::string> separator) {
  if (separator) thousandsSeparator_ = std::move(*separator);
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
  plist::Array entries;
  bool skipping = skipFirstRow_;
  std::size_t i = 0;
  while (i < text.size()) {
    // Lines end at carriage returns; a line feed can only be the text's last
    // character, left by the normalisation, and ends its line too.
    while (i < text.size() && IsLineEnd(text[i])) ++i;
    if (i == text.size()) break;
    std::size_t end = i;
    while (end < text.size() && !IsLineEnd(text[end])) ++end;
    const std::string_view line = text.substr(i, end - i);
    i = end;
    if (skipping) {
      skipping = false;
      continue;
    }
    plist::Value entry = EntryStringToEntry(line);
    if (!entry.isNil()) entries.push_back(std::move(entry));
  }
  return entries;
}

plist::Value TARNTextImport::EntryStringToEntry(std::string_view line) const {
  if (line.empty()) return {};
  std::vector<std::string> csvFields;
  std::vector<std::string_view> fields;
  if (dataFormat_ == kTextImportCommaSeparated) {
    csvFields = CSVLineComponents(line);
    fields.assign(csvFields.begin(), csvFields.end());
  } else {
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
        amount = LeadingDecimalNumber(TweakAmountString(text));
        break;
      case kColumnNumber:
        if (const std::int32_t read = LeadingInteger(text);
            read != std::numeric_limits<std::int32_t>::max()) {
          number = read;
        }
        break;
      case kColumnDate:
        date = dates_.read(text);
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
        if (!text.empty())
          negativeAmount = -std::fabs(LeadingDecimalNumber(TweakAmountString(text)));
        break;
      case kColumnDeposit:
        if (!text.empty())
          positiveAmount = std::fabs(LeadingDecimalNumber(TweakAmountString(text)));
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

  // Keys in ascending order, so that each one is appended.
  plist::Dictionary entry;
  entry.reserve(12);
  entry.try_emplace("amount", *amount);
  if (category) entry.try_emplace("category", std::string(*category));
  if (cleared) entry.try_emplace("cleared", *cleared);
  if (date) entry.try_emplace("date", *date);
  if (description) entry.try_emplace("description", std::string(*description));
  entry.try_emplace("isDeposit", *amount > 0.0 || (*amount == 0.0 && importZeroAmountsAsDeposits_));
  if (negativeAmount) entry.try_emplace("negativeAmount", *negativeAmount);
  if (number) entry.try_emplace("number", *number);
  if (positiveAmount) entry.try_emplace("positiveAmount", *positiveAmount);
  if (taxDeductible) entry.try_emplace("taxDeductible", true);
  if (toFrom) entry.try_emplace("toFrom", std::string(*toFrom));
  if (type) entry.try_emplace("type", std::string(*type));
  return entry;
}

plist::Array TARNTextImport::Entries() const {
  return EntryListStringToEntries(dataString_);
}

plist::Array TARNTextImport::TypesOf(const plist::Array& entries) const {
  plist::Array types;
  std::unordered_set<std::string> seen[2];
  for (const plist::Value& entry : entries) {
    const plist::Value* type = entry.find("type");
    if (!type) continue;
    const bool deposit = entry.find("isDeposit")->boolValue();
    if (seen[deposit].insert(type->stringValue()).second) {
      types.emplace_back(plist::Dictionary{{"isDeposit", deposit}, {"name", type->stringValue()}});
    }
  }
  return types;
}

plist::Array TARNTextImport::EntryTypes() const {
  return TypesOf(Entries());
}

plist::Dictionary TARNTextImport::parse() const {
  // The whole tree is built at once.
  plist::BulkStorageScope bulk;
  plist::Array entries = Entries();
  plist::Array types = TypesOf(entries);
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

std::string TARNTextImport::TweakAmountString(std::string_view text) const {
  return tarn::TweakAmountString(text, decimalSeparator_, thousandsSeparator_);
}

DateComponents TARNTextImport::DateStringComponents(std::string_view text) const {
  return tarn::DateStringComponents(text, dateFormatString_);
}

std::string TARNTextImport::TweakDateString(std::string_view text) const {
  return tarn::TweakDateString(text, dateFormatString_);
}

}  // namespace tarn
