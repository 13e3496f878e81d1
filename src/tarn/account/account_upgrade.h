// Brings a stored account dictionary of an older format version up to the
// current version 8, in place, before an account is made from it. It works on
// the property-list dictionary alone and keeps nothing; TARNAccount exposes the
// three UpdateAccountDictionary operations as its own static members.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tarn/platform/value.h"

namespace tarn {

class AccountDictionaryUpgrade {
 public:
  static constexpr std::int32_t kCurrentVersion = 8;

  // Upgrades by the dictionary's own "version" (0 or absent: a brand-new
  // account) and sets "version" to 8. Returns the dictionary, or nullptr when
  // it is absent (nil) or not a dictionary, which is then left untouched.
  static plist::Value* UpdateAccountDictionary(plist::Value& dictionary);
  // Runs the cascade of steps from the first one that `version` needs, then
  // sets "version" to 8. nullptr, and no change, for a value that is no dictionary.
  static plist::Value* UpdateAccountDictionary(plist::Value& dictionary, std::int32_t version);
  // A dictionary without a version: "version" 8 and "number" -1 (not yet
  // numbered by the host), nothing else.
  static plist::Value* UpdateAccountDictionaryFromNil(plist::Value& dictionary);

  // The steps of the cascade, oldest first. Each works on the dictionary as
  // the previous one left it, logs what it cannot read and goes on.
  //
  // Versions 1 and older: an entry number already seen is replaced by a fresh
  // one above the highest number, in entry order.
  static void makeEntryNumbersUnique(plist::Value& dictionary);
  // Version 2: types come from the old application preferences into the
  // account, "entryFlags" is built from "isDebit" and "isCheck", and
  // "numberCount" becomes the highest entry number.
  static void importTypesFromOldPreferences(plist::Value& dictionary);
  // Version 3: a non-transfer entry whose number other entries also carry is
  // given a fresh number, once per such entry; "numberCount" follows.
  static void renumberSharedNonTransferNumbers(plist::Value& dictionary);
  // Version 4: the starting balance, entry amounts and old split amounts are
  // rounded to cents.
  static void roundAmountsToCents(plist::Value& dictionary);
  // Versions 5 and 6: dates stored as seconds since 1970 become date numbers.
  static void convertSecondsToDateNumbers(plist::Value& dictionary);
  // Version 7: transfers become links and the old ten-slot splits become
  // split line items, in entries and schedules.
  static void convertTransfersAndSplits(plist::Value& dictionary);

  // Where the version-2 step finds the old preferences: under the home
  // directory ($HOME, read at each call), "Library/Preferences/Brisal/Pennyfold Preferences".
  static std::string OldPreferencesPath();
  // Supplies the old preferences dictionary; may throw tarn::FileError. The
  // default reads OldPreferencesPath() as a property-list file. Returns the
  // previous loader; an empty function restores the default.
  using PreferencesLoader = std::function<plist::Value()>;
  static PreferencesLoader SetPreferencesLoader(PreferencesLoader loader);
};

}  // namespace tarn
