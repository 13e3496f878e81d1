// Reading, writing and the shared records of a book.

#include "tarn/book/book.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/error.h"
#include "tarn/platform/text.h"

namespace tarn {

namespace {

constexpr const char* kKeyVersion = "bookVersion";
constexpr const char* kKeyAccounts = "accounts";
constexpr const char* kKeyCategories = "categories";
constexpr const char* kKeyCurrencies = "currencies";
constexpr const char* kKeyCurrency = "currency";
constexpr const char* kKeyImportedIdentifiers = "importedIdentifiers";

std::shared_ptr<PFCurrency> MakeUSDollar() {
  return PFCurrency::initWithCode("USD", "US Dollar", "$", true, ",", ".", 1.0,
                                  CalendarDate::now().dateNumber());
}

// An account dictionary of any version carries at least one of these keys.
bool LooksLikeAccount(const plist::Value& dictionary) {
  for (const char* key : {"version", "entries", "name", "numberCount", "startingBalance"}) {
    if (dictionary.find(key)) return true;
  }
  return false;
}

// An account read from its (upgraded) dictionary. One without a password
// (older files store none at all) is open at once; the others wait for
// Authenticate.
std::shared_ptr<TARNAccount> OpenAccount(const plist::Value& dictionary,
                                         TARNAccountsController* controller) {
  auto account = TARNAccount::initWithDictionary(dictionary, controller);
  if (!account->HasPassword()) account->Authenticate(std::string());
  return account;
}

constexpr std::string_view kLoadingStep = "Loading accounts";

// The entries an account dictionary holds in its register and folders, for
// progress: what loading it costs.
std::uint64_t EntryCount(const plist::Value& account) {
  std::uint64_t count = 0;
  if (const plist::Value* entries = account.find("entries"); entries && entries->isArray()) {
    count += entries->arrayValue().size();
  }
  if (const plist::Value* folders = account.find("folders"); folders && folders->isArray()) {
    for (const auto& folder : folders->arrayValue()) {
      const plist::Value* entries = folder.find("entries");
      if (entries && entries->isArray()) count += entries->arrayValue().size();
    }
  }
  return count;
}

template <typename Visit>
void ForEachEntry(const TARNAccount& account, Visit&& visit) {
  for (const auto& entry : account.GetEntries()) visit(*entry);
  for (const auto& folder : account.folders()) {
    for (const auto& entry : folder->entries()) visit(*entry);
  }
  for (const auto& schedule : account.GetSchedules()) visit(*schedule);
}

void CollectNumbers(const TARNAccountEntryCategory& category, std::set<std::int32_t>& numbers) {
  numbers.insert(category.number());
  for (const auto& child : category.allChildren()) numbers.insert(child->number());
}

}  // namespace

TARNBook::TARNBook() : defaultCurrency_(MakeUSDollar()) {
  currencies_.push_back(defaultCurrency_);
}

TARNBook::~TARNBook() = default;

std::unique_ptr<TARNBook> TARNBook::open(const std::string& path,
                                         const TARNBookProgressHandler& progress) {
  plist::Value root;
  const std::optional<FileStamp> stamp = StampOfFile(path);
  try {
    ReportProgress(progress, "Reading");
    root = plist::ReadFile(path);
  } catch (const FileError& error) {
    // A binary property list whose trailer or tables make no sense was
    // almost always cut short (an interrupted copy); say so.
    if (error.reason().find("trailer") != std::string::npos ||
        error.reason().find("offset") != std::string::npos) {
      throw FileError(path, "truncated or damaged book (" + error.reason() + ")");
    }
    throw;
  }
  std::unique_ptr<TARNBook> book;
  if (root.isDictionary() && !root.find(kKeyAccounts) && LooksLikeAccount(root)) {
    const std::uint64_t entries = EntryCount(root);
    ReportProgress(progress, kLoadingStep, "entries", 0, entries);
    book = std::make_unique<TARNBook>();
    book->adoptBareAccount(std::move(root));
    ReportProgress(progress, kLoadingStep, "entries", entries, entries);
  } else {
    book = load(root, path, progress);
  }
  book->path_ = path;
  book->fileStamp_ = stamp;
  // Keep writing the file in the form it was found in.
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd >= 0) {
    char head[6] = {};
    const bool binary = ::read(fd, head, sizeof head) == sizeof head &&
                        plist::LooksBinary(std::string_view(head, sizeof head));
    ::close(fd);
    book->format_ = binary ? plist::Format::Binary : plist::Format::Xml;
  }
  return book;
}

std::unique_ptr<TARNBook> TARNBook::initWithDictionary(const plist::Value& dictionary,
                                                       const std::string& name) {
  return load(dictionary, name, {});
}

std::unique_ptr<TARNBook> TARNBook::load(const plist::Value& dictionary, const std::string& name,
                                         const TARNBookProgressHandler& progress) {
  if (!dictionary.isDictionary() || !dictionary.find(kKeyVersion)) {
    throw FileError(name, "not a Tarn book (no \"bookVersion\" key)");
  }
  const std::int32_t version = dictionary.find(kKeyVersion)->intValue();
  if (version < 1 || version > kFormatVersion) {
    throw FileError(name, "book format version " + std::to_string(version) +
                              " is not one this program reads (1 to " +
                              std::to_string(kFormatVersion) + ")");
  }
  auto book = std::make_unique<TARNBook>();
  book->loadCurrencies(dictionary);
  book->loadCategories(dictionary);
  book->loadAccounts(dictionary, name, progress);
  book->loadIdentifiers(dictionary);
  return book;
}

void TARNBook::replaceContents(const plist::Value& dictionary) {
  auto other = initWithDictionary(dictionary, path_.empty() ? "book" : path_);
  accounts_ = std::move(other->accounts_);
  categories_ = std::move(other->categories_);
  currencies_ = std::move(other->currencies_);
  defaultCurrency_ = std::move(other->defaultCurrency_);
  importedIdentifiers_ = std::move(other->importedIdentifiers_);
  for (const auto& account : accounts_) account->setAccountsController(this);
}

std::size_t TARNBook::removeAccount(const std::shared_ptr<TARNAccount>& account) {
  if (!account || std::erase(accounts_, account) == 0) return 0;
  std::size_t unlinked = 0;
  const std::int32_t number = account->GetNumber();
  for (const auto& other : accounts_) {
    ForEachEntry(*other, [&](TARNAccountEntry& entry) {
      if (!entry.IsLinked() || entry.GetLinkedAccount() != number) return;
      entry.SetIsLinked(false);
      entry.SetLinkedAccount(-1);
      entry.SetLinkedEntry(-1);
      ++unlinked;
    });
  }
  importedIdentifiers_.erase(number);
  return unlinked;
}

void TARNBook::loadCurrencies(const plist::Value& dictionary) {
  const plist::Value* list = dictionary.find(kKeyCurrencies);
  if (list && list->isArray()) {
    currencies_.clear();
    for (const auto& item : list->arrayValue()) {
      if (!item.isDictionary()) continue;
      auto currency = PFCurrency::initWithDictionary(item);
      // Only a twin of a currency already read is dropped. A malformed code
      // is kept: an account of that currency would add it back when it loads,
      // after the others, and a second save would list the currencies in
      // another order.
      if (!currency || currencyWithCode(currency->code())) continue;
      currencies_.push_back(std::move(currency));
    }
  }
  const plist::Value* chosen = dictionary.find(kKeyCurrency);
  std::shared_ptr<PFCurrency> found;
  if (chosen && chosen->isString()) found = currencyWithCode(chosen->stringValue());
  if (!found && !currencies_.empty()) found = currencies_.front();
  if (!found) {
    found = MakeUSDollar();
    currencies_.push_back(found);
  }
  defaultCurrency_ = std::move(found);
}

void TARNBook::loadCategories(const plist::Value& dictionary) {
  const plist::Value* list = dictionary.find(kKeyCategories);
  if (!list || !list->isArray()) return;
  for (const auto& item : list->arrayValue()) {
    if (item.isDictionary())
      categories_.push_back(TARNAccountEntryCategory::initWithDictionary(item));
  }
  std::sort(categories_.begin(), categories_.end(),
            [](const auto& a, const auto& b) { return a->nameIsGreaterThan(*b) < 0; });
}

void TARNBook::loadAccounts(const plist::Value& dictionary, const std::string& name,
                            const TARNBookProgressHandler& progress) {
  const plist::Value* list = dictionary.find(kKeyAccounts);
  if (!list) return;
  if (!list->isArray()) throw FileError(name, "\"accounts\" is not an array");
  std::uint64_t total = 0;
  if (progress) {
    for (const auto& item : list->arrayValue()) total += EntryCount(item);
  }
  std::uint64_t done = 0;
  ReportProgress(progress, kLoadingStep, "entries", done, total);
  for (const auto& item : list->arrayValue()) {
    if (!item.isDictionary()) throw FileError(name, "an account is not a dictionary");
    plist::Value copy = item;
    TARNAccount::UpdateAccountDictionary(copy);
    accounts_.push_back(OpenAccount(copy, this));
    shareCurrencyOf(*accounts_.back());
    done += EntryCount(item);
    ReportProgress(progress, kLoadingStep, "entries", done, total);
  }
}

void TARNBook::loadIdentifiers(const plist::Value& dictionary) {
  const plist::Value* map = dictionary.find(kKeyImportedIdentifiers);
  if (!map || !map->isDictionary()) return;
  for (const auto& [key, list] : map->dictionaryValue()) {
    if (!list.isArray()) continue;
    std::int32_t number = 0;
    try {
      number = std::stoi(key);
    } catch (const std::exception&) {
      continue;
    }
    auto& identifiers = importedIdentifiers_[number];
    for (const auto& item : list.arrayValue()) {
      if (item.isString()) identifiers.insert(item.stringValue());
    }
  }
}

void TARNBook::adoptBareAccount(plist::Value dictionary) {
  bareAccount_ = true;
  TARNAccount::UpdateAccountDictionary(dictionary);
  auto account = OpenAccount(dictionary, this);
  shareCurrencyOf(*account);
  if (account->GetNumber() < 0) account->SetNumber(0);
  accounts_.push_back(std::move(account));
}

void TARNBook::shareCurrencyOf(TARNAccount& account) {
  const std::shared_ptr<PFCurrency> own = account.currency();
  if (!own) return;
  for (const auto& currency : currencies_) {
    if (currency != own && CaseInsensitiveEqual(currency->code(), own->code())) {
      account.setCurrency(currency);
      std::erase(currencies_, own);
      return;
    }
  }
}

plist::Value TARNBook::asDictionary() const {
  plist::Dictionary root;
  plist::Array accounts;
  accounts.reserve(accounts_.size());
  for (const auto& account : accounts_) {
    accounts.push_back(account->asDictionary());
    ReportProgress(progress_, "Preparing", "accounts", accounts.size(), accounts_.size());
  }
  root.emplace(kKeyAccounts, std::move(accounts));
  plist::Array categories;
  for (const auto& category : categories_) categories.push_back(category->asDictionary());
  root.emplace(kKeyCategories, std::move(categories));
  plist::Array currencies;
  for (const auto& currency : currencies_) currencies.push_back(currency->asDictionary());
  root.emplace(kKeyCurrencies, std::move(currencies));
  root.emplace(kKeyCurrency, defaultCurrency_->code());
  plist::Dictionary identifiers;
  for (const auto& [number, set] : importedIdentifiers_) {
    if (set.empty()) continue;
    plist::Array list(set.begin(), set.end());
    identifiers.emplace(std::to_string(number), std::move(list));
  }
  root.emplace(kKeyImportedIdentifiers, std::move(identifiers));
  root.emplace(kKeyVersion, kFormatVersion);
  return plist::Value(std::move(root));
}

void TARNBook::write(const std::string& path) const {
  ReportProgress(progress_, "Preparing", "accounts", 0, accounts_.size());
  const plist::Value value =
      bareAccount_ && accounts_.size() == 1 ? accounts_.front()->asDictionary() : asDictionary();
  ReportProgress(progress_, "Preparing", "accounts", accounts_.size(), accounts_.size());
  ReportProgress(progress_, "Writing");
  const std::string backup = BackupPath(path);
  struct stat info {};
  if (::stat(path.c_str(), &info) == 0) {
    // The previous file stays whole under the backup name: a hard link
    // shares its bytes, and the atomic rename below only moves the name.
    if (::unlink(backup.c_str()) != 0 && errno != ENOENT) {
      throw FileError(backup, std::string("cannot replace the backup: ") + std::strerror(errno));
    }
    if (::link(path.c_str(), backup.c_str()) != 0) {
      throw FileError(backup, std::string("cannot keep a backup: ") + std::strerror(errno));
    }
  }
  plist::WriteFile(path, value, format_);
}

std::optional<TARNBook::FileStamp> TARNBook::StampOfFile(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return std::nullopt;
  FileStamp stamp;
  stamp.device = static_cast<std::uint64_t>(info.st_dev);
  stamp.inode = static_cast<std::uint64_t>(info.st_ino);
  stamp.size = static_cast<std::int64_t>(info.st_size);
  stamp.modifiedSeconds = static_cast<std::int64_t>(info.st_mtim.tv_sec);
  stamp.modifiedNanoseconds = static_cast<std::int64_t>(info.st_mtim.tv_nsec);
  return stamp;
}

bool TARNBook::fileChangedOnDisk() const {
  if (path_.empty()) return false;
  return StampOfFile(path_) != fileStamp_;
}

void TARNBook::save() {
  if (path_.empty()) throw FileError("<book>", "the book has no file yet");
  write(path_);
  fileStamp_ = StampOfFile(path_);
}

void TARNBook::saveAs(const std::string& path, bool replace) {
  struct stat info {};
  if (!replace && path != path_ && ::stat(path.c_str(), &info) == 0) {
    throw FileError(path, "already exists; not overwritten");
  }
  write(path);
  path_ = path;
  fileStamp_ = StampOfFile(path_);
}

// --- Accounts --------------------------------------------------------------

std::shared_ptr<TARNAccount> TARNBook::accountWithName(std::string_view name) const {
  for (const auto& account : accounts_) {
    if (CaseInsensitiveEqual(account->GetName(), name)) return account;
  }
  return nullptr;
}

std::shared_ptr<TARNAccount> TARNBook::accountWithNumber(std::int32_t number) const {
  for (const auto& account : accounts_) {
    if (account->GetNumber() == number) return account;
  }
  return nullptr;
}

std::shared_ptr<TARNAccount> TARNBook::addAccount(const std::string& name) {
  if (name.empty()) throw std::invalid_argument("an account needs a name");
  if (accountWithName(name)) {
    throw std::invalid_argument("there is already an account named \"" + name + "\"");
  }
  std::int32_t number = 0;
  for (const auto& account : accounts_) number = std::max(number, account->GetNumber() + 1);
  auto account = std::make_shared<TARNAccount>();
  account->setAccountsController(this);
  account->SetNumber(number);
  account->SetName(name);
  account->setCurrency(defaultCurrency_);
  account->SetPassword(std::string());
  accounts_.push_back(account);
  return account;
}

// --- Currencies ------------------------------------------------------------

void TARNBook::setCurrency(std::shared_ptr<PFCurrency> currency) {
  if (currency) defaultCurrency_ = std::move(currency);
}

std::shared_ptr<PFCurrency> TARNBook::currencyWithCode(const std::string& code) {
  for (const auto& currency : currencies_) {
    if (currency->code() == code) return currency;
  }
  for (const auto& currency : currencies_) {
    if (CaseInsensitiveEqual(currency->code(), code)) return currency;
  }
  return nullptr;
}

std::optional<std::string> TARNBook::currencyCodeProblem(const std::string& code,
                                                         const PFCurrency* currency) const {
  // Three characters, not three bytes: "€UR" is as valid as "EUR".
  std::size_t characters = 0;
  for (unsigned char byte : code) characters += (byte & 0xC0) != 0x80;
  if (characters != 3) return "a currency code has three characters, not \"" + code + "\"";
  for (const auto& other : currencies_) {
    if (other.get() != currency && CaseInsensitiveEqual(other->code(), code)) {
      return "there is already a currency with the code \"" + other->code() + "\"";
    }
  }
  return std::nullopt;
}

void TARNBook::addCurrency(std::shared_ptr<PFCurrency> currency) {
  if (!currency) return;
  if (auto problem = currencyCodeProblem(currency->code(), nullptr)) {
    throw std::invalid_argument(*problem);
  }
  currencies_.push_back(std::move(currency));
}

// --- Categories ------------------------------------------------------------

std::shared_ptr<TARNAccountEntryCategory> TARNBook::categoryWithNumber(std::int32_t number) {
  for (const auto& top : categories_) {
    if (top->number() == number) return top;
    for (const auto& child : top->allChildren()) {
      if (child->number() == number) return child;
    }
  }
  return nullptr;
}

TARNBook::Categories TARNBook::allCategories() {
  Categories all;
  for (const auto& top : categories_) {
    all.push_back(top);
    auto descendants = top->allChildren();
    all.insert(all.end(), descendants.begin(), descendants.end());
  }
  return all;
}

std::shared_ptr<TARNAccountEntryCategory> TARNBook::categoryWithFullName(
    std::string_view path) const {
  for (const auto& top : categories_) {
    if (auto found = top->childWithFullName(path)) return found;
  }
  return nullptr;
}

std::int32_t TARNBook::nextAvailableCategoryNumber() const {
  std::int32_t next = 0;
  for (const auto& top : categories_) {
    next = std::max(next, top->number() + 1);
    for (const auto& child : top->allChildren()) next = std::max(next, child->number() + 1);
  }
  return next;
}

std::shared_ptr<TARNAccountEntryCategory> TARNBook::addCategoryPath(std::string_view path) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  while (true) {
    const std::size_t colon = path.find(':', start);
    std::string part(
        path.substr(start, colon == std::string_view::npos ? path.npos : colon - start));
    if (part.empty()) throw std::invalid_argument("a category name cannot be empty");
    parts.push_back(std::move(part));
    if (colon == std::string_view::npos) break;
    start = colon + 1;
  }
  std::shared_ptr<TARNAccountEntryCategory> node;
  for (const auto& part : parts) {
    std::shared_ptr<TARNAccountEntryCategory> next;
    if (!node) {
      for (const auto& top : categories_) {
        if (CaseInsensitiveEqual(top->name(), part)) next = top;
      }
    } else {
      next = node->childWithName(part);
    }
    if (!next) {
      next = std::make_shared<TARNAccountEntryCategory>();
      next->setName(part);
      next->setNumber(nextAvailableCategoryNumber());
      if (node) {
        node->addChild(next);
      } else {
        categories_.push_back(next);
        std::sort(categories_.begin(), categories_.end(),
                  [](const auto& a, const auto& b) { return a->nameIsGreaterThan(*b) < 0; });
      }
    }
    node = std::move(next);
  }
  return node;
}

void TARNBook::renameCategory(TARNAccountEntryCategory& category, const std::string& name) {
  if (name.empty() || name.find(':') != std::string::npos) {
    throw std::invalid_argument("a category name must be non-empty and hold no ':'");
  }
  const Categories& siblings = category.parent() ? category.parent()->children() : categories_;
  for (const auto& sibling : siblings) {
    if (sibling.get() != &category && CaseInsensitiveEqual(sibling->name(), name)) {
      throw std::invalid_argument("there is already a category \"" + sibling->fullName() + "\"");
    }
  }
  category.setName(name);
  if (category.parent()) {
    category.parent()->sortChildren();
  } else {
    std::sort(categories_.begin(), categories_.end(),
              [](const auto& a, const auto& b) { return a->nameIsGreaterThan(*b) < 0; });
  }
}

std::size_t TARNBook::categoryUseCount(const TARNAccountEntryCategory& category) const {
  std::set<std::int32_t> numbers;
  CollectNumbers(category, numbers);
  std::size_t count = 0;
  for (const auto& account : accounts_) {
    ForEachEntry(*account, [&](const TARNAccountEntry& entry) {
      if (numbers.count(entry.GetCategory())) ++count;
      for (const auto& item : entry.splitLineItems()) count += numbers.count(item->category());
    });
  }
  return count;
}

std::size_t TARNBook::removeCategory(const std::shared_ptr<TARNAccountEntryCategory>& category,
                                     TARNAccountEntryCategory* moveTo) {
  if (!category) return 0;
  std::set<std::int32_t> numbers;
  CollectNumbers(*category, numbers);
  if (moveTo && numbers.count(moveTo->number())) {
    throw std::invalid_argument("entries cannot move into the category being removed");
  }
  const std::int32_t target = moveTo ? moveTo->number() : -1;
  std::size_t changed = 0;
  for (const auto& account : accounts_) {
    auto move = [&](TARNAccountEntry& entry) {
      if (numbers.count(entry.GetCategory())) {
        entry.SetCategory(target);
        ++changed;
      }
      for (const auto& item : entry.splitLineItems()) {
        if (numbers.count(item->category())) {
          item->setCategory(target);
          ++changed;
        }
      }
    };
    for (const auto& entry : account->GetEntries()) move(*entry);
    for (const auto& folder : account->folders()) {
      for (const auto& entry : folder->entries()) move(*entry);
    }
    for (const auto& schedule : account->GetSchedules()) move(*schedule);
  }
  if (auto* parent = category->parent()) {
    parent->removeChild(category);
  } else {
    std::erase(categories_, category);
  }
  return changed;
}

// --- What the host remembers -----------------------------------------------

const std::set<std::string>& TARNBook::importedIdentifiers(std::int32_t accountNumber) const {
  static const std::set<std::string> kNone;
  auto found = importedIdentifiers_.find(accountNumber);
  return found == importedIdentifiers_.end() ? kNone : found->second;
}

void TARNBook::rememberImportedIdentifier(std::int32_t accountNumber, std::string identifier) {
  if (!identifier.empty()) importedIdentifiers_[accountNumber].insert(std::move(identifier));
}

void TARNBook::forgetImportedIdentifier(std::int32_t accountNumber, const std::string& identifier) {
  const auto found = importedIdentifiers_.find(accountNumber);
  if (found == importedIdentifiers_.end()) return;
  found->second.erase(identifier);
  if (found->second.empty()) importedIdentifiers_.erase(found);
}

}  // namespace tarn
