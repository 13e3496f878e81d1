#include "tarn/model/account_entry.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/model/category.h"
#include "tarn/model/decimal_rounding.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/localized.h"
#include "tarn/platform/log.h"
#include "tarn/platform/text.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

// Keys an entry dictionary always holds; linked entries add three, and
// notes and split lines one each when present.
constexpr std::size_t kEntryKeys = 10;

using namespace std::string_view_literals;
using plist::Dictionary;
using plist::Value;

// The keys an entry reads. An account loads every entry it holds, so they
// are found in one pass over each dictionary rather than one search each.
enum EntryKey {
  kDateKey,
  kNumberKey,
  kCheckNumberKey,
  kEntryFlagsKey,
  kLinkedEntryKey,
  kLinkedAccountKey,
  kLinkedExchangedAmountKey,
  kDescriptionKey,
  kTypeKey,
  kCategoryKey,
  kAmountKey,
  kToFromKey,
  kClearedKey,
  kNotesKey,
  kSplitLineItemsKey,
  kEntryKeyCount
};

int entryKeyOf(std::string_view key) {
  switch (key.size()) {
    case 4:
      if (key == "date") return kDateKey;
      if (key == "type") return kTypeKey;
      break;
    case 5:
      if (key == "notes") return kNotesKey;
      break;
    case 6:
      if (key == "number") return kNumberKey;
      if (key == "amount") return kAmountKey;
      if (key == "toFrom") return kToFromKey;
      break;
    case 7:
      if (key == "cleared") return kClearedKey;
      break;
    case 8:
      if (key == "category") return kCategoryKey;
      break;
    case 10:
      if (key == "entryFlags") return kEntryFlagsKey;
      break;
    case 11:
      if (key == "checkNumber") return kCheckNumberKey;
      if (key == "description") return kDescriptionKey;
      if (key == "linkedEntry") return kLinkedEntryKey;
      break;
    case 13:
      if (key == "linkedAccount") return kLinkedAccountKey;
      break;
    case 14:
      if (key == "splitLineItems") return kSplitLineItemsKey;
      break;
    case 21:
      if (key == "linkedExchangedAmount") return kLinkedExchangedAmountKey;
      break;
  }
  return -1;
}

// The values of an entry dictionary's keys; nullptr for absent ones.
class EntryFields {
 public:
  explicit EntryFields(const Dictionary& dictionary) {
    for (const auto& [key, value] : dictionary) {
      if (const int which = entryKeyOf(key); which >= 0) values_[which] = &value;
    }
  }
  const Value* operator[](EntryKey key) const { return values_[key]; }

 private:
  const Value* values_[kEntryKeyCount] = {};
};

// `found` when it has the kind the entry dictionary requires. Otherwise logs
// `missing` (when given) or `wrong`, and answers nullptr.
const Value* valueOfKind(const Value* found, bool (Value::*hasKind)() const, const char* missing,
                         const char* wrong) {
  if (!found) {
    if (missing) Log(missing);
    return nullptr;
  }
  if (!(found->*hasKind)()) {
    Log(wrong);
    return nullptr;
  }
  return found;
}

template <typename T>
int compareValues(T a, T b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

// Checks sort before non-checks; two checks by their check numbers.
int compareChecks(const TARNAccountEntry& a, const TARNAccountEntry& b) {
  return compareValues(a.CheckOrderKey(), b.CheckOrderKey());
}

std::string accountName(const TARNAccount* account) {
  return account ? account->GetName() : std::string();
}

// Names of types and categories as the account knows them; "" for unknown.
std::string typeName(const TARNAccount* account, std::int32_t type) {
  if (!account) return {};
  auto found = account->accountEntryTypeForNumber(type);
  return found ? found->GetName() : std::string();
}

std::string categoryFullName(const TARNAccount* account, std::int32_t category) {
  if (!account) return {};
  auto found = account->accountEntryCategoryForNumber(category);
  return found ? found->fullName() : std::string();
}

// "label:  value .  ", one sentence of the speakable text.
void appendSentence(std::string& text, std::string_view label, std::string_view value) {
  text += Localized(label);
  text += ":  ";
  text += value;
  text += " .  ";
}

// Two decimals with a "." whatever the process locale.
std::string twoDecimals(double value) {
  char buffer[64];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 2);
  return std::string(buffer, result.ptr);
}

}  // namespace

TARNAccountEntry::TARNAccountEntry(NeverInitialised)
    : number_(0), checkNumber_(0), type_(0), category_(0), linkedEntry_(0), linkedAccount_(0) {}

std::shared_ptr<TARNAccountEntry> TARNAccountEntry::initWithDictionary(const Value& dictionary) {
  auto entry = std::make_shared<TARNAccountEntry>();
  entry->loadFromDictionary(dictionary);
  return entry;
}

std::shared_ptr<TARNAccountEntry> TARNAccountEntry::entryWithEntry(const TARNAccountEntry* entry) {
  return initWithEntry(entry);
}

std::shared_ptr<TARNAccountEntry> TARNAccountEntry::initWithEntry(const TARNAccountEntry* entry) {
  if (!entry) {
    // make_shared cannot reach the private constructor.
    return std::shared_ptr<TARNAccountEntry>(new TARNAccountEntry(NeverInitialised{}));
  }
  auto copy = std::make_shared<TARNAccountEntry>();
  copy->loadFromDictionary(entry->asDictionary());
  copy->SetAccount(entry->GetAccount());
  return copy;
}

void TARNAccountEntry::loadFromDictionary(const Value& value) {
  if (!value.isDictionary()) return;
  const EntryFields fields(value.dictionaryValue());
  const Value* found = nullptr;

  if ((found = valueOfKind(
           fields[kDateKey], &Value::isNumber,
           "No date defined for theDictionary in -[TARNAccountEntry initWithDictionary:]",
           "date is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    date_ = static_cast<DateNumber>(found->longValue());
  }
  if ((found = valueOfKind(
           fields[kNumberKey], &Value::isNumber,
           "No number defined for theDictionary in -[TARNAccountEntry initWithDictionary:]",
           "number is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    number_ = static_cast<std::int32_t>(found->longValue());
  }
  if ((found = valueOfKind(
           fields[kCheckNumberKey], &Value::isNumber,
           "No checkNumber defined for theDictionary in -[TARNAccountEntry initWithDictionary:]",
           "checkNumber is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    checkNumber_ = static_cast<std::int32_t>(found->longValue());
  }
  if ((found = valueOfKind(
           fields[kEntryFlagsKey], &Value::isNumber,
           "No entryFlags defined for theDictionary in -[TARNAccountEntry initWithDictionary:]",
           "entryFlags is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    entryFlags_ = found->intValue();
  }
  // Link keys count only for an entry that says it is linked.
  if (entryFlags_ & kEntryFlagLinked) {
    if ((found = valueOfKind(
             fields[kLinkedEntryKey], &Value::isNumber, nullptr,
             "linkedEntry is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
      linkedEntry_ = found->intValue();
    }
    if ((found = valueOfKind(
             fields[kLinkedAccountKey], &Value::isNumber, nullptr,
             "linkedAccount is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
      linkedAccount_ = found->intValue();
    }
    if ((found = valueOfKind(fields[kLinkedExchangedAmountKey], &Value::isNumber, nullptr,
                             "linkedExchangedAmount is in the wrong format in -[TARNAccountEntry "
                             "initWithDictionary:]"))) {
      linkedExchangedAmount_ = found->doubleValue();
    }
  }
  if ((found = valueOfKind(
           fields[kDescriptionKey], &Value::isString,
           "No description defined for theDictionary in -[TARNAccountEntry initWithDictionary:]",
           "description is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    description_ = found->stringValue();
  }
  if ((found = valueOfKind(
           fields[kTypeKey], &Value::isNumber,
           "No type defined for theDictionary in -[TARNAccountEntry initWithDictionary:]",
           "type is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    type_ = found->intValue();
  }
  if ((found = valueOfKind(
           fields[kCategoryKey], &Value::isNumber, nullptr,
           "category is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    category_ = found->intValue();
  }
  // The stored amount is taken as it stands, without SetAmount's rounding.
  if ((found = valueOfKind(
           fields[kAmountKey], &Value::isNumber,
           "No amount defined for theDictionary in -[TARNAccountEntry initWithDictionary:]",
           "amount is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    amount_ = found->doubleValue();
  }
  if ((found = valueOfKind(
           fields[kToFromKey], &Value::isString,
           "No toFrom defined for theDictionary in -[TARNAccountEntry initWithDictionary:]",
           "toFrom is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    toFrom_ = found->stringValue();
  }
  if ((found = valueOfKind(
           fields[kClearedKey], &Value::isNumber,
           "No cleared defined for theDictionary in -[TARNAccountEntry initWithDictionary:]",
           "cleared is in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    cleared_ = found->boolValue() ? 1 : 0;
  }
  if ((found = valueOfKind(
           fields[kNotesKey], &Value::isString, nullptr,
           "notes are in the wrong format in -[TARNAccountEntry initWithDictionary:]"))) {
    notes_ = found->stringValue();
  }
  // A "splitLineItems" that is no array is passed over without a word.
  if (const Value* lines = fields[kSplitLineItemsKey]; lines && lines->isArray()) {
    const plist::Array& items = lines->arrayValue();
    splitLineItems_.reserve(splitLineItems_.size() + items.size());
    for (const Value& itemDictionary : items) {
      auto item = std::make_shared<TARNAccountEntrySplitLineItem>();
      item->loadFromDictionary(itemDictionary.dictionaryValue());
      splitLineItems_.push_back(std::move(item));
    }
  }
}

plist::Value TARNAccountEntry::asDictionary() const {
  Dictionary dictionary;
  dictionary.reserve(entryKeyCount());  // one allocation, no slack, for the whole entry
  writeEntryKeys(dictionary);
  return Value(std::move(dictionary));
}

std::size_t TARNAccountEntry::entryKeyCount() const {
  return kEntryKeys + (IsLinked() ? 3 : 0) + (notes_.empty() ? 0 : 1) +
         (splitLineItems_.empty() ? 0 : 1);
}

void TARNAccountEntry::writeEntryKeys(Dictionary& dictionary) const {
  // Appended in key order (tests compare the result with a sorted dictionary):
  // no searching or comparing while building.
  dictionary.appendSorted("amount"sv, amount_);
  dictionary.appendSorted("category"sv, std::int64_t{category_});
  dictionary.appendSorted("checkNumber"sv, std::int64_t{checkNumber_});
  dictionary.appendSorted("cleared"sv, cleared_ != 0);
  dictionary.appendSorted("date"sv, std::int64_t{date_});
  dictionary.appendSorted("description"sv, description_);
  dictionary.appendSorted("entryFlags"sv, std::int64_t{entryFlags_});
  if (IsLinked()) {
    dictionary.appendSorted("linkedAccount"sv, std::int64_t{linkedAccount_});
    dictionary.appendSorted("linkedEntry"sv, std::int64_t{linkedEntry_});
    dictionary.appendSorted("linkedExchangedAmount"sv, linkedExchangedAmount_);
  }
  if (!notes_.empty()) dictionary.appendSorted("notes"sv, notes_);
  dictionary.appendSorted("number"sv, std::int64_t{number_});
  if (!splitLineItems_.empty()) {
    plist::Array items;
    items.reserve(splitLineItems_.size());
    for (const auto& item : splitLineItems_) items.push_back(item->asDictionary());
    dictionary.appendSorted("splitLineItems"sv, std::move(items));
  }
  dictionary.appendSorted("toFrom"sv, toFrom_);
  dictionary.appendSorted("type"sv, std::int64_t{type_});
}

void TARNAccountEntry::SetDescription(std::optional<std::string> description) {
  if (description) description_ = std::move(*description);
}

void TARNAccountEntry::SetDate(DateNumber date) {
  if (date >= 0) date_ = date;
}

void TARNAccountEntry::SetAmount(double amount) {
  amount_ = RoundDecimalPlain(amount, 2);
}

void TARNAccountEntry::SetIsCheck(bool isCheck) {
  setFlag(kEntryFlagCheck, isCheck);
}

void TARNAccountEntry::SetIsDebit(bool isDebit) {
  setFlag(kEntryFlagDebit, isDebit);
  if (isDebit) setFlag(kEntryFlagDeposit, false);
}

void TARNAccountEntry::SetIsDeposit(bool isDeposit) {
  setFlag(kEntryFlagDeposit, isDeposit);
  if (isDeposit) setFlag(kEntryFlagDebit, false);
}

void TARNAccountEntry::SetIsLinked(bool isLinked) {
  setFlag(kEntryFlagLinked, isLinked);
  if (!isLinked) {
    linkedEntry_ = -1;
    linkedAccount_ = -1;
  }
}

void TARNAccountEntry::SetToFrom(std::optional<std::string> toFrom) {
  if (toFrom) toFrom_ = std::move(*toFrom);
}

void TARNAccountEntry::SetTaxDeductible(bool taxDeductible) {
  setFlag(kEntryFlagTaxDeductible, taxDeductible);
}

void TARNAccountEntry::SetVoid(bool isVoid) {
  setFlag(kEntryFlagVoid, isVoid);
}

void TARNAccountEntry::SetNotes(std::optional<std::string> notes) {
  notes_ = notes ? std::move(*notes) : std::string();
}

void TARNAccountEntry::addSplitLineItem(std::shared_ptr<TARNAccountEntrySplitLineItem> item) {
  if (item) splitLineItems_.push_back(std::move(item));
}

void TARNAccountEntry::addSplitLineItemWithCategory(std::int32_t category, std::string description,
                                                    std::string toFrom, double amount) {
  splitLineItems_.push_back(TARNAccountEntrySplitLineItem::initWithCategory(
      category, std::move(description), std::move(toFrom), amount, amount));
}

void TARNAccountEntry::insertSplitLineItem(std::shared_ptr<TARNAccountEntrySplitLineItem> item,
                                           int index) {
  if (!item || index < 0 || static_cast<std::size_t>(index) > splitLineItems_.size()) return;
  splitLineItems_.insert(splitLineItems_.begin() + index, std::move(item));
}

void TARNAccountEntry::removeSplitLineItemAtIndex(int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= splitLineItems_.size()) return;
  splitLineItems_.erase(splitLineItems_.begin() + index);
}

void TARNAccountEntry::removeSplitLineItem(
    const std::shared_ptr<TARNAccountEntrySplitLineItem>& item) {
  if (!item) return;
  // Held by value: `item` may be a reference into the list itself.
  const TARNAccountEntrySplitLineItem* target = item.get();
  std::erase_if(splitLineItems_, [target](const auto& held) { return held.get() == target; });
}

double TARNAccountEntry::splitTotal() const {
  double total = 0.0;
  for (const auto& item : splitLineItems_) total += item->amount();
  return total;
}

void TARNAccountEntry::syncToEntry(TARNAccountEntry& other) const {
  other.SetIsLinked(true);
  other.SetLinkedEntry(number_);
  // Without an account there is no account number to point at, and no name
  // to use as the mirror's party.
  other.SetLinkedAccount(account_ ? account_->GetNumber() : -1);
  if (account_) other.SetToFrom(account_->GetName());
  other.SetCategory(category_);
  other.SetDescription(description_);
  other.SetDate(date_);
  if (IsDebit()) {
    other.SetIsDeposit(true);
  } else {
    other.SetIsDebit(true);
  }
  other.SetVoid(GetVoid());

  // Identity, not equality: two equal currency objects still count as two
  // currencies, and then the amounts trade places with the exchanged ones.
  const PFCurrency* ownCurrency = account_ ? account_->currency().get() : nullptr;
  const PFCurrency* otherCurrency = other.account_ ? other.account_->currency().get() : nullptr;
  const bool sameCurrency = ownCurrency == otherCurrency;

  if (sameCurrency) {
    other.SetAmount(amount_);
  } else {
    other.SetAmount(linkedExchangedAmount_);
    other.SetLinkedExchangedAmount(amount_);
  }
  // Copied first: syncing an entry to itself must not read the list it clears.
  const LineItems sourceItems = splitLineItems_;
  other.removeAllSplitLineItems();
  for (const auto& source : sourceItems) {
    auto copy = std::make_shared<TARNAccountEntrySplitLineItem>(*source);
    copy->setAmount(sameCurrency ? source->amount() : source->exchangedAmount());
    copy->setExchangedAmount(sameCurrency ? source->exchangedAmount() : source->amount());
    other.splitLineItems_.push_back(std::move(copy));
  }
}

std::string TARNAccountEntry::asSpeakableString() const {
  std::string text = CalendarDate::dateWithDateNumber(date_).descriptionWithCalendarFormat(
      UserDefault("NSShortDateFormatString"));
  text += ".  ";
  if (IsDebit()) {
    appendSentence(text, "Debit in the Amount of", twoDecimals(amount_));
  } else if (IsDeposit()) {
    appendSentence(text, "Deposit in the Amount of", twoDecimals(amount_));
  }
  if (type_ >= 0 && account_) {
    if (auto type = account_->accountEntryTypeForNumber(type_)) {
      appendSentence(text, "Type", type->GetName());
    }
  }
  if (category_ >= 0 && account_) {
    // The category's own name: the speaker reads the leaf, not the path.
    if (auto category = account_->accountEntryCategoryForNumber(category_)) {
      appendSentence(text, "Category", category->name());
    }
  }
  if (IsCheck()) appendSentence(text, "Check Number", std::to_string(checkNumber_));
  if (!toFrom_.empty()) {
    if (IsDebit()) {
      appendSentence(text, "To", toFrom_);
    } else if (IsDeposit()) {
      appendSentence(text, "From", toFrom_);
    }
  }
  if (!description_.empty()) appendSentence(text, "Description", description_);
  text += Localized(cleared_ ? "Resolved" : "Unresolved");
  text += " .  ";
  return text;
}

int TARNAccountEntry::AccountIsGreaterThan(const TARNAccountEntry& other) const {
  if (int order = CaseInsensitiveCompare(accountName(account_), accountName(other.account_))) {
    return order;
  }
  if (int order = compareValues(date_, other.date_)) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::AccountIsGreaterThan_Reversed(const TARNAccountEntry& other) const {
  return -AccountIsGreaterThan(other);
}

int TARNAccountEntry::CheckNumberIsGreaterThan(const TARNAccountEntry& other) const {
  if (int order = compareChecks(*this, other)) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::CheckNumberIsGreaterThan_Reversed(const TARNAccountEntry& other) const {
  return -CheckNumberIsGreaterThan(other);
}

int TARNAccountEntry::DateIsGreaterThan(const TARNAccountEntry& other) const {
  if (int order = compareValues(date_, other.date_)) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::DateIsGreaterThan_Reversed(const TARNAccountEntry& other) const {
  return -DateIsGreaterThan(other);
}

int TARNAccountEntry::DatePrimaryCheckSecondaryIsGreaterThan(const TARNAccountEntry& other) const {
  if (int order = compareValues(date_, other.date_)) return order;
  if (int order = compareChecks(*this, other)) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::DatePrimaryCheckSecondaryIsGreaterThan_Reversed(
    const TARNAccountEntry& other) const {
  return -DatePrimaryCheckSecondaryIsGreaterThan(other);
}

int TARNAccountEntry::DescriptionIsGreaterThan(const TARNAccountEntry& other) const {
  if (int order = CaseInsensitiveCompare(description_, other.description_)) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::DescriptionIsGreaterThan_Reversed(const TARNAccountEntry& other) const {
  return -DescriptionIsGreaterThan(other);
}

int TARNAccountEntry::ToFromIsGreaterThan(const TARNAccountEntry& other) const {
  if (int order = CaseInsensitiveCompare(toFrom_, other.toFrom_)) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::ToFromIsGreaterThan_Reversed(const TARNAccountEntry& other) const {
  return -ToFromIsGreaterThan(other);
}

int TARNAccountEntry::TypePrimaryDateSecondaryIsGreaterThan(const TARNAccountEntry& other) const {
  // Both numbers are resolved in this entry's account.
  if (int order =
          CaseInsensitiveCompare(typeName(account_, type_), typeName(account_, other.type_))) {
    return order;
  }
  if (int order = compareValues(date_, other.date_)) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::TypePrimaryDateSecondaryIsGreaterThan_Reversed(
    const TARNAccountEntry& other) const {
  return -TARNAccountEntry::TypePrimaryDateSecondaryIsGreaterThan(other);
}

int TARNAccountEntry::CategoryPrimaryDateSecondaryIsGreaterThan(
    const TARNAccountEntry& other) const {
  if (int order = CaseInsensitiveCompare(categoryFullName(account_, category_),
                                         categoryFullName(account_, other.category_))) {
    return order;
  }
  if (int order = compareValues(date_, other.date_)) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(
    const TARNAccountEntry& other) const {
  return -TARNAccountEntry::CategoryPrimaryDateSecondaryIsGreaterThan(other);
}

int TARNAccountEntry::AmountIsGreaterThan(const TARNAccountEntry& other) const {
  if (int order = compareValues(GetAmount(), other.GetAmount())) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::AmountIsGreaterThan_Reversed(const TARNAccountEntry& other) const {
  return -AmountIsGreaterThan(other);
}

int TARNAccountEntry::BalanceIsGreaterThan(const TARNAccountEntry& other) const {
  if (int order = compareValues(cachedRunningBalance_, other.cachedRunningBalance_)) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::BalanceIsGreaterThan_Reversed(const TARNAccountEntry& other) const {
  return -BalanceIsGreaterThan(other);
}

int TARNAccountEntry::NumberIsGreaterThan(const TARNAccountEntry& other) const {
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::NumberIsGreaterThan_Reversed(const TARNAccountEntry& other) const {
  return -NumberIsGreaterThan(other);
}

int TARNAccountEntry::ClearedIsGreaterThan(const TARNAccountEntry& other) const {
  if (int order = compareValues(cleared_, other.cleared_)) return order;
  return compareValues(number_, other.number_);
}

int TARNAccountEntry::ClearedIsGreaterThan_Reversed(const TARNAccountEntry& other) const {
  return -ClearedIsGreaterThan(other);
}

}  // namespace tarn
