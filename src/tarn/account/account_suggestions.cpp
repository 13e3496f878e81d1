// The suggestion lists of the entry sheet (descriptions and parties already
// used in the account, or the user's own lists) and the imports of types and
// suggestion lists from another account. Texts are told apart
// case-insensitively through a hash set of their folded forms, so a list is
// one pass over the entries whatever its length.

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/account/ledger_entries.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/text.h"

namespace tarn {

namespace {

enum class Direction { Debits, Deposits };
enum class Field { Description, ToFrom };

const std::string& FieldOf(const TARNAccountEntry& entry, Field field) {
  return field == Field::Description ? entry.GetDescription() : entry.GetToFrom();
}

bool HasDirection(const TARNAccountEntry& entry, Direction direction) {
  return direction == Direction::Debits ? entry.IsDebit() : entry.IsDeposit();
}

struct FoldedHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return std::hash<std::string_view>{}(text);
  }
};

// Texts kept in the order added, each different case-insensitively from
// every other; the first spelling of a text is the one kept.
class DistinctTexts {
 public:
  // Suggestion lists leave empty texts out; the user's lists and type names
  // keep them like any other text.
  explicit DistinctTexts(bool keepEmpty = false) : keepEmpty_(keepEmpty) {}

  // Adds a copy of the text unless it is already there (or empty, unless
  // empty texts are kept).
  bool add(const std::string& text) {
    if (text.empty() && !keepEmpty_) return false;
    FoldInto(text, scratch_);
    if (folded_.find(std::string_view(scratch_)) != folded_.end()) return false;
    const std::string& key = *folded_.insert(scratch_).first;
    texts_.push_back({&key, text});
    return true;
  }
  bool contains(const std::string& text) {
    FoldInto(text, scratch_);
    return folded_.find(std::string_view(scratch_)) != folded_.end();
  }
  std::size_t size() const { return texts_.size(); }
  void reserve(std::size_t count) { texts_.reserve(count); }

  // The texts in case-insensitive order. Comparing the folded forms byte by
  // byte is that order, and no two folded forms are equal.
  TARNAccount::Strings takeSorted() {
    std::sort(texts_.begin(), texts_.end(),
              [](const Text& a, const Text& b) { return *a.folded < *b.folded; });
    return takeInOrder();
  }
  TARNAccount::Strings takeInOrder() {
    TARNAccount::Strings result;
    result.reserve(texts_.size());
    for (Text& text : texts_) result.push_back(std::move(text.original));
    texts_.clear();
    return result;
  }

 private:
  struct Text {
    const std::string* folded;  // a node of folded_, which never moves
    std::string original;
  };
  std::unordered_set<std::string, FoldedHash, std::equal_to<>> folded_;
  std::vector<Text> texts_;
  std::string scratch_;
  bool keepEmpty_;
};

TARNAccount::Strings AllTexts(const TARNAccount& account, Direction direction, Field field) {
  if (!account.IsAuthenticated()) return {};
  DistinctTexts texts;
  ForEachLedgerEntry(account, [&](const std::shared_ptr<TARNAccountEntry>& entry) {
    if (HasDirection(*entry, direction)) texts.add(FieldOf(*entry, field));
  });
  return texts.takeSorted();
}

// Newest entries first (highest entry number; equal numbers in list order).
// Only as many entries leave the heap as the list needs, so a short list of
// a long ledger costs a linear heap build and a few pops, not a full sort.
TARNAccount::Strings SomeTexts(const TARNAccount& account, Direction direction, Field field,
                               std::int32_t n) {
  if (!account.IsAuthenticated()) {
    TARNAccount::Strings empty;
    if (n > 0) empty.reserve(static_cast<std::size_t>(n));
    return empty;
  }
  struct Candidate {
    std::int32_t number;
    std::uint32_t position;
    const std::string* text;
  };
  std::vector<Candidate> heap;
  heap.reserve(LedgerEntryCapacity(account));
  std::uint32_t position = 0;
  ForEachLedgerEntry(account, [&](const std::shared_ptr<TARNAccountEntry>& entry) {
    if (HasDirection(*entry, direction)) {
      heap.push_back({entry->GetNumber(), position, &FieldOf(*entry, field)});
    }
    ++position;
  });
  // A max-heap whose top is the newest candidate.
  const auto older = [](const Candidate& a, const Candidate& b) {
    if (a.number != b.number) return a.number < b.number;
    return a.position > b.position;
  };
  std::make_heap(heap.begin(), heap.end(), older);

  DistinctTexts texts;
  auto end = heap.end();
  while (end != heap.begin()) {
    std::pop_heap(heap.begin(), end, older);
    --end;
    const std::size_t countBefore = texts.size();
    // The list stops only after the addition made with n texts already in
    // it, so it can hold n + 1.
    if (texts.add(*end->text) && n <= static_cast<std::int32_t>(countBefore)) break;
  }
  return texts.takeInOrder();
}

std::optional<TARNAccount::Strings> ChosenList(std::int32_t style,
                                               const std::function<TARNAccount::Strings()>& all,
                                               const std::function<TARNAccount::Strings()>& some,
                                               const std::optional<TARNAccount::Strings>& mine) {
  switch (style) {
    case 0:
      return all();
    case 1:
      return some();
    case 2:
      return mine;
    default:
      return std::nullopt;
  }
}

// Appends to `list` every text of `from` that it lacks case-insensitively;
// the list is made when there is none.
void MergeTexts(std::optional<TARNAccount::Strings>& list,
                const std::optional<TARNAccount::Strings>& from) {
  if (!list) list.emplace();
  DistinctTexts present(/*keepEmpty=*/true);
  for (const std::string& text : *list) present.add(text);
  if (!from) return;
  for (const std::string& text : *from) {
    if (present.add(text)) list->push_back(text);
  }
}

}  // namespace

TARNAccount::Strings TARNAccount::DebitDescriptions_All() const {
  return AllTexts(*this, Direction::Debits, Field::Description);
}
TARNAccount::Strings TARNAccount::DebitDescriptions_Some(std::int32_t n) const {
  return SomeTexts(*this, Direction::Debits, Field::Description, n);
}
const std::optional<TARNAccount::Strings>& TARNAccount::DebitDescriptions_Specific() const {
  return preferredDebitDescriptions_;
}

TARNAccount::Strings TARNAccount::DepositDescriptions_All() const {
  return AllTexts(*this, Direction::Deposits, Field::Description);
}
TARNAccount::Strings TARNAccount::DepositDescriptions_Some(std::int32_t n) const {
  return SomeTexts(*this, Direction::Deposits, Field::Description, n);
}
const std::optional<TARNAccount::Strings>& TARNAccount::DepositDescriptions_Specific() const {
  return preferredDepositDescriptions_;
}

TARNAccount::Strings TARNAccount::Tos_All() const {
  return AllTexts(*this, Direction::Debits, Field::ToFrom);
}
TARNAccount::Strings TARNAccount::Tos_Some(std::int32_t n) const {
  return SomeTexts(*this, Direction::Debits, Field::ToFrom, n);
}
const std::optional<TARNAccount::Strings>& TARNAccount::Tos_Specific() const {
  return preferredTos_;
}

TARNAccount::Strings TARNAccount::Froms_All() const {
  return AllTexts(*this, Direction::Deposits, Field::ToFrom);
}
TARNAccount::Strings TARNAccount::Froms_Some(std::int32_t n) const {
  return SomeTexts(*this, Direction::Deposits, Field::ToFrom, n);
}
const std::optional<TARNAccount::Strings>& TARNAccount::Froms_Specific() const {
  return preferredFroms_;
}

std::optional<TARNAccount::Strings> TARNAccount::GetPreferredDebitDescriptions() const {
  return ChosenList(
      preference_Descriptions_Style_, [this] { return DebitDescriptions_All(); },
      [this] { return DebitDescriptions_Some(preference_Descriptions_SomeSelection_); },
      preferredDebitDescriptions_);
}

std::optional<TARNAccount::Strings> TARNAccount::GetPreferredDepositDescriptions() const {
  return ChosenList(
      preference_Descriptions_Style_, [this] { return DepositDescriptions_All(); },
      [this] { return DepositDescriptions_Some(preference_Descriptions_SomeSelection_); },
      preferredDepositDescriptions_);
}

std::optional<TARNAccount::Strings> TARNAccount::GetPreferredTos() const {
  return ChosenList(
      preference_ToFrom_Style_, [this] { return Tos_All(); },
      [this] { return Tos_Some(preference_ToFrom_SomeSelection_); }, preferredTos_);
}

std::optional<TARNAccount::Strings> TARNAccount::GetPreferredFroms() const {
  return ChosenList(
      preference_ToFrom_Style_, [this] { return Froms_All(); },
      [this] { return Froms_Some(preference_ToFrom_SomeSelection_); }, preferredFroms_);
}

void TARNAccount::importTypesFromAccount(const TARNAccount* other) {
  if (!other || !other->IsAuthenticated()) return;
  for (const bool deposit : {false, true}) {
    // Names of this account's types of the direction, as they were before.
    DistinctTexts names(/*keepEmpty=*/true);
    for (const auto& type : deposit ? GetDepositTypes() : GetDebitTypes()) {
      names.add(type->GetName());
    }
    for (const auto& theirs : deposit ? other->GetDepositTypes() : other->GetDebitTypes()) {
      const std::string name = theirs->GetName();
      if (names.contains(name)) continue;
      auto copy = TARNAccountEntryType::initWithDictionary(theirs->asDictionary());
      copy->SetNumber(nextAvailableTypeNumber());
      types_.push_back(std::move(copy));
    }
  }
  std::stable_sort(types_.begin(), types_.end(),
                   [](const auto& a, const auto& b) { return a->NameIsGreaterThan(*b) < 0; });
}

void TARNAccount::importDescriptionsFromAccount(const TARNAccount* other) {
  if (!other || !other->IsAuthenticated()) return;
  MergeTexts(preferredDebitDescriptions_, other->preferredDebitDescriptions_);
  MergeTexts(preferredDepositDescriptions_, other->preferredDepositDescriptions_);
}

void TARNAccount::importToFromsFromAccount(const TARNAccount* other) {
  if (!other || !other->IsAuthenticated()) return;
  MergeTexts(preferredTos_, other->preferredTos_);
  MergeTexts(preferredFroms_, other->preferredFroms_);
}

}  // namespace tarn
