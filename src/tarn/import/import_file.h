// Reading a file for import without knowing what it is: the format told from
// its content (QIF, OFX or delimited text), the account's remembered options
// applied to the matching importer, and the importer's result gathered with
// what the user should know about the reading (the encoding used, the OFX
// reading that succeeded, the statements the file holds). Nothing here owns
// or changes an account; the review (tarn/book/import_review.h) takes it
// from there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/account/account_settings.h"
#include "tarn/platform/value.h"

namespace tarn {

enum class ImportFormat { Unknown, QIF, OFX, Text };

// "QIF", "OFX", "text"; "unknown".
std::string_view ImportFormatName(ImportFormat format);

// What the first bytes of a file say it is.
struct DetectedImportFormat {
  ImportFormat format = ImportFormat::Unknown;
  // Delimited text only: more lines hold tabs than commas.
  bool tabSeparated = false;
};

// QIF: a line starts with "!" and a QIF header word (Type, Account, Option,
// Clear), or the text is made of records ending
// in "^" lines. OFX: an OFX 1 header ("OFXHEADER:") or an "<OFX>" element,
// in UTF-8, UTF-16 or an 8-bit encoding. Text: printable lines holding commas
// or tabs. Anything else (binary data, prose) is unknown.
DetectedImportFormat DetectImportFormat(std::string_view bytes);

// The date formats an account's QIF and text import settings choose among
// by index. Every one separates its fields with "/", as the importers read
// dates; index 0 is the importers' own default.
const std::vector<std::string>& ImportDateFormats();
// The format at an index; the default for an index out of range.
const std::string& ImportDateFormatAt(std::int32_t index);
// The index of a format, nullopt when it is not in the list.
std::optional<std::int32_t> ImportDateFormatIndex(std::string_view format);

// The options an import reads a file with: the account's remembered settings
// of each importer, possibly changed by the user for this import.
struct ImportFileOptions {
  QIFImportSettings qif;
  OFXImportSettings ofx;
  TextImportSettings text;
  // The format when the caller knows better than the content; Unknown
  // detects it.
  ImportFormat format = ImportFormat::Unknown;
  // Whether an OFX file that the faithful reading refuses may be read with
  // the tolerant one.
  bool tolerantOFX = true;
};

// One account of a file: an OFX statement or a QIF account header.
struct ImportedStatement {
  std::string name;      // the QIF account name, or the OFX account identifier
  std::string currency;  // OFX only
  std::size_t entryCount = 0;
  // OFX: the statement's entries are the file's `entries` from this one on
  // (statements follow each other there, so nothing is held twice).
  std::size_t firstEntry = 0;
  // QIF: the account's entries, read apart from the file's own list.
  plist::Array entries;
};

struct ImportedFile {
  std::string path;
  ImportFormat format = ImportFormat::Unknown;
  std::string encoding;  // the readable name of the encoding the text was read in
  // OFX: the faithful reading refused the file and the tolerant one read it;
  // `faithfulFailure` says why the first refused.
  bool tolerant = false;
  std::string faithfulFailure;
  // The statements or accounts the file names (empty for text, and for a
  // QIF file without account headers).
  std::vector<ImportedStatement> statements;
  // Every entry of the file: QIF's entries of all bank-like sections, every
  // OFX statement's entries in document order, every text line's entry.
  plist::Array entries;
  // QIF: the category names the file lists or uses.
  std::vector<std::string> categories;
  // Text: the fields of the first line that is not empty, so that a user
  // without a column layout sees what the columns hold.
  std::vector<std::string> firstLineFields;
};

// The fields of the first `maxLines` lines of delimited text that are not
// empty, split at tabs or as comma-separated values, so that a user can see
// what each column holds before giving the columns their roles.
std::vector<std::vector<std::string>> LeadingTextLineFields(std::string_view text, bool tabs,
                                                            std::size_t maxLines);

// A role a column of a text file can play, with the short name a command
// line gives it and the label a window shows; code -1 ignores the column.
struct TextColumnRole {
  std::int32_t code;
  std::string_view name;
  std::string_view label;
};
// Every role the text importer reads, the ignored column last.
const std::vector<TextColumnRole>& TextColumnRoles();

// Reads a file with the options. Throws FileError naming the file and the
// reason: unreadable, of no known format, a text import without a column
// layout is not an error (it reads no entries), an OFX file that neither
// reading loads (both reasons given).
ImportedFile ReadImportedFile(const std::string& path, const ImportFileOptions& options);
// The same on a file's bytes already in memory; `path` names it in errors.
ImportedFile ReadImportedBytes(std::string bytes, const std::string& path,
                               const ImportFileOptions& options);

}  // namespace tarn
