// A book: the host's side of the ledger. It holds the accounts, the category
// tree and currencies they share, the default currency, and what the host
// remembers between sessions (the bank identifiers already imported into each
// account), and reads and writes them as one property-list file. The book owns
// everything it holds; its accounts point back at it as their accounts
// controller without owning it, so a book is neither copied nor moved.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/account/accounts_controller.h"
#include "tarn/book/book_progress.h"
#include "tarn/platform/plist_file.h"
#include "tarn/platform/value.h"

namespace tarn {

class PFCurrency;
class TARNAccount;
class TARNAccountEntryCategory;

class TARNBook : public TARNAccountsController {
 public:
  using Accounts = std::vector<std::shared_ptr<TARNAccount>>;
  using Categories = std::vector<std::shared_ptr<TARNAccountEntryCategory>>;
  using Currencies = std::vector<std::shared_ptr<PFCurrency>>;

  // The version written in the "bookVersion" key; books of a later version
  // are refused rather than half read.
  static constexpr std::int32_t kFormatVersion = 1;

  // An empty book whose only currency, also the default, is the US dollar.
  TARNBook();
  ~TARNBook() override;
  TARNBook(const TARNBook&) = delete;
  TARNBook& operator=(const TARNBook&) = delete;

  // Reads a book file, or a bare account dictionary file of any format
  // version (which becomes a book of that one account). Throws FileError
  // naming the file when it is missing, unreadable, truncated, not a
  // property list or neither a book nor an account. The book remembers the
  // file and its format, for save(). `progress` hears of the reading and
  // of the accounts' loading, entry by entry in steps of whole accounts.
  static std::unique_ptr<TARNBook> open(const std::string& path,
                                        const TARNBookProgressHandler& progress = {});
  // A book from its dictionary; `name` names the source in errors.
  static std::unique_ptr<TARNBook> initWithDictionary(const plist::Value& dictionary,
                                                      const std::string& name);
  plist::Value asDictionary() const;
  // Replaces the accounts, categories, currencies and remembered identifiers
  // with those of a book dictionary (as an undo of a change that reached
  // everywhere does); the file, its format and its kind stay. Throws
  // FileError as initWithDictionary does, changing nothing.
  void replaceContents(const plist::Value& dictionary);

  // Whether the file held a bare account rather than a book.
  bool openedBareAccount() const { return bareAccount_; }
  const std::string& path() const { return path_; }
  plist::Format format() const { return format_; }
  void setFormat(plist::Format format) { format_ = format; }

  // Writes the book to its file atomically; the file it replaces is kept
  // beside it as BackupPath(path). A book that was not read from `path`
  // refuses to replace an existing file there unless told to. Throws FileError.
  void save();
  void saveAs(const std::string& path, bool replace = false);
  // Hears of the saves' steps (each account prepared, then the writing).
  void setProgressHandler(TARNBookProgressHandler handler) { progress_ = std::move(handler); }
  static std::string BackupPath(const std::string& path) { return path + ".bak"; }

  // What a file on disk looks like from outside: its identity (device and
  // inode: the atomic save puts a new file under the name), size and
  // modification time to the nanosecond.
  struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modifiedSeconds = 0;
    std::int64_t modifiedNanoseconds = 0;
    friend bool operator==(const FileStamp&, const FileStamp&) = default;
  };
  // nullopt when there is no file at the path.
  static std::optional<FileStamp> StampOfFile(const std::string& path);
  // The book's file as the book last read or wrote it (taken before
  // reading, so a change made during the read counts as a change).
  const std::optional<FileStamp>& fileStamp() const { return fileStamp_; }
  // Whether the file at path() is no longer the one the book read or last
  // wrote: another program changed, replaced or removed it. False for a
  // book without a file.
  bool fileChangedOnDisk() const;

  // --- Accounts ------------------------------------------------------------
  Accounts& accounts() { return accounts_; }
  const Accounts& accounts() const { return accounts_; }
  // Case-insensitive; nullptr when absent.
  std::shared_ptr<TARNAccount> accountWithName(std::string_view name) const;
  std::shared_ptr<TARNAccount> accountWithNumber(std::int32_t number) const;
  // A new account with every default, numbered, named and controlled by this
  // book, in the book's default currency. Throws std::invalid_argument for
  // an empty name or one another account already has.
  std::shared_ptr<TARNAccount> addAccount(const std::string& name);
  // Takes the account out of the book. The other halves of its transfers,
  // in the accounts that stay, become plain entries (no longer linked), so
  // that nothing points at an account the book has not got. Returns how many
  // entries were unlinked.
  std::size_t removeAccount(const std::shared_ptr<TARNAccount>& account);

  // --- Currencies ----------------------------------------------------------
  std::shared_ptr<PFCurrency> currency() override { return defaultCurrency_; }
  void setCurrency(std::shared_ptr<PFCurrency> currency);
  // Exact code first, then regardless of letter case.
  std::shared_ptr<PFCurrency> currencyWithCode(const std::string& code) override;
  Currencies& currencies() override { return currencies_; }
  // Appends a currency after checking its code: three characters, unique
  // regardless of letter case. Throws std::invalid_argument otherwise.
  void addCurrency(std::shared_ptr<PFCurrency> currency);
  // Why a code cannot be given to `currency` (nullptr for a new one), or
  // nullopt when it can.
  std::optional<std::string> currencyCodeProblem(const std::string& code,
                                                 const PFCurrency* currency) const;

  // --- Categories ----------------------------------------------------------
  // Top-level categories; their children come with them.
  Categories& categories() { return categories_; }
  const Categories& categories() const { return categories_; }
  std::shared_ptr<TARNAccountEntryCategory> categoryWithNumber(std::int32_t number) override;
  Categories allCategories() override;
  // "Parent:Child" paths, case-insensitively; nullptr when absent.
  std::shared_ptr<TARNAccountEntryCategory> categoryWithFullName(std::string_view path) const;
  // Finds the path, creating what is missing of it. Throws
  // std::invalid_argument for an empty path or an empty part.
  std::shared_ptr<TARNAccountEntryCategory> addCategoryPath(std::string_view path);
  std::int32_t nextAvailableCategoryNumber() const;
  // Renames in place; throws std::invalid_argument when a sibling already
  // has the name or the name is empty or holds ':'.
  void renameCategory(TARNAccountEntryCategory& category, const std::string& name);
  // Removes the category and its children. Entries, split lines and
  // schedules of every account that use any of them move to `moveTo`
  // (nullptr: no category). Returns how many entries and lines changed.
  std::size_t removeCategory(const std::shared_ptr<TARNAccountEntryCategory>& category,
                             TARNAccountEntryCategory* moveTo);
  // How many entries, lines and schedules of all accounts use the category.
  std::size_t categoryUseCount(const TARNAccountEntryCategory& category) const;

  // --- What the host remembers ---------------------------------------------
  // Bank identifiers (OFX FITIDs) already imported into an account.
  const std::set<std::string>& importedIdentifiers(std::int32_t accountNumber) const;
  void rememberImportedIdentifier(std::int32_t accountNumber, std::string identifier);
  // Forgets one remembered identifier (an import undone).
  void forgetImportedIdentifier(std::int32_t accountNumber, const std::string& identifier);

 private:
  static std::unique_ptr<TARNBook> load(const plist::Value& dictionary, const std::string& name,
                                        const TARNBookProgressHandler& progress);
  void loadCurrencies(const plist::Value& dictionary);
  void loadCategories(const plist::Value& dictionary);
  void loadAccounts(const plist::Value& dictionary, const std::string& name,
                    const TARNBookProgressHandler& progress);
  void loadIdentifiers(const plist::Value& dictionary);
  void adoptBareAccount(plist::Value dictionary);
  // An account asks the book for its currency by the stored "code" and adds
  // its own currency when the book has none of that code; a dictionary
  // without the code adds one whose code (the default) the book may already
  // have. Such a twin gives way to the book's currency, so that codes stay
  // unique in the list and the accounts share one currency.
  void shareCurrencyOf(TARNAccount& account);
  void write(const std::string& path) const;

  std::string path_;
  std::optional<FileStamp> fileStamp_;
  plist::Format format_ = plist::Format::Binary;
  bool bareAccount_ = false;
  Accounts accounts_;
  Categories categories_;
  Currencies currencies_;
  std::shared_ptr<PFCurrency> defaultCurrency_;
  std::map<std::int32_t, std::set<std::string>> importedIdentifiers_;
  TARNBookProgressHandler progress_;
};

}  // namespace tarn
