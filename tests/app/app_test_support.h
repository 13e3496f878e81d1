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
#include <optional>
#include <string_view>

#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

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

// What a suite of the window needs around it while it lives: settings (the
// recent books) in a scratch folder, the library's log silenced and today
// pinned; given back as they were when it goes.
class WindowTestEnvironment {
 public:
  WindowTestEnvironment(const QString& configFolder, tarn::DateNumber today)
      : previousSink_(tarn::SetLogSink([](std::string_view) {})) {
    qputenv("XDG_CONFIG_HOME", configFolder.toUtf8());
    tarn::CalendarDate::overrideNow(tarn::CalendarDate::dateWithDateNumber(today));
  }
  ~WindowTestEnvironment() {
    tarn::CalendarDate::overrideNow(std::nullopt);
    tarn::SetLogSink(previousSink_);
  }
  WindowTestEnvironment(const WindowTestEnvironment&) = delete;
  WindowTestEnvironment& operator=(const WindowTestEnvironment&) = delete;

 private:
  std::function<void(std::string_view)> previousSink_;
};
