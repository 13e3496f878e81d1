// The main of the window benchmarks: the offscreen platform unless
// QT_QPA_PLATFORM says otherwise, a scratch folder for generated files, the
// library's log silenced and today pinned, then Google Benchmark.
#pragma once

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTemporaryDir>

#include <string_view>

#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

inline int RunWindowBenchmarks(int argc, char** argv, QTemporaryDir*& scratch) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  QTemporaryDir dir;
  scratch = &dir;
  tarn::SetLogSink([](std::string_view) {});
  tarn::CalendarDate::overrideNow(tarn::CalendarDate(2026, 11, 24));
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  scratch = nullptr;
  return 0;
}
