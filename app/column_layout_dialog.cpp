// The column layout step of a text import.

#include "column_layout_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

#include "tarn/import/import_file.h"
#include "tarn/import/text_import.h"

namespace {

constexpr std::size_t kPreviewLines = 12;
constexpr std::int32_t kSkip = -1;

// The role a heading word suggests, for a file read the first time.
std::int32_t RoleOfHeading(const QString& heading) {
  const QString word = heading.trimmed().toLower();
  if (word.isEmpty()) return kSkip;
  for (const auto& role : tarn::TextColumnRoles()) {
    if (word == QString::fromUtf8(role.name.data(), static_cast<int>(role.name.size())) ||
        word ==
            QString::fromUtf8(role.label.data(), static_cast<int>(role.label.size())).toLower()) {
      return role.code;
    }
  }
  if (word.contains("date")) return tarn::kColumnDate;
  if (word.contains("amount") || word == "betrag" || word == "montant") return tarn::kColumnAmount;
  if (word.contains("payee") || word.contains("name")) return tarn::kColumnToFrom;
  if (word.contains("memo") || word.contains("description") || word.contains("text")) {
    return tarn::kColumnDescription;
  }
  if (word.contains("credit")) return tarn::kColumnDeposit;
  if (word.contains("debit") || word.contains("withdraw")) return tarn::kColumnDebit;
  return kSkip;
}

}  // namespace

ColumnLayoutDialog::ColumnLayoutDialog(std::string text, const tarn::TextImportSettings& start,
                                       QWidget* parent)
    : QDialog(parent), text_(std::move(text)), start_(start) {
  setObjectName(QStringLiteral("columnLayout"));
  setWindowTitle(tr("Columns of the Text File"));
  auto* column = new QVBoxLayout(this);
  column->addWidget(new QLabel(
      tr("Give each column the role it plays. Columns set to Skip are not read."), this));

  auto* form = new QFormLayout;
  separator_ = new QComboBox(this);
  separator_->setObjectName(QStringLiteral("separator"));
  separator_->addItem(tr("Comma"), tarn::kTextImportCommaSeparated);
  separator_->addItem(tr("Tab"), tarn::kTextImportTabSeparated);
  separator_->setCurrentIndex(start.dataFormat == tarn::kTextImportCommaSeparated ? 0 : 1);
  form->addRow(tr("Separator:"), separator_);
  dateFormat_ = new QComboBox(this);
  dateFormat_->setObjectName(QStringLiteral("dateFormat"));
  for (const std::string& format : tarn::ImportDateFormats()) {
    QString sample = QString::fromStdString(format);
    sample.replace("%Y", "2026").replace("%y", "26").replace("%m", "11").replace("%d", "24");
    dateFormat_->addItem(sample);
  }
  dateFormat_->setCurrentIndex(
      std::clamp(start.dateFormat, 0, static_cast<int>(tarn::ImportDateFormats().size()) - 1));
  form->addRow(tr("Dates:"), dateFormat_);
  skipFirstRow_ = new QCheckBox(tr("The first line is a heading (skip it)"), this);
  skipFirstRow_->setObjectName(QStringLiteral("skipFirstRow"));
  skipFirstRow_->setChecked(start.skipFirstRow);
  form->addRow(QString(), skipFirstRow_);
  column->addLayout(form);

  preview_ = new QTableWidget(this);
  preview_->setObjectName(QStringLiteral("layoutPreview"));
  preview_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  preview_->verticalHeader()->setDefaultSectionSize(26);
  column->addWidget(preview_, 1);

  if (start.dataLayout) roles_ = *start.dataLayout;
  fillPreview();
  // A file read the first time: roles guessed from its heading.
  if (!start.dataLayout && preview_->rowCount() > 1) {
    bool heading = false;
    for (int c = 0; c < columnCount(); ++c) {
      const QTableWidgetItem* cell = preview_->item(1, c);
      const std::int32_t role = RoleOfHeading(cell ? cell->text() : QString());
      if (role == kSkip) continue;
      heading = true;
      roleBox(c)->setCurrentIndex(roleBox(c)->findData(role));
    }
    if (heading) skipFirstRow_->setChecked(true);
  }
  connect(separator_, &QComboBox::currentIndexChanged, this, [this] {
    for (int c = 0; c < columnCount(); ++c) {
      if (c < static_cast<int>(roles_.size())) {
        roles_[static_cast<std::size_t>(c)] = roleBox(c)->currentData().toInt();
      }
    }
    fillPreview();
  });

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  column->addWidget(buttons);
  resize(860, 460);
}

void ColumnLayoutDialog::fillPreview() {
  const bool tabs = separator_->currentData().toInt() != tarn::kTextImportCommaSeparated;
  const auto lines = tarn::LeadingTextLineFields(text_, tabs, kPreviewLines);
  int columns = 0;
  for (const auto& fields : lines) columns = std::max(columns, static_cast<int>(fields.size()));
  preview_->clear();
  preview_->setColumnCount(columns);
  preview_->setRowCount(static_cast<int>(lines.size()) + 1);
  QStringList numbers;
  for (int c = 0; c < columns; ++c) numbers << tr("Column %1").arg(c + 1);
  preview_->setHorizontalHeaderLabels(numbers);
  QStringList rows{tr("Role")};
  for (std::size_t r = 0; r < lines.size(); ++r) rows << QString::number(r + 1);
  preview_->setVerticalHeaderLabels(rows);
  for (int c = 0; c < columns; ++c) {
    auto* box = new QComboBox(preview_);
    box->setObjectName(QStringLiteral("role%1").arg(c));
    for (const auto& role : tarn::TextColumnRoles()) {
      box->addItem(tr(std::string(role.label).c_str()), role.code);
    }
    const std::int32_t role =
        c < static_cast<int>(roles_.size()) ? roles_[static_cast<std::size_t>(c)] : kSkip;
    box->setCurrentIndex(std::max(0, box->findData(role)));
    if (box->currentData().toInt() != role) box->setCurrentIndex(box->findData(kSkip));
    preview_->setCellWidget(0, c, box);
  }
  for (std::size_t r = 0; r < lines.size(); ++r) {
    for (std::size_t c = 0; c < lines[r].size(); ++c) {
      preview_->setItem(static_cast<int>(r) + 1, static_cast<int>(c),
                        new QTableWidgetItem(QString::fromStdString(lines[r][c])));
    }
  }
  for (int c = 0; c < columns; ++c) preview_->setColumnWidth(c, 130);
}

QComboBox* ColumnLayoutDialog::roleBox(int column) const {
  return qobject_cast<QComboBox*>(preview_->cellWidget(0, column));
}

int ColumnLayoutDialog::columnCount() const {
  return preview_->columnCount();
}

tarn::TextImportSettings ColumnLayoutDialog::settings() const {
  tarn::TextImportSettings settings = start_;
  std::vector<std::int32_t> layout;
  for (int c = 0; c < columnCount(); ++c) layout.push_back(roleBox(c)->currentData().toInt());
  // Trailing skipped columns say nothing.
  while (!layout.empty() && layout.back() == kSkip) layout.pop_back();
  settings.dataLayout = std::move(layout);
  settings.dataFormat = separator_->currentData().toInt();
  settings.dateFormat = dateFormat_->currentIndex();
  settings.skipFirstRow = skipFirstRow_->isChecked();
  return settings;
}
