// The review of an import into one account of a book: an importer's entry
// dictionaries become import entries, their type and category texts are
// matched by name against the account's entry types and the book's
// categories, and entries that are likely already in the account (a bank
// identifier imported before, or an existing entry of the same amount, a
// close date and the same payee) are marked and start unticked. Accepting
// adds the ticked entries to the account, creating the types and categories
// they name that do not exist yet, remembers their bank identifiers in the
// book and stores the options used in the account. The review refers to the
// book and the account without owning them; it owns its import entries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tarn/import/import_entry.h"
#include "tarn/import/import_file.h"
#include "tarn/platform/value.h"

namespace tarn {

class TARNAccount;
class TARNBook;

// Why an imported entry is likely a duplicate.
enum class DuplicateReason {
  None,
  ImportedBefore,  // its bank identifier was imported into the account before
  SameInFile,      // an earlier entry of this import has the same bank identifier
  MatchesEntry,    // it matches an existing entry (amount, date, payee)
};

// One line of the review.
struct ImportReviewItem {
  std::shared_ptr<TARNImportEntry> entry;
  // The texts the file gave; "" for none.
  std::string typeText;
  std::string categoryText;
  std::string fitID;
  // The type or category named is not there yet and is made on acceptance.
  bool newType = false;
  bool newCategory = false;
  // One category text per split line, made on acceptance when missing.
  std::vector<std::string> splitCategoryTexts;
  DuplicateReason duplicate = DuplicateReason::None;
  // MatchesEntry: the number of the existing entry matched.
  std::int32_t matchedEntry = -1;
};

// What the duplicate search compares of an entry.
struct DuplicateKey {
  std::int64_t cents = 0;  // the amount in cents, rounded
  std::int64_t day = 0;    // days since 1970-01-01 of the date number
  std::string payee;       // the to/from text, case-folded and trimmed; "" for none
};

// Day count of a date number (year*10000 + month*100 + day), read as the
// proleptic Gregorian calendar without validating the parts.
std::int64_t DayOfDateNumber(DateNumber date);

// Matches imported entries to existing ones: the same amount, dates at most
// `window` days apart and, when both have one, the same payee. Imported
// entries are taken in order; each takes the unmatched existing entry of the
// nearest date (ties: the earlier date, then the lower index), so every
// existing entry matches at most one imported entry. The result holds, per
// imported entry, the index of the existing entry it matched or -1.
// O((n + m) log m) for n imported and m existing entries.
std::vector<std::ptrdiff_t> MatchDuplicates(const std::vector<DuplicateKey>& imported,
                                            const std::vector<DuplicateKey>& existing,
                                            std::int64_t window = 3);

class TARNImportReview {
 public:
  // The review of an import into `account` of `book`, read from a file of
  // `format` with `options` (which acceptance stores in the account).
  TARNImportReview(TARNBook& book, TARNAccount& account, ImportFormat format,
                   ImportFileOptions options);

  // Adds one item per import entry dictionary, in order, then marks the
  // likely duplicates among all items. Items start ticked unless marked.
  void addEntries(const plist::Array& dictionaries);

  std::vector<ImportReviewItem>& items() { return items_; }
  const std::vector<ImportReviewItem>& items() const { return items_; }
  std::size_t duplicateCount() const;
  std::size_t tickedCount() const;

  // Ticks exactly the items at these indexes (0-based); false, changing
  // nothing, when an index is out of range.
  bool tickOnly(const std::vector<std::size_t>& indexes);

  // Adds the ticked entries to the account with AddEntry, each with a new
  // entry number, after making the types and categories they name; remembers
  // their bank identifiers; stores the options in the account. The caller
  // saves the book once. Returns the entries added, in review order.
  std::vector<std::shared_ptr<TARNAccountEntry>> accept();

  // Stores the options in the account, as accept does. A host that keeps the
  // remembered options out of an undoable import stores them first.
  void storeOptions() const;

 private:
  ImportReviewItem itemFromDictionary(const plist::Value& dictionary, std::size_t index);
  void resolveType(ImportReviewItem& item, bool hasNumber);
  std::shared_ptr<TARNAccountEntryCategory> existingCategory(const std::string& text);
  void markDuplicates();

  TARNBook& book_;
  TARNAccount& account_;
  ImportFormat format_;
  ImportFileOptions options_;
  std::vector<ImportReviewItem> items_;
};

// The category path a QIF-style category text names: a class after "/" is
// dropped and blanks around each part trimmed; "" for a transfer ("[Account]")
// or a text without a usable path.
std::string ImportCategoryPath(std::string_view text);

}  // namespace tarn
