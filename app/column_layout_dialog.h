// The column layout of a comma- or tab-separated file: the first lines of
// the file in a table with a role chooser above each column, the separator,
// the date format and whether the first line is a heading to skip. Starts
// from the account's remembered text import options.
#pragma once

#include <QDialog>

#include <string>
#include <vector>

#include "tarn/account/account_settings.h"

class QCheckBox;
class QComboBox;
class QTableWidget;

class ColumnLayoutDialog : public QDialog {
  Q_OBJECT

 public:
  // `text` is the file's text, already decoded.
  ColumnLayoutDialog(std::string text, const tarn::TextImportSettings& start,
                     QWidget* parent = nullptr);

  // The start options with the layout, separator, date format and heading
  // choice made here.
  tarn::TextImportSettings settings() const;
  // The role chooser of a column, for tests.
  QComboBox* roleBox(int column) const;
  int columnCount() const;

 private:
  void fillPreview();

  std::string text_;
  tarn::TextImportSettings start_;
  std::vector<std::int32_t> roles_;
  QComboBox* separator_ = nullptr;
  QComboBox* dateFormat_ = nullptr;
  QCheckBox* skipFirstRow_ = nullptr;
  QTableWidget* preview_ = nullptr;
};
