// tarn-desktop: the check register window. Opens the books named on the
// command line, or an untitled book.

#include <QApplication>
#include <QStringList>

#include "main_window.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setOrganizationName("Tarn");
  QApplication::setApplicationName("tarn-desktop");
  MainWindow window;
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() > 1) window.openPath(arguments.at(1));
  window.show();
  return QApplication::exec();
}
