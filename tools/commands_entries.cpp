// Commands that change entries: add, edit, void and remove.

#include <cctype>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "tarn/account/account.h"
#include "tarn/book/book_entries.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/amounts.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/error.h"
#include "tools/commands.h"

namespace tarn::cli {

namespace {

struct EntryOptions {
  std::string path, account;
  std::int32_t number = -1;
  std::string date, amount, type, category, payee, description, notes, transferTo, exchanged;
  std::vector<std::string> check, splits;
  bool cleared = false, uncleared = false, taxDeductible = false, notTaxDeductible = false;
  bool newCategory = false, undo = false;
};

std::shared_ptr<TARNAccountEntryCategory> Category(const OpenBook& book,
                                                   const EntryOptions& options,
                                                   const std::string& path, const char* option) {
  if (auto found = book->categoryWithFullName(path)) return found;
  if (!options.newCategory) {
    throw Failure(fmt::format(
        "{}: {}: no category \"{}\" (add --new-category to make it, or see tarn categories {})",
        options.path, option, path, options.path));
  }
  try {
    return book->addCategoryPath(path);
  } catch (const std::invalid_argument& error) {
    throw UsageError(fmt::format("{}: {}", option, error.what()));
  }
}

std::shared_ptr<TARNAccountEntryType> Type(const TARNAccount& account, const std::string& name,
                                           bool deposit, const std::string& path) {
  if (auto type = EntryTypeWithName(account, name, deposit)) return type;
  if (EntryTypeWithName(account, name, !deposit)) {
    throw Failure(fmt::format("{}: --type: \"{}\" is a {} type, but the amount is {}", path, name,
                              deposit ? "debit" : "deposit", deposit ? "money in" : "money out"));
  }
  std::string names;
  for (const auto& type : account.types()) {
    if (type->GetIsDeposit() == deposit) names += (names.empty() ? "" : ", ") + type->GetName();
  }
  throw Failure(fmt::format("{}: --type: account \"{}\" has no {} type \"{}\" (it has: {})", path,
                            account.GetName(), deposit ? "deposit" : "debit", name, names));
}

// Applies the options given to the entry; `adding` fills in the defaults a
// new entry needs. Returns whether the entry is a check.
void Apply(const OpenBook& book, TARNAccount& account, TARNAccountEntry& entry,
           const EntryOptions& options, bool adding) {
  if (!options.date.empty() || adding) {
    entry.SetDate(options.date.empty() ? CalendarDate::now().dateNumber()
                                       : ParseDate(options.date, "--date"));
  }
  std::optional<double> amount;
  if (!options.amount.empty()) amount = ParseAmount(options.amount, "--amount");
  if (!options.splits.empty()) {
    entry.removeAllSplitLineItems();
    double total = 0;
    for (const auto& split : options.splits) {
      const auto first = split.find('=');
      if (first == std::string::npos) {
        throw UsageError(
            fmt::format("--split: \"{}\" is not CATEGORY=AMOUNT[=DESCRIPTION]", split));
      }
      const auto second = split.find('=', first + 1);
      const std::string category = split.substr(0, first);
      const double part =
          ParseAmount(split.substr(first + 1, second == std::string::npos ? std::string::npos
                                                                          : second - first - 1),
                      "--split");
      const std::string description = second == std::string::npos ? "" : split.substr(second + 1);
      entry.addSplitLineItemWithCategory(Category(book, options, category, "--split")->number(),
                                         description, options.payee, part);
      total += part;
    }
    total = RoundValue(total);
    if (amount && RoundValue(*amount) != total) {
      throw UsageError(
          fmt::format("--amount: {} differs from the splits' total {:.2f}", options.amount, total));
    }
    amount = total;
  }
  if (adding && !amount) throw UsageError("add: give --amount (or --split)");
  if (amount) {
    entry.SetAmount(*amount);
    if (*amount < 0) {
      entry.SetIsDebit(true);
    } else {
      entry.SetIsDeposit(true);
    }
  }
  const bool deposit = entry.IsDeposit();
  if (!options.type.empty()) {
    entry.SetType(Type(account, options.type, deposit, options.path)->GetNumber());
  } else if (adding || amount) {
    // A new entry, or one whose direction may have changed, gets a type of
    // its direction.
    auto current = account.accountEntryTypeForNumber(entry.GetType());
    if (adding || (current && current->GetIsDeposit() != deposit)) {
      std::int32_t type = -1;
      if (!options.check.empty() && !deposit) {
        type = TARNAccountEntryType::kTypeCheck;
      } else if (!options.transferTo.empty() || entry.IsLinked()) {
        type = deposit ? TARNAccountEntryType::kTypeTransferIn
                       : TARNAccountEntryType::kTypeTransferOut;
      } else if (auto fallback =
                     deposit ? account.defaultDepositType() : account.defaultDebitType()) {
        type = fallback->GetNumber();
      } else if (deposit) {
        type = TARNAccountEntryType::kTypeDeposit;
      }
      if (type >= 0 && !account.accountEntryTypeForNumber(type)) type = -1;
      entry.SetType(type);
    }
  }
  auto type = account.accountEntryTypeForNumber(entry.GetType());
  const bool check = !options.check.empty() || (type && type->GetIsCheck());
  if (check && (!options.check.empty() || adding || !entry.IsCheck())) {
    entry.SetIsCheck(true);
    if (!options.check.empty() && !options.check.front().empty()) {
      try {
        std::size_t used = 0;
        const int number = std::stoi(options.check.front(), &used);
        if (used != options.check.front().size() || number < 0) throw std::invalid_argument("");
        entry.SetCheckNumber(number);
      } catch (const std::exception&) {
        throw UsageError(
            fmt::format("--check: \"{}\" is not a check number", options.check.front()));
      }
    } else if (entry.GetCheckNumber() < 0) {
      entry.SetCheckNumber(account.NextAvailableCheckNumber());
    }
  } else if (!check && type) {
    entry.SetIsCheck(false);
  }
  if (!options.category.empty()) {
    entry.SetCategory(Category(book, options, options.category, "--category")->number());
  }
  if (!options.payee.empty()) entry.SetToFrom(options.payee);
  if (!options.description.empty()) entry.SetDescription(options.description);
  if (!options.notes.empty()) entry.SetNotes(options.notes);
  if (options.cleared) entry.SetCleared(1);
  if (options.uncleared) entry.SetCleared(0);
  if (options.taxDeductible) entry.SetTaxDeductible(true);
  if (options.notTaxDeductible) entry.SetTaxDeductible(false);
}

std::shared_ptr<TARNAccount> TransferTarget(const OpenBook& book, const TARNAccount& account,
                                            const EntryOptions& options) {
  auto target = book.account(options.transferTo);
  if (target.get() == &account) throw UsageError("--transfer-to: an account cannot pay itself");
  book.unlock(*target);
  if (!options.splits.empty()) throw UsageError("--transfer-to: a transfer cannot also be split");
  return target;
}

std::optional<double> Exchanged(const EntryOptions& options) {
  if (options.exchanged.empty()) return std::nullopt;
  return ParseAmount(options.exchanged, "--exchanged-amount");
}

// What a change did: a line of text, or as JSON the entry as it now stands
// (as it stood, for a removed one), the account's new balances, and the same
// for the other half of a transfer.
void Report(const GlobalOptions& global, const std::string& verb, TARNAccount& account,
            const TARNAccountEntry& entry, const std::shared_ptr<TARNAccountEntry>& mirror,
            bool removed = false) {
  if (global.json) {
    auto side = [removed](TARNAccount& owner, const TARNAccountEntry& changed) {
      if (!removed) owner.CacheRunningBalances();
      return nlohmann::json{{"account", owner.GetName()},
                            {"entry", EntryJson(owner, changed, !removed)},
                            {"balances", BalancesJson(owner)}};
    };
    nlohmann::json result = side(account, entry);
    std::string action = verb;
    for (char& c : action) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    result["action"] = action;
    if (mirror && mirror->GetAccount()) result["transfer"] = side(*mirror->GetAccount(), *mirror);
    return PrintJson(result);
  }
  std::string line =
      fmt::format("{} entry {} in {}: {}  {}  {}", verb, entry.GetNumber(), account.GetName(),
                  FormatDate(entry.GetDate()), FormatAmount(account, entry.GetAmount()),
                  entry.GetDescription().empty() ? entry.GetToFrom() : entry.GetDescription());
  if (entry.IsCheck()) line += fmt::format("  (check {})", entry.GetCheckNumber());
  fmt::print("{}\n", line);
  if (mirror && mirror->GetAccount()) {
    fmt::print("  and entry {} in {}: {}\n", mirror->GetNumber(), mirror->GetAccount()->GetName(),
               FormatAmount(*mirror->GetAccount(), mirror->GetAmount()));
  }
}

// BOOK ACCOUNT NUMBER, the positionals of the commands on one entry.
void AddEntryPositionals(CLI::App& command, EntryOptions& options) {
  command.add_option("BOOK", options.path, "The book")->required();
  command.add_option("ACCOUNT", options.account, "The account")->required();
  command.add_option("NUMBER", options.number, "The entry's number (the register's No column)")
      ->required();
}

void AddEntryOptions(CLI::App& command, EntryOptions& options) {
  command.add_option("--date", options.date, "Date (YYYY-MM-DD; today)");
  command.add_option("--amount", options.amount, "Amount: negative for money out, e.g. -12.50");
  command.add_option("--type", options.type, "Entry type by name (Check, ATM, Deposit ...)");
  command.add_option("--category", options.category, "Category by full name (Food:Groceries)");
  command.add_flag("--new-category", options.newCategory, "Make categories that do not exist yet");
  command.add_option("--payee,--to-from", options.payee, "Payee or payer");
  command.add_option("--description", options.description, "Description");
  command.add_option("--notes", options.notes, "Notes");
  command
      .add_option("--check", options.check, "A check: its number, or alone for the next free one")
      ->expected(0, 1);
  command.add_flag("--cleared", options.cleared, "Mark resolved");
  command.add_flag("--uncleared", options.uncleared, "Mark unresolved");
  command.add_flag("--tax-deductible", options.taxDeductible, "Mark tax-deductible");
  command.add_flag("--not-tax-deductible", options.notTaxDeductible,
                   "Clear the tax-deductible mark");
  command.add_option("--split", options.splits,
                     "A split line: CATEGORY=AMOUNT[=DESCRIPTION] (repeat)");
  command.add_option("--transfer-to", options.transferTo, "Make it a transfer to this account");
  command.add_option("--exchanged-amount", options.exchanged,
                     "The amount in the other account's currency");
}

void AddAdd(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  auto options = std::make_shared<EntryOptions>();
  auto* command =
      AddCommand(app, chosen, "add", "Add an entry to an account", [options, &global]() {
        auto book = OpenBook::ForChange(options->path);
        auto account = book.account(options->account);
        book.unlock(*account);
        auto target =
            options->transferTo.empty() ? nullptr : TransferTarget(book, *account, *options);
        auto entry = std::make_shared<TARNAccountEntry>();
        Apply(book, *account, *entry, *options, true);
        entry->SetNumber(account->NextAvailableNumber());
        account->AddEntry(entry);
        std::shared_ptr<TARNAccountEntry> mirror;
        if (target) mirror = LinkTransfer(*book, *account, entry, *target, Exchanged(*options));
        book.save();
        Report(global, "Added", *account, *entry, mirror);
      });
  command->add_option("BOOK", options->path, "The book")->required();
  command->add_option("ACCOUNT", options->account, "The account")->required();
  AddEntryOptions(*command, *options);
}

std::shared_ptr<TARNAccountEntry> FindEntry(const OpenBook& book, const TARNAccount& account,
                                            const EntryOptions& options) {
  auto entry = EntryByNumber(account, options.number);
  if (!entry) {
    throw Failure(fmt::format("{}: account \"{}\" has no entry {} (see tarn register {} \"{}\")",
                              book->path(), account.GetName(), options.number, book->path(),
                              account.GetName()));
  }
  return entry;
}

// The book opened for a change, and the account and entry the options name.
struct EntryInBook {
  OpenBook book;
  std::shared_ptr<TARNAccount> account;
  std::shared_ptr<TARNAccountEntry> entry;
};

EntryInBook OpenEntry(const EntryOptions& options) {
  EntryInBook found{OpenBook::ForChange(options.path), nullptr, nullptr};
  found.account = found.book.account(options.account);
  found.book.unlock(*found.account);
  found.entry = FindEntry(found.book, *found.account, options);
  return found;
}

void AddEdit(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  auto options = std::make_shared<EntryOptions>();
  auto* command = AddCommand(app, chosen, "edit", "Change an entry", [options, &global]() {
    auto [book, account, entry] = OpenEntry(*options);
    std::shared_ptr<TARNAccount> target;
    if (!options->transferTo.empty()) {
      if (entry->IsLinked()) {
        throw UsageError(
            "--transfer-to: the entry is already a transfer; remove it and add it again");
      }
      target = TransferTarget(book, *account, *options);
    }
    if (entry->IsLinked() && !options->splits.empty()) {
      throw UsageError("--split: a transfer cannot also be split");
    }
    Apply(book, *account, *entry, *options, false);
    std::shared_ptr<TARNAccountEntry> mirror;
    if (target) {
      mirror = LinkTransfer(*book, *account, entry, *target, Exchanged(*options));
    } else if (entry->IsLinked()) {
      if (auto exchanged = Exchanged(*options)) entry->SetLinkedExchangedAmount(*exchanged);
      SyncTransfer(*book, *entry);
      mirror = LinkedEntry(*book, *entry);
    }
    book.save();
    Report(global, "Changed", *account, *entry, mirror);
  });
  AddEntryPositionals(*command, *options);
  AddEntryOptions(*command, *options);
}

void AddVoidAndRemove(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  auto options = std::make_shared<EntryOptions>();
  auto* voidCommand = AddCommand(app, chosen, "void", "Void an entry (and its transfer half)",
                                 [options, &global]() {
                                   auto [book, account, entry] = OpenEntry(*options);
                                   entry->SetVoid(!options->undo);
                                   SyncTransfer(*book, *entry);
                                   book.save();
                                   Report(global, options->undo ? "Restored" : "Voided", *account,
                                          *entry, LinkedEntry(*book, *entry));
                                 });
  AddEntryPositionals(*voidCommand, *options);
  voidCommand->add_flag("--undo", options->undo, "Make a void entry count again");

  auto removeOptions = std::make_shared<EntryOptions>();
  auto* remove = AddCommand(app, chosen, "remove", "Remove an entry (and its transfer half)",
                            [removeOptions, &global]() {
                              auto [book, account, entry] = OpenEntry(*removeOptions);
                              auto mirror = LinkedEntry(*book, *entry);
                              RemoveEntryAndTransfer(*book, *account, entry);
                              book.save();
                              Report(global, "Removed", *account, *entry, mirror, true);
                            });
  AddEntryPositionals(*remove, *removeOptions);
}

}  // namespace

void AddEntryCommands(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  AddAdd(app, chosen, global);
  AddEdit(app, chosen, global);
  AddVoidAndRemove(app, chosen, global);
}

}  // namespace tarn::cli
