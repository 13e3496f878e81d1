// One line of the check register: a dated, signed amount with its type,
// category, party, notes, check number, resolved mark, flags, optional link to
// the other half of a transfer and optional split lines. The account owns its
// entries; an entry owns its line items and refers to its account (not owned)
// and to its type and category by number. Scheduled and import entries derive
// from it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarn/model/split_line_item.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/value.h"

namespace tarn {

class TARNAccount;

// Bits of the stored entry flags. Bits not named here are kept as read and
// written back unchanged.
inline constexpr std::int32_t kEntryFlagDebit = 1;
inline constexpr std::int32_t kEntryFlagDeposit = 2;
inline constexpr std::int32_t kEntryFlagLinked = 4;
inline constexpr std::int32_t kEntryFlagCheck = 16;
inline constexpr std::int32_t kEntryFlagTaxDeductible = 64;
inline constexpr std::int32_t kEntryFlagVoid = 128;

class TARNAccountEntry {
 public:
  using LineItems = std::vector<std::shared_ptr<TARNAccountEntrySplitLineItem>>;

  TARNAccountEntry() = default;
  virtual ~TARNAccountEntry() = default;
  // Entries are shared objects whose identity matters; copies are made
  // explicitly with entryWithEntry.
  TARNAccountEntry(const TARNAccountEntry&) = delete;
  TARNAccountEntry& operator=(const TARNAccountEntry&) = delete;

  // A new entry read from an entry dictionary. Missing and malformed keys are
  // logged and keep their defaults; a nil (or non-dictionary) value leaves
  // every default without a message.
  static std::shared_ptr<TARNAccountEntry> initWithDictionary(const plist::Value& dictionary);
  // A plain entry (never a subclass) made with initWithEntry.
  static std::shared_ptr<TARNAccountEntry> entryWithEntry(const TARNAccountEntry* entry);
  // A plain entry read back from the given entry's dictionary, with the same
  // account; so it has the same entry number and no cached balance. For no
  // entry, the result was never initialised: every number in it is zero.
  static std::shared_ptr<TARNAccountEntry> initWithEntry(const TARNAccountEntry* entry);

  // The entry dictionary; "amount" is the stored field, not GetAmount.
  virtual plist::Value asDictionary() const;

  // Setters. String setters ignore nullopt, except SetNotes, which stores "".
  void SetAccount(TARNAccount* account) { account_ = account; }
  void SetNumber(std::int32_t number) { number_ = number; }
  void SetCheckNumber(std::int32_t checkNumber) { checkNumber_ = checkNumber; }
  void SetType(std::int32_t type) { type_ = type; }
  void SetCategory(std::int32_t category) { category_ = category; }
  void SetDescription(std::optional<std::string> description);
  // A negative date number is ignored.
  void SetDate(DateNumber date);
  // Rounds to cents as a decimal number, halves away from zero.
  void SetAmount(double amount);
  void SetIsCheck(bool isCheck);
  // Yes also clears the deposit bit; no clears only the debit bit.
  void SetIsDebit(bool isDebit);
  // Yes also clears the debit bit; no clears only the deposit bit.
  void SetIsDeposit(bool isDeposit);
  // No also resets both link numbers to -1 (the exchanged amount stays).
  void SetIsLinked(bool isLinked);
  void SetToFrom(std::optional<std::string> toFrom);
  void SetCleared(std::uint8_t cleared) { cleared_ = cleared; }
  void SetTaxDeductible(bool taxDeductible);
  void SetVoid(bool isVoid);
  void SetNotes(std::optional<std::string> notes);
  void SetLinkedEntry(std::int32_t linkedEntry) { linkedEntry_ = linkedEntry; }
  void SetLinkedAccount(std::int32_t linkedAccount) { linkedAccount_ = linkedAccount; }
  void SetLinkedExchangedAmount(double amount) { linkedExchangedAmount_ = amount; }
  void SetCachedRunningBalance(double balance) { cachedRunningBalance_ = balance; }

  TARNAccount* GetAccount() const { return account_; }
  std::int32_t GetNumber() const { return number_; }
  std::int32_t GetCheckNumber() const { return checkNumber_; }
  std::int32_t GetType() const { return type_; }
  std::int32_t GetCategory() const { return category_; }
  const std::string& GetDescription() const { return description_; }
  DateNumber GetDate() const { return date_; }
  // The split total when there are line items, otherwise the stored amount.
  double GetAmount() const { return splitLineItems_.empty() ? amount_ : splitTotal(); }
  const std::string& GetToFrom() const { return toFrom_; }
  std::uint8_t GetCleared() const { return cleared_; }
  bool GetTaxDeductible() const { return (entryFlags_ & kEntryFlagTaxDeductible) != 0; }
  bool GetVoid() const { return (entryFlags_ & kEntryFlagVoid) != 0; }
  const std::string& GetNotes() const { return notes_; }
  std::int32_t GetLinkedEntry() const { return linkedEntry_; }
  std::int32_t GetLinkedAccount() const { return linkedAccount_; }
  double GetLinkedExchangedAmount() const { return linkedExchangedAmount_; }
  double GetCachedRunningBalance() const { return cachedRunningBalance_; }
  bool IsCheck() const { return (entryFlags_ & kEntryFlagCheck) != 0; }
  bool IsDebit() const { return (entryFlags_ & kEntryFlagDebit) != 0; }
  bool IsDeposit() const { return (entryFlags_ & kEntryFlagDeposit) != 0; }
  bool IsLinked() const { return (entryFlags_ & kEntryFlagLinked) != 0; }

  // Split lines, in the user's order.
  LineItems& splitLineItems() { return splitLineItems_; }
  const LineItems& splitLineItems() const { return splitLineItems_; }
  // nullptr is ignored.
  void addSplitLineItem(std::shared_ptr<TARNAccountEntrySplitLineItem> item);
  // A new line whose exchanged amount equals its amount.
  void addSplitLineItemWithCategory(std::int32_t category, std::string description,
                                    std::string toFrom, double amount);
  // Ignored for nullptr, a negative index or one beyond the end.
  void insertSplitLineItem(std::shared_ptr<TARNAccountEntrySplitLineItem> item, int index);
  void removeSplitLineItemAtIndex(int index);
  // Removes every occurrence of the item.
  void removeSplitLineItem(const std::shared_ptr<TARNAccountEntrySplitLineItem>& item);
  void removeAllSplitLineItems() { splitLineItems_.clear(); }
  // The lines' amounts summed in order from 0.0 (exchanged amounts not summed).
  double splitTotal() const;

  // Makes `other` the mirror of this entry in another account: linked back to
  // this entry, payee = this entry's account name, the opposite direction,
  // and the amounts copied (same currency object) or swapped with the
  // exchanged amounts (different currency objects).
  void syncToEntry(TARNAccountEntry& other) const;

  // A sentence for speech: date, amount, type, category, check number, party,
  // description and resolved state, with localised labels.
  virtual std::string asSpeakableString() const;

  // Where the entry stands among the entries of one date in the register:
  // checks first, by check number, then every other entry, all alike. One
  // flat key, so that long lists sort without calling back into the entries;
  // CheckNumberIsGreaterThan and DatePrimaryCheckSecondaryIsGreaterThan order
  // by it too.
  std::int64_t CheckOrderKey() const {
    constexpr std::int64_t kAfterEveryCheck = std::int64_t{1} << 32;
    return IsCheck() ? checkNumber_ : kAfterEveryCheck;
  }

  // Sort comparisons: 1, 0 or -1 as this entry sorts after, with or before
  // `other`. Every one ends with the entry number, so no two entries of one
  // account compare equal; each _Reversed twin inverts the result.
  int AccountIsGreaterThan(const TARNAccountEntry& other) const;
  int AccountIsGreaterThan_Reversed(const TARNAccountEntry& other) const;
  int CheckNumberIsGreaterThan(const TARNAccountEntry& other) const;
  int CheckNumberIsGreaterThan_Reversed(const TARNAccountEntry& other) const;
  int DateIsGreaterThan(const TARNAccountEntry& other) const;
  int DateIsGreaterThan_Reversed(const TARNAccountEntry& other) const;
  int DatePrimaryCheckSecondaryIsGreaterThan(const TARNAccountEntry& other) const;
  int DatePrimaryCheckSecondaryIsGreaterThan_Reversed(const TARNAccountEntry& other) const;
  int DescriptionIsGreaterThan(const TARNAccountEntry& other) const;
  int DescriptionIsGreaterThan_Reversed(const TARNAccountEntry& other) const;
  int ToFromIsGreaterThan(const TARNAccountEntry& other) const;
  int ToFromIsGreaterThan_Reversed(const TARNAccountEntry& other) const;
  // Type and category names are looked up in this entry's account; import
  // entries compare the objects chosen in the review instead.
  virtual int TypePrimaryDateSecondaryIsGreaterThan(const TARNAccountEntry& other) const;
  virtual int TypePrimaryDateSecondaryIsGreaterThan_Reversed(const TARNAccountEntry& other) const;
  virtual int CategoryPrimaryDateSecondaryIsGreaterThan(const TARNAccountEntry& other) const;
  virtual int CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(
      const TARNAccountEntry& other) const;
  int AmountIsGreaterThan(const TARNAccountEntry& other) const;
  int AmountIsGreaterThan_Reversed(const TARNAccountEntry& other) const;
  int BalanceIsGreaterThan(const TARNAccountEntry& other) const;
  int BalanceIsGreaterThan_Reversed(const TARNAccountEntry& other) const;
  int NumberIsGreaterThan(const TARNAccountEntry& other) const;
  int NumberIsGreaterThan_Reversed(const TARNAccountEntry& other) const;
  int ClearedIsGreaterThan(const TARNAccountEntry& other) const;
  int ClearedIsGreaterThan_Reversed(const TARNAccountEntry& other) const;

 protected:
  // Reads the entry's keys into this object (which holds the defaults).
  // Subclasses that add keys override it and call this first.
  virtual void loadFromDictionary(const plist::Value& dictionary);
  // Writes the entry's keys into `dictionary`; subclasses' asDictionary add
  // theirs to the same map.
  void writeEntryKeys(plist::Dictionary& dictionary) const;
  // How many keys writeEntryKeys writes.
  std::size_t entryKeyCount() const;

 private:
  struct NeverInitialised {};
  explicit TARNAccountEntry(NeverInitialised);
  void setFlag(std::int32_t bit, bool on) {
    entryFlags_ = on ? (entryFlags_ | bit) : (entryFlags_ & ~bit);
  }

  TARNAccount* account_ = nullptr;
  std::int32_t number_ = -1;
  std::int32_t checkNumber_ = -1;
  std::int32_t type_ = -1;
  std::int32_t category_ = -1;
  std::string description_;
  std::string toFrom_;
  DateNumber date_ = 0;
  double amount_ = 0.0;
  std::int32_t entryFlags_ = 0;
  std::uint8_t cleared_ = 0;
  std::string notes_;
  std::int32_t linkedEntry_ = -1;
  std::int32_t linkedAccount_ = -1;
  double linkedExchangedAmount_ = 0.0;
  // Declared by the file format's history; nothing reads, writes or stores it.
  [[maybe_unused]] std::int32_t schedule_ = 0;
  LineItems splitLineItems_;
  double cachedRunningBalance_ = 0.0;
};

}  // namespace tarn
