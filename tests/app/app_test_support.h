// What the Qt Test suites of the desktop window share: answering the next
// modal dialog once it shows, and finding a menu command by its text.
#pragma once

#include <QAction>
#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <functional>

// Runs `answer` on the next modal dialog, once it shows. A failed check
// inside an answer must not leave the dialog waiting, so it is closed then.
inline void WhenModal(QObject* owner, std::function<void(QWidget*)> answer) {
  auto* timer = new QTimer(owner);
  timer->setInterval(10);
  QObject::connect(timer, &QTimer::timeout, owner, [timer, answer = std::move(answer)] {
    QWidget* modal = QApplication::activeModalWidget();
    if (!modal) return;
    timer->stop();
    timer->deleteLater();
    const QPointer<QWidget> shown(modal);
    answer(modal);
    if (QTest::currentTestFailed() && shown && shown->isVisible()) shown->close();
  });
  timer->start();
}

inline QAction* FindAction(const QWidget& window, const QString& text) {
  for (QAction* each : window.findChildren<QAction*>()) {
    if (each->text() == text) return each;
  }
  qFatal("no action %s", qPrintable(text));
  return nullptr;
}
