// What a host does around an entry that the account itself leaves to it:
// naming its type and category for display, finding types, categories,
// folders and smart folders by the names a user types, and keeping the two
// halves of a transfer between two accounts of a book linked and in step.
// Nothing here owns an entry; the accounts of the book do.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tarn {

class TARNAccount;
class TARNAccountEntry;
class TARNAccountEntryType;
class TARNAccountFolder;
class TARNBook;
class TARNFilter;

// The type's name, or "" when the entry has none the account knows.
std::string EntryTypeName(const TARNAccount& account, const TARNAccountEntry& entry);
// The category's full name ("Auto:Fuel"); "Split" for an entry with split
// lines; "" for none.
std::string EntryCategoryText(const TARNAccount& account, const TARNAccountEntry& entry);

// A type of the account for that direction whose name equals `name`
// case-insensitively: the active types first, then the inactive ones.
std::shared_ptr<TARNAccountEntryType> EntryTypeWithName(const TARNAccount& account,
                                                        std::string_view name, bool deposit);
// Case-insensitive; nullptr when absent.
std::shared_ptr<TARNAccountFolder> FolderWithName(const TARNAccount& account,
                                                  std::string_view name);
std::shared_ptr<TARNFilter> SmartFolderWithName(const TARNAccount& account, std::string_view name);

// Makes `entry` (already added to `from`) a transfer to `to`: a mirror entry
// is added to `to` with the opposite sign, both linked to each other. Between
// accounts of different currencies `exchangedAmount` is the amount as `to`
// sees it (sign ignored); without it the currencies' rates convert.
// Returns the mirror.
std::shared_ptr<TARNAccountEntry> LinkTransfer(TARNBook& book, TARNAccount& from,
                                               const std::shared_ptr<TARNAccountEntry>& entry,
                                               TARNAccount& to,
                                               std::optional<double> exchangedAmount);
// The other half of a linked entry, or nullptr.
std::shared_ptr<TARNAccountEntry> LinkedEntry(const TARNBook& book, const TARNAccountEntry& entry);
// After an edit of a linked entry, brings its other half in step (date,
// amount, category, description, void). A no-op for an unlinked entry.
void SyncTransfer(const TARNBook& book, TARNAccountEntry& entry);
// Removes the entry and, for a transfer, its other half.
void RemoveEntryAndTransfer(const TARNBook& book, TARNAccount& account,
                            const std::shared_ptr<TARNAccountEntry>& entry);

}  // namespace tarn
