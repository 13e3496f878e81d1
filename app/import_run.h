// File > Import: the open panel with the QIF date format and the encoding,
// the column layout of a text file, the review, and the accepted entries
// added to the account as one undoable change. The account's remembered
// import options are the starting values and keep what the user chose.
#pragma once

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tarn/import/import_file.h"

class BookDocument;
class QMainWindow;

namespace tarn {
class TARNAccount;
class TARNImportReview;
}  // namespace tarn

// A file chosen for import and the options to read it with.
struct ImportChoice {
  QString path;
  tarn::ImportFileOptions options;
};

// The account's remembered options of every importer.
tarn::ImportFileOptions RememberedImportOptions(const tarn::TARNAccount& account);

// The QIF accessory's date-format tag of an importer date format index, and
// back; nullopt when the other list has no such format.
std::optional<std::int32_t> AccessoryTagOfDateFormat(std::int32_t index);
std::optional<std::int32_t> DateFormatOfAccessoryTag(std::int32_t tag);

// The open panel; nullopt when the user cancels.
std::optional<ImportChoice> ChooseImportFile(QMainWindow* window, const tarn::TARNAccount& account);

// Reads the file, asks for the column layout of a text file and for the
// statement of a file holding several, and builds the review; nullopt when
// the user cancels or the file cannot be read (after saying why).
struct PreparedImport {
  tarn::ImportedFile file;
  std::unique_ptr<tarn::TARNImportReview> review;
};
std::optional<PreparedImport> PrepareImport(QMainWindow* window, BookDocument& document,
                                            tarn::TARNAccount& account, ImportChoice choice);

// The review dialog; on Import the ticked entries are added as one change on
// the document's undo stack. Returns the number of entries added.
std::size_t ReviewAndImport(QMainWindow* window, BookDocument& document, tarn::TARNAccount& account,
                            PreparedImport& prepared);

// The whole command on the account.
void RunImport(QMainWindow* window, BookDocument& document, tarn::TARNAccount& account);
