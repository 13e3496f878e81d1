#include "tarn/ui/window_placement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace tarn {

void CenterWindow(QWidget* window) {
  if (window == nullptr) return;
  QRect area;
  if (QWidget* parent = window->parentWidget(); parent != nullptr && parent->isVisible()) {
    area = parent->window()->frameGeometry();
  } else if (QScreen* screen = QGuiApplication::primaryScreen(); screen != nullptr) {
    area = screen->availableGeometry();
  } else {
    return;
  }
  QRect frame = window->frameGeometry();
  frame.moveCenter(area.center());
  window->move(frame.topLeft());
}

}  // namespace tarn
