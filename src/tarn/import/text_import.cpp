#include "tarn/import/text_import.h"

#include <cmath>
#include <limits>
#include <unordered_set>

#include "tarn/import/import_scanning.h"
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

  plist::Dictionary entry;
  entry.reserve(12);
  const std::size_t columns = std::min(fields.size(), dataLayout_.size());
  for (std::size_t column = 0; column < columns; ++column) {
    const std::string_view text = fields[column];
    switch (dataLayout_[column]) {
      case kColumnAmount:
        entry.insert_or_assign("amount", LeadingDecimalNumber(TweakAmountString(text)));
        break;
      case kColumnNumber: {
        const std::int32_t number = LeadingInt32(text);
        if (number != std::numeric_limits<std::int32_t>::max()) {
          entry.insert_or_assign("number", number);
        }
        break;
      }
      case kColumnDate:
        entry.insert_or_assign("date", ImportDateNumber(text, dateFormatString_));
        break;
      case kColumnDescription:
        entry.insert_or_assign("description", std::string(text));
        break;
      case kColumnCleared:
        entry.insert_or_assign("cleared", IsYesOrX(text) || LeadingInt32(text) >= 1);
        break;
      case kColumnTaxDeductible:
        if (IsYesOrX(text) || LeadingInt32(text) == 1)
          entry.insert_or_assign("taxDeductible", true);
        break;
      case kColumnToFrom:
        entry.insert_or_assign("toFrom", std::string(text));
        break;
      case kColumnType:
        entry.insert_or_assign("type", std::string(text));
        break;
      case kColumnDebit:
        if (!text.empty()) {
          entry.insert_or_assign("negativeAmount",
                                 -std::fabs(LeadingDecimalNumber(TweakAmountString(text))));
        }
        break;
      case kColumnDeposit:
        if (!text.empty()) {
          entry.insert_or_assign("positiveAmount",
                                 std::fabs(LeadingDecimalNumber(TweakAmountString(text))));
        }
        break;
      case kColumnCategory:
        entry.insert_or_assign("category", std::string(text));
        break;
      default:
        break;
    }
  }

  double amount = 0.0;
  if (const plist::Value* given = entry.count("amount") ? &entry.at("amount") : nullptr) {
    amount = given->doubleValue();
  } else {
    const auto positive = entry.find("positiveAmount");
    const auto negative = entry.find("negativeAmount");
    if (positive != entry.end() && negative != entry.end()) {
      amount = positive->second.doubleValue() != 0.0 ? positive->second.doubleValue()
                                                     : negative->second.doubleValue();
    } else if (positive != entry.end()) {
      amount = positive->second.doubleValue();
    } else if (negative != entry.end()) {
      amount = negative->second.doubleValue();
    }
    entry.insert_or_assign("amount", amount);
  }
  entry.insert_or_assign("isDeposit",
                         amount > 0.0 || (amount == 0.0 && importZeroAmountsAsDeposits_));
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
  plist::Array entries = Entries();
  plist::Array types = TypesOf(entries);
  return plist::Dictionary{{"entries", std::move(entries)}, {"types", std::move(types)}};
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
