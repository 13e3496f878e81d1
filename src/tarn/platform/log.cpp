#include "tarn/platform/log.h"

#include <cstdio>
#include <mutex>

namespace tarn {
namespace {

void writeToStandardError(std::string_view line) {
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fputc('\n', stderr);
}

std::mutex& sinkMutex() {
  static std::mutex mutex;
  return mutex;
}
LogSink& currentSink() {
  static LogSink sink = writeToStandardError;
  return sink;
}

}  // namespace

void Log(std::string_view line) {
  LogSink sink;
  {
    std::lock_guard lock(sinkMutex());
    sink = currentSink();
  }
  sink(line);
}

LogSink SetLogSink(LogSink sink) {
  std::lock_guard lock(sinkMutex());
  LogSink previous = std::move(currentSink());
  currentSink() = sink ? std::move(sink) : LogSink(writeToStandardError);
  return previous;
}

}  // namespace tarn
