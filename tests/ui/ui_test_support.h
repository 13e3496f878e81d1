// Helpers shared by the Qt Test programs of tarn_ui: ending a modal run from
// inside it, as the user would, and finding a panel's widgets by name.
#pragma once

#include <QApplication>
#include <QDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>

namespace tarn::uitest {

// Runs `action` on the modal widget once one other than `except` is active,
// polling every 10 ms for up to five seconds (a run that never opens leaves
// the action unrun, and the caller's checks then fail). Returns a flag that
// turns true when the action ran.
inline std::shared_ptr<bool> WhenModal(std::function<void(QWidget*)> action,
                                       QWidget* except = nullptr) {
  auto ran = std::make_shared<bool>(false);
  auto timer = new QTimer(qApp);
  auto tries = std::make_shared<int>(0);
  timer->setInterval(10);
  QObject::connect(timer, &QTimer::timeout, [timer, tries, ran, except, action] {
    QWidget* modal = QApplication::activeModalWidget();
    if (modal != nullptr && modal != except && modal->isVisible()) {
      timer->stop();
      timer->deleteLater();
      *ran = true;
      action(modal);
      return;
    }
    if (++*tries > 500) {
      timer->stop();
      timer->deleteLater();
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
