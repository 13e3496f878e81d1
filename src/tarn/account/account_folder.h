// A folder of an account: a named collection of entries that the user set
// aside from the register. The account owns its folders and each folder owns
// its entries (full entries, not references to register entries); the
// entries point back at the account, which the folder does not own.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarn/platform/value.h"

namespace tarn {

class TARNAccountEntry;

class TARNAccountFolder {
 public:
  using Entries = std::vector<std::shared_ptr<TARNAccountEntry>>;

  // Named with the localised "Untitled", no entries.
  TARNAccountFolder();

  // A folder read from its dictionary ("name", "entries"). A nil value gives
  // an empty folder; any other value that is no dictionary gives nullptr.
  // Entry problems are logged with the account loader's wording.
  static std::shared_ptr<TARNAccountFolder> initWithDictionary(const plist::Value& dictionary);
  // "entries" (each entry's dictionary, in order) and "name".
  plist::Value asDictionary() const;

  // Builds the entries of an array of entry dictionaries and makes them the
  // folder's entries. Returns them, or nullptr (and no change) when the value
  // is not an array.
  const Entries* InitEntries(const plist::Value& array);

  const std::string& name() const { return name_; }
  // nullopt sets the localised "Untitled".
  void setName(std::optional<std::string> name);
  Entries& entries() { return entries_; }
  const Entries& entries() const { return entries_; }
  void setEntries(Entries entries) { entries_ = std::move(entries); }

  // The amounts of the entries that are not void, summed in order from 0.0.
  double total() const;

 private:
  std::string name_;
  Entries entries_;
};

}  // namespace tarn
