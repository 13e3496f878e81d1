#include "tarn/ui/qif_import_accessory_manager.h"

#include <QComboBox>
#include <array>

#include "tarn/platform/localized.h"
#include "tarn/ui/pop_up_menu.h"
#include "ui_QIFImportAccessoryManager.h"

namespace tarn {
namespace {

struct DateFormatChoice {
  std::int32_t tag;
  const char* format;
  const char* title;
};

// Tag 0 is the importers' own default, month first with a two-digit year.
constexpr std::array<DateFormatChoice, 6> kDateFormats{{
    {0, "%m/%d/%y", "Month/Day/Year (12/31/99)"},
    {1, "%d/%m/%y", "Day/Month/Year (31/12/99)"},
    {2, "%m/%d/%Y", "Month/Day/Year (12/31/1999)"},
    {3, "%d/%m/%Y", "Day/Month/Year (31/12/1999)"},
    {4, "%Y-%m-%d", "Year-Month-Day (1999-12-31)"},
    {5, "%d.%m.%Y", "Day.Month.Year (31.12.1999)"},
}};

}  // namespace

TARNQIFImportAccessoryManager::TARNQIFImportAccessoryManager()
    : ui_(std::make_unique<Ui::QIFImportAccessoryManager>()), accessory_View_(new QWidget()) {
  ui_->setupUi(accessory_View_);
  dateFormat_PopUp_ = ui_->dateFormat_PopUp;
  PopUpMenu menu;
  for (const DateFormatChoice& choice : kDateFormats) {
    menu.addItem(QString::fromStdString(Localized(choice.title)), choice.tag);
  }
  SetPopUpMenu(dateFormat_PopUp_, menu);
}

TARNQIFImportAccessoryManager::~TARNQIFImportAccessoryManager() {
  if (accessory_View_ != nullptr && accessory_View_->parent() == nullptr) delete accessory_View_;
}

std::unique_ptr<TARNQIFImportAccessoryManager>
TARNQIFImportAccessoryManager::QIFImportAccessoryManager() {
  return std::make_unique<TARNQIFImportAccessoryManager>();
}

std::int32_t TARNQIFImportAccessoryManager::GetDateFormat() const {
  return dateFormat_PopUp_->currentData().toInt();
}

void TARNQIFImportAccessoryManager::SetDateFormat(std::int32_t dateFormat) {
  const int index = IndexOfItemWithTag(dateFormat_PopUp_, dateFormat);
  if (index >= 0) dateFormat_PopUp_->setCurrentIndex(index);
}

std::string QIFImportDateFormatString(std::int32_t dateFormat) {
  for (const DateFormatChoice& choice : kDateFormats) {
    if (choice.tag == dateFormat) return choice.format;
  }
  return kDateFormats.front().format;
}

}  // namespace tarn
