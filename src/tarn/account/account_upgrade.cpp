#include "tarn/account/account_upgrade.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tarn/model/decimal_rounding.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/error.h"
#include "tarn/platform/log.h"
#include "tarn/platform/plist_file.h"

namespace tarn {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;

constexpr std::string_view kEntriesMissing =
    "Account does not have entries in -[TARNAccount initWithDictionary:]";
constexpr std::string_view kEntriesWrong =
    "Account entries are in the wrong format in -[TARNAccount initWithDictionary:]";
// The version-2 step names itself in its messages.
constexpr std::string_view kEntriesMissingFromVersion =
    "Account does not have entries in TARNAccount:UpdateAccountDictionary:FromVersion";
constexpr std::string_view kEntriesWrongFromVersion =
    "Account entries are in the wrong format in TARNAccount:UpdateAccountDictionary:FromVersion";
constexpr std::string_view kDatedSchedulesWrong =
    "Account schedules are in the wrong format in -[TARNAccount initWithDictionary:]";
constexpr std::string_view kSummariesWrong =
    "Account Summaries are in the wrong format in -[TARNAccount initWithDictionary:]";
constexpr std::string_view kLinkedSchedulesWrong =
    "Schedules are in the wrong format in -[TARNAccount initWithDictionary:]";

constexpr std::string_view kOldPreferencesRelativePath =
    "Library/Preferences/Brisal/Pennyfold Preferences";

// Entry flag bits as the older formats stored them.
constexpr std::int32_t kFlagDebit = 1;
constexpr std::int32_t kFlagDeposit = 2;
constexpr std::int32_t kFlagTransfer = 4;
constexpr std::int32_t kFlagTransferOut = 8;  // with kFlagTransfer: money left this account
constexpr std::int32_t kFlagCheck = 16;

// The old splits had a fixed number of slots.
constexpr std::size_t kOldSplitSlots = 10;

// The value under a key of a dictionary, for changing it in place; nullptr when absent.
Value* member(Value& dictionary, std::string_view key) {
  Dictionary& map = dictionary.mutableDictionary();
  auto found = map.find(key);
  return found == map.end() ? nullptr : &found->second;
}

// The integer under a key, 0 when absent (as reading a missing key gives).
std::int32_t intMember(const Value& dictionary, std::string_view key) {
  const Value* value = dictionary.find(key);
  return value ? value->intValue() : 0;
}

// The array under a key; an empty one when absent or of another kind.
const Array& arrayMember(const Value& dictionary, std::string_view key) {
  static const Array kNoElements;
  const Value* value = dictionary.find(key);
  return value ? value->arrayValue() : kNoElements;
}

// The account's "entries" array, or nullptr after logging why there is none.
Array* entriesArray(Value& account, std::string_view missing, std::string_view wrong) {
  Value* entries = member(account, "entries");
  if (!entries) {
    Log(missing);
    return nullptr;
  }
  if (!entries->isArray()) {
    Log(wrong);
    return nullptr;
  }
  return &entries->mutableArray();
}

// An optional array of the account (schedules, summaries): nullptr when absent
// (silently) or when it is no array (logged).
Array* optionalArray(Value& account, std::string_view key, std::string_view wrong) {
  Value* value = member(account, key);
  if (!value) return nullptr;
  if (!value->isArray()) {
    Log(wrong);
    return nullptr;
  }
  return &value->mutableArray();
}

// The account's name as a log line shows it; "(null)" when there is none.
std::string nameForLog(const Value& account) {
  const Value* name = account.find("name");
  if (!name) return "(null)";
  switch (name->kind()) {
    case Value::Kind::String:
      return name->stringValue();
    case Value::Kind::Boolean:
    case Value::Kind::Integer:
      return std::to_string(name->longValue());
    case Value::Kind::Real:
      return std::to_string(name->doubleValue());
    default:
      return "(null)";
  }
}

void roundToCentsInPlace(Value& value) {
  if (value.isNumber()) value = Value(RoundDecimalPlain(value.doubleValue(), 2));
}

void secondsToDateNumberInPlace(Value& value) {
  if (!value.isNumber()) return;
  value = Value(CalendarDate::dateWithSecondsSince1970(value.longValue()).dateNumber());
}

void secondsToDateNumberInPlace(Value& dictionary, std::string_view key) {
  if (Value* value = member(dictionary, key)) secondsToDateNumberInPlace(*value);
}

// The text of slot `slot` of an old split array, when it is a non-empty string.
const std::string* slotText(const Array& texts, std::size_t slot) {
  if (slot >= texts.size() || !texts[slot].isString()) return nullptr;
  const std::string& text = texts[slot].stringValue();
  return text.empty() ? nullptr : &text;
}

// The used slots of an old ten-slot split as line-item dictionaries, in slot
// order. Debit amounts are stored negative whatever sign the slot held.
Array splitLineItemsFromOldSplit(const Value& split, bool isDebit) {
  const Array& descriptions = arrayMember(split, "descriptions");
  const Array& toFroms = arrayMember(split, "toFrom");  // singular key, ten payees
  const Array& amounts = arrayMember(split, "amounts");

  Array lines;
  for (std::size_t slot = 0; slot < kOldSplitSlots; ++slot) {
    Dictionary line;
    bool used = false;
    if (const std::string* description = slotText(descriptions, slot)) {
      line.emplace("description", *description);
      used = true;
    }
    if (const std::string* toFrom = slotText(toFroms, slot)) {
      line.emplace("toFrom", *toFrom);
      used = true;
    }
    if (slot < amounts.size() && amounts[slot].isNumber()) {
      double amount = amounts[slot].doubleValue();
      if (isDebit) amount = -std::fabs(amount);
      if (amount == 0.0) amount = 0.0;  // no "-0" from a debit's empty slot
      line.emplace("amount", amount);
      if (amount != 0.0) used = true;
    }
    if (used) lines.emplace_back(std::move(line));
  }
  return lines;
}

// One entry or schedule of a version-7 account: a transfer becomes a link
// whose direction comes from the transfer-out bit, and an old split becomes
// split line items. Records without "entryFlags" are left as they are.
void convertTransferAndSplit(Value& record, bool hasTransferEntry) {
  const Value* flagsValue = record.find("entryFlags");
  if (!flagsValue) return;
  std::int32_t flags = flagsValue->intValue();
  if (flags & kFlagTransfer) {
    if (flags & kFlagTransferOut) {
      flags = (flags | kFlagDebit) & ~kFlagDeposit;
    } else {
      flags = (flags | kFlagDeposit) & ~kFlagDebit;
    }
    record.set("entryFlags", flags);
    if (hasTransferEntry) {
      if (const Value* transferEntry = record.find("transferEntry")) {
        record.set("linkedEntry", *transferEntry);
      }
    }
    if (const Value* transferAccount = record.find("transferAccount")) {
      record.set("linkedAccount", *transferAccount);
    }
    record.set("type", -1);
  }
  const Value* split = record.find("split");
  if (split && split->isDictionary()) {
    Array lines = splitLineItemsFromOldSplit(*split, (flags & kFlagDebit) != 0);
    record.set("splitLineItems", std::move(lines));
  }
}

Value readOldPreferencesFile() {
  return plist::ReadFile(AccountDictionaryUpgrade::OldPreferencesPath());
}

AccountDictionaryUpgrade::PreferencesLoader& preferencesLoader() {
  static AccountDictionaryUpgrade::PreferencesLoader loader = readOldPreferencesFile;
  return loader;
}

// The old preferences, or nil when they cannot be read (logged, so that the
// upgrade goes on as if the file held no keys).
Value loadOldPreferences(const Value& account) {
  try {
    return preferencesLoader()();
  } catch (const FileError& error) {
    Log("Old preferences could not be read while upgrading account " + nameForLog(account) + ": " +
        error.what());
    return Value();
  }
}

}  // namespace

Value* AccountDictionaryUpgrade::UpdateAccountDictionary(Value& dictionary) {
  if (!dictionary.isDictionary()) return nullptr;
  const std::int32_t version = intMember(dictionary, "version");
  if (version == 0) {
    UpdateAccountDictionaryFromNil(dictionary);
  } else {
    UpdateAccountDictionary(dictionary, version);
  }
  dictionary.set("version", kCurrentVersion);
  return &dictionary;
}

Value* AccountDictionaryUpgrade::UpdateAccountDictionaryFromNil(Value& dictionary) {
  if (!dictionary.isDictionary()) return nullptr;
  dictionary.set("version", kCurrentVersion);
  dictionary.set("number", -1);
  return &dictionary;
}

Value* AccountDictionaryUpgrade::UpdateAccountDictionary(Value& dictionary, std::int32_t version) {
  if (!dictionary.isDictionary()) return nullptr;
  // A cascade: enter at the first step the version needs, then run every later one.
  if (version <= 1) makeEntryNumbersUnique(dictionary);
  if (version <= 2) importTypesFromOldPreferences(dictionary);
  if (version <= 3) renumberSharedNonTransferNumbers(dictionary);
  if (version <= 4) roundAmountsToCents(dictionary);
  if (version <= 6) convertSecondsToDateNumbers(dictionary);
  if (version <= 7) convertTransfersAndSplits(dictionary);
  dictionary.set("version", kCurrentVersion);
  return &dictionary;
}

void AccountDictionaryUpgrade::makeEntryNumbersUnique(Value& dictionary) {
  if (!dictionary.isDictionary()) return;
  Array* entries = entriesArray(dictionary, kEntriesMissing, kEntriesWrong);
  if (!entries) return;

  // A number above the running maximum is new by construction; only the
  // others need the look-up among the numbers seen so far.
  std::int64_t maximum = 0;
  std::unordered_set<std::int32_t> seen;
  seen.reserve(entries->size());
  std::vector<Value*> duplicates;
  for (Value& entry : *entries) {
    if (!entry.isDictionary()) continue;
    const std::int32_t number = intMember(entry, "number");
    if (number > maximum) {
      seen.insert(number);
      maximum = number;
    } else if (!seen.insert(number).second) {
      duplicates.push_back(&entry);
    }
  }
  for (Value* entry : duplicates) entry->set("number", ++maximum);
}

void AccountDictionaryUpgrade::importTypesFromOldPreferences(Value& dictionary) {
  if (!dictionary.isDictionary()) return;
  const Value preferences = loadOldPreferences(dictionary);
  if (const Value* types = preferences.find("types")) dictionary.set("types", *types);
  if (const Value* inactiveTypes = preferences.find("inactiveTypes")) {
    dictionary.set("inactiveTypes", *inactiveTypes);
  } else {
    Log("No inactiveTypes found while upgrading account " + nameForLog(dictionary) +
        ".  This could cause inconsistent behavior.");
  }

  std::int32_t highestNumber = 0;
  if (Array* entries =
          entriesArray(dictionary, kEntriesMissingFromVersion, kEntriesWrongFromVersion)) {
    for (Value& entry : *entries) {
      if (!entry.isDictionary()) continue;
      const Value* isDebit = entry.find("isDebit");
      const Value* isCheck = entry.find("isCheck");
      std::int32_t flags = (isDebit && isDebit->boolValue()) ? kFlagDebit : kFlagDeposit;
      if (isCheck && isCheck->boolValue()) flags += kFlagCheck;
      entry.set("entryFlags", flags);
      highestNumber = std::max(highestNumber, intMember(entry, "number"));
    }
  }
  dictionary.set("numberCount", highestNumber);
}

void AccountDictionaryUpgrade::renumberSharedNonTransferNumbers(Value& dictionary) {
  if (!dictionary.isDictionary()) return;
  Array* entries = entriesArray(dictionary, kEntriesMissing, kEntriesWrong);
  if (!entries) return;

  // How many entries carry each number right now. An entry is examined once,
  // with the number it had before; the entries sharing it are the others that
  // carry it at that moment. A fresh number lies above every stored one, so
  // it never needs counting.
  std::int64_t maximum = intMember(dictionary, "numberCount");
  std::unordered_map<std::int32_t, std::int32_t> carriers;
  carriers.reserve(entries->size());
  for (const Value& entry : *entries) {
    if (!entry.isDictionary()) continue;
    const std::int32_t number = intMember(entry, "number");
    maximum = std::max<std::int64_t>(maximum, number);
    ++carriers[number];
  }

  std::int64_t next = maximum + 1;
  for (Value& entry : *entries) {
    if (!entry.isDictionary()) continue;
    if (intMember(entry, "entryFlags") & kFlagTransfer) continue;
    const std::int32_t number = intMember(entry, "number");
    std::int32_t& count = carriers[number];
    const std::int32_t others = count - 1;
    if (others <= 0) continue;
    // One fresh number per other carrier; the entry keeps the last of them.
    next += others;
    entry.set("number", next);
    --count;
  }
  dictionary.set("numberCount", next);
}

void AccountDictionaryUpgrade::roundAmountsToCents(Value& dictionary) {
  if (!dictionary.isDictionary()) return;
  if (Value* startingBalance = member(dictionary, "startingBalance")) {
    roundToCentsInPlace(*startingBalance);
  }
  Array* entries = entriesArray(dictionary, kEntriesMissing, kEntriesWrong);
  if (!entries) return;
  for (Value& entry : *entries) {
    if (!entry.isDictionary()) continue;
    if (Value* amount = member(entry, "amount")) roundToCentsInPlace(*amount);
    Value* split = member(entry, "split");
    if (!split || !split->isDictionary()) continue;
    Value* amounts = member(*split, "amounts");
    if (!amounts || !amounts->isArray()) continue;
    for (Value& slot : amounts->mutableArray()) roundToCentsInPlace(slot);
  }
}

void AccountDictionaryUpgrade::convertSecondsToDateNumbers(Value& dictionary) {
  if (!dictionary.isDictionary()) return;
  if (Array* entries = entriesArray(dictionary, kEntriesMissing, kEntriesWrong)) {
    for (Value& entry : *entries) {
      if (entry.isDictionary()) secondsToDateNumberInPlace(entry, "date");
    }
  }
  if (Array* schedules = optionalArray(dictionary, "schedules", kDatedSchedulesWrong)) {
    for (Value& schedule : *schedules) {
      if (!schedule.isDictionary()) continue;
      secondsToDateNumberInPlace(schedule, "date");
      // The old code tested the until value itself against 3 ("until a date"),
      // not the until type; stored files depend on that.
      if (intMember(schedule, "repeatUntil") == 3) {
        secondsToDateNumberInPlace(schedule, "repeatUntil");
      }
      Value* committedDates = member(schedule, "committedDates");
      if (committedDates && committedDates->isArray()) {
        for (Value& date : committedDates->mutableArray()) secondsToDateNumberInPlace(date);
      }
    }
  }
  if (Array* summaries = optionalArray(dictionary, "accountSummaries", kSummariesWrong)) {
    for (Value& summary : *summaries) {
      if (!summary.isDictionary()) continue;
      secondsToDateNumberInPlace(summary, "startDate");
      secondsToDateNumberInPlace(summary, "endDate");
    }
  }
}

void AccountDictionaryUpgrade::convertTransfersAndSplits(Value& dictionary) {
  if (!dictionary.isDictionary()) return;
  if (Array* entries = entriesArray(dictionary, kEntriesMissing, kEntriesWrong)) {
    for (Value& entry : *entries) {
      if (entry.isDictionary()) convertTransferAndSplit(entry, /*hasTransferEntry=*/true);
    }
  }
  if (Array* schedules = optionalArray(dictionary, "schedules", kLinkedSchedulesWrong)) {
    for (Value& schedule : *schedules) {
      if (schedule.isDictionary()) convertTransferAndSplit(schedule, /*hasTransferEntry=*/false);
    }
  }
}

std::string AccountDictionaryUpgrade::OldPreferencesPath() {
  std::string home;
  if (const char* variable = std::getenv("HOME"); variable && *variable) {
    home = variable;
  } else if (const passwd* user = getpwuid(getuid()); user && user->pw_dir) {
    home = user->pw_dir;
  } else {
    home = "~";  // left unexpanded, as the platform does without a home
  }
  if (home.back() != '/') home += '/';
  return home + std::string(kOldPreferencesRelativePath);
}

AccountDictionaryUpgrade::PreferencesLoader AccountDictionaryUpgrade::SetPreferencesLoader(
    PreferencesLoader loader) {
  PreferencesLoader previous = std::move(preferencesLoader());
  preferencesLoader() = loader ? std::move(loader) : PreferencesLoader(readOldPreferencesFile);
  return previous;
}

}  // namespace tarn
