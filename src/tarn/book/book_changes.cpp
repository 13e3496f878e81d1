// Capturing and restoring entries, account settings and whole books.

#include "tarn/book/book_changes.h"

#include <algorithm>
#include <functional>
#include <set>
#include <stdexcept>
#include <unordered_set>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/book/book.h"
#include "tarn/book/import_review.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/text.h"
#include "tarn/reports/account_summary.h"

namespace tarn {

namespace {

using Entries = std::vector<std::shared_ptr<TARNAccountEntry>>;

struct Place {
  Entries* list = nullptr;
  std::int32_t folder = -1;
  std::size_t position = 0;
};

Entries* ListOf(TARNAccount& account, std::int32_t folder) {
  if (folder < 0) return &account.GetEntries();
  if (static_cast<std::size_t>(folder) >= account.folders().size()) return nullptr;
  return &account.folders()[static_cast<std::size_t>(folder)]->entries();
}

// Where the entry of that number stands: in a folder (short lists, and
// where an account with a selected folder adds entries), else in the
// register, searched from its end, where added entries stand.
std::optional<Place> Find(const TARNAccount& account, std::int32_t number) {
  auto& mutableAccount = const_cast<TARNAccount&>(account);
  const auto folders = static_cast<std::int32_t>(account.folders().size());
  for (std::int32_t step = 0; step <= folders; ++step) {
    const std::int32_t folder = step < folders ? step : -1;
    Entries* list = ListOf(mutableAccount, folder);
    for (std::size_t i = list->size(); i-- > 0;) {
      if ((*list)[i]->GetNumber() == number) return Place{list, folder, i};
    }
  }
  return std::nullopt;
}

}  // namespace

std::vector<EntryState> CaptureEntries(const TARNBook& book, const std::vector<EntryKey>& keys) {
  std::vector<EntryState> states;
  states.reserve(keys.size());
  for (const auto& key : keys) {
    EntryState state{key, plist::Value(), -1, 0};
    if (auto account = book.accountWithNumber(key.account)) {
      if (auto place = Find(*account, key.entry)) {
        state.dictionary = (*place->list)[place->position]->asDictionary();
        state.folder = place->folder;
        state.position = place->position;
      }
    }
    states.push_back(std::move(state));
  }
  return states;
}

void RestoreEntries(TARNBook& book, const std::vector<EntryState>& states,
                    const std::vector<EntryState>* current) {
  // Removals first, from the back of each list so that the places found
  // stay right, then insertions in order of position, so that positions
  // captured together stay right.
  std::vector<Place> found;
  std::vector<const EntryState*> present;
  for (std::size_t i = 0; i < states.size(); ++i) {
    const EntryState& state = states[i];
    auto account = book.accountWithNumber(state.key.account);
    if (!account) continue;
    const EntryState* now =
        current && i < current->size() && (*current)[i].key == state.key ? &(*current)[i] : nullptr;
    if (!now || !now->dictionary.isNil()) {
      std::optional<Place> place;
      if (now) {
        Entries* list = ListOf(*account, now->folder);
        if (list && now->position < list->size() &&
            (*list)[now->position]->GetNumber() == state.key.entry) {
          place = Place{list, now->folder, now->position};
        }
      }
      if (!place) place = Find(*account, state.key.entry);
      if (place) found.push_back(*place);
    }
    if (!state.dictionary.isNil()) present.push_back(&state);
  }
  std::sort(found.begin(), found.end(), [](const Place& a, const Place& b) {
    if (a.list != b.list) return std::less<const Entries*>()(a.list, b.list);
    return a.position > b.position;
  });
  found.erase(std::unique(found.begin(), found.end(),
                          [](const Place& a, const Place& b) {
                            return a.list == b.list && a.position == b.position;
                          }),
              found.end());
  for (const Place& place : found) {
    place.list->erase(place.list->begin() + static_cast<std::ptrdiff_t>(place.position));
  }
  std::sort(present.begin(), present.end(),
            [](const EntryState* a, const EntryState* b) { return a->position < b->position; });
  for (const EntryState* state : present) {
    auto account = book.accountWithNumber(state->key.account);
    auto entry = TARNAccountEntry::initWithDictionary(state->dictionary);
    if (!entry) continue;
    entry->SetAccount(account.get());
    Entries* list = ListOf(*account, state->folder);
    if (!list) list = &account->GetEntries();
    const std::size_t at = std::min(state->position, list->size());
    list->insert(list->begin() + static_cast<std::ptrdiff_t>(at), std::move(entry));
  }
}

EntriesChange::EntriesChange(const TARNBook& book, std::vector<EntryKey> keys)
    : keys_(std::move(keys)), before_(CaptureEntries(book, keys_)) {}

void EntriesChange::finish(const TARNBook& book, const std::vector<EntryKey>& moreKeys) {
  std::set<std::pair<std::int32_t, std::int32_t>> known;
  for (const auto& key : keys_) known.emplace(key.account, key.entry);
  for (const auto& key : moreKeys) {
    if (!known.emplace(key.account, key.entry).second) continue;
    keys_.push_back(key);
    // Made by the change: absent before it.
    before_.push_back(EntryState{key, plist::Value(), -1, 0});
  }
  after_ = CaptureEntries(book, keys_);
}

namespace {

template <typename List>
plist::Value DictionariesOf(const List& list) {
  plist::Array array;
  array.reserve(list.size());
  for (const auto& each : list) array.push_back(each->asDictionary());
  return plist::Value(std::move(array));
}

// Puts the account's types back as captured, in their order. Types still
// there are kept as they are (the account's default types point at them);
// the others are made from their dictionaries.
void RestoreTypes(TARNAccount& account, const plist::Value& captured) {
  std::vector<std::shared_ptr<TARNAccountEntryType>> types;
  types.reserve(captured.arrayValue().size());
  for (const plist::Value& dictionary : captured.arrayValue()) {
    auto type = TARNAccountEntryType::initWithDictionary(dictionary);
    if (!type) continue;
    const auto same =
        std::find_if(account.types().begin(), account.types().end(),
                     [&type](const auto& each) { return each->GetNumber() == type->GetNumber(); });
    types.push_back(same != account.types().end() ? *same : std::move(type));
  }
  account.types() = std::move(types);
}

void RestoreCategories(TARNBook& book, const plist::Value& captured) {
  TARNBook::Categories categories;
  categories.reserve(captured.arrayValue().size());
  for (const plist::Value& dictionary : captured.arrayValue()) {
    if (dictionary.isDictionary()) {
      categories.push_back(TARNAccountEntryCategory::initWithDictionary(dictionary));
    }
  }
  book.categories() = std::move(categories);
}

}  // namespace

AccountChange::Side AccountChange::Capture(const TARNBook& book, std::int32_t account,
                                           Parts parts) {
  Side side;
  if (auto found = book.accountWithNumber(account)) {
    side.numberCount = found->GetNumberCount();
    if (parts.types) side.types = DictionariesOf(found->types());
    if (parts.schedules) side.schedules = DictionariesOf(found->GetSchedules());
  }
  if (parts.categories) {
    side.categories = DictionariesOf(book.categories());
  }
  return side;
}

AccountChange::AccountChange(const TARNBook& book, std::int32_t account, Parts parts)
    : account_(account),
      parts_(parts),
      entries_(book, {}),
      before_(Capture(book, account, parts)) {}

void AccountChange::rememberIdentifiers(const TARNBook& book,
                                        const std::vector<std::string>& identifiers) {
  const auto& known = book.importedIdentifiers(account_);
  std::unordered_set<std::string> taken(identifiers_.begin(), identifiers_.end());
  for (const std::string& identifier : identifiers) {
    if (identifier.empty() || known.count(identifier) || !taken.insert(identifier).second) continue;
    identifiers_.push_back(identifier);
  }
}

void AccountChange::finish(const TARNBook& book, const std::vector<EntryKey>& added) {
  entries_.finish(book, added);
  after_ = Capture(book, account_, parts_);
  // Lists the change left alone need not be kept.
  const auto drop = [](plist::Value& before, plist::Value& after) {
    if (before == after) before = after = plist::Value();
  };
  drop(before_.types, after_.types);
  drop(before_.categories, after_.categories);
  drop(before_.schedules, after_.schedules);
}

void AccountChange::apply(TARNBook& book, const Side& side, bool remembered) const {
  auto account = book.accountWithNumber(account_);
  if (!account) return;
  if (side.categories.isArray()) RestoreCategories(book, side.categories);
  if (side.types.isArray()) RestoreTypes(*account, side.types);
  if (side.schedules.isArray()) account->InitSchedules(side.schedules);
  account->SetNumberCount(side.numberCount);
  for (const std::string& identifier : identifiers_) {
    if (remembered) {
      book.rememberImportedIdentifier(account_, identifier);
    } else {
      book.forgetImportedIdentifier(account_, identifier);
    }
  }
}

void AccountChange::undo(TARNBook& book) const {
  entries_.undo(book);
  apply(book, before_, false);
}

void AccountChange::redo(TARNBook& book) const {
  apply(book, after_, true);
  entries_.redo(book);
}

AccountChange BeforeImport(const TARNBook& book, std::int32_t account,
                           const TARNImportReview& review) {
  AccountChange change(book, account, {.types = true, .categories = true});
  std::vector<std::string> identifiers;
  for (const ImportReviewItem& item : review.items()) {
    if (item.entry->GetImport() && !item.fitID.empty()) identifiers.push_back(item.fitID);
  }
  change.rememberIdentifiers(book, identifiers);
  return change;
}

AccountSettings CaptureAccountSettings(const TARNAccount& account) {
  AccountSettings settings;
  settings.name = account.GetName();
  settings.currencyCode = account.currency() ? account.currency()->code() : std::string();
  settings.startingBalance = account.GetStartingBalance();
  settings.startingCheckNumber = account.GetStartingCheckNumber();
  settings.password = account.GetPassword();
  settings.statementBalance = account.statementBalance();
  return settings;
}

AccountSummaries CaptureAccountSummaries(const TARNAccount& account) {
  AccountSummaries captured;
  const auto& summaries = account.accountSummaries();
  captured.options.reserve(summaries.size());
  for (std::size_t i = 0; i < summaries.size(); ++i) {
    captured.options.push_back(summaries[i]->optionsAsDictionary());
    if (summaries[i] == account.selectedAccountSummary()) {
      captured.selected = static_cast<std::int32_t>(i);
    }
  }
  return captured;
}

void RestoreAccountSummaries(TARNAccount& account, const AccountSummaries& summaries) {
  auto& list = account.accountSummaries();
  list.clear();
  for (const plist::Value& options : summaries.options) {
    list.push_back(TARNAccountSummary::initWithOptionsDictionary(options, {}));
  }
  account.selectAccountSummaryAtIndex(summaries.selected);
}

std::size_t SaveAccountSummary(TARNAccount& account, const plist::Value& options,
                               std::optional<std::size_t> place) {
  auto& list = account.accountSummaries();
  if (place && *place < list.size()) {
    list[*place]->setOptionsFromDictionary(options);
    return *place;
  }
  auto summary = TARNAccountSummary::initWithOptionsDictionary(options, {});
  const auto taken = [&list](const std::string& name) {
    return std::any_of(list.begin(), list.end(), [&name](const auto& each) {
      return CaseInsensitiveEqual(each->name(), name);
    });
  };
  const std::string base = summary->name();
  for (int suffix = 2; taken(summary->name()); ++suffix) {
    summary->setName(base + " " + std::to_string(suffix));
  }
  account.addAccountSummary(std::move(summary));
  return list.size() - 1;
}

void ApplyAccountSettings(TARNBook& book, TARNAccount& account, const AccountSettings& settings) {
  if (settings.name.empty()) throw std::invalid_argument("An account needs a name.");
  for (const auto& other : book.accounts()) {
    if (other.get() != &account && CaseInsensitiveEqual(other->GetName(), settings.name)) {
      throw std::invalid_argument("Another account is already named \"" + settings.name + "\".");
    }
  }
  std::shared_ptr<PFCurrency> currency = account.currency();
  if (!currency || currency->code() != settings.currencyCode) {
    currency = book.currencyWithCode(settings.currencyCode);
    if (!currency) {
      throw std::invalid_argument("The book has no currency \"" + settings.currencyCode + "\".");
    }
  }
  account.SetName(settings.name);
  account.setCurrency(std::move(currency));
  account.SetStartingBalance(settings.startingBalance);
  account.SetStartingCheckNumber(settings.startingCheckNumber);
  if (account.GetPassword() != settings.password) {
    // Whoever changes the password has just shown they may see the account.
    account.SetPassword(settings.password);
    account.Authenticate(settings.password);
  }
  account.setStatementBalance(settings.statementBalance);
}

BookContents::BookContents(const TARNBook& book) : dictionary_(book.asDictionary()) {}

void BookContents::restore(TARNBook& book) const {
  std::set<std::pair<std::int32_t, std::string>> open;
  for (const auto& account : book.accounts()) {
    if (account->IsAuthenticated()) open.emplace(account->GetNumber(), account->GetPassword());
  }
  book.replaceContents(dictionary_);
  for (const auto& account : book.accounts()) {
    if (open.count({account->GetNumber(), account->GetPassword()})) {
      account->Authenticate(account->GetPassword());
    }
  }
}

}  // namespace tarn
