#include "tarn/import/import_file.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <memory>
#include <utility>

#include "tarn/import/import_scanning.h"
#include "tarn/import/ofx_import.h"
#include "tarn/import/qif_import.h"
#include "tarn/import/text_import.h"
#include "tarn/platform/collections.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/error.h"
#include "tarn/platform/text.h"

namespace tarn {

namespace {

// How much of a file detection looks at.
constexpr std::size_t kDetectionWindow = 4096;

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() &&
         AsciiEqualIgnoringCase(text.substr(0, prefix.size()), prefix);
}

bool ContainsIgnoringCase(std::string_view text, std::string_view needle) {
  const auto found =
      std::search(text.begin(), text.end(), needle.begin(), needle.end(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) ==
               std::tolower(static_cast<unsigned char>(b));
      });
  return found != text.end();
}

// The start of the file as 8-bit text: UTF-16 (after a byte-order mark, or
// with every other byte zero) has its zero bytes dropped, enough to find the
// ASCII words detection looks for.
std::string DetectionText(std::string_view bytes) {
  std::string_view window = bytes.substr(0, kDetectionWindow);
  if (window.starts_with("\xEF\xBB\xBF")) window.remove_prefix(3);
  const bool bom16 = window.starts_with("\xFF\xFE") || window.starts_with("\xFE\xFF");
  std::size_t zeros = 0;
  for (char c : window) zeros += c == '\0';
  if (bom16 || (window.size() >= 8 && zeros * 3 >= window.size())) {
    std::string narrow;
    for (char c : window.substr(bom16 ? 2 : 0)) {
      if (c != '\0') narrow += c;
    }
    return narrow;
  }
  return std::string(window);
}

bool LooksLikeQIF(std::string_view text) {
  // A header line anywhere in the window: some programs write comment lines
  // before the first one.
  for (std::size_t line = 0; line < text.size();) {
    std::size_t start = line;
    while (start < text.size() && (text[start] == ' ' || text[start] == '\t')) ++start;
    for (std::string_view header : {"!Type:", "!Account", "!Option:", "!Clear:"}) {
      if (StartsWithIgnoringCase(text.substr(start), header)) return true;
    }
    const std::size_t end = text.find_first_of("\r\n", start);
    if (end == std::string_view::npos) break;
    line = end + 1;
  }
  // Bare records: lines that start with a QIF field code, each record closed
  // by a line holding only "^".
  std::size_t records = 0, fieldLines = 0, otherLines = 0;
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find_first_of("\r\n", start);
    if (end == std::string_view::npos) end = text.size();
    std::string_view line = text.substr(start, end - start);
    start = end + 1;
    if (line.empty()) continue;
    if (line == "^") {
      ++records;
    } else if (std::string_view("DTPMLNCSE$AUI").find(line[0]) != std::string_view::npos) {
      ++fieldLines;
    } else {
      ++otherLines;
    }
  }
  return records > 0 && fieldLines >= records && otherLines <= fieldLines / 4;
}

// An OFX 1 header at the start, an OFX 2 processing instruction, or an
// "<OFX>" element that opens a line (not one inside a text field).
bool LooksLikeOFX(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at]))) ++at;
  if (StartsWithIgnoringCase(text.substr(at), "OFXHEADER")) return true;
  if (ContainsIgnoringCase(text, "<?OFX")) return true;
  for (std::size_t line = 0; line < text.size();) {
    std::size_t start = line;
    while (start < text.size() && (text[start] == ' ' || text[start] == '\t')) ++start;
    if (StartsWithIgnoringCase(text.substr(start), "<OFX>")) return true;
    const std::size_t end = text.find_first_of("\r\n", start);
    if (end == std::string_view::npos) break;
    line = end + 1;
  }
  return false;
}

DetectedImportFormat LooksLikeText(std::string_view text) {
  std::size_t lines = 0, commaLines = 0, tabLines = 0;
  std::size_t start = 0;
  while (start < text.size() && lines < 50) {
    std::size_t end = text.find_first_of("\r\n", start);
    // The window may cut the last line; it is read as far as it goes.
    if (end == std::string_view::npos) end = text.size();
    const std::string_view line = text.substr(start, end - start);
    start = end + 1;
    if (line.empty()) continue;
    for (char c : line) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte < 0x20 && c != '\t') return {};
    }
    ++lines;
    commaLines +=
        line.find(',') != std::string_view::npos || line.find(';') != std::string_view::npos;
    tabLines += line.find('\t') != std::string_view::npos;
  }
  if (lines == 0 || commaLines + tabLines == 0) return {};
  return {ImportFormat::Text, tabLines > commaLines};
}

// The encoding an OFX loading reads the file in: for OFX 2 the byte-order
// mark or the XML declaration (UTF-8 without either); for OFX 1 the header's
// ENCODING and CHARSET, as the loader chooses them.
std::string OFXEncodingName(std::string_view bytes, bool tolerant) {
  const std::string text = DetectionText(bytes);
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
    return NameOfStringEncoding(kUnicodeStringEncoding);
  }
  const auto value = [&](std::string_view key) -> std::string {
    const auto found =
        std::search(text.begin(), text.end(), key.begin(), key.end(), [](char a, char b) {
          return std::toupper(static_cast<unsigned char>(a)) ==
                 std::toupper(static_cast<unsigned char>(b));
        });
    if (found == text.end()) return {};
    std::size_t at = static_cast<std::size_t>(found - text.begin()) + key.size();
    while (at < text.size() && (text[at] == ' ' || text[at] == '\t' || text[at] == '"')) ++at;
    std::size_t end = at;
    while (end < text.size() && !std::isspace(static_cast<unsigned char>(text[end])) &&
           text[end] != '"' && text[end] != '<')
      ++end;
    return text.substr(at, end - at);
  };
  if (ContainsIgnoringCase(text, "<?xml ")) {
    const std::string declared = value("encoding=");
    if (declared.empty()) return NameOfStringEncoding(kUTF8StringEncoding);
    const auto encoding = EncodingForCharsetName(declared);
    return encoding ? NameOfStringEncoding(*encoding) : declared;
  }
  const std::string encoding = value("ENCODING:");
  const std::string charset = value("CHARSET:");
  StringEncoding chosen = kWindowsCP1252StringEncoding;
  if (AsciiEqualIgnoringCase(encoding, "UTF-8")) {
    chosen = kUTF8StringEncoding;
  } else if (AsciiEqualIgnoringCase(encoding, "UNICODE")) {
    chosen = kUnicodeStringEncoding;
  } else if (!encoding.empty() && !charset.empty()) {
    if (AsciiEqualIgnoringCase(charset, "ISO-8859-1") || AsciiEqualIgnoringCase(charset, "NONE")) {
      chosen = kISOLatin1StringEncoding;
    } else {
      std::uint32_t page = 0;
      for (char c : charset) {
        if (!std::isdigit(static_cast<unsigned char>(c)) || page > 100000) break;
        page = page * 10 + static_cast<std::uint32_t>(c - '0');
      }
      chosen = EncodingForWindowsCodePage(page).value_or(kWindowsCP1252StringEncoding);
    }
  }
  // The tolerant reading falls back to Windows 1252 when the bytes are not
  // in the encoding the header names.
  if (tolerant && chosen != kWindowsCP1252StringEncoding && !DecodeToUtf8(bytes, chosen)) {
    chosen = kWindowsCP1252StringEncoding;
  }
  return NameOfStringEncoding(chosen);
}

// The array under a key of a dictionary value, moved out; empty when absent.
plist::Array TakeArray(plist::Value& dictionary, const std::string& key) {
  if (!dictionary.isDictionary()) return {};
  plist::Dictionary& fields = dictionary.mutableDictionary();
  const auto found = fields.find(key);
  if (found == fields.end() || !found->second.isArray()) return {};
  return std::move(found->second.mutableArray());
}

std::string Text(const plist::Value* value) {
  return value && value->isString() ? value->stringValue() : std::string();
}

void ReadOFX(ImportedFile& file, std::string bytes, const ImportFileOptions& options) {
  OFXLoadError faithful;
  // The loader takes its bytes whole; a copy stays for the second reading
  // and for naming the encoding.
  std::shared_ptr<TARNOFXImport> importer =
      TARNOFXImport::loadFromBytes(bytes, OFXLoadOptions{false}, &faithful);
  if (!importer && options.tolerantOFX) {
    OFXLoadError tolerant;
    importer = TARNOFXImport::loadFromBytes(bytes, OFXLoadOptions{true}, &tolerant);
    if (!importer) {
      throw FileError(file.path, "no OFX reading could load it: " + faithful.description() +
                                     " The tolerant reading: " + tolerant.description());
    }
    file.tolerant = true;
    file.faithfulFailure = faithful.description();
  } else if (!importer) {
    throw FileError(file.path, "the OFX file could not be loaded: " + faithful.description());
  }
  file.encoding = OFXEncodingName(bytes, file.tolerant);
  importer->SetOptions(options.ofx);
  plist::Value result = importer->parse();
  for (plist::Value& account : TakeArray(result, "accounts")) {
    ImportedStatement statement;
    statement.name = Text(account.find("accountID"));
    statement.currency = Text(account.find("currency"));
    statement.firstEntry = file.entries.size();
    plist::Array entries = TakeArray(account, "entries");
    statement.entryCount = entries.size();
    if (file.entries.empty()) {
      file.entries = std::move(entries);
    } else {
      file.entries.insert(file.entries.end(), std::make_move_iterator(entries.begin()),
                          std::make_move_iterator(entries.end()));
    }
    file.statements.push_back(std::move(statement));
  }
}

std::string DecodedText(ImportedFile& file, const std::string& bytes, std::int32_t encoding) {
  StringEncoding used = 0;
  std::optional<std::string> text =
      DecodeImportBytes(bytes, static_cast<StringEncoding>(encoding), &used);
  if (!text) throw FileError(file.path, "its text could not be decoded in any encoding");
  file.encoding = NameOfStringEncoding(used);
  return std::move(*text);
}

void ReadQIF(ImportedFile& file, const std::string& bytes, const ImportFileOptions& options) {
  auto importer = TARNQIFImport::initWithString(DecodedText(file, bytes, options.qif.encoding));
  if (importer->error() == kQIFImportUnterminatedAutoSwitch) {
    throw FileError(file.path,
                    "its \"!Option:AutoSwitch\" account list has no \"!Clear:AutoSwitch\" line");
  }
  importer->SetSettings(options.qif, ImportDateFormatAt(options.qif.dateFormat));
  plist::Value result(importer->parse());
  file.entries = TakeArray(result, "entries");
  if (const plist::Value* names = result.find("categories"); names && names->isArray()) {
    for (const plist::Value& name : names->arrayValue()) file.categories.push_back(Text(&name));
  }
  if (const plist::Value* accounts = result.find("accounts"); accounts && accounts->isArray()) {
    for (const plist::Value& account : accounts->arrayValue()) {
      ImportedStatement statement;
      statement.name = Text(account.find("name"));
      if (const plist::Value* entries = account.find("entries"); entries && entries->isArray()) {
        statement.entries = entries->arrayValue();
        statement.entryCount = statement.entries.size();
      }
      file.statements.push_back(std::move(statement));
    }
  }
}

void ReadText(ImportedFile& file, const std::string& bytes, const ImportFileOptions& options) {
  std::string text = DecodedText(file, bytes, options.text.encoding);
  const bool tabs = options.text.dataFormat != kTextImportCommaSeparated;
  auto first = LeadingTextLineFields(text, tabs, 1);
  if (!first.empty()) file.firstLineFields = std::move(first.front());
  // A file the user has not described yet gives no entries: without a
  // layout every line would read as an empty entry.
  if (!options.text.dataLayout || options.text.dataLayout->empty()) return;
  auto importer = TARNTextImport::initWithString(std::move(text));
  importer->SetSettings(options.text, ImportDateFormatAt(options.text.dateFormat));
  plist::Value result(importer->parse());
  file.entries = TakeArray(result, "entries");
}

}  // namespace

std::string_view ImportFormatName(ImportFormat format) {
  switch (format) {
    case ImportFormat::QIF:
      return "QIF";
    case ImportFormat::OFX:
      return "OFX";
    case ImportFormat::Text:
      return "text";
    case ImportFormat::Unknown:
      break;
  }
  return "unknown";
}

DetectedImportFormat DetectImportFormat(std::string_view bytes) {
  const std::string text = DetectionText(bytes);
  if (LooksLikeOFX(text)) return {ImportFormat::OFX, false};
  if (LooksLikeQIF(text)) return {ImportFormat::QIF, false};
  return LooksLikeText(text);
}

const std::vector<std::string>& ImportDateFormats() {
  static const std::vector<std::string> formats = {"%m/%d/%y", "%d/%m/%y", "%y/%m/%d",
                                                   "%m/%d/%Y", "%d/%m/%Y", "%Y/%m/%d"};
  return formats;
}

const std::string& ImportDateFormatAt(std::int32_t index) {
  const auto& formats = ImportDateFormats();
  if (index < 0 || static_cast<std::size_t>(index) >= formats.size()) return formats.front();
  return formats[static_cast<std::size_t>(index)];
}

std::optional<std::int32_t> ImportDateFormatIndex(std::string_view format) {
  const auto& formats = ImportDateFormats();
  const auto found = std::find(formats.begin(), formats.end(), format);
  if (found == formats.end()) return std::nullopt;
  return static_cast<std::int32_t>(found - formats.begin());
}

std::vector<std::vector<std::string>> LeadingTextLineFields(std::string_view text, bool tabs,
                                                            std::size_t maxLines) {
  std::vector<std::vector<std::string>> lines;
  for (std::size_t start = 0; start < text.size() && lines.size() < maxLines;) {
    std::size_t end = text.find_first_of("\r\n", start);
    if (end == std::string_view::npos) end = text.size();
    const std::string_view line = text.substr(start, end - start);
    start = end + 1;
    if (line.empty()) continue;
    std::vector<std::string>& fields = lines.emplace_back();
    if (tabs) {
      for (std::size_t at = 0;;) {
        const std::size_t tab = line.find('\t', at);
        fields.emplace_back(line.substr(at, tab - at));
        if (tab == std::string_view::npos) break;
        at = tab + 1;
      }
    } else {
      fields = CSVLineComponents(line);
    }
  }
  return lines;
}

const std::vector<TextColumnRole>& TextColumnRoles() {
  static const std::vector<TextColumnRole> roles = {
      {kColumnDate, "date", "Date"},
      {kColumnAmount, "amount", "Amount"},
      {kColumnDebit, "debit", "Debit"},
      {kColumnDeposit, "deposit", "Deposit"},
      {kColumnToFrom, "payee", "Payee"},
      {kColumnDescription, "description", "Description"},
      {kColumnCategory, "category", "Category"},
      {kColumnType, "type", "Type"},
      {kColumnNumber, "number", "Number"},
      {kColumnCleared, "cleared", "Cleared"},
      {kColumnTaxDeductible, "tax-deductible", "Tax Deductible"},
      {-1, "skip", "Skip"},
  };
  return roles;
}

ImportedFile ReadImportedFile(const std::string& path, const ImportFileOptions& options) {
  std::optional<std::string> bytes = ReadImportFileBytes(path);
  if (!bytes) throw FileError(path, "the file cannot be read");
  return ReadImportedBytes(std::move(*bytes), path, options);
}

ImportedFile ReadImportedBytes(std::string bytes, const std::string& path,
                               const ImportFileOptions& options) {
  ImportedFile file;
  file.path = path;
  if (bytes.empty()) throw FileError(path, "the file is empty");
  file.format = options.format;
  if (file.format == ImportFormat::Unknown) file.format = DetectImportFormat(bytes).format;
  switch (file.format) {
    case ImportFormat::OFX:
      ReadOFX(file, std::move(bytes), options);
      break;
    case ImportFormat::QIF:
      ReadQIF(file, bytes, options);
      break;
    case ImportFormat::Text:
      ReadText(file, bytes, options);
      break;
    case ImportFormat::Unknown:
      throw FileError(path, "not a QIF, OFX or comma- or tab-separated text file");
  }
  return file;
}

}  // namespace tarn
