// Commands that show an account: register, reconcile, export and schedules.

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/account/export_options.h"
#include "tarn/book/book_entries.h"
#include "tarn/book/due_schedules.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/amounts.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/schedule_recurrence.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/error.h"
#include "tools/commands.h"

namespace tarn::cli {

namespace {

const std::map<std::string, std::int32_t> kSearchFields = {
    {"all", 0},
    {"description", kViewSearchDescription},
    {"to-from", kViewSearchToFrom},
    {"type", kViewSearchType},
    {"notes", kViewSearchNotes},
    {"amount", kViewSearchAmount},
    {"check-number", kViewSearchCheckNumber},
    {"category", kViewSearchCategory},
    {"split-description", kViewSearchSplitDescription},
    {"split-category", kViewSearchSplitCategory}};

const std::map<std::string, std::int32_t> kPeriods = {
    {"all", kViewDateAllEntries},
    {"first-to-today", kViewDateFirstEntryToToday},
    {"today", kViewDateToday},
    {"yesterday", kViewDateYesterday},
    {"this-week", 30},
    {"this-month", 31},
    {"this-quarter", 32},
    {"this-year", 33},
    {"last-week", 40},
    {"last-month", 41},
    {"last-quarter", 42},
    {"last-year", 43},
    {"week-to-date", 50},
    {"month-to-date", 51},
    {"quarter-to-date", 52},
    {"year-to-date", 53},
    {"custom", kViewDateCustom}};

const std::map<std::string, std::int32_t> kSortColumns = {
    {"check", 0},  {"date", 1},     {"type", 2},   {"description", 3},
    {"amount", 4}, {"resolved", 5}, {"to-from", 6}};

std::vector<std::string> Keys(const std::map<std::string, std::int32_t>& map) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : map) keys.push_back(key);
  return keys;
}

// The register's columns, one row per entry, and the same as JSON.
struct RegisterPrinter {
  const TARNAccount& account;
  Table table{{{"No", true},
               {"Date"},
               {"Chk", true},
               {"Type", false, true},
               {"Description", false, true},
               {"To/From", false, true},
               {"Category", false, true},
               {"R"},
               {"Amount", true},
               {"Balance", true}}};
  nlohmann::json rows = nlohmann::json::array();

  void add(const TARNAccountEntry& entry) {
    const double amount = entry.GetAmount();
    const double balance = entry.GetCachedRunningBalance();
    std::string description = entry.GetDescription();
    if (entry.GetVoid()) description = "VOID " + description;
    table.add({std::to_string(entry.GetNumber()), FormatDate(entry.GetDate()),
               entry.GetCheckNumber() >= 0 && entry.IsCheck()
                   ? std::to_string(entry.GetCheckNumber())
                   : "",
               EntryTypeName(account, entry), description, entry.GetToFrom(),
               EntryCategoryText(account, entry), entry.GetCleared() ? "R" : "",
               Colored(FormatAmount(account, amount), amount < 0),
               Colored(FormatAmount(account, balance), balance < 0)});
    rows.push_back(EntryJson(account, entry));
  }
};

// --- register ------------------------------------------------------------------

struct ViewOptions {
  std::string path, account, search, field, resolved, taxDeductible, period, from, to, folder,
      smartFolder, sort;
  bool descending = false, reconcile = false, remember = false;
  std::size_t limit = 0;
};

// Applies the options that override the account's stored view settings.
void ApplyViewOptions(TARNAccount& account, const ViewOptions& options) {
  const bool entry = !options.reconcile;
  if (!options.search.empty() || !options.field.empty()) {
    const std::int32_t field = options.field.empty() ? 0 : kSearchFields.at(options.field);
    entry ? account.setEntryFilterType(field) : account.setReconcileFilterType(field);
    entry ? account.setEntryFilterData(options.search)
          : account.setReconcileFilterData(options.search);
  }
  auto choice = [](const std::string& text, std::int32_t only, std::int32_t not_,
                   std::int32_t all) {
    return text == "yes" ? only : text == "no" ? not_ : all;
  };
  if (!options.resolved.empty()) {
    const auto type =
        choice(options.resolved, kViewResolvedOnly, kViewUnresolvedOnly, kViewResolvedAll);
    entry ? account.setEntryResolvedFilterType(type) : account.setReconcileResolvedFilterType(type);
  }
  if (!options.taxDeductible.empty()) {
    const auto type = choice(options.taxDeductible, kViewTaxDeductibleOnly, kViewNotTaxDeductible,
                             kViewTaxDeductibleAll);
    entry ? account.setEntryTaxDeductibleFilterType(type)
          : account.setReconcileTaxDeductibleFilterType(type);
  }
  std::string period = options.period;
  if (period.empty() && (!options.from.empty() || !options.to.empty())) period = "custom";
  if (!period.empty()) {
    const std::int32_t type = kPeriods.at(period);
    entry ? account.setEntryDateFilterType(type) : account.setReconcileDateFilterType(type);
    if (type == kViewDateCustom) {
      if (options.from.empty() || options.to.empty()) {
        throw UsageError("--period custom needs both --from and --to");
      }
      const DateNumber from = ParseDate(options.from, "--from");
      const DateNumber to = ParseDate(options.to, "--to");
      if (from > to) throw UsageError("--from: the start comes after the end (--to)");
      entry ? account.setEntryDateFilterStartDate(from)
            : account.setReconcileDateFilterStartDate(from);
      entry ? account.setEntryDateFilterEndDate(to) : account.setReconcileDateFilterEndDate(to);
    }
  }
  if (!options.folder.empty()) {
    auto folder = FolderWithName(account, options.folder);
    if (!folder) {
      throw Failure(fmt::format("{}: account \"{}\" has no folder named \"{}\"", options.path,
                                account.GetName(), options.folder));
    }
    account.setFolder(folder);
  }
  if (!options.smartFolder.empty()) {
    auto smartFolder = SmartFolderWithName(account, options.smartFolder);
    if (!smartFolder) {
      std::string names;
      for (const auto& each : account.smartFolders())
        names += (names.empty() ? "" : ", ") + each->name();
      throw Failure(fmt::format("{}: account \"{}\" has no smart folder named \"{}\" (it has: {})",
                                options.path, account.GetName(), options.smartFolder, names));
    }
    account.setSmartFolder(smartFolder);
  }
}

void PrintView(TARNAccount& account, TARNAccount::Entries shown, const ViewOptions& options,
               const GlobalOptions& global, const std::vector<std::string>& footer,
               nlohmann::json extra) {
  account.CacheRunningBalances();
  if (!options.sort.empty()) {
    TARNAccount::SortEntries(shown, kSortColumns.at(options.sort), options.descending);
  } else {
    std::stable_sort(shown.begin(), shown.end(), [&](const auto& a, const auto& b) {
      const int order = a->DatePrimaryCheckSecondaryIsGreaterThan(*b);
      return options.descending ? order > 0 : order < 0;
    });
  }
  const std::size_t total = shown.size();
  const std::size_t first = options.limit && options.limit < total ? total - options.limit : 0;
  RegisterPrinter printer{account};
  for (std::size_t i = first; i < total; ++i) printer.add(*shown[i]);
  if (global.json) {
    extra["account"] = account.GetName();
    extra["entries"] = printer.rows;
    extra["matching"] = total;
    return PrintJson(extra);
  }
  printer.table.print();
  std::cout << '\n';
  fmt::print("{} of {} entries shown\n", total - first, total);
  for (const auto& line : footer) fmt::print("{}\n", line);
}

void AddRegister(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  auto options = std::make_shared<ViewOptions>();
  auto* command =
      AddCommand(app, chosen, "register", "Show an account's register", [options, &global]() {
        auto book = options->remember ? OpenBook::ForChange(options->path)
                                      : OpenBook::ForReading(options->path);
        auto account = book.account(options->account);
        book.unlock(*account);
        ApplyViewOptions(*account, *options);
        if (options->remember) book.save();
        auto shown = options->reconcile ? account->reconcileFilteredEntries()
                                        : account->entryFilteredEntries();
        const double balance = account->GetBalance();
        const std::vector<std::string> footer = {
            fmt::format("Balance {}, resolved {}, unresolved {}", FormatAmount(*account, balance),
                        FormatAmount(*account, account->GetResolvedBalance()),
                        FormatAmount(*account, account->GetUnresolvedBalance()))};
        PrintView(*account, std::move(shown), *options, global, footer,
                  {{"balance", Money(balance)},
                   {"resolvedBalance", Money(account->GetResolvedBalance())}});
      });
  command->add_option("BOOK", options->path, "The book")->required();
  command->add_option("ACCOUNT", options->account, "The account")->required();
  command->add_option("--search", options->search, "Show entries whose field contains this text");
  command->add_option("--field", options->field, "The field --search looks in (all)")
      ->check(CLI::IsMember(Keys(kSearchFields)));
  command
      ->add_option("--resolved", options->resolved,
                   "Resolved entries only (yes), unresolved only (no)")
      ->check(CLI::IsMember({"yes", "no", "all"}));
  command->add_option("--tax-deductible", options->taxDeductible, "yes, no or all")
      ->check(CLI::IsMember({"yes", "no", "all"}));
  command->add_option("--period", options->period, "Date period")
      ->check(CLI::IsMember(Keys(kPeriods)));
  command->add_option("--from", options->from, "Start of a custom period (YYYY-MM-DD)");
  command->add_option("--to", options->to, "End of a custom period (YYYY-MM-DD)");
  auto* folder = command->add_option("--folder", options->folder, "Show a folder's entries");
  command->add_option("--smart-folder", options->smartFolder, "Show a smart folder's entries")
      ->excludes(folder);
  command->add_option("--sort", options->sort, "Sort column (date)")
      ->check(CLI::IsMember(Keys(kSortColumns)));
  command->add_flag("--descending", options->descending, "Sort the other way");
  command->add_flag("--reconcile", options->reconcile, "The reconcile view and its settings");
  command->add_flag("--remember", options->remember, "Store the view options in the account");
  command->add_option("--limit", options->limit, "Show only the last N rows")
      ->check(CLI::PositiveNumber);
}

// --- reconcile -----------------------------------------------------------------

void AddReconcile(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  struct Options {
    std::string path, account, statement;
    std::vector<std::int32_t> clear, unclear;
    std::size_t limit = 0;
  };
  auto options = std::make_shared<Options>();
  auto* command = AddCommand(
      app, chosen, "reconcile",
      "Compare an account with a bank statement and mark entries resolved", [options, &global]() {
        const bool change =
            !options->statement.empty() || !options->clear.empty() || !options->unclear.empty();
        auto book =
            change ? OpenBook::ForChange(options->path) : OpenBook::ForReading(options->path);
        auto account = book.account(options->account);
        book.unlock(*account);
        if (!options->statement.empty()) {
          account->setStatementBalance(ParseAmount(options->statement, "--statement-balance"));
        }
        auto mark = [&](const std::vector<std::int32_t>& numbers, std::uint8_t cleared,
                        const char* option) {
          for (std::int32_t number : numbers) {
            auto entry = EntryByNumber(*account, number);
            if (!entry) {
              throw Failure(fmt::format("{}: {}: account \"{}\" has no entry {}", options->path,
                                        option, account->GetName(), number));
            }
            entry->SetCleared(cleared);
          }
        };
        mark(options->clear, 1, "--clear");
        mark(options->unclear, 0, "--unclear");
        nlohmann::json changed = nlohmann::json::object();
        if (!options->clear.empty()) changed["resolved"] = options->clear;
        if (!options->unclear.empty()) changed["unresolved"] = options->unclear;
        if (!options->statement.empty()) changed["statementBalance"] = true;
        if (change) book.save();
        const double statement = account->statementBalance();
        const double resolved = account->GetResolvedBalance();
        const double difference = RoundValue(statement - resolved);
        ViewOptions view;
        view.reconcile = true;
        view.limit = options->limit;
        PrintView(*account, account->reconcileFilteredEntries(), view, global,
                  {fmt::format("Statement balance {}", FormatAmount(*account, statement)),
                   fmt::format("Resolved balance  {}", FormatAmount(*account, resolved)),
                   fmt::format("Difference        {}{}", FormatAmount(*account, difference),
                               difference == 0 ? " (reconciled)" : "")},
                  {{"statementBalance", Money(statement)},
                   {"resolvedBalance", Money(resolved)},
                   {"difference", Money(difference)},
                   {"changed", changed}});
      });
  command->add_option("BOOK", options->path, "The book")->required();
  command->add_option("ACCOUNT", options->account, "The account")->required();
  command->add_option("--statement-balance", options->statement, "The statement's closing balance");
  command->add_option("--clear", options->clear, "Mark these entries resolved")->expected(1, -1);
  command->add_option("--unclear", options->unclear, "Mark these entries unresolved")
      ->expected(1, -1);
  command->add_option("--limit", options->limit, "Show only the last N rows")
      ->check(CLI::Range(std::size_t{1}, std::size_t{1} << 31));
}

// --- export ----------------------------------------------------------------------

void AddExport(CLI::App& app, Chosen& chosen, const GlobalOptions& /*global*/) {
  struct Options {
    std::string path, account, smartFolder, out, encoding;
    bool qif = false, tsv = false;
  };
  auto options = std::make_shared<Options>();
  auto* command = AddCommand(
      app, chosen, "export", "Write an account as QIF or tab-delimited text", [options]() {
        if (!options->qif && !options->tsv) throw UsageError("export: give --qif or --tsv");
        auto book = OpenBook::ForReading(options->path);
        auto account = book.account(options->account);
        book.unlock(*account);
        TARNExportOptions exportOptions;
        if (!options->smartFolder.empty()) {
          exportOptions.exportFilter = SmartFolderWithName(*account, options->smartFolder);
          if (!exportOptions.exportFilter) {
            throw Failure(fmt::format("{}: account \"{}\" has no smart folder named \"{}\"",
                                      options->path, account->GetName(), options->smartFolder));
          }
        }
        StringEncoding encoding = account->textExport_Encoding();
        if (!options->encoding.empty()) {
          auto named = EncodingForCharsetName(options->encoding);
          if (!named)
            throw UsageError(fmt::format("--encoding: unknown encoding \"{}\"", options->encoding));
          encoding = *named;
        }
        if (encoding == 0) encoding = kUTF8StringEncoding;
        const std::string text = options->qif
                                     ? account->asQIFStringWithOptions(&exportOptions)
                                     : account->asTabDelimitedStringWithOptions(&exportOptions);
        auto bytes = EncodeFromUtf8(text, encoding);
        if (!bytes) {
          throw Failure(fmt::format("--encoding: the account holds text that {} cannot write",
                                    NameOfStringEncoding(encoding)));
        }
        if (options->out.empty() || options->out == "-") {
          std::cout << *bytes;
          return;
        }
        const std::string temporary = options->out + ".tmp";
        {
          std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
          file << *bytes;
          if (!file.flush()) throw Failure(options->out + ": cannot write");
        }
        if (std::rename(temporary.c_str(), options->out.c_str()) != 0) {
          std::remove(temporary.c_str());
          throw Failure(options->out + ": cannot write");
        }
      });
  command->add_option("BOOK", options->path, "The book")->required();
  command->add_option("ACCOUNT", options->account, "The account")->required();
  auto* qif = command->add_flag("--qif", options->qif, "QIF");
  auto* tsv = command->add_flag("--tsv", options->tsv, "Tab-delimited text");
  qif->excludes(tsv);
  command->add_option("--smart-folder", options->smartFolder, "Only this smart folder's entries");
  command->add_option("-o,--output", options->out, "File to write (standard output)");
  command->add_option("--encoding", options->encoding, "Text encoding (the account's, else UTF-8)");
}

// --- schedules ---------------------------------------------------------------------

std::string Repeats(const TARNAccountSchedule& schedule) {
  return DescribeRepeatRule(schedule.GetRepeatIntervalType(), schedule.GetRepeatInterval());
}

void AddSchedules(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  struct Options {
    std::string path, account, through;
    bool enter = false;
  };
  auto options = std::make_shared<Options>();
  auto* command = AddCommand(
      app, chosen, "schedules", "Show scheduled entries and enter the due ones",
      [options, &global]() {
        auto book = options->enter ? OpenBook::ForChange(options->path)
                                   : OpenBook::ForReading(options->path);
        auto account = book.account(options->account);
        book.unlock(*account);
        const DateNumber through = options->through.empty()
                                       ? CalendarDate::now().dateNumber()
                                       : ParseDate(options->through, "--through");
        const CalendarDate horizon = CalendarDate::dateWithDateNumber(through);
        Table table({{"No", true},
                     {"Next"},
                     {"Repeats"},
                     {"Description", false, true},
                     {"To/From", false, true},
                     {"Amount", true},
                     {"Due", true}});
        nlohmann::json list = nlohmann::json::array();
        std::vector<std::shared_ptr<TARNAccountEntry>> entered;
        for (const auto& schedule : account->GetSchedules()) {
          const auto due = schedule->EvaluateForDate(horizon);
          const DateNumber next = schedule->NextEntryDate();
          table.add({std::to_string(schedule->GetNumber()), next > 0 ? FormatDate(next) : "done",
                     Repeats(*schedule), schedule->GetDescription(), schedule->GetToFrom(),
                     FormatAmount(*account, schedule->GetAmount()), std::to_string(due.size())});
          list.push_back(
              {{"number", schedule->GetNumber()},
               {"next", next > 0 ? nlohmann::json(FormatDate(next)) : nlohmann::json(nullptr)},
               {"repeats", Repeats(*schedule)},
               {"description", schedule->GetDescription()},
               {"amount", Money(schedule->GetAmount())},
               {"due", due.size()}});
          if (!options->enter) continue;
          for (const auto& entry : due) {
            entry->SetNumber(account->NextAvailableNumber());
            if (entry->IsCheck()) entry->SetCheckNumber(account->NextAvailableCheckNumber());
            account->AddEntry(entry);
            schedule->CommitEntry(*entry);
            entered.push_back(entry);
          }
        }
        if (options->enter) book.save();
        if (global.json) {
          nlohmann::json result = {{"schedules", list}};
          if (options->enter) {
            // The entries as they now stand in the register, with the
            // balances they lead to.
            account->CacheRunningBalances();
            nlohmann::json added = nlohmann::json::array();
            for (const auto& entry : entered) added.push_back(EntryJson(*account, *entry));
            result["entered"] = added;
            result["balances"] = BalancesJson(*account);
          }
          return PrintJson(result);
        }
        if (account->GetSchedules().empty()) {
          fmt::print("{} has no scheduled entries\n", account->GetName());
        } else {
          table.print();
        }
        if (options->enter) {
          std::cout << '\n';
          fmt::print("Entered {} due entries through {}\n", entered.size(), FormatDate(through));
          for (const auto& entry : entered) {
            fmt::print("  {}  {}  {}  {}\n", entry->GetNumber(), FormatDate(entry->GetDate()),
                       entry->GetDescription(), FormatAmount(*account, entry->GetAmount()));
          }
        }
      });
  command->add_option("BOOK", options->path, "The book")->required();
  command->add_option("ACCOUNT", options->account, "The account")->required();
  command->add_flag("--enter", options->enter, "Enter the due entries into the register");
  command->add_option("--through", options->through, "Count entries due up to this date (today)");
}

}  // namespace

void AddViewCommands(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  AddRegister(app, chosen, global);
  AddReconcile(app, chosen, global);
  AddExport(app, chosen, global);
  AddSchedules(app, chosen, global);
}

}  // namespace tarn::cli
