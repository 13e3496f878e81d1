// File > Import, step by step.

#include "import_run.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QInputDialog>
#include <QMainWindow>
#include <QMessageBox>
#include <QStringList>
#include <QWidget>

#include <vector>

#include "book_document.h"
#include "column_layout_dialog.h"
#include "import_review_window.h"
#include "modal_run.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/book_changes.h"
#include "tarn/book/import_review.h"
#include "tarn/import/import_scanning.h"
#include "tarn/import/text_import.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/error.h"
#include "tarn/ui/qif_import_accessory_manager.h"

namespace {

constexpr int kAccessoryTags = 6;

void Problem(QMainWindow* window, const QString& text) {
  const ModalRun modal(window);
  QMessageBox::warning(window, QObject::tr("Import"), text);
}

// The accessory writes some formats with "-" or "."; the importers read any
// of them as the "/" form.
std::string SlashForm(std::string format) {
  for (char& c : format) {
    if (c == '-' || c == '.') c = '/';
  }
  return format;
}

}  // namespace

tarn::ImportFileOptions RememberedImportOptions(const tarn::TARNAccount& account) {
  tarn::ImportFileOptions options;
  options.qif = account.qifImportSettings();
  options.ofx = account.ofxImportSettings();
  options.text = account.textImportSettings();
  return options;
}

std::optional<std::int32_t> AccessoryTagOfDateFormat(std::int32_t index) {
  const std::string& wanted = tarn::ImportDateFormatAt(index);
  for (std::int32_t tag = 0; tag < kAccessoryTags; ++tag) {
    if (SlashForm(tarn::QIFImportDateFormatString(tag)) == wanted) return tag;
  }
  return std::nullopt;
}

std::optional<std::int32_t> DateFormatOfAccessoryTag(std::int32_t tag) {
  return tarn::ImportDateFormatIndex(SlashForm(tarn::QIFImportDateFormatString(tag)));
}

std::optional<ImportChoice> ChooseImportFile(QMainWindow* window,
                                             const tarn::TARNAccount& account) {
  QFileDialog dialog(
      window, QObject::tr("Import into \"%1\"").arg(QString::fromStdString(account.GetName())));
  dialog.setObjectName(QStringLiteral("importDialog"));
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::ExistingFile);
  dialog.setNameFilters(
      {QObject::tr("QIF, OFX and text files (*.qif *.ofx *.qfx *.csv *.tsv *.txt)"),
       QObject::tr("All files (*)")});

  ImportChoice choice;
  choice.options = RememberedImportOptions(account);
  auto accessory = tarn::TARNQIFImportAccessoryManager::QIFImportAccessoryManager();
  if (auto tag = AccessoryTagOfDateFormat(choice.options.qif.dateFormat)) {
    accessory->SetDateFormat(*tag);
  }
  auto* options = new QWidget;
  auto* form = new QFormLayout(options);
  form->setContentsMargins(0, 0, 0, 0);
  form->addRow(accessory->GetView());
  auto* encoding = new QComboBox;
  encoding->setObjectName(QStringLiteral("importEncoding"));
  encoding->addItem(QObject::tr("Automatic (as the file suggests)"), 0);
  for (tarn::StringEncoding each : tarn::AvailableStringEncodings()) {
    encoding->addItem(QString::fromStdString(tarn::NameOfStringEncoding(each)),
                      static_cast<qulonglong>(each));
  }
  const std::int32_t remembered = choice.options.qif.encoding;
  encoding->setCurrentIndex(std::max(
      0, encoding->findData(static_cast<qulonglong>(static_cast<std::uint32_t>(remembered)))));
  form->addRow(QObject::tr("Encoding:"), encoding);
  if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout())) {
    grid->addWidget(options, grid->rowCount(), 0, 1, grid->columnCount());
  } else {
    dialog.layout()->addWidget(options);
  }

  int result = QDialog::Rejected;
  {
    const ModalRun modal(window);
    result = dialog.exec();
  }
  const std::int32_t tag = accessory->GetDateFormat();
  // The accessory's view goes back to its manager before the dialog, which
  // would delete it, goes away.
  accessory->GetView()->setParent(nullptr);
  if (result != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;

  choice.path = dialog.selectedFiles().first();
  if (auto index = DateFormatOfAccessoryTag(tag)) choice.options.qif.dateFormat = *index;
  const auto chosen = static_cast<std::int32_t>(encoding->currentData().toULongLong());
  choice.options.qif.encoding = choice.options.text.encoding = chosen;
  return choice;
}

std::optional<PreparedImport> PrepareImport(QMainWindow* window, BookDocument& document,
                                            tarn::TARNAccount& account, ImportChoice choice) {
  const std::string path = choice.path.toStdString();
  std::optional<std::string> bytes = tarn::ReadImportFileBytes(path);
  if (!bytes) {
    Problem(window, QObject::tr("\"%1\" cannot be read.").arg(choice.path));
    return std::nullopt;
  }
  tarn::ImportFileOptions& options = choice.options;
  const tarn::DetectedImportFormat detected = tarn::DetectImportFormat(*bytes);
  if (detected.format == tarn::ImportFormat::Text) {
    // A file read the first time: the separator its lines suggest.
    if (!options.text.dataLayout) {
      options.text.dataFormat =
          detected.tabSeparated ? tarn::kTextImportTabSeparated : tarn::kTextImportCommaSeparated;
    }
    std::optional<std::string> text = tarn::DecodeImportBytes(
        *bytes, static_cast<tarn::StringEncoding>(options.text.encoding), nullptr);
    ColumnLayoutDialog layout(text.value_or(std::string()), options.text, window);
    int result = QDialog::Rejected;
    {
      const ModalRun modal(window);
      result = layout.exec();
    }
    if (result != QDialog::Accepted) return std::nullopt;
    options.text = layout.settings();
    if (options.text.dataLayout->empty()) {
      Problem(window,
              QObject::tr("Give at least one column a role (for example Date and Amount)."));
      return std::nullopt;
    }
  }

  PreparedImport prepared;
  try {
    prepared.file = tarn::ReadImportedBytes(std::move(*bytes), path, options);
  } catch (const tarn::FileError& error) {
    Problem(window, QObject::tr("The file could not be imported: %1").arg(error.what()));
    return std::nullopt;
  }
  tarn::ImportedFile& file = prepared.file;
  tarn::plist::Array entries;
  if (file.statements.size() > 1) {
    QStringList names;
    for (const auto& statement : file.statements) {
      names << QObject::tr("%1 (%2 entries)")
                   .arg(QString::fromStdString(statement.name))
                   .arg(statement.entryCount);
    }
    bool ok = false;
    QString picked;
    {
      const ModalRun modal(window);
      picked = QInputDialog::getItem(window, QObject::tr("Import"),
                                     QObject::tr("The file holds several accounts. Import:"), names,
                                     0, false, &ok);
    }
    if (!ok) return std::nullopt;
    auto& statement =
        file.statements[static_cast<std::size_t>(std::max<qsizetype>(0, names.indexOf(picked)))];
    if (file.format == tarn::ImportFormat::OFX) {
      const auto first = file.entries.begin() + static_cast<std::ptrdiff_t>(statement.firstEntry);
      entries.assign(first, first + static_cast<std::ptrdiff_t>(statement.entryCount));
    } else {
      entries = std::move(statement.entries);
    }
  } else {
    entries = std::move(file.entries);
  }
  if (entries.empty()) {
    Problem(
        window,
        QObject::tr("\"%1\" holds no entries to import.").arg(QString::fromStdString(file.path)));
    return std::nullopt;
  }
  prepared.review = std::make_unique<tarn::TARNImportReview>(document.book(), account, file.format,
                                                             std::move(options));
  prepared.review->addEntries(entries);
  return prepared;
}

std::size_t ReviewAndImport(QMainWindow* window, BookDocument& document, tarn::TARNAccount& account,
                            PreparedImport& prepared) {
  ImportReviewDialog dialog(*prepared.review, prepared.file, document.book(), account, window);
  int result = QDialog::Rejected;
  {
    const ModalRun modal(window);
    result = dialog.exec();
  }
  if (result != QDialog::Accepted) return 0;
  tarn::TARNBook& book = document.book();
  // The options used are remembered whatever happens to the entries later:
  // stored before the change is captured, undo keeps them.
  const auto qif = account.qifImportSettings();
  const auto ofx = account.ofxImportSettings();
  const auto text = account.textImportSettings();
  prepared.review->storeOptions();
  const bool optionsChanged = qif != account.qifImportSettings() ||
                              ofx != account.ofxImportSettings() ||
                              text != account.textImportSettings();
  if (optionsChanged) document.markViewChanged();
  if (prepared.review->tickedCount() == 0) return 0;
  auto change = tarn::BeforeImport(book, account.GetNumber(), *prepared.review);
  const auto added = prepared.review->accept();
  std::vector<tarn::EntryKey> keys;
  keys.reserve(added.size());
  for (const auto& entry : added) keys.push_back({account.GetNumber(), entry->GetNumber()});
  change.finish(book, keys);
  // The import may have made categories, which every account's window shows.
  document.pushAccountChange(QObject::tr("Import"), std::move(change), -1);
  return added.size();
}

void RunImport(QMainWindow* window, BookDocument& document, tarn::TARNAccount& account) {
  auto choice = ChooseImportFile(window, account);
  if (!choice) return;
  auto prepared = PrepareImport(window, document, account, std::move(*choice));
  if (!prepared) return;
  ReviewAndImport(window, document, account, *prepared);
}
