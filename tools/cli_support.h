// What every tarn command shares: its failures (a usage error or a failure,
// each one line), reading amounts and dates as the user types them, opening
// a book for reading or for a change under its lock, asking for an account's
// password, and printing aligned tables or JSON.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tarn/book/book.h"
#include "tarn/book/book_lock.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {
class TARNAccount;
class TARNAccountEntry;
}  // namespace tarn

namespace tarn::cli {

// Exit status 2: the command line is wrong.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};
// Exit status 1: the command could not be done.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Options every command takes.
struct GlobalOptions {
  bool json = false;
  std::string today;
};

// "-12.50", "1,234.56", "+3": a signed amount of at most two decimals.
double ParseAmount(const std::string& text, const std::string& option);
// "YYYY-MM-DD", "today" or "yesterday".
DateNumber ParseDate(const std::string& text, const std::string& option);
std::string FormatDate(DateNumber date);

// A book opened for one command. A change holds the book's lock from before
// reading until the save, so concurrent changes queue instead of losing one.
class OpenBook {
 public:
  static OpenBook ForReading(const std::string& path);
  static OpenBook ForChange(const std::string& path);
  TARNBook& operator*() const { return *book_; }
  TARNBook* operator->() const { return book_.get(); }
  // The account by name (case-insensitive) or by number; Failure otherwise.
  std::shared_ptr<TARNAccount> account(const std::string& name) const;
  // Asks for (or reads from TARN_PASSWORD) the password of a protected
  // account; Failure when it cannot be had or is wrong.
  void unlock(TARNAccount& account) const;
  // Tries to unlock without failing; whether the account is open.
  bool tryUnlock(TARNAccount& account) const;
  // Failure naming the file when the book cannot be written.
  void save() const;

 private:
  std::unique_ptr<BookLock> lock_;
  std::unique_ptr<TARNBook> book_;
};

// The entry with that number among the account's entries and folders.
std::shared_ptr<TARNAccountEntry> EntryByNumber(const TARNAccount& account, std::int32_t number);

// A password typed on the terminal without echo, or nullopt when there is
// no terminal.
std::optional<std::string> ReadPassword(const std::string& prompt);

// An amount in the account's currency ("$1,234.50", "-$12.00").
std::string FormatAmount(const TARNAccount& account, double amount);

// A table of text cells printed with aligned columns. Right-aligned columns
// hold numbers; flexible columns give up width first (with "…") when the
// terminal is narrower than the table.
class Table {
 public:
  struct Column {
    std::string title;
    bool right = false;
    bool flexible = false;
  };
  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}
  void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  void print() const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

// Whether standard output (error) is a terminal; colour and clipping only then.
bool OutputIsTerminal();
bool ErrorIsTerminal();
// Red (negative) amounts on a terminal.
std::string Colored(const std::string& text, bool negative);

void PrintJson(const nlohmann::json& value);
// An amount for JSON: rounded to cents, with no -0.
double Money(double amount);
// An entry as the register's JSON shows it: number, date, check number,
// type, texts, flags, amount and split lines, and its running balance
// (from the account's last CacheRunningBalances) when `withBalance`.
nlohmann::json EntryJson(const TARNAccount& account, const TARNAccountEntry& entry,
                         bool withBalance = true);
// The account's balance, resolved and unresolved balances.
nlohmann::json BalancesJson(const TARNAccount& account);

}  // namespace tarn::cli
