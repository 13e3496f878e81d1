// Helpers shared by the Qt Test programs of tarn_ui: ending a modal run from
// inside it, as the user would, and finding a panel's widgets by name.
#pragma once

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>

namespace tarn::uitest {

// Runs `action` on the modal widget once one other than `except` is shown
// and active (keys sent to an inactive window move no focus), polling every
// 10 ms. Returns a flag that turns true when the action ran. When a check
// inside the action fails, the modal window is closed so the test ends.
// A run that has not opened within 30 s (a loaded machine can be slow to
// show a window) is given up: the modal widget then active, if any, is
// closed, so that the test fails on its checks instead of waiting forever.
inline std::shared_ptr<bool> WhenModal(std::function<void(QWidget*)> action,
                                       QWidget* except = nullptr) {
  auto ran = std::make_shared<bool>(false);
  auto timer = new QTimer(qApp);
  auto clock = std::make_shared<QElapsedTimer>();
  clock->start();
  timer->setInterval(10);
  QObject::connect(timer, &QTimer::timeout, [timer, clock, ran, except, action] {
    QWidget* modal = QApplication::activeModalWidget();
    if (modal != nullptr && modal != except && modal->isVisible() && modal->isActiveWindow()) {
      timer->stop();
      timer->deleteLater();
      *ran = true;
      QPointer<QWidget> shown(modal);
      action(modal);
      if (QTest::currentTestFailed() && shown != nullptr && shown->isVisible()) {
        if (auto* dialog = qobject_cast<QDialog*>(shown.data())) dialog->reject();
      }
      return;
    }
    if (clock->elapsed() > 30000) {
      timer->stop();
      timer->deleteLater();
      qWarning("WhenModal: no modal window opened within 30 s");
      if (auto* dialog = qobject_cast<QDialog*>(modal)) dialog->reject();
    }
  });
  timer->start();
  return ran;
}

// The first push button of `window` whose text, without mnemonic markers, is
// `text`; nullptr when there is none.
inline QPushButton* ButtonWithText(QWidget* window, const QString& text) {
  for (QPushButton* button : window->findChildren<QPushButton*>()) {
    if (button->text().remove('&') == text) return button;
  }
  return nullptr;
}

// Clicks the button titled `text` in `window`, as the user would.
inline void ClickButton(QWidget* window, const QString& text) {
  QPushButton* button = ButtonWithText(window, text);
  QVERIFY2(button != nullptr, qPrintable("no button " + text));
  QTest::mouseClick(button, Qt::LeftButton);
}

}  // namespace tarn::uitest
