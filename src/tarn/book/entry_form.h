// The fields of the entry form a host shows below its register, as plain
// values, and the one operation that records them: into a new entry or an
// existing one, splits and the transfer to another account included. The
// form owns nothing; recording changes the account (and the other account of
// a transfer) through the book.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarn/book/book_changes.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {

class TARNAccount;
class TARNAccountEntry;
class TARNBook;

struct EntryFormSplit {
  std::string category;  // full name ("Food:Groceries")
  std::string description;
  double amount = 0.0;  // as the entry's amount: its sign is the entry's direction
};

struct EntryForm {
  DateNumber date = 0;
  bool deposit = false;  // money in; otherwise money out
  std::string type;      // the type's name; "" takes the account's default
  // A check type's number; nullopt offers the next free one.
  std::optional<std::int32_t> checkNumber;
  std::string toFrom;
  std::string description;
  std::string category;  // full name; "" for none
  double amount = 0.0;   // the size of the amount; the direction gives the sign
  std::string notes;
  bool cleared = false;
  bool taxDeductible = false;
  // Two or more lines make a split entry, whose amount is their total.
  std::vector<EntryFormSplit> splits;
  // The other account of a transfer (-1: none) and, between currencies, the
  // amount that account sees (nullopt: converted at the currencies' rates).
  std::int32_t transferAccount = -1;
  std::optional<double> exchangedAmount;
};

// The form showing an entry of the account.
EntryForm EntryFormFromEntry(const TARNBook& book, const TARNAccount& account,
                             const TARNAccountEntry& entry);
// A blank form for a new entry dated `date`: money out with the default
// debit type, or the first active debit type when there is no default.
EntryForm NewEntryForm(const TARNAccount& account, DateNumber date);

// Whether the form names a check type of its direction.
bool EntryFormIsCheck(const TARNAccount& account, const EntryForm& form);

// Why the form cannot be recorded into the account (a type, category or
// account it names does not exist, a transfer to the account itself, a split
// transfer, an empty date or a zero amount on a split line), or nullopt.
std::optional<std::string> EntryFormProblem(const TARNBook& book, const TARNAccount& account,
                                            const EntryForm& form);

// Records the form: into `entry` when given, otherwise into a new entry
// added to the account. A transfer keeps its other half in step, makes one
// when the form names an account, and removes it when the form names none or
// another. Throws std::invalid_argument with EntryFormProblem's text, changing
// nothing. `change`, when given, captures every entry touched, so that the
// host can undo the recording.
std::shared_ptr<TARNAccountEntry> RecordEntryForm(TARNBook& book, TARNAccount& account,
                                                  std::shared_ptr<TARNAccountEntry> entry,
                                                  const EntryForm& form,
                                                  std::optional<EntriesChange>* change = nullptr);

// Voids or restores an entry and its transfer half; removes an entry and its
// transfer half. Both can capture the change as RecordEntryForm does.
void SetEntryVoid(TARNBook& book, TARNAccount& account,
                  const std::shared_ptr<TARNAccountEntry>& entry, bool isVoid,
                  std::optional<EntriesChange>* change = nullptr);
void RemoveEntry(TARNBook& book, TARNAccount& account,
                 const std::shared_ptr<TARNAccountEntry>& entry,
                 std::optional<EntriesChange>* change = nullptr);
// Marks an entry resolved or not (the reconcile view's click).
void SetEntryResolved(TARNBook& book, TARNAccount& account,
                      const std::shared_ptr<TARNAccountEntry>& entry, bool resolved,
                      std::optional<EntriesChange>* change = nullptr);

}  // namespace tarn
