// Commands that read other programs' files: import (review, then add the
// entries kept) and inspect (what the importer reads from a file, no book).

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/book_entries.h"
#include "tarn/book/import_review.h"
#include "tarn/import/import_file.h"
#include "tarn/import/ofx_import.h"
#include "tarn/import/qif_import.h"
#include "tarn/import/text_import.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/error.h"
#include "tools/commands.h"

namespace tarn::cli {

namespace {

// The reading options a user may change on the command line; empty or unset
// ones keep the account's remembered value.
struct ReadingOptions {
  std::string format, encoding, dateFormat, decimal, thousands, zeroAmounts;
  std::string payeeTo, memoTo, categoryTo, nameTo, typeTo, refNumTo;
  std::string columns, separator;
  bool skipFirstRow = false, keepFirstRow = false, strictOFX = false;
};

void AddReadingOptions(CLI::App& command, ReadingOptions& options) {
  command.add_option("--format", options.format, "qif, ofx or text (default: told by content)");
  command.add_option("--encoding", options.encoding,
                     "QIF and text: the file's encoding (utf-8, windows-1252, iso-8859-1, "
                     "macintosh, utf-16 ...; auto to guess)");
  command.add_option("--date-format", options.dateFormat,
                     "QIF and text: %m/%d/%y, %d/%m/%y, %y/%m/%d, %m/%d/%Y, %d/%m/%Y or %Y/%m/%d");
  command.add_option("--decimal-separator", options.decimal, "QIF and text: e.g. , or .");
  command.add_option("--thousands-separator", options.thousands, "QIF and text: e.g. . or ,");
  command.add_option("--zero-amounts", options.zeroAmounts, "deposit or debit");
  command.add_option("--payee-to", options.payeeTo,
                     "Where the payee goes (QIF P line, OFX PAYEE/NAME): payee, description, "
                     "category, type, notes, number or skip");
  command.add_option("--memo-to", options.memoTo, "Where the memo goes (QIF M, OFX MEMO)");
  command.add_option("--category-to", options.categoryTo, "Where the QIF L line goes");
  command.add_option("--name-to", options.nameTo, "Where the OFX NAME goes");
  command.add_option("--type-to", options.typeTo, "Where the OFX TRNTYPE goes");
  command.add_option("--refnum-to", options.refNumTo, "Where the OFX REFNUM goes");
  command.add_option("--columns", options.columns,
                     "Text: the column layout, e.g. date,description,amount (roles: date, amount, "
                     "debit, deposit, description, payee, category, type, number, cleared, "
                     "tax-deductible, skip)");
  command.add_option("--separator", options.separator, "Text: comma or tab");
  command.add_flag("--skip-first-row", options.skipFirstRow, "Text: the first line is a heading");
  command.add_flag("--keep-first-row", options.keepFirstRow, "Text: the first line is data");
  command.add_flag("--strict-ofx", options.strictOFX,
                   "OFX: no tolerant reading when the faithful one refuses the file");
}

std::int32_t Destination(const std::string& name, const char* option, bool ofx) {
  struct Named {
    const char* name;
    std::int32_t qif, ofx;  // -1: not for that format
  };
  static const Named kNames[] = {
      {"category", kImportFieldCategory, kOFXSwapCategory},
      {"payee", kImportFieldToFrom, kOFXSwapToFrom},
      {"description", kImportFieldDescription, kOFXSwapDescription},
      {"type", -1, kOFXSwapType},
      {"notes", -1, kOFXSwapNotes},
      {"number", -1, kOFXSwapNumber},
      // Any value outside the QIF table drops the line.
      {"skip", 3, kOFXSwapNotRead},
  };
  for (const Named& named : kNames) {
    if (name != named.name) continue;
    const std::int32_t value = ofx ? named.ofx : named.qif;
    if (value == -1 && !ofx) break;
    return value;
  }
  throw UsageError(fmt::format("{}: \"{}\" is not a destination {}", option, name,
                               ofx ? "(payee, description, category, type, notes, number, skip)"
                                   : "for QIF (payee, description, category, skip)"));
}

std::vector<std::int32_t> Layout(const std::string& text) {
  std::vector<std::int32_t> layout;
  std::size_t start = 0;
  while (true) {
    const std::size_t comma = text.find(',', start);
    const std::string word = text.substr(start, comma - start);
    bool known = false;
    for (const TextColumnRole& role : TextColumnRoles()) {
      if (word == role.name) {
        layout.push_back(role.code);
        known = true;
      }
    }
    if (!known) throw UsageError(fmt::format("--columns: \"{}\" is not a column role", word));
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return layout;
}

std::int32_t EncodingNumber(const std::string& name) {
  if (name == "auto") return 0;
  if (auto encoding = EncodingForCharsetName(name)) return static_cast<std::int32_t>(*encoding);
  throw UsageError(fmt::format("--encoding: unknown encoding \"{}\"", name));
}

// The account's remembered options (or the defaults, without an account)
// changed by what the command line gives.
// `qifProblem` receives what the options ask of a QIF file that it cannot do
// (a destination only OFX has), for the caller to raise once the file turns
// out to be QIF.
ImportFileOptions Options(const ReadingOptions& given, const TARNAccount* account,
                          std::string& qifProblem) {
  const auto qif = [&](const std::string& name, const char* option, std::int32_t& field) {
    try {
      field = Destination(name, option, false);
    } catch (const UsageError& error) {
      Destination(name, option, true);  // unknown to OFX too: raise that now
      qifProblem = error.what();
    }
  };
  ImportFileOptions options;
  if (account) {
    options.qif = account->qifImportSettings();
    options.ofx = account->ofxImportSettings();
    options.text = account->textImportSettings();
  }
  if (!given.format.empty()) {
    if (given.format == "qif") {
      options.format = ImportFormat::QIF;
    } else if (given.format == "ofx") {
      options.format = ImportFormat::OFX;
    } else if (given.format == "text" || given.format == "csv" || given.format == "tsv") {
      options.format = ImportFormat::Text;
    } else {
      throw UsageError(fmt::format("--format: \"{}\" is not qif, ofx or text", given.format));
    }
  }
  options.tolerantOFX = !given.strictOFX;
  if (!given.encoding.empty())
    options.qif.encoding = options.text.encoding = EncodingNumber(given.encoding);
  if (!given.dateFormat.empty()) {
    const auto index = ImportDateFormatIndex(given.dateFormat);
    if (!index) {
      std::string known;
      for (const auto& format : ImportDateFormats()) known += (known.empty() ? "" : ", ") + format;
      throw UsageError(
          fmt::format("--date-format: \"{}\" is not one of {}", given.dateFormat, known));
    }
    options.qif.dateFormat = options.text.dateFormat = *index;
  }
  if (!given.decimal.empty())
    options.qif.decimalSeparator = options.text.decimalSeparator = given.decimal;
  if (!given.thousands.empty()) {
    options.qif.thousandsSeparator = options.text.thousandsSeparator = given.thousands;
  }
  if (!given.zeroAmounts.empty()) {
    if (given.zeroAmounts != "deposit" && given.zeroAmounts != "debit") {
      throw UsageError(
          fmt::format("--zero-amounts: \"{}\" is not deposit or debit", given.zeroAmounts));
    }
    const bool deposit = given.zeroAmounts == "deposit";
    options.qif.zeroAmountsAsDeposits = options.ofx.zeroAmountsAsDeposits = deposit;
    options.text.zeroAmountsAsDeposits = deposit ? 1 : 0;
  }
  if (!given.payeeTo.empty()) {
    qif(given.payeeTo, "--payee-to", options.qif.swapToFrom);
    options.ofx.swapPayee = Destination(given.payeeTo, "--payee-to", true);
  }
  if (!given.memoTo.empty()) {
    qif(given.memoTo, "--memo-to", options.qif.swapDescription);
    options.ofx.swapMemo = Destination(given.memoTo, "--memo-to", true);
  }
  if (!given.categoryTo.empty()) {
    qif(given.categoryTo, "--category-to", options.qif.swapCategory);
  }
  if (!given.nameTo.empty()) options.ofx.swapName = Destination(given.nameTo, "--name-to", true);
  if (!given.typeTo.empty()) {
    options.ofx.swapTransactionType = Destination(given.typeTo, "--type-to", true);
  }
  if (!given.refNumTo.empty()) {
    options.ofx.swapReferenceNumber = Destination(given.refNumTo, "--refnum-to", true);
  }
  if (!given.columns.empty()) options.text.dataLayout = Layout(given.columns);
  if (!given.separator.empty()) {
    if (given.separator == "comma") {
      options.text.dataFormat = kTextImportCommaSeparated;
    } else if (given.separator == "tab") {
      options.text.dataFormat = kTextImportTabSeparated;
    } else {
      throw UsageError(fmt::format("--separator: \"{}\" is not comma or tab", given.separator));
    }
  }
  if (given.skipFirstRow && given.keepFirstRow) {
    throw UsageError("--skip-first-row and --keep-first-row exclude each other");
  }
  if (given.skipFirstRow) options.text.skipFirstRow = true;
  if (given.keepFirstRow) options.text.skipFirstRow = false;
  return options;
}

// A text file read for the first time: the separator its lines suggest,
// unless the user chose one.
void GuessSeparator(ImportFileOptions& options, const ReadingOptions& given,
                    const std::string& path, bool accountHasLayout) {
  if (!given.separator.empty() || accountHasLayout) return;
  std::ifstream file(path, std::ios::binary);
  std::string start(4096, '\0');
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  start.resize(static_cast<std::size_t>(file.gcount()));
  const DetectedImportFormat detected = DetectImportFormat(start);
  if (detected.format == ImportFormat::Text) {
    options.text.dataFormat =
        detected.tabSeparated ? kTextImportTabSeparated : kTextImportCommaSeparated;
  }
}

std::string Joined(const std::vector<std::string>& parts, const char* separator) {
  std::string out;
  for (const auto& part : parts) out += (out.empty() ? "" : separator) + part;
  return out;
}

std::string Str(const plist::Value& entry, const char* key) {
  const plist::Value* value = entry.find(key);
  if (!value) return {};
  if (value->isString()) return value->stringValue();
  if (value->isBoolean()) return value->boolValue() ? "yes" : "no";
  if (value->isNumber()) return std::to_string(value->longValue());
  return {};
}

double AmountOf(const plist::Value& entry) {
  const plist::Value* value = entry.find("amount");
  return value ? value->doubleValue() : 0.0;
}

std::int32_t DateOf(const plist::Value& entry) {
  const plist::Value* value = entry.find("date");
  return value ? value->intValue() : 0;
}

// Date numbers as YYYY-MM-DD, also the 0 of an unreadable date.
std::string DateText(std::int32_t date) {
  if (date <= 0) return "(none)";
  return FormatDate(date);
}

// The entries a statement option picks: one statement's, or all when the
// file has at most one.
plist::Array ChosenEntries(ImportedFile& file, const std::string& statement) {
  const auto names = [&]() {
    std::vector<std::string> all;
    for (const auto& each : file.statements) all.push_back(each.name);
    return all.empty() ? std::string("none") : Joined(all, ", ");
  };
  if (!statement.empty()) {
    for (auto& each : file.statements) {
      if (each.name != statement) continue;
      if (file.format != ImportFormat::OFX) return std::move(each.entries);
      const auto first = file.entries.begin() + static_cast<std::ptrdiff_t>(each.firstEntry);
      return plist::Array(first, first + static_cast<std::ptrdiff_t>(each.entryCount));
    }
    throw Failure(
        fmt::format("{}: no statement \"{}\" (it has: {})", file.path, statement, names()));
  }
  if (file.statements.size() > 1) {
    throw Failure(fmt::format("{}: holds {} statements ({}); choose one with --statement",
                              file.path, file.statements.size(), names()));
  }
  return std::move(file.entries);
}

std::string ReadingNote(const ImportedFile& file) {
  if (!file.tolerant) return {};
  return fmt::format("Read with the tolerant OFX reading; the faithful reading refused it: {}",
                     file.faithfulFailure);
}

// --- import ----------------------------------------------------------------

struct ImportOptions {
  std::string path, account, file, statement, only;
  bool apply = false;
  ReadingOptions reading;
};

std::string DuplicateText(const ImportReviewItem& item) {
  switch (item.duplicate) {
    case DuplicateReason::ImportedBefore:
      return "imported before (FITID " + item.fitID + ")";
    case DuplicateReason::SameInFile:
      return "FITID " + item.fitID + " earlier in file";
    case DuplicateReason::MatchesEntry:
      return fmt::format("matches entry {}", item.matchedEntry);
    case DuplicateReason::None:
      break;
  }
  return {};
}

std::string DuplicateCode(DuplicateReason reason) {
  switch (reason) {
    case DuplicateReason::ImportedBefore:
      return "imported-before";
    case DuplicateReason::SameInFile:
      return "same-in-file";
    case DuplicateReason::MatchesEntry:
      return "matches-entry";
    case DuplicateReason::None:
      break;
  }
  return "";
}

std::string TypeText(const ImportReviewItem& item) {
  if (item.newType) return item.typeText + " (new)";
  const auto& type = item.entry->GetActualType();
  return type ? type->GetName() : std::string();
}

std::string CategoryText(const ImportReviewItem& item) {
  if (!item.entry->splitLineItems().empty()) return "Split";
  if (item.newCategory) return ImportCategoryPath(item.categoryText) + " (new)";
  const auto& category = item.entry->GetActualCategory();
  if (category) return category->fullName();
  // A transfer or an unusable text is shown as the file gave it.
  return item.categoryText;
}

std::vector<std::size_t> Indexes(const std::string& text, std::size_t count) {
  std::vector<std::size_t> indexes;
  std::size_t start = 0;
  while (true) {
    const std::size_t comma = text.find(',', start);
    const std::string word = text.substr(start, comma - start);
    std::size_t used = 0;
    long number = 0;
    try {
      number = std::stol(word, &used);
    } catch (const std::exception&) {
      used = 0;
    }
    if (used != word.size() || word.empty() || number < 1 ||
        static_cast<std::size_t>(number) > count) {
      throw UsageError(
          fmt::format("--only: \"{}\" is not an entry of the review (1 to {})", word, count));
    }
    indexes.push_back(static_cast<std::size_t>(number - 1));
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return indexes;
}

void PrintReview(const ImportedFile& file, const TARNAccount& account,
                 const TARNImportReview& review, const GlobalOptions& global,
                 const std::vector<std::shared_ptr<TARNAccountEntry>>* added, bool applied) {
  const auto& items = review.items();
  if (global.json) {
    nlohmann::json entries = nlohmann::json::array();
    for (std::size_t i = 0; i < items.size(); ++i) {
      const ImportReviewItem& item = items[i];
      const TARNImportEntry& entry = *item.entry;
      nlohmann::json row = {{"index", i + 1},
                            {"ticked", entry.GetImport()},
                            {"date", DateText(entry.GetDate())},
                            {"amount", Money(entry.GetAmount())},
                            {"payee", entry.GetToFrom()},
                            {"description", entry.GetDescription()},
                            {"type", item.newType ? item.typeText : TypeText(item)},
                            {"newType", item.newType},
                            {"category", CategoryText(item)},
                            {"newCategory", item.newCategory}};
      if (item.newCategory) row["category"] = ImportCategoryPath(item.categoryText);
      if (!item.fitID.empty()) row["fitID"] = item.fitID;
      if (item.duplicate != DuplicateReason::None) {
        row["duplicate"] = DuplicateCode(item.duplicate);
        if (item.matchedEntry >= 0) row["matchedEntry"] = item.matchedEntry;
      }
      entries.push_back(std::move(row));
    }
    nlohmann::json result = {{"file", file.path},
                             {"format", std::string(ImportFormatName(file.format))},
                             {"encoding", file.encoding},
                             {"tolerant", file.tolerant},
                             {"account", account.GetName()},
                             {"duplicates", review.duplicateCount()},
                             {"entries", entries},
                             {"applied", applied}};
    if (file.tolerant) result["faithfulFailure"] = file.faithfulFailure;
    if (added) {
      nlohmann::json numbers = nlohmann::json::array();
      for (const auto& entry : *added) numbers.push_back(entry->GetNumber());
      result["added"] = numbers;
    }
    return PrintJson(result);
  }
  fmt::print("{} ({}, {}) into {}: {} entries, {} likely duplicates\n", file.path,
             ImportFormatName(file.format), file.encoding, account.GetName(), items.size(),
             review.duplicateCount());
  if (const std::string note = ReadingNote(file); !note.empty()) fmt::print("{}\n", note);
  Table table({{"#", true},
               {"Add"},
               {"Date"},
               {"Amount", true},
               {"Payee", false, true},
               {"Description", false, true},
               {"Type"},
               {"Category", false, true},
               {"Duplicate"}});
  for (std::size_t i = 0; i < items.size(); ++i) {
    const ImportReviewItem& item = items[i];
    const TARNImportEntry& entry = *item.entry;
    table.add({std::to_string(i + 1), entry.GetImport() ? "x" : "", DateText(entry.GetDate()),
               FormatAmount(account, entry.GetAmount()), entry.GetToFrom(), entry.GetDescription(),
               TypeText(item), CategoryText(item), DuplicateText(item)});
  }
  if (!items.empty()) table.print();
  if (added) {
    if (added->empty()) {
      fmt::print("Nothing added to {}: no entry is ticked\n", account.GetName());
    } else if (added->size() == 1) {
      fmt::print("Added 1 entry to {} (entry {})\n", account.GetName(),
                 added->front()->GetNumber());
    } else {
      fmt::print("Added {} entries to {} (entries {} to {})\n", added->size(), account.GetName(),
                 added->front()->GetNumber(), added->back()->GetNumber());
    }
  } else {
    fmt::print(
        "Nothing added: --apply adds the {} ticked entries (--only 1,2,... chooses others)\n",
        review.tickedCount());
  }
}

void AddImport(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  auto options = std::make_shared<ImportOptions>();
  auto* command = AddCommand(
      app, chosen, "import",
      "Review the entries of a QIF, OFX or CSV file for an account, and add them with --apply",
      [options, &global]() {
        auto book = options->apply ? OpenBook::ForChange(options->path)
                                   : OpenBook::ForReading(options->path);
        auto account = book.account(options->account);
        book.unlock(*account);
        std::string qifProblem;
        ImportFileOptions reading = Options(options->reading, account.get(), qifProblem);
        GuessSeparator(reading, options->reading, options->file,
                       account->textImportSettings().dataLayout.has_value());
        ImportedFile file = ReadImportedFile(options->file, reading);
        if (file.format == ImportFormat::QIF && !qifProblem.empty()) throw UsageError(qifProblem);
        if (file.format == ImportFormat::Text && !reading.text.dataLayout) {
          throw Failure(fmt::format(
              "{}: account \"{}\" has no column layout for text files yet: give --columns, "
              "e.g. --columns date,description,amount (the first line holds: {})",
              options->file, account->GetName(), Joined(file.firstLineFields, " | ")));
        }
        const plist::Array entries = ChosenEntries(file, options->statement);
        TARNImportReview review(*book, *account, file.format, reading);
        review.addEntries(entries);
        if (!options->only.empty()) {
          if (!options->apply) throw UsageError("--only chooses what --apply adds; give both");
          review.tickOnly(Indexes(options->only, review.items().size()));
        }
        if (!options->apply) return PrintReview(file, *account, review, global, nullptr, false);
        const auto added = review.accept();
        book.save();
        PrintReview(file, *account, review, global, &added, true);
      });
  command->add_option("BOOK", options->path, "The book")->required();
  command->add_option("ACCOUNT", options->account, "The account to import into")->required();
  command->add_option("FILE", options->file, "The QIF, OFX or CSV file")->required();
  command->add_flag("--apply", options->apply,
                    "Add the ticked entries (likely duplicates are not ticked)");
  command->add_option("--only", options->only,
                      "With --apply: add exactly these entries of the review, e.g. 1,4,7");
  command->add_option("--statement", options->statement,
                      "The statement (OFX account ID, QIF account name) of a file holding several");
  AddReadingOptions(*command, options->reading);
}

// --- inspect ---------------------------------------------------------------

struct InspectOptions {
  std::string file;
  ReadingOptions reading;
};

// The entries of a file as an aligned table. A file may hold a hundred
// thousand entries, so the cells go into one text arena (not a string each),
// are measured as they are made, and the lines go out in large writes.
void PrintEntryRows(const plist::Array& entries) {
  struct Column {
    const char* title;
    bool right;
  };
  static const Column kColumns[] = {{"#", true},         {"Date", false},        {"Amount", true},
                                    {"Payee", false},    {"Description", false}, {"Type", false},
                                    {"Category", false}, {"No", true},           {"R", false},
                                    {"FITID", false}};
  constexpr std::size_t kCount = std::size(kColumns);
  const auto width = [](std::string_view text) {
    std::size_t points = 0;
    for (char c : text) points += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return points;
  };
  std::string arena;
  std::vector<std::size_t> ends;  // where each cell ends in the arena, row after row
  ends.reserve((entries.size() + 1) * kCount);
  std::array<std::size_t, kCount> widths{};
  std::size_t column = 0;
  const auto cell = [&](std::string_view text) {
    arena += text;
    ends.push_back(arena.size());
    widths[column] = std::max(widths[column], width(text));
    column = (column + 1) % kCount;
  };
  for (const Column& each : kColumns) cell(each.title);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const plist::Value& entry = entries[i];
    cell(std::to_string(i + 1));
    cell(DateText(DateOf(entry)));
    char amount[64];
    const auto written = std::to_chars(amount, amount + sizeof amount, Money(AmountOf(entry)),
                                       std::chars_format::fixed, 2);
    cell(std::string_view(amount, static_cast<std::size_t>(written.ptr - amount)));
    for (const char* key : {"toFrom", "description", "type", "category", "number"}) {
      cell(Str(entry, key));
    }
    const plist::Value* cleared = entry.find("cleared");
    cell(cleared && cleared->boolValue() ? "R" : "");
    cell(Str(entry, "fitID"));
  }
  std::string out;
  std::size_t start = 0;
  for (std::size_t row = 0; row * kCount < ends.size(); ++row) {
    const std::size_t lineStart = out.size();
    for (std::size_t c = 0; c < kCount; ++c) {
      const std::size_t end = ends[row * kCount + c];
      const std::string_view text(arena.data() + start, end - start);
      start = end;
      if (c > 0) out += "  ";
      const std::size_t pad = widths[c] - width(text);
      if (kColumns[c].right) out.append(pad, ' ');
      out += text;
      if (!kColumns[c].right) out.append(pad, ' ');
    }
    while (out.size() > lineStart && out.back() == ' ') out.pop_back();
    out += '\n';
    if (out.size() > (1 << 16)) {
      std::fwrite(out.data(), 1, out.size(), stdout);
      out.clear();
    }
  }
  std::fwrite(out.data(), 1, out.size(), stdout);
}

void PrintInspection(const ImportedFile& file, const GlobalOptions& global) {
  if (global.json) {
    nlohmann::json statements = nlohmann::json::array();
    for (const auto& statement : file.statements) {
      nlohmann::json each = {{"name", statement.name}, {"entries", statement.entryCount}};
      if (!statement.currency.empty()) each["currency"] = statement.currency;
      statements.push_back(std::move(each));
    }
    nlohmann::json entries = nlohmann::json::array();
    for (const plist::Value& entry : file.entries) {
      nlohmann::json row = {{"date", DateText(DateOf(entry))}, {"amount", Money(AmountOf(entry))}};
      for (const char* key : {"toFrom", "description", "category", "type", "notes", "fitID"}) {
        if (std::string text = Str(entry, key); !text.empty()) row[key] = text;
      }
      if (const plist::Value* number = entry.find("number")) row["number"] = number->longValue();
      if (const plist::Value* cleared = entry.find("cleared"))
        row["cleared"] = cleared->boolValue();
      entries.push_back(std::move(row));
    }
    nlohmann::json result = {
        {"file", file.path},         {"format", std::string(ImportFormatName(file.format))},
        {"encoding", file.encoding}, {"tolerant", file.tolerant},
        {"accounts", statements},    {"entryCount", file.entries.size()},
        {"entries", entries}};
    if (file.tolerant) result["faithfulFailure"] = file.faithfulFailure;
    if (!file.categories.empty()) result["categories"] = file.categories;
    if (!file.firstLineFields.empty()) result["firstLine"] = file.firstLineFields;
    return PrintJson(result);
  }
  fmt::print("File: {}\nFormat: {}\nEncoding: {}\n", file.path, ImportFormatName(file.format),
             file.encoding);
  if (const std::string note = ReadingNote(file); !note.empty()) fmt::print("{}\n", note);
  for (const auto& statement : file.statements) {
    fmt::print("Account: {}{} ({} entries)\n",
               statement.name.empty() ? "(no name)" : statement.name,
               statement.currency.empty() ? "" : " " + statement.currency, statement.entryCount);
  }
  if (!file.categories.empty()) fmt::print("Categories: {}\n", Joined(file.categories, ", "));
  if (file.format == ImportFormat::Text && !file.firstLineFields.empty()) {
    fmt::print("First line: {}\n", Joined(file.firstLineFields, " | "));
    if (file.entries.empty()) fmt::print("No column layout: --columns reads the entries\n");
  }
  fmt::print("Entries: {}\n", file.entries.size());
  if (file.entries.empty()) return;
  PrintEntryRows(file.entries);
}

void AddInspect(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  auto options = std::make_shared<InspectOptions>();
  auto* command = AddCommand(
      app, chosen, "inspect",
      "Show what the importer reads from a QIF, OFX or CSV file (format, encoding, entries)",
      [options, &global]() {
        std::string qifProblem;
        ImportFileOptions reading = Options(options->reading, nullptr, qifProblem);
        GuessSeparator(reading, options->reading, options->file, false);
        ImportedFile file = ReadImportedFile(options->file, reading);
        if (file.format == ImportFormat::QIF && !qifProblem.empty()) throw UsageError(qifProblem);
        PrintInspection(file, global);
      });
  command->add_option("FILE", options->file, "The file")->required();
  AddReadingOptions(*command, options->reading);
}

}  // namespace

void AddImportCommands(CLI::App& app, Chosen& chosen, const GlobalOptions& global) {
  AddImport(app, chosen, global);
  AddInspect(app, chosen, global);
}

}  // namespace tarn::cli
