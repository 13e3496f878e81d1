// What the Qt Test suites of the desktop window share: a scratch folder
// with the recent books list kept in it, the log silenced and today
// pinned; the sample household; a window shown as a user sees it; answering
// the next modal dialog once it shows; finding widgets and menu commands.
#pragma once

#include <QAction>
#include <QApplication>
#include <QByteArray>
#include <QPointer>
#include <QString>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>
#include <string_view>

#include "main_window.h"
#include "tarn/book/book.h"
#include "tarn/book/sample_book.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

// The day every suite runs on.
inline constexpr tarn::DateNumber kTestToday = 20261124;

// Made in a suite's initTestCase, let go in its cleanupTestCase: a scratch
// folder (the recent books go to a settings folder in it, not the
// user's), a silent log and a pinned clock, each put back on going.
class AppTestScratch {
 public:
  AppTestScratch()
      : previousConfig_(qgetenv("XDG_CONFIG_HOME")),
        previousSink_(tarn::SetLogSink([](std::string_view) {})) {
    qputenv("XDG_CONFIG_HOME", dir_.filePath("config").toUtf8());
    tarn::CalendarDate::overrideNow(tarn::CalendarDate::dateWithDateNumber(kTestToday));
  }
  ~AppTestScratch() {
    tarn::CalendarDate::overrideNow(std::nullopt);
    tarn::SetLogSink(previousSink_);
    qputenv("XDG_CONFIG_HOME", previousConfig_);
  }
  AppTestScratch(const AppTestScratch&) = delete;
  AppTestScratch& operator=(const AppTestScratch&) = delete;

  bool isValid() const { return dir_.isValid(); }
  QString filePath(const QString& name) const { return dir_.filePath(name); }

 private:
  QTemporaryDir dir_;
  QByteArray previousConfig_;
  std::function<void(std::string_view)> previousSink_;
};

// The sample household: a year of activity up to the test day.
inline std::unique_ptr<tarn::TARNBook> SampleHousehold() {
  tarn::SampleBookOptions options;
  options.years = 1;
  options.today = kTestToday;
  return tarn::MakeSampleBook(options);
}

// A new window, over `book` when one is given, shown and made active;
// nullptr (after a failed check) when it never became active.
inline std::unique_ptr<MainWindow> ShownWindow(std::unique_ptr<tarn::TARNBook> book = nullptr) {
  auto window = std::make_unique<MainWindow>();
  if (book) window->setBook(std::move(book));
  window->show();
  window->activateWindow();
  if (!QTest::qWaitForWindowActive(window.get())) return nullptr;
  return window;
}

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

template <typename T>
T* FindWidget(const QWidget& window, const char* name) {
  T* widget = window.findChild<T*>(QString::fromLatin1(name));
  if (!widget) qFatal("no widget %s", name);
  return widget;
}
