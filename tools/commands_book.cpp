// Commands on the book as a whole: new, account add/password, accounts,
// categories, currencies, upgrade and sample.

#include <sys/stat.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "tarn/account/account.h"
#include "tarn/book/sample_book.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/platform/error.h"
#include "tarn/platform/plist_file.h"
#include "tools/commands.h"
#include "tools/progress.h"

namespace tarn::cli {

CLI::App* AddCommand(CLI::App& app, Chosen& chosen, const std::string& name,
                     const std::string& description, std::function<void()> body) {
  CLI::App* command = app.add_subcommand(name, description);
  command->callback([&chosen, body = std::move(body)]() { chosen = body; });
  return command;
}

namespace {

bool Exists(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0;
}

void SaveNew(TARNBook& book, const std::string& path, bool xml) {
  book.setFormat(xml ? plist::Format::Xml : plist::Format::Binary);
  try {
    book.saveAs(path);
  } catch (const FileError& error) {
    throw Failure(error.what());
  }
}

std::string PasswordFromUser(const std::string& accountName) {
  if (const char* password = std::getenv("TARN_PASSWORD")) return password;
  auto first = ReadPassword(fmt::format("New password for {}: ", accountName));
  if (!first) throw Failure("no terminal to ask for a password on; set TARN_PASSWORD");
  auto again = ReadPassword("Again: ");
  if (!again || *again != *first) throw Failure("the two passwords differ; nothing changed");
  return *first;
}

// --- new, account add, account password -----------------------------------

void AddNew(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  struct Options {
    std::string path;
    bool xml = false;
    std::string currency;
  };
  auto options = std::make_shared<Options>();
  auto* command = AddCommand(app, chosen, "new", "Write a new, empty book", [options, &global]() {
    if (Exists(options->path)) throw Failure(options->path + ": already exists; not overwritten");
    TARNBook book;
    if (!options->currency.empty()) {
      if (auto problem = book.currencyCodeProblem(options->currency, book.currency().get())) {
        throw UsageError("--currency: " + *problem);
      }
      book.currency()->setCode(options->currency);
    }
    SaveNew(book, options->path, options->xml);
    if (global.json) {
      PrintJson({{"book", options->path}, {"currency", book.currency()->code()}});
    } else {
      fmt::print("Wrote the empty book {}\n", options->path);
    }
  });
  command->add_option("BOOK", options->path, "The book file to write")->required();
  command->add_flag("--xml", options->xml, "Write an XML property list instead of a binary one");
  command->add_option("--currency", options->currency, "Code of the default currency (USD)");
}

void AddAccount(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  CLI::App* account = app.add_subcommand("account", "Add an account or set its password");
  account->require_subcommand(1);
  struct Options {
    std::string path, name, currency, startingBalance;
    std::int32_t startingCheck = 1;
    bool password = false;
    bool clear = false;
  };
  auto options = std::make_shared<Options>();
  auto* add = AddCommand(*account, chosen, "add", "Add an account to a book", [options, &global]() {
    auto book = OpenBook::ForChange(options->path);
    std::shared_ptr<PFCurrency> currency;
    if (!options->currency.empty()) {
      currency = book->currencyWithCode(options->currency);
      if (!currency) {
        throw Failure(
            fmt::format("{}: no currency \"{}\" (add it with: tarn currencies {} --add {})",
                        options->path, options->currency, options->path, options->currency));
      }
    }
    const double balance = options->startingBalance.empty()
                               ? 0.0
                               : ParseAmount(options->startingBalance, "--starting-balance");
    std::shared_ptr<TARNAccount> added;
    try {
      added = book->addAccount(options->name);
    } catch (const std::invalid_argument& error) {
      throw Failure(fmt::format("{}: {}", options->path, error.what()));
    }
    if (currency) added->setCurrency(currency);
    added->SetStartingBalance(balance);
    added->SetStartingCheckNumber(options->startingCheck);
    if (options->password) added->SetPassword(PasswordFromUser(added->GetName()));
    book.save();
    if (global.json) {
      nlohmann::json result = {{"action", "added"},
                               {"account", added->GetName()},
                               {"number", added->GetNumber()},
                               {"currency", added->currency()->code()},
                               {"startingBalance", Money(added->GetStartingBalance())},
                               {"startingCheckNumber", added->GetStartingCheckNumber()},
                               {"password", added->HasPassword()},
                               {"balances", BalancesJson(*added)}};
      PrintJson(result);
    } else {
      fmt::print("Added the account {} to {}\n", added->GetName(), options->path);
    }
  });
  add->add_option("BOOK", options->path, "The book")->required();
  add->add_option("NAME", options->name, "The account's name")->required();
  add->add_option("--currency", options->currency, "Currency code (the book's default)");
  add->add_option("--starting-balance", options->startingBalance, "Opening balance");
  add->add_option("--starting-check", options->startingCheck, "First check number")
      ->check(CLI::NonNegativeNumber);
  add->add_flag("--password", options->password,
                "Protect the account with a password (asked, or TARN_PASSWORD)");

  auto* password = AddCommand(
      *account, chosen, "password", "Set or clear an account's password", [options, &global]() {
        auto book = OpenBook::ForChange(options->path);
        auto found = book.account(options->name);
        book.unlock(*found);
        found->SetPassword(options->clear ? std::string() : PasswordFromUser(found->GetName()));
        book.save();
        if (global.json) {
          return PrintJson({{"action", options->clear ? "cleared password" : "set password"},
                            {"account", found->GetName()},
                            {"number", found->GetNumber()},
                            {"password", found->HasPassword()}});
        }
        fmt::print("{} the password of {}\n", options->clear ? "Cleared" : "Set", found->GetName());
      });
  password->add_option("BOOK", options->path, "The book")->required();
  password->add_option("ACCOUNT", options->name, "The account")->required();
  password->add_flag("--clear", options->clear, "Remove the password");
}

// --- accounts ----------------------------------------------------------------

void AddAccounts(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  auto path = std::make_shared<std::string>();
  auto* command = AddCommand(
      app, chosen, "accounts", "List the accounts with their balances", [path, &global]() {
        auto book = OpenBook::ForReading(*path);
        const DateNumber today = CalendarDate::now().dateNumber();
        Table table({{"Account"},
                     {"Currency"},
                     {"Balance", true},
                     {"Resolved", true},
                     {"Unresolved", true},
                     {"Today", true},
                     {"Pending", true}});
        nlohmann::json list = nlohmann::json::array();
        for (const auto& account : book->accounts()) {
          const bool open = book.tryUnlock(*account);
          if (!open) {
            table.add({account->GetName(), account->currency()->code(), "locked", "", "", "", ""});
            list.push_back({{"name", account->GetName()}, {"locked", true}});
            continue;
          }
          const double balance = account->GetBalance();
          const double resolved = account->GetResolvedBalance();
          const double unresolved = account->GetUnresolvedBalance();
          const double todays = account->GetTodaysBalance();
          const std::int32_t pending = account->numberOfPendingScheduledEntriesForDate(
              CalendarDate::dateWithDateNumber(today));
          table.add({account->GetName(), account->currency()->code(),
                     Colored(FormatAmount(*account, balance), balance < 0),
                     Colored(FormatAmount(*account, resolved), resolved < 0),
                     Colored(FormatAmount(*account, unresolved), unresolved < 0),
                     Colored(FormatAmount(*account, todays), todays < 0), std::to_string(pending)});
          list.push_back({{"name", account->GetName()},
                          {"number", account->GetNumber()},
                          {"currency", account->currency()->code()},
                          {"balance", Money(balance)},
                          {"resolvedBalance", Money(resolved)},
                          {"unresolvedBalance", Money(unresolved)},
                          {"todaysBalance", Money(todays)},
                          {"pendingScheduledEntries", pending}});
        }
        if (global.json) return PrintJson(list);
        if (book->accounts().empty()) {
          fmt::print("{} has no accounts yet (add one with: tarn account add {} NAME)\n", *path,
                     *path);
          return;
        }
        table.print();
      });
  command->add_option("BOOK", *path, "The book")->required();
}

// --- categories --------------------------------------------------------------

nlohmann::json CategoryJson(const TARNAccountEntryCategory& category, std::size_t uses) {
  return {{"name", category.fullName()}, {"number", category.number()}, {"uses", uses}};
}

nlohmann::json CategoryJson(TARNBook& book, const TARNAccountEntryCategory& category) {
  return CategoryJson(category, book.categoryUseCount(category));
}

void PrintCategory(TARNBook& book, const TARNAccountEntryCategory& category, int depth,
                   Table& table, nlohmann::json& list) {
  const std::size_t uses = book.categoryUseCount(category);
  table.add({std::string(static_cast<std::size_t>(depth) * 2, ' ') + category.name(),
             std::to_string(category.number()), std::to_string(uses)});
  list.push_back(CategoryJson(category, uses));
  for (const auto& child : category.children()) PrintCategory(book, *child, depth + 1, table, list);
}

void AddCategories(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  struct Options {
    std::string path, add, rename, to, remove, moveTo;
  };
  auto options = std::make_shared<Options>();
  auto* command = AddCommand(
      app, chosen, "categories", "List, add, rename or remove categories", [options, &global]() {
        const bool change =
            !options->add.empty() || !options->rename.empty() || !options->remove.empty();
        auto book =
            change ? OpenBook::ForChange(options->path) : OpenBook::ForReading(options->path);
        auto find = [&](const std::string& name, const char* option) {
          auto category = book->categoryWithFullName(name);
          if (!category) {
            throw Failure(fmt::format("{}: {}: no category \"{}\"", options->path, option, name));
          }
          return category;
        };
        try {
          if (!options->add.empty()) {
            if (book->categoryWithFullName(options->add)) {
              throw Failure(fmt::format("{}: the category \"{}\" already exists", options->path,
                                        options->add));
            }
            auto added = book->addCategoryPath(options->add);
            book.save();
            if (global.json) {
              return PrintJson({{"action", "added"}, {"category", CategoryJson(*book, *added)}});
            }
            fmt::print("Added the category {}\n", added->fullName());
          } else if (!options->rename.empty()) {
            if (options->to.empty()) throw UsageError("--rename needs --to NAME");
            auto category = find(options->rename, "--rename");
            const std::string before = category->fullName();
            book->renameCategory(*category, options->to);
            book.save();
            if (global.json) {
              return PrintJson({{"action", "renamed"},
                                {"from", before},
                                {"category", CategoryJson(*book, *category)}});
            }
            fmt::print("Renamed {} to {}\n", options->rename, category->fullName());
          } else if (!options->remove.empty()) {
            auto category = find(options->remove, "--remove");
            std::shared_ptr<TARNAccountEntryCategory> target;
            if (!options->moveTo.empty()) target = find(options->moveTo, "--move-to");
            const std::size_t uses = book->categoryUseCount(*category);
            if (uses > 0 && !target && options->moveTo.empty()) {
              throw Failure(fmt::format(
                  "{}: {} entries use \"{}\"; say where they go with --move-to CATEGORY",
                  options->path, uses, category->fullName()));
            }
            const std::string name = category->fullName();
            const std::int32_t number = category->number();
            const std::size_t moved = book->removeCategory(category, target.get());
            book.save();
            if (global.json) {
              return PrintJson(
                  {{"action", "removed"},
                   {"category", {{"name", name}, {"number", number}}},
                   {"moved", moved},
                   {"movedTo", target ? CategoryJson(*book, *target) : nlohmann::json(nullptr)}});
            }
            fmt::print(
                "Removed {}{}\n", name,
                moved ? fmt::format("; {} entries now in {}", moved, target->fullName()) : "");
          } else {
            Table table({{"Category"}, {"Number", true}, {"Uses", true}});
            nlohmann::json list = nlohmann::json::array();
            for (const auto& category : book->categories())
              PrintCategory(*book, *category, 0, table, list);
            if (global.json) return PrintJson(list);
            table.print();
          }
        } catch (const std::invalid_argument& error) {
          throw Failure(fmt::format("{}: {}", options->path, error.what()));
        }
      });
  command->add_option("BOOK", options->path, "The book")->required();
  auto* add = command->add_option("--add", options->add, "Add a category (\"Parent:Child\")");
  auto* rename = command->add_option("--rename", options->rename, "Rename a category ...");
  command->add_option("--to", options->to, "... to this name");
  auto* remove = command->add_option("--remove", options->remove, "Remove a category ...");
  command->add_option("--move-to", options->moveTo, "... moving its entries to this one");
  add->excludes(rename)->excludes(remove);
  rename->excludes(remove);
}

// --- currencies ----------------------------------------------------------------

void AddCurrencies(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  struct Options {
    std::string path, add, edit, code, name, symbol, after, thousands, decimal, makeDefault;
    std::optional<double> rate;
  };
  auto options = std::make_shared<Options>();
  auto* command =
      AddCommand(app, chosen, "currencies", "List, add or edit currencies", [options, &global]() {
        const bool change =
            !options->add.empty() || !options->edit.empty() || !options->makeDefault.empty();
        auto book =
            change ? OpenBook::ForChange(options->path) : OpenBook::ForReading(options->path);
        auto apply = [&](PFCurrency& currency) {
          if (!options->name.empty()) currency.setDescription(options->name);
          if (!options->symbol.empty()) currency.setSymbol(options->symbol);
          if (!options->after.empty()) currency.setSymbolPrecedesAmounts(options->after != "yes");
          if (!options->thousands.empty()) currency.setThousandsSeparator(options->thousands);
          if (!options->decimal.empty()) currency.setDecimalSeparator(options->decimal);
          if (options->rate) {
            if (*options->rate <= 0) throw UsageError("--rate: a rate is above zero");
            currency.setRate(*options->rate);
            currency.setLastUpdate(CalendarDate::now().dateNumber());
          }
        };
        if (!options->add.empty()) {
          if (auto problem = book->currencyCodeProblem(options->add, nullptr)) {
            throw Failure(fmt::format("{}: --add: {}", options->path, *problem));
          }
          auto currency = std::make_shared<PFCurrency>();
          currency->setCode(options->add);
          currency->setDescription(options->add);
          currency->setSymbol(options->add);
          currency->setSymbolPrecedesAmounts(false);
          apply(*currency);
          book->addCurrency(currency);
        } else if (!options->edit.empty()) {
          auto currency = book->currencyWithCode(options->edit);
          if (!currency)
            throw Failure(fmt::format("{}: no currency \"{}\"", options->path, options->edit));
          if (!options->code.empty()) {
            if (auto problem = book->currencyCodeProblem(options->code, currency.get())) {
              throw Failure(fmt::format("{}: --code: {}", options->path, *problem));
            }
            currency->setCode(options->code);
          }
          apply(*currency);
        }
        if (!options->makeDefault.empty()) {
          auto currency = book->currencyWithCode(options->makeDefault);
          if (!currency) {
            throw Failure(
                fmt::format("{}: no currency \"{}\"", options->path, options->makeDefault));
          }
          book->setCurrency(currency);
        }
        if (change) book.save();
        Table table({{"Code"}, {"Name"}, {"Format"}, {"Rate", true}, {"Default"}});
        nlohmann::json list = nlohmann::json::array();
        for (const auto& currency : book->currencies()) {
          const bool isDefault = currency == book->currency();
          std::string sample = currency->formatter()->stringForObjectValue(-1234.5);
          table.add({currency->code(), currency->description(), sample,
                     fmt::format("{:g}", currency->rate()), isDefault ? "yes" : ""});
          list.push_back({{"code", currency->code()},
                          {"name", currency->description()},
                          {"symbol", currency->symbol()},
                          {"rate", currency->rate()},
                          {"default", isDefault}});
        }
        if (global.json) return PrintJson(list);
        table.print();
      });
  command->add_option("BOOK", options->path, "The book")->required();
  auto* add = command->add_option("--add", options->add, "Add a currency with this code");
  auto* edit = command->add_option("--edit", options->edit, "Edit the currency with this code");
  add->excludes(edit);
  command->add_option("--code", options->code, "New code (with --edit)");
  command->add_option("--name", options->name, "Its name");
  command->add_option("--symbol", options->symbol, "Its symbol");
  command->add_option("--symbol-after", options->after, "yes: the symbol follows amounts")
      ->check(CLI::IsMember({"yes", "no"}));
  command->add_option("--thousands", options->thousands, "Thousands separator");
  command->add_option("--decimal", options->decimal, "Decimal separator");
  command->add_option("--rate", options->rate, "Worth of one unit in the common unit");
  command->add_option("--default", options->makeDefault, "Make this currency the book's default");
}

// --- upgrade, sample -------------------------------------------------------------

void AddUpgrade(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  struct Options {
    std::string path, out;
    bool xml = false;
  };
  auto options = std::make_shared<Options>();
  auto* command = AddCommand(
      app, chosen, "upgrade", "Bring an account file or book to the current format version",
      [options, &global]() {
        const bool inPlace = options->out.empty() || options->out == options->path;
        auto book =
            inPlace ? OpenBook::ForChange(options->path) : OpenBook::ForReading(options->path);
        if (options->xml) book->setFormat(plist::Format::Xml);
        if (inPlace) {
          book.save();
        } else {
          if (Exists(options->out))
            throw Failure(options->out + ": already exists; not overwritten");
          try {
            book->saveAs(options->out);
          } catch (const FileError& error) {
            throw Failure(error.what());
          }
        }
        const std::string written = inPlace ? options->path : options->out;
        if (global.json) {
          PrintJson({{"file", written}, {"accounts", book->accounts().size()}, {"version", 8}});
        } else {
          fmt::print("Wrote {} ({} at account format version 8)\n", written,
                     book->openedBareAccount() ? "one account" : "a book");
        }
      });
  command->add_option("FILE", options->path, "An account file of any version, or a book")
      ->required();
  command->add_option("-o,--output", options->out, "Write here instead of replacing FILE");
  command->add_flag("--xml", options->xml, "Write an XML property list");
}

void AddSample(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  struct Options {
    std::string path;
    int years = 2;
    std::uint64_t seed = 1;
    std::int64_t entries = 0;
    bool xml = false;
    bool force = false;
  };
  auto options = std::make_shared<Options>();
  auto* command =
      AddCommand(app, chosen, "sample", "Write the sample household book", [options, &global]() {
        if (Exists(options->path) && !options->force) {
          throw Failure(options->path + ": already exists; not overwritten (use --force)");
        }
        ProgressReporter progress;
        SampleBookOptions sample;
        sample.years = options->years;
        sample.seed = options->seed;
        sample.entries = options->entries;
        sample.progress = progress.handler();
        auto book = MakeSampleBook(sample);
        book->setFormat(options->xml ? plist::Format::Xml : plist::Format::Binary);
        book->setProgressHandler(progress.handler());
        try {
          // A replaced book is kept as the backup, like any other save.
          BookLock lock(options->path);
          book->saveAs(options->path, options->force);
        } catch (const FileError& error) {
          throw Failure(error.what());
        }
        book->setProgressHandler({});
        progress.finish();
        std::size_t entries = 0;
        for (const auto& account : book->accounts()) entries += account->GetAllEntries().size();
        if (global.json) {
          PrintJson({{"book", options->path},
                     {"accounts", book->accounts().size()},
                     {"entries", entries}});
        } else {
          fmt::print("Wrote the sample book {}: {} accounts, {} entries\n", options->path,
                     book->accounts().size(), entries);
        }
      });
  command->add_option("BOOK", options->path, "The book file to write")->required();
  command->add_option("--years", options->years, "Years of activity")->check(CLI::Range(1, 50));
  command->add_option("--seed", options->seed, "Seed of the made-up activity");
  command->add_option("--entries", options->entries, "Pad the book to this many entries")
      ->check(CLI::Range(std::int64_t{0}, std::int64_t{5000000}));
  command->add_flag("--xml", options->xml, "Write an XML property list");
  command->add_flag("--force", options->force, "Replace an existing file");
}

}  // namespace

void AddBookCommands(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  AddNew(app, chosen, global);
  AddAccount(app, chosen, global);
  AddAccounts(app, chosen, global);
  AddCategories(app, chosen, global);
  AddCurrencies(app, chosen, global);
  AddUpgrade(app, chosen, global);
  AddSample(app, chosen, global);
}

}  // namespace tarn::cli
