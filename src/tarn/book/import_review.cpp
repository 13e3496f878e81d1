#include "tarn/book/import_review.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/book_entries.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/text.h"

namespace tarn {

namespace {

std::string_view TrimBlanks(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

std::string TextOf(const plist::Value& dictionary, const char* key) {
  const plist::Value* value = dictionary.find(key);
  return value && value->isString() ? value->stringValue() : std::string();
}

std::int64_t Cents(double amount) {
  return std::llround(amount * 100.0);
}

// Existing entries in one order (by amount, or by amount and payee, then
// date and index), with the ones already matched skipped in both directions
// by path-compressed links. A run is the stretch of one amount (and payee).
class SortedCandidates {
 public:
  struct Found {
    std::int64_t distance, day;
    std::size_t existing;
  };

  // `less` orders existing indexes by the run key, then date, then index.
  template <typename Less>
  SortedCandidates(std::size_t count, const std::vector<std::int64_t>& days, Less less)
      : days_(days), order_(count), position_(count), next_(count + 1), previous_(count + 1) {
    for (std::size_t i = 0; i < count; ++i) order_[i] = static_cast<std::uint32_t>(i);
    std::sort(order_.begin(), order_.end(), less);
    for (std::size_t p = 0; p < count; ++p) position_[order_[p]] = p;
    for (std::size_t p = 0; p <= count; ++p) next_[p] = previous_[p] = p;
  }

  void markUsed(std::size_t existing) {
    const std::size_t p = position_[existing];
    next_[p] = p + 1;
    // previous_ is shifted by one: slot p + 1 stands for position p, slot 0
    // for "none before".
    previous_[p + 1] = p;
  }

  // The best unmatched entry of the run [begin, end) for `day`, within
  // `window` days: nearest date, then earlier date, then lower index.
  std::optional<Found> best(std::size_t begin, std::size_t end, std::int64_t day,
                            std::int64_t window) {
    const auto at = [&](std::int64_t d) {
      return static_cast<std::size_t>(
          std::partition_point(order_.begin() + static_cast<std::ptrdiff_t>(begin),
                               order_.begin() + static_cast<std::ptrdiff_t>(end),
                               [&](std::uint32_t e) { return days_[e] < d; }) -
          order_.begin());
    };
    const std::size_t from = at(day);
    std::optional<Found> found;
    if (const std::size_t f = findNext(from); f < end) {
      const std::int64_t distance = days_[order_[f]] - day;
      if (distance <= window) found = Found{distance, days_[order_[f]], order_[f]};
    }
    if (const std::size_t slot = findPrevious(from); slot > begin) {
      const std::int64_t before = days_[order_[slot - 1]];
      const std::int64_t distance = day - before;
      if (distance <= window && (!found || distance <= found->distance)) {
        // The first unmatched entry of that date has the lowest index.
        const std::size_t first = findNext(at(before));
        found = Found{distance, before, order_[first]};
      }
    }
    return found;
  }

  const std::vector<std::uint32_t>& order() const { return order_; }

 private:
  std::size_t findNext(std::size_t i) {
    std::size_t root = i;
    while (next_[root] != root) root = next_[root];
    while (next_[i] != root) i = std::exchange(next_[i], root);
    return root;
  }
  // The slot (position + 1) of the last unmatched entry before `position`,
  // 0 for none.
  std::size_t findPrevious(std::size_t position) {
    std::size_t i = position, root = i;
    while (previous_[root] != root) root = previous_[root];
    while (previous_[i] != root) i = std::exchange(previous_[i], root);
    return root;
  }

  const std::vector<std::int64_t>& days_;
  std::vector<std::uint32_t> order_;
  std::vector<std::size_t> position_;
  std::vector<std::size_t> next_;
  std::vector<std::size_t> previous_;
};

}  // namespace

std::int64_t DayOfDateNumber(DateNumber date) {
  // Days from the civil date (Howard Hinnant's algorithm).
  std::int64_t y = date / 10000;
  const std::int64_t m = (date / 100) % 100;
  const std::int64_t d = date % 100;
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const std::int64_t yoe = y - era * 400;
  const std::int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

std::vector<std::ptrdiff_t> MatchDuplicates(const std::vector<DuplicateKey>& imported,
                                            const std::vector<DuplicateKey>& existing,
                                            std::int64_t window) {
  // Payees as small numbers, 0 for none, so that runs sort and compare as
  // integers.
  std::unordered_map<std::string_view, std::uint32_t> payeeIds;
  payeeIds.emplace(std::string_view(), 0);
  const std::size_t count = existing.size();
  std::vector<std::int64_t> cents(count), days(count);
  std::vector<std::uint32_t> payees(count);
  for (std::size_t i = 0; i < count; ++i) {
    cents[i] = existing[i].cents;
    days[i] = existing[i].day;
    payees[i] = payeeIds.try_emplace(existing[i].payee, payeeIds.size()).first->second;
  }
  // Every existing entry sits in two runs: all entries of its amount, and
  // the entries of its amount and payee.
  SortedCandidates byAmount(count, days, [&](std::uint32_t a, std::uint32_t b) {
    return std::tie(cents[a], days[a], a) < std::tie(cents[b], days[b], b);
  });
  SortedCandidates byPayee(count, days, [&](std::uint32_t a, std::uint32_t b) {
    return std::tie(cents[a], payees[a], days[a], a) < std::tie(cents[b], payees[b], days[b], b);
  });
  const auto amountRun = [&](std::int64_t amount) {
    const auto& order = byAmount.order();
    const auto range =
        std::equal_range(order.begin(), order.end(), amount, [&](const auto& a, const auto& b) {
          if constexpr (std::is_same_v<std::decay_t<decltype(a)>, std::uint32_t>) {
            return cents[a] < b;
          } else {
            return a < cents[b];
          }
        });
    return std::pair{static_cast<std::size_t>(range.first - order.begin()),
                     static_cast<std::size_t>(range.second - order.begin())};
  };
  const auto payeeRun = [&](std::int64_t amount, std::uint32_t payee) {
    const auto& order = byPayee.order();
    const auto key = std::pair{amount, payee};
    const auto range =
        std::equal_range(order.begin(), order.end(), key, [&](const auto& a, const auto& b) {
          if constexpr (std::is_same_v<std::decay_t<decltype(a)>, std::uint32_t>) {
            return std::pair{cents[a], payees[a]} < b;
          } else {
            return a < std::pair{cents[b], payees[b]};
          }
        });
    return std::pair{static_cast<std::size_t>(range.first - order.begin()),
                     static_cast<std::size_t>(range.second - order.begin())};
  };

  std::vector<std::ptrdiff_t> matches(imported.size(), -1);
  for (std::size_t i = 0; i < imported.size(); ++i) {
    const DuplicateKey& key = imported[i];
    std::optional<SortedCandidates::Found> found;
    const auto consider = [&](SortedCandidates& candidates,
                              std::pair<std::size_t, std::size_t> run) {
      if (run.first == run.second) return;
      auto candidate = candidates.best(run.first, run.second, key.day, window);
      if (candidate &&
          (!found || std::tie(candidate->distance, candidate->day, candidate->existing) <
                         std::tie(found->distance, found->day, found->existing))) {
        found = candidate;
      }
    };
    if (key.payee.empty()) {
      consider(byAmount, amountRun(key.cents));
    } else {
      // The same payee, or an existing entry without one.
      if (auto id = payeeIds.find(key.payee); id != payeeIds.end()) {
        consider(byPayee, payeeRun(key.cents, id->second));
      }
      consider(byPayee, payeeRun(key.cents, 0));
    }
    if (!found) continue;
    matches[i] = static_cast<std::ptrdiff_t>(found->existing);
    byAmount.markUsed(found->existing);
    byPayee.markUsed(found->existing);
  }
  return matches;
}

std::string ImportCategoryPath(std::string_view text) {
  text = TrimBlanks(text);
  if (text.empty() || text.front() == '[') return {};
  if (const std::size_t slash = text.find('/'); slash != std::string_view::npos) {
    text = text.substr(0, slash);
  }
  std::string path;
  std::size_t start = 0;
  while (true) {
    const std::size_t colon = text.find(':', start);
    const std::string_view part = TrimBlanks(text.substr(start, colon - start));
    if (part.empty()) return {};
    if (!path.empty()) path += ':';
    path += part;
    if (colon == std::string_view::npos) break;
    start = colon + 1;
  }
  return path;
}

TARNImportReview::TARNImportReview(TARNBook& book, TARNAccount& account, ImportFormat format,
                                   ImportFileOptions options)
    : book_(book), account_(account), format_(format), options_(std::move(options)) {}

void TARNImportReview::addEntries(const plist::Array& dictionaries) {
  items_.reserve(items_.size() + dictionaries.size());
  // Texts repeat across a statement; each distinct one is looked up once.
  std::unordered_map<std::string, std::shared_ptr<TARNAccountEntryCategory>> categories;
  const auto category = [&](const std::string& text) {
    auto [found, added] = categories.try_emplace(text);
    if (added) found->second = existingCategory(text);
    return found->second;
  };
  for (const plist::Value& dictionary : dictionaries) {
    if (!dictionary.isDictionary()) continue;
    ImportReviewItem item = itemFromDictionary(dictionary, items_.size());
    if (!item.categoryText.empty()) {
      auto found = category(item.categoryText);
      item.entry->SetActualCategory(found);
      item.newCategory = !found && !ImportCategoryPath(item.categoryText).empty();
    }
    auto& lines = item.entry->splitLineItems();
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const std::string& text = item.splitCategoryTexts[i];
      if (auto found = text.empty() ? nullptr : category(text))
        lines[i]->setCategory(found->number());
    }
    items_.push_back(std::move(item));
  }
  markDuplicates();
}

ImportReviewItem TARNImportReview::itemFromDictionary(const plist::Value& dictionary,
                                                      std::size_t index) {
  ImportReviewItem item;
  auto entry = std::make_shared<TARNImportEntry>();
  item.entry = entry;
  // A provisional number: the review's comparators fall back on it.
  entry->SetNumber(static_cast<std::int32_t>(index) + 1);
  double amount = 0;
  if (const plist::Value* value = dictionary.find("amount"); value && value->isNumber()) {
    amount = value->doubleValue();
  }
  entry->SetAmount(amount);
  bool deposit = amount > 0;
  if (const plist::Value* value = dictionary.find("isDeposit"); value && value->isNumber()) {
    deposit = value->boolValue();
  }
  if (deposit) {
    entry->SetIsDeposit(true);
  } else {
    entry->SetIsDebit(true);
  }
  if (const plist::Value* value = dictionary.find("date"); value && value->isNumber()) {
    entry->SetDate(value->intValue());
  }
  entry->SetToFrom(TextOf(dictionary, "toFrom"));
  entry->SetDescription(TextOf(dictionary, "description"));
  entry->SetNotes(TextOf(dictionary, "notes"));
  if (const plist::Value* value = dictionary.find("cleared"); value && value->boolValue()) {
    entry->SetCleared(1);
  }
  if (const plist::Value* value = dictionary.find("taxDeductible"); value && value->boolValue()) {
    entry->SetTaxDeductible(true);
  }
  const plist::Value* number = dictionary.find("number");
  const bool hasNumber = number && number->isNumber() && number->intValue() > 0;
  if (hasNumber) entry->SetCheckNumber(number->intValue());
  item.fitID = TextOf(dictionary, "fitID");
  item.typeText = std::string(TrimBlanks(TextOf(dictionary, "type")));
  item.categoryText = std::string(TrimBlanks(TextOf(dictionary, "category")));
  if (const plist::Value* splits = dictionary.find("splits"); splits && splits->isArray()) {
    for (const plist::Value& split : splits->arrayValue()) {
      if (!split.isDictionary()) continue;
      double part = 0;
      if (const plist::Value* value = split.find("amount")) {
        part = value->isString() ? std::strtod(value->stringValue().c_str(), nullptr)
                                 : value->doubleValue();
      }
      entry->addSplitLineItemWithCategory(-1, TextOf(split, "description"), entry->GetToFrom(),
                                          part);
      item.splitCategoryTexts.push_back(std::string(TrimBlanks(TextOf(split, "category"))));
    }
  }
  resolveType(item, hasNumber);
  return item;
}

void TARNImportReview::resolveType(ImportReviewItem& item, bool hasNumber) {
  TARNImportEntry& entry = *item.entry;
  const bool deposit = entry.IsDeposit();
  std::shared_ptr<TARNAccountEntryType> type;
  if (!item.typeText.empty()) {
    type = EntryTypeWithName(account_, item.typeText, deposit);
    item.newType = !type;
  } else if (hasNumber && !deposit) {
    type = account_.accountEntryTypeForNumber(TARNAccountEntryType::kTypeCheck);
  }
  if (!type && !item.newType) {
    type = deposit ? account_.defaultDepositType() : account_.defaultDebitType();
    if (!type && deposit) {
      type = account_.accountEntryTypeForNumber(TARNAccountEntryType::kTypeDeposit);
    }
  }
  entry.SetActualType(type);
  // A numbered debit of a check type is a check; any other number stays a
  // reference the entry keeps.
  entry.SetIsCheck(type && type->GetIsCheck() && hasNumber && !deposit);
}

std::shared_ptr<TARNAccountEntryCategory> TARNImportReview::existingCategory(
    const std::string& text) {
  const std::string path = ImportCategoryPath(text);
  return path.empty() ? nullptr : book_.categoryWithFullName(path);
}

void TARNImportReview::markDuplicates() {
  const std::set<std::string>& remembered = book_.importedIdentifiers(account_.GetNumber());
  std::unordered_set<std::string_view> seen;
  std::vector<DuplicateKey> imported;
  std::vector<std::size_t> importedItem;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    ImportReviewItem& item = items_[i];
    item.duplicate = DuplicateReason::None;
    item.matchedEntry = -1;
    if (!item.fitID.empty()) {
      if (remembered.count(item.fitID)) {
        item.duplicate = DuplicateReason::ImportedBefore;
      } else if (!seen.insert(item.fitID).second) {
        item.duplicate = DuplicateReason::SameInFile;
      }
      continue;
    }
    const TARNImportEntry& entry = *item.entry;
    imported.push_back({Cents(entry.GetAmount()), DayOfDateNumber(entry.GetDate()),
                        CaseFold(TrimBlanks(entry.GetToFrom()))});
    importedItem.push_back(i);
  }
  if (!imported.empty()) {
    const TARNAccount::Entries all = account_.GetAllEntries();
    std::vector<DuplicateKey> existing;
    existing.reserve(all.size());
    for (const auto& entry : all) {
      existing.push_back({Cents(entry->GetAmount()), DayOfDateNumber(entry->GetDate()),
                          CaseFold(TrimBlanks(entry->GetToFrom()))});
    }
    const std::vector<std::ptrdiff_t> matches = MatchDuplicates(imported, existing);
    for (std::size_t k = 0; k < matches.size(); ++k) {
      if (matches[k] < 0) continue;
      ImportReviewItem& item = items_[importedItem[k]];
      item.duplicate = DuplicateReason::MatchesEntry;
      item.matchedEntry = all[static_cast<std::size_t>(matches[k])]->GetNumber();
    }
  }
  for (ImportReviewItem& item : items_)
    item.entry->SetImport(item.duplicate == DuplicateReason::None);
}

std::size_t TARNImportReview::duplicateCount() const {
  return static_cast<std::size_t>(std::count_if(items_.begin(), items_.end(), [](const auto& item) {
    return item.duplicate != DuplicateReason::None;
  }));
}

std::size_t TARNImportReview::tickedCount() const {
  return static_cast<std::size_t>(std::count_if(
      items_.begin(), items_.end(), [](const auto& item) { return item.entry->GetImport(); }));
}

bool TARNImportReview::tickOnly(const std::vector<std::size_t>& indexes) {
  for (std::size_t index : indexes) {
    if (index >= items_.size()) return false;
  }
  for (auto& item : items_) item.entry->SetImport(false);
  for (std::size_t index : indexes) items_[index].entry->SetImport(true);
  return true;
}

std::vector<std::shared_ptr<TARNAccountEntry>> TARNImportReview::accept() {
  std::vector<std::shared_ptr<TARNAccountEntry>> added;
  // Types made here, by folded name and direction, so that two entries
  // naming one new type share it.
  std::map<std::pair<std::string, bool>, std::shared_ptr<TARNAccountEntryType>> newTypes;
  const auto category = [&](const std::string& text) -> std::shared_ptr<TARNAccountEntryCategory> {
    const std::string path = ImportCategoryPath(text);
    if (path.empty()) return nullptr;
    try {
      return book_.addCategoryPath(path);
    } catch (const std::invalid_argument&) {
      return nullptr;
    }
  };
  for (ImportReviewItem& item : items_) {
    TARNImportEntry& entry = *item.entry;
    if (!entry.GetImport()) continue;
    if (item.newType) {
      const bool deposit = entry.IsDeposit();
      auto& type = newTypes[{CaseFold(item.typeText), deposit}];
      if (!type) type = EntryTypeWithName(account_, item.typeText, deposit);
      if (!type) {
        type = std::make_shared<TARNAccountEntryType>();
        type->SetName(item.typeText);
        type->SetIsDeposit(deposit);
        type->SetNumber(account_.nextAvailableTypeNumber());
        account_.types().push_back(type);
      }
      entry.SetActualType(type);
    }
    if (item.newCategory) entry.SetActualCategory(category(item.categoryText));
    auto& lines = entry.splitLineItems();
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (lines[i]->category() >= 0 || item.splitCategoryTexts[i].empty()) continue;
      if (auto found = category(item.splitCategoryTexts[i])) lines[i]->setCategory(found->number());
    }
    std::shared_ptr<TARNAccountEntry> plain = TARNAccountEntry::entryWithEntry(&entry);
    plain->SetNumber(account_.NextAvailableNumber());
    account_.AddEntry(plain);
    if (!item.fitID.empty()) book_.rememberImportedIdentifier(account_.GetNumber(), item.fitID);
    added.push_back(std::move(plain));
  }
  storeOptions();
  return added;
}

void TARNImportReview::storeOptions() const {
  switch (format_) {
    case ImportFormat::QIF:
      account_.setQIFImportSettings(options_.qif);
      break;
    case ImportFormat::OFX:
      account_.setOFXImportSettings(options_.ofx);
      break;
    case ImportFormat::Text:
      account_.setTextImportSettings(options_.text);
      break;
    case ImportFormat::Unknown:
      break;
  }
}

}  // namespace tarn
