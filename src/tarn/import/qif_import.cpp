#include "tarn/import/qif_import.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <unordered_set>

#include "tarn/import/import_entry_keys.h"
#include "tarn/import/import_scanning.h"
#include "tarn/platform/bulk_storage.h"
#include "tarn/platform/log.h"
#include "tarn/platform/text.h"

namespace tarn {
namespace {

constexpr std::string_view kTypeMarker = "!Type:";
constexpr std::string_view kAccountHeader = "!Account\r";
constexpr std::string_view kCategorySection = "!Type:Cat\r";
constexpr std::string_view kAutoSwitchStart = "!Option:AutoSwitch";
constexpr std::string_view kAutoSwitchEnd = "!Clear:AutoSwitch\r";

// The end of a section: the next line that begins with "!", that is the
// position of the next "\r!" at or after `from` (the text's size when there
// is none). Searched by its rare "!", not by the carriage return that
// begins every line.
std::size_t SectionEnd(std::string_view text, std::size_t from) {
  for (std::size_t at = from + 1; at < text.size(); ++at) {
    const void* found = std::memchr(text.data() + at, '!', text.size() - at);
    if (found == nullptr) break;
    at = static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
    if (text[at - 1] == '\r') return at - 1;
  }
  return text.size();
}

// One line of a record: the text after its one-letter code, and whether the
// record ends without a carriage return after it.
struct RecordLine {
  char code;
  std::string_view text;
  bool last;
};

// Calls `visit` for every line of a record that follows a carriage return, in
// order; the text before the record's first carriage return is no line.
template <class Visit>
void ForEachRecordLine(std::string_view record, Visit&& visit) {
  // Lines are a few bytes long: a plain loop finds their ends sooner than a
  // library search called for each.
  const auto nextReturn = [&record](std::size_t from) {
    while (from < record.size() && record[from] != '\r') ++from;
    return from < record.size() ? from : std::string_view::npos;
  };
  std::size_t cr = nextReturn(0);
  while (cr != std::string_view::npos) {
    const std::size_t start = cr + 1;
    const std::size_t next = nextReturn(start);
    const std::size_t end = next == std::string_view::npos ? record.size() : next;
    if (end > start) {
      visit(RecordLine{record[start], record.substr(start + 1, end - start - 1),
                       next == std::string_view::npos});
    }
    cr = next;
  }
}

// Calls `visit` for each piece of a list before a "^"; the text after the
// last "^" is no record.
template <class Visit>
void ForEachRecord(std::string_view list, Visit&& visit) {
  std::size_t start = 0;
  for (std::size_t caret; (caret = list.find('^', start)) != std::string_view::npos;
       start = caret + 1) {
    visit(list.substr(start, caret - start));
  }
}

bool IsBlank(std::string_view record) {
  for (char c : record) {
    if (c != '\r' && c != ' ' && c != '\t') return false;
  }
  return true;
}

// The N line of a record: its first "\rN" line with text.
std::optional<std::string_view> FirstLineText(std::string_view record, char code) {
  std::optional<std::string_view> found;
  bool seen = false;
  ForEachRecordLine(record, [&](const RecordLine& line) {
    if (seen || line.code != code) return;
    seen = true;
    if (!line.text.empty()) found = line.text;
  });
  return found;
}

bool HoldsValidSection(std::string_view block) {
  for (std::size_t at = block.find(kTypeMarker); at != std::string_view::npos;
       at = block.find(kTypeMarker, at + 1)) {
    const std::string_view type = block.substr(at + kTypeMarker.size());
    for (const std::string& valid : TARNQIFImport::validListTypes()) {
      if (type.starts_with(valid)) return true;
    }
  }
  return false;
}

// Where each account header ("!Account" and a carriage return) starts.
std::vector<std::size_t> AccountHeaders(std::string_view text) {
  std::vector<std::size_t> headers;
  for (std::size_t at = text.find(kAccountHeader); at != std::string_view::npos;
       at = text.find(kAccountHeader, at + kAccountHeader.size())) {
    headers.push_back(at);
  }
  return headers;
}

// The header record of each account: from its header up to the next "^",
// and never past the next header, so that an account without its "^" does
// not take the next account's name.
std::vector<std::string_view> AccountHeaderRecords(std::string_view text,
                                                   const std::vector<std::size_t>& headers) {
  std::vector<std::string_view> records;
  records.reserve(headers.size());
  ForwardFinder caret(text, "^");
  for (std::size_t i = 0; i < headers.size(); ++i) {
    const std::size_t limit = i + 1 < headers.size() ? headers[i + 1] : text.size();
    const std::size_t end = std::min(caret.next(headers[i]), limit);
    records.push_back(text.substr(headers[i], end - headers[i]));
  }
  return records;
}

// The name of an account from its header record: the text of its first N
// line, when a carriage return ends that line inside the record.
std::optional<std::string_view> AccountNameOf(std::string_view headerRecord) {
  const std::size_t marker = headerRecord.find("\rN");
  if (marker == std::string_view::npos) return std::nullopt;
  const std::size_t start = marker + 2;
  const std::size_t end = headerRecord.find('\r', start);
  if (end == std::string_view::npos || end == start) return std::nullopt;
  return headerRecord.substr(start, end - start);
}

}  // namespace

std::shared_ptr<TARNQIFImport> TARNQIFImport::initWithString(std::optional<std::string> text) {
  auto importer = std::make_shared<TARNQIFImport>();
  importer->SetDataString(std::move(text));
  return importer;
}

std::shared_ptr<TARNQIFImport> TARNQIFImport::initWithContentsOfFile(
    std::optional<std::string> path, StringEncoding encoding) {
  if (!path) return initWithString(std::nullopt);
  std::optional<std::string> text = ReadImportFile(*path, encoding);
  if (!text) {
    Log("Could not read the QIF file " + *path);
    return std::make_shared<TARNQIFImport>();
  }
  return initWithString(std::move(text));
}

void TARNQIFImport::SetDataString(std::optional<std::string> text) {
  dataString_.clear();
  entryCategoriesListString_.clear();
  if (!text) {
    SetError(kQIFImportNoData);
    return;
  }
  SetError(kQIFImportNoError);
  std::string working = std::move(*text);
  text.reset();
  NormaliseImportLineEndsInPlace(working);
  SaveEntryCategoriesListString(working);

  const std::size_t autoSwitch = working.find(kAutoSwitchStart);
  if (autoSwitch != std::string::npos) {
    const std::size_t clear = working.find(kAutoSwitchEnd, autoSwitch);
    if (clear == std::string::npos) {
      Log("No end to !Option:AutoSwitch tag in [TARNQIFImport SetDataString:].");
      SetError(kQIFImportUnterminatedAutoSwitch);
      RemoveInvalidAccounts();
      return;
    }
    // The block holds the file's account list, which carries no entries.
    working.erase(autoSwitch, clear + kAutoSwitchEnd.size() - autoSwitch);
  }
  dataString_ = std::move(working);
  RemoveInvalidAccounts();
}

void TARNQIFImport::SetSettings(const QIFImportSettings& settings, std::string dateFormat) {
  SetDateFormat(std::move(dateFormat));
  if (!settings.decimalSeparator.empty()) SetDecimalSeparator(settings.decimalSeparator);
  if (!settings.thousandsSeparator.empty()) SetThousandsSeparator(settings.thousandsSeparator);
  SetImportZeroAmountsAsDeposits(settings.zeroAmountsAsDeposits);
  SetImportAllCategories(settings.allCategories);
  SetImportSplitLineItems(settings.splitLineItems);
  SetSwapOptions_ToFrom(settings.swapToFrom);
  SetSwapOptions_Category(settings.swapCategory);
  SetSwapOptions_Description(settings.swapDescription);
}

const std::vector<std::string>& TARNQIFImport::validListTypes() {
  static const std::vector<std::string> types{"Bank", "CCard", "Cash", "Oth L", "Oth A"};
  return types;
}

std::optional<plist::Array> TARNQIFImport::StringToEntries(std::optional<std::string_view> text) {
  if (!text) return plist::Array{};
  return std::nullopt;
}

void TARNQIFImport::RemoveInvalidAccounts() {
  const std::string_view text = dataString_;
  const std::vector<std::size_t> headers = AccountHeaders(text);
  std::vector<std::pair<std::size_t, std::size_t>> invalid;
  for (std::size_t i = 0; i < headers.size(); ++i) {
    const std::size_t end = i + 1 < headers.size() ? headers[i + 1] : text.size();
    // A header directly followed by another: the list is not understood;
    // leave the text as it is.
    if (i + 1 < headers.size() && end == headers[i] + kAccountHeader.size()) return;
    if (!HoldsValidSection(text.substr(headers[i], end - headers[i]))) {
      invalid.emplace_back(headers[i], end);
    }
  }
  if (invalid.empty()) return;
  std::string kept;
  kept.reserve(text.size());
  std::size_t from = 0;
  for (auto [start, end] : invalid) {
    kept.append(text.substr(from, start - from));
    from = end;
  }
  kept.append(text.substr(from));
  dataString_ = std::move(kept);
}

plist::Array TARNQIFImport::EntryListStringToEntries(std::string_view list) const {
  plist::Array entries;
  entries.reserve(CountOf('^', list));
  AppendEntries(list, entries, nullptr);
  return entries;
}

void TARNQIFImport::AppendEntries(std::string_view list, plist::Array& entries,
                                  std::vector<std::string_view>* categories) const {
  ForEachRecord(list, [&](std::string_view record) {
    plist::Value entry = EntryOf(record, categories);
    if (!entry.isNil()) entries.push_back(std::move(entry));
  });
}

plist::Value TARNQIFImport::EntryStringToEntry(std::string_view record) const {
  return EntryOf(record, nullptr);
}

plist::Value TARNQIFImport::EntryOf(std::string_view record,
                                    std::vector<std::string_view>* categories) const {
  if (IsBlank(record)) return {};
  // The first line of each code, as a search for "\r" and the code from the
  // record's start finds it; split lines are all kept, in order.
  std::optional<std::string_view> date, amount, payee, memo, category, number;
  bool cleared = false;
  bool seen[128] = {};
  const bool splitLines = GetImportSplitLineItems();
  std::vector<std::string_view> splitCategories, splitDescriptions, splitAmounts;
  ForEachRecordLine(record, [&](const RecordLine& line) {
    const auto code = static_cast<unsigned char>(line.code);
    if (code == 'S' || code == 'E' || code == '$') {
      if (!splitLines || (line.text.empty() && line.last)) return;
      auto& list = code == 'S' ? splitCategories : code == 'E' ? splitDescriptions : splitAmounts;
      list.push_back(line.text);
      return;
    }
    if (code >= 128 || seen[code]) return;
    seen[code] = true;
    if (line.text.empty()) return;
    switch (code) {
      case 'D':
        date = line.text;
        break;
      case 'T':
        amount = line.text;
        break;
      case 'P':
        payee = line.text;
        break;
      case 'M':
        memo = line.text;
        break;
      case 'C':
        cleared = true;
        break;
      case 'L':
        category = line.text;
        break;
      case 'N':
        number = line.text;
        break;
      default:
        break;
    }
  });

  double value = 0.0;
  if (amount) value = ReadAmount(*amount);
  // The P, M and L texts by key, in the order P, M, L, so that the later of
  // two lines sent to one key wins.
  std::optional<std::string_view> byKey[3];
  const std::pair<std::int32_t, std::optional<std::string_view>> swapped[] = {
      {swapOptions_ToFrom_, payee},
      {swapOptions_Description_, memo},
      {swapOptions_Category_, category}};
  for (const auto& [option, text] : swapped) {
    if (option >= kImportFieldCategory && option <= kImportFieldDescription && text) {
      byKey[option] = text;
    }
  }
  std::optional<std::int32_t> checkNumber;
  if (number) {
    const std::int32_t read = LeadingInteger(*number);
    if (read != std::numeric_limits<std::int32_t>::max()) checkNumber = read;
  }

  std::optional<plist::Array> splits;
  if (!splitAmounts.empty()) {
    std::vector<double> amounts;
    amounts.reserve(splitAmounts.size());
    double sum = 0.0;
    for (std::string_view text : splitAmounts) {
      amounts.push_back(ReadAmount(text));
      sum += amounts.back();
    }
    bool keep = true;
    if (std::fabs(sum - value) > 0.01) {
      // Some programs write the split amounts with the opposite sign.
      if (std::fabs(-sum - value) > 0.01) {
        keep = false;
      } else {
        for (double& split : amounts) split = -split;
      }
    }
    const std::size_t count = amounts.size();
    if (splitCategories.empty() && splitDescriptions.size() == count) {
      splitCategories.assign(count, std::string_view());
    } else if (splitDescriptions.empty() && splitCategories.size() == count) {
      splitDescriptions.assign(count, std::string_view());
    }
    if (keep && splitCategories.size() == count && splitDescriptions.size() == count) {
      splits.emplace();
      splits->reserve(count);
      for (std::size_t i = 0; i < count; ++i) {
        plist::Dictionary split;
        split.reserve(3);
        split.appendSorted(kImportAmountKey, amounts[i]);
        split.appendSorted(kImportCategoryKey, std::string(splitCategories[i]));
        split.appendSorted(kImportDescriptionKey, std::string(splitDescriptions[i]));
        splits->emplace_back(std::move(split));
      }
    }
  }

  // Keys in ascending order: each one is appended without a comparison.
  plist::Dictionary entry;
  // Exactly the keys it gets: a million entries are hundreds of megabytes.
  entry.reserve(3 + byKey[kImportFieldCategory].has_value() + date.has_value() +
                byKey[kImportFieldDescription].has_value() + checkNumber.has_value() +
                splits.has_value() + byKey[kImportFieldToFrom].has_value());
  entry.appendSorted(kImportAmountKey, value);
  if (byKey[kImportFieldCategory]) {
    entry.appendSorted(kImportCategoryKey, std::string(*byKey[kImportFieldCategory]));
    if (categories) categories->push_back(*byKey[kImportFieldCategory]);
  }
  entry.appendSorted(kImportClearedKey, cleared);
  if (date) entry.appendSorted(kImportDateKey, ReadDate(*date));
  if (byKey[kImportFieldDescription]) {
    entry.appendSorted(kImportDescriptionKey, std::string(*byKey[kImportFieldDescription]));
  }
  entry.appendSorted(kImportIsDepositKey, IsDeposit(value));
  if (checkNumber) entry.appendSorted(kImportNumberKey, *checkNumber);
  if (splits) entry.appendSorted(kImportSplitsKey, std::move(*splits));
  if (byKey[kImportFieldToFrom])
    entry.appendSorted(kImportToFromKey, std::string(*byKey[kImportFieldToFrom]));
  return entry;
}

plist::Array TARNQIFImport::Entries() const {
  return EntriesOfSections(nullptr);
}

plist::Array TARNQIFImport::EntriesOfSections(std::vector<std::string_view>* categories) const {
  const std::string_view text = dataString_;
  // The bank-like sections first, then their entries in one array reserved
  // once: a file of many sections must not grow it section by section.
  std::vector<std::string_view> sections;
  ForwardFinder lineEnd(text, "\r");
  bool anySection = false;
  std::size_t at = text.find(kTypeMarker);
  while (at != std::string_view::npos) {
    anySection = true;
    const std::size_t typeStart = at + kTypeMarker.size();
    const std::size_t typeEnd = lineEnd.next(typeStart);
    const std::string_view type = TrimImportWhiteSpace(text.substr(typeStart, typeEnd - typeStart));
    bool valid = false;
    for (const std::string& candidate : validListTypes()) {
      if (CaseInsensitiveEqual(type, candidate)) valid = true;
    }
    std::size_t resume = typeStart;
    if (valid) {
      const std::size_t end = SectionEnd(text, typeStart);
      sections.push_back(text.substr(typeStart, end - typeStart));
      // Go on after the section, so no record is read twice.
      resume = end;
    }
    at = text.find(kTypeMarker, resume);
  }
  // A file of bare records, with no header at all, is one bank list.
  if (!anySection && !text.empty()) sections.push_back(text);
  std::size_t records = 0;
  for (std::string_view section : sections) records += CountOf('^', section);
  plist::Array entries;
  entries.reserve(records);
  if (categories) categories->reserve(records);
  for (std::string_view section : sections) AppendEntries(section, entries, categories);
  return entries;
}

plist::Array TARNQIFImport::AccountEntries(std::string_view accountText) const {
  // The account's bank-like sections (types matched exactly), found in one
  // walk that goes on after each section, so that a "!Type:" inside another
  // section's text never reads its records twice; then read grouped by type
  // in the order of validListTypes.
  const std::vector<std::string>& types = validListTypes();
  std::vector<std::pair<std::size_t, std::string_view>> sections;
  std::size_t at = accountText.find(kTypeMarker);
  while (at != std::string_view::npos) {
    const std::size_t start = at + kTypeMarker.size();
    const std::string_view type = accountText.substr(start);
    std::size_t resume = start;
    for (std::size_t k = 0; k < types.size(); ++k) {
      if (!type.starts_with(types[k])) continue;
      const std::size_t end = SectionEnd(accountText, start);
      sections.emplace_back(k, accountText.substr(start, end - start));
      resume = end;
      break;
    }
    at = accountText.find(kTypeMarker, resume);
  }
  std::stable_sort(sections.begin(), sections.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::size_t records = 0;
  for (const auto& [type, section] : sections) records += CountOf('^', section);
  plist::Array entries;
  entries.reserve(records);
  for (const auto& [type, section] : sections) AppendEntries(section, entries, nullptr);
  return entries;
}

std::vector<std::string> TARNQIFImport::AccountNames() const {
  const std::vector<std::size_t> headers = AccountHeaders(dataString_);
  std::vector<std::string> names;
  for (std::string_view record : AccountHeaderRecords(dataString_, headers)) {
    if (auto name = AccountNameOf(record)) names.emplace_back(*name);
  }
  return names;
}

std::optional<std::string_view> TARNQIFImport::AccountWithName(std::string_view name) const {
  const std::string_view text = dataString_;
  const std::vector<std::size_t> headers = AccountHeaders(text);
  const std::vector<std::string_view> records = AccountHeaderRecords(text, headers);
  std::string marker = "\rN";
  marker.append(name);
  for (std::size_t i = 0; i < headers.size(); ++i) {
    if (records[i].find(marker) == std::string_view::npos) continue;
    const std::size_t start = headers[i] + 1;
    std::size_t end = text.find("!Account", start);
    if (end == std::string_view::npos) end = text.size();
    return text.substr(start, end - start);
  }
  return std::nullopt;
}

plist::Array TARNQIFImport::EntriesForAccountWithName(std::string_view name) const {
  const std::optional<std::string_view> account = AccountWithName(name);
  if (!account) return {};
  return AccountEntries(*account);
}

void TARNQIFImport::SaveEntryCategoriesListString(std::string_view text) {
  entryCategoriesListString_.clear();
  const std::size_t at = text.find(kCategorySection);
  if (at == std::string_view::npos) return;
  const std::size_t start = at + kCategorySection.size() - 1;  // from its carriage return
  const std::size_t end = SectionEnd(text, start);
  entryCategoriesListString_.assign(text.substr(start, end - start));
}

plist::Value TARNQIFImport::EntryCategoryStringToEntryCategory(std::string_view record) const {
  const std::optional<std::string_view> name = FirstLineText(record, 'N');
  if (!name) return {};
  bool income = false;
  ForEachRecordLine(record, [&](const RecordLine& line) { income = income || line.code == 'I'; });
  return plist::Dictionary{{"isDeposit", income}, {"name", std::string(*name)}};
}

plist::Value TARNQIFImport::EntryTypeStringToEntryType(std::string_view record) const {
  return EntryCategoryStringToEntryCategory(record);
}

std::vector<std::string> TARNQIFImport::EntryCategoryListStringToEntryCategories(
    std::string_view list) const {
  std::vector<std::string> names;
  ForEachRecord(list, [&](std::string_view record) {
    plist::Value category = EntryCategoryStringToEntryCategory(record);
    if (!category.isNil()) names.push_back(category.dictionaryValue().at("name").stringValue());
  });
  return names;
}

plist::Array TARNQIFImport::EntryTypeListStringToEntryTypes(std::string_view list) const {
  plist::Array types;
  ForEachRecord(list, [&](std::string_view record) {
    plist::Value type = EntryTypeStringToEntryType(record);
    if (!type.isNil()) types.push_back(std::move(type));
  });
  return types;
}

std::vector<std::string> TARNQIFImport::CategoriesOf(
    const std::vector<std::string_view>& entryCategories) const {
  std::vector<std::string> names =
      EntryCategoryListStringToEntryCategories(entryCategoriesListString_);
  std::unordered_set<std::string> known;
  for (const std::string& name : names) known.insert(CaseFold(name));
  // A file repeats a few names many times: each distinct text is folded once.
  std::unordered_set<std::string_view> met;
  for (std::string_view name : entryCategories) {
    if (!met.insert(name).second) continue;
    if (known.insert(CaseFold(name)).second) names.emplace_back(name);
  }
  return names;
}

std::vector<std::string> TARNQIFImport::EntryCategories() const {
  std::vector<std::string_view> categories;
  EntriesOfSections(&categories);
  return CategoriesOf(categories);
}

plist::Dictionary TARNQIFImport::parse() const {
  // The whole tree is built at once.
  plist::BulkStorageScope bulk;
  plist::Dictionary result;
  // The entries' category texts are gathered while they are read, so that
  // the categories need no second walk over a million dictionaries.
  std::vector<std::string_view> entryCategories;
  plist::Array entries = EntriesOfSections(&entryCategories);

  plist::Array categories;
  for (std::string& name : CategoriesOf(entryCategories)) categories.emplace_back(std::move(name));

  // Each named account reads its own sections, from just after its header's
  // "!" up to the next "!Account".
  const std::string_view text = dataString_;
  const std::vector<std::size_t> headers = AccountHeaders(text);
  const std::vector<std::string_view> records = AccountHeaderRecords(text, headers);
  plist::Array accounts;
  ForwardFinder nextAccount(text, "!Account");
  for (std::size_t i = 0; i < headers.size(); ++i) {
    const std::optional<std::string_view> name = AccountNameOf(records[i]);
    if (!name) continue;
    const std::size_t start = headers[i] + 1;
    const std::size_t end = nextAccount.next(start);
    // Built by moving: an initializer list would copy the entries.
    plist::Dictionary account;
    account.try_emplace("entries", AccountEntries(text.substr(start, end - start)));
    account.try_emplace("name", std::string(*name));
    accounts.emplace_back(std::move(account));
  }
  if (!accounts.empty()) result.insert_or_assign("accounts", std::move(accounts));
  result.insert_or_assign("categories", std::move(categories));
  result.insert_or_assign("entries", std::move(entries));
  return result;
}

}  // namespace tarn
