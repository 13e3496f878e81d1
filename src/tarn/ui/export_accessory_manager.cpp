#include "tarn/ui/export_accessory_manager.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QRadioButton>
#include <algorithm>

#include "tarn/platform/localized.h"
#include "ui_ExportAccessoryManager.h"

namespace tarn {
namespace {

QString EncodingTitle(StringEncoding encoding) {
  return QString::fromStdString(Localized(NameOfStringEncoding(encoding)));
}

}  // namespace

TARNExportAccessoryManager::TARNExportAccessoryManager()
    : ui_(std::make_unique<Ui::ExportAccessoryManager>()), encoding_View_(new QWidget()) {
  ui_->setupUi(encoding_View_);
  exportType_Matrix_ = ui_->exportType_Matrix;
  encoding_PopUp_ = ui_->encoding_PopUp;
  // The radio buttons are one group, each with its tag as the id.
  exportTypeCells_ = new QButtonGroup(this);
  for (QRadioButton* cell : exportType_Matrix_->findChildren<QRadioButton*>()) {
    exportTypeCells_->addButton(cell, cell->property("tag").toInt());
  }
  encodingPopUp_Populate();
  setExportType(kExportTypeQIF);
}

TARNExportAccessoryManager::~TARNExportAccessoryManager() {
  // A view the host took over is the host's.
  if (encoding_View_ != nullptr && encoding_View_->parent() == nullptr) delete encoding_View_;
}

std::unique_ptr<TARNExportAccessoryManager> TARNExportAccessoryManager::exportAccessoryManager() {
  return std::make_unique<TARNExportAccessoryManager>();
}

void TARNExportAccessoryManager::encodingPopUp_Populate() {
  encoding_PopUp_->clear();
  std::vector<StringEncoding> listed;
  auto add = [this, &listed](StringEncoding encoding) {
    encoding_PopUp_->addItem(EncodingTitle(encoding), static_cast<qulonglong>(encoding));
    listed.push_back(encoding);
  };
  const StringEncoding defaultEncoding = DefaultCStringEncoding();
  add(defaultEncoding);
  if (defaultEncoding != kUnicodeStringEncoding) add(kUnicodeStringEncoding);
  if (defaultEncoding != kUTF8StringEncoding) add(kUTF8StringEncoding);
  encoding_PopUp_->insertSeparator(encoding_PopUp_->count());

  std::vector<std::pair<QString, StringEncoding>> others;
  for (StringEncoding encoding : AvailableStringEncodings()) {
    if (std::find(listed.begin(), listed.end(), encoding) != listed.end()) continue;
    others.emplace_back(EncodingTitle(encoding), encoding);
  }
  std::stable_sort(others.begin(), others.end(), [](const auto& a, const auto& b) {
    return QString::compare(a.first, b.first) < 0;
  });
  for (const auto& [title, encoding] : others) {
    if (std::find(listed.begin(), listed.end(), encoding) != listed.end()) continue;
    encoding_PopUp_->addItem(title, static_cast<qulonglong>(encoding));
    listed.push_back(encoding);
  }
  setEncoding(defaultEncoding);
}

StringEncoding TARNExportAccessoryManager::encoding() const {
  return static_cast<StringEncoding>(encoding_PopUp_->currentData().toULongLong());
}

void TARNExportAccessoryManager::setEncoding(StringEncoding encoding) {
  for (int i = 0; i < encoding_PopUp_->count(); ++i) {
    const QVariant data = encoding_PopUp_->itemData(i);
    if (data.isValid() && static_cast<StringEncoding>(data.toULongLong()) == encoding) {
      encoding_PopUp_->setCurrentIndex(i);
      return;
    }
  }
}

int TARNExportAccessoryManager::exportType() const {
  return exportTypeCells_->checkedId();
}

void TARNExportAccessoryManager::setExportType(int exportType) {
  QAbstractButton* cell = exportTypeCells_->button(exportType);
  if (cell == nullptr) cell = ui_->exportTypeQIF;  // the first cell
  cell->setChecked(true);
}

}  // namespace tarn
