// The summary command: an account's saved summaries listed, or one of them
// computed over its range (or one given on the command line) and printed as
// a report: totals and balances, the periods, the category tree and the
// type, description and payee subtotals.

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "tarn/account/account.h"
#include "tarn/model/currency.h"
#include "tarn/platform/text.h"
#include "tarn/reports/account_summary.h"
#include "tarn/reports/summary_result.h"
#include "tools/commands.h"

namespace tarn::cli {

namespace {

// The command line's words for the summary's range styles, in the order the
// help lists them.
const std::vector<std::pair<std::string, std::int32_t>> kRanges = {
    {"first-to-last", kSummaryRangeFirstToLastEntry},
    {"first-to-today", kSummaryRangeFirstEntryToToday},
    {"today", 2},
    {"yesterday", 3},
    {"last-week", 4},
    {"last-month", 5},
    {"last-quarter", 6},
    {"last-year", kSummaryRangeLastYear},
    {"this-week", 8},
    {"this-month", 9},
    {"this-quarter", 10},
    {"this-year", kSummaryRangeThisYear},
    {"week-to-date", 15},
    {"month-to-date", kSummaryRangeMonthToDate},
    {"quarter-to-date", kSummaryRangeQuarterToDate},
    {"year-to-date", kSummaryRangeYearToDate},
    {"custom", kSummaryRangeCustom}};

const std::vector<std::pair<std::string, std::int32_t>> kPeriodLengths = {
    {"day", kSummaryPeriodDay},     {"week", kSummaryPeriodWeek},
    {"month", kSummaryPeriodMonth}, {"quarter", kSummaryPeriodQuarter},
    {"year", kSummaryPeriodYear},   {"whole", kSummaryPeriodWholeRange}};

std::vector<std::string> Words(const std::vector<std::pair<std::string, std::int32_t>>& table) {
  std::vector<std::string> words;
  for (const auto& [word, value] : table) words.push_back(word);
  return words;
}

std::int32_t ValueOf(const std::vector<std::pair<std::string, std::int32_t>>& table,
                     const std::string& word) {
  for (const auto& [each, value] : table) {
    if (each == word) return value;
  }
  return -1;
}

// The word of a stored style; styles the command line has no word for (a
// file may hold any number) show as the number.
std::string WordOf(const std::vector<std::pair<std::string, std::int32_t>>& table,
                   std::int32_t value) {
  for (const auto& [word, each] : table) {
    if (each == value) return word;
  }
  return fmt::format("style {}", value);
}

// The period length as the report's heading says it.
std::string PeriodsText(std::int32_t style) {
  switch (style) {
    case kSummaryPeriodDay:
      return "daily periods";
    case kSummaryPeriodWeek:
      return "weekly periods";
    case kSummaryPeriodMonth:
      return "monthly periods";
    case kSummaryPeriodQuarter:
      return "quarterly periods";
    case kSummaryPeriodYear:
      return "yearly periods";
    default:
      return "one period";
  }
}

// Which entries a summary takes, in a few words: "debits only, resolved only".
std::string Selection(const TARNAccountSummary& summary) {
  std::vector<std::string> parts;
  if (!summary.showDebits() && !summary.showDeposits()) {
    parts.push_back("no debits or deposits");
  } else if (!summary.showDeposits()) {
    parts.push_back("debits only");
  } else if (!summary.showDebits()) {
    parts.push_back("deposits only");
  }
  auto choice = [&](std::int32_t value, const char* only, const char* others) {
    if (value == kSummaryShowOnly) parts.push_back(only);
    if (value == kSummaryShowOthers) parts.push_back(others);
  };
  choice(summary.showResolved(), "resolved only", "unresolved only");
  choice(summary.showTaxDeductible(), "tax-deductible only", "not tax-deductible");
  choice(summary.showChecks(), "checks only", "no checks");
  if (summary.filter() && summary.filterData().isString() &&
      !summary.filterData().stringValue().empty()) {
    parts.push_back(fmt::format("matching \"{}\"", summary.filterData().stringValue()));
  }
  if (parts.empty()) return "all entries";
  std::string text;
  for (const auto& part : parts) text += (text.empty() ? "" : ", ") + part;
  return text;
}

// Saved names may start with a space (" Custom..." sorts first); the user
// types them without it.
std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// A name as the user may type it: trimmed, and without a menu's "...".
std::string Typed(const std::string& text) {
  std::string name = Trimmed(text);
  while (name.size() > 3 && name.ends_with("...")) name = Trimmed(name.substr(0, name.size() - 3));
  return name;
}

// The summary of that name, in any letter case ("custom" finds " Custom...").
std::shared_ptr<TARNAccountSummary> SummaryWithName(const TARNAccount& account,
                                                    const std::string& name) {
  for (const auto& summary : account.accountSummaries()) {
    if (CaseInsensitiveEqual(Typed(summary->name()), Typed(name))) return summary;
  }
  return nullptr;
}

std::string DateText(const CalendarDate& date) {
  return FormatDate(date.dateNumber());
}

// --- The report -------------------------------------------------------------

class SummaryReport {
 public:
  SummaryReport(const TARNAccount& account, const TARNAccountSummary& summary,
                const TARNSummaryResult& result)
      : account_(account), summary_(summary), result_(result) {}

  void print() const;
  nlohmann::json json() const;

 private:
  std::string money(double amount) const {
    return Colored(FormatAmount(account_, amount), Money(amount) < 0);
  }
  std::string money(const std::optional<double>& amount) const {
    return amount ? money(*amount) : std::string();
  }
  static nlohmann::json moneyJson(const std::optional<double>& amount) {
    return amount ? nlohmann::json(Money(*amount)) : nlohmann::json(nullptr);
  }
  static nlohmann::json rowJson(const std::string& name, const TARNSummaryRow& row) {
    return {{"name", name},
            {"amount", Money(row.amount)},
            {"debits", moneyJson(row.debits)},
            {"deposits", moneyJson(row.deposits)}};
  }
  void addCategoryRows(const std::vector<TARNSummaryCategoryRow>& rows, int depth,
                       Table& table) const;
  static nlohmann::json categoryJson(const std::vector<TARNSummaryCategoryRow>& rows);
  void printNamedRows(const char* title, const char* none,
                      const std::vector<TARNSummaryNamedRow>& rows) const;

  const TARNAccount& account_;
  const TARNAccountSummary& summary_;
  const TARNSummaryResult& result_;
};

void SummaryReport::addCategoryRows(const std::vector<TARNSummaryCategoryRow>& rows, int depth,
                                    Table& table) const {
  for (const auto& row : rows) {
    const std::string name = row.subtotalName.empty() ? "(no category)" : row.subtotalName;
    table.add({std::string(static_cast<std::size_t>(depth) * 2, ' ') + name, money(row.row.amount),
               money(row.row.debits), money(row.row.deposits)});
    addCategoryRows(row.children, depth + 1, table);
  }
}

nlohmann::json SummaryReport::categoryJson(const std::vector<TARNSummaryCategoryRow>& rows) {
  nlohmann::json list = nlohmann::json::array();
  for (const auto& row : rows) {
    nlohmann::json item = rowJson(row.subtotalName, row.row);
    item["children"] = categoryJson(row.children);
    list.push_back(std::move(item));
  }
  return list;
}

void SummaryReport::printNamedRows(const char* title, const char* none,
                                   const std::vector<TARNSummaryNamedRow>& rows) const {
  fmt::print("\n");
  Table table({{title, false, true}, {"Amount", true}, {"Debits", true}, {"Deposits", true}});
  for (const auto& row : rows) {
    table.add({row.name.empty() ? none : row.name, money(row.row.amount), money(row.row.debits),
               money(row.row.deposits)});
  }
  table.print();
}

void SummaryReport::print() const {
  const TARNSummaryTotals& totals = result_.totals;
  fmt::print("{}: {}\n", Trimmed(summary_.name()), account_.GetName());
  fmt::print("{} to {} ({}), {}; {}: {} {}\n", DateText(result_.startDate),
             DateText(result_.endDate), WordOf(kRanges, summary_.dateRangeStyle()),
             PeriodsText(summary_.subtotalPeriodStyle()), Selection(summary_), totals.entryCount,
             totals.entryCount == 1 ? "entry" : "entries");
  fmt::print("\n");

  Table overview({{"Totals"}, {"Amount", true}});
  overview.add({"Start balance", money(result_.startBalance)});
  overview.add({"Debits", money(totals.debitsTotal)});
  overview.add({"Deposits", money(totals.depositsTotal)});
  overview.add({"Total", money(totals.total)});
  overview.add({"End balance", money(result_.endBalance)});
  overview.add({"Resolved", money(totals.resolvedTotal)});
  overview.add({"Unresolved", money(totals.unresolvedTotal)});
  overview.add({"Tax-deductible", money(totals.taxDeductibleTotal)});
  overview.add({"Taxable", money(totals.taxableTotal)});
  overview.print();

  fmt::print("\n");
  Table periods({{"Start"},
                 {"End"},
                 {"Entries", true},
                 {"Debits", true},
                 {"Deposits", true},
                 {"Total", true},
                 {"End balance", true}});
  for (const auto& period : result_.periods) {
    periods.add({DateText(period.startDate), DateText(period.endDate),
                 std::to_string(period.totals.entryCount), money(period.totals.debitsTotal),
                 money(period.totals.depositsTotal), money(period.totals.total),
                 money(period.endBalance)});
  }
  periods.print();

  const TARNSummarySubtotals& subtotals = result_.subtotals;
  if (summary_.subtotalCategories()) {
    fmt::print("\n");
    Table categories(
        {{"Category", false, true}, {"Amount", true}, {"Debits", true}, {"Deposits", true}});
    addCategoryRows(subtotals.categories, 0, categories);
    categories.print();
  }
  if (summary_.subtotalTypes()) printNamedRows("Type", "(no type)", subtotals.types);
  if (summary_.subtotalDescriptions()) {
    printNamedRows("Description", "(no description)", subtotals.descriptions);
  }
  if (summary_.subtotalToFroms()) printNamedRows("To/From", "(no payee)", subtotals.toFroms);
}

nlohmann::json SummaryReport::json() const {
  auto totalsJson = [](const TARNSummaryTotals& totals, nlohmann::json& into) {
    into["entryCount"] = totals.entryCount;
    into["total"] = Money(totals.total);
    into["debitsTotal"] = Money(totals.debitsTotal);
    into["depositsTotal"] = Money(totals.depositsTotal);
    into["resolvedTotal"] = Money(totals.resolvedTotal);
    into["unresolvedTotal"] = Money(totals.unresolvedTotal);
    into["taxableTotal"] = Money(totals.taxableTotal);
    into["taxDeductibleTotal"] = Money(totals.taxDeductibleTotal);
  };
  nlohmann::json out = {{"account", account_.GetName()},
                        {"summary", summary_.name()},
                        {"currency", account_.currency()->code()},
                        {"range", WordOf(kRanges, summary_.dateRangeStyle())},
                        {"period", WordOf(kPeriodLengths, summary_.subtotalPeriodStyle())},
                        {"selection", Selection(summary_)},
                        {"startDate", DateText(result_.startDate)},
                        {"endDate", DateText(result_.endDate)},
                        {"startBalance", Money(result_.startBalance)},
                        {"endBalance", Money(result_.endBalance)}};
  totalsJson(result_.totals, out);
  nlohmann::json periods = nlohmann::json::array();
  for (const auto& period : result_.periods) {
    nlohmann::json item = {{"startDate", DateText(period.startDate)},
                           {"endDate", DateText(period.endDate)},
                           {"startBalance", Money(period.startBalance)},
                           {"endBalance", Money(period.endBalance)}};
    totalsJson(period.totals, item);
    periods.push_back(std::move(item));
  }
  out["periods"] = std::move(periods);
  auto named = [](const std::vector<TARNSummaryNamedRow>& rows) {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& row : rows) list.push_back(rowJson(row.name, row.row));
    return list;
  };
  const TARNSummarySubtotals& subtotals = result_.subtotals;
  if (summary_.subtotalCategories()) out["categories"] = categoryJson(subtotals.categories);
  if (summary_.subtotalTypes()) out["types"] = named(subtotals.types);
  if (summary_.subtotalDescriptions()) out["descriptions"] = named(subtotals.descriptions);
  if (summary_.subtotalToFroms()) out["toFroms"] = named(subtotals.toFroms);
  return out;
}

// --- The listing ------------------------------------------------------------

void ListSummaries(const TARNAccount& account, const GlobalOptions& global) {
  Table table({{"Summary", false, true}, {"Range"}, {"From"}, {"To"}, {"Periods"}, {"Entries"}});
  nlohmann::json list = nlohmann::json::array();
  TARNAccountSummary::Entries all;
  for (const auto& summary : account.accountSummaries()) {
    // The dates of the range as it stands today, on a copy so that nothing
    // of the account changes.
    TARNAccountSummary resolved = *summary;
    if (summary->dateRangeStyle() == kSummaryRangeFirstToLastEntry ||
        summary->dateRangeStyle() == kSummaryRangeFirstEntryToToday) {
      if (all.empty()) all = account.GetAllEntries();
      resolved.setEntries(all);
    }
    resolved.updateDateRange();
    const bool selected = summary == account.selectedAccountSummary();
    table.add({Trimmed(summary->name()), WordOf(kRanges, summary->dateRangeStyle()),
               FormatDate(resolved.startDate()), FormatDate(resolved.endDate()),
               WordOf(kPeriodLengths, summary->subtotalPeriodStyle()), Selection(*summary)});
    list.push_back({{"name", summary->name()},
                    {"selected", selected},
                    {"range", WordOf(kRanges, summary->dateRangeStyle())},
                    {"startDate", FormatDate(resolved.startDate())},
                    {"endDate", FormatDate(resolved.endDate())},
                    {"period", WordOf(kPeriodLengths, summary->subtotalPeriodStyle())},
                    {"selection", Selection(*summary)}});
  }
  if (global.json) return PrintJson(list);
  if (account.accountSummaries().empty()) {
    fmt::print("{} has no saved summaries\n", account.GetName());
    return;
  }
  table.print();
}

struct SummaryOptions {
  std::string path, account, name, range, from, to, period;
};

// Applies the range and period options to the summary (a copy of the saved
// one: the book is not changed).
void ApplySummaryOptions(TARNAccountSummary& summary, const SummaryOptions& options) {
  std::string range = options.range;
  if (range.empty() && (!options.from.empty() || !options.to.empty())) range = "custom";
  if (!range.empty()) {
    const std::int32_t style = ValueOf(kRanges, range);
    if (style != kSummaryRangeCustom && (!options.from.empty() || !options.to.empty())) {
      throw UsageError(fmt::format("--from and --to go with --range custom, not {}", range));
    }
    summary.setDateRangeStyle(style);
  }
  if (!options.from.empty()) summary.setStartDate(ParseDate(options.from, "--from"));
  if (!options.to.empty()) summary.setEndDate(ParseDate(options.to, "--to"));
  if (summary.dateRangeStyle() == kSummaryRangeCustom && summary.startDate() > summary.endDate()) {
    throw UsageError(fmt::format("--from: the start {} comes after the end {}",
                                 FormatDate(summary.startDate()), FormatDate(summary.endDate())));
  }
  if (!options.period.empty()) {
    summary.setSubtotalPeriodStyle(ValueOf(kPeriodLengths, options.period));
  }
}

}  // namespace

void AddSummaryCommands(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  auto options = std::make_shared<SummaryOptions>();
  auto* command = AddCommand(
      app, chosen, "summary", "List an account's summaries, or show one as a report",
      [options, &global]() {
        auto book = OpenBook::ForReading(options->path);
        auto account = book.account(options->account);
        book.unlock(*account);
        if (options->name.empty()) {
          if (!options->range.empty() || !options->from.empty() || !options->to.empty() ||
              !options->period.empty()) {
            throw UsageError("summary: name the summary the range and period options apply to");
          }
          return ListSummaries(*account, global);
        }
        auto saved = SummaryWithName(*account, options->name);
        if (!saved) {
          std::string names;
          for (const auto& each : account->accountSummaries()) {
            names += fmt::format("{}\"{}\"", names.empty() ? "" : ", ", Trimmed(each->name()));
          }
          throw Failure(fmt::format("{}: account \"{}\" has no summary named \"{}\" (it has: {})",
                                    options->path, account->GetName(), options->name,
                                    names.empty() ? "none" : names));
        }
        TARNAccountSummary summary = *saved;
        ApplySummaryOptions(summary, *options);
        summary.setEntries(account->GetAllEntries());
        summary.setAccounts({account.get()});
        const auto result = summary.ComputeResult();
        const SummaryReport report(*account, summary, *result);
        if (global.json) return PrintJson(report.json());
        report.print();
      });
  command->add_option("BOOK", options->path, "The book")->required();
  command->add_option("ACCOUNT", options->account, "The account")->required();
  command->add_option("NAME", options->name,
                      "The summary (\"Expenses, Year To Date\"); without it, list them");
  command->add_option("--range", options->range, "The range: the saved one, or this style")
      ->check(CLI::IsMember(Words(kRanges)));
  command->add_option("--from", options->from, "Start of a custom range (YYYY-MM-DD)");
  command->add_option("--to", options->to, "End of a custom range (YYYY-MM-DD)");
  command->add_option("--period", options->period, "Length of the periods")
      ->check(CLI::IsMember(Words(kPeriodLengths)));
}

}  // namespace tarn::cli
