// The accessory that the host puts into its QIF open panel: the date format
// of the file as a pop-up whose items carry format tags. The tags are the
// account's stored QIF import date format; QIFImportDateFormatString gives
// the calendar format each stands for. Loaded from the interface file
// "QIFImportAccessoryManager"; the manager owns the view until the host
// embeds it.
#pragma once

#include <QObject>
#include <cstdint>
#include <memory>
#include <string>

class QComboBox;
class QWidget;

namespace Ui {
class QIFImportAccessoryManager;
}

namespace tarn {

class TARNQIFImportAccessoryManager : public QObject {
  Q_OBJECT

 public:
  TARNQIFImportAccessoryManager();
  ~TARNQIFImportAccessoryManager() override;
  static std::unique_ptr<TARNQIFImportAccessoryManager> QIFImportAccessoryManager();

  QWidget* GetView() const { return accessory_View_; }
  // The selected item's tag.
  std::int32_t GetDateFormat() const;
  // Selects the item with the tag; an unknown tag changes nothing.
  void SetDateFormat(std::int32_t dateFormat);

  QComboBox* dateFormatPopUp() const { return dateFormat_PopUp_; }

 private:
  std::unique_ptr<Ui::QIFImportAccessoryManager> ui_;
  QWidget* accessory_View_;
  QComboBox* dateFormat_PopUp_ = nullptr;
};

// The calendar format ("%m/%d/%y") of a date-format tag; the first format for
// an unknown tag.
std::string QIFImportDateFormatString(std::int32_t dateFormat);

}  // namespace tarn
