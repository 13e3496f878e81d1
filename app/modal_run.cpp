// Disabling the window and its menus around a modal run.

#include "modal_run.h"

#include <QAction>
#include <QMainWindow>
#include <QMenuBar>

namespace {

// tarn_ui finds menus by title in the main menu bar: point it at this window's.
QWidget* ViewOfWindowWithItsMenuBar(QMainWindow* window) {
  tarn::SetMainMenuBar(window->menuBar());
  return window->centralWidget();
}

QStringList MenuTitles(QMainWindow* window) {
  QStringList titles;
  for (QAction* item : window->menuBar()->actions()) {
    if (item->menu()) titles << QString(item->text()).remove('&');
  }
  return titles;
}

}  // namespace

ModalRun::ModalRun(QMainWindow* window)
    : disabling_(ViewOfWindowWithItsMenuBar(window), MenuTitles(window)) {}
