#include "tarn/ui/alert.h"

#include <QMessageBox>
#include <QPushButton>

#include "tarn/platform/localized.h"

namespace tarn {
namespace {

QString Translated(const QString& key) {
  return QString::fromStdString(Localized(key.toStdString()));
}

}  // namespace

void RunAlert(QWidget* parent, const QString& statement, const QString& message) {
  QMessageBox alert(parent);
  alert.setObjectName("alertPanel");
  alert.setWindowTitle(QString());
  alert.setIcon(QMessageBox::Warning);
  alert.setText(Translated(statement));
  alert.setInformativeText(Translated(message));
  QPushButton* ok = alert.addButton(Translated("OK"), QMessageBox::AcceptRole);
  alert.setDefaultButton(ok);
  alert.setEscapeButton(ok);
  alert.exec();
}

}  // namespace tarn
