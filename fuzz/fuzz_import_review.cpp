// A file of any kind read for import and reviewed into an account of a book:
// arbitrary bytes and options through format detection, the importer the
// content picks, the review and its acceptance. Reading may fail only with
// FileError; statements must cover the entries they claim; every entry the
// review ticked is added, and every added bank identifier is remembered.
#include <cstdint>
#include <string>

#include "fuzz_import_options.h"
#include "fuzz_support.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/import_review.h"
#include "tarn/import/import_file.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/error.h"
#include "tarn/platform/log.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tarn;
  static const bool quiet = [] {
    SetLogSink([](std::string_view) {});
    CalendarDate::overrideNow(CalendarDate(2026, 11, 24));
    return true;
  }();
  (void)quiet;
  fuzz::OptionBytes bytes(data, size);
  ImportFileOptions options;
  const std::uint8_t flags = bytes.next();
  options.tolerantOFX = flags & 1;
  options.text.dataFormat = flags & 2 ? 1 : 0;
  options.text.skipFirstRow = flags & 4;
  options.qif.dateFormat = options.text.dateFormat = static_cast<std::int32_t>(bytes.next() % 8);
  std::vector<std::int32_t> layout(bytes.next() % 8);
  for (std::int32_t& code : layout) code = static_cast<std::int32_t>(bytes.next() % 12) * 10;
  if (!layout.empty()) options.text.dataLayout = layout;
  options.ofx.swapName = static_cast<std::int32_t>(bytes.next() % 7) - 1;
  options.ofx.swapPayee = static_cast<std::int32_t>(bytes.next() % 7) - 1;

  ImportedFile file;
  try {
    file = ReadImportedBytes(std::string(bytes.rest()), "fuzz", options);
  } catch (const FileError&) {
    return 0;
  }
  std::size_t covered = 0;
  for (const auto& statement : file.statements) {
    if (file.format == ImportFormat::OFX) {
      fuzz::Require(statement.firstEntry == covered, "statements follow each other");
      covered += statement.entryCount;
    }
  }
  if (file.format == ImportFormat::OFX) {
    fuzz::Require(covered == file.entries.size(), "statements cover the entries");
  }

  TARNBook book;
  auto account = book.addAccount("Checking");
  TARNImportReview first(book, *account, file.format, options);
  first.addEntries(file.entries);
  const std::size_t ticked = first.tickedCount();
  const auto added = first.accept();
  fuzz::Require(added.size() == ticked, "every ticked entry is added");
  fuzz::Require(account->GetEntries().size() == ticked, "the account holds what was added");
  // The same file again: nothing that was added can be new a second time
  // unless it carried no identifier and had no partner left to match.
  TARNImportReview second(book, *account, file.format, options);
  second.addEntries(file.entries);
  for (std::size_t i = 0; i < first.items().size(); ++i) {
    const auto& before = first.items()[i];
    const auto& again = second.items()[i];
    if (before.entry->GetImport() && !before.fitID.empty()) {
      fuzz::Require(again.duplicate != DuplicateReason::None, "an imported identifier is known");
    }
  }
  return 0;
}
