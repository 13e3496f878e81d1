// Disabling the window and its menus around a modal run.

#include "modal_run.h"

#include <QAction>
#include <QMainWindow>
#include <QMenuBar>

#include "tarn/ui/modal_states.h"

ModalRun::ModalRun(QMainWindow* window) : view_(window->centralWidget()) {
  tarn::SetMainMenuBar(window->menuBar());
  for (QAction* item : window->menuBar()->actions()) {
    if (item->menu()) menus_ << QString(item->text()).remove('&');
  }
  for (const QString& title : menus_) tarn::Menu_ModalDisable(title);
  if (view_) tarn::View_ModalDisable(view_);
}

ModalRun::~ModalRun() {
  if (view_) tarn::View_ModalEnable(view_);
  for (const QString& title : menus_) tarn::Menu_ModalEnable(title);
}
