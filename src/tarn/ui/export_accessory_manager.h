// The accessory that the host puts into its export save panel: the export
// format as a group of radio buttons, one per format, each known by its tag,
// and the text encoding as a pop-up whose items carry encoding numbers.
// Loaded from the interface file "ExportAccessoryManager"; the manager owns
// the view until the host embeds it.
#pragma once

#include <QObject>
#include <memory>

#include "tarn/platform/encodings.h"

class QButtonGroup;
class QComboBox;
class QWidget;

namespace Ui {
class ExportAccessoryManager;
}

namespace tarn {

class TARNExportAccessoryManager : public QObject {
  Q_OBJECT

 public:
  // Format tags of the radio buttons. An account's stored format that is
  // neither (a new account has -5) shows as the first.
  static constexpr int kExportTypeQIF = 0;
  static constexpr int kExportTypeTabDelimited = 1;

  TARNExportAccessoryManager();
  ~TARNExportAccessoryManager() override;
  static std::unique_ptr<TARNExportAccessoryManager> exportAccessoryManager();

  // The system's default 8-bit encoding, Unicode (UTF-16) and UTF-8, a
  // separator, then every other encoding by name; the default 8-bit encoding
  // selected.
  void encodingPopUp_Populate();

  // The view to embed; the manager keeps owning it unless the host reparents it.
  QWidget* view() const { return encoding_View_; }
  // The selected item's encoding number; selecting a number no item has
  // changes nothing.
  StringEncoding encoding() const;
  void setEncoding(StringEncoding encoding);
  // The checked format's tag; an unknown tag checks the first format.
  int exportType() const;
  void setExportType(int exportType);

  QComboBox* encodingPopUp() const { return encoding_PopUp_; }

 private:
  std::unique_ptr<Ui::ExportAccessoryManager> ui_;
  QWidget* encoding_View_;
  QWidget* exportType_Matrix_ = nullptr;
  QComboBox* encoding_PopUp_ = nullptr;
  QButtonGroup* exportTypeCells_ = nullptr;
};

}  // namespace tarn
