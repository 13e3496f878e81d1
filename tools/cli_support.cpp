// Shared pieces of the tarn commands.

#include "tools/cli_support.h"

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>

#include <fmt/format.h>

#include "tarn/account/account.h"
#include "tarn/book/book_entries.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/amounts.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/split_line_item.h"
#include "tarn/platform/error.h"
#include "tools/progress.h"

namespace tarn::cli {

// --- Amounts and dates -----------------------------------------------------

double ParseAmount(const std::string& text, const std::string& option) {
  auto bad = [&]() {
    return UsageError(fmt::format("{}: \"{}\" is not an amount (write it like -12.50 or 1,234.56)",
                                  option, text));
  };
  std::size_t i = 0;
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  std::string digits;
  std::size_t group = 0;
  bool grouped = false;
  for (; i < text.size() && text[i] != '.'; ++i) {
    const char c = text[i];
    if (c == ',') {
      // Thousands commas: 1 to 3 digits first, then groups of exactly 3.
      if (digits.empty() || (grouped ? group != 3 : group > 3)) throw bad();
      grouped = true;
      group = 0;
    } else if (std::isdigit(static_cast<unsigned char>(c))) {
      digits += c;
      ++group;
    } else {
      throw bad();
    }
  }
  if (digits.empty() || (grouped && group != 3)) throw bad();
  std::string decimals;
  if (i < text.size()) {
    for (++i; i < text.size(); ++i) {
      if (!std::isdigit(static_cast<unsigned char>(text[i]))) throw bad();
      decimals += text[i];
    }
    if (decimals.empty() || decimals.size() > 2) {
      throw UsageError(
          fmt::format("{}: \"{}\" is not an amount (at most two decimals)", option, text));
    }
  }
  if (digits.size() > 13) throw UsageError(fmt::format("{}: \"{}\" is too large", option, text));
  const double value = std::stod(digits + "." + (decimals.empty() ? "0" : decimals));
  return negative ? -value : value;
}

DateNumber ParseDate(const std::string& text, const std::string& option) {
  const CalendarDate today = CalendarDate::now();
  if (text == "today") return today.dateNumber();
  if (text == "yesterday") return today.dateByAddingYears(0, 0, -1).dateNumber();
  int year = 0, month = 0, day = 0;
  char tail = 0;
  if (text.size() == 10 &&
      std::sscanf(text.c_str(), "%4d-%2d-%2d%c", &year, &month, &day, &tail) == 3 &&
      text[4] == '-' && text[7] == '-' && year >= 1 && month >= 1 && month <= 12 && day >= 1 &&
      day <= CalendarDate(year, month, 1).daysInMonth()) {
    return year * 10000 + month * 100 + day;
  }
  throw UsageError(fmt::format("{}: \"{}\" is not a date (write it as YYYY-MM-DD)", option, text));
}

std::string FormatDate(DateNumber date) {
  return fmt::format("{:04}-{:02}-{:02}", date / 10000, date / 100 % 100, date % 100);
}

std::string FormatAmount(const TARNAccount& account, double amount) {
  std::string text = account.currency()->formatter()->stringForObjectValue(amount);
  // The currency's patterns pad with spaces; a table aligns by itself.
  const auto first = text.find_first_not_of(' ');
  const auto last = text.find_last_not_of(' ');
  if (first == std::string::npos) return {};
  text = text.substr(first, last - first + 1);
  // Separators set to nothing are stored as a zero-width space; drop it here.
  for (std::size_t at; (at = text.find("\xE2\x80\x8B")) != std::string::npos;) text.erase(at, 3);
  return text;
}

// --- Books -----------------------------------------------------------------

namespace {

std::unique_ptr<TARNBook> Open(const std::string& path) {
  try {
    ProgressReporter progress;
    return TARNBook::open(path, progress.handler());
  } catch (const FileError& error) {
    throw Failure(error.what());
  }
}

}  // namespace

OpenBook OpenBook::ForReading(const std::string& path) {
  OpenBook open;
  open.book_ = Open(path);
  return open;
}

OpenBook OpenBook::ForChange(const std::string& path) {
  OpenBook open;
  // Lock only a file that exists: a typo must not leave a lock file behind.
  if (::access(path.c_str(), F_OK) != 0) open.book_ = Open(path);
  try {
    open.lock_ = std::make_unique<BookLock>(path);
  } catch (const FileError& error) {
    throw Failure(error.what());
  }
  open.book_ = Open(path);
  return open;
}

std::shared_ptr<TARNAccount> OpenBook::account(const std::string& name) const {
  if (auto found = book_->accountWithName(name)) return found;
  std::string names;
  for (const auto& account : book_->accounts()) {
    names += (names.empty() ? "" : ", ") + account->GetName();
  }
  throw Failure(fmt::format("{}: no account named \"{}\" (the book has: {})", book_->path(), name,
                            names.empty() ? "no accounts" : names));
}

void OpenBook::save() const {
  try {
    ProgressReporter progress;
    book_->setProgressHandler(progress.handler());
    book_->save();
    book_->setProgressHandler({});
  } catch (const FileError& error) {
    throw Failure(error.what());
  }
}

bool OpenBook::tryUnlock(TARNAccount& account) const {
  if (account.IsAuthenticated()) return true;
  if (!account.HasPassword()) return account.Authenticate(std::string());
  if (const char* password = std::getenv("TARN_PASSWORD")) {
    return account.Authenticate(std::string(password));
  }
  if (auto typed = ReadPassword(fmt::format("Password for {}: ", account.GetName()))) {
    return account.Authenticate(*typed);
  }
  return false;
}

void OpenBook::unlock(TARNAccount& account) const {
  if (tryUnlock(account)) return;
  if (!std::getenv("TARN_PASSWORD") && !isatty(STDIN_FILENO)) {
    throw Failure(fmt::format(
        "{}: account \"{}\" is password-protected; set TARN_PASSWORD or run on a terminal",
        book_->path(), account.GetName()));
  }
  throw Failure(
      fmt::format("{}: wrong password for account \"{}\"", book_->path(), account.GetName()));
}

std::shared_ptr<TARNAccountEntry> EntryByNumber(const TARNAccount& account, std::int32_t number) {
  return account.GetEntryWithNumber(number);
}

std::optional<std::string> ReadPassword(const std::string& prompt) {
  std::FILE* tty = std::fopen("/dev/tty", "r+");
  if (!tty) return std::nullopt;
  const int fd = fileno(tty);
  termios saved{};
  if (tcgetattr(fd, &saved) != 0) {
    std::fclose(tty);
    return std::nullopt;
  }
  termios quiet = saved;
  quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  std::fputs(prompt.c_str(), tty);
  std::fflush(tty);
  tcsetattr(fd, TCSAFLUSH, &quiet);
  std::string password;
  for (int c; (c = std::fgetc(tty)) != EOF && c != '\n';) password += static_cast<char>(c);
  tcsetattr(fd, TCSAFLUSH, &saved);
  std::fputs("\n", tty);
  std::fclose(tty);
  return password;
}

// --- Output ----------------------------------------------------------------

bool OutputIsTerminal() {
  static const bool terminal = isatty(STDOUT_FILENO);
  return terminal;
}

bool ErrorIsTerminal() {
  static const bool terminal = isatty(STDERR_FILENO);
  return terminal;
}

std::string Colored(const std::string& text, bool negative) {
  if (!negative || !OutputIsTerminal() || std::getenv("NO_COLOR")) return text;
  return "\x1b[31m" + text + "\x1b[0m";
}

namespace {

// Columns on the screen: one per code point, escape sequences none.
std::size_t Width(const std::string& text) {
  std::size_t width = 0;
  bool escape = false;
  for (unsigned char c : text) {
    if (escape) {
      escape = c != 'm';
    } else if (c == 0x1b) {
      escape = true;
    } else if ((c & 0xC0) != 0x80) {
      ++width;
    }
  }
  return width;
}

std::string Clip(const std::string& text, std::size_t width) {
  if (Width(text) <= width) return text;
  if (width == 0) return {};
  std::string out;
  std::size_t used = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = text[i];
    if ((c & 0xC0) != 0x80) {
      if (used + 1 == width) break;
      ++used;
    }
    out += text[i];
  }
  return out + "…";
}

std::size_t TerminalWidth() {
  if (!OutputIsTerminal()) return 0;
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  if (const char* columns = std::getenv("COLUMNS")) return std::strtoul(columns, nullptr, 10);
  return 80;
}

}  // namespace

void Table::print() const {
  std::vector<std::size_t> widths(columns_.size());
  for (std::size_t c = 0; c < columns_.size(); ++c) widths[c] = Width(columns_[c].title);
  for (const auto& row : rows_) {
    for (std::size_t c = 0; c < row.size() && c < widths.size(); ++c) {
      widths[c] = std::max(widths[c], Width(row[c]));
    }
  }
  // On a narrow terminal the flexible columns shrink, widest first, to no
  // less than their title or eight columns.
  if (const std::size_t screen = TerminalWidth()) {
    auto total = [&]() {
      std::size_t sum = widths.empty() ? 0 : 2 * (widths.size() - 1);
      for (std::size_t w : widths) sum += w;
      return sum;
    };
    while (total() > screen) {
      std::size_t widest = widths.size();
      for (std::size_t c = 0; c < widths.size(); ++c) {
        const std::size_t floor = std::max<std::size_t>(8, Width(columns_[c].title));
        if (columns_[c].flexible && widths[c] > floor &&
            (widest == widths.size() || widths[c] > widths[widest])) {
          widest = c;
        }
      }
      if (widest == widths.size()) break;
      --widths[widest];
    }
  }
  auto line = [&](const std::vector<std::string>& cells) {
    std::string out;
    for (std::size_t c = 0; c < columns_.size(); ++c) {
      const std::string cell = Clip(c < cells.size() ? cells[c] : std::string(), widths[c]);
      const std::string pad(widths[c] - Width(cell), ' ');
      if (c > 0) out += "  ";
      if (columns_[c].right) {
        out += pad + cell;
      } else if (c + 1 < columns_.size()) {
        out += cell + pad;
      } else {
        out += cell;
      }
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    std::cout << out << '\n';
  };
  std::vector<std::string> titles;
  for (const auto& column : columns_) titles.push_back(column.title);
  line(titles);
  for (const auto& row : rows_) line(row);
}

void PrintJson(const nlohmann::json& value) {
  std::cout << value.dump(2) << '\n';
}

double Money(double amount) {
  return std::nearbyint(RoundNearZeroValue(RoundValue(amount)) * 100) / 100 + 0.0;
}

nlohmann::json EntryJson(const TARNAccount& account, const TARNAccountEntry& entry,
                         bool withBalance) {
  nlohmann::json splits = nlohmann::json::array();
  for (const auto& item : entry.splitLineItems()) {
    auto category = account.accountEntryCategoryForNumber(item->category());
    splits.push_back({{"category", category ? category->fullName() : ""},
                      {"description", item->description()},
                      {"amount", Money(item->amount())}});
  }
  nlohmann::json row = {{"number", entry.GetNumber()},
                        {"date", FormatDate(entry.GetDate())},
                        {"checkNumber", entry.IsCheck() ? nlohmann::json(entry.GetCheckNumber())
                                                        : nlohmann::json(nullptr)},
                        {"type", EntryTypeName(account, entry)},
                        {"description", entry.GetDescription()},
                        {"toFrom", entry.GetToFrom()},
                        {"category", EntryCategoryText(account, entry)},
                        {"resolved", entry.GetCleared() != 0},
                        {"taxDeductible", entry.GetTaxDeductible()},
                        {"void", entry.GetVoid()},
                        {"transfer", entry.IsLinked()},
                        {"amount", Money(entry.GetAmount())},
                        {"splits", splits}};
  if (withBalance) row["balance"] = Money(entry.GetCachedRunningBalance());
  return row;
}

nlohmann::json BalancesJson(const TARNAccount& account) {
  return {{"balance", Money(account.GetBalance())},
          {"resolvedBalance", Money(account.GetResolvedBalance())},
          {"unresolvedBalance", Money(account.GetUnresolvedBalance())}};
}

}  // namespace tarn::cli
