// Undoable changes to a book, as states to go back and forth between: the
// entries a change touched (each as its stored dictionary, or absent), an
// import or scheduled entry (its entries with the short lists it touched),
// an account's settings, or the book's whole contents for changes that reach
// everywhere (categories, currencies, accounts added or removed). A host's
// undo stack keeps these values; they refer to accounts and entries by
// number, never by pointer, so they outlive any object they describe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarn/platform/value.h"

namespace tarn {

class TARNAccount;
class TARNBook;
class TARNImportReview;

// One entry of one account, by numbers.
struct EntryKey {
  std::int32_t account = -1;
  std::int32_t entry = -1;

  bool operator==(const EntryKey&) const = default;
};

// An entry as it stood: its dictionary (nil when the account did not hold
// it) and where it stood in the register (or in a folder), so that an entry
// put back returns to its place among entries of the same day.
struct EntryState {
  EntryKey key;
  plist::Value dictionary;
  std::int32_t folder = -1;  // index of the folder holding it; -1: the register
  std::size_t position = 0;
};

// The states of the entries named; an entry (or account) that does not exist
// is captured as absent.
std::vector<EntryState> CaptureEntries(const TARNBook& book, const std::vector<EntryKey>& keys);
// Puts every entry back as captured: absent ones are removed, others rebuilt
// from their dictionary in place of the entry of that number, or inserted at
// their old position. States of accounts the book no longer has are skipped.
// `current`, when given, holds the same keys in the same order as the book
// holds them now (the other side of a change): an entry is looked for first
// at its place there, and one absent there is not looked for at all, so that
// undoing or redoing a few entries does not walk the whole register.
void RestoreEntries(TARNBook& book, const std::vector<EntryState>& states,
                    const std::vector<EntryState>* current = nullptr);

// A change to entries, captured around the operation that makes it:
//   EntriesChange change(book, {{account, entry}});
//   ...change the book...
//   change.finish(book, {{mirrorAccount, mirrorEntry}});
// Keys named only at finish (an entry the change made) were absent before.
class EntriesChange {
 public:
  EntriesChange(const TARNBook& book, std::vector<EntryKey> keys);
  void finish(const TARNBook& book, const std::vector<EntryKey>& moreKeys = {});
  void undo(TARNBook& book) const { RestoreEntries(book, before_, &after_); }
  void redo(TARNBook& book) const { RestoreEntries(book, after_, &before_); }
  const std::vector<EntryState>& before() const { return before_; }
  const std::vector<EntryState>& after() const { return after_; }

 private:
  std::vector<EntryKey> keys_;
  std::vector<EntryState> before_;
  std::vector<EntryState> after_;
};

// A change to one account that adds entries and may make entry types (the
// account's), categories (the book's) and remembered bank identifiers, or
// change the account's schedules: what an import does, and what entering,
// skipping or changing a scheduled entry does. Only what the change touches
// is kept: the entries it added, the account's entry number counter, and
// the types, categories or schedules as they were and became (short lists,
// dropped when unchanged), never the rest of the book.
//   AccountChange change(book, account, {.types = true, .categories = true});
//   change.rememberIdentifiers(book, identifiers);  // before remembering them
//   ...change the book...
//   change.finish(book, {{account, addedEntry}});
class AccountChange {
 public:
  struct Parts {
    bool types = false;
    bool categories = false;
    bool schedules = false;
  };

  AccountChange(const TARNBook& book, std::int32_t account, Parts parts);
  // Bank identifiers the change is about to remember for the account; those
  // the book already remembers are not the change's and stay on undo.
  void rememberIdentifiers(const TARNBook& book, const std::vector<std::string>& identifiers);
  // Entries named here were made by the change (absent before it).
  void finish(const TARNBook& book, const std::vector<EntryKey>& added = {});
  void undo(TARNBook& book) const;
  void redo(TARNBook& book) const;

  std::int32_t account() const { return account_; }
  const EntriesChange& entries() const { return entries_; }

 private:
  // The account's parts on one side of the change; nil where not kept.
  struct Side {
    std::int32_t numberCount = 0;
    plist::Value types;
    plist::Value categories;
    plist::Value schedules;
  };
  static Side Capture(const TARNBook& book, std::int32_t account, Parts parts);
  void apply(TARNBook& book, const Side& side, bool remembered) const;

  std::int32_t account_ = -1;
  Parts parts_;
  EntriesChange entries_;
  std::vector<std::string> identifiers_;
  Side before_;
  Side after_;
};

// An import's change, captured before the review is accepted: the
// account's types, the book's categories and the bank identifiers of the
// ticked entries. finish() it with the entries accept() added.
AccountChange BeforeImport(const TARNBook& book, std::int32_t account,
                           const TARNImportReview& review);

// What the account settings sheet edits. The statement balance is kept with
// them because reconciling sets it the same way.
struct AccountSettings {
  std::string name;
  std::string currencyCode;
  double startingBalance = 0.0;
  std::int32_t startingCheckNumber = 1;
  std::string password;
  double statementBalance = 0.0;

  bool operator==(const AccountSettings&) const = default;
};

AccountSettings CaptureAccountSettings(const TARNAccount& account);
// Applies the settings. Throws std::invalid_argument, changing nothing, for
// an empty name, a name another account of the book has, or a currency code
// the book does not know.
void ApplyAccountSettings(TARNBook& book, TARNAccount& account, const AccountSettings& settings);

// An account's saved summaries: each one's options dictionary, in list
// order, and the place of the selected one (-1 when the selected summary is
// not in the list). Cheap to keep on an undo stack: no entries are held.
struct AccountSummaries {
  std::vector<plist::Value> options;
  std::int32_t selected = -1;

  bool operator==(const AccountSummaries&) const = default;
};

AccountSummaries CaptureAccountSummaries(const TARNAccount& account);
// Rebuilds the account's summaries from the options. The selected summary is
// the one at the captured place; with none, the account's selection stays.
void RestoreAccountSummaries(TARNAccount& account, const AccountSummaries& summaries);

// Saves summary options into the account: over the summary at `place` when
// it names one of the list, otherwise as a new summary at the end of the
// list. A new summary whose name another summary of the account already has
// (letter case aside) gets " 2", " 3"... added, so that no saved summary is
// hidden behind another of the same name. Returns the place of the saved
// summary.
std::size_t SaveAccountSummary(TARNAccount& account, const plist::Value& options,
                               std::optional<std::size_t> place);

// The book's whole contents, for changes that touch many records at once.
// Restoring rebuilds every account; accounts that were open (authenticated)
// stay open when their password is unchanged.
class BookContents {
 public:
  explicit BookContents(const TARNBook& book);
  void restore(TARNBook& book) const;

 private:
  plist::Value dictionary_;
};

}  // namespace tarn
