// An entry under review after an import, before it is added to an account:
// a ledger entry that also holds the entry type and category the user chose
// for it and whether it is to be imported. It shares ownership of the chosen
// type and category; the review list that the host keeps owns the entries.
#pragma once

#include <memory>
#include <string>

#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"

namespace tarn {

class TARNImportEntry : public TARNAccountEntry {
 public:
  // Type and category numbers -1, no chosen objects, not to be imported.
  TARNImportEntry() = default;
  // An import entry read from an entry dictionary: the type and category
  // numbers are the dictionary's, the chosen objects none, the switch off.
  static std::shared_ptr<TARNImportEntry> initWithDictionary(const plist::Value& dictionary);

  // Keep the inherited type and category numbers equal to the chosen
  // objects' numbers (-1 for none). The inherited SetType and SetCategory
  // bypass this; the review never calls them.
  void SetActualType(std::shared_ptr<TARNAccountEntryType> type);
  void SetActualCategory(std::shared_ptr<TARNAccountEntryCategory> category);
  const std::shared_ptr<TARNAccountEntryType>& GetActualType() const { return actualType_; }
  const std::shared_ptr<TARNAccountEntryCategory>& GetActualCategory() const {
    return actualCategory_;
  }

  void SetImport(bool import) { import_ = import; }
  bool GetImport() const { return import_; }

  // Date, amount (six decimals), type, check number, party, description and
  // resolved state, each a sentence; no category sentence.
  std::string asSpeakableString() const override;

  // Order by the chosen objects' names (a missing one is ""), case-insensitive,
  // then date, then entry number. Against an entry that is no import entry,
  // that entry's chosen objects count as missing.
  int TypePrimaryDateSecondaryIsGreaterThan(const TARNAccountEntry& other) const override;
  int TypePrimaryDateSecondaryIsGreaterThan_Reversed(const TARNAccountEntry& other) const override;
  int CategoryPrimaryDateSecondaryIsGreaterThan(const TARNAccountEntry& other) const override;
  int CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(
      const TARNAccountEntry& other) const override;
  // Not to be imported sorts first, then by entry number.
  int ImportIsGreaterThan(const TARNImportEntry& other) const;
  int ImportIsGreaterThan_Reversed(const TARNImportEntry& other) const;

 private:
  std::shared_ptr<TARNAccountEntryType> actualType_;
  std::shared_ptr<TARNAccountEntryCategory> actualCategory_;
  bool import_ = false;
};

}  // namespace tarn
